#include "frmRs_Person.h"

#include "PersonBrowserData.h"
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
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>
#include <utility>

namespace zq {

namespace {

const QString kTitle = QStringLiteral("人事管理");
const QString kNoPerson = QStringLiteral("请先选择员工。");
const QString kNoEntry = QStringLiteral("对不起!你无权进入...");

// A node's text without the head count behind its tab.
QString nodeName(const QTreeWidgetItem* node) {
    return SplitTabText(node->text(0), 1);
}

} // namespace

const QStringList& frmRs_Person::recordCaptions() {
    static const QStringList c = {QStringLiteral("基本资料"), QStringLiteral("家庭情况"),
                                  QStringLiteral("工作简历"), QStringLiteral("受训情况"),
                                  QStringLiteral("主要业绩"), QStringLiteral("历年评语"),
                                  QStringLiteral("本地亲属"), QStringLiteral("其它资料")};
    return c;
}

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

void frmRs_Person::guarded(const std::function<void()>& f) {
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
    if (!m_presetCaption.isEmpty()) {
        m_lblPreset->setText(QStringLiteral("列表: %1 (条件查找后取消)").arg(m_presetCaption));
        m_lblPreset->show();
    }
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

void frmRs_Person::OptSelect_DblClick(int index) {
    QAbstractButton* opt = m_optSelect->button(index);
    if (!opt || !opt->isEnabled()) return;
    opt->setChecked(true);
    // Asked without a word: the button itself tells a refusal.
    QString model = BrowserModelKey(m_rsState);
    QString caption;
    QString password;
    const int serialNo = FindModel(model, caption, password);
    if (serialNo == -1 || (serialNo > 0 && PowerAllows(serialNo + 2)))
        cmdChg_Click();
    else
        cmdOpen_Click();
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
    if (!ImportPersons(this, CheckModel(BrowserModelKey(m_rsState), 2) != 0)) return;
    RefreshPersonList();
    refreshCounts(); // persons added, or moved to other departments
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
    m_lblPreset->hide();
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
    if (event->type() == QEvent::MouseButtonDblClick) {
        if (const int choice = m_optSelect->id(qobject_cast<QAbstractButton*>(watched)); choice >= 0) {
            guarded([this, choice] { OptSelect_DblClick(choice); });
            return true;
        }
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
