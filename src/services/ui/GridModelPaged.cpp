// The grid's rows when they are read on demand.
#include "GridModel.h"

#include "shell/DbError.h"

#include <QDebug>

namespace zq {

bool GridModel::pagedCall(const std::function<void()>& read) const {
    try {
        read();
        return true;
    } catch (const DbError& e) {
        if (!m_pagedErrorTold) qWarning().noquote() << "grid: reading the list failed:" << e.message();
        m_pagedErrorTold = true;
        return false;
    }
}

QString GridModel::pagedCell(int r, int c) const {
    QString text;
    // Column 0 holds nothing of the list's unless the list fills the row headers.
    if (c == 0 && !m_paged->query().headerColumn) return text;
    pagedCall([&] { text = m_paged->cell(r, pagedColumn(c)); });
    return text;
}

void GridModel::loadPaged(PagedQuery query) {
    // The count comes before any change, so that a statement the database refuses reaches the
    // screen as it did when the rows were read at once, and the grid stays as it was.
    loadPaged(std::make_unique<PagedRows>(std::move(query)));
}

void GridModel::loadPaged(std::unique_ptr<PagedRows> rows) {
    beginResetModel();
    m_rows.clear();
    m_pagedErrorTold = false;
    for (Column& col : m_cols)
        col.widest.clear();
    m_paged = std::move(rows);
    m_pagedCount = m_paged ? m_paged->count() : 0;
    if (m_paged) {
        // The columns fit what the first page holds: reading every row to find the widest would
        // cost what reading on demand saves.
        const int cols = columnCount();
        const int skip = pagedColumn(1) - 1;
        std::vector<int> widest(size_t(cols) + 1, 0);
        pagedCall([&] {
            for (int r = 1; r <= std::min(m_pagedCount, int(PagedRows::kPageRows)); ++r) {
                const QStringList& cells = m_paged->row(r);
                for (int c = 1; c <= std::min(cols, int(cells.size()) - skip); ++c) {
                    const QString& cell = cells[c - 1 + skip];
                    if (const int units = gridcells::textUnits(cell); units > widest[size_t(c)]) {
                        widest[size_t(c)] = units;
                        m_cols[c].widest = cell;
                    }
                }
            }
        });
    }
    endResetModel();
}

int GridModel::findPaged(int col, const QString& text, int from) {
    int row = 0;
    if (pagedColumn(col) == m_paged->query().keyColumn) {
        pagedCall([&] { row = m_paged->findKey(text); });
        return row >= from ? row : 0;
    }
    for (int r = std::max(from, 1); r <= m_pagedCount; ++r)
        if (pagedCell(r, col) == text) return r;
    return 0;
}

void GridModel::removePaged(int at) {
    const int keyColumn = m_paged->query().keyColumn;
    QString key;
    if (keyColumn > 0) pagedCall([&] { key = m_paged->cell(at + 1, keyColumn); });
    beginRemoveRows({}, at, at);
    const bool ok = pagedCall([&] {
        if (!key.isEmpty()) m_paged->exclude(key);
    });
    m_pagedCount = std::max(m_pagedCount - 1, 0);
    endRemoveRows();
    // Others may have added or removed rows meanwhile: the view then takes the new count at once.
    if (ok && m_paged->count() != m_pagedCount) {
        beginResetModel();
        m_pagedCount = m_paged->count();
        endResetModel();
    }
}

} // namespace zq
