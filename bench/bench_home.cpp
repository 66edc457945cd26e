// The host's home page read and laid out for the supervisor: one pass over the persons for its
// figures and the grouped count for the quotas. The baseline is the same two reads through the bare
// driver.

#include "Bench.h"

#include "personnel/HomePage.h"
#include "shell/Globals.h"

#include <QCoreApplication>

namespace {

using zq::bench::Context;

zq::HomePage* page() {
    static zq::HomePage* p = [] {
        zq::Globals& g = zq::G();
        g.UserName = g.ZgName = QStringLiteral("bench");
        g.myPower = QString(350, QLatin1Char('1'));
        return zq::bench::openKept<zq::HomePage>();
    }();
    return p;
}

void openHome(Context&) {
    page()->reload();
    QCoreApplication::processEvents();
}

void homeBaseline(Context& c) {
    // The figures as sums of one scan, and the counts against the quotas. On the server the dates
    // are compared as plain text, as the page does.
    const QString t = c.engine == QStringLiteral("postgresql") ? QStringLiteral("::text") : QString();
    QStringList sums;
    for (const char* condition :
         {"fzt=1", "fzt=1 and fSpday between '2026-11-01' and '2026-11-30'",
          "fzt=1 and contractlimt between '2026-11-23' and '2026-12-23'",
          "fzt=1 and fSpday between '2026-08-23' and '2026-09-22'",
          "fzt=1 and substr(fSpday,6,2)='11' and fSpday<'2026-11-01'", "fzt=1 and substr(fBirthDay,6,2)='11'",
          "fzt=2 and leavetime between '2026-11-01' and '2026-11-30'"})
        sums << QStringLiteral("sum(case when %1 then 1 else 0 end)")
                    .arg(QString::fromLatin1(condition)
                             .replace(QStringLiteral("fSpday"), QStringLiteral("fSpday") + t)
                             .replace(QStringLiteral("fBirthDay"), QStringLiteral("fBirthDay") + t)
                             .replace(QStringLiteral("contractlimt"), QStringLiteral("contractlimt") + t)
                             .replace(QStringLiteral("leavetime"), QStringLiteral("leavetime") + t));
    for (int state = 3; state <= 7; ++state)
        sums << QStringLiteral(
                    "sum(case when fzt=%1 and leavetime%2 between '2026-11-01' and '2026-11-30' then 1 "
                    "else 0 end)")
                    .arg(state)
                    .arg(t);
    zq::bench::readAll(c.raw, QStringLiteral("select ") + sums.join(QLatin1Char(',')) +
                                  QStringLiteral(" from trsbasic"));
    zq::bench::readAll(c.raw, QStringLiteral("select fCode,fLimited from tRs_Bm where fLimited>0"));
    zq::bench::readAll(c.raw,
                       QStringLiteral("select fbmcode,count(*) from trsbasic where fzt=1 group by fbmcode"));
}

} // namespace

ZQ_BENCH("home.open", openHome, homeBaseline);
