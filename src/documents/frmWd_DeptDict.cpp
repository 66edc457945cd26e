#include "frmWd_DeptDict.h"

#include "ArchiveData.h"
#include "ArchiveFind.h"
#include "services/Lookups.h"
#include "services/ui/ComboLookups.h"
#include "services/ui/DeptTree.h"
#include "services/ui/InputAidsUi.h"
#include "shell/DbError.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace zq {

namespace {
const QString kAllClasses = QStringLiteral("==所有文档类型==");
}

frmWd_DeptDict::frmWd_DeptDict(QWidget* parent)
    : CodeTreeScreen(parent, "frmWd_DeptDict", QStringLiteral("文档查询"),
                     Features{.editing = false, .files = true, .filer = true}) {
    m_word = QStringLiteral("文档类");
    m_cmdPrint->setText(QStringLiteral("打印(&P)"));
    m_chkNoListCode->setText(QStringLiteral("不显示<编号>"));
    m_chkTotalMan->setText(QStringLiteral("统计挡案数目"));
    // The class choice stands at the top, ahead of the buttons.
    auto* label1 = new QLabel(QStringLiteral("档案分类："), this);
    label1->setObjectName(QStringLiteral("Label1"));
    m_topRow->insertWidget(0, label1);
    m_topRow->insertWidget(1, m_cboFiler);
    m_cboFiler->setMinimumContentsLength(12);
    m_find = new ArchiveFind(
        m_fraLeft, [this] { return classCode(); },
        [this](const QString& code) { selectNode(code + QLatin1Char('R')); });
    static_cast<QVBoxLayout*>(m_fraLeft->layout())->addWidget(m_find);
    connect(m_cboFiler, &QComboBox::activated, this, [this] { guarded([this] { RefreshTree(); }); });
}

void frmWd_DeptDict::load() {
    m_table = ArchiveTable().toLower();
    m_lblTitle->setText(QStringLiteral("各部门档案一览表"));
    // Typing is allowed but nothing here stores it.
    m_text1->setReadOnly(false);
    FillCodeCombo(QStringLiteral("tWd_File1"), m_cboFiler, QString(), 0, 0);
    m_cboFiler->insertItem(0, kAllClasses);
    if (m_screenState >= 1 && m_screenState <= m_cboFiler->count() - 1) {
        m_cboFiler->setCurrentIndex(m_screenState);
        m_cboFiler->setEnabled(false);
    } else {
        m_cboFiler->setCurrentIndex(0);
    }
    RefreshTree();
}

QString frmWd_DeptDict::classCode() const {
    const QString name = m_cboFiler->currentText();
    return name.isEmpty() || name == kAllClasses ? QString()
                                                 : CodeFromName(QStringLiteral("tWd_File1"), name);
}

void frmWd_DeptDict::buildTree() {
    // Counts are never shown here, whatever the box says.
    m_filling = true;
    FillDeptTree(m_tree, QStringLiteral("tRs_Bm"), QString(), m_chkNoListCode->isChecked() ? 0 : -1, 1, 0, 0);
    ExpandAllNodes(m_tree);
    hangDocuments();
    if (m_tree->topLevelItemCount() > 0) m_tree->topLevelItem(0)->setExpanded(true);
    m_filling = false;
}

void frmWd_DeptDict::hangDocuments() {
    Recordset rs(conn(), DeptDocumentsSql(classCode()));
    for (; !rs.eof(); rs.moveNext()) {
        const QString dept = rs.text(QStringLiteral("fBmCode"));
        QTreeWidgetItem* parent = FindNode(m_tree, QLatin1Char('B') + TrimBlanks(dept));
        try {
            if (!parent) throw DbError(QStringLiteral("no department"));
            // Documents stand ahead of the sub-departments.
            int at = 0;
            while (at < parent->childCount() && !NodeKey(parent->child(at)).startsWith(QLatin1Char('B')))
                ++at;
            AddNode(m_tree, parent, rs.text(QStringLiteral("fCode")) + QLatin1Char('R'),
                    rs.text(QStringLiteral("fName")), ImagePost, at);
        } catch (const DbError&) {
            ShowMsg(QLatin1Char('[') + dept + QStringLiteral("]:部门编号已不存在，[") +
                        rs.text(QStringLiteral("fName")) + QStringLiteral("]:该部门职员无法列示，") +
                        QLatin1Char('\r') +
                        QStringLiteral("请在【部门管理】中新增该编号的部门,或者修改该职员所属部门。"),
                    vbExclamation, QStringLiteral("人事管理"));
        }
    }
}

void frmWd_DeptDict::rootChosen() {
    setCurrent({}, {});
    optDetail_Click(1);
    setFilePath({});
    setContents({});
    clearPicture();
    m_cmdDocOpen->setEnabled(false);
}

void frmWd_DeptDict::nodeChosen(QTreeWidgetItem* node) {
    const QString key = NodeKey(node);
    if (key.startsWith(QLatin1Char('B'))) {
        rootChosen();
        return;
    }
    const QString code = key.chopped(1);
    setCurrent(code, node->text(0));
    const RowSnapshot row = ReadCodeRow(m_table, code);
    if (row.isEmpty()) return;
    setContents(row.value(QStringLiteral("fdetail1")));
    const QString path = row.value(QStringLiteral("ffilepath"));
    setFilePath(path);
    const bool picture = Val(row.value(QStringLiteral("fbz"))) == 1;
    m_txtPath2->setProperty("Tag", picture ? 1 : 0);
    clearPicture();
    if (picture)
        showPictureOrTell(path);
    else
        optDetail_Click(1);
    m_cmdDocOpen->setEnabled(!picture && !path.isEmpty());
}

} // namespace zq
