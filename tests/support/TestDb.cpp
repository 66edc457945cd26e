#include "TestDb.h"

#include "shell/Recordset.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/HistorySession.h"
#include "shell/Schema.h"

#include <cstdio>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace zq::test {

namespace {
QString env(const char* name) {
    return qEnvironmentVariable(name);
}

QTemporaryDir& tempDir() {
    static QTemporaryDir d;
    return d;
}

int serial = 0;
QString templateName;

QString runTag() {
    return QStringLiteral("%1_%2")
        .arg(QCoreApplication::applicationPid())
        .arg(QDateTime::currentMSecsSinceEpoch() % 100000);
}
} // namespace

bool onServer() {
    return env("ZQRS_TEST_BACKEND") == QLatin1String("pg");
}

ConnectionSettings serverSettings() {
    ConnectionSettings s;
    s.sqlData = 1;
    s.userPath = env("ZQRS_PG_HOST");
    if (!env("ZQRS_PG_PORT").isEmpty()) s.userPath += QLatin1Char(':') + env("ZQRS_PG_PORT");
    s.userId = env("ZQRS_PG_USER");
    s.password = env("ZQRS_PG_PASSWORD");
    s.defaultDb = QStringLiteral("postgres");
    return s;
}

ConnectionSettings freshDatabase() {
    conn().close();
    ConnectionSettings s;
    if (onServer()) {
        s = serverSettings();
        Connection admin;
        admin.open(s);
        // The schema is made once per program into a template; each test copies it.
        if (templateName.isEmpty()) {
            templateName = QStringLiteral("zqtpl_%1").arg(runTag());
            ConnectionSettings t = s;
            t.defaultDb = templateName;
            admin.close();
            schema::createDatabase(t);
            admin.open(s);
        }
        s.defaultDb = QStringLiteral("zqt_%1_%2").arg(runTag()).arg(++serial);
        admin.execute(QStringLiteral("create database %1 template %2").arg(s.defaultDb, templateName));
    } else {
        const QString tpl = tempDir().filePath(QStringLiteral("template.db"));
        if (!QFile::exists(tpl)) schema::createDatabase({0, tpl, {}, {}, {}});
        s.userPath = tempDir().filePath(QStringLiteral("test%1.db").arg(++serial));
        QFile::remove(s.userPath);
        QFile::copy(tpl, s.userPath);
        QFile::setPermissions(s.userPath, QFile::ReadOwner | QFile::WriteOwner);
    }
    useDatabase(s);
    conn().open(s);
    return s;
}

namespace {
void dropServerDatabases() {
    if (!onServer() || templateName.isEmpty()) return;
    conn().close();
    try {
        Connection admin;
        admin.open(serverSettings());
        const QString tag = templateName.mid(6);
        for (int i = 1; i <= serial; ++i)
            admin.execute(QStringLiteral("drop database if exists zqt_%1_%2").arg(tag).arg(i));
        admin.execute(QStringLiteral("drop database if exists %1").arg(templateName));
    } catch (const DbError&) {
        // A cluster that is stopped afterwards takes its databases with it.
    }
}
} // namespace

int runDbTest(QObject* test, int argc, char** argv) {
    if (onServer()) {
        const bool required = env("ZQRS_PG_REQUIRED") == QLatin1String("1");
        if (env("ZQRS_PG_HOST").isEmpty()) {
            if (required) {
                std::fprintf(stderr, "FAIL: the server database was started but ZQRS_PG_HOST is not set\n");
                return 1;
            }
            std::printf("SKIP: no server database (run ./test.sh to start one)\n");
            return kSkipped;
        }
        try {
            Connection probe;
            probe.open(serverSettings());
        } catch (const DbError& e) {
            std::fprintf(stderr, "%s: cannot reach the server database: %s\n", required ? "FAIL" : "SKIP",
                         qPrintable(e.message()));
            return required ? 1 : kSkipped;
        }
    }
    const int rc = QTest::qExec(test, argc, argv);
    dropServerDatabases();
    return rc;
}

void exec(const QString& sql) {
    conn().execute(sql);
}

void exec(const QString& sql, const QVariantList& values) {
    conn().execute(sql, values);
}

QString one(const QString& sql) {
    Recordset rs(conn(), sql);
    return rs.eof() ? QString() : rs.text(0);
}

void actAsSupervisor() {
    Globals& g = G();
    g.UserName = g.ZgName = QStringLiteral("admin");
    g.myPower = QString(350, QLatin1Char('1'));
    g.CurPersonCode.clear();
    g.CurPersonName.clear();
    if (conn().isOpen()) TagHistorySession(conn());
}

} // namespace zq::test
