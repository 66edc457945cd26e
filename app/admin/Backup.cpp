// Backup files, and the backup, restore and copy of a whole company.
//
// A backup file is a SQLite file: the company's tables under their own names, and a record of the
// backup in zq_backup_info (format, schema version, engine, time, source) and zq_backup_table (each
// table's columns, rows and checksum). A backup of a file database is a page-by-page copy made by
// SQLite's online backup, so that clients go on working; one of a server holds the rows read in
// one snapshot transaction.

#include "Backup.h"

#include "BackupKit.h"
#include "DemoAdmin.h"

#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/Schema.h"
#include "shell/SqlText.h"

#include <memory>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlDriver>
#include <QTemporaryDir>
#include <sqlite3.h>

namespace zq::backup {

namespace {

constexpr int kFormat = 1;
const QString kSuffix = QStringLiteral(".zqbak");

QString engineOf(const ConnectionSettings& s) {
    return s.sqlData == 0 ? QStringLiteral("sqlite") : QStringLiteral("postgresql");
}

sqlite3* handleOf(Connection& c) {
    const QVariant h = c.database().driver()->handle();
    if (!h.isValid() || qstrcmp(h.typeName(), "sqlite3*") != 0)
        throw DbError(QStringLiteral("数据库驱动不提供 SQLite 的连接"));
    return *static_cast<sqlite3* const*>(h.constData());
}

// Copies the pages of the database the connection reads into a new file, inside the connection's
// read transaction: the copy shows what that transaction sees, and writers are never held up.
void copyPages(Connection& from, const QString& file) {
    sqlite3* dest = nullptr;
    int rc = sqlite3_open_v2(QFile::encodeName(file).constData(), &dest,
                             SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    QString error;
    if (rc == SQLITE_OK) {
        sqlite3_backup* b = sqlite3_backup_init(dest, "main", handleOf(from), "main");
        if (b) {
            rc = sqlite3_backup_step(b, -1);
            sqlite3_backup_finish(b);
            if (rc != SQLITE_DONE) error = QString::fromUtf8(sqlite3_errstr(rc));
        } else {
            error = QString::fromUtf8(sqlite3_errmsg(dest));
        }
    } else {
        error = QString::fromUtf8(sqlite3_errstr(rc));
    }
    sqlite3_close(dest);
    if (!error.isEmpty()) throw DbError(QStringLiteral("复制数据库页时出错: %1").arg(error));
}

void writeRecord(Connection& b, const BackupInfo& info) {
    b.execute(QStringLiteral("create table zq_backup_info (fKey text primary key, fValue text)"));
    b.execute(QStringLiteral("create table zq_backup_table (fName text primary key, fColumns text, fTypes "
                             "text, fRows integer, fChecksum text)"));
    for (const TableImage& t : info.tables)
        b.execute(QStringLiteral("insert into zq_backup_table values (?, ?, ?, ?, ?)"),
                  {t.name, t.columns.join(QLatin1Char('\n')), t.types.join(QLatin1Char('\n')), t.rows, t.checksum});
    const QVector<QPair<QString, QString>> values = {
        {QStringLiteral("format"), QString::number(info.format)},
        {QStringLiteral("schema"), QString::number(info.schemaVersion)},
        {QStringLiteral("engine"), info.engine},
        {QStringLiteral("taken"), info.taken},
        {QStringLiteral("source"), info.source},
        // Last, in the same transaction: a record without it was never finished.
        {QStringLiteral("complete"), QStringLiteral("1")}};
    for (const auto& [key, value] : values)
        b.execute(QStringLiteral("insert into zq_backup_info values (?, ?)"), {key, value});
}

// Reads the record back and checks every table of the backup against it.
void checkWritten(Connection& b, const Tables& expected, const QString& what, const Progress& progress) {
    Tables found = expected;
    measure(b, found, progress);
    const QString diff = difference(expected, found);
    if (!diff.isEmpty()) throw DbError(QStringLiteral("%1 核对不符: %2").arg(what, diff));
}

ConnectionSettings fileSettings(const QString& path) {
    ConnectionSettings s;
    s.userPath = path;
    return s;
}

} // namespace

qint64 Outcome::rows() const {
    qint64 n = 0;
    for (const TableImage& t : tables)
        n += t.rows;
    return n;
}

Outcome backupCompany(const ConnectionSettings& company, const QString& file, const Progress& progress) {
    if (QFileInfo::exists(file)) throw DbError(QStringLiteral("备份文件 %1 已存在, 未作任何改动").arg(file));
    if (!QFileInfo(QFileInfo(file).absolutePath()).isDir())
        throw DbError(QStringLiteral("备份文件的文件夹不存在: %1").arg(QFileInfo(file).absolutePath()));
    const QString part = file + QStringLiteral(".part");
    removeFileDatabase(part);

    Connection src;
    src.open(company);
    admin::makeReadOnly(src);
    BackupInfo info;
    info.format = kFormat;
    info.schemaVersion = schema::currentVersion(src);
    if (info.schemaVersion == 0)
        throw DbError(QStringLiteral("%1 没有本系统的数据库结构版本, 不是公司数据库").arg(whereOf(company)));
    info.engine = engineOf(company);
    info.source = whereOf(company);

    try {
        beginSnapshot(src);
        info.taken = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
        info.tables = companyTables(src);
        if (company.sqlData == 0) {
            measure(src, info.tables, progress);
            copyPages(src, part);
        } else {
            QFile f(part);
            if (!f.open(QIODevice::WriteOnly))
                throw DbError(QStringLiteral("无法建立备份文件: %1").arg(part));
        }
        Connection b;
        b.open(fileSettings(part));
        {
            Transaction t(b);
            if (company.sqlData != 0) {
                for (TableImage& table : info.tables) {
                    if (progress) progress(QStringLiteral("读取 %1").arg(table.name));
                    // Untyped columns keep each value as the server gave it.
                    b.execute(QStringLiteral("create table %1 (%2)").arg(table.name, table.columns.join(QLatin1Char(','))));
                    copyRows(src, table, b);
                }
            }
            writeRecord(b, info);
            t.commit();
        }
        endSnapshot(src);
        checkWritten(b, info.tables, QStringLiteral("备份文件写入后"), progress);
        b.close();
        if (!QFile::rename(part, file)) throw DbError(QStringLiteral("无法把 %1 改名为 %2").arg(part, file));
    } catch (...) {
        endSnapshot(src);
        removeFileDatabase(part);
        throw;
    }
    return {file, info.schemaVersion, 0, info.tables};
}

BackupInfo readBackupInfo(Connection& b) {
    const QString name = b.settings().userPath;
    QString pageCheck;
    try {
        Recordset rs(b, QStringLiteral("pragma quick_check"));
        pageCheck = rs.eof() ? QString() : rs.text(0);
    } catch (const DbError& e) {
        throw DbError(QStringLiteral("备份文件 %1 已损坏: %2").arg(name, e.message()));
    }
    if (pageCheck != QLatin1String("ok"))
        throw DbError(QStringLiteral("备份文件 %1 已损坏: %2").arg(name, pageCheck));
    if (!schema::tableExists(b, QStringLiteral("zq_backup_info")) ||
        !schema::tableExists(b, QStringLiteral("zq_backup_table")))
        throw DbError(QStringLiteral("%1 不是本系统的备份文件").arg(name));
    BackupInfo info;
    QString complete;
    {
        Recordset rs(b, QStringLiteral("select fKey, fValue from zq_backup_info"));
        for (; !rs.eof(); rs.moveNext()) {
            const QString key = rs.text(0);
            if (key == QLatin1String("format")) info.format = rs.text(1).toInt();
            if (key == QLatin1String("schema")) info.schemaVersion = rs.text(1).toInt();
            if (key == QLatin1String("engine")) info.engine = rs.text(1);
            if (key == QLatin1String("taken")) info.taken = rs.text(1);
            if (key == QLatin1String("source")) info.source = rs.text(1);
            if (key == QLatin1String("complete")) complete = rs.text(1);
        }
    }
    if (complete != QLatin1String("1")) throw DbError(QStringLiteral("备份文件 %1 没有写完, 不能使用").arg(name));
    if (info.format != kFormat)
        throw DbError(QStringLiteral("备份文件 %1 的格式 %2 本程序不认识").arg(name).arg(info.format));
    if (info.schemaVersion < 1) throw DbError(QStringLiteral("备份文件 %1 没有数据库结构版本").arg(name));
    Recordset rs(b, QStringLiteral("select fName, fColumns, fTypes, fRows, fChecksum from zq_backup_table"));
    for (; !rs.eof(); rs.moveNext())
        info.tables.push_back({rs.text(0), rs.text(1).split(QLatin1Char('\n')), rs.text(2).split(QLatin1Char('\n')),
                               qint64(rs.val(3)), rs.text(4)});
    if (info.tables.isEmpty()) throw DbError(QStringLiteral("备份文件 %1 中没有表").arg(name));
    return info;
}

Outcome restoreCompany(const QString& file, const ConnectionSettings& target, const Progress& progress) {
    if (!QFileInfo(file).isFile()) throw DbError(QStringLiteral("备份文件不存在: %1").arg(file));
    auto b = std::make_unique<Connection>();
    b->open(fileSettings(file));
    admin::makeReadOnly(*b);
    BackupInfo info = readBackupInfo(*b);
    const int latest = schema::latestVersion();
    if (info.schemaVersion > latest)
        throw DbError(QStringLiteral("备份的数据库结构版本 %1 比本程序的版本 %2 新, 请先升级程序")
                          .arg(info.schemaVersion)
                          .arg(latest));
    Outcome done{{}, latest, 0, {}};
    Tables expected = info.tables;
    std::unique_ptr<QTemporaryDir> staging;
    if (info.schemaVersion < latest) {
        // An older backup is checked as it is, then upgraded in a copy as the program upgrades any
        // older database, and restored from there.
        checkWritten(*b, info.tables, QStringLiteral("备份文件"), progress);
        b->close();
        staging = std::make_unique<QTemporaryDir>(QFileInfo(target.sqlData == 0 ? target.userPath : file)
                                                      .absolutePath() +
                                                  QStringLiteral("/.zqrs-restore-XXXXXX"));
        if (!staging->isValid()) staging = std::make_unique<QTemporaryDir>();
        const QString staged = staging->filePath(QStringLiteral("staged.db"));
        if (!QFile::copy(file, staged)) throw DbError(QStringLiteral("无法复制备份文件到 %1").arg(staged));
        QFile::setPermissions(staged, QFile::ReadOwner | QFile::WriteOwner);
        b->open(fileSettings(staged));
        schema::upgrade(*b);
        expected = companyTables(*b);
        done.upgradedFrom = info.schemaVersion;
    }
    NewCompany n(target);
    Tables read = expected;
    n.fill(*b, read, progress);
    if (!done.upgradedFrom) {
        const QString diff = difference(expected, read);
        if (!diff.isEmpty()) throw DbError(QStringLiteral("备份文件 %1 已损坏: %2").arg(file, diff));
    }
    n.verify(read, progress);
    b->close();
    n.finish();
    done.target = n.where();
    done.tables = read;
    return done;
}

Outcome copyCompany(const ConnectionSettings& from, const ConnectionSettings& to, const Progress& progress) {
    Connection src;
    src.open(from);
    admin::makeReadOnly(src);
    const int version = schema::currentVersion(src);
    const int latest = schema::latestVersion();
    if (version == 0)
        throw DbError(QStringLiteral("%1 没有本系统的数据库结构版本, 不是公司数据库").arg(whereOf(from)));
    if (version != latest)
        throw DbError(QStringLiteral("%1 的数据库结构版本 %2 与本程序的版本 %3 不同, 请先用 upgrade 升级 "
                                     "(或用相应版本的程序复制)")
                          .arg(whereOf(from))
                          .arg(version)
                          .arg(latest));
    NewCompany n(to);
    Tables tables;
    try {
        beginSnapshot(src);
        tables = companyTables(src);
        n.fill(src, tables, progress);
        endSnapshot(src);
    } catch (...) {
        endSnapshot(src);
        throw;
    }
    n.verify(tables, progress);
    n.finish();
    return {n.where(), version, 0, tables};
}

QString backupFileName(const ConnectionSettings& company) {
    const QString name = company.sqlData == 0 ? QFileInfo(company.userPath).completeBaseName() : company.defaultDb;
    return name + QLatin1Char('-') + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss")) +
           kSuffix;
}

QStringList pruneBackups(const QString& folder, const ConnectionSettings& company, int keep) {
    const QString name = company.sqlData == 0 ? QFileInfo(company.userPath).completeBaseName() : company.defaultDb;
    QDir dir(folder);
    // The time in the names sorts them; a name without one is no backup of ours.
    const QRegularExpression ours(QRegularExpression::anchoredPattern(
        QRegularExpression::escape(name) + QStringLiteral("-\\d{8}-\\d{6}") + QRegularExpression::escape(kSuffix)));
    QStringList backups;
    for (const QString& f : dir.entryList(QDir::Files, QDir::Name))
        if (ours.match(f).hasMatch()) backups << f;
    QStringList removed;
    while (backups.size() > keep) {
        const QString oldest = backups.takeFirst();
        if (!dir.remove(oldest)) throw DbError(QStringLiteral("无法删除旧的备份 %1").arg(dir.filePath(oldest)));
        removed << oldest;
    }
    return removed;
}

} // namespace zq::backup
