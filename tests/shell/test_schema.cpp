#include "TestDb.h"

#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/Schema.h"
#include "shell/SqlText.h"

#include <QApplication>
#include <QSet>
#include <QTest>

using namespace zq;

namespace {
double count(const QString& sql) {
    Recordset rs(conn(), sql);
    return rs.val(0);
}

// Characters that exist only in the simplified script; a traditional caption holds none of them.
const QString kSimplifiedOnly = QStringLiteral("员编号别证贯现职专毕业语称银帐组资级门暂体况签机时来费"
                                               "发经过联营担条单计规数归领备间询统档离调设闻报审办会议"
                                               "辞处奖获兴爱艺术长实应务");
} // namespace

class TestSchema : public QObject {
    Q_OBJECT
private slots:
    void init() { test::freshDatabase(); }

    void everyTableHasItsColumns() {
        QSet<QString> names;
        for (const schema::Table& t : schema::tables()) {
            QVERIFY2(!names.contains(t.name.toLower()), qPrintable(t.name));
            names.insert(t.name.toLower());
            Recordset rs(conn(), QStringLiteral("select * from %1 where 1=2").arg(t.name));
            QCOMPARE(rs.fieldCount(), t.columns.size());
            for (int i = 0; i < t.columns.size(); ++i)
                QCOMPARE(rs.fieldName(i).toLower(), t.columns[i].name.toLower());
        }
        // Split off by the schema, with the spouse's dictionary rows, and only once.
        QVERIFY(schema::tableExists(conn(), "tRsBasic_P"));
        QCOMPARE(count("select count(*) from RptListDetail where fTable='tRsBasic_P'"), 10.0);
        QVERIFY(!schema::splitSpouseTable(conn()));
        // Part of the schema, so that no screen alters a table under another client.
        QCOMPARE(count("select count(*) from tRs_RptFlow where fChecker4_='' and 1=2"), 0.0);
        QCOMPARE(schema::currentVersion(conn()), schema::latestVersion());
    }

    void secondInitialiseChangesNothing() {
        const double rows = count("select count(*) from RptListDetail");
        QVERIFY(rows > 0);
        QVERIFY_THROWS_EXCEPTION(DbError, schema::initialise(conn()));
        QCOMPARE(count("select count(*) from RptListDetail"), rows);
        QCOMPARE(count("select count(*) from tSysFunc"), 24.0);
        QCOMPARE(count("select count(*) from myCompany"), 1.0);
    }

    void dictionaryNamesRealColumns() {
        Recordset rs(conn(), "select fTable, FieldName, FieldName_0, FieldBriefType from RptListDetail");
        int n = 0;
        for (; !rs.eof(); rs.moveNext(), ++n) {
            // The housing list shows persons, so its rows describe the person table.
            QString table = rs.text(0);
            if (table.compare("tRs_House", Qt::CaseInsensitive) == 0) table = "tRsBasic";
            // The spouse table is split off the person table: the same columns.
            if (table.compare("tRsBasic_P", Qt::CaseInsensitive) == 0) table = "tRsBasic";
            QVERIFY2(schema::findTable(table), qPrintable(table));
            try {
                count(QStringLiteral("select count(%1) from %2").arg(rs.text(1), table));
            } catch (const DbError& e) {
                QFAIL(qPrintable(table + "." + rs.text(1) + ": " + e.message()));
            }
            QVERIFY(!rs.text(2).isEmpty());
            const QString brief = rs.text(3);
            if (!brief.isEmpty()) {
                QVERIFY2(count("select count(*) from briefDetail where briefType=" + quoted(brief)) > 0,
                         qPrintable(brief));
                QCOMPARE(count("select count(*) from brief where briefType=" + quoted(brief)), 1.0);
            }
        }
        QVERIFY(n > 100);
    }

    void personDictionaryFollowsTheRecordScreen() {
        // The first 52 rows by OrderID are the screen's labels, which are the table's first 52 columns.
        const schema::Table* basic = schema::findTable("tRsBasic");
        Recordset rs(conn(),
                     "select FieldName, OrderID from RptListDetail where fTable='tRsBasic' order by OrderID");
        for (int i = 0; !rs.eof(); rs.moveNext(), ++i) {
            QVERIFY(rs.val(1) < 69); // the spouse's rows went with the split
            QCOMPARE(rs.text(0).toLower(), basic->columns[i].name.toLower());
        }
        Recordset spouse(conn(),
                         "select FieldName from RptListDetail where fTable='tRsBasic_P' order by OrderID");
        QStringList fields;
        for (; !spouse.eof(); spouse.moveNext())
            fields << spouse.text(0).toLower();
        QCOMPARE(fields, QStringList({"fpname", "fpbirthday", "fpzz", "fpmz", "fpjg", "fpphone", "fpxl",
                                      "fphj", "fprz", "fpdw"}));
        QCOMPARE(count("select count(*) from RptListDetail where fTable='tRsBasic' and OrderID<69"), 52.0);

        // Grids pin the keys first without having to reorder anything.
        Recordset grid(conn(),
                       "select FieldName from RptListDetail where fTable='tRsBasic' and FieldSelected=1 "
                       "order by FieldID");
        QCOMPARE(grid.text(0), QString("fCode"));
        grid.moveNext();
        QCOMPARE(grid.text(0), QString("fName"));
    }

    void detailAndLoanRowsFitTheirScreens() {
        Recordset detail(conn(), "select FieldName from RptListDetail where fTable='tRsDetail' and FieldID>0 "
                                 "order by OrderID");
        QCOMPARE(detail.recordCount(), 4);
        for (int i = 1; !detail.eof(); detail.moveNext(), ++i)
            QCOMPARE(detail.text(0), QStringLiteral("fRsDetail%1").arg(i));
        for (const char* loans : {"trsLoanTools", "tRsLoanGoods"}) {
            // The key leads the grid and closes the label order.
            Recordset grid(conn(), QStringLiteral("select FieldName from RptListDetail where fTable='%1' and "
                                                  "FieldSelected=1 order by FieldID")
                                       .arg(loans));
            QCOMPARE(grid.text(0), QString("fID"));
            Recordset labels(conn(), QStringLiteral("select FieldName from RptListDetail where fTable='%1' "
                                                    "order by OrderID")
                                         .arg(loans));
            QCOMPARE(labels.recordCount(), 13);
            QCOMPARE(labels.text(0), QString("fcode"));
        }
        QCOMPARE(count("select count(*) from RptListDetail where fTable='trscard'"), 9.0);
    }

    void modulesOwnSeparatePositions() {
        Recordset rs(conn(), "select SerialNo, Model_Name from tSysFunc where NoUse_=0 order by SerialNo");
        QSet<int> used;
        QSet<QString> keys;
        for (; !rs.eof(); rs.moveNext()) {
            const int serial = int(rs.val(0));
            QVERIFY(serial >= 1 && serial + 4 <= 350);
            for (int op = 0; op <= 4; ++op) {
                QVERIFY2(!used.contains(serial + op), qPrintable(rs.text(1)));
                used.insert(serial + op);
            }
            keys.insert(rs.text(1).toLower());
        }
        for (const char* k :
             {"mnuOffice1",       "mnuOA_Report",      "mnuOffice2",    "mnuOA_Meeting", "mnuOffice3",
              "mnuOA_News",       "mnuRsbm",           "mnuRsSysBm",    "mnuWdFiler",    "mnuWdDept",
              "mnuWdDict",        "mnuRsManIn",        "mnuRsManOut",   "mnuRsTotal",    "mnuRsOthMove",
              "mnuRsOthHoldCard", "mnuRsOthLoanGoods", "mnuRsOthTools", "mnuRsHouseSet", "mnuRsHouseLook",
              "mnuRsCard",        "mnuRsCard2",        "mnuRsHistory",  "mnuRsOrgChart"})
            QVERIFY2(keys.contains(QString(k).toLower()), k);
        // A module is found by its caption too, so captions must not repeat.
        QCOMPARE(count("select count(distinct Model_Name_0) from tSysFunc"), 24.0);
    }

    void leavingStatesAreListed() {
        Recordset rs(conn(), "select * from briefDetail where briefType='rsstate' Order By briefcode");
        QStringList names;
        for (; !rs.eof(); rs.moveNext())
            names << rs.text("BriefName");
        QCOMPARE(names.size(), 6); // states 2 to 7
        QCOMPARE(names.mid(0, 4), QStringList({"辞职", "解聘", "退休", "离休"}));
    }

    void traditionalCaptionsUseTheTraditionalScript() {
        int differing = 0;
        for (const char* sql : {"select FieldName_0, FieldName_1 from RptListDetail",
                                "select Model_Name_0, Model_Name_1 from tSysFunc"}) {
            for (Recordset rs(conn(), sql); !rs.eof(); rs.moveNext()) {
                const QString s = rs.text(0), t = rs.text(1);
                QCOMPARE(t.size(), s.size());
                bool simplified = false;
                for (const QChar ch : s)
                    simplified = simplified || kSimplifiedOnly.contains(ch);
                for (const QChar ch : t)
                    QVERIFY2(!kSimplifiedOnly.contains(ch), qPrintable(t));
                if (simplified) {
                    QVERIFY2(s != t, qPrintable(s));
                    ++differing;
                }
            }
        }
        QVERIFY(differing > 50);
    }
};

ZQ_DB_TEST_MAIN(TestSchema)
#include "test_schema.moc"
