// The statistics screen: its filter rules, the list, and counts that equal one count statement per
// value, cell by cell, with their chart.
#include "Controls.h"
#include "TestDb.h"

#include "admin/Demo.h"
#include "personnel/frmRs_PersonList.h"
#include "personnel/PersonListData.h"
#include "services/ui/Grid.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QApplication>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QComboBox>
#include <QGraphicsScene>
#include <QGraphicsTextItem>
#include <QHorizontalBarSeries>
#include <QLabel>
#include <QLegend>
#include <QLegendMarker>
#include <QLineEdit>
#include <QListWidget>
#include <QPieSeries>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;
using test::child;
using test::exec;
using test::one;

namespace {
// The count table as one statement per value gives it.
QVector<QStringList> perValue(const QStringList& captions, const QString& base) {
    QVector<QStringList> rows(captions.size() * 2);
    for (int i = 0; i < captions.size(); ++i) {
        const QString field = one(
            QStringLiteral("select FieldName from RptListDetail where ftable='tRsBasic' and FieldName_0='%1'")
                .arg(captions.at(i)));
        rows[2 * i] << captions.at(i);
        rows[2 * i + 1] << QString();
        Recordset values(conn(),
                         QStringLiteral("select distinct %1 as t from trsBasic where %2").arg(field, base));
        if (values.eof()) break;
        for (; !values.eof(); values.moveNext()) {
            rows[2 * i] << values.text(0);
            rows[2 * i + 1] << one(QStringLiteral("select count(*) as t from tRsBasic where %1 = %2 and %3")
                                       .arg(field, quoted(values.text(0)), base));
        }
    }
    qsizetype width = 0;
    for (const QStringList& r : rows)
        width = std::max(width, r.size());
    for (QStringList& r : rows)
        while (r.size() < width)
            r << QString();
    return rows;
}
// A demo company whose first `nulls` persons in service by code have `field` null and whose last
// two have it empty.
void companyWithBlanks(int persons, int seed, const char* field, int nulls) {
    demo::Options o;
    o.persons = persons;
    o.seed = seed;
    demo::fill(conn(), o);
    for (const auto& [value, order, n] : {std::tuple{"null", "", nulls}, std::tuple{"''", " desc", 2}})
        exec(QStringLiteral("update tRsBasic set %1=%2 where fCode in (select fCode from tRsBasic where fzt=1 "
                            "order by fCode%3 limit %4)")
                 .arg(QLatin1String(field), QLatin1String(value), QLatin1String(order))
                 .arg(n));
}
} // namespace

class TestPersonList : public QObject {
    Q_OBJECT

private slots:
    void init() {
        test::freshDatabase();
        scriptPrompts();
        test::actAsSupervisor();
    }

    void filterRules() {
        const auto filter = [](int dept, const QString& deptText, const QString& text, const QString& field) {
            return ComposeFilter({dept, deptText, text, field});
        };
        QCOMPARE(filter(0, "(所有部门)", "", "").filter, QString());
        QCOMPARE(filter(2, "01\t生产部", "", "").filter, QString("and fBmCode like '01%' "));
        QCOMPARE(filter(0, "", "本科", "fXl").filter, QString(" And  fXl like '%本科%' "));
        QCOMPARE(filter(0, "", "本%", "fXl").filter, QString(" And  fXl like '本%' "));
        // Equal ends are one value; a range compares as text, so 9,10 swaps.
        const ListFilter same = filter(0, "", "张,张", "fName");
        QCOMPARE(same.filterText, QString("张"));
        QCOMPARE(same.filter, QString(" And  fName like '%张%' "));
        QCOMPARE(filter(0, "", "9,10", "fCode").filter, QString(" And fCode >= '10' and fCode <= '9'"));
        // A comma first is a pattern; without a field nothing is searched.
        QCOMPARE(filter(0, "", ",5", "fCode").filter, QString(" And  fCode like '%,5%' "));
        QCOMPARE(filter(0, "", "9,10", "").filter, QString());
        QVERIFY_THROWS_EXCEPTION(DbError, filter(0, "", "O'Neil", "fName"));
    }

    void countsEqualThePerValueStatements() {
        companyWithBlanks(400, 3, "fMz", 3);
        const QStringList fields{"性别", "文化程度", "现属部门", "民族", "员工编号", "婚否"};
        for (const QString& base : {QString(" fzt= 1 "), QString(" fzt= 1 and fBmCode like '01%' ")}) {
            const QVector<QStringList> want = perValue(fields, base);
            QCOMPARE(CountTable(fields, base), want);
        }
        // A field without a value ends the table there, its caption shown.
        const QVector<QStringList> none = CountTable({"性别", "民族"}, " fzt= 9 ");
        QCOMPARE(none.at(0), QStringList({"性别"}));
        QCOMPARE(none.at(2).join(QString()), QString()); // the next field stays blank
        // A value holding a quote fails, as its count statement did.
        exec("update tRsBasic set fJg='O''Brien' where fCode=(select min(fCode) from tRsBasic)");
        QVERIFY_THROWS_EXCEPTION(DbError, CountTable({"籍贯"}, " 1=1 "));
    }

    void keptCountsEqualThePerValueStatements() {
        companyWithBlanks(300, 5, "fSex", 2);
        const QStringList fields{"性别", "文化程度", "现属部门"};
        const bool server = conn().dialect().isServer();
        // The server's distinct sorted, as at a large company: the kept values in the column's order.
        for (const bool sorted : {false, true}) {
            if (server) exec(sorted ? "set enable_hashagg=off" : "reset enable_hashagg");
            if (server && sorted) QVERIFY(one("explain select distinct fXl as t from trsBasic where fzt= 1").startsWith("Unique"));
            QCOMPARE(CountTable(fields, " fzt= 1 "), perValue(fields, " fzt= 1 "));
            QCOMPARE(CountTable(fields, " fzt= 2 "), perValue(fields, " fzt= 2 "));
        }
        // Two values that differ only in case: which one the distinct shows is the engine's own.
        exec("update tRsBasic set fXl='ba' where fCode=(select min(fCode) from tRsBasic where fzt=1)");
        exec("update tRsBasic set fXl='BA' where fCode=(select max(fCode) from tRsBasic where fzt=1)");
        QCOMPARE(CountTable(fields, " fzt= 1 "), perValue(fields, " fzt= 1 "));
        if (server) exec("reset enable_hashagg");
    }

    void headingsDecoded() {
        QVector<QStringList> rows{
            {"性别", "1", "0", ""}, {"", "5", "3", ""}, {"婚否", "0", "1", "2", "3", "9"}};
        DecodeCountHeadings(rows);
        QCOMPARE(rows.at(0), QStringList({"性别", "男", "女", ""}));
        QCOMPARE(rows.at(1), QStringList({"", "5", "3", ""})); // counts are left alone
        QCOMPARE(rows.at(2), QStringList({"婚否", "末婚", "已婚", "离异", "丧偶", "9"}));
    }

    void screenListsCountsAndCharts() {
        demo::Options o;
        o.persons = 200;
        demo::fill(conn(), o);
        frmRs_PersonList w;
        w.show();
        const QString serving = one("select count(*) from tRsBasic where fzt=1");
        QCOMPARE(child<QLabel>(w, "txtQty")->text(), serving + "人");
        QCOMPARE(w.grid1()->maxRows(), serving.toInt());
        QVERIFY(w.grid1()->text(1, 1) < w.grid1()->text(2, 1)); // sorted by code

        // A department narrows the list.
        auto* dept = child<QComboBox>(w, "Combo1");
        QCOMPARE(dept->itemText(0), QString("(所有部门)"));
        dept->setCurrentIndex(1);
        w.CmdQuiry_Click();
        const QString code = dept->itemText(1).section('\t', 0, 0);
        QCOMPARE(child<QLabel>(w, "txtQty")->text(),
                 one(QStringLiteral("select count(*) from tRsBasic where fzt=1 and fBmCode like '%1%'")
                         .arg(code)) +
                     "人");
        dept->setCurrentIndex(0);

        // Counting sex and education: the table, then a chart of the first field.
        w.cmdCompile_Click();
        auto* all = child<QListWidget>(w, "lstAll");
        QCOMPARE(all->count(), 52);
        for (const char* f : {"性别", "文化程度"}) {
            all->setCurrentItem(all->findItems(QString::fromUtf8(f), Qt::MatchExactly).first());
            w.moveItems(true, false);
        }
        w.cmdCompileOK_Click();
        QCOMPARE(w.grid2()->text(1, 1), QString("性别"));
        QVERIFY(QStringList({"男", "女"}).contains(w.grid2()->text(1, 2)));
        auto* bars = qobject_cast<QBarSeries*>(w.chart()->chart()->series().value(0));
        QVERIFY(bars);
        QCOMPARE(w.chart()->chart()->title(), QString("性别（合计 %1 人）").arg(serving));
        double sum = 0;
        for (int i = 0; i < bars->barSets().first()->count(); ++i)
            sum += bars->barSets().first()->at(i);
        QCOMPARE(qint64(sum), serving.toLongLong());
        child<QCheckBox>(w, "chkPie")->setChecked(true);
        QVERIFY(qobject_cast<QPieSeries*>(w.chart()->chart()->series().value(0)));

        // Saved as a picture and as a PDF whose labels are text.
        QTemporaryDir dir;
        QVERIFY(w.saveChart(dir.filePath("chart.png")));
        QVERIFY(QImage(dir.filePath("chart.png")).width() > 100);
        QVERIFY(w.saveChart(dir.filePath("chart.pdf")));
        QProcess text;
        text.start("pdftotext", {dir.filePath("chart.pdf"), "-"});
        QVERIFY(text.waitForFinished());
        QVERIFY2(QString::fromUtf8(text.readAllStandardOutput()).contains("性别"), "no caption in the PDF");
        test::saveShot(w, "statistics");

        // Counting departments: read down beside the chart with a total, long names whole on bars
        // across, the pie's legend named.
        child<QCheckBox>(w, "chkPie")->setChecked(false);
        w.cmdCompile_Click();
        all->setCurrentItem(all->findItems("现属部门", Qt::MatchExactly).first());
        w.moveItems(true, false);
        w.cmdCompileOK_Click();
        auto* field = child<QComboBox>(w, "cboChartField");
        field->setCurrentIndex(field->findText("现属部门"));
        const QStringList depts = [] {
            QStringList names;
            for (Recordset rs(conn(), "select distinct fBmName from tRsBasic where fzt=1"); !rs.eof();
                 rs.moveNext())
                names << rs.text(0);
            return names;
        }();
        QCOMPARE(w.totals()->maxRows(), int(std::min<qsizetype>(depts.size(), 24)) + 1);
        QCOMPARE(w.totals()->text(w.totals()->maxRows(), 1), QString("合计"));
        QCOMPARE(w.totals()->text(w.totals()->maxRows(), 2), serving);
        QCOMPARE(w.totals()->text(w.totals()->maxRows(), 3), QString("100.0%"));
        QVERIFY(qobject_cast<QHorizontalBarSeries*>(w.chart()->chart()->series().value(0)));
        const auto shownTexts = [&w] {
            QApplication::processEvents();
            QStringList texts;
            for (QGraphicsItem* item : w.chart()->scene()->items())
                if (auto* t = dynamic_cast<QGraphicsTextItem*>(item); t && t->isVisible())
                    texts << t->toPlainText();
            return texts;
        };
        const QStringList labels = shownTexts();
        for (int r = 1; r < w.totals()->maxRows(); ++r)
            QVERIFY2(labels.contains(w.totals()->text(r, 1)),
                     qPrintable(w.totals()->text(r, 1) + " is not shown whole: " + labels.join('|')));
        test::saveShot(w, "statistics-depts");
        child<QCheckBox>(w, "chkPie")->setChecked(true);
        QCOMPARE(w.chart()->chart()->legend()->alignment(), Qt::AlignRight);
        const QStringList legend = shownTexts();
        for (QLegendMarker* m : w.chart()->chart()->legend()->markers())
            QVERIFY2(legend.contains(m->label()), qPrintable(m->label() + " not in " + legend.join('|')));
        test::saveShot(w, "statistics-pie");
        child<QCheckBox>(w, "chkPie")->setChecked(false);

        // A value to search for with no field chosen is told, not taken for a search of everyone.
        child<QComboBox>(w, "Combo2")->setCurrentIndex(-1);
        child<QLineEdit>(w, "txtFilter")->setText("王");
        ScriptedPrompts& prompts = scriptPrompts();
        w.CmdQuiry_Click();
        QVERIFY(prompts.messages().join(QString()).contains("没有选择查询项目"));
        QVERIFY(w.status().contains("选择字段"));
        QVERIFY(w.grid2()->isVisible()); // the counts stay on show: nothing was listed
        child<QLineEdit>(w, "txtFilter")->clear();
        w.CmdQuiry_Click();
        QCOMPARE(w.grid1()->maxRows(), serving.toInt());
        QVERIFY(w.status().isEmpty());

        // The choice stays for the next count; a dictionary too short is refused in words.
        w.cmdCompile_Click();
        QCOMPARE(all->count(), 49);
        exec("delete from RptListDetail where fTable='tRsBasic' and OrderID>40");
        QVERIFY_THROWS_EXCEPTION(DbError, CountableCaptions());
    }
};

ZQ_DB_TEST_MAIN(TestPersonList)
#include "test_person_list.moc"
