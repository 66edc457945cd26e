#include "frmRs_Person.h"

// The screen's controls: the button bar, the tree, the list, the record choices and the leaving
// panel, and what each of them calls.
#include "services/ui/DeptTree.h"
#include "services/ui/Grid.h"
#include "services/ui/GridExport.h"
#include "services/ui/NamedWidgets.h"
#include "shell/ui/Commands.h"

#include <QAction>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QSplitter>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace zq {

namespace {
QAction* action(QMenu* menu, const char* name, const QString& caption) {
    QAction* a = menu->addAction(caption);
    a->setObjectName(QLatin1String(name));
    return a;
}
} // namespace

void frmRs_Person::buildControls() {
    // The button bar.
    m_cboZT = new QComboBox(this);
    m_cboZT->setObjectName(QStringLiteral("cboZT"));
    m_cboZT->setMinimumContentsLength(6);
    m_chkTotalMan = new QCheckBox(QStringLiteral("统计人数"), this);
    m_chkTotalMan->setObjectName(QStringLiteral("chkTotalMan"));
    m_chkTotalMan->setChecked(true);
    auto* comAdd = NamedButton(this, "ComAdd", QStringLiteral("新增(&A)"));
    auto* cmdChg = NamedButton(this, "cmdChg", QStringLiteral("修改(&C)"));
    auto* comDel = NamedButton(this, "ComDel", QStringLiteral("删除(&D)"));
    auto* cmdImport = NamedButton(this, "cmdImport", QStringLiteral("导入员工"));
    auto* cmdOpen = NamedButton(this, "cmdOpen", QStringLiteral("查询(&S)"));
    m_cmdState = NamedButton(this, "cmdState", QStringLiteral("离职处理"));
    auto* cmdCompile = NamedButton(this, "cmdCompile", QStringLiteral("汇总统计"));
    auto* cmdDept = NamedButton(this, "cmdDept", QStringLiteral("部门管理"));
    auto* cmdListOption = NamedButton(this, "CmdlistOption", QStringLiteral("栏目选项"));
    m_cmdSeek = NamedButton(this, "cmdSeek", QStringLiteral("条件查找"));
    m_cmdPrint = NamedButton(this, "cmdPrint", QStringLiteral("打印(&P)"));
    m_cmdQuit = NamedButton(this, "cmdQuit", QStringLiteral("退出>>"));
    cmdCompile->setEnabled(hasForm(QStringLiteral("frmRs_PersonList")));
    cmdDept->setEnabled(hasForm(QStringLiteral("frmRs_Dept")));

    m_mnuRsSeek = new QMenu(this);
    m_mnuRsSeek->setObjectName(QStringLiteral("mnuRsSeek"));
    QAction* seek1 = action(m_mnuRsSeek, "mnuRsSeek1", QStringLiteral("条件查找"));
    QAction* seek2 = action(m_mnuRsSeek, "mnuRsSeek2", QStringLiteral("[其它资料]查询"));
    seek2->setEnabled(hasForm(QStringLiteral("frmRs_PersonDetailSeek")));
    m_mnuPnt = new QMenu(this);
    m_mnuPnt->setObjectName(QStringLiteral("mnuPnt"));
    QAction* pntDoc = action(m_mnuPnt, "mnuPntDoc", QStringLiteral("人事档案打印"));
    pntDoc->setEnabled(hasForm(QStringLiteral("frmRs_PersonPnt")));
    QAction* pntDocList = action(m_mnuPnt, "mnuPntDocList", QStringLiteral("列表人员档案打印"));
    pntDocList->setEnabled(pntDoc->isEnabled());
    QAction* pntCard = action(m_mnuPnt, "mnuPntCard", QStringLiteral("职工卡打印"));
    QAction* pntOther = action(m_mnuPnt, "mnuPntOther", QStringLiteral("其它资料打印"));
    QAction* pntList = action(m_mnuPnt, "mnuPntList", QStringLiteral("职工列表打印"));
    m_mnuPntDept = action(m_mnuPnt, "mnuPntDept", QStringLiteral("部门列表打印"));

    auto* top = new QHBoxLayout;
    top->setSpacing(4);
    top->addWidget(m_cboZT);
    top->addWidget(m_chkTotalMan);
    top->addSpacing(8);
    for (QWidget* w :
         {static_cast<QWidget*>(comAdd), static_cast<QWidget*>(cmdChg), static_cast<QWidget*>(comDel),
          static_cast<QWidget*>(cmdImport), static_cast<QWidget*>(cmdOpen), static_cast<QWidget*>(m_cmdState),
          static_cast<QWidget*>(cmdCompile), static_cast<QWidget*>(cmdDept),
          static_cast<QWidget*>(cmdListOption), static_cast<QWidget*>(m_cmdSeek),
          static_cast<QWidget*>(m_cmdPrint)})
        top->addWidget(w);
    top->addStretch();
    top->addWidget(m_cmdQuit);

    // Tree left, list in the middle, the record screens right.
    m_tree = new QTreeWidget(this);
    m_tree->setObjectName(QStringLiteral("Tree1"));
    m_tree->setHeaderHidden(true);
    m_tree->setUniformRowHeights(true);
    // Head counts stand behind the names: the column grows with them and the tree scrolls sideways.
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_grid = new ZqGrid(this);
    m_grid->setObjectName(QStringLiteral("Grid1"));
    EnableGridExport(m_grid, QStringLiteral("员工名单"));
    m_grid->setReadOnly(true);
    m_grid->setRowSelection(true);
    m_lblTotal = new QLabel(QStringLiteral("合计：人"), this);
    m_lblTotal->setObjectName(QStringLiteral("lblTotal"));
    auto* middle = new QWidget(this);
    auto* middleLayout = new QVBoxLayout(middle);
    middleLayout->setContentsMargins(0, 0, 0, 0);
    middleLayout->addWidget(m_grid, 1);
    // The home page's choice is named beside the count: the window keeps its one title.
    m_lblPreset = new QLabel(this);
    m_lblPreset->setObjectName(QStringLiteral("lblPreset"));
    m_lblPreset->setStyleSheet(QStringLiteral("color: #3a5a8c;"));
    m_lblPreset->hide();
    auto* foot = new QHBoxLayout;
    foot->addWidget(m_lblTotal);
    foot->addSpacing(16);
    foot->addWidget(m_lblPreset, 1);
    middleLayout->addLayout(foot);

    auto* split = new QSplitter(Qt::Horizontal, this);
    split->addWidget(m_tree);
    split->addWidget(middle);
    split->addWidget(buildChoices());
    split->setStretchFactor(0, 0);
    split->setStretchFactor(1, 1);
    split->setStretchFactor(2, 0);
    split->setCollapsible(1, false);
    split->setSizes({280, 700, 110});

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addLayout(top);
    layout->addWidget(split, 1);

    m_pictLZ = buildLeavingPanel();

    connect(m_cboZT, &QComboBox::activated, this, [this] { guarded([this] { cboZT_Click(); }); });
    connect(m_chkTotalMan, &QCheckBox::clicked, this, [this] { guarded([this] { chkTotalMan_Click(); }); });
    ConnectNodeClick(
        m_tree, this, [this] { return m_filling; },
        [this](QTreeWidgetItem* node) { guarded([this, node] { Tree1_NodeClick(node); }); });
    connect(m_tree, &QTreeWidget::itemDoubleClicked, this, [this] { guarded([this] { Tree1_DblClick(); }); });
    connect(m_grid, &ZqGrid::leaveCell, this, &frmRs_Person::Grid1_LeaveCell);
    connect(m_grid, &ZqGrid::dblClick, this,
            [this](int col, int row) { guarded([this, col, row] { Grid1_DblClick(col, row); }); });
    const auto wire = [this](QObject* sender, void (frmRs_Person::*handler)()) {
        if (auto* b = qobject_cast<QPushButton*>(sender))
            connect(b, &QPushButton::clicked, this,
                    [this, handler] { guarded([this, handler] { (this->*handler)(); }); });
        else if (auto* a = qobject_cast<QAction*>(sender))
            connect(a, &QAction::triggered, this,
                    [this, handler] { guarded([this, handler] { (this->*handler)(); }); });
    };
    wire(comAdd, &frmRs_Person::ComAdd_Click);
    wire(cmdImport, &frmRs_Person::cmdImport_Click);
    wire(cmdChg, &frmRs_Person::cmdChg_Click);
    wire(comDel, &frmRs_Person::ComDel_Click);
    wire(cmdOpen, &frmRs_Person::cmdOpen_Click);
    wire(m_cmdState, &frmRs_Person::cmdState_Click);
    wire(cmdCompile, &frmRs_Person::cmdCompile_Click);
    wire(cmdDept, &frmRs_Person::cmdDept_Click);
    wire(cmdListOption, &frmRs_Person::CmdlistOption_Click);
    wire(m_cmdQuit, &frmRs_Person::cmdQuit_Click);
    wire(seek1, &frmRs_Person::mnuRsSeek1_Click);
    wire(seek2, &frmRs_Person::mnuRsSeek2_Click);
    wire(pntDoc, &frmRs_Person::mnuPntDoc_Click);
    wire(pntDocList, &frmRs_Person::mnuPntDocList_Click);
    wire(pntCard, &frmRs_Person::mnuPntCard_Click);
    wire(pntOther, &frmRs_Person::mnuPntOther_Click);
    wire(pntList, &frmRs_Person::mnuPntList_Click);
    wire(m_mnuPntDept, &frmRs_Person::mnuPntDept_Click);
    connect(m_cmdSeek, &QPushButton::clicked, this,
            [this] { m_mnuRsSeek->popup(m_cmdSeek->mapToGlobal(QPoint(0, m_cmdSeek->height()))); });
    connect(m_cmdPrint, &QPushButton::clicked, this,
            [this] { m_mnuPnt->popup(m_cmdPrint->mapToGlobal(QPoint(0, m_cmdPrint->height()))); });
}

QWidget* frmRs_Person::buildChoices() {
    auto* panel = new QFrame(this);
    panel->setObjectName(QStringLiteral("picRight"));
    panel->setFrameShape(QFrame::StyledPanel);
    auto* layout = new QVBoxLayout(panel);
    layout->setSpacing(2);
    m_optSelect = new QButtonGroup(this);
    const QStyle::StandardPixmap icons[] = {QStyle::SP_FileDialogInfoView,
                                            QStyle::SP_DirHomeIcon,
                                            QStyle::SP_FileDialogDetailedView,
                                            QStyle::SP_FileDialogContentsView,
                                            QStyle::SP_DialogApplyButton,
                                            QStyle::SP_MessageBoxInformation,
                                            QStyle::SP_DirLinkIcon,
                                            QStyle::SP_FileDialogListView};
    int firstOpen = -1;
    for (int i = 0; i < 8; ++i) {
        auto* image = new QLabel(panel);
        image->setObjectName(ArrayName("Image1", i));
        // Record screens that are not part of this installation cannot be chosen.
        const bool present = hasForm(recordScreens().at(i));
        image->setPixmap(
            style()->standardIcon(icons[i]).pixmap(QSize(32, 32), present ? QIcon::Normal : QIcon::Disabled));
        image->setAlignment(Qt::AlignCenter);
        image->installEventFilter(this);
        auto* opt = new QRadioButton(recordCaptions().at(i), panel);
        opt->setObjectName(ArrayName("OptSelect", i));
        opt->installEventFilter(this); // a double click opens the choice
        opt->setEnabled(present);
        image->setEnabled(present);
        if (present && firstOpen < 0) firstOpen = i;
        m_optSelect->addButton(opt, i);
        m_images << image;
        layout->addWidget(image);
        layout->addWidget(opt, 0, Qt::AlignHCenter);
    }
    m_optSelect->button(firstOpen < 0 ? 0 : firstOpen)->setChecked(true);
    // Beside the records: what was changed in them, by whom and when.
    auto* history = NamedButton(panel, QStringLiteral("cmdHistory"), QStringLiteral("变更记录"));
    history->setEnabled(hasForm(QStringLiteral("frmRs_PersonHistory")));
    layout->addSpacing(8);
    layout->addWidget(history);
    connect(history, &QPushButton::clicked, this, [this] { guarded([this] { cmdHistory_Click(); }); });
    layout->addStretch();
    return panel;
}

QFrame* frmRs_Person::buildLeavingPanel() {
    auto* panel = new QFrame(this);
    panel->setObjectName(QStringLiteral("pictLZ"));
    panel->setFrameShape(QFrame::Box);
    panel->setFrameShadow(QFrame::Raised);
    panel->setLineWidth(2);
    panel->setAutoFillBackground(true);
    auto* layout = new QVBoxLayout(panel);
    m_lblLeaving = new QLabel(panel);
    m_lblLeaving->setObjectName(QStringLiteral("lblLZ"));
    layout->addWidget(m_lblLeaving);
    layout->addWidget(new QLabel(QStringLiteral("离职原因："), panel));
    auto* reasons = new QGridLayout;
    m_optLeft = new QButtonGroup(this);
    const QStringList defaults = {QStringLiteral("辞职"), QStringLiteral("解聘"),  QStringLiteral("退休"),
                                  QStringLiteral("离休"), QStringLiteral("其他1"), QStringLiteral("其他2")};
    for (int i = 0; i < 6; ++i) {
        auto* opt = new QRadioButton(defaults.at(i), panel);
        opt->setObjectName(ArrayName("optLeft", i));
        m_optLeft->addButton(opt, i);
        reasons->addWidget(opt, i / 2, i % 2);
    }
    m_optLeft->button(0)->setChecked(true);
    layout->addLayout(reasons);
    auto* buttons = new QHBoxLayout;
    auto* ok = NamedButton(panel, "cmdLZOK", QStringLiteral("确定"));
    auto* cancel = NamedButton(panel, "cmdLZexit", QStringLiteral("取消"));
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    layout->addLayout(buttons);
    panel->setMinimumWidth(280);
    panel->adjustSize();
    panel->hide();
    connect(ok, &QPushButton::clicked, this, [this] { guarded([this] { cmdLZOK_Click(); }); });
    connect(cancel, &QPushButton::clicked, this, &frmRs_Person::cmdLZexit_Click);
    return panel;
}

} // namespace zq
