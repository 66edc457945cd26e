// The change history is written by the database itself: one trigger per recorded table and
// operation (on the server one trigger function per table), generated here from the table list.
// Saves are many and keep changing; a trigger sees every one of them, the imports and the code
// cascade included, writes in the same transaction (a rolled-back save leaves nothing) and costs
// one statement per changed row. Each changed column gives one row: when, who, from where, the
// table, the person (or department), the column, before and after. Captions are not stored; they
// are looked up in the field dictionary when the history is shown, so a renamed caption shows
// everywhere.

#include "Schema.h"

#include <QSet>

namespace zq::schema {

namespace {

// What a recorded table is keyed by: the person's (or department's) column and the row within it.
struct Recorded {
    const char* table;
    const char* key;
    const char* row; // nullptr when one row a person
};

constexpr Recorded kRecorded[] = {
    {"tRsBasic", "fCode", nullptr},       {"tRsBasic_P", "fCode", nullptr},
    {"tRsFamily", "fCode", "fOrderID"},   {"tRsStudy", "fCode", "fOrderID"},
    {"tRsWork", "fCode", "fOrderID"},     {"tRs_WorkState", "fCode", "fOrderID"},
    {"tRsResult", "fCode", "fOrderID"},   {"tRsTech", "fCode", "fOrderID"},
    {"tRsMeed", "fCode", "fOrderID"},     {"tRsRemark", "fcode", "fYear"},
    {"tRsDetail", "fCode", nullptr},      {"tRs_Bm", "fCode", nullptr},
};

// The spouse columns the one-time split copied away stay in tRsBasic unused; the photo is a
// picture, the colour of a department no content.
bool skipped(const QString& table, const Column& c) {
    if (c.type == Type::Blob) return true;
    const QString n = c.name.toLower();
    if (n == QLatin1String("forderid")) return true;
    if (table.compare(QLatin1String("tRs_Bm"), Qt::CaseInsensitive) == 0 && n == QLatin1String("fcolor"))
        return true;
    static const QSet<QString> spouse = {"fpname", "fpbirthday", "fpzz", "fpmz", "fphj",
                                         "fpjg",   "fpphone",    "fpxl", "fprz", "fpdw"};
    return table.compare(QLatin1String("tRsBasic"), Qt::CaseInsensitive) == 0 && spouse.contains(n);
}

QVector<Column> recordedColumns(const Recorded& r) {
    QVector<Column> cols;
    if (QString::fromLatin1(r.table).compare(QLatin1String("tRsBasic_P"), Qt::CaseInsensitive) == 0) {
        // Made by the split, so not in the table list.
        for (const char* c : {"fCode", "fpName", "fpBirthday", "fpZz", "fpMz", "fpHj", "fpJg", "fpPhone", "fpXl",
                              "fpRz", "fpDw"})
            cols.append({QLatin1String(c), Type::Text, 0});
        return cols;
    }
    for (const Column& c : findTable(QLatin1String(r.table))->columns)
        if (!skipped(QLatin1String(r.table), c)) cols << c;
    return cols;
}

// A person's own key says nothing when one of his rows is added or deleted; it counts when it
// changes (the code cascade). The master row's and a department's code are their own content.
bool keyOnlyWhenChanged(const Recorded& r, const Column& c) {
    const QString t = QString::fromLatin1(r.table).toLower();
    return t != QLatin1String("trsbasic") && t != QLatin1String("trs_bm") &&
           c.name.compare(QLatin1String(r.key), Qt::CaseInsensitive) == 0;
}

// A column's value as the history's text. Numbers read alike on both engines: a whole real
// without its ".0", as the server writes it.
QString valueText(const Dialect& d, const QString& ref, const Column& c) {
    if (d.isServer()) return ref + QStringLiteral("::text");
    if (c.type == Type::Real)
        return QStringLiteral("case when %1=cast(%1 as integer) then cast(cast(%1 as integer) as text) else %1 end")
            .arg(ref);
    return ref;
}

enum class Op { Insert = 1, Update = 2, Delete = 3 };

// The kind of change a row counts as in the company report, as an expression over the old (o) and
// new (n) row: 1 a department move, 2 a post, 3 pay, 4 a hire or reinstatement, 5 a leaver. Each
// event marks one column, so that the report counts events.
QString kindOf(const QString& table, const QString& column, Op op, const QString& o, const QString& n) {
    const QString t = table.toLower();
    const QString c = column.toLower();
    if (t == QLatin1String("trsbasic")) {
        if (op == Op::Insert && c == QLatin1String("fcode"))
            return QStringLiteral("case when %1.fzt=1 then 4 else 0 end").arg(n);
        if (op != Op::Update) return QStringLiteral("0");
        if (c == QLatin1String("fbmname")) return QStringLiteral("1");
        if (c == QLatin1String("frz")) return QStringLiteral("2");
        if (c == QLatin1String("fgzname")) return QStringLiteral("3");
        if (c == QLatin1String("fzt"))
            return QStringLiteral("case when %2.fzt=1 then 4 when %1.fzt=1 then 5 else 0 end").arg(o, n);
    }
    if (t == QLatin1String("trstech") && op != Op::Delete) return QStringLiteral("3");
    return QStringLiteral("0");
}

// The department a change belongs to, for the report's branch: the person's at the time.
QString deptOf(const Recorded& r, const QString& rowRef) {
    const QString t = QString::fromLatin1(r.table).toLower();
    if (t == QLatin1String("trsbasic")) return rowRef + QStringLiteral(".fBmCode");
    if (t == QLatin1String("trs_bm")) return rowRef + QStringLiteral(".fCode");
    return QStringLiteral("(select fBmCode from tRsBasic where fCode=%1.%2)").arg(rowRef, QLatin1String(r.key));
}

const QString kColumns = QStringLiteral("fWhen,fUser,fHost,fTable,fCode,fBmCode,fRow,fField,fBefore,fAfter,fOp,fKind");

// The one insert of a trigger: a row per column whose value differs (null and empty alike; case
// counts, whatever the columns' comparison).
QString insertStatement(const Dialect& d, const Recorded& r, Op op) {
    const bool server = d.isServer();
    const QString o = server ? QStringLiteral("OLD") : QStringLiteral("old");
    const QString n = server ? QStringLiteral("NEW") : QStringLiteral("new");
    const QString rowRef = op == Op::Delete ? o : n;
    const QString table = QLatin1String(r.table);
    const QString nothing = server ? QStringLiteral("null::text") : QStringLiteral("null");
    QStringList values;
    for (const Column& c : recordedColumns(r)) {
        if (op != Op::Update && keyOnlyWhenChanged(r, c)) continue;
        const QString& col = c.name;
        const QString before = op == Op::Insert ? nothing : valueText(d, o + QLatin1Char('.') + col, c);
        const QString after = op == Op::Delete ? nothing : valueText(d, n + QLatin1Char('.') + col, c);
        const QString kind = kindOf(table, col, op, o, n);
        if (server)
            values << QStringLiteral("('%1',%2,%3,%4)").arg(col, before, after, kind);
        else
            values << QStringLiteral("select '%1' as f,%2 as b,%3 as a,%4 as k").arg(col, before, after, kind);
    }
    const QString who = server ? QStringLiteral("to_char(statement_timestamp(),'YYYY-MM-DD HH24:MI:SS'),"
                                                "coalesce(current_setting('zq.user',true),''),"
                                                "coalesce(current_setting('zq.host',true),'')")
                               : QStringLiteral("strftime('%Y-%m-%d %H:%M:%S','now','localtime'),zq_user(),zq_host()");
    const QString row = r.row ? rowRef + QLatin1Char('.') + QLatin1String(r.row) : QStringLiteral("null");
    QString sql = QStringLiteral("insert into tRsHistory (%1) select %2,'%3',%4.%5,%6,%7,v.f,v.b,v.a,%8,v.k from ")
                      .arg(kColumns, who, table, rowRef, QLatin1String(r.key), deptOf(r, rowRef), row)
                      .arg(int(op));
    if (server)
        sql += QStringLiteral("(values ") + values.join(QLatin1Char(',')) + QStringLiteral(") v(f,b,a,k)");
    else
        sql += QLatin1Char('(') + values.join(QStringLiteral(" union all ")) + QStringLiteral(") v");
    const QString binary = server ? QString() : QStringLiteral(" collate binary");
    switch (op) {
    case Op::Insert:
        sql += QStringLiteral(" where coalesce(v.a,'')<>''");
        break;
    case Op::Update:
        sql += QStringLiteral(" where coalesce(v.b,'')<>coalesce(v.a,'')") + binary;
        break;
    case Op::Delete:
        sql += QStringLiteral(" where coalesce(v.b,'')<>''");
        break;
    }
    return sql;
}

QString triggerName(const Recorded& r) {
    return QStringLiteral("zqh_") + QString::fromLatin1(r.table).toLower();
}

void dropTriggers(Connection& c, const Recorded& r) {
    const QString name = triggerName(r);
    if (c.dialect().isServer()) {
        c.execute(QStringLiteral("drop trigger if exists %1 on %2").arg(name, QLatin1String(r.table)));
        c.execute(QStringLiteral("drop function if exists %1()").arg(name));
        return;
    }
    for (const char* suffix : {"_i", "_u", "_d"})
        c.execute(QStringLiteral("drop trigger if exists %1%2").arg(name, QLatin1String(suffix)));
}

void createTriggers(Connection& c, const Recorded& r) {
    const Dialect& d = c.dialect();
    const QString name = triggerName(r);
    const QString table = QLatin1String(r.table);
    if (d.isServer()) {
        c.execute(QStringLiteral("create or replace function %1() returns trigger language plpgsql as $zq$\n"
                                 "begin\n"
                                 "  if coalesce(current_setting('zq.history',true),'')='off' then return null; end if;\n"
                                 "  if tg_op='INSERT' then %2;\n"
                                 "  elsif tg_op='UPDATE' then %3;\n"
                                 "  else %4;\n"
                                 "  end if;\n"
                                 "  return null;\n"
                                 "end $zq$")
                      .arg(name, insertStatement(d, r, Op::Insert), insertStatement(d, r, Op::Update),
                           insertStatement(d, r, Op::Delete)));
        c.execute(QStringLiteral("create trigger %1 after insert or update or delete on %2 for each row "
                                 "execute function %1()")
                      .arg(name, table));
        return;
    }
    const struct {
        const char* suffix;
        const char* event;
        Op op;
    } events[] = {{"_i", "insert", Op::Insert}, {"_u", "update", Op::Update}, {"_d", "delete", Op::Delete}};
    for (const auto& e : events)
        c.execute(QStringLiteral("create trigger %1%2 after %3 on %4 when zq_user() is not null begin %5; end")
                      .arg(name, QLatin1String(e.suffix), QLatin1String(e.event), table,
                           insertStatement(d, r, e.op)));
}

// History is never edited, and deleted only by the supervisor's purge.
void guardHistory(Connection& c) {
    if (c.dialect().isServer()) {
        c.execute(QStringLiteral(
            "create or replace function zqh_guard() returns trigger language plpgsql as $zq$\n"
            "begin\n"
            "  if tg_op='DELETE' and coalesce(current_setting('zq.purge',true),'')='on' then return OLD; end if;\n"
            "  raise exception '变更记录不能修改或删除';\n"
            "end $zq$"));
        c.execute(QStringLiteral("drop trigger if exists zqh_guard on tRsHistory"));
        c.execute(QStringLiteral(
            "create trigger zqh_guard before update or delete on tRsHistory for each row execute function zqh_guard()"));
        return;
    }
    c.execute(QStringLiteral("drop trigger if exists zqh_guard_u"));
    c.execute(QStringLiteral("drop trigger if exists zqh_guard_d"));
    c.execute(QStringLiteral(
        "create trigger zqh_guard_u before update on tRsHistory begin select raise(abort,'变更记录不能修改或删除'); end"));
    c.execute(QStringLiteral("create trigger zqh_guard_d before delete on tRsHistory when zq_purge() is null "
                             "begin select raise(abort,'变更记录不能修改或删除'); end"));
}

} // namespace

QStringList historyTables() {
    QStringList t;
    for (const Recorded& r : kRecorded)
        t << QLatin1String(r.table);
    return t;
}

void createHistoryTriggers(Connection& c) {
    createTable(c, *findTable(QStringLiteral("tRsHistory")));
    // A person's history follows his code changes back: those rows are found by the code after and
    // before. Only code rows are indexed, since other values may be long texts.
    for (const char* column : {"fAfter", "fBefore"})
        c.execute(QStringLiteral("create index if not exists ix_trshistory_code%1 on tRsHistory (%2) "
                                 "where fTable='tRsBasic' and fField='fCode'")
                      .arg(QString::fromLatin1(column).toLower(), QLatin1String(column)));
    for (const Recorded& r : kRecorded) {
        if (!tableExists(c, QLatin1String(r.table))) continue;
        dropTriggers(c, r);
        createTriggers(c, r);
    }
    guardHistory(c);
}

void dropHistoryTriggers(Connection& c) {
    for (const Recorded& r : kRecorded)
        if (tableExists(c, QLatin1String(r.table))) dropTriggers(c, r);
}

} // namespace zq::schema
