#include "frmWd_Filer.h"

#include "ArchiveData.h"
#include "ArchiveFind.h"
#include "services/Lookups.h"
#include "services/ui/ComboLookups.h"
#include "services/ui/DeptTree.h"
#include "services/ui/InputAidsUi.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/SqlText.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace zq {

namespace {
const QString kAllClasses = QStringLiteral("==所有文档类型==");

bool isFile(const QString& path) {
    return !path.isEmpty() && QFileInfo(path).isFile();
}
} // namespace

frmWd_Filer::frmWd_Filer(QWidget* parent)
    : CodeTreeScreen(parent, "frmWd_Filer", QStringLiteral("文档管理"),
                     Features{.files = true, .filer = true}) {
    m_word = QStringLiteral("文档类");
    m_newCaption = QStringLiteral("档案新建:");
    m_changeCaption = QStringLiteral("档案修改:");
    m_classWord = QStringLiteral("文档类");
    m_entryWord = QStringLiteral("文档");
    m_lowerLevels = QStringLiteral(" 尚有下级档案,不能删除。");
    m_optType->button(0)->setText(QStringLiteral("档案分类"));
    m_optType->button(1)->setText(QStringLiteral("档案文件"));
    m_optType->button(1)->setChecked(true);

    m_lblDept = new QLabel(QStringLiteral("所属部门"), m_picture1);
    m_lblDept->setObjectName(QStringLiteral("lblDept"));
    m_cboDept = new QComboBox(m_picture1);
    m_cboDept->setObjectName(QStringLiteral("cboDept"));
    m_chkImage = new QCheckBox(QStringLiteral("图形文件?"), m_picture1);
    m_chkImage->setObjectName(QStringLiteral("chkImage"));
    m_lblPath = new QLabel(QStringLiteral("文件路径"), m_picture1);
    m_lblPath->setObjectName(QStringLiteral("LblPath"));
    m_txtPath = new QLineEdit(m_picture1);
    m_txtPath->setObjectName(QStringLiteral("txtPath"));
    SendTabOnEnter(m_txtPath);
    m_txtPath->installEventFilter(this);
    m_cmdPath = new QToolButton(m_picture1);
    m_cmdPath->setObjectName(QStringLiteral("cmdPath"));
    m_cmdPath->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    m_cmdPath->setToolTip(QStringLiteral("查找文件"));
    m_entryGrid->addWidget(m_lblDept, 2, 0);
    m_entryGrid->addWidget(m_cboDept, 2, 1);
    m_entryGrid->addWidget(m_chkImage, 2, 3);
    auto* pathRow = new QHBoxLayout;
    pathRow->addWidget(m_txtPath, 1);
    pathRow->addWidget(m_cmdPath);
    m_entryGrid->addWidget(m_lblPath, 3, 0);
    m_entryGrid->addLayout(pathRow, 3, 1, 1, 3);

    m_find = new ArchiveFind(
        m_fraLeft, [this] { return treePrefix(); },
        [this](const QString& code) { selectNode(QLatin1Char('B') + code); });
    static_cast<QVBoxLayout*>(m_fraLeft->layout())->addWidget(m_find);

    connect(m_cboFiler, &QComboBox::activated, this, [this] { guarded([this] { cboFiler_Click(); }); });
    connect(m_chkImage, &QCheckBox::clicked, this, [this] { chkImage_Click(); });
    connect(m_cmdPath, &QToolButton::clicked, this, [this] { guarded([this] { cmdPath_Click(); }); });
}

void frmWd_Filer::load() {
    m_table = ArchiveTable().toLower();
    m_lblTitle->setText(QStringLiteral("档案一览表"));
    m_lblCode->setText(QStringLiteral("档案编码"));
    m_lblName->setText(QStringLiteral("档案名称"));
    // Every department is listed: the archive is the company's.
    FillCodeCombo(QStringLiteral("tRs_Bm"), m_cboDept, G().DeptScope, -1, 0);
    m_cboDept->addItem(QString());
    fillFiler();
    if (m_screenState >= 1 && m_screenState <= m_cboFiler->count() - 1) {
        m_cboFiler->setCurrentIndex(m_screenState);
        setWindowTitle(m_cboFiler->currentText());
        m_cboFiler->setEnabled(false);
    } else {
        m_cboFiler->setCurrentIndex(0);
    }
    RefreshTree();
}

void frmWd_Filer::fillFiler() {
    FillCodeCombo(QStringLiteral("tWd_File1"), m_cboFiler, QString(), 0, 0);
    m_cboFiler->insertItem(0, kAllClasses);
}

QString frmWd_Filer::treePrefix() const {
    const QString name = m_cboFiler->currentText();
    return name.isEmpty() || name == kAllClasses ? QString()
                                                 : CodeFromName(QStringLiteral("tWd_file1"), name);
}

void frmWd_Filer::cboFiler_Click() {
    RefreshTree();
    setCurrent({}, {});
    clearPage();
}

void frmWd_Filer::showRecord(const RowSnapshot& row) {
    CodeTreeScreen::showRecord(row);
    const QString path = row.value(QStringLiteral("ffilepath"));
    setFilePath(path);
    m_chkImage->setChecked(row.value(QStringLiteral("fbz")).toInt() == 1);
    m_cboDept->setProperty("Tag",
                           NameFromCode(QStringLiteral("tRs_Bm"), row.value(QStringLiteral("fbmcode"))));
    m_cmdDocOpen->setEnabled(!path.isEmpty());
    clearPicture();
    if (m_chkImage->isChecked())
        showPictureOrTell(path);
    else
        optDetail_Click(1);
    m_txtPath->setText(path);
    const QString dept = m_cboDept->property("Tag").toString();
    m_cboDept->setCurrentIndex(ComboIndexOf(m_cboDept, dept));
    setDocCopy();
}

void frmWd_Filer::clearPage() {
    CodeTreeScreen::clearPage();
    setFilePath({});
    m_txtPath->clear();
    clearPicture();
    m_cboDept->setCurrentIndex(0);
}

void frmWd_Filer::kindChanged() {
    const bool document = !isClass();
    m_lblCode->setText(document ? QStringLiteral("档案编码") : QStringLiteral("分类编码"));
    m_lblName->setText(document ? QStringLiteral("档案名称") : QStringLiteral("分类名称"));
    for (QWidget* w :
         std::initializer_list<QWidget*>{m_lblPath, m_txtPath, m_cmdPath, m_cmdDocOpen, m_lblDept, m_cboDept,
                                         m_chkImage, m_lblFileMemo, m_txtPath2, m_optDetail->button(0)})
        w->setVisible(document);
    if (!document) {
        m_chkImage->setChecked(false);
        m_txtPath->clear();
        setFilePath({});
        optDetail_Click(1);
    } else {
        m_optDetail->button(0)->setEnabled(!m_cmdPosOk->isVisible());
    }
    setDocCopy();
}

void frmWd_Filer::setDocCopy() {
    m_cmdDocCopy->setVisible(!isClass() && !m_txtPath2->text().isEmpty() && m_cmdDocOpen->isEnabled() &&
                             !m_text1->isReadOnly());
}

void frmWd_Filer::chkImage_Click() {
    const bool picture = m_chkImage->isChecked();
    m_cmdDocOpen->setEnabled(!picture);
    if (!picture) clearPicture();
    optDetail_Click(picture ? 0 : 1);
    for (int i = 0; i < 2; ++i)
        m_optDetail->button(i)->setEnabled(picture);
    setDocCopy();
}

void frmWd_Filer::cmdPath_Click() {
    m_txtPath->setFocus();
    const bool picture = m_chkImage->isChecked();
    const QString path =
        picture ? PickFile(1, 8, m_txtPath->text(), QStringLiteral("选择图形文件"),
                           QStringLiteral(
                               "位图文件 (.bmp) |*.bmp|图标文件 (.ico) |*.ico|光标文件 (.cur) |*.cur|元文件 "
                               "(.wmf) |*.wmf|增强元文件 (.emf)|*.emf|GIF文件 (.gif)|*.gif|JPEG 文件 "
                               "(.jpg) |*.jpg|所有文件 (*.*) |*.*"))
                : PickFile(1, 8, m_txtPath->text(), QStringLiteral("选择文档文件"),
                           QStringLiteral(
                               "Word文挡文件 (.Doc) |*.doc|文本文件 (.Txt) |*.txt|所有文件 (*.*) |*.*"));
    if (!path.isEmpty()) m_txtPath->setText(path);
    txtPath_LostFocus();
}

void frmWd_Filer::txtPath_LostFocus() {
    const QString path = m_txtPath->text();
    if (path.isEmpty()) {
        clearPicture();
        return;
    }
    if (!isFile(path)) {
        ShowMsg(QStringLiteral("该文件不存在!"), vbExclamation, windowTitle());
        m_txtPath->clear();
        clearPicture();
        return;
    }
    if (!m_chkImage->isChecked()) {
        clearPicture();
        return;
    }
    if (!showPicture(path)) ShowMsg(path + QStringLiteral(" 不是图形文件"), vbExclamation, windowTitle());
}

bool frmWd_Filer::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_txtPath && event->type() == QEvent::FocusOut) txtPath_LostFocus();
    return CodeTreeScreen::eventFilter(watched, event);
}

QVector<FieldValue> frmWd_Filer::entryValues() const {
    return {{QStringLiteral("fYnxj"), isClass() ? 0 : 1},
            {QStringLiteral("fBz"), m_chkImage->isChecked() ? 1 : 0},
            {QStringLiteral("fFilePath"), m_txtPath->text()},
            {QStringLiteral("fBmcode"), CodeFromName(QStringLiteral("tRs_Bm"), m_cboDept->currentText())}};
}

void frmWd_Filer::alongsideSave(const QString& code) {
    // The row in hand is still the one read: a changed code leaves the old one behind in the index.
    if (mode() == Mode::Change && currentCode() != code) UnindexDocument(ArchiveTable(), currentCode());
    // A new entry has no contents yet; a changed one keeps those stored.
    IndexArchiveEntry(code, m_txtName->text(), !isClass(), mode() == Mode::Change ? m_savedText : QString(),
                      m_txtPath->text(), m_chkImage->isChecked());
}

void frmWd_Filer::alongsideDelete(const QString& code) {
    UnindexDocument(ArchiveTable(), code);
}

void frmWd_Filer::alongsideContents(const QString& code) {
    IndexArchiveEntry(code, currentName(), !isClass(), m_text1->toPlainText(), m_txtPath2->text(),
                      m_chkImage->isChecked());
}

void frmWd_Filer::afterSave() {
    // The class list is filled again and left without a choice.
    fillFiler();
    m_cboFiler->setCurrentIndex(-1);
}

void frmWd_Filer::afterDelete(bool wasClass) {
    if (!wasClass) return;
    for (int i = 1; i < m_cboFiler->count(); ++i)
        if (m_cboFiler->itemText(i) == currentName()) {
            m_cboFiler->removeItem(i);
            break;
        }
}

QString frmWd_Filer::emptyMessage(bool code) const {
    return (code ? m_lblCode : m_lblName)->text() + QStringLiteral("不能为空。");
}

QString frmWd_Filer::existsMessage(bool code) const {
    return (code ? m_lblCode : m_lblName)->text() + QStringLiteral("已存在。");
}

QString frmWd_Filer::storedMessage() const {
    return QLatin1Char('(') + currentCode() + QStringLiteral(") ") + currentName() +
           QStringLiteral(": 内容存盘完毕!");
}

} // namespace zq
