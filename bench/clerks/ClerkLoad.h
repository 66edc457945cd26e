#pragma once

// Many clerks on one database at once: each client a process of its own with its own connection,
// working through the screens' own statements (no windows) for a while, keeping a ledger of what
// its acknowledged saves wrote. Afterwards every ledger entry is checked against the database.

#include "shell/Connection.h"

#include <functional>
#include <QIODevice>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>

namespace zq::clerks {

// One save a clerk tried. `key` names what the save wrote to (a person's field, a person's family
// grid, a transfer order, a notice); saves to the same key may overwrite each other. `value` is the
// unique text the save wrote there. Times are the wall clock in microseconds, shared by all
// processes of the machine: the save began after `startUs` and was answered before `endUs`.
struct Save {
    enum class Kind { Person, Grid, Order, Notice };
    enum class Outcome { Saved, Refused, Failed };
    Kind kind = Kind::Person;
    Outcome outcome = Outcome::Saved;
    QString key;
    QString value;
    qint64 startUs = 0;
    qint64 endUs = 0;
};

struct Options {
    int clients = 5;
    int seconds = 30;
    int thinkMs = 2000; // the mean pause between a clerk's actions, as at a screen
    quint32 seed = 7;
};

// Runs one clerk's mix on conn() for the options' seconds and writes what happened to `out`, one
// line per action (its kind and time) and per save tried (its ledger entry).
void runClerk(int client, const Options& o, QIODevice& out);

struct Result {
    int clients = 0;
    qint64 actions = 0;
    int saved = 0;
    int conflicts = 0; // saves refused because another client changed the row: the clerk was told
    int failed = 0;    // saves and reads that failed otherwise
    int lockFailed = 0; // of those, failed waiting for a lock
    int lost = 0;
    double p99SaveMs = 0;
    double p99OpenMs = 0;
    double machineBusyPct = 0; // the whole machine's processors while the clerks worked
    double clientsCpuS = 0;    // processor time the clerks' own processes spent
    QMap<QString, qint64> perKind; // actions by kind
    QMap<QString, double> p50Ms;   // median of each kind
    QMap<QString, double> p99Ms;   // p99 of each kind
    QVector<Save> ledger;
    QStringList errors; // the first few failure messages, for the report
};

// Starts `o.clients` processes of `exe` with `clientArgs(i)` (each runs runClerk), waits for them,
// reads their ledgers and checks them on conn().
Result runClerks(const QString& exe, const std::function<QStringList(int)>& clientArgs, const Options& o);

// The saves of the ledger whose value the database does not hold, although the save was
// acknowledged and no other save of the same key (acknowledged or of unknown outcome) can have
// come after it; at least one for a key whose stored value no save of the ledger wrote. On conn().
int countLost(const QVector<Save>& ledger);

// The fields of the workload's JSON line, after its name, engine and persons.
QString jsonFields(const Result& r);

// The command-line arguments that name the database of these settings to zqrs-bench.
QStringList databaseArgs(const ConnectionSettings& s);

} // namespace zq::clerks
