#pragma once

#include <QString>

namespace zq {

class ZqGrid;

// Lays out the columns of a grid from the field dictionary (the selected fields of `table`, in
// fieldId order, from column `firstCol` on) and gives the field list text: their names joined by
// "," in column order. pinKeys -1 first moves fcode and fname to the front when the list does not
// start with them. The whole grid is locked afterwards: screens unlock what they let the user edit.
// A failing statement reaches the caller as a DbError.
QString SetGridColumns(const QString& table, ZqGrid* grid, qint16 pinKeys, quint8 firstCol);

} // namespace zq
