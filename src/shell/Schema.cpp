#include "Schema.h"

#include "DbError.h"
#include "Recordset.h"
#include "SqlText.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>

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

// Ordered upgrade steps. Each must be safe to run again after a partial run.
const QVector<Step>& steps() {
    static const QVector<Step> s = {
        {1,
         [](Connection& c) {
             createAllTables(c);
             seed(c);
             createPrintTemplates(c);
             createUserTables(c);
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
        return d.textType(19); // ISO yyyy-mm-dd hh:mm:ss
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
