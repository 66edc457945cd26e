#include "frmBg_Meeting.h"

#include "shell/Recordset.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zq {

using namespace office;

namespace {

OfficeScreen::Kind meetingKind() {
    OfficeScreen::Kind k;
    k.objectName = QStringLiteral("frmBg_Meeting");
    k.caption = QStringLiteral("会议管理");
    k.rows = QStringLiteral("会议");
    // The word is "notice", as on the notice board.
    k.emptyContent = QStringLiteral("请输入公告内容!");
    k.deleteQuestion = QStringLiteral("确定: 删除当前[会议安排] ?");
    k.seekFoot1 = QStringLiteral("主办:");
    k.seekFoot2 = QStringLiteral("协办:");
    k.stepHint0 = QStringLiteral("上一次会议");
    k.stepHint1 = QStringLiteral("下一次会议");
    return k;
}

} // namespace

frmBg_Meeting::frmBg_Meeting(QWidget* parent)
    : OfficeScreen(meetingKind(), parent) {
    const QString defaults[2] = {meeting::DefaultFoot1(), meeting::DefaultFoot2()};
    auto* footRow = new QHBoxLayout;
    for (int i = 0; i < 2; ++i) {
        // A label that is a text box: locked and right-aligned until double-clicked in edit.
        m_txtFoot[i] = textBox(this, i == 0 ? "txtFoot1" : "txtFoot2", 10);
        m_txtFoot[i]->setProperty("Tag", defaults[i]);
        m_txtFoot[i]->setText(defaults[i]);
        m_txtFoot[i]->setReadOnly(true);
        m_txtFoot[i]->setFrame(false);
        m_txtFoot[i]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_txtFoot[i]->setFixedWidth(m_txtFoot[i]->fontMetrics().horizontalAdvance(defaults[i]) * 3 / 2 + 12);
        m_txtFootnote[i] = textBox(this, i == 0 ? "txtFootnote1" : "txtFootnote2", 40);
        footRow->addWidget(m_txtFoot[i]);
        footRow->addWidget(m_txtFootnote[i], 1);
        tabOnEnter({m_txtFoot[i], m_txtFootnote[i]});
    }

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(dateRow());
    layout->addLayout(titleRow());
    layout->addWidget(m_txtContent, 1);
    layout->addLayout(footRow);
    layout->addLayout(deptAndFileRow());
    layout->addLayout(buttonRow({m_cmdAdd, m_cmdChg, m_cmdDel, m_cmdSeek}));
    ready();
}

bool frmBg_Meeting::eventFilter(QObject* watched, QEvent* event) {
    for (int i = 0; i < 2; ++i) {
        if (watched != m_txtFoot[i]) continue;
        if (event->type() == QEvent::MouseButtonDblClick) {
            txtFoot_DblClick(i);
            return true;
        }
        if (event->type() == QEvent::FocusOut) txtFoot_LostFocus(i);
    }
    return OfficeScreen::eventFilter(watched, event);
}

void frmBg_Meeting::txtFoot_DblClick(int index) {
    if (!m_cmdOK->isVisible()) return;
    QLineEdit* box = m_txtFoot[index];
    box->setReadOnly(false);
    box->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    box->selectAll();
    box->setFocus();
}

void frmBg_Meeting::txtFoot_LostFocus(int index) {
    m_txtFoot[index]->setReadOnly(true);
    m_txtFoot[index]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
}

void frmBg_Meeting::showFields(const Recordset& rs) {
    m_txtFoot[0]->setText(rs.text(QStringLiteral("fFoot1")));
    m_txtFoot[1]->setText(rs.text(QStringLiteral("fFoot2")));
    m_txtFootnote[0]->setText(rs.text(QStringLiteral("fFootnote1")));
    m_txtFootnote[1]->setText(rs.text(QStringLiteral("fFootnote2")));
}

void frmBg_Meeting::clearFields() {
    for (int i = 0; i < 2; ++i) {
        m_txtFoot[i]->setText(m_txtFoot[i]->property("Tag").toString());
        m_txtFootnote[i]->clear();
    }
}

void frmBg_Meeting::setEditFields(bool editing) {
    for (int i = 0; i < 2; ++i) {
        m_txtFoot[i]->setEnabled(editing);
        m_txtFootnote[i]->setEnabled(editing);
    }
}

void frmBg_Meeting::saveRow(int id, const RowSnapshot& loaded) {
    meeting::Meeting m;
    m.date = m_dtpDate->date();
    m.title = m_txtTitle->text();
    m.content = StoredText(m_txtContent->toPlainText());
    m.foot1 = m_txtFoot[0]->text();
    m.foot2 = m_txtFoot[1]->text();
    m.host = m_txtFootnote[0]->text();
    m.cohost = m_txtFootnote[1]->text();
    m.filePath = m_txtPath->text();
    m.news = m_chkNews->isChecked();
    m.dept = m_cboDept->currentText();
    meeting::WriteMeeting(id, m, loaded);
    // Every save with the box ticked writes one more notice, without a question.
    if (m.news) office::ForwardNotice(m.date, meeting::NoticeText(m), m.dept);
}

} // namespace zq
