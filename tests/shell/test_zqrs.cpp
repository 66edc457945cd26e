#include "TestDb.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/SqlText.h"
#include "shell/ui/Commands.h"
#include "shell/ui/Components.h"
#include "shell/ui/PropertyBag.h"
#include "shell/ui/zqRs.h"

#include <memory>
#include <QApplication>
#include <QDialog>
#include <QPointer>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace zq;

namespace {
// What the test screen saw while it was shown.
struct Seen {
    int shown = 0;
    qint16 state = -1;
    bool connOpen = false;
    bool modal = false;
    QStringList companyItems;
    QPointer<QDialog> screen;
};

void insertCompany(const QString& fullName) {
    conn().execute(
        QStringLiteral("insert into myCompany (CompCode, FullName, CompName, compadd, Province, cityname, "
                       "Telphone, fax, PostCode, http, E_Mail, CompTax, CompAcnt) values ('C01', %1, "
                       "'简称', '中山路1号', '广东省', '广州市', '020-1', '020-2', '510000', "
                       "'www.a.cn', 'a@a.cn', 'T9', 'A8')")
            .arg(quoted(fullName)));
}
} // namespace

class TestZqRs : public QObject {
    Q_OBJECT
    std::unique_ptr<CommandTableScope> m_table;
    ScriptedPrompts* m_prompts = nullptr;
    Seen m_seen;

    // A screen row as the real screens register theirs; it records what it saw and closes itself.
    void registerTestScreen(const QStringList& keys) {
        registerCommand(
            keys,
            [this]() -> QDialog* {
                auto* d = new QDialog;
                d->setObjectName("frmTest");
                QTimer::singleShot(0, d, [this, d] {
                    ++m_seen.shown;
                    m_seen.modal = d->isModal() && d->isVisible();
                    m_seen.connOpen = conn().isOpen();
                    m_seen.companyItems = G().CompanyItems;
                    d->accept();
                });
                m_seen.screen = d;
                return d;
            },
            [this](QDialog&, qint16 state) { m_seen.state = state; });
    }

private slots:
    void init() {
        test::freshDatabase();
        conn().execute("delete from myCompany");
        m_table = std::make_unique<CommandTableScope>();
        registerTestScreen({"mnuRsbm", "mnuRsSysBm"});
        m_prompts = &scriptPrompts();
        m_seen = Seen();
        G().UserName = "张三";
        G().ZgName = "系统管理员";
        G().Language = 0;
    }

    void cleanup() {
        m_table.reset();
        installPrompts(nullptr);
    }

    void keysMatchWithoutCase() {
        zqRs control;
        control.Refresh("MNURSBM", 5);
        QCOMPARE(m_seen.shown, 1);
        QCOMPARE(m_seen.state, qint16(5));
        QVERIFY(m_seen.modal);
        QVERIFY(m_seen.connOpen);
        QVERIFY(!m_seen.screen); // dropped once closed
        QVERIFY(!conn().isOpen());
        QVERIFY(!Components::exists());

        control.Refresh("mnuRsbm", 0);
        control.Refresh("mnursSYSbm", 0);
        QCOMPARE(m_seen.shown, 3);
        QCOMPARE(G().AppTitle, QString("人事管理系统"));
        QVERIFY(m_prompts->shown().isEmpty());
    }

    void actionRowsRunInsteadOfAScreen() {
        qint16 got = -1;
        registerAction({"mnuRsCard"}, [&](qint16 state) { got = state; });
        zqRs control;
        control.Refresh("MNURSCARD", 3);
        QCOMPARE(got, qint16(3));
        QCOMPARE(m_seen.shown, 0);
        QVERIFY(!conn().isOpen());
    }

    void emptyCompanyStillShowsTheScreen() {
        G().CompanyItems = QStringList{"stale"};
        zqRs control;
        control.Refresh("mnuRsbm", 0);
        QCOMPARE(m_seen.shown, 1);
        QVERIFY(m_seen.companyItems.isEmpty());
    }

    void companyItemsFromTheFirstRow() {
        insertCompany("  广州某某有限公司 ");
        zqRs control;
        control.Refresh("mnuRsbm", 0);
        const QStringList expected = {"公司编号", "C01",       "公司单位",     "广州某某有限公司",
                                      "公司地址", "中山路1号", "公司省市地址", "广东省广州市中山路1号",
                                      "公司电话", "020-1",     "公司传真",     "020-2",
                                      "公司邮编", "510000",    "公司网址",     "www.a.cn",
                                      "公司电邮", "a@a.cn",    "公司税号",     "T9",
                                      "公司帐号", "A8"};
        QCOMPARE(m_seen.companyItems, expected);

        // Without a full name the short name stands in; the names follow the language.
        conn().open(conn().settings());
        conn().execute("update myCompany set FullName='   '");
        G().Language = 1;
        control.Refresh("mnuRsbm", 0);
        QCOMPARE(m_seen.companyItems.size(), 22);
        QCOMPARE(m_seen.companyItems[0], QString("公司編號"));
        QCOMPARE(m_seen.companyItems[3], QString("简称"));
    }

    void userDepartment() {
        conn().execute(
            "insert into tRsBasic (fcode, fname, fbmcode, fzt) values ('0001', '张三', '0101', 1)");
        zqRs control;
        control.Refresh("mnuUnknown", 0);
        QCOMPARE(G().UserDeptCode, QString("0101"));

        // The supervisor has no department limit even with a department of his own.
        G().ZgName = "张三";
        control.Refresh("mnuUnknown", 0);
        QCOMPARE(G().UserDeptCode, QString());

        // A name without a row gets a code that matches no department; so does the empty name.
        G().UserName = "无名氏";
        control.Refresh("mnuUnknown", 0);
        QCOMPARE(G().UserDeptCode, QString("false-false"));
        G().UserName.clear();
        control.Refresh("mnuUnknown", 0);
        QCOMPARE(G().UserDeptCode, QString("false-false"));
    }

    void unknownKeyOpensAndClosesSilently() {
        insertCompany("某公司");
        conn().close();
        G().CompanyItems.clear();
        zqRs control;
        control.Refresh("mnuNoSuchKey", 0);
        QCOMPARE(G().CompanyItems.size(), 22); // the database was read
        QVERIFY(!conn().isOpen());
        QCOMPARE(m_seen.shown, 0);
        QVERIFY(m_prompts->shown().isEmpty());
    }

    void errorsReachTheCaller() {
        zqRs control;
        G().UserName = "O'Brien";
        QVERIFY_THROWS_EXCEPTION(DbError, control.Refresh("mnuRsbm", 0));
        QCOMPARE(m_seen.shown, 0);
        QVERIFY(conn().isOpen()); // the closing steps are skipped

        // A database that cannot be opened fails at the first statement.
        conn().close();
        G().UserName = "张三";
        if (G().SQLData == 0)
            G().UserPath += ".missing";
        else
            G().Default += "_missing";
        QVERIFY_THROWS_EXCEPTION(DbError, control.Refresh("mnuRsbm", 0));
        QVERIFY(m_prompts->shown().isEmpty());
    }

    void terminateClosesTheConnection() {
        zqRs control;
        QVERIFY(conn().isOpen());
        control.Terminate();
        QVERIFY(!conn().isOpen());
    }

    void propertiesRoundTrip() {
        zqRs control;
        control.setSQLData(1);
        control.setPassword("pw");
        control.setMyModel("人事");
        control.setShowmode(1);
        control.setUserPath("db:5432");
        control.setAccName("帐套一");
        control.setUserName("李四");
        control.setZgName("王五");
        control.setMyPower(QString(350, '1'));
        control.setLanguage(1);
        control.setUserID("hr");
        control.setDefault("hrdb");

        MemoryPropertyBag bag(Qt::CaseSensitive);
        control.WriteProperties(bag);
        QCOMPARE(bag.values().keys(),
                 QStringList({"Default", "Language", "Password", "SQLData", "Showmode", "UserID", "UserName",
                              "UserPath", "ZgName", "myModel", "myPower"}));

        control.InitProperties();
        control.ReadProperties(bag);
        const Globals& g = G();
        QCOMPARE(g.SQLData, qint16(1));
        QCOMPARE(g.Password, QString("pw"));
        QCOMPARE(g.myModel, QString("人事"));
        QCOMPARE(g.UserPath, QString("db:5432"));
        QCOMPARE(g.UserName, QString("李四"));
        QCOMPARE(g.ZgName, QString("王五"));
        QCOMPARE(g.myPower, QString(350, '1'));
        QCOMPARE(g.Language, qint16(1));
        QCOMPARE(control.UserID(), QString("hr"));
        QCOMPARE(control.Default(), QString("hrdb"));
        QCOMPARE(g.AccName, QString("Zenqo SoftWare")); // never written
        QCOMPARE(g.showmode, qint16(0)); // "Showmode" is not "showmode" to a bag that keeps case

        MemoryPropertyBag caseless;
        control.setShowmode(1);
        control.WriteProperties(caseless);
        control.ReadProperties(caseless);
        QCOMPARE(g.showmode, qint16(1));
    }

    void defaultsAreNotWritten() {
        zqRs control;
        control.InitProperties();
        MemoryPropertyBag bag;
        control.WriteProperties(bag);
        QVERIFY(bag.values().isEmpty());

        // The settings file of the host: a value back at its default drops the older one.
        QTemporaryDir dir;
        QSettings settings(dir.filePath("zqrs.ini"), QSettings::IniFormat);
        SettingsPropertyBag sbag(settings, "zqRs");
        control.setLanguage(1);
        control.setShowmode(2);
        control.setUserPath("/srv/hr.db");
        control.WriteProperties(sbag);
        QCOMPARE(settings.value("zqRs/Showmode").toInt(), 2);
        control.InitProperties();
        control.ReadProperties(sbag);
        QCOMPARE(G().Language, qint16(1));
        QCOMPARE(G().showmode, qint16(2));
        QCOMPARE(G().UserPath, QString("/srv/hr.db"));
        control.setLanguage(0);
        control.WriteProperties(sbag);
        QVERIFY(!settings.contains("zqRs/Language"));
        QVERIFY(settings.contains("zqRs/UserPath"));
    }

    void initPropertiesKeepsPathAndCompany() {
        zqRs control;
        control.setPowerPath("/opt/zqrs");
        control.setCompName("某公司");
        control.setSQLData(1);
        control.setUserName("李四");
        control.setMyPower(QString(350, '1'));
        control.setAccName("x");
        control.InitProperties();
        const Globals& g = G();
        QCOMPARE(g.PowerPath, QString("/opt/zqrs"));
        QCOMPARE(g.CompName, QString("某公司"));
        QCOMPARE(g.SQLData, qint16(0));
        QCOMPARE(g.UserName, QString());
        QCOMPARE(g.AccName, QString());
        QCOMPARE(g.myPower, QString(350, '0'));
    }
};

ZQ_DB_TEST_MAIN(TestZqRs)
#include "test_zqrs.moc"
