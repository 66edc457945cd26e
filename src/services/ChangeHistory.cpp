#include "ChangeHistory.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/HistorySession.h"
#include "shell/Recordset.h"
#include "shell/Rights.h"
#include "shell/SqlText.h"

#include <QHash>
#include <QSet>
#include <iterator>

namespace zq {

namespace {

const QString kDay = QStringLiteral("yyyy-MM-dd");

struct Named {
    const char* name;
    const char* caption;
};

// The screens' own names for the recorded tables.
constexpr Named kTables[] = {
    {"tRsBasic", "基本资料"},   {"tRsBasic_P", "配偶情况"}, {"tRsFamily", "家庭情况"},
    {"tRsWork", "工作简历"},    {"tRsStudy", "受训情况"},   {"tRs_WorkState", "本地亲属"},
    {"tRsResult", "主要业绩"},  {"tRsTech", "调薪历史"},    {"tRsMeed", "奖惩记录"},
    {"tRsRemark", "历年评语"},  {"tRsDetail", "其它资料"},  {"tRs_Bm", "部门与岗位"},
};

// Columns the field dictionary has no row for.
constexpr Named kColumns[] = {
    {"fzt", "人员状态"},   {"fBmCode", "部门编码"}, {"fGzCode", "工资编码"}, {"fKqCardID", "考勤卡号"},
    {"fLimited", "限定人数"}, {"fYnxj", "岗位职务"}, {"fgzname", "工资级别"}, {"fDetail1", "岗位职责"},
    {"fDetail2", "备注"},     {"fpy", "评语"},       {"fpdr", "评定人"},     {"fType", "类别"},
    {"fBm", "工作单位"},
};

constexpr const char* kKinds[] = {"全部变更", "部门调动", "岗位变动", "薪资变动", "入职", "离职"};

QString tableCaptionSql() {
    QString sql = QStringLiteral("case lower(h.fTable)");
    for (const Named& t : kTables)
        sql += QStringLiteral(" when '%1' then '%2'")
                   .arg(QString::fromLatin1(t.name).toLower(), QString::fromUtf8(t.caption));
    return sql + QStringLiteral(" else h.fTable end");
}

// The dictionary's caption when shown, else the built-in one, else the column's name.
QString fieldCaptionSql() {
    QString fallback = QStringLiteral("case lower(h.fField)");
    for (const Named& c : kColumns)
        fallback += QStringLiteral(" when '%1' then '%2'")
                        .arg(QString::fromLatin1(c.name).toLower(), QString::fromUtf8(c.caption));
    fallback += QStringLiteral(" else h.fField end");
    return QStringLiteral("coalesce((select max(d.FieldName%1) from RptListDetail d where d.fTable=h.fTable "
                          "and d.FieldName=h.fField),%2)")
        .arg(G().lang(), fallback);
}

QString kindCaptionSql() {
    QString sql = QStringLiteral("case h.fKind");
    for (int k = 1; k <= kChangeKinds; ++k)
        sql += QStringLiteral(" when %1 then '%2'").arg(k).arg(QString::fromUtf8(kKinds[k]));
    return sql + QStringLiteral(" else '' end");
}

QString dayAfter(const QDate& d) {
    return quoted(d.addDays(1).toString(kDay));
}

QString periodCondition(const QDate& from, const QDate& to) {
    QString c;
    if (from.isValid()) c += QStringLiteral(" and h.fWhen>=") + quoted(from.toString(kDay));
    if (to.isValid()) c += QStringLiteral(" and h.fWhen<") + dayAfter(to);
    return c;
}

// Period and branch; a move out of the branch belongs to it too (its old department's name).
QString companyCondition(const CompanyHistoryFilter& f) {
    QString c = QStringLiteral("1=1") + periodCondition(f.from, f.to);
    const QString dept = f.deptCode.trimmed();
    if (!dept.isEmpty())
        c += QStringLiteral(" and (%1 or (h.fKind=1 and h.fBefore in (select b.fName from tRs_Bm b where %2)))")
                 .arg(conn().dialect().startsWithCode(QStringLiteral("h.fBmCode"), dept),
                      conn().dialect().startsWithCode(QStringLiteral("b.fCode"), dept));
    return c;
}

QString caption(const Named* list, int n, const QString& name) {
    for (int i = 0; i < n; ++i)
        if (name.compare(QLatin1String(list[i].name), Qt::CaseInsensitive) == 0)
            return QString::fromUtf8(list[i].caption);
    return {};
}

struct CodeSpan {
    QString code;
    qint64 after = 0; // rows above this id
    qint64 upTo = -1; // and up to this one; -1 for no end
};

// The span of history rows a code was this person's in, ending at `upTo`: it starts after the
// code last left someone else (changed away or deleted) before that.
qint64 codeTakenAfter(const QString& code, qint64 upTo) {
    QString sql = QStringLiteral("select max(h.fId) from tRsHistory h where h.fTable='tRsBasic' and "
                                 "h.fField='fCode' and h.fOp in (2,3) and h.fBefore=") +
                  quoted(code);
    if (upTo >= 0) sql += QStringLiteral(" and h.fId<%1").arg(upTo);
    return qint64(Recordset(conn(), sql).val(0));
}

// The person's codes: his code now, and the code before each change of it, each with the rows it
// was his in. A code given up and later given to another person is the other's from then on.
QVector<CodeSpan> codesOf(const QString& code) {
    QVector<CodeSpan> codes{{code, codeTakenAfter(code, -1), -1}};
    QSet<QString> seen{code.toLower()};
    for (int i = 0; i < codes.size(); ++i) {
        QString sql = QStringLiteral("select h.fId,h.fBefore from tRsHistory h where h.fTable='tRsBasic' "
                                     "and h.fField='fCode' and h.fOp=2 and h.fAfter=") +
                      quoted(codes[i].code) + QStringLiteral(" and h.fId>%1").arg(codes[i].after);
        if (codes[i].upTo >= 0) sql += QStringLiteral(" and h.fId<=%1").arg(codes[i].upTo);
        for (Recordset rs(conn(), sql); !rs.eof(); rs.moveNext()) {
            const QString before = rs.text(1);
            if (before.isEmpty() || seen.contains(before.toLower())) continue;
            seen.insert(before.toLower());
            const qint64 at = qint64(rs.val(0));
            codes.append({before, codeTakenAfter(before, at), at});
        }
    }
    return codes;
}

QString personCondition(const QString& code) {
    QStringList parts;
    for (const CodeSpan& s : codesOf(code)) {
        QString p = QStringLiteral("(h.fCode=") + quoted(s.code);
        if (s.after > 0) p += QStringLiteral(" and h.fId>%1").arg(s.after);
        if (s.upTo >= 0) p += QStringLiteral(" and h.fId<=%1").arg(s.upTo);
        parts << p + QLatin1Char(')');
    }
    return QStringLiteral("h.fTable<>'tRs_Bm' and (") + parts.join(QStringLiteral(" or ")) + QLatin1Char(')');
}

// Every caption of the dictionary, by lower-cased table and field, read once for a list that shows
// them all: a look-up per row costs more than the rows themselves on the server.
class Captions {
public:
    Captions() {
        for (Recordset rs(conn(), QStringLiteral("select fTable,FieldName,FieldName%1 from RptListDetail").arg(G().lang()));
             !rs.eof(); rs.moveNext())
            if (!rs.text(2).isEmpty()) m_captions.insert(key(rs.text(0), rs.text(1)), rs.text(2));
    }
    QString field(const QString& table, const QString& field) const {
        const QString c = m_captions.value(key(table, field));
        if (!c.isEmpty()) return c;
        const QString builtIn = caption(kColumns, int(std::size(kColumns)), field);
        return builtIn.isEmpty() ? field : builtIn;
    }

private:
    static QString key(const QString& table, const QString& field) {
        return table.toLower() + QLatin1Char('|') + field.toLower();
    }
    QHash<QString, QString> m_captions;
};

QVector<SheetColumn> textColumns(std::initializer_list<std::pair<const char*, double>> list) {
    QVector<SheetColumn> c;
    for (const auto& [name, width] : list)
        c.append({QString::fromUtf8(name), CellKind::Text, 0, width});
    return c;
}

} // namespace

QString ChangeKindCaption(int kind) {
    return kind >= 0 && kind <= kChangeKinds ? QString::fromUtf8(kKinds[kind]) : QString();
}

QString HistoryTableCaption(const QString& table) {
    const QString c = caption(kTables, int(std::size(kTables)), table);
    return c.isEmpty() ? table : c;
}

QString HistoryOpCaption(int op) {
    switch (op) {
    case 1:
        return QStringLiteral("新增");
    case 2:
        return QStringLiteral("修改");
    case 3:
        return QStringLiteral("删除");
    }
    return {};
}

const QVector<SheetColumn>& PersonHistoryColumns() {
    static const QVector<SheetColumn> c = textColumns({{"时间", 19},
                                                       {"资料", 10},
                                                       {"行", 4},
                                                       {"字段", 12},
                                                       {"操作", 5},
                                                       {"原值", 24},
                                                       {"新值", 24},
                                                       {"用户", 10},
                                                       {"机器", 12}});
    return c;
}

QVector<QStringList> PersonHistory(const QString& code, const PersonHistoryFilter& f) {
    QString sql = QStringLiteral("select h.fWhen,h.fTable,h.fRow,h.fField,h.fOp,h.fBefore,h.fAfter,h.fUser,h.fHost "
                                 "from tRsHistory h where ") +
                  personCondition(code) + periodCondition(f.from, f.to);
    if (!f.field.isEmpty())
        sql += QStringLiteral(" and h.fTable=") + quoted(f.table) + QStringLiteral(" and h.fField=") + quoted(f.field);
    sql += QStringLiteral(" order by h.fWhen desc,h.fId desc");
    QVector<QStringList> rows = ReadRows(sql);
    const Captions captions;
    for (QStringList& r : rows) {
        r[3] = captions.field(r[1], r[3]);
        r[1] = HistoryTableCaption(r[1]);
        r[4] = HistoryOpCaption(r[4].toInt());
    }
    return rows;
}

QStringList PersonHistoryFields(const QString& code) {
    QStringList fields;
    const QString sql = QStringLiteral("select h.fTable,h.fField from tRsHistory h where ") + personCondition(code) +
                        QStringLiteral(" group by h.fTable,h.fField order by h.fTable,h.fField");
    const Captions captions;
    for (const QStringList& r : ReadRows(sql))
        fields << r[0] + QLatin1Char('\t') + r[1] + QLatin1Char('\t') + HistoryTableCaption(r[0]) + QLatin1Char('.') +
                      captions.field(r[0], r[1]);
    return fields;
}

const QVector<SheetColumn>& CompanyHistoryColumns() {
    static const QVector<SheetColumn> c = textColumns({{"时间", 19},
                                                       {"编号", 10},
                                                       {"姓名", 10},
                                                       {"部门", 14},
                                                       {"变动", 8},
                                                       {"资料", 10},
                                                       {"字段", 12},
                                                       {"原值", 20},
                                                       {"新值", 20},
                                                       {"用户", 10},
                                                       {"机器", 12}});
    return c;
}

PagedQuery CompanyHistoryQuery(const CompanyHistoryFilter& f) {
    PagedQuery q;
    q.columns = {QStringLiteral("h.fWhen"),
                 QStringLiteral("h.fCode"),
                 QStringLiteral("case when h.fTable='tRs_Bm' then (select max(b.fName) from tRs_Bm b where "
                                "b.fCode=h.fCode) else (select max(p.fName) from tRsBasic p where p.fCode=h.fCode) end"),
                 QStringLiteral("(select max(b.fName) from tRs_Bm b where b.fCode=h.fBmCode)"),
                 kindCaptionSql(),
                 tableCaptionSql(),
                 fieldCaptionSql(),
                 QStringLiteral("h.fBefore"),
                 QStringLiteral("h.fAfter"),
                 QStringLiteral("h.fUser"),
                 QStringLiteral("h.fHost")};
    q.from = QStringLiteral("tRsHistory h");
    q.condition = companyCondition(f);
    if (f.kind > 0) q.condition += QStringLiteral(" and h.fKind=%1").arg(f.kind);
    q.key = QStringLiteral("h.fId");
    q.keyColumn = 0;
    return q;
}

QString CompanyHistorySql(const CompanyHistoryFilter& f) {
    const PagedQuery q = CompanyHistoryQuery(f);
    return QStringLiteral("select ") + q.columns.join(QLatin1Char(',')) + QStringLiteral(" from ") + q.from +
           QStringLiteral(" where ") + q.condition + QStringLiteral(" order by ") + q.key;
}

QVector<qint64> CompanyHistoryCounts(const CompanyHistoryFilter& f) {
    QVector<qint64> counts(kChangeKinds + 1, 0);
    for (Recordset rs(conn(), QStringLiteral("select h.fKind,count(*) from tRsHistory h where ") +
                                  companyCondition(f) + QStringLiteral(" group by h.fKind"));
         !rs.eof(); rs.moveNext()) {
        const int k = int(rs.val(0));
        const qint64 n = qint64(rs.val(1));
        counts[0] += n;
        if (k > 0 && k <= kChangeKinds) counts[k] += n;
    }
    return counts;
}

qint64 DeleteHistoryBefore(const QDate& before) {
    if (!G().isSupervisor()) throw DbError(QStringLiteral("只有主管可以删除变更记录"));
    if (!before.isValid()) throw DbError(QStringLiteral("请给出日期"));
    qint64 n = 0;
    {
        Transaction t(conn());
        SetHistoryPurging(conn(), true);
        try {
            n = conn().execute(QStringLiteral("delete from tRsHistory where fWhen<") +
                               quoted(before.toString(kDay)));
            t.commit();
        } catch (...) {
            SetHistoryPurging(conn(), false);
            throw;
        }
        SetHistoryPurging(conn(), false);
    }
    WriteLogRecord(QStringLiteral("删除变更记录 [%1 之前, %2 条]").arg(before.toString(kDay)).arg(n));
    return n;
}

qint64 ExportHistory(const QString& path, const QString& code, const CompanyHistoryFilter& f, QString* error) {
    try {
        if (!code.isEmpty()) {
            ListRowSource rows(PersonHistoryColumns(), PersonHistory(code));
            return ExportRows(path, rows, QStringLiteral("变更记录"), error);
        }
        QueryRowSource rows(CompanyHistoryColumns(), CompanyHistorySql(f));
        return ExportRows(path, rows, QStringLiteral("变更记录"), error);
    } catch (const DbError& e) {
        if (error) *error = e.message();
        return -1;
    }
}

} // namespace zq
