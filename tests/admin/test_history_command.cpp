#include "AdminTest.h"

#include "services/Spreadsheets.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;
using test::exec;

class TestHistoryCommand : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    QStringList m_where;

    int history(const QStringList& args, QString* out = nullptr) {
        QString e;
        const int rc = test::runAdminProcess(QStringList{QStringLiteral("history")} + args + m_where, out, &e);
        if (rc != 0) qWarning("%s", qPrintable(e));
        return rc;
    }

private slots:
    void initTestCase() {
        test::freshDatabase();
        test::actAsSupervisor();
        exec("insert into tRsBasic (fCode,fName,fzt) values ('A01','张三',1)");
        exec("update tRsBasic set fMz='汉' where fCode='A01'");
        exec("insert into tRsBasic (fCode,fName,fzt) values ('B01','李四',1)");
        m_where = test::whereArgs(conn().settings());
    }

    void aPersonsHistory() {
        const QString file = m_dir.filePath("a01.xlsx");
        QString out;
        QCOMPARE(history({"--person", "A01", "--file", file}, &out), 0);
        QVERIFY(out.contains("4 行"));
        const SheetData sheet = ReadXlsx(file);
        QCOMPARE(sheet.rows.size(), 5); // the captions and four changes
        QCOMPARE(sheet.rows[1].cell(3), QStringLiteral("民族")); // newest first
    }

    void theCompanysChangesOfAPeriod() {
        const QString file = m_dir.filePath("all.csv");
        const QString today = QDate::currentDate().toString("yyyy-MM-dd");
        QCOMPARE(history({"--since", today, "--until", today, "--file", file}), 0);
        QCOMPARE(ReadCsv(file).rows.size(), 8); // the captions and 3 + 1 + 3 changes
        QCOMPARE(history({"--since", QDate::currentDate().addDays(1).toString("yyyy-MM-dd"), "--file", file}), 0);
        QCOMPARE(ReadCsv(file).rows.size(), 1);
    }

    void mistakesAreRefused() {
        const QString file = m_dir.filePath("x.csv");
        QCOMPARE(history({"--file", file}), 2);
        QCOMPARE(history({"--person", "A01", "--since", "2025-01-01", "--file", file}), 2);
        QCOMPARE(history({"--since", "2025-13-01", "--file", file}), 2);
    }
};

ZQ_DB_TEST_MAIN(TestHistoryCommand)
#include "test_history_command.moc"
