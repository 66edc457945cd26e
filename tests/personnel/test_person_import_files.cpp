// The import against files that other programs wrote: numbers where the file meant text, a .csv
// saved again by a spreadsheet program, formulas without a result, the 1904 date system, sheets
// that are not the data, cells that look like formulas, bad bytes, and hostile or large files that
// must be refused with a reason.

#include "TestDb.h"
#include "ThirdPartySheets.h"
#include "ZipFiles.h"

#include "personnel/PersonImport.h"
#include "services/Spreadsheets.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;
using test::exec;
using test::one;

namespace {

void addPerson(const QString& code, const QString& name, const QString& phone = {}, const QString& card = {},
               const QString& account = {}) {
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fSex,fPhone,fSfz,fother1,fSpday,fBmName,fBmCode,fzt) "
                        "values (?,?,'男',?,?,?,'2020-01-01','生产部','01',1)"),
         {code, name, phone, card, account});
}

// Row number -> the reasons given for it, refusals and warnings apart.
struct Findings {
    QHash<int, QString> refused, warned;
    explicit Findings(const ImportCheck& check) {
        for (const RowIssue& i : check.issues)
            (i.refused ? refused : warned)[i.row] += i.reason + QLatin1Char(';');
    }
};

QString all(const ImportCheck& check) {
    QStringList out{check.error};
    for (const RowIssue& i : check.issues)
        out << QStringLiteral("%1 %2 %3").arg(i.row).arg(i.refused ? "拒绝" : "警告", i.reason);
    return out.join(QLatin1Char('\n'));
}

// What a spreadsheet program does to a .csv it opens and saves unchanged: digits become numbers
// (leading zeros gone, more than eleven digits in scientific notation), days become its own form;
// and the clerk's one edit, a name in the third row. Saved in the code page of the desktop.
const QByteArray kResave = R"(
import csv, re, sys
src, dst = sys.argv[1], sys.argv[2]
rows = list(csv.reader(open(src, encoding='utf-8-sig', newline='')))
def resave(v):
    if re.fullmatch(r'\d+', v):
        n = str(int(v))
        return ('%.5E' % int(v)) if len(n) > 11 else n
    m = re.fullmatch(r'(\d{4})-(\d{2})-(\d{2})', v)
    if m:
        return '%d/%d/%d' % tuple(int(x) for x in m.groups())
    return v
out = [rows[0]] + [[resave(c) for c in r] for r in rows[1:]]
out[3][1] = '改了名'
with open(dst, 'w', encoding='gb18030', newline='') as f:
    csv.writer(f, lineterminator='\r\n').writerows(out)
)";

} // namespace

class TestPersonImportFiles : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;

    QString path(const QString& name) const { return m_dir.filePath(name); }
    void python(const QByteArray& script, const QStringList& args = {}) { test::runPython(m_dir.path(), script, args); }

private slots:
    void init();
    void numberCellsAreRefusedOrMatchedNeverStored();
    void aRoundTripThroughASpreadsheetProgramChangesOnlyWhatTheClerkChanged();
    void formulasDateSystemsAndSheets();
    void cellsThatLookLikeFormulasGoOutProtectedAndComeBack();
    void badBytesNeverReachTheDatabase();
    void hostileAndLargeFilesAreReadSparselyOrRefused();
    void exportKeepsEveryDigitAndEveryCharacter();
};

// The scripts of the other program sit in the bodies below, out of the class that moc reads.

void TestPersonImportFiles::init() {
    test::freshDatabase();
    test::actAsSupervisor();
    scriptPrompts();
    exec(QStringLiteral("insert into tRs_Bm (fCode,fName) values ('01','生产部')"));
}

void TestPersonImportFiles::numberCellsAreRefusedOrMatchedNeverStored() {
    addPerson(QStringLiteral("009002"), QStringLiteral("老员工"));
    // 9003 could be either of two codes: not matched.
    addPerson(QStringLiteral("09003"), QStringLiteral("甲"));
    addPerson(QStringLiteral("009003"), QStringLiteral("乙"));
    python(R"(
import openpyxl, sys
wb = openpyxl.Workbook(); ws = wb.active; ws.title = '名单'
ws.append(['员工编号', '姓名', '受聘时间', '身份证号码', '银行帐号', '家庭电话'])
ws.append([9002, '改名', '2020-01-01'])
ws.append([9003, '新人', '2020-01-01'])
ws.append(['0004', '四', '2020-01-01', 110101199708121234])
ws.append(['0005', '五', '2020-01-01', None, 6222846053526450000])
ws.append(['0006', '六', '2020-01-01', None, None, 13800138000])
ws.append(['0007', '七', '2020-01-01', '11010519491231002X', '6222846053526450001', '075512345678'])
wb.save(sys.argv[1])
)",
           {path("numbers.xlsx")});
    const ImportPlan plan = PrepareImport(path("numbers.xlsx"));
    QVERIFY2(plan.error.isEmpty(), qPrintable(plan.error));
    const ImportCheck check = CheckImport(plan, true);
    const Findings f(check);
    QVERIFY2(f.warned.value(2).contains(QStringLiteral("按已有的 009002 对应")), qPrintable(all(check)));
    QVERIFY2(f.refused.value(3).contains(QStringLiteral("9003 在文件中是数字")), qPrintable(all(check)));
    QVERIFY2(f.refused.value(4).contains(QStringLiteral("“身份证号码”")), qPrintable(all(check)));
    QVERIFY2(f.refused.value(5).contains(QStringLiteral("“银行帐号”")), qPrintable(all(check)));
    QVERIFY2(f.refused.value(6).contains(QStringLiteral("“家庭电话” 13800138000 在文件中是数字")),
             qPrintable(all(check)));
    QCOMPARE(check.updated, 1);
    QCOMPARE(check.added, 1);
    QVERIFY(WriteImport(check, true));
    QCOMPARE(one("select fName from tRsBasic where fCode='009002'"), QStringLiteral("改名"));
    QCOMPARE(one("select fother1 from tRsBasic where fCode='0007'"), QStringLiteral("6222846053526450001"));
    QCOMPARE(one("select fPhone from tRsBasic where fCode='0007'"), QStringLiteral("075512345678"));
    QCOMPARE(one("select count(*) from tRsBasic"), QStringLiteral("4"));
    QCOMPARE(one("select count(*) from tRsBasic where fSfz like '%e+%' or fother1 like '%e+%' or "
                 "fSfz like '%E+%' or fother1 like '%E+%'"),
             QStringLiteral("0"));
}

void TestPersonImportFiles::aRoundTripThroughASpreadsheetProgramChangesOnlyWhatTheClerkChanged() {
    for (int i = 1; i <= 12; ++i)
        addPerson(QStringLiteral("%1").arg(i * 3, 4, 10, QLatin1Char('0')), QStringLiteral("员工%1").arg(i),
                  QStringLiteral("0755%1").arg(i, 8, 10, QLatin1Char('0')),
                  QStringLiteral("1101011997081200%1").arg(i, 2, 10, QLatin1Char('0')),
                  QStringLiteral("622284605352645%1").arg(i, 4, 10, QLatin1Char('0')));
    const auto exportTo = [&](const QString& file, const QString& fields) {
        QVector<SheetColumn> cols;
        for (const QString& f : fields.split(QLatin1Char(',')))
            cols << SheetColumn{ImportCaption(f), f == QLatin1String("fSpday") ? CellKind::Date : CellKind::Text, 0, 10};
        QueryRowSource rows(cols, QStringLiteral("select %1 from tRsBasic order by fCode").arg(fields));
        QCOMPARE(ExportRows(file, rows, QStringLiteral("员工名单")), 12);
    };

    // Everything, long numbers too: their digits are gone, and the file says so as a whole.
    exportTo(path("all.csv"), QStringLiteral("fCode,fName,fSpday,fPhone,fSfz,fother1,fBmName"));
    python(kResave, {path("all.csv"), path("all-saved.csv")});
    const ImportCheck lost = CheckImport(PrepareImport(path("all-saved.csv")), true);
    QVERIFY2(lost.error.contains(QStringLiteral("科学计数法")), qPrintable(all(lost)));
    QVERIFY2(lost.error.contains(QStringLiteral("共 24 处")), qPrintable(lost.error));

    // Without them: the codes and phones that lost their zeros are matched to what is stored,
    // the days read back the same, and only the clerk's edit is written.
    exportTo(path("short.csv"), QStringLiteral("fCode,fName,fSpday,fPhone,fBmName"));
    python(kResave, {path("short.csv"), path("short-saved.csv")});
    const ImportCheck check = CheckImport(PrepareImport(path("short-saved.csv")), true);
    QVERIFY2(check.error.isEmpty(), qPrintable(check.error));
    QCOMPARE(check.added, 0);
    QCOMPARE(check.refused, 0);
    QCOMPARE(check.unchanged, 11);
    QCOMPARE(check.updated, 1);
    QCOMPARE(check.accepted.first().changed, QStringList{QStringLiteral("fName")});
    QCOMPARE(check.accepted.first().values.value(QStringLiteral("fCode")), QStringLiteral("0009"));
    QVERIFY2(Findings(check).warned.value(4).contains(QStringLiteral("按已有的 0009 对应")), qPrintable(all(check)));
    QVERIFY(WriteImport(check, false));
    QCOMPARE(one("select count(*) from tRsBasic"), QStringLiteral("12"));
    QCOMPARE(one("select fName from tRsBasic where fCode='0009'"), QStringLiteral("改了名"));
    QCOMPARE(one("select fPhone from tRsBasic where fCode='0009'"), QStringLiteral("075500000003"));

    // The .xlsx through another program's reader and writer: the cell edited is the change.
    exportTo(path("all.xlsx"), QStringLiteral("fCode,fName,fSpday,fPhone,fSfz,fother1,fBmName"));
    python(R"(
import openpyxl, sys
wb = openpyxl.load_workbook(sys.argv[1]); ws = wb.active
ws['B4'] = '又改名'
wb.save(sys.argv[2])
)",
           {path("all.xlsx"), path("all-saved.xlsx")});
    const ImportCheck xlsx = CheckImport(PrepareImport(path("all-saved.xlsx")), true);
    QVERIFY2(xlsx.error.isEmpty() && xlsx.refused == 0, qPrintable(all(xlsx)));
    QCOMPARE(xlsx.updated, 1);
    QCOMPARE(xlsx.unchanged, 11);
    QCOMPARE(xlsx.accepted.first().changed, QStringList{QStringLiteral("fName")});
}

void TestPersonImportFiles::formulasDateSystemsAndSheets() {
    python(R"(
import datetime, openpyxl, sys
from openpyxl.utils.datetime import CALENDAR_MAC_1904
wb = openpyxl.Workbook(); wb.epoch = CALENDAR_MAC_1904
ws = wb.active; ws.title = '名单'
ws.append(['员工编号', '姓名', '出生日期', '受聘时间'])
ws.append(['0001', '甲', datetime.date(1995, 6, 10), datetime.date(2020, 1, 1)])
ws.append(['0002', '乙', '=DATE(1995,6,10)', datetime.date(2020, 1, 1)])
wb.save(sys.argv[1])

wb = openpyxl.Workbook()
notes = wb.active; notes.title = '说明'
notes.append(['请按“名单”填写, 编号写成文字'])
hidden = wb.create_sheet('列表'); hidden.sheet_state = 'hidden'
hidden.append(['员工编号', '姓名'])
data = wb.create_sheet('名单')
data.append(['员工名单'])
data.merge_cells('A1:C1')
data.append(['员工编号', '姓名', '受聘时间'])
data.append(['0003', '丙', '2021-03-04'])
data.append(['0004', '丁'])
data.merge_cells('B4:C4')
wb.save(sys.argv[2])

wb = openpyxl.Workbook(); wb.active.title = '说明'; wb.active.append(['没有表头'])
wb.create_sheet('其他').append(['甲', '乙'])
wb.save(sys.argv[3])
)",
           {path("1904.xlsx"), path("sheets.xlsx"), path("nohead.xlsx")});
    const ImportCheck dates = CheckImport(PrepareImport(path("1904.xlsx")), false);
    QCOMPARE(dates.added, 1);
    QCOMPARE(dates.accepted.first().values.value(QStringLiteral("fBirthDay")), QStringLiteral("1995-06-10"));
    QCOMPARE(dates.accepted.first().values.value(QStringLiteral("fSpday")), QStringLiteral("2020-01-01"));
    QVERIFY2(Findings(dates).refused.value(3).contains(QStringLiteral("单元格 名单!C3 是公式, 没有计算结果")),
             qPrintable(all(dates)));

    const ImportPlan plan = PrepareImport(path("sheets.xlsx"));
    QVERIFY2(plan.error.isEmpty(), qPrintable(plan.error));
    QCOMPARE(plan.sheet, QStringLiteral("名单"));
    QCOMPARE(plan.headerPlace(), QStringLiteral("工作表“名单”第 2 行"));
    const ImportCheck check = CheckImport(plan, false);
    QCOMPARE(check.added, 1);
    QVERIFY2(Findings(check).refused.value(4).contains(QStringLiteral("合并单元格 名单!B4:C4")), qPrintable(all(check)));

    const QString none = PrepareImport(path("nohead.xlsx")).error;
    QVERIFY2(none.contains(QStringLiteral("没有表头行")) && none.contains(QStringLiteral("“说明”、“其他”")),
             qPrintable(none));
}

void TestPersonImportFiles::cellsThatLookLikeFormulasGoOutProtectedAndComeBack() {
    const QStringList names{"=1+1", "+86", "@a", "-", "=HYPERLINK(\"http://x\")"};
    QVector<QStringList> rows;
    for (int i = 0; i < names.size(); ++i)
        rows << QStringList{QStringLiteral("000%1").arg(i + 1), names.at(i), QStringLiteral("2020-01-01"),
                            QStringLiteral("-5")};
    ListRowSource source({{QStringLiteral("员工编号")}, {QStringLiteral("现住址")}, {QStringLiteral("受聘时间")},
                          {QStringLiteral("数量"), CellKind::Number}},
                         rows);
    QCOMPARE(WriteCsv(path("f.csv"), source), 5);
    QFile f(path("f.csv"));
    QVERIFY(f.open(QIODevice::ReadOnly));
    const QByteArray bytes = f.readAll();
    QVERIFY2(bytes.contains("0001,'=1+1,2020-01-01,-5\r\n"), bytes.constData());
    QVERIFY(bytes.contains("0004,'-,"));
    QVERIFY(bytes.contains("\"'=HYPERLINK(\"\"http://x\"\")\""));
    // Another program's reader sees the apostrophe, so its spreadsheet shows text.
    python(R"(
import csv, sys
rows = list(csv.reader(open(sys.argv[1], encoding='utf-8-sig')))
assert all(r[1].startswith("'") for r in rows[1:]), rows
assert rows[1][3] == '-5'
)",
           {path("f.csv")});
    const SheetData back = ReadCsv(path("f.csv"));
    for (int i = 0; i < names.size(); ++i)
        QCOMPARE(back.rows.at(i + 1).cell(1), names.at(i));
}

void TestPersonImportFiles::badBytesNeverReachTheDatabase() {
    QByteArray csv = "\xEF\xBB\xBF员工编号,姓名,受聘时间\r\n";
    for (int i = 1; csv.size() < 6000; ++i)
        csv += QStringLiteral("%1,甲%2,2020-01-01\r\n").arg(i, 4, 10, QLatin1Char('0')).arg(i).toUtf8();
    csv += QByteArray("9001,\xE5\x90\x8D") + QByteArray(1, '\0') + "X,2020-01-01\r\n"; // well after the first 4 KB
    csv += "9002,名\x01,2020-01-01\r\n";
    test::writeFile(path("nul.csv"), csv);
    const ImportCheck check = CheckImport(PrepareImport(path("nul.csv")), false);
    QCOMPARE(check.refused, 2);
    const Findings f(check);
    const int last = check.issues.last().row;
    QVERIFY2(f.refused.value(last - 1).contains(QStringLiteral("控制字符")), qPrintable(all(check)));
    QVERIFY2(f.refused.value(last).contains(QStringLiteral("U+0001")), qPrintable(all(check)));
    QVERIFY(WriteImport(check, true));
    QCOMPARE(one("select count(*) from tRsBasic where fCode in ('9001','9002')"), QStringLiteral("0"));

    // Bytes that are no text in either encoding refuse the file.
    test::writeFile(path("bytes.csv"), "员工编号,姓名\r\n0001,\x81\x30\xFF\xFF\r\n");
    const QString refused = PrepareImport(path("bytes.csv")).error;
    QVERIFY2(refused.contains(QStringLiteral("无法识别的字节")), qPrintable(refused));

    // An .xlsx holds a control character as an escape.
    test::writeZip(path("escape.xlsx"),
                   {{"xl/worksheets/sheet1.xml",
                     "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"><sheetData>"
                     "<row r=\"1\"><c r=\"A1\" t=\"inlineStr\"><is><t>员工编号</t></is></c>"
                     "<c r=\"B1\" t=\"inlineStr\"><is><t>姓名</t></is></c></row>"
                     "<row r=\"2\"><c r=\"A2\" t=\"inlineStr\"><is><t>0001</t></is></c>"
                     "<c r=\"B2\" t=\"inlineStr\"><is><t>甲_x0000_乙</t></is></c></row>"
                     "</sheetData></worksheet>"}});
    const ImportCheck escaped = CheckImport(PrepareImport(path("escape.xlsx")), false);
    QVERIFY2(Findings(escaped).refused.value(2).contains(QStringLiteral("U+0000")), qPrintable(all(escaped)));
}

void TestPersonImportFiles::hostileAndLargeFilesAreReadSparselyOrRefused() {
    python(R"(
import openpyxl, sys, zipfile
wb = openpyxl.Workbook(); ws = wb.active
ws.append(['员工编号', '姓名', '受聘时间'])
for r in range(2, 2002):
    ws.cell(row=r, column=16384, value='x')
wb.save(sys.argv[1])

def sheet(path, rows, shared=None, tail=b''):
    with zipfile.ZipFile(path, 'w', zipfile.ZIP_DEFLATED) as z:
        with z.open('xl/worksheets/sheet1.xml', 'w') as f:
            f.write(b'<worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"><sheetData>')
            for piece in rows:
                f.write(piece)
            f.write(b'</sheetData>' + tail + b'</worksheet>')
        if shared:
            with z.open('xl/sharedStrings.xml', 'w') as f:
                f.write(b'<sst xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">')
                for piece in shared:
                    f.write(piece)
                f.write(b'</sst>')

head = b'<row r="1"><c r="A1" t="inlineStr"><is><t>x</t></is></c></row>'
sheet(sys.argv[2], [head, b'<row r="2"><c r="A2" t="inlineStr"><is><t>'] + [b'x' * (1 << 20)] * 64 + [b'</t></is></c></row>'])
sheet(sys.argv[3], [head], (b'<si><t>a</t></si>' * 1000 for _ in range(4001)))
merges = b''.join(b'<mergeCell ref="A%d:B%d"/>' % (r, r) for r in range(2, 200002))
sheet(sys.argv[4], [head] + [b''.join(b'<row r="%d"><c r="A%d"><v>1</v></c></row>' % (r, r) for r in range(2, 200002))],
      None, b'<mergeCells>' + merges + b'</mergeCells>')
)",
           {path("far.xlsx"), path("cell.xlsx"), path("shared.xlsx"), path("merges.xlsx")});
    const SheetData far = ReadXlsx(path("far.xlsx"));
    QVERIFY2(far.error.isEmpty(), qPrintable(far.error));
    QCOMPARE(far.rows.size(), 2001);
    QCOMPARE(far.rows.last().columns, QVector<int>{16383});
    QCOMPARE(far.rows.last().cell(16383), QStringLiteral("x"));

    const QString cell = ReadXlsx(path("cell.xlsx")).error + ReadXlsx(path("cell.xlsx")).rows.value(1).problem;
    QVERIFY2(cell.contains(QStringLiteral("过长")) || cell.contains(QStringLiteral("超过 1 MB")), qPrintable(cell));
    const QString shared = ReadXlsx(path("shared.xlsx")).error;
    QVERIFY2(shared.contains(QStringLiteral("共享字符串超过")), qPrintable(shared));
    const SheetData merges = ReadXlsx(path("merges.xlsx"));
    QCOMPARE(merges.rows.size(), 200001);
    QCOMPARE(merges.rows.last().problem, QStringLiteral("合并单元格 Sheet1!A200001:B200001"));

    QByteArray csv = "员工编号,姓名,受聘时间\r\n";
    for (int i = 0; i < kMaxImportRows; ++i)
        csv += "1,a,2020-01-01\r\n";
    test::writeFile(path("rows.csv"), csv);
    const QString rows = PrepareImport(path("rows.csv")).error;
    QVERIFY2(rows.contains(QStringLiteral("行数超过 %1").arg(kMaxImportRows)), qPrintable(rows));
}

void TestPersonImportFiles::exportKeepsEveryDigitAndEveryCharacter() {
    const QStringList texts{"a<b>&\"c\"", "_x0041_", "甲\r乙\n丙", QString(QChar(0x1)) + "x", "𠀀𪚥"};
    QVector<QStringList> rows;
    for (int i = 0; i < texts.size(); ++i)
        rows << QStringList{texts.at(i), QStringList{"0.30000000000000004", "1234567.8912345679", "-5", "1e+300",
                                                     "17"}.at(i),
                            "2024-01-05"};
    ListRowSource source({{QStringLiteral("文字")}, {QStringLiteral("金额"), CellKind::Number, 2}, {QStringLiteral("日期"), CellKind::Date}},
                         rows);
    QCOMPARE(WriteXlsx(path("exact.xlsx"), source, QStringLiteral("名单")), 5);
    const SheetData back = ReadXlsx(path("exact.xlsx"));
    QVERIFY2(back.error.isEmpty(), qPrintable(back.error));
    QCOMPARE(back.sheet, QStringLiteral("名单"));
    for (int i = 0; i < texts.size(); ++i) {
        if (i == 3) {
            QVERIFY(back.rows.at(i + 1).problem.contains(QStringLiteral("U+0001"))); // told, never stored
        } else {
            QCOMPARE(back.rows.at(i + 1).cell(0), texts.at(i));
        }
        QCOMPARE(back.rows.at(i + 1).cell(1), rows.at(i).at(1) == QLatin1String("1e+300") ? QStringLiteral("1e+300")
                                                                                           : rows.at(i).at(1));
        QCOMPARE(back.rows.at(i + 1).cell(2), QStringLiteral("2024-01-05"));
    }
    // Another program reads the same numbers, dates and texts.
    python(R"(
import datetime, openpyxl, sys
ws = openpyxl.load_workbook(sys.argv[1]).active
assert ws.title == '名单', ws.title
assert ws['B2'].value == 0.30000000000000004, repr(ws['B2'].value)
assert ws['B3'].value == 1234567.8912345679, repr(ws['B3'].value)
assert ws['B4'].value == -5 and ws['B4'].number_format == '0.00', (ws['B4'].value, ws['B4'].number_format)
assert ws['C2'].value == datetime.datetime(2024, 1, 5), repr(ws['C2'].value)
assert ws['A2'].value == 'a<b>&"c"', repr(ws['A2'].value)
assert ws['A6'].value == '𠀀𪚥', repr(ws['A6'].value)
assert ws['A1'].font.b and ws.freeze_panes == 'A2', ws.freeze_panes
)",
           {path("exact.xlsx")});
}

ZQ_DB_TEST_MAIN(TestPersonImportFiles)
#include "test_person_import_files.moc"
