#pragma once

#include "shell/Recordset.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace zq {

// The statements of a person's record screens beyond the grid rows (GridBinding): the spouse row,
// the yearly appraisal, the extra details and their search. Plain functions on conn(), for the
// screens and for tests without a window.

// ---- Family and spouse ----------------------------------------------------------------------

// Columns of the spouse block, by the index of its boxes.
const QStringList& SpouseFields();
// The byte lengths the spouse boxes take, by index.
const QVector<int>& SpouseLengths();

struct MaritalState {
    bool found = false;
    QString fHy; // as stored
    bool married() const { return fHy == QStringLiteral("已婚"); }
};
MaritalState ReadMaritalState(const QString& code);

struct SpouseRow {
    QStringList values; // by box index, nulls empty; ten empty texts when there is no row
    RowSnapshot loaded; // empty when there was no row
};
SpouseRow ReadSpouse(const QString& code);
// Writes the spouse row (adding it when there is none) in one transaction. A row another client
// changed, added or deleted since `loaded` was read is refused with ConflictError.
void WriteSpouse(const QString& code, const QStringList& values, const RowSnapshot& loaded);
// The first box whose text is no date although its column holds one (the birthday); -1 when none.
int WrongSpouseDate(const QStringList& values);

// ---- Yearly appraisal -----------------------------------------------------------------------

// The years from the person's hire year (the first four characters of fSpDay) to `thisYear`,
// ascending; none for a person without a usable hire year or hired after this year.
QStringList AppraisalYears(const QString& code, int thisYear);

struct Appraisal {
    QString text;       // fpy
    QString appraiser;  // fpdr
    RowSnapshot loaded; // the row as read; empty when there was none
};
Appraisal ReadAppraisal(const QString& code, const QString& year);
// Writes the appraisal of a year, adding the row when there is none, within the caller's
// transaction. The row must still be as `a.loaded` says (none when none was read): one another
// client changed, added or deleted meanwhile is refused with ConflictError. `year` goes into the
// statement as a number: an empty or non-numeric year fails the statement (DbError).
void WriteAppraisal(const QString& code, const QString& year, const Appraisal& a);

// ---- Extra details --------------------------------------------------------------------------

// Captions of the extra fields, fRsDetail1 on: the dictionary rows of tRsDetail with FieldID above
// 0 in OrderID order, at most four.
QStringList DetailCaptions();

struct DetailRow {
    QStringList values; // fRsDetail1..4, empty texts when there is no row
    RowSnapshot loaded;
};
DetailRow ReadDetail(const QString& code);
// Writes the four fields (adding the row when there is none) in one transaction, refusing a row
// another client changed, added or deleted meanwhile (ConflictError).
void WriteDetail(const QString& code, const QStringList& values, const RowSnapshot& loaded);

// The search condition on the alias b of tRsDetail: "1=1", then for each ticked field i (0..3)
// " And b.fRsDetail<i+1> Like '<pattern>'" with the text's wildcards made like patterns.
QString DetailSeekFilter(const QVector<bool>& ticked, const QStringList& texts);

// ---- Work states ----------------------------------------------------------------------------

struct DictColumn {
    QString caption;
    double width;
};
// The columns of the work-state grid: the dictionary rows of tRs_WorkState in OrderID order.
QVector<DictColumn> WorkStateColumns();

// The log line of a saved record screen: "<caption>记录存盘 [code-name]".
QString RecordSavedText(const QString& caption, const QString& code, const QString& name);

} // namespace zq
