// A new company database written under a temporary name and named only when it is whole.

#include "BackupKit.h"

#include "shell/HistorySession.h"
#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/Schema.h"
#include "shell/SqlText.h"

#include <QFile>
#include <QFileInfo>

namespace zq::backup {

namespace {

ConnectionSettings maintenance(const ConnectionSettings& s) {
    ConnectionSettings m = s;
    m.defaultDb = QStringLiteral("postgres");
    return m;
}

// Server database names go unquoted into statements: letters, digits and underscores only, as the
// server folds them to lower case.
QString serverName(const QString& name) {
    if (name.isEmpty()) throw DbError(QStringLiteral("数据库名称不能为空"));
    for (const QChar ch : name)
        if (ch.unicode() > 127 || !(ch.isLetterOrNumber() || ch == QLatin1Char('_')))
            throw DbError(QStringLiteral("数据库名称只能含字母、数字和下划线: %1").arg(name));
    return name.toLower();
}

bool serverDatabaseExists(Connection& maintenanceConn, const QString& name) {
    Recordset rs(maintenanceConn,
                 QStringLiteral("select count(*) from pg_database where datname=%1").arg(quoted(name)));
    return rs.val(0) > 0;
}

} // namespace

void removeFileDatabase(const QString& path) {
    for (const char* suffix : {"", "-wal", "-shm", "-journal"})
        QFile::remove(path + QLatin1String(suffix));
}

QString whereOf(const ConnectionSettings& s) {
    return s.sqlData == 0 ? s.userPath : QStringLiteral("%1/%2").arg(s.userPath, s.defaultDb);
}

NewCompany::NewCompany(const ConnectionSettings& target)
    : m_target(target)
    , m_part(target) {
    if (target.sqlData == 0) {
        if (target.userPath.isEmpty()) throw DbError(QStringLiteral("目标文件不能为空"));
        if (QFileInfo::exists(target.userPath))
            throw DbError(QStringLiteral("目标文件 %1 已存在: 只能写入新的数据库, 未作任何改动").arg(target.userPath));
        m_part.userPath = target.userPath + QStringLiteral(".part");
        removeFileDatabase(m_part.userPath);
    } else {
        m_target.defaultDb = serverName(target.defaultDb);
        m_part.defaultDb = m_target.defaultDb + QStringLiteral("_zqpart");
        Connection a;
        a.open(maintenance(target));
        if (serverDatabaseExists(a, m_target.defaultDb))
            throw DbError(QStringLiteral("服务器上已有数据库 %1: 只能写入新的数据库, 未作任何改动")
                              .arg(m_target.defaultDb));
        a.execute(QStringLiteral("drop database if exists ") + m_part.defaultDb);
    }
    m_made = true;
    schema::createDatabase(m_part);
    m_c.open(m_part);
    // Nothing under the temporary name is worth keeping through a crash: the file is written
    // without a log and without waiting for the disk, and made durable once, before it is named.
    if (m_part.sqlData == 0) {
        m_c.execute(QStringLiteral("pragma journal_mode=memory"));
        m_c.execute(QStringLiteral("pragma synchronous=off"));
    }
}

NewCompany::~NewCompany() {
    if (m_finished || !m_made) return;
    try {
        discard();
    } catch (const DbError&) {
        // Left under its temporary name, which the next run removes.
    }
}

QString NewCompany::where() const {
    return whereOf(m_target);
}

void NewCompany::discard() {
    m_c.close();
    if (m_part.sqlData == 0) {
        removeFileDatabase(m_part.userPath);
        return;
    }
    Connection a;
    a.open(maintenance(m_part));
    a.execute(QStringLiteral("drop database if exists ") + m_part.defaultDb);
}

void NewCompany::fill(Connection& from, Tables& tables, const Progress& progress) {
    // The rows are the company as it was, no one's changes: nothing is recorded, and the history
    // copied in replaces the new schema's (empty) one.
    HistoryOff quiet(m_c);
    SetHistoryPurging(m_c, true);
    Transaction t(m_c);
    schema::pauseHeadCounts(m_c, true);
    for (TableImage& table : tables) {
        if (progress) progress(QStringLiteral("写入 %1").arg(table.name));
        if (schema::tableExists(m_c, table.name)) {
            const QStringList have = columnsOf(m_c, table.name);
            for (const QString& column : table.columns)
                if (!have.contains(column, Qt::CaseInsensitive))
                    throw DbError(QStringLiteral("表 %1 的列 %2 在本程序的数据库结构中没有").arg(table.name, column));
            // The seed rows of the new schema give way to the company's own.
            m_c.execute(QStringLiteral("delete from ") + table.name);
        } else {
            // A table of another module that shares the database.
            QStringList columns;
            for (qsizetype i = 0; i < table.columns.size(); ++i)
                columns << table.columns[i] + QLatin1Char(' ') + portableType(table.types.value(i), m_c.dialect());
            m_c.execute(QStringLiteral("create table %1 (%2)").arg(table.name, columns.join(QStringLiteral(", "))));
        }
        copyRows(from, table, m_c);
    }
    if (m_c.dialect().isServer()) {
        // Keys were copied as they were: the counters behind them go on after the highest.
        QVector<QStringList> serials;
        {
            Recordset rs(m_c, QStringLiteral("select table_name, column_name from information_schema.columns "
                                             "where table_schema=current_schema() and column_default like "
                                             "'nextval(%'"));
            for (; !rs.eof(); rs.moveNext())
                serials.push_back({rs.text(0), rs.text(1)});
        }
        for (const QStringList& s : serials)
            m_c.execute(QStringLiteral("select setval(pg_get_serial_sequence(%1, %2), coalesce(max(%3), 0) + 1, "
                                       "false) from %4")
                            .arg(quoted(s[0]), quoted(s[1]), s[1], s[0]));
    }
    // The head counts are not in a backup: the file database counted the persons as they came in,
    // the server counts them now.
    schema::pauseHeadCounts(m_c, false);
    t.commit();
    SetHistoryPurging(m_c, false);
}

void NewCompany::verify(const Tables& expected, const Progress& progress) {
    Tables found = expected;
    measure(m_c, found, progress);
    const QString diff = difference(expected, found);
    if (!diff.isEmpty())
        throw DbError(QStringLiteral("写入 %1 后核对不符: %2; 目标已删除").arg(where(), diff));
}

void NewCompany::finish() {
    // A restored company plans its first look-ups as well as the one it was taken from.
    m_c.execute(m_c.dialect().afterBulkLoad());
    if (m_part.sqlData == 0) {
        // As every company file is kept; the switch writes the file through to the disk.
        m_c.execute(QStringLiteral("pragma synchronous=full"));
        m_c.execute(QStringLiteral("pragma journal_mode=wal"));
    }
    m_c.close();
    if (m_part.sqlData == 0) {
        if (!QFile::rename(m_part.userPath, m_target.userPath))
            throw DbError(QStringLiteral("无法把 %1 改名为 %2").arg(m_part.userPath, m_target.userPath));
    } else {
        Connection a;
        a.open(maintenance(m_part));
        a.execute(QStringLiteral("alter database %1 rename to %2").arg(m_part.defaultDb, m_target.defaultDb));
    }
    m_finished = true;
}

} // namespace zq::backup
