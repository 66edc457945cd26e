#pragma once

#include "services/PagedRows.h"
#include "services/Spreadsheets.h"

#include <QDate>
#include <QString>
#include <QStringList>
#include <QVector>

namespace zq {

// Reading the change history that the database writes by itself (tRsHistory): one person's
// changes, the company report of a period, and the supervisor's purge. Nothing here writes a
// history row; the triggers alone do.

// What the company report counts: 1 department moves, 2 posts, 3 pay, 4 hires (and
// reinstatements), 5 leavers. 0 stands for every change.
constexpr int kChangeKinds = 5;
QString ChangeKindCaption(int kind);
// The caption of a recorded table ("家庭情况" for tRsFamily). A column's caption is the field
// dictionary's in the language of the control, else a built-in one, else the column's name.
QString HistoryTableCaption(const QString& table);
QString HistoryOpCaption(int op);

// One person's history, newest first. A code change leaves the person's earlier rows under his
// old code; they are his up to that change, and shown with the others.
struct PersonHistoryFilter {
    QString table; // with field: one column only; empty for all
    QString field;
    QDate from; // null for no limit
    QDate to;
};
// Columns: 时间, 资料, 行, 字段, 操作, 原值, 新值, 用户, 机器.
const QVector<SheetColumn>& PersonHistoryColumns();
QVector<QStringList> PersonHistory(const QString& code, const PersonHistoryFilter& f = {});
// The columns the person's history holds, as pairs of table and field with their captions, for a
// filter by field: each entry is "table\tfield\tcaption".
QStringList PersonHistoryFields(const QString& code);

// The company report: the changes of a period within a department branch, of one kind or all.
struct CompanyHistoryFilter {
    QDate from;
    QDate to;
    QString deptCode; // the branch; empty for the whole company
    int kind = 0;     // 0 every change
};
// Columns: 时间, 编号, 姓名, 部门, 变动, 资料, 字段, 原值, 新值, 用户, 机器, read a page at a time.
const QVector<SheetColumn>& CompanyHistoryColumns();
PagedQuery CompanyHistoryQuery(const CompanyHistoryFilter& f);
// The same statement whole, oldest first, for an export.
QString CompanyHistorySql(const CompanyHistoryFilter& f);
// Rows of the period and branch by kind: index 0 every change, 1 to 5 the kinds.
QVector<qint64> CompanyHistoryCounts(const CompanyHistoryFilter& f);

// The supervisor deletes the history before a day; the deletion goes to the operation log. Gives
// the rows deleted; refuses (DbError) anyone else.
qint64 DeleteHistoryBefore(const QDate& before);

// Writes a person's history (code not empty) or the company's changes of a period to a .xlsx or
// .csv file, as its name says. Gives the rows written, or -1 with `error` set.
qint64 ExportHistory(const QString& path, const QString& code, const CompanyHistoryFilter& f,
                     QString* error = nullptr);

} // namespace zq
