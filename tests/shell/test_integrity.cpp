// Two clients on one database: what one saves is never lost or overwritten unseen by the other, a
// write that reaches no row fails, keys stay unique, and older databases are brought up to date.
#include "TestDb.h"

#include "office/ReportData.h"
#include "organisation/DeptData.h"
#include "personnel/PersonBasicData.h"
#include "personnel/PersonBrowserData.h"
#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/Schema.h"
#include "shell/SqlText.h"

#include <QApplication>
#include <QTest>

using namespace zq;
using test::exec;
using test::one;

namespace {
void addPerson(const QString& code, const QString& name, const QString& idCard = {}) {
    exec(
        QStringLiteral("insert into tRsBasic (fCode,fName,fSfz,fSpday,fBmName,fBmCode,fPhone,fMz,fzt) values "
                       "('%1','%2','%3','2020-01-01','生产部','01','111','汉',1)")
            .arg(code, name, idCard));
}

PersonBasicRow loaded(const QString& code) {
    PersonBasicRow r;
    if (!LoadPersonBasic(code, r)) qFatal("no person %s", qPrintable(code));
    return r;
}

constexpr int kPhone = 12;
constexpr int kNation = 4;

// Makes the database look as one made before the unique keys and the answer columns.
void backToVersion1(Connection& c) {
    for (const char* index :
         {"ux_trsbasic_fcode", "ux_trsbasic_fsfz", "ux_trs_bm_fcode", "ux_trs_bm_fname", "ux_trs_house_fcode",
          "ux_trs_house_fname", "ux_twd_file0_fcode", "ux_twd_file0_fname", "ux_twd_file1_fcode",
          "ux_twd_file1_fname", "ux_trspersonmove_movenmb", "ux_trscard_fcode_cardcode", "ux_trsdetail_fcode",
          "ux_trsremark_fcode_fyear"})
        c.execute(QStringLiteral("drop index ") + QLatin1String(index));
    // Version 1 had no spouse table: the staff register split it off as it opened.
    c.execute(QStringLiteral("drop table tRsBasic_P"));
    c.execute(QStringLiteral("update RptListDetail set fTable='tRsBasic' where fTable='tRsBasic_P'"));
    for (int n = 1; n <= 4; ++n)
        c.execute(QStringLiteral("alter table tRs_RptFlow drop column fChecker%1_").arg(n));
    // Version 4 brought the stamps of unread notices.
    c.execute(QStringLiteral("drop index ix_trs_news_posted"));
    c.execute(QStringLiteral("alter table tRs_News drop column fPosted"));
    c.execute(QStringLiteral("drop table tRs_NewsSeen"));
    c.execute(QStringLiteral("update zq_schema set version=1"));
}
} // namespace

class TestIntegrity : public QObject {
    Q_OBJECT
    ConnectionSettings m_settings;
    Connection m_other; // the second client

private slots:
    void init() {
        m_settings = test::freshDatabase();
        m_other.open(m_settings);
        addPerson("A01", "张三", "110101199001010011");
        exec("insert into tRs_Bm (fCode,fName,fYnxj,fLimited) values ('01','生产部',0,5)");
    }
    void cleanup() { m_other.close(); }

    void personSaveKeepsTheOtherClientsChanges() {
        const PersonBasicRow before = loaded("A01");
        m_other.execute("update tRsBasic set fMz='回' where fCode='A01'");
        PersonBasicRow mine = before;
        mine.values[kPhone] = "222";
        SavePersonBasic(2, mine, "A01", before);
        QCOMPARE(one("select fPhone from tRsBasic where fCode='A01'"), QString("222"));
        QCOMPARE(one("select fMz from tRsBasic where fCode='A01'"), QString("回"));

        // The same column changed by both: refused, and the other client's value stays.
        const PersonBasicRow second = loaded("A01");
        m_other.execute("update tRsBasic set fPhone='333' where fCode='A01'");
        mine = second;
        mine.values[kPhone] = "444";
        mine.values[kNation] = "满";
        QVERIFY_THROWS_EXCEPTION(ConflictError, SavePersonBasic(2, mine, "A01", second));
        QCOMPARE(one("select fPhone from tRsBasic where fCode='A01'"), QString("333"));
        QCOMPARE(one("select fMz from tRsBasic where fCode='A01'"), QString("回"));
        QVERIFY(!conn().inTransaction());
    }

    void personGoneMeanwhileIsNotSavedOrReadded() {
        const PersonBasicRow before = loaded("A01");
        m_other.execute("delete from tRsBasic where fCode='A01'");
        PersonBasicRow mine = before;
        mine.values[kPhone] = "222";
        QVERIFY_THROWS_EXCEPTION(ConflictError, SavePersonBasic(2, mine, "A01", before));
        // An unchanged save of a deleted person does not pass either.
        QVERIFY_THROWS_EXCEPTION(ConflictError, SavePersonBasic(2, before, "A01", before));
        QCOMPARE(one("select count(*) from tRsBasic"), QString("0"));
        QVERIFY_THROWS_EXCEPTION(ConflictError, DeletePerson("A01", "张三", 1));
    }

    void recordsetWriteOfAChangedRowFails() {
        // The second checker's sign-off after the first one's: never a silent no-op.
        exec("insert into tRs_RptFlow (fID,fTitle,fChecker1,fChecker2,fChecker1Ok,fChecker2Ok) "
             "values (1,'报告','甲','乙',0,0)");
        Recordset mine(conn(), "select * from tRs_RptFlow where fID=1", Cursor::Static, Lock::Optimistic);
        m_other.execute("update tRs_RptFlow set fChecker2Ok=2,fChecker2_='不同意' where fID=1");
        QVERIFY_THROWS_EXCEPTION(ConflictError, report::SignOff(mine, 2, 1, "同意"));
        QCOMPARE(one("select fChecker2_ from tRs_RptFlow where fID=1"), QString("不同意"));

        // Another checker's columns: kept, whether this write merges or is refused.
        Recordset again(conn(), "select * from tRs_RptFlow where fID=1", Cursor::Static, Lock::Optimistic);
        m_other.execute("update tRs_RptFlow set fChecker1Ok=1,fChecker1_='好' where fID=1");
        try {
            report::SignOff(again, 2, 1, "同意");
            QCOMPARE(one("select fChecker2_ from tRs_RptFlow where fID=1"), QString("同意"));
        } catch (const ConflictError&) {
            QCOMPARE(one("select fChecker2_ from tRs_RptFlow where fID=1"), QString("不同意"));
        }
        QCOMPARE(one("select fChecker1_ from tRs_RptFlow where fID=1"), QString("好"));

        Recordset gone(conn(), "select * from tRs_RptFlow where fID=1", Cursor::Static, Lock::Optimistic);
        m_other.execute("delete from tRs_RptFlow where fID=1");
        QVERIFY_THROWS_EXCEPTION(ConflictError, report::SignOff(gone, 1, 1, "x"));
        QVERIFY_THROWS_EXCEPTION(ConflictError, report::DeleteReport(1));
        QCOMPARE(one("select count(*) from tRs_RptFlow"), QString("0"));
    }

    void reportChangedMeanwhileIsRefused() {
        exec("insert into tRs_RptFlow (fID,fTitle,fContent,fFootnote1) values (1,'报告','原文','甲')");
        RowSnapshot read;
        {
            Recordset rs(conn(), "select * from tRs_RptFlow where fID=1", Cursor::Static, Lock::Optimistic);
            read = Snapshot(rs);
        }
        m_other.execute("update tRs_RptFlow set fContent='他人改过' where fID=1");
        report::Report r;
        r.date = QDate(2026, 1, 2);
        r.title = "我的标题";
        r.checkers = QStringList(4, QString());
        QVERIFY_THROWS_EXCEPTION(ConflictError, report::WriteReport(1, r, read));
        QCOMPARE(one("select fContent from tRs_RptFlow where fID=1"), QString("他人改过"));
        QCOMPARE(one("select fTitle from tRs_RptFlow where fID=1"), QString("报告"));
    }

    void departmentChangedOrDeletedMeanwhileIsRefused() {
        const RowSnapshot read = LoadDeptSnapshot("tRs_Bm", "01");
        m_other.execute("update tRs_Bm set fLimited=9 where fCode='01'");
        const DeptRow row{"01", "生产一部", 5, 0, 0, {}, {}};
        QVERIFY_THROWS_EXCEPTION(ConflictError, SaveDeptRow("tRs_Bm", 2, "01", row, read));
        QCOMPARE(one("select fName from tRs_Bm where fCode='01'"), QString("生产部"));

        const RowSnapshot again = LoadDeptSnapshot("tRs_Bm", "01");
        m_other.execute("delete from tRs_Bm where fCode='01'");
        QVERIFY_THROWS_EXCEPTION(ConflictError, SaveDeptRow("tRs_Bm", 2, "01", row, again));
        QCOMPARE(one("select count(*) from tRs_Bm"), QString("0")); // not brought back
        QVERIFY_THROWS_EXCEPTION(ConflictError, DeleteDeptRow("tRs_Bm", "01"));

        // Description pages: only a page another client changed meanwhile refuses.
        exec("insert into tRs_Bm (fCode,fName,fYnxj,fDetail1,fDetail2) values ('02','销售部',0,'一','二')");
        m_other.execute("update tRs_Bm set fDetail2='他人' where fCode='02'");
        QVERIFY(SaveDescriptions("tRs_Bm", "02", {"一改", true, "一"}, {"二", false, "二"}));
        QCOMPARE(one("select fDetail2 from tRs_Bm where fCode='02'"), QString("他人"));
        QVERIFY_THROWS_EXCEPTION(
            ConflictError, SaveDescriptions("tRs_Bm", "02", {"一改", false, "一改"}, {"二改", true, "二"}));
        QCOMPARE(one("select fDetail1 from tRs_Bm where fCode='02'"), QString("一改"));
    }

    void keysAreUniqueForEveryClient() {
        const auto refused = [this](const QString& sql) {
            QVERIFY_THROWS_EXCEPTION(DbError, m_other.execute(sql));
        };
        refused("insert into tRsBasic (fCode,fName) values ('a01','李四')"); // codes compare case-blind
        refused("insert into tRsBasic (fCode,fName,fSfz) values ('A02','李四','110101199001010011')");
        m_other.execute("insert into tRsBasic (fCode,fName,fSfz) values ('A03','王五','')");
        m_other.execute("insert into tRsBasic (fCode,fName,fSfz) values ('A04','赵六','')");
        refused("insert into tRs_Bm (fCode,fName) values ('01','别名')");
        refused("insert into tRs_Bm (fCode,fName) values ('09','生产部')");
        for (const char* table : {"tRs_House", "tWd_File0", "tWd_File1"}) {
            m_other.execute(QStringLiteral("insert into %1 (fCode,fName) values ('1','甲')").arg(table));
            refused(QStringLiteral("insert into %1 (fCode,fName) values ('1','乙')").arg(table));
            refused(QStringLiteral("insert into %1 (fCode,fName) values ('2','甲')").arg(table));
        }
        m_other.execute("insert into trsPersonMove (moveNmb,fcode) values (7,'A01')");
        refused("insert into trsPersonMove (moveNmb,fcode) values (7,'A03')");
        m_other.execute("insert into trsCard (fcode,cardcode) values ('A01','C1')");
        m_other.execute("insert into trsCard (fcode,cardcode) values ('A03','C1')");
        refused("insert into trsCard (fcode,cardcode) values ('A01','C1')");
    }

    void upgradeRefusesDuplicatesAndChangesNothing() {
        backToVersion1(conn());
        exec("insert into tRsBasic (fCode,fName) values ('A01','重号')");
        exec("insert into tRs_Bm (fCode,fName,fYnxj) values ('02','生产部',0)");
        exec("insert into tRs_News (fID,fDate,fContent,fBmName) values (1,'2026-01-01','旧公告','')");
        try {
            schema::upgradeIfOlder(conn());
            QFAIL("an upgrade over duplicate codes went through");
        } catch (const DbError& e) {
            QVERIFY2(e.message().contains("tRsBasic.fCode = A01 (2 行)"), qPrintable(e.message()));
            QVERIFY2(e.message().contains("tRs_Bm.fName = 生产部 (2 行)"), qPrintable(e.message()));
        }
        QCOMPARE(schema::currentVersion(conn()), 1);
        QVERIFY_THROWS_EXCEPTION(DbError, one("select fChecker1_ from tRs_RptFlow"));
        exec("insert into tRsBasic (fCode,fName) values ('A01','三号')"); // still no key

        exec("delete from tRsBasic where fName in ('重号','三号')");
        exec("delete from tRs_Bm where fCode='02'");
        QVERIFY(schema::upgradeIfOlder(conn()));
        QCOMPARE(schema::currentVersion(conn()), schema::latestVersion());
        QCOMPARE(one("select count(fChecker4_) from tRs_RptFlow"), QString("0"));
        QVERIFY_THROWS_EXCEPTION(DbError, exec("insert into tRsBasic (fCode,fName) values ('A01','重号')"));
        // The spouse table is split off with a row of every person, and keeps one row a person.
        QCOMPARE(one("select count(*) from tRsBasic_P where fCode='A01'"), QString("1"));
        QVERIFY_THROWS_EXCEPTION(DbError, exec("insert into tRsBasic_P (fCode) values ('A01')"));
        exec("insert into tRsRemark (fcode,fYear) values ('A01',2025)");
        QVERIFY_THROWS_EXCEPTION(DbError, exec("insert into tRsRemark (fcode,fYear) values ('A01',2025)"));
        // A notice of before has no stamp, so it counts as read; one row a user for the board.
        QCOMPARE(one("select count(*) from tRs_News where fPosted is null"), QString("1"));
        exec("insert into tRs_NewsSeen (fUser,fOpened) values ('张三','2026-01-01 08:00:00.000')");
        QVERIFY_THROWS_EXCEPTION(DbError, exec("insert into tRs_NewsSeen (fUser) values ('张三')"));
        QVERIFY(!schema::upgradeIfOlder(conn())); // nothing left to do
        // The report screen's own probe now finds its columns and changes nothing.
        QVERIFY(!report::AddAnswerColumns());

        exec(QStringLiteral("update zq_schema set version=%1").arg(schema::latestVersion() + 1));
        QVERIFY_THROWS_EXCEPTION(DbError, schema::upgradeIfOlder(conn()));
    }

    void tableWidenedByAnotherClientIsReadWhole() {
        // No screen alters a table any more, but a database tool may: reads must follow it.
        exec("insert into tRs_News (fID,fContent) values (1,'通知')");
        { Recordset before(conn(), "select * from tRs_News", Cursor::Static, Lock::Optimistic); }
        m_other.execute("alter table tRs_News add column fExtra varchar(10)");
        m_other.execute("update tRs_News set fExtra='x'");
        Recordset after(conn(), "select * from tRs_News", Cursor::Static, Lock::Optimistic);
        QCOMPARE(after.text("fExtra"), QString("x"));
        after.setValue("fContent", "新通知");
        after.update();
        QCOMPARE(one("select fContent||fExtra from tRs_News"), QString("新通知x"));
        Recordset streamed(conn(), "select * from tRs_News");
        QCOMPARE(streamed.fieldCount(), after.fieldCount());
    }

    void backslashIsJustACharacter() {
        if (test::onServer()) {
            // A server whose default turns the standard off: every connection pins it on again.
            exec(QStringLiteral("alter database %1 set standard_conforming_strings=off")
                     .arg(m_settings.defaultDb));
            conn().close();
            conn().open(m_settings);
            QCOMPARE(one("show standard_conforming_strings"), QString("on"));
        }
        const QString name = QStringLiteral("a\\' or 1=1 --");
        QVERIFY_THROWS_EXCEPTION(DbError, quoted(name));
        const QString tricky = QStringLiteral("C:\\temp\\");
        addPerson("B01", tricky);
        QCOMPARE(one("select fName from tRsBasic where fCode='B01'"), tricky);
        PersonBasicRow r = loaded("B01");
        r.values[kPhone] = QStringLiteral("\\");
        SavePersonBasic(2, r, "B01", loaded("B01"));
        QCOMPARE(one("select fPhone from tRsBasic where fCode='B01'"), QStringLiteral("\\"));
        QCOMPARE(one("select fName from tRsBasic where fCode='A01'"), QString("张三"));
        QCOMPARE(one("select count(*) from tRsBasic where fName='C:\\temp\\'"), QString("1"));
    }
};

ZQ_DB_TEST_MAIN(TestIntegrity)
#include "test_integrity.moc"
