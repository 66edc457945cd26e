#include "PagedRows.h"

#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QRegularExpression>
#include <QSqlRecord>

#include <algorithm>

namespace zq {

namespace {

const QStringList& noRow() {
    static const QStringList empty;
    return empty;
}

// The condition bounds the column itself (a start of a name, a day, a range): its rows lie
// together along the column's index, where the engine finds them by that bound, in order.
bool boundsColumn(const QString& condition, const QString& expr) {
    static const QRegularExpression plain(QStringLiteral("^(?:\\w+\\.)?([A-Za-z_]\\w*)$"));
    const QRegularExpressionMatch m = plain.match(expr.trimmed());
    if (!m.hasMatch()) return false;
    const QString column = m.captured(1);
    const QRegularExpression bound(QStringLiteral("(?<![\\w.])(?:\\w+\\.)?") + QRegularExpression::escape(column) +
                                       QStringLiteral("(?:::text)?\\s*(?:=|<(?!>)|>|between\\b|like\\s*'[^%_'])"),
                                   QRegularExpression::CaseInsensitiveOption);
    return bound.match(condition).hasMatch();
}

// The condition finds the column's values by their start, compared as stored (a caseless
// pattern on the server): the rows lie apart along the column's caseless index, so they are sorted.
bool foundByStart(const QString& condition, const QString& column) {
    const QRegularExpression start(QStringLiteral("(?<![\\w.])") + QRegularExpression::escape(column) +
                                       QStringLiteral("::text\\s+like\\s*'[^%_']"),
                                   QRegularExpression::CaseInsensitiveOption);
    return start.match(condition).hasMatch();
}

} // namespace

PagedRows::PagedRows(PagedQuery query, int keptPages)
    : m_query(std::move(query))
    , m_keptPages(std::max(keptPages, 4))
    , m_nullsFirst(conn().dialect().nullsFirst()) {
    // Searches by a caseless pattern (names, goods) count and page every match: on the server in
    // the form it compares cheaply.
    m_query.condition = conn().dialect().caselessLikes(m_query.condition);
    sortBy(m_query.order);
}

QString PagedRows::where(bool forPages) const {
    QString w =
        QStringLiteral(" where (") + (forPages ? m_pageCondition : m_query.condition) + QLatin1Char(')');
    if (!m_excluded.isEmpty())
        w += QStringLiteral(" and ") + m_query.key + QStringLiteral(" not in (") +
             placeholders(m_excluded.size()) + QLatin1Char(')');
    return w;
}

QString PagedRows::orderBy(Way way) const {
    // No nulls clause: each engine's own placement mirrors exactly between the two directions, and
    // only it lets an index give the order.
    QStringList parts;
    for (const SortKey& k : m_order)
        parts << k.expr + (k.desc != (way == Way::Backward) ? QStringLiteral(" desc") : QString());
    return QStringLiteral(" order by ") + parts.join(QLatin1Char(','));
}

QString PagedRows::keyList() const {
    QStringList exprs;
    for (const SortKey& k : m_order)
        exprs << k.expr;
    return exprs.join(QLatin1Char(','));
}

QString PagedRows::beyond(Way way, const QVariantList& at, QVariantList& binds) const {
    // (k1 beyond v1) or (k1 = v1 and k2 beyond v2) or ...: the tuple order spelled out, since the
    // engines' row comparisons know nothing of where nulls go.
    QStringList terms;
    QString equalSoFar;
    for (qsizetype i = 0; i < m_order.size() && i < at.size(); ++i) {
        const QString& k = m_order[i].expr;
        const QVariant& v = at[i];
        const bool greater = m_order[i].desc == (way == Way::Backward);
        // The key is never null: its plain range keeps the index usable.
        const bool key = i == m_order.size() - 1;
        // Beyond a value in the direction where nulls lie, nulls follow; coming from a null, the
        // values do, or nothing.
        const bool towardsNulls = greater != m_nullsFirst;
        const QString op = greater ? QStringLiteral(" > ?") : QStringLiteral(" < ?");
        QString step;
        if (v.isNull())
            step = towardsNulls ? QString() : k + QStringLiteral(" is not null");
        else if (towardsNulls && !key)
            step = QLatin1Char('(') + k + op + QStringLiteral(" or ") + k + QStringLiteral(" is null)");
        else
            step = k + op;
        if (!step.isEmpty()) {
            terms << QLatin1Char('(') + equalSoFar + step + QLatin1Char(')');
            // The binds of the equalities before it, then its own.
            for (qsizetype j = 0; j < i; ++j)
                if (!at[j].isNull()) binds << at[j];
            if (!v.isNull()) binds << v;
        }
        equalSoFar += v.isNull() ? k + QStringLiteral(" is null and ") : k + QStringLiteral(" = ? and ");
    }
    return terms.isEmpty() ? QStringLiteral("1=0") : terms.join(QStringLiteral(" or "));
}

PagedRows::Page PagedRows::read(Way way, const QVariantList& at, int limit) const {
    Page page;
    const int keys = int(m_order.size());
    // Rows come in the order the statements walk: for Backward the page's last row first.
    const auto scan = [&](const QString& range, const QVariantList& rangeBinds, int want) {
        QVariantList binds;
        for (const QString& k : m_excluded)
            binds << k;
        QString sql = QStringLiteral("select ") + m_query.columns.join(QLatin1Char(',')) + QLatin1Char(',') +
                      keyList() + QStringLiteral(" from ") + m_query.from + where(true);
        if (!range.isEmpty()) {
            sql += QStringLiteral(" and ") + range;
            binds += rangeBinds;
        }
        if (!at.isEmpty()) {
            const QString past = beyond(way, at, binds);
            // Behind a range of the sorted column the rest of the order only filters: left to the
            // index, its alternatives would be gathered whole and sorted.
            sql += QStringLiteral(" and (") +
                   (range.isEmpty() ? past : conn().dialect().filterAfterOrder(past)) + QLatin1Char(')');
        }
        sql += orderBy(way) + QStringLiteral(" limit ") + QString::number(want);
        VisitRows(sql, binds, [&](const QSqlQuery& q) {
            const int shown = q.record().count() - keys;
            QStringList cells;
            cells.reserve(shown);
            for (int j = 0; j < shown; ++j)
                cells << textOf(q.value(j));
            QVariantList key;
            for (int j = 0; j < keys; ++j)
                key << q.value(shown + j);
            if (page.rows.isEmpty()) page.first = key;
            page.last = std::move(key);
            page.rows << std::move(cells);
        });
    };
    if (keys > 1 && !at.isEmpty() && !at.first().isNull()) {
        // A list sorted by a column, read beyond a row: along the column's index from the row's
        // value, so that the engine stops after a page; its nulls, where they lie ahead, after.
        const SortKey& sorted = m_order.first();
        const bool greater = sorted.desc == (way == Way::Backward);
        scan(sorted.expr + (greater ? QStringLiteral(" >= ?") : QStringLiteral(" <= ?")), {at.first()}, limit);
        if (greater != m_nullsFirst && page.rows.size() < limit)
            scan(sorted.expr + QStringLiteral(" is null"), {}, limit - int(page.rows.size()));
    } else {
        scan(QString(), {}, limit);
    }
    if (way == Way::Backward) {
        std::reverse(page.rows.begin(), page.rows.end());
        std::swap(page.first, page.last);
    }
    return page;
}

void PagedRows::readAnchors() {
    // Every page's last key in one statement: the engine numbers the rows, only a key a page
    // comes back.
    QStringList inner, outer;
    for (qsizetype i = 0; i < m_order.size(); ++i) {
        inner << m_order[i].expr + QStringLiteral(" as zq_k") + QString::number(i);
        outer << QStringLiteral("zq_k") + QString::number(i);
    }
    QVariantList binds;
    for (const QString& k : m_excluded)
        binds << k;
    const QString sql = QStringLiteral("select ") + outer.join(QLatin1Char(',')) +
                        QStringLiteral(" from (select ") + inner.join(QLatin1Char(',')) +
                        QStringLiteral(", row_number() over (") + orderBy(Way::Forward).mid(1) +
                        QStringLiteral(") as zq_rn from ") + m_query.from + where() +
                        QStringLiteral(") t where zq_rn % ") + QString::number(kPageRows) +
                        QStringLiteral(" = 0 order by zq_rn");
    m_anchors.clear();
    VisitRows(sql, binds, [&](const QSqlQuery& q) {
        QVariantList key;
        for (qsizetype i = 0; i < m_order.size(); ++i)
            key << q.value(int(i));
        m_anchors << std::move(key);
    });
    m_anchorsRead = true;
}

PagedRows::Page PagedRows::fetch(int p) {
    const int lastPage = (m_count - 1) / kPageRows;
    const int want = std::min(kPageRows, m_count - p * kPageRows);
    if (p == 0) return read(Way::Forward, {}, want);
    if (auto it = m_pages.constFind(p - 1); it != m_pages.constEnd() && !it->last.isEmpty())
        return read(Way::Forward, it->last, want);
    if (auto it = m_pages.constFind(p + 1); it != m_pages.constEnd() && !it->first.isEmpty())
        return read(Way::Backward, it->first, want);
    if (p == lastPage) return read(Way::Backward, {}, want);
    // Within a few pages of either end the pages towards that end are read first: a view left at
    // the foot of a list that was sorted again asks for the page before the last before the last.
    // A few pages cost less than the edges of every page.
    constexpr int kNearEnd = 4;
    if (p <= kNearEnd) {
        const Page& before = page(p - 1);
        if (!before.last.isEmpty()) return read(Way::Forward, before.last, want);
    } else if (lastPage - p <= kNearEnd) {
        const Page& after = page(p + 1);
        if (!after.first.isEmpty()) return read(Way::Backward, after.first, want);
    }
    if (!m_anchorsRead) readAnchors();
    if (p - 1 < m_anchors.size()) return read(Way::Forward, m_anchors[p - 1], want);
    return {}; // the list shrank under us: blank until refreshed
}

PagedRows::Page& PagedRows::page(int p) {
    auto it = m_pages.find(p);
    if (it == m_pages.end()) {
        Page fresh = fetch(p);
        const int want = std::min(kPageRows, m_count - p * kPageRows);
        while (fresh.rows.size() < want)
            fresh.rows << QStringList();
        if (fresh.rows.size() > want) fresh.rows.resize(want);
        if (m_pages.size() >= m_keptPages) {
            auto oldest = std::min_element(m_pages.begin(), m_pages.end(),
                                           [](const Page& a, const Page& b) { return a.used < b.used; });
            m_pages.erase(oldest);
        }
        it = m_pages.insert(p, std::move(fresh));
    }
    it->used = ++m_clock;
    return *it;
}

const QStringList& PagedRows::row(int r) {
    if (r < 1 || r > m_count) return noRow();
    return page((r - 1) / kPageRows).rows[(r - 1) % kPageRows];
}

QString PagedRows::cell(int r, int c) {
    const QStringList& cells = row(r);
    return c >= 1 && c <= cells.size() ? cells[c - 1] : QString();
}

int PagedRows::findKey(const QString& key) {
    if (m_count == 0 || key.isEmpty()) return 0;
    // A row on show is found where it is, even when the database no longer has it (deleted a
    // moment ago, and about to be taken out of the list).
    if (const int k = m_query.keyColumn; k > 0)
        for (auto it = m_pages.cbegin(); it != m_pages.cend(); ++it)
            for (qsizetype i = 0; i < it->rows.size(); ++i)
                if (it->rows[i].value(k - 1) == key) return it.key() * kPageRows + int(i) + 1;
    // The row's own sort values first, then how many rows come before them.
    QVariantList binds;
    for (const QString& k : m_excluded)
        binds << k;
    binds << key;
    QVariantList at;
    VisitRows(QStringLiteral("select ") + keyList() + QStringLiteral(" from ") + m_query.from + where() +
                  QStringLiteral(" and ") + m_query.key + QStringLiteral(" = ?"),
              binds, [&](const QSqlQuery& q) {
                  if (!at.isEmpty()) return;
                  for (qsizetype i = 0; i < m_order.size(); ++i)
                      at << q.value(int(i));
              });
    if (at.isEmpty()) return 0;
    QVariantList countBinds;
    for (const QString& k : m_excluded)
        countBinds << k;
    const QString sql = QStringLiteral("select count(*) from ") + m_query.from + where() +
                        QStringLiteral(" and (") + beyond(Way::Backward, at, countBinds) + QLatin1Char(')');
    int before = 0;
    VisitRows(sql, countBinds, [&](const QSqlQuery& q) { before = q.value(0).toInt(); });
    return before + 1 <= m_count ? before + 1 : 0;
}

void PagedRows::sortBy(const QStringList& order) {
    m_order.clear();
    for (const QString& o : order) {
        const QString t = o.trimmed();
        const bool desc = t.endsWith(QStringLiteral(" desc"), Qt::CaseInsensitive);
        m_order.append({desc ? t.left(t.size() - 5).trimmed() : t, desc});
    }
    if (!m_order.isEmpty() && foundByStart(m_query.condition, m_order.first().expr))
        m_order.first().expr = conn().dialect().caselessOrder(m_order.first().expr);
    m_order.append({m_query.key, false});
    refresh();
}

void PagedRows::sortByColumns(const QVector<int>& columns) {
    QStringList order;
    for (int c : columns)
        if (c >= 1 && c <= m_query.columns.size()) order << m_query.columns[c - 1];
    sortBy(order);
}

void PagedRows::exclude(const QString& key) {
    if (!m_excluded.contains(key)) m_excluded << key;
    refresh();
}

void PagedRows::refresh() {
    m_pages.clear();
    m_anchors.clear();
    m_anchorsRead = false;
    QVariantList binds;
    for (const QString& k : m_excluded)
        binds << k;
    m_count = 0;
    VisitRows(QStringLiteral("select count(*) from ") + m_query.from + where(), binds,
              [&](const QSqlQuery& q) { m_count = q.value(0).toInt(); });
    // A long list sorted by a column walks that column's index and filters as it goes, unless the
    // condition bounds the column: then the bound itself leads the walk to its rows.
    const bool sorted = m_order.size() > 1;
    m_pageCondition = sorted && m_count > kOrderFirstRows && !boundsColumn(m_query.condition, m_order.first().expr)
                          ? conn().dialect().filterAfterOrder(m_query.condition)
                          : m_query.condition;
}

} // namespace zq
