#include "TestDb.h"

#include "personnel/PersonCodeCascade.h"
#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/Recordset.h"

#include <QApplication>
#include <QTest>

using namespace zq;
using test::exec;

namespace {
int count(const QString& table, const QString& code) {
    Recordset rs(conn(), QStringLiteral("select count(*) from %1 where fcode='%2'").arg(table, code));
    return int(rs.val(0));
}

// The attendance module's table, which this system's own schema does not hold.
void createAttendanceTable() {
    exec("create table tKq_Data_day (fcode varchar(10), fdate varchar(10))");
}

// One row of each person in every table keyed by the code, and in the two that keep the old code.
void seed(const QStringList& tables) {
    for (const char* code : {"A01", "B02"}) {
        exec(QStringLiteral("insert into tRsBasic (fCode,fName,fzt) values ('%1','某人',1)").arg(code));
        for (const QString& t : tables + QStringList{"tRsBasic_P", "tRsDetail"})
            exec(QStringLiteral("insert into %1 (fcode) values ('%2')").arg(t, QLatin1String(code)));
    }
}
} // namespace

class TestCodeCascade : public QObject {
    Q_OBJECT

private slots:
    void init() { test::freshDatabase(); }

    void everyChildTableFollowsTheNewCode() {
        createAttendanceTable();
        seed(CodeCascadeTables());
        Transaction tx(conn());
        exec("update tRsBasic set fCode='A09' where fCode='A01'");
        CascadePersonCode("A01", "A09");
        tx.commit();
        for (const QString& t : CodeCascadeTables()) {
            QVERIFY2(count(t, "A01") == 0 && count(t, "A09") == 1, qPrintable(t));
            QVERIFY2(count(t, "B02") == 1, qPrintable(t)); // nobody else is touched
        }
        // The spouse and the extended details stay under the old code.
        for (const char* t : {"tRsBasic_P", "tRsDetail"}) {
            QCOMPARE(count(t, "A01"), 1);
            QCOMPARE(count(t, "A09"), 0);
        }
    }

    void missingTablesAreSkipped() {
        QStringList present = CodeCascadeTables();
        present.removeAll("tKq_Data_day");
        seed(present);
        exec("drop table trsCard");
        present.removeAll("trsCard");
        // Inside a transaction, as a save runs it: the skipped tables must not spoil it.
        Transaction tx(conn());
        CascadePersonCode("A01", "A09");
        tx.commit();
        for (const QString& t : present)
            QVERIFY2(count(t, "A09") == 1, qPrintable(t));
    }

    void failureInTheMiddleRollsEverythingBack() {
        createAttendanceTable();
        seed(CodeCascadeTables());
        // One table in the middle of the cascade refuses the change.
        if (test::onServer()) {
            exec("create function zq_refuse() returns trigger as $$ begin raise exception 'refused'; end $$ "
                 "language plpgsql");
            exec("create trigger zq_refuse before update on trsFamily for each row execute function "
                 "zq_refuse()");
        } else {
            exec("create trigger zq_refuse before update on trsFamily begin select raise(abort, 'refused'); "
                 "end");
        }
        QVERIFY(CodeCascadeTables().indexOf("trsFamily") > 0);
        {
            Transaction tx(conn());
            exec("update tRsBasic set fCode='A09' where fCode='A01'");
            QVERIFY_THROWS_EXCEPTION(DbError, CascadePersonCode("A01", "A09"));
        }
        QVERIFY(!conn().inTransaction());
        QCOMPARE(count("tRsBasic", "A01"), 1);
        for (const QString& t : CodeCascadeTables())
            QVERIFY2(count(t, "A01") == 1 && count(t, "A09") == 0, qPrintable(t));
    }
};

ZQ_DB_TEST_MAIN(TestCodeCascade)
#include "test_code_cascade.moc"
