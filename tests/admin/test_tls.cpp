// Encrypted connections to the server: the test cluster also listens on 127.0.0.1 for encrypted
// sessions only, with a certificate for that address signed by a throwaway root.

#include "AdminTest.h"

#include "admin/DemoAdmin.h"
#include "shell/DbError.h"
#include "shell/Recordset.h"

#include <QApplication>
#include <QTest>

using namespace zq;

namespace {

ConnectionSettings overTcp(ServerTls::Mode mode, const QString& rootCert, const QString& host = {}) {
    ConnectionSettings s = test::serverSettings();
    s.userPath = (host.isEmpty() ? qEnvironmentVariable("ZQRS_PG_TLS_HOST") : host) + QLatin1Char(':') +
                 qEnvironmentVariable("ZQRS_PG_PORT");
    s.tls.mode = mode;
    s.tls.rootCert = rootCert;
    return s;
}

// The connection's refusal, or "" when it opened.
QString refusal(const ConnectionSettings& s) {
    try {
        Connection c;
        c.open(s);
        return {};
    } catch (const DbError& e) {
        return e.message().isEmpty() ? QStringLiteral("?") : e.message();
    }
}

} // namespace

class TestTls : public QObject {
    Q_OBJECT

    QString m_ca, m_otherCa;

private slots:
    void initTestCase() {
        m_ca = qEnvironmentVariable("ZQRS_PG_TLS_CA");
        m_otherCa = qEnvironmentVariable("ZQRS_PG_TLS_OTHER_CA");
        if (test::onServer())
            QVERIFY2(!m_ca.isEmpty() && !m_otherCa.isEmpty() && !qEnvironmentVariableIsEmpty("ZQRS_PG_TLS_HOST"),
                     "the test cluster has no encrypted listener (ZQRS_PG_TLS_*)");
    }

    void modesAreNamedAsOnTheCommandLine() {
        ServerTls::Mode m = ServerTls::Mode::Default;
        QVERIFY(ServerTls::parseMode(QStringLiteral("verify-full"), m));
        QCOMPARE(m, ServerTls::Mode::VerifyFull);
        QVERIFY(ServerTls::parseMode(QStringLiteral("require"), m));
        QCOMPARE(m, ServerTls::Mode::Require);
        QVERIFY(ServerTls::parseMode(QStringLiteral("off"), m));
        QCOMPARE(m, ServerTls::Mode::Off);
        QVERIFY(!ServerTls::parseMode(QStringLiteral("verify-ca"), m));
        QString out, err;
        QCOMPARE(test::runAdminProcess({"upgrade", "--server", "h", "--database", "d", "--tls", "maybe"}, &out, &err),
                 int(admin::Usage));
        QVERIFY2(err.contains(QStringLiteral("--tls")), qPrintable(err));
        QCOMPARE(test::runAdminProcess({"upgrade", "--db", "x.db", "--tls", "require"}, &out, &err), int(admin::Usage));
    }

    void aMissingRootCertificateIsNamed() {
        const QString message =
            refusal(overTcp(ServerTls::Mode::VerifyFull, QStringLiteral("/nonexistent/root.crt"), "127.0.0.1"));
        QVERIFY2(message.contains(QStringLiteral("根证书文件不存在")), qPrintable(message));
    }

    void verifyFullTakesTheServerItsRootSigned() {
        if (!test::onServer()) return; // the file database has no network to protect
        const ConnectionSettings s = overTcp(ServerTls::Mode::VerifyFull, m_ca);
        Connection c;
        c.open(s);
        QCOMPARE(Recordset(c, "select ssl::int from pg_stat_ssl where pid=pg_backend_pid()").val(0), 1.0);
        // Encrypted without a check of the certificate.
        QCOMPARE(refusal(overTcp(ServerTls::Mode::Require, {})), QString());
    }

    void verifyFullRefusesAnotherRootOrHost() {
        if (!test::onServer()) return;
        QVERIFY(!refusal(overTcp(ServerTls::Mode::VerifyFull, m_otherCa)).isEmpty());
        // The certificate names 127.0.0.1, not localhost, though both reach the same server.
        const QString wrongHost = refusal(overTcp(ServerTls::Mode::VerifyFull, m_ca, QStringLiteral("localhost")));
        QVERIFY2(wrongHost.contains(QStringLiteral("localhost")), qPrintable(wrongHost));
        // The listener lets no unencrypted session in.
        QVERIFY(!refusal(overTcp(ServerTls::Mode::Off, {})).isEmpty());
    }

    void adminCommandsTakeTheMode() {
        if (!test::onServer()) return;
        const ConnectionSettings s = overTcp(ServerTls::Mode::VerifyFull, m_ca);
        const QString db = QStringLiteral("zqt_tls_%1").arg(QCoreApplication::applicationPid());
        const QStringList where{"--server", s.userPath, "--database", db, "--user", s.userId};
        QString out, err;
        QCOMPARE(test::runAdminProcess(QStringList{"init"} + where + QStringList{"--tls", "verify-full", "--tls-root-cert",
                                                                                 m_otherCa},
                                       &out, &err),
                 int(admin::Failed));
        QVERIFY2(err.contains(QStringLiteral("certificate")), qPrintable(err));
        QCOMPARE(test::runAdminProcess(QStringList{"init"} + where + QStringList{"--tls", "verify-full", "--tls-root-cert", m_ca},
                                       &out, &err),
                 int(admin::Ok));
        QCOMPARE(test::runAdminProcess(QStringList{"upgrade"} + where + QStringList{"--tls", "off"}, &out, &err),
                 int(admin::Failed));
        ConnectionSettings d = test::serverSettings();
        d.defaultDb = db;
        test::dropDatabase(d);
    }
};

ZQ_DB_TEST_MAIN(TestTls)
#include "test_tls.moc"
