// A person's record screens driven as a clerk would: family and spouse, the two-grid histories,
// results, rewards with the yearly appraisal, the extra details and their search.
#include "Controls.h"
#include "TestDb.h"

#include "personnel/frmRs_Person.h"
#include "personnel/frmRs_PersonDetail.h"
#include "personnel/frmRs_PersonDetailSeek.h"
#include "personnel/frmRs_PersonFamily.h"
#include "personnel/frmRs_PersonResult.h"
#include "personnel/frmRs_PersonResume.h"
#include "personnel/frmRs_PersonReward.h"
#include "personnel/frmRs_PersonTrain.h"
#include "personnel/frmRs_PersonWork.h"
#include "organisation/PersonAssignData.h"
#include "personnel/PersonRecordsData.h"
#include "services/ui/Grid.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Commands.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using namespace zq;
using test::child;
using test::click;
using test::exec;
using test::one;

namespace {
void inHand(const QString& code, int mode) {
    G().CurPersonCode = code;
    G().CurPersonName = one(QStringLiteral("select fName from tRsBasic where fCode='%1'").arg(code));
    G().PersonEditMode = qint16(mode);
}

QString rows(const QString& sql) {
    QStringList l;
    for (Recordset rs(conn(), sql); !rs.eof(); rs.moveNext()) {
        QStringList f;
        for (int i = 0; i < rs.fieldCount(); ++i)
            f << rs.text(i);
        l << f.join(QLatin1Char('|'));
    }
    return l.join(QLatin1Char(';'));
}

QString logs() {
    return rows("select fText from tSysLog order by fText");
}
} // namespace

class TestPersonRecords : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;
    ConnectionSettings m_settings;

private slots:
    void init() {
        m_settings = test::freshDatabase();
        m_prompts = &scriptPrompts();
        test::actAsSupervisor();
        setModalRunner({});
        exec("insert into tRsBasic (fCode,fName,fzt,fHy,fSpday) values ('A01','张三',1,'已婚','2023-05-01')");
        exec("insert into tRsBasic (fCode,fName,fzt,fHy,fSpday) values ('B02','李四',1,'未婚','')");
        exec("insert into tRsBasic (fCode,fName,fzt,fHy,fSpday) values ('C03','王五',1,null,'2099-01-01')");
        exec("insert into tRsFamily (fCode,fOrderID,fCh,fName) values ('A01',3,'父亲','张大')");
        exec("insert into tRsBasic_P (fCode,fpName,fpBirthday) values ('A01','李梅','1991-02-03')");
    }

    void familyKeepsRowsAndSpouse() {
        inHand("A01", 2);
        frmRs_PersonFamily f;
        f.show();
        ZqGrid* g = f.grid(0);
        QCOMPARE(g->maxRows(), 1);
        QCOMPARE(g->text(1, 2), QString("张大"));
        QCOMPARE(g->headerText(4), QString("工作单位、职务或住址"));
        QVERIFY(f.married());
        QCOMPARE(f.txtName(0)->text(), QString("李梅"));
        QVERIFY(f.txtName(0)->isEnabled());
        QCOMPARE(child<QLabel>(f, "lblMarryInform")->text(), QString());

        g->setMaxRows(3);
        g->setText(3, 1, QStringLiteral("母亲")); // row 2 blank: dropped, its number a gap
        g->setText(3, 2, QStringLiteral("王芳"));
        f.txtName(9)->setText(QStringLiteral("某'公司")); // a quote is a character like any other
        f.cmdOK_Click();
        QCOMPARE(f.result(), int(QDialog::Accepted));
        QCOMPARE(rows("select fOrderID,fCh,fName from tRsFamily where fCode='A01' order by fOrderID"),
                 QString("1|父亲|张大;3|母亲|王芳"));
        QCOMPARE(rows("select fpName,fpBirthday,fpDw from tRsBasic_P where fCode='A01'"),
                 QString("李梅|1991-02-03|某'公司"));
        QCOMPARE(logs(), QString("<员工家庭成员>记录存盘 [A01-张三];<配偶情况>记录存盘 [A01-张三]"));
    }

    void familyRefusesAWrongDateAndSavesNothing() {
        inHand("A01", 2);
        frmRs_PersonFamily f;
        f.show();
        f.grid(0)->setText(1, 2, QStringLiteral("张老大"));
        f.txtName(1)->setText(QStringLiteral("1991-13-45"));
        f.cmdOK_Click();
        QVERIFY(m_prompts->messages().last().contains(QStringLiteral("1997-01-01")));
        QVERIFY(f.isVisible());
        QCOMPARE(one("select fName from tRsFamily where fCode='A01'"), QString("张大"));
        QCOMPARE(one("select fpBirthday from tRsBasic_P where fCode='A01'"), QString("1991-02-03"));
    }

    void spouseBlockFollowsTheMaritalState() {
        inHand("B02", 2);
        {
            frmRs_PersonFamily f;
            f.show();
            QVERIFY(!f.married());
            QVERIFY(!f.txtName(0)->isEnabled());
            QCOMPARE(child<QLabel>(f, "lblMarryInform")->text(), QString("(未婚)"));
            f.cmdOK_Click(); // the rows alone; no spouse row is made
            QCOMPARE(one("select count(*) from tRsBasic_P where fCode='B02'"), QString("0"));
        }
        inHand("C03", 2);
        frmRs_PersonFamily f;
        f.show();
        QCOMPARE(child<QLabel>(f, "lblMarryInform")->text(), QString("()"));
        // A married person without a spouse row gets one at the first save, even blank.
        exec("update tRsBasic set fHy='已婚' where fCode='C03'");
        frmRs_PersonFamily again;
        again.show();
        again.cmdOK_Click();
        QCOMPARE(one("select count(*) from tRsBasic_P where fCode='C03'"), QString("1"));
    }

    void viewModeEditsNothing() {
        inHand("A01", 0);
        frmRs_PersonFamily f;
        f.show();
        QVERIFY(!child<QPushButton>(f, "cmdOK")->isEnabled());
        QVERIFY(!child<QPushButton>(f, "cmdInsert")->isEnabled());
        QVERIFY(f.grid(0)->isReadOnly());
        QVERIFY(!f.txtName(0)->isEnabled());
    }

    void anotherClientsChangeIsNotOverwritten() {
        inHand("A01", 2);
        frmRs_PersonFamily f;
        f.show();
        Connection other;
        other.open(m_settings);
        other.execute("update tRsFamily set fName='张大爷' where fCode='A01'");
        other.execute("update tRsBasic_P set fpPhone='123' where fCode='A01'");
        f.grid(0)->setText(1, 1, QStringLiteral("爸爸"));
        f.cmdOK_Click();
        QVERIFY(f.isVisible());
        QVERIFY2(m_prompts->messages().first().contains(QStringLiteral("已被他人修改")),
                 qPrintable(m_prompts->messages().join('|')));
        QCOMPARE(one("select fCh||fName from tRsFamily where fCode='A01'"), QString("父亲张大爷"));
        QCOMPARE(one("select fpPhone from tRsBasic_P where fCode='A01'"), QString("123"));
        other.close();
    }

    void resumeKeepsEachHalfUnderItsType() {
        exec("insert into tRsWork (fCode,fOrderID,fYear,fBm,fType) values ('A01',1,'2010-2015','甲公司',0)");
        // A transfer executed while the screen was closed: a row after the hire.
        exec("insert into tRsWork (fCode,fOrderID,fYear,fBm,newbm,fRz,fType) values "
             "('A01',7,'2024-01-02','生产部','销售部','经理',1)");
        exec("insert into RptListDetail "
             "(fTable,FieldID,OrderID,FieldName,FieldName_0,FieldName_1,FieldSelected) "
             "values ('tRsWork',9,9,'fBm','单位部门','單位部門',0)");
        inHand("A01", 2);
        frmRs_PersonResume f;
        f.show();
        ZqGrid* before = f.grid(0);
        ZqGrid* after = f.grid(1);
        QCOMPARE(before->text(1, 2), QString("甲公司"));
        QCOMPARE(after->text(1, 5), QString("销售部"));
        QVERIFY(before->isColHidden(5) && before->isColHidden(6) && after->isColHidden(6) &&
                !after->isColHidden(5));
        // The dictionary's caption of fBm heads both grids.
        QCOMPARE(before->headerText(2), QString("单位部门"));
        QCOMPARE(after->headerText(2), QString("单位部门"));
        QVERIFY(!child<QPushButton>(f, "Cmdzy")->isVisible());
        QVERIFY(child<QPushButton>(f, "cmdInsert2"));

        after->setMaxRows(2);
        after->setText(2, 1, QStringLiteral("2025-03"));
        after->setText(2, 3, QStringLiteral("主管"));
        f.cmdOK_Click();
        QCOMPARE(f.result(), int(QDialog::Accepted));
        QCOMPARE(rows("select fOrderID,fYear,fType from tRsWork where fCode='A01' order by fType,fOrderID"),
                 QString("1|2010-2015|0;1|2024-01-02|1;2|2025-03|1"));
        QCOMPARE(logs(), QString("<工作简历>记录存盘 [A01-张三]"));
    }

    void aTransferOrderJoinsTheHistory() {
        exec("insert into tRsWork (fCode,fOrderID,fYear,fBm,fType) values ('A01',1,'2023-05','生产部',1)");
        MoveOrder o;
        o.moveNmb = QStringLiteral("1");
        o.fcode = QStringLiteral("A01");
        o.fName = QStringLiteral("张三");
        o.olddpt = QStringLiteral("生产部");
        o.newdpt = QStringLiteral("销售部");
        o.worktype = QStringLiteral("操作工");
        o.wrtdate = QDate(2026, 3, 1);
        QVERIFY(SaveMoveOrder(o, 1) == MoveSaveResult::Saved);
        inHand("A01", 2);
        frmRs_PersonResume f;
        f.show();
        ZqGrid* after = f.grid(1);
        QCOMPARE(after->maxRows(), 2);
        const int row = after->findRow(5, QStringLiteral("销售部"));
        QVERIFY(row > 0);
        QCOMPARE(after->text(row, 4), QString()); // the work done is for the clerk to fill in
        // Saved again, the order's row keeps its place among the rows after the hire.
        f.cmdOK_Click();
        QCOMPARE(one("select count(*) from tRsWork where fCode='A01' and fType=1"), QString("2"));
    }

    void trainingAndWorkStates() {
        exec("insert into tRsStudy (fCode,fOrderID,fYear,fXx,fType) values ('A01',1,'2000','一中',0)");
        inHand("A01", 2);
        {
            frmRs_PersonTrain f;
            f.show();
            QCOMPARE(f.grid(0)->text(1, 2), QString("一中"));
            QCOMPARE(f.grid(1)->maxRows(), 0);
            QCOMPARE(f.grid(0)->headerText(3), QString("学习专业"));
            QCOMPARE(f.grid(1)->headerText(3), QString("所学专业"));
            QCOMPARE(child<QLabel>(f, "Label1(0)")->text(), QString("受聘后受训情况"));
        }
        frmRs_PersonWork w;
        w.show();
        QVERIFY(child<QPushButton>(w, "Command4"));
        QCOMPARE(w.grid(0)->headerText(1),
                 one("select FieldName_0 from RptListDetail where fTable='tRs_WorkState' "
                     "order by OrderID"));
        w.grid(0)->setMaxRows(1);
        w.grid(0)->setText(1, 1, QStringLiteral("2025"));
        w.grid(0)->setText(1, 2, QStringLiteral("250"));
        w.cmdOK_Click();
        QCOMPARE(rows("select fYear,YTotal from tRs_WorkState where fCode='A01'"), QString("2025|250"));
        // Without dictionary rows the grid keeps its columns, with no captions.
        exec("delete from RptListDetail where fTable='tRs_WorkState'");
        frmRs_PersonWork bare;
        bare.show();
        QCOMPARE(bare.grid(0)->maxCols(), 4);
        QCOMPARE(bare.grid(0)->headerText(1), QString());
        QCOMPARE(bare.grid(0)->text(1, 1), QString("2025"));
    }

    void resultsLogEachGrid() {
        inHand("A01", 2);
        frmRs_PersonResult f;
        f.show();
        f.grid(0)->setMaxRows(1);
        f.grid(0)->setText(1, 1, QStringLiteral("2024"));
        f.grid(0)->setText(1, 2, QStringLiteral("超额完成任务"));
        f.grid(1)->setMaxRows(1);
        f.grid(1)->setText(1, 1, QStringLiteral("2024-07-01"));
        f.grid(1)->setText(1, 3, QStringLiteral("8000"));
        f.cmdOK_Click();
        QCOMPARE(rows("select fyj from tRsResult"), QString("超额完成任务"));
        QCOMPARE(rows("select fJs,fBz from tRsTech"), QString("2024-07-01|8000"));
        QCOMPARE(logs(), QString("<主要业绩>记录存盘 [A01-张三];<调薪历史>记录存盘 [A01-张三]"));
    }

    void appraisalsByYear() {
        exec("insert into tRsRemark (fcode,fYear,fpy,fpdr) values ('A01',2023,'勤奋','王经理')");
        inHand("A01", 2);
        frmRs_PersonReward f;
        f.show();
        QComboBox* years = f.combo1();
        QCOMPARE(years->itemText(0), QString("2023"));
        QCOMPARE(years->count(), QDate::currentDate().year() - 2022);
        QCOMPARE(f.remark()->toPlainText(), QString("勤奋"));
        QVERIFY(!f.remarkDirty());

        // No edit: no question.
        years->setCurrentIndex(1);
        f.Combo1_Click();
        QVERIFY(m_prompts->messages().isEmpty());
        QCOMPARE(f.remark()->toPlainText(), QString());
        // An edit offered at the change and saved under the year that was on show.
        f.remark()->setPlainText(QStringLiteral("进步很大"));
        m_prompts->answer(vbOK);
        years->setCurrentIndex(0);
        f.Combo1_Click();
        QCOMPARE(m_prompts->messages().last(), QString("[人事评语]已有修改，是否存盘？"));
        QCOMPARE(one("select fpy from tRsRemark where fcode='A01' and fYear=2024"), QString("进步很大"));
        QCOMPARE(f.remark()->toPlainText(), QString("勤奋"));
        // Cancel loses the edit.
        f.remark()->setPlainText(QStringLiteral("丢掉"));
        m_prompts->answer(vbCancel);
        years->setCurrentIndex(1);
        f.Combo1_Click();
        QCOMPARE(f.remark()->toPlainText(), QString("进步很大"));
        // The save writes the year on show.
        f.text2()->setText(QStringLiteral("李主任"));
        f.cmdOK_Click();
        QCOMPARE(rows("select fYear,fpy,fpdr from tRsRemark where fcode='A01' order by fYear"),
                 QString("2023|勤奋|王经理;2024|进步很大|李主任"));
        QVERIFY(logs().contains(QStringLiteral("<人事评语>记录存盘 [A01-张三]")));
    }

    void anotherClientsAppraisalIsNotOverwritten() {
        exec("insert into tRsRemark (fcode,fYear,fpy,fpdr) values ('A01',2023,'勤奋','王经理')");
        inHand("A01", 2);
        frmRs_PersonReward f;
        f.show();
        Connection other;
        other.open(m_settings);
        // Another client rewrites the year on show, and writes the next year, both after this read.
        other.execute("update tRsRemark set fpy='他人的评语' where fcode='A01' and fYear=2023");
        f.remark()->setPlainText(QStringLiteral("我的评语"));
        f.cmdOK_Click();
        QVERIFY(f.isVisible());
        QVERIFY2(m_prompts->messages().last().startsWith(QStringLiteral("存盘错误!\n\n此记录在您打开之后已被他人修改")),
                 qPrintable(m_prompts->messages().join('|')));
        QCOMPARE(one("select fpy from tRsRemark where fcode='A01' and fYear=2023"), QString("他人的评语"));

        // The year change writes the year that was on show: a row another client added meanwhile
        // is not written over either, and the clerk's text stays in front of him.
        QComboBox* years = f.combo1();
        years->setCurrentIndex(1);
        m_prompts->answer(vbCancel); // the question: Cancel drops the edit
        f.Combo1_Click();
        f.remark()->setPlainText(QStringLiteral("我的第二年"));
        other.execute("insert into tRsRemark (fcode,fYear,fpy,fpdr) values ('A01',2024,'他人加的','赵')");
        m_prompts->answer(vbOK);
        years->setCurrentIndex(0);
        f.Combo1_Click();
        QVERIFY(m_prompts->messages().last().contains(QStringLiteral("已被他人修改")));
        QCOMPARE(years->currentIndex(), 1);
        QCOMPARE(f.remark()->toPlainText(), QString("我的第二年"));
        QCOMPARE(one("select fpy from tRsRemark where fcode='A01' and fYear=2024"), QString("他人加的"));
        other.close();

        // Reopened, the clerk's appraisal goes in over what he now sees.
        frmRs_PersonReward again;
        again.show();
        QCOMPARE(again.remark()->toPlainText(), QString("他人的评语"));
        again.remark()->setPlainText(QStringLiteral("我的评语"));
        again.cmdOK_Click();
        QCOMPARE(one("select fpy from tRsRemark where fcode='A01' and fYear=2023"), QString("我的评语"));
    }

    void noYearListMeansNoAppraisalSave() {
        inHand("C03", 2); // hired in a year to come
        frmRs_PersonReward f;
        f.show();
        QCOMPARE(f.combo1()->count(), 0);
        QCOMPARE(f.remarkYearIndex(), -1);
        f.remark()->setPlainText(QStringLiteral("无年份"));
        f.cmdOK_Click();
        QCOMPARE(m_prompts->messages().last(), QString("存盘错误!"));
        QVERIFY(f.isVisible());
        QCOMPARE(one("select count(*) from tRsRemark"), QString("0"));
        QVERIFY(AppraisalYears("B02", 2026).isEmpty()); // no hire date at all
    }

    void extraDetailsAndTheirSearch() {
        inHand("A01", 2);
        frmRs_PersonDetail d;
        d.show();
        ZqGrid* g = d.grid();
        QCOMPARE(g->text(1, 1),
                 one("select FieldName_0 from rptListDetail where fTable='tRsDetail' and FieldID>0 "
                     "order by OrderID"));
        QVERIFY(g->isLocked(1, 1));
        g->setText(1, 2, QStringLiteral("钢琴"));
        g->setText(3, 2, QStringLiteral("市级先进"));
        d.cmdOK_Click();
        QCOMPARE(rows("select fRsDetail1,fRsDetail3 from tRsDetail where fCode='A01'"),
                 QString("钢琴|市级先进"));
        QCOMPARE(logs(), QString()); // this screen writes no log line
        // Without the dictionary's rows the fields have no captions but still load.
        exec("delete from RptListDetail where fTable='tRsDetail'");
        frmRs_PersonDetail bare;
        bare.show();
        QCOMPARE(bare.grid()->text(1, 1), QString());
        QCOMPARE(bare.grid()->text(1, 2), QString("钢琴"));

        frmRs_PersonDetailSeek s;
        s.show();
        s.cmdOK_Click();
        QCOMPARE(s.filterString(), QString("1=1"));
        s.check1(0)->setChecked(true);
        s.text1(0)->setText(QStringLiteral("琴"));
        s.check1(2)->setChecked(true);
        s.cmdOK_Click();
        QCOMPARE(s.filterString(), QString("1=1 And b.fRsDetail1 Like '%琴%' And b.fRsDetail3 Like ''"));
        s.text1(0)->setText(QStringLiteral("琴'"));
        s.cmdOK_Click();
        QVERIFY(m_prompts->messages().last().contains(QStringLiteral("单引号")));
        s.cmdCancel_Click();
        QCOMPARE(s.filterString(), QString());
    }

    void browserOpensEveryRecordScreen() {
        QStringList opened;
        setModalRunner([&](QDialog& d) {
            opened << d.objectName() + QLatin1Char(':') + QString::number(G().PersonEditMode);
            return int(QDialog::Rejected);
        });
        frmRs_Person w;
        w.show();
        G().CurPersonCode = QStringLiteral("A01");
        G().CurPersonName = QStringLiteral("张三");
        for (int i = 1; i < 8; ++i) {
            auto* choice = child<QRadioButton>(w, QStringLiteral("OptSelect(%1)").arg(i));
            QVERIFY(choice->isEnabled());
            choice->setChecked(true);
            click(w, i % 2 ? "cmdOpen" : "cmdChg");
        }
        setModalRunner({});
        QCOMPARE(opened, QStringList({"frmRs_PersonFamily:0", "frmRs_PersonResume:2", "frmRs_PersonTrain:0",
                                      "frmRs_PersonResult:2", "frmRs_PersonReward:0", "frmRs_PersonWork:2",
                                      "frmRs_PersonDetail:0"}));
    }
};

ZQ_DB_TEST_MAIN(TestPersonRecords)
#include "test_person_records.moc"
