#pragma once

#include "services/Spreadsheets.h"

#include <functional>
#include <QString>

namespace zq {

class ZqGrid;

// A grid as rows for a spreadsheet, read through the grid's public face only: its visible columns
// (the row-header column first when a screen keeps texts there, as the print does) with their
// captions, kinds and widths, and its rows up to the last one that holds anything. A text column
// whose filled cells all read yyyy-mm-dd goes out as dates.
class GridRowSource : public RowSource {
public:
    explicit GridRowSource(const ZqGrid& grid);
    QVector<SheetColumn> columns() const override { return m_columns; }
    bool next(QStringList& cells) override;

private:
    const ZqGrid& m_grid;
    QVector<int> m_cols;
    QVector<SheetColumn> m_columns;
    int m_last = 0;
    int m_row = 0;
};

// Asks where to (.xlsx or .csv) and writes the grid there under `title`; tells a failure. False
// when cancelled or failed.
bool ExportGrid(ZqGrid* grid, const QString& title);

// Gives the grid a context-menu action 导出Excel (object name actExportGrid) that exports it under
// the title the function gives at that moment. The one line a printing screen adds.
void EnableGridExport(ZqGrid* grid, std::function<QString()> title);
inline void EnableGridExport(ZqGrid* grid, const QString& title) {
    EnableGridExport(grid, [title] { return title; });
}

} // namespace zq
