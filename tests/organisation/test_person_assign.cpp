// The transfer order list: search conditions, checks, the row walk, delete and print.
#include "Controls.h"
#include "TestDb.h"

#include "organisation/frmRs_PersonAssign.h"
#include "organisation/frmRs_PersonAssignOk.h"
#include "organisation/PersonAssignListData.h"
#include "services/ui/Grid.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Commands.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace zq;
using test::child;
using test::exec;
using test::one;

namespace {
void order(int number, const QString& code, const QString& name, const QString& date = "2026-03-01") {
    exec(QStringLiteral(
             "insert into trsPersonMove (moveNmb,fcode,fName,olddpt,newdpt,worktype,wrtdate,oldunit) "
             "values (%1,'%2','%3','生产部','销售部','操作工','%4','本公司')")
             .arg(number)
             .arg(code, name, date));
}

QStringList column(ZqGrid* g, int col) {
    QStringList l;
    for (int r = 1; r <= g->maxRows(); ++r)
        l << g->text(r, col);
    return l;
}
} // namespace

class TestPersonAssign : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;
    ConnectionSettings m_settings;

    // Changes the active row's order as the clerk would: the dialog opens filled from the row, the
    // new post is typed, 确定 and yes.
    void changeActiveOrder(frmRs_PersonAssign& w, const QString& newPost) {
        setModalRunner([&](QDialog& d) {
            d.show();
            auto& ok = static_cast<frmRs_PersonAssignOk&>(d);
            ok.setNewUnit(QStringLiteral("本公司"));
            ok.setNewPost(newPost);
            m_prompts->answer(vbYes);
            ok.cmdOk_Click();
            return ok.result();
        });
        w.cmdChg_Click();
        setModalRunner({});
    }

private slots:
    void init() {
        m_settings = test::freshDatabase();
        m_prompts = &scriptPrompts();
        test::actAsSupervisor();
        exec("insert into tRsBasic (fCode,fName,fzt,fBmCode) values ('A01','张三',1,'01')");
        exec("insert into tRsBasic (fCode,fName,fzt,fBmCode) values ('B02','李四',1,'')");
        exec("insert into tRsBasic (fCode,fName,fzt,fBmCode) values ('C03','王五',1,null)");
        exec("insert into tRsBasic (fCode,fName,fzt,fBmCode) values ('D04','赵六',1,'02')");
        order(1, "A01", "张三");
        order(2, "B02", "李四"); // an empty department: left out, with the next order
        order(3, "C03", "王五"); // passed over with it, its row blank
        order(4, "X99", "旧人"); // gone from the register: a blank row that stays
        order(5, "D04", "赵六", "2025-12-31");
    }

    void searchWalksTheRowsAsTheyWere() {
        MoveSearch s;
        QCOMPARE(MoveSearchSql(s), QString("select *  from trsPersonMove where 1=1 order by movenmb"));
        s.number = true; // blank ends search between 0 and 0
        QVERIFY(MoveSearchSql(s).contains(" and (movenmb between 0 and 0)"));
        s.numberTo = "4";
        s.name = true;
        s.nameText = "三";
        QVERIFY(MoveSearchSql(s).contains(" and (movenmb between 0 and 4) and fname like '%三%' order by"));
        s.nameText = "O'";
        QVERIFY_THROWS_EXCEPTION(DbError, MoveSearchSql(s));

        const QVector<QStringList> rows = MoveListRows(MoveSearchSql({}));
        QCOMPARE(rows.size(), 5);
        QCOMPARE(rows.at(0).value(0), QString("A01"));
        QCOMPARE(rows.at(0).value(2), QString("1"));
        QVERIFY(rows.at(1).isEmpty() && rows.at(2).isEmpty() && rows.at(3).isEmpty());
        QCOMPARE(rows.at(4).value(1), QString("赵六"));
    }

    void screenChecksSearchesDeletesAndPrints() {
        frmRs_PersonAssign w;
        w.show();
        // A quote anywhere stops the search, ticked or not; so does a number that is none.
        w.box("txtWrtMan")->setText("a'b");
        w.cmdSeek_Click();
        QCOMPARE(m_prompts->messages().last(), QString("输入的查询内容中,不能出现引号,请检查!"));
        w.box("txtWrtMan")->clear();
        w.box("txtMoveNum(1)")->setText("12x");
        w.cmdSeek_Click();
        QCOMPARE(m_prompts->messages().last(), QString("调令号输入错误,应为数字型!"));
        w.box("txtMoveNum(1)")->setText("5");
        w.check("chkMoveNum")->setChecked(true);
        w.cmdSeek_Click();
        QCOMPARE(column(w.grid(), 2), QStringList({"张三", "", "", "", "赵六"}));
        // The date range, by default this month, finds none of these.
        w.check("chkDate")->setChecked(true);
        w.cmdSeek_Click();
        QCOMPARE(m_prompts->messages().last(), QString("没有符合条件的记录！"));
        w.check("chkDate")->setChecked(false);
        w.cmdSeek_Click();

        // A blank row cannot be changed.
        w.grid()->setActiveCell(4, 1);
        w.cmdChg_Click();
        QCOMPARE(m_prompts->messages().last(), QString("请先调出要修改的记录！"));
        // Delete keys on name and number.
        w.grid()->setActiveCell(5, 1);
        m_prompts->answer(vbYes);
        w.cmdDEL_Click();
        QCOMPARE(m_prompts->messages().last(), QString("赵六(5): 确认删除记录？"));
        QCOMPARE(one("select count(*) from trsPersonMove where moveNmb=5"), QString("0"));
        QCOMPARE(w.grid()->maxRows(), 4);

        // A change opens the dialog filled from the row, then searches again.
        QVariantMap seen;
        setModalRunner([&](QDialog& d) {
            seen = {
                {"code", d.property("Text1_2")}, {"tag", d.property("cmdOkTag")}, {"title", d.windowTitle()}};
            return int(QDialog::Rejected);
        });
        w.grid()->setActiveCell(1, 1);
        w.cmdChg_Click();
        setModalRunner({});
        QCOMPARE(seen.value("code").toString(), QString("A01"));
        QCOMPARE(seen.value("tag").toInt(), 2);
        QCOMPARE(seen.value("title").toString(), QString("调令修改"));
    }

    // A saved order stands in the list at once, active, without a new search; the clerk is told
    // that the master record did not move and can open it from the list.
    void aSavedOrderShowsAtOnceWithTheWayToTheRecord() {
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('01','生产部',0,0)");
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('02','销售部',0,0)");
        frmRs_PersonAssign w;
        w.show();
        w.cmdSeek_Click();
        QCOMPARE(w.grid()->maxRows(), 5);
        setModalRunner([&](QDialog& d) {
            d.show();
            auto& ok = static_cast<frmRs_PersonAssignOk&>(d);
            ok.setPersonCode(QStringLiteral("D04"));
            ok.Text1_LostFocus(2);
            ok.setMoveNmb(QStringLiteral("9"));
            ok.setOldUnit(QStringLiteral("本公司"));
            ok.setNewUnit(QStringLiteral("本公司"));
            ok.setOldDept(QStringLiteral("生产部"));
            ok.setNewDept(QStringLiteral("销售部"));
            m_prompts->answer(vbYes);
            ok.cmdOk_Click();
            return ok.result();
        });
        w.cmdAdd_Click();
        setModalRunner({});
        QCOMPARE(w.grid()->maxRows(), 6);
        QCOMPARE(w.grid()->activeRow(), 6);
        QCOMPARE(w.grid()->text(6, 2), QString("赵六")); // the name the code brought
        QCOMPARE(w.grid()->text(6, 3), QString("9"));
        QVERIFY(w.status().contains("人员档案未改动"));
        test::saveShot(w, "transfer-list");

        QString opened;
        int mode = -1;
        setModalRunner([&](QDialog& d) {
            opened = d.objectName();
            mode = G().PersonEditMode;
            return int(QDialog::Rejected);
        });
        w.findChild<QPushButton*>("cmdPerson")->click();
        setModalRunner({});
        QCOMPARE(opened, QString("frmRs_PersonBasic"));
        QCOMPARE(mode, 2);
        QCOMPARE(G().CurPersonCode, QString("D04"));
    }

    void anotherClientsChangeToAnOrderIsNotOverwritten() {
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('01','生产部',0,0)");
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('02','销售部',0,0)");
        frmRs_PersonAssign w;
        w.show();
        w.cmdSeek_Click();
        Connection other;
        other.open(m_settings);
        other.execute("update trsPersonMove set chgperson='另一人' where moveNmb=1");
        w.grid()->setActiveCell(1, 1);
        changeActiveOrder(w, QStringLiteral("经理"));
        QVERIFY2(m_prompts->messages().last().startsWith(
                     QStringLiteral("存盘错误!\n\n此记录在您打开之后已被他人修改")),
                 qPrintable(m_prompts->messages().join('|')));
        QCOMPARE(one("select chgperson||'/'||coalesce(newworktype,'') from trsPersonMove where moveNmb=1"),
                 QString("另一人/"));
        QCOMPARE(one("select count(*) from trswork"), QString("0"));

        // The list searched again shows the other client's change; a change from it goes in.
        QCOMPARE(w.grid()->text(1, 10), QString("另一人"));
        w.grid()->setActiveCell(1, 1);
        changeActiveOrder(w, QStringLiteral("经理"));
        QCOMPARE(m_prompts->messages().last(), QString("存盘完毕!"));
        QCOMPARE(one("select chgperson||'/'||newworktype from trsPersonMove where moveNmb=1"),
                 QString("另一人/经理"));

        // An order another client deleted meanwhile is not made again.
        other.execute("delete from trsPersonMove where moveNmb=1");
        w.grid()->setActiveCell(1, 1);
        changeActiveOrder(w, QStringLiteral("主管"));
        QVERIFY(m_prompts->messages().last().contains(QStringLiteral("已被他人修改或删除")));
        QCOMPARE(one("select count(*) from trsPersonMove where moveNmb=1"), QString("0"));
        other.close();
    }
};

ZQ_DB_TEST_MAIN(TestPersonAssign)
#include "test_person_assign.moc"
