#include "TestDb.h"

#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QApplication>
#include <QTest>

using namespace zq;

class TestConnection : public QObject {
    Q_OBJECT
private slots:
    void init() {
        test::freshDatabase();
        conn().execute("delete from myCompany");
    }

    void openConnIsIdleWhenOpen() {
        QCOMPARE(conn().state(), 1);
        QCOMPARE(OpenConn(0, conn(), "/nonexistent", {}, {}, {}), qint16(0));
        QCOMPARE(conn().state(), 1);
    }

    void sqlDataOutOfByteRangeOverflows() {
        QVERIFY_THROWS_EXCEPTION(OverflowError, OpenConn(-1, conn(), {}, {}, {}, {}));
        QVERIFY_THROWS_EXCEPTION(OverflowError, OpenConn(256, conn(), {}, {}, {}, {}));
    }

    void recordCountOnForwardOnly() {
        conn().execute("insert into myCompany (CompCode) values ('A')");
        conn().execute("insert into myCompany (CompCode) values ('B')");
        Recordset rs(conn(), "select CompCode, FullName from myCompany order by CompCode");
        QCOMPARE(rs.recordCount(), 2);
        QCOMPARE(rs.text("compcode"), QString("A"));
        QCOMPARE(rs.text("FULLNAME"), QString()); // null reads as empty
        QCOMPARE(rs.val(1), 0.0);
        rs.moveNext();
        QCOMPARE(rs.text(0), QString("B"));
        rs.moveNext();
        QVERIFY(rs.eof());
    }

    void textComparisonIgnoresCase() {
        conn().execute("insert into myCompany (CompCode, CompName) values ('tRsBasic', 'x')");
        Recordset rs(conn(), "select count(*) from myCompany where CompCode='trsbasic'");
        QCOMPARE(rs.val(0), 1.0);
        Recordset rs2(conn(), "select count(*) from myCompany where CompCode like 'TRS%'");
        QCOMPARE(rs2.val(0), 1.0);
    }

    void quoteOrNulInValueFailsBeforeTheDatabase() {
        QVERIFY_THROWS_EXCEPTION(DbError, quoted("O'Brien"));
        QCOMPARE(quoted("张三"), QString("'张三'"));
        // A NUL fails whole instead of cutting the value, or the statement, short.
        const QString withNul = QStringLiteral("张") + QChar(u'\0') + QStringLiteral("三");
        QVERIFY_THROWS_EXCEPTION(DbError, quoted(withNul));
        QVERIFY_THROWS_EXCEPTION(DbError, checked(withNul));
    }

    void writesThroughRecordsetAndTransactions() {
        {
            Recordset rs(conn(), "select CompCode, CompName from myCompany", Cursor::Keyset,
                         Lock::Optimistic);
            rs.addNew();
            rs.setValue("compcode", "X'1"); // bound, so a quote is stored as it is
            rs.setValue("CompName", "甲");
            rs.update();
        }
        {
            Recordset rs(conn(), "select CompCode, CompName from myCompany", Cursor::Static,
                         Lock::BatchOptimistic);
            QCOMPARE(rs.recordCount(), 1);
            rs.setValue("CompName", "乙");
            rs.update();
            rs.updateBatch();
        }
        {
            // Two writes to one row through one recordset: the row is still found the second time.
            Recordset rs(conn(), "select CompCode, CompName from myCompany", Cursor::Keyset,
                         Lock::Optimistic);
            rs.setValue("CompName", "丁");
            rs.update();
            rs.setValue("CompName", "乙");
            rs.update();
            rs.addNew();
            rs.setValue("CompCode", "N");
            rs.update();
            rs.setValue("CompName", "新");
            rs.update();
            rs.deleteRow();
        }
        {
            Transaction t(conn());
            conn().execute("update myCompany set CompName='丙'");
            // no commit: rolled back
        }
        Recordset rs(conn(), "select CompCode, CompName from myCompany");
        QCOMPARE(rs.text(0), QString("X'1"));
        QCOMPARE(rs.text(1), QString("乙"));
    }

    void failedStatementKeepsTransactionUsable() {
        Transaction t(conn());
        QVERIFY_THROWS_EXCEPTION(DbError, conn().execute("select * from NoSuchTable"));
        conn().execute("insert into myCompany (CompCode) values ('Z')");
        t.commit();
        Recordset rs(conn(), "select count(*) from myCompany");
        QCOMPARE(rs.val(0), 1.0);
    }

    // The server keeps statements with bound values prepared: one runs again with new values,
    // after it failed inside a transaction, and on a connection opened anew.
    void boundStatementsRunAgainWithNewValues() {
        const QString add = "insert into tRs_Bm (fCode,fName) values (?,?)";
        const QString two = "select fName from tRs_Bm where fCode in (?,?) order by fCode";
        conn().execute(add, {"T1", "甲"});
        conn().execute(add, {"T2", "乙"});
        {
            Transaction t(conn());
            QVERIFY_THROWS_EXCEPTION(DuplicateKeyError, conn().execute(add, {"T1", "丙"}));
            conn().execute(add, {"T3", "丙"});
            t.commit();
        }
        QCOMPARE(ReadRows(two, {"T1", "T3"}), (QVector<QStringList>{{"甲"}, {"丙"}}));
        QCOMPARE(ReadRows(two, {"T2", "T9"}), (QVector<QStringList>{{"乙"}}));
        const ConnectionSettings settings = conn().settings();
        conn().close();
        conn().open(settings);
        QCOMPARE(ReadRows(two, {"T3", "T2"}), (QVector<QStringList>{{"乙"}, {"丙"}}));
    }

    void valConversion() {
        QCOMPARE(Val(""), 0.0);
        QCOMPARE(Val("12abc"), 12.0);
        QCOMPARE(Val(" -3.5"), -3.5);
        QCOMPARE(Val("1e3"), 1000.0);
        QCOMPARE(Val("abc"), 0.0);
    }
};

ZQ_DB_TEST_MAIN(TestConnection)
#include "test_connection.moc"
