#include "HeadCounts.h"

#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <algorithm>
#include <QSet>
#include <QSqlQuery>

namespace zq {

namespace {

QString personsInState(qint32 state) {
    return QStringLiteral(" from trsbasic where fzt=") + QString::number(state);
}

// Codes the database settles in one statement; a few hundred literals keep it well inside the
// limits of both engines.
constexpr int kCodesPerStatement = 400;

} // namespace

QString PersonCodeColumn(const QString& table) {
    return table.toLower() == QLatin1String("trs_bm") ? QStringLiteral("fbmcode")
                                                      : QStringLiteral("neckline");
}

QString CountPersons(const QString& table, qint32 state, const QString& code) {
    QString sql = QStringLiteral("Select Count(*)") + personsInState(state);
    if (!code.isEmpty())
        sql += QStringLiteral(" and ") + PersonCodeColumn(table) + QStringLiteral(" like ") +
               quoted(code + QLatin1Char('%'));
    Recordset rs(conn(), sql);
    return rs.eof() ? QString() : rs.text(0);
}

namespace {

// Both engines compare ASCII letters of the codes without regard to case (like on SQLite, like on
// a citext column on the server): folding them makes a plain prefix test give what like gives.
QString foldAscii(QString s) {
    for (QChar& c : s)
        if (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) c = QChar(c.unicode() + 32);
    return s;
}

// A character outside ASCII that the server lowers onto an ASCII letter (the Kelvin sign, the
// dotted capital I): with such a stored code, codes with letters are left to the database.
bool lowersOntoAscii(QChar c) {
    return c.unicode() > 127 && c.toLower().unicode() < 128;
}

} // namespace

HeadCounts::HeadCounts(const QString& table, qint32 state)
    : m_table(table)
    , m_column(PersonCodeColumn(table))
    , m_state(state) {
    // The counts the database keeps as the persons change, one row per stored value (exactly as
    // stored); every person has a department value, so those rows give the state's total.
    const QString state_ = QString::number(state);
    {
        Recordset rs(conn(), QStringLiteral("select sum(fCount) from tRsHeadCount where fColumn='fbmcode' and fzt=") +
                                 state_);
        m_total = rs.eof() ? 0 : qint64(rs.val(0));
    }
    // Forward only, the counts taken as numbers: a value per room of a large dormitory.
    QVector<QPair<QString, qint64>> groups;
    VisitRows(QStringLiteral("select fValue,fCount from tRsHeadCount where fColumn=") + quoted(m_column.toLower()) +
                  QStringLiteral(" and fzt=") + state_ +
                  QStringLiteral(" and fCount<>0 and fValue<>''") +
                  // The file's index gives the code-unit order; the server would sort by a
                  // collation first (taking longer than reading), so its rows are sorted below.
                  (conn().dialect().isServer() ? QString() : QStringLiteral(" order by fValue")),
              {}, [&](const QSqlQuery& q) {
                  const QString value = textOf(q.value(0));
                  m_oddValues = m_oddValues || std::any_of(value.cbegin(), value.cend(), lowersOntoAscii);
                  groups.append({foldAscii(value), q.value(1).toLongLong()});
              });
    // Stored order is code-unit order unless letters were folded, a value lies beyond the basic
    // plane or the server sent its rows unordered: then it is sorted here.
    if (!std::is_sorted(groups.begin(), groups.end())) std::sort(groups.begin(), groups.end());
    m_values.reserve(groups.size());
    m_prefix.reserve(groups.size() + 1);
    m_prefix.append(0);
    for (const auto& g : groups) {
        m_values.append(g.first);
        m_prefix.append(m_prefix.last() + g.second);
    }
}

HeadCounts::Match HeadCounts::classify(const QString& code) {
    Match m = Match::Caseless;
    for (const QChar c : code) {
        // Wildcards of like, and the escape character of the server's like.
        if (c == QLatin1Char('%') || c == QLatin1Char('_') || c == QLatin1Char('\\')) return Match::Database;
        if (c.unicode() < 128) {
            if (c.isLetter()) m = Match::AsciiLetters;
            continue;
        }
        // Letters beyond ASCII compare by each engine's own rules; a character without case
        // compares equal only to itself.
        if (c.isSurrogate() || c.isLower() || c.isUpper() || c.isTitleCase() || c.toLower() != c ||
            c.toUpper() != c || c.toCaseFolded() != c)
            return Match::Database;
    }
    return m;
}

bool HeadCounts::inMemory(const QString& code) const {
    const Match m = classify(code);
    return m == Match::Caseless || (m == Match::AsciiLetters && !m_oddValues);
}

qint64 HeadCounts::prefixSum(const QString& code) const {
    // Codes sharing a prefix lie together in code-unit order.
    const QString folded = foldAscii(code);
    const auto lo = std::lower_bound(m_values.cbegin(), m_values.cend(), folded);
    const auto hi = std::partition_point(lo, m_values.cend(),
                                         [&folded](const QString& v) { return v.startsWith(folded); });
    return m_prefix[hi - m_values.cbegin()] - m_prefix[lo - m_values.cbegin()];
}

void HeadCounts::prepare(const QStringList& codes) {
    QStringList pending;
    QSet<QString> seen;
    for (const QString& code : codes)
        if (!code.isEmpty() && !inMemory(code) && !m_settled.contains(code) && !seen.contains(code)) {
            seen.insert(code);
            pending.append(code);
        }
    const QString grouped = QStringLiteral("(select ") + m_column + QStringLiteral(" as v,count(*) as n") +
                            personsInState(m_state) + QStringLiteral(" group by ") + m_column +
                            QStringLiteral(") g");
    for (int from = 0; from < pending.size(); from += kCodesPerStatement) {
        const int to = std::min<int>(pending.size(), from + kCodesPerStatement);
        QString values;
        for (int i = from; i < to; ++i) {
            m_settled.insert(pending[i], 0);
            if (i > from) values += QLatin1Char(',');
            values +=
                QStringLiteral("(%1,%2)").arg(QString::number(i), quoted(pending[i] + QLatin1Char('%')));
        }
        // The pattern is the very literal CountPersons writes, so the engine decides each match.
        Recordset rs(conn(), QStringLiteral("select c.column1,sum(g.n) from (values ") + values +
                                 QStringLiteral(") c,") + grouped +
                                 QStringLiteral(" where g.v like c.column2 group by c.column1"));
        for (; !rs.eof(); rs.moveNext())
            m_settled[pending[int(rs.val(0))]] = qint64(rs.val(1));
    }
}

qint64 HeadCounts::count(const QString& code) {
    if (code.isEmpty()) return m_total;
    // A code the statement could not hold fails here as the statement would.
    checked(code);
    if (inMemory(code)) return prefixSum(code);
    if (!m_settled.contains(code)) prepare({code});
    return m_settled.value(code);
}

} // namespace zq
