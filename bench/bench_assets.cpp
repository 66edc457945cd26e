// The assets screens at their largest: the loan screen opened on the goods table, a search of it
// for one kind of goods with every match listed, and the room tree with its head counts. Beside
// each, the same reads through the bare driver.

#include "Bench.h"

#include "assets/frmRs_Goods.h"
#include "assets/frmRs_House.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QLineEdit>

namespace {

using zq::bench::Context;

void actAsSupervisor(Context&) {
    zq::Globals& g = zq::G();
    g.UserName = QStringLiteral("bench");
    g.ZgName = g.UserName;
    g.myPower = QString(350, QLatin1Char('1'));
    zq::scriptPrompts();
}

void openGoods(Context&) {
    zq::frmRs_Goods w;
    w.setState(2);
    w.show();
    QCoreApplication::processEvents();
}

void openBaseline(Context& c) {
    zq::bench::readAll(c.raw,
                       QStringLiteral("select FieldName,FieldName_0,FieldGridWidth,FieldDataType,"
                                      "FieldDataDeci from RptListDetail where ftable='tRsLoanGoods' and "
                                      "FieldSelected=1 order by fieldId"));
    zq::bench::readAll(c.raw,
                       QStringLiteral("select FieldName_0,fieldbrieftype from RptListDetail where "
                                      "ftable='tRsLoanGoods' and lower(FieldName)<>'fid' order by OrderID"));
}

zq::frmRs_Goods* goods() {
    static auto* w = zq::bench::openKept<zq::frmRs_Goods>([](zq::frmRs_Goods& d) { d.setState(2); });
    return w;
}

// A kind of goods many have on loan: every match is listed, past the question.
const QString kGoods = QStringLiteral("工作服");

void prepareSeek(Context& c) {
    actAsSupervisor(c);
    zq::frmRs_Goods* w = goods();
    w->findChild<QCheckBox*>(QStringLiteral("Check1(2)"))->setChecked(true);
    w->findChild<QLineEdit*>(QStringLiteral("Text2(2)"))->setText(kGoods);
}

void seekGoods(Context&) {
    zq::scriptPrompts().answer(zq::vbNo);
    goods()->cmdSeek_Click();
    QCoreApplication::processEvents();
}

void seekBaseline(Context& c) {
    zq::bench::readAll(c.raw,
                       QStringLiteral("select a.fID,a.fcode,a.fName,a.goodsname,a.Model,a.geshu,a.price,"
                                      "a.Total,a.useyear,a.lyxz,a.loantime,a.backtime,a.demo,b.fbmcode "
                                      "from tRsLoanGoods a inner join trsbasic b on a.fcode=b.fcode where "
                                      "goodsname like '%") +
                           kGoods + QStringLiteral("%' order by a.fcode,loantime desc"));
}

zq::frmRs_House* house() {
    static zq::frmRs_House* w = [] {
        auto* d = zq::bench::openKept<zq::frmRs_House>([](zq::frmRs_House& h) { h.setScreenState(1); });
        d->findChild<QCheckBox*>(QStringLiteral("chkTotalMan"))->setChecked(true);
        return d;
    }();
    return w;
}

void houseTree(Context&) {
    house()->RefreshTree();
    QCoreApplication::processEvents();
}

void treeBaseline(Context& c) {
    zq::bench::readAll(c.raw,
                       QStringLiteral("select fCode,fName,fLimited,fYnxj from tRs_House order by fCode"));
    zq::bench::readAll(c.raw, QStringLiteral("select neckline,count(*) from tRsBasic where fzt=1 and "
                                             "neckline<>'' group by neckline"));
}

} // namespace

ZQ_BENCH("goods.open", openGoods, openBaseline, actAsSupervisor);
ZQ_BENCH("goods.seek", seekGoods, seekBaseline, prepareSeek);
ZQ_BENCH("house.tree", houseTree, treeBaseline, [](Context& c) {
    actAsSupervisor(c);
    house();
});
