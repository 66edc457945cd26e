#include "GridExport.h"

#include <algorithm>

#include "Grid.h"
#include "shell/Prompts.h"

#include <QAction>
#include <QFileInfo>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QTableView>

namespace zq {

namespace {
// A column is taken for dates after this many filled cells agree; the writer still writes any
// other text as text, so a late odd cell loses nothing.
constexpr int kSniffCells = 50;
constexpr int kSniffRows = 2000;
} // namespace

GridRowSource::GridRowSource(const ZqGrid& grid)
    : m_grid(grid) {
    bool rowHeaders = false;
    for (int r = 1; r <= grid.maxRows() && !rowHeaders; ++r)
        rowHeaders = !grid.text(r, 0).isEmpty();
    if (rowHeaders && !grid.isColHidden(0)) m_cols << 0;
    for (int c = 1; c <= grid.maxCols(); ++c)
        if (!grid.isColHidden(c) && grid.colWidth(c) > 0) m_cols << c;
    m_last = grid.maxRows();
    const auto blank = [&](int r) {
        for (int c : m_cols)
            if (!grid.text(r, c).trimmed().isEmpty()) return false;
        return true;
    };
    // Blank rows at the end are room for typing, not part of the list.
    while (m_last > 0 && blank(m_last))
        --m_last;
    static const QRegularExpression iso(QStringLiteral("^\\d{4}-\\d{2}-\\d{2}$"));
    for (int c : m_cols) {
        SheetColumn col;
        col.caption = grid.headerText(c);
        col.width = c == 0 ? qMax(4.0, grid.colWidth(0)) : grid.colWidth(c);
        const ZqGrid::CellType type = c == 0 ? ZqGrid::CellText : grid.colType(c);
        if (type != ZqGrid::CellText) {
            col.kind = CellKind::Number;
            col.decimals = type == ZqGrid::CellDecimal ? grid.colDecimals(c) : 0;
        } else {
            int seen = 0;
            bool dates = true;
            // Looked for near the top only: a long list read on demand is not read through for it.
            for (int r = 1; r <= std::min(m_last, kSniffRows) && seen < kSniffCells && dates; ++r) {
                const QString t = grid.text(r, c).trimmed();
                if (t.isEmpty()) continue;
                ++seen;
                dates = iso.match(t).hasMatch();
            }
            if (dates && seen > 0) col.kind = CellKind::Date;
        }
        m_columns << col;
    }
}

bool GridRowSource::next(QStringList& cells) {
    if (m_row >= m_last) return false;
    ++m_row;
    cells.clear();
    for (int c : m_cols)
        cells << (c == 0 ? m_grid.rowHeaderText(m_row) : m_grid.text(m_row, c));
    return true;
}

bool ExportGrid(ZqGrid* grid, const QString& title) {
    if (!grid) return false;
    FileRequest request;
    request.mode = FileRequest::Save;
    request.title = QStringLiteral("导出Excel");
    request.filter = QStringLiteral("Excel 文件 (*.xlsx)|*.xlsx|CSV 文件 (*.csv)|*.csv");
    request.flags = cdlOFNOverwritePrompt | cdlOFNPathMustExist | cdlOFNHideReadOnly;
    QString name = title.trimmed().isEmpty() ? QStringLiteral("导出") : title.trimmed();
    name.remove(QRegularExpression(QStringLiteral("[\\\\/:*?\"<>|]")));
    request.fileName = name + QStringLiteral(".xlsx"); // in the user's documents, or where he saved last
    QString path = prompts().file(request);
    if (path.isEmpty()) return false;
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix != QLatin1String("xlsx") && suffix != QLatin1String("csv")) path += QStringLiteral(".xlsx");
    const bool busy = qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
    if (busy) QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    GridRowSource source(*grid);
    QString error;
    const qint64 rows = ExportRows(path, source, title, &error);
    if (busy) QGuiApplication::restoreOverrideCursor();
    if (rows < 0) {
        prompts().message(error, vbExclamation, QStringLiteral("导出Excel"));
        return false;
    }
    return true;
}

void EnableGridExport(ZqGrid* grid, std::function<QString()> title) {
    if (!grid || grid->findChild<QAction*>(QStringLiteral("actExportGrid"))) return;
    auto* action = new QAction(QStringLiteral("导出Excel"), grid);
    action->setObjectName(QStringLiteral("actExportGrid"));
    QObject::connect(action, &QAction::triggered, grid, [grid, title] { ExportGrid(grid, title()); });
    // The view holds the cells the user right-clicks; its own actions make its context menu.
    grid->view()->addAction(action);
    grid->view()->setContextMenuPolicy(Qt::ActionsContextMenu);
}

} // namespace zq
