#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include "services/PagedRows.h"

namespace zq {

// The filter of the statistics screen from its department list, its value box and its field.
struct ListFilterInput {
    int deptIndex = 0;  // 0 is "(所有部门)"
    QString deptText;   // "code<tab>name"
    QString filterText; // a value, a pattern with "%", or a range "a,b"
    QString field;      // the searched column; empty when none is chosen
};
struct ListFilter {
    QString filter;     // "" or "and fBmCode like '01%' ", then " And <condition>"
    QString filterText; // the value box afterwards: "a,a" becomes "a"
};
// Ranges and values compare as stored text; a range typed backwards is swapped.
ListFilter ComposeFilter(const ListFilterInput& in);

// The list "Select <fields> from tRsBasic Where fzt= <state> <filter>", for reading on demand,
// keyed by the code (shown when the fields hold it).
PagedQuery PersonListPaged(const QString& fields, int state, const QString& filter);

// The searchable fields (FieldSeek 1, with a caption), as caption and column, in OrderID order.
struct SeekField {
    QString caption;
    QString field;
};
QVector<SeekField> SeekFields();

// Captions of the first 52 fields of the person dictionary for the choice of counted fields; a
// dictionary with fewer rows is refused with a DbError that says so.
QStringList CountableCaptions();

// The count table: for each chosen caption (looked up by FieldName_0) two rows, the caption and
// the field's distinct values in the order the database gives them, then under each value the
// persons whose field equals it, all under the base condition. A field without any value ends the
// table there. Cells are as one count statement per value would give them: a null value heads an
// empty column counting the empty text, and a value holding a quote fails (DbError). Counted with
// one grouped statement per field.
QVector<QStringList> CountTable(const QStringList& captions, const QString& baseCondition);
// The sex and marital codes of the table as words.
void DecodeCountHeadings(QVector<QStringList>& rows);

// One field of the count table read down: each value with its persons, the largest first; beyond
// `most` values the smallest are gathered as "其他". An empty value reads "(空)".
struct CountedValue {
    QString value;
    qint64 persons = 0;
};
QVector<CountedValue> CountedValues(const QVector<QStringList>& table, int captionRow, int most);
// Those values as rows of value, persons and share in per cent, and a last row "合计" with the sum.
QVector<QStringList> CountTotalsRows(const QVector<CountedValue>& values);

} // namespace zq
