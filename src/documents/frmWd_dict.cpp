#include "frmWd_dict.h"

#include "services/ui/DeptTree.h"
#include "services/ui/InputAidsUi.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QPushButton>
#include <QTreeWidget>

namespace zq {

frmWd_dict::frmWd_dict(QWidget* parent)
    : CodeTreeScreen(parent, "frmWd_dict", QStringLiteral("企业辞典"),
                     Features{.lockTreeWhileEditing = true, .totals = false}) {
    m_word = QStringLiteral("辞典");
    m_newCaption = QStringLiteral("辞典新增:");
    m_changeCaption = QStringLiteral("辞典修改:");
    m_classWord = QStringLiteral("辞典类");
    m_entryWord = QStringLiteral("辞典");
    m_lowerLevels = QStringLiteral(" 尚有下级辞典,不能删除。");
    m_chkNoListCode->setText(QStringLiteral("不显示<编号>"));
    m_optType->button(0)->setText(QStringLiteral("辞典类"));
    m_optType->button(1)->setText(QStringLiteral("辞典"));
    // The quota box stays from the coded tables' panel; nothing reads what is typed there.
    auto* lblNumber = new QLabel(QStringLiteral("限定人数:"), m_picture1);
    lblNumber->setObjectName(QStringLiteral("lblNumber"));
    m_txtNumber = new QLineEdit(m_picture1);
    m_txtNumber->setObjectName(QStringLiteral("txtNumber"));
    attachKeyFilter(m_txtNumber, 6, true);
    m_entryGrid->addWidget(lblNumber, 2, 0);
    m_entryGrid->addWidget(m_txtNumber, 2, 1);
}

void frmWd_dict::load() {
    m_table = QStringLiteral("twd_file0");
    m_lblTitle->setText(QStringLiteral("企业辞典一览表"));
    m_optType->button(0)->setChecked(true);
    m_optDetail->button(1)->setChecked(true);
    RefreshTree();
}

void frmWd_dict::buildTree() {
    // After a save the tree comes back with its codes, whatever the box says, until it is clicked.
    const bool hide = m_chkNoListCode->isChecked() && !m_codesAfterSave;
    m_filling = true;
    FillDeptTree(m_tree, m_table, QString(), hide ? 0 : -1, 1, 0, 1);
    ExpandAllNodes(m_tree);
    m_filling = false;
}

void frmWd_dict::showRecord(const RowSnapshot& row) {
    CodeTreeScreen::showRecord(row);
    m_optDetail->button(1)->setText(QStringLiteral("内容 (") + row.value(QStringLiteral("fname")) +
                                    QLatin1Char(')'));
}

void frmWd_dict::kindChanged() {
    const bool entry = !isClass();
    m_lblCode->setText(entry ? QStringLiteral("辞典编号:") : QStringLiteral("分类编号:"));
    m_lblName->setText(entry ? QStringLiteral("辞典名称:") : QStringLiteral("分类名称:"));
}

void frmWd_dict::chkNoListCode_Click() {
    m_codesAfterSave = false;
    RefreshTree();
}

void frmWd_dict::afterSave() {
    m_codesAfterSave = true;
    RefreshTree();
}

QVector<FieldValue> frmWd_dict::entryValues() const {
    const QColor c = m_txtNumber->palette().color(QPalette::Base);
    return {{QStringLiteral("fLimited"), 0},
            {QStringLiteral("fColor"), c.red() | (c.green() << 8) | (c.blue() << 16)},
            {QStringLiteral("fYnxj"), isClass() ? 0 : 1}};
}

} // namespace zq
