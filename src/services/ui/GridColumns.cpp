#include "GridColumns.h"

#include "Grid.h"
#include "services/FieldDictionary.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

namespace zq {

namespace {

// Builds the columns from the dictionary rows; gives the field list.
QString readColumns(const QString& table, ZqGrid* grid, int firstCol) {
    Recordset rs(
        conn(),
        QStringLiteral("select FieldName,FieldName") + G().lang() +
            QStringLiteral(",FieldGridWidth,FieldDataType,FieldDataDeci from RptListDetail where ftable=") +
            quoted(table) + QStringLiteral(" and FieldSelected=1 order by fieldId"));
    grid->setMaxRows(0);
    grid->setMaxCols(rs.recordCount() + firstCol - 1);
    grid->setRowHeight(0, 20);
    grid->setRowHeight(-1, 10.5);
    QString list;
    for (int col = firstCol; !rs.eof(); rs.moveNext(), ++col) {
        grid->setHeaderText(col, rs.text(1));
        list += rs.text(0) + QLatin1Char(',');
        grid->setColWidth(col, rs.value(2).isNull() ? 8 : rs.val(2));
        switch (int(rs.val(3))) {
        case 2:
            grid->setColType(col, ZqGrid::CellDecimal, int(rs.val(4)));
            break;
        case 3:
            grid->setColType(col, ZqGrid::CellInteger);
            break;
        default:
            grid->setColType(col, ZqGrid::CellText);
            grid->setColMultiLine(col, true);
            break;
        }
    }
    rs.close();
    list.chop(1);
    return list;
}

} // namespace

QString SetGridColumns(const QString& table, ZqGrid* grid, qint16 pinKeys, quint8 firstCol) {
    QString list = readColumns(table, grid, firstCol);
    if (pinKeys == -1 && list.toLower().left(11) != QLatin1String("fcode,fname")) {
        PinKeyFields(table);
        list = readColumns(table, grid, firstCol);
    }
    grid->lockBlock(-1, -1, -1, -1, true);
    return list;
}

} // namespace zq
