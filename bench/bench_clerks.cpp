// Fifty clerks at once (load.clerks): --clients processes of this program, each its own connection,
// each working through a clerk's screens for --seconds, pausing about --think ms between actions.
// Afterwards every acknowledged save is looked for in the database. Baseline: as many plain
// single-row updates, each committed alone, one after another through the bare driver.

#include "Bench.h"

#include "clerks/ClerkLoad.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/HistorySession.h"
#include "shell/Prompts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QSqlError>
#include <QSqlQuery>

namespace {

using zq::bench::Context;
namespace clerks = zq::clerks;

clerks::Options optionsOf(const Context& c) {
    clerks::Options o;
    o.clients = c.clients;
    o.seconds = c.seconds;
    o.thinkMs = c.thinkMs;
    o.seed = c.seed;
    return o;
}

// The p99 of `count` single-row updates of the master record, each in a transaction of its own.
double baselineP99(Context& c, int count) {
    QStringList codes;
    {
        QSqlQuery q(c.raw);
        q.exec(QStringLiteral("select fCode from trsbasic where fzt=1 order by fCode"));
        while (q.next() && codes.size() < count)
            codes << q.value(0).toString();
    }
    QSqlQuery q(c.raw);
    q.prepare(QStringLiteral("update trsbasic set trustman=? where fCode=?"));
    std::vector<double> ms;
    for (int i = 0; i < count && !codes.isEmpty(); ++i) {
        QElapsedTimer t;
        t.start();
        c.raw.transaction();
        q.addBindValue(QStringLiteral("b-%1").arg(i));
        q.addBindValue(codes.at(i % codes.size()));
        if (!q.exec()) throw zq::DbError(q.lastError().text());
        c.raw.commit();
        ms.push_back(double(t.nsecsElapsed()) / 1e6);
    }
    if (ms.empty()) return 0;
    std::sort(ms.begin(), ms.end());
    return ms[size_t(std::ceil(0.99 * double(ms.size()))) - 1];
}

QString loadClerks(Context& c) {
    const clerks::Options o = optionsOf(c);
    const clerks::Result r = clerks::runClerks(
        QCoreApplication::applicationFilePath(),
        [&](int i) {
            return clerks::databaseArgs(c.settings)
                   << QStringLiteral("--client") << QStringLiteral("load.clerks:%1").arg(i)
                   << QStringLiteral("--seconds") << QString::number(o.seconds) << QStringLiteral("--think")
                   << QString::number(o.thinkMs) << QStringLiteral("--seed") << QString::number(o.seed);
        },
        o);
    for (const QString& e : r.errors)
        std::fprintf(stderr, "load.clerks  %s\n", qPrintable(e));
    const double base = baselineP99(c, std::clamp(r.saved, 1, 2000));
    return clerks::jsonFields(r) + QStringLiteral(", \"baseline_p99_save_ms\": %1, \"ratio\": %2")
                                       .arg(base, 0, 'f', 3)
                                       .arg(base > 0 ? r.p99SaveMs / base : 0, 0, 'f', 3);
}

void clerk(Context& c, int client) {
    zq::Globals& g = zq::G();
    g.UserName = QStringLiteral("clerk%1").arg(client);
    g.myPower = QString(350, QLatin1Char('1'));
    zq::TagHistorySession(zq::conn());
    zq::scriptPrompts(); // nothing may wait for a click
    QFile out;
    if (!out.open(stdout, QIODevice::WriteOnly)) throw zq::DbError(QStringLiteral("no standard output"));
    clerks::runClerk(client, optionsOf(c), out);
    out.flush();
}

[[maybe_unused]] const bool registered = zq::bench::addWorkload(QStringLiteral("load.clerks"), loadClerks, clerk);

} // namespace
