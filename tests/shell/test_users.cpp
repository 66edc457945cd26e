#include "TestDb.h"

#include "admin/Demo.h"
#include "admin/DemoAdmin.h"

#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/Users.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;

class TestUsers : public QObject {
    Q_OBJECT

private slots:
    void init() { test::freshDatabase(); }

    void hashesAreSaltedAndNeverPlain() {
        const QString a = hashPassword("秘密123");
        const QString b = hashPassword("秘密123");
        QVERIFY(a != b); // a fresh salt each time
        QVERIFY(a.startsWith("pbkdf2-sha256$100000$"));
        QVERIFY(!a.contains("秘密123"));
        QVERIFY(verifyPassword("秘密123", a));
        QVERIFY(verifyPassword("秘密123", b));
        QVERIFY(!verifyPassword("秘密124", a));
        QVERIFY(!verifyPassword(" 秘密123", a)); // login passwords are exact, unlike module passwords
        // Whatever is not such a hash never matches, the plain text least of all.
        QVERIFY(!verifyPassword("秘密123", "秘密123"));
        QVERIFY(!verifyPassword("", ""));
        QVERIFY(!verifyPassword("x", "pbkdf2-sha256$0$AAAA$AAAA"));
    }

    void usersAreKeptWithHashesOnly() {
        createUser(conn(), "张三", "pw-张三", noPower(), false);
        createUser(conn(), " 系统管理员 ", "root-pw", fullPower(), true);
        for (Recordset rs(conn(), "select * from tSysUser"); !rs.eof(); rs.moveNext())
            for (int i = 0; i < rs.fieldCount(); ++i)
                QVERIFY(!rs.text(i).contains("pw-张三") && !rs.text(i).contains("root-pw"));

        const QVector<User> users = listUsers(conn());
        QCOMPARE(users.size(), 2);
        QCOMPARE(users[1].name, QString("系统管理员")); // trimmed
        QCOMPARE(users[1].power.size(), kPowerLength);
        QCOMPARE(supervisorName(conn()), QString("系统管理员"));
        QCOMPARE(activeSupervisors(conn()), 1);

        QVERIFY_THROWS_EXCEPTION(DbError, createUser(conn(), "张三", "x", noPower(), false));
        QVERIFY_THROWS_EXCEPTION(DbError, createUser(conn(), "  ", "x", noPower(), false));
        QVERIFY_THROWS_EXCEPTION(DbError, createUser(conn(), "李四", "", noPower(), false));
        QVERIFY_THROWS_EXCEPTION(DbError, createUser(conn(), "O'Neil", "x", noPower(), false));
        QCOMPARE(listUsers(conn()).size(), 2);
    }

    void loginChecks() {
        createUser(conn(), "张三", "pw", "10101", false);
        User u;
        QCOMPARE(checkLogin(conn(), "张三", "pw", &u), LoginCheck::Ok);
        QCOMPARE(u.power.left(6), QString("101010"));
        QCOMPARE(u.power.size(), kPowerLength);
        QVERIFY(!findUser(conn(), "张三")->lastLogin.isEmpty());
        QCOMPARE(checkLogin(conn(), "张三", "PW"), LoginCheck::WrongPassword);
        QCOMPARE(checkLogin(conn(), "李四", "pw"), LoginCheck::NoSuchUser);
        QCOMPARE(checkLogin(conn(), "x'y", "pw"), LoginCheck::NoSuchUser);
        setUserDisabled(conn(), "张三", true);
        QCOMPARE(checkLogin(conn(), "张三", "pw"), LoginCheck::Disabled);
        setUserDisabled(conn(), "张三", false);
        setUserPassword(conn(), "张三", "新密码");
        QCOMPARE(checkLogin(conn(), "张三", "pw"), LoginCheck::WrongPassword);
        QCOMPARE(checkLogin(conn(), "张三", "新密码"), LoginCheck::Ok);
    }

    void renameAndFlags() {
        createUser(conn(), "张三", "pw", noPower(), true);
        createUser(conn(), "李四", "pw", noPower(), false);
        QVERIFY_THROWS_EXCEPTION(DbError, renameUser(conn(), "张三", "李四"));
        renameUser(conn(), "张三", "张三丰");
        QVERIFY(!findUser(conn(), "张三"));
        QCOMPARE(checkLogin(conn(), "张三丰", "pw"), LoginCheck::Ok); // the password stays
        setUserSupervisor(conn(), "李四", true);
        QCOMPARE(activeSupervisors(conn()), 2);
        setUserDisabled(conn(), "李四", true);
        QCOMPARE(activeSupervisors(conn()), 1);
        QCOMPARE(supervisorName(conn()), QString("张三丰"));
        QVERIFY_THROWS_EXCEPTION(DbError, setUserPower(conn(), "王五", fullPower()));
        setUserPower(conn(), "李四", QString(400, '1'));
        QCOMPARE(findUser(conn(), "李四")->power, fullPower());
    }

    void accountSetsInTheSettingsFile() {
        QTemporaryDir dir;
        // The final slash or backslash of PowerPath is cut first.
        const QString file = settingsFileIn(dir.path() + "/");
        QCOMPARE(file, dir.path() + "/zqset.db");
        QCOMPARE(settingsFileIn(dir.path() + "\\"), file);
        QCOMPARE(settingsFileIn(dir.path()), file);
        QVERIFY(loadAccountSets(file).isEmpty()); // no file yet, and none made by reading

        AccountSet a{"总公司", 0, "/srv/a.db", "", "", "张三"};
        AccountSet b{"分公司's", 1, "db:5432", "hr", "hr", ""};
        saveAccountSet(file, a);
        saveAccountSet(file, b);
        QVector<AccountSet> sets = loadAccountSets(file);
        QCOMPARE(sets.size(), 2);
        QCOMPARE(sets[0].name, QString("分公司's")); // used last comes first
        QCOMPARE(sets[0].database, QString("hr"));
        QCOMPARE(sets[0].where(), QString("hr @ db:5432"));
        a.lastUser = "李四";
        saveAccountSet(file, a);
        sets = loadAccountSets(file);
        QCOMPARE(sets.size(), 2);
        QCOMPARE(sets[0].name, QString("总公司"));
        QCOMPARE(sets[0].lastUser, QString("李四"));
        removeAccountSet(file, "分公司's");
        QCOMPARE(loadAccountSets(file).size(), 1);

        QVERIFY(a.sameDatabase(accountSetOf({0, "/srv/a.db", {}, {}, {}})));
        QVERIFY(!a.sameDatabase(accountSetOf({1, "/srv/a.db", {}, {}, {}})));
        QCOMPARE(accountSetOf({0, "/srv/公司.db", {}, {}, {}}).name, QString("公司"));
    }

    void logFiltersNewestFirst() {
        const auto line = [](const char* time, const char* user, const char* module, const char* text) {
            conn().execute(
                QStringLiteral("insert into tSysLog (fTime, fUser, fModel, fText) values ('%1', '%2', "
                               "'%3', '%4')")
                    .arg(time, user, module, text));
        };
        line("2025-03-01 08:00:00", "张三", "mnuRsManIn", "在职员工档案");
        line("2025-03-01 09:30:00", "李四", "mnuRsOthMove", "调令管理-新增");
        line("2025-03-02 23:59:59", "张三", "mnuRsManIn", "增加员工记录 [0001-王五]");
        line("2025-03-03 00:00:00", "张三", "", "登录");
        line("2025-03-03 00:00:00", "李四", "", "登录");

        LogFilter f;
        QVector<LogEntry> all = readLog(conn(), f);
        QCOMPARE(all.size(), 5);
        QCOMPARE(all[0].user, QString("李四")); // same second: the later line first
        QCOMPARE(all[4].time, QString("2025-03-01 08:00:00"));

        f.from = QDate(2025, 3, 1);
        f.to = QDate(2025, 3, 2); // the whole last day counts
        QCOMPARE(readLog(conn(), f).size(), 3);
        f.user = "张三";
        QCOMPARE(readLog(conn(), f).size(), 2);
        f.text = "王五";
        QCOMPARE(readLog(conn(), f).size(), 1);
        f = LogFilter();
        f.text = "othmove"; // the module key counts, without regard to case
        QCOMPARE(readLog(conn(), f).size(), 1);
        f = LogFilter();
        f.limit = 2;
        QCOMPARE(readLog(conn(), f).size(), 2);
        QStringList users = logUsers(conn());
        users.sort();
        QCOMPARE(users, QStringList({"张三", "李四"})); // each once, the empty user left out
    }

    void logTextWithPercentDigitsIsSearchedAsWritten() {
        // The pattern '%2 级%' or '%1月%' must reach the engine as written, also under a row limit.
        writeLog(conn(), "张三", "mnuRsManIn", "调整为 2 级");
        writeLog(conn(), "张三", "mnuRsManIn", "1月工资");
        writeLog(conn(), "张三", "mnuRsManIn", "30 级");
        for (const int limit : {0, 100}) {
            LogFilter f;
            f.limit = limit;
            f.text = "2 级";
            QVector<LogEntry> found = readLog(conn(), f);
            QCOMPARE(found.size(), 1);
            QCOMPARE(found[0].text, QString("调整为 2 级"));
            f.text = "1月";
            found = readLog(conn(), f);
            QCOMPARE(found.size(), 1);
            QCOMPARE(found[0].text, QString("1月工资"));
        }
    }

    void demoUsersAreStaffWithLimitedRights() {
        demo::Options o;
        o.persons = 300;
        demo::fill(conn(), o);
        const QVector<demo::DemoLogin> made = demo::addDemoUsers(conn());
        QCOMPARE(made.size(), 3);
        QVERIFY(made[0].supervisor);
        QCOMPARE(checkLogin(conn(), made[0].name, made[0].password), LoginCheck::Ok);
        QCOMPARE(findUser(conn(), made[0].name)->power, fullPower());
        QStringList departments;
        for (int i = 1; i < 3; ++i) {
            const User u = *findUser(conn(), made[i].name);
            QVERIFY(!u.supervisor);
            QCOMPARE(checkLogin(conn(), u.name, made[i].password), LoginCheck::Ok);
            // A person in service, the only one of that name, who has reports of their own.
            Recordset p(conn(), "select fBmCode, fZt from tRsBasic where fName='" + u.name + "'");
            QCOMPARE(p.recordCount(), 1);
            QCOMPARE(p.val(1), 1.0);
            departments << p.text(0).left(2);
            Recordset r(conn(), "select count(*) from tRs_RptFlow where fFootnote1='" + u.name + "'");
            QVERIFY(r.val(0) > 0);
            // Entering the staff register, never deleting or auditing anything.
            QCOMPARE(u.power.at(0), QChar('1'));
            for (int pos = 1; pos <= kPowerLength; ++pos)
                if ((pos - 1) % 5 >= 3) QCOMPARE(u.power.at(pos - 1), QChar('0'));
        }
        QVERIFY(departments[0] != departments[1]);
        QVERIFY(findUser(conn(), made[1].name)->power != findUser(conn(), made[2].name)->power);
        QVERIFY(demo::addDemoUsers(conn()).isEmpty()); // a company with users keeps them
    }

    void initMakesTheFirstSupervisor() {
        QTemporaryDir dir;
        const QString file = dir.filePath("hr.db");
        QString text;
        QTextStream out(&text), err(&text);
        QCOMPARE(
            admin::run({"zqrs-admin", "init", "--db", file, "--admin", "王经理", "--admin-password", "s3"},
                       out, err),
            int(admin::Ok));
        QVERIFY(text.contains("王经理"));
        Connection c;
        c.open({0, file, {}, {}, {}});
        QCOMPARE(checkLogin(c, "王经理", "s3"), LoginCheck::Ok);
        QCOMPARE(supervisorName(c), QString("王经理"));
        c.close();
        QCOMPARE(
            admin::run({"zqrs-admin", "init", "--db", dir.filePath("b.db"), "--admin", "王经理"}, out, err),
            int(admin::Usage));
        QCOMPARE(admin::run({"zqrs-admin", "demo", "--db", dir.filePath("c.db"), "--persons", "5", "--admin",
                             "x", "--admin-password", "y"},
                            out, err),
                 int(admin::Usage));
    }
};

ZQ_DB_TEST_MAIN(TestUsers)
#include "test_users.moc"
