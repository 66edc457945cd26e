// The meeting screen: the department limit of its list, forwarding on every save, renamed labels,
// the 16-bit key, seeks that also work for a user with a department prefix, and a change made by
// another client meanwhile.
#include "Controls.h"
#include "TestDb.h"

#include "office/frmBg_Meeting.h"
#include "office/MeetingData.h"
#include "services/Lookups.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Commands.h"

#include <memory>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

using namespace zq;
using test::child;
using test::exec;
using test::one;

namespace {

void insertMeeting(int id, const QString& date, const QString& title, const QString& dept) {
    exec(QStringLiteral("insert into tRs_meeting (fID,fDate,fTitle,fContent,fFoot1,fFoot2,fFootnote1,"
                        "fFootnote2,fFilePath,fNews,fBmName) values (?,?,?,?,?,?,?,?,?,?,?)"),
         {id, date, title, QStringLiteral("内容") + title, meeting::DefaultFoot1(), meeting::DefaultFoot2(),
          QStringLiteral("行政部"), QString(), QString(), 0, dept});
}

int count(const QString& table) {
    return CountRows(table, {});
}

} // namespace

class TestMeeting : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;
    std::unique_ptr<frmBg_Meeting> m_form;

    frmBg_Meeting& open() {
        m_form = std::make_unique<frmBg_Meeting>();
        m_form->show();
        return *m_form;
    }
    template <typename T = QWidget> T* w(const char* name) { return child<T>(*m_form, QLatin1String(name)); }
    void click(const char* name) { w<QAbstractButton>(name)->click(); }
    QString title() { return w<QLineEdit>("txtTitle")->text(); }
    // Titles of the list from the first row to the empty page at its end.
    QStringList listed() {
        QStringList titles;
        for (; !title().isEmpty(); click("cmdNews(1)"))
            titles << title();
        return titles;
    }

private slots:
    void init() {
        test::freshDatabase();
        m_prompts = &scriptPrompts();
        test::actAsSupervisor();
        G().UserDeptCode.clear();
        for (const auto& [code, name] :
             {std::pair{"01", "生产部"}, std::pair{"0101", "一车间"}, std::pair{"02", "销售部"}})
            exec(QStringLiteral("insert into tRs_Bm (fCode,fName,fYnxj) values ('%1','%2',0)")
                     .arg(QLatin1String(code), QString::fromUtf8(name)));
    }
    void cleanup() { m_form.reset(); }

    void userWithPrefixSeesHisDepartmentsAndThoseOfNone() {
        insertMeeting(1, "2026-03-01", "全体", "");
        insertMeeting(2, "2026-03-02", "车间", "一车间");
        insertMeeting(3, "2026-03-03", "销售", "销售部");
        insertMeeting(4, "2026-03-04", "旧部门", "已撤销部门");
        // A department's name matches whatever the case of its letters.
        exec("insert into tRs_Bm (fCode,fName,fYnxj) values ('0102','QA组',0)");
        insertMeeting(5, "2026-02-28", "质检", "qa组");
        G().UserName = QStringLiteral("张三");
        G().UserDeptCode = QStringLiteral("01");
        open();
        QCOMPARE(listed(), QStringList({"车间", "全体", "质检"}));
        // Anyone who sees a meeting may change and delete it.
        click("cmdNews(0)");
        QVERIFY(w<QPushButton>("cmdChg")->isEnabled());
        QVERIFY(w<QPushButton>("cmdDel")->isEnabled());

        // His seeks work: the statement for him carries the alias the fragments name.
        click("cmdSeek");
        w<QCheckBox>("chkTitle2")->setChecked(true);
        w<QLineEdit>("txtTitle2")->setText(QStringLiteral("全"));
        click("cmdSeekOk");
        QVERIFY(m_prompts->messages().isEmpty());
        QCOMPARE(m_form->filter(), QStringLiteral("1=1 And a.fTitle Like '%全%'"));
        QCOMPARE(listed(), QStringList({"全体"}));
    }

    void everySaveWithTheBoxForwardsWithTheLabelsOfTheMeeting() {
        open();
        click("cmdAdd");
        QCOMPARE(w<QLineEdit>("txtFoot1")->text(), QStringLiteral("主办单位:"));
        w<QLineEdit>("txtTitle")->setText(QStringLiteral("安全例会"));
        w<QPlainTextEdit>("txtContent")->setPlainText(QStringLiteral("周一上午\n三楼会议室"));
        auto* foot1 = w<QLineEdit>("txtFoot1");
        QVERIFY(foot1->isReadOnly());
        QTest::mouseDClick(foot1, Qt::LeftButton);
        QVERIFY(!foot1->isReadOnly());
        foot1->setText(QStringLiteral("主持:"));
        m_form->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_form.get()));
        w<QLineEdit>("txtFootnote1")->setFocus(); // leaving locks the label again
        QVERIFY(foot1->isReadOnly());
        w<QLineEdit>("txtFootnote1")->setText(QStringLiteral("张三"));
        w<QComboBox>("cboDept")->setCurrentText(QStringLiteral("一车间"));
        w<QCheckBox>("chkNews")->setChecked(true);
        click("cmdOK");
        QVERIFY(m_prompts->messages().isEmpty());
        QCOMPARE(one("select fFoot1 from tRs_meeting where fID=1"), QStringLiteral("主持:"));
        QCOMPARE(one("select fContent from tRs_News"),
                 QStringLiteral("安全例会\r\n周一上午\r\n三楼会议室\r\n\r\n主持:张三\r\n"));
        QCOMPARE(one("select fBmName from tRs_News"), QStringLiteral("一车间"));

        // A change with the box ticked writes one more, without a question.
        click("cmdChg");
        click("cmdOK");
        QVERIFY(m_prompts->messages().isEmpty());
        QCOMPARE(count("tRs_News"), 2);
        QCOMPARE(count("tRs_meeting"), 1);

        // In browse a double click does nothing; a new meeting starts with the default labels.
        QTest::mouseDClick(foot1, Qt::LeftButton);
        QVERIFY(foot1->isReadOnly());
        click("cmdAdd");
        QCOMPARE(foot1->text(), QStringLiteral("主办单位:"));
    }

    void badInputSavesNothingInHalf() {
        insertMeeting(32767, "2026-01-01", "最后一号", "");
        open();
        click("cmdAdd");
        w<QPlainTextEdit>("txtContent")->setPlainText(QStringLiteral("  "));
        click("cmdOK");
        QCOMPARE(m_prompts->messages(), QStringList({"请输入公告内容!"}));

        // The key beyond 16 bits fails the save.
        w<QPlainTextEdit>("txtContent")->setPlainText(QStringLiteral("正文"));
        click("cmdOK");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("存盘错误!"));
        QCOMPARE(m_prompts->shown().last().title, QStringLiteral("会议管理"));
        QCOMPARE(count("tRs_meeting"), 1);
        QVERIFY(w("cmdOK")->isVisible()); // still editing

        // A quote fails the notice and with it the meeting.
        exec("delete from tRs_meeting");
        w<QLineEdit>("txtTitle")->setText(QStringLiteral("It's"));
        w<QCheckBox>("chkNews")->setChecked(true);
        click("cmdOK");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("存盘错误!"));
        QCOMPARE(count("tRs_meeting"), 0);
        QCOMPARE(count("tRs_News"), 0);
    }

    void changeMadeMeanwhileIsRefusedAndDeleteKeepsNotices() {
        insertMeeting(1, "2026-02-01", "原题", "");
        exec("insert into tRs_News (fID,fDate,fContent,fBmName) values (1,'2026-02-01','原题','')");
        open();
        click("cmdChg");
        exec("update tRs_meeting set fTitle='他人改过' where fID=1");
        w<QLineEdit>("txtTitle")->setText(QStringLiteral("我改的"));
        click("cmdOK");
        QVERIFY(m_prompts->messages().last().startsWith(QStringLiteral("存盘错误!")));
        QCOMPARE(one("select fTitle from tRs_meeting"), QStringLiteral("他人改过"));
        click("cmdCancel");

        m_prompts->answer(vbOK);
        click("cmdDel");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("确定: 删除当前[会议安排] ?"));
        QCOMPARE(m_prompts->shown().last().style, 33);
        QCOMPARE(count("tRs_meeting"), 0);
        QCOMPARE(count("tRs_News"), 1);
        QVERIFY(!w<QPushButton>("cmdChg")->isEnabled());
    }

    void seekPanelKeepsTheListWhenLeft() {
        insertMeeting(1, "2026-01-01", "一", "");
        insertMeeting(2, "2026-01-02", "二", "");
        open();
        click("cmdSeek");
        QVERIFY(w("cmdNews(0)")->isHidden());
        QVERIFY(!w<QPushButton>("cmdAdd")->isEnabled());
        click("cmdSeekOk"); // nothing ticked
        QCOMPARE(m_form->filter(), QStringLiteral("1=1"));
        click("cmdNews(1)");
        QCOMPARE(title(), QStringLiteral("一"));
        click("cmdSeek");
        click("cmdSeekCancel"); // reloads nothing: the page stays on its row
        QCOMPARE(title(), QStringLiteral("一"));
        QVERIFY(w<QPushButton>("cmdAdd")->isEnabled());
        QVERIFY(!w("cmdNews(1)")->isHidden());
    }

    void commandTableOpensTheScreen() {
        const Command* c = findCommand(QStringLiteral("MNUOFFICE2"));
        QVERIFY(c && c->screen);
        QCOMPARE(findCommand(QStringLiteral("mnuOA_Meeting")), c);
        std::unique_ptr<QDialog> screen(c->screen());
        QCOMPARE(screen->objectName(), QStringLiteral("frmBg_Meeting"));
        QCOMPARE(screen->windowTitle(), QStringLiteral("会议管理"));
    }
};

ZQ_DB_TEST_MAIN(TestMeeting)
#include "test_meeting.moc"
