#include "Controls.h"
#include "TestDb.h"

#include "personnel/HomePage.h"
#include "personnel/HomePageData.h"
#include "personnel/PersonBrowserData.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"

#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

using namespace zq;
using test::exec;
using test::one;

namespace {
const QDate kToday(2026, 11, 23);

void person(const QString& code, const QString& dept, int state, const QString& birth, const QString& hired,
            const QString& contractEnd = QString(), const QString& left = QString()) {
    exec(QStringLiteral(
             "insert into tRsBasic (fCode,fName,fzt,fBmCode,fBirthDay,fSpday,contractlimt,leavetime) "
             "values ('%1','员工%1',%2,'%3','%4','%5','%6','%7')")
             .arg(code)
             .arg(state)
             .arg(dept, birth, hired, contractEnd, left));
}

const HomeLine* line(const HomeSummary& s, const QString& id, int state = 1) {
    for (const HomeLine& l : s.lines)
        if (l.id == id && l.state == state) return &l;
    return nullptr;
}

// The codes the register lists for a line: its state and its filter, as the link opens it.
QStringList listed(const HomeLine& l) {
    QStringList codes;
    for (Recordset rs(conn(),
                      PersonListSql(QStringLiteral("fCode"),
                                    PersonListCondition(l.state, QString(), QString(), QString(), l.filter),
                                    false));
         !rs.eof(); rs.moveNext())
        codes << rs.text(0);
    return codes;
}
} // namespace

class TestHomePage : public QObject {
    Q_OBJECT

private slots:
    void init() {
        test::freshDatabase();
        test::actAsSupervisor();
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('01','生产部',2,0)");
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('0101','一车间',1,0)");
        exec("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('02','销售部',5,0)");
        person("001", "0101", 1, "1990-11-02", "2026-11-05", "2026-12-01");   // hired this month
        person("002", "0101", 1, "1985-03-01", "2026-09-01", "2027-09-01");   // probation ends 12-01
        person("003", "01", 1, "1980-11-30", "2016-11-20", "无固定期限");     // anniversary, birthday
        person("004", "02", 1, "1992-05-05", "2020-01-01", "2026-11-22");     // contract ended yesterday
        person("005", "02", 3, "1970-11-11", "2010-11-11", "", "2026-11-10"); // left this month (kind 2)
        person("006", "02", 2, "1975-01-01", "2010-01-01", "", "2026-10-31"); // left last month
        // The user 员工005 has left; 员工002 works in 0101.
    }

    void supervisorSeesTheWholeCompany() {
        const HomeSummary s = ReadHomeSummary(kToday);
        QVERIFY(s.deptCode.isEmpty());
        const auto expect = [&](const QString& id, qint64 count, const QStringList& codes, int state = 1) {
            const HomeLine* l = line(s, id, state);
            QVERIFY2(l, qPrintable(id));
            QCOMPARE(l->count, count);
            if (l->menuKey != QStringLiteral("mnuRsbm")) QCOMPARE(listed(*l), codes);
        };
        expect("serving", 4, {"001", "002", "003", "004"});
        expect("hires", 1, {"001"});
        expect("contracts", 1, {"001"});
        expect("probation", 1, {"002"});
        expect("anniversaries", 1, {"003"});
        expect("birthdays", 2, {"001", "003"});
        expect("leavers", 1, {"005"}, 3);
        QVERIFY(!line(s, "leavers", 2)); // nobody of that kind left this month
        // 01 holds 3 against 2, 0101 holds 2 against 1; 02 holds 1 against 5.
        expect("overQuota", 2, {});
    }

    void aDepartmentUserSeesTheDepartmentOnly() {
        G().UserName = QStringLiteral("员工002");
        const HomeSummary s = ReadHomeSummary(kToday);
        QCOMPARE(s.deptCode, QString("0101"));
        QCOMPARE(line(s, "serving")->count, 2);
        QCOMPARE(listed(*line(s, "serving")), QStringList({"001", "002"}));
        QCOMPARE(line(s, "birthdays")->count, 1);
        QCOMPARE(line(s, "overQuota")->count, 1);
        QCOMPARE(line(s, "leavers", 2)->count, 0); // the month's leavers keep a line at none

        // Somebody the register does not know sees nobody.
        G().UserName = QStringLiteral("外人");
        const HomeSummary none = ReadHomeSummary(kToday);
        QVERIFY(!none.anyone);
        QCOMPARE(line(none, "serving")->count, 0);
    }

    void linesFollowTheRights() {
        G().UserName = QStringLiteral("员工002");
        // Entering the staff in service (position 1) only.
        G().myPower = QString(350, QLatin1Char('0'));
        G().myPower[0] = QLatin1Char('1');
        const HomeSummary s = ReadHomeSummary(kToday);
        QVERIFY(line(s, "serving"));
        QVERIFY(!line(s, "leavers", 2));
        QVERIFY(!line(s, "overQuota"));
        G().myPower[0] = QLatin1Char('0');
        QVERIFY(ReadHomeSummary(kToday).lines.isEmpty());
    }

    void pageLinksOpenTheirLines() {
        G().CompName = QStringLiteral("测试公司");
        HomePage page;
        page.reload(kToday);
        page.show();
        auto* birthdays = test::child<QLabel>(page, QStringLiteral("home_birthdays_1"));
        QVERIFY(birthdays->text().contains(QStringLiteral("<a href")));
        QVERIFY(birthdays->text().contains(QStringLiteral("2 人")));
        QSignalSpy spy(&page, &HomePage::lineActivated);
        emit birthdays->linkActivated(birthdays->text().section(QLatin1Char('"'), 1, 1));
        QCOMPARE(spy.size(), 1);
        QCOMPARE(spy.at(0).at(0).value<HomeLine>().id, QString("birthdays"));
        // A count of none is no link.
        G().UserName = QStringLiteral("员工002");
        page.reload(kToday);
        QVERIFY(!test::child<QLabel>(page, QStringLiteral("home_leavers_2"))
                     ->text()
                     .contains(QStringLiteral("<a")));
        // Nobody signed in: nothing is read.
        G().UserName.clear();
        page.reload(kToday);
        QVERIFY(page.summary().lines.isEmpty());
        QCOMPARE(test::child<QLabel>(page, QStringLiteral("lblHomeNotice"))->text(), QString("请先登录。"));
    }
};

ZQ_DB_TEST_MAIN(TestHomePage)
#include "test_home_page.moc"
