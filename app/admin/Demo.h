#pragma once

#include "shell/Connection.h"
#include <QByteArray>

#include <functional>
#include <QMap>
#include <QString>
#include <QStringView>
#include <QVector>

namespace zq::demo {

struct Options {
    int persons = 2000;
    // The same seed gives the same company, row for row; nothing depends on the clock.
    quint32 seed = 1;
    // Told after each table is written, with the rows written to it.
    std::function<void(const QString& table, qint64 rows)> progress;
};

// A demo user and the password it was given.
struct DemoLogin {
    QString name;
    QString password;
    bool supervisor = false;
};

struct Summary {
    qint64 persons = 0;
    qint64 departments = 0; // rows of tRs_Bm with fYnxj 0
    qint64 posts = 0;       // rows of tRs_Bm with fYnxj 1
    qint64 rows = 0;        // all rows written
    QMap<QString, qint64> tables;
    QVector<DemoLogin> logins; // the demo users made by createDemoDatabase
};

// Adds the demo users to a filled company that has none: the supervisor "系统管理员" and two members
// of staff with limited rights, named as persons of the company. Gives what it made.
QVector<DemoLogin> addDemoUsers(Connection& c);

// Departments the company of n persons has: one for about fifty persons, at most 2,000.
int departmentCount(int persons);

// Fills a database that has the schema and no persons with a demo company, in one transaction:
// all of it or, on an error (also one thrown by progress), nothing. Refuses (DbError, nothing
// written) a database that holds persons already.
Summary fill(Connection& c, const Options& o);

// What `zqrs-admin demo` does: makes the database the settings name unless it holds the schema
// already, then fills it and adds the demo users in one transaction.
Summary createDemoDatabase(const ConnectionSettings& s, const Options& o);

// True when a database holds the schema: a SQLite file that exists and has it, or a server
// database that exists and has it.
bool holdsSchema(const ConnectionSettings& s);

// The check character of an identity card number from its first 17 digits ('0'..'9' or 'X').
QChar idCardCheckDigit(QStringView first17);
// An 18-character identity card number with digits only (but a final X) and a matching check.
bool idCardValid(QStringView number);

// A passport-style photo as JPEG, 358 x 441 pixels and some 20 KB, a little different per seed.
QByteArray portraitJpeg(int seed);

} // namespace zq::demo
