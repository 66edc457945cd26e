#include "Grid.h"

#include "shell/ui/Fonts.h"

#include <QAbstractTableModel>
#include <QEvent>
#include <QFontMetricsF>
#include <QHash>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRegularExpressionValidator>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

namespace zq {

namespace {

// Horizontal room a cell needs around its text, in pixels.
// A column never widens past this many characters to fit what it holds: a long remark wraps or
// is cut rather than pushing every other column out of sight.
constexpr double kMaxFitWidth = 40;

// Width of a text in the dictionary's character units: a character beyond ASCII (a Chinese one)
// counts two, as the column widths were reckoned.
int textUnits(const QString& text) {
    int units = 0;
    for (const QChar ch : text)
        units += ch.unicode() < 0x80 ? 1 : 2;
    return units;
}

// "12.50" -> "12.5", "3.00" -> "3": the value of a number cell without its display places.
QString withoutTrailingZeros(const QString& number) {
    if (!number.contains(QLatin1Char('.'))) return number;
    int end = number.size();
    while (end > 0 && number.at(end - 1) == QLatin1Char('0'))
        --end;
    if (end > 0 && number.at(end - 1) == QLatin1Char('.')) --end;
    return number.left(end);
}

double sortNumber(const QString& s) {
    return s.isEmpty() ? -std::numeric_limits<double>::infinity() : s.toDouble();
}

} // namespace

// The cells of a grid. Row r of the grid is m_rows[r - 1]; column c of the grid is m_cols[c], with
// m_cols[0] standing for the row-header column.
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
        return parent.isValid() ? 0 : int(m_rows.size());
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
    const QString& cell(int r, int c) const { return cellOf(m_rows[size_t(r - 1)], c); }

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
            m_rows[size_t(r - 1)].header = text;
            if (!m_quiet) emit headerDataChanged(Qt::Vertical, r - 1, r - 1);
            return true;
        }
        if (!inRows(r) || !inCols(c)) return false;
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
        if (c == 0) return m_rows[size_t(r - 1)].header;
        return inCols(c) ? cell(r, c) : QString();
    }

    void setRows(int n) {
        n = std::max(n, 0);
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
        beginInsertRows({}, at, at);
        m_rows.insert(m_rows.begin() + at, Row());
        endInsertRows();
    }

    void removeAt(int at) {
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
                if (const int units = textUnits(cells[c - 1]); units > widest[size_t(c)]) {
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
        std::stable_sort(m_rows.begin(), m_rows.end(), [&](const Row& a, const Row& b) {
            for (int k : keys) {
                if (!inCols(k)) continue;
                const QString& x = cellOf(a, k);
                const QString& y = cellOf(b, k);
                if (m_cols[k].type != ZqGrid::CellText) {
                    const double dx = sortNumber(x), dy = sortNumber(y);
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
        LockMark m = m_gridLock;
        if (c >= 1 && c < m_cols.size()) m = later(m, m_cols[c].lock);
        if (inRows(r)) {
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

    ZqGrid* m_grid;
    std::vector<Row> m_rows;
    QVector<Column> m_cols;
    Column m_template; // what a new column starts with
    LockMark m_gridLock;
    quint32 m_lockSeq = 0;
    bool m_readOnly = false;
    bool m_quiet = false;
};

// The table view inside the grid: Enter and Down get the spreadsheet's meaning.
class GridView : public QTableView {
public:
    explicit GridView(ZqGrid* grid)
        : QTableView(grid)
        , m_grid(grid) {}

protected:
    void keyPressEvent(QKeyEvent* event) override {
        emit m_grid->keyDown(event->key(), event->modifiers());
        const bool plain = !(event->modifiers() & ~Qt::KeypadModifier);
        if (plain && state() != EditingState) {
            if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
                m_grid->onEnterKey();
                event->accept();
                return;
            }
            if (event->key() == Qt::Key_Down && m_grid->m_appendOnDown && m_grid->activeRow() >= 1 &&
                m_grid->activeRow() == m_grid->maxRows()) {
                m_grid->onDownKey();
                event->accept();
                return;
            }
        }
        QTableView::keyPressEvent(event);
    }

private:
    ZqGrid* m_grid;
};

// Editors by cell type: number cells refuse what is not a number as it is typed; multi-line text
// cells edit in a text box where Enter still finishes the edit and Ctrl+Enter breaks the line.
class GridDelegate : public QStyledItemDelegate {
public:
    explicit GridDelegate(ZqGrid* grid)
        : QStyledItemDelegate(grid)
        , m_grid(grid) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&,
                          const QModelIndex& index) const override {
        const GridModel::Column& col = column(index);
        if (col.type != ZqGrid::CellText) {
            auto* edit = new QLineEdit(parent);
            const int places = col.type == ZqGrid::CellDecimal ? col.decimals : 0;
            const QString pattern =
                places > 0 ? QStringLiteral("-?\\d*(\\.\\d{0,%1})?").arg(places) : QStringLiteral("-?\\d*");
            edit->setValidator(new QRegularExpressionValidator(QRegularExpression(pattern), edit));
            edit->setAlignment(Qt::AlignRight);
            edit->setFrame(false);
            return edit;
        }
        if (col.multiLine) {
            auto* edit = new QPlainTextEdit(parent);
            edit->setFrameShape(QFrame::NoFrame);
            edit->setTabChangesFocus(true);
            if (const int max = col.maxLength; max > 0) {
                QObject::connect(edit, &QPlainTextEdit::textChanged, edit, [edit, max] {
                    const QString t = edit->toPlainText();
                    if (t.size() <= max) return;
                    edit->setPlainText(t.left(max));
                    edit->moveCursor(QTextCursor::End);
                });
            }
            return edit;
        }
        auto* edit = new QLineEdit(parent);
        edit->setFrame(false);
        if (col.maxLength > 0) edit->setMaxLength(col.maxLength);
        return edit;
    }

    void setEditorData(QWidget* editor, const QModelIndex& index) const override {
        const QString text = index.data(Qt::EditRole).toString();
        if (auto* plain = qobject_cast<QPlainTextEdit*>(editor)) {
            plain->setPlainText(text);
            plain->selectAll();
        } else if (auto* line = qobject_cast<QLineEdit*>(editor)) {
            line->setText(text);
        }
    }

    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override {
        if (auto* plain = qobject_cast<QPlainTextEdit*>(editor))
            model->setData(index, plain->toPlainText(), Qt::EditRole);
        else if (auto* line = qobject_cast<QLineEdit*>(editor))
            model->setData(index, line->text(), Qt::EditRole);
    }

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        const GridModel::Column& col = column(index);
        option->features.setFlag(QStyleOptionViewItem::WrapText,
                                 col.type == ZqGrid::CellText && col.multiLine);
    }

    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::KeyPress) {
            auto* key = static_cast<QKeyEvent*>(event);
            if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
                auto* editor = qobject_cast<QWidget*>(object);
                auto* plain = qobject_cast<QPlainTextEdit*>(object);
                if (plain &&
                    (key->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier | Qt::AltModifier))) {
                    plain->insertPlainText(QStringLiteral("\n"));
                    return true;
                }
                if (editor) {
                    emit commitData(editor);
                    emit closeEditor(editor, QAbstractItemDelegate::NoHint);
                    m_grid->onEnterKey();
                    return true;
                }
            }
        }
        return QStyledItemDelegate::eventFilter(object, event);
    }

private:
    const GridModel::Column& column(const QModelIndex& index) const {
        return m_grid->m_model->m_cols[index.column() + 1];
    }

    ZqGrid* m_grid;
};

ZqGrid::ZqGrid(QWidget* parent)
    : QWidget(parent)
    , m_model(new GridModel(this))
    , m_view(new GridView(this)) {
    m_view->setModel(m_model);
    m_view->setItemDelegate(new GridDelegate(this));
    m_view->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                            QAbstractItemView::AnyKeyPressed);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setWordWrap(true);
    QHeaderView* rows = m_view->verticalHeader();
    rows->setSectionResizeMode(QHeaderView::Fixed); // uniform heights keep 100,000 rows cheap
    rows->setMinimumSectionSize(1);
    rows->setDefaultAlignment(Qt::AlignCenter);
    QHeaderView* cols = m_view->horizontalHeader();
    cols->setSectionResizeMode(QHeaderView::Interactive);
    cols->setMinimumSectionSize(1);
    cols->setDefaultAlignment(Qt::AlignCenter);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    setFocusProxy(m_view);
    setFont(uiFont(9));

    connect(m_view, &QAbstractItemView::clicked, this,
            [this](const QModelIndex& i) { emit clicked(i.column() + 1, i.row() + 1); });
    connect(m_view, &QAbstractItemView::doubleClicked, this,
            [this](const QModelIndex& i) { emit dblClick(i.column() + 1, i.row() + 1); });
    connect(cols, &QHeaderView::sectionClicked, this, [this](int s) { emit clicked(s + 1, 0); });
    connect(cols, &QHeaderView::sectionDoubleClicked, this, [this](int s) { emit dblClick(s + 1, 0); });
    connect(rows, &QHeaderView::sectionClicked, this, [this](int s) { emit clicked(0, s + 1); });
    connect(rows, &QHeaderView::sectionDoubleClicked, this, [this](int s) { emit dblClick(0, s + 1); });
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& now, const QModelIndex& before) {
                emit leaveCell(before.isValid() ? before.column() + 1 : 0,
                               before.isValid() ? before.row() + 1 : 0, now.isValid() ? now.column() + 1 : 0,
                               now.isValid() ? now.row() + 1 : 0);
            });
    connect(cols, &QHeaderView::sectionResized, this, [this](int s, int, int px) {
        if (m_settingGeometry || px <= 0) return;
        const double width = std::round(std::max(0, px - cellPadding()) / charWidth() * 100) / 100;
        m_model->m_cols[s + 1].width = width;
        emit colWidthChanged(s + 1, width);
    });
    // A reset rebuilds the header sections: they take the grid's sizes again.
    connect(m_model, &QAbstractItemModel::modelAboutToBeReset, this, [this] { m_settingGeometry = true; });
    connect(m_model, &QAbstractItemModel::modelReset, this, &ZqGrid::applyGeometry);
    applyGeometry();
}

ZqGrid::~ZqGrid() {
    // Closed while a cell is being edited, the window would move the focus on as it goes and the
    // editor would commit into this grid, and signal its change, after this destructor: the editor
    // is let go first, without committing.
    m_view->reset();
}

QTableView* ZqGrid::view() const {
    return m_view;
}

int ZqGrid::maxRows() const {
    return m_model->rowCount();
}

void ZqGrid::setMaxRows(int rows) {
    m_model->setRows(rows);
}

int ZqGrid::maxCols() const {
    return m_model->columnCount();
}

void ZqGrid::setMaxCols(int cols) {
    const int old = maxCols();
    m_settingGeometry = true;
    m_model->setCols(cols);
    m_settingGeometry = false;
    for (int c = old + 1; c <= maxCols(); ++c)
        applyColumn(c);
}

QString ZqGrid::text(int row, int col) const {
    return m_model->read(row, col);
}

QString ZqGrid::value(int row, int col) const {
    const QString t = m_model->read(row, col);
    return row >= 1 && col >= 1 && colType(col) != CellText ? withoutTrailingZeros(t) : t;
}

bool ZqGrid::setText(int row, int col, const QString& text) {
    if (!m_model->write(row, col, text)) return false;
    if (row == 0 && col > 0) applyColumn(col); // a caption is never cut
    return true;
}

QStringList ZqGrid::rowTexts(int row) const {
    QStringList l;
    if (!m_model->inRows(row)) return l;
    l.reserve(maxCols());
    for (int c = 1; c <= maxCols(); ++c)
        l << m_model->cell(row, c);
    return l;
}

int ZqGrid::activeRow() const {
    const QModelIndex i = m_view->currentIndex();
    return i.isValid() ? i.row() + 1 : 0;
}

int ZqGrid::activeCol() const {
    const QModelIndex i = m_view->currentIndex();
    return i.isValid() ? i.column() + 1 : 0;
}

void ZqGrid::setActiveCell(int row, int col) {
    if (m_model->inRows(row) && m_model->inCols(col)) {
        const QModelIndex i = m_model->index(row - 1, col - 1);
        m_view->setCurrentIndex(i);
        m_view->scrollTo(i);
    } else {
        m_view->selectionModel()->clearCurrentIndex();
        m_view->clearSelection();
    }
}

void ZqGrid::action(int code) {
    switch (code) {
    case ActionGoToCell:
        goToCell();
        break;
    case ActionDeleteRow:
        deleteRow();
        break;
    case ActionInsertRow:
        insertRow();
        break;
    default:
        break;
    }
}

void ZqGrid::goToCell() {
    setActiveCell(m_row, m_col);
}

void ZqGrid::insertRow() {
    if (!m_model->inRows(m_row)) return;
    m_model->removeAt(maxRows() - 1);
    m_model->insertBlank(m_row - 1);
}

void ZqGrid::deleteRow() {
    if (!m_model->inRows(m_row)) return;
    m_model->removeAt(m_row - 1);
    m_model->insertBlank(maxRows());
}

void ZqGrid::removeRow(int row) {
    if (m_model->inRows(row)) m_model->removeAt(row - 1);
}

void ZqGrid::appendRow() {
    setMaxRows(maxRows() + 1);
    setActiveCell(maxRows(), firstVisibleCol());
}

void ZqGrid::onDownKey() {
    const int col = activeCol();
    setMaxRows(maxRows() + 1);
    setActiveCell(maxRows(), col);
}

void ZqGrid::onEnterKey() {
    const int row = activeRow();
    const int col = activeCol();
    emit enterPressed(col, row);
    if (row < 1) return;
    if (const int next = nextVisibleCol(col); next > 0)
        setActiveCell(row, next);
    else if (row < maxRows())
        setActiveCell(row + 1, firstVisibleCol());
    else if (m_appendOnEnter)
        appendRow();
}

int ZqGrid::nextVisibleCol(int col) const {
    for (int c = col + 1; c <= maxCols(); ++c)
        if (!isColHidden(c)) return c;
    return 0;
}

int ZqGrid::firstVisibleCol() const {
    const int c = nextVisibleCol(0);
    return c > 0 ? c : 1;
}

void ZqGrid::clear() {
    m_model->clearCells();
}

void ZqGrid::loadRows(QVector<QStringList> rows) {
    m_model->load(rows);
}

void ZqGrid::sortRows(const QVector<int>& keyCols) {
    m_model->sort(keyCols);
}

int ZqGrid::findRow(int col, const QString& text, int from) const {
    if (!m_model->inCols(col)) return 0;
    for (int r = std::max(from, 1); r <= maxRows(); ++r)
        if (m_model->cell(r, col) == text) return r;
    return 0;
}

double ZqGrid::charWidth() const {
    // A character of the widths is a digit, and a Chinese character is two: a width of 10 holds a
    // whole date, one of 6 three Chinese characters, whatever the font makes of its average.
    const QFontMetricsF fm(m_view->font());
    double w = fm.horizontalAdvance(QChar(0x4E2D)) / 2;
    for (const QChar ch : QStringLiteral("0123456789-:."))
        w = std::max(w, fm.horizontalAdvance(ch));
    return w > 0 ? w : 7;
}

int ZqGrid::cellPadding() const {
    // The margins the style keeps on both sides of an item's text, and one pixel of the grid line.
    return 2 * (m_view->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, m_view) + 1) + 1;
}

int ZqGrid::colWidthPixels(double width) const {
    return width <= 0 ? 0 : int(std::ceil(width * charWidth())) + cellPadding();
}

int ZqGrid::fitPixels(int col) const {
    const GridModel::Column& c = m_model->m_cols[col];
    int px = colWidthPixels(c.width);
    QHeaderView* header = m_view->horizontalHeader();
    const int headMargin = 2 * header->style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, header);
    if (!c.header.isEmpty())
        px = std::max(px, header->fontMetrics().horizontalAdvance(c.header) + headMargin + 1);
    // Digits and Chinese characters within the width fit by the unit's making: measuring them all
    // would cost a grid of many columns (a count by person code) more than its loading.
    const auto fitsByUnits = [&c] {
        if (textUnits(c.widest) > c.width) return false;
        for (const QChar ch : c.widest)
            if (!ch.isDigit() && ch.unicode() < 0x2E80 && !QStringLiteral("-:. ").contains(ch)) return false;
        return true;
    };
    if (!c.widest.isEmpty() && !fitsByUnits()) {
        const QString line = c.widest.section(QLatin1Char('\n'), 0, 0);
        const int text = m_view->fontMetrics().horizontalAdvance(line) + cellPadding();
        px = std::max(px, std::min(text, colWidthPixels(std::max(c.width, kMaxFitWidth))));
    }
    return px;
}

int ZqGrid::rowHeightPixels(double height) const {
    if (height <= 0) return 0;
    // Points to pixels, but never so low that a line of the font is cut.
    const int px = int(std::lround(height * logicalDpiY() / 72.0));
    return std::max(px, QFontMetrics(m_view->font()).height() + 2);
}

double ZqGrid::colWidth(int col) const {
    if (col == 0 && m_model->m_cols[0].width < 0)
        return std::max(0, m_view->verticalHeader()->sizeHint().width() - cellPadding()) / charWidth();
    if (col < 0) return m_model->m_template.width;
    return col <= maxCols() ? m_model->m_cols[col].width : 0;
}

void ZqGrid::setColWidth(int col, double width) {
    if (col == -1) {
        m_model->m_template.width = width;
        for (int c = 1; c <= maxCols(); ++c) {
            m_model->m_cols[c].width = width;
            applyColumn(c);
        }
    } else if (col >= 0 && col <= maxCols()) {
        m_model->m_cols[col].width = width;
        applyColumn(col);
    }
}

bool ZqGrid::isColHidden(int col) const {
    if (col < 0 || col > maxCols()) return false;
    const GridModel::Column& c = m_model->m_cols[col];
    return c.hidden || (col > 0 && c.width <= 0) || (col == 0 && c.width == 0);
}

void ZqGrid::setColHidden(int col, bool hidden) {
    if (col < 0 || col > maxCols()) return;
    m_model->m_cols[col].hidden = hidden;
    applyColumn(col);
}

double ZqGrid::rowHeight(int row) const {
    if (row == 0) return m_headerHeight;
    if (m_model->inRows(row)) {
        const double h = m_model->m_rows[size_t(row - 1)].height;
        if (h != 0) return h;
    }
    return m_rowHeight;
}

void ZqGrid::setRowHeight(int row, double height) {
    QHeaderView* rows = m_view->verticalHeader();
    if (row == 0) {
        m_headerHeight = height;
        m_view->horizontalHeader()->setVisible(height > 0);
        if (height > 0) m_view->horizontalHeader()->setFixedHeight(rowHeightPixels(height));
    } else if (row == -1) {
        m_rowHeight = height;
        for (GridModel::Row& r : m_model->m_rows)
            r.height = 0;
        rows->setDefaultSectionSize(std::max(1, rowHeightPixels(height)));
    } else if (m_model->inRows(row)) {
        m_model->m_rows[size_t(row - 1)].height = height;
        rows->resizeSection(row - 1, rowHeightPixels(height));
    }
}

ZqGrid::CellType ZqGrid::colType(int col) const {
    return col >= 1 && col <= maxCols() ? m_model->m_cols[col].type : CellText;
}

int ZqGrid::colDecimals(int col) const {
    return col >= 1 && col <= maxCols() ? m_model->m_cols[col].decimals : 0;
}

bool ZqGrid::isColMultiLine(int col) const {
    return col >= 1 && col <= maxCols() && m_model->m_cols[col].multiLine;
}

int ZqGrid::colMaxLength(int col) const {
    return col >= 1 && col <= maxCols() ? m_model->m_cols[col].maxLength : 0;
}

void ZqGrid::setColType(int col, CellType type, int decimals) {
    auto set = [&](GridModel::Column& c) {
        c.type = type;
        c.decimals = type == CellDecimal ? std::clamp(decimals, 0, 15) : 0;
    };
    if (col == -1) set(m_model->m_template);
    for (int c = 1; c <= maxCols(); ++c) {
        if (col != -1 && c != col) continue;
        set(m_model->m_cols[c]);
        m_model->renormalise(c);
    }
}

void ZqGrid::setColMultiLine(int col, bool multiLine) {
    if (col == -1) m_model->m_template.multiLine = multiLine;
    for (int c = 1; c <= maxCols(); ++c)
        if (col == -1 || c == col) m_model->m_cols[c].multiLine = multiLine;
    m_view->viewport()->update();
}

void ZqGrid::setColMaxLength(int col, int length) {
    if (col == -1) m_model->m_template.maxLength = length;
    for (int c = 1; c <= maxCols(); ++c)
        if (col == -1 || c == col) m_model->m_cols[c].maxLength = length;
}

void ZqGrid::lockBlock(int row1, int col1, int row2, int col2, bool locked) {
    m_model->lockBlock(row1, col1, row2, col2, locked);
}

bool ZqGrid::isLocked(int row, int col) const {
    return m_model->locked(row, col);
}

bool ZqGrid::isReadOnly() const {
    return m_model->m_readOnly;
}

void ZqGrid::setReadOnly(bool readOnly) {
    m_model->m_readOnly = readOnly;
}

bool ZqGrid::rowSelection() const {
    return m_view->selectionBehavior() == QAbstractItemView::SelectRows;
}

void ZqGrid::setRowSelection(bool rows) {
    m_view->setSelectionBehavior(rows ? QAbstractItemView::SelectRows : QAbstractItemView::SelectItems);
}

void ZqGrid::setRedraw(bool on) {
    if (on == m_redraw) return;
    m_redraw = on;
    m_model->m_quiet = !on;
    m_view->setUpdatesEnabled(on);
    if (on) m_model->refreshAll();
}

void ZqGrid::applyColumn(int col) {
    const bool was = m_settingGeometry;
    m_settingGeometry = true;
    const GridModel::Column& c = m_model->m_cols[col];
    if (col == 0) {
        QHeaderView* rows = m_view->verticalHeader();
        rows->setVisible(!isColHidden(0));
        if (c.width > 0) {
            rows->setFixedWidth(colWidthPixels(c.width));
        } else {
            rows->setMinimumWidth(0);
            rows->setMaximumWidth(QWIDGETSIZE_MAX);
        }
    } else {
        m_view->setColumnHidden(col - 1, isColHidden(col));
        // The dictionary's width, or more when the caption or the rows loaded need it.
        if (c.width > 0) {
            const int px = fitPixels(col);
            if (m_view->columnWidth(col - 1) != px) m_view->setColumnWidth(col - 1, px);
        }
    }
    m_settingGeometry = was;
}

void ZqGrid::applyGeometry() {
    m_settingGeometry = true;
    // New sections take the common width; only the columns that differ are set one by one.
    m_view->horizontalHeader()->setDefaultSectionSize(std::max(1, colWidthPixels(m_model->m_template.width)));
    for (int c = 0; c <= maxCols(); ++c)
        applyColumn(c);
    setRowHeight(0, m_headerHeight);
    m_view->verticalHeader()->setDefaultSectionSize(std::max(1, rowHeightPixels(m_rowHeight)));
    for (int r = 1; r <= maxRows(); ++r)
        if (const double h = m_model->m_rows[size_t(r - 1)].height; h != 0)
            m_view->verticalHeader()->resizeSection(r - 1, rowHeightPixels(h));
    m_settingGeometry = false;
}

void ZqGrid::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange && m_view) applyGeometry();
}

} // namespace zq
