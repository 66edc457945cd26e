#pragma once

#include <QDate>
#include <QString>
#include <QVector>

namespace zq {

// One line of the home page: what it counts, and where a click on it leads. filter is a condition
// on the staff register's rows (alias "a."), the department limit included.
struct HomeLine {
    QString id;    // stable name of the line, for tests and the layout
    QString label; // "本月生日"
    QString unit;  // "人", or "个" for departments
    qint64 count = 0;
    QString menuKey; // the screen the link opens
    int state = 1;   // fzt of the register's list
    QString filter;  // on the register's rows besides their state; empty for all of them
};

struct HomeSummary {
    QString deptCode;   // the department the user is limited to; empty for the whole company
    bool anyone = true; // false: a user without a department in the register sees nobody
    QVector<HomeLine> lines;
};

// The figures of the home page for the signed-in user on `today`, on the open connection: head
// count, this month's hires and leavers (one line per kind of leaving), contracts and probations
// ending within 30 days, hire anniversaries and birthdays of the month, and departments and posts
// over their quota. Persons are those of the user's department and below (all for the
// supervisor); a line whose screen the user may not enter is left out. One pass over the persons
// and one grouped count for the quotas.
HomeSummary ReadHomeSummary(const QDate& today);

// Probation lasts three months from the hire date (fSpday).
constexpr int kProbationMonths = 3;
// Contracts and probations ending within this many days are shown.
constexpr int kNoticeDays = 30;

} // namespace zq
