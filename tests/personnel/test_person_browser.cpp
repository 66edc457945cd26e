#include "Controls.h"
#include "PdfTools.h"
#include "TestDb.h"

#include "personnel/frmRs_Person.h"
#include "personnel/PersonBrowserData.h"
#include "printing/PrintOutput.h"
#include "services/InputAids.h"
#include "services/ui/BriefDialog.h"
#include "services/ui/DeptTree.h"
#include "services/ui/Grid.h"
#include "services/ui/InputAidsUi.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/ui/Commands.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QFileInfo>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

using namespace zq;
using test::child;
using test::click;
using test::exec;
using test::one;

namespace {
void trigger(QWidget& w, const char* name) {
    child<QAction>(w, QLatin1String(name))->trigger();
}

void person(const QString& code, const QString& name, int state, const QString& dept) {
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fzt,fBmCode) values ('%1','%2',%3,'%4')")
             .arg(code, name)
             .arg(state)
             .arg(dept));
}

void dept(const QString& code, const QString& name) {
    exec(QStringLiteral("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('%1','%2',0,0)")
             .arg(code, name));
}

QStringList codes(frmRs_Person& w) {
    auto* grid = child<ZqGrid>(w, QStringLiteral("Grid1"));
    QStringList c;
    for (int r = 1; r <= grid->maxRows(); ++r)
        c << grid->text(r, 1);
    return c;
}

void chooseState(frmRs_Person& w, int index) {
    child<QComboBox>(w, QStringLiteral("cboZT"))->setCurrentIndex(index);
    w.cboZT_Click();
}

QRadioButton* optLeft(frmRs_Person& w, int i) {
    return child<QRadioButton>(w, QStringLiteral("optLeft(%1)").arg(i));
}

// The screen opened by name most recently, with the record screens standing in as empty dialogs.
QStringList opened;
} // namespace

class TestPersonBrowser : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;

private slots:
    void initTestCase() {
        for (const char* name : {"frmRs_PersonFamily", "frmRs_PersonDetailSeek"})
            registerForm(QLatin1String(name), [name](QWidget* parent) {
                auto* d = new QDialog(parent);
                d->setObjectName(QLatin1String(name));
                return d;
            });
        setModalRunner([](QDialog& d) {
            opened << d.objectName();
            if (d.objectName() == QLatin1String("frmRs_PersonDetailSeek")) {
                d.setProperty("FilterString", QStringLiteral("1=1 And b.fRsDetail1 Like '%琴%'"));
                d.accept();
            }
            return int(QDialog::Accepted);
        });
    }

    void init() {
        test::freshDatabase();
        m_prompts = &scriptPrompts();
        test::actAsSupervisor();
        G().CompName = QStringLiteral("测试公司");
        opened.clear();
        dept("01", "生产部");
        dept("0101", "一车间");
        dept("02", "销售部");
        person("001", "张三", 1, "0101");
        person("002", "李四", 1, "02");
        person("003", "王五", 3, "01");
        person("004", "赵六", 2, "02");
    }

    void cleanup() { setBriefDriver(nullptr); }

    void prefixSearchFindsWhatLikeFinds() {
        person("1", "王一", 1, "01");
        person("2", "王二明", 1, "01");
        person("3", "汪三", 1, "01");
        person("4", "Wang", 1, "01");
        person("5", "wANG五", 1, "01");
        person("6", "小王", 1, "01");
        person("12", "王", 2, "01");
        exec("insert into tRsBasic (fCode,fzt) values ('7',1)");
        const Dialect& d = conn().dialect();
        // A prefix without case is compared as stored on the server, where an index serves it.
        QCOMPARE(d.caselessLikes("a.fname like '王%'"),
                 QString(d.isServer() ? "a.fname::text like '王%'" : "a.fname like '王%'"));
        QCOMPARE(d.caselessLikes("a.ftitle like '%预算_'"),
                 QString(d.isServer() ? "a.ftitle::text like '%预算_'" : "a.ftitle like '%预算_'"));
        QCOMPARE(d.caselessLikes("a.fname not like '%王%'"), QString("a.fname not like '%王%'"));
        QCOMPARE(d.caselessLikes(d.caselessLikes("a.fname like '王%'")), d.caselessLikes("a.fname like '王%'"));
        QCOMPARE(d.caselessLikes("a.fmz='a like ''王%' and a.fname like 'wang%'"),
                 QString("a.fmz='a like ''王%' and a.fname like 'wang%'"));
        for (const char* seek : {"fName like '王%'", "fName like 'wang%'", "fName like '%王%'", "fName like '王_'",
                                 "fCode like '1%'", "fName like '王%' and fCode like '1%'", "fName like '王二%'",
                                 "fName not like '%王%'"}) {
            const QString plain = "a.fzt=1 And " + QualifyCondition(QString::fromUtf8(seek), "a.", -1);
            QCOMPARE(PersonListCodes(PersonListCondition(1, QString(), QString::fromUtf8(seek), QString(), QString()),
                                     false),
                     PersonListCodes(plain, false));
        }
        QCOMPARE(PersonListCodes(PersonListCondition(1, QString(), "fName like '王%'", QString(), QString()), false),
                 QStringList({"1", "2"}));
        QCOMPARE(PersonListCodes(PersonListCondition(1, QString(), "fName like 'wang%'", QString(), QString()), false),
                 QStringList({"4", "5"}));
    }

    void loadsStatesAndSplitsSpouseTableOnce() {
        frmRs_Person w;
        w.setProperty("RsState", 0); // below 1 is raised to 1
        w.show();
        QCOMPARE(w.rsState(), 1);
        QCOMPARE(CurrentRsState(), 1);
        auto* zt = child<QComboBox>(w, QStringLiteral("cboZT"));
        QCOMPARE(zt->count(), 7);
        QCOMPARE(zt->itemText(0), QString("在职"));
        QCOMPARE(zt->itemText(1), QString("辞职"));
        QCOMPARE(zt->currentIndex(), 0);
        for (int i = 0; i < 6; ++i)
            QCOMPARE(optLeft(w, i)->text(), zt->itemText(i + 1));
        QCOMPARE(child<QPushButton>(w, QStringLiteral("cmdState"))->text(), QString("离职处理"));
        QCOMPARE(codes(w), QStringList({"001", "002"}));
        QCOMPARE(child<QLabel>(w, QStringLiteral("lblTotal"))->text(), QString("合计：2人"));
        QCOMPARE(G().CurPersonCode, QString("001"));
        QCOMPARE(G().CurPersonName, QString("张三"));
        // The schema split the spouse table off already.
        QCOMPARE(one("select count(*) from RptListDetail where fTable='tRsBasic_P'"), QString("10"));
        QVERIFY(!SplitSpouseTable());
        // A record screen that is not installed cannot be chosen; one that is can.
        QCOMPARE(child<QRadioButton>(w, QStringLiteral("OptSelect(1)"))->isEnabled(), true);
        QCOMPARE(child<QRadioButton>(w, QStringLiteral("OptSelect(2)"))->isEnabled(),
                 hasForm(QStringLiteral("frmRs_PersonResume")));
    }

    void emptyStateBriefStillReachesLeavers() {
        exec("delete from briefDetail where briefType='rsstate'");
        frmRs_Person w;
        w.setRsState(2);
        w.show();
        auto* zt = child<QComboBox>(w, QStringLiteral("cboZT"));
        QCOMPARE(zt->count(), 2);
        QCOMPARE(zt->itemText(1), QString("离职"));
        QCOMPARE(zt->currentIndex(), 1);
        QVERIFY(zt->isEnabled());
        QCOMPARE(child<QPushButton>(w, QStringLiteral("cmdState"))->text(), QString("恢复原职"));
        QCOMPARE(optLeft(w, 0)->text(), QString("离职"));
        QVERIFY(!optLeft(w, 0)->isHidden());
        for (int i = 1; i < 6; ++i)
            QVERIFY(optLeft(w, i)->isHidden());
        QCOMPARE(codes(w), QStringList({"004"}));
    }

    void personInStateThreeIsDeletedOnlyThere() {
        exec("insert into tRsFamily (fCode,fOrderID,fName) values ('003',1,'王妻')");
        exec("insert into tRsBasic_P (fCode,fpName) values ('003','王妻')");
        frmRs_Person w;
        w.show();
        QVERIFY(!codes(w).contains("003"));
        chooseState(w, 2);
        QCOMPARE(w.rsState(), 3);
        QCOMPARE(codes(w), QStringList({"003"}));
        QCOMPARE(G().CurPersonCode, QString("003"));
        m_prompts->answer(vbYes);
        click(w, "ComDel");
        QCOMPARE(m_prompts->messages().last(), QString("请确认是否删除: 王五 (No: 003) ？"));
        QCOMPARE(one("select count(*) from tRsBasic where fCode='003'"), QString("0"));
        QCOMPARE(one("select count(*) from tRsFamily where fCode='003'"), QString("1"));
        QCOMPARE(one("select count(*) from tRsBasic_P where fCode='003'"), QString("1"));
        QCOMPARE(one("select count(*) from tSysLog where fText='删除员工记录 [003-王五]'"), QString("1"));
        QCOMPARE(codes(w), QStringList());
        QVERIFY(G().CurPersonCode.isEmpty());

        // A person in another state is never deleted from this list.
        G().CurPersonCode = QStringLiteral("001");
        G().CurPersonName = QStringLiteral("张三");
        m_prompts->answer(vbYes);
        click(w, "ComDel");
        QCOMPARE(one("select fzt from tRsBasic where fCode='001'"), QString("1"));
    }

    void leavingAsksForItemsOnLoan() {
        exec("insert into trsLoanTools (fcode,goodsname,backtime) values ('001','扳手','')");
        exec("insert into trsLoanTools (fcode,goodsname,backtime) values ('002','钳子',null)");
        exec("insert into tRsLoanGoods (fcode,goodsname,backtime) values ('001','电脑',null)");
        QCOMPARE(UnreturnedTools("001"), 1);
        QCOMPARE(UnreturnedTools("002"), 1); // the loan screen leaves the return time null
        QCOMPARE(UnreturnedGoods("001"), 1);

        frmRs_Person w;
        w.show();
        auto* panel = child<QFrame>(w, QStringLiteral("pictLZ"));
        QVERIFY(!panel->isVisible());
        click(w, "cmdState");
        QVERIFY(panel->isVisible());
        optLeft(w, 1)->setChecked(true);

        m_prompts->answer(vbYes);
        m_prompts->answer(vbNo);
        click(w, "cmdLZOK");
        QCOMPARE(m_prompts->messages(), QStringList({"张三：该员工进行离职处理，确定?",
                                                     "该员工有工具物品没有归还,请查询...继续吗?"}));
        QVERIFY(panel->isVisible());
        QCOMPARE(one("select fzt from tRsBasic where fCode='001'"), QString("1"));

        m_prompts->clear();
        for (int i = 0; i < 3; ++i)
            m_prompts->answer(vbYes);
        click(w, "cmdLZOK");
        QCOMPARE(m_prompts->messages().size(), 3);
        QCOMPARE(m_prompts->messages().last(), QString("该员工有行政物品没有归还,请查询...继续吗?"));
        QVERIFY(!panel->isVisible());
        QCOMPARE(one("select fzt from tRsBasic where fCode='001'"), QString("3"));
        QCOMPARE(one("select leavetime from tRsBasic where fCode='001'"),
                 QDate::currentDate().toString(Qt::ISODate));
        QCOMPARE(one("select count(*) from tSysLog where fText='解聘 [001-张三]'"), QString("1"));
        QCOMPARE(codes(w), QStringList({"002"}));
        QCOMPARE(G().CurPersonCode, QString("002"));

        // Esc closes the panel, not the screen.
        click(w, "cmdState");
        QTest::keyClick(&w, Qt::Key_Escape);
        QVERIFY(!panel->isVisible());
        QVERIFY(w.isVisible());
    }

    void reinstatingLeavesTheRowOnShow() {
        frmRs_Person w;
        w.setRsState(2);
        w.show();
        QCOMPARE(G().CurPersonCode, QString("004"));
        m_prompts->answer(vbCancel);
        click(w, "cmdState");
        QCOMPARE(one("select fzt from tRsBasic where fCode='004'"), QString("2"));
        m_prompts->answer(vbOK);
        click(w, "cmdState");
        QCOMPARE(m_prompts->messages().last(), QString("赵六已复职！"));
        QCOMPARE(one("select fzt from tRsBasic where fCode='004'"), QString("1"));
        QVERIFY(G().CurPersonCode.isEmpty());
        QCOMPARE(codes(w), QStringList({"004"}));
        QCOMPARE(one("select count(*) from tSysLog where fText like '%赵六%'"), QString("0"));
        m_prompts->clear();
        click(w, "cmdState");
        QCOMPARE(m_prompts->messages(), QStringList({"先选择要复职的员工。"}));
    }

    void treeFiltersByDepartmentPrefix() {
        frmRs_Person w;
        w.show();
        auto* tree = child<QTreeWidget>(w, QStringLiteral("Tree1"));
        QTreeWidgetItem* root = tree->topLevelItem(0);
        QVERIFY(root->text(0).contains("(共2人)"));
        QTreeWidgetItem* prod = root->child(0);
        QCOMPARE(prod->text(0), QString("生产部\t(共1人)"));
        w.Tree1_NodeClick(prod);
        QCOMPARE(w.treeDeptCode(), QString("01"));
        QCOMPARE(codes(w), QStringList({"001"}));
        QCOMPARE(G().CurPersonCode, QString("001"));
        // The department already chosen: no refresh, but nobody is in hand.
        w.Tree1_NodeClick(prod);
        QVERIFY(G().CurPersonCode.isEmpty());
        QCOMPARE(codes(w), QStringList({"001"}));
        w.Tree1_NodeClick(root);
        QCOMPARE(codes(w), QStringList({"001", "002"}));

        // A person's node is found by name and keeps the department above it.
        w.Tree1_NodeClick(AddNode(tree, prod, QStringLiteral("R1"), QStringLiteral("张三"), ImagePost));
        QCOMPARE(G().CurPersonCode, QString("001"));
        QCOMPARE(w.treeDeptCode(), QString("01"));
        QCOMPARE(codes(w), QStringList({"001"}));
    }

    void refreshMovesToFirstRowWhenPersonIsGone() {
        frmRs_Person w;
        w.show();
        auto* grid = child<ZqGrid>(w, QStringLiteral("Grid1"));
        grid->setActiveCell(2, 1);
        QCOMPARE(G().CurPersonCode, QString("002"));
        exec("update tRsBasic set fzt=2 where fCode='002'");
        w.RefreshPersonList();
        QCOMPARE(G().CurPersonCode, QString("001"));
        QCOMPARE(G().CurPersonName, QString("张三"));
        QCOMPARE(grid->activeRow(), 1);
    }

    void searchesReplaceEachOther() {
        exec("insert into tRsDetail (fCode,fRsDetail1) values ('002','钢琴十级')");
        frmRs_Person w;
        w.show();
        setBriefDriver([](BriefDialog& d) {
            QCOMPARE(d.mode(), 3);
            child<QComboBox>(d, QStringLiteral("cboField"))
                ->setCurrentIndex(child<QComboBox>(d, QStringLiteral("cboField"))->findText("姓名"));
            auto* op = child<QComboBox>(d, QStringLiteral("cboOperator"));
            op->setCurrentIndex(op->findText("like"));
            child<QComboBox>(d, QStringLiteral("cboValue"))->setEditText("张*");
            click(d, "cmdAddRow");
            d.accept();
        });
        trigger(w, "mnuRsSeek1");
        QVERIFY(!w.seekCondition().isEmpty());
        QCOMPARE(codes(w), QStringList({"001"}));

        trigger(w, "mnuRsSeek2");
        QCOMPARE(opened.last(), QString("frmRs_PersonDetailSeek"));
        QVERIFY(w.seekCondition().isEmpty());
        QCOMPARE(w.detailCondition(), QString("1=1 And b.fRsDetail1 Like '%琴%'"));
        QCOMPARE(codes(w), QStringList({"002"}));

        trigger(w, "mnuRsSeek1");
        QVERIFY(w.detailCondition().isEmpty());
        QCOMPARE(codes(w), QStringList({"001"}));

        // A cancelled search keeps the condition in force.
        setBriefDriver([](BriefDialog& d) { d.reject(); });
        trigger(w, "mnuRsSeek1");
        QCOMPARE(codes(w), QStringList({"001"}));
    }

    void printsTheListWithItsState() {
        QTemporaryDir dir;
        const QString pdf = dir.filePath(QStringLiteral("list.pdf"));
        PrintOutput::setPdfPath(pdf);
        frmRs_Person w;
        w.show();
        trigger(w, "mnuPntList");
        PrintOutput::setPdfPath(QString());
        const QString text = test::pdfText(pdf);
        QVERIFY2(text.contains("员工名单") && text.contains("李四") && text.contains("在职"),
                 qPrintable(text));
        QVERIFY(!text.contains("王五"));
    }

    // The record sheets of the whole list: both sides of each person shown, in code order; a cancel
    // at the progress bar leaves no file.
    void printsTheSheetsOfTheList() {
        QTemporaryDir dir;
        const QString pdf = dir.filePath(QStringLiteral("sheets.pdf"));
        PrintOutput::setPdfPath(pdf);
        frmRs_Person w;
        w.show();
        // The sheet of the person in hand opens from the print menu.
        QVERIFY(child<QAction>(w, QStringLiteral("mnuPntDoc"))->isEnabled());
        QCOMPARE(G().CurPersonCode, QStringLiteral("001"));
        trigger(w, "mnuPntDoc");
        QCOMPARE(opened, QStringList{QStringLiteral("frmRs_PersonPnt")});
        trigger(w, "mnuPntDocList");
        QCOMPARE(test::pdfPages(pdf), 4);
        QVERIFY(test::pdfText(pdf, 1).contains("张三"));
        QVERIFY(test::pdfText(pdf, 3).contains("李四"));
        QVERIFY(!test::pdfText(pdf).contains("王五"));

        struct Cancel : PrintProgress {
            void begin(const QString&, int) override {}
            bool step(int, const QString&) override { return false; }
            void end() override {}
        };
        QFile::remove(pdf);
        installPrintProgress(std::make_shared<Cancel>());
        trigger(w, "mnuPntDocList");
        installPrintProgress(nullptr);
        PrintOutput::setPdfPath(QString());
        QVERIFY(!QFileInfo::exists(pdf));
    }

    void rightsAreRefused() {
        frmRs_Person w;
        w.show();
        G().myPower = QString(350, QLatin1Char('0'));
        click(w, "ComAdd");
        QCOMPARE(m_prompts->messages().last(), QString("对不起!你无权进入..."));
        click(w, "cmdChg");
        QCOMPARE(m_prompts->messages().last(), QString("对不起!你无权进入..."));
        click(w, "ComDel");
        QCOMPARE(m_prompts->messages().last(), QString("对不起!你无权进入..."));
        click(w, "cmdState");
        QCOMPARE(m_prompts->messages().last(), QString("对不起!你无权操作..."));
        QVERIFY(!child<QFrame>(w, QStringLiteral("pictLZ"))->isVisible());
        QVERIFY(opened.isEmpty());
        QCOMPARE(one("select count(*) from tRsBasic"), QString("4"));

        // An ordinary user cannot switch to leavers without the right; the list stays.
        G().UserName = QStringLiteral("clerk");
        chooseState(w, 1);
        QCOMPARE(child<QComboBox>(w, QStringLiteral("cboZT"))->currentIndex(), -1);
        QCOMPARE(w.rsState(), 1);
        QCOMPARE(codes(w), QStringList({"001", "002"}));
    }

    void ordinaryUserCannotPickStateInService() {
        G().UserName = QStringLiteral("clerk");
        frmRs_Person w;
        w.show();
        QVERIFY(!child<QComboBox>(w, QStringLiteral("cboZT"))->isEnabled());
        QCOMPARE(codes(w), QStringList({"001", "002"}));
    }

    void recordScreensOpenOnThePersonInHand() {
        frmRs_Person w;
        w.show();
        // A sub-record screen in add mode never adds a person and needs one in hand.
        child<QRadioButton>(w, QStringLiteral("OptSelect(1)"))->setChecked(true);
        G().CurPersonCode.clear();
        click(w, "ComAdd");
        QCOMPARE(m_prompts->messages().last(), QString("请先选择员工。"));
        QVERIFY(opened.isEmpty());
        G().CurPersonCode = QStringLiteral("002");
        click(w, "cmdOpen");
        QCOMPARE(opened, QStringList({"frmRs_PersonFamily"}));
        QCOMPARE(G().PersonEditMode, qint16(0));
        click(w, "cmdChg");
        QCOMPARE(G().PersonEditMode, qint16(2));
        QCOMPARE(opened.size(), 2);
        QCOMPARE(G().CurPersonCode, QString("002")); // the list was not refreshed
    }

    // A double click on a record choice opens it as the buttons would: 修改 for one who may change,
    // 查询 for one who may only look.
    void doubleClickOnAChoiceOpensIt() {
        frmRs_Person w;
        w.show();
        G().CurPersonCode = QStringLiteral("002");
        G().CurPersonName = QStringLiteral("李四");
        auto* family = child<QRadioButton>(w, QStringLiteral("OptSelect(1)"));
        child<QRadioButton>(w, QStringLiteral("OptSelect(0)"))->setChecked(true);
        QTest::mouseDClick(family, Qt::LeftButton);
        QVERIFY(family->isChecked());
        QCOMPARE(opened, QStringList({"frmRs_PersonFamily"}));
        QCOMPARE(G().PersonEditMode, qint16(2));

        const QString serial = one("select SerialNo from tSysFunc where Model_Name='mnuRsManIn'");
        QString power(350, QLatin1Char('0'));
        power[serial.toInt() - 1] = QLatin1Char('1'); // entering only
        G().myPower = power;
        QTest::mouseDClick(family, Qt::LeftButton);
        QCOMPARE(opened.size(), 2);
        QCOMPARE(G().PersonEditMode, qint16(0));
        QVERIFY(m_prompts->messages().isEmpty()); // no refusal to click away
    }

    // An import changes the tree's head counts at once; its mapping names fields by caption.
    void importCountsItsPersonsInTheTree() {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("新员工.csv"));
        QFile f(file);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(QStringLiteral(
                    "fCode,fName,fBmCode,fSpday\r\n101,新人甲,02,2024-01-02\r\n102,新人乙,02,2024-01-02\r\n")
                    .toUtf8());
        f.close();
        frmRs_Person w;
        w.show();
        auto* tree = child<QTreeWidget>(w, QStringLiteral("Tree1"));
        const auto countOf = [&] { return FindNode(tree, QStringLiteral("B02"))->text(0); };
        QVERIFY2(countOf().endsWith(QStringLiteral("共1人)")), qPrintable(countOf()));
        m_prompts->answerFile(file);
        QStringList mapped;
        setModalRunner([&](QDialog& d) {
            for (QComboBox* c : d.findChildren<QComboBox*>())
                if (c->objectName().startsWith(QStringLiteral("cboMap"))) mapped << c->currentText();
            child<QPushButton>(d, QStringLiteral("cmdCheck"))->click();
            child<QPushButton>(d, QStringLiteral("cmdImport"))->click();
            return d.result();
        });
        click(w, "cmdImport");
        initTestCase();
        QCOMPARE(one("select count(*) from tRsBasic where fzt=1 and fBmCode='02'"), QString("3"));
        QVERIFY2(countOf().endsWith(QStringLiteral("共3人)")), qPrintable(countOf()));
        QVERIFY(!mapped.isEmpty());
        for (const QString& m : mapped)
            QVERIFY2(!m.contains(QRegularExpression(QStringLiteral("\\bf[A-Z]"))), qPrintable(m));
    }

    void addingOpensTheMasterRecordAndShowsTheNewPerson() {
        frmRs_Person w;
        w.show();
        child<QRadioButton>(w, QStringLiteral("OptSelect(0)"))->setChecked(true);
        // The real master record: it is told the mode and the company, and leaves the saved person in hand.
        setModalRunner([](QDialog& d) {
            opened << d.objectName();
            if (d.objectName() != QLatin1String("frmRs_PersonBasic")) return int(QDialog::Accepted);
            d.show();
            if (G().PersonEditMode != 1 || d.property("CompName").toString() != QStringLiteral("测试公司"))
                return int(QDialog::Rejected);
            exec(QStringLiteral("insert into tRsBasic (fCode,fName,fzt) values ('009','新人',1)"));
            G().CurPersonCode = QStringLiteral("009");
            return int(QDialog::Accepted);
        });
        click(w, "ComAdd");
        initTestCase(); // the stand-in runner again
        QCOMPARE(opened, QStringList({"frmRs_PersonBasic"}));
        QVERIFY(codes(w).contains(QStringLiteral("009")));
        QCOMPARE(G().CurPersonCode, QStringLiteral("009"));
    }

    void headCountsFollowEveryChangeOfPersons() {
        frmRs_Person w;
        w.show();
        auto* tree = child<QTreeWidget>(w, QStringLiteral("Tree1"));
        QVERIFY(child<QCheckBox>(w, QStringLiteral("chkTotalMan"))->isChecked()); // counts are on at first
        ExpandAllNodes(tree);
        // Each count in the tree against the database, and the root against the list's total.
        const auto countsMatch = [&] {
            for (QTreeWidgetItemIterator it(tree); *it; ++it) {
                const QString code = NodeKey(*it).mid(1);
                const QString want =
                    one(QStringLiteral("select count(*) from tRsBasic where fzt=%1%2")
                            .arg(w.rsState())
                            .arg(code.isEmpty() ? QString()
                                                : QStringLiteral(" and fBmCode like '%1%'").arg(code)));
                if (!(*it)->text(0).endsWith(QStringLiteral("共%1人)").arg(want))) {
                    qWarning("%s", qPrintable((*it)->text(0) + QStringLiteral(" but ") + want));
                    return false;
                }
            }
            return true;
        };
        QVERIFY(countsMatch());
        tree->setCurrentItem(FindNode(tree, QStringLiteral("B01")));
        QVERIFY(tree->currentItem()->isExpanded());

        // Deleting.
        G().CurPersonCode = QStringLiteral("001");
        G().CurPersonName = QStringLiteral("张三");
        m_prompts->answer(vbYes);
        click(w, "ComDel");
        QVERIFY(countsMatch());
        // The tree kept its place: the department chosen, its branch open.
        QCOMPARE(NodeKey(tree->currentItem()), QString("B01"));
        QVERIFY(tree->currentItem()->isExpanded());

        // Adding, and a department changed in the master record.
        setModalRunner([](QDialog& d) {
            if (d.objectName() == QLatin1String("frmRs_PersonBasic"))
                exec(
                    G().PersonEditMode == 1
                        ? QStringLiteral(
                              "insert into tRsBasic (fCode,fName,fzt,fBmCode) values ('009','新人',1,'0101')")
                        : QStringLiteral("update tRsBasic set fBmCode='0101' where fCode='002'"));
            return int(QDialog::Accepted);
        });
        child<QRadioButton>(w, QStringLiteral("OptSelect(0)"))->setChecked(true);
        click(w, "ComAdd");
        QVERIFY(countsMatch());
        G().CurPersonCode = QStringLiteral("002");
        G().CurPersonName = QStringLiteral("李四");
        click(w, "cmdChg");
        initTestCase();
        QVERIFY(countsMatch());

        // Leaving, then reinstating among the leavers.
        G().CurPersonCode = QStringLiteral("009");
        G().CurPersonName = QStringLiteral("新人");
        click(w, "cmdState");
        m_prompts->answer(vbYes);
        click(w, "cmdLZOK");
        QCOMPARE(one("select fzt from tRsBasic where fCode='009'"), QString("2"));
        QVERIFY(countsMatch());
        chooseState(w, 1);
        QVERIFY(countsMatch());
        G().CurPersonCode = QStringLiteral("009");
        G().CurPersonName = QStringLiteral("新人");
        m_prompts->answer(vbOK);
        click(w, "cmdState");
        QCOMPARE(one("select fzt from tRsBasic where fCode='009'"), QString("1"));
        QVERIFY(countsMatch());
    }
};

ZQ_DB_TEST_MAIN(TestPersonBrowser)
#include "test_person_browser.moc"
