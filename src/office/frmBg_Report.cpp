#include "frmBg_Report.h"

#include "printing/Print.h"
#include "services/Lookups.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/SaveOrTell.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/ui/Commands.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace zq {

using namespace office;

namespace {

OfficeScreen::Kind reportKind() {
    OfficeScreen::Kind k;
    k.objectName = QStringLiteral("frmBg_Report");
    k.caption = QStringLiteral("报告审批");
    k.rows = QStringLiteral("报告");
    k.emptyContent = QStringLiteral("请输入报告内容!");
    k.deleteQuestion = QStringLiteral("确定: 删除当前[报告记录] ?");
    k.seekFoot1 = QStringLiteral("报告人:");
    k.seekFoot2 = QStringLiteral("审核人:");
    k.stepHint0 = QStringLiteral("上一份报告");
    k.stepHint1 = QStringLiteral("下一份报告");
    return k;
}

void setTextColor(QWidget* w, const QColor& c) {
    QPalette p = w->palette();
    p.setColor(QPalette::Text, c);
    w->setPalette(p);
}

} // namespace

frmBg_Report::frmBg_Report(QWidget* parent)
    : OfficeScreen(reportKind(), parent) {
    buildPage();
    buildCheckPanel();
    ready();
}

void frmBg_Report::buildPage() {
    m_txtFootnote1 = textBox(this, "txtFootnote1", 40);
    for (int i = 0; i < 4; ++i)
        m_txtChecker[i] = textBox(this, ArrayName("txtChecker", i).toLatin1().constData(), 40);
    m_cmdStaff[0] = PictureButton(this, ArrayName("cmdStaff", 0), QStyle::SP_FileDialogDetailedView,
                                  QStringLiteral("选择报告人"));
    m_cmdStaff[1] = PictureButton(this, ArrayName("cmdStaff", 1), QStyle::SP_FileDialogDetailedView,
                                  QStringLiteral("选择审核人"));
    m_cmdChk = button(this, "cmdChk", QStringLiteral("审核"));
    m_cmdPrint = button(this, "cmdPrint", QStringLiteral("打印"));

    m_picAnswer = named(new QFrame(this), QStringLiteral("picAnswer"));
    m_picAnswer->setFrameShape(QFrame::StyledPanel);
    auto* lblCheck = named(new QLabel(QStringLiteral("审核批复:"), m_picAnswer), QStringLiteral("lblCheck"));
    m_txtAnswer2 = named(new QPlainTextEdit(m_picAnswer), QStringLiteral("txtAnswer2"));
    m_txtAnswer2->setReadOnly(true);
    m_txtAnswer2->setMaximumHeight(64);
    auto* cmdAnswer =
        PictureButton(m_picAnswer, QStringLiteral("cmdAnswer"), QStyle::SP_MessageBoxInformation);
    auto* answerLayout = new QHBoxLayout(m_picAnswer);
    answerLayout->setContentsMargins(4, 4, 4, 4);
    answerLayout->addWidget(lblCheck, 0, Qt::AlignTop);
    answerLayout->addWidget(m_txtAnswer2, 1);
    answerLayout->addWidget(cmdAnswer, 0, Qt::AlignTop);

    auto* footRow = new QHBoxLayout;
    footRow->addWidget(named(new QLabel(QStringLiteral("报告人:"), this), QStringLiteral("lblFoot1")));
    footRow->addWidget(m_txtFootnote1);
    footRow->addWidget(m_cmdStaff[0]);
    footRow->addSpacing(12);
    footRow->addWidget(named(new QLabel(QStringLiteral("审核人:"), this), QStringLiteral("lblFoot2")));
    for (int i = 0; i < 4; ++i) {
        footRow->addWidget(m_txtChecker[i]);
        if (i < 3) footRow->addWidget(named(new QLabel(QStringLiteral(","), this), ArrayName("lblCo", i)));
    }
    footRow->addWidget(m_cmdStaff[1]);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(dateRow());
    layout->addLayout(titleRow());
    layout->addWidget(m_txtContent, 1);
    layout->addLayout(footRow);
    layout->addWidget(m_picAnswer);
    layout->addLayout(deptAndFileRow());
    layout->addLayout(buttonRow({m_cmdAdd, m_cmdChg, m_cmdDel, m_cmdChk, m_cmdSeek, m_cmdPrint}));

    for (int i = 0; i < 2; ++i)
        connect(m_cmdStaff[i], &QToolButton::clicked, this, [this, i] { cmdStaff_Click(i); });
    connect(m_cmdChk, &QPushButton::clicked, this, &frmBg_Report::cmdChk_Click);
    connect(m_cmdPrint, &QPushButton::clicked, this, &frmBg_Report::cmdPrint_Click);
    tabOnEnter({m_txtFootnote1});
    for (QLineEdit* box : m_txtChecker)
        tabOnEnter({box});
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
    tabOnEnter({m_cboPass});
}

void frmBg_Report::resizeEvent(QResizeEvent* event) {
    OfficeScreen::resizeEvent(event);
    CenterOnForm(m_fraCheck, this);
}

void frmBg_Report::beforeList() {
    try {
        report::AddAnswerColumns();
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, windowTitle());
    }
    m_lblUserName->setText(G().UserName);
}

void frmBg_Report::showFields(const Recordset& rs) {
    m_txtFootnote1->setText(rs.text(QStringLiteral("fFootnote1")));
    for (int n = 1; n <= 4; ++n) {
        m_txtChecker[n - 1]->setText(rs.text(QStringLiteral("fChecker%1").arg(n)));
        setTextColor(m_txtChecker[n - 1],
                     report::CheckColor(int(rs.val(QStringLiteral("fChecker%1Ok").arg(n)))));
    }
}

void frmBg_Report::showRights(bool row) {
    m_cmdChk->setEnabled(row);
    m_cmdDocOpen->setEnabled(!m_txtPath->text().isEmpty());
    if (!row) return;

    const report::Rights rights = report::RightsOf(*list(), G().UserName, G().isSupervisor());
    m_cmdChg->setEnabled(rights.canChange);
    m_cmdDel->setEnabled(rights.canChange);
    m_checkerNo = rights.checkerNo;
    m_txtAnswer2->setPlainText(ShownText(rights.answers));
    if (m_checkerNo != 0) {
        const int verdict = storedVerdict();
        m_cboPass->setCurrentIndex(verdict < m_cboPass->count() ? verdict : -1);
        m_txtAnswer->setText(list()->text(QStringLiteral("fChecker%1_").arg(m_checkerNo)));
    } else {
        m_cmdChk->setEnabled(false);
    }
    m_picAnswer->setVisible(!rights.answers.isEmpty());
}

void frmBg_Report::clearFields() {
    m_txtFootnote1->clear();
    for (QLineEdit* box : m_txtChecker) {
        box->clear();
        setTextColor(box, report::CheckColor(0));
    }
    m_cboPass->setCurrentIndex(0);
    m_picAnswer->hide();
    m_checkerNo = 0;
}

void frmBg_Report::setEditFields(bool editing) {
    m_cmdStaff[0]->setVisible(editing);
    m_cmdStaff[1]->setVisible(editing);
    m_txtFootnote1->setEnabled(editing);
    for (QLineEdit* box : m_txtChecker)
        box->setReadOnly(!editing);
    const bool picker = hasForm(QStringLiteral("frmRs_list"));
    m_cmdStaff[0]->setEnabled(picker);
    m_cmdStaff[1]->setEnabled(picker);
    if (editing) m_picAnswer->hide();
}

void frmBg_Report::setBrowseExtras(bool off) {
    m_cmdChk->setEnabled(!off);
    m_cmdPrint->setEnabled(!off);
}

void frmBg_Report::startAdding() {
    m_txtFootnote1->setText(G().UserName);
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

report::Report frmBg_Report::pageReport() const {
    report::Report r;
    r.date = m_dtpDate->date();
    r.title = m_txtTitle->text();
    r.content = StoredText(m_txtContent->toPlainText());
    r.author = m_txtFootnote1->text();
    for (QLineEdit* box : m_txtChecker)
        r.checkers << box->text();
    r.filePath = m_txtPath->text();
    r.news = m_chkNews->isChecked();
    r.dept = m_cboDept->currentText();
    return r;
}

bool frmBg_Report::beforeSave(bool adding) {
    // A new report is forwarded without a question; a changed one only when the user says so.
    m_forward = m_chkNews->isChecked() && (adding || ShowMsg(QStringLiteral("是否重新发送<新闻公告> ?"),
                                                             vbYesNo + vbQuestion) == vbYes);
    return true;
}

void frmBg_Report::saveRow(int id, const RowSnapshot& loaded) {
    const report::Report r = pageReport();
    report::WriteReport(id, r, loaded);
    if (m_forward) report::ForwardNotice(r.date, report::NoticeText(r), r.dept);
}

void frmBg_Report::cmdChk_Click() {
    showPanel(m_fraCheck);
    setCancelButton(m_cmdChkCancel);
    cboPass_Click();
    m_cboPass->setFocus();
}

int frmBg_Report::storedVerdict() const {
    return int(list()->val(QStringLiteral("fChecker%1Ok").arg(m_checkerNo)));
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
            report::SignOff(*list(), m_checkerNo, verdict, m_txtAnswer->text());
        } catch (const DbError& e) {
            // Another checker may have changed the row meanwhile; the panel stays for another try.
            ShowMsg(SaveErrorText() + QStringLiteral("\r\n") + e.message(), vbExclamation, windowTitle());
            return;
        }
    }
    cmdChkCancel_Click();
}

void frmBg_Report::cmdChkCancel_Click() {
    hidePanel(m_fraCheck);
    ShowRecord();
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

} // namespace zq
