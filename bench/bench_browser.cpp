// The personnel browser: the screen opened on the staff in service (the counted department tree and
// the first screen of the list), a click on a department of the tree, a jump to the last row, a sort
// of the whole list and scrolling about it, a search for names and its matches sorted by name. Beside
// each, the floor of the same reads through the bare driver. The peak memory of the process after
// opening is printed as browser.open.rss_mb, after scrolling as browser.scroll.rss_mb.

#include "Bench.h"

#include "personnel/frmRs_Person.h"
#include "services/ui/BriefDialog.h"
#include "services/ui/Grid.h"
#include "shell/Recordset.h"

#include <cstdio>
#include <QComboBox>
#include <QCoreApplication>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

namespace {

using zq::bench::Context;

bool rssPrinted = false;

void openBrowser(Context&) {
    zq::frmRs_Person w;
    w.setRsState(1);
    w.show();
    QCoreApplication::processEvents();
    if (!rssPrinted) {
        // The first pass comes before any baseline: the peak is the browser's own.
        rssPrinted = true;
        std::fprintf(stderr, "browser.open.rss_mb  %.0f\n", zq::bench::peakRssMb());
    }
}

void openBaseline(Context& c) {
    zq::bench::readAll(c.raw,
                       QStringLiteral("select fCode,fName,fLimited,fYnxj from tRs_Bm Where 1=1 And fYnxj=0 "
                                      "Order by fcode"));
    zq::bench::readAll(c.raw,
                       QStringLiteral("select fbmcode,count(*) from trsbasic where fzt=1 group by fbmcode"));
    // The list shows its count and its first screen; the rest is read as it is scrolled to.
    zq::bench::readAll(c.raw, QStringLiteral("select count(*) from trsbasic where fzt=1"));
    zq::bench::readAll(c.raw, QStringLiteral("select ") + zq::bench::gridFields() +
                                  QStringLiteral(" from trsbasic where fzt=1 order by fcode limit 128"));
}

// A browser on the staff in service, kept for every run.
zq::frmRs_Person* keptBrowser() {
    return zq::bench::openKept<zq::frmRs_Person>([](zq::frmRs_Person& b) { b.setRsState(1); });
}

// One browser for every click; the clicks go to two departments in turn, so each one refreshes.
zq::frmRs_Person* browser() {
    static auto* w = keptBrowser();
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
    const QString where =
        QStringLiteral(" from trsbasic where fzt=1 and fbmcode like '") + code + QStringLiteral("%'");
    zq::bench::readAll(c.raw, QStringLiteral("select count(*)") + where);
    zq::bench::readAll(c.raw, QStringLiteral("select ") + zq::bench::gridFields() + where +
                                  QStringLiteral(" order by fcode limit 128"));
}

zq::ZqGrid* browserGrid() {
    return browser()->findChild<zq::ZqGrid*>(QStringLiteral("Grid1"));
}

// The whole list in service, in code order, with no page read yet.
void wholeList(Context&) {
    QTreeWidget* tree = browser()->findChild<QTreeWidget*>(QStringLiteral("Tree1"));
    browser()->Tree1_NodeClick(tree->topLevelItem(0));
    browserGrid()->sortRows({});
    QCoreApplication::processEvents();
}

void jumpToLast(Context&) {
    zq::ZqGrid* grid = browserGrid();
    grid->setActiveCell(grid->maxRows(), 1);
    QCoreApplication::processEvents();
}

void lastBaseline(Context& c) {
    zq::bench::readAll(c.raw, QStringLiteral("select ") + zq::bench::gridFields() +
                                  QStringLiteral(" from trsbasic where fzt=1 order by fcode desc limit 128"));
}

void sortByName(Context&) {
    browserGrid()->sortRows({2});
    QCoreApplication::processEvents();
}

void sortBaseline(Context& c) {
    zq::bench::readAll(c.raw, QStringLiteral("select count(*) from trsbasic where fzt=1"));
    zq::bench::readAll(c.raw,
                       QStringLiteral("select ") + zq::bench::gridFields() +
                           QStringLiteral(" from trsbasic where fzt=1 order by fname, fcode limit 128"));
}

// A hundred jumps spread over the whole list, each shown: the peak memory afterwards is printed.
void scrollAround(Context&) {
    zq::ZqGrid* grid = browserGrid();
    const int rows = grid->maxRows();
    for (int i = 1; i <= 100; ++i) {
        grid->setActiveCell(std::max(1, int(qint64(rows) * ((i * 37) % 100) / 100)), 1);
        QCoreApplication::processEvents();
    }
    static bool printed = false;
    if (!printed) {
        printed = true;
        std::fprintf(stderr, "browser.scroll.rss_mb  %.0f\n", zq::bench::peakRssMb());
    }
}

// A browser of its own for the search, whose condition stays for every later click and sort.
zq::frmRs_Person* finder() {
    static auto* w = keptBrowser();
    return w;
}

// The condition search for the names beginning with 王, through the search dialog as a clerk fills
// it in; the list shows its count and first screen.
void seekName(Context&) {
    zq::setBriefDriver([](zq::BriefDialog& d) {
        const auto pick = [&d](const char* name, const QString& text) {
            auto* box = d.findChild<QComboBox*>(QLatin1String(name));
            box->setCurrentIndex(box->findText(text));
        };
        pick("cboField", QStringLiteral("姓名"));
        pick("cboOperator", QStringLiteral("like"));
        d.findChild<QComboBox*>(QStringLiteral("cboValue"))->setEditText(QStringLiteral("王*"));
        d.accept();
    });
    finder()->mnuRsSeek1_Click();
    QCoreApplication::processEvents();
    zq::setBriefDriver({});
}

// The 86,000 found sorted by name: the clerk's click on the column's header.
void sortFound(Context&) {
    finder()->findChild<zq::ZqGrid*>(QStringLiteral("Grid1"))->sortRows({2});
    QCoreApplication::processEvents();
}

// The names found, counted, and their first screen in an order.
void foundBaseline(Context& c, const QString& order) {
    const QString where = QStringLiteral(" from trsbasic where fzt=1 and fName like '王%'");
    zq::bench::readAll(c.raw, QStringLiteral("select count(*)") + where);
    zq::bench::readAll(c.raw, QStringLiteral("select ") + zq::bench::gridFields() + where +
                                  QStringLiteral(" order by ") + order + QStringLiteral(" limit 128"));
}

} // namespace

ZQ_BENCH("browser.open", openBrowser, openBaseline);
ZQ_BENCH("browser.seekname", seekName, [](Context& c) { foundBaseline(c, QStringLiteral("fcode")); });
ZQ_BENCH("browser.sortfound", sortFound, [](Context& c) { foundBaseline(c, QStringLiteral("fname, fcode")); },
         seekName);
ZQ_BENCH("browser.deptclick", clickDept, clickBaseline, prepareClicks);
ZQ_BENCH("browser.jumplast", jumpToLast, lastBaseline, {}, wholeList);
ZQ_BENCH("browser.sort", sortByName, sortBaseline, wholeList);
ZQ_BENCH("browser.scroll", scrollAround, {}, {}, wholeList);
