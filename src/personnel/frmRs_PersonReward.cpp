#include "frmRs_PersonReward.h"

#include "PersonRecordsData.h"
#include "printing/Print.h"
#include "services/ui/Grid.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/SaveOrTell.h"
#include "shell/Connection.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"

#include <QComboBox>
#include <QDate>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace zq {

namespace {
const QString kRemarkTitle = QStringLiteral("人事评语");
}

frmRs_PersonReward::frmRs_PersonReward(QWidget* parent)
    : PersonRecordScreen(QStringLiteral("历年评语"), parent)
    , m_combo1(new QComboBox(this))
    , m_remark(new QPlainTextEdit(this))
    , m_text2(new QLineEdit(this))
    , m_printGrid(new ZqGrid(this)) {
    setObjectName(QStringLiteral("frmRs_PersonReward"));
    const QString meed = QStringLiteral("奖惩记录");
    addGrid(SubGrid(QStringLiteral("tRsMeed"), QStringLiteral("fYear,Fyy,fjc"), {},
                    {{"fYear", QStringLiteral("时间"), 15, 30},
                     {"fYy", QStringLiteral("事件"), 26, 60},
                     {"fjc", QStringLiteral("奖励或处罚"), 15.25, 20}},
                    false, // only Enter on the last cell appends here, not Down
                    meed),
            QStringLiteral("Grid1"), QStringLiteral("Label1(4)"));
    addPrintOption(kRemarkTitle);

    m_combo1->setObjectName(QStringLiteral("Combo1"));
    m_remark->setObjectName(QStringLiteral("Grid2"));
    m_text2->setObjectName(QStringLiteral("Text2"));
    m_text2->setMaxLength(20);
    m_text2->installEventFilter(this);
    auto* title = new QLabel(kRemarkTitle, this);
    title->setObjectName(QStringLiteral("Label1(0)"));
    auto* bar = new QHBoxLayout;
    bar->addWidget(title);
    bar->addWidget(new QLabel(QStringLiteral("年份:"), this));
    bar->addWidget(m_combo1);
    bar->addSpacing(16);
    bar->addWidget(new QLabel(QStringLiteral("评定人:"), this));
    bar->addWidget(m_text2);
    bar->addStretch();
    body()->addLayout(bar);
    body()->addWidget(m_remark, 1);

    m_printGrid->setMaxCols(1);
    m_printGrid->setColWidth(1, 80);
    m_printGrid->setHeaderText(1, kRemarkTitle);
    m_printGrid->hide();

    connect(m_combo1, &QComboBox::activated, this, [this] { guarded([this] { Combo1_Click(); }); });
    const auto changed = [this] {
        if (!m_showing) m_dirty = true;
    };
    connect(m_remark, &QPlainTextEdit::textChanged, this, changed);
    connect(m_text2, &QLineEdit::textChanged, this, changed);
    // Enter in the appraiser goes on to the appraisal.
    connect(m_text2, &QLineEdit::returnPressed, m_remark, [this] { m_remark->setFocus(); });
}

void frmRs_PersonReward::load() {
    const bool edit = editing();
    m_remark->setReadOnly(!edit);
    m_text2->setEnabled(edit);
    CenterForm(this);
    const QStringList years = AppraisalYears(G().CurPersonCode, QDate::currentDate().year());
    m_combo1->clear();
    m_combo1->addItems(years);
    m_yearIndex = years.isEmpty() ? -1 : 0;
    m_combo1->setCurrentIndex(m_yearIndex);
    if (!years.isEmpty()) showYear(years.first());
    PersonRecordScreen::load();
}

void frmRs_PersonReward::showYear(const QString& year) {
    // Filling the boxes is no edit of the clerk's.
    m_showing = true;
    const Appraisal a = ReadAppraisal(G().CurPersonCode, year);
    m_remark->setPlainText(a.text);
    m_text2->setText(a.appraiser);
    m_loaded = a.loaded;
    m_showing = false;
    m_dirty = false;
}

void frmRs_PersonReward::Combo1_Click() {
    const int index = m_combo1->currentIndex();
    if (index == m_yearIndex) return;
    if (m_dirty && m_yearIndex > -1 &&
        ShowMsg(QStringLiteral("[人事评语]已有修改，是否存盘？"), vbOKCancel + vbQuestion) == vbOK) {
        // The text on show belongs to the year that was on show, not to the one just chosen.
        const QString shown = m_combo1->itemText(m_yearIndex);
        if (!SaveOrTell(this, [&] {
                Transaction t(conn());
                WriteAppraisal(m_code, shown, {m_remark->toPlainText(), m_text2->text(), m_loaded});
                t.commit();
            })) {
            m_combo1->setCurrentIndex(m_yearIndex);
            return;
        }
    }
    Hourglass wait;
    showYear(m_combo1->currentText());
    m_yearIndex = index;
}

void frmRs_PersonReward::save() {
    if (!saveGrid(0)) return;
    if (m_dirty && !SaveOrTell(this, [&] {
            Transaction t(conn());
            WriteAppraisal(m_code, m_combo1->currentText(),
                           {m_remark->toPlainText(), m_text2->text(), m_loaded});
            logSaved(kRemarkTitle);
            t.commit();
        }))
        return;
    accept();
}

QStringList frmRs_PersonReward::printItems(int part) const {
    QStringList items = PersonRecordScreen::printItems(part);
    if (part == 1)
        items << QStringLiteral("年份") << m_combo1->currentText() << QStringLiteral("评定人")
              << m_text2->text();
    return items;
}

void frmRs_PersonReward::printPart(int part) {
    if (part == 0) {
        PersonRecordScreen::printPart(part);
        return;
    }
    m_printGrid->setMaxRows(1);
    m_printGrid->setText(1, 1, m_remark->toPlainText());
    PrintGrid(printItems(part), m_printGrid, kRemarkTitle);
}

bool frmRs_PersonReward::eventFilter(QObject* watched, QEvent* event) {
    // The appraiser's box lights up while it has the focus.
    if (watched == m_text2 && m_text2->isEnabled()) {
        if (event->type() == QEvent::FocusIn) m_text2->setStyleSheet(QStringLiteral("background: #00ffff;"));
        if (event->type() == QEvent::FocusOut) m_text2->setStyleSheet(QString());
    }
    return PersonRecordScreen::eventFilter(watched, event);
}

} // namespace zq
