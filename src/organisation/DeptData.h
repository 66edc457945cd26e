#pragma once

#include "shell/Recordset.h"

#include <QString>

namespace zq {

// The statements of the department register, callable without a window. The register keeps
// departments and posts of one code table (tRs_Bm by default); a row's place in the tree is the
// text of its code.

// The module whose rights guard the register: "mnuRsbm", or "mnuRsSysBm" when the module table
// has no row of the first.
QString DeptModelKey();

// The list of rows under a code prefix, in code order. It always reads tRs_Bm. `depts` and `posts`
// are the two list boxes: both or neither list every row, one of them only its kind.
QString DeptListSql(const QString& fields, const QString& codePrefix, bool depts, bool posts);

// What stops a save, in the order it is checked.
enum class DeptSaveCheck { Ok, EmptyCode, EmptyName, CodeExists, NameExists };
// Checks a row before it is saved. The code is checked when it differs from the row in hand or
// when adding (mode 1); the name likewise, always against tRs_Bm. A look-up that cannot run (a
// quote in a value) finds nothing: the save itself then fails.
DeptSaveCheck CheckDeptSave(const QString& table, int mode, const QString& code, const QString& name,
                            const QString& currentCode, const QString& currentName);

// A row as the edit panel writes it.
struct DeptRow {
    QString code;
    QString name;
    double limit = 0;
    qint32 color = 0;
    int post = 0; // fYnxj: 0 department, 1 post
    QString staffType;
    QString wageGrade;
};
// The fields of the row in hand that a change writes, as read when the change began (empty when
// there is no such row).
RowSnapshot LoadDeptSnapshot(const QString& table, const QString& code);
// Writes the row in one transaction: a new row when adding (mode 1) or when the row in hand
// (currentCode) was not there when the change began, else that row. Only that row changes: codes
// below it, persons and descriptions are left as they are. A row that another client changed or
// deleted since `loaded` was read is refused with ConflictError; any failure rolls back and
// reaches the caller as a DbError.
void SaveDeptRow(const QString& table, int mode, const QString& currentCode, const DeptRow& row,
                 const RowSnapshot& loaded = {});
// fColor of a row, -1 when there is none.
qint32 DeptColor(const QString& table, const QString& code);

// What stops a delete. Only tRs_Bm is checked.
enum class DeptDeleteCheck { Ok, HasLowerLevels, HasStaff };
// Rows whose code extends this one (a mere text prefix counts: "10" is below "1"), then persons of
// any state in exactly this department.
DeptDeleteCheck CheckDeptDelete(const QString& table, const QString& code);
// Deletes the row in one transaction; a failure rolls back and reaches the caller.
void DeleteDeptRow(const QString& table, const QString& code);

// After a deleted department: its rows in the payroll tables of the sibling module, when that
// module's tables exist here. Runs outside any transaction; a failure reaches the caller.
void DeptDeleteCascade(const QString& code, const QString& name);
// Carries a new code and name to the persons and the payroll tables, passing over any statement
// that fails. Kept for the payroll module's sake and deliberately called by no screen: a save
// changes the one row only.
void DeptRenameCascade(const QString& oldCode, const QString& newCode, const QString& oldName,
                       const QString& newName);

// The description pages of a row: the text on show and the text as it was read.
struct DescriptionPage {
    QString text;
    bool changed = false;
    QString loaded;
};
// Stores the changed pages of a row in one transaction. False when nothing changed. A page that
// another client changed since it was read, or a row gone meanwhile, is refused with
// ConflictError; any failure rolls back and reaches the caller.
bool SaveDescriptions(const QString& table, const QString& code, const DescriptionPage& page1,
                      const DescriptionPage& page2);

} // namespace zq
