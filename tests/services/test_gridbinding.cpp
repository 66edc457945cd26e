#include "TestDb.h"

#include "services/ui/Grid.h"
#include "services/ui/GridBinding.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/ui/Commands.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace zq;
using test::exec;

namespace {
// "fOrderID:first column" of the person's rows of a table, in order.
QStringList stored(const QString& table, const QString& code = QStringLiteral("P1")) {
    Recordset rs(
        conn(),
        QStringLiteral("select fOrderID,fYear from %1 where fCode='%2' order by fOrderID").arg(table, code));
    QStringList l;
    for (; !rs.eof(); rs.moveNext())
        l << rs.text(0) + QLatin1Char(':') + rs.text(1);
    return l;
}

void study(const QString& code, int order, const QString& year, int type) {
    exec(QStringLiteral(
             "insert into tRsStudy (fCode,fOrderID,fYear,fXx,fType) values ('%1',%2,'%3','学校',%4)")
             .arg(code)
             .arg(order)
             .arg(year)
             .arg(type));
}

// A grid of three columns (year, school, subject) with the given first cells.
void fill(ZqGrid& grid, const QStringList& years) {
    grid.setMaxCols(3);
    grid.setMaxRows(years.size());
    for (int r = 1; r <= years.size(); ++r) {
        grid.setText(r, 1, years[r - 1]);
        grid.setText(r, 2, QStringLiteral("学校%1").arg(r));
    }
}

const QString kStudy = QStringLiteral("fYear,fXx,fZy");

// Runs the field settings dialog through `act` whenever a screen asks for it.
struct SettingsDriver {
    int shown = 0;
    QString field;
    std::function<void(QDialog&)> act;
    SettingsDriver() {
        setModalRunner([this](QDialog& d) {
            ++shown;
            field = d.property("Field").toString();
            d.show();
            if (act) act(d);
            return d.result();
        });
    }
    ~SettingsDriver() { setModalRunner({}); }
};

void type(QLineEdit* box, const QString& text) {
    box->clear();
    QInputMethodEvent commit;
    commit.setCommitString(text);
    QApplication::sendEvent(box, &commit);
}
} // namespace

class TestGridBinding : public QObject {
    Q_OBJECT
    ScriptedPrompts* m_prompts = nullptr;

private slots:
    void init() {
        test::freshDatabase();
        m_prompts = &scriptPrompts();
        G().CurPersonCode = QStringLiteral("P1");
        G().PersonEditMode = 2;
    }

    void blankRowLeavesGapAndLoadsConsecutive() {
        study(QStringLiteral("P2"), 1, QStringLiteral("他人"), 0);
        ZqGrid grid;
        fill(grid, {"1990", "", "1995"});
        grid.setText(2, 2, QStringLiteral("lost")); // the rest of a blank row is not kept
        QCOMPARE(SaveGridRows(QStringLiteral("tRsStudy"), kStudy, grid), -1);
        QCOMPARE(stored(QStringLiteral("tRsStudy")), QStringList({"1:1990", "3:1995"}));
        QCOMPARE(stored(QStringLiteral("tRsStudy"), QStringLiteral("P2")), QStringList({"1:他人"}));

        ZqGrid loaded;
        loaded.setMaxCols(3);
        loaded.setMaxRows(7);
        LoadGridRows(QStringLiteral("tRsStudy"), kStudy, loaded);
        QCOMPARE(loaded.maxRows(), 2);
        QCOMPARE(loaded.text(2, 1), QStringLiteral("1995"));
        QCOMPARE(loaded.text(2, 2), QStringLiteral("学校3"));
        QCOMPARE(loaded.text(2, 3), QString()); // null reads as empty
    }

    void emptyGridDeletesEveryRowOfThePerson() {
        study(QStringLiteral("P1"), 1, QStringLiteral("1990"), 1);
        study(QStringLiteral("P1"), 2, QStringLiteral("1991"), 2);
        ZqGrid grid;
        grid.setMaxCols(3);
        QCOMPARE(SaveGridRows(QStringLiteral("tRsStudy"), kStudy, grid), -1);
        QVERIFY(stored(QStringLiteral("tRsStudy")).isEmpty());
    }

    void conditionDeletesOnlyItsRows() {
        study(QStringLiteral("P1"), 1, QStringLiteral("1990"), 1);
        study(QStringLiteral("P1"), 2, QStringLiteral("1991"), 2);
        ZqGrid grid;
        fill(grid, {"2000"});
        QCOMPARE(SaveGridRows(QStringLiteral("tRsStudy"), kStudy, grid, QStringLiteral("fType=2")), -1);
        // The new row lands beside the kept one; it carries no type since the list has none.
        QCOMPARE(stored(QStringLiteral("tRsStudy")), QStringList({"1:1990", "1:2000"}));

        ZqGrid loaded;
        loaded.setMaxCols(3);
        LoadGridRows(QStringLiteral("tRsStudy"), kStudy, loaded, QStringLiteral("fType=1"));
        QCOMPARE(loaded.maxRows(), 1);
        QCOMPARE(loaded.text(1, 1), QStringLiteral("1990"));
    }

    void failureRestoresTheRows() {
        study(QStringLiteral("P1"), 1, QStringLiteral("1990"), 1);
        ZqGrid grid;
        fill(grid, {"2000"});
        // The delete runs, then the reading set fails on an unknown column.
        QCOMPARE(SaveGridRows(QStringLiteral("tRsStudy"), QStringLiteral("fYear,fNoSuch,fZy"), grid), 0);
        QCOMPARE(stored(QStringLiteral("tRsStudy")), QStringList({"1:1990"}));
        QVERIFY(!conn().inTransaction());
        // A quote in the person's code fails before anything is written.
        G().CurPersonCode = QStringLiteral("P'1");
        QCOMPARE(SaveGridRows(QStringLiteral("tRsStudy"), kStudy, grid), 0);
        QVERIFY(m_prompts->messages().isEmpty()); // the caller decides what to say
    }

    void textIsCutToTheColumnSizeInBytes() {
        ZqGrid grid;
        grid.setMaxCols(5);
        grid.setMaxRows(1);
        grid.setText(1, 1, QStringLiteral("一二三四五六七八")); // fCh holds 10 bytes
        grid.setText(1, 2, QStringLiteral("张三"));
        QCOMPARE(SaveGridRows(QStringLiteral("tRsFamily"), QStringLiteral("fCh,fName,fNy,fDw,fZz"), grid),
                 -1);
        Recordset rs(conn(), QStringLiteral("select fCh,fName from tRsFamily where fCode='P1'"));
        QCOMPARE(rs.text(0), QStringLiteral("一二三四五"));
        QCOMPARE(rs.text(1), QStringLiteral("张三"));
        QVERIFY(m_prompts->messages().isEmpty());
    }

    void insertAndDeleteRows() {
        ZqGrid grid;
        grid.setMaxCols(2);
        GridInsertRow(grid);
        QCOMPARE(grid.maxRows(), 1);
        QCOMPARE(grid.activeRow(), 1);
        grid.setText(1, 1, QStringLiteral("a"));
        GridInsertRow(grid); // below the active row
        QCOMPARE(grid.maxRows(), 2);
        QCOMPARE(grid.activeRow(), 2);
        grid.setText(2, 1, QStringLiteral("b"));

        grid.setActiveCell(1, 1);
        m_prompts->answer(vbNo);
        GridDeleteRow(grid);
        QCOMPARE(grid.maxRows(), 2);
        QCOMPARE(m_prompts->messages(), QStringList({"确认：删除第1条记录？"}));
        QCOMPARE(m_prompts->shown().last().title, QStringLiteral("人事管理"));
        m_prompts->answer(vbYes);
        GridDeleteRow(grid);
        QCOMPARE(grid.maxRows(), 1);
        QCOMPARE(grid.text(1, 1), QStringLiteral("b"));
    }

    void headersOpenTheSettingsDataCellsDoNot() {
        ZqGrid grid;
        grid.setMaxCols(5);
        grid.setMaxRows(2);
        grid.setHeaderText(2, QStringLiteral("姓名"));
        SettingsDriver driver;
        driver.act = [](QDialog& d) {
            auto* name = d.findChild<QLineEdit*>(QStringLiteral("TxtName"));
            QVERIFY(!d.findChild<QLineEdit*>(QStringLiteral("txtItemNo"))->isVisible());
            type(name, QStringLiteral("家属姓名"));
            d.findChild<QPushButton*>(QStringLiteral("cmdOK"))->click();
        };
        QCOMPARE(EditGridHeader(2, 1, grid, QStringLiteral("tRsFamily")), 0);
        QCOMPARE(driver.shown, 0);
        G().PersonEditMode = 0;
        QCOMPARE(EditGridHeader(2, 0, grid, QStringLiteral("tRsFamily")), 0);
        QCOMPARE(driver.shown, 0);

        G().PersonEditMode = 1;
        QCOMPARE(EditGridHeader(2, 0, grid, QStringLiteral("tRsFamily")), -1);
        QCOMPARE(driver.field, QStringLiteral("fName"));
        QCOMPARE(grid.headerText(2), QStringLiteral("家属姓名"));
        Recordset rs(conn(), QStringLiteral("select FieldName_0 from RptListDetail where ftable='tRsFamily' "
                                            "and FieldName='fName'"));
        QCOMPARE(rs.text(0), QStringLiteral("家属姓名"));

        // The details grid renames its rows through column 1, never its header.
        driver.act = [](QDialog& d) { d.findChild<QPushButton*>(QStringLiteral("cmdCancel"))->click(); };
        grid.setText(2, 1, QStringLiteral("爱好"));
        QCOMPARE(EditGridHeader(1, 0, grid, QStringLiteral("tRsDetail")), 0);
        QCOMPARE(driver.shown, 1);
        QCOMPARE(EditGridHeader(1, 2, grid, QStringLiteral("tRsDetail")),
                 -1); // cancel gives the stored caption
        QCOMPARE(driver.field, QStringLiteral("fRsDetail2"));
        QCOMPARE(driver.shown, 2);
    }

    void captionLabelsByIndex() {
        QLabel label(QStringLiteral("姓名"));
        QCOMPARE(FieldOfLabel(1, label, QStringLiteral("tRsBasic"), 3), QStringLiteral("fName"));
        QCOMPARE(FieldOfLabel(51, label, QStringLiteral("TRSBASIC"), 3), QStringLiteral("unit"));
        QCOMPARE(FieldOfLabel(9, label, QStringLiteral("tRsBasic_P"), 3), QStringLiteral("fpdw"));
        QCOMPARE(FieldOfLabel(1, label, QStringLiteral("tRsBasic"), 2), QString());

        SettingsDriver driver;
        driver.act = [](QDialog& d) {
            QVERIFY(d.findChild<QLineEdit*>(QStringLiteral("txtItemNo"))->isVisible());
            d.findChild<QPushButton*>(QStringLiteral("cmdCancel"))->click();
        };
        QCOMPARE(FieldOfLabel(1, label, QStringLiteral("tRsBasic"), 1), QStringLiteral("0"));
        QCOMPARE(label.text(), QStringLiteral("姓名"));
        driver.act = [](QDialog& d) {
            type(d.findChild<QLineEdit*>(QStringLiteral("TxtName")), QStringLiteral("员工姓名"));
            d.findChild<QPushButton*>(QStringLiteral("cmdOK"))->click();
        };
        QCOMPARE(FieldOfLabel(1, label, QStringLiteral("tRsBasic"), 1), QStringLiteral("1"));
        QCOMPARE(label.text(), QStringLiteral("员工姓名"));
    }
};

ZQ_DB_TEST_MAIN(TestGridBinding)
#include "test_gridbinding.moc"
