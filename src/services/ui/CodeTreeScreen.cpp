#include "CodeTreeScreen.h"

#include "printing/Print.h"
#include "resources/Texts.h"
#include "services/Documents.h"
#include "services/InputAids.h"
#include "services/ui/DeptTree.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/NamedWidgets.h"
#include "services/ui/SaveOrTell.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Rights.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QResizeEvent>
#include <QSignalBlocker>
#include <QSplitter>
#include <QStyle>
#include <QToolButton>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>

namespace zq {

namespace {

// Of the picture and the text, neither may shrink below 270 twips.
constexpr int kLeastPane = 18;

} // namespace

CodeTreeScreen::CodeTreeScreen(QWidget* parent, const char* objectName, const QString& caption,
                               const Features& features)
    : ScreenDialog(parent)
    , m_features(features) {
    setObjectName(QLatin1String(objectName));
    setWindowTitle(caption);
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    buildControls();
    // Below 9720 by 6900 twips the panels would overlap.
    setMinimumSize(648, 460);
    resize(960, 620);
    setMode(Mode::Browse);
}

void CodeTreeScreen::buildControls() {
    m_cmdAdd = NamedButton(this, "cmdAdd", QStringLiteral("新增(&A)"));
    m_cmdChg = NamedButton(this, "cmdChg", QStringLiteral("修改(&C)"));
    m_cmdDel = NamedButton(this, "cmdDel", QStringLiteral("删除(&D)"));
    m_cmdDetail = NamedButton(this, "cmdDetail", QStringLiteral("填写内容"));
    m_cmdPrint = NamedButton(this, "cmdPrint", QStringLiteral("列表打印"));
    m_cmdQuit = NamedButton(this, "cmdQuit", QStringLiteral("返回>>"));
    auto* fraTop = named(new QFrame(this), QStringLiteral("fraTop"));
    m_topRow = new QHBoxLayout(fraTop);
    m_topRow->setContentsMargins(0, 0, 0, 0);
    m_topRow->setSpacing(4);
    for (QPushButton* b : {m_cmdAdd, m_cmdChg, m_cmdDel, m_cmdDetail, m_cmdPrint})
        m_topRow->addWidget(b);
    m_topRow->addStretch();
    m_topRow->addWidget(m_cmdQuit);
    if (!m_features.editing)
        for (QPushButton* b : {m_cmdAdd, m_cmdChg, m_cmdDel, m_cmdDetail})
            b->hide();

    // Left: the tree.
    m_fraLeft = named(new QFrame(this), QStringLiteral("fraLeft"));
    auto* left = new QVBoxLayout(m_fraLeft);
    left->setContentsMargins(0, 0, 0, 0);
    m_lblTitle = named(new QLabel(m_fraLeft), QStringLiteral("lblTitle"));
    QFont bold = m_lblTitle->font();
    bold.setBold(true);
    m_lblTitle->setFont(bold);
    left->addWidget(m_lblTitle);
    if (m_features.filer) {
        m_cboFiler = named(new QComboBox(m_fraLeft), QStringLiteral("cboFiler"));
        left->addWidget(m_cboFiler);
    }
    m_chkNoListCode =
        named(new QCheckBox(QStringLiteral("不显示<编码>"), m_fraLeft), QStringLiteral("chkNoListCode"));
    m_chkTotalMan =
        named(new QCheckBox(QStringLiteral("统计图档数目"), m_fraLeft), QStringLiteral("chkTotalMan"));
    m_chkTotalMan->setVisible(m_features.totals);
    auto* checks = new QHBoxLayout;
    checks->addWidget(m_chkNoListCode);
    checks->addWidget(m_chkTotalMan);
    checks->addStretch();
    left->addLayout(checks);
    m_tree = named(new QTreeWidget(m_fraLeft), QStringLiteral("Tree1"));
    m_tree->setHeaderHidden(true);
    m_tree->setUniformRowHeights(true);
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    left->addWidget(m_tree, 1);

    // The entry panel.
    m_picture1 = named(new QFrame(this), QStringLiteral("Picture1"));
    m_picture1->setFrameShape(QFrame::StyledPanel);
    m_entryGrid = new QGridLayout(m_picture1);
    m_lblAction = named(new QLabel(m_picture1), QStringLiteral("lblAction"));
    m_lblAction->setFont(bold);
    m_optType = new QButtonGroup(this);
    auto* typeRow = new QHBoxLayout;
    typeRow->addWidget(m_lblAction);
    for (int i = 0; i < 2; ++i) {
        auto* opt = named(new QRadioButton(m_picture1), QStringLiteral("OptType(%1)").arg(i));
        m_optType->addButton(opt, i);
        typeRow->addWidget(opt);
    }
    typeRow->addStretch();
    m_lblCode = named(new QLabel(m_picture1), QStringLiteral("lblCode"));
    m_lblName = named(new QLabel(m_picture1), QStringLiteral("lblName"));
    m_txtCode = named(new QLineEdit(m_picture1), QStringLiteral("TxtCode"));
    m_txtName = named(new QLineEdit(m_picture1), QStringLiteral("TxtName"));
    attachKeyFilter(m_txtCode, 15);
    attachKeyFilter(m_txtName, 20);
    SendTabOnEnter(m_txtCode);
    SendTabOnEnter(m_txtName);
    m_cmdSave = NamedButton(m_picture1, "cmdSave", QStringLiteral("确定"));
    m_cmdCancel = NamedButton(m_picture1, "cmdCancel", QStringLiteral("取消>>"));
    m_entryGrid->addLayout(typeRow, 0, 0, 1, 4);
    m_entryGrid->addWidget(m_lblCode, 1, 0);
    m_entryGrid->addWidget(m_txtCode, 1, 1);
    m_entryGrid->addWidget(m_lblName, 1, 2);
    m_entryGrid->addWidget(m_txtName, 1, 3);
    auto* saveRow = new QHBoxLayout;
    saveRow->addStretch();
    saveRow->addWidget(m_cmdSave);
    saveRow->addWidget(m_cmdCancel);
    m_entryGrid->addLayout(saveRow, 9, 0, 1, 4);
    m_entryGrid->setColumnStretch(1, 1);
    m_entryGrid->setColumnStretch(3, 1);

    // Right: the contents, with the picture below them when there is one.
    m_fraRight = named(new QFrame(this), QStringLiteral("fraRight"));
    auto* right = new QVBoxLayout(m_fraRight);
    m_rightBox = right;
    right->setContentsMargins(0, 0, 0, 0);
    m_optDetail = new QButtonGroup(this);
    auto* viewRow = new QHBoxLayout;
    if (m_features.files) {
        for (int i = 0; i < 2; ++i) {
            auto* opt = named(
                new QRadioButton(i == 0 ? QStringLiteral("内容+图片") : QStringLiteral("内容"), m_fraRight),
                QStringLiteral("optDetail(%1)").arg(i));
            m_optDetail->addButton(opt, i);
            viewRow->addWidget(opt);
        }
    } else {
        auto* opt = named(new QRadioButton(QStringLiteral("内容"), m_fraRight), QStringLiteral("optDetail"));
        m_optDetail->addButton(opt, 1);
        viewRow->addWidget(opt);
    }
    m_optDetail->button(1)->setChecked(true);
    viewRow->addStretch();
    m_cmdTextPrint = NamedButton(m_fraRight, "cmdTextPrint", QStringLiteral("打印内容"));
    viewRow->addWidget(m_cmdTextPrint);
    right->addLayout(viewRow);
    m_split = named(new QSplitter(Qt::Vertical, m_fraRight), QStringLiteral("fraSplit"));
    m_split->setChildrenCollapsible(false);
    m_split->setHandleWidth(5);
    m_text1 = named(new QPlainTextEdit(m_split), QStringLiteral("Text1"));
    m_text1->setMinimumHeight(kLeastPane);
    m_split->addWidget(m_text1);
    if (m_features.files) {
        m_imgPath = named(new QLabel(m_split), QStringLiteral("imgPath"));
        m_imgPath->setAlignment(Qt::AlignCenter);
        m_imgPath->setMinimumHeight(kLeastPane);
        m_imgPath->setFrameShape(QFrame::StyledPanel);
        m_split->addWidget(m_imgPath);
        m_split->handle(1)->setObjectName(QStringLiteral("Image2"));
        m_imgPath->hide();
    }
    right->addWidget(m_split, 1);
    auto* fileRow = new QHBoxLayout;
    if (m_features.files) {
        m_lblFileMemo =
            named(new QLabel(QStringLiteral("文件路径"), m_fraRight), QStringLiteral("LblFileMemo"));
        m_txtPath2 = named(new QLineEdit(m_fraRight), QStringLiteral("txtPath2"));
        m_txtPath2->setReadOnly(true);
        m_cmdDocOpen =
            PictureButton(m_fraRight, "cmdDocOpen", QStyle::SP_FileIcon, QStringLiteral("打开文档"));
        m_cmdDocCopy = PictureButton(m_fraRight, "cmdDocCopy", QStyle::SP_FileDialogContentsView,
                                     QStringLiteral("复制文档内容"));
        m_cmdDocOpen->setEnabled(false);
        m_cmdDocCopy->hide();
        fileRow->addWidget(m_lblFileMemo);
        fileRow->addWidget(m_txtPath2, 1);
        fileRow->addWidget(m_cmdDocOpen);
        fileRow->addWidget(m_cmdDocCopy);
    } else {
        fileRow->addStretch();
    }
    m_cmdPosOk = NamedButton(m_fraRight, "cmdPosOk", QStringLiteral("确定"));
    m_cmdPosCancel = NamedButton(m_fraRight, "cmdPosCancel", QStringLiteral("取消"));
    fileRow->addWidget(m_cmdPosOk);
    fileRow->addWidget(m_cmdPosCancel);
    right->addLayout(fileRow);

    auto* rightSide = new QWidget(this);
    auto* rightLayout = new QVBoxLayout(rightSide);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    rightLayout->addWidget(m_picture1);
    rightLayout->addWidget(m_fraRight, 1);
    auto* split = new QSplitter(Qt::Horizontal, this);
    split->addWidget(m_fraLeft);
    split->addWidget(rightSide);
    split->setStretchFactor(1, 1);
    split->setCollapsible(1, false);
    split->setSizes({340, 620});
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(fraTop);
    layout->addWidget(split, 1);

    ConnectNodeClick(
        m_tree, this, [this] { return m_filling; },
        [this](QTreeWidgetItem* node) { guarded([this, node] { Tree1_NodeClick(node); }); });
    connect(m_tree, &QTreeWidget::itemDoubleClicked, this,
            [this] { guarded([this] { nodeDoubleClicked(); }); });
    connect(m_chkNoListCode, &QCheckBox::clicked, this,
            [this] { guarded([this] { chkNoListCode_Click(); }); });
    connect(m_chkTotalMan, &QCheckBox::clicked, this, [this] { guarded([this] { RefreshTree(); }); });
    connect(m_text1, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_filling) m_tag = true;
    });
    connect(m_optType, &QButtonGroup::idClicked, this, [this] { kindChanged(); });
    connect(m_optDetail, &QButtonGroup::idClicked, this, [this](int id) { optDetail_Click(id); });
    const auto wire = [this](QAbstractButton* b, void (CodeTreeScreen::*handler)()) {
        if (b)
            connect(b, &QAbstractButton::clicked, this,
                    [this, handler] { guarded([this, handler] { (this->*handler)(); }); });
    };
    wire(m_cmdAdd, &CodeTreeScreen::cmdAdd_Click);
    wire(m_cmdChg, &CodeTreeScreen::cmdChg_Click);
    wire(m_cmdDel, &CodeTreeScreen::cmdDel_Click);
    wire(m_cmdDetail, &CodeTreeScreen::cmdDetail_Click);
    wire(m_cmdPrint, &CodeTreeScreen::cmdPrint_Click);
    wire(m_cmdSave, &CodeTreeScreen::cmdSave_Click);
    wire(m_cmdCancel, &CodeTreeScreen::cmdCancel_Click);
    wire(m_cmdPosOk, &CodeTreeScreen::cmdPosOk_Click);
    wire(m_cmdPosCancel, &CodeTreeScreen::cmdPosCancel_Click);
    wire(m_cmdDocOpen, &CodeTreeScreen::cmdDocOpen_Click);
    wire(m_cmdDocCopy, &CodeTreeScreen::cmdDocCopy_Click);
    wire(m_cmdTextPrint, &CodeTreeScreen::cmdTextPrint_Click);
    connect(m_cmdQuit, &QPushButton::clicked, this, [this] { QDialog::reject(); });
}

void CodeTreeScreen::reject() {
    // Esc is the cancel button of the state on show.
    if (m_mode == Mode::New || m_mode == Mode::Change) {
        cmdCancel_Click();
    } else if (m_mode == Mode::Contents) {
        guarded([this] { cmdPosCancel_Click(); });
    } else {
        QDialog::reject();
    }
}

void CodeTreeScreen::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    fitPicture();
}

void CodeTreeScreen::setMode(Mode mode) {
    m_mode = mode;
    const bool browse = mode == Mode::Browse;
    const bool entry = mode == Mode::New || mode == Mode::Change;
    for (QPushButton* b : {m_cmdAdd, m_cmdChg, m_cmdDel, m_cmdDetail, m_cmdPrint, m_cmdQuit})
        b->setEnabled(browse);
    m_picture1->setVisible(entry);
    m_fraLeft->setEnabled(!(entry && m_features.lockTreeWhileEditing));
    m_cmdPosOk->setVisible(mode == Mode::Contents);
    m_cmdPosCancel->setVisible(mode == Mode::Contents);
    m_text1->setReadOnly(mode != Mode::Contents);
    if (m_cmdDocCopy)
        m_cmdDocCopy->setVisible(mode == Mode::Contents && !m_txtPath2->text().isEmpty() &&
                                 m_cmdDocOpen->isEnabled());
    if (m_features.files) m_optDetail->button(0)->setEnabled(mode != Mode::Contents && !isClass());
    m_cmdTextPrint->setEnabled(browse);
}

void CodeTreeScreen::setCurrent(const QString& code, const QString& name) {
    m_curCode = code;
    m_curName = name;
    publishCurrent();
}

void CodeTreeScreen::selectNode(const QString& key) {
    QTreeWidgetItem* node = FindNode(m_tree, key);
    if (!node) return;
    m_filling = true;
    m_tree->setCurrentItem(node);
    m_filling = false;
    m_tree->scrollToItem(node);
    Tree1_NodeClick(node);
}

void CodeTreeScreen::publishCurrent() {
    G().CurPersonCode = m_curCode;
    G().CurPersonName = m_curName;
}

void CodeTreeScreen::nodeDoubleClicked() {
    if (m_features.editing && m_cmdChg->isEnabled()) cmdChg_Click();
}

void CodeTreeScreen::nodeCodeAndName(const QTreeWidgetItem* node, QString& code, QString& name) {
    // The key holds the code; the name stands after the code's tab, or first when codes are hidden.
    const QString text = node->text(0);
    code = NodeKey(node).mid(1);
    const bool codeShown = text.startsWith(code + QLatin1Char('\t'));
    name = text.section(QLatin1Char('\t'), codeShown ? 1 : 0, codeShown ? 1 : 0);
}

void CodeTreeScreen::buildTree() {
    m_filling = true;
    FillDeptTree(m_tree, m_table, treePrefix(), m_chkNoListCode->isChecked() ? 0 : -1, 1,
                 m_chkTotalMan->isChecked() && m_features.totals ? 1 : 0, 1);
    ExpandAllNodes(m_tree);
    m_filling = false;
}

QIcon CodeTreeScreen::entryIcon() const {
    return style()->standardIcon(QStyle::SP_FileIcon);
}

void CodeTreeScreen::RefreshTree() {
    buildTree();
    // The tree service draws entries as posts; here they are papers.
    // Quietly, or the view would measure the whole column again for every icon.
    const QIcon icon = entryIcon();
    {
        const QSignalBlocker quiet(m_tree->model());
        for (QTreeWidgetItemIterator it(m_tree); *it; ++it)
            if (NodeImage(*it) == ImagePost) (*it)->setIcon(0, icon);
    }
    m_tree->viewport()->update();
}

bool CodeTreeScreen::askToStore() {
    // A screen that only reads never stores what was typed into its contents.
    if (!m_tag || !m_features.editing) return true;
    if (ShowMsg(m_cmdDetail->text() + QStringLiteral("内容已经改变，是否存盘？"), vbYesNo + vbQuestion,
                windowTitle()) == vbYes)
        cmdPosOk_Click();
    return true;
}

void CodeTreeScreen::Tree1_NodeClick(QTreeWidgetItem* node) {
    if (!node) return;
    if (!node->parent()) {
        rootChosen();
        return;
    }
    askToStore();
    nodeChosen(node);
}

void CodeTreeScreen::nodeChosen(QTreeWidgetItem* node) {
    QString code;
    QString name;
    nodeCodeAndName(node, code, name);
    setCurrent(code, name);
    readRecord(code);
}

void CodeTreeScreen::readRecord(const QString& code) {
    m_loadedRow = ReadCodeRow(m_table, code);
    showRecord(m_loadedRow);
    m_tag = false;
    setCurrent(m_txtCode->text(), m_txtName->text());
}

void CodeTreeScreen::showRecord(const RowSnapshot& row) {
    m_txtCode->setText(row.value(QStringLiteral("fcode")));
    m_txtName->setText(row.value(QStringLiteral("fname")));
    m_optType->button(row.value(QStringLiteral("fynxj")).toInt() == 1 ? 1 : 0)->setChecked(true);
    kindChanged();
    setContents(row.value(QStringLiteral("fdetail1")));
}

void CodeTreeScreen::setContents(const QString& stored) {
    m_filling = true;
    m_text1->setPlainText(ShownText(stored));
    m_filling = false;
    m_savedText = stored;
    m_tag = false;
}

void CodeTreeScreen::clearPage() {
    m_filling = true;
    m_text1->clear();
    m_filling = false;
    m_txtCode->clear();
    m_txtName->clear();
    m_optType->button(1)->setChecked(true);
    kindChanged();
    m_savedText.clear();
    m_tag = false;
}

bool CodeTreeScreen::isClass() const {
    return m_optType->checkedId() == 0;
}

void CodeTreeScreen::cmdAdd_Click() {
    m_editMode = 1;
    m_lblAction->setText(m_newCaption.isEmpty() ? m_word + QStringLiteral("新建:") : m_newCaption);
    clearPage();
    m_loadedRow.clear();
    setMode(Mode::New);
    m_txtCode->setFocus();
}

void CodeTreeScreen::cmdChg_Click() {
    if (m_curCode.isEmpty()) return;
    m_editMode = 2;
    m_lblAction->setText(m_changeCaption.isEmpty() ? m_word + QStringLiteral("修改:") : m_changeCaption);
    readRecord(m_curCode);
    setMode(Mode::Change);
    m_txtCode->setFocus();
}

void CodeTreeScreen::cmdCancel_Click() {
    m_editMode = 0;
    m_txtCode->clear();
    m_txtName->clear();
    setMode(Mode::Browse);
    m_tag = false;
}

QString CodeTreeScreen::emptyMessage(bool code) const {
    return m_word + (code ? QStringLiteral("编码不能为空。") : QStringLiteral("名称不能为空。"));
}

QString CodeTreeScreen::existsMessage(bool code) const {
    return code ? QStringLiteral("编号已存在。") : QStringLiteral("名称已存在。");
}

QString CodeTreeScreen::storedMessage() const {
    return m_cmdDetail->text() + QStringLiteral("存盘完毕!");
}

void CodeTreeScreen::cmdSave_Click() {
    const QString code = m_txtCode->text();
    const QString name = m_txtName->text();
    const auto refuse = [this](const QString& message, int style, QLineEdit* box) {
        ShowMsg(message, style, windowTitle());
        box->setFocus();
        box->selectAll();
    };
    switch (
        CheckCodeSave(m_table, m_editMode, code, name, m_curCode, m_curName, m_features.nameChecksFirst)) {
    case CodeSaveCheck::EmptyCode:
        return refuse(emptyMessage(true), vbOKOnly, m_txtCode);
    case CodeSaveCheck::EmptyName:
        return refuse(emptyMessage(false), vbOKOnly, m_txtName);
    case CodeSaveCheck::CodeExists:
        return refuse(existsMessage(true), vbExclamation, m_txtCode);
    case CodeSaveCheck::NameExists:
        return refuse(existsMessage(false), vbExclamation, m_txtName);
    case CodeSaveCheck::Ok:
        break;
    }
    QVector<FieldValue> values{{QStringLiteral("fcode"), code}, {QStringLiteral("fName"), name}};
    values += entryValues();
    const bool adding = m_editMode == 1;
    if (!SaveOrTell(this, [&] {
            SaveCodeRow(m_table, m_editMode, m_curCode, values, adding ? RowSnapshot() : m_loadedRow,
                        [&] { alongsideSave(code); });
        }))
        return;
    if (adding) {
        WriteLogRecord(QStringLiteral("增加") + m_word + QLatin1Char(':') + name);
        m_txtCode->setFocus();
    } else {
        WriteLogRecord(QStringLiteral("修改") + m_word + QLatin1Char(':') + m_curName);
        // The changed row stays in hand under its new code and name.
        setCurrent(code, name);
        m_editMode = 0;
        setMode(Mode::Browse);
    }
    m_txtCode->clear();
    m_txtName->clear();
    RefreshTree();
    afterSave();
}

void CodeTreeScreen::cmdDel_Click() {
    if (m_curCode.isEmpty()) return;
    const bool wasClass = isClass();
    const QString desc =
        (wasClass ? m_classWord : m_entryWord) + QStringLiteral(" ( ") + m_curName + QStringLiteral(" )");
    if (wasClass && HasLowerCodes(m_table, m_curCode)) {
        ShowMsg(desc + m_lowerLevels, vbInformation, windowTitle());
        return;
    }
    if (ShowMsg(QStringLiteral("是否删除: ") + desc + QStringLiteral(" ?"), vbYesNo + vbQuestion,
                windowTitle()) != vbYes)
        return;
    const QString code = m_curCode;
    if (!SaveOrTell(this, [&] { DeleteCodeRow(m_table, code, [&] { alongsideDelete(code); }); })) return;
    m_filling = true;
    delete FindNode(m_tree, QLatin1Char('B') + code);
    m_tree->setCurrentItem(nullptr);
    m_filling = false;
    afterDelete(wasClass);
    WriteLogRecord(QStringLiteral("删除:") + desc);
    setCurrent({}, {});
    clearPage();
}

void CodeTreeScreen::cmdDetail_Click() {
    // Without an entry the contents belong to nothing and a store would go nowhere.
    if (m_curCode.isEmpty()) {
        ShowMsg(QStringLiteral("请先选择") + m_entryWord + QStringLiteral("！"), vbExclamation,
                windowTitle());
        return;
    }
    setMode(Mode::Contents);
    m_tag = false;
    m_text1->setFocus();
}

void CodeTreeScreen::cmdPosOk_Click() {
    if (!m_tag || !m_features.editing) return;
    const QString code = m_curCode;
    const QString text = StoredText(m_text1->toPlainText());
    if (!SaveOrTell(this, [&] {
            SaveCodeDetail(m_table, code, text, m_savedText, [&] { alongsideContents(code); });
        }))
        return;
    ShowMsg(storedMessage(), vbInformation, windowTitle());
    m_savedText = text;
    m_tag = false;
}

void CodeTreeScreen::cmdPosCancel_Click() {
    if (m_tag) {
        const int answer = ShowMsg(m_cmdDetail->text() + QStringLiteral("内容已经改变，是否存盘？"),
                                   vbYesNoCancel + vbQuestion, windowTitle());
        if (answer == vbCancel) return;
        if (answer == vbYes) {
            cmdPosOk_Click();
            // A store that failed keeps the clerk's text in front of him.
            if (m_tag) return;
        } else {
            setContents(m_savedText);
        }
    }
    setMode(Mode::Browse);
    if (m_features.files && !isClass() && m_imgPath && !m_picturePath.isEmpty()) optDetail_Click(0);
}

void CodeTreeScreen::cmdPrint_Click() {
    PrintTreeView(m_tree, windowTitle());
}

void CodeTreeScreen::cmdTextPrint_Click() {
    if (m_curCode.isEmpty()) return;
    PrintText(m_curName, m_text1->toPlainText());
}

void CodeTreeScreen::cmdDocOpen_Click() {
    const QString path = m_txtPath2->text();
    if (path.isEmpty()) return;
    if (!QFileInfo(path).isFile()) {
        ShowMsg(LoadText(174) + LoadText(94) + QLatin1Char('!'), vbExclamation, windowTitle());
        return;
    }
    if (!OpenDocument(path))
        ShowMsg(path + QStringLiteral(" 无法打开：没有能打开这种文件的程序。"), vbExclamation, windowTitle());
}

void CodeTreeScreen::cmdDocCopy_Click() {
    const QString path = m_txtPath2->text();
    if (!QFileInfo(path).isFile()) return;
    Hourglass wait;
    const QString text = ReadDocumentText(path);
    if (text.isEmpty()) return;
    m_text1->setPlainText(m_text1->toPlainText() + QLatin1Char('\n') +
                          ShownText(ClipTextLines(text, m_features.copyLines)));
    m_text1->moveCursor(QTextCursor::End);
}

bool CodeTreeScreen::showPicture(const QString& path) {
    const QPixmap picture(path);
    m_picturePath = picture.isNull() ? QString() : path;
    if (picture.isNull()) {
        clearPicture();
        return false;
    }
    m_imgPath->setProperty("picture", picture);
    fitPicture();
    return true;
}

bool CodeTreeScreen::showPictureOrTell(const QString& path) {
    const bool exists = QFileInfo(path).isFile();
    if (exists && showPicture(path)) {
        if (m_optDetail->button(0)->isEnabled()) optDetail_Click(0);
        return true;
    }
    ShowMsg(path + (exists ? QStringLiteral(" 不是图形文件") : QStringLiteral(" 文件已不存在")),
            vbExclamation, windowTitle());
    clearPicture();
    optDetail_Click(1);
    return false;
}

void CodeTreeScreen::clearPicture() {
    m_picturePath.clear();
    if (!m_imgPath) return;
    m_imgPath->setProperty("picture", QVariant());
    m_imgPath->clear();
}

void CodeTreeScreen::fitPicture() {
    if (!m_imgPath) return;
    const QPixmap picture = m_imgPath->property("picture").value<QPixmap>();
    if (picture.isNull()) return;
    const QSize room = m_imgPath->contentsRect().size().boundedTo(picture.size());
    m_imgPath->setPixmap(
        room.isEmpty() ? picture : picture.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

void CodeTreeScreen::setFilePath(const QString& path) {
    if (m_txtPath2) m_txtPath2->setText(path);
}

void CodeTreeScreen::optDetail_Click(int index) {
    if (!m_imgPath) return;
    if (QAbstractButton* b = m_optDetail->button(index)) b->setChecked(true);
    const bool both = index == 0;
    if (both == m_imgPath->isVisible()) return;
    m_imgPath->setVisible(both);
    if (both) {
        const int h = m_split->height();
        m_split->setSizes({h / 2, h - h / 2});
        fitPicture();
    }
}

} // namespace zq
