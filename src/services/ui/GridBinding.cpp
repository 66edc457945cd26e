#include "GridBinding.h"

#include "Grid.h"

#include <QLabel>

namespace zq {

void LoadGridRows(const QString&, const QString&, ZqGrid&, const QString&) {}
int SaveGridRows(const QString&, const QString&, ZqGrid&, const QString&) { return 0; }
void GridInsertRow(ZqGrid&) {}
void GridDeleteRow(ZqGrid&) {}
int EditGridHeader(int, int, ZqGrid&, const QString&) { return 0; }
QString FieldOfLabel(int, QLabel&, const QString&, int) { return {}; }

} // namespace zq
