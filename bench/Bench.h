#pragma once

#include "shell/Connection.h"

#include <functional>
#include <QFile>
#include <QSqlDatabase>
#include <QString>
#include <QWidget>
#include <vector>

namespace zq::bench {

// What an operation works on. conn() is open on the database as the system opens it; `raw` is a
// second connection on the same database through the bare driver, for the baselines.
struct Context {
    ConnectionSettings settings;
    QString engine; // "sqlite" or "postgresql"
    qint64 persons = 0;
    QSqlDatabase raw;
    // Of the workloads: how many clients, for how long, and their mean pause between actions.
    int clients = 5;
    int seconds = 30;
    int thinkMs = 2000;
    quint32 seed = 7;
};

// A second database beside the benchmark's own, for work that must not touch it: the file with
// "." + tag + ".db" added, or the server database with "_" + tag.
inline ConnectionSettings scratchDatabase(const Context& c, const QString& tag) {
    ConnectionSettings s = c.settings;
    if (s.sqlData == 0)
        s.userPath += QLatin1Char('.') + tag + QStringLiteral(".db");
    else
        s.defaultDb += QLatin1Char('_') + tag;
    return s;
}

// The peak resident memory of the process so far, in MiB (0 where the system does not tell).
inline double peakRssMb() {
    QFile f(QStringLiteral("/proc/self/status"));
    if (!f.open(QIODevice::ReadOnly)) return 0;
    for (const QByteArray& line : f.readAll().split('\n'))
        if (line.startsWith("VmHWM:")) return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024.0;
    return 0;
}

// Deletes a widget as the application ends: a widget cannot outlive it. Gives the widget back.
QWidget* deleteAtExit(QWidget* w);

// A window opened once and kept for every run of the benchmark: `setUp` readies it before it shows.
template <class W, class SetUp>
W* openKept(SetUp&& setUp) {
    auto* w = new W;
    setUp(*w);
    w->show();
    deleteAtExit(w);
    return w;
}
template <class W>
W* openKept() {
    return openKept<W>([](W&) {});
}

// A named operation. `run` does the work through the system; `baseline`, when there is one, does
// the same work with the fewest plain SQL statements through the bare driver. `prepare` runs once
// before either is timed; `reset`, untimed, before every run, for work that must start cold.
struct Operation {
    QString name;
    std::function<void(Context&)> run;
    std::function<void(Context&)> baseline;
    std::function<void(Context&)> prepare;
    std::function<void(Context&)> reset;
    // A workload instead: many clients at once for a while, run once and only when named. It gives
    // the fields of its line after the persons; its clients are this program again, started with
    // --client NAME:I, each of which runs `client`.
    std::function<QString(Context&)> workload;
    std::function<void(Context&, int)> client;
};

using Step = std::function<void(Context&)>;
// Registers an operation; used through ZQ_BENCH from a static initialiser in each bench/*.cpp.
bool add(const QString& name, Step run, Step baseline = {}, Step prepare = {}, Step reset = {});
bool addWorkload(const QString& name, std::function<QString(Context&)> workload,
                 std::function<void(Context&, int)> client);
const std::vector<Operation>& operations();

// The register's grid fields as the dictionary selects them, comma-joined, for the baselines.
QString gridFields();

// Runs a statement on the bare driver and reads every row and column; gives the rows read. A
// failing statement stops the benchmark.
qint64 readAll(QSqlDatabase& db, const QString& sql);

} // namespace zq::bench

#define ZQ_BENCH_CONCAT2(a, b) a##b
#define ZQ_BENCH_CONCAT(a, b) ZQ_BENCH_CONCAT2(a, b)
// ZQ_BENCH("name", run[, baseline[, prepare[, reset]]]);
#define ZQ_BENCH(...)                                                                                        \
    static const bool ZQ_BENCH_CONCAT(zqBenchRegistered_, __LINE__) = zq::bench::add(__VA_ARGS__)
