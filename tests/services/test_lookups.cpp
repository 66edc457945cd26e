#include "TestDb.h"

#include "services/Lookups.h"
#include "services/ui/ComboLookups.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QApplication>
#include <QComboBox>
#include <QTest>

using namespace zq;
using test::exec;

namespace {
void dept(const QString& code, const QString& name, int level, int limit = 0) {
    exec(QStringLiteral("insert into tRs_Bm (fCode,fName,fYnxj,fLimited,fRz,fgzname,fDetail1,fDetail2) "
                        "values ('%1','%2',%3,%4,'职员','三级','职能%1','备注%1')")
             .arg(code, name)
             .arg(level)
             .arg(limit));
}

void person(const QString& code, const QString& name, int state, const QString& deptCode,
            const QString& unit = QString()) {
    exec(QStringLiteral(
             "insert into tRsBasic (fCode,fName,fzt,fBmCode,fBmName,fother2,fGzCode,fKqCardID,funit) "
             "values ('%1','%2',%3,'%4','部门%4','其他%1','G%1','K%1',%5)")
             .arg(code, name)
             .arg(state)
             .arg(deptCode, unit.isNull() ? QStringLiteral("null") : quoted(unit)));
}

QStringList items(const QComboBox& combo) {
    QStringList l;
    for (int i = 0; i < combo.count(); ++i)
        l << combo.itemText(i);
    return l;
}
} // namespace

class TestLookups : public QObject {
    Q_OBJECT
private slots:
    void init() {
        test::freshDatabase();
        for (const char* t : {"tRs_Bm", "tRsBasic", "briefDetail", "brief"})
            exec(QStringLiteral("delete from ") + QLatin1String(t));
        scriptPrompts();
    }

    void codeComboLevelsAndPrefix() {
        dept("01", "总部", 0);
        dept("0101", "经理", 1);
        dept("02", "工厂", 0);
        dept("0201", "车间", 0);
        QComboBox combo;
        combo.addItem("old");
        FillCodeCombo("tRs_Bm", &combo, "", -1, 0);
        QCOMPARE(items(combo), QStringList({"总部", "经理", "工厂", "车间"})); // cleared, all levels
        FillCodeCombo("tRs_Bm", &combo, "", 0, -1);
        QCOMPARE(items(combo), QStringList({"01\t总部", "02\t工厂", "0201\t车间"}));
        FillCodeCombo("tRs_Bm", &combo, "02", -1, 0);
        QCOMPARE(items(combo), QStringList({"工厂", "车间"}));
        QVERIFY_THROWS_EXCEPTION(DbError, FillCodeCombo("tRs_Bm", &combo, "0'2", -1, 0));
    }

    void briefComboAddsWithoutClearing() {
        exec("insert into briefDetail (briefType,BriefCode,BriefName) values ('sex','2','女')");
        exec("insert into briefDetail (briefType,BriefCode,BriefName) values ('sex','1','男')");
        exec("insert into briefDetail (briefType,BriefCode,BriefName) values ('mz','1','汉族')");
        QComboBox combo;
        quint8 plain = 0, withCode = 1;
        FillBriefCombo(&combo, "sex", plain);
        FillBriefCombo(&combo, "sex", plain);
        QCOMPARE(items(combo), QStringList({"男", "女", "男", "女"}));
        combo.clear();
        FillBriefCombo(&combo, "SEX", withCode); // the list code compares without case
        QCOMPARE(items(combo), QStringList({"1\t男", "2\t女"}));
        QCOMPARE(withCode, quint8(1));
    }

    void unitComboIsDistinctAndCleared() {
        person("001", "甲", 1, "01", "一厂");
        person("002", "乙", 2, "01", "二厂");
        person("003", "丙", 1, "02", "一厂");
        QComboBox combo;
        combo.addItem("old");
        FillUnitCombo(&combo);
        QCOMPARE(items(combo), QStringList({"一厂", "二厂"}));
    }

    void comboIndexOfIsExact() {
        QComboBox combo;
        QCOMPARE(ComboIndexOf(&combo, "a"), -1);
        combo.addItems({"Abc", "abc", "abc", "ab"});
        QCOMPARE(ComboIndexOf(&combo, "abc"), 1);
        QCOMPARE(ComboIndexOf(&combo, "ABC"), -1);
        QCOMPARE(ComboIndexOf(&combo, "a"), -1);
    }

    void codesAndNames() {
        dept("01", "总部", 0);
        dept("02", "分部", 0);
        QCOMPARE(CodeFromName("tRs_Bm", "总部"), QString("01"));
        QCOMPARE(CodeFromName("tRs_Bm", "无"), QString());
        QCOMPARE(NameFromCode("tRs_Bm", "02"), QString("分部"));
        QCOMPARE(NameFromCode("tRs_Bm", "09"), QString());
        // No table: nothing is read, so not even a quote fails.
        QCOMPARE(CodeFromName("", "a'b"), QString());
        QCOMPARE(NameFromCode("", "a'b"), QString());
        QVERIFY_THROWS_EXCEPTION(DbError, NameFromCode("tRs_Bm", "0'1"));
        QVERIFY_THROWS_EXCEPTION(DbError, CodeFromName("noSuchTable", "x"));
    }

    void detailsWriteBackOnlyWhenFound() {
        dept("01", "总部", 0);
        exec("update tRs_Bm set fDetail2=null where fCode='01'");
        QString d1 = "keep1", d2 = "keep2";
        QCOMPARE(GetDetailPair("tRs_Bm", "09", d1, d2), QString());
        QCOMPARE(d1, QString("keep1"));
        QCOMPARE(d2, QString("keep2"));
        GetDetailPair("", "01", d1, d2);
        QCOMPARE(d1, QString("keep1"));
        GetDetailPair("tRs_Bm", "01", d1, d2);
        QCOMPARE(d1, QString("职能01"));
        QCOMPARE(d2, QString()); // null reads as empty
        QString only = "keep";
        GetDetail1("tRs_Bm", "09", only);
        QCOMPARE(only, QString("keep"));
        QCOMPARE(GetDetail1("tRs_Bm", "01", only), QString());
        QCOMPARE(only, QString("职能01"));
    }

    void deptLimitAndPost() {
        dept("01", "总部", 0, 12);
        dept("0101", "经理", 1, 0);
        qint16 level = 7;
        QCOMPARE(GetDeptLimit("tRs_Bm", "", level), 0);
        QCOMPARE(level, qint16(0));
        level = 7;
        QCOMPARE(GetDeptLimit("tRs_Bm", "09", level), 0);
        QCOMPARE(level, qint16(0));
        QCOMPARE(GetDeptLimit("tRs_Bm", "01", level), 12);
        QCOMPARE(GetDeptLimit("tRs_Bm", "0101", level), 0);
        QCOMPARE(level, qint16(1));

        qint32 limit = 5;
        quint8 lv = 9;
        QString post = "p", trade = "t";
        QCOMPARE(GetDeptPost("", limit, lv, post, trade), 0);
        QCOMPARE(GetDeptPost("09", limit, lv, post, trade), 0);
        QCOMPARE(limit, 5);
        QCOMPARE(post, QString("p"));
        QCOMPARE(GetDeptPost("01", limit, lv, post, trade), -1);
        QCOMPARE(limit, 12);
        QCOMPARE(lv, quint8(0));
        QCOMPARE(post, QString("职员"));
        QCOMPARE(trade, QString("三级"));
    }

    void userDeptCode() {
        person("001", "张三", 1, "0102");
        QCOMPARE(GetUserDeptCode(""), QString("false-false"));
        QCOMPARE(GetUserDeptCode("李四"), QString("false-false"));
        QCOMPARE(GetUserDeptCode("张三"), QString("0102"));
    }

    void nextCodeIsTheMaximum() {
        QCOMPARE(NextCode("tRs_Bm", "fCode", ""), QString());
        QCOMPARE(Val(NextCode("tRs_Bm", "fCode", "")) + 1, 1.0);
        dept("07", "a", 0);
        dept("12", "b", 0);
        dept("30", "c", 1);
        QCOMPARE(NextCode("tRs_Bm", "fCode", ""), QString("30"));
        QCOMPARE(NextCode("tRs_Bm", "fCode", "where fYnxj=0"), QString("12"));
        QCOMPARE(NextCode("tRs_Bm", "fCode", "where fYnxj=5"), QString());
    }

    void countRows() {
        dept("01", "a", 0);
        dept("02", "b", 1);
        QCOMPARE(CountRows("tRs_Bm", ""), qint16(2));
        QCOMPARE(CountRows("tRs_Bm", "fYnxj=1"), qint16(1));
        QCOMPARE(CountRows("tRs_Bm", "1=2"), qint16(0));
        QCOMPARE(CountRows("tNoSuchTable", "1=2"), qint16(-1));
        QCOMPARE(CountRows("tRs_Bm", "noSuchColumn='' and 1=2"), qint16(-1));
        QVERIFY(scriptPrompts().shown().isEmpty()); // no message
    }

    void countRowsFailureKeepsTheTransaction() {
        {
            Transaction t(conn());
            dept("01", "a", 0);
            QCOMPARE(CountRows("tNoSuchTable", "1=2"), qint16(-1));
            dept("02", "b", 0); // the server would refuse this in a spoiled transaction
            QCOMPARE(CountRows("tRs_Bm", ""), qint16(2));
            t.commit();
        }
        QCOMPARE(CountRows("tRs_Bm", ""), qint16(2));
    }

    void countRowsBeyondSixteenBits() {
        exec("insert into tRs_Bm (fCode) with recursive n(i) as (select 1 union all select i+1 from n where "
             "i<32800) "
             "select cast(i as text) from n");
        QCOMPARE(CountRows("tRs_Bm", ""), qint16(32767));
        QCOMPARE(CountRows("tRs_Bm", "fCode='5'"), qint16(1));
    }

    void personState() {
        person("001", "甲", 1, "01");
        person("002", "乙", 3, "01");
        QVERIFY(GetPersonState("001"));
        QVERIFY(!GetPersonState("002"));
        QVERIFY(!GetPersonState("009"));
    }

    void activePersonFillsTheSevenGlobals() {
        person("001", "甲", 1, "0102");
        person("002", "乙", 2, "0102");
        Globals& g = G();
        g.CurPersonSex = "男"; // not one of the seven
        QCOMPARE(GetActivePerson("001"), QString("甲"));
        QCOMPARE(g.CurPersonCode, QString("001"));
        QCOMPARE(g.CurPersonName, QString("甲"));
        QCOMPARE(g.CurPersonDeptCode, QString("0102"));
        QCOMPARE(g.CurPersonDeptName, QString("部门0102"));
        QCOMPARE(g.CurPersonOther2, QString("其他001"));
        QCOMPARE(g.CurPersonGzCode, QString("G001"));
        QCOMPARE(g.CurPersonKqCardID, QString("K001"));
        // A person who has left is not found: all seven clear.
        QCOMPARE(GetActivePerson("002"), QString());
        for (const QString* s :
             {&g.CurPersonCode, &g.CurPersonName, &g.CurPersonDeptCode, &g.CurPersonDeptName,
              &g.CurPersonOther2, &g.CurPersonGzCode, &g.CurPersonKqCardID})
            QCOMPARE(*s, QString());
        QCOMPARE(g.CurPersonSex, QString("男"));
        QVERIFY(scriptPrompts().shown().isEmpty());
    }

    void wildcards_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("pattern");
        QTest::newRow("plain") << "abc"
                               << "%abc%";
        QTest::newRow("leading star") << "*abc"
                                      << "%abc";
        QTest::newRow("trailing hash") << "ab#"
                                       << "ab_";
        QTest::newRow("inner star") << "a*c"
                                    << "%a*c%";
        QTest::newRow("both ends") << "#b*"
                                   << "_b%";
        QTest::newRow("trimmed") << "  张三 "
                                 << "%张三%";
        QTest::newRow("typed percent") << "a%c"
                                       << "a%c";
        QTest::newRow("star alone") << "*"
                                    << "%";
        QTest::newRow("empty") << ""
                               << "";
        QTest::newRow("blank") << "   "
                               << "";
    }
    void wildcards() {
        QFETCH(QString, typed);
        QFETCH(QString, pattern);
        QCOMPARE(WildcardToLike(typed), pattern);
    }
};

ZQ_DB_TEST_MAIN(TestLookups)
#include "test_lookups.moc"
