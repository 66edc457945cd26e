#pragma once

#include "Connection.h"

#include <functional>
#include <QString>
#include <QStringList>
#include <QVector>

namespace zq::schema {

enum class Type { Text, Memo, SmallInt, Int, BigInt, Real, Date, DateTime, Blob, AutoId };

struct Column {
    QString name;
    Type type = Type::Text;
    int size = 0; // characters for Text; 0 means no limit
};

struct Table {
    QString name;
    QVector<Column> columns;
    QVector<QStringList> indexes; // extra indexes (each a list of columns); fcode is indexed anyway
};

// Every table the system creates, in creation order (SchemaTables.cpp).
const QVector<Table>& tables();
// Case-insensitive look-up; nullptr when unknown.
const Table* findTable(const QString& name);
// Defined size of a text column in characters, 0 when unlimited or unknown.
int columnSize(const QString& table, const QString& column);
QString columnType(const Dialect& d, const Column& c);
QString createTableSql(const Dialect& d, const Table& t);
// Creates a table (and its indexes) unless it exists.
void createTable(Connection& c, const Table& t);
bool tableExists(Connection& c, const QString& name);

// Seed rows: dictionary, modules, brief lists, company (SchemaSeed.cpp).
void seed(Connection& c);

// The print template store and its default templates (SchemaPrint.cpp).
void createPrintTemplates(Connection& c);

// The users of the account set and the operation log (SchemaUsers.cpp).
void createUserTables(Connection& c);

// Splits the spouse columns of tRsBasic off into tRsBasic_P (rows of every person) and moves their
// dictionary rows (OrderID 69 on) along, when that table does not exist yet; the columns stay in
// tRsBasic. True when it split now.
bool splitSpouseTable(Connection& c);

// The change history: the tables whose changes are recorded, and their triggers, made again over
// any that are there (SchemaHistory.cpp). A step that adds columns to a recorded table calls it.
QStringList historyTables();
void createHistoryTriggers(Connection& c);
// Takes the triggers away again; the rows stay.
void dropHistoryTriggers(Connection& c);

// Head counts of the persons by department, room, month of birth and month of hire, per state, kept
// by triggers in the same transaction as the persons (SchemaCounts.cpp). Makes the table and its
// triggers, over any that are there, and counts afresh. A restore copies the counts with the rest.
void createHeadCounts(Connection& c);
// For a writer of a whole company at once, inside its transaction: the added persons are counted
// once at the end instead of one by one. Nobody else may write persons meanwhile.
void pauseHeadCounts(Connection& c, bool paused);
// The person fields whose counts per value are kept the same way, for the statistics screen: the
// key "v:" plus the lower-cased column holds each stored value (not null) with its persons per
// state, "n:" plus it the persons whose field is null (value '').
QStringList keptValueColumns();

// The schema version kept in zq_schema; 0 when the database has none.
int currentVersion(Connection& c);
int latestVersion();
// Creates the schema on an empty database; refuses (DbError) a database that has one already.
void initialise(Connection& c);
// Runs the upgrade steps above the stored version, in order, each in one transaction; a step that
// fails (DbError) leaves the database as that step found it.
void upgrade(Connection& c);
// Upgrades a database of an older version of the schema; false when there was nothing to do (the
// current version, or no schema of this system). A newer version than this program knows is
// refused with a DbError.
bool upgradeIfOlder(Connection& c);

// Makes a new database the settings name (a new SQLite file, or a new server database) and
// initialises it. Refuses when the file or database already holds the schema.
void createDatabase(const ConnectionSettings& s);

} // namespace zq::schema
