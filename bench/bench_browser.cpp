// The personnel browser: the screen opened on the staff in service (the counted department tree and
// the whole list), and a click on a department of the tree. Beside each, the floor of the same reads
// through the bare driver. The peak memory of the process after opening is printed as
// browser.open.rss_mb.

#include "Bench.h"

#include "personnel/frmRs_Person.h"
#include "shell/Recordset.h"

#include <cstdio>
#include <QCoreApplication>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

namespace {

using zq::bench::Context;

void openBrowser(Context&) {
    zq::frmRs_Person w;
    w.setRsState(1);
    w.show();
    QCoreApplication::processEvents();
}

bool rssPrinted = false;

void openBaseline(Context& c) {
    zq::bench::readAll(c.raw,
                       QStringLiteral("select fCode,fName,fLimited,fYnxj from tRs_Bm Where 1=1 And fYnxj=0 "
                                      "Order by fcode"));
    zq::bench::readAll(c.raw,
                       QStringLiteral("select fbmcode,count(*) from trsbasic where fzt=1 group by fbmcode"));
    zq::bench::readAll(c.raw, QStringLiteral("select ") + zq::bench::gridFields() +
                                  QStringLiteral(" from trsbasic where fzt=1 order by fcode"));
    if (!rssPrinted) {
        // The browser has been opened (and the baseline read) by now: the peak of both.
        rssPrinted = true;
        std::fprintf(stderr, "browser.open.rss_mb  %.0f\n", zq::bench::peakRssMb());
    }
}

// One browser for every click; the clicks go to two departments in turn, so each one refreshes.
zq::frmRs_Person* browser() {
    static zq::frmRs_Person* w = [] {
        auto* b = new zq::frmRs_Person;
        b->setRsState(1);
        b->show();
        qAddPostRoutine([] { delete browser(); });
        return b;
    }();
    return w;
}

QList<QTreeWidgetItem*> departments;
int nextClick = 0;

void prepareClicks(Context&) {
    QTreeWidget* tree = browser()->findChild<QTreeWidget*>(QStringLiteral("Tree1"));
    // The first two departments that have sub-departments, so that each click lists a whole branch.
    departments.clear();
    for (QTreeWidgetItemIterator it(tree); *it && departments.size() < 2; ++it)
        if ((*it)->parent() && (*it)->childCount() > 0) departments << *it;
}

void clickDept(Context&) {
    if (departments.isEmpty()) return;
    browser()->Tree1_NodeClick(departments.at(nextClick++ % departments.size()));
}

void clickBaseline(Context& c) {
    const QString code = browser()->treeDeptCode();
    zq::bench::readAll(c.raw, QStringLiteral("select ") + zq::bench::gridFields() +
                                  QStringLiteral(" from trsbasic where fzt=1 and fbmcode like '") + code +
                                  QStringLiteral("%' order by fcode"));
}

} // namespace

ZQ_BENCH("browser.open", openBrowser, openBaseline);
ZQ_BENCH("browser.deptclick", clickDept, clickBaseline, prepareClicks);
