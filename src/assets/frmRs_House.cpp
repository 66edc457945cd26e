#include "frmRs_House.h"

#include "assets/HouseData.h"
#include "printing/Print.h"
#include "services/ui/BriefDialog.h"
#include "services/ui/DeptTree.h"
#include "services/ui/Grid.h"
#include "services/ui/GridColumns.h"
#include "services/ui/GridExport.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/NamedWidgets.h"
#include "services/ui/SaveOrTell.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Rights.h"
#include "shell/SqlText.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSplitter>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>

namespace zq {

frmRs_House::frmRs_House(QWidget* parent)
    : CodeTreeScreen(parent, "frmRs_House", QStringLiteral("员工住宿管理"),
                     Features{.lockTreeWhileEditing = true, .nameChecksFirst = true}) {
    m_word = QStringLiteral("住宿房间");
    m_cmdDetail->setText(QStringLiteral("备注说明"));
    m_cmdPrint->setText(QStringLiteral("打印(&P)"));
    m_cmdQuit->setText(QStringLiteral("退出>>"));
    m_cmdPosCancel->setText(QStringLiteral("取消>>"));
    m_chkTotalMan->setText(QStringLiteral("统计人数"));
    m_cmdListOption = NamedButton(this, QStringLiteral("CmdlistOption"), QStringLiteral("栏目选项"));
    m_cmdListOption->hide();
    m_topRow->insertWidget(m_topRow->indexOf(m_cmdPrint), m_cmdListOption);

    // The entry panel: a room or a class, for men or for women, with its limit.
    for (QAbstractButton* b : m_optType->buttons())
        b->hide();
    m_check1 = new QCheckBox(QStringLiteral("房间?"), m_picture1);
    m_check1->setObjectName(QStringLiteral("Check1"));
    auto* sexes = new QButtonGroup(this);
    auto* kindRow = new QHBoxLayout;
    kindRow->addWidget(m_check1);
    for (int i = 0; i < 2; ++i) {
        m_optMale[i] = new QRadioButton(i == 0 ? QStringLiteral("男生") : QStringLiteral("女生"), m_picture1);
        m_optMale[i]->setObjectName(ArrayName("optMale", i));
        sexes->addButton(m_optMale[i], i);
        kindRow->addWidget(m_optMale[i]);
    }
    m_optMale[0]->setChecked(true);
    auto* lblNumber = new QLabel(QStringLiteral("限人数"), m_picture1);
    lblNumber->setObjectName(QStringLiteral("lblNumber"));
    m_txtNumber = new QLineEdit(m_picture1);
    m_txtNumber->setObjectName(QStringLiteral("txtNumber"));
    // The name's limit lets up to 20 digits through the key filter; the box itself holds 6.
    attachKeyFilter(m_txtNumber, 20, true);
    m_txtNumber->setMaxLength(6);
    SendTabOnEnter(m_txtNumber);
    kindRow->addWidget(lblNumber);
    kindRow->addWidget(m_txtNumber);
    kindRow->addStretch();
    m_entryGrid->addLayout(kindRow, 2, 0, 1, 4);
    connect(m_check1, &QCheckBox::toggled, this, [this] { kindChanged(); });

    // The right page: the notes, or in the look-up state the residents' list.
    m_lblList = new QLabel(m_fraRight);
    m_lblList->setObjectName(QStringLiteral("lblList"));
    m_rightBox->insertWidget(1, m_lblList);
    m_grid = new ZqGrid(m_fraRight);
    m_grid->setObjectName(QStringLiteral("Grid1"));
    EnableGridExport(m_grid, [this] { return m_optDetail->button(1)->text(); });
    m_grid->setReadOnly(true);
    m_grid->setRowSelection(true);
    m_grid->hide();
    m_rightBox->insertWidget(2, m_grid, 1);
    connect(m_cmdListOption, &QPushButton::clicked, this,
            [this] { guarded([this] { CmdlistOption_Click(); }); });

    m_lblStatus = new QLabel(this);
    m_lblStatus->setObjectName(QStringLiteral("lblStatus"));
    m_lblStatus->setWordWrap(true);
    m_lblStatus->hide();
    if (auto* box = qobject_cast<QVBoxLayout*>(layout())) box->addWidget(m_lblStatus);
}

QString frmRs_House::status() const {
    return m_lblStatus->text();
}

void frmRs_House::load() {
    m_table = QStringLiteral("trs_house");
    const bool look = m_screenState == 2;
    setWindowTitle(look ? QStringLiteral("住宿查询统计") : QStringLiteral("房间号设置"));
    m_lblTitle->setText(QStringLiteral("住宿房间列表"));
    m_check1->setChecked(true);
    QAbstractButton* opt = m_optDetail->button(1);
    opt->setText(look ? QStringLiteral("职员住宿清单") : QStringLiteral("房间备注"));
    if (m_screenState != 1)
        for (QPushButton* b : {m_cmdAdd, m_cmdChg, m_cmdDel, m_cmdDetail})
            b->hide();
    m_cmdListOption->setVisible(look);
    m_split->setVisible(!look);
    m_cmdTextPrint->setVisible(!look);
    m_grid->setVisible(look);
    if (look) m_fields = SetGridColumns(QStringLiteral("tRs_House"), m_grid, 0, 1);
    opt->setChecked(true);
    RefreshTree();
}

void frmRs_House::buildTree() {
    // After a save the tree comes back with its codes, whatever the box says, until it is clicked.
    const bool hide = m_chkNoListCode->isChecked() && !m_codesAfterSave;
    m_filling = true;
    FillDeptTree(m_tree, m_table, QString(), hide ? 0 : -1, 1, m_chkTotalMan->isChecked() ? 1 : 0, 1, true);
    if (m_screenState == 0) showRoomPlaces();
    // Rebuilt after every change, the tree opens its classes only: its rooms never gain children.
    ExpandAllBranches(m_tree);
    m_filling = false;
}

void frmRs_House::showRoomPlaces() {
    m_places = RoomPlaces();
    m_tree->setColumnCount(3);
    m_tree->setHeaderLabels({QStringLiteral("房间"), QStringLiteral("类别"), QStringLiteral("空位")});
    m_tree->setHeaderHidden(false);
    for (QTreeWidgetItemIterator it(m_tree); *it; ++it) {
        const auto place = m_places.constFind(NodeKey(*it).mid(1));
        if (place == m_places.constEnd()) continue;
        (*it)->setText(1, RoomKindWord(place->kind));
        (*it)->setText(2, RoomFreeText(*place));
        if (place->kind != 0 && place->limit > 0 && place->free() <= 0) (*it)->setForeground(2, Qt::darkRed);
    }
    for (int c = 1; c < 3; ++c)
        m_tree->header()->setSectionResizeMode(c, QHeaderView::ResizeToContents);
    m_lblStatus->show();
}

void frmRs_House::showPickStatus(const QString& code) {
    const auto place = m_places.constFind(code.trimmed());
    if (place == m_places.constEnd()) {
        m_lblStatus->clear();
        return;
    }
    bool warned = false;
    m_lblStatus->setText(
        RoomPickStatus(*place, property("PersonSex").toString(), property("PersonRoom").toString(), &warned));
    m_lblStatus->setStyleSheet(warned ? QStringLiteral("color: #b00000") : QString());
}

QIcon frmRs_House::entryIcon() const {
    return TreeImageIcon(ImagePost);
}

void frmRs_House::chkNoListCode_Click() {
    m_codesAfterSave = false;
    RefreshTree();
}

void frmRs_House::afterSave() {
    m_codesAfterSave = true;
    RefreshTree();
}

void frmRs_House::publishCurrent() {
    G().CurRoomCode = currentCode();
    G().CurRoomName = currentName();
}

void frmRs_House::rootChosen() {
    if (m_screenState == 0) m_lblStatus->clear();
    if (m_screenState != 2) return;
    m_lblList->setText(QStringLiteral("==全部房间=="));
    fillResidents(QString());
}

void frmRs_House::nodeChosen(QTreeWidgetItem* node) {
    if (m_screenState != 2) {
        CodeTreeScreen::nodeChosen(node);
        m_lblList->setText(QLatin1Char('(') + currentName() + QLatin1Char(')'));
        if (m_screenState == 0) showPickStatus(currentCode());
        return;
    }
    QString code, name;
    nodeCodeAndName(node, code, name);
    setCurrent(code, name);
    m_lblList->setText(QLatin1Char('(') + name + QLatin1Char(')'));
    fillResidents(code);
}

void frmRs_House::fillResidents(const QString& code) {
    Hourglass wait;
    m_grid->loadRows(ReadResidents(m_fields, code));
}

void frmRs_House::nodeDoubleClicked() {
    // The picker closes on a double click, the node's room being the pick.
    if (m_screenState == 0) {
        if (m_tree->currentItem() && m_tree->currentItem()->parent()) accept();
        return;
    }
    if (m_screenState == 1) CodeTreeScreen::nodeDoubleClicked();
}

void frmRs_House::showRecord(const RowSnapshot& row) {
    CodeTreeScreen::showRecord(row);
    const int kind = row.value(QStringLiteral("fynxj")).toInt();
    m_check1->setChecked(kind >= 1);
    m_optMale[kind == 2 ? 1 : 0]->setChecked(true);
    const double limit = Val(row.value(QStringLiteral("flimited")));
    m_txtNumber->setText(row.isEmpty() ? QString() : QString::number(limit));
    kindChanged();
}

void frmRs_House::clearPage() {
    CodeTreeScreen::clearPage();
    m_txtNumber->clear();
    m_check1->setChecked(true);
    m_optMale[0]->setChecked(true);
}

bool frmRs_House::isClass() const {
    return !m_check1->isChecked();
}

void frmRs_House::kindChanged() {
    const bool room = m_check1->isChecked();
    m_lblCode->setText(room ? QStringLiteral("房间号") : QStringLiteral("分类编码"));
    m_lblName->setText(room ? QStringLiteral("房间名") : QStringLiteral("分类名称"));
}

QVector<FieldValue> frmRs_House::entryValues() const {
    const QColor c = m_txtNumber->palette().color(QPalette::Base);
    return {{QStringLiteral("fLimited"), Val(m_txtNumber->text())},
            {QStringLiteral("fColor"), c.red() | (c.green() << 8) | (c.blue() << 16)},
            {QStringLiteral("fYnxj"), RoomKind(m_check1->isChecked(), m_optMale[0]->isChecked())}};
}

void frmRs_House::cmdDel_Click() {
    const QString code = currentCode();
    const QString name = currentName();
    if (code.isEmpty()) return;
    // Rooms below a class and persons in a room keep what they have: nothing stops the delete.
    if (ShowMsg(QStringLiteral("是否删除 ") + m_word + QStringLiteral(" ( ") + name + QStringLiteral(" ) ?"),
                vbYesNo, windowTitle()) != vbYes)
        return;
    if (!SaveOrTell(this, [&] { DeleteCodeRow(m_table, code); })) return;
    m_filling = true;
    delete FindNode(m_tree, QLatin1Char('B') + code);
    m_tree->setCurrentItem(nullptr);
    m_filling = false;
    WriteLogRecord(QStringLiteral("删除") + m_word + QLatin1Char(':') + name + QLatin1Char('-') + code);
    setCurrent({}, {});
    clearPage();
}

void frmRs_House::cmdPrint_Click() {
    if (m_screenState != 2) {
        CodeTreeScreen::cmdPrint_Click();
        return;
    }
    G().showmode = 1;
    PrintGrid({QStringLiteral("房间"), m_lblList->text()}, m_grid, m_optDetail->button(1)->text(), QString());
}

void frmRs_House::CmdlistOption_Click() {
    if (ShowBriefDialog(QStringLiteral("tRs_House"), QString(), 5).isEmpty()) return;
    m_fields = SetGridColumns(QStringLiteral("tRs_House"), m_grid, 0, 1);
    QTreeWidgetItem* node = m_tree->currentItem();
    if (!node) return;
    if (node->parent())
        fillResidents(currentCode());
    else
        fillResidents(QString());
}

} // namespace zq
