#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVector>

namespace zq {

// A list statement taken apart, so that its rows can be read a page at a time.
struct PagedQuery {
    QStringList columns; // an expression for each column, in the order the rows show them
    QString from;        // the table (with its alias) and any joins
    QString condition;   // the where condition, never empty ("1=1" for all)
    QString key;         // an expression unique in the list; the last word of every order
    int keyColumn = 1;   // the column (from 1) showing the key; 0 when none does
    // The first column fills a grid's row-header column (column 0), the rest its columns 1, 2, ...:
    // a list whose rows carry their key there, out of sight behind the row numbers.
    bool headerColumn = false;
    // The list's first order, before the key (each expression may end in " desc").
    QStringList order;
};

// The rows of a list too long to hold: the exact count comes first, and a row is read when asked
// for, with its page. Pages are found by key ranges in the list's order, never by offsets, so the
// end of a million rows comes as fast as the start: from the start or the end of the list, or from
// a neighbouring page held already; a jump into the middle reads, once per order, the key at every
// page's edge. Only the pages used last are kept, so memory stays flat however far one scrolls.
// Nulls of a sorted column come where the engine puts them (first on SQLite, last on the server).
// Rows that other clients add or delete meanwhile show after refresh(); a page that comes back
// short is filled with blank rows so that the count holds until then.
class PagedRows {
public:
    static constexpr int kPageRows = 128;
    // Beyond this many rows a list sorted by a column is read along that column's index.
    static constexpr int kOrderFirstRows = 20000;

    explicit PagedRows(PagedQuery query, int keptPages = 96);

    int count() const { return m_count; }
    // Columns 1 to n of row r (from 1) as text, nulls empty; an empty list outside the list.
    const QStringList& row(int r);
    QString cell(int r, int c);
    // The row showing a key, 0 when the list does not hold it.
    int findKey(const QString& key);
    // Orders the list by the given expressions (each may end in " desc"), then by the key; an empty
    // list gives the key's order back.
    void sortBy(const QStringList& order);
    // The same by columns (from 1), ascending.
    void sortByColumns(const QVector<int>& columns);
    // Leaves a row out of the list from now on (a person deleted or moved away).
    void exclude(const QString& key);
    // Counts again and forgets every page read.
    void refresh();
    const PagedQuery& query() const { return m_query; }

private:
    struct SortKey {
        QString expr;
        bool desc = false;
    };
    struct Page {
        QVector<QStringList> rows;
        QVariantList first, last; // key values of its first and last row
        quint64 used = 0;
    };
    enum class Way { Forward, Backward };

    // The condition, with the rows left out; for reading pages, as the order is best walked.
    QString where(bool forPages = false) const;
    QString orderBy(Way way) const;
    QString keyList() const;
    // Rows of the list after (Forward) or before (Backward) a key tuple in the list's order.
    QString beyond(Way way, const QVariantList& at, QVariantList& binds) const;
    Page read(Way way, const QVariantList& at, int limit) const;
    Page& page(int p);
    Page fetch(int p);
    void readAnchors();

    PagedQuery m_query;
    QVector<SortKey> m_order; // the sort expressions, the key last
    QStringList m_excluded;
    int m_count = 0;
    QString m_pageCondition;
    int m_keptPages;
    bool m_nullsFirst;
    quint64 m_clock = 0;
    QHash<int, Page> m_pages;
    QVector<QVariantList> m_anchors; // the key of the last row of page i, for i = 0, 1, ...
    bool m_anchorsRead = false;
};

} // namespace zq
