#include "frmRs_Person.h"

#include "PersonBrowserData.h"
#include "services/ui/NamedWidgets.h"
#include "services/ui/GridExport.h"
#include "personnel/PersonImportDialog.h"

#include "printing/Print.h"
#include "printing/PrintOutput.h"
#include "printing/SheetDocument.h"
#include "resources/Texts.h"
#include "services/InputAids.h"
#include "services/Lookups.h"
#include "services/ui/BriefDialog.h"
#include "services/ui/ComboLookups.h"
#include "services/ui/DeptTree.h"
#include "services/ui/Grid.h"
#include "services/ui/GridColumns.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/SaveOrTell.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/Rights.h"
#include "shell/ui/Commands.h"

#include <QAction>
#include <QButtonGroup>
#include <QCheckBox>
#include <QChildEvent>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QGuiApplication>
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
#include <utility>

namespace zq {

namespace {

const QString kTitle = QStringLiteral("人事管理");
const QString kNoPerson = QStringLiteral("请先选择员工。");
const QString kNoEntry = QStringLiteral("对不起!你无权进入...");

QAction* action(QMenu* menu, const char* name, const QString& caption) {
    QAction* a = menu->addAction(caption);
    a->setObjectName(QLatin1String(name));
    return a;
}

// A node's text without the head count behind its tab.
QString nodeName(const QTreeWidgetItem* node) {
    return SplitTabText(node->text(0), 1);
}

const QStringList& recordCaptions() {
    static const QStringList c = {QStringLiteral("基本资料"), QStringLiteral("家庭情况"),
                                  QStringLiteral("工作简历"), QStringLiteral("受训情况"),
                                  QStringLiteral("主要业绩"), QStringLiteral("历年评语"),
                                  QStringLiteral("本地亲属"), QStringLiteral("其它资料")};
    return c;
}

} // namespace

const QStringList& frmRs_Person::recordScreens() {
    static const QStringList s = {QStringLiteral("frmRs_PersonBasic"),  QStringLiteral("frmRs_PersonFamily"),
                                  QStringLiteral("frmRs_PersonResume"), QStringLiteral("frmRs_PersonTrain"),
                                  QStringLiteral("frmRs_PersonResult"), QStringLiteral("frmRs_PersonReward"),
                                  QStringLiteral("frmRs_PersonWork"),   QStringLiteral("frmRs_PersonDetail")};
    return s;
}

frmRs_Person::frmRs_Person(QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("frmRs_Person"));
    setWindowTitle(QStringLiteral("人事档案"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    setWindowFlag(Qt::WindowMinimizeButtonHint);
    buildControls();
    // Below this size the button bar and the panels would crowd each other.
    setMinimumSize(960, 600);
    resize(1100, 680);
}

frmRs_Person::~frmRs_Person() {
    SetCurrentRsState(1);
}

void frmRs_Person::setRsState(int state) {
    m_rsState = state;
    SetCurrentRsState(state);
}

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
    for (QWidget* w : {static_cast<QWidget*>(comAdd), static_cast<QWidget*>(cmdChg),
                       static_cast<QWidget*>(comDel), static_cast<QWidget*>(cmdImport), static_cast<QWidget*>(cmdOpen),
                       static_cast<QWidget*>(m_cmdState), static_cast<QWidget*>(cmdCompile),
                       static_cast<QWidget*>(cmdDept), static_cast<QWidget*>(cmdListOption),
                       static_cast<QWidget*>(m_cmdSeek), static_cast<QWidget*>(m_cmdPrint)})
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
    middleLayout->addWidget(m_lblTotal);

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

template <typename F> void frmRs_Person::guarded(F&& f) {
    try {
        f();
    } catch (const DbError& e) {
        m_grid->setRedraw(true);
        ShowMsg(e.message(), vbExclamation, windowTitle());
    }
}

void frmRs_Person::showEvent(QShowEvent* event) {
    if (!m_loaded) guarded([this] { load(); });
    QDialog::showEvent(event);
}

void frmRs_Person::reopen() {
    // A screen opened from here may have closed the shared connection.
    OpenControlConn();
}

bool frmRs_Person::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate && m_loaded) reopen();
    return QDialog::event(event);
}

void frmRs_Person::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    CenterOnForm(m_pictLZ, this);
}

void frmRs_Person::load() {
    m_loaded = true;
    // 1.
    CenterForm(this);
    reopen();
    const Globals& g = G();
    if (!m_presetCaption.isEmpty()) setWindowTitle(QStringLiteral("人事档案 - ") + m_presetCaption);
    // 2. Every row pick reads the code from column 1 and the name from column 2.
    m_gridFieldList = SetGridColumns(QStringLiteral("tRsBasic"), m_grid, -1, 1);
    // 3.
    SplitSpouseTable();
    // 4.
    m_cboZT->clear();
    m_cboZT->addItem(QStringLiteral("在职"));
    quint8 withCode = 0;
    FillBriefCombo(m_cboZT, QStringLiteral("rsstate"), withCode);
    if (m_rsState < 1) setRsState(1);
    if (m_cboZT->count() < 2) m_cboZT->addItem(QStringLiteral("离职"));
    if (m_cboZT->count() >= 1) {
        m_cboZT->setCurrentIndex(m_rsState - 1);
        m_filling = true; // the tree is filled once, below
        cboZT_Click();
        m_filling = false;
    }
    // 5.
    if (m_rsState != 1) {
        m_cmdState->setText(QStringLiteral("恢复原职"));
        m_cboZT->setEnabled(true);
    } else {
        m_cmdState->setText(QStringLiteral("离职处理"));
        m_cboZT->setEnabled(g.isSupervisor());
    }
    // 6.
    const int last = qMin(m_cboZT->count() - 1, 6);
    for (int i = 1; i <= 6; ++i) {
        QAbstractButton* opt = m_optLeft->button(i - 1);
        if (i <= last) opt->setText(m_cboZT->itemText(i));
        opt->setVisible(i <= last);
    }
    m_pictLZ->adjustSize();
    // 7.
    fillTree();
    m_filling = true;
    if (m_tree->topLevelItemCount() > 0) m_tree->setCurrentItem(m_tree->topLevelItem(0));
    m_filling = false;
    RefreshPersonList();
}

void frmRs_Person::fillTree() {
    m_filling = true;
    // Quotas concern the staff in service: only their tree warns of a department over its quota.
    FillDeptTree(m_tree, QStringLiteral("tRs_bm"), QString(), 0, m_rsState,
                 m_chkTotalMan->isChecked() ? 1 : 0, 0, m_rsState == 1);
    // The department chosen stays chosen across a refill.
    QTreeWidgetItem* node =
        m_treeDeptCode.isEmpty() ? nullptr : FindNode(m_tree, QLatin1Char('B') + m_treeDeptCode);
    if (node) m_tree->setCurrentItem(node);
    m_filling = false;
}

void frmRs_Person::refreshCounts() {
    if (m_chkTotalMan->isChecked())
        RefreshTreeCounts(m_tree, QStringLiteral("tRs_bm"), m_rsState, m_rsState == 1);
}

void frmRs_Person::cboZT_Click() {
    const int index = m_cboZT->currentIndex();
    if (index < 0) return;
    if (!G().isSupervisor()) {
        const bool serving = index == 0;
        if (CheckModel(serving ? QStringLiteral("mnuRsManIn") : QStringLiteral("mnuRsManOut"), 0) == 0) {
            m_cboZT->setCurrentIndex(-1);
            return;
        }
        m_cmdState->setText(serving ? QStringLiteral("离职处理") : QStringLiteral("恢复原职"));
    }
    setRsState(index + 1);
    if (m_filling) return; // loading fills the tree and the list itself
    fillTree();
    RefreshPersonList();
}

void frmRs_Person::chkTotalMan_Click() {
    fillTree();
}

void frmRs_Person::Tree1_NodeClick(QTreeWidgetItem* node) {
    if (!node) return;
    Globals& g = G();
    const QString oldCode = m_treeDeptCode;
    const QString key = NodeKey(node);
    if (!node->parent()) {
        g.CurPersonCode.clear();
        g.CurPersonName.clear();
        m_treeDeptCode.clear();
        m_treeDeptName.clear();
    } else if (!key.startsWith(QLatin1Char('R'))) {
        g.CurPersonCode.clear();
        g.CurPersonName.clear();
        m_treeDeptName = nodeName(node);
        m_treeDeptCode = CodeFromName(QStringLiteral("tRs_bm"), m_treeDeptName);
    } else {
        g.CurPersonName = nodeName(node);
        g.CurPersonCode = CodeFromName(QStringLiteral("tRsBasic"), g.CurPersonName);
        QTreeWidgetItem* parent = node->parent();
        if (!parent->parent()) {
            m_treeDeptCode.clear();
            m_treeDeptName.clear();
        } else {
            m_treeDeptName = nodeName(parent);
            m_treeDeptCode = CodeFromName(QStringLiteral("tRs_bm"), m_treeDeptName);
        }
    }
    if (m_treeDeptCode != oldCode) RefreshPersonList();
}

void frmRs_Person::Tree1_DblClick() {
    QTreeWidgetItem* node = m_tree->currentItem();
    if (!node || NodeKey(node).startsWith(QLatin1Char('B')) || G().CurPersonCode.isEmpty()) return;
    G().PersonEditMode = 0;
    OpenRecordScreen();
}

QString frmRs_Person::listCondition() const {
    return PersonListCondition(m_rsState, m_treeDeptCode, m_seekCondition, m_detailCondition, m_presetFilter);
}

void frmRs_Person::RefreshPersonList() {
    Globals& g = G();
    m_grid->setRedraw(false);
    m_grid->setMaxRows(0);
    // The list is read as it is shown: a company of a million opens as fast as a small one.
    m_grid->loadPaged(PersonListPaged(m_gridFieldList, listCondition(), !m_detailCondition.isEmpty()));
    const int rows = m_grid->maxRows();
    int row = rows == 0 ? 0 : m_grid->findRow(1, g.CurPersonCode);
    if (rows == 0) {
        g.CurPersonCode.clear();
        g.CurPersonName.clear();
    } else if (row == 0) {
        row = 1;
        setPersonFromRow(1);
    }
    if (row > 0) m_grid->setActiveCell(row, 1);
    m_grid->setRedraw(true);
    m_lblTotal->setText(QStringLiteral("合计：%1人").arg(rows));
    if (m_grid->isVisible()) m_grid->setFocus();
}

void frmRs_Person::setPersonFromRow(int row) {
    G().CurPersonCode = m_grid->text(row, 1);
    G().CurPersonName = m_grid->text(row, 2);
}

void frmRs_Person::Grid1_LeaveCell(int, int row, int, int newRow) {
    if (newRow >= 1 && newRow != row) setPersonFromRow(newRow);
}

void frmRs_Person::Grid1_DblClick(int, int row) {
    if (row < 1) return; // the captions
    G().PersonEditMode = 0;
    OpenRecordScreen();
}

int frmRs_Person::chosenRecordScreen() const {
    for (int i = 0; i < 8; ++i)
        if (m_optSelect->button(i)->isChecked()) return i;
    return 0;
}

void frmRs_Person::OpenRecordScreen() {
    Globals& g = G();
    const int index = chosenRecordScreen();
    const QString& screen = recordScreens().at(index);
    if (g.PersonEditMode != 1 || index != 0) {
        if (g.CurPersonCode.isEmpty()) {
            ShowMsg(kNoPerson, vbExclamation, kTitle);
            return;
        }
    }
    if (!hasForm(screen)) {
        ShowMsg(QStringLiteral("“%1”尚未安装，暂不能打开。").arg(recordCaptions().at(index)), vbInformation,
                kTitle);
        return;
    }
    QVariantMap settings;
    if (g.PersonEditMode == 1 && index == 0) {
        // A new person: the master record starts empty, with the company as the unit.
        g.CurPersonCode.clear();
        g.CurPersonName.clear();
        settings.insert(QStringLiteral("CompName"), g.CompName);
    }
    openForm(screen, this, settings);
    reopen();
    if (index == 0) {
        RefreshPersonList();
        refreshCounts(); // a person added, or moved to another department
    }
}

bool frmRs_Person::refusedRight(qint16 op, const QString& refusal) {
    if (CheckModel(BrowserModelKey(m_rsState), op) != 0) return false;
    ShowMsg(refusal, vbExclamation);
    return true;
}

bool frmRs_Person::needPerson(const QString& message, int style) {
    if (!G().CurPersonCode.isEmpty()) return false;
    ShowMsg(message, style, kTitle);
    return true;
}

void frmRs_Person::ComAdd_Click() {
    if (refusedRight(1, kNoEntry)) return;
    G().PersonEditMode = 1;
    OpenRecordScreen();
}

// Adding needs the right to add; updating existing persons also the right to change.
void frmRs_Person::cmdImport_Click() {
    if (refusedRight(1, kNoEntry)) return;
    if (ImportPersons(this, CheckModel(BrowserModelKey(m_rsState), 2) != 0)) RefreshPersonList();
}

void frmRs_Person::cmdChg_Click() {
    if (refusedRight(2, kNoEntry)) return;
    if (needPerson(kNoPerson, vbOKOnly)) return;
    G().PersonEditMode = 2;
    OpenRecordScreen();
}

void frmRs_Person::cmdOpen_Click() {
    if (needPerson(kNoPerson, vbInformation)) return;
    G().PersonEditMode = 0;
    OpenRecordScreen();
}

void frmRs_Person::ComDel_Click() {
    if (refusedRight(3, kNoEntry)) return;
    if (needPerson(QStringLiteral("先选择要删除的员工。"), vbExclamation)) return;
    const Globals& g = G();
    const QString code = g.CurPersonCode;
    const QString name = g.CurPersonName;
    if (ShowMsg(QStringLiteral("请确认是否删除: ") + name + QStringLiteral(" (No: ") + code +
                    QStringLiteral(") ？"),
                vbYesNo + vbQuestion, kTitle) != vbYes)
        return;
    if (!SaveOrTell(this, [&] { DeletePerson(code, name, m_rsState); })) return;
    RemovePersonRow();
    refreshCounts();
}

void frmRs_Person::RemovePersonRow() {
    Globals& g = G();
    const int row = m_grid->findRow(1, g.CurPersonCode);
    if (row == 0) return;
    const int active = m_grid->activeRow() > 0 ? m_grid->activeRow() : row;
    m_grid->removeRow(row);
    m_lblTotal->setText(QStringLiteral("合计：%1人").arg(m_grid->maxRows()));
    if (active <= m_grid->maxRows()) {
        setPersonFromRow(active);
        m_grid->setActiveCell(active, 1);
    } else {
        // Nobody stands at that place any more: no one stays in hand rather than the person gone.
        g.CurPersonCode.clear();
        g.CurPersonName.clear();
    }
}

void frmRs_Person::cmdState_Click() {
    if (m_rsState == 1)
        leave();
    else
        reinstate();
}

void frmRs_Person::leave() {
    if (refusedRight(4, QStringLiteral("对不起!你无权操作..."))) return;
    if (needPerson(QStringLiteral("先选择要离职的员工。"), vbExclamation)) return;
    m_lblLeaving->setText(QStringLiteral("员工：%1 (%2)").arg(G().CurPersonName, G().CurPersonCode));
    m_pictLZ->adjustSize();
    CenterOnForm(m_pictLZ, this);
    m_pictLZ->show();
    m_pictLZ->raise();
    m_cmdQuit->setAutoDefault(false);
    m_pictLZ->findChild<QPushButton*>(QStringLiteral("cmdLZOK"))->setFocus();
}

void frmRs_Person::cmdLZexit_Click() {
    m_pictLZ->hide();
}

void frmRs_Person::cmdLZOK_Click() {
    const Globals& g = G();
    const QString code = g.CurPersonCode;
    const QString name = g.CurPersonName;
    if (ShowMsg(name + QStringLiteral("：该员工进行离职处理，确定?"), vbYesNo + vbQuestion) != vbYes) return;
    if (UnreturnedTools(code) > 0 &&
        ShowMsg(QStringLiteral("该员工有工具物品没有归还,请查询...继续吗?"), vbYesNo + vbQuestion) == vbNo)
        return;
    if (UnreturnedGoods(code) > 0 &&
        ShowMsg(QStringLiteral("该员工有行政物品没有归还,请查询...继续吗?"), vbYesNo + vbQuestion) == vbNo)
        return;
    m_pictLZ->hide();
    const int reason = qMax(0, m_optLeft->checkedId());
    if (!SaveOrTell(this, [&] { SetPersonLeft(code, m_rsState, reason); })) return;
    WriteLogRecord(m_optLeft->button(reason)->text() + QStringLiteral(" [") + code + QLatin1Char('-') + name +
                   QLatin1Char(']'));
    RemovePersonRow();
    refreshCounts();
}

void frmRs_Person::reinstate() {
    if (refusedRight(4, QStringLiteral("对不起!你无权操作..."))) return;
    if (needPerson(QStringLiteral("先选择要复职的员工。"), vbExclamation)) return;
    Globals& g = G();
    if (ShowMsg(g.CurPersonName + QStringLiteral(":复职,请确认?"), vbOKCancel + vbQuestion) != vbOK) return;
    if (ReinstatePerson(g.CurPersonCode, m_rsState)) {
        refreshCounts();
        ShowMsg(g.CurPersonName + QStringLiteral("已复职！"), vbInformation);
    }
    g.CurPersonCode.clear();
    g.CurPersonName.clear();
}

void frmRs_Person::cmdCompile_Click() {
    openForm(QStringLiteral("frmRs_PersonList"), this);
}

void frmRs_Person::cmdHistory_Click() {
    if (G().CurPersonCode.isEmpty()) {
        ShowMsg(kNoPerson, vbExclamation, kTitle);
        return;
    }
    openForm(QStringLiteral("frmRs_PersonHistory"), this);
}

void frmRs_Person::cmdDept_Click() {
    openForm(QStringLiteral("frmRs_Dept"), this, {{QStringLiteral("myTable"), QStringLiteral("trs_bm")}});
    reopen();
    // Departments may have been added, renamed or removed meanwhile.
    fillTree();
}

void frmRs_Person::CmdlistOption_Click() {
    if (ShowBriefDialog(QStringLiteral("tRsBasic"), QString(), 5).isEmpty()) return;
    m_gridFieldList = SetGridColumns(QStringLiteral("tRsBasic"), m_grid, -1, 1);
    RefreshPersonList();
}

void frmRs_Person::dropPreset() {
    m_presetFilter.clear();
    m_presetCaption.clear();
    setWindowTitle(QStringLiteral("人事档案"));
}

void frmRs_Person::mnuRsSeek1_Click() {
    const QString condition = ShowBriefDialog(QStringLiteral("trsbasic"), QString(), 3);
    if (condition.isEmpty()) return;
    m_seekCondition = condition;
    m_detailCondition.clear();
    dropPreset();
    RefreshPersonList();
}

void frmRs_Person::mnuRsSeek2_Click() {
    const QString filter = openFormFor(QStringLiteral("frmRs_PersonDetailSeek"),
                                       {{QStringLiteral("FilterString"), QString()}}, "FilterString")
                               .toString();
    if (filter.isEmpty()) return;
    m_detailCondition = filter;
    m_seekCondition.clear();
    dropPreset();
    RefreshPersonList();
}

QVariant frmRs_Person::openFormFor(const QString& name, const QVariantMap& settings,
                                   const char* resultProperty) {
    // The screen is gone when openForm returns; its answer is read as it closes. The marker setting
    // reaches it once it is whole, which is when its closing can be watched.
    QVariantMap all = settings;
    all.insert(QStringLiteral("zqAnswerTo"), objectName());
    m_awaiting = true;
    m_awaited = nullptr;
    m_resultProperty = resultProperty;
    m_result = QVariant();
    openForm(name, this, all);
    reopen();
    m_awaiting = false;
    m_awaited = nullptr;
    return m_result;
}

void frmRs_Person::childEvent(QChildEvent* event) {
    if (event->type() == QEvent::ChildAdded && m_awaiting && !m_awaited && event->child()->isWidgetType()) {
        m_awaited = event->child();
        event->child()->installEventFilter(this);
    }
    QDialog::childEvent(event);
}

bool frmRs_Person::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_awaited && event->type() == QEvent::DynamicPropertyChange) {
        if (auto* dialog = qobject_cast<QDialog*>(watched)) {
            watched->removeEventFilter(this);
            connect(dialog, &QDialog::finished, this,
                    [this, dialog] { m_result = dialog->property(m_resultProperty); });
        }
        return false;
    }
    const int image = m_images.indexOf(qobject_cast<QWidget*>(watched));
    if (image >= 0 && static_cast<QWidget*>(watched)->isEnabled()) {
        if (event->type() == QEvent::MouseButtonPress) {
            m_optSelect->button(image)->setChecked(true);
            return true;
        }
        if (event->type() == QEvent::MouseButtonDblClick) {
            m_optSelect->button(image)->setChecked(true);
            G().PersonEditMode = 0;
            guarded([this] { OpenRecordScreen(); });
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void frmRs_Person::mnuPntDoc_Click() {
    if (needPerson(QStringLiteral("请选择员工。"), vbExclamation)) return;
    openForm(QStringLiteral("frmRs_PersonPnt"), this, {{QStringLiteral("OutputMode"), 2}});
}

void frmRs_Person::mnuPntDocList_Click() {
    // Every person of the list: the preview pages through them, and its print or PDF shows a
    // progress bar that can be cancelled.
    const QStringList codes = PersonListCodes(listCondition(), !m_detailCondition.isEmpty());
    if (codes.isEmpty()) {
        ShowMsg(LoadText(148), vbInformation);
        return;
    }
    PrintOutput::run(SheetDocument(codes));
}

void frmRs_Person::mnuPntCard_Click() {
    PrintPersonCard(G().isSupervisor() ? 3 : 1, QStringLiteral("RsCard"), QStringLiteral("RsCard_01"),
                    QStringLiteral("fZt=1"));
}

void frmRs_Person::mnuPntOther_Click() {
    PrintPersonCardDetail(G().isSupervisor() ? 3 : 1, QStringLiteral("RsCardOther"),
                          QStringLiteral("艺术人生"), DetailCardSql(listCondition()));
}

void frmRs_Person::mnuPntList_Click() {
    PrintGrid({QStringLiteral("状态"), m_cboZT->currentText(), QStringLiteral("部门编号"), m_treeDeptCode,
               QStringLiteral("部门名称"), m_treeDeptName},
              m_grid, QStringLiteral("员工名单"));
}

void frmRs_Person::mnuPntDept_Click() {
    PrintTreeView(m_tree, m_mnuPntDept->text());
}

void frmRs_Person::cmdQuit_Click() {
    m_pictLZ->hide();
    accept();
}

void frmRs_Person::reject() {
    // Esc closes the leaving panel first; only then does it leave the screen.
    if (m_pictLZ->isVisible()) {
        cmdLZexit_Click();
        return;
    }
    QDialog::reject();
}

} // namespace zq
