#pragma once

#include <QString>

class QLabel;

namespace zq {

class ZqGrid;

// A person's sub-record rows (keyed by fCode, ordered by fOrderID) in a grid, for the person in
// hand (CurPersonCode). fieldList is in grid column order, without fOrderID and fCode; condition
// is an extra condition without its leading word, or empty.
void LoadGridRows(const QString& table, const QString& fieldList, ZqGrid& grid,
                  const QString& condition = {});
// Replaces the person's rows (of the condition) by the grid's rows in one transaction. -1 when
// saved, 0 when not (rolled back, no message: the caller decides). Rows that LoadGridRows read into
// this grid and another client changed since are not overwritten: the save fails.
int SaveGridRows(const QString& table, const QString& fieldList, ZqGrid& grid, const QString& condition = {});
// Why the last SaveGridRows failed; empty after a success.
QString LastGridSaveError();
void GridInsertRow(ZqGrid& grid);
void GridDeleteRow(ZqGrid& grid);
// A double click on a grid cell: renames the column's caption through the field settings dialog.
// -1 when the caption changed.
int EditGridHeader(int col, int row, ZqGrid& grid, const QString& table);
// The field behind a caption label of a person screen, by the label's index; mode 0 asks a brief
// value for it, 1 renames the caption ("1" when changed), 3 gives the field name.
QString FieldOfLabel(int index, QLabel& label, const QString& table, int mode);

} // namespace zq
