#include "Controls.h"
#include "TestDb.h"

#include "organisation/frmRs_PersonAssignOk.h"
#include "organisation/PersonAssignData.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/ui/Commands.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

using namespace zq;
using test::exec;
using test::one;

namespace {
int count(const QString& sql) {
    return one(sql).toInt();
}

QLineEdit* text1(QWidget& w, int i) {
    auto* b = w.findChild<QLineEdit*>(QStringLiteral("Text1(%1)").arg(i));
    if (!b) qFatal("no Text1(%d)", i);
    return b;
}

QComboBox* combo(QWidget& w, const char* name) {
    auto* c = w.findChild<QComboBox*>(QLatin1String(name));
    if (!c) qFatal("no %s", name);
    return c;
}

void person(const QString& code, const QString& name, int state, const QString& deptCode, const QString& dept,
            const QString& unit, const QString& post) {
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fzt,fBmCode,fBmName,funit,fRz) values "
                        "('%1','%2',%3,'%4','%5','%6','%7')")
             .arg(code, name)
             .arg(state)
             .arg(deptCode, dept, unit, post));
}

// A complete, valid order: 张三 from 生产部 to 销售部 within 总公司.
void fillValid(frmRs_PersonAssignOk& d) {
    d.setMoveNmb(QStringLiteral("5"));
    d.setPersonName(QStringLiteral("张三"));
    d.setPersonCode(QStringLiteral("001"));
    d.setOldUnit(QStringLiteral("总公司"));
    d.setOldDept(QStringLiteral("生产部"));
    d.setOldPost(QStringLiteral("工人"));
    d.setNewUnit(QStringLiteral("总公司"));
    d.setNewDept(QStringLiteral("销售部"));
    d.setNewPost(QStringLiteral("销售员"));
    d.setChargePerson(QStringLiteral("王经理"));
    d.setWrittenBy(QStringLiteral("admin"));
    d.setDate(QDate(2024, 3, 15));
}
} // namespace

class TestAssignOk : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;

private slots:
    void init() {
        test::freshDatabase();
        m_prompts = &scriptPrompts();
        Globals& g = G();
        g.UserName = QStringLiteral("admin");
        g.CurPersonCode.clear();
        g.CurPersonName.clear();
        setModalRunner({});
        for (const auto& [code, name] : {std::pair{"01", "生产部"}, std::pair{"02", "销售部"}})
            exec(QStringLiteral("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('%1','%2',0,0)")
                     .arg(QLatin1String(code), QString::fromUtf8(name)));
        person("001", "张三", 1, "01", "生产部", "总公司", "工人");
        person("002", "李四", 2, "02", "销售部", "分公司", "主管");
        person("003", "王五", 1, "", "生产部", "总公司", "工人");
    }

    void proposesTheNextNumberOnlyWhenAdding() {
        QCOMPARE(ProposedMoveNumber(), QStringLiteral("1"));
        exec("insert into trsPersonMove (fcode,fName,moveNmb) values ('001','张三',7)");
        QCOMPARE(ProposedMoveNumber(), QStringLiteral("8"));

        frmRs_PersonAssignOk d;
        d.setMoveNmb(QStringLiteral("99"));
        d.Text1_GotFocus(1); // a typed number lasts only until the next box takes the focus
        QCOMPARE(d.moveNmb(), QStringLiteral("8"));
        d.setMode(2);
        d.setMoveNmb(QStringLiteral("99"));
        d.Text1_GotFocus(1);
        QCOMPARE(d.moveNmb(), QStringLiteral("99"));
    }

    void settingsAssignedBeforeShowingSurviveTheLoad() {
        frmRs_PersonAssignOk d;
        d.setProperty("Text1(0)", QStringLiteral("12"));
        d.setProperty("Text1(2)", QStringLiteral("001"));
        d.setProperty("cmdOk.Tag", 2);
        d.setProperty("Caption", QStringLiteral("调令修改"));
        d.setProperty("cboOldDept", QStringLiteral("生产部"));
        d.setProperty("cboNewUnit", QStringLiteral("分公司"));
        d.setProperty("DTPStart", QDate(2023, 1, 2));
        d.show();
        QCOMPARE(d.moveNmb(), QStringLiteral("12"));
        QCOMPARE(d.personCode(), QStringLiteral("001"));
        QCOMPARE(d.mode(), 2);
        QCOMPARE(d.windowTitle(), QStringLiteral("调令修改"));
        QCOMPARE(d.oldDept(), QStringLiteral("生产部"));
        QCOMPARE(d.newUnit(), QStringLiteral("分公司"));
        QCOMPARE(d.oldUnit(), QString()); // a list filled at load does not pick its first entry
        QCOMPARE(d.date(), QDate(2023, 1, 2));
        QCOMPARE(combo(d, "cboNewDept")->count(), 2);
        QCOMPARE(combo(d, "cboOldUnit")->count(), 2);
        // A number longer than the box cannot be typed.
        text1(d, 0)->clear();
        QTest::keyClicks(text1(d, 0), QStringLiteral("123456789012"));
        QCOMPARE(d.moveNmb(), QStringLiteral("1234567890"));

        frmRs_PersonAssignOk today;
        today.show();
        QCOMPARE(today.date(), QDate::currentDate());
        QCOMPARE(today.mode(), 1);
        QCOMPARE(today.windowTitle(), QStringLiteral("调令新增"));
    }

    void leavingNameOrCodeFillsTheOldPlace() {
        frmRs_PersonAssignOk d;
        d.setPersonName(QStringLiteral("李四"));
        d.Text1_LostFocus(1);
        QCOMPARE(d.oldUnit(), QStringLiteral("分公司"));
        QCOMPARE(d.oldDept(), QStringLiteral("销售部"));
        QCOMPARE(d.oldPost(), QStringLiteral("主管"));

        d.setPersonCode(QStringLiteral("001"));
        d.Text1_LostFocus(2);
        QCOMPARE(d.oldDept(), QStringLiteral("生产部"));

        // Nobody found, or a quote typed: nothing changes.
        for (const char* code : {"999", "0'1"}) {
            d.setPersonCode(QString::fromUtf8(code));
            d.Text1_LostFocus(2);
            QCOMPARE(d.oldDept(), QStringLiteral("生产部"));
        }

        // The new unit takes the old one only while it is empty.
        d.cboOldUnit_LostFocus();
        QCOMPARE(d.newUnit(), QStringLiteral("总公司"));
        d.setOldUnit(QStringLiteral("分公司"));
        d.cboOldUnit_LostFocus();
        QCOMPARE(d.newUnit(), QStringLiteral("总公司"));
    }

    // The code names the person: leaving it fills the name with the old place, so that the two
    // match; the department lists show whole names; and the dialog says in one line that the
    // master record stays as it is.
    void codeFillsTheNameAndTheDialogSaysWhatItLeaves() {
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values "
             "('0301','研发中心软件开发部测试一室',0,0)");
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values "
             "('0302','研发中心软件开发部测试二室',0,0)");
        frmRs_PersonAssignOk d;
        d.show();
        d.setPersonName(QString());
        d.setPersonCode(QStringLiteral("001"));
        d.Text1_LostFocus(2);
        QCOMPARE(d.personName(), QStringLiteral("张三"));
        QCOMPARE(d.oldUnit(), QStringLiteral("总公司"));
        QApplication::processEvents();
        auto* note = d.findChild<QLabel*>("lblNote");
        QVERIFY(note && note->isVisible());
        QVERIFY(note->text().contains(QStringLiteral("不改动人员档案")));
        for (const char* name : {"cboOldDept", "cboNewDept"}) {
            auto* c = d.findChild<QComboBox*>(name);
            QCOMPARE(c->view()->textElideMode(), Qt::ElideNone);
            const int widest =
                c->view()->fontMetrics().horizontalAdvance(QStringLiteral("研发中心软件开发部测试一室"));
            QVERIFY2(c->view()->minimumWidth() > widest, name);
            QVERIFY2(c->width() > widest, name); // the box itself shows the whole name
        }
        test::saveShot(d, "transfer-dialog");
    }

    void keysMoveOnAndLeavingBoxesLooksUp() {
        frmRs_PersonAssignOk d;
        d.show();
        QApplication::setActiveWindow(&d);
        text1(d, 1)->setFocus();
        QCOMPARE(d.moveNmb(), QStringLiteral("1")); // proposed as the box took the focus
        d.setPersonName(QStringLiteral("李四"));
        QTest::keyClick(text1(d, 1), Qt::Key_Return);
        QCOMPARE(QApplication::focusWidget(), text1(d, 2));
        QCOMPARE(d.oldDept(), QStringLiteral("销售部"));
        QTest::keyClick(text1(d, 2), Qt::Key_Up);
        QCOMPARE(QApplication::focusWidget(), text1(d, 1));
        QTest::keyClick(text1(d, 1), Qt::Key_Down);
        QCOMPARE(QApplication::focusWidget(), text1(d, 2));

        // Enter in a combo moves on too; leaving the old unit fills the empty new one.
        QComboBox* oldUnit = combo(d, "cboOldUnit");
        oldUnit->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QVERIFY(QApplication::focusWidget() != oldUnit && QApplication::focusWidget() != oldUnit->lineEdit());
        QCOMPARE(d.newUnit(), QStringLiteral("分公司"));
        QCOMPARE(d.result(), 0);
    }

    void checksRefuseInOrderWithTheirMessages() {
        struct Case {
            const char* message;
            std::function<void(frmRs_PersonAssignOk&)> spoil;
            const char* focus;
        };
        const QVector<Case> cases{
            // A blank name still names (and focuses) the number box.
            {"调令号：不能为空，请输入内容！", [](auto& d) { d.setPersonName({}); }, "Text1(0)"},
            {"调令号：不能为空，请输入内容！", [](auto& d) { d.setMoveNmb({}); }, "Text1(0)"},
            {"原单位：不能为空，请输入内容！", [](auto& d) { d.setOldUnit({}); }, "cboOldUnit"},
            {"现单位：不能为空，请输入内容！", [](auto& d) { d.setNewUnit({}); }, "cboNewUnit"},
            {"调令号：中有单引号[ ']存在，请删除单引号！", [](auto& d) { d.setMoveNmb("1'"); }, "Text1(0)"},
            {"部门不能为空,请输入内容！", [](auto& d) { d.setOldDept({}); }, "cboOldDept"},
            {"调令号必须为纯数字!", [](auto& d) { d.setMoveNmb("12a"); }, "Text1(0)"},
            {"该职员工号和姓名不匹配,请检查后再试一次!", [](auto& d) { d.setPersonCode("002"); }, "Text1(2)"},
            {"该职员工号和姓名不匹配,请检查后再试一次!", [](auto& d) { d.setPersonName("张'三"); },
             "Text1(2)"},
            {"此人不属于你所在部门, 无权录入!",
             [](auto& d) {
                 d.setPersonCode("003");
                 d.setPersonName("王五");
             },
             "Text1(2)"},
            {"原部门名称不存在，请检查后再试一次!", [](auto& d) { d.setOldDept("财务部"); }, "cboOldDept"},
            // An empty new department passes the department test and fails here.
            {"现部门名称不存在，请检查后再试一次!", [](auto& d) { d.setNewDept({}); }, "cboNewDept"},
        };
        for (const Case& c : cases) {
            m_prompts = &scriptPrompts();
            frmRs_PersonAssignOk d;
            d.show();
            QApplication::setActiveWindow(&d);
            fillValid(d);
            c.spoil(d);
            d.cmdOk_Click();
            QCOMPARE(m_prompts->messages(), QStringList{QString::fromUtf8(c.message)});
            QCOMPARE(m_prompts->shown().first().style, 48);
            QCOMPARE(d.result(), 0);
            QWidget* focus = d.focusWidget();
            QVERIFY2(focus && (focus->objectName() == QLatin1String(c.focus) ||
                               focus->parentWidget()->objectName() == QLatin1String(c.focus)),
                     c.message);
        }
        QCOMPARE(count("select count(*) from trsPersonMove"), 0);

        // A fractional number passes the numeric test; "No" to the question ends without a write.
        m_prompts = &scriptPrompts();
        m_prompts->answer(vbNo);
        frmRs_PersonAssignOk d;
        fillValid(d);
        d.setMoveNmb(QStringLiteral("2.5"));
        d.cmdOk_Click();
        QCOMPARE(m_prompts->shown().size(), 1);
        QCOMPARE(m_prompts->shown().first().text, QStringLiteral("确认：是否进行 [调令新增] ？"));
        QCOMPARE(m_prompts->shown().first().title, QStringLiteral("必须明确"));
        QCOMPARE(m_prompts->shown().first().style, vbYesNo + vbQuestion);
        QCOMPARE(count("select count(*) from trsPersonMove"), 0);
    }

    void transferBetweenDepartmentsWritesOrderAndHistory() {
        m_prompts->answer(vbYes);
        frmRs_PersonAssignOk d;
        fillValid(d);
        d.cmdOk_Click();
        QCOMPARE(m_prompts->messages(), (QStringList{"确认：是否进行 [调令新增] ？", "存盘完毕!"}));
        QCOMPARE(d.result(), int(QDialog::Accepted));

        Recordset o(conn(), "select * from trsPersonMove");
        QCOMPARE(o.recordCount(), 1);
        QCOMPARE(o.val("moveNmb"), 5.0);
        const QStringList fields{"fName",   "fcode",  "oldunit",     "olddpt",    "worktype",
                                 "newunit", "newdpt", "newworktype", "chgperson", "wrtperson"};
        const QStringList values{"张三",   "001",    "总公司", "生产部", "工人",
                                 "总公司", "销售部", "销售员", "王经理", "admin"};
        for (int i = 0; i < fields.size(); ++i)
            QCOMPARE(o.text(fields.at(i)), values.at(i));
        QCOMPARE(o.text("wrtdate").left(10), QStringLiteral("2024-03-15"));

        Recordset w(conn(), "select fCode,fYear,fBm,newbm,fRz,fType from trswork");
        QCOMPARE(w.recordCount(), 1);
        QCOMPARE(w.text(0), QStringLiteral("001"));
        QCOMPARE(w.text(1), QStringLiteral("... ～2024-03-15"));
        QCOMPARE(w.text(2), QStringLiteral("生产部"));
        QCOMPARE(w.text(3), QStringLiteral("销售部"));
        QCOMPARE(w.text(4), QStringLiteral("工人"));
        QCOMPARE(w.val(5), 1.0);

        // The master record is left as it was; the move is only recorded.
        QCOMPARE(one("select fBmCode from tRsBasic where fCode='001'"), QStringLiteral("01"));
        QCOMPARE(one("select fBmName from tRsBasic where fCode='001'"), QStringLiteral("生产部"));
        QCOMPARE(one("select fRz from tRsBasic where fCode='001'"), QStringLiteral("工人"));
        QCOMPARE(one("select fText from tSysLog order by fID desc"), QStringLiteral("员工调动 [001-张三]"));

        // Adding again under the same number is refused and nothing more is written.
        m_prompts = &scriptPrompts();
        m_prompts->answer(vbYes);
        frmRs_PersonAssignOk again;
        fillValid(again);
        again.cmdOk_Click();
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("调令号已有存在，请调整号码！"));
        QCOMPARE(count("select count(*) from trsPersonMove"), 1);
        QCOMPARE(count("select count(*) from trswork"), 1);
    }

    void sameDepartmentWritesNoHistory() {
        m_prompts->answer(vbYes);
        frmRs_PersonAssignOk d;
        fillValid(d);
        d.setNewDept(QStringLiteral("生产部"));
        d.setNewUnit(QStringLiteral("分公司")); // a new unit alone is no history either
        d.cmdOk_Click();
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("存盘完毕!"));
        QCOMPARE(count("select count(*) from trsPersonMove"), 1);
        QCOMPARE(count("select count(*) from trswork"), 0);
    }

    void changeOverwritesOrAddsByNumber() {
        exec("insert into trsPersonMove (fcode,fName,moveNmb,newdpt) values ('001','张三',5,'生产部')");
        exec("insert into trsPersonMove (fcode,fName,moveNmb,newdpt) values ('001','张三',6,'生产部')");
        const auto change = [this](const QString& number) {
            m_prompts = &scriptPrompts();
            m_prompts->answer(vbYes);
            frmRs_PersonAssignOk d;
            d.setMode(2);
            d.setWindowTitle(QStringLiteral("调令修改"));
            fillValid(d);
            d.setMoveNmb(number);
            d.cmdOk_Click();
            QCOMPARE(m_prompts->messages().first(), QStringLiteral("确认：是否进行 [调令修改] ？"));
            QCOMPARE(m_prompts->messages().last(), QStringLiteral("存盘完毕!"));
        };
        change(QStringLiteral("5"));
        QCOMPARE(count("select count(*) from trsPersonMove"), 2);
        QCOMPARE(one("select newdpt from trsPersonMove where moveNmb=5"), QStringLiteral("销售部"));
        // Saving the change again writes one more history row.
        change(QStringLiteral("5"));
        QCOMPARE(count("select count(*) from trswork"), 2);
        // A number not in use adds a second order; one in use overwrites that other order.
        change(QStringLiteral("9"));
        QCOMPARE(count("select count(*) from trsPersonMove"), 3);
        change(QStringLiteral("6"));
        QCOMPARE(count("select count(*) from trsPersonMove"), 3);
        QCOMPARE(one("select newdpt from trsPersonMove where moveNmb=6"), QStringLiteral("销售部"));
    }

    void personWhoLeftIsAskedAbout() {
        m_prompts->answer(vbYes);
        frmRs_PersonAssignOk d;
        fillValid(d);
        d.setPersonCode(QStringLiteral("002"));
        d.setPersonName(QStringLiteral("李四"));
        d.cmdOk_Click();
        QCOMPARE(m_prompts->messages(), (QStringList{"李四 此人已离职,是否仍要调动!", "存盘完毕!"}));
        QCOMPARE(count("select count(*) from trsPersonMove where fcode='002'"), 1);
    }

    void failedSaveRollsBackBothWrites() {
        exec("drop table trswork");
        m_prompts->answer(vbYes);
        frmRs_PersonAssignOk d;
        d.setWindowTitle(QStringLiteral("调令新增"));
        fillValid(d);
        d.cmdOk_Click();
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("存盘错误!"));
        QCOMPARE(m_prompts->shown().last().title, QStringLiteral("调令新增"));
        QCOMPARE(m_prompts->shown().last().style, 48);
        QCOMPARE(d.result(), 0);
        QCOMPARE(count("select count(*) from trsPersonMove"), 0);
        QCOMPARE(d.moveNmb(), QStringLiteral("5")); // the input stays for another try
    }

    void staffPickFillsCodeAndNameAndCancelKeepsThem() {
        QVERIFY(hasForm("frmRs_list"));
        bool pick = true;
        setModalRunner([&pick](QDialog& list) {
            list.show();
            auto* items = list.findChild<QListWidget*>("lstLook");
            for (int i = 0; i < items->count(); ++i)
                if (items->item(i)->text().startsWith("001")) {
                    items->setCurrentRow(i);
                    items->item(i)->setSelected(true);
                }
            list.findChild<QPushButton*>(pick ? "cmdSel" : "cmdSelCancel")->click();
            return list.result();
        });
        frmRs_PersonAssignOk d;
        QVERIFY(d.findChild<QPushButton*>("cmdStaff")->isEnabled());
        d.findChild<QPushButton*>("cmdStaff")->click();
        QCOMPARE(d.personCode(), QStringLiteral("001"));
        QCOMPARE(d.personName(), QStringLiteral("张三"));
        QCOMPARE(d.oldUnit(), QStringLiteral("总公司")); // the old place at once
        QCOMPARE(d.oldDept(), QStringLiteral("生产部"));

        pick = false;
        d.setPersonCode(QStringLiteral("002"));
        d.setPersonName(QStringLiteral("李四"));
        d.findChild<QPushButton*>("cmdStaff")->click();
        QCOMPARE(d.personCode(), QStringLiteral("002"));
        QCOMPARE(d.personName(), QStringLiteral("李四"));
        setModalRunner({});
    }
};

ZQ_DB_TEST_MAIN(TestAssignOk)
#include "test_assign_ok.moc"
