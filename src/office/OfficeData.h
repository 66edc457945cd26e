#pragma once

#include <QDate>
#include <QString>

#include <functional>

namespace zq::office {

// Statements the three office screens (reports, meetings, notices) share. Failing statements reach
// the caller as DbError.

// A date as the seek fragments compare it.
QString DateText(const QDate& d);

// The ticked rows of a seek panel; the notice board has only date, content and department.
struct SeekTerms {
    bool byDate = false;
    QDate from, to;
    bool byTitle = false;
    QString title;
    bool byContent = false;
    QString content;
    bool byAuthor = false; // the first name (author, host)
    QString author;
    bool byChecker = false; // the second names (checkers, co-host)
    QString checker;
    bool byDept = false;
    QString dept;
    bool forwardedOnly = false;
};
// "1=1" and one fragment per ticked row, on the alias "a". A quote in a typed value throws DbError.
QString SeekFilter(const SeekTerms& t);

// The list of meetings and notices: the 30 newest rows of `table` under the filter. A user with a
// department prefix sees the rows of his department and those under it, and those of none.
QString DeptListSql(const QString& table, const QString& filter);

// The next key of a table: the present maximum plus 1. Meetings and notices keep it in 16 bits,
// so there a key above 32767 is refused with DbError.
int NextKey(const QString& table, bool sixteenBits);
// Adds a row under the next key: `insert` writes it under the key it is given. When another client
// took that key meanwhile the unique key refuses the row, and the key after it is tried. Gives the
// key the row was stored under.
int AddWithNewKey(const QString& table, bool sixteenBits, const std::function<void(int)>& insert);

// When a notice is posted, to the millisecond, as the unread count compares it.
QString PostedStamp();
// Inserts a notice row into tRs_News, as report and meeting saves forward them; a quote in the
// text fails it.
void ForwardNotice(const QDate& date, const QString& text, const QString& dept);

// Deletes the row of fID `id`; one that is gone already is a ConflictError.
void DeleteRow(const QString& table, int id);

} // namespace zq::office
