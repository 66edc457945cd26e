#include "frmRs_Goods.h"

#include "assets/LoanData.h"
#include "services/Lookups.h"
#include "services/ui/Grid.h"
#include "services/ui/GridColumns.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/NamedWidgets.h"
#include "services/ui/SaveOrTell.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/SqlText.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QStatusBar>

namespace zq {

namespace {
constexpr int kMaxLength[12] = {10, 12, 50, 50, 8, 10, 14, 3, 20, 0, 10, 50};
QDate firstOfMonth() {
    const QDate today = QDate::currentDate();
    return QDate(today.year(), today.month(), 1);
}
} // namespace

frmRs_Goods::frmRs_Goods(QWidget* parent)
    : SeekEntryScreen(parent, "frmRs_Goods", QStringLiteral("Label3"), "cmdOk", "cmdCancel") {
    for (int i = 0; i < 12; ++i) {
        QList<QWidget*> inputs;
        if (i == 9 || i == 10) {
            inputs << seekDate(QStringLiteral("DTPTime%1").arg(i == 9 ? 1 : 3))
                   << seekDate(QStringLiteral("DTPTime%1").arg(i == 9 ? 2 : 4));
        } else {
            inputs << seekBox(ArrayName("Text2", i), kMaxLength[i]);
            if (i >= 4 && i <= 7) inputs << seekBox(ArrayName("Text1", i - 4), kMaxLength[i]);
        }
        addSeekRow(i, inputs);
        if (i == 9)
            addEntryDate(9, QStringLiteral("DTPStart"));
        else
            addEntryBox(i, kMaxLength[i]);
    }
    // Cleared with the others; nothing else uses it.
    addEntryBox(12, 50)->hide();
    finishLayout();
}

QString frmRs_Goods::modelKey() const {
    return LoanModelKey(m_state);
}

QString frmRs_Goods::table() const {
    return LoanTable(m_state);
}

const QStringList& frmRs_Goods::fields() const {
    return LoanFields();
}

void frmRs_Goods::load() {
    for (const char* name : {"DTPTime1", "DTPTime3"})
        findChild<QDateEdit*>(QLatin1String(name))->setDate(firstOfMonth());
    for (const char* name : {"DTPTime2", "DTPTime4"})
        findChild<QDateEdit*>(QLatin1String(name))->setDate(QDate::currentDate());
    setWindowTitle(LoanCaption(m_state));
    m_sbar->setVisible(m_state != 1);
    m_fields = SetGridColumns(table(), m_grid, 0, 0);
    // Column 0 holds each loan's key for changing and deleting; the clerk counts the rows 1..n.
    m_grid->setNumberedRows(true);
    if (!m_fields.toLower().split(QLatin1Char(',')).contains(QStringLiteral("fid"))) {
        m_fields += QStringLiteral(",fID");
        m_grid->setMaxCols(m_grid->maxCols() + 1);
        m_grid->setColHidden(m_grid->maxCols(), true);
    }
    loadCaptions();
}

bool frmRs_Goods::prepareSeek() {
    const auto box = [this](int row, int input) {
        return qobject_cast<QLineEdit*>(m_seekInputs.value(row).value(input));
    };
    for (int i = 4; i <= 7; ++i)
        if (box(i, 1)->text().isEmpty()) m_check1[i]->setChecked(false);
    for (int i : {0, 1, 2, 3, 4, 5, 6, 7, 8, 11})
        if (box(i, 0)->text().isEmpty()) m_check1[i]->setChecked(false);
    return true;
}

bool frmRs_Goods::seekPaged(PagedQuery& query) {
    QVector<SeekInput> rows(12);
    for (int i = 0; i < 12; ++i) {
        SeekInput& r = rows[i];
        r.ticked = m_check1[i]->isChecked();
        const QList<QWidget*>& in = m_seekInputs[i];
        if (auto* a = qobject_cast<QLineEdit*>(in.value(0))) r.a = a->text();
        if (auto* b = qobject_cast<QLineEdit*>(in.value(1))) r.b = b->text();
        if (auto* d = qobject_cast<QDateEdit*>(in.value(0))) r.d1 = d->date();
        if (auto* d = qobject_cast<QDateEdit*>(in.value(1))) r.d2 = d->date();
    }
    // A common kind of goods matches tens of thousands of loans: they are read as they come into view.
    query = LoanSeekPaged(table(), m_fields, rows);
    return true;
}

QString frmRs_Goods::activeKey() const {
    return m_grid->text(std::max(1, m_grid->activeRow()), 0);
}

void frmRs_Goods::startAdding() {
    m_key.clear();
    m_loadedRow.clear();
    m_entryDates[9]->setDate(QDate::currentDate());
}

bool frmRs_Goods::startChanging() {
    m_key = activeKey();
    m_loadedRow = ReadLoan(table(), m_key);
    if (m_loadedRow.isEmpty()) {
        tell(QStringLiteral("没找到相关记录！"));
        return true;
    }
    const QStringList& f = LoanFields();
    for (int i = 0; i < 12; ++i) {
        QString v = m_loadedRow.value(f.at(i).toLower());
        if (i == 4 || i == 7) v = QString::number(Val(v), 'f', 0);
        if (i == 5 || i == 6) v = QString::number(Val(v), 'f', 2);
        setEntryText(i, i == 9 || i == 10 ? v.left(10) : v);
    }
    return true;
}

void frmRs_Goods::formatMoney(int index) {
    QLineEdit* box = entryBox(index);
    if (IsNumericText(box->text())) box->setText(QString::number(Val(box->text()), 'f', 2));
}

void frmRs_Goods::entryFocused(int index) {
    QLineEdit* box = entryBox(index);
    // An empty amount offers its zero selected, as a date box offers today: what the clerk types
    // replaces it.
    if (index == 4 || index == 7) OfferText(box, QStringLiteral("0"));
    if (index == 5 || index == 6) {
        OfferText(box, QStringLiteral("0.00"));
        formatMoney(index);
    }
}

void frmRs_Goods::entryEnter(int index) {
    if (index == 5 || index == 6) formatMoney(index);
}

QString frmRs_Goods::entryLeft(int index) {
    // An amount stands as it is stored, whichever way the clerk leaves its box.
    if (index == 5 || index == 6) formatMoney(index);
    if (index == 4 || index == 5) {
        bool tooLarge = false;
        entryBox(6)->setText(LoanSubtotal(entryText(4), entryText(5), &tooLarge));
        if (tooLarge) tell(QStringLiteral("小计金额数值太大 !"));
    }
    if (index == 10 && !entryText(10).isEmpty() && !ParseDate(entryText(10)).isValid()) {
        const QString today = QDate::currentDate().toString(Qt::ISODate);
        entryBox(10)->setText(today);
        return today + QStringLiteral("日期格式输入错误,应如:");
    }
    return {};
}

void frmRs_Goods::cmdOk_Click() {
    if (!entryFreeOfQuotes()) return;
    LoanEntry e;
    for (int i = 0; i < 12; ++i)
        e.fields[i] = i == 9 ? QString() : entryText(i);
    e.loanDate = m_entryDates[9]->date();
    if (!passes(CheckLoanEntry(e, captions()))) return;
    const bool adding = m_mode == 1;
    if (!confirm(adding ? QStringLiteral("确定：新增当前记录？") : QStringLiteral("确定：修改当前记录？"),
                 QStringLiteral("必须明确")))
        return;
    if (!GetPersonState(e.fields[0]) &&
        !confirm(e.fields[1] + QStringLiteral(" 此人已离职,是否有权借领物品!")))
        return;
    if (!SaveOrTell(this, [&] { SaveLoan(table(), m_mode, m_key, e, m_loadedRow); })) return;
    tell(QStringLiteral("存盘完毕!"), 64);
    if (adding) {
        clearEntry();
        entryBox(0)->setFocus();
    } else {
        cmdCancel_Click();
        cmdSeek_Click();
    }
}

void frmRs_Goods::deleteActive() {
    const int row = std::max(1, m_grid->activeRow());
    const QString key = m_grid->text(row, 0);
    const RowSnapshot loan = ReadLoan(table(), key);
    if (loan.isEmpty()) {
        tell(QStringLiteral("没找到相关记录,删除失败！"));
        return;
    }
    if (loan.value(QStringLiteral("backtime")).isEmpty()) {
        tell(QStringLiteral("此物尚未归还,不能删除！"));
        return;
    }
    if (!confirm(QStringLiteral("真的要删除物品名称为 ") + loan.value(QStringLiteral("goodsname")) +
                 QStringLiteral(" 的记录吗？")))
        return;
    if (!SaveOrTell(this, [&] { DeleteLoan(table(), key); })) return;
    m_grid->removeRow(row);
}

} // namespace zq
