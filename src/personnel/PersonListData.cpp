#include "PersonListData.h"

#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/Schema.h"
#include "shell/SqlText.h"

#include <QHash>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <optional>

namespace zq {

ListFilter ComposeFilter(const ListFilterInput& in) {
    ListFilter out;
    out.filterText = in.filterText;
    const int tab = in.deptText.indexOf(QLatin1Char('\t'));
    if (in.deptIndex >= 1 && tab >= 0)
        out.filter = QStringLiteral("and fBmCode like ") + quoted(in.deptText.left(tab) + QLatin1Char('%')) +
                     QLatin1Char(' ');
    QString condition;
    const int comma = out.filterText.indexOf(QLatin1Char(','));
    bool pattern = true;
    if (comma >= 1) { // a comma in the first place is no range
        QString a = out.filterText.left(comma), b = out.filterText.mid(comma + 1);
        if (a > b) std::swap(a, b);
        if (a == b) {
            out.filterText = a;
        } else {
            pattern = false;
            if (!in.field.isEmpty() && !out.filterText.isEmpty())
                condition = in.field + QStringLiteral(" >= ") + quoted(a) + QStringLiteral(" and ") +
                            in.field + QStringLiteral(" <= ") + quoted(b);
        }
    }
    if (pattern && !in.field.isEmpty() && !out.filterText.isEmpty()) {
        const QString p = out.filterText.contains(QLatin1Char('%'))
                              ? out.filterText
                              : QLatin1Char('%') + out.filterText + QLatin1Char('%');
        condition = QLatin1Char(' ') + in.field + QStringLiteral(" like ") + quoted(p) + QLatin1Char(' ');
    }
    if (!condition.isEmpty()) out.filter += QStringLiteral(" And ") + condition;
    return out;
}

PagedQuery PersonListPaged(const QString& fields, int state, const QString& filter) {
    PagedQuery q;
    q.columns = fields.split(QLatin1Char(','));
    q.from = QStringLiteral("tRsBasic");
    q.condition = QStringLiteral("fzt= ") + num(state) + QLatin1Char(' ') + filter;
    q.key = QStringLiteral("fCode");
    q.keyColumn = 0;
    for (qsizetype i = 0; i < q.columns.size(); ++i)
        if (q.columns[i].trimmed().compare(q.key, Qt::CaseInsensitive) == 0) q.keyColumn = int(i) + 1;
    return q;
}

QVector<SeekField> SeekFields() {
    QVector<SeekField> f;
    for (Recordset rs(conn(), QStringLiteral("select * from RptListDetail where ftable='tRsBasic' and "
                                             "FieldName_0<>'' and FieldSeek=1 Order by OrderID"));
         !rs.eof(); rs.moveNext())
        f.append({rs.text(QStringLiteral("FieldName_0")).trimmed(), rs.text(QStringLiteral("FieldName"))});
    return f;
}

QStringList CountableCaptions() {
    QStringList captions;
    for (Recordset rs(conn(), QStringLiteral("select FieldName_%1 from RptListDetail where ftable='tRsBasic' "
                                             "Order by OrderID")
                                  .arg(G().Language));
         !rs.eof() && captions.size() < 52; rs.moveNext())
        captions << rs.text(0);
    if (captions.size() < 52)
        throw DbError(
            QStringLiteral("字段字典中员工档案(tRsBasic)的字段只有 %1 个, 少于 52 个, 无法汇总统计。")
                .arg(captions.size()));
    return captions;
}

namespace {

// One counted field: its caption, then its values and their counts.
struct FieldCount {
    QString caption;
    QStringList values;
    QStringList counts;
};

// The per-value way, in two statements: the values as "select distinct" gives them, and one
// grouped count standing for the count of each value under the column's own comparison.
FieldCount countByStatements(const QString& field, const QString& base) {
    FieldCount f;
    QVector<QVariant> values;
    {
        Recordset rs(conn(), QStringLiteral("select distinct ") + field +
                                 QStringLiteral(" as t from trsBasic where ") + base);
        for (; !rs.eof(); rs.moveNext())
            values << rs.value(0);
    }
    QHash<QString, qint64> byValue, folded;
    if (!values.isEmpty()) {
        Recordset rs(conn(), QStringLiteral("select ") + field +
                                 QStringLiteral(",count(*) from trsBasic where ") + base +
                                 QStringLiteral(" group by ") + field);
        for (; !rs.eof(); rs.moveNext()) {
            if (rs.value(0).isNull()) continue; // "= ''" never finds a null
            byValue.insert(rs.text(0), qint64(rs.val(1)));
            folded.insert(rs.text(0).toLower(), qint64(rs.val(1)));
        }
    }
    for (const QVariant& v : values) {
        const QString value = textOf(v);
        quoted(value); // a quote fails here, as its count statement did
        f.values << value;
        const auto exact = byValue.constFind(value);
        f.counts << QString::number(exact != byValue.constEnd() ? exact.value()
                                                                : folded.value(value.toLower()));
    }
    return f;
}

// The file database compares these columns without regard to ASCII case, and orders them so.
QByteArray nocaseKey(const QString& text) {
    QByteArray b = text.toUtf8();
    for (char& c : b)
        if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
    return b;
}

// The order in which the file database's "select distinct" meets the rows: the columns of the
// index it searches by (after the state), then the row id; empty columns for a plain scan. False
// when its plan is another one, which the statements then follow themselves.
bool distinctOrder(const QString& field, const QString& base, QStringList& orderColumns) {
    Recordset plan(conn(), QStringLiteral("explain query plan select distinct ") + field +
                               QStringLiteral(" as t from trsBasic where ") + base);
    QString access;
    for (; !plan.eof(); plan.moveNext()) {
        const QString detail = plan.text(3);
        if (detail.startsWith(QStringLiteral("SCAN")) || detail.startsWith(QStringLiteral("SEARCH"))) {
            if (!access.isEmpty()) return false; // more than one table access
            access = detail;
        }
    }
    orderColumns.clear();
    if (access.compare(QStringLiteral("SCAN trsBasic"), Qt::CaseInsensitive) == 0) return true;
    static const QRegularExpression byIndex(
        QStringLiteral("^SEARCH trsBasic USING INDEX (\\w+) \\(fzt=\\?\\)$"),
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch m = byIndex.match(access);
    if (!m.hasMatch()) return false;
    Recordset cols(conn(), QStringLiteral("select name from pragma_index_info(") + quoted(m.captured(1)) +
                               QStringLiteral(") order by seqno"));
    for (; !cols.eof(); cols.moveNext())
        orderColumns << cols.text(0);
    if (orderColumns.isEmpty() ||
        orderColumns.first().compare(QStringLiteral("fzt"), Qt::CaseInsensitive) != 0)
        return false;
    orderColumns.removeFirst(); // one state: its rows follow the rest of the index
    return true;
}

// All fields at once on the file database, from one pass over the rows, in the order its distinct
// statements would meet them. False when a plan is of another kind.
bool countInOnePass(const QStringList& fields, const QString& base, QVector<FieldCount>& out) {
    QStringList order;
    for (int i = 0; i < fields.size(); ++i) {
        QStringList o;
        if (!distinctOrder(fields.at(i), base, o) || (i > 0 && o != order)) return false;
        order = o;
    }
    // Where each value is first met, in the distinct statement's order, and how many persons
    // equal it; rows are not kept.
    struct First {
        QByteArray order;
        qint64 rowid = 0;
        QVariant value;
    };
    const auto before = [](const First& a, const QByteArray& order, qint64 rowid) {
        return order != a.order ? order < a.order : rowid < a.rowid;
    };
    QVector<QHash<QByteArray, First>> firsts(fields.size());
    QVector<QHash<QByteArray, qint64>> counts(fields.size());
    QVector<std::optional<First>> nulls(fields.size());
    {
        QStringList columns{QStringLiteral("rowid")};
        columns += order;
        columns += fields;
        Recordset rs(conn(), QStringLiteral("select ") + columns.join(QLatin1Char(',')) +
                                 QStringLiteral(" from trsBasic NOT INDEXED where ") + base);
        const int at = 1 + int(order.size());
        QByteArray key;
        for (; !rs.eof(); rs.moveNext()) {
            const qint64 rowid = rs.value(0).toLongLong();
            key.clear();
            for (int c = 1; c < at; ++c) {
                const QVariant v = rs.value(c);
                // Nulls come first in an index, then the texts without regard to ASCII case.
                key += v.isNull() ? QByteArray(1, '\x00') : '\x01' + nocaseKey(v.toString()) + '\x00';
            }
            for (int f = 0; f < fields.size(); ++f) {
                const QVariant v = rs.value(at + f);
                if (v.isNull()) {
                    if (!nulls[f] || before(*nulls[f], key, rowid)) nulls[f] = First{key, rowid, v};
                    continue;
                }
                const QByteArray k = nocaseKey(v.toString());
                ++counts[f][k];
                auto it = firsts[f].find(k);
                if (it == firsts[f].end())
                    firsts[f].insert(k, {key, rowid, v});
                else if (before(it.value(), key, rowid))
                    it.value() = {key, rowid, v};
            }
        }
    }
    for (int f = 0; f < fields.size(); ++f) {
        QVector<First> values = firsts.at(f).values().toVector();
        if (nulls.at(f)) values << *nulls.at(f);
        std::sort(values.begin(), values.end(),
                  [&](const First& a, const First& b) { return before(b, a.order, a.rowid); });
        FieldCount fc;
        for (const First& v : values) {
            const QString value = textOf(v.value);
            quoted(value); // a quote fails here, as its count statement did
            fc.values << value;
            fc.counts << QString::number(counts.at(f).value(nocaseKey(value)));
        }
        out << fc;
    }
    return true;
}

// On the server: the values of each field as its distinct statement gives them (their order is the
// server's own), and the counts of all fields from one grouped pass, each group the persons equal
// to its value under the column's comparison.
void countInGroupingSets(const QStringList& fields, const QString& base, QVector<FieldCount>& out) {
    const int n = int(fields.size());
    QVector<QVector<QVariant>> values(n);
    int counted = 0;
    for (; counted < n; ++counted) {
        Recordset rs(conn(), QStringLiteral("select distinct ") + fields.at(counted) +
                                 QStringLiteral(" as t from trsBasic where ") + base);
        for (; !rs.eof(); rs.moveNext())
            values[counted] << rs.value(0);
        if (values.at(counted).isEmpty()) break; // the fields after it are not counted
    }
    QStringList sets, flags;
    for (const QString& f : fields) {
        sets << QLatin1Char('(') + f + QLatin1Char(')');
        flags << QStringLiteral("grouping(") + f + QLatin1Char(')');
    }
    QVector<QHash<QString, qint64>> counts(n);
    if (counted > 0) {
        Recordset rs(conn(), QStringLiteral("select ") + fields.join(QLatin1Char(',')) +
                                 QStringLiteral(",count(*),") + flags.join(QLatin1Char(',')) +
                                 QStringLiteral(" from trsBasic where ") + base +
                                 QStringLiteral(" group by grouping sets (") + sets.join(QLatin1Char(',')) +
                                 QLatin1Char(')'));
        for (; !rs.eof(); rs.moveNext()) {
            int f = 0;
            while (f < n && rs.val(n + 1 + f) != 0)
                ++f;
            if (f == n || rs.value(f).isNull()) continue; // "= ''" never finds a null
            counts[f].insert(rs.text(f).toLower(), qint64(rs.val(n)));
        }
    }
    for (int f = 0; f < n && f <= counted; ++f) {
        FieldCount fc;
        for (const QVariant& v : values.at(f)) {
            const QString value = textOf(v);
            quoted(value); // a quote fails here, as its count statement did
            fc.values << value;
            fc.counts << QString::number(counts.at(f).value(value.toLower()));
        }
        out << fc;
        if (fc.values.isEmpty()) break;
    }
}

// The state alone, when the base condition is nothing but " fzt= N ": the kept counts are per state.
std::optional<int> stateOnly(const QString& base) {
    static const QRegularExpression bare(QStringLiteral("^\\s*fzt\\s*=\\s*(-?\\d+)\\s*$"),
                                         QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch m = bare.match(base);
    if (!m.hasMatch()) return std::nullopt;
    return m.captured(1).toInt();
}

bool countsKept(const QString& field) {
    return schema::keptValueColumns().contains(field.trimmed(), Qt::CaseInsensitive);
}

// A value as the column compares it: the file's columns ignore ASCII case, the server's caseless
// text all case.
QByteArray folded(const QString& value) {
    return conn().dialect().isServer() ? value.toLower().toUtf8() : nocaseKey(value);
}

// The values of a field in the order its distinct statement gives them. On the server a sorted
// distinct ("Unique" over sorted rows, as at a large company) gives the kept values in the
// column's order, nulls where the engine puts them, unless two kept values differ only in case
// (which one the server shows is its own); any other plan, and that case, run the statement.
QVector<QVariant> distinctValues(const QString& field, const QString& base, const QStringList& ordered,
                                 bool nulls) {
    const QString distinct =
        QStringLiteral("select distinct ") + field + QStringLiteral(" as t from trsBasic where ") + base;
    const Dialect& d = conn().dialect();
    QVector<QVariant> values;
    if (d.isServer() && Recordset(conn(), QStringLiteral("explain ") + distinct).text(0).startsWith(
                            QStringLiteral("Unique"))) {
        bool twins = false;
        for (qsizetype i = 1; i < ordered.size() && !twins; ++i)
            twins = folded(ordered.at(i)) == folded(ordered.at(i - 1));
        if (!twins) {
            if (nulls && d.nullsFirst()) values << QVariant();
            for (const QString& v : ordered)
                values << v;
            if (nulls && !d.nullsFirst()) values << QVariant();
            return values;
        }
    }
    for (Recordset rs(conn(), distinct); !rs.eof(); rs.moveNext())
        values << rs.value(0);
    return values;
}

// A field whose counts the database keeps, in a state: the persons of each value from the kept
// rows, summed as the column compares values, and the values as its distinct statement gives them
// (on the file by the index of the state and the field, value to value).
FieldCount countKept(const QString& field, int state, const QString& base) {
    const Dialect& d = conn().dialect();
    const QString key = field.trimmed().toLower();
    QHash<QByteArray, qint64> persons;
    QStringList ordered;
    bool nulls = false;
    for (Recordset rs(conn(), QStringLiteral("select fColumn,fValue,fCount from tRsHeadCount where fColumn in (") +
                                  quoted(QStringLiteral("v:") + key) + QLatin1Char(',') +
                                  quoted(QStringLiteral("n:") + key) + QStringLiteral(") and fzt=") + num(state) +
                                  QStringLiteral(" and fCount<>0 order by fColumn,") +
                                  d.caseless(QStringLiteral("fValue")) + QStringLiteral(",fValue"));
         !rs.eof(); rs.moveNext()) {
        if (rs.text(0).startsWith(QLatin1Char('n'))) {
            nulls = true;
            continue;
        }
        ordered << rs.text(1);
        persons[folded(rs.text(1))] += qint64(rs.val(2));
    }
    FieldCount f;
    for (const QVariant& v : distinctValues(field, base, ordered, nulls)) {
        const QString value = textOf(v);
        quoted(value); // a quote fails here, as its count statement did
        f.values << value;
        f.counts << QString::number(persons.value(folded(value))); // a null counts the empty text
    }
    return f;
}

} // namespace

QVector<QStringList> CountTable(const QStringList& captions, const QString& baseCondition) {
    QStringList fields, captions0;
    for (const QString& caption : captions) {
        Recordset rs(conn(), QStringLiteral("select FieldName,FieldName_0 from RptListDetail where "
                                            "ftable='tRsBasic' and FieldName_0=") +
                                 quoted(caption) + QStringLiteral(" Order by OrderID"));
        if (rs.eof()) throw DbError(QStringLiteral("字段字典中没有“%1”").arg(caption));
        fields << rs.text(0);
        captions0 << rs.text(1);
    }
    // Fields whose counts are kept need no pass over the persons when only the state is asked.
    QVector<FieldCount> counted(fields.size());
    QStringList rest;
    QVector<int> restAt;
    const std::optional<int> state = stateOnly(baseCondition);
    for (int i = 0; i < fields.size(); ++i) {
        if (state && countsKept(fields.at(i))) {
            counted[i] = countKept(fields.at(i), *state, baseCondition);
        } else {
            rest << fields.at(i);
            restAt << i;
        }
    }
    if (!rest.isEmpty()) {
        QVector<FieldCount> r;
        // Every pass over the persons costs: one pass for all fields where the engine allows it.
        if (conn().dialect().isServer())
            countInGroupingSets(rest, baseCondition, r);
        else if (!countInOnePass(rest, baseCondition, r)) {
            r.clear();
            for (const QString& field : rest) {
                r << countByStatements(field, baseCondition);
                if (r.last().values.isEmpty()) break;
            }
        }
        for (int j = 0; j < r.size(); ++j)
            counted[restAt.at(j)] = r.at(j);
    }
    QVector<QStringList> rows(captions.size() * 2);
    for (int i = 0; i < counted.size(); ++i) {
        rows[2 * i] << captions0.at(i) << counted.at(i).values;
        rows[2 * i + 1] << QString() << counted.at(i).counts;
        // A field without any value ends the table there.
        if (counted.at(i).values.isEmpty()) break;
    }
    // Blank cells to the widest row used, as one table.
    qsizetype width = 0;
    for (const QStringList& r : rows)
        width = std::max(width, r.size());
    for (QStringList& r : rows)
        while (r.size() < width)
            r << QString();
    return rows;
}

void DecodeCountHeadings(QVector<QStringList>& rows) {
    static const QHash<QString, QString> sex{{"1", "男"}, {"0", "女"}};
    static const QHash<QString, QString> marital{{"0", "末婚"}, {"1", "已婚"}, {"2", "离异"}, {"3", "丧偶"}};
    for (QStringList& row : rows) {
        const QHash<QString, QString>* words = row.value(0) == QStringLiteral("性别")   ? &sex
                                               : row.value(0) == QStringLiteral("婚否") ? &marital
                                                                                        : nullptr;
        if (!words) continue;
        for (int c = 1; c < row.size(); ++c) {
            if (c >= 2 && row.at(c).isEmpty()) break;
            row[c] = words->value(row.at(c), row.at(c));
        }
    }
}

QVector<CountedValue> CountedValues(const QVector<QStringList>& table, int captionRow, int most) {
    QVector<CountedValue> values;
    if (captionRow < 0 || captionRow + 1 >= table.size()) return values;
    const QStringList& heads = table.at(captionRow);
    const QStringList& counts = table.at(captionRow + 1);
    for (int c = 1; c < heads.size(); ++c) {
        // The table's columns run as far as its widest field: a blank pair past the first ends this one.
        if (c >= 2 && heads.at(c).isEmpty() && counts.value(c).isEmpty()) break;
        values.append(
            {heads.at(c).isEmpty() ? QStringLiteral("(空)") : heads.at(c), counts.value(c).toLongLong()});
    }
    std::stable_sort(values.begin(), values.end(),
                     [](const CountedValue& a, const CountedValue& b) { return a.persons > b.persons; });
    if (most > 1 && values.size() > most) {
        qint64 rest = 0;
        for (qsizetype i = most - 1; i < values.size(); ++i)
            rest += values.at(i).persons;
        values.resize(most - 1);
        values.append({QStringLiteral("其他"), rest});
    }
    return values;
}

QVector<QStringList> CountTotalsRows(const QVector<CountedValue>& values) {
    qint64 total = 0;
    for (const CountedValue& v : values)
        total += v.persons;
    const auto share = [total](qint64 n) {
        return total == 0 ? QStringLiteral("0.0%")
                          : QString::number(100.0 * double(n) / double(total), 'f', 1) + QLatin1Char('%');
    };
    QVector<QStringList> rows;
    for (const CountedValue& v : values)
        rows.append({v.value, QString::number(v.persons), share(v.persons)});
    rows.append({QStringLiteral("合计"), QString::number(total), share(total)});
    return rows;
}

} // namespace zq
