#include "TestDb.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/Rights.h"
#include "shell/SqlText.h"
#include "shell/Users.h"

#include <QApplication>
#include <QTest>

using namespace zq;

namespace {
int logLines() {
    Recordset rs(conn(), "select count(*) from tSysLog");
    return int(rs.val(0));
}

LogEntry lastLog() {
    LogFilter f;
    f.limit = 1;
    const QVector<LogEntry> e = readLog(conn(), f);
    return e.isEmpty() ? LogEntry() : e.first();
}

void setModule(const QString& key, const QString& set) {
    conn().execute(QStringLiteral("update tSysFunc set %1 where Model_Name=%2").arg(set, quoted(key)));
}

// Answers the input box like a user, after noting how many log lines there were at that moment.
class WatchingPrompts : public ScriptedPrompts {
public:
    int linesWhenAsked = -1;
    std::optional<QString> input(const QString& prompt, const QString& title,
                                 const QString& defaultText) override {
        linesWhenAsked = logLines();
        return ScriptedPrompts::input(prompt, title, defaultText);
    }
};
} // namespace

class TestRights : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;
    int m_logins = 0;

private slots:
    void init() {
        test::freshDatabase();
        m_prompts = &scriptPrompts();
        m_logins = 0;
        setLoginHook({});
        Globals& g = G();
        g.UserName = "张三";
        g.ZgName = "系统管理员";
        g.myPower = noPower();
        g.myModel.clear();
        g.Language = 0;
        g.AppTitle = "人事管理系统";
    }

    void cleanup() {
        setLoginHook({});
        installPrompts(nullptr);
    }

    void emptyModelLoggedInReadsNothing() {
        conn().close();
        G().UserPath = "/nonexistent/none.db"; // any read would fail
        G().SQLData = 0;
        QCOMPARE(CheckModel(QString(), 0), qint16(1));
        QVERIFY(!conn().isOpen());
        QVERIFY(m_prompts->shown().isEmpty());
    }

    void emptyModelNotLoggedInRunsTheLoginFirst() {
        const ConnectionSettings db = conn().settings();
        G().UserName.clear();
        G().myModel = "mnuRsbm";
        setLoginHook([&](const LoginRequest& rq, LoginResult& r) {
            ++m_logins;
            // The login column: database, settings file, module, language.
            if (rq.database.userPath != db.userPath || rq.myModel != "mnuRsbm" || rq.language != 0)
                return false;
            if (!rq.settingsFile.endsWith("/zqset.db")) return false;
            r.userName = "李四";
            r.compName = "示范公司";
            r.accName = "总帐";
            r.myPower = fullPower();
            r.zgName = "王五";
            r.myModel = "mnuRsManIn";
            r.extra = "x";
            return true;
        });
        G().PowerPath = "/tmp/zqpower/";
        QCOMPARE(CheckModel(QString(), 0), qint16(1));
        QCOMPARE(m_logins, 1);
        const Globals& g = G();
        QCOMPARE(g.UserName, QString("李四"));
        QCOMPARE(g.CompName, QString("示范公司"));
        QCOMPARE(g.AccName, QString("总帐"));
        QCOMPARE(g.myPower, fullPower());
        QCOMPARE(g.ZgName, QString("王五"));
        QCOMPARE(g.myModel, QString("mnuRsManIn"));
        QCOMPARE(g.UserPath, db.userPath);
        QCOMPARE(LoginExtra(), QString("x"));

        // Logged in now: no second login.
        QVERIFY(CheckModel("mnuRsOthMove", 0) != 0);
        QCOMPARE(m_logins, 1);
    }

    void givingUpRefusesEverything() {
        G().UserName.clear();
        setLoginHook([&](const LoginRequest&, LoginResult&) {
            ++m_logins;
            return false;
        });
        G().myPower = fullPower();
        QCOMPARE(CheckModel(QString(), 0), qint16(0));
        QCOMPARE(CheckModel("mnuRsOthMove", 0), qint16(0));
        QCOMPARE(m_logins, 2);
        QVERIFY(G().UserName.isEmpty());
        QCOMPARE(logLines(), 0);

        // A name without a database file is no login either.
        setLoginHook([](const LoginRequest&, LoginResult& r) {
            r.userName = "李四";
            r.database = {0, "", "", "", ""};
            return true;
        });
        QCOMPARE(CheckModel(QString(), 0), qint16(0));

        // No login window at all: the same as giving up.
        setLoginHook({});
        G().UserName.clear();
        QCOMPARE(CheckModel(QString(), 0), qint16(0));
    }

    void serverLoginLeavesTheServerInUserPath() {
        G().UserName.clear();
        ConnectionSettings chosen;
        setLoginHook([&](const LoginRequest&, LoginResult& r) {
            r.userName = "李四";
            r.database = chosen;
            return true;
        });
        chosen = {1, "", "pw", "hr", "company"};
        QCOMPARE(CheckModel(QString(), 0), qint16(1));
        QCOMPARE(G().UserPath, QString("SQL Server"));
        QCOMPARE(G().SQLData, qint16(1));
        QCOMPARE(G().Default, QString("company"));
        QVERIFY(!conn().isOpen()); // it was open on another database

        G().UserName.clear();
        chosen = {1, "dbhost:5433", "pw", "hr", "company"};
        QCOMPARE(CheckModel(QString(), 0), qint16(1));
        QCOMPARE(G().UserPath, QString("dbhost:5433"));
    }

    void resultIsThePositionTested() {
        G().myPower = fullPower();
        // mnuRsOthMove is the sixth module: positions 26 to 30.
        QCOMPARE(CheckModel("mnuRsOthMove", 0), qint16(26));
        QCOMPARE(CheckModel("mnuRsOthMove", 3), qint16(29));
        QCOMPARE(logLines(), 2);
        QCOMPARE(lastLog().text, QString("调令管理-删除"));
        QCOMPARE(lastLog().user, QString("张三"));
        QCOMPARE(lastLog().module, QString("mnuRsOthMove"));
        QVERIFY(m_prompts->shown().isEmpty());
    }

    void refusedPositionSaysSoAndLogsNothing() {
        QString power = noPower();
        power[26 - 1] = '1';
        power[28 - 1] = ' '; // a blank is refused like "0"
        G().myPower = power;
        QCOMPARE(CheckModel("mnuRsOthMove", 0), qint16(26));
        QCOMPARE(CheckModel("mnuRsOthMove", 1), qint16(0));
        QCOMPARE(CheckModel("mnuRsOthMove", 2), qint16(0));
        QCOMPARE(m_prompts->messages(), QStringList({"您无权进入!", "您无权进入!"}));
        QCOMPARE(m_prompts->shown().first().style, int(vbExclamation));
        QCOMPARE(m_prompts->shown().first().title, QString("人事管理系统"));
        QCOMPARE(logLines(), 1);
    }

    void serialMinusOneSkipsTheRightsButLogsAndAsks() {
        setModule("mnuRsOthMove", "SerialNo=-1, SecondPass=1, Password='pw'");
        G().myPower = noPower();
        m_prompts->answerInput(QString("pw"));
        QCOMPARE(CheckModel("mnuRsOthMove", 0), qint16(-1));
        m_prompts->answerInput(QString("pw"));
        QCOMPARE(CheckModel("mnuRsOthMove", 2), qint16(1));
        QCOMPARE(logLines(), 2);
        QCOMPARE(lastLog().text, QString("调令管理-修改"));
        QVERIFY(!m_prompts->messages().contains("您无权进入!"));
        QCOMPARE(m_prompts->shown().size(), 2);
        QCOMPARE(m_prompts->shown()[0].kind, ScriptedPrompts::Kind::Input);
        QCOMPARE(m_prompts->shown()[0].text, QString("Please input the Model password !"));
    }

    void positionsPast350AreRefused() {
        conn().execute("insert into tSysFunc (SerialNo, Model_Name, Model_Name_0, Model_Name_1, SecondPass, "
                       "Password, NoUse_) values (348, 'mnuLast', '末模块', '末模塊', 0, '', 0)");
        G().myPower = fullPower();
        QCOMPARE(CheckModel("mnuLast", 2), qint16(350));
        QCOMPARE(CheckModel("mnuLast", 3), qint16(0));
        // Even a longer rights string has nothing past position 350.
        G().myPower = QString(400, '1');
        QCOMPARE(CheckModel("mnuLast", 4), qint16(0));
        QCOMPARE(m_prompts->messages(), QStringList({"您无权进入!", "您无权进入!"}));
        QCOMPARE(HasPower(0), qint16(0));
    }

    void unusedModuleIsUnknownWithoutAMessage() {
        setModule("mnuRsOthMove", "NoUse_=1");
        G().myPower = fullPower();
        QCOMPARE(CheckModel("mnuRsOthMove", 0), qint16(0));
        QCOMPARE(CheckModel("调令管理", 0), qint16(0));
        QCOMPARE(CheckModel("mnuNoSuchThing", 0), qint16(0));
        QVERIFY(m_prompts->shown().isEmpty());
        QCOMPARE(logLines(), 0);
    }

    void secondPasswordComparedTrimmed() {
        setModule("mnuRsOthMove", "SecondPass=1, Password='  abc '");
        G().myPower = fullPower();
        m_prompts->answerInput(QString("abc  "));
        QCOMPARE(CheckModel("mnuRsOthMove", 1), qint16(27));

        m_prompts->clear();
        m_prompts->answerInput(QString("abd"));
        QCOMPARE(CheckModel("mnuRsOthMove", 1), qint16(0));
        QCOMPARE(m_prompts->messages(), QStringList("Deny Access: The Model password is not valid!"));
        QCOMPARE(m_prompts->shown().last().style, int(vbExclamation));

        // Cancelling the box is an empty answer.
        m_prompts->answerInput(std::nullopt);
        QCOMPARE(CheckModel("mnuRsOthMove", 1), qint16(0));

        // The password counts only while SecondPass is 1; the texts stay English in language 1.
        G().Language = 1;
        m_prompts->clear();
        m_prompts->answerInput(QString("x"));
        QCOMPARE(CheckModel("mnuRsOthMove", 0), qint16(0));
        QCOMPARE(m_prompts->shown().first().text, QString("Please input the Model password !"));
        setModule("mnuRsOthMove", "SecondPass=2");
        m_prompts->clear();
        QCOMPARE(CheckModel("mnuRsOthMove", 0), qint16(26));
        QVERIFY(m_prompts->shown().isEmpty());
    }

    void logLineIsWrittenBeforeThePasswordIsAsked() {
        auto watching = std::make_shared<WatchingPrompts>();
        installPrompts(watching);
        setModule("mnuRsOthMove", "SecondPass=1, Password='pw'");
        G().myPower = fullPower();
        watching->answerInput(QString("wrong"));
        QCOMPARE(CheckModel("mnuRsOthMove", 4), qint16(0));
        QCOMPARE(watching->linesWhenAsked, 1);
        QCOMPARE(lastLog().text, QString("调令管理-审核"));
    }

    void captionInPlaceOfTheKey() {
        G().myPower = fullPower();
        QString model = "调令管理";
        QCOMPARE(CheckModel(model, 0), qint16(26));
        QCOMPARE(model, QString("mnuRsOthMove"));

        // The caption of the language in use; the key itself matches without regard to case.
        G().Language = 1;
        model = "調令管理";
        QString caption, password = "kept";
        QCOMPARE(FindModel(model, caption, password), 26);
        QCOMPARE(model, QString("mnuRsOthMove"));
        QCOMPARE(caption, QString("調令管理"));
        QCOMPARE(password, QString());
        model = "MNURSOTHMOVE";
        QCOMPARE(FindModel(model, caption, password), 26);
        QCOMPARE(model, QString("mnuRsOthMove"));
    }

    void unknownModuleLeavesTheVariables() {
        QString model = "nothing", caption = "c", password = "p";
        QCOMPARE(FindModel(model, caption, password), 0);
        QCOMPARE(model, QString("nothing"));
        QCOMPARE(caption, QString("c"));
        QCOMPARE(password, QString("p"));
        // A quote fails the statement, and the error reaches the caller.
        model = "it's";
        QVERIFY_THROWS_EXCEPTION(DbError, FindModel(model, caption, password));
    }

    void findModelOpensTheConnection() {
        conn().close();
        QString model = "mnuRsbm", caption, password;
        QCOMPARE(FindModel(model, caption, password), 16);
        QVERIFY(conn().isOpen());
        QCOMPARE(caption, QString("部门管理"));
    }

    void writeLogRecordStoresOneLine() {
        G().myModel = "mnuRsManIn";
        WriteLogRecord("增加员工记录 [0001-张三]");
        // With conn closed the line goes through a connection of its own.
        const ConnectionSettings s = conn().settings();
        conn().close();
        G().UserName = "李四";
        WriteLogRecord("删除员工记录 [0002-王五]");
        conn().open(s);
        QCOMPARE(logLines(), 2);
        const LogEntry e = lastLog();
        QCOMPARE(e.user, QString("李四"));
        QCOMPARE(e.module, QString("mnuRsManIn"));
        QCOMPARE(e.text, QString("删除员工记录 [0002-王五]"));
        QCOMPARE(QDateTime::fromString(e.time, "yyyy-MM-dd hh:mm:ss").date(), QDate::currentDate());
    }
};

ZQ_DB_TEST_MAIN(TestRights)
#include "test_rights.moc"
