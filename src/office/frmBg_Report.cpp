#include "frmBg_Report.h"

#include "office/ReportData.h"
#include "printing/Print.h"
#include "services/Documents.h"
#include "services/InputAids.h"
#include "services/Lookups.h"
#include "services/ui/ComboLookups.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/SaveOrTell.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
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
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace zq {

namespace {

const QString kCaption = QStringLiteral("报告审批");
const QString kSaveError = QStringLiteral("存盘错误!");

QString arrayName(const char* name, int index) {
    return QStringLiteral("%1(%2)").arg(QLatin1String(name)).arg(index);
}

template <typename W> W* named(W* w, const QString& name) {
    w->setObjectName(name);
    return w;
}

QPushButton* button(QWidget* parent, const char* name, const QString& caption) {
    return named(new QPushButton(caption, parent), QLatin1String(name));
}

// A picture button: an icon with the hint as its tool tip.
QToolButton* pictureButton(QWidget* parent, const QString& name, QStyle::StandardPixmap icon,
                           const QString& hint = {}) {
    auto* b = named(new QToolButton(parent), name);
    b->setIcon(parent->style()->standardIcon(icon));
    b->setToolTip(hint);
    b->setAutoRaise(true);
    return b;
}

QLineEdit* textBox(QWidget* parent, const char* name, int maxBytes = 0) {
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

// Reports keep the line ends of the system ("\r\n"); the edit box works with "\n".
QString shownText(QString stored) {
    return stored.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}
QString storedText(QString shown) {
    return shown.replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
}

void setTextColor(QWidget* w, const QColor& c) {
    QPalette p = w->palette();
    p.setColor(QPalette::Text, c);
    w->setPalette(p);
}

bool fileExists(const QString& path) {
    return !path.isEmpty() && QFileInfo(path).isFile();
}

} // namespace

frmBg_Report::frmBg_Report(QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("frmBg_Report"));
    setWindowTitle(kCaption);
    buildPage();
    buildCheckPanel();
    buildSeekPanel();
    resize(760, 600);
    m_cmdOK->setProperty("Tag", QString());
    SetEditMode(false);
    setCancelButton(m_cmdQuit);
}

frmBg_Report::~frmBg_Report() = default;

void frmBg_Report::buildPage() {
    m_lblDate = named(new QLabel(this), QStringLiteral("lblDate"));
    m_dtpDate = datePicker(this, "dtpDate");
    m_lblWeek = named(new QLabel(this), QStringLiteral("lblWeek"));
    m_txtTitle = textBox(this, "txtTitle", 40);
    m_txtContent = named(new QPlainTextEdit(this), QStringLiteral("txtContent"));
    m_txtFootnote1 = textBox(this, "txtFootnote1", 40);
    for (int i = 0; i < 4; ++i)
        m_txtChecker[i] = textBox(this, arrayName("txtChecker", i).toLatin1().constData(), 40);
    m_cmdStaff[0] = pictureButton(this, arrayName("cmdStaff", 0), QStyle::SP_FileDialogDetailedView,
                                  QStringLiteral("选择报告人"));
    m_cmdStaff[1] = pictureButton(this, arrayName("cmdStaff", 1), QStyle::SP_FileDialogDetailedView,
                                  QStringLiteral("选择审核人"));
    m_cboDept = named(new QComboBox(this), QStringLiteral("cboDept"));
    m_cboDept->setEditable(true); // a name no longer in the list still shows
    m_cboDept->setMinimumWidth(140);
    m_txtPath = textBox(this, "txtPath");
    m_cmdPath =
        pictureButton(this, QStringLiteral("cmdPath"), QStyle::SP_DirOpenIcon, QStringLiteral("选择文档"));
    m_cmdDocOpen =
        pictureButton(this, QStringLiteral("cmdDocOpen"), QStyle::SP_FileIcon, QStringLiteral("打开文档"));
    m_cmdDocCopy = pictureButton(this, QStringLiteral("cmdDocCopy"), QStyle::SP_FileDialogContentsView,
                                 QStringLiteral("复制文档内容"));
    m_chkNews = named(new QCheckBox(QStringLiteral("生成[新闻公告]"), this), QStringLiteral("chkNews"));
    m_cmdNews[0] =
        pictureButton(this, arrayName("cmdNews", 0), QStyle::SP_ArrowLeft, QStringLiteral("上一份报告"));
    m_cmdNews[1] =
        pictureButton(this, arrayName("cmdNews", 1), QStyle::SP_ArrowRight, QStringLiteral("下一份报告"));
    m_cmdAdd = button(this, "cmdAdd", QStringLiteral("新增"));
    m_cmdChg = button(this, "cmdChg", QStringLiteral("修改"));
    m_cmdDel = button(this, "cmdDel", QStringLiteral("删除"));
    m_cmdChk = button(this, "cmdChk", QStringLiteral("审核"));
    m_cmdSeek = button(this, "cmdSeek", QStringLiteral("查找"));
    m_cmdPrint = button(this, "cmdPrint", QStringLiteral("打印"));
    m_cmdQuit = button(this, "cmdQuit", QStringLiteral("退出"));
    m_cmdOK = button(this, "cmdOK", QStringLiteral("确定"));
    m_cmdCancel = button(this, "cmdCancel", QStringLiteral("取消"));

    m_picAnswer = named(new QFrame(this), QStringLiteral("picAnswer"));
    m_picAnswer->setFrameShape(QFrame::StyledPanel);
    auto* lblCheck = named(new QLabel(QStringLiteral("审核批复:"), m_picAnswer), QStringLiteral("lblCheck"));
    m_txtAnswer2 = named(new QPlainTextEdit(m_picAnswer), QStringLiteral("txtAnswer2"));
    m_txtAnswer2->setReadOnly(true);
    m_txtAnswer2->setMaximumHeight(64);
    auto* cmdAnswer =
        pictureButton(m_picAnswer, QStringLiteral("cmdAnswer"), QStyle::SP_MessageBoxInformation);
    auto* answerLayout = new QHBoxLayout(m_picAnswer);
    answerLayout->setContentsMargins(4, 4, 4, 4);
    answerLayout->addWidget(lblCheck, 0, Qt::AlignTop);
    answerLayout->addWidget(m_txtAnswer2, 1);
    answerLayout->addWidget(cmdAnswer, 0, Qt::AlignTop);

    auto* lblTitle = named(new QLabel(QStringLiteral("主题:"), this), QStringLiteral("lblTitle"));
    auto* lblFoot1 = named(new QLabel(QStringLiteral("报告人:"), this), QStringLiteral("lblFoot1"));
    auto* lblFoot2 = named(new QLabel(QStringLiteral("审核人:"), this), QStringLiteral("lblFoot2"));
    auto* lblDept = named(new QLabel(QStringLiteral("所属部门:"), this), QStringLiteral("lblDept"));
    auto* lblPath = named(new QLabel(QStringLiteral("参考文件:"), this), QStringLiteral("lblPath"));

    auto* dateRow = new QHBoxLayout;
    dateRow->addWidget(m_cmdNews[0]);
    dateRow->addWidget(m_lblDate);
    dateRow->addWidget(m_dtpDate);
    dateRow->addWidget(m_lblWeek);
    dateRow->addStretch();
    dateRow->addWidget(m_chkNews);
    dateRow->addWidget(m_cmdNews[1]);

    auto* titleRow = new QHBoxLayout;
    titleRow->addWidget(lblTitle);
    titleRow->addWidget(m_txtTitle, 1);

    auto* footRow = new QHBoxLayout;
    footRow->addWidget(lblFoot1);
    footRow->addWidget(m_txtFootnote1);
    footRow->addWidget(m_cmdStaff[0]);
    footRow->addSpacing(12);
    footRow->addWidget(lblFoot2);
    for (int i = 0; i < 4; ++i) {
        footRow->addWidget(m_txtChecker[i]);
        if (i < 3) footRow->addWidget(named(new QLabel(QStringLiteral(","), this), arrayName("lblCo", i)));
    }
    footRow->addWidget(m_cmdStaff[1]);

    auto* fileRow = new QHBoxLayout;
    fileRow->addWidget(lblDept);
    fileRow->addWidget(m_cboDept);
    fileRow->addSpacing(12);
    fileRow->addWidget(lblPath);
    fileRow->addWidget(m_txtPath, 1);
    fileRow->addWidget(m_cmdPath); // the open button stands on the same spot in browse
    fileRow->addWidget(m_cmdDocOpen);
    fileRow->addWidget(m_cmdDocCopy);

    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {m_cmdAdd, m_cmdChg, m_cmdDel, m_cmdChk, m_cmdSeek, m_cmdPrint})
        buttons->addWidget(b);
    buttons->addStretch();
    buttons->addWidget(m_cmdOK);
    buttons->addWidget(m_cmdCancel);
    buttons->addWidget(m_cmdQuit);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(dateRow);
    layout->addLayout(titleRow);
    layout->addWidget(m_txtContent, 1);
    layout->addLayout(footRow);
    layout->addWidget(m_picAnswer);
    layout->addLayout(fileRow);
    layout->addLayout(buttons);

    for (int i = 0; i < 2; ++i) {
        connect(m_cmdNews[i], &QToolButton::clicked, this, [this, i] { cmdNews_Click(i); });
        connect(m_cmdStaff[i], &QToolButton::clicked, this, [this, i] { cmdStaff_Click(i); });
    }
    connect(m_cmdAdd, &QPushButton::clicked, this, &frmBg_Report::cmdAdd_Click);
    connect(m_cmdChg, &QPushButton::clicked, this, &frmBg_Report::cmdChg_Click);
    connect(m_cmdDel, &QPushButton::clicked, this, &frmBg_Report::cmdDel_Click);
    connect(m_cmdChk, &QPushButton::clicked, this, &frmBg_Report::cmdChk_Click);
    connect(m_cmdSeek, &QPushButton::clicked, this, &frmBg_Report::cmdSeek_Click);
    connect(m_cmdPrint, &QPushButton::clicked, this, &frmBg_Report::cmdPrint_Click);
    connect(m_cmdQuit, &QPushButton::clicked, this, &frmBg_Report::cmdQuit_Click);
    connect(m_cmdOK, &QPushButton::clicked, this, &frmBg_Report::cmdOK_Click);
    connect(m_cmdCancel, &QPushButton::clicked, this, &frmBg_Report::cmdCancel_Click);
    connect(m_cmdPath, &QToolButton::clicked, this, &frmBg_Report::cmdPath_Click);
    connect(m_cmdDocOpen, &QToolButton::clicked, this, &frmBg_Report::cmdDocOpen_Click);
    connect(m_cmdDocCopy, &QToolButton::clicked, this, &frmBg_Report::cmdDocCopy_Click);
    connect(m_dtpDate, &QDateEdit::dateChanged, this, &frmBg_Report::refreshWeek);
    connect(m_chkNews, &QCheckBox::clicked, this, [this] { focusNextChild(); });
    m_txtPath->installEventFilter(this);
    for (QWidget* w : {static_cast<QWidget*>(m_dtpDate), static_cast<QWidget*>(m_txtFootnote1),
                       static_cast<QWidget*>(m_txtPath), static_cast<QWidget*>(m_txtTitle),
                       static_cast<QWidget*>(m_chkNews)})
        w->installEventFilter(this);
    for (QLineEdit* box : m_txtChecker)
        box->installEventFilter(this);
}

void frmBg_Report::buildCheckPanel() {
    m_fraCheck = named(new QFrame(this), QStringLiteral("fraCheck"));
    m_fraCheck->setFrameShape(QFrame::Box);
    m_fraCheck->setAutoFillBackground(true);
    auto* lblUser = named(new QLabel(QStringLiteral("审核人:"), m_fraCheck), QStringLiteral("lblUser"));
    m_lblUserName = named(new QLabel(m_fraCheck), QStringLiteral("lblUserName"));
    auto* lblState = named(new QLabel(QStringLiteral("状态:"), m_fraCheck), QStringLiteral("lblState"));
    m_cboPass = named(new QComboBox(m_fraCheck), QStringLiteral("cboPass"));
    m_cboPass->addItems(report::VerdictTexts());
    m_lblColor = named(new QLabel(m_fraCheck), QStringLiteral("lblColor"));
    m_lblColor->setAutoFillBackground(true);
    m_lblColor->setFixedSize(24, 18);
    auto* label2 = named(new QLabel(QStringLiteral("批复:"), m_fraCheck), QStringLiteral("Label2"));
    m_txtAnswer = textBox(m_fraCheck, "txtAnswer", 50);
    auto* cmdChkOk = button(m_fraCheck, "cmdChkOk", QStringLiteral("确定"));
    m_cmdChkCancel = button(m_fraCheck, "cmdChkCancel", QStringLiteral("返回>>"));

    auto* grid = new QGridLayout(m_fraCheck);
    grid->addWidget(lblUser, 0, 0);
    grid->addWidget(m_lblUserName, 0, 1, 1, 2);
    grid->addWidget(lblState, 1, 0);
    grid->addWidget(m_cboPass, 1, 1);
    grid->addWidget(m_lblColor, 1, 2);
    grid->addWidget(label2, 2, 0);
    grid->addWidget(m_txtAnswer, 2, 1, 1, 2);
    auto* row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(cmdChkOk);
    row->addWidget(m_cmdChkCancel);
    grid->addLayout(row, 3, 0, 1, 3);
    grid->setColumnStretch(1, 1);
    m_fraCheck->setMinimumWidth(360);
    m_fraCheck->adjustSize();
    m_fraCheck->hide();

    connect(m_cboPass, &QComboBox::currentIndexChanged, this, &frmBg_Report::cboPass_Click);
    connect(cmdChkOk, &QPushButton::clicked, this, &frmBg_Report::cmdChkOk_Click);
    connect(m_cmdChkCancel, &QPushButton::clicked, this, &frmBg_Report::cmdChkCancel_Click);
    m_cboPass->installEventFilter(this);
}

void frmBg_Report::buildSeekPanel() {
    m_fraSeek = named(new QFrame(this), QStringLiteral("fraSeek"));
    m_fraSeek->setFrameShape(QFrame::Box);
    m_fraSeek->setAutoFillBackground(true);
    auto check = [this](const char* name, const QString& caption) {
        auto* c = named(new QCheckBox(caption, m_fraSeek), QLatin1String(name));
        connect(c, &QCheckBox::clicked, this, [this] { focusNextChild(); });
        c->installEventFilter(this);
        return c;
    };
    m_chkDate2 = check("chkDate2", QStringLiteral("日期:"));
    m_dtpDate1 = datePicker(m_fraSeek, "dtpDate1");
    m_dtpDate2 = datePicker(m_fraSeek, "dtpDate2");
    m_chkTitle2 = check("chkTitle2", QStringLiteral("主题:"));
    m_txtTitle2 = textBox(m_fraSeek, "txtTitle2");
    m_chkContent2 = check("chkContent2", QStringLiteral("内容:"));
    m_txtContent2 = textBox(m_fraSeek, "txtContent2");
    m_chkFootSeek1 = check("chkFootSeek1", QStringLiteral("报告人:"));
    m_txtFootSeek1 = textBox(m_fraSeek, "txtFootSeek1");
    m_chkFootSeek2 = check("chkFootSeek2", QStringLiteral("审核人:"));
    m_txtFootSeek2 = textBox(m_fraSeek, "txtFootSeek2");
    m_chkDept = check("chkDept", QStringLiteral("部门:"));
    m_cboDept2 = named(new QComboBox(m_fraSeek), QStringLiteral("cboDept2"));
    m_cboDept2->setEditable(true); // a pattern with wildcards may be typed
    m_chkNews2 = check("chkNews2", QStringLiteral("已生成[新闻公告]"));
    auto* cmdSeekOk = button(m_fraSeek, "cmdSeekOk", QStringLiteral("确定"));
    m_cmdSeekCancel = button(m_fraSeek, "cmdSeekCancel", QStringLiteral("返回>>"));

    auto* grid = new QGridLayout(m_fraSeek);
    auto* dates = new QHBoxLayout;
    dates->addWidget(m_dtpDate1);
    dates->addWidget(new QLabel(QStringLiteral("--"), m_fraSeek));
    dates->addWidget(m_dtpDate2);
    grid->addWidget(m_chkDate2, 0, 0);
    grid->addLayout(dates, 0, 1);
    const std::pair<QCheckBox*, QWidget*> rows[] = {{m_chkTitle2, m_txtTitle2},
                                                    {m_chkContent2, m_txtContent2},
                                                    {m_chkFootSeek1, m_txtFootSeek1},
                                                    {m_chkFootSeek2, m_txtFootSeek2},
                                                    {m_chkDept, m_cboDept2}};
    int r = 1;
    for (const auto& [box, field] : rows) {
        grid->addWidget(box, r, 0);
        grid->addWidget(field, r++, 1);
        field->installEventFilter(this);
    }
    grid->addWidget(m_chkNews2, r++, 0, 1, 2);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdSeekOk);
    buttons->addWidget(m_cmdSeekCancel);
    grid->addLayout(buttons, r, 0, 1, 2);
    m_fraSeek->setMinimumWidth(400);
    m_fraSeek->adjustSize();
    m_fraSeek->hide();

    m_cboDept2->removeEventFilter(this); // Enter in the department list is not in the tab chain
    for (QWidget* w : {static_cast<QWidget*>(m_dtpDate1), static_cast<QWidget*>(m_dtpDate2)})
        w->installEventFilter(this);
    connect(cmdSeekOk, &QPushButton::clicked, this, &frmBg_Report::cmdSeekOk_Click);
    connect(m_cmdSeekCancel, &QPushButton::clicked, this, &frmBg_Report::cmdSeekCancel_Click);
}

void frmBg_Report::showEvent(QShowEvent* event) {
    if (!m_loaded) load();
    QDialog::showEvent(event);
}

void frmBg_Report::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        OpenControlConn();
    }
    QDialog::changeEvent(event);
}

void frmBg_Report::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    CenterOnForm(m_fraCheck, this);
    CenterOnForm(m_fraSeek, this);
}

bool frmBg_Report::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            focusNextChild();
            return true;
        }
    } else if (event->type() == QEvent::FocusOut && watched == m_txtPath) {
        txtPath_LostFocus();
    }
    return QDialog::eventFilter(watched, event);
}

void frmBg_Report::reject() {
    if (m_cancelButton && m_cancelButton->isVisible() && m_cancelButton->isEnabled()) m_cancelButton->click();
}

void frmBg_Report::setCancelButton(QPushButton* b) {
    m_cancelButton = b;
}

void frmBg_Report::load() {
    m_loaded = true;
    CenterForm(this);
    try {
        report::AddAnswerColumns();
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, windowTitle());
    }
    FillCodeCombo(QStringLiteral("tRs_Bm"), m_cboDept, G().DeptScope, -1, 0);
    m_cboDept->insertItem(0, QString());
    m_cboDept->setCurrentIndex(0);
    m_cboDept2->clear();
    for (int i = 0; i < m_cboDept->count(); ++i)
        m_cboDept2->addItem(m_cboDept->itemText(i));
    m_filter.clear();
    reloadList(m_filter);
    m_dtpDate2->setDate(QDate::currentDate());
    m_dtpDate1->setDate(QDate::currentDate().addDays(-30));
    m_lblUserName->setText(G().UserName);
}

void frmBg_Report::ShowList(const QString& filter) {
    m_rs.reset();
    m_rs = std::make_unique<Recordset>(conn(), report::ListSql(filter), Cursor::Static, Lock::Optimistic);
    ShowRecord();
}

bool frmBg_Report::reloadList(const QString& filter) {
    try {
        ShowList(filter);
        return true;
    } catch (const DbError& e) {
        ShowRecord();
        ShowMsg(QStringLiteral("数据库无法按此条件列出报告:\r\n") + e.message(), vbExclamation,
                windowTitle());
        return false;
    }
}

bool frmBg_Report::onRow() const {
    return m_rs && !m_rs->bof() && !m_rs->eof();
}

void frmBg_Report::ShowRecord() {
    try {
        const bool row = onRow();
        if (row) {
            const Recordset& rs = *m_rs;
            const QDate date = QDate::fromString(rs.text(QStringLiteral("fDate")).left(10), Qt::ISODate);
            m_lblDate->setText(date.toString(QStringLiteral("yyyy-MM-dd")));
            m_lblWeek->setText(weekdayName(date));
            m_txtTitle->setText(rs.text(QStringLiteral("fTitle")));
            m_txtContent->setPlainText(shownText(rs.text(QStringLiteral("fContent"))));
            m_txtFootnote1->setText(rs.text(QStringLiteral("fFootnote1")));
            for (int n = 1; n <= 4; ++n) {
                m_txtChecker[n - 1]->setText(rs.text(QStringLiteral("fChecker%1").arg(n)));
                setTextColor(m_txtChecker[n - 1],
                             report::CheckColor(int(rs.val(QStringLiteral("fChecker%1Ok").arg(n)))));
            }
            m_txtPath->setText(rs.text(QStringLiteral("fFilePath")));
            m_cboDept->setEditText(rs.text(QStringLiteral("fBmName")));
            m_chkNews->setChecked(rs.val(QStringLiteral("fNews")) != 0);
        } else {
            ClearRecord();
        }
        m_cmdNews[0]->setEnabled(m_rs && !m_rs->bof());
        m_cmdNews[1]->setEnabled(m_rs && !m_rs->eof());
        m_cmdChg->setEnabled(row);
        m_cmdDel->setEnabled(row);
        m_cmdChk->setEnabled(row);
        m_cmdDocOpen->setEnabled(!m_txtPath->text().isEmpty());
        if (!row) return;

        const report::Rights rights = report::RightsOf(*m_rs, G().UserName, G().isSupervisor());
        m_cmdChg->setEnabled(rights.canChange);
        m_cmdDel->setEnabled(rights.canChange);
        m_checkerNo = rights.checkerNo;
        m_txtAnswer2->setPlainText(shownText(rights.answers));
        if (m_checkerNo != 0) {
            const int verdict = storedVerdict();
            m_cboPass->setCurrentIndex(verdict < m_cboPass->count() ? verdict : -1);
            m_txtAnswer->setText(m_rs->text(QStringLiteral("fChecker%1_").arg(m_checkerNo)));
        } else {
            m_cmdChk->setEnabled(false);
        }
        m_picAnswer->setVisible(!rights.answers.isEmpty());
    } catch (const DbError&) {
        ClearRecord();
    }
}

void frmBg_Report::ClearRecord() {
    m_dtpDate->setDate(QDate::currentDate());
    m_lblDate->clear();
    m_lblWeek->clear();
    m_txtTitle->clear();
    m_txtContent->clear();
    m_txtFootnote1->clear();
    for (QLineEdit* box : m_txtChecker) {
        box->clear();
        setTextColor(box, report::CheckColor(0));
    }
    m_txtPath->clear();
    m_cboDept->setEditText(QString());
    m_cboPass->setCurrentIndex(0);
    m_picAnswer->hide();
    m_chkNews->setChecked(false);
    m_checkerNo = 0;
}

void frmBg_Report::SetEditMode(bool editing) {
    for (QWidget* w : {static_cast<QWidget*>(m_cmdOK), static_cast<QWidget*>(m_cmdCancel),
                       static_cast<QWidget*>(m_cmdPath), static_cast<QWidget*>(m_cmdDocCopy),
                       static_cast<QWidget*>(m_cmdStaff[0]), static_cast<QWidget*>(m_cmdStaff[1]),
                       static_cast<QWidget*>(m_dtpDate)})
        w->setVisible(editing);
    m_lblDate->setVisible(!editing);
    m_cmdDocOpen->setVisible(!editing);
    for (QWidget* w : {static_cast<QWidget*>(m_txtTitle), static_cast<QWidget*>(m_txtPath),
                       static_cast<QWidget*>(m_cboDept), static_cast<QWidget*>(m_chkNews),
                       static_cast<QWidget*>(m_txtFootnote1)})
        w->setEnabled(editing);
    m_txtContent->setReadOnly(!editing);
    for (QLineEdit* box : m_txtChecker)
        box->setReadOnly(!editing);
    const bool picker = hasForm(QStringLiteral("frmRs_list"));
    m_cmdStaff[0]->setEnabled(picker);
    m_cmdStaff[1]->setEnabled(picker);
    if (editing) {
        refreshWeek(m_dtpDate->date());
        txtPath_LostFocus();
    }
    SetBrowseButtons(editing);
}

void frmBg_Report::SetBrowseButtons(bool off) {
    for (QPushButton* b : {m_cmdSeek, m_cmdAdd, m_cmdChg, m_cmdDel, m_cmdChk, m_cmdPrint, m_cmdQuit})
        b->setEnabled(!off);
    m_cmdNews[0]->setVisible(!off);
    m_cmdNews[1]->setVisible(!off);
}

void frmBg_Report::refreshWeek(const QDate& date) {
    m_lblWeek->setText(weekdayName(date));
}

void frmBg_Report::cmdNews_Click(int index) {
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

void frmBg_Report::cmdAdd_Click() {
    m_cmdOK->setProperty("Tag", QStringLiteral("1"));
    ClearRecord();
    m_txtFootnote1->setText(G().UserName);
    setCancelButton(m_cmdCancel);
    SetEditMode(true);
    m_dtpDate->setFocus();
}

void frmBg_Report::cmdChg_Click() {
    if (!onRow()) return;
    m_cmdOK->setProperty("Tag", QStringLiteral("2"));
    const QDate shown = QDate::fromString(m_lblDate->text(), QStringLiteral("yyyy-MM-dd"));
    if (shown.isValid()) m_dtpDate->setDate(shown);
    setCancelButton(m_cmdCancel);
    SetEditMode(true);
    m_dtpDate->setFocus();
    m_picAnswer->hide();
}

void frmBg_Report::cmdStaff_Click(int index) {
    if (!hasForm(QStringLiteral("frmRs_list"))) return;
    G().CurPersonCode.clear();
    G().CurPersonName.clear();
    openForm(QStringLiteral("frmRs_list"), this);
    if (G().CurPersonCode.isEmpty()) return;
    const QString name = G().CurPersonName;
    if (index == 0) {
        m_txtFootnote1->setText(name);
        return;
    }
    QStringList names;
    for (QLineEdit* box : m_txtChecker)
        names << box->text();
    const int free = report::FirstFreeChecker(names);
    if (free >= 0) m_txtChecker[free]->setText(name); // with all four taken the pick is dropped
}

void frmBg_Report::cmdOK_Click() {
    if (TrimBlanks(m_txtContent->toPlainText()).isEmpty()) {
        ShowMsg(QStringLiteral("请输入报告内容!"), vbExclamation);
        m_txtContent->setFocus();
        return;
    }
    const bool adding = m_cmdOK->property("Tag").toString() == QLatin1String("1");
    if (!adding && !onRow()) return;

    report::Report r;
    r.date = m_dtpDate->date();
    r.title = m_txtTitle->text();
    r.content = storedText(m_txtContent->toPlainText());
    r.author = m_txtFootnote1->text();
    for (QLineEdit* box : m_txtChecker)
        r.checkers << box->text();
    r.filePath = m_txtPath->text();
    r.news = m_chkNews->isChecked();
    r.dept = m_cboDept->currentText();
    // Asked before the transaction opens, so that nothing stays locked while the user thinks.
    const bool forward = r.news && (adding || ShowMsg(QStringLiteral("是否重新发送<新闻公告> ?"),
                                                      vbYesNo + vbQuestion) == vbYes);

    try {
        Transaction t(conn());
        report::WriteReport(adding ? 0 : int(m_rs->val(QStringLiteral("fID"))), r,
                            adding ? RowSnapshot() : Snapshot(*m_rs));
        if (forward) report::ForwardNotice(r.date, report::NoticeText(r), r.dept);
        t.commit();
    } catch (const ConflictError& e) {
        ShowMsg(SaveErrorText(e), vbExclamation, windowTitle());
        return;
    } catch (const DbError&) {
        ShowMsg(kSaveError, vbExclamation, windowTitle());
        return; // still editing, with the typed text in place
    }
    reloadList(m_filter);
    cmdCancel_Click();
}

void frmBg_Report::cmdCancel_Click() {
    SetEditMode(false);
    setCancelButton(m_cmdQuit);
    ShowRecord();
}

void frmBg_Report::cmdDel_Click() {
    if (ShowMsg(QStringLiteral("确定: 删除当前[报告记录] ?"), vbOKCancel + vbQuestion) != vbOK) return;
    if (!onRow()) return;
    const int id = int(m_rs->val(QStringLiteral("fID")));
    try {
        Transaction t(conn());
        report::DeleteReport(id);
        t.commit();
    } catch (const ConflictError& e) {
        ShowMsg(SaveErrorText(e), vbExclamation, windowTitle());
        unsetCursor();
        reloadList(m_filter);
        return;
    } catch (const DbError&) {
        ShowMsg(kSaveError, vbExclamation, windowTitle());
        unsetCursor();
        return;
    }
    reloadList(m_filter);
}

void frmBg_Report::showPanel(QFrame* panel) {
    CenterOnForm(panel, this);
    panel->raise();
    panel->show();
    SetBrowseButtons(true);
}

void frmBg_Report::hidePanel(QFrame* panel) {
    panel->hide();
    SetBrowseButtons(false);
    setCancelButton(m_cmdQuit);
}

void frmBg_Report::cmdChk_Click() {
    showPanel(m_fraCheck);
    setCancelButton(m_cmdChkCancel);
    cboPass_Click();
    m_cboPass->setFocus();
}

int frmBg_Report::storedVerdict() const {
    return int(m_rs->val(QStringLiteral("fChecker%1Ok").arg(m_checkerNo)));
}

void frmBg_Report::cboPass_Click() {
    QPalette p = m_lblColor->palette();
    p.setColor(QPalette::Window, report::CheckColor(m_cboPass->currentIndex()));
    m_lblColor->setPalette(p);
}

void frmBg_Report::cmdChkOk_Click() {
    if (onRow() && m_checkerNo > 0) {
        try {
            // A stored verdict the list lacks shows none chosen; unless the checker chooses one,
            // it is written back as it was.
            const int chosen = m_cboPass->currentIndex();
            const int verdict = chosen >= 0 ? chosen : storedVerdict();
            report::SignOff(*m_rs, m_checkerNo, verdict, m_txtAnswer->text());
        } catch (const DbError& e) {
            // Another checker may have changed the row meanwhile; the panel stays for another try.
            ShowMsg(kSaveError + QStringLiteral("\r\n") + e.message(), vbExclamation, windowTitle());
            return;
        }
    }
    cmdChkCancel_Click();
}

void frmBg_Report::cmdChkCancel_Click() {
    hidePanel(m_fraCheck);
    ShowRecord();
}

void frmBg_Report::cmdSeek_Click() {
    showPanel(m_fraSeek);
    setCancelButton(m_cmdSeekCancel);
}

void frmBg_Report::cmdSeekCancel_Click() {
    hidePanel(m_fraSeek);
    reloadList(m_filter);
}

void frmBg_Report::cmdSeekOk_Click() {
    report::SeekTerms t;
    t.byDate = m_chkDate2->isChecked();
    t.from = m_dtpDate1->date();
    t.to = m_dtpDate2->date();
    t.byTitle = m_chkTitle2->isChecked();
    t.title = m_txtTitle2->text();
    t.byContent = m_chkContent2->isChecked();
    t.content = m_txtContent2->text();
    t.byAuthor = m_chkFootSeek1->isChecked();
    t.author = m_txtFootSeek1->text();
    t.byChecker = m_chkFootSeek2->isChecked();
    t.checker = m_txtFootSeek2->text();
    t.byDept = m_chkDept->isChecked();
    t.dept = m_cboDept2->currentText();
    t.forwardedOnly = m_chkNews2->isChecked();
    QString filter;
    try {
        filter = report::SeekFilter(t);
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

void frmBg_Report::cmdPrint_Click() {
    // The printout lists the 30 newest reports of all users, whatever this list shows.
    QStringList fields;
    const auto add = [&fields](const QString& caption, const QString& field) { fields << caption << field; };
    add(m_chkDate2->text(), QStringLiteral("fDate"));
    add(m_chkTitle2->text(), QStringLiteral("fTitle"));
    add(m_chkContent2->text(), QStringLiteral("fContent"));
    add(m_chkFootSeek1->text(), QStringLiteral("fFootnote1"));
    add(m_chkFootSeek2->text(), QStringLiteral("fFootnote2"));
    add(m_chkDept->text(), QStringLiteral("fBmName"));
    add(findChild<QLabel*>(QStringLiteral("lblPath"))->text(), QStringLiteral("fFilePath"));
    const QString user = findChild<QLabel*>(QStringLiteral("lblUser"))->text();
    const QString check = findChild<QLabel*>(QStringLiteral("lblCheck"))->text();
    for (int i = 1; i <= 4; ++i)
        add(user + QString::number(i), QStringLiteral("fChecker%1").arg(i));
    for (int i = 1; i <= 4; ++i)
        add(check + QString::number(i), QStringLiteral("fChecker%1_").arg(i));
    PrintReportFlow(G().isSupervisor() ? 3 : 1, QStringLiteral("RsReport"), QStringLiteral("RsReport_01"), {},
                    fields);
}

void frmBg_Report::cmdQuit_Click() {
    QDialog::reject();
}

void frmBg_Report::cmdPath_Click() {
    m_txtPath->setFocus();
    const QString path =
        PickFile(1, 8, m_txtPath->text(), QStringLiteral("选择文档文件"),
                 QStringLiteral("Word 文挡文件 (.Doc) |*.doc|文本文件 (.Txt) |*.txt|所有文件 (*.*) |*.*"));
    if (!path.isEmpty()) m_txtPath->setText(path);
    txtPath_LostFocus();
}

void frmBg_Report::txtPath_LostFocus() {
    m_cmdDocCopy->setEnabled(fileExists(m_txtPath->text()));
}

void frmBg_Report::cmdDocOpen_Click() {
    if (fileExists(m_txtPath->text())) OpenDocument(m_txtPath->text());
}

void frmBg_Report::cmdDocCopy_Click() {
    const QString path = m_txtPath->text();
    if (!fileExists(path)) return;
    QApplication::setOverrideCursor(Qt::BusyCursor);
    const QString text = ReadDocumentText(path);
    if (!text.isEmpty()) {
        m_txtContent->setPlainText(m_txtContent->toPlainText() + QLatin1Char('\n') +
                                   shownText(ClipTextLines(text, 400)));
        m_txtContent->moveCursor(QTextCursor::End);
    }
    QApplication::restoreOverrideCursor();
}

} // namespace zq
