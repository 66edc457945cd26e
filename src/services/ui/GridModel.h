#pragma once

#include "Grid.h"
#include "services/PagedRows.h"

#include <QAbstractTableModel>
#include <QHash>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

namespace zq {

namespace gridcells {

// Horizontal room a cell needs around its text, in pixels.
// A column never widens past this many characters to fit what it holds: a long remark wraps or
// is cut rather than pushing every other column out of sight.
inline constexpr double kMaxFitWidth = 40;

// Width of a text in the dictionary's character units: a character beyond ASCII (a Chinese one)
// counts two, as the column widths were reckoned.
inline int textUnits(const QString& text) {
    int units = 0;
    for (const QChar ch : text)
        units += ch.unicode() < 0x80 ? 1 : 2;
    return units;
}

// "12.50" -> "12.5", "3.00" -> "3": the value of a number cell without its display places.
inline QString withoutTrailingZeros(const QString& number) {
    if (!number.contains(QLatin1Char('.'))) return number;
    int end = number.size();
    while (end > 0 && number.at(end - 1) == QLatin1Char('0'))
        --end;
    if (end > 0 && number.at(end - 1) == QLatin1Char('.')) --end;
    return number.left(end);
}

inline double sortNumber(const QString& s) {
    return s.isEmpty() ? -std::numeric_limits<double>::infinity() : s.toDouble();
}

} // namespace gridcells

// The cells of a grid. Row r of the grid is m_rows[r - 1]; column c of the grid is m_cols[c], with
// m_cols[0] standing for the row-header column. A long list read on demand holds no rows here: they
// come from m_paged, page by page, and cannot be edited.
class GridModel : public QAbstractTableModel {
public:
    // Locks are kept as marks stamped with the order they were set in; for a cell the latest mark
    // of the grid, its column, its row and the cell itself decides.
    struct LockMark {
        quint32 seq = 0;
        bool locked = false;
    };
    struct Column {
        QString header;
        double width = 8;
        bool hidden = false;
        ZqGrid::CellType type = ZqGrid::CellText;
        int decimals = 0;
        int maxLength = 0;
        bool multiLine = false;
        LockMark lock;
        QString widest; // of the rows loaded last, the text of most units: what the column must fit
    };
    struct Row {
        QStringList cells; // column c at c - 1; shorter than the grid when its tail is empty
        QString header;
        LockMark lock;
        std::unique_ptr<QHash<int, LockMark>> cellLocks;
        double height = 0; // 0: the grid's row height
    };

    explicit GridModel(ZqGrid* grid)
        : QAbstractTableModel(grid)
        , m_grid(grid) {
        m_cols.resize(1);
        m_cols[0].width = -1; // the row header sizes itself until told
    }

    int rowCount(const QModelIndex& parent = {}) const override {
        if (parent.isValid()) return 0;
        return m_paged ? m_pagedCount : int(m_rows.size());
    }
    int columnCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : int(m_cols.size()) - 1;
    }

    QVariant data(const QModelIndex& index, int role) const override {
        if (!index.isValid()) return {};
        const int c = index.column() + 1;
        switch (role) {
        case Qt::DisplayRole:
        case Qt::EditRole:
            return cell(index.row() + 1, c);
        case Qt::TextAlignmentRole:
            return QVariant::fromValue(alignment(m_cols[c]));
        default:
            return {};
        }
    }

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        if (role != Qt::DisplayRole) return QAbstractTableModel::headerData(section, orientation, role);
        if (orientation == Qt::Horizontal) return m_cols.value(section + 1).header;
        if (section < 0 || section >= rowCount()) return {};
        if (m_paged || m_numbered) return QString::number(section + 1);
        const QString& h = m_rows[size_t(section)].header;
        return h.isEmpty() ? QString::number(section + 1) : h;
    }

    Qt::ItemFlags flags(const QModelIndex& index) const override {
        if (!index.isValid()) return Qt::NoItemFlags;
        Qt::ItemFlags f = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
        if (editable(index.row() + 1, index.column() + 1)) f |= Qt::ItemIsEditable;
        return f;
    }

    // The user's edits come this way; programmatic writes go through write().
    bool setData(const QModelIndex& index, const QVariant& value, int role) override {
        const int r = index.row() + 1;
        const int c = index.column() + 1;
        if (role != Qt::EditRole || !index.isValid() || !editable(r, c)) return false;
        QString text;
        if (!normalise(m_cols[c], value.toString(), text)) return false;
        if (text == cell(r, c)) return true;
        store(r, c, text);
        emit dataChanged(index, index);
        emit m_grid->changed(c, r);
        return true;
    }

    static Qt::Alignment alignment(const Column& col) {
        if (col.type != ZqGrid::CellText) return Qt::AlignRight | Qt::AlignVCenter;
        return col.multiLine ? Qt::AlignLeft | Qt::AlignTop : Qt::AlignLeft | Qt::AlignVCenter;
    }

    // A text as a cell of the column holds it: numbers rounded to the places and written out with
    // them, "" for no number; false for a text that is no number.
    static bool normalise(const Column& col, const QString& in, QString& out) {
        if (col.type == ZqGrid::CellText) {
            out = in;
            return true;
        }
        const QString t = in.trimmed();
        if (t.isEmpty()) {
            out.clear();
            return true;
        }
        bool ok = false;
        const double v = t.toDouble(&ok);
        if (!ok || !std::isfinite(v)) return false;
        const int places = col.type == ZqGrid::CellDecimal ? std::clamp(col.decimals, 0, 15) : 0;
        const double scale = std::pow(10.0, places);
        double r = std::isfinite(v * scale) ? std::round(v * scale) / scale : v;
        if (r == 0) r = 0; // no "-0"
        out = QString::number(r, 'f', places);
        return true;
    }

    static const QString& cellOf(const Row& row, int c) {
        static const QString empty;
        return c >= 1 && c <= row.cells.size() ? row.cells[c - 1] : empty;
    }
    QString cell(int r, int c) const {
        if (m_paged) return pagedCell(r, c);
        return cellOf(m_rows[size_t(r - 1)], c);
    }
    QString pagedCell(int r, int c) const;
    bool paged() const { return m_paged != nullptr; }
    // Rows kept here, as opposed to those read on demand.
    Row* heldRow(int r) { return !m_paged && inRows(r) ? &m_rows[size_t(r - 1)] : nullptr; }

    void store(int r, int c, const QString& text) {
        QStringList& cells = m_rows[size_t(r - 1)].cells;
        if (cells.size() < c) {
            if (text.isEmpty()) return;
            cells.resize(c);
        }
        cells[c - 1] = text;
    }

    bool inRows(int r) const { return r >= 1 && r <= rowCount(); }
    bool inCols(int c) const { return c >= 1 && c <= columnCount(); }

    bool write(int r, int c, const QString& text) {
        if (r == 0 && inCols(c)) {
            m_cols[c].header = text;
            if (!m_quiet) emit headerDataChanged(Qt::Horizontal, c - 1, c - 1);
            return true;
        }
        if (c == 0 && inRows(r)) {
            if (m_paged) return false;
            m_rows[size_t(r - 1)].header = text;
            if (!m_quiet) emit headerDataChanged(Qt::Vertical, r - 1, r - 1);
            return true;
        }
        if (!inRows(r) || !inCols(c) || m_paged) return false;
        QString t;
        if (!normalise(m_cols[c], text, t)) return false;
        store(r, c, t);
        if (!m_quiet) {
            const QModelIndex i = index(r - 1, c - 1);
            emit dataChanged(i, i);
        }
        return true;
    }

    QString read(int r, int c) const {
        if (r == 0) return c >= 1 && c < m_cols.size() ? m_cols[c].header : QString();
        if (!inRows(r)) return {};
        if (c == 0) return m_paged ? pagedCell(r, 0) : m_rows[size_t(r - 1)].header;
        return inCols(c) ? cell(r, c) : QString();
    }

    void setRows(int n) {
        n = std::max(n, 0);
        if (m_paged) {
            beginResetModel();
            m_paged.reset();
            m_rows.resize(size_t(n));
            endResetModel();
            return;
        }
        const int old = rowCount();
        if (n > old) {
            beginInsertRows({}, old, n - 1);
            m_rows.resize(size_t(n));
            endInsertRows();
        } else if (n < old) {
            beginRemoveRows({}, n, old - 1);
            m_rows.resize(size_t(n));
            endRemoveRows();
        }
    }

    void setCols(int n) {
        n = std::max(n, 0);
        const int old = columnCount();
        if (n > old) {
            beginInsertColumns({}, old, n - 1);
            m_cols.resize(n + 1, m_template);
            endInsertColumns();
        } else if (n < old) {
            beginRemoveColumns({}, n, old - 1);
            m_cols.resize(n + 1);
            for (Row& row : m_rows) {
                if (row.cells.size() > n) row.cells.resize(n);
                if (row.cellLocks)
                    row.cellLocks->removeIf([n](QHash<int, LockMark>::iterator it) { return it.key() > n; });
            }
            endRemoveColumns();
        }
    }

    void insertBlank(int at) {
        if (m_paged) return;
        beginInsertRows({}, at, at);
        m_rows.insert(m_rows.begin() + at, Row());
        endInsertRows();
    }

    void removeAt(int at) {
        if (m_paged) return removePaged(at);
        beginRemoveRows({}, at, at);
        m_rows.erase(m_rows.begin() + at);
        endRemoveRows();
    }

    // Shows everything again after a time without notices.
    void refreshAll() {
        if (columnCount() > 0) emit headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
        if (rowCount() > 0) emit headerDataChanged(Qt::Vertical, 0, rowCount() - 1);
        if (rowCount() > 0 && columnCount() > 0)
            emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    }

    void clearCells() {
        for (Row& row : m_rows) {
            row.cells.clear();
            row.header.clear();
        }
        if (!m_quiet) refreshAll();
    }

    void load(QVector<QStringList>& rows) {
        beginResetModel();
        m_paged.reset();
        const int cols = columnCount();
        m_rows.clear();
        m_rows.resize(size_t(rows.size()));
        std::vector<int> widest(size_t(cols) + 1, 0);
        for (Column& col : m_cols)
            col.widest.clear();
        for (qsizetype i = 0; i < rows.size(); ++i) {
            QStringList& cells = m_rows[size_t(i)].cells;
            cells = std::move(rows[i]);
            if (cells.size() > cols) cells.resize(cols);
            for (int c = 1; c <= cells.size(); ++c) {
                if (m_cols[c].type != ZqGrid::CellText) {
                    QString t;
                    cells[c - 1] = normalise(m_cols[c], cells[c - 1], t) ? t : QString();
                }
                // Counting units is cheap enough for every row; only the widest text is measured.
                if (const int units = gridcells::textUnits(cells[c - 1]); units > widest[size_t(c)]) {
                    widest[size_t(c)] = units;
                    m_cols[c].widest = cells[c - 1];
                }
            }
        }
        rows.clear();
        endResetModel();
    }

    // After a change of type the cells of the column take their new form.
    void renormalise(int c) {
        for (Row& row : m_rows) {
            if (row.cells.size() < c) continue;
            QString t;
            row.cells[c - 1] = normalise(m_cols[c], row.cells[c - 1], t) ? t : QString();
        }
        if (!m_quiet && rowCount() > 0) emit dataChanged(index(0, c - 1), index(rowCount() - 1, c - 1));
    }

    void sort(const QVector<int>& keys) {
        beginResetModel();
        if (m_paged) {
            pagedCall([&] { m_paged->sortByColumns(pagedColumns(keys)); });
            m_pagedCount = m_paged->count();
            endResetModel();
            return;
        }
        std::stable_sort(m_rows.begin(), m_rows.end(), [&](const Row& a, const Row& b) {
            for (int k : keys) {
                if (!inCols(k)) continue;
                const QString& x = cellOf(a, k);
                const QString& y = cellOf(b, k);
                if (m_cols[k].type != ZqGrid::CellText) {
                    const double dx = gridcells::sortNumber(x), dy = gridcells::sortNumber(y);
                    if (dx != dy) return dx < dy;
                } else if (const int cmp = x.compare(y); cmp != 0) {
                    return cmp < 0;
                }
            }
            return false;
        });
        endResetModel();
    }

    static LockMark later(LockMark a, LockMark b) { return b.seq > a.seq ? b : a; }

    bool locked(int r, int c) const {
        if (m_paged && inRows(r)) return true;
        LockMark m = m_gridLock;
        if (c >= 1 && c < m_cols.size()) m = later(m, m_cols[c].lock);
        if (!m_paged && inRows(r)) {
            const Row& row = m_rows[size_t(r - 1)];
            m = later(m, row.lock);
            if (row.cellLocks) {
                const auto it = row.cellLocks->constFind(c);
                if (it != row.cellLocks->constEnd()) m = later(m, *it);
            }
        }
        return m.locked;
    }

    bool editable(int r, int c) const { return !m_readOnly && !locked(r, c); }

    void lockBlock(int row1, int col1, int row2, int col2, bool locked) {
        const LockMark mark{++m_lockSeq, locked};
        const bool allRows = row1 == -1;
        const bool allCols = col1 == -1;
        if (allRows && allCols) {
            // Covers every cell: the finer marks can go.
            m_gridLock = mark;
            for (Column& col : m_cols)
                col.lock = {};
            for (Row& row : m_rows) {
                row.lock = {};
                row.cellLocks.reset();
            }
            return;
        }
        if (m_paged && !allRows) return; // rows read on demand are never edited
        const int r1 = std::max(row1, 1), r2 = row2 == -1 ? rowCount() : std::min(row2, rowCount());
        const int c1 = std::max(col1, 1), c2 = col2 == -1 ? columnCount() : std::min(col2, columnCount());
        if (allRows) {
            for (int c = c1; c <= c2; ++c)
                m_cols[c].lock = mark;
        } else if (allCols) {
            for (int r = r1; r <= r2; ++r)
                m_rows[size_t(r - 1)].lock = mark;
        } else {
            for (int r = r1; r <= r2; ++r) {
                Row& row = m_rows[size_t(r - 1)];
                if (!row.cellLocks) row.cellLocks = std::make_unique<QHash<int, LockMark>>();
                for (int c = c1; c <= c2; ++c)
                    row.cellLocks->insert(c, mark);
            }
        }
    }

    // The list read on demand; widest texts are taken from its first page.
    void loadPaged(PagedQuery query);
    void loadPaged(std::unique_ptr<PagedRows> rows);
    // The list's column (from 1) behind a grid column: one further on when the list fills the row
    // headers too.
    int pagedColumn(int c) const { return m_paged && m_paged->query().headerColumn ? c + 1 : c; }
    QVector<int> pagedColumns(QVector<int> cols) const {
        for (int& c : cols)
            c = pagedColumn(c);
        return cols;
    }
    int findPaged(int col, const QString& text, int from);
    void removePaged(int at);
    // Runs a read of the list; a database error leaves the rows blank rather than breaking the
    // paint that asked, and is told once.
    bool pagedCall(const std::function<void()>& read) const;
    mutable bool m_pagedErrorTold = false;

    ZqGrid* m_grid;
    std::vector<Row> m_rows;
    std::unique_ptr<PagedRows> m_paged;
    int m_pagedCount = 0; // what the view was told, which moves only with the model's notices
    QVector<Column> m_cols;
    Column m_template; // what a new column starts with
    LockMark m_gridLock;
    quint32 m_lockSeq = 0;
    bool m_readOnly = false;
    bool m_quiet = false;
    bool m_numbered = false; // row headers show 1..n whatever texts column 0 holds
};

} // namespace zq
