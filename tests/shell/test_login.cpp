#include "Controls.h"
#include "TestDb.h"

#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/Rights.h"
#include "shell/SqlText.h"
#include "shell/ui/Commands.h"
#include "shell/ui/Login.h"
#include "shell/Users.h"

#include <functional>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;
using test::child;

namespace {
void setCompany(const QString& fullName) {
    conn().execute("delete from myCompany");
    conn().execute(
        QStringLiteral("insert into myCompany (CompCode, FullName, CompName) values ('01', %1, '简称')")
            .arg(quoted(fullName)));
}

QStringList logTexts() {
    QStringList out;
    for (const LogEntry& e : readLog(conn(), LogFilter()))
        out.prepend(e.user + ":" + e.text);
    return out;
}

void logIn(QDialog& d, const QString& user, const QString& password) {
    child<QComboBox>(d, "cboUser")->setCurrentText(user);
    child<QLineEdit>(d, "txtPassword")->setText(password);
    child<QPushButton>(d, "cmdOK")->click();
}

QStringList items(QComboBox* box) {
    QStringList out;
    for (int i = 0; i < box->count(); ++i)
        out << box->itemText(i);
    return out;
}
} // namespace

class TestLogin : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;
    std::unique_ptr<QTemporaryDir> m_power;
    ConnectionSettings m_db;
    int m_shown = 0;

    // Drives the login window when it is shown; the window must not block.
    void drive(std::function<void(QDialog&)> steps) {
        setModalRunner([this, steps](QDialog& d) {
            ++m_shown;
            if (d.objectName() != "frmLogin") qFatal("unexpected window %s", qPrintable(d.objectName()));
            steps(d);
            return d.result();
        });
    }

private slots:
    void initTestCase() { installLoginWindow(); }

    void init() {
        m_db = test::freshDatabase();
        m_prompts = &scriptPrompts();
        m_power = std::make_unique<QTemporaryDir>();
        m_shown = 0;
        Globals& g = G();
        g.PowerPath = m_power->path() + "/";
        g.UserName.clear();
        g.ZgName.clear();
        g.CompName.clear();
        g.AccName = "旧套帐";
        g.myPower = noPower();
        g.myModel = "mnuRsManIn";
        g.Language = 0;
        setCompany("示范实业有限公司");
        QString power = noPower();
        power[0] = '1';
        power[5] = '1';
        createUser(conn(), "张三", "pw3", power, false);
        createUser(conn(), "系统管理员", "root", noPower(), true);
    }

    void cleanup() {
        setModalRunner({});
        installPrompts(nullptr);
        conn().close();
    }

    void wrongPasswordThenRight() {
        drive([this](QDialog& d) {
            auto* account = child<QComboBox>(d, "cboAccount");
            QCOMPARE(account->count(), 1); // the control's own database, named by its company
            QVERIFY(account->itemText(0).startsWith("示范实业有限公司"));
            QCOMPARE(items(child<QComboBox>(d, "cboUser")), QStringList({"张三", "系统管理员"}));
            QVERIFY(!child<QLineEdit>(d, "txtRepeat")->isVisibleTo(&d));

            logIn(d, "张三", "pw");
            QCOMPARE(d.result(), int(QDialog::Rejected)); // still open
            QCOMPARE(m_prompts->messages(), QStringList("密码错误, 请重新输入!"));
            QCOMPARE(m_prompts->shown().last().style, int(vbExclamation));
            QVERIFY(child<QLineEdit>(d, "txtPassword")->text().isEmpty());

            logIn(d, "李四", "pw3");
            QCOMPARE(m_prompts->messages().last(), QString("没有此用户: 李四"));
            logIn(d, "张三", "pw3");
            QCOMPARE(d.result(), int(QDialog::Accepted));
        });
        QVERIFY(StandAloneLogin());
        QCOMPARE(m_shown, 1);
        const Globals& g = G();
        QCOMPARE(g.UserName, QString("张三"));
        QCOMPARE(g.ZgName, QString("系统管理员"));
        QVERIFY(!g.isSupervisor());
        QCOMPARE(g.myPower.left(7), QString("1000010"));
        QCOMPARE(g.myPower.size(), 350);
        QCOMPARE(g.CompName, QString("示范实业有限公司"));
        QCOMPARE(g.AccName, QString("示范实业有限公司"));
        QCOMPARE(g.UserPath, m_db.userPath);
        QCOMPARE(g.Default, m_db.defaultDb);
        QCOMPARE(g.myModel, QString("mnuRsManIn"));
        QVERIFY(!LoginExtra().isEmpty());
        QCOMPARE(logTexts(), QStringList({"张三:登录失败", "张三:登录"}));

        // The settings file remembers the account set and who used it.
        const QVector<AccountSet> sets = loadAccountSets(m_power->path() + "/zqset.db");
        QCOMPARE(sets.size(), 1);
        QCOMPARE(sets[0].lastUser, QString("张三"));
        QCOMPARE(sets[0].path, m_db.userPath);

        // Next time that user is offered first.
        G().UserName.clear();
        drive([](QDialog& d) {
            QCOMPARE(child<QComboBox>(d, "cboAccount")->count(), 1);
            QCOMPARE(child<QComboBox>(d, "cboUser")->currentText(), QString("张三"));
            d.reject();
        });
        QVERIFY(!StandAloneLogin());
    }

    void givingUpLeavesNoUser() {
        drive([](QDialog& d) { child<QPushButton>(d, "cmdCancel")->click(); });
        G().myPower = fullPower();
        QCOMPARE(CheckModel("mnuRsManIn", 0), qint16(0));
        QCOMPARE(m_shown, 1);
        QVERIFY(G().UserName.isEmpty());
        QCOMPARE(logTexts(), QStringList());
        // Nothing was chosen, so nothing is remembered.
        QVERIFY(loadAccountSets(m_power->path() + "/zqset.db").isEmpty());
    }

    void supervisorHasEveryRight() {
        drive([](QDialog& d) { logIn(d, "系统管理员", "root"); });
        QCOMPARE(CheckModel("mnuRsOthMove", 3), qint16(29));
        QCOMPARE(G().UserName, QString("系统管理员"));
        QCOMPARE(G().ZgName, G().UserName);
        QCOMPARE(G().myPower, fullPower());
        QCOMPARE(logTexts(), QStringList({"系统管理员:登录", "系统管理员:调令管理-删除"}));
    }

    void disabledUsersCannotLogIn() {
        setUserDisabled(conn(), "张三", true);
        drive([this](QDialog& d) {
            QCOMPARE(items(child<QComboBox>(d, "cboUser")), QStringList({"系统管理员"}));
            logIn(d, "张三", "pw3");
            QCOMPARE(m_prompts->messages(), QStringList("用户 张三 已停用, 请与系统负责人联系!"));
            d.reject();
        });
        QVERIFY(!StandAloneLogin());
    }

    void firstUserBecomesTheSupervisor() {
        conn().execute("delete from tSysUser");
        drive([this](QDialog& d) {
            auto* repeat = child<QLineEdit>(d, "txtRepeat");
            QVERIFY(repeat->isVisibleTo(&d));
            QVERIFY(child<QLabel>(d, "lblNote")->text().contains("系统负责人"));
            repeat->setText("other");
            logIn(d, "王经理", "secret");
            QCOMPARE(m_prompts->messages(), QStringList("两次输入的密码不一致, 请重新输入!"));
            QCOMPARE(d.result(), int(QDialog::Rejected));
            child<QLineEdit>(d, "txtRepeat")->setText("secret");
            logIn(d, "王经理", "secret");
            QCOMPARE(d.result(), int(QDialog::Accepted));
        });
        QVERIFY(StandAloneLogin());
        QCOMPARE(G().UserName, QString("王经理"));
        QVERIFY(G().isSupervisor());
        const std::optional<User> u = findUser(conn(), "王经理");
        QVERIFY(u && u->supervisor);
        QCOMPARE(checkLogin(conn(), "王经理", "secret"), LoginCheck::Ok);
    }

    void anotherAccountSetIsReadBack() {
        // A second company: the settings file knows the first one as "总公司".
        const ConnectionSettings first = m_db;
        AccountSet known = accountSetOf(first);
        known.name = "总公司";
        saveAccountSet(m_power->path() + "/zqset.db", known);
        const ConnectionSettings second = test::freshDatabase(); // the control's database now
        setCompany("分公司");
        createUser(conn(), "李四", "pw4", noPower(), true);

        drive([](QDialog& d) {
            auto* account = child<QComboBox>(d, "cboAccount");
            QCOMPARE(account->count(), 2);
            QVERIFY(account->itemText(0).startsWith("分公司"));
            QCOMPARE(items(child<QComboBox>(d, "cboUser")), QStringList({"李四"}));
            account->setCurrentIndex(1);
            QCOMPARE(items(child<QComboBox>(d, "cboUser")), QStringList({"张三", "系统管理员"}));
            logIn(d, "张三", "pw3");
        });
        QVERIFY(StandAloneLogin());
        const Globals& g = G();
        QCOMPARE(g.AccName, QString("总公司"));
        QCOMPARE(g.CompName, QString("示范实业有限公司"));
        QCOMPARE(g.UserPath, first.userPath);
        QCOMPARE(g.Default, first.defaultDb);
        QCOMPARE(g.ZgName, QString("系统管理员"));
        QVERIFY(!conn().isOpen()); // it was open on the other company

        // The rights test now reads the chosen company's modules.
        QCOMPARE(CheckModel("mnuRsManIn", 0), qint16(1));
        QCOMPARE(conn().settings().userPath, first.userPath);
        QCOMPARE(conn().settings().defaultDb, first.defaultDb);
        Q_UNUSED(second);
    }

    // The host may name a user (zqrs --name): the login offers that user and still asks the password.
    void hostNamedUserStillNeedsThePassword() {
        drive([this](QDialog& d) {
            QCOMPARE(child<QComboBox>(d, "cboUser")->currentText(), QString("系统管理员"));
            QVERIFY(child<QLineEdit>(d, "txtPassword")->text().isEmpty());
            child<QPushButton>(d, "cmdOK")->click();
            QCOMPARE(m_prompts->messages(), QStringList("密码错误, 请重新输入!"));
            QCOMPARE(d.result(), int(QDialog::Rejected));
            d.reject();
        });
        QVERIFY(!StandAloneLogin("系统管理员"));
        QVERIFY(G().UserName.isEmpty());

        // A disabled user is named too, but not let in, not even with the right password.
        setUserDisabled(conn(), "张三", true);
        drive([this](QDialog& d) {
            QCOMPARE(child<QComboBox>(d, "cboUser")->currentText(), QString("张三"));
            child<QLineEdit>(d, "txtPassword")->setText("pw3");
            child<QPushButton>(d, "cmdOK")->click();
            QCOMPARE(m_prompts->messages().last(), QString("用户 张三 已停用, 请与系统负责人联系!"));
            d.reject();
        });
        QVERIFY(!StandAloneLogin("张三"));
        QVERIFY(G().UserName.isEmpty());

        drive([](QDialog& d) { logIn(d, child<QComboBox>(d, "cboUser")->currentText(), "root"); });
        QVERIFY(StandAloneLogin("系统管理员"));
        QCOMPARE(G().UserName, QString("系统管理员"));
        QVERIFY(G().isSupervisor());
        QCOMPARE(m_shown, 3);
        QCOMPARE(logTexts(), QStringList({"系统管理员:登录失败", "张三:登录失败", "系统管理员:登录"}));
    }
};

ZQ_DB_TEST_MAIN(TestLogin)
#include "test_login.moc"
