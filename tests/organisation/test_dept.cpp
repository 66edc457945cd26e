#include "Controls.h"
#include "PdfTools.h"
#include "TestDb.h"

#include "admin/Demo.h"

#include "organisation/DeptData.h"
#include "organisation/frmRs_Dept.h"
#include "personnel/frmRs_PersonBasic.h"
#include "printing/PrintOutput.h"
#include "services/ui/BriefDialog.h"
#include "services/ui/DeptTree.h"
#include "services/ui/Grid.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Commands.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

using namespace zq;
using test::child;
using test::click;
using test::exec;
using test::one;

namespace {
QTreeWidget* tree(QWidget& w) {
    return child<QTreeWidget>(w, QStringLiteral("Tree1"));
}

// Selects a row's node as a click would; "" selects the company.
void select(QWidget& w, const QString& code) {
    QTreeWidgetItem* node = FindNode(tree(w), QLatin1Char('B') + code);
    if (!node) qFatal("no node %s", qPrintable(code));
    tree(w)->setCurrentItem(node);
}

QString parentCode(QWidget& w, const QString& code) {
    QTreeWidgetItem* node = FindNode(tree(w), QLatin1Char('B') + code);
    return node && node->parent() ? NodeKey(node->parent()).mid(1) : QStringLiteral("?");
}

void dept(const QString& code, const QString& name, int limit = 0, int post = 0) {
    exec(QStringLiteral("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('%1','%2',%3,%4)")
             .arg(code, name)
             .arg(limit)
             .arg(post));
}

void person(const QString& code, int state, const QString& deptCode) {
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fzt,fBmCode) values ('%1','员工%1',%2,'%3')")
             .arg(code)
             .arg(state)
             .arg(deptCode));
}

int count(const QString& sql) {
    return one(sql).toInt();
}

void typeInto(QPlainTextEdit* page, const QString& text) {
    page->setFocus();
    page->moveCursor(QTextCursor::End);
    page->insertPlainText(text);
}
} // namespace

class TestDept : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;

private slots:
    void init() {
        test::freshDatabase();
        m_prompts = &scriptPrompts();
        test::actAsSupervisor();
        G().CompName = QStringLiteral("测试公司");
        dept("01", "生产部", 2);
        dept("0101", "一车间");
        dept("0102", "二车间");
        dept("010201", "钳工", 0, 1);
        dept("02", "销售部");
        dept("1", "总务");
        dept("10", "后勤");
        person("001", 1, "0101");
        person("002", 1, "0102");
        person("003", 1, "01");
        person("004", 2, "01");
        person("005", 5, "02");
    }

    void cleanup() {
        frmRs_Dept::setColorPicker(nullptr);
        setBriefDriver(nullptr);
    }

    void treeShowsCodesCountsAndQuotas() {
        frmRs_Dept w;
        w.show();
        QCOMPARE(w.myTable(), QStringLiteral("trs_bm"));
        QCOMPARE(w.myModel(), QStringLiteral("mnuRsbm"));
        QCOMPARE(w.windowTitle(), QStringLiteral("部门与组织架构"));
        auto* cbo = child<QComboBox>(w, QStringLiteral("cboDept"));
        QCOMPARE(cbo->itemText(0), QStringLiteral("==所有部门=="));
        QCOMPARE(cbo->count(), 7); // departments only: the post is not offered
        QCOMPARE(parentCode(w, "010201"), QStringLiteral("0102"));
        QCOMPARE(parentCode(w, "10"), QStringLiteral("1")); // a text prefix nests too
        QTreeWidgetItem* prod = FindNode(tree(w), QStringLiteral("B01"));
        QCOMPARE(prod->text(0), QStringLiteral("01\t生产部\t(限2人,共3人)"));
        QCOMPARE(NodeImage(FindNode(tree(w), QStringLiteral("B010201"))), int(ImagePost));
        // Three serving persons against a quota of two: drawn as a warning, the text as it is.
        QVERIFY(NodeOverQuota(prod));
        QVERIFY(prod->foreground(0).color() !=
                FindNode(tree(w), QStringLiteral("B02"))->foreground(0).color());
        QVERIFY(!NodeOverQuota(FindNode(tree(w), QStringLiteral("B02"))));
        QVERIFY(!child<QLabel>(w, QStringLiteral("lblOverQuota"))->isHidden());

        // Narrowing to a department, hiding the codes, dropping the counts.
        cbo->setCurrentIndex(cbo->findText(QStringLiteral("生产部")));
        w.RefreshTree();
        QVERIFY(FindNode(tree(w), QStringLiteral("B0101")));
        QVERIFY(!FindNode(tree(w), QStringLiteral("B02")));
        child<QCheckBox>(w, QStringLiteral("chkNoListCode"))->click();
        child<QCheckBox>(w, QStringLiteral("chkTotalMan"))->click();
        QCOMPARE(FindNode(tree(w), QStringLiteral("B01"))->text(0), QStringLiteral("生产部"));
        QVERIFY(child<QLabel>(w, QStringLiteral("lblOverQuota"))->isHidden());
    }

    void nodeClickHandsTheRowBack() {
        frmRs_Dept w;
        w.show();
        exec("update tRs_Bm set fDetail1='造', fDetail2='注' where fcode='0101'");
        // With codes hidden and counts shown, the name is still the name, not the count.
        child<QCheckBox>(w, QStringLiteral("chkNoListCode"))->click();
        select(w, "0101");
        QCOMPARE(G().CurPersonCode, QStringLiteral("0101"));
        QCOMPARE(G().CurPersonName, QStringLiteral("一车间"));
        QCOMPARE(w.myNodeHit(), 1);
        QCOMPARE(child<QPlainTextEdit>(w, QStringLiteral("Text1"))->toPlainText(), QStringLiteral("造"));
        QCOMPARE(child<QPlainTextEdit>(w, QStringLiteral("Text2"))->toPlainText(), QStringLiteral("注"));
        QCOMPARE(child<QRadioButton>(w, QStringLiteral("optDetail(0)"))->text(), QStringLiteral("部门职能"));
        select(w, "010201");
        QCOMPARE(child<QRadioButton>(w, QStringLiteral("optDetail(0)"))->text(), QStringLiteral("岗位描述"));

        // The company keeps the row chosen before; a change then edits that row.
        tree(w)->setCurrentItem(tree(w)->topLevelItem(0));
        QCOMPARE(w.myNodeHit(), 0);
        QCOMPARE(G().CurPersonCode, QStringLiteral("010201"));
        click(w, "cmdChg");
        QCOMPARE(w.state(), frmRs_Dept::State::Change);
        QCOMPARE(child<QLineEdit>(w, QStringLiteral("TxtCode"))->text(), QStringLiteral("010201"));
        QVERIFY(child<QCheckBox>(w, QStringLiteral("Check1"))->isChecked());
        QVERIFY(!child<QComboBox>(w, QStringLiteral("cboRsType"))->isHidden());
        QCOMPARE(child<QLabel>(w, QStringLiteral("lblCode"))->text(), QStringLiteral("岗位编号"));
    }

    void addSavesRowAfterRowAndChecksFirst() {
        frmRs_Dept w;
        w.show();
        select(w, "01");
        click(w, "cmdAdd");
        QCOMPARE(w.state(), frmRs_Dept::State::Add);
        QVERIFY(G().CurPersonCode.isEmpty());
        QVERIFY(!child<QFrame>(w, QStringLiteral("Picture1"))->isHidden());
        QVERIFY(!child<QWidget>(w, QStringLiteral("fraLeft"))->isEnabled());
        for (const char* name : {"cmdAdd", "cmdChg", "cmdDel", "cmdPrint", "cmdQuit", "cmdDetail"})
            QVERIFY2(!child<QPushButton>(w, QLatin1String(name))->isEnabled(), name);
        auto* code = child<QLineEdit>(w, QStringLiteral("TxtCode"));
        auto* name = child<QLineEdit>(w, QStringLiteral("TxtName"));
        auto* number = child<QLineEdit>(w, QStringLiteral("txtNumber"));

        // The checks, in order, each stopping the save.
        click(w, "cmdSave");
        name->setText(QStringLiteral("财务部"));
        click(w, "cmdSave");
        code->setText(QStringLiteral("03"));
        name->clear();
        click(w, "cmdSave");
        code->setText(QStringLiteral("02"));
        name->setText(QStringLiteral("财务部"));
        click(w, "cmdSave");
        code->setText(QStringLiteral("03"));
        name->setText(QStringLiteral("销售部"));
        click(w, "cmdSave");
        QCOMPARE(m_prompts->messages(), QStringList({"部门编码不能为空。", "部门编码不能为空。",
                                                     "部门名称不能为空。", "编号已存在。", "名称已存在。"}));
        QCOMPARE(count("select count(*) from tRs_Bm"), 7);

        m_prompts->clear();
        name->setText(QStringLiteral("财务部"));
        number->setText(QStringLiteral("5"));
        click(w, "cmdSave");
        // Still adding, boxes cleared, nothing in hand: the second save adds another row.
        QCOMPARE(w.state(), frmRs_Dept::State::Add);
        QVERIFY(code->text().isEmpty() && name->text().isEmpty() && number->text().isEmpty());
        QVERIFY(G().CurPersonCode.isEmpty());
        code->setText(QStringLiteral("0301"));
        name->setText(QStringLiteral("会计"));
        child<QCheckBox>(w, QStringLiteral("Check1"))->click();
        auto* rsType = child<QComboBox>(w, QStringLiteral("cboRsType"));
        QVERIFY(!rsType->isHidden());
        click(w, "cmdSave");
        QCOMPARE(m_prompts->messages(), QStringList({"财务部: 部门新增完毕！", "会计: 岗位新增完毕！"}));
        QCOMPARE(one("select fLimited from tRs_Bm where fcode='03'").toDouble(), 5.0);
        QCOMPARE(one("select fYnxj from tRs_Bm where fcode='0301'"), QStringLiteral("1"));
        QCOMPARE(one("select fName from tRs_Bm where fcode='03'"), QStringLiteral("财务部"));
        QCOMPARE(count("select count(*) from tSysLog where fText like '%新增完毕%'"), 2);
        QCOMPARE(parentCode(w, "0301"), QStringLiteral("03"));
        auto* cbo = child<QComboBox>(w, QStringLiteral("cboDept"));
        QCOMPARE(cbo->currentIndex(), -1); // refilled without choosing
        QVERIFY(cbo->findText(QStringLiteral("财务部")) > 0);

        // Esc leaves the panel; a quote in a name fails the save as a whole.
        click(w, "cmdCancel");
        QCOMPARE(w.state(), frmRs_Dept::State::Browse);
        QCOMPARE(w.myMode(), 0);
        click(w, "cmdAdd");
        code->setText(QStringLiteral("04"));
        name->setText(QStringLiteral("O'Brien"));
        m_prompts->clear();
        click(w, "cmdSave");
        QCOMPARE(m_prompts->messages(), QStringList({"存盘错误!"}));
        QCOMPARE(count("select count(*) from tRs_Bm where fcode='04'"), 0);
        QTest::keyClick(&w, Qt::Key_Escape);
        QCOMPARE(w.state(), frmRs_Dept::State::Browse);
        QVERIFY(w.isVisible());
    }

    void codeChangeMovesTheRowAndLeavesPersons() {
        frmRs_Dept w;
        w.show();
        select(w, "0101");
        click(w, "cmdChg");
        child<QLineEdit>(w, QStringLiteral("TxtCode"))->setText(QStringLiteral("0201"));
        child<QLineEdit>(w, QStringLiteral("TxtName"))->setText(QStringLiteral("门市"));
        click(w, "cmdSave");
        QCOMPARE(m_prompts->messages(), QStringList({"一车间: 部门修改完毕！"}));
        QCOMPARE(w.state(), frmRs_Dept::State::Browse);
        QVERIFY(child<QFrame>(w, QStringLiteral("Picture1"))->isHidden());
        QCOMPARE(parentCode(w, "0201"), QStringLiteral("02"));
        QVERIFY(!FindNode(tree(w), QStringLiteral("B0101")));
        QCOMPARE(count("select count(*) from tRs_Bm where fcode='0101'"), 0);
        QCOMPARE(one("select fBmCode from tRsBasic where fcode='001'"), QStringLiteral("0101"));
        // The changed row stays in hand under its new code.
        QCOMPARE(G().CurPersonCode, QStringLiteral("0201"));
        QCOMPARE(G().CurPersonName, QStringLiteral("门市"));
        QCOMPARE(tree(w)->currentItem(), FindNode(tree(w), QStringLiteral("B0201")));
    }

    void deleteRefusesLowerLevelsAndStaff() {
        QCOMPARE(CheckDeptDelete("trs_bm", "01"), DeptDeleteCheck::HasLowerLevels);
        QCOMPARE(CheckDeptDelete("trs_bm", "1"), DeptDeleteCheck::HasLowerLevels);
        QCOMPARE(CheckDeptDelete("trs_bm", "02"), DeptDeleteCheck::HasStaff); // a person who has left
        QCOMPARE(CheckDeptDelete("trs_bm", "010201"), DeptDeleteCheck::Ok);

        frmRs_Dept w;
        w.show();
        select(w, "0102");
        click(w, "cmdDel");
        select(w, "010201");
        m_prompts->answer(vbNo);
        click(w, "cmdDel");
        QCOMPARE(count("select count(*) from tRs_Bm where fcode='010201'"), 1);
        m_prompts->answer(vbYes);
        click(w, "cmdDel");
        QCOMPARE(m_prompts->messages(), QStringList({"该部门尚有下级,不能删除。", "是否删除 部门 ( 钳工 ) ?",
                                                     "是否删除 部门 ( 钳工 ) ?"}));
        QCOMPARE(count("select count(*) from tRs_Bm where fcode='010201'"), 0);
        QVERIFY(!FindNode(tree(w), QStringLiteral("B010201")));
        QCOMPARE(count("select count(*) from tSysLog where fText='删除部门:010201-钳工'"), 1);
        QVERIFY(G().CurPersonCode.isEmpty());
        // A second press has nothing in hand and does nothing.
        m_prompts->clear();
        click(w, "cmdDel");
        QVERIFY(m_prompts->messages().isEmpty());

        select(w, "0102");
        click(w, "cmdDel");
        QCOMPARE(m_prompts->messages(), QStringList({"该部门尚有职员,不能删除。"}));
        exec("update tRsBasic set fBmCode='02' where fBmCode='0102'");
        select(w, "01");
        click(w, "cmdDel");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("该部门尚有下级,不能删除。"));
    }

    void deleteClearsPayrollOnlyWhereItExists() {
        // No payroll module: nothing beyond the row.
        DeleteDeptRow("trs_bm", "1");
        DeptDeleteCascade("1", "总务");
        QCOMPARE(count("select count(*) from tRs_Bm where fcode='1'"), 0);

        // A payroll module without ledgers: its summary table is left alone.
        exec("create table tgzb (fCode varchar(10))");
        exec("create table tGzP0 (fBm varchar(60))");
        exec("insert into tGzP0 (fBm) values ('10\t后勤')");
        DeptDeleteCascade("10", "后勤");
        QCOMPARE(count("select count(*) from tGzP0"), 1);

        // With a ledger: its table and the summary lose the department.
        exec("create table GZB01 (fBmCode varchar(15), fBmName varchar(20), fMoney real)");
        exec("insert into GZB01 (fBmCode,fBmName,fMoney) values ('10','后勤',1),('02','销售部',2)");
        exec("insert into tgzb (fCode) values ('01')");
        exec("insert into tgzb (fCode) values ('x;drop')"); // not a table name: passed over
        frmRs_Dept w;
        w.show();
        select(w, "10");
        m_prompts->answer(vbYes);
        click(w, "cmdDel");
        QCOMPARE(m_prompts->messages(), QStringList({"是否删除 部门 ( 后勤 ) ?"}));
        QCOMPARE(count("select count(*) from GZB01"), 1);
        QCOMPARE(count("select count(*) from tGzP0"), 0);
    }

    void renameCascadeCarriesCodeAndNameWherePresent() {
        // Without the payroll tables only the persons move, and nothing fails.
        DeptRenameCascade("01", "09", "生产部", "制造部");
        QCOMPARE(count("select count(*) from tRsBasic where fBmCode='09' and fBmName='制造部'"), 2);

        exec("create table tgzb (fCode varchar(10))");
        exec("insert into tgzb (fCode) values ('01')");
        exec("insert into tgzb (fCode) values ('02')"); // its table is missing: skipped
        exec("create table GZB01 (fBmCode varchar(15), fBmName varchar(20))");
        exec("insert into GZB01 (fBmCode,fBmName) values ('02','销售部')");
        exec("create table tGz_Bill_Set (fBmName varchar(20))");
        exec("insert into tGz_Bill_Set (fBmName) values ('销售部')");
        DeptRenameCascade("02", "08", "销售部", "市场部");
        QCOMPARE(one("select fBmCode from GZB01"), QStringLiteral("08"));
        QCOMPARE(one("select fBmName from tGz_Bill_Set"), QStringLiteral("市场部"));
        QCOMPARE(one("select fBmCode from tRsBasic where fcode='005'"), QStringLiteral("08"));
        // A quote fails its statements, which are passed over.
        DeptRenameCascade("08", "07", "市场部", "O'Neil");
        QCOMPARE(one("select fBmCode from GZB01"), QStringLiteral("08"));
    }

    void descriptionEditingSavesAndLeaves() {
        frmRs_Dept w;
        w.show();
        auto* text1 = child<QPlainTextEdit>(w, QStringLiteral("Text1"));
        auto* text2 = child<QPlainTextEdit>(w, QStringLiteral("Text2"));
        QVERIFY(text1->isReadOnly());
        // Without a row in hand there is nothing to describe.
        click(w, "cmdDetail");
        QCOMPARE(m_prompts->messages(), QStringList({"请选择部门或职务！"}));
        QCOMPARE(w.state(), frmRs_Dept::State::Browse);

        m_prompts->clear();
        exec("update tRs_Bm set fDetail2='旧备注' where fcode='02'");
        select(w, "02");
        click(w, "cmdDetail");
        QCOMPARE(w.state(), frmRs_Dept::State::Describe);
        QVERIFY(!text1->isReadOnly());
        QVERIFY(child<QPushButton>(w, QStringLiteral("cmdPosOk"))->isVisible());
        QVERIFY(!child<QPushButton>(w, QStringLiteral("cmdQuit"))->isEnabled());
        QVERIFY(!child<QCheckBox>(w, QStringLiteral("chkList"))->isEnabled());
        QVERIFY(tree(w)->isEnabled());
        click(w, "cmdPosOk"); // nothing changed: nothing happens
        QVERIFY(m_prompts->messages().isEmpty());
        typeInto(text1, QStringLiteral("负责销售"));
        click(w, "cmdPosOk");
        QCOMPARE(m_prompts->messages(), QStringList({"工作职责与流程存盘完毕!"}));
        QCOMPARE(one("select fDetail1 from tRs_Bm where fcode='02'"), QStringLiteral("负责销售"));
        QCOMPARE(one("select fDetail2 from tRs_Bm where fcode='02'"), QStringLiteral("旧备注"));
        QCOMPARE(w.state(), frmRs_Dept::State::Describe); // saving does not leave

        // Leaving with changes: cancel stays and forgets the change, so a second press leaves.
        m_prompts->clear();
        child<QRadioButton>(w, QStringLiteral("optDetail(1)"))->click();
        typeInto(text2, QStringLiteral("，新"));
        m_prompts->answer(vbCancel);
        click(w, "cmdPosCancel");
        QCOMPARE(w.state(), frmRs_Dept::State::Describe);
        click(w, "cmdPosCancel");
        QCOMPARE(w.state(), frmRs_Dept::State::Browse);
        QCOMPARE(text2->toPlainText(), QStringLiteral("旧备注")); // reloaded
        QCOMPARE(m_prompts->messages().size(), 1);

        // Yes saves and stays; no drops the change and leaves.
        click(w, "cmdDetail");
        typeInto(text2, QStringLiteral("！"));
        m_prompts->answer(vbYes);
        click(w, "cmdPosCancel");
        QCOMPARE(w.state(), frmRs_Dept::State::Describe);
        QCOMPARE(one("select fDetail2 from tRs_Bm where fcode='02'"), QStringLiteral("旧备注！"));
        typeInto(text2, QStringLiteral("丢弃"));
        m_prompts->answer(vbNo);
        QTest::keyClick(&w, Qt::Key_Escape); // Esc is the leaving button here
        QCOMPARE(w.state(), frmRs_Dept::State::Browse);
        QCOMPARE(text2->toPlainText(), QStringLiteral("旧备注！"));

        // A quote cannot be stored: the page keeps the text and the editing goes on.
        click(w, "cmdDetail");
        m_prompts->clear();
        typeInto(text1, QStringLiteral("'"));
        click(w, "cmdPosOk");
        QCOMPARE(m_prompts->messages(), QStringList({"存盘错误!"}));
        QCOMPARE(w.state(), frmRs_Dept::State::Describe);
        QCOMPARE(one("select fDetail1 from tRs_Bm where fcode='02'"), QStringLiteral("负责销售"));

        // Another row while changes are pending asks first; cancel goes back to the row edited.
        m_prompts->answer(vbCancel);
        select(w, "01");
        QCOMPARE(G().CurPersonCode, QStringLiteral("02"));
        QCOMPARE(NodeKey(tree(w)->currentItem()), QStringLiteral("B02"));
        QVERIFY(text1->toPlainText().endsWith(QLatin1Char('\'')));
    }

    void listNarrowsAndPrints() {
        frmRs_Dept w;
        w.show();
        auto* grid = child<ZqGrid>(w, QStringLiteral("Grid1"));
        auto* list = child<QCheckBox>(w, QStringLiteral("chkList"));
        auto* bmList = child<QCheckBox>(w, QStringLiteral("chkBmList"));
        QVERIFY(bmList->isHidden());
        list->click();
        QVERIFY(grid->isVisible());
        QVERIFY(!bmList->isHidden());
        QVERIFY(!child<QPushButton>(w, QStringLiteral("cmdDetail"))->isEnabled());
        QCOMPARE(child<QPushButton>(w, QStringLiteral("cmdPrint"))->text(), QStringLiteral("列表打印"));
        QCOMPARE(grid->maxRows(), 1); // posts only
        QCOMPARE(grid->text(1, 1), QStringLiteral("010201"));
        bmList->click();
        QCOMPARE(grid->maxRows(), 7);
        list->click();
        QCOMPARE(grid->maxRows(), 6); // departments only

        auto* cbo = child<QComboBox>(w, QStringLiteral("cboDept"));
        cbo->setCurrentIndex(cbo->findText(QStringLiteral("生产部")));
        emit cbo->activated(cbo->currentIndex());
        QCOMPARE(grid->maxRows(), 3);

        QTemporaryDir dir;
        const QString pdf = dir.filePath(QStringLiteral("list.pdf"));
        PrintOutput::setPdfPath(pdf);
        click(w, "cmdPrint");
        QString text = test::pdfText(pdf);
        QVERIFY2(text.contains(QStringLiteral("部门职务列表")), qPrintable(text));
        QVERIFY(text.contains(QStringLiteral("二车间")));
        QVERIFY(!text.contains(QStringLiteral("销售部")));

        bmList->click();
        QVERIFY(!grid->isVisible());
        QVERIFY(child<QPushButton>(w, QStringLiteral("cmdDetail"))->isEnabled());
        QFile::remove(pdf);
        click(w, "cmdPrint");
        PrintOutput::setPdfPath(QString());
        text = test::pdfText(pdf);
        QVERIFY2(text.contains(QStringLiteral("部门与组织架构")), qPrintable(text));
        QVERIFY(text.contains(QStringLiteral("一车间")));

        // No row under the choice: said so.
        exec("delete from tRs_Bm where fcode like '01%'");
        m_prompts->clear();
        list->click();
        QCOMPARE(m_prompts->messages(), QStringList({"未有符合条件的记录"}));
    }

    void masterRecordTakesTheChosenDepartment() {
        // The register opened from the master record's department label: the row clicked there
        // becomes the person's department, and the person in hand is the same as before.
        setModalRunner([](QDialog& d) {
            d.show();
            if (d.objectName() == QLatin1String("frmRs_Dept")) select(d, "02");
            return int(QDialog::Accepted);
        });
        G().PersonEditMode = 1;
        frmRs_PersonBasic f;
        f.show();
        G().CurPersonCode = QStringLiteral("X1");
        f.Label2_DblClick(26);
        setModalRunner({});
        QCOMPARE(f.findChild<QComboBox*>(QStringLiteral("ComBm"))->currentText(), QStringLiteral("销售部"));
        QCOMPARE(G().CurPersonCode, QStringLiteral("X1"));
    }

    void listColumnsFollowTheChoice() {
        frmRs_Dept w;
        w.show();
        auto* grid = child<ZqGrid>(w, QStringLiteral("Grid1"));
        QVERIFY(w.myFields().contains(QStringLiteral("fLimited")));
        const int columns = grid->maxCols();
        QCOMPARE(grid->colWidth(1), 20.0);
        child<QCheckBox>(w, QStringLiteral("chkList"))->click();
        setBriefDriver([](BriefDialog& d) {
            auto* table = d.findChild<QTableWidget*>(QStringLiteral("grdColumns"));
            for (int r = 0; r < table->rowCount(); ++r)
                if (table->item(r, 0)->text() == QStringLiteral("限定人数"))
                    table->item(r, 0)->setCheckState(Qt::Unchecked);
            d.accept();
        });
        click(w, "CmdlistOption");
        QVERIFY(!w.myFields().contains(QStringLiteral("fLimited")));
        QCOMPARE(grid->maxCols(), columns - 1);
        QCOMPARE(grid->maxRows(), 1);
        // A dragged width goes to every column.
        grid->setColWidth(2, 9);
        emit grid->colWidthChanged(2, 9);
        QCOMPARE(grid->colWidth(1), 9.0);
        QCOMPARE(grid->colWidth(grid->maxCols()), 9.0);
    }

    void anotherCodeTableTakesAColour() {
        // A code table of the same shape: a colour instead of a quota, no head counts, and deleting
        // asks nothing about lower levels or staff.
        exec("create table tRs_Colour as select * from tRs_Bm where 1=0");
        exec("insert into tRs_Colour (fCode,fName,fLimited,fYnxj) values ('1','红',0,0),('10','深红',0,0)");
        frmRs_Dept w;
        w.setProperty("myTable", QStringLiteral("tRs_Colour"));
        w.show();
        QCOMPARE(w.myTable(), QStringLiteral("trs_colour"));
        QVERIFY(!child<QPushButton>(w, QStringLiteral("cmdColor"))->isHidden());
        QVERIFY(child<QCheckBox>(w, QStringLiteral("chkTotalMan"))->isHidden());
        QCOMPARE(child<QLabel>(w, QStringLiteral("lblNumber"))->text(), QStringLiteral("颜色"));
        QCOMPARE(parentCode(w, "10"), QStringLiteral("1"));

        frmRs_Dept::setColorPicker([](const QColor&) { return QColor(0, 0, 255); });
        click(w, "cmdAdd");
        click(w, "cmdColor");
        child<QLineEdit>(w, QStringLiteral("TxtCode"))->setText(QStringLiteral("2"));
        child<QLineEdit>(w, QStringLiteral("TxtName"))->setText(QStringLiteral("蓝"));
        click(w, "cmdSave");
        QCOMPARE(one("select fColor from tRs_Colour where fcode='2'").toInt(), 0xff0000); // blue, high byte
        click(w, "cmdCancel");

        // A change keeps the stored colour unless another is picked.
        select(w, "2");
        click(w, "cmdChg");
        child<QLineEdit>(w, QStringLiteral("TxtName"))->setText(QStringLiteral("天蓝"));
        click(w, "cmdSave");
        QCOMPARE(one("select fColor from tRs_Colour where fcode='2'").toInt(), 0xff0000);

        select(w, "1");
        m_prompts->clear();
        m_prompts->answer(vbYes);
        click(w, "cmdDel");
        QCOMPARE(m_prompts->messages(), QStringList({"是否删除 部门 ( 红 ) ?"}));
        QCOMPARE(count("select count(*) from tRs_Colour where fcode='1'"), 0);
    }

    void rightsAndTheMenuKeys() {
        // Without the module's rights the buttons refuse.
        Globals& g = G();
        g.ZgName = QStringLiteral("boss");
        g.myPower = QString(350, QLatin1Char('0'));
        {
            frmRs_Dept w;
            w.show();
            select(w, "02");
            click(w, "cmdAdd");
            click(w, "cmdChg");
            click(w, "cmdDetail");
            QCOMPARE(w.state(), frmRs_Dept::State::Browse);
            QCOMPARE(m_prompts->messages().size(), 3);
        }
        // Either key opens the register on its table; the key is matched without case.
        QStringList seen;
        setModalRunner([&seen](QDialog& d) {
            seen << d.objectName() + QLatin1Char(':') + d.property("myTable").toString();
            return int(QDialog::Accepted);
        });
        QVERIFY(runCommand(QStringLiteral("MNURSBM"), 0));
        QVERIFY(runCommand(QStringLiteral("mnuRsSysBm"), 0));
        QVERIFY(hasForm(QStringLiteral("frmRs_Dept")));
        setModalRunner({});
        QCOMPARE(seen, QStringList({"frmRs_Dept:trs_bm", "frmRs_Dept:trs_bm"}));
        // A database without the first module key guards the register with the second.
        exec("delete from tSysFunc where model_name='mnuRsbm'");
        QCOMPARE(DeptModelKey(), QStringLiteral("mnuRsSysBm"));
    }

    // A picture of the register over the demo company, when asked for by ZQ_SHOT_DEPT (a PNG path).
    void screenshot() {
        const QString path = qEnvironmentVariable("ZQ_SHOT_DEPT");
        if (path.isEmpty()) QSKIP("no screenshot asked for");
        exec("delete from tRs_Bm");
        exec("delete from tRsBasic");
        demo::Options o;
        o.persons = 400;
        demo::fill(conn(), o);
        G().CompName = one("select CompName from myCompany");
        frmRs_Dept w;
        w.show();
        select(w, one("select min(fCode) from tRs_Bm where fYnxj=0 and fDetail1<>''"));
        QVERIFY(w.grab().save(path));
        // And the same row being changed, beside it.
        click(w, "cmdChg");
        QApplication::processEvents();
        QVERIFY(w.grab().save(QString(path).replace(QStringLiteral(".png"), QStringLiteral("-change.png"))));
    }
};

ZQ_DB_TEST_MAIN(TestDept)
#include "test_dept.moc"
