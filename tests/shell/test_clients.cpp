#include "TestDb.h"

#include "shell/ui/WidgetPrompts.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"

#include <QAbstractFileIconProvider>
#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

using namespace zq;

namespace {

// The database as the second client's command line names it.
QString databaseArg(const ConnectionSettings& s) {
    if (s.sqlData == 0) return s.userPath;
    return QStringLiteral("pg:%1:%2:%3").arg(s.userPath, s.userId, s.defaultDb);
}

QProcess* startClient(const ConnectionSettings& s, const QStringList& args) {
    auto* p = new QProcess;
    p->start(QStringLiteral(ZQ_TEST_CLIENT_EXE), QStringList{databaseArg(s)} + args);
    return p;
}

// Runs a client to its end and gives what it printed.
QString runClient(const ConnectionSettings& s, const QStringList& args) {
    std::unique_ptr<QProcess> p(startClient(s, args));
    if (!p->waitForFinished(120000) || p->exitCode() != 0)
        return QStringLiteral("client failed: ") + QString::fromUtf8(p->readAllStandardError());
    return QString::fromUtf8(p->readAllStandardOutput()).trimmed();
}

} // namespace

class TestClients : public QObject {
    Q_OBJECT
    ConnectionSettings m_db;

private slots:
    void init() { m_db = test::freshDatabase(); }

    void addingAtOnceKeepsEverySaveUnderItsOwnKey_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("table");
        QTest::newRow("meetings") << "meeting" << "tRs_meeting";
        QTest::newRow("notices") << "notice" << "tRs_News";
        QTest::newRow("reports") << "report" << "tRs_RptFlow";
    }
    void addingAtOnceKeepsEverySaveUnderItsOwnKey() {
        // Two clients each add 150 rows as fast as they can: on the file database every writer waits
        // its turn (none fails for a lock), on the server a key taken by the other is taken anew.
        QFETCH(QString, kind);
        QFETCH(QString, table);
        const QStringList args{QStringLiteral("add"), kind, QStringLiteral("150")};
        std::unique_ptr<QProcess> a(startClient(m_db, args)), b(startClient(m_db, args));
        for (QProcess* p : {a.get(), b.get()}) {
            QVERIFY(p->waitForFinished(120000));
            QCOMPARE(p->exitCode(), 0);
            const QString said = QString::fromUtf8(p->readAllStandardOutput()).trimmed();
            QVERIFY2(said.startsWith(QLatin1String("ok 150 failed 0")), qPrintable(said));
        }
        QCOMPARE(test::one(QStringLiteral("select count(*) from ") + table), QStringLiteral("300"));
        QCOMPARE(test::one(QStringLiteral("select count(distinct fID) from ") + table), QStringLiteral("300"));
        // The key is a constraint too: a row under a key already stored is refused.
        const QString id = test::one(QStringLiteral("select min(fID) from ") + table);
        QVERIFY_THROWS_EXCEPTION(DuplicateKeyError, test::exec(QStringLiteral("insert into ") + table +
                                                               QStringLiteral(" (fID, fDate) values (") + id +
                                                               QStringLiteral(", '2026-01-01')")));
    }

    void fileDialogLeavesTheDatabaseLocksAlone() {
        if (test::onServer()) QSKIP("a file database's own locks");
        // A save waits in the journal until a checkpoint; the client holds the database open.
        test::exec(QStringLiteral("insert into tRs_News (fID, fDate, fContent) values (1, '2026-01-01', 'a')"));
        const QString wal = m_db.userPath + QStringLiteral("-wal");
        QVERIFY(QFileInfo::exists(wal));

        // The photo picker lists the database's folder, with each file's icon and type.
        FileRequest r;
        r.title = QStringLiteral("照片");
        r.filter = QStringLiteral("图片 (*.jpg)|*.jpg|所有文件 (*.*)|*.*");
        r.filterIndex = 2;
        r.fileName = QFileInfo(m_db.userPath).absolutePath() + QStringLiteral("/photo.jpg");
        const auto dlg = MakeFileDialog(r, nullptr);
        dlg->show();
        const QFileInfo dbFile(m_db.userPath);
        dlg->iconProvider()->icon(dbFile);
        dlg->iconProvider()->type(dbFile);
        QTest::qWait(1500); // the list fetches icons and types in the background
        dlg->close();

        // Another program opens and closes the database. Had this process lost its locks, that
        // program would take itself for the last user and remove the journal under us.
        QCOMPARE(runClient(m_db, {QStringLiteral("touch")}), QString());
        QVERIFY(QFileInfo::exists(wal));
        test::exec(QStringLiteral("insert into tRs_News (fID, fDate, fContent) values (2, '2026-01-02', 'b')"));
        QCOMPARE(runClient(m_db, {QStringLiteral("count"), QStringLiteral("tRs_News")}), QStringLiteral("2"));
    }
};

ZQ_DB_TEST_MAIN(TestClients)
#include "test_clients.moc"
