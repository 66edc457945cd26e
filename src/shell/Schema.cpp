#include "Schema.h"

#include "DbError.h"
#include "Recordset.h"
#include "SqlText.h"
#include "TextSearch.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>

#include <tuple>

namespace zq::schema {

namespace {

struct Step {
    int version;
    std::function<void(Connection&)> run;
};

void createAllTables(Connection& c) {
    for (const Table& t : tables())
        createTable(c, t);
}

// What the screens check by query before a save is also a constraint, so that two clients saving
// at once cannot both pass the check. Comparison follows the columns (case-blind on both engines),
// as the checks do. An identity card may be blank for many.
struct UniqueKey {
    const char* table;
    const char* columns;
    const char* where;
};
constexpr UniqueKey kUniqueKeys[] = {
    {"tRsBasic", "fCode", nullptr},
    {"tRsBasic", "fSfz", "trim(fSfz)<>''"},
    {"tRs_Bm", "fCode", nullptr},
    {"tRs_Bm", "fName", nullptr},
    {"tRs_House", "fCode", nullptr},
    {"tRs_House", "fName", nullptr},
    {"tWd_File0", "fCode", nullptr},
    {"tWd_File0", "fName", nullptr},
    {"tWd_File1", "fCode", nullptr},
    {"tWd_File1", "fName", nullptr},
    {"trsPersonMove", "moveNmb", nullptr},
    {"trsCard", "fcode,cardcode", nullptr},
    // One spouse row, one row of extra details and one appraisal a year for a person at most.
    {"tRsBasic_P", "fCode", nullptr},
    {"tRsDetail", "fCode", nullptr},
    {"tRsRemark", "fcode,fYear", nullptr},
    {"tRs_NewsSeen", "fUser", nullptr},
};

QString uniqueIndexName(const UniqueKey& k) {
    return QStringLiteral("ux_%1_%2")
        .arg(QString::fromLatin1(k.table).toLower(),
             QString::fromLatin1(k.columns).toLower().replace(QLatin1Char(','), QLatin1Char('_')));
}

// The values that stand more than once, as "table.columns = value (n 行)", at most ten a key.
QStringList duplicatesOf(Connection& c, const UniqueKey& k) {
    const QString cols = QString::fromLatin1(k.columns);
    QString columnsAndRest = cols + QStringLiteral(",count(*) from ") + k.table;
    if (k.where) columnsAndRest += QStringLiteral(" where ") + QLatin1String(k.where);
    columnsAndRest +=
        QStringLiteral(" group by ") + cols + QStringLiteral(" having count(*)>1 order by ") + cols;
    QStringList found;
    Recordset rs(c, c.dialect().selectTop(10, columnsAndRest));
    const int n = rs.fieldCount() - 1;
    for (; !rs.eof(); rs.moveNext()) {
        QStringList values;
        for (int i = 0; i < n; ++i)
            values << rs.text(i);
        found << QStringLiteral("%1.%2 = %3 (%4 行)")
                     .arg(QLatin1String(k.table), cols, values.join(QLatin1Char(',')), rs.text(n));
    }
    return found;
}

// The keys of the office lists, taken as the maximum plus one: two clients adding at once could
// once both take the same one.
constexpr UniqueKey kOfficeKeys[] = {
    {"tRs_meeting", "fID", nullptr},
    {"tRs_News", "fID", nullptr},
    {"tRs_RptFlow", "fID", nullptr},
};

template <std::size_t N> void addUniqueKeys(Connection& c, const UniqueKey (&keys)[N]) {
    QStringList duplicates;
    for (const UniqueKey& k : keys)
        if (tableExists(c, QLatin1String(k.table))) duplicates << duplicatesOf(c, k);
    if (!duplicates.isEmpty())
        throw DbError(QStringLiteral("数据库中有重复的编号或名称，不能升级，未作任何改动。请先改正：\n") +
                      duplicates.join(QLatin1Char('\n')));
    for (const UniqueKey& k : keys) {
        if (!tableExists(c, QLatin1String(k.table))) continue;
        QString sql = QStringLiteral("create unique index if not exists ") + uniqueIndexName(k) +
                      QStringLiteral(" on ") + k.table + QStringLiteral(" (") + k.columns + QLatin1Char(')');
        if (k.where) sql += QStringLiteral(" where ") + QLatin1String(k.where);
        c.execute(sql);
    }
}

void addUniqueKeys(Connection& c) {
    addUniqueKeys(c, kUniqueKeys);
}

// Rows that share a key keep it once, in the order they were stored; each other one takes a new
// key after the greatest. Nothing outside the row refers to these keys.
void renumberSharedKeys(Connection& c, const QString& table) {
    if (!tableExists(c, table)) return;
    QVector<QVariant> locators;
    {
        Recordset rs(c, QStringLiteral("select ") + c.dialect().rowLocatorSelect() +
                            QStringLiteral(", fID from ") + table +
                            QStringLiteral(" where fID in (select fID from ") + table +
                            QStringLiteral(" group by fID having count(*)>1) order by fID, zq_rowloc"));
        QString last;
        for (; !rs.eof(); rs.moveNext()) {
            if (rs.text(1) == last) locators << rs.value(0);
            last = rs.text(1);
        }
    }
    for (const QVariant& loc : locators)
        c.executeOne(QStringLiteral("update ") + table +
                         QStringLiteral(" set fID=(select coalesce(max(fID),0)+1 from ") + table +
                         QStringLiteral(") where ") + c.dialect().rowLocatorCondition(),
                     {loc});
}

bool columnExists(Connection& c, const QString& table, const QString& column) {
    try {
        Recordset rs(c, QStringLiteral("select ") + column + QStringLiteral(" from ") + table +
                            QStringLiteral(" where 1=2"));
        return true;
    } catch (const DbError&) {
        return false;
    }
}

// Columns that older databases lack, which the current table definitions hold.
void addMissingColumns(Connection& c, const QString& table, const QStringList& columns) {
    const Table* t = findTable(table);
    if (!t || !tableExists(c, table)) return;
    for (const Column& col : t->columns)
        if (columns.contains(col.name, Qt::CaseInsensitive) && !columnExists(c, table, col.name))
            c.execute(QStringLiteral("alter table ") + table + QStringLiteral(" add column ") + col.name +
                      QLatin1Char(' ') + columnType(c.dialect(), col));
}

// A module added after the first seed: the next five positions of the rights string.
void addModule(Connection& c, const QString& key, const QString& caption0, const QString& caption1) {
    if (Recordset(c, QStringLiteral("select count(*) from tSysFunc where Model_Name=") + quoted(key)).val(0) >
        0)
        return;
    const int serial = int(Recordset(c, QStringLiteral("select max(SerialNo) from tSysFunc")).val(0)) + 5;
    c.execute(QStringLiteral("insert into tSysFunc (SerialNo,Model_Name,Model_Name_0,Model_Name_1,SecondPass,"
                             "Password,NoUse_) values (?,?,?,?,0,'',0)"),
              {serial, key, caption0, caption1});
}

} // namespace

bool splitSpouseTable(Connection& c) {
    if (tableExists(c, QStringLiteral("tRsBasic_P"))) return false;
    c.execute(c.dialect().selectInto(
        QStringLiteral("tRsBasic_P"),
        QStringLiteral(
            "Select fCode,fpName,fpBirthday,fpZz,fpMz,fpHj,fpJg,fpPhone,fpXl,fpRz,fpDw From tRsBasic")));
    c.execute(QStringLiteral(
        "Update RptListDetail Set fTable='tRsBasic_P' Where fTable='tRsBasic' And OrderID>=69"));
    return true;
}

namespace {

// Ordered upgrade steps. Each runs in one transaction and must be safe to run again over its own
// result.
const QVector<Step>& steps() {
    static const QVector<Step> s = {
        {1,
         [](Connection& c) {
             createAllTables(c);
             seed(c);
             createPrintTemplates(c);
             createUserTables(c);
         }},
        {2,
         [](Connection& c) {
             // The checkers' answers were once added by the report screen under running clients.
             addMissingColumns(c, QStringLiteral("tRs_RptFlow"),
                               {QStringLiteral("fChecker1_"), QStringLiteral("fChecker2_"),
                                QStringLiteral("fChecker3_"), QStringLiteral("fChecker4_")});
             addUniqueKeys(c);
         }},
        {3,
         [](Connection& c) {
             // The spouse table was once split off by the staff register as it opened, under
             // running clients; now the upgrade does it, and its keys are unique.
             splitSpouseTable(c);
             addUniqueKeys(c);
         }},
        {4,
         [](Connection& c) {
             // Unread notices: when each was posted, and when each user last opened the board.
             // Notices of before carry no stamp and count as read.
             addMissingColumns(c, QStringLiteral("tRs_News"), {QStringLiteral("fPosted")});
             c.execute(QStringLiteral("create index if not exists ix_trs_news_posted on tRs_News (fPosted)"));
             createTable(c, *findTable(QStringLiteral("tRs_NewsSeen")));
             addUniqueKeys(c);
         }},
        {5,
         [](Connection& c) {
             // Documents of the archive are found by the words of their names and texts.
             CreateSearchIndex(c);
             IndexStoredTexts(c, QStringLiteral("tWd_File1"), QStringLiteral("fYnxj=1"));
         }},
        {6,
         [](Connection& c) {
             // The register reads its list in code order a page at a time, within a state.
             c.execute(QStringLiteral(
                 "create index if not exists ix_trsbasic_state_code on tRsBasic (fzt, fCode)"));
             // The register lists a department's staff by the prefix of their department code.
             if (c.dialect().isServer())
                 c.execute(QStringLiteral("create index if not exists ix_trsbasic_bmprefix on tRsBasic "
                                          "(lower(fBmCode::text) text_pattern_ops)"));
             // A database analysed before would have its planner weigh the new indexes blind, and
             // take the code index for the grouped head counts.
             if (c.dialect().isServer() || tableExists(c, QStringLiteral("sqlite_stat1")))
                 c.execute(QStringLiteral("analyze tRsBasic"));
         }},
        {7,
         [](Connection& c) {
             // Every change of a person's records and of the departments is remembered. Databases
             // of before start with an empty history.
             createHistoryTriggers(c);
             // The company report of changes and the organisation chart are modules of the menu.
             addModule(c, QStringLiteral("mnuRsHistory"), QStringLiteral("人事变动报表"),
                       QStringLiteral("人事變動報表"));
             addModule(c, QStringLiteral("mnuRsOrgChart"), QStringLiteral("组织机构图"),
                       QStringLiteral("組織機構圖"));
         }},
        {8,
         [](Connection& c) {
             // Office keys are unique, so that two clients adding at once get distinct ones.
             for (const UniqueKey& k : kOfficeKeys)
                 renumberSharedKeys(c, QLatin1String(k.table));
             addUniqueKeys(c, kOfficeKeys);
         }},
        {9,
         [](Connection& c) {
             // The trees' and the home page's head counts are kept as the persons change, and the
             // home page's dates within a state are found by index, so that neither reads the whole
             // register at every look.
             createHeadCounts(c);
             const QString text = c.dialect().isServer() ? QStringLiteral("::text") : QString();
             for (const char* column : {"fSpday", "contractlimt", "leavetime"})
                 c.execute(QStringLiteral("create index if not exists ix_trsbasic_state_%1 on tRsBasic (fzt, (%2%3))")
                               .arg(QString::fromLatin1(column).toLower(), QLatin1String(column), text));
             if (c.dialect().isServer() || tableExists(c, QStringLiteral("sqlite_stat1")))
                 c.execute(QStringLiteral("analyze tRsBasic"));
         }},
        {10,
         [](Connection& c) {
             // A notice knows who posted it, so that his own does not count as unread to him.
             // Notices of before have no poster and count as they did.
             addMissingColumns(c, QStringLiteral("tRs_News"), {QStringLiteral("fPoster")});
         }},
        {11,
         [](Connection& c) {
             // The statistics screen's most counted fields (sex, education, department) are kept per
             // value with the head counts, so that counting them reads their values, not every
             // person.
             createHeadCounts(c);
             // The register finds names by their start: on the server through their text as stored.
             // The file database lists a field's values in the order its distinct statement meets
             // them: by an index of the state and the field that order is the field's own, and the
             // statement skips from value to value.
             if (c.dialect().isServer())
                 c.execute(QStringLiteral("create index if not exists ix_trsbasic_name_pattern on tRsBasic "
                                          "((fName::text) text_pattern_ops)"));
             else
                 for (const QString& column : keptValueColumns())
                     c.execute(QStringLiteral("create index if not exists ix_trsbasic_state_%1 on tRsBasic (fzt, %2)")
                                   .arg(column.toLower(), column));
             if (c.dialect().isServer() || tableExists(c, QStringLiteral("sqlite_stat1")))
                 c.execute(QStringLiteral("analyze tRsBasic"));
         }},
        {12,
         [](Connection& c) {
             // The server counts persons added or removed once a statement, not once a row.
             createHeadCounts(c);
         }},
        {13,
         [](Connection& c) {
             // Time stamps are compared as stored on the server: the company's report of changes
             // ranges over a month of a million history rows.
             if (!c.dialect().isServer()) return;
             for (const auto& [table, column] : {std::pair{"tRsHistory", "fWhen"}, std::pair{"tSysUser", "fLastLogin"},
                                                 std::pair{"tSysLog", "fTime"}})
                 if (tableExists(c, QLatin1String(table)))
                     c.execute(QStringLiteral("alter table %1 alter column %2 type %3")
                                   .arg(QLatin1String(table), QLatin1String(column), c.dialect().stampType()));
             c.execute(QStringLiteral("analyze tRsHistory"));
         }},
        {14,
         [](Connection& c) {
             // The server's indexes of the home page's dates also carry the dates themselves, so that
             // counting a month of contracts reads the index alone, not 16,000 persons' rows.
             if (!c.dialect().isServer()) return;
             for (const char* column : {"fSpday", "contractlimt", "leavetime"}) {
                 const QString name = QStringLiteral("ix_trsbasic_state_") + QString::fromLatin1(column).toLower();
                 c.execute(QStringLiteral("drop index if exists ") + name);
                 c.execute(QStringLiteral("create index %1 on tRsBasic (fzt, (%2::text)) include (%2)")
                               .arg(name, QLatin1String(column)));
             }
             c.execute(QStringLiteral("analyze tRsBasic"));
         }},
        {15,
         [](Connection& c) {
             // The server's look-ups by lower-cased text read an index alone, its column carried along:
             // notices, meetings and reports find their department by its name (a year of meetings
             // looks up hundreds), loans their person by the code (a seek tens of thousands), a
             // department's click counts its staff in a state by the prefix of their department code,
             // and a search the persons whose names begin alike (86,000 王… in a million).
             if (!c.dialect().isServer()) return;
             for (const auto& [index, table, column] : {std::tuple{"ix_trs_bm_lowername", "tRs_Bm", "fName"},
                                                        std::tuple{"ix_trsbasic_lowercode", "tRsBasic", "fCode"}})
                 c.execute(QStringLiteral("create index if not exists %1 on %2 ((%3)) include (%4)")
                               .arg(QLatin1String(index), QLatin1String(table),
                                    Dialect::lowerBytes(QLatin1String(column)), QLatin1String(column)));
             for (const auto& [index, expr, column] :
                  {std::tuple{"ix_trsbasic_bmprefix", "lower(fBmCode::text)", "fBmCode"},
                   std::tuple{"ix_trsbasic_name_pattern", "(fName::text)", "fName"}}) {
                 c.execute(QStringLiteral("drop index if exists ") + QLatin1String(index));
                 c.execute(QStringLiteral("create index %1 on tRsBasic (%2 text_pattern_ops) include (fzt, %3)")
                               .arg(QLatin1String(index), QLatin1String(expr), QLatin1String(column)));
             }
             c.execute(QStringLiteral("analyze tRs_Bm"));
             c.execute(QStringLiteral("analyze tRsBasic"));
         }},
        {16,
         [](Connection& c) {
             // The server's head counts read the persons' indexes alone only on pages its visibility
             // map marks unchanged. Any write to a page clears its mark, and by default the marks are
             // renewed only after a fifth of the persons changed: at a million, scattered changes
             // clear most pages long before that, and the company's count reads every row again
             // (50 → 100 ms). Renewed after one person in a hundred.
             if (!c.dialect().isServer()) return;
             c.execute(QStringLiteral("alter table tRsBasic set (autovacuum_vacuum_scale_factor=0.01,"
                                      "autovacuum_vacuum_insert_scale_factor=0.01,"
                                      "autovacuum_analyze_scale_factor=0.02)"));
         }},
    };
    return s;
}

void setVersion(Connection& c, int v) {
    c.execute(QStringLiteral("delete from zq_schema"));
    c.execute(QStringLiteral("insert into zq_schema (version) values (%1)").arg(v));
}

} // namespace

const Table* findTable(const QString& name) {
    for (const Table& t : tables())
        if (t.name.compare(name, Qt::CaseInsensitive) == 0) return &t;
    return nullptr;
}

int columnSize(const QString& table, const QString& column) {
    if (const Table* t = findTable(table))
        for (const Column& c : t->columns)
            if (c.name.compare(column, Qt::CaseInsensitive) == 0) return c.type == Type::Text ? c.size : 0;
    return 0;
}

QString columnType(const Dialect& d, const Column& c) {
    switch (c.type) {
    case Type::Text:
        return d.textType(c.size);
    case Type::Memo:
        return d.memoType();
    case Type::SmallInt:
        return QStringLiteral("smallint");
    case Type::Int:
        return d.intType();
    case Type::BigInt:
        return d.bigIntType();
    case Type::Real:
        return d.realType();
    case Type::Date:
        return d.textType(10); // ISO yyyy-mm-dd
    case Type::DateTime:
        return d.stampType(); // ISO yyyy-mm-dd hh:mm:ss
    case Type::Blob:
        return d.blobType();
    case Type::AutoId:
        return d.autoIdType();
    }
    return d.textType();
}

QString createTableSql(const Dialect& d, const Table& t) {
    QStringList cols;
    for (const Column& c : t.columns)
        cols << c.name + QLatin1Char(' ') + columnType(d, c);
    return QStringLiteral("create table %1 (%2)").arg(t.name, cols.join(QStringLiteral(", ")));
}

bool tableExists(Connection& c, const QString& name) {
    Recordset rs(c, c.dialect().tableExistsQuery(quoted(name.toLower())));
    return !rs.eof() && rs.val(0) > 0;
}

void createTable(Connection& c, const Table& t) {
    if (tableExists(c, t.name)) return;
    c.execute(createTableSql(c.dialect(), t));
    QVector<QStringList> indexes = t.indexes;
    for (const Column& col : t.columns)
        if (col.name.compare(QLatin1String("fcode"), Qt::CaseInsensitive) == 0) indexes.prepend({col.name});
    int n = 0;
    for (const QStringList& cols : indexes)
        c.execute(QStringLiteral("create index ix_%1_%2 on %1 (%3)")
                      .arg(t.name.toLower(), QString::number(n++), cols.join(QLatin1Char(','))));
}

int currentVersion(Connection& c) {
    if (!tableExists(c, QStringLiteral("zq_schema"))) return 0;
    Recordset rs(c, QStringLiteral("select max(version) from zq_schema"));
    return rs.eof() ? 0 : int(rs.val(0));
}

int latestVersion() {
    return steps().last().version;
}

void upgrade(Connection& c) {
    if (!tableExists(c, QStringLiteral("zq_schema")))
        c.execute(QStringLiteral("create table zq_schema (version integer not null)"));
    const int from = currentVersion(c);
    for (const Step& s : steps()) {
        if (s.version <= from) continue;
        Transaction t(c);
        s.run(c);
        setVersion(c, s.version);
        t.commit();
    }
}

bool upgradeIfOlder(Connection& c) {
    const int v = currentVersion(c);
    if (v > latestVersion())
        throw DbError(
            QStringLiteral("数据库的版本(%1)比本程序(%2)新，请先升级程序").arg(v).arg(latestVersion()));
    if (v == 0 || v == latestVersion()) return false;
    upgrade(c);
    return true;
}

void initialise(Connection& c) {
    if (currentVersion(c) > 0)
        throw DbError(QStringLiteral("数据库已经建立(版本 %1), 未作任何改动").arg(currentVersion(c)));
    for (const Table& t : tables())
        if (tableExists(c, t.name))
            throw DbError(QStringLiteral("数据库中已有表 %1, 未作任何改动").arg(t.name));
    if (c.dialect().isServer()) c.execute(QStringLiteral("create extension if not exists citext"));
    upgrade(c);
}

void createDatabase(const ConnectionSettings& s) {
    if (s.sqlData == 0) {
        if (QFileInfo::exists(s.userPath)) {
            Connection probe;
            probe.open(s);
            initialise(probe); // refuses a database that has the schema, accepts an empty file
            return;
        }
        QFile f(s.userPath);
        if (!f.open(QIODevice::WriteOnly))
            throw DbError(QStringLiteral("无法建立数据库文件: %1").arg(s.userPath));
        f.close();
        Connection c;
        try {
            c.open(s);
            initialise(c);
        } catch (...) {
            c.close();
            QFile::remove(s.userPath);
            throw;
        }
        return;
    }
    // The server: make the database unless it is there, then initialise it.
    {
        ConnectionSettings admin = s;
        admin.defaultDb = QStringLiteral("postgres");
        Connection a;
        a.open(admin);
        Recordset rs(
            a, QStringLiteral("select count(*) from pg_database where datname=%1").arg(quoted(s.defaultDb)));
        if (rs.val(0) == 0) {
            for (const QChar ch : s.defaultDb)
                if (!(ch.isLetterOrNumber() || ch == QLatin1Char('_')) || ch.unicode() > 127)
                    throw DbError(QStringLiteral("数据库名称只能含字母、数字和下划线: %1").arg(s.defaultDb));
            a.execute(QStringLiteral("create database %1").arg(s.defaultDb));
        }
    }
    Connection c;
    c.open(s);
    initialise(c);
}

} // namespace zq::schema
