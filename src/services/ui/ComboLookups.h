#pragma once

#include <QString>

class QComboBox;

namespace zq {

// Combo fillers over conn(). An item with its code is the code, a tab and the name (SplitTabText
// takes it apart).

// Adds the entries of a brief list in BriefCode order: "code<tab>name" when withCode is non-zero,
// else the name. The combo is not cleared first: callers clear it.
void FillBriefCombo(QComboBox* combo, const QString& briefType, quint8& withCode);
// Clears the combo and lists the fCode/fName rows of a code table, of one fYnxj level unless level
// is -1, under a code prefix unless it is empty.
void FillCodeCombo(const QString& table, QComboBox* combo, const QString& prefix, qint16 level,
                   qint16 withCode);
// Clears the combo and lists the distinct units (fUnit) of the staff.
void FillUnitCombo(QComboBox* combo);
// Lets a filled combo show its entries whole, in its box and in its list, never cut in the
// middle: long names that differ only at their ends (sub-units) stay apart.
void ShowWholeNames(QComboBox* combo);
// Index of the first item equal to the text (case-sensitive), -1 when none.
int ComboIndexOf(const QComboBox* combo, const QString& text);

// A record's value in a list box. A box never chooses an entry by itself: the fillers above leave
// none chosen. ShowComboValue chooses the entry equal to the value; a value the list lacks leaves
// none chosen and is held (shown greyed), so that a save writes back what the record held.
void ShowComboValue(QComboBox* combo, const QString& value);
// What a save writes: the chosen entry, else the held value, else empty; an editable box's text.
QString ComboValue(const QComboBox* combo);

} // namespace zq
