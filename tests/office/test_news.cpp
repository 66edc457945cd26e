// The notice board: rights of the supervisor and of an ordinary user, a report forwarded to the
// board and read there, the department limit, the 16-bit key, and the marks of unread notices.
#include "Controls.h"
#include "TestDb.h"

#include "office/frmBg_News.h"
#include "office/frmBg_Report.h"
#include "office/NewsData.h"
#include "office/OfficeData.h"
#include "services/Lookups.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Commands.h"

#include <memory>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
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

const QString kBoss = QStringLiteral("admin");

void insertNotice(int id, const QString& date, const QString& text, const QString& dept,
                  const QString& posted = {}) {
    exec(QStringLiteral("insert into tRs_News (fID,fDate,fContent,fBmName,fPosted) values (?,?,?,?,?)"),
         {id, date, text, dept, posted.isEmpty() ? QVariant() : QVariant(posted)});
}

int count(const QString& table) {
    return CountRows(table, {});
}

} // namespace

class TestNews : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;
    std::unique_ptr<QDialog> m_form;

    template <typename Screen = frmBg_News> Screen& open() {
        m_form.reset();
        m_form = std::make_unique<Screen>();
        m_form->show();
        return static_cast<Screen&>(*m_form);
    }
    template <typename T = QWidget> T* w(const char* name) { return child<T>(*m_form, QLatin1String(name)); }
    void click(const char* name) { w<QAbstractButton>(name)->click(); }
    bool on(const char* name) { return w(name)->isEnabled(); }
    QString content() { return w<QPlainTextEdit>("txtContent")->toPlainText(); }
    void as(const QString& user, const QString& prefix) {
        G().UserName = user;
        G().UserDeptCode = prefix;
    }

private slots:
    void init() {
        test::freshDatabase();
        m_prompts = &scriptPrompts();
        test::actAsSupervisor();
        G().UserDeptCode.clear();
        exec("insert into tRs_Bm (fCode,fName,fYnxj) values ('01','生产部',0)");
        exec("insert into tRs_Bm (fCode,fName,fYnxj) values ('02','销售部',0)");
    }
    void cleanup() { m_form.reset(); }

    void ordinaryUserAddsButNeitherChangesNorDeletes() {
        as(QStringLiteral("张三"), QStringLiteral("01"));
        open();
        QVERIFY(!on("cmdChg") && !on("cmdDel")); // an empty table
        QVERIFY(on("cmdAdd") && on("cmdSeek"));
        click("cmdAdd");
        QVERIFY(w("cmdNews(0)")->isHidden());
        w<QPlainTextEdit>("txtContent")->setPlainText(QStringLiteral("停电通知\n周六全天"));
        click("cmdOK");
        QVERIFY(m_prompts->messages().isEmpty());
        QCOMPARE(one("select fContent from tRs_News"), QStringLiteral("停电通知\r\n周六全天"));
        QCOMPARE(content(), QStringLiteral("停电通知\n周六全天"));
        QVERIFY(!on("cmdChg") && !on("cmdDel"));

        // The supervisor may do both.
        as(kBoss, QString());
        open();
        QVERIFY(on("cmdChg") && on("cmdDel"));
        click("cmdChg");
        w<QPlainTextEdit>("txtContent")->setPlainText(QStringLiteral("停电改期"));
        click("cmdOK");
        QCOMPARE(one("select fContent from tRs_News"), QStringLiteral("停电改期"));
        m_prompts->answer(vbOK);
        click("cmdDel");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("确定: 删除当前公告 ?"));
        QCOMPARE(count("tRs_News"), 0);
    }

    void forwardedReportIsReadOnTheBoardAndChangedThereAlone() {
        G().UserName = QStringLiteral("张三");
        G().ZgName = kBoss;
        auto& report = open<frmBg_Report>();
        click("cmdAdd");
        w<QLineEdit>("txtTitle")->setText(QStringLiteral("周报"));
        w<QPlainTextEdit>("txtContent")->setPlainText(QStringLiteral("本周完成"));
        w<QLineEdit>("txtChecker(0)")->setText(QStringLiteral("李四"));
        w<QCheckBox>("chkNews")->setChecked(true);
        click("cmdOK");
        QVERIFY(!report.isHidden());

        as(kBoss, QString());
        open();
        QCOMPARE(content(), QStringLiteral("周报\n本周完成\n\n报告人:张三\n审核人:李四\n"));
        QVERIFY(!w("lblNew")->isHidden()); // posted since the supervisor last looked: never
        click("cmdChg");
        w<QPlainTextEdit>("txtContent")->setPlainText(QStringLiteral("周报(已改)"));
        click("cmdOK");
        QCOMPARE(one("select fContent from tRs_RptFlow"), QStringLiteral("本周完成"));
    }

    void userWithPrefixSeesNoticesOfNoDepartment() {
        insertNotice(1, "2026-01-01", QStringLiteral("全体"), QString());
        insertNotice(2, "2026-01-02", QStringLiteral("生产"), QStringLiteral("生产部"));
        insertNotice(3, "2026-01-03", QStringLiteral("销售"), QStringLiteral("销售部"));
        as(QStringLiteral("张三"), QStringLiteral("01"));
        open();
        QStringList seen;
        for (; !content().isEmpty(); click("cmdNews(1)"))
            seen << content();
        QCOMPARE(seen, QStringList({"生产", "全体"}));

        // The step buttons stay on the page while the seek panel is up.
        click("cmdSeek");
        QVERIFY(!w("cmdNews(0)")->isHidden());
        QVERIFY(!on("cmdAdd"));
        w<QCheckBox>("chkContent2")->setChecked(true);
        w<QLineEdit>("txtContent2")->setText(QStringLiteral("全"));
        click("cmdSeekOk");
        QCOMPARE(content(), QStringLiteral("全体"));
    }

    void keyBeyondSixteenBitsFailsTheSave() {
        insertNotice(32767, "2026-01-01", QStringLiteral("最后"), QString());
        open();
        click("cmdAdd");
        w<QPlainTextEdit>("txtContent")->setPlainText(QStringLiteral("再一条"));
        click("cmdOK");
        QCOMPARE(m_prompts->messages(), QStringList({"存盘错误!"}));
        QCOMPARE(m_prompts->shown().last().title, QStringLiteral("新闻公告"));
        QCOMPARE(count("tRs_News"), 1);
        click("cmdCancel");
        click("cmdAdd");
        click("cmdOK");
        QCOMPARE(m_prompts->messages().last(), QStringLiteral("请输入公告内容!"));
    }

    void noticesPostedSinceTheLastVisitAreMarked() {
        // Before the count began (no stamp), before his last visit, and after it.
        insertNotice(1, "2026-01-01", QStringLiteral("旧"), QString());
        insertNotice(2, "2026-01-02", QStringLiteral("看过"), QString(),
                     QStringLiteral("2026-01-02 09:00:00.000"));
        insertNotice(3, "2026-01-03", QStringLiteral("新"), QString(),
                     QStringLiteral("2026-01-03 09:00:00.000"));
        exec("insert into tRs_NewsSeen (fUser,fOpened) values ('张三','2026-01-02 10:00:00.000')");
        as(QStringLiteral("张三"), QStringLiteral("01"));
        QCOMPARE(news::UnreadCount(QStringLiteral("张三"), QStringLiteral("01")), 1);
        QCOMPARE(news::UnreadCount(QStringLiteral("李四"), QString()), 2); // never opened it
        auto& board = open();
        QCOMPARE(board.unread(), 1);
        QCOMPARE(w<QLabel>("lblUnread")->text(), QStringLiteral("上次查看以后新发布 1 条"));
        QStringList marks;
        for (; !content().isEmpty(); click("cmdNews(1)"))
            marks << content() + (w("lblNew")->isHidden() ? QString() : QStringLiteral("*"));
        QCOMPARE(marks, QStringList({"新*", "看过", "旧"}));

        // Opening the board cleared his count, and only his.
        QCOMPARE(news::UnreadCount(QStringLiteral("张三"), QStringLiteral("01")), 0);
        QCOMPARE(news::UnreadCount(QStringLiteral("李四"), QString()), 2);
        QCOMPARE(one("select count(*) from tRs_NewsSeen where fUser='张三'"), QStringLiteral("1"));
        open();
        QVERIFY(w("lblNew")->isHidden());
        QVERIFY(w<QLabel>("lblUnread")->text().isEmpty());
    }

    // What he posts himself, on the board or forwarded from a report or meeting, he has read; the
    // others have not.
    void ownNoticesAreNotUnread() {
        exec("insert into tRs_NewsSeen (fUser,fOpened) values ('张三','2026-01-02 10:00:00.000')");
        exec("insert into tRs_NewsSeen (fUser,fOpened) values ('李四','2026-01-02 10:00:00.000')");
        as(QStringLiteral("张三"), QStringLiteral("01"));
        open();
        click("cmdAdd");
        w<QPlainTextEdit>("txtContent")->setPlainText(QStringLiteral("周五例会"));
        click("cmdOK");
        office::ForwardNotice(QDate::currentDate(), QStringLiteral("转发的报告"), QString());
        QCOMPARE(one("select count(*) from tRs_News where fPoster='张三'"), QStringLiteral("2"));
        m_form.reset();
        QCOMPARE(news::UnreadCount(QStringLiteral("张三"), QStringLiteral("01")), 0);
        QCOMPARE(news::UnreadCount(QStringLiteral("李四"), QString()), 2);
        as(QStringLiteral("李四"), QString());
        open();
        QVERIFY(!w("lblNew")->isHidden());
        as(QStringLiteral("张三"), QStringLiteral("01"));
        open();
        QVERIFY(w("lblNew")->isHidden());
    }

    void commandTableOpensTheScreen() {
        const Command* c = findCommand(QStringLiteral("mnuoffice3"));
        QVERIFY(c && c->screen);
        QCOMPARE(findCommand(QStringLiteral("MNUOA_NEWS")), c);
        std::unique_ptr<QDialog> screen(c->screen());
        QCOMPARE(screen->objectName(), QStringLiteral("frmBg_News"));
        QCOMPARE(screen->windowTitle(), QStringLiteral("新闻公告"));
    }
};

ZQ_DB_TEST_MAIN(TestNews)
#include "test_news.moc"
