#pragma once

// The parts that backup, restore and copy share.

#include "Backup.h"

#include <QByteArray>
#include <QSqlQuery>

namespace zq::backup {

// Counts rows and sums their hashes.
class RowSum {
public:
    // The first `columns` values of the query's current row.
    void add(const QSqlQuery& q, int columns);
    qint64 rows() const { return m_rows; }
    QString checksum() const;

private:
    QByteArray m_row;
    quint64 m_sum = 0;
    qint64 m_rows = 0;
};

// "select <columns> from <table>".
QString selectAll(const TableImage& t);

// Copies every row of a table from one database into the same table of another (inside the
// target's transaction), summing the rows as it reads them: fills in t's rows and checksum. A
// word index that has its tokens column gets tokens made from each document's text.
void copyRows(Connection& from, TableImage& t, Connection& to);

// Begins a read-only transaction that sees one state of the database however other clients go on
// writing; endSnapshot ends it.
void beginSnapshot(Connection& c);
void endSnapshot(Connection& c);

// A column type of the dialect for a type another database declared, for tables this program does
// not make itself.
QString portableType(const QString& declared, const Dialect& d);

// The columns a table of the database has.
QStringList columnsOf(Connection& c, const QString& table);

// A new company database, written under a temporary name (the file with ".part", the server
// database with "_zqpart") and given its own only when finished. A leftover of a killed run is
// removed first; dropped unfinished, it removes what it wrote.
class NewCompany {
public:
    // Refuses (DbError) a target that exists already. Makes the schema at the temporary place.
    explicit NewCompany(const ConnectionSettings& target);
    ~NewCompany();
    NewCompany(const NewCompany&) = delete;
    NewCompany& operator=(const NewCompany&) = delete;

    // Replaces the rows of its tables by those of `from`, in one transaction, summing what it reads.
    void fill(Connection& from, Tables& tables, const Progress& progress);
    // Reads every table back; DbError naming the first difference from `expected`.
    void verify(const Tables& expected, const Progress& progress);
    // Gives the target its name.
    void finish();
    QString where() const;

private:
    void discard();

    ConnectionSettings m_target;
    ConnectionSettings m_part;
    Connection m_c;
    bool m_made = false;
    bool m_finished = false;
};

// Removes a file database with the files SQLite keeps beside it.
void removeFileDatabase(const QString& path);

// The file or server database the settings name, as the messages show it.
QString whereOf(const ConnectionSettings& s);

} // namespace zq::backup
