#include "PersonRecordScreen.h"

#include "PersonRecordsData.h"
#include "printing/Print.h"
#include "services/FieldDictionary.h"
#include "services/ui/Grid.h"
#include "services/ui/GridExport.h"
#include "services/ui/GridBinding.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/NamedWidgets.h"
#include "services/ui/SaveOrTell.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Rights.h"

#include <QCheckBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace zq {

namespace {} // namespace

PersonRecordScreen::PersonRecordScreen(const QString& caption, QWidget* parent, const QString& backName,
                                       const QString& printName)
    : QDialog(parent)
    , m_body(new QVBoxLayout)
    , m_grids(new QVBoxLayout)
    , m_labCode(new QLabel(this))
    , m_labName(new QLabel(this))
    , m_cmdOK(NamedButton(this, QStringLiteral("cmdOK"), QStringLiteral("存盘")))
    , m_cmdPrint(NamedButton(this, printName, QStringLiteral("打印")))
    , m_cmdBack(NamedButton(this, backName, QStringLiteral("返回>>"))) {
    setWindowTitle(caption);
    resize(760, 560);
    m_labCode->setObjectName(QStringLiteral("LabCode"));
    m_labName->setObjectName(QStringLiteral("LabName"));

    auto* heading = new QHBoxLayout;
    heading->addWidget(new QLabel(QStringLiteral("员工编号:"), this));
    heading->addWidget(m_labCode);
    heading->addSpacing(24);
    heading->addWidget(new QLabel(QStringLiteral("姓名:"), this));
    heading->addWidget(m_labName);
    heading->addStretch();

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    for (QPushButton* b : {m_cmdOK, m_cmdPrint, m_cmdBack})
        buttons->addWidget(b);

    m_body->addLayout(m_grids, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(heading);
    layout->addLayout(m_body, 1);
    layout->addLayout(buttons);

    connect(m_cmdOK, &QPushButton::clicked, this, &PersonRecordScreen::cmdOK_Click);
    connect(m_cmdPrint, &QPushButton::clicked, this, &PersonRecordScreen::showPrintPanel);
    connect(m_cmdBack, &QPushButton::clicked, this, &QDialog::reject);
}

bool PersonRecordScreen::editing() const {
    return G().PersonEditMode != 0;
}

ZqGrid* PersonRecordScreen::addGrid(const SubGrid& def, const QString& gridName, const QString& labelName) {
    Part p;
    p.def = def;
    p.grid = new ZqGrid(this);
    p.grid->setObjectName(gridName);
    EnableGridExport(p.grid, def.title);
    p.title = new QLabel(def.title, this);
    p.title->setObjectName(labelName);
    // One grid has cmdInsert and cmdDelete; a second turns the names of both pairs numbered.
    const int n = m_parts.size() + 1;
    p.insert = NamedButton(this, QStringLiteral("cmdInsert"), QStringLiteral("插入行"));
    p.remove = NamedButton(this, QStringLiteral("cmdDelete"), QStringLiteral("删除行"));
    if (n == 2) {
        m_parts[0].insert->setObjectName(QStringLiteral("cmdInsert1"));
        m_parts[0].remove->setObjectName(QStringLiteral("cmdDelete1"));
        p.insert->setObjectName(QStringLiteral("cmdInsert2"));
        p.remove->setObjectName(QStringLiteral("cmdDelete2"));
    }
    auto* bar = new QHBoxLayout;
    bar->addWidget(p.title);
    bar->addStretch();
    bar->addWidget(p.insert);
    bar->addWidget(p.remove);
    m_grids->addLayout(bar);
    m_grids->addWidget(p.grid, 1);

    const int index = m_parts.size();
    ZqGrid* g = p.grid;
    connect(p.insert, &QPushButton::clicked, this, [g] { GridInsertRow(*g); });
    connect(p.remove, &QPushButton::clicked, this, [g] { GridDeleteRow(*g); });
    connect(g, &ZqGrid::dblClick, this,
            [this, index](int col, int row) { guarded([&] { headerDblClick(index, col, row); }); });
    setUpGrid(p);
    m_parts.append(p);
    return g;
}

void PersonRecordScreen::pairHeaders(int a, int b) {
    m_parts[a].partner = b;
    m_parts[b].partner = a;
}

void PersonRecordScreen::addTypedGrids(const QString& table, const QString& fieldList,
                                       const QVector<SubColumn>& before, const QVector<SubColumn>& after,
                                       const QString& titleBefore, const QString& titleAfter) {
    const auto grid = [&](const QVector<SubColumn>& cols, int type, const QString& title) {
        SubGrid g(table, fieldList, QStringLiteral("fType=%1").arg(type), cols, true, title);
        g.columns.append({QStringLiteral("fType"), QString(), 0, 0, true});
        g.type = type;
        // Only the second save decides, and its log line names the screen.
        g.logCaption = type == 1 ? windowTitle() : QString();
        return g;
    };
    addGrid(grid(before, 0, titleBefore), QStringLiteral("Grid1"), QStringLiteral("Label1(4)"));
    addGrid(grid(after, 1, titleAfter), QStringLiteral("Grid2"), QStringLiteral("Label1(0)"));
    pairHeaders(0, 1);
}

void PersonRecordScreen::setUpGrid(Part& p) {
    ZqGrid* g = p.grid;
    const QVector<SubColumn>& cols = p.def.columns;
    g->setMaxCols(int(cols.size()));
    g->setMaxRows(0);
    g->setColWidth(0, 3);
    g->setRowHeight(0, 25);
    g->setRowHeight(-1, 13);
    for (int c = 1; c <= cols.size(); ++c) {
        const SubColumn& col = cols.at(c - 1);
        // The dictionary names a column when it has a row for it; the design caption otherwise.
        QString caption = col.header;
        if (p.def.askCaptions && !p.def.headerTable.isEmpty()) {
            const QString named = GetFieldCaption(p.def.headerTable, col.field);
            if (named != QStringLiteral("\t")) caption = named;
        }
        g->setHeaderText(c, caption);
        g->setColWidth(c, col.width);
        g->setColMaxLength(c, col.maxLength);
        g->setColMultiLine(c, true);
        g->setColHidden(c, col.hidden || col.width <= 0);
    }
    g->setAppendOnEnter(true);
    g->setAppendOnDown(p.def.appendOnDown);
}

void PersonRecordScreen::headerDblClick(int part, int col, int row) {
    Part& p = m_parts[part];
    if (EditGridHeader(col, row, *p.grid, p.def.headerTable) != -1) return;
    if (p.partner >= 0) m_parts[p.partner].grid->setHeaderText(col, p.grid->headerText(col));
}

void PersonRecordScreen::showEvent(QShowEvent* event) {
    if (!m_loaded) {
        m_loaded = true;
        guarded([this] { load(); });
    }
    QDialog::showEvent(event);
}

void PersonRecordScreen::load() {
    m_code = G().CurPersonCode;
    m_name = G().CurPersonName;
    m_labCode->setText(m_code);
    m_labName->setText(m_name);
    const bool edit = editing();
    for (Part& p : m_parts) {
        LoadGridRows(p.def.table, p.def.fieldList, *p.grid, p.def.condition);
        p.grid->setReadOnly(!edit);
        p.insert->setEnabled(edit);
        p.remove->setEnabled(edit);
        p.grid->setActiveCell(-1, -1);
    }
    m_cmdOK->setEnabled(edit);
    CenterForm(this);
}

bool PersonRecordScreen::saveGrid(int i) {
    const Part& p = m_parts.at(i);
    // The hidden type column travels with the rows of its grid.
    if (p.def.type >= 0)
        for (int r = 1; r <= p.grid->maxRows(); ++r)
            p.grid->setText(r, p.grid->maxCols(), QString::number(p.def.type));
    if (SaveGridRows(p.def.table, p.def.fieldList, *p.grid, p.def.condition) == -1) {
        if (!p.def.logCaption.isEmpty()) logSaved(p.def.logCaption);
        return true;
    }
    // Nothing of this grid was stored; the rows stay on screen for another try.
    ShowMsg(SaveErrorText() + QStringLiteral("\n\n") + p.def.title + QStringLiteral(": ") +
                LastGridSaveError(),
            vbExclamation, windowTitle());
    return false;
}

void PersonRecordScreen::logSaved(const QString& caption) const {
    WriteLogRecord(RecordSavedText(caption, m_code, m_name));
}

void PersonRecordScreen::save() {
    bool all = true;
    for (int i = 0; i < m_parts.size(); ++i)
        all = saveGrid(i) && all;
    if (all) accept();
}

void PersonRecordScreen::cmdOK_Click() {
    if (!editing()) return;
    guarded([this] { save(); });
}

void PersonRecordScreen::buildPrintPanel() {
    m_printPanel = new QFrame(this);
    m_printPanel->setObjectName(QStringLiteral("Picture2"));
    m_printPanel->setFrameShape(QFrame::StyledPanel);
    m_printPanel->setAutoFillBackground(true);
    auto* layout = new QVBoxLayout(m_printPanel);
    layout->addWidget(new QLabel(QStringLiteral("打印内容:"), m_printPanel));
    QStringList options;
    for (const Part& p : m_parts)
        options << p.def.title;
    options += m_extraPrint;
    for (int i = 0; i < options.size(); ++i) {
        auto* check = new QCheckBox(options.at(i), m_printPanel);
        check->setObjectName(QStringLiteral("Check%1").arg(i + 1));
        check->setChecked(i == 0);
        layout->addWidget(check);
        m_printChecks << check;
    }
    auto* buttons = new QHBoxLayout;
    QPushButton* ok = NamedButton(m_printPanel, QStringLiteral("cmdSetOk"), QStringLiteral("确定"));
    QPushButton* cancel = NamedButton(m_printPanel, QStringLiteral("cmdSetCancel"), QStringLiteral("取消"));
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    layout->addLayout(buttons);
    connect(ok, &QPushButton::clicked, this, &PersonRecordScreen::cmdSetOk_Click);
    connect(cancel, &QPushButton::clicked, m_printPanel, &QWidget::hide);
    m_printPanel->hide();
}

void PersonRecordScreen::showPrintPanel() {
    if (!m_directPrint.isEmpty()) {
        guarded([this] { printPart(0); });
        return;
    }
    if (!m_printPanel) buildPrintPanel();
    m_printPanel->adjustSize();
    CenterOnForm(m_printPanel, this);
    m_printPanel->show();
    m_printPanel->raise();
    m_printChecks.value(0)->setFocus();
}

void PersonRecordScreen::cmdSetOk_Click() {
    m_printPanel->hide();
    for (int i = 0; i < m_printChecks.size(); ++i)
        if (m_printChecks.at(i)->isChecked()) guarded([this, i] { printPart(i); });
}

QStringList PersonRecordScreen::printItems(int) const {
    return {QStringLiteral("编号"), m_code, QStringLiteral("姓名"), m_name};
}

void PersonRecordScreen::printPart(int part) {
    PrintGrid(printItems(part), grid(part),
              m_printChecks.value(part) ? m_printChecks.at(part)->text() : QString());
}

void PersonRecordScreen::reject() {
    if (m_printPanel && m_printPanel->isVisible()) {
        m_printPanel->hide();
        return;
    }
    QDialog::reject();
}

void PersonRecordScreen::guarded(const std::function<void()>& f) {
    try {
        f();
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, windowTitle());
    }
}

} // namespace zq
