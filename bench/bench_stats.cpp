// The statistics screen opened on the persons in service, counts of three fields and of the person
// code through the screen (with the grid and the chart), and the transfer order list searched for
// every order. Baselines: the plain list and the plain grouped counts through the bare driver.

#include "Bench.h"

#include "organisation/frmRs_PersonAssign.h"
#include "personnel/frmRs_PersonList.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"

#include <QCoreApplication>
#include <QListWidget>

namespace {

using zq::bench::Context;

void asSupervisor() {
    zq::Globals& g = zq::G();
    g.UserName = g.ZgName = QStringLiteral("bench");
    g.myPower = QString(350, QLatin1Char('1'));
    zq::scriptPrompts(); // a search that finds nothing would otherwise wait for a click
}

void openStats(Context&) {
    asSupervisor();
    zq::frmRs_PersonList w;
    w.show();
    QCoreApplication::processEvents();
}

void openBaseline(Context& c) {
    zq::bench::readAll(c.raw, QStringLiteral("select ") + zq::bench::gridFields() +
                                  QStringLiteral(" from tRsBasic where fzt=1"));
}

zq::frmRs_PersonList* stats() {
    static zq::frmRs_PersonList* w = [] {
        asSupervisor();
        return zq::bench::openKept<zq::frmRs_PersonList>();
    }();
    return w;
}

void count(const QStringList& captions) {
    auto* chosen = stats()->findChild<QListWidget*>(QStringLiteral("lstSelect"));
    chosen->clear();
    chosen->addItems(captions);
    stats()->cmdCompileOK_Click();
    QCoreApplication::processEvents();
}

void groupedBaseline(Context& c, const QStringList& fields) {
    for (const QString& f : fields)
        zq::bench::readAll(c.raw,
                           QStringLiteral("select %1,count(*) from tRsBasic where fzt=1 group by %1").arg(f));
}

zq::frmRs_PersonAssign* orders() {
    static zq::frmRs_PersonAssign* w = [] {
        asSupervisor();
        return zq::bench::openKept<zq::frmRs_PersonAssign>();
    }();
    return w;
}

} // namespace

ZQ_BENCH("stats.open", openStats, openBaseline);
ZQ_BENCH(
    "stats.count3",
    [](Context&) {
        count({QStringLiteral("性别"), QStringLiteral("文化程度"), QStringLiteral("现属部门")});
    },
    [](Context& c) {
        groupedBaseline(c, {QStringLiteral("fSex"), QStringLiteral("fXl"), QStringLiteral("fBmName")});
    });
ZQ_BENCH(
    "stats.countcode", [](Context&) { count({QStringLiteral("员工编号")}); },
    [](Context& c) { groupedBaseline(c, {QStringLiteral("fCode")}); });
ZQ_BENCH(
    "assign.seek", [](Context&) { orders()->cmdSeek_Click(); },
    [](Context& c) {
        zq::bench::readAll(c.raw, QStringLiteral("select * from trsPersonMove order by movenmb"));
        zq::bench::readAll(c.raw,
                           QStringLiteral("select fcode,fBmCode from trsbasic where fcode in (select fcode "
                                          "from trsPersonMove)"));
    });
