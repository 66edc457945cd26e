#include "PersonListData.h"

#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QHash>

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

QString PersonListQuery(const QString& fields, int state, const QString& filter) {
    return QStringLiteral("Select ") + fields + QStringLiteral(" from tRsBasic Where fzt= ") + num(state) +
           QLatin1Char(' ') + filter;
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

QVector<QStringList> CountTable(const QStringList& captions, const QString& baseCondition) {
    QVector<QStringList> rows(captions.size() * 2);
    for (int i = 0; i < captions.size(); ++i) {
        QString field, caption0;
        {
            Recordset rs(conn(), QStringLiteral("select FieldName,FieldName_0 from RptListDetail where "
                                                "ftable='tRsBasic' and FieldName_0=") +
                                     quoted(captions.at(i)) + QStringLiteral(" Order by OrderID"));
            if (rs.eof()) throw DbError(QStringLiteral("字段字典中没有“%1”").arg(captions.at(i)));
            field = rs.text(0);
            caption0 = rs.text(1);
        }
        QStringList& heads = rows[2 * i];
        QStringList& counts = rows[2 * i + 1];
        heads << caption0;
        counts << QString();
        // The values in the order the database gives them, as the per-value counts took them.
        QVector<QVariant> values;
        {
            Recordset rs(conn(), QStringLiteral("select distinct ") + field +
                                     QStringLiteral(" as t from trsBasic where ") + baseCondition);
            for (; !rs.eof(); rs.moveNext())
                values << rs.value(0);
        }
        if (values.isEmpty()) break; // the rest of the table stays blank
        // One grouped count stands for the count of each value; the groups follow the column's own
        // comparison, as the equality of those counts did.
        QHash<QString, qint64> byValue, folded;
        {
            Recordset rs(conn(), QStringLiteral("select ") + field +
                                     QStringLiteral(",count(*) from trsBasic where ") + baseCondition +
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
            heads << value;
            const auto exact = byValue.constFind(value);
            counts << QString::number(exact != byValue.constEnd() ? exact.value()
                                                                  : folded.value(value.toLower()));
        }
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

} // namespace zq
