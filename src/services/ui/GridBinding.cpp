#include "GridBinding.h"

#include "Grid.h"
#include "services/InputAids.h"
#include "services/ui/BriefDialog.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/Schema.h"
#include "shell/SqlText.h"
#include "shell/ui/Commands.h"

#include <QLabel>
#include <QStringList>

namespace zq {

namespace {

QString personCondition(const QString& condition) {
    QString where = QStringLiteral(" Where fcode=") + quoted(G().CurPersonCode);
    if (!condition.isEmpty()) where += QStringLiteral(" And ") + condition;
    return where;
}

// The columns a header double click can rename, by table; tRsDetail goes by data row instead.
QStringList headerFields(const QString& table) {
    static const QHash<QString, QStringList> fields{
        {QStringLiteral("trsfamily"), {"fCh", "fName", "fNy", "fDw", "fZz"}},
        {QStringLiteral("trsresult"), {"fYear", "fyj"}},
        {QStringLiteral("trstech"), {"fJs", "fJn", "fBz", "fSm"}},
        {QStringLiteral("trswork"), {"fYear", "fbm", "fRz", "fWk", "newbm"}},
        {QStringLiteral("trsmeed"), {"fYear", "Fyy", "fjc"}},
        {QStringLiteral("trs_workstate"), {"Fyear", "YTotal", "Ydays", "ADay"}},
        {QStringLiteral("trsstudy"), {"fYear", "fXx", "fZy"}},
        {QStringLiteral("trsdetail"), {"fRsDetail1", "fRsDetail2", "fRsDetail3", "fRsDetail4"}},
    };
    return fields.value(table.toLower());
}

// The caption labels of the master record and of the spouse, by label index.
const QStringList& labelFields(const QString& table) {
    static const QStringList basic{
        "fCode",         "fName",    "fSex",     "fBirthDay",    "fMz",          "fHy",      "fHj",
        "fSfz",          "fJg",      "fZz",      "fXzz",         "fygxz",        "fPhone",   "fXl",
        "fZy",           "fXx",      "fWy",      "fWySp",        "fZc",          "fZcDay",   "fRz",
        "fTc",           "fother1",  "fother2",  "fGzName",      "fSpday",       "fBmName",  "idlimt",
        "bodycondition", "staycode", "staytime", "contracttime", "contractlimt", "fBp",      "mobilephone",
        "grudtime",      "worktime", "funit",    "leavetime",    "leavereason",  "worklimt", "roadmny",
        "seepnt",        "safeedu",  "lyunit",   "trustman",     "bodyhigh",     "bodytype", "neckline",
        "waistline",     "shoecode", "unit"};
    static const QStringList spouse{"fpname",  "fpbirthday", "fpzz", "fpmz", "fpjg",
                                    "fpphone", "fpxl",       "fphj", "fprz", "fpdw"};
    static const QStringList none;
    const QString t = table.toLower();
    if (t == QLatin1String("trsbasic")) return basic;
    if (t == QLatin1String("trsbasic_p")) return spouse;
    return none;
}

// Shows the field settings dialog and gives RptSetResult (the old caption after a cancel).
QString editFieldSettings(const QString& field, const QString& table, qint16 itemEnable) {
    openForm(QStringLiteral("frmRs_RptSet"), nullptr,
             {{QStringLiteral("Field"), field},
              {QStringLiteral("TabelName"), table},
              {QStringLiteral("ItemEnable"), itemEnable}});
    return G().RptSetResult;
}

} // namespace

void LoadGridRows(const QString& table, const QString& fieldList, ZqGrid& grid, const QString& condition) {
    Recordset rs(conn(), QStringLiteral("Select fOrderID,") + fieldList + QStringLiteral(" From ") + table +
                             personCondition(condition) + QStringLiteral(" Order By fOrderID"));
    // Grid rows are consecutive whatever gaps fOrderID has.
    QVector<QStringList> rows;
    rows.reserve(rs.recordCount());
    const int cols = grid.maxCols();
    for (; !rs.eof(); rs.moveNext()) {
        QStringList cells;
        for (int c = 1; c <= cols; ++c)
            cells << rs.text(c);
        rows << cells;
    }
    grid.loadRows(std::move(rows));
}

int SaveGridRows(const QString& table, const QString& fieldList, ZqGrid& grid, const QString& condition) {
    try {
        Transaction tx(conn());
        conn().execute(QStringLiteral("Delete From ") + table + personCondition(condition));
        // The reading set covers all of the person's rows, whatever the condition.
        Recordset rs(conn(),
                     QStringLiteral("Select fOrderID,") + fieldList + QStringLiteral(",fCode From ") + table +
                         QStringLiteral(" Where fCode=") + quoted(G().CurPersonCode),
                     Cursor::Keyset, Lock::Optimistic);
        const int cols = grid.maxCols();
        QVector<int> sizes(cols + 1, 0);
        for (int c = 1; c <= cols; ++c)
            sizes[c] = schema::columnSize(table, rs.fieldName(c));
        const int codeField = rs.fieldCount() - 1;
        for (int r = 1; r <= grid.maxRows(); ++r) {
            // A row without its first cell is not stored; the rest of it is lost.
            if (grid.value(r, 1).isEmpty()) continue;
            rs.addNew();
            rs.setValue(codeField, G().CurPersonCode);
            rs.setValue(0, r); // row numbers keep the gaps of skipped rows
            for (int c = 1; c <= cols; ++c) {
                const QString v = grid.value(r, c);
                rs.setValue(c, sizes[c] > 0 ? LimitLength(v, sizes[c], QString()) : v);
            }
            rs.update();
        }
        rs.close();
        tx.commit();
        return -1;
    } catch (const DbError&) {
        return 0; // rolled back by the guard; the caller tells the user
    }
}

void GridInsertRow(ZqGrid& grid) {
    grid.setMaxRows(grid.maxRows() + 1);
    const int active = grid.activeRow();
    const int row = (active == -1 || grid.maxRows() == 1) ? 1 : active + 1;
    grid.setRow(row);
    grid.action(7);
    grid.setCol(1);
    grid.action(0);
    grid.setFocus();
}

void GridDeleteRow(ZqGrid& grid) {
    const int active = grid.activeRow();
    if (active == 0) return;
    grid.setRow(active);
    if (ShowMsg(QStringLiteral("确认：删除第") + QString::number(active) + QStringLiteral("条记录？"),
                vbYesNo + vbQuestion, QStringLiteral("人事管理")) != vbYes)
        return;
    grid.action(5);
    grid.setMaxRows(grid.maxRows() - 1);
    grid.setFocus();
}

int EditGridHeader(int col, int row, ZqGrid& grid, const QString& table) {
    const bool detail = table.toLower() == QLatin1String("trsdetail");
    if (detail ? (col != 1 || row == 0) : (row != 0 || col == 0)) return 0;
    if (G().PersonEditMode == 0) return 0;
    const QStringList fields = headerFields(table);
    // An unknown table or column leaves the field empty: the dialog then finds nothing.
    const QString field = fields.value((detail ? row : col) - 1);
    const QString result = editFieldSettings(field, table, -1);
    grid.setRow(row);
    grid.setCol(col);
    if (result == grid.text()) return 0;
    grid.setText(result);
    return -1;
}

QString FieldOfLabel(int index, QLabel& label, const QString& table, int mode) {
    QString field = labelFields(table).value(index);
    switch (mode) {
    case 0:
        return AskBriefValue(field);
    case 1: {
        const QString result = editFieldSettings(field, table, 0);
        if (result == label.text()) return QStringLiteral("0");
        label.setText(result);
        return QStringLiteral("1");
    }
    case 3:
        return field;
    default:
        return {};
    }
}

} // namespace zq
