// A whole company backed up and restored on the engine of the benchmark: the backup into a file
// beside the database, the restore from one into a new database beside it. Beside each, every row
// of every table read once through the bare driver, which both must do at least twice.

#include "Bench.h"

#include "admin/Backup.h"

#include <QDir>
#include <QFile>

namespace {

using zq::bench::Context;

// Beside the database file, or in the temporary folder for a server's.
QString backupFile(const Context& c) {
    if (c.settings.sqlData == 0) return c.settings.userPath + QStringLiteral(".zqbak");
    return QDir::tempPath() + QStringLiteral("/zqrs-bench-") + c.settings.defaultDb + QStringLiteral(".zqbak");
}

zq::ConnectionSettings restored(const Context& c) {
    return zq::bench::scratchDatabase(c, QStringLiteral("restored"));
}

void removeBackup(Context& c) {
    QFile::remove(backupFile(c));
}

void backupCompany(Context& c) {
    zq::backup::backupCompany(c.settings, backupFile(c));
}

void readEveryRow(Context& c) {
    for (const zq::backup::TableImage& t : zq::backup::companyTables(zq::conn()))
        zq::bench::readAll(c.raw, QStringLiteral("select %1 from %2").arg(t.columns.join(QLatin1Char(',')), t.name));
}

void makeBackup(Context& c) {
    if (!QFile::exists(backupFile(c))) backupCompany(c);
}

void dropRestored(Context& c) {
    const zq::ConnectionSettings s = restored(c);
    if (s.sqlData == 0) {
        QFile::remove(s.userPath);
        return;
    }
    zq::ConnectionSettings admin = s;
    admin.defaultDb = QStringLiteral("postgres");
    zq::Connection a;
    a.open(admin);
    a.execute(QStringLiteral("drop database if exists ") + s.defaultDb);
}

void restoreCompany(Context& c) {
    zq::backup::restoreCompany(backupFile(c), restored(c));
}

} // namespace

ZQ_BENCH("backup.company", backupCompany, readEveryRow, {}, removeBackup);
ZQ_BENCH("restore.company", restoreCompany, readEveryRow, makeBackup, dropRestored);
