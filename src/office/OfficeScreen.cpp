#include "OfficeScreen.h"

#include "services/Documents.h"
#include "services/InputAids.h"
#include "services/Lookups.h"
#include "services/ui/ComboLookups.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/SaveOrTell.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Commands.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFileInfo>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>

namespace zq {

namespace office {

QPushButton* button(QWidget* parent, const char* name, const QString& caption) {
    return named(new QPushButton(caption, parent), QLatin1String(name));
}

QLineEdit* textBox(QWidget* parent, const char* name, int maxBytes) {
    auto* box = named(new QLineEdit(parent), QLatin1String(name));
    if (maxBytes > 0) attachKeyFilter(box, maxBytes);
    return box;
}

QDateEdit* datePicker(QWidget* parent, const char* name) {
    auto* d = named(new QDateEdit(QDate::currentDate(), parent), QLatin1String(name));
    d->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    d->setCalendarPopup(true);
    return d;
}

QString weekdayName(const QDate& d) {
    static const char16_t* names[] = {u"星期一", u"星期二", u"星期三", u"星期四",
                                      u"星期五", u"星期六", u"星期日"};
    return d.isValid() ? QString::fromUtf16(names[d.dayOfWeek() - 1]) : QString();
}

QDate rowDate(const Recordset& rs) {
    return QDate::fromString(rs.text(QStringLiteral("fDate")).left(10), Qt::ISODate);
}

} // namespace office

using namespace office;

namespace {

bool fileExists(const QString& path) {
    return !path.isEmpty() && QFileInfo(path).isFile();
}

} // namespace

OfficeScreen::OfficeScreen(const Kind& kind, QWidget* parent)
    : QDialog(parent)
    , m_kind(kind) {
    setObjectName(kind.objectName);
    setWindowTitle(kind.caption);
    buildCommon();
    buildSeekPanel();
}

OfficeScreen::~OfficeScreen() = default;

void OfficeScreen::buildCommon() {
    m_lblDate = named(new QLabel(this), QStringLiteral("lblDate"));
    m_dtpDate = datePicker(this, "dtpDate");
    m_lblWeek = named(new QLabel(this), QStringLiteral("lblWeek"));
    m_txtContent = named(new QPlainTextEdit(this), QStringLiteral("txtContent"));
    m_cboDept = named(new QComboBox(this), QStringLiteral("cboDept"));
    m_cboDept->setEditable(true); // a name no longer in the list still shows
    m_cboDept->setMinimumWidth(140);
    // Sized by a typical name, not by measuring the thousands a company may have.
    m_cboDept->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_cboDept->setMinimumContentsLength(10);
    m_cmdNews[0] = PictureButton(this, ArrayName("cmdNews", 0), QStyle::SP_ArrowLeft, m_kind.stepHint0);
    m_cmdNews[1] = PictureButton(this, ArrayName("cmdNews", 1), QStyle::SP_ArrowRight, m_kind.stepHint1);
    m_cmdAdd = button(this, "cmdAdd", QStringLiteral("新增"));
    m_cmdChg = button(this, "cmdChg", QStringLiteral("修改"));
    m_cmdDel = button(this, "cmdDel", QStringLiteral("删除"));
    m_cmdSeek = button(this, "cmdSeek", QStringLiteral("查找"));
    m_cmdQuit = button(this, "cmdQuit", QStringLiteral("退出"));
    m_cmdOK = button(this, "cmdOK", QStringLiteral("确定"));
    m_cmdCancel = button(this, "cmdCancel", QStringLiteral("取消"));
    if (m_kind.documents) {
        m_txtTitle = textBox(this, "txtTitle", 40);
        m_txtPath = textBox(this, "txtPath");
        m_cmdPath = PictureButton(this, QStringLiteral("cmdPath"), QStyle::SP_DirOpenIcon,
                                  QStringLiteral("选择文档"));
        m_cmdDocOpen = PictureButton(this, QStringLiteral("cmdDocOpen"), QStyle::SP_FileIcon,
                                     QStringLiteral("打开文档"));
        m_cmdDocCopy = PictureButton(this, QStringLiteral("cmdDocCopy"), QStyle::SP_FileDialogContentsView,
                                     QStringLiteral("复制文档内容"));
        m_chkNews = named(new QCheckBox(QStringLiteral("生成[新闻公告]"), this), QStringLiteral("chkNews"));
        connect(m_cmdPath, &QToolButton::clicked, this, &OfficeScreen::cmdPath_Click);
        connect(m_cmdDocOpen, &QToolButton::clicked, this, &OfficeScreen::cmdDocOpen_Click);
        connect(m_cmdDocCopy, &QToolButton::clicked, this, &OfficeScreen::cmdDocCopy_Click);
        connect(m_chkNews, &QCheckBox::clicked, this, [this] { focusNextChild(); });
        tabOnEnter({m_txtTitle, m_txtPath, m_chkNews});
    }
    for (int i = 0; i < 2; ++i)
        connect(m_cmdNews[i], &QToolButton::clicked, this, [this, i] { cmdNews_Click(i); });
    connect(m_cmdAdd, &QPushButton::clicked, this, &OfficeScreen::cmdAdd_Click);
    connect(m_cmdChg, &QPushButton::clicked, this, &OfficeScreen::cmdChg_Click);
    connect(m_cmdDel, &QPushButton::clicked, this, &OfficeScreen::cmdDel_Click);
    connect(m_cmdSeek, &QPushButton::clicked, this, &OfficeScreen::cmdSeek_Click);
    connect(m_cmdQuit, &QPushButton::clicked, this, &OfficeScreen::cmdQuit_Click);
    connect(m_cmdOK, &QPushButton::clicked, this, &OfficeScreen::cmdOK_Click);
    connect(m_cmdCancel, &QPushButton::clicked, this, &OfficeScreen::cmdCancel_Click);
    connect(m_dtpDate, &QDateEdit::dateChanged, this, &OfficeScreen::refreshWeek);
    tabOnEnter({m_dtpDate});
}

void OfficeScreen::buildSeekPanel() {
    m_fraSeek = named(new QFrame(this), QStringLiteral("fraSeek"));
    m_fraSeek->setFrameShape(QFrame::Box);
    m_fraSeek->setAutoFillBackground(true);
    auto check = [this](const char* name, const QString& caption) {
        auto* c = named(new QCheckBox(caption, m_fraSeek), QLatin1String(name));
        connect(c, &QCheckBox::clicked, this, [this] { focusNextChild(); });
        tabOnEnter({c});
        return c;
    };
    m_chkDate2 = check("chkDate2", QStringLiteral("日期:"));
    m_dtpDate1 = datePicker(m_fraSeek, "dtpDate1");
    m_dtpDate2 = datePicker(m_fraSeek, "dtpDate2");
    std::vector<std::pair<QCheckBox*, QWidget*>> rows;
    if (m_kind.documents) {
        m_chkTitle2 = check("chkTitle2", QStringLiteral("主题:"));
        m_txtTitle2 = textBox(m_fraSeek, "txtTitle2");
        rows.emplace_back(m_chkTitle2, m_txtTitle2);
    }
    m_chkContent2 = check("chkContent2", QStringLiteral("内容:"));
    m_txtContent2 = textBox(m_fraSeek, "txtContent2");
    rows.emplace_back(m_chkContent2, m_txtContent2);
    if (!m_kind.seekFoot1.isEmpty()) {
        m_chkFootSeek1 = check("chkFootSeek1", m_kind.seekFoot1);
        m_txtFootSeek1 = textBox(m_fraSeek, "txtFootSeek1");
        m_chkFootSeek2 = check("chkFootSeek2", m_kind.seekFoot2);
        m_txtFootSeek2 = textBox(m_fraSeek, "txtFootSeek2");
        rows.emplace_back(m_chkFootSeek1, m_txtFootSeek1);
        rows.emplace_back(m_chkFootSeek2, m_txtFootSeek2);
    }
    m_chkDept = check("chkDept", QStringLiteral("部门:"));
    m_cboDept2 = named(new QComboBox(m_fraSeek), QStringLiteral("cboDept2"));
    m_cboDept2->setEditable(true); // a pattern with wildcards may be typed
    m_cboDept2->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_cboDept2->setMinimumContentsLength(10);
    rows.emplace_back(m_chkDept, m_cboDept2);
    auto* cmdSeekOk = button(m_fraSeek, "cmdSeekOk", QStringLiteral("确定"));
    m_cmdSeekCancel = button(m_fraSeek, "cmdSeekCancel", QStringLiteral("返回>>"));

    auto* grid = new QGridLayout(m_fraSeek);
    auto* dates = new QHBoxLayout;
    dates->addWidget(m_dtpDate1);
    dates->addWidget(new QLabel(QStringLiteral("--"), m_fraSeek));
    dates->addWidget(m_dtpDate2);
    grid->addWidget(m_chkDate2, 0, 0);
    grid->addLayout(dates, 0, 1);
    int r = 1;
    for (const auto& [box, field] : rows) {
        grid->addWidget(box, r, 0);
        grid->addWidget(field, r++, 1);
        // Enter in the department list is not in the tab chain.
        if (field != m_cboDept2) tabOnEnter({field});
    }
    if (m_kind.documents) {
        m_chkNews2 = check("chkNews2", QStringLiteral("已生成[新闻公告]"));
        grid->addWidget(m_chkNews2, r++, 0, 1, 2);
    }
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdSeekOk);
    buttons->addWidget(m_cmdSeekCancel);
    grid->addLayout(buttons, r, 0, 1, 2);
    m_fraSeek->setMinimumWidth(400);
    m_fraSeek->adjustSize();
    m_fraSeek->hide();

    tabOnEnter({m_dtpDate1, m_dtpDate2});
    connect(cmdSeekOk, &QPushButton::clicked, this, &OfficeScreen::cmdSeekOk_Click);
    connect(m_cmdSeekCancel, &QPushButton::clicked, this, &OfficeScreen::cmdSeekCancel_Click);
}

QBoxLayout* OfficeScreen::dateRow() {
    auto* row = new QHBoxLayout;
    row->addWidget(m_cmdNews[0]);
    row->addWidget(m_lblDate);
    row->addWidget(m_dtpDate);
    row->addWidget(m_lblWeek);
    row->addStretch();
    if (m_chkNews) row->addWidget(m_chkNews);
    row->addWidget(m_cmdNews[1]);
    return row;
}

QBoxLayout* OfficeScreen::titleRow() {
    auto* row = new QHBoxLayout;
    row->addWidget(named(new QLabel(QStringLiteral("主题:"), this), QStringLiteral("lblTitle")));
    row->addWidget(m_txtTitle, 1);
    return row;
}

QBoxLayout* OfficeScreen::deptAndFileRow() {
    auto* row = new QHBoxLayout;
    row->addWidget(named(new QLabel(QStringLiteral("所属部门:"), this), QStringLiteral("lblDept")));
    row->addWidget(m_cboDept);
    if (!m_kind.documents) {
        row->addStretch();
        return row;
    }
    row->addSpacing(12);
    row->addWidget(named(new QLabel(QStringLiteral("参考文件:"), this), QStringLiteral("lblPath")));
    row->addWidget(m_txtPath, 1);
    row->addWidget(m_cmdPath); // the open button stands on the same spot in browse
    row->addWidget(m_cmdDocOpen);
    row->addWidget(m_cmdDocCopy);
    return row;
}

QBoxLayout* OfficeScreen::buttonRow(std::initializer_list<QPushButton*> browse) {
    auto* row = new QHBoxLayout;
    for (QPushButton* b : browse)
        row->addWidget(b);
    row->addStretch();
    row->addWidget(m_cmdOK);
    row->addWidget(m_cmdCancel);
    row->addWidget(m_cmdQuit);
    return row;
}

void OfficeScreen::tabOnEnter(std::initializer_list<QWidget*> widgets) {
    for (QWidget* w : widgets)
        w->installEventFilter(this);
}

void OfficeScreen::ready() {
    resize(760, 600);
    m_cmdOK->setProperty("Tag", QString());
    SetEditMode(false);
    setCancelButton(m_cmdQuit);
}

void OfficeScreen::showEvent(QShowEvent* event) {
    if (!m_loaded) load();
    QDialog::showEvent(event);
}

void OfficeScreen::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) OpenControlConn();
    QDialog::changeEvent(event);
}

void OfficeScreen::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    CenterOnForm(m_fraSeek, this);
}

bool OfficeScreen::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            focusNextChild();
            return true;
        }
    } else if (event->type() == QEvent::FocusOut && m_txtPath && watched == m_txtPath) {
        txtPath_LostFocus();
    }
    return QDialog::eventFilter(watched, event);
}

void OfficeScreen::reject() {
    if (m_cancelButton && m_cancelButton->isVisible() && m_cancelButton->isEnabled()) m_cancelButton->click();
}

void OfficeScreen::setCancelButton(QPushButton* b) {
    m_cancelButton = b;
}

void OfficeScreen::load() {
    m_loaded = true;
    CenterForm(this);
    FillCodeCombo(QStringLiteral("tRs_Bm"), m_cboDept, G().DeptScope, -1, 0);
    m_cboDept->insertItem(0, QString());
    m_cboDept->setCurrentIndex(0);
    QStringList names;
    names.reserve(m_cboDept->count());
    for (int i = 0; i < m_cboDept->count(); ++i)
        names << m_cboDept->itemText(i);
    m_cboDept2->clear();
    m_cboDept2->addItems(names);
    beforeList();
    m_filter.clear();
    reloadList(m_filter);
    m_dtpDate2->setDate(QDate::currentDate());
    m_dtpDate1->setDate(QDate::currentDate().addDays(-30));
}

void OfficeScreen::ShowList(const QString& filter) {
    m_rs.reset();
    m_rs = std::make_unique<Recordset>(conn(), listSql(filter), Cursor::Static, listLock());
    ShowRecord();
}

bool OfficeScreen::reloadList(const QString& filter) {
    try {
        ShowList(filter);
        return true;
    } catch (const DbError& e) {
        ShowRecord();
        ShowMsg(QStringLiteral("数据库无法按此条件列出%1:\r\n").arg(m_kind.rows) + e.message(), vbExclamation,
                windowTitle());
        return false;
    }
}

bool OfficeScreen::onRow() const {
    return m_rs && !m_rs->bof() && !m_rs->eof();
}

void OfficeScreen::ShowRecord() {
    try {
        const bool row = onRow();
        if (row) {
            const Recordset& rs = *m_rs;
            const QDate date = rowDate(rs);
            m_lblDate->setText(date.toString(QStringLiteral("yyyy-MM-dd")));
            m_lblWeek->setText(weekdayName(date));
            m_txtContent->setPlainText(ShownText(rs.text(QStringLiteral("fContent"))));
            m_cboDept->setEditText(rs.text(QStringLiteral("fBmName")));
            if (m_kind.documents) {
                m_txtTitle->setText(rs.text(QStringLiteral("fTitle")));
                m_txtPath->setText(rs.text(QStringLiteral("fFilePath")));
                m_chkNews->setChecked(rs.val(QStringLiteral("fNews")) != 0);
            }
            showFields(rs);
        } else {
            ClearRecord();
        }
        m_cmdNews[0]->setEnabled(m_rs && !m_rs->bof());
        m_cmdNews[1]->setEnabled(m_rs && !m_rs->eof());
        m_cmdChg->setEnabled(row && mayChange());
        m_cmdDel->setEnabled(row && mayChange());
        showRights(row);
    } catch (const DbError&) {
        ClearRecord();
    }
}

void OfficeScreen::ClearRecord() {
    m_dtpDate->setDate(QDate::currentDate());
    m_lblDate->clear();
    m_lblWeek->clear();
    m_txtContent->clear();
    m_cboDept->setEditText(QString());
    if (m_kind.documents) {
        m_txtTitle->clear();
        m_txtPath->clear();
        m_chkNews->setChecked(false);
    }
    clearFields();
}

void OfficeScreen::SetEditMode(bool editing) {
    for (QWidget* w : {static_cast<QWidget*>(m_cmdOK), static_cast<QWidget*>(m_cmdCancel),
                       static_cast<QWidget*>(m_dtpDate)})
        w->setVisible(editing);
    m_lblDate->setVisible(!editing);
    m_cboDept->setEnabled(editing);
    m_txtContent->setReadOnly(!editing);
    if (m_kind.documents) {
        m_cmdPath->setVisible(editing);
        m_cmdDocCopy->setVisible(editing);
        m_cmdDocOpen->setVisible(!editing);
        for (QWidget* w : {static_cast<QWidget*>(m_txtTitle), static_cast<QWidget*>(m_txtPath),
                           static_cast<QWidget*>(m_chkNews)})
            w->setEnabled(editing);
    }
    if (!stepButtonsFollowPanels()) {
        m_cmdNews[0]->setVisible(!editing);
        m_cmdNews[1]->setVisible(!editing);
    }
    setEditFields(editing);
    if (editing) {
        refreshWeek(m_dtpDate->date());
        if (m_kind.documents) txtPath_LostFocus();
    }
    SetBrowseButtons(editing);
}

void OfficeScreen::SetBrowseButtons(bool off) {
    for (QPushButton* b : {m_cmdSeek, m_cmdAdd, m_cmdQuit})
        b->setEnabled(!off);
    m_cmdChg->setEnabled(!off && mayChange());
    m_cmdDel->setEnabled(!off && mayChange());
    if (stepButtonsFollowPanels()) {
        m_cmdNews[0]->setVisible(!off);
        m_cmdNews[1]->setVisible(!off);
    }
    setBrowseExtras(off);
}

void OfficeScreen::refreshWeek(const QDate& date) {
    m_lblWeek->setText(weekdayName(date));
}

void OfficeScreen::cmdNews_Click(int index) {
    if (!m_cmdNews[index]->isEnabled() || !m_rs) return;
    try {
        if (index == 0)
            m_rs->move(-1);
        else
            m_rs->moveNext();
    } catch (const DbError&) {
        ClearRecord();
        return;
    }
    ShowRecord();
    m_txtContent->setFocus();
}

void OfficeScreen::cmdAdd_Click() {
    m_cmdOK->setProperty("Tag", QStringLiteral("1"));
    ClearRecord();
    startAdding();
    setCancelButton(m_cmdCancel);
    SetEditMode(true);
    m_dtpDate->setFocus();
}

void OfficeScreen::cmdChg_Click() {
    if (!onRow()) return;
    m_cmdOK->setProperty("Tag", QStringLiteral("2"));
    const QDate shown = QDate::fromString(m_lblDate->text(), QStringLiteral("yyyy-MM-dd"));
    if (shown.isValid()) m_dtpDate->setDate(shown);
    setCancelButton(m_cmdCancel);
    SetEditMode(true);
    m_dtpDate->setFocus();
}

void OfficeScreen::cmdOK_Click() {
    if (TrimBlanks(m_txtContent->toPlainText()).isEmpty()) {
        ShowMsg(m_kind.emptyContent, vbExclamation);
        m_txtContent->setFocus();
        return;
    }
    const bool adding = m_cmdOK->property("Tag").toString() == QLatin1String("1");
    if (!adding && !onRow()) return;
    if (!beforeSave(adding)) return;
    try {
        Transaction t(conn());
        saveRow(adding ? 0 : int(m_rs->val(QStringLiteral("fID"))), adding ? RowSnapshot() : Snapshot(*m_rs));
        t.commit();
    } catch (const ConflictError& e) {
        ShowMsg(SaveErrorText(e), vbExclamation, windowTitle());
        return;
    } catch (const DbError&) {
        ShowMsg(SaveErrorText(), vbExclamation, windowTitle());
        return; // still editing, with the typed text in place
    }
    SetEditMode(false);
    setCancelButton(m_cmdQuit);
    reloadList(m_filter);
}

void OfficeScreen::cmdCancel_Click() {
    SetEditMode(false);
    setCancelButton(m_cmdQuit);
    ShowRecord();
}

void OfficeScreen::cmdDel_Click() {
    if (ShowMsg(m_kind.deleteQuestion, vbOKCancel + vbQuestion) != vbOK) return;
    if (!onRow()) return;
    const int id = int(m_rs->val(QStringLiteral("fID")));
    try {
        Transaction t(conn());
        deleteRow(id);
        t.commit();
    } catch (const ConflictError& e) {
        ShowMsg(SaveErrorText(e), vbExclamation, windowTitle());
        unsetCursor();
        reloadList(m_filter);
        return;
    } catch (const DbError&) {
        ShowMsg(SaveErrorText(), vbExclamation, windowTitle());
        unsetCursor();
        return;
    }
    reloadList(m_filter);
}

void OfficeScreen::showPanel(QFrame* panel) {
    CenterOnForm(panel, this);
    panel->raise();
    panel->show();
    SetBrowseButtons(true);
}

void OfficeScreen::hidePanel(QFrame* panel) {
    panel->hide();
    SetBrowseButtons(false);
    setCancelButton(m_cmdQuit);
}

void OfficeScreen::cmdSeek_Click() {
    showPanel(m_fraSeek);
    setCancelButton(m_cmdSeekCancel);
}

void OfficeScreen::cmdSeekCancel_Click() {
    hidePanel(m_fraSeek);
    // The list stays as it was; the record buttons get their real state back.
    if (reloadOnSeekCancel())
        reloadList(m_filter);
    else
        ShowRecord();
}

void OfficeScreen::cmdSeekOk_Click() {
    office::SeekTerms t;
    t.byDate = m_chkDate2->isChecked();
    t.from = m_dtpDate1->date();
    t.to = m_dtpDate2->date();
    t.byContent = m_chkContent2->isChecked();
    t.content = m_txtContent2->text();
    t.byDept = m_chkDept->isChecked();
    t.dept = m_cboDept2->currentText();
    if (m_kind.documents) {
        t.byTitle = m_chkTitle2->isChecked();
        t.title = m_txtTitle2->text();
        t.forwardedOnly = m_chkNews2->isChecked();
    }
    if (m_chkFootSeek1) {
        t.byAuthor = m_chkFootSeek1->isChecked();
        t.author = m_txtFootSeek1->text();
        t.byChecker = m_chkFootSeek2->isChecked();
        t.checker = m_txtFootSeek2->text();
    }
    QString filter;
    try {
        filter = office::SeekFilter(t);
    } catch (const DbError&) {
        ShowMsg(QStringLiteral("查找内容中不能含有单引号!"), vbExclamation, windowTitle());
        return;
    }
    const QString previous = m_filter;
    m_filter = filter;
    hidePanel(m_fraSeek);
    // A condition the database refuses must not stick to every later reload.
    if (!reloadList(m_filter)) {
        m_filter = previous;
        reloadList(m_filter);
    }
}

void OfficeScreen::cmdQuit_Click() {
    QDialog::reject();
}

void OfficeScreen::cmdPath_Click() {
    m_txtPath->setFocus();
    const QString path =
        PickFile(1, 8, m_txtPath->text(), QStringLiteral("选择文档文件"),
                 QStringLiteral("Word 文挡文件 (.Doc) |*.doc|文本文件 (.Txt) |*.txt|所有文件 (*.*) |*.*"));
    if (!path.isEmpty()) m_txtPath->setText(path);
    txtPath_LostFocus();
}

void OfficeScreen::txtPath_LostFocus() {
    m_cmdDocCopy->setEnabled(fileExists(m_txtPath->text()));
}

void OfficeScreen::cmdDocOpen_Click() {
    if (fileExists(m_txtPath->text())) OpenDocument(m_txtPath->text());
}

void OfficeScreen::cmdDocCopy_Click() {
    const QString path = m_txtPath->text();
    if (!fileExists(path)) return;
    QApplication::setOverrideCursor(Qt::BusyCursor);
    const QString text = ReadDocumentText(path);
    if (!text.isEmpty()) {
        m_txtContent->setPlainText(m_txtContent->toPlainText() + QLatin1Char('\n') +
                                   ShownText(ClipTextLines(text, 400)));
        m_txtContent->moveCursor(QTextCursor::End);
    }
    QApplication::restoreOverrideCursor();
}

} // namespace zq
