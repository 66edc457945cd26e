// The host's window: menu entries say in words why they cannot be chosen, and the home page's links
// open the staff register on the persons of their line and are counted again when it closes.
#include "Controls.h"
#include "TestDb.h"

#include "office/frmBg_News.h"
#include "office/OfficeData.h"
#include "personnel/HomePage.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Commands.h"
#include "shell/ui/Login.h"
#include "shell/Users.h"
#include "zqrs/MainWindow.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;
using test::exec;

class TestMainWindow : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;

    // A window on a fresh database, signed in as the member of staff 员工002 of department 0101.
    std::unique_ptr<MainWindow> window(QSettings& settings, const QString& power) {
        auto w = std::make_unique<MainWindow>(settings);
        test::freshDatabase();
        scriptPrompts();
        test::actAsSupervisor();
        G().UserName = QStringLiteral("员工002");
        G().myPower = power;
        const QString month = QDate::currentDate().toString(QStringLiteral("MM"));
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('01','生产部',0,0)");
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('0101','一车间',0,0)");
        exec(QStringLiteral("insert into tRsBasic (fCode,fName,fzt,fBmCode,fBirthDay) values "
                            "('001','员工001',1,'0101','1990-%1-01')")
                 .arg(month));
        exec("insert into tRsBasic (fCode,fName,fzt,fBmCode,fBirthDay) values "
             "('002','员工002',1,'0101','1990-00-01')");
        exec(QStringLiteral("insert into tRsBasic (fCode,fName,fzt,fBmCode,fBirthDay) values "
                            "('003','员工003',1,'01','1990-%1-01')")
                 .arg(month));
        w->refresh();
        return w;
    }

private slots:
    void menusSayWhyTheyAreClosed() {
        QSettings settings(m_dir.filePath("a.ini"), QSettings::IniFormat);
        // Entering the staff in service only (the first position of its rights).
        QString power(350, QLatin1Char('0'));
        power[0] = QLatin1Char('1');
        auto w = window(settings, power);
        auto* in = test::child<QAction>(*w, QStringLiteral("mnuRsManIn"));
        auto* out = test::child<QAction>(*w, QStringLiteral("mnuRsManOut"));
        QVERIFY(in->isEnabled());
        QCOMPARE(in->toolTip(), in->text());
        QVERIFY(!out->isEnabled());
        QCOMPARE(out->toolTip(), QString("无权使用此功能"));
        for (QAction* a : w->findChildren<QAction*>())
            QVERIFY2(!a->toolTip().startsWith(QStringLiteral("mnu")), qPrintable(a->toolTip()));
    }

    void homeLinksOpenTheRegisterOnTheirPersons() {
        QSettings settings(m_dir.filePath("b.ini"), QSettings::IniFormat);
        auto w = window(settings, QString(350, QLatin1Char('1')));
        auto* birthdays = test::child<QLabel>(w->home(), QStringLiteral("home_birthdays_1"));
        // Department 0101 only: 员工003 works elsewhere.
        QVERIFY(birthdays->text().contains(QStringLiteral(">1 人<")));
        QVariantMap seen;
        setModalRunner([&](QDialog& d) {
            d.show();
            seen = {{"screen", d.objectName()},
                    {"RsState", d.property("RsState")},
                    {"PresetFilter", d.property("PresetFilter")},
                    {"title", d.windowTitle()},
                    {"preset", test::child<QLabel>(d, QStringLiteral("lblPreset"))->text()}};
            // Another person of the department has a birthday this month meanwhile.
            exec(QStringLiteral("update tRsBasic set fBirthDay='1990-%1-09' where fCode='002'")
                     .arg(QDate::currentDate().toString(QStringLiteral("MM"))));
            return int(QDialog::Accepted);
        });
        emit birthdays->linkActivated(birthdays->text().section(QLatin1Char('"'), 1, 1));
        setModalRunner({});
        QCOMPARE(seen.value("screen").toString(), QString("frmRs_Person"));
        QCOMPARE(seen.value("RsState").toInt(), 1);
        QVERIFY(seen.value("PresetFilter").toString().contains(QStringLiteral("a.fbmcode like '0101%'")));
        // The window's title is the same however the register was opened; the line is named in it.
        QCOMPARE(seen.value("title").toString(), QString("人事档案"));
        QVERIFY2(seen.value("preset").toString().contains(QStringLiteral("生日")),
                 qPrintable(seen.value("preset").toString()));
        // The page counted again when the screen closed.
        birthdays = test::child<QLabel>(w->home(), QStringLiteral("home_birthdays_1"));
        QVERIFY2(birthdays->text().contains(QStringLiteral(">2 人<")), qPrintable(birthdays->text()));
    }

    void unreadNoticesAcrossTwoLogins() {
        QSettings settings(m_dir.filePath("c.ini"), QSettings::IniFormat);
        auto w = window(settings, QString(350, QLatin1Char('1')));
        G().PowerPath = m_dir.path() + QLatin1Char('/');
        installLoginWindow();
        createUser(conn(), QStringLiteral("员工002"), QStringLiteral("pw"), QString(350, QLatin1Char('1')),
                   false);
        // Posted by another user as report and meeting saves post them: for all, for his workshop,
        // for another department.
        G().UserName = QStringLiteral("员工001");
        for (const char* dept : {"", "一车间", "生产部"})
            office::ForwardNotice(QDate::currentDate(), QStringLiteral("公告"), QString::fromUtf8(dept));
        ScriptedPrompts* prompts = nullptr;
        const auto logIn = [&] {
            prompts = &scriptPrompts();
            setModalRunner([](QDialog& d) {
                test::child<QComboBox>(d, "cboUser")->setCurrentText(QStringLiteral("员工002"));
                test::child<QLineEdit>(d, "txtPassword")->setText(QStringLiteral("pw"));
                test::child<QPushButton>(d, "cmdOK")->click();
                return d.result();
            });
            const bool ok = w->login(QStringLiteral("员工002"));
            setModalRunner({});
            return ok;
        };
        QVERIFY(logIn());
        // Of the three he may see two: his department's and the one for all.
        QCOMPARE(prompts->messages(), QStringList({"自您上次查看新闻公告以来, 又发布了 2 条公告。"}));
        auto* status = test::child<QLabel>(*w, QStringLiteral("sbNews"));
        QCOMPARE(status->text(), QStringLiteral("新公告: 2 条"));
        QVERIFY(!status->isHidden());

        // The board marks them and opening it clears the count.
        int markedNew = -1, unread = -1;
        setModalRunner([&](QDialog& d) {
            d.show();
            markedNew = !test::child<QLabel>(d, QStringLiteral("lblNew"))->isHidden();
            unread = static_cast<frmBg_News&>(d).unread();
            return int(QDialog::Accepted);
        });
        w->run(QStringLiteral("mnuOA_News"));
        setModalRunner({});
        QCOMPARE(unread, 2);
        QCOMPARE(markedNew, 1);
        QCOMPARE(w->unreadNotices(), 0);
        QVERIFY(status->isHidden());

        // One more notice meanwhile: the next login tells of that one only.
        OpenControlConn();
        G().UserName = QStringLiteral("员工001");
        office::ForwardNotice(QDate::currentDate(), QStringLiteral("新的公告"), QString());
        conn().close();
        QVERIFY(logIn());
        QCOMPARE(prompts->messages(), QStringList({"自您上次查看新闻公告以来, 又发布了 1 条公告。"}));
        QCOMPARE(status->text(), QStringLiteral("新公告: 1 条"));
    }

    // Help needs no display: the host answers it before any window exists.
    void helpWithoutADisplay() {
        QProcess host;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* v : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            env.remove(QLatin1String(v));
        host.setProcessEnvironment(env);
        host.start(QStringLiteral(ZQ_HOST_EXE), {QStringLiteral("--help")});
        QVERIFY(host.waitForFinished(30000));
        QCOMPARE(host.exitStatus(), QProcess::NormalExit);
        QCOMPARE(host.exitCode(), 0);
        const QString out = QString::fromUtf8(host.readAllStandardOutput());
        QVERIFY2(out.contains(QStringLiteral("--db")) && out.contains(QStringLiteral("人事管理系统")),
                 qPrintable(out));
    }

    // One entry a screen, named for what it opens; the other keys of a screen still work.
    void eachScreenHasOneEntry() {
        QSettings settings(m_dir.filePath("d.ini"), QSettings::IniFormat);
        auto w = window(settings, QString(350, QLatin1Char('1')));
        QHash<const Command*, QString> entryOf;
        for (QAction* a : w->findChildren<QAction*>()) {
            const QString key = a->data().toString();
            if (!key.startsWith(QStringLiteral("mnu"))) continue;
            const Command* c = findCommand(key);
            QVERIFY2(c, qPrintable(key));
            QVERIFY2(!entryOf.contains(c), qPrintable(entryOf.value(c) + " / " + a->text()));
            entryOf.insert(c, a->text());
            QVERIFY2(a->isEnabled(), qPrintable(key));
        }
        QCOMPARE(entryOf.size(), 20);
        for (const char* alias : {"mnuOA_Report", "mnuOA_Meeting", "mnuOA_News", "mnuRsSysBm"})
            QVERIFY2(!w->findChild<QAction*>(QLatin1String(alias)), alias);
        QCOMPARE(test::child<QAction>(*w, "mnuOffice1")->text(), QString("报告审批"));
        QCOMPARE(test::child<QAction>(*w, "mnuRsbm")->text(), QString("部门管理"));
        QCOMPARE(test::child<QAction>(*w, "mnuRsCard2")->text(), QString("职工登记表打印"));

        // A user who may enter the reports only by their second key reaches them through the entry.
        const int first = test::one("select SerialNo from tSysFunc where Model_Name='mnuOffice1'").toInt();
        const int second = test::one("select SerialNo from tSysFunc where Model_Name='mnuOA_Report'").toInt();
        QString power(350, QLatin1Char('1'));
        power[first - 1] = QLatin1Char('0');
        power[second - 1] = QLatin1Char('1');
        G().myPower = power;
        w->refresh();
        QAction* reports = test::child<QAction>(*w, "mnuOffice1");
        QVERIFY(reports->isEnabled());
        QCOMPARE(reports->data().toString(), QString("mnuOA_Report"));
        QCOMPARE(reports->text(), QString("报告审批"));
        QStringList opened;
        setModalRunner([&](QDialog& d) {
            opened << d.objectName();
            return int(QDialog::Rejected);
        });
        reports->trigger();
        w->run(QStringLiteral("mnuOA_Meeting")); // every key still runs its screen
        setModalRunner({});
        QCOMPARE(opened, QStringList({"frmBg_Report", "frmBg_Meeting"}));
    }
};

ZQ_DB_TEST_MAIN(TestMainWindow)
#include "test_main_window.moc"
