#include "AdminTest.h"
#include "PdfTools.h"

#include "admin/Demo.h"
#include "admin/DemoAdmin.h"
#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/Users.h"
#include "services/Spreadsheets.h"

#include <QApplication>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;

namespace {

double count(const QString& sql) {
    Recordset rs(conn(), sql);
    return rs.val(0);
}

// What no print may change: the persons, the departments and the users with their hashes.
QStringList guarded() {
    QStringList out;
    for (const char* sql : {"select count(*) from tRsBasic", "select count(*) from tRs_Bm",
                            "select count(*) from tSysUser", "select count(*) from tSysLog"})
        out << QString::number(count(QString::fromLatin1(sql)));
    Recordset rs(conn(), "select fPassHash from tSysUser");
    out << rs.text(0);
    return out;
}

} // namespace

class TestPrintCommand : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    QString m_pdf;
    QStringList m_where;

    // zqrs-admin print with the test's database and PDF; gives the exit code.
    int print(const QStringList& args, QString* err = nullptr) {
        QFile::remove(m_pdf);
        QString out, e;
        const int rc = test::runAdminProcess(QStringList{QStringLiteral("print")} + args + m_where +
                                                 QStringList{QStringLiteral("--pdf"), m_pdf},
                                             &out, &e);
        if (err) *err = e;
        return rc;
    }

private slots:
    void initTestCase() {
        test::freshDatabase();
        demo::Options o;
        o.persons = 40;
        demo::fill(conn(), o);
        createUser(conn(), QStringLiteral("系统管理员"), QStringLiteral("secret"), fullPower(), true);
        m_where = test::whereArgs(conn().settings());
        m_pdf = m_dir.filePath(QStringLiteral("out.pdf"));
    }

    void tablesAndFieldsOfTheDictionaryPrint() {
        QString err;
        QCOMPARE(
            print({"grid", "--table", "tRsBasic", "--fields", "fCode,fName,fSex", "--filter",
                   "fzt between 1 and 7 and (lower(fName) like '%' or fName is null) and fName<>'O''Neil'"},
                  &err),
            int(admin::Ok));
        QVERIFY2(QFileInfo(m_pdf).size() > 0, qPrintable(err));
        // Names are compared without case, as the dictionary does.
        QCOMPARE(print({"grid", "--table", "trsbasic", "--fields", "FCODE, fname"}, &err), int(admin::Ok));
        QCOMPARE(print({"cards", "--filter", "fzt=1"}, &err), int(admin::Ok));
        QVERIFY2(QFileInfo::exists(m_pdf), qPrintable(err));
    }

    // The export takes a column's kind from the schema: the loans' running number and their amounts
    // are numbers in the file, the dates dates.
    void exportWritesNumbersAsNumbers() {
        QVERIFY(count("select count(*) from trsLoanTools") > 0);
        const QString file = m_dir.filePath(QStringLiteral("loans.xlsx"));
        QString out, err;
        QCOMPARE(test::runAdminProcess(QStringList{"export", "grid"} + m_where +
                                           QStringList{"--table", "trsLoanTools", "--fields", "fID,fName,price,loantime",
                                                       "--file", file},
                                       &out, &err),
                 int(admin::Ok));
        const SheetData sheet = ReadXlsx(file);
        QVERIFY2(sheet.error.isEmpty(), qPrintable(sheet.error + err));
        const SheetRow& first = sheet.rows.at(1);
        QVERIFY2(first.isNumber(0), qPrintable(first.cells().join(',')));
        QVERIFY(!first.isNumber(1));
    }

    // The record sheets: both sides of each person the filter selects, in code order, with progress.
    void sheetsOfTheSelectedPersons() {
        const QStringList before = guarded();
        const int persons = int(count("select count(*) from tRsBasic where fzt=1 and fBmCode like '01%'"));
        QVERIFY(persons > 0);
        QString err;
        QCOMPARE(print({"sheet", "--filter", "fzt=1 and fBmCode like '01%'"}, &err), int(admin::Ok));
        QCOMPARE(test::pdfPages(m_pdf), 2 * persons);
        QVERIFY2(err.contains(QStringLiteral("第 %1 页 共 %1 页").arg(2 * persons)), qPrintable(err));
        Recordset first(
            conn(), "select fCode, fName from tRsBasic where fzt=1 and fBmCode like '01%' order by fCode");
        QVERIFY(test::pdfText(m_pdf, 1).contains(first.text(1)));
        QCOMPARE(guarded(), before);

        // Nothing selected: nothing printed, and the reason given.
        QCOMPARE(print({"sheet", "--filter", "fzt=99"}, &err), int(admin::Failed));
        QVERIFY2(err.contains(QStringLiteral("未有可供打印的数据记录")), qPrintable(err));
        QVERIFY(!QFileInfo::exists(m_pdf));
    }

    void outsideTheDictionaryIsRefused_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("message");
        QTest::newRow("users table") << QStringList{"grid", "--table", "tSysUser", "--fields",
                                                    "fName,fPassHash"}
                                     << "不在字段字典中";
        QTest::newRow("log table") << QStringList{"grid", "--table", "tSysLog", "--fields", "fUser"}
                                   << "不在字段字典中";
        QTest::newRow("table with statement")
            << QStringList{"grid", "--table", "tRsBasic;delete from tRsBasic", "--fields", "fName"}
            << "不在字段字典中";
        QTest::newRow("hash as field")
            << QStringList{"grid", "--table", "tRsBasic", "--fields", "fName,fPassHash"} << "fPassHash";
        QTest::newRow("subquery as field")
            << QStringList{"grid", "--table", "tRsBasic", "--fields", "(select fPassHash from tSysUser)"}
            << "不是字段字典中表";
        const QStringList hostile = {
            "1=1; delete from tRsBasic",
            "1=1 union select fName,fPassHash,fPower from tSysUser",
            "fName in (select fName from tSysUser)",
            "exists (select 1 from tSysUser where fPassHash like 'p%')",
            "length(query_to_xml(chr(115)||'elect 1', true, true, ''))>0",
            "fName=\"fPassHash\"",
            "fzt=1 -- and fzt=2",
            "fzt=1 /* x */",
            "fName='it''s",
            "fName=E'\\' or 1=1'",
            "fzt=1 and 'tsysuser'::regclass is not null",
            "fzt=$$1$$",
            "fzt=1union select 1",
        };
        for (const QString& f : hostile) {
            QTest::newRow(qPrintable(QStringLiteral("grid: ") + f))
                << QStringList{"grid", "--table", "tRsBasic", "--fields", "fCode,fName", "--filter", f}
                << "过滤条件中不能有";
            QTest::newRow(qPrintable(QStringLiteral("cards: ") + f))
                << QStringList{"cards", "--filter", f} << "过滤条件中不能有";
            QTest::newRow(qPrintable(QStringLiteral("sheet: ") + f))
                << QStringList{"sheet", "--filter", f} << "过滤条件中不能有";
        }
    }

    // Refused with the reason and a non-zero exit; nothing printed and nothing changed.
    void outsideTheDictionaryIsRefused() {
        QFETCH(QStringList, args);
        QFETCH(QString, message);
        const QStringList before = guarded();
        QString err;
        QCOMPARE(print(args, &err), int(admin::Failed));
        QVERIFY2(err.contains(message), qPrintable(err));
        QVERIFY(!QFileInfo::exists(m_pdf));
        QCOMPARE(guarded(), before);
    }

    // Behind the checks, the engine itself refuses every write of the print's session.
    void theSessionIsReadOnly() {
        const QStringList before = guarded();
        Connection c;
        c.open(conn().settings());
        admin::makeReadOnly(c);
        QCOMPARE(Recordset(c, "select count(*) from tRsBasic").val(0), 40.0);
        QVERIFY_THROWS_EXCEPTION(DbError, c.execute("delete from tRsBasic"));
        QVERIFY_THROWS_EXCEPTION(DbError, c.execute("update tSysUser set fPassHash='x'"));
        QVERIFY_THROWS_EXCEPTION(DbError, c.execute("create table tEvil (a integer)"));
        {
            Transaction t(c);
            QVERIFY_THROWS_EXCEPTION(DbError, c.execute("delete from tRs_Bm"));
        }
        QCOMPARE(guarded(), before);
    }
};

ZQ_DB_TEST_MAIN(TestPrintCommand)
#include "test_print_command.moc"
