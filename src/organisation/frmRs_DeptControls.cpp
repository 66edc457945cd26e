#include "frmRs_Dept.h"

// The screen's controls: the tree, the list, the edit panel and the description pages, and what
// each of them calls.
#include "services/ui/DeptTree.h"
#include "services/ui/Grid.h"
#include "services/ui/GridExport.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/NamedWidgets.h"
#include "shell/ui/Commands.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace zq {

namespace {

QLabel* label(QWidget* parent, const char* name, const QString& caption) {
    auto* l = new QLabel(caption, parent);
    l->setObjectName(QLatin1String(name));
    return l;
}

QLineEdit* textBox(QWidget* parent, const char* name, int maxLength) {
    auto* t = new QLineEdit(parent);
    t->setObjectName(QLatin1String(name));
    t->setMaxLength(maxLength);
    return t;
}

} // namespace

void frmRs_Dept::buildControls() {
    // The button bar.
    m_cmdAdd = NamedButton(this, "cmdAdd", QStringLiteral("新增(&A)"));
    m_cmdChg = NamedButton(this, "cmdChg", QStringLiteral("修改(&C)"));
    m_cmdDel = NamedButton(this, "cmdDel", QStringLiteral("删除(&D)"));
    m_cmdDetail = NamedButton(this, "cmdDetail", QStringLiteral("工作职责与流程"));
    m_cmdPrint = NamedButton(this, "cmdPrint", QStringLiteral("打印(&P)"));
    m_chkList = new QCheckBox(QStringLiteral("职务列表"), this);
    m_chkList->setObjectName(QStringLiteral("chkList"));
    m_chkBmList = new QCheckBox(QStringLiteral("列印部门"), this);
    m_chkBmList->setObjectName(QStringLiteral("chkBmList"));
    m_chkBmList->hide();
    m_cmdListOption = NamedButton(this, "CmdlistOption", QStringLiteral("栏目选项"));
    m_cmdListOption->hide();
    m_cmdQuit = NamedButton(this, "cmdQuit", QStringLiteral("退出>>"));
    auto* top = new QHBoxLayout;
    top->setSpacing(4);
    for (QWidget* w :
         {static_cast<QWidget*>(m_cmdAdd), static_cast<QWidget*>(m_cmdChg), static_cast<QWidget*>(m_cmdDel),
          static_cast<QWidget*>(m_cmdDetail), static_cast<QWidget*>(m_cmdPrint)})
        top->addWidget(w);
    top->addSpacing(12);
    top->addWidget(m_chkList);
    top->addWidget(m_chkBmList);
    top->addWidget(m_cmdListOption);
    top->addStretch();
    // The tree drawn as a chart.
    auto* chart = NamedButton(this, "cmdOrgChart", QStringLiteral("组织机构图"));
    chart->setEnabled(hasForm(QStringLiteral("frmRs_OrgChart")));
    connect(chart, &QPushButton::clicked, this, [this] { openForm(QStringLiteral("frmRs_OrgChart"), this); });
    top->addWidget(chart);
    top->addWidget(m_cmdQuit);

    // Left: the choice of department and the tree.
    m_fraLeft = new QFrame(this);
    m_fraLeft->setObjectName(QStringLiteral("fraLeft"));
    auto* left = new QVBoxLayout(m_fraLeft);
    left->setContentsMargins(0, 0, 0, 0);
    auto* lblTitle = label(m_fraLeft, "lblTitle", QStringLiteral("部门一览表"));
    QFont titleFont = lblTitle->font();
    titleFont.setBold(true);
    lblTitle->setFont(titleFont);
    m_cboDept = new QComboBox(m_fraLeft);
    m_cboDept->setObjectName(QStringLiteral("cboDept"));
    m_chkNoListCode = new QCheckBox(QStringLiteral("不显示<编码>"), m_fraLeft);
    m_chkNoListCode->setObjectName(QStringLiteral("chkNoListCode"));
    m_chkTotalMan = new QCheckBox(QStringLiteral("统计人数"), m_fraLeft);
    m_chkTotalMan->setObjectName(QStringLiteral("chkTotalMan"));
    m_chkTotalMan->setChecked(true);
    auto* checks = new QHBoxLayout;
    checks->addWidget(m_chkNoListCode);
    checks->addWidget(m_chkTotalMan);
    checks->addStretch();
    m_tree = new QTreeWidget(m_fraLeft);
    m_tree->setObjectName(QStringLiteral("Tree1"));
    m_tree->setHeaderHidden(true);
    m_tree->setUniformRowHeights(true);
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_lblOverQuota = label(m_fraLeft, "lblOverQuota", QString());
    m_lblOverQuota->setStyleSheet(QStringLiteral("QLabel { color: #c4281c; }"));
    m_lblOverQuota->hide();
    left->addWidget(lblTitle);
    left->addWidget(m_cboDept);
    left->addLayout(checks);
    left->addWidget(m_tree, 1);
    left->addWidget(m_lblOverQuota);

    // Right: the edit panel above the pages or the list.
    auto* right = new QWidget(this);
    auto* rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    m_picture1 = buildEditPanel();
    m_right = new QStackedWidget(right);
    m_right->addWidget(buildPages());
    m_grid = new ZqGrid(right);
    m_grid->setObjectName(QStringLiteral("Grid1"));
    EnableGridExport(m_grid, QStringLiteral("部门职务列表"));
    m_grid->setReadOnly(true);
    m_grid->setRowSelection(true);
    m_grid->hide();
    m_right->addWidget(m_grid);
    rightLayout->addWidget(m_picture1);
    rightLayout->addWidget(m_right, 1);

    auto* split = new QSplitter(Qt::Horizontal, this);
    split->addWidget(m_fraLeft);
    split->addWidget(right);
    split->setStretchFactor(0, 0);
    split->setStretchFactor(1, 1);
    split->setCollapsible(1, false);
    split->setSizes({470, 590});

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addLayout(top);
    layout->addWidget(split, 1);

    connect(m_cboDept, &QComboBox::activated, this, [this] {
        guarded([this] {
            RefreshTree();
            if (m_grid->isVisible()) fillList();
        });
    });
    connect(m_chkNoListCode, &QCheckBox::clicked, this, [this] { guarded([this] { RefreshTree(); }); });
    connect(m_chkTotalMan, &QCheckBox::clicked, this, [this] { guarded([this] { RefreshTree(); }); });
    ConnectNodeClick(
        m_tree, this, [this] { return m_filling; },
        [this](QTreeWidgetItem* node) { guarded([this, node] { Tree1_NodeClick(node); }); });
    connect(m_tree, &QTreeWidget::itemDoubleClicked, this,
            [this](QTreeWidgetItem* node) { guarded([this, node] { Tree1_DblClick(node); }); });
    connect(m_chkList, &QCheckBox::clicked, this, [this] { guarded([this] { chkList_Click(); }); });
    connect(m_chkBmList, &QCheckBox::clicked, this, [this] { guarded([this] { chkList_Click(); }); });
    connect(m_grid, &ZqGrid::colWidthChanged, this, [this](int, double width) {
        if (m_filling) return;
        m_filling = true;
        for (int c = 1; c <= m_grid->maxCols(); ++c)
            m_grid->setColWidth(c, width);
        m_filling = false;
    });
    const auto wire = [this](QPushButton* b, void (frmRs_Dept::*handler)()) {
        connect(b, &QPushButton::clicked, this,
                [this, handler] { guarded([this, handler] { (this->*handler)(); }); });
    };
    wire(m_cmdAdd, &frmRs_Dept::cmdAdd_Click);
    wire(m_cmdChg, &frmRs_Dept::cmdChg_Click);
    wire(m_cmdDel, &frmRs_Dept::cmdDel_Click);
    wire(m_cmdDetail, &frmRs_Dept::cmdDetail_Click);
    wire(m_cmdPrint, &frmRs_Dept::cmdPrint_Click);
    wire(m_cmdListOption, &frmRs_Dept::CmdlistOption_Click);
    wire(m_cmdQuit, &frmRs_Dept::cmdQuit_Click);
    wire(m_cmdSave, &frmRs_Dept::cmdSave_Click);
    wire(m_cmdCancel, &frmRs_Dept::cmdCancel_Click);
    wire(m_cmdColor, &frmRs_Dept::cmdColor_Click);
    wire(m_cmdPosOk, &frmRs_Dept::cmdPosOk_Click);
    wire(m_cmdPosCancel, &frmRs_Dept::cmdPosCancel_Click);
    connect(m_check1, &QCheckBox::clicked, this, &frmRs_Dept::Check1_Click);
}

QFrame* frmRs_Dept::buildEditPanel() {
    auto* panel = new QFrame(this);
    panel->setObjectName(QStringLiteral("Picture1"));
    panel->setFrameShape(QFrame::StyledPanel);
    auto* grid = new QGridLayout(panel);
    m_lblMode = label(panel, "lblMode", QString());
    // Styled from the start, so that the panel is laid out for the banner before it first shows.
    paintBanner(m_lblMode, QString(), QColor(46, 125, 50));
    m_lblCode = label(panel, "lblCode", QStringLiteral("部门编码"));
    m_lblName = label(panel, "lblName", QStringLiteral("部门名称"));
    m_lblNumber = label(panel, "lblNumber", QStringLiteral("限定人数"));
    m_lblRsType = label(panel, "lblRsType", QStringLiteral("职员类别"));
    m_lblGzType = label(panel, "lblGzType", QStringLiteral("工资级别"));
    m_txtCode = textBox(panel, "TxtCode", 15);
    m_txtName = textBox(panel, "TxtName", 20);
    m_txtNumber = textBox(panel, "txtNumber", 6);
    m_txtNumber->setAutoFillBackground(true);
    m_check1 = new QCheckBox(QStringLiteral("岗位职务"), panel);
    m_check1->setObjectName(QStringLiteral("Check1"));
    m_cboRsType = new QComboBox(panel);
    m_cboRsType->setObjectName(QStringLiteral("cboRsType"));
    m_cboGzType = new QComboBox(panel);
    m_cboGzType->setObjectName(QStringLiteral("cboGzType"));
    m_cmdColor = NamedButton(panel, "cmdColor", QStringLiteral("颜色..."));
    m_cmdColor->hide();
    m_cmdSave = NamedButton(panel, "cmdSave", QStringLiteral("确定"));
    m_cmdCancel = NamedButton(panel, "cmdCancel", QStringLiteral("取消"));

    grid->addWidget(m_lblMode, 0, 0, 1, 5);
    grid->addWidget(m_lblCode, 1, 0);
    grid->addWidget(m_txtCode, 1, 1);
    grid->addWidget(m_lblName, 1, 2);
    grid->addWidget(m_txtName, 1, 3, 1, 2);
    grid->addWidget(m_lblNumber, 2, 0);
    auto* number = new QHBoxLayout;
    number->addWidget(m_txtNumber);
    number->addWidget(m_cmdColor);
    grid->addLayout(number, 2, 1);
    grid->addWidget(m_check1, 2, 3);
    grid->addWidget(m_lblRsType, 3, 0);
    grid->addWidget(m_cboRsType, 3, 1);
    grid->addWidget(m_lblGzType, 3, 2);
    grid->addWidget(m_cboGzType, 3, 3, 1, 2);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_cmdSave);
    buttons->addWidget(m_cmdCancel);
    grid->addLayout(buttons, 4, 0, 1, 5);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);

    attachKeyFilter(m_txtCode, 15);
    attachKeyFilter(m_txtName, 20);
    // The quota box shares the name's limit; its own length of six still holds.
    attachKeyFilter(m_txtNumber, 20, true);
    connect(m_txtCode, &QLineEdit::returnPressed, m_txtName, qOverload<>(&QWidget::setFocus));
    SendTabOnEnter(m_txtName);
    SendTabOnEnter(m_txtNumber);
    setNumberColor(defaultColor());
    panel->hide();
    return panel;
}

QWidget* frmRs_Dept::buildPages() {
    auto* panel = new QWidget(this);
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* opts = new QHBoxLayout;
    m_optDetail = new QButtonGroup(this);
    const QStringList captions = {QStringLiteral("岗位职责"), QStringLiteral("备注")};
    for (int i = 0; i < 2; ++i) {
        auto* opt = new QRadioButton(captions.at(i), panel);
        opt->setObjectName(QStringLiteral("optDetail(%1)").arg(i));
        opt->setEnabled(false);
        m_optDetail->addButton(opt, i);
        opts->addWidget(opt);
    }
    m_optDetail->button(0)->setChecked(true);
    m_lblPages = label(panel, "lblPages", QString());
    paintBanner(m_lblPages, QString(), QColor(191, 120, 0));
    m_lblPages->hide();
    opts->addSpacing(12);
    opts->addWidget(m_lblPages);
    opts->addStretch();
    m_pages = new QStackedWidget(panel);
    m_text1 = new QPlainTextEdit(panel);
    m_text1->setObjectName(QStringLiteral("Text1"));
    m_text2 = new QPlainTextEdit(panel);
    m_text2->setObjectName(QStringLiteral("Text2"));
    m_pages->addWidget(m_text1);
    m_pages->addWidget(m_text2);
    m_cmdPosOk = NamedButton(panel, "cmdPosOk", QStringLiteral("确定"));
    m_cmdPosCancel = NamedButton(panel, "cmdPosCancel", QStringLiteral("取消"));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_cmdPosOk);
    buttons->addWidget(m_cmdPosCancel);
    layout->addLayout(opts);
    layout->addWidget(m_pages, 1);
    layout->addLayout(buttons);

    connect(m_optDetail, &QButtonGroup::idClicked, this, [this] { showDetailPage(); });
    connect(m_text1, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_filling) m_tag1 = true;
    });
    connect(m_text2, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_filling) m_tag2 = true;
    });
    return panel;
}

} // namespace zq
