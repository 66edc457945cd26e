#include "AdminTest.h"

#include "admin/Backup.h"
#include "admin/Demo.h"
#include "admin/DemoAdmin.h"
#include "shell/HistorySession.h"
#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/Schema.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;
using test::dropDatabase;
using test::newDatabase;
using test::runAdminProcess;
using test::whereArgs;

namespace {

constexpr int kPersons = 300;

// Every row of every table of the company, as sorted text: equal lists mean equal contents. The
// word index's tokens differ in form between the engines and are left out.
QStringList contents(Connection& c) {
    QStringList rows;
    for (const backup::TableImage& t : backup::companyTables(c)) {
        QSqlQuery q(c.database());
        q.setForwardOnly(true);
        if (!q.exec(QStringLiteral("select %1 from %2").arg(t.columns.join(QLatin1Char(',')), t.name))) {
            QTest::qFail(qPrintable(t.name), __FILE__, __LINE__);
            return {};
        }
        const int n = q.record().count();
        while (q.next()) {
            QStringList values{t.name.toLower()};
            for (int i = 0; i < n; ++i) {
                const QVariant v = q.value(i);
                values << (v.isNull()                                 ? QStringLiteral("<null>")
                           : v.typeId() == QMetaType::QByteArray ? QString::fromLatin1(v.toByteArray().toHex())
                                                                      : v.toString());
            }
            rows << values.join(QLatin1Char('|'));
        }
    }
    rows.sort();
    return rows;
}

QStringList contentsOf(const ConnectionSettings& s) {
    Connection c;
    c.open(s);
    return contents(c);
}

bool exists(const ConnectionSettings& s) {
    if (s.sqlData == 0) return QFileInfo::exists(s.userPath);
    Connection a;
    a.open(test::serverSettings());
    return Recordset(a, QStringLiteral("select count(*) from pg_database where datname='%1'").arg(s.defaultDb))
               .val(0) > 0;
}

// A second client that saves a new person and his family in one transaction, and notes the last
// one saved in the company's fax field: at any moment every table follows from the count saved.
class Saver {
public:
    explicit Saver(const ConnectionSettings& s) { m_c.open(s); }
    static QString code(int n) { return QStringLiteral("W%1").arg(n, 5, 10, QLatin1Char('0')); }
    void save() {
        const QString c = code(++m_saved);
        Transaction t(m_c);
        m_c.execute(QStringLiteral("insert into tRsBasic (fCode, fName, fzt) values (?, ?, 1)"),
                    {c, QStringLiteral("新员工")});
        m_c.execute(QStringLiteral("insert into tRsFamily (fCode, fName, fCh) values (?, ?, ?)"),
                    {c, QStringLiteral("家属"), QStringLiteral("配偶")});
        m_c.execute(QStringLiteral("update myCompany set fax=?"), {c});
        t.commit();
    }
    int saved() const { return m_saved; }
    // What the company held when `n` had been saved.
    QStringList contentsAt(int n) {
        // The later saves undone leave no history of their own, and their history goes with them.
        HistoryOff quiet(m_c);
        SetHistoryPurging(m_c, true);
        Transaction t(m_c);
        m_c.execute(QStringLiteral("delete from tRsHistory where fCode like 'W%' and fCode>?"), {code(n)});
        m_c.execute(QStringLiteral("delete from tRsBasic where fCode like 'W%' and fCode>?"), {code(n)});
        m_c.execute(QStringLiteral("delete from tRsFamily where fCode like 'W%' and fCode>?"), {code(n)});
        m_c.execute(QStringLiteral("update myCompany set fax=?"), {code(n)});
        const QStringList rows = contents(m_c);
        SetHistoryPurging(m_c, false);
        return rows; // rolled back
    }

private:
    Connection m_c;
    int m_saved = 0;
};

QStringList serverArgs(const ConnectionSettings& s) {
    return {QStringLiteral("--user"), s.userId, QStringLiteral("--password"), s.password};
}

} // namespace

class TestBackup : public QObject {
    Q_OBJECT

    ConnectionSettings m_company;
    QStringList m_where;

private slots:
    void init() {
        m_company = test::freshDatabase();
        demo::Options o;
        o.persons = kPersons;
        o.seed = 11;
        demo::fill(conn(), o);
        conn().close();
        m_where = whereArgs(m_company);
    }

    // A backup taken while another client saves holds the company as it was at one moment.
    void backupWhileAnotherClientSaves() {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("b.zqbak"));
        Saver saver(m_company);
        for (int i = 0; i < 10; ++i)
            saver.save();
        QProcess p;
        test::startAdmin(p, QStringList{QStringLiteral("backup")} + m_where + QStringList{"--to", file});
        QVERIFY(p.waitForStarted());
        while (!p.waitForFinished(1))
            saver.save();
        const int during = saver.saved();
        for (int i = 0; i < 10; ++i)
            saver.save();
        const QString out = QString::fromUtf8(p.readAllStandardOutput());
        QVERIFY2(p.exitCode() == admin::Ok, qPrintable(out + p.readAllStandardError()));
        QVERIFY2(out.contains(QStringLiteral("行数和校验和都与源数据一致")), qPrintable(out));

        QStringList where;
        const ConnectionSettings target = newDatabase(dir, QStringLiteral("snap"), where);
        QString rout, rerr;
        QCOMPARE(runAdminProcess(QStringList{"restore", file} + where, &rout, &rerr), int(admin::Ok));
        int at = 0;
        {
            Connection r;
            r.open(target);
            at = int(Recordset(r, "select count(*) from tRsBasic where fCode like 'W%'").val(0));
        }
        QVERIFY2(at >= 10 && at <= during, qPrintable(QStringLiteral("%1 of %2").arg(at).arg(during)));
        const QStringList restored = contentsOf(target);
        const QStringList expected = saver.contentsAt(at);
        QCOMPARE(restored.size(), expected.size());
        QCOMPARE(restored, expected);
        dropDatabase(target);
    }

    // A backup, restore or copy killed midway leaves the source as it was and nothing under the
    // target's name (or, had it just finished, the whole target); run again, it succeeds.
    void killedRunsLeaveNoHalfTarget() {
        QTemporaryDir dir;
        const QStringList before = contentsOf(m_company);
        const QString file = dir.filePath(QStringLiteral("k.zqbak"));
        const int tables = int([&] {
            Connection c;
            c.open(m_company);
            return backup::companyTables(c).size();
        }());
        // A file's backup checks the source, copies its pages and checks the copy: killed in the
        // check of the copy. A server's reads the rows into the file first, then checks it.
        const int checksBefore = test::onServer() ? 0 : tables;
        killMidway(QStringList{QStringLiteral("backup")} + m_where + QStringList{"--to", file, "--verbose"},
                   QStringLiteral("核对 "), checksBefore + 1);
        QCOMPARE(contentsOf(m_company), before);
        if (QFileInfo::exists(file)) QFile::remove(file); // finished before the kill: fine, made again
        QCOMPARE(runAdminProcess(QStringList{QStringLiteral("backup")} + m_where + QStringList{"--to", file}), 0);
        QVERIFY(!QFileInfo::exists(file + QStringLiteral(".part")));

        QStringList where;
        const ConnectionSettings target = newDatabase(dir, QStringLiteral("killed"), where);
        const QStringList restore = QStringList{QStringLiteral("restore"), file} + where;
        killMidway(restore + QStringList{"--verbose"}, QStringLiteral("写入 "), 3);
        QVERIFY2(!exists(target) || contentsOf(target) == before, "a half restored company");
        dropDatabase(target);
        if (target.sqlData == 0) QFile::remove(target.userPath);
        QString out, err;
        QCOMPARE(runAdminProcess(restore, &out, &err), 0);
        QCOMPARE(contentsOf(target), before);
        dropDatabase(target);

        if (!test::onServer()) return;
        // A file copied to the server, killed midway.
        const QString company = dir.filePath(QStringLiteral("c.db"));
        QCOMPARE(runAdminProcess({"restore", file, "--db", company}), 0);
        ConnectionSettings server = test::serverSettings();
        server.defaultDb = QStringLiteral("zqt_copykill_%1").arg(QCoreApplication::applicationPid());
        dropDatabase(server);
        const QStringList copy = QStringList{"copy", "--db", company, "--to-server", server.userPath, "--database",
                                             server.defaultDb} +
                                 serverArgs(server);
        killMidway(copy + QStringList{"--verbose"}, QStringLiteral("写入 "), 3);
        QVERIFY2(!exists(server) || contentsOf(server) == before, "a half copied company");
        QCOMPARE(contentsOf({0, company, {}, {}, {}}), before);
        dropDatabase(server);
        QCOMPARE(runAdminProcess(copy, &out, &err), 0);
        QCOMPARE(contentsOf(server), before);
        dropDatabase(server);
    }

    // A file company copied to the server and back holds the same rows, keys and word index.
    void copyFileToServerAndBack() {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("from.db"));
        const QString back = dir.filePath(QStringLiteral("back.db"));
        if (!test::onServer()) {
            // On the file engine alone: a file to a file through a backup.
            const QString b = dir.filePath(QStringLiteral("f.zqbak"));
            QCOMPARE(runAdminProcess(QStringList{"backup"} + m_where + QStringList{"--to", b}), 0);
            QCOMPARE(runAdminProcess({"restore", b, "--db", back}), 0);
            QCOMPARE(contentsOf({0, back, {}, {}, {}}), contentsOf(m_company));
            return;
        }
        QCOMPARE(runAdminProcess(QStringList{"copy"} + m_where + QStringList{"--to-db", file} +
                                 QStringList{"--from-server", m_company.userPath}),
                 int(admin::Usage)); // --database and --from-server name the source, --db is no option here
        // Server to file, file to a new server database, and back to a file.
        QString out, err;
        QCOMPARE(runAdminProcess(QStringList{"copy", "--from-server", m_company.userPath, "--database",
                                             m_company.defaultDb, "--to-db", file} +
                                     serverArgs(m_company),
                                 &out, &err),
                 0);
        QVERIFY2(out.contains(QStringLiteral("已核对")), qPrintable(out + err));
        ConnectionSettings server = test::serverSettings();
        server.defaultDb = QStringLiteral("zqt_roundtrip_%1").arg(QCoreApplication::applicationPid());
        dropDatabase(server);
        QCOMPARE(runAdminProcess(QStringList{"copy", "--db", file, "--to-server", server.userPath, "--database",
                                             server.defaultDb} +
                                     serverArgs(server),
                                 &out, &err),
                 0);
        QCOMPARE(runAdminProcess(QStringList{"copy", "--from-server", server.userPath, "--database",
                                             server.defaultDb, "--to-db", back} +
                                     serverArgs(server),
                                 &out, &err),
                 0);
        const QStringList original = contentsOf({0, file, {}, {}, {}});
        QVERIFY(original.size() > kPersons * 10);
        QCOMPARE(contentsOf({0, back, {}, {}, {}}), original);
        QCOMPARE(contentsOf(server).size(), original.size());
        // The word index was made anew on each side, alike.
        const QString tokens = QStringLiteral("select fcode, ftokens from zq_findtext order by ftable, fcode");
        {
            Connection a, b;
            a.open({0, file, {}, {}, {}});
            b.open({0, back, {}, {}, {}});
            Recordset ra(a, tokens), rb(b, tokens);
            int n = 0;
            for (; !ra.eof() && !rb.eof(); ra.moveNext(), rb.moveNext(), ++n) {
                QCOMPARE(rb.text(0), ra.text(0));
                QCOMPARE(rb.text(1), ra.text(1));
                QVERIFY(!ra.text(1).isEmpty());
            }
            QVERIFY(ra.eof() && rb.eof() && n > 0);
        }
        {
            // The keys go on after the copied ones, and the word index finds the papers.
            Connection c;
            c.open(server);
            const double last = Recordset(c, "select max(fID) from tSysLog").val(0);
            c.execute(QStringLiteral("insert into tSysLog (fUser) values ('x')"));
            QCOMPARE(Recordset(c, "select max(fID) from tSysLog").val(0), last + 1);
            QCOMPARE(Recordset(c, "select count(*) from zq_findtext where length(ftokens::text)>0").val(0),
                     Recordset(c, "select count(*) from zq_findtext").val(0));
        }
        // A backup of the file restored on the server holds the same rows.
        const QString fromFile = dir.filePath(QStringLiteral("file.zqbak"));
        QCOMPARE(runAdminProcess({"backup", "--db", file, "--to", fromFile}), 0);
        ConnectionSettings restored = server;
        restored.defaultDb += QStringLiteral("_r");
        dropDatabase(restored);
        QCOMPARE(runAdminProcess(QStringList{"restore", fromFile} + whereArgs(restored), &out, &err), 0);
        QCOMPARE(contentsOf(restored), original);
        dropDatabase(restored);
        // A target that holds a company already is refused, and left alone.
        QCOMPARE(runAdminProcess(QStringList{"copy", "--db", file, "--to-server", server.userPath, "--database",
                                             server.defaultDb} +
                                     serverArgs(server),
                                 &out, &err),
                 int(admin::Failed));
        QVERIFY2(err.contains(QStringLiteral("已有数据库")), qPrintable(err));
        dropDatabase(server);
    }

    // Restore takes new targets and whole backups only, and says why it refuses.
    void restoreRefusesWithAReason() {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("r.zqbak"));
        QCOMPARE(runAdminProcess(QStringList{"backup"} + m_where + QStringList{"--to", file}), 0);
        QString out, err;
        // Onto the company itself.
        QCOMPARE(runAdminProcess(QStringList{"restore", file} + m_where, &out, &err), int(admin::Failed));
        QVERIFY2(err.contains(QStringLiteral("已存在")) || err.contains(QStringLiteral("已有数据库")), qPrintable(err));
        // A backup twice over is refused.
        QCOMPARE(runAdminProcess(QStringList{"backup"} + m_where + QStringList{"--to", file}, &out, &err),
                 int(admin::Failed));
        QVERIFY2(err.contains(QStringLiteral("已存在")), qPrintable(err));

        const QString target = dir.filePath(QStringLiteral("new.db"));
        // A company database is no backup.
        if (!test::onServer()) {
            QCOMPARE(runAdminProcess({"restore", m_company.userPath, "--db", target}, &out, &err), int(admin::Failed));
            QVERIFY2(err.contains(QStringLiteral("不是本系统的备份文件")), qPrintable(err));
        }
        // Damaged in the middle, or cut short.
        QFile f(file);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray whole = f.readAll();
        f.close();
        const QString damaged = dir.filePath(QStringLiteral("damaged.zqbak"));
        QByteArray bytes = whole;
        for (qsizetype i = bytes.size() / 2; i < bytes.size() / 2 + 8192 && i < bytes.size(); ++i)
            bytes[i] = char(i * 7);
        for (const QByteArray& b : {bytes, whole.left(whole.size() / 2)}) {
            QFile::remove(damaged);
            QFile d(damaged);
            QVERIFY(d.open(QIODevice::WriteOnly));
            d.write(b);
            d.close();
            QCOMPARE(runAdminProcess({"restore", damaged, "--db", target}, &out, &err), int(admin::Failed));
            QVERIFY2(err.contains(QStringLiteral("损坏")), qPrintable(err));
            QVERIFY(!QFileInfo::exists(target));
            QVERIFY(!QFileInfo::exists(target + QStringLiteral(".part")));
        }
        QCOMPARE(runAdminProcess({"restore", dir.filePath("none.zqbak"), "--db", target}, &out, &err),
                 int(admin::Failed));
        QVERIFY2(err.contains(QStringLiteral("不存在")), qPrintable(err));
    }

    // A backup of an older schema is upgraded as it is restored.
    void olderBackupIsUpgraded() {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("old.zqbak"));
        QCOMPARE(runAdminProcess(QStringList{"backup"} + m_where + QStringList{"--to", file}), 0);
        const int older = schema::latestVersion() - 1;
        {
            // What the program of one version before would have written: its version, and no index
            // that the last upgrade adds.
            Connection b;
            b.open({0, file, {}, {}, {}});
            b.execute(QStringLiteral("update zq_schema set version=%1").arg(older));
            b.execute(QStringLiteral("update zq_backup_info set fValue='%1' where fKey='schema'").arg(older));
            backup::Tables t{{QStringLiteral("zq_schema"), {QStringLiteral("version")}, {}, 0, {}}};
            backup::measure(b, t);
            b.execute(QStringLiteral("update zq_backup_table set fChecksum=? where lower(fName)='zq_schema'"),
                      {t[0].checksum});
        }
        QStringList where;
        const ConnectionSettings target = newDatabase(dir, QStringLiteral("older"), where);
        QString out, err;
        QCOMPARE(runAdminProcess(QStringList{"restore", file} + where, &out, &err), 0);
        QVERIFY2(out.contains(QStringLiteral("已升级到 %1").arg(schema::latestVersion())), qPrintable(out));
        Connection c;
        c.open(target);
        QCOMPARE(schema::currentVersion(c), schema::latestVersion());
        QCOMPARE(Recordset(c, "select count(*) from tRsBasic").val(0), double(kPersons));
        c.close();
        dropDatabase(target);
    }

    // --keep keeps the newest backups of this company in the folder, and only those.
    void keepRemovesTheOldest() {
        QTemporaryDir dir;
        const QString name = test::onServer() ? m_company.defaultDb : QFileInfo(m_company.userPath).completeBaseName();
        for (const char* stamp : {"20200101-000000", "20210101-000000", "20220101-000000"}) {
            QFile f(dir.filePath(name + QLatin1Char('-') + QLatin1String(stamp) + QStringLiteral(".zqbak")));
            QVERIFY(f.open(QIODevice::WriteOnly));
        }
        QFile other(dir.filePath(QStringLiteral("another-20190101-000000.zqbak")));
        QVERIFY(other.open(QIODevice::WriteOnly));
        other.close();
        QString out, err;
        QCOMPARE(runAdminProcess(QStringList{"backup"} + m_where + QStringList{"--to", dir.path() + "/", "--keep", "2"},
                                 &out, &err),
                 0);
        QStringList left = QDir(dir.path()).entryList(QDir::Files, QDir::Name);
        QCOMPARE(left.size(), 3);
        QCOMPARE(left[0], QStringLiteral("another-20190101-000000.zqbak"));
        QCOMPARE(left[1], name + QStringLiteral("-20220101-000000.zqbak"));
        QVERIFY(left[2].startsWith(name + QLatin1Char('-')));
        QVERIFY2(out.contains(QStringLiteral("已删除旧的备份")), qPrintable(out));
        QCOMPARE(runAdminProcess(QStringList{"backup"} + m_where + QStringList{"--to", dir.filePath("x.zqbak"), "--keep", "2"},
                                 &out, &err),
                 int(admin::Usage));
    }

private:
    // Starts zqrs-admin, kills it once its output holds `marker` `times` times, and waits for it.
    static void killMidway(const QStringList& args, const QString& marker, int times) {
        QProcess p;
        test::startAdmin(p, args);
        QVERIFY(p.waitForStarted());
        QString seen;
        while (seen.count(marker) < times && p.waitForReadyRead(60000))
            seen += QString::fromUtf8(p.readAllStandardOutput());
        p.kill();
        p.waitForFinished();
        QVERIFY2(seen.count(marker) >= times, qPrintable(seen));
    }
};

ZQ_DB_TEST_MAIN(TestBackup)
#include "test_backup.moc"
