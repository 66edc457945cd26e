#include "DeptData.h"

#include "services/CodeTreeData.h"
#include "services/Lookups.h"
#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QRegularExpression>
#include <QStringList>

namespace zq {

namespace {

const QString kDeptTable = QStringLiteral("tRs_Bm");

bool tableExists(const QString& table) {
    return CountRows(table, QStringLiteral("1=2")) != -1;
}

// The ledger numbers of the payroll module, each naming a table "GZB" + number. A number that
// could not be part of a table name is passed over rather than spliced into a statement.
QStringList payrollLedgers() {
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9_]+$"));
    QStringList ledgers;
    Recordset rs(conn(), QStringLiteral("Select fCode from tgzb"));
    for (; !rs.eof(); rs.moveNext()) {
        const QString ledger = TrimBlanks(rs.text(0));
        if (plain.match(ledger).hasMatch()) ledgers << ledger;
    }
    return ledgers;
}

// The payroll column that holds a department as its code, a tab and its name.
QString codeAndName(const QString& code, const QString& name) {
    return quoted(code + QLatin1Char('\t') + name);
}

template <typename F> void passOver(F&& f) {
    try {
        f();
    } catch (const DbError&) {
        // The payroll module may lack a table or column: such a statement is simply skipped.
    }
}

} // namespace

QString DeptModelKey() {
    return CountRows(QStringLiteral("tSysFunc"), QStringLiteral("model_name='mnuRsbm'")) == 0
               ? QStringLiteral("mnuRsSysBm")
               : QStringLiteral("mnuRsbm");
}

QString DeptListSql(const QString& fields, const QString& codePrefix, bool depts, bool posts) {
    QString filter = QStringLiteral("fCode Like '") + checked(codePrefix) + QStringLiteral("%'");
    if (depts && !posts) filter += QStringLiteral(" And fynxj=0");
    if (posts && !depts) filter += QStringLiteral(" And fynxj=1");
    return QStringLiteral("Select ") + fields + QStringLiteral(" from ") + kDeptTable +
           QStringLiteral(" Where ") + filter + QStringLiteral(" Order by fcode");
}

DeptSaveCheck CheckDeptSave(const QString& table, int mode, const QString& code, const QString& name,
                            const QString& currentCode, const QString& currentName) {
    switch (CheckCodeSave(table, mode, code, name, currentCode, currentName, false, kDeptTable)) {
    case CodeSaveCheck::EmptyCode:
        return DeptSaveCheck::EmptyCode;
    case CodeSaveCheck::EmptyName:
        return DeptSaveCheck::EmptyName;
    case CodeSaveCheck::CodeExists:
        return DeptSaveCheck::CodeExists;
    case CodeSaveCheck::NameExists:
        return DeptSaveCheck::NameExists;
    case CodeSaveCheck::Ok:
        break;
    }
    return DeptSaveCheck::Ok;
}

namespace {
QString deptRowSql(const QString& table, const QString& code) {
    return QStringLiteral("Select fCode,fName,fLimited,fColor,fYnxj,fRz,fgzname from ") + table +
           QStringLiteral(" where Fcode=") + quoted(code);
}
} // namespace

RowSnapshot LoadDeptSnapshot(const QString& table, const QString& code) {
    return Snapshot(Recordset(conn(), deptRowSql(table, code)));
}

void SaveDeptRow(const QString& table, int mode, const QString& currentCode, const DeptRow& row,
                 const RowSnapshot& loaded) {
    Connection& c = conn();
    Transaction t(c);
    Recordset rs(c, deptRowSql(table, currentCode), Cursor::Keyset, Lock::Optimistic);
    if (mode != 1) RequireUnchanged(loaded, rs);
    if (mode == 1 || rs.eof()) rs.addNew();
    // Values are bound, yet a quote is refused here as everywhere else in the system's text.
    rs.setValue(QStringLiteral("fcode"), checked(row.code));
    rs.setValue(QStringLiteral("fName"), checked(row.name));
    rs.setValue(QStringLiteral("fLimited"), row.limit);
    rs.setValue(QStringLiteral("fColor"), row.color);
    rs.setValue(QStringLiteral("fYnxj"), row.post);
    rs.setValue(QStringLiteral("fRz"), checked(row.staffType));
    rs.setValue(QStringLiteral("fgzname"), checked(row.wageGrade));
    rs.update();
    rs.close();
    t.commit();
}

qint32 DeptColor(const QString& table, const QString& code) {
    Recordset rs(conn(), QStringLiteral("Select fColor from ") + table + QStringLiteral(" where fcode=") +
                             quoted(code));
    return rs.eof() ? -1 : qint32(rs.val(0));
}

DeptDeleteCheck CheckDeptDelete(const QString& table, const QString& code) {
    if (HasLowerCodes(table, code)) return DeptDeleteCheck::HasLowerLevels;
    Recordset rs(conn(), QStringLiteral("select fCode from trsBasic where fBmCode =") + quoted(code));
    return rs.eof() ? DeptDeleteCheck::Ok : DeptDeleteCheck::HasStaff;
}

void DeleteDeptRow(const QString& table, const QString& code) {
    DeleteCodeRow(table, code);
}

void DeptDeleteCascade(const QString& code, const QString& name) {
    Connection& c = conn();
    if (!tableExists(QStringLiteral("tgzb"))) return;
    const QStringList ledgers = payrollLedgers();
    // Without a ledger the payroll module is not in use: its summary table is left alone too.
    if (ledgers.isEmpty()) return;
    for (const QString& ledger : ledgers)
        c.execute(QStringLiteral("Delete from  GZB") + ledger + QStringLiteral(" where fbmCode=") +
                  quoted(code));
    if (CountRows(QStringLiteral("tgzP0"), QStringLiteral("1=2")) >= 0)
        c.execute(QStringLiteral("Delete from tGzP0 where fBm=") + codeAndName(code, name));
}

void DeptRenameCascade(const QString& oldCode, const QString& newCode, const QString& oldName,
                       const QString& newName) {
    Connection& c = conn();
    const auto setCodeAndName = [&] {
        return QStringLiteral(" Set fBmCode=") + quoted(newCode) + QStringLiteral(",fBmName=") +
               quoted(newName) + QStringLiteral(" where fbmCode=") + quoted(oldCode);
    };
    passOver([&] { c.execute(QStringLiteral("Update tRsBasic") + setCodeAndName()); });
    if (!tableExists(QStringLiteral("tgzb"))) return;
    QStringList ledgers;
    passOver([&] { ledgers = payrollLedgers(); });
    if (ledgers.isEmpty()) return;
    for (const QString& ledger : ledgers)
        passOver([&] { c.execute(QStringLiteral("Update GZB") + ledger + setCodeAndName()); });
    if (CountRows(QStringLiteral("tgzP0"), QStringLiteral("1=2")) >= 0)
        passOver([&] {
            c.execute(QStringLiteral("Update tGzP0 Set fBm=") + codeAndName(newCode, newName) +
                      QStringLiteral(" where fBm=") + codeAndName(oldCode, oldName));
        });
    if (CountRows(QStringLiteral("tGz_Bill_Set"), QStringLiteral("1=2")) >= 0)
        passOver([&] {
            c.execute(QStringLiteral("Update tGz_Bill_Set Set fBmName=") + quoted(newName) +
                      QStringLiteral(" where fbmName=") + quoted(oldName));
        });
}

bool SaveDescriptions(const QString& table, const QString& code, const DescriptionPage& page1,
                      const DescriptionPage& page2) {
    if (!page1.changed && !page2.changed) return false;
    // Only the changed pages are written, each only while it still holds the text read.
    QStringList sets;
    QString guard;
    QVariantList binds;
    for (const auto& [page, column] :
         {std::pair{&page1, QStringLiteral("fDetail1")}, std::pair{&page2, QStringLiteral("fDetail2")}}) {
        if (!page->changed) continue;
        sets << column + QLatin1Char('=') + quoted(page->text);
        guard += stillHolds(column);
        binds << page->loaded;
    }
    Connection& c = conn();
    Transaction t(c);
    c.executeOne(QStringLiteral("update ") + table + QStringLiteral(" Set ") + sets.join(QLatin1Char(',')) +
                     QStringLiteral(" where fcode=") + quoted(code) + guard,
                 binds);
    t.commit();
    return true;
}

} // namespace zq
