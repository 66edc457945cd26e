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

#include <QCryptographicHash>
#include <QLabel>
#include <QStringList>

namespace zq {

namespace {

QString personCondition(const QString& condition) {
    QString where = QStringLiteral(" Where fcode=") + quoted(G().CurPersonCode);
    if (!condition.isEmpty()) where += QStringLiteral(" And ") + condition;
    return where;
}

QString lastSaveError;

// Name of the grid property that keeps what LoadGridRows read, for the save to compare.
QByteArray loadedKey(const QString& table, const QString& condition) {
    return "zqLoaded:" + table.toLower().toUtf8() + '|' + condition.toUtf8();
}

// The person's rows of the condition as they stand, folded into one value.
QByteArray rowsDigest(Recordset& rs) {
    QCryptographicHash h(QCryptographicHash::Sha1);
    for (; !rs.eof(); rs.moveNext()) {
        for (int c = 0; c < rs.fieldCount(); ++c) {
            const QVariant v = rs.value(c);
            h.addData(v.isNull() ? QByteArrayView("\x01null") : QByteArrayView(rs.text(c).toUtf8()));
            h.addData(QByteArrayView("\x00", 1));
        }
        h.addData(QByteArrayView("\x02", 1));
    }
    return h.result();
}

QString readSql(const QString& table, const QString& fieldList, const QString& condition) {
    return QStringLiteral("Select fOrderID,") + fieldList + QStringLiteral(" From ") + table +
           personCondition(condition) + QStringLiteral(" Order By fOrderID");
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

// Stores the grid's rows over the person's rows of the condition, changing only what differs, so
// that the change history holds what the clerk changed and not a delete and rewrite of every row.
// A grid row that equals a stored one keeps it (moved to its new place if need be); the other
// grid rows take the other stored rows in order, column by column; the rest are added or deleted.
// Row numbers keep the gaps of skipped rows, as before.
void writeGridRows(const QString& table, const QString& fieldList, const ZqGrid& grid, const QString& condition) {
    Recordset rs(conn(),
                 QStringLiteral("Select fOrderID,") + fieldList + QStringLiteral(",fCode From ") + table +
                     personCondition(condition) + QStringLiteral(" Order By fOrderID"),
                 Cursor::Keyset, Lock::Optimistic);
    const int cols = grid.maxCols();
    QVector<int> sizes(cols + 1, 0);
    for (int c = 1; c <= cols; ++c)
        sizes[c] = schema::columnSize(table, rs.fieldName(c));
    struct Stored {
        int order;
        QStringList cells;
        int takenBy = -1;
    };
    QVector<Stored> stored;
    for (; !rs.eof(); rs.moveNext()) {
        Stored s{int(rs.val(0)), {}};
        for (int c = 1; c <= cols; ++c)
            s.cells << rs.text(c);
        stored << s;
    }
    struct Wanted {
        int order;
        QStringList cells;
        int takes = -1;
    };
    QVector<Wanted> wanted;
    for (int r = 1; r <= grid.maxRows(); ++r) {
        // A row without its first cell is not stored; the rest of it is lost.
        if (grid.value(r, 1).isEmpty()) continue;
        Wanted w{r, {}};
        for (int c = 1; c <= cols; ++c) {
            const QString v = grid.value(r, c);
            w.cells << (sizes[c] > 0 ? LimitLength(v, sizes[c], QString()) : v);
        }
        wanted << w;
    }
    const auto take = [&](int w, int s) {
        wanted[w].takes = s;
        stored[s].takenBy = w;
    };
    // Unchanged rows first, at their own place, then anywhere.
    for (bool samePlace : {true, false})
        for (int w = 0; w < wanted.size(); ++w)
            for (int s = 0; s < stored.size() && wanted[w].takes < 0; ++s)
                if (stored[s].takenBy < 0 && stored[s].cells == wanted[w].cells &&
                    (!samePlace || stored[s].order == wanted[w].order))
                    take(w, s);
    int next = 0;
    for (int w = 0; w < wanted.size(); ++w) {
        if (wanted[w].takes >= 0) continue;
        while (next < stored.size() && stored[next].takenBy >= 0)
            ++next;
        if (next < stored.size()) take(w, next);
    }
    if (!stored.isEmpty()) rs.moveFirst();
    for (int s = 0; s < stored.size(); ++s) {
        // To the s-th row as read, deleted ones counted (moveFirst would pass over those).
        rs.move(s - rs.position());
        const int w = stored[s].takenBy;
        if (w < 0) {
            rs.deleteRow();
            continue;
        }
        bool changed = false;
        if (stored[s].order != wanted[w].order) {
            rs.setValue(0, wanted[w].order);
            changed = true;
        }
        for (int c = 1; c <= cols; ++c)
            if (stored[s].cells[c - 1] != wanted[w].cells[c - 1]) {
                rs.setValue(c, wanted[w].cells[c - 1]);
                changed = true;
            }
        if (changed) rs.update();
    }
    const int codeField = rs.fieldCount() - 1;
    for (const Wanted& w : wanted) {
        if (w.takes >= 0) continue;
        rs.addNew();
        rs.setValue(codeField, G().CurPersonCode);
        rs.setValue(0, w.order);
        for (int c = 1; c <= cols; ++c)
            rs.setValue(c, w.cells[c - 1]);
        rs.update();
    }
}

} // namespace

void LoadGridRows(const QString& table, const QString& fieldList, ZqGrid& grid, const QString& condition) {
    QVector<QStringList> rows;
    {
        Recordset rs(conn(), readSql(table, fieldList, condition), Cursor::Static);
        // Grid rows are consecutive whatever gaps fOrderID has.
        rows.reserve(rs.recordCount());
        const int cols = grid.maxCols();
        for (; !rs.eof(); rs.moveNext()) {
            QStringList cells;
            for (int c = 1; c <= cols; ++c)
                cells << rs.text(c);
            rows << cells;
        }
        // What was read, for the save to tell whether another client changed it meanwhile.
        rs.moveFirst();
        grid.setProperty(loadedKey(table, condition), rowsDigest(rs));
    }
    grid.loadRows(std::move(rows));
}

QString LastGridSaveError() {
    return lastSaveError;
}

int SaveGridRows(const QString& table, const QString& fieldList, ZqGrid& grid, const QString& condition) {
    lastSaveError.clear();
    const QByteArray key = loadedKey(table, condition);
    try {
        Transaction tx(conn());
        // The person's row is the lock that orders two clients saving the same person's rows.
        conn().execute(QStringLiteral("select fCode from tRsBasic where fCode=") + quoted(G().CurPersonCode) +
                       conn().dialect().forUpdate());
        const QVariant loaded = grid.property(key);
        if (loaded.isValid()) {
            Recordset now(conn(), readSql(table, fieldList, condition));
            if (rowsDigest(now) != loaded.toByteArray()) throw ConflictError();
        }
        writeGridRows(table, fieldList, grid, condition);
        if (loaded.isValid()) {
            Recordset now(conn(), readSql(table, fieldList, condition));
            grid.setProperty(key, rowsDigest(now)); // a second save from the same screen compares with this
        }
        tx.commit();
        return -1;
    } catch (const ConflictError& e) {
        lastSaveError = e.message();
        return 0;
    } catch (const DbError& e) {
        lastSaveError = e.message();
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
