#include "Controls.h"
#include "PdfTools.h"
#include "TestDb.h"

#include "personnel/PersonCodeCascade.h"
#include "personnel/PersonImport.h"
#include "printing/PrintOutput.h"
#include "personnel/frmRs_ChangeReport.h"
#include "personnel/frmRs_PersonHistory.h"
#include "services/ChangeHistory.h"
#include "services/PagedRows.h"
#include "services/ui/Grid.h"
#include "services/ui/GridBinding.h"
#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/HistorySession.h"
#include "shell/Recordset.h"
#include "shell/Schema.h"
#include "shell/Users.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QDir>
#include <QFile>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;
using test::exec;
using test::one;

namespace {

int historyRows(const QString& condition = QStringLiteral("1=1")) {
    return one(QStringLiteral("select count(*) from tRsHistory where ") + condition).toInt();
}

// fField -> "before|after" of the rows that hold a condition.
QMap<QString, QString> changes(const QString& condition) {
    QMap<QString, QString> m;
    for (const QStringList& r :
         ReadRows(QStringLiteral("select fField,fBefore,fAfter from tRsHistory where ") + condition))
        m.insert(r[0], r[1] + QLatin1Char('|') + r[2]);
    return m;
}

void addPerson(const QString& code, const QString& name, const QString& dept = QStringLiteral("01")) {
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fSex,fBmCode,fBmName,fzt) values ('%1','%2','男','%3',"
                        "(select fName from tRs_Bm where fCode='%3'),1)")
             .arg(code, name, dept));
}

const QString kFamilyFields = QStringLiteral("fch,fName,fny,fdw,fZz");

void loadFamily(ZqGrid& g, const QString& code) {
    G().CurPersonCode = code;
    g.setMaxCols(5);
    LoadGridRows(QStringLiteral("tRsFamily"), kFamilyFields, g);
}

} // namespace

class TestChangeHistory : public QObject {
    Q_OBJECT

private slots:
    void init() {
        test::freshDatabase();
        test::actAsSupervisor();
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('01','总部',0,0)");
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('0101','财务部',0,0)");
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('02','工厂',0,0)");
        exec("delete from tRsHistory where 1=0"); // the table is there
        startClean();
    }

    // A hire records each filled field with who and where; a change only what changed, with the
    // dictionary's caption when shown.
    void masterRecordAddAndChange() {
        addPerson("A01", "张三");
        QCOMPARE(historyRows(), 6); // fCode fName fSex fBmCode fBmName fzt
        QCOMPARE(one("select count(*) from tRsHistory where fOp=1 and fUser='admin' and fBefore is null"),
                 QStringLiteral("6"));
        QCOMPARE(one("select fHost from tRsHistory where fField='fName'"), QSysInfo::machineHostName());
        QCOMPARE(one("select fKind from tRsHistory where fField='fCode'"), QStringLiteral("4"));
        startClean();
        exec("update tRsBasic set fName='张叁', fSex='男', fMz=null where fCode='A01'");
        QCOMPARE(changes("1=1"), (QMap<QString, QString>{{"fName", "张三|张叁"}}));
        const QVector<QStringList> rows = PersonHistory("A01");
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows[0][1], QStringLiteral("基本资料"));
        QCOMPARE(rows[0][3], QStringLiteral("姓名"));
        QCOMPARE(rows[0][4], QStringLiteral("修改"));
        // A case-only change is a change.
        exec("update tRsBasic set fName='abc' where fCode='A01'");
        exec("update tRsBasic set fName='ABC' where fCode='A01'");
        QCOMPARE(historyRows("fAfter='ABC' and fBefore='abc'"), 1);
        QCOMPARE(one("select fAfter from tRsHistory where fId=(select max(fId) from tRsHistory)"),
                 QStringLiteral("ABC"));
    }

    void rolledBackSaveLeavesNothing() {
        addPerson("A01", "张三");
        startClean();
        {
            Transaction t(conn());
            exec("update tRsBasic set fName='李四', fBmCode='02', fBmName='工厂' where fCode='A01'");
            exec("insert into tRsFamily (fCode,fOrderID,fCh,fName) values ('A01',1,'父','张大')");
            QVERIFY(historyRows() > 0); // written in the save's own transaction
        }
        QCOMPARE(historyRows(), 0);
    }

    // Moves, posts, pay, leaving and coming back are the report's kinds, one row an event.
    void kindsOfChange() {
        addPerson("A01", "张三");
        startClean();
        exec("update tRsBasic set fBmCode='0101', fBmName='财务部' where fCode='A01'");
        exec("update tRsBasic set fRz='会计' where fCode='A01'");
        exec("update tRsBasic set fGzName='三级' where fCode='A01'");
        exec("update tRsBasic set fzt=2, leavetime='2025-01-01' where fCode='A01'");
        exec("update tRsBasic set fzt=3 where fCode='A01'");
        exec("update tRsBasic set fzt=1 where fCode='A01'");
        QCOMPARE(one("select fKind from tRsHistory where fField='fBmName'"), QStringLiteral("1"));
        QCOMPARE(one("select fKind from tRsHistory where fField='fBmCode'"), QStringLiteral("0"));
        QCOMPARE(one("select fBmCode from tRsHistory where fField='fBmName'"), QStringLiteral("0101"));
        QCOMPARE(one("select fKind from tRsHistory where fField='fRz'"), QStringLiteral("2"));
        QCOMPARE(one("select fKind from tRsHistory where fField='fGzName'"), QStringLiteral("3"));
        QCOMPARE(ReadRows("select fBefore,fAfter,fKind from tRsHistory where fField='fzt' order by fId"),
                 (QVector<QStringList>{{"1", "2", "5"}, {"2", "3", "0"}, {"3", "1", "4"}}));
    }

    // A grid save changes only what the clerk changed, and the history says just that.
    void gridSaveRecordsOnlyWhatChanged() {
        addPerson("A01", "张三");
        exec("insert into tRsFamily (fCode,fOrderID,fCh,fName,fNy) values ('A01',1,'父','张大','1950')");
        exec("insert into tRsFamily (fCode,fOrderID,fCh,fName,fNy) values ('A01',2,'母','王二','1952')");
        startClean();
        ZqGrid g;
        loadFamily(g, "A01");
        QCOMPARE(SaveGridRows("tRsFamily", kFamilyFields, g), -1); // nothing changed: nothing written
        QCOMPARE(historyRows(), 0);

        g.setText(2, 3, "1953");
        QCOMPARE(SaveGridRows("tRsFamily", kFamilyFields, g), -1);
        QCOMPARE(changes("1=1"), (QMap<QString, QString>{{"fNy", "1952|1953"}}));
        QCOMPARE(one("select fRow from tRsHistory"), QStringLiteral("2"));
        QCOMPARE(one("select fBmCode from tRsHistory"), QStringLiteral("01"));

        // A row put in at the top adds its cells; the others only move.
        startClean();
        ZqGrid g2;
        loadFamily(g2, "A01");
        g2.setMaxRows(3);
        g2.loadRows({{"妻", "李梅", "", "", ""}, {"父", "张大", "1950", "", ""}, {"母", "王二", "1953", "", ""}});
        QCOMPARE(SaveGridRows("tRsFamily", kFamilyFields, g2), -1);
        QCOMPARE(changes("1=1"), (QMap<QString, QString>{{"fCh", "|妻"}, {"fName", "|李梅"}}));
        QCOMPARE(one("select fOp from tRsHistory where fField='fCh'"), QStringLiteral("1"));
        QCOMPARE(one("select count(*) from tRsFamily where fCode='A01'"), QStringLiteral("3"));

        // A row taken out is deleted with its cells.
        startClean();
        ZqGrid g3;
        loadFamily(g3, "A01");
        g3.loadRows({{"妻", "李梅", "", "", ""}, {"母", "王二", "1953", "", ""}});
        QCOMPARE(SaveGridRows("tRsFamily", kFamilyFields, g3), -1);
        QCOMPARE(changes("1=1"), (QMap<QString, QString>{{"fCh", "父|"}, {"fName", "张大|"}, {"fNy", "1950|"}}));
        QCOMPARE(one("select min(fOp) from tRsHistory"), QStringLiteral("3"));
        QCOMPARE(ReadRows("select fOrderID,fCh from tRsFamily where fCode='A01' order by fOrderID"),
                 (QVector<QStringList>{{"1", "妻"}, {"2", "母"}}));
    }

    // The spouse, appraisals, details and pay rises are recorded like the rest.
    void otherRecordsOfAPerson() {
        addPerson("A01", "张三");
        startClean();
        exec("insert into tRsBasic_P (fCode,fpName) values ('A01','李梅')");
        exec("insert into tRsRemark (fcode,fYear,fpy,fpdr) values ('A01',2024,'好','王')");
        exec("update tRsRemark set fpy='很好' where fcode='A01' and fYear=2024");
        exec("insert into tRsDetail (fCode,fRsDetail1) values ('A01','下棋')");
        exec("insert into tRsTech (fCode,fOrderID,fJs,fJn,fBz) values ('A01',1,'2024-05','3000','3500')");
        QCOMPARE(historyRows("fTable='tRsBasic_P' and fField='fpName' and fAfter='李梅'"), 1);
        QCOMPARE(historyRows("fTable='tRsRemark' and fField='fpy' and fOp=2 and fRow=2024"), 1);
        QCOMPARE(historyRows("fTable='tRsDetail' and fField='fRsDetail1'"), 1);
        QCOMPARE(historyRows("fTable='tRsTech' and fKind=3"), 3); // fJs fJn fBz
        QCOMPARE(PersonHistoryFields("A01").filter("兴趣爱好").size(), 1);
    }

    // The code cascade is recorded, and the person's history follows him to his new code, without
    // what a later person with his old code does.
    void codeChangeKeepsThePersonsHistory() {
        addPerson("A01", "张三");
        exec("insert into tRsFamily (fCode,fOrderID,fCh) values ('A01',1,'父')");
        exec("update tRsBasic set fMz='汉' where fCode='A01'");
        {
            Transaction t(conn());
            exec("update tRsBasic set fCode='A09' where fCode='A01'");
            CascadePersonCode("A01", "A09");
            t.commit();
        }
        QCOMPARE(historyRows("fTable='tRsFamily' and fField='fCode' and fBefore='A01' and fAfter='A09'"), 1);
        addPerson("A01", "后来人");
        const QVector<QStringList> rows = PersonHistory("A09");
        QVERIFY(std::any_of(rows.begin(), rows.end(), [](const QStringList& r) { return r[6] == "汉"; }));
        QVERIFY(std::none_of(rows.begin(), rows.end(), [](const QStringList& r) { return r[6] == "后来人"; }));
        QCOMPARE(PersonHistory("A01").size(), 6); // the newcomer's hire only
        // Newest first, and narrowed by field and day.
        QCOMPARE(rows.first()[6], QStringLiteral("A09"));
        PersonHistoryFilter f;
        f.table = "tRsBasic";
        f.field = "fMz";
        QCOMPARE(PersonHistory("A09", f).size(), 1);
        f = {};
        f.to = QDate::currentDate().addDays(-1);
        QCOMPARE(PersonHistory("A09", f).size(), 0);
    }

    // An import is recorded like a save: a new person's filled fields, a changed one's changes.
    void importIsRecorded() {
        addPerson("A01", "张三");
        startClean();
        const auto import = [](const QString& csv) {
            const ImportCheck check = CheckImport(PrepareImport(ParseCsvText(csv)), true);
            QVERIFY2(check.error.isEmpty() && check.refused == 0, qPrintable(check.error));
            QVERIFY(WriteImport(check, false));
        };
        import("员工编号,姓名,性别,民族,受聘时间\r\nB01,王五,男,汉,2024-03-01\r\nA01,张三,男,回,2020-01-01\r\n");
        // Every filled column of the new row, no more.
        int filled = 0;
        Recordset rs(conn(), "select * from tRsBasic where fCode='B01'");
        for (int i = 0; i < rs.fieldCount(); ++i) {
            const QString f = rs.fieldName(i).toLower();
            if (f == "fphoto" || (f.startsWith("fp") && f != "fphone")) continue;
            if (!rs.text(i).isEmpty()) ++filled;
        }
        QCOMPARE(historyRows("fCode='B01' and fOp=1"), filled);
        QCOMPARE(historyRows("fCode='B01' and fKind=4"), 1);
        QCOMPARE(changes("fCode='A01'"), (QMap<QString, QString>{{"fMz", "|回"}, {"fSpday", "|2020-01-01"}}));
    }

    void departmentsAreRecorded() {
        startClean();
        exec("update tRs_Bm set fLimited=12, fColor=5 where fCode='02'");
        exec("delete from tRs_Bm where fCode='0101'");
        QCOMPARE(changes("fCode='02'"), (QMap<QString, QString>{{"fLimited", "0|12"}}));
        QCOMPARE(historyRows("fCode='0101' and fOp=3"), 4); // code, name, limit 0, level 0
    }

    // Two clients at once: each change under its own user and machine.
    void twoClientsBothRecorded() {
        addPerson("A01", "张三");
        startClean();
        Connection other;
        other.open(conn().settings());
        SetHistorySession(other, "李四", "pc-2");
        exec("update tRsBasic set fMz='汉' where fCode='A01'");
        other.execute("update tRsBasic set fJg='广东' where fCode='A01'");
        QCOMPARE(ReadRows("select fField,fUser,fHost from tRsHistory order by fId"),
                 (QVector<QStringList>{{"fMz", "admin", QSysInfo::machineHostName()}, {"fJg", "李四", "pc-2"}}));
        SetHistoryRecording(other, false);
        other.execute("update tRsBasic set fJg='福建' where fCode='A01'");
        QCOMPARE(historyRows(), 2);
    }

    // The report's counts are its rows, by kind and branch.
    void companyReportCountsEqualRows() {
        addPerson("A01", "张三");
        addPerson("A02", "李四", "02");
        exec("update tRsBasic set fBmCode='0101', fBmName='财务部' where fCode='A01'");
        exec("update tRsBasic set fBmCode='01', fBmName='总部' where fCode='A02'");
        exec("update tRsBasic set fzt=2 where fCode='A02'");
        exec("update tRsBasic set fRz='经理' where fCode='A01'");
        CompanyHistoryFilter f;
        f.from = QDate::currentDate().addDays(-1);
        f.to = QDate::currentDate();
        const QVector<qint64> all = CompanyHistoryCounts(f);
        QCOMPARE(all[0], qint64(historyRows()));
        QCOMPARE(all.mid(1), (QVector<qint64>{2, 1, 0, 2, 1}));
        for (int k = 0; k <= kChangeKinds; ++k) {
            f.kind = k;
            QCOMPARE(qint64(PagedRows(CompanyHistoryQuery(f)).count()), all[k]);
        }
        // The branch 02:李四's hire there and his move away, nothing of 张三.
        f.kind = 0;
        f.deptCode = "02";
        const QVector<qint64> branch = CompanyHistoryCounts(f);
        QCOMPARE(branch.mid(1), (QVector<qint64>{1, 0, 0, 1, 0}));
        f.kind = 1;
        PagedRows moves(CompanyHistoryQuery(f));
        QCOMPARE(moves.count(), 1);
        QCOMPARE(moves.cell(1, 3), QStringLiteral("李四"));
        QCOMPARE(moves.cell(1, 5), QStringLiteral("部门调动"));
        // A period before the changes holds none.
        f = {};
        f.from = f.to = QDate::currentDate().addDays(-3);
        QCOMPARE(CompanyHistoryCounts(f)[0], qint64(0));
    }

    // History is not edited; only the supervisor deletes it, and that is logged.
    void onlyTheSupervisorDeletes() {
        addPerson("A01", "张三");
        const int rows = historyRows();
        QVERIFY_THROWS_EXCEPTION(DbError, conn().execute("update tRsHistory set fAfter='x'"));
        QVERIFY_THROWS_EXCEPTION(DbError, conn().execute("delete from tRsHistory"));
        QCOMPARE(historyRows(), rows);
        G().UserName = "clerk";
        QVERIFY_THROWS_EXCEPTION(DbError, DeleteHistoryBefore(QDate::currentDate().addDays(1)));
        test::actAsSupervisor();
        QCOMPARE(DeleteHistoryBefore(QDate::currentDate()), qint64(0));
        QCOMPARE(DeleteHistoryBefore(QDate::currentDate().addDays(1)), qint64(rows));
        QCOMPARE(historyRows(), 0);
        QVERIFY(one("select count(*) from tSysLog where fText like '删除变更记录%'").toInt() >= 1);
        // The purge ended with it.
        addPerson("A02", "李四");
        QVERIFY_THROWS_EXCEPTION(DbError, conn().execute("delete from tRsHistory"));
    }

    void exportWritesTheRows() {
        addPerson("A01", "张三");
        exec("update tRsBasic set fMz='汉' where fCode='A01'");
        const QString file = QDir::temp().filePath("zq_history_test.csv");
        QString error;
        QCOMPARE(ExportHistory(file, "A01", {}, &error), qint64(7));
        CompanyHistoryFilter f;
        f.from = f.to = QDate::currentDate();
        QCOMPARE(ExportHistory(file, {}, f, &error), qint64(7));
        QFile in(file);
        QVERIFY(in.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(in.readAll());
        QVERIFY(text.contains("民族"));
        QVERIFY(text.contains("入职"));
        QFile::remove(file);
    }

    // An older database gets the history by its upgrade, empty, and records from then on.
    void upgradeStartsAnEmptyHistory() {
        addPerson("A01", "张三");
        schema::dropHistoryTriggers(conn());
        if (test::onServer()) exec("drop function zqh_guard() cascade");
        exec("drop table tRsHistory");
        exec("update zq_schema set version=6");
        exec("update tRsBasic set fMz='汉' where fCode='A01'"); // not recorded: no history yet
        exec("delete from tSysFunc where Model_Name in ('mnuRsHistory','mnuRsOrgChart')");
        QVERIFY(schema::upgradeIfOlder(conn()));
        QCOMPARE(schema::currentVersion(conn()), schema::latestVersion());
        QCOMPARE(historyRows(), 0);
        QCOMPARE(one("select count(*) from tSysFunc where Model_Name in ('mnuRsHistory','mnuRsOrgChart')"),
                 QStringLiteral("2"));
        exec("update tRsBasic set fMz='回' where fCode='A01'");
        QCOMPARE(changes("1=1"), (QMap<QString, QString>{{"fMz", "汉|回"}}));
    }

    // A server database of before holds its time stamps caseless; the upgrade keeps every row and
    // the report's ranges read them the same.
    void upgradeKeepsStampsAndTheirRanges() {
        addPerson("A01", "张三");
        exec("update tRsBasic set fMz='汉' where fCode='A01'");
        if (test::onServer()) exec("alter table tRsHistory alter column fWhen type citext");
        exec("update zq_schema set version=12");
        QVERIFY(schema::upgradeIfOlder(conn()));
        if (test::onServer())
            QCOMPARE(one("select data_type from information_schema.columns where table_name='trshistory' and "
                         "column_name='fwhen'"),
                     QStringLiteral("text"));
        CompanyHistoryFilter f;
        f.from = f.to = QDate::currentDate();
        QCOMPARE(CompanyHistoryCounts(f).value(0), qint64(historyRows()));
        QVERIFY(historyRows() > 0);
    }

    // The two screens show what the functions give; the report's figure line counts every kind.
    void screens() {
        addPerson("A01", "张三");
        exec("update tRsBasic set fBmCode='02', fBmName='工厂' where fCode='A01'");
        exec("update tRsBasic set fMz='汉', fRz='钳工' where fCode='A01'");
        exec("insert into tRsFamily (fCode,fOrderID,fCh,fName) values ('A01',1,'父','张大')");
        G().CurPersonCode = "A01";
        G().CurPersonName = "张三";
        frmRs_PersonHistory person;
        person.show();
        QVERIFY(QTest::qWaitForWindowExposed(&person));
        QCOMPARE(person.grid()->maxRows(), PersonHistory("A01").size());
        QCOMPARE(person.grid()->text(1, 4), QStringLiteral("姓名")); // newest first: the family row
        QCOMPARE(person.grid()->text(0, 6), QStringLiteral("原值"));
        test::saveShot(person, "person_history");
        auto* field = test::child<QComboBox>(person, "cboField");
        const int mz = field->findText("基本资料.民族");
        QVERIFY(mz > 0);
        field->setCurrentIndex(mz);
        test::click(person, "cmdSeek");
        QCOMPARE(person.grid()->maxRows(), 1);
        QCOMPARE(person.grid()->text(1, 7), QStringLiteral("汉"));

        frmRs_ChangeReport report;
        report.show();
        QVERIFY(QTest::qWaitForWindowExposed(&report));
        const QString figures = test::child<QLabel>(report, "lblCount")->text();
        QVERIFY2(figures.contains("部门调动 1") && figures.contains("岗位变动 1") && figures.contains("入职 1"),
                 qPrintable(figures));
        QCOMPARE(report.grid()->maxRows(), historyRows());
        test::saveShot(report, "change_report");
        auto* kind = test::child<QComboBox>(report, "cboKind");
        kind->setCurrentIndex(1);
        test::click(report, "cmdSeek");
        QCOMPARE(report.grid()->maxRows(), 1);
        QCOMPARE(report.grid()->text(1, 4), QStringLiteral("工厂"));
        QVERIFY(test::child<QPushButton>(report, "cmdDelHistory")->isVisibleTo(&report));
        // Printed like every list, read a page at a time as it is.
        QTemporaryDir dir;
        PrintOutput::setPdfPath(dir.filePath("report.pdf"));
        test::click(report, "cmdPrint");
        PrintOutput::setPdfPath({});
        const QString text = test::pdfText(dir.filePath("report.pdf"));
        QVERIFY2(text.contains("人事变动报表") && text.contains("部门调动") && text.contains("工厂"), qPrintable(text));
    }

private:
    void startClean() {
        SetHistoryPurging(conn(), true);
        exec("delete from tRsHistory");
        SetHistoryPurging(conn(), false);
    }
};

ZQ_DB_TEST_MAIN(TestChangeHistory)
#include "test_change_history.moc"
