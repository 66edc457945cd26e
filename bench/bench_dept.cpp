// The department register: the screen opened with its counted tree of departments and posts, and
// the save of a changed row, which rebuilds that tree. Beside each, the floor of the same reads
// through the bare driver.

#include "Bench.h"

#include "organisation/frmRs_Dept.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"

#include <QCoreApplication>
#include <QLineEdit>
#include <QSqlQuery>
#include <QTreeWidget>

namespace {

using zq::bench::Context;

void treeBaseline(Context& c) {
    zq::bench::readAll(c.raw, QStringLiteral("select fCode,fName,fLimited,fYnxj from tRs_Bm Order by fcode"));
    zq::bench::readAll(c.raw,
                       QStringLiteral("select fbmcode,count(*) from trsbasic where fzt=1 group by fbmcode"));
}

void openRegister(Context&) {
    zq::frmRs_Dept w;
    w.show();
    QCoreApplication::processEvents();
}

int saves = 0;

// One register for every save; each save renames the same row back and forth (a trailing "*"), so
// with an even number of saves in all (the untimed one and an odd --runs) the database ends as it
// began.
zq::frmRs_Dept* screen() {
    static auto* w = zq::bench::openKept<zq::frmRs_Dept>();
    return w;
}

void prepareSave(Context&) {
    // The supervisor saves, and the messages of the save are answered by script.
    zq::Globals& g = zq::G();
    g.UserName = g.ZgName = QStringLiteral("bench");
    g.myPower = QString(350, QLatin1Char('1'));
    zq::scriptPrompts();
    QTreeWidget* tree = screen()->findChild<QTreeWidget*>(QStringLiteral("Tree1"));
    tree->setCurrentItem(tree->topLevelItem(0)->child(0));
}

void saveRow(Context&) {
    zq::frmRs_Dept* w = screen();
    w->cmdChg_Click();
    auto* name = w->findChild<QLineEdit*>(QStringLiteral("TxtName"));
    const QString base = name->text().section(QLatin1Char('*'), 0, 0);
    name->setText(++saves % 2 ? base + QLatin1Char('*') : base);
    w->cmdSave_Click();
}

void saveBaseline(Context& c) {
    const QString code = zq::G().CurPersonCode;
    QSqlQuery q(c.raw);
    q.exec(QStringLiteral("update tRs_Bm set fName=fName where fcode='") + code + QLatin1Char('\''));
    treeBaseline(c);
}

} // namespace

ZQ_BENCH("dept.open", openRegister, treeBaseline);
ZQ_BENCH("dept.save", saveRow, saveBaseline, prepareSave);
