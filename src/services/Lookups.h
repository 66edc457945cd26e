#pragma once

#include <QString>

namespace zq {

// Small read-only look-ups every screen uses. Each runs one statement on conn() and reads the first
// row; nulls read as the empty text. A failing statement (a value with a quote, a missing table)
// reaches the caller as a DbError, except in CountRows.

// Department code (fBmCode) of the person whose name is the user's, or "false-false" when the
// name is empty or has no row: a code that matches no department, so such a user sees nothing.
QString GetUserDeptCode(const QString& userName);

// fCode of the first row whose fName is `name`; empty when none or when no table is named.
QString CodeFromName(const QString& table, const QString& name);
// fName of the row whose fCode is `code`; empty when none or when no table is named.
QString NameFromCode(const QString& table, const QString& code);

// fDetail1 and fDetail2 of the row of `code` into the two variables; without a row (or without a
// table name) they keep what they held. Gives the empty text.
QString GetDetailPair(const QString& table, const QString& code, QString& detail1, QString& detail2);
// fDetail1 of the row of `code` into the variable, which keeps its value without a row.
QString GetDetail1(const QString& table, const QString& code, QString& detail1);

// Head-count limit (fLimited) of a code, 0 when none; `level` gets fYnxj, 0 without a row.
qint32 GetDeptLimit(const QString& table, const QString& code, qint16& level);
// Limit, level, post (fRz) and trade (fGzName) of a department or post of tRs_Bm: -1 when found,
// 0 when not (the variables then keep their values).
int GetDeptPost(const QString& code, qint32& limit, quint8& level, QString& post, QString& trade);

// The present largest value of `field` as text, empty when the table has none. It is the maximum,
// not the next value: callers add 1 to its number.
QString NextCode(const QString& table, const QString& field, const QString& tail);

// Rows of a table under a condition (none when empty), or -1 when the statement fails: that is how
// callers ask whether a table or a column exists. Inside a transaction the failure leaves the
// transaction usable. Counts beyond the 16-bit range give 32767.
qint16 CountRows(const QString& table, const QString& condition);

// True when the person exists and serves (fzt 1).
bool GetPersonState(const QString& code);

// Looks a serving person up and fills CurPersonCode, CurPersonName, CurPersonDeptCode,
// CurPersonDeptName, CurPersonOther2, CurPersonGzCode and CurPersonKqCardID (all empty when not
// found). Gives CurPersonName.
QString GetActivePerson(const QString& code);

// The text without leading and trailing blanks: only blanks, as the old Trim; tabs and line breaks
// are part of the text.
QString TrimBlanks(const QString& text);

// The user's wildcards as a like pattern: a leading or trailing "*" is "%", "#" is "_"; text with
// no wildcard at all means "contains" and is wrapped in "%".
QString WildcardToLike(const QString& pattern);

} // namespace zq
