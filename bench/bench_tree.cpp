// The code tree: the department register's tree (departments and posts, codes shown) with and
// without head counts, and the root's count alone.

#include "Bench.h"

#include "services/HeadCounts.h"
#include "services/ui/DeptTree.h"

#include <QCoreApplication>
#include <QTreeWidget>

namespace {

using zq::bench::Context;

QTreeWidget* tree() {
    // One tree for every run, never shown.
    static auto* t = static_cast<QTreeWidget*>(zq::bench::deleteAtExit(new QTreeWidget));
    return t;
}

const QString kDepts =
    QStringLiteral("select fCode,fName,fLimited,fYnxj from tRs_Bm Where 1=1 Order by fcode");

} // namespace

// The floor of the counted tree: the rows of the table and the persons in the state grouped by
// department, read whole.
ZQ_BENCH(
    "tree.counts", [](Context&) { zq::FillDeptTree(tree(), "tRs_Bm", "", -1, 1, 1, -1); },
    [](Context& c) {
        zq::bench::readAll(c.raw, kDepts);
        zq::bench::readAll(c.raw, "select fbmcode,count(*) from trsbasic where fzt=1 group by fbmcode");
    });

ZQ_BENCH(
    "tree.plain", [](Context&) { zq::FillDeptTree(tree(), "tRs_Bm", "", -1, 1, 0, -1); },
    [](Context& c) { zq::bench::readAll(c.raw, kDepts); });

ZQ_BENCH(
    "count.root", [](Context&) { zq::CountPersons("tRs_Bm", 1, ""); },
    [](Context& c) { zq::bench::readAll(c.raw, "Select Count(*) from trsbasic where fzt=1"); });
