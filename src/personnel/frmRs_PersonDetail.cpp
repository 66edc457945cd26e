#include "frmRs_PersonDetail.h"

#include "PersonRecordsData.h"
#include "printing/Print.h"
#include "services/ui/Grid.h"
#include "services/ui/GridExport.h"
#include "services/ui/GridBinding.h"
#include "services/ui/InputAidsUi.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"

#include <QLabel>
#include <QVBoxLayout>

namespace zq {

frmRs_PersonDetail::frmRs_PersonDetail(QWidget* parent)
    : PersonRecordScreen(QStringLiteral("其它资料"), parent, QStringLiteral("cmdQuit"),
                         QStringLiteral("cmdPrint"))
    , m_grid(new ZqGrid(this))
    , m_title(new QLabel(QStringLiteral("其它资料"), this)) {
    setObjectName(QStringLiteral("frmRs_PersonDetail"));
    m_title->setObjectName(QStringLiteral("lblTitle"));
    m_grid->setObjectName(QStringLiteral("Grid1"));
    EnableGridExport(m_grid, [this] { return m_title->text(); });
    // Captions in column 1, never edited; the texts in column 2, up to 500 characters each.
    m_grid->setMaxCols(2);
    m_grid->setMaxRows(4);
    m_grid->setHeaderText(1, QStringLiteral("项目"));
    m_grid->setHeaderText(2, QStringLiteral("内容"));
    m_grid->setColWidth(1, 14);
    m_grid->setColWidth(2, 60);
    m_grid->setRowHeight(-1, 40);
    for (int c = 1; c <= 2; ++c)
        m_grid->setColMultiLine(c, true);
    m_grid->setColMaxLength(1, 30);
    m_grid->setColMaxLength(2, 500);
    m_grid->lockBlock(-1, 1, -1, 1);
    m_grid->setAppendOnEnter(true);
    body()->addWidget(m_title);
    body()->addWidget(m_grid, 1);
    printDirectly(m_title->text());
    connect(m_grid, &ZqGrid::dblClick, this, [this](int col, int row) {
        guarded([&] { EditGridHeader(col, row, *m_grid, QStringLiteral("tRsDetail")); });
    });
}

void frmRs_PersonDetail::load() {
    PersonRecordScreen::load();
    m_grid->setReadOnly(!editing());
    // A dictionary without the rows leaves the captions empty: the texts still load and save.
    const QStringList captions = DetailCaptions();
    for (int r = 1; r <= captions.size(); ++r)
        m_grid->setText(r, 1, captions.at(r - 1));
    const DetailRow row = ReadDetail(m_code);
    for (int r = 1; r <= 4; ++r)
        m_grid->setText(r, 2, row.values.value(r - 1));
    m_detailLoaded = row.loaded;
}

void frmRs_PersonDetail::save() {
    // Only rows 1 to 4 are fields; a row appended below them is not kept.
    QStringList values;
    for (int r = 1; r <= 4; ++r)
        values << m_grid->text(r, 2);
    const QString failed = QLatin1Char('<') + m_title->text() + QStringLiteral("> 存盘错误 !");
    try {
        Hourglass wait;
        WriteDetail(m_code, values, m_detailLoaded);
    } catch (const ConflictError& e) {
        ShowMsg(failed + QStringLiteral("\n\n") + e.message(), vbExclamation, windowTitle());
        return;
    } catch (const DbError&) {
        ShowMsg(failed, vbExclamation, windowTitle());
        return;
    }
    accept(); // no log line here, unlike the other record screens
}

void frmRs_PersonDetail::printPart(int part) {
    PrintGrid(printItems(part), m_grid, m_title->text());
}

} // namespace zq
