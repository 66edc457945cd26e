#pragma once

#include "office/OfficeData.h"
#include "shell/Recordset.h"

#include <QDate>
#include <QString>

namespace zq::news {

// Statements of the notice board (frmBg_News) on tRs_News, and the count of unread notices kept
// per user in tRs_NewsSeen. Failing statements reach the caller as DbError.

// The 30 newest notices the user may see under the filter ("1=1 And ...").
QString ListSql(const QString& filter);

struct Notice {
    QDate date;
    QString content;
    QString dept;
};

// Writes a new notice (id 0, stamped as posted now) or the notice of id; gives the id written. A new
// key above 32767 is refused with DbError; a notice that another client changed or deleted since
// `loaded` was read, with ConflictError.
int WriteNotice(int id, const Notice& n, const RowSnapshot& loaded = {});
void DeleteNotice(int id);

// When the user last opened the board; empty when he never did.
QString LastOpened(const QString& user);
// Notes that the user opens the board now; gives when he had opened it before.
QString OpenBoard(const QString& user);
// The notices posted since the user last opened the board (all posted ones when he never did),
// of those he may see with the department prefix (empty: all), less those he posted himself.
int UnreadCount(const QString& user, const QString& deptPrefix);
// Whether the current notice of a list was posted after `opened` by someone other than `user` (a
// notice without a stamp is of before the count began and so is read).
bool IsUnread(const Recordset& rs, const QString& opened, const QString& user);

} // namespace zq::news
