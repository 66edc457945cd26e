#include "TestDb.h"

#include "services/FieldDictionary.h"
#include "services/ui/Grid.h"
#include "services/ui/GridColumns.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QApplication>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>

using namespace zq;

namespace {

struct Field {
    int id;
    QString name;
    QVariant caption0;
    QVariant caption1;
    int selected = 1;
    QVariant width = {};
    int dataType = 1;
    int decimals = 0;
    QVariant briefType = {};
};

void clearTable(const QString& table) {
    QSqlQuery q(conn().database());
    QVERIFY(q.prepare(QStringLiteral("delete from RptListDetail where fTable=?")));
    q.addBindValue(table);
    QVERIFY2(q.exec(), qPrintable(q.lastError().text()));
}

void addField(const QString& table, const Field& f) {
    QSqlQuery q(conn().database());
    QVERIFY(q.prepare(QStringLiteral(
        "insert into RptListDetail (fTable,FieldID,OrderID,FieldName,FieldName_0,FieldName_1,FieldSelected,"
        "FieldSeek,FieldType,FieldBriefType,FieldGridWidth,FieldDataType,FieldDataDeci,FEnabled) "
        "values (?,?,?,?,?,?,?,0,0,?,?,?,?,0)")));
    for (const QVariant& v : QVariantList{table, f.id, f.id, f.name, f.caption0, f.caption1, f.selected,
                                          f.briefType, f.width, f.dataType, f.decimals})
        q.addBindValue(v);
    QVERIFY2(q.exec(), qPrintable(q.lastError().text()));
}

// The dictionary rows of a table as one comparable text.
QString snapshot(const QString& table) {
    Recordset rs(conn(),
                 QStringLiteral("select FieldName,FieldID,FieldSelected from RptListDetail where fTable=") +
                     quoted(table) + QStringLiteral(" order by FieldName"));
    QStringList rows;
    for (; !rs.eof(); rs.moveNext())
        rows << rs.text(0) + QLatin1Char('/') + rs.text(1) + QLatin1Char('/') + rs.text(2);
    return rows.join(QLatin1Char(';'));
}

QStringList headers(const ZqGrid& grid) {
    QStringList l;
    for (int c = 1; c <= grid.maxCols(); ++c)
        l << grid.headerText(c);
    return l;
}

// A person table whose key fields are neither selected nor in front.
void personDictionary() {
    clearTable(QStringLiteral("tRsBasic"));
    addField(QStringLiteral("tRsBasic"), {1, "fSex", "性别", "性別"});
    addField(QStringLiteral("tRsBasic"), {2, "fBirthDay", "出生日期", "出生日期"});
    addField(QStringLiteral("tRsBasic"), {5, "fName", "姓名", "姓名", 0});
    addField(QStringLiteral("tRsBasic"), {7, "fCode", "工号", "工號", 0});
    addField(QStringLiteral("tRsBasic"), {9, "fMz", "民族", "民族", 0});
}

} // namespace

class TestFieldDictionary : public QObject {
    Q_OBJECT
private slots:
    void init() {
        test::freshDatabase();
        G().Language = 0;
        clearTable(QStringLiteral("tTest"));
    }
    void cleanup() { G().Language = 0; }

    void captionsByLanguageAndCase() {
        personDictionary();
        addField(QStringLiteral("tTest"), {1, "fNoCaption", QVariant(), QVariant()});
        QCOMPARE(GetFieldCaption(QStringLiteral("tRsBasic"), QStringLiteral("fName")),
                 QStringLiteral("姓名"));
        QCOMPARE(GetFieldCaption(QStringLiteral("TRSBASIC"), QStringLiteral("FCODE")),
                 QStringLiteral("工号"));
        QCOMPARE(GetFieldCaption(QStringLiteral("tTest"), QStringLiteral("fNoCaption")), QString());
        // Unknown fields and tables answer with a tab, not with the empty text.
        QCOMPARE(GetFieldCaption(QStringLiteral("tRsBasic"), QStringLiteral("fNothing")),
                 QStringLiteral("\t"));
        QCOMPARE(GetFieldCaption(QStringLiteral("tNothing"), QStringLiteral("fName")), QStringLiteral("\t"));
        G().Language = 1;
        QCOMPARE(GetFieldCaption(QStringLiteral("tRsBasic"), QStringLiteral("fCode")),
                 QStringLiteral("工號"));
        // A quote fails the statement.
        QVERIFY_THROWS_EXCEPTION(DbError, GetFieldCaption(QStringLiteral("tRsBasic"), QStringLiteral("f'x")));
    }

    void briefTypes() {
        addField(QStringLiteral("tTest"), {1, "fMz", "民族", "民族", 1, {}, 1, 0, "MZ"});
        addField(QStringLiteral("tTest"), {2, "fName", "姓名", "姓名"});
        QCOMPARE(GetFieldBriefType(QStringLiteral("tTest"), QStringLiteral("fMz")), QStringLiteral("MZ"));
        QCOMPARE(GetFieldBriefType(QStringLiteral("TTEST"), QStringLiteral("FMZ")), QStringLiteral("MZ"));
        QCOMPARE(GetFieldBriefType(QStringLiteral("tTest"), QStringLiteral("fName")), QString());
        QCOMPARE(GetFieldBriefType(QStringLiteral("tTest"), QStringLiteral("fNothing")), QString());
    }

    void columnsFromTheDictionary() {
        addField(QStringLiteral("tTest"), {3, "fText", "备注", "備註", 1, QVariant(), 1});
        addField(QStringLiteral("tTest"), {1, "fPrice", "单价", "單價", 1, 12.5, 2, 3});
        addField(QStringLiteral("tTest"), {2, "fQty", "数量", "數量", 1, 6, 3});
        addField(QStringLiteral("tTest"), {4, "fHidden", "不选", "不選", 0, 6, 1});
        ZqGrid grid;
        grid.setMaxRows(5);
        const QString list = SetGridColumns(QStringLiteral("tTest"), &grid, 0, 1);
        QCOMPARE(list, QStringLiteral("fPrice,fQty,fText"));
        QCOMPARE(grid.maxCols(), 3);
        QCOMPARE(grid.maxRows(), 0);
        QCOMPARE(headers(grid), QStringList({"单价", "数量", "备注"}));
        QCOMPARE(grid.colWidth(1), 12.5);
        QCOMPARE(grid.colWidth(2), 6.0);
        QCOMPARE(grid.colWidth(3), 8.0); // null width
        QCOMPARE(grid.colType(1), ZqGrid::CellDecimal);
        QCOMPARE(grid.colDecimals(1), 3);
        QCOMPARE(grid.colType(2), ZqGrid::CellInteger);
        QCOMPARE(grid.colType(3), ZqGrid::CellText);
        QVERIFY(grid.isColMultiLine(3));
        QCOMPARE(grid.rowHeight(0), 20.0);
        QCOMPARE(grid.rowHeight(-1), 10.5);
        // The whole grid is locked, rows added later included, until a screen unlocks a part.
        grid.setMaxRows(2);
        QVERIFY(grid.isLocked(1, 1));
        QVERIFY(grid.isLocked(2, 3));
        grid.lockBlock(-1, 2, -1, 2, false);
        QVERIFY(!grid.isLocked(2, 2));
        QVERIFY(grid.isLocked(2, 3));

        G().Language = 1;
        SetGridColumns(QStringLiteral("tTest"), &grid, 0, 1);
        QCOMPARE(headers(grid), QStringList({"單價", "數量", "備註"}));
    }

    void pinnedKeysComeFirst() {
        personDictionary();
        ZqGrid grid;
        const QString list = SetGridColumns(QStringLiteral("tRsBasic"), &grid, -1, 1);
        QCOMPARE(list, QStringLiteral("fCode,fName,fSex,fBirthDay"));
        QCOMPARE(headers(grid), QStringList({"工号", "姓名", "性别", "出生日期"}));
        QCOMPARE(snapshot(QStringLiteral("tRsBasic")),
                 QStringLiteral("fBirthDay/2/1;fCode/-2/1;fMz/9/0;fName/-1/1;fSex/1/1"));
        // Pinned already: nothing changes a second time.
        QCOMPARE(SetGridColumns(QStringLiteral("tRsBasic"), &grid, -1, 1), list);
        QCOMPARE(snapshot(QStringLiteral("tRsBasic")),
                 QStringLiteral("fBirthDay/2/1;fCode/-2/1;fMz/9/0;fName/-1/1;fSex/1/1"));
    }

    void keysInTheWrongOrderSwap() {
        // fname stands before fcode: the first row read is fname, which takes -1, fcode -2.
        addField(QStringLiteral("tTest"), {1, "fName", "姓名", "姓名"});
        addField(QStringLiteral("tTest"), {2, "fCode", "工号", "工號"});
        ZqGrid grid;
        QCOMPARE(SetGridColumns(QStringLiteral("tTest"), &grid, -1, 1), QStringLiteral("fCode,fName"));
        QCOMPARE(snapshot(QStringLiteral("tTest")), QStringLiteral("fCode/-2/1;fName/-1/1"));
    }

    void withoutPinningNothingChanges() {
        personDictionary();
        const QString before = snapshot(QStringLiteral("tRsBasic"));
        ZqGrid grid;
        QCOMPARE(SetGridColumns(QStringLiteral("tRsBasic"), &grid, 0, 1), QStringLiteral("fSex,fBirthDay"));
        QCOMPARE(snapshot(QStringLiteral("tRsBasic")), before);
    }

    void oneFieldAndNone() {
        addField(QStringLiteral("tTest"), {1, "fOnly", "唯一", "唯一"});
        ZqGrid grid;
        QCOMPARE(SetGridColumns(QStringLiteral("tTest"), &grid, 0, 1), QStringLiteral("fOnly"));
        QCOMPARE(grid.maxCols(), 1);

        // From column 3: two columns before the first field; without fields only those two.
        QCOMPARE(SetGridColumns(QStringLiteral("tTest"), &grid, 0, 3), QStringLiteral("fOnly"));
        QCOMPARE(grid.maxCols(), 3);
        QCOMPARE(grid.headerText(3), QStringLiteral("唯一"));
        clearTable(QStringLiteral("tTest"));
        QCOMPARE(SetGridColumns(QStringLiteral("tTest"), &grid, 0, 3), QString());
        QCOMPARE(grid.maxCols(), 2);
        // An empty dictionary with pinning asked for: the pinning finds nothing to move.
        QCOMPARE(SetGridColumns(QStringLiteral("tTest"), &grid, -1, 1), QString());
        QCOMPARE(grid.maxCols(), 0);
    }

    void pinningPassesOverFailures() {
        // A quote fails every statement of the pinning; it must not reach the caller.
        PinKeyFields(QStringLiteral("t'Test"));
        ZqGrid grid;
        QVERIFY_THROWS_EXCEPTION(DbError, SetGridColumns(QStringLiteral("t'Test"), &grid, 0, 1));
    }
};

ZQ_DB_TEST_MAIN(TestFieldDictionary)
#include "test_fielddictionary.moc"
