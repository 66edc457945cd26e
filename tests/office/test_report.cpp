#include "PdfTools.h"
#include "TestDb.h"

#include "office/frmBg_Report.h"
#include "office/ReportData.h"
#include "printing/Print.h"
#include "printing/PrintOutput.h"
#include "services/Documents.h"
#include "services/Lookups.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/ui/Commands.h"
#include "shell/ui/Fonts.h"

#include <memory>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <utility>

using namespace zq;

namespace {

const QString kBoss = QStringLiteral("系统管理员");

// One report row; verdicts and answers as given.
void insertReport(int id, const QString& date, const QString& author, const QStringList& checkers,
                  const QList<int>& verdicts = {0, 0, 0, 0}, const QStringList& answers = {"", "", "", ""}) {
    conn().execute(
        QStringLiteral("insert into tRs_RptFlow (fID,fDate,fTitle,fContent,fFootnote1,fFootnote2,"
                       "fChecker1,fChecker2,fChecker3,fChecker4,fChecker1Ok,fChecker2Ok,fChecker3Ok,"
                       "fChecker4Ok,fChecker1_,fChecker2_,fChecker3_,fChecker4_,fNews) values "
                       "(%1,'%2','标题%1','内容%1','%3','%4','%5','%6','%7','%8',%9,%10,%11,%12,"
                       "'%13','%14','%15','%16',0)")
            .arg(id)
            .arg(date, author, report::JoinCheckers(checkers), checkers.value(0), checkers.value(1),
                 checkers.value(2), checkers.value(3))
            .arg(verdicts[0])
            .arg(verdicts[1])
            .arg(verdicts[2])
            .arg(verdicts[3])
            .arg(answers[0], answers[1], answers[2], answers[3]));
}

QString field(int id, const QString& name) {
    Recordset rs(conn(), QStringLiteral("select * from tRs_RptFlow where fID=%1").arg(id));
    return rs.eof() ? QStringLiteral("<none>") : rs.text(name);
}

int count(const QString& table) {
    return CountRows(table, {});
}

QColor textColor(QWidget* w) {
    return w->palette().color(QPalette::Text);
}

} // namespace

class TestReport : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;
    std::unique_ptr<frmBg_Report> m_form;

    frmBg_Report& open() {
        m_form = std::make_unique<frmBg_Report>();
        m_form->show();
        return *m_form;
    }
    template <typename T = QWidget> T* w(const QString& name) {
        T* found = m_form->findChild<T*>(name);
        if (!found) qFatal("no control %s", qPrintable(name));
        return found;
    }
    QPushButton* b(const QString& name) { return w<QPushButton>(name); }
    void click(const QString& name) { w<QAbstractButton>(name)->click(); }

    // Adds a report through the page; the checker boxes as given.
    void addThroughPage(const QString& title, const QString& content, const QStringList& checkers,
                        bool news) {
        click(QStringLiteral("cmdAdd"));
        w<QLineEdit>(QStringLiteral("txtTitle"))->setText(title);
        w<QPlainTextEdit>(QStringLiteral("txtContent"))->setPlainText(content);
        for (int i = 0; i < 4; ++i)
            w<QLineEdit>(QStringLiteral("txtChecker(%1)").arg(i))->setText(checkers.value(i));
        w<QCheckBox>(QStringLiteral("chkNews"))->setChecked(news);
        click(QStringLiteral("cmdOK"));
    }

private slots:
    void init() {
        test::freshDatabase();
        m_prompts = &scriptPrompts();
        Globals& g = G();
        g.ZgName = kBoss;
        g.UserName = kBoss;
        g.UserDeptCode.clear();
        setModalRunner({});
        setDocumentOpener({});
    }
    void cleanup() {
        m_form.reset();
        setModalRunner({});
    }

    void answerColumnsComeWithTheSchema() {
        // The screen's own step finds them there and changes no table under other clients.
        for (int n = 1; n <= 4; ++n)
            QCOMPARE(
                CountRows(QStringLiteral("tRs_RptFlow"), QStringLiteral("fChecker%1_='' and 1=2").arg(n)),
                qint16(0));
        open();
        QCOMPARE(report::AddAnswerColumns(), false);
        QVERIFY(m_prompts->messages().isEmpty());
    }

    void emptyTableLeavesOnlyAddSeekPrintQuit() {
        open();
        for (const char* name : {"cmdChg", "cmdDel", "cmdChk"})
            QVERIFY2(!b(QLatin1String(name))->isEnabled(), name);
        for (const char* name : {"cmdAdd", "cmdSeek", "cmdPrint", "cmdQuit"})
            QVERIFY2(b(QLatin1String(name))->isEnabled(), name);
        QVERIFY(!w(QStringLiteral("cmdNews(0)"))->isEnabled());
        QVERIFY(!w(QStringLiteral("cmdNews(1)"))->isEnabled());
        QVERIFY(!w(QStringLiteral("cmdOK"))->isVisible());
        QVERIFY(!w(QStringLiteral("picAnswer"))->isVisible());
    }

    void verdictsShowInColoursAndAnswers() {
        insertReport(1, QStringLiteral("2026-01-05"), QStringLiteral("张三"),
                     {QStringLiteral("李四"), QStringLiteral("王五"), QStringLiteral("赵六")}, {1, 2, 0, 0},
                     {QStringLiteral("同意"), QStringLiteral("再议"), QStringLiteral("旧话"), QString()});
        open();
        QCOMPARE(textColor(w(QStringLiteral("txtChecker(0)"))), QColor(0, 128, 0));
        QCOMPARE(textColor(w(QStringLiteral("txtChecker(1)"))), QColor(255, 0, 0));
        QCOMPARE(textColor(w(QStringLiteral("txtChecker(2)"))), QColor(0, 0, 0));
        // A refusal shows its answer too; an unsigned checker shows nothing.
        QCOMPARE(w<QPlainTextEdit>(QStringLiteral("txtAnswer2"))->toPlainText(),
                 QStringLiteral("李四--同意\n王五--再议\n"));
        QVERIFY(w(QStringLiteral("picAnswer"))->isVisible());
        QCOMPARE(w<QLabel>(QStringLiteral("lblWeek"))->text(), QStringLiteral("星期一"));
        QCOMPARE(w<QLabel>(QStringLiteral("lblDate"))->text(), QStringLiteral("2026-01-05"));
        QVERIFY(b(QStringLiteral("cmdChg"))->isEnabled());  // the supervisor
        QVERIFY(!b(QStringLiteral("cmdChk"))->isEnabled()); // but not named

        if (qEnvironmentVariableIsSet("ZQRS_REPORT_SHOT")) {
            m_form->setFont(uiFont(10));
            m_form->resize(820, 560);
            QApplication::processEvents();
            m_form->grab().save(qEnvironmentVariable("ZQRS_REPORT_SHOT"));
        }
    }

    void changedReportResetsVerdictsAndKeepsAnswers() {
        insertReport(1, QStringLiteral("2026-01-05"), QStringLiteral("张三"),
                     {QStringLiteral("李四"), QStringLiteral("王五")}, {1, 3, 0, 0},
                     {QStringLiteral("同意"), QStringLiteral("缓一缓"), QString(), QString()});
        G().UserName = QStringLiteral("张三");
        open();
        click(QStringLiteral("cmdChg"));
        QVERIFY(w(QStringLiteral("cmdOK"))->isVisible());
        QVERIFY(!w(QStringLiteral("picAnswer"))->isVisible());
        QVERIFY(!w(QStringLiteral("cmdNews(0)"))->isVisible());
        QVERIFY(!b(QStringLiteral("cmdQuit"))->isEnabled());
        w<QLineEdit>(QStringLiteral("txtTitle"))->setText(QStringLiteral("新标题"));
        click(QStringLiteral("cmdOK"));
        QCOMPARE(field(1, QStringLiteral("fTitle")), QStringLiteral("新标题"));
        QCOMPARE(field(1, QStringLiteral("fDate")), QStringLiteral("2026-01-05"));
        for (int n = 1; n <= 2; ++n)
            QCOMPARE(field(1, QStringLiteral("fChecker%1Ok").arg(n)), QStringLiteral("0"));
        QCOMPARE(field(1, QStringLiteral("fChecker1_")), QStringLiteral("同意"));
        QCOMPARE(field(1, QStringLiteral("fChecker2_")), QStringLiteral("缓一缓"));
        QCOMPARE(textColor(w(QStringLiteral("txtChecker(1)"))), QColor(0, 0, 0));
        QVERIFY(!w(QStringLiteral("picAnswer"))->isVisible());
        QVERIFY(!w(QStringLiteral("cmdOK"))->isVisible());

        // The checker finds his old answer and the verdict back at "not yet".
        m_form.reset();
        G().UserName = QStringLiteral("王五");
        open();
        QVERIFY(b(QStringLiteral("cmdChk"))->isEnabled());
        QVERIFY(!b(QStringLiteral("cmdChg"))->isEnabled());
        click(QStringLiteral("cmdChk"));
        QVERIFY(w(QStringLiteral("fraCheck"))->isVisible());
        QCOMPARE(w<QComboBox>(QStringLiteral("cboPass"))->currentText(), QStringLiteral("未审核"));
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtAnswer"))->text(), QStringLiteral("缓一缓"));
    }

    void authorWhoIsChecker2MayChangeAndSign() {
        G().UserName = QStringLiteral("王五");
        G().UserDeptCode = QStringLiteral("01");
        insertReport(1, QStringLiteral("2026-02-01"), QStringLiteral("王五"),
                     {QStringLiteral("李四"), QStringLiteral("王五"), QStringLiteral("赵六")});
        insertReport(2, QStringLiteral("2026-02-02"), QStringLiteral("他人"), {QStringLiteral("李四")});
        open();
        // The report of others is not listed for a user with a department prefix.
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtTitle"))->text(), QStringLiteral("标题1"));
        QVERIFY(b(QStringLiteral("cmdChg"))->isEnabled());
        QVERIFY(b(QStringLiteral("cmdDel"))->isEnabled());
        QVERIFY(b(QStringLiteral("cmdChk"))->isEnabled());
        QCOMPARE(m_form->checkerNo(), 2);

        // Checker 2 signs before checker 1: nothing waits for the order.
        click(QStringLiteral("cmdChk"));
        QVERIFY(!b(QStringLiteral("cmdAdd"))->isEnabled());
        w<QComboBox>(QStringLiteral("cboPass"))->setCurrentIndex(2);
        QCOMPARE(w<QLabel>(QStringLiteral("lblColor"))->palette().color(QPalette::Window), QColor(255, 0, 0));
        w<QLineEdit>(QStringLiteral("txtAnswer"))->setText(QStringLiteral("数据有误"));
        click(QStringLiteral("cmdChkOk"));
        QVERIFY(!w(QStringLiteral("fraCheck"))->isVisible());
        QVERIFY(b(QStringLiteral("cmdAdd"))->isEnabled());
        QCOMPARE(field(1, QStringLiteral("fChecker2Ok")), QStringLiteral("2"));
        QCOMPARE(field(1, QStringLiteral("fChecker2_")), QStringLiteral("数据有误"));
        QCOMPARE(field(1, QStringLiteral("fChecker1Ok")), QStringLiteral("0"));
        QCOMPARE(textColor(w(QStringLiteral("txtChecker(1)"))), QColor(255, 0, 0));
        QCOMPARE(w<QPlainTextEdit>(QStringLiteral("txtAnswer2"))->toPlainText(),
                 QStringLiteral("王五--数据有误\n"));
    }

    void pickerFillsAuthorAndFirstFreeCheckerAndDropsAFifth() {
        int shown = 0;
        QStringList people = {"P1\t甲", "P2\t乙", "P3\t丙", "P4\t丁", "P5\t戊", "P6\t己"};
        setModalRunner([&](QDialog& d) {
            [&] { QCOMPARE(d.objectName(), QStringLiteral("frmRs_list")); }();
            const QStringList p = people.value(shown++).split(QLatin1Char('\t'));
            G().CurPersonCode = p.value(0);
            G().CurPersonName = p.value(1);
            return int(QDialog::Accepted);
        });
        open();
        click(QStringLiteral("cmdAdd"));
        QVERIFY(w(QStringLiteral("cmdStaff(0)"))->isEnabled());
        click(QStringLiteral("cmdStaff(0)"));
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtFootnote1"))->text(), QStringLiteral("甲"));
        w<QLineEdit>(QStringLiteral("txtChecker(1)"))->setText(QStringLiteral("  "));
        for (int i = 0; i < 5; ++i)
            click(QStringLiteral("cmdStaff(1)"));
        QCOMPARE(shown, 6);
        QStringList names;
        for (int i = 0; i < 4; ++i)
            names << w<QLineEdit>(QStringLiteral("txtChecker(%1)").arg(i))->text();
        QCOMPARE(names, QStringList({"乙", "丙", "丁", "戊"})); // the blank box counts as free; 己 is dropped

        // A cancelled pick changes nothing.
        setModalRunner([](QDialog&) { return int(QDialog::Rejected); });
        click(QStringLiteral("cmdStaff(0)"));
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtFootnote1"))->text(), QStringLiteral("甲"));
    }

    void newReportWithNewsForwardsWithoutAsking() {
        G().UserName = QStringLiteral("张三");
        open();
        addThroughPage(QStringLiteral("月报"), QStringLiteral("第一行\n第二行"), {QStringLiteral("李四")},
                       true);
        QVERIFY(m_prompts->messages().isEmpty());
        QCOMPARE(count(QStringLiteral("tRs_RptFlow")), 1);
        QCOMPARE(field(1, QStringLiteral("fNews")), QStringLiteral("1"));
        QCOMPARE(field(1, QStringLiteral("fContent")), QStringLiteral("第一行\r\n第二行"));
        Recordset news(conn(), QStringLiteral("select fID,fDate,fContent from tRs_News"));
        QVERIFY(!news.eof());
        QCOMPARE(news.text(QStringLiteral("fID")), QStringLiteral("1"));
        QCOMPARE(news.text(QStringLiteral("fDate")), QDate::currentDate().toString(Qt::ISODate));
        QCOMPARE(news.text(QStringLiteral("fContent")),
                 QStringLiteral("月报\r\n第一行\r\n第二行\r\n\r\n报告人:张三\r\n审核人:李四\r\n"));

        // Changing it with the box ticked asks; No stores the report but sends nothing.
        click(QStringLiteral("cmdChg"));
        m_prompts->answer(vbNo);
        click(QStringLiteral("cmdOK"));
        QCOMPARE(m_prompts->messages(), QStringList({"是否重新发送<新闻公告> ?"}));
        QCOMPARE(m_prompts->shown().last().style, 36);
        QCOMPARE(count(QStringLiteral("tRs_News")), 1);
        QCOMPARE(field(1, QStringLiteral("fNews")), QStringLiteral("1"));

        click(QStringLiteral("cmdChg"));
        m_prompts->answer(vbYes);
        click(QStringLiteral("cmdOK"));
        QCOMPARE(count(QStringLiteral("tRs_News")), 2);
    }

    void quoteInTitleFailsOnlyWhenForwarded() {
        G().UserName = QStringLiteral("张三");
        open();
        addThroughPage(QStringLiteral("O'Neil"), QStringLiteral("正文"), {}, false);
        QVERIFY(m_prompts->messages().isEmpty());
        QCOMPARE(field(1, QStringLiteral("fTitle")), QStringLiteral("O'Neil"));

        addThroughPage(QStringLiteral("It's"), QStringLiteral("正文二"), {}, true);
        QCOMPARE(m_prompts->messages(), QStringList({"存盘错误!"}));
        QCOMPARE(m_prompts->shown().last().title, QStringLiteral("报告审批"));
        QCOMPARE(count(QStringLiteral("tRs_RptFlow")), 1); // the report went back with the notice
        QCOMPARE(count(QStringLiteral("tRs_News")), 0);
        // Still editing, with the typed text in place, so the save can be tried again.
        QVERIFY(w(QStringLiteral("cmdOK"))->isVisible());
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtTitle"))->text(), QStringLiteral("It's"));
        w<QLineEdit>(QStringLiteral("txtTitle"))->setText(QStringLiteral("Its"));
        click(QStringLiteral("cmdOK"));
        QCOMPARE(count(QStringLiteral("tRs_RptFlow")), 2);
        QCOMPARE(count(QStringLiteral("tRs_News")), 1);
    }

    void blankContentIsTheOnlyCheck() {
        open();
        click(QStringLiteral("cmdAdd"));
        w<QPlainTextEdit>(QStringLiteral("txtContent"))->setPlainText(QStringLiteral("   "));
        click(QStringLiteral("cmdOK"));
        QCOMPARE(m_prompts->messages(), QStringList({"请输入报告内容!"}));
        QCOMPARE(count(QStringLiteral("tRs_RptFlow")), 0);
        // Title, author and checkers may all be empty.
        w<QLineEdit>(QStringLiteral("txtFootnote1"))->clear();
        w<QPlainTextEdit>(QStringLiteral("txtContent"))->setPlainText(QStringLiteral("只有正文"));
        click(QStringLiteral("cmdOK"));
        QCOMPARE(count(QStringLiteral("tRs_RptFlow")), 1);
        QCOMPARE(field(1, QStringLiteral("fFootnote2")), QString());
    }

    void emptyFirstCheckerStartsListWithComma() {
        open();
        addThroughPage(QStringLiteral("题"), QStringLiteral("文"),
                       {QString(), QStringLiteral("李四"), QString(), QStringLiteral("赵六")}, false);
        QCOMPARE(field(1, QStringLiteral("fFootnote2")), QStringLiteral(", 李四, 赵六"));
        QCOMPARE(field(1, QStringLiteral("fChecker2")), QStringLiteral("李四"));
        QCOMPARE(field(1, QStringLiteral("fFootnote1")), kBoss);
    }

    void movingPassesAnEmptyPageAtEachEnd() {
        insertReport(1, QStringLiteral("2026-01-01"), QStringLiteral("张三"), {});
        insertReport(2, QStringLiteral("2026-03-01"), QStringLiteral("张三"), {});
        open();
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtTitle"))->text(), QStringLiteral("标题2")); // newest first
        QVERIFY(w(QStringLiteral("cmdNews(0)"))->isEnabled());
        click(QStringLiteral("cmdNews(0)"));
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtTitle"))->text(), QString());
        QVERIFY(!w(QStringLiteral("cmdNews(0)"))->isEnabled());
        QVERIFY(!b(QStringLiteral("cmdChg"))->isEnabled());
        click(QStringLiteral("cmdNews(1)"));
        click(QStringLiteral("cmdNews(1)"));
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtTitle"))->text(), QStringLiteral("标题1"));
        click(QStringLiteral("cmdNews(1)"));
        QVERIFY(!w(QStringLiteral("cmdNews(1)"))->isEnabled());
        QVERIFY(!b(QStringLiteral("cmdDel"))->isEnabled());
        click(QStringLiteral("cmdNews(0)"));
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtTitle"))->text(), QStringLiteral("标题1"));
    }

    void listHoldsThirtyNewestAndDeleteKeepsNotice() {
        for (int i = 1; i <= 32; ++i)
            insertReport(i, QDate(2026, 1, 1).addDays(i).toString(Qt::ISODate), kBoss, {});
        conn().execute(
            QStringLiteral("insert into tRs_News (fID,fDate,fContent) values (1,'2026-01-01','x')"));
        open();
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtTitle"))->text(), QStringLiteral("标题32"));
        m_prompts->answer(vbCancel);
        click(QStringLiteral("cmdDel"));
        QCOMPARE(count(QStringLiteral("tRs_RptFlow")), 32);
        m_prompts->answer(vbOK);
        click(QStringLiteral("cmdDel"));
        QCOMPARE(m_prompts->shown().last().style, 33);
        QCOMPARE(count(QStringLiteral("tRs_RptFlow")), 31);
        QCOMPARE(count(QStringLiteral("tRs_News")), 1);
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtTitle"))->text(), QStringLiteral("标题31"));
        int listed = 1;
        while (w(QStringLiteral("cmdNews(1)"))->isEnabled() &&
               !w<QLineEdit>(QStringLiteral("txtTitle"))->text().isEmpty()) {
            click(QStringLiteral("cmdNews(1)"));
            listed += w<QLineEdit>(QStringLiteral("txtTitle"))->text().isEmpty() ? 0 : 1;
        }
        QCOMPARE(listed, 30);
    }

    void seekFiltersAndStaysForLaterReloads() {
        insertReport(1, QStringLiteral("2026-01-01"), QStringLiteral("张三"), {QStringLiteral("李四")});
        insertReport(2, QStringLiteral("2026-02-01"), QStringLiteral("王五"), {QStringLiteral("赵六")});
        open();
        click(QStringLiteral("cmdSeek"));
        QVERIFY(w(QStringLiteral("fraSeek"))->isVisible());
        QVERIFY(!b(QStringLiteral("cmdAdd"))->isEnabled());
        w<QCheckBox>(QStringLiteral("chkFootSeek2"))->setChecked(true);
        w<QLineEdit>(QStringLiteral("txtFootSeek2"))->setText(QStringLiteral("李"));
        click(QStringLiteral("cmdSeekOk"));
        QVERIFY(!w(QStringLiteral("fraSeek"))->isVisible());
        QCOMPARE(m_form->filter(), QStringLiteral("1=1 And a.fFootnote2 Like '%李%'"));
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtTitle"))->text(), QStringLiteral("标题1"));
        click(QStringLiteral("cmdSeek"));
        QTest::keyClick(m_form.get(), Qt::Key_Escape); // Esc is the panel's own way back
        QVERIFY(!w(QStringLiteral("fraSeek"))->isVisible());
        QVERIFY(m_form->isVisible());
        click(QStringLiteral("cmdSeek"));
        click(QStringLiteral("cmdSeekCancel")); // keeps the filter
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtTitle"))->text(), QStringLiteral("标题1"));
        QVERIFY(!w(QStringLiteral("cmdNews(1)"))->isHidden());

        report::SeekTerms t;
        t.byDate = true;
        t.from = QDate(2026, 1, 15);
        t.to = QDate(2026, 2, 15);
        t.forwardedOnly = true;
        QCOMPARE(report::SeekFilter(t),
                 QStringLiteral("1=1 And (a.fDate>='2026-01-15' And a.fDate<='2026-02-15') And a.fNews=1"));
    }

    void seekOfUserWithPrefixIsRefusedWithAMessage() {
        G().UserName = QStringLiteral("张三");
        G().UserDeptCode = QStringLiteral("01");
        insertReport(1, QStringLiteral("2026-01-01"), QStringLiteral("张三"), {});
        open();
        click(QStringLiteral("cmdSeek"));
        click(QStringLiteral("cmdSeekOk")); // nothing ticked: "1=1" alone passes
        QVERIFY(m_prompts->messages().isEmpty());
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtTitle"))->text(), QStringLiteral("标题1"));

        click(QStringLiteral("cmdSeek"));
        w<QCheckBox>(QStringLiteral("chkTitle2"))->setChecked(true);
        w<QLineEdit>(QStringLiteral("txtTitle2"))->setText(QStringLiteral("标题"));
        click(QStringLiteral("cmdSeekOk"));
        QCOMPARE(m_prompts->messages().size(), 1);
        QVERIFY(m_prompts->messages().first().startsWith(QStringLiteral("数据库无法按此条件列出报告")));
        // The list of before stays, and so does the filter of before.
        QCOMPARE(m_form->filter(), QStringLiteral("1=1"));
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtTitle"))->text(), QStringLiteral("标题1"));
        QVERIFY(b(QStringLiteral("cmdAdd"))->isEnabled());
    }

    void documentButtonsOpenAndCopy() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("参考.txt"));
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("第一段\n第二段\n");
        f.close();
        QStringList opened;
        setDocumentOpener([&](const QString& p) {
            opened << p;
            return true;
        });
        open();
        click(QStringLiteral("cmdAdd"));
        w<QPlainTextEdit>(QStringLiteral("txtContent"))->setPlainText(QStringLiteral("正文"));
        m_prompts->answerFile(path);
        click(QStringLiteral("cmdPath"));
        QCOMPARE(w<QLineEdit>(QStringLiteral("txtPath"))->text(), path);
        QVERIFY(w(QStringLiteral("cmdDocCopy"))->isEnabled());
        click(QStringLiteral("cmdDocCopy"));
        QCOMPARE(w<QPlainTextEdit>(QStringLiteral("txtContent"))->toPlainText(),
                 QStringLiteral("正文\n第一段\n第二段"));
        click(QStringLiteral("cmdOK"));
        QVERIFY(w(QStringLiteral("cmdDocOpen"))->isEnabled());
        click(QStringLiteral("cmdDocOpen"));
        QCOMPARE(opened, QStringList({path}));

        // A file gone since: both do nothing, silently.
        QFile::remove(path);
        click(QStringLiteral("cmdDocOpen"));
        QCOMPARE(opened.size(), 1);
        QVERIFY(m_prompts->messages().isEmpty());
    }

    void printListsTheNewestOfAllUsers() {
        QTemporaryDir dir;
        const QString pdf = dir.filePath(QStringLiteral("r.pdf"));
        PrintOutput::setPdfPath(pdf);
        G().UserName = QStringLiteral("张三");
        G().UserDeptCode = QStringLiteral("01");
        open();
        click(QStringLiteral("cmdPrint"));
        QCOMPARE(m_prompts->messages(), QStringList({"未有可供打印的数据记录！"}));
        QVERIFY(!QFile::exists(pdf));
        insertReport(1, QStringLiteral("2026-01-01"), QStringLiteral("他人"), {}); // not listed for him
        click(QStringLiteral("cmdPrint"));
        PrintOutput::setPdfPath(QString());
        const QString text = test::pdfText(pdf);
        QVERIFY2(text.contains(QStringLiteral("报告审批单")) && text.contains(QStringLiteral("标题1")) &&
                     text.contains(QStringLiteral("他人")),
                 qPrintable(text));
    }

    void contentKeepsTabsAndLineBreaksOnly() {
        // The text area keeps what a text of several lines needs and drops the other controls.
        open();
        click(QStringLiteral("cmdAdd"));
        w<QLineEdit>(QStringLiteral("txtTitle"))->setText(QStringLiteral("控制字符"));
        auto* content = w<QPlainTextEdit>(QStringLiteral("txtContent"));
        content->setFocus();
        QGuiApplication::clipboard()->setText(QStringLiteral("第一行") + QChar(0) +
                                              QStringLiteral("\n第二行") + QChar(7) + QStringLiteral("\t完"));
        QTest::keySequence(content, QKeySequence::Paste);
        QCOMPARE(content->toPlainText(), QStringLiteral("第一行\n第二行\t完"));
        click(QStringLiteral("cmdOK"));
        QVERIFY2(m_prompts->messages().isEmpty(), qPrintable(m_prompts->messages().join('|')));
        QString stored =
            test::one(QStringLiteral("select fContent from tRs_RptFlow where fTitle='控制字符'"));
        QCOMPARE(stored.remove(QLatin1Char('\r')), QStringLiteral("第一行\n第二行\t完"));
    }

    void titlesWithPercentDigitsAreListedAndPrinted() {
        // A seek for "1月" or "2 级" makes the patterns '%1月%' and '%2 级%' inside the limited list.
        insertReport(1, QStringLiteral("2026-01-01"), kBoss, {});
        insertReport(2, QStringLiteral("2026-01-02"), kBoss, {});
        insertReport(3, QStringLiteral("2026-01-03"), kBoss, {});
        conn().execute(QStringLiteral("update tRs_RptFlow set fTitle='1月总结' where fID=1"));
        conn().execute(QStringLiteral("update tRs_RptFlow set fTitle='升 2 级' where fID=2"));
        open();
        for (const auto& [typed, title] : {std::pair{"1月", "1月总结"}, std::pair{"2 级", "升 2 级"}}) {
            click(QStringLiteral("cmdSeek"));
            w<QCheckBox>(QStringLiteral("chkTitle2"))->setChecked(true);
            w<QLineEdit>(QStringLiteral("txtTitle2"))->setText(QString::fromUtf8(typed));
            click(QStringLiteral("cmdSeekOk"));
            QVERIFY(m_prompts->messages().isEmpty());
            QCOMPARE(w<QLineEdit>(QStringLiteral("txtTitle"))->text(), QString::fromUtf8(title));
        }

        QTemporaryDir dir;
        const QString pdf = dir.filePath(QStringLiteral("r.pdf"));
        PrintOutput::setPdfPath(pdf);
        PrintReportFlow(3, QStringLiteral("RsReport"), QStringLiteral("RsReport_01"),
                        QStringLiteral("fTitle Like '%1月%' or fTitle Like '%2 级%'"), {});
        PrintOutput::setPdfPath(QString());
        const QString text = test::pdfText(pdf);
        // The text of the PDF comes without blanks.
        QVERIFY2(text.contains(QStringLiteral("1月总结")) && text.contains(QStringLiteral("升2级")) &&
                     !text.contains(QStringLiteral("标题3")),
                 qPrintable(text));
    }

    void commandTableOpensTheScreen() {
        const Command* c = findCommand(QStringLiteral("mnuoa_report"));
        QVERIFY(c && c->screen);
        QCOMPARE(findCommand(QStringLiteral("MNUOFFICE1")), c);
        std::unique_ptr<QDialog> screen(c->screen());
        QCOMPARE(screen->objectName(), QStringLiteral("frmBg_Report"));
        QCOMPARE(screen->windowTitle(), QStringLiteral("报告审批"));
    }
};

ZQ_DB_TEST_MAIN(TestReport)
#include "test_report.moc"
