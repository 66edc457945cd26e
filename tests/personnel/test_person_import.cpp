// Spreadsheets in and out: our .xlsx read back by our own reader, the import's checks row by row,
// a round trip through the grid export, bad files, and a failed write that leaves nothing.

#include "TestDb.h"
#include "ZipFiles.h"

#include "personnel/PersonImport.h"
#include "services/Spreadsheets.h"
#include "services/ui/Grid.h"
#include "services/ui/GridExport.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"

#include <QAction>
#include <QApplication>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;
using test::exec;
using test::one;

namespace {

void addPerson(const QString& code, const QString& name, const QString& idCard = {}) {
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fSex,fSfz,fSpday,fBmName,fBmCode,fzt) values "
                        "('%1','%2','男','%3','2020-01-01','生产部','01',1)")
             .arg(code, name, idCard));
}

void writeText(const QString& path, const QByteArray& bytes) {
    test::writeFile(path, bytes);
}

QByteArray sheetXml(const QByteArray& rows, const QByteArray& tail = {}) {
    return "<?xml version=\"1.0\"?><worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
           "<sheetData>" + rows + "</sheetData>" + tail + "</worksheet>";
}

} // namespace

class TestPersonImport : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;

    QString path(const QString& name) const { return m_dir.filePath(name); }

private slots:
    void init() {
        test::freshDatabase();
        test::actAsSupervisor();
        scriptPrompts();
        exec(QStringLiteral("insert into tRs_Bm (fCode,fName) values ('01','生产部')"));
        exec(QStringLiteral("insert into tRs_Bm (fCode,fName) values ('0101','车间主任')"));
    }

    void xlsxKeepsTextNumbersAndDates() {
        ListRowSource rows({{QStringLiteral("编号"), CellKind::Text, 0, 8},
                            {QStringLiteral("金额"), CellKind::Number, 2, 8},
                            {QStringLiteral("日期"), CellKind::Date, 0, 10}},
                           {{"007", "12.5", "2024-01-05"}, {"", "x", "2024年1月5日"}, {"a,\"b\"", "", "不是日期"}});
        QCOMPARE(WriteXlsx(path("t.xlsx"), rows, QStringLiteral("名单")), 3);
        const SheetData back = ReadXlsx(path("t.xlsx"));
        QVERIFY2(back.error.isEmpty(), qPrintable(back.error));
        QCOMPARE(back.rows.size(), 4);
        QCOMPARE(back.rows[0].cells(), (QStringList{"编号", "金额", "日期"}));
        QCOMPARE(back.rows[1].cells(), (QStringList{"007", "12.5", "2024-01-05"}));
        QCOMPARE(back.rows[2].cells(), (QStringList{"", "x", "2024-01-05"}));
        QCOMPARE(back.rows[3].cells(), (QStringList{"a,\"b\"", "", "不是日期"}));
        QCOMPARE(back.rows[3].number, 4);

        ListRowSource csvRows({{QStringLiteral("编号"), CellKind::Text, 0, 8}}, {{"a,\"b\""}, {"多行\n文字"}});
        QCOMPARE(WriteCsv(path("t.csv"), csvRows), 2);
        QFile f(path("t.csv"));
        QVERIFY(f.open(QIODevice::ReadOnly));
        QVERIFY(f.readAll().startsWith("\xEF\xBB\xBF"));
        const SheetData csv = ReadCsv(path("t.csv"));
        QCOMPARE(csv.rows.size(), 3);
        QCOMPARE(csv.rows[1].cell(0), QStringLiteral("a,\"b\""));
        QCOMPARE(csv.rows[2].cell(0), QStringLiteral("多行\n文字"));
    }

    void datesInTheUsualForms() {
        for (const char* t : {"2024-01-05", "2024/1/5", "2024年1月5日", "20240105", "2024.1.5"})
            QCOMPARE(ParseDateText(QString::fromUtf8(t)), QStringLiteral("2024-01-05"));
        QVERIFY(ParseDateText(QStringLiteral("2024-02-30")).isEmpty());
        QCOMPARE(DateOfSerial(DateSerial(2024, 1, 5)), QStringLiteral("2024-01-05"));
        QCOMPARE(DateSerial(1900, 3, 1), 61.0);
        QVERIFY(IdCardCheckDigitOk(QStringLiteral("11010519491231002X")));
        QVERIFY(!IdCardCheckDigitOk(QStringLiteral("110105194912310021")));
        QCOMPARE(BirthDateOfIdCard(QStringLiteral("11010519491231002X")), QStringLiteral("1949-12-31"));
    }

    void badFilesAreRefusedWithAReason() {
        writeText(path("x.xlsx"), "plain text, no zip");
        QVERIFY(ReadSpreadsheet(path("x.xlsx")).error.contains(QStringLiteral("不是电子表格")));
        writeText(path("bin.csv"), QByteArray("ab\0cd", 5));
        QVERIFY(ReadSpreadsheet(path("bin.csv")).error.contains(QStringLiteral("不是电子表格")));
        writeText(path("empty.csv"), "\xEF\xBB\xBF\r\n,,\r\n");
        QVERIFY(ReadSpreadsheet(path("empty.csv")).error.contains(QStringLiteral("空")));
        writeText(path("nohead.csv"), "a,b\r\n1,2\r\n");
        QVERIFY(PrepareImport(path("nohead.csv")).error.contains(QStringLiteral("表头")));

        // Written as another program does: shared strings, a title merged above the header, a
        // formula with and without its value, a date by its style, a cell far too long.
        const QByteArray huge(100000, 'x');
        test::writeZip(path("hand.xlsx"),
                       {{"xl/sharedStrings.xml",
                         "<sst xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
                         "<si><t>员工编号</t></si><si><r><t>姓</t></r><r><t>名</t></r></si><si><t>受聘时间</t></si>"
                         "<si><t>" + huge + "</t></si></sst>"},
                        {"xl/styles.xml",
                         "<styleSheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
                         "<cellXfs><xf numFmtId=\"0\"/><xf numFmtId=\"14\"/></cellXfs></styleSheet>"},
                        {"xl/worksheets/sheet1.xml",
                         sheetXml("<row r=\"1\"><c r=\"A1\" t=\"inlineStr\"><is><t>名单</t></is></c></row>"
                                  "<row r=\"2\"><c r=\"A2\" t=\"s\"><v>0</v></c><c r=\"B2\" t=\"s\"><v>1</v></c>"
                                  "<c r=\"C2\" t=\"s\"><v>2</v></c></row>"
                                  "<row r=\"3\"><c r=\"A3\" t=\"inlineStr\"><is><t>0001</t></is></c>"
                                  "<c r=\"B3\" t=\"inlineStr\"><is><t>王一</t></is></c><c r=\"C3\" s=\"1\"><v>45296</v></c></row>"
                                  "<row r=\"4\"><c r=\"A4\" t=\"str\"><f>A3</f><v>0002</v></c>"
                                  "<c r=\"B4\" t=\"inlineStr\"><is><t>王二</t></is></c><c r=\"C4\"><f>TODAY()</f></c></row>"
                                  "<row r=\"5\"><c r=\"A5\" t=\"inlineStr\"><is><t>0003</t></is></c>"
                                  "<c r=\"B5\" t=\"s\"><v>3</v></c><c r=\"C5\" t=\"inlineStr\"><is><t>2024/1/5</t></is></c></row>"
                                  "<row r=\"6\"><c r=\"A6\" t=\"inlineStr\"><is><t>0004</t></is></c>"
                                  "<c r=\"B6\" t=\"inlineStr\"><is><t>王四</t></is></c><c r=\"C6\" t=\"inlineStr\"><is><t>2024-13-01</t></is></c></row>"
                                  "<row r=\"7\"><c r=\"A7\" t=\"inlineStr\"><is><t>0005</t></is></c>"
                                  "<c r=\"B7\" t=\"inlineStr\"><is><t>王五</t></is></c><c r=\"C7\" t=\"inlineStr\"><is><t>20240105</t></is></c></row>",
                                  "<mergeCells><mergeCell ref=\"A1:C1\"/><mergeCell ref=\"B7:C7\"/></mergeCells>")}});
        const ImportPlan plan = PrepareImport(path("hand.xlsx"));
        QVERIFY2(plan.error.isEmpty(), qPrintable(plan.error));
        QCOMPARE(plan.headerRow, 2);
        QCOMPARE(plan.fields, (QStringList{"fCode", "fName", "fSpday"}));
        const ImportCheck check = CheckImport(plan, false);
        QCOMPARE(check.added, 1);
        QCOMPARE(check.refused, 4);
        QStringList reasons;
        for (const RowIssue& i : check.issues)
            reasons << QStringLiteral("%1:%2").arg(i.row).arg(i.reason);
        const QString all = reasons.join(QLatin1Char('\n'));
        QVERIFY2(all.contains(QStringLiteral("4:单元格 Sheet1!C4 是公式")), qPrintable(all));
        QVERIFY2(all.contains(QStringLiteral("5:单元格 Sheet1!B5 过长")), qPrintable(all));
        QVERIFY2(all.contains(QStringLiteral("6:“受聘时间” 2024-13-01 不是日期")), qPrintable(all));
        QVERIFY2(all.contains(QStringLiteral("7:合并单元格 Sheet1!B7:C7")), qPrintable(all));
        QCOMPARE(check.accepted.first().values.value("fSpday"), QStringLiteral("2024-01-05"));
    }

    void everyWrongRowSaysWhy() {
        addPerson(QStringLiteral("9001"), QStringLiteral("老员工"), QStringLiteral("110105194912310013"));
        const QString csv = QStringLiteral(
            "员工编号,姓名,性别,出生日期,身份证号码,现属部门,现任职务,受聘时间,备注\r\n"
            "0001,张一,男,1949-12-31,11010519491231002X,生产部,车间主任,2024-01-05,好\r\n"
            "0002,,男,,,01,,2024-01-05,\r\n"
            "0001,张三,男,,,,,2024-01-05,\r\n"
            "0004,张四,中,,,,,2024-01-05,\r\n"
            "0005,张五,男,,,不存在部,,2024-01-05,\r\n"
            "0006,张六,男,,,,无此职务,2024-01-05,\r\n"
            "0007,张'七,男,,,,,2024-01-05,\r\n"
            "0008,张八,男,,110105194912310013,,,2024-01-05,\r\n"
            "0009,张九,男,,11010519491231002X,,,2024-01-05,\r\n"
            "0010,张十十十十十十十十,男,,,,,2024-01-05,\r\n"
            "9001,老员工,男,,,,,2024-01-05,\r\n"
            "0012,张十二,男,1980-01-01,110105194912310021,,,2024/1/5,\r\n"
            "0013,张十三,男,,,,,,\r\n"
            ",,,,,,,,只有备注\r\n");
        QStringEncoder gb("GB18030");
        writeText(path("bad.csv"), gb(csv));
        const ImportPlan plan = PrepareImport(path("bad.csv"));
        QCOMPARE(plan.unmapped(), QStringList{QStringLiteral("备注")});
        const ImportCheck check = CheckImport(plan, false);
        QHash<int, QString> refused, warned;
        for (const RowIssue& i : check.issues)
            (i.refused ? refused : warned)[i.row] += i.reason;
        QCOMPARE(check.added, 2);
        QCOMPARE(check.refused, 12);
        const QList<QPair<int, QString>> expected{
            {3, "“姓名”不能为空"},         {4, "与第 2 行重复"},        {5, "应为 男 或 女"},
            {6, "不存在部 找不到"},        {7, "无此职务 在部门职务中找不到"}, {8, "单引号"},
            {9, "已属于员工 9001"},        {10, "与第 2 行重复"},       {11, "超过 10"},
            {12, "已有此人 (未选择更新)"}, {14, "“受聘时间”不能为空"},  {15, "没有可导入的内容"}};
        for (const auto& [row, text] : expected)
            QVERIFY2(refused.value(row).contains(text), qPrintable(QStringLiteral("%1: %2").arg(row).arg(refused.value(row))));
        QVERIFY2(warned.value(13).contains(QStringLiteral("校验位")), qPrintable(warned.value(13)));
        QVERIFY2(warned.value(13).contains(QStringLiteral("不符")), qPrintable(warned.value(13)));
        QVERIFY(!refused.contains(2) && !refused.contains(13));

        // Refusals stop the write; the clerk may take the good rows only.
        QVERIFY(!WriteImport(check, false));
        QCOMPARE(one("select count(*) from tRsBasic"), QStringLiteral("1"));
        QVERIFY(WriteImport(check, true));
        QCOMPARE(one("select fBmCode from tRsBasic where fCode='0001'"), QStringLiteral("01"));
        QCOMPARE(one("select fRz from tRsBasic where fCode='0001'"), QStringLiteral("车间主任"));
        QCOMPARE(one("select fSpday from tRsBasic where fCode='0012'").left(10), QStringLiteral("2024-01-05"));
        QCOMPARE(one("select fzt from tRsBasic where fCode='0012'"), QStringLiteral("1"));

        ListRowSource issues = IssueRows(check);
        QVERIFY(ExportRows(path("issues.xlsx"), issues, QStringLiteral("问题行")) == check.issues.size());
    }

    void exportedGridImportsBackUnchanged() {
        addPerson(QStringLiteral("0001"), QStringLiteral("甲"));
        addPerson(QStringLiteral("0002"), QStringLiteral("乙"));
        ZqGrid grid;
        grid.setMaxCols(4);
        for (int c = 1; c <= 4; ++c)
            grid.setHeaderText(c, QStringList{"员工编号", "姓名", "受聘时间", "现属部门"}.at(c - 1));
        grid.loadRows({{"0001", "甲", "2020-01-01", "生产部"}, {"0002", "乙", "2020-01-01", "生产部"}});
        grid.setMaxRows(4); // blank rows for typing stay out
        GridRowSource source(grid);
        QCOMPARE(source.columns().at(2).kind, CellKind::Date);
        QCOMPARE(ExportRows(path("grid.xlsx"), source, QStringLiteral("员工名单")), 2);

        const ImportCheck same = CheckImport(PrepareImport(path("grid.xlsx")), true);
        QCOMPARE(same.unchanged, 2);
        QCOMPARE(same.updated + same.added + same.refused, 0);

        grid.setText(2, 2, QStringLiteral("乙改"));
        GridRowSource changed(grid);
        QCOMPARE(ExportRows(path("grid.csv"), changed, QString()), 2);
        const ImportCheck check = CheckImport(PrepareImport(path("grid.csv")), true);
        QCOMPARE(check.updated, 1);
        QCOMPARE(check.accepted.first().changed, QStringList{QStringLiteral("fName")});
        QVERIFY(WriteImport(check, false));
        QCOMPARE(one("select fName from tRsBasic where fCode='0002'"), QStringLiteral("乙改"));

        // The grid's context menu writes the file the prompt names.
        EnableGridExport(&grid, QStringLiteral("名单"));
        auto& prompts = scriptPrompts();
        prompts.answerFile(path("menu.xlsx"));
        grid.findChild<QAction*>(QStringLiteral("actExportGrid"))->trigger();
        QCOMPARE(ReadXlsx(path("menu.xlsx")).rows.size(), 3);
    }

    void aFailedWriteLeavesNothing() {
        const QString csv = QStringLiteral("员工编号,姓名,受聘时间\r\n0001,甲,2024-01-05\r\n0002,乙,2024-01-05\r\n");
        writeText(path("ok.csv"), csv.toUtf8());
        const ImportCheck check = CheckImport(PrepareImport(path("ok.csv")), false);
        QCOMPARE(check.added, 2);
        // Another client takes the second code between the check and the write.
        addPerson(QStringLiteral("0002"), QStringLiteral("别人"));
        QVERIFY_THROWS_EXCEPTION(DbError, WriteImport(check, false));
        QCOMPARE(one("select count(*) from tRsBasic"), QStringLiteral("1"));
    }

    void anUpdateKeepsAnotherClerksEdit() {
        addPerson(QStringLiteral("0001"), QStringLiteral("甲"));
        addPerson(QStringLiteral("0003"), QStringLiteral("丙"));
        writeText(path("names.csv"), QStringLiteral("员工编号,姓名,家庭电话\r\n0001,甲改,\r\n0003,丙改,555\r\n").toUtf8());
        const auto check = [&] {
            const ImportCheck c = CheckImport(PrepareImport(path("names.csv")), true);
            if (c.updated != 2) qFatal("two updates expected");
            return c;
        };
        // Another clerk's edit of a field the import does not change is kept beside the import's.
        ImportCheck first = check();
        exec(QStringLiteral("update tRsBasic set fHj='上海' where fCode='0003'"));
        QVERIFY(WriteImport(first, false));
        QCOMPARE(one("select fName||fPhone||fHj from tRsBasic where fCode='0003'"), QStringLiteral("丙改555上海"));

        // An edit of a field it changes refuses the whole import, naming the row; nothing is written.
        exec(QStringLiteral("update tRsBasic set fName='甲',fPhone=null where fCode in ('0001','0003')"));
        ImportCheck second = check();
        exec(QStringLiteral("update tRsBasic set fPhone='666' where fCode='0003'"));
        try {
            WriteImport(second, false);
            QFAIL("the import overwrote another clerk's edit");
        } catch (const ConflictError& e) {
            QVERIFY2(e.message().contains(QStringLiteral("第 3 行的员工 0003")), qPrintable(e.message()));
        }
        QCOMPARE(one("select fName from tRsBasic where fCode='0001'"), QStringLiteral("甲"));
        QCOMPARE(one("select fPhone from tRsBasic where fCode='0003'"), QStringLiteral("666"));
    }
};

ZQ_DB_TEST_MAIN(TestPersonImport)
#include "test_person_import.moc"
