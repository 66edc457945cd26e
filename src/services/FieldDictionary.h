#pragma once

#include <QString>

namespace zq {

// The field dictionary (RptListDetail): captions, grid layouts and brief links of every business
// table are rows there, one per field, with one caption column per language.

// Caption of a field in the active language. Table and field are lower-cased (the dictionary compares
// without case). An unknown field gives one tab character rather than the empty text, so a caller
// can tell "no caption" from "not in the dictionary"; a null caption reads as empty.
QString GetFieldCaption(const QString& table, const QString& field);

// Code of the brief list a field's value is picked from; empty for none or an unknown field.
QString GetFieldBriefType(const QString& table, const QString& field);

// Puts fcode and fname at the front of a table's grid: fieldId -2 and -1, both selected. Each step
// that fails is passed over, so a failure leaves the order as it was. Used by SetGridColumns.
void PinKeyFields(const QString& table);

} // namespace zq
