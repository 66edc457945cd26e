#pragma once

#include "office/OfficeData.h"
#include "shell/Recordset.h"

#include <QColor>
#include <QDate>
#include <QString>
#include <QStringList>

namespace zq {

class Recordset;

// Statements of the report screen (frmBg_Report) on tRs_RptFlow, and its forward to tRs_News.
// Failing statements reach the caller as DbError.
namespace report {

// Verdicts of a checker, as the sign-off list shows them: 0 not yet, 1 passed, 2 refused, 3 held.
QStringList VerdictTexts();
// The colour of a verdict; an invalid colour outside 0..3.
QColor CheckColor(int verdict);

// Older databases lack the four answer columns. Looks at the first only and, when it is missing,
// adds all four. True when it added them.
bool AddAnswerColumns();

// The list statement: the 30 newest reports the user may see, with the filter ("1=1 And ...") when
// not empty. A user with a department prefix sees what he wrote or is named on; the statement for
// him has no alias "a", so a seek fragment fails there.
QString ListSql(const QString& filter);

// The seek panel and the forward to the notices are those of every office screen.
using office::ForwardNotice;
using office::SeekFilter;
using office::SeekTerms;

// The checkers' names joined by ", ": the first always, the others when not empty.
QString JoinCheckers(const QStringList& checkers);
// The first blank slot of the four checker boxes, -1 when all are taken.
int FirstFreeChecker(const QStringList& checkers);

// A report as the page edits it.
struct Report {
    QDate date;
    QString title;
    QString content;
    QString author;
    QStringList checkers; // four names
    QString filePath;
    bool news = false;
    QString dept;
};

// Writes a new report (id 0) or the report of id: all fields, the joined checker list, every
// verdict back to 0; the answers stay. Gives the id written. A report that another client changed
// or deleted since `loaded` was read is refused with ConflictError.
int WriteReport(int id, const Report& r, const RowSnapshot& loaded = {});
// The text of the notice a report is forwarded as.
QString NoticeText(const Report& r);

// What a user may do with the shown row of a list recordset.
struct Rights {
    bool canChange = false; // change and delete
    int checkerNo = 0;      // 1..4 the (last) slot he is named in, 0 none
    QString answers;        // "name--answer\r\n" per checker with a verdict
};
Rights RightsOf(const Recordset& rs, const QString& userName, bool supervisor);

// Writes checker n's verdict and answer into the current row and updates it.
void SignOff(Recordset& rs, int checkerNo, int verdict, const QString& answer);

// Deletes the report; one that is gone already is a ConflictError.
void DeleteReport(int id);

} // namespace report
} // namespace zq
