#pragma once

#include "shell/Recordset.h"

#include <functional>
#include <QString>
#include <QVariant>
#include <QVector>

namespace zq {

// The statements of the code tables kept as trees (a row's place in the tree is the text of its
// code, a child's code beginning with its parent's): the document archive, the company dictionary,
// the rooms. Callable without a window.

// A row by its code: every field by lower-cased name as text; empty when there is none.
RowSnapshot ReadCodeRow(const QString& table, const QString& code);

// What stops a save of a row, in the order the checks run.
enum class CodeSaveCheck { Ok, EmptyCode, EmptyName, CodeExists, NameExists };
// The code is checked when it differs from the row in hand or when adding (mode 1), the name
// likewise, against `nameTable` (the table itself when empty); `nameFirst` checks the name before
// the code. A look-up that cannot run (a quote in a value) finds nothing: the save then fails.
CodeSaveCheck CheckCodeSave(const QString& table, int mode, const QString& code, const QString& name,
                            const QString& currentCode, const QString& currentName, bool nameFirst = false,
                            const QString& nameTable = {});

struct FieldValue {
    QString column;
    QVariant value; // text is refused when it holds a quote, as all text of the system is
};
// Writes a row in one transaction: a new row when adding (mode 1) or when the row in hand
// (currentCode) is not there, else that row. A row another client changed or deleted since `loaded`
// was read is refused with ConflictError. `alongside` runs inside the same transaction (the search
// index follows the row). Any failure rolls back and reaches the caller as a DbError.
void SaveCodeRow(const QString& table, int mode, const QString& currentCode,
                 const QVector<FieldValue>& values, const RowSnapshot& loaded = {},
                 const std::function<void()>& alongside = {});

// Rows whose code extends this one (a mere text prefix counts: "10" is below "1").
bool HasLowerCodes(const QString& table, const QString& code);
// Deletes the row in one transaction, with `alongside` in it; a failure rolls back.
void DeleteCodeRow(const QString& table, const QString& code, const std::function<void()>& alongside = {});

// Stores the contents (fDetail1) of a row while they still hold `loaded`, in one transaction with
// `alongside`. A text another client changed meanwhile, or a row gone, is ConflictError; a quote in
// the text fails the statement.
void SaveCodeDetail(const QString& table, const QString& code, const QString& text, const QString& loaded,
                    const std::function<void()>& alongside = {});

} // namespace zq
