#include "frmRs_Dept.h"

#include "DeptData.h"
#include "services/ui/NamedWidgets.h"
#include "services/ui/GridExport.h"

#include "printing/Print.h"
#include "services/FieldDictionary.h"
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
#include "shell/SqlText.h"
#include "shell/ui/Commands.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QColorDialog>
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
#include <utility>

namespace zq {

namespace {

const QString kAllDepts = QStringLiteral("==所有部门==");
const QString kDeptTable = QStringLiteral("tRs_Bm");
// Grid columns open at this width (characters) and follow a dragged one.
constexpr double kColumnWidth = 20;

frmRs_Dept::ColorPicker& colorPicker() {
    static frmRs_Dept::ColorPicker picker;
    return picker;
}

// Colours are kept as the long of the old form runtime: red in the low byte, blue in the high.
qint32 colorLong(const QColor& c) {
    return c.red() | (c.green() << 8) | (c.blue() << 16);
}

QColor colorOfLong(qint32 v) {
    return QColor(v & 0xff, (v >> 8) & 0xff, (v >> 16) & 0xff);
}

} // namespace

void frmRs_Dept::paintBanner(QLabel* banner, const QString& text, const QColor& color) {
    banner->setText(text);
    banner->setStyleSheet(QStringLiteral("QLabel { background: %1; color: white; padding: 4px 8px; "
                                         "font-weight: bold; border-radius: 3px; }")
                              .arg(color.name()));
}

void frmRs_Dept::setColorPicker(ColorPicker picker) {
    colorPicker() = std::move(picker);
}

frmRs_Dept::frmRs_Dept(QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("frmRs_Dept"));
    setWindowTitle(QStringLiteral("部门与组织架构"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    buildControls();
    setMinimumSize(820, 540);
    resize(1080, 660);
    setState(State::Browse);
}

void frmRs_Dept::failed(const DbError& e) {
    m_filling = false;
    ShowMsg(e.message(), vbExclamation, windowTitle());
}

QColor frmRs_Dept::defaultColor() {
    return QColor(Qt::white);
}

void frmRs_Dept::showEvent(QShowEvent* event) {
    if (!m_loaded) guarded([this] { load(); });
    QDialog::showEvent(event);
}

bool frmRs_Dept::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate && m_loaded) OpenControlConn();
    return QDialog::event(event);
}

void frmRs_Dept::load() {
    m_loaded = true;
    OpenControlConn();
    // 1.
    CenterForm(this);
    // 6 (the table first: the tree below reads it).
    if (m_table.isEmpty()) m_table = QStringLiteral("trs_bm");
    m_model = DeptModelKey();
    const bool departments = m_table == QStringLiteral("trs_bm");
    m_cmdColor->setVisible(!departments);
    if (!departments) m_lblNumber->setText(QStringLiteral("颜色"));
    m_chkTotalMan->setEnabled(departments);
    m_chkTotalMan->setVisible(departments);
    if (!departments) m_chkTotalMan->setChecked(false);
    // 2.
    m_fields = SetGridColumns(kDeptTable, m_grid, 0, 1);
    for (int c = 1; c <= m_grid->maxCols(); ++c)
        m_grid->setColWidth(c, kColumnWidth);
    // 3.
    fillDeptCombo();
    // 4.
    quint8 withCode = 0;
    for (const auto& [combo, field] : {std::pair{m_cboRsType, QStringLiteral("fygxz")},
                                       std::pair{m_cboGzType, QStringLiteral("fGzName")}}) {
        combo->clear();
        combo->addItem(QString());
        FillBriefCombo(combo, GetFieldBriefType(QStringLiteral("tRsBasic"), field), withCode);
    }
    // 5.
    m_cboDept->setCurrentIndex(0);
    RefreshTree();
}

void frmRs_Dept::fillDeptCombo() {
    m_filling = true;
    FillCodeCombo(kDeptTable, m_cboDept, G().DeptScope, 0, 0);
    m_cboDept->insertItem(0, kAllDepts);
    m_cboDept->setCurrentIndex(-1);
    m_filling = false;
}

void frmRs_Dept::RefreshTree() {
    const QString prefix = CodeFromName(kDeptTable, m_cboDept->currentText());
    m_filling = true;
    FillDeptTree(m_tree, m_table, prefix, m_chkNoListCode->isChecked() ? 0 : -1, 1,
                 m_chkTotalMan->isChecked() ? 1 : 0, -1, true);
    ExpandAllNodes(m_tree);
    // The row in hand stays selected across a refill.
    const QString code = G().CurPersonCode;
    if (QTreeWidgetItem* node = code.isEmpty() ? nullptr : FindNode(m_tree, QLatin1Char('B') + code))
        m_tree->setCurrentItem(node);
    m_filling = false;
    const int over = CountOverQuota(m_tree);
    m_lblOverQuota->setText(QStringLiteral("超编：%1 个部门或岗位").arg(over));
    m_lblOverQuota->setVisible(over > 0);
}

void frmRs_Dept::Tree1_NodeClick(QTreeWidgetItem* node) {
    if (!node) return;
    if (!node->parent()) {
        // The company: the row chosen before stays in hand.
        m_nodeHit = 0;
        return;
    }
    if (m_state == State::Describe && !leaveChangedDescriptions(node)) return;
    Globals& g = G();
    for (QAbstractButton* opt : m_optDetail->buttons())
        opt->setEnabled(true);
    m_optDetail->button(0)->setText(NodeImage(node) == ImageDept ? QStringLiteral("部门职能")
                                                                 : QStringLiteral("岗位描述"));
    // The key holds the code; the name stands after the code's tab, or first when codes are hidden.
    // Reading the text alone would take a head count for the name when codes are hidden.
    const QString text = node->text(0);
    const QString code = NodeKey(node).mid(1);
    const bool codeShown = text.startsWith(code + QLatin1Char('\t'));
    g.CurPersonCode = code;
    g.CurPersonName = text.section(QLatin1Char('\t'), codeShown ? 1 : 0, codeShown ? 1 : 0);
    m_nodeHit = 1;
    loadDescriptions(code);
}

void frmRs_Dept::loadDescriptions(const QString& code) {
    QString detail1;
    QString detail2;
    GetDetailPair(m_table, code, detail1, detail2);
    m_filling = true;
    m_text1->setPlainText(detail1);
    m_text2->setPlainText(detail2);
    m_filling = false;
    m_tag1 = m_tag2 = false;
    m_loadedDetail1 = detail1;
    m_loadedDetail2 = detail2;
}

bool frmRs_Dept::descriptionsChanged() const {
    return m_tag1 || m_tag2;
}

bool frmRs_Dept::leaveChangedDescriptions(QTreeWidgetItem* node) {
    // Moving to another row while its pages are being edited would replace the typed text: the
    // user decides first, as on leaving the editing.
    if (!descriptionsChanged()) return true;
    const QString previous = G().CurPersonCode;
    const int answer = ShowMsg(m_cmdDetail->text() + QStringLiteral("内容已经改变，是否存盘？"),
                               vbYesNoCancel + vbQuestion, windowTitle());
    if (answer == vbYes) {
        cmdPosOk_Click();
        return !descriptionsChanged();
    }
    if (answer == vbNo) return true;
    // Cancel: back to the row being edited, its text kept.
    if (QTreeWidgetItem* back = FindNode(m_tree, QLatin1Char('B') + previous); back && back != node) {
        m_filling = true;
        m_tree->setCurrentItem(back);
        m_filling = false;
    }
    return false;
}

void frmRs_Dept::Tree1_DblClick(QTreeWidgetItem* node) {
    if (!node || !node->parent() || !m_cmdChg->isEnabled()) return;
    cmdChg_Click();
}

void frmRs_Dept::chkList_Click() {
    const bool showList = m_chkList->isChecked() || m_chkBmList->isChecked();
    m_cmdListOption->setVisible(showList);
    m_chkBmList->setVisible(showList);
    m_grid->setVisible(showList);
    for (QAbstractButton* opt : m_optDetail->buttons())
        opt->setVisible(!showList);
    m_cmdDetail->setEnabled(!showList);
    m_right->setCurrentIndex(showList ? 1 : 0);
    m_cmdPrint->setText(showList ? QStringLiteral("列表打印") : QStringLiteral("打印(&P)"));
    if (showList) fillList();
}

void frmRs_Dept::fillList() {
    const QString code = CodeFromName(kDeptTable, m_cboDept->currentText());
    const QString sql = DeptListSql(m_fields, code, m_chkBmList->isChecked(), m_chkList->isChecked());
    m_grid->setRedraw(false);
    m_grid->setMaxRows(0);
    m_grid->loadRows(ReadRows(sql));
    m_grid->setRedraw(true);
    if (m_grid->maxRows() == 0) ShowMsg(QStringLiteral("未有符合条件的记录"), vbInformation, windowTitle());
}

void frmRs_Dept::CmdlistOption_Click() {
    if (ShowBriefDialog(kDeptTable, QString(), 5).isEmpty()) return;
    m_fields = SetGridColumns(kDeptTable, m_grid, 0, 1);
    for (int c = 1; c <= m_grid->maxCols(); ++c)
        m_grid->setColWidth(c, kColumnWidth);
    fillList();
}

void frmRs_Dept::setState(State state) {
    m_state = state;
    const bool browse = state == State::Browse;
    const bool editing = state == State::Add || state == State::Change;
    const bool describing = state == State::Describe;
    const bool showList = m_chkList->isChecked() || m_chkBmList->isChecked();
    for (QWidget* w :
         {static_cast<QWidget*>(m_cmdAdd), static_cast<QWidget*>(m_cmdChg), static_cast<QWidget*>(m_cmdDel),
          static_cast<QWidget*>(m_cmdPrint), static_cast<QWidget*>(m_cmdQuit)})
        w->setEnabled(browse);
    m_cmdDetail->setEnabled(browse && !showList);
    m_chkList->setEnabled(browse);
    m_chkBmList->setEnabled(!editing);
    m_cmdListOption->setEnabled(!editing);
    m_fraLeft->setEnabled(!editing);
    m_picture1->setVisible(editing);
    m_cmdSave->setDefault(false);

    // The pages: locked and plain while browsing, open and marked while describing.
    m_cmdPosOk->setVisible(describing);
    m_cmdPosCancel->setVisible(describing);
    for (QPlainTextEdit* t : {m_text1, m_text2}) {
        t->setReadOnly(!describing);
        QPalette p = t->palette();
        p.setColor(QPalette::Base,
                   describing ? palette().color(QPalette::Base) : palette().color(QPalette::Window));
        t->setPalette(p);
    }
    m_lblPages->setVisible(describing);
    if (describing)
        paintBanner(m_lblPages, QStringLiteral("正在编辑：") + m_cmdDetail->text(), QColor(191, 120, 0));
    if (editing) {
        const QString kind = m_check1->isChecked() ? QStringLiteral("岗位") : QStringLiteral("部门");
        if (state == State::Add)
            paintBanner(m_lblMode, QStringLiteral("新增") + kind, QColor(46, 125, 50));
        else
            paintBanner(m_lblMode, QStringLiteral("修改") + kind + QStringLiteral("：") + G().CurPersonName,
                        QColor(21, 101, 192));
    }
}

void frmRs_Dept::showDetailPage() {
    m_pages->setCurrentIndex(qMax(0, m_optDetail->checkedId()));
}

void frmRs_Dept::cmdAdd_Click() {
    if (CheckModel(m_model, 1) == 0) return;
    m_mode = 1;
    Globals& g = G();
    g.CurPersonCode.clear();
    g.CurPersonName.clear();
    m_check1->setChecked(false);
    setNumberColor(defaultColor());
    Check1_Click();
    setState(State::Add);
    m_txtCode->setFocus();
}

void frmRs_Dept::cmdChg_Click() {
    if (CheckModel(m_model, 2) == 0) return;
    const Globals& g = G();
    if (g.CurPersonCode.isEmpty()) {
        ShowMsg(QStringLiteral("请选择部门或职务！"), vbExclamation, windowTitle());
        return;
    }
    m_mode = 2;
    m_loadedRow = LoadDeptSnapshot(m_table, g.CurPersonCode);
    m_txtCode->setText(g.CurPersonCode);
    m_txtName->setText(g.CurPersonName);
    qint32 limit = 0;
    quint8 level = 0;
    QString staffType;
    QString wageGrade;
    if (GetDeptPost(g.CurPersonCode, limit, level, staffType, wageGrade) != 0) {
        m_txtNumber->setText(QString::number(limit));
        m_check1->setChecked(level == 1);
        ShowComboValue(m_cboRsType, staffType);
        ShowComboValue(m_cboGzType, wageGrade);
    } else {
        // Nothing read: the lists show nothing rather than what the last row held.
        ShowComboValue(m_cboRsType, QString());
        ShowComboValue(m_cboGzType, QString());
    }
    // The row keeps its colour unless the user picks another.
    const qint32 color = DeptColor(m_table, g.CurPersonCode);
    setNumberColor(color < 0 ? defaultColor() : colorOfLong(color));
    Check1_Click();
    setState(State::Change);
    m_txtCode->setFocus();
}

void frmRs_Dept::Check1_Click() {
    const bool post = m_check1->isChecked();
    m_lblCode->setText(post ? QStringLiteral("岗位编号") : QStringLiteral("部门编码"));
    m_lblName->setText(post ? QStringLiteral("岗位名称") : QStringLiteral("部门名称"));
    for (QWidget* w : {static_cast<QWidget*>(m_cboRsType), static_cast<QWidget*>(m_cboGzType),
                       static_cast<QWidget*>(m_lblRsType), static_cast<QWidget*>(m_lblGzType)})
        w->setVisible(post);
    if (m_state == State::Add || m_state == State::Change) setState(m_state);
}

void frmRs_Dept::cmdSave_Click() {
    Globals& g = G();
    const QString code = m_txtCode->text();
    const QString name = m_txtName->text();
    switch (CheckDeptSave(m_table, m_mode, code, name, g.CurPersonCode, g.CurPersonName)) {
    case DeptSaveCheck::EmptyCode:
        ShowMsg(m_word + QStringLiteral("编码不能为空。"));
        m_txtCode->setFocus();
        return;
    case DeptSaveCheck::EmptyName:
        ShowMsg(m_word + QStringLiteral("名称不能为空。"));
        m_txtName->setFocus();
        return;
    case DeptSaveCheck::CodeExists:
        ShowMsg(QStringLiteral("编号已存在。"), vbExclamation);
        m_txtCode->setFocus();
        m_txtCode->selectAll();
        return;
    case DeptSaveCheck::NameExists:
        ShowMsg(QStringLiteral("名称已存在。"), vbExclamation);
        m_txtName->setFocus();
        m_txtName->selectAll();
        return;
    case DeptSaveCheck::Ok:
        break;
    }
    const DeptRow row{code,
                      name,
                      Val(m_txtNumber->text()),
                      numberColor(),
                      m_check1->isChecked() ? 1 : 0,
                      ComboValue(m_cboRsType),
                      ComboValue(m_cboGzType)};
    if (!SaveOrTell(this, [&] { SaveDeptRow(m_table, m_mode, g.CurPersonCode, row, m_loadedRow); })) return;

    const bool adding = m_mode == 1;
    const QString done = (adding ? name : g.CurPersonName) + QStringLiteral(": ") +
                         (row.post == 1 ? QStringLiteral("岗位") : QStringLiteral("部门")) +
                         (adding ? QStringLiteral("新增") : QStringLiteral("修改")) +
                         QStringLiteral("完毕！");
    ShowMsg(done, vbInformation, windowTitle());
    WriteLogRecord(done);
    if (adding) {
        m_txtCode->setFocus();
    } else {
        // The changed row stays in hand under its new code and name.
        g.CurPersonCode = code;
        g.CurPersonName = name;
        setState(State::Browse);
    }
    m_txtCode->clear();
    m_txtName->clear();
    m_txtNumber->clear();
    RefreshTree();
    fillDeptCombo();
}

void frmRs_Dept::cmdCancel_Click() {
    m_mode = 0;
    m_txtCode->clear();
    m_txtName->clear();
    m_txtNumber->clear();
    setState(State::Browse);
}

qint32 frmRs_Dept::numberColor() const {
    return colorLong(m_txtNumber->palette().color(QPalette::Base));
}

void frmRs_Dept::setNumberColor(const QColor& color) {
    QPalette p = m_txtNumber->palette();
    p.setColor(QPalette::Base, color);
    m_txtNumber->setPalette(p);
}

void frmRs_Dept::cmdColor_Click() {
    const QColor present = m_txtNumber->palette().color(QPalette::Base);
    const QColor chosen =
        colorPicker() ? colorPicker()(present) : QColorDialog::getColor(present, this, m_cmdColor->text());
    if (chosen.isValid()) setNumberColor(chosen);
}

void frmRs_Dept::cmdDel_Click() {
    if (CheckModel(m_model, 3) == 0) return;
    Globals& g = G();
    const QString code = g.CurPersonCode;
    const QString name = g.CurPersonName;
    if (code.isEmpty()) return;
    if (m_table == QStringLiteral("trs_bm")) {
        switch (CheckDeptDelete(m_table, code)) {
        case DeptDeleteCheck::HasLowerLevels:
            ShowMsg(QStringLiteral("该") + m_word + QStringLiteral("尚有下级,不能删除。"));
            return;
        case DeptDeleteCheck::HasStaff:
            ShowMsg(QStringLiteral("该") + m_word + QStringLiteral("尚有职员,不能删除。"));
            return;
        case DeptDeleteCheck::Ok:
            break;
        }
    }
    if (ShowMsg(QStringLiteral("是否删除 ") + m_word + QStringLiteral(" ( ") + name + QStringLiteral(" ) ?"),
                vbYesNo + vbQuestion, windowTitle()) != vbYes)
        return;
    if (!SaveOrTell(this, [&] { DeleteDeptRow(m_table, code); })) return;
    m_filling = true;
    delete FindNode(m_tree, QLatin1Char('B') + code);
    m_tree->setCurrentItem(nullptr);
    m_filling = false;
    // The pages of a row that is gone are not left on show.
    loadDescriptions(QString());
    DeptDeleteCascade(code, name);
    WriteLogRecord(QStringLiteral("删除") + m_word + QLatin1Char(':') + code + QLatin1Char('-') + name);
    g.CurPersonCode.clear();
    g.CurPersonName.clear();
}

void frmRs_Dept::cmdDetail_Click() {
    if (CheckModel(m_model, 4) == 0) return;
    // Without a row the pages belong to nothing and a save would store nowhere.
    if (G().CurPersonCode.isEmpty()) {
        ShowMsg(QStringLiteral("请选择部门或职务！"), vbExclamation, windowTitle());
        return;
    }
    setState(State::Describe);
    m_tag1 = m_tag2 = false;
    showDetailPage();
    QPlainTextEdit* page = m_optDetail->checkedId() == 1 ? m_text2 : m_text1;
    page->setFocus();
}

void frmRs_Dept::cmdPosOk_Click() {
    if (!descriptionsChanged()) return;
    const QString code = G().CurPersonCode;
    const QString detail1 = m_text1->toPlainText();
    const QString detail2 = m_text2->toPlainText();
    if (!SaveOrTell(this, [&] {
            SaveDescriptions(m_table, code, {detail1, m_tag1, m_loadedDetail1},
                             {detail2, m_tag2, m_loadedDetail2});
        }))
        return;
    ShowMsg(m_cmdDetail->text() + QStringLiteral("存盘完毕!"), vbInformation, windowTitle());
    m_tag1 = m_tag2 = false;
    m_loadedDetail1 = detail1;
    m_loadedDetail2 = detail2;
}

void frmRs_Dept::cmdPosCancel_Click() {
    if (descriptionsChanged()) {
        const int answer = ShowMsg(m_cmdDetail->text() + QStringLiteral("内容已经改变，是否存盘？"),
                                   vbYesNoCancel + vbQuestion, windowTitle());
        if (answer == vbCancel) {
            // A second press leaves without asking.
            m_tag1 = m_tag2 = false;
            return;
        }
        if (answer == vbYes) {
            cmdPosOk_Click();
            return;
        }
    }
    loadDescriptions(G().CurPersonCode);
    setState(State::Browse);
}

void frmRs_Dept::cmdPrint_Click() {
    if (m_chkList->isChecked() || m_chkBmList->isChecked()) {
        G().showmode = 1;
        PrintGrid({QStringLiteral("部门"), m_cboDept->currentText()}, m_grid, QStringLiteral("部门职务列表"),
                  QString());
        return;
    }
    PrintTreeView(m_tree, windowTitle());
}

void frmRs_Dept::cmdQuit_Click() {
    accept();
}

void frmRs_Dept::reject() {
    // Esc belongs to the edit panel or the description editing while either is open.
    switch (m_state) {
    case State::Add:
    case State::Change:
        cmdCancel_Click();
        return;
    case State::Describe:
        guarded([this] { cmdPosCancel_Click(); });
        return;
    case State::Browse:
        QDialog::reject();
        return;
    }
}

} // namespace zq
