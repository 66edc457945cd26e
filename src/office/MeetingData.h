#pragma once

#include "office/OfficeData.h"
#include "shell/Recordset.h"

#include <QDate>
#include <QString>

namespace zq::meeting {

// Statements of the meeting screen (frmBg_Meeting) on tRs_meeting, and its forward to tRs_News.
// Failing statements reach the caller as DbError.

// The labels of the two names a meeting starts with; a user may rename them for one meeting.
QString DefaultFoot1();
QString DefaultFoot2();

// The 30 newest meetings the user may see under the filter ("1=1 And ...").
QString ListSql(const QString& filter);

// A meeting as the page edits it.
struct Meeting {
    QDate date;
    QString title;
    QString content;
    QString foot1, foot2; // the labels of the two names
    QString host, cohost; // the names
    QString filePath;
    bool news = false;
    QString dept;
};

// Writes a new meeting (id 0) or the meeting of id; gives the id written. A new key above 32767 is
// refused with DbError; a meeting that another client changed or deleted since `loaded` was read,
// with ConflictError.
int WriteMeeting(int id, const Meeting& m, const RowSnapshot& loaded = {});
// The text of the notice a meeting is forwarded as, with the labels the meeting carries.
QString NoticeText(const Meeting& m);
// Deletes the meeting; notices written from it stay.
void DeleteMeeting(int id);

} // namespace zq::meeting
