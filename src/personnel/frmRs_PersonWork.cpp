#include "frmRs_PersonWork.h"

#include "PersonRecordsData.h"
#include "services/ui/Grid.h"

namespace zq {

namespace {
const char* const kFields[] = {"fYear", "YTotal", "Ydays", "ADay"};
}

frmRs_PersonWork::frmRs_PersonWork(QWidget* parent)
    : PersonRecordScreen(QStringLiteral("本地亲属"), parent, QStringLiteral("Command4")) {
    setObjectName(QStringLiteral("frmRs_PersonWork"));
    QVector<SubColumn> columns;
    for (const char* f : kFields)
        columns.append({QLatin1String(f), QString(), 8, 20});
    SubGrid g(QStringLiteral("tRs_WorkState"), QStringLiteral("fYear,yTotal,yDays,aDay"), {}, columns, true,
              windowTitle());
    g.askCaptions = false; // the grid's columns are the dictionary's rows, in their order
    addGrid(g, QStringLiteral("Grid1"), QStringLiteral("Label1(4)"));
    printDirectly(QStringLiteral("工作情况"));
}

void frmRs_PersonWork::load() {
    // Without dictionary rows the grid keeps its columns, without captions.
    const QVector<DictColumn> cols = WorkStateColumns();
    ZqGrid* g = grid(0);
    for (int c = 1; c <= g->maxCols(); ++c) {
        g->setHeaderText(c, c <= cols.size() ? cols.at(c - 1).caption : QString());
        if (c <= cols.size()) g->setColWidth(c, cols.at(c - 1).width);
    }
    PersonRecordScreen::load();
}

} // namespace zq
