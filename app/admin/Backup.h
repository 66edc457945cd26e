#pragma once

// Backups, restores and copies of a whole company, between files and servers. Every one reads its
// source in one unchanging snapshot (other clients go on saving), writes its target under a
// temporary name, reads the target back and compares every table's rows and checksum with what it
// read, and only then gives the target its name: a run that is killed leaves the source as it was
// and nothing under the target's name.

#include "shell/Connection.h"

#include <functional>
#include <QString>
#include <QStringList>
#include <QVector>

namespace zq::backup {

// A table as it is copied: its columns as its database has them (with their declared types, for
// a table this program does not make itself), and what was read of it.
struct TableImage {
    QString name;
    QStringList columns;
    QStringList types;
    qint64 rows = 0;
    // 16 hex digits: the same for the same rows on either engine and in any order.
    QString checksum;
};
using Tables = QVector<TableImage>;

// Told one line at a time what is being done (table by table).
using Progress = std::function<void(const QString& line)>;

// What a backup file records about itself.
struct BackupInfo {
    int format = 0;
    int schemaVersion = 0;
    QString engine; // "sqlite" or "postgresql": where it was taken
    QString taken;  // when, yyyy-MM-dd hh:mm:ss
    QString source; // the file or server database it was taken from
    Tables tables;
};

// What a finished backup, restore or copy read and checked.
struct Outcome {
    QString target; // the file or server database written
    int schemaVersion = 0;
    int upgradedFrom = 0; // the backup's version when it was upgraded on restore, else 0
    Tables tables;
    qint64 rows() const;
};

// The tables worth copying: every table of the database but the engine's own, the word index's
// internals and a backup's own record. The word index keeps its documents but not their tokens,
// which the target makes again in its own engine's form.
Tables companyTables(Connection& c);

// Reads every row of the tables and fills in their rows and checksums.
void measure(Connection& c, Tables& tables, const Progress& progress = {});

// The first difference between what was expected and what was found, as a sentence; empty when
// every table holds the same rows.
QString difference(const Tables& expected, const Tables& found);

// `zqrs-admin backup`: a backup of the company the settings name into `file`, which must not exist.
Outcome backupCompany(const ConnectionSettings& company, const QString& file, const Progress& progress = {});

// Reads a backup file's record and checks the file's pages; DbError with the reason when it is no
// backup, was never finished, or is damaged.
BackupInfo readBackupInfo(Connection& backupFile);

// `zqrs-admin restore`: the backup into a new, empty target (a file that does not exist, or a
// server database that does not exist). An older backup is upgraded to this program's schema.
Outcome restoreCompany(const QString& file, const ConnectionSettings& target, const Progress& progress = {});

// `zqrs-admin copy`: the whole company from one database into a new one, on either engine.
Outcome copyCompany(const ConnectionSettings& from, const ConnectionSettings& to,
                    const Progress& progress = {});

// The name of a new backup in a folder: the company's name and the time, "hr-20240131-020000.zqbak".
QString backupFileName(const ConnectionSettings& company);
// Keeps the `keep` newest backups of the company in the folder (by the time in their names) and
// removes the older ones; gives the names removed.
QStringList pruneBackups(const QString& folder, const ConnectionSettings& company, int keep);

} // namespace zq::backup
