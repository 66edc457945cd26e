#include "frmRs_Identify.h"

#include "assets/LoanData.h"
#include "services/ui/Grid.h"
#include "services/ui/GridColumns.h"
#include "services/ui/NamedWidgets.h"
#include "services/ui/SaveOrTell.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/SqlText.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QHash>
#include <QLineEdit>

namespace zq {

namespace {
constexpr int kEntryLength[9] = {10, 10, 30, 20, 30, 0, 0, 20, 10};
constexpr int kSeekLength[9] = {10, 10, 20, 20, 20, 0, 0, 20, 10};
} // namespace

frmRs_Identify::frmRs_Identify(QWidget* parent)
    : SeekEntryScreen(parent, "frmRs_Identify", QStringLiteral("Label4"), "cmdSave", "cmdSaveCancel") {
    setWindowTitle(QStringLiteral("持证管理"));
    m_inputsFollowTicks = true;
    for (int i = 0; i < 9; ++i) {
        QList<QWidget*> inputs;
        if (i == 5)
            inputs << seekDate(QStringLiteral("DtpTime1")) << seekDate(QStringLiteral("DTPTime2"));
        else if (i == 6)
            inputs << seekOperators(QStringLiteral("Combo1")) << seekDate(QStringLiteral("DTPUser2"));
        else if (i == 8)
            inputs << seekOperators(QStringLiteral("Combo2"))
                   << seekBox(QStringLiteral("Text4(8)"), kSeekLength[8]);
        else
            inputs << seekBox(ArrayName("Text4", i), kSeekLength[i]);
        addSeekRow(i, inputs);
        if (i == 5)
            addEntryDate(5, QStringLiteral("DTPStart"));
        else if (i == 6)
            addEntryDate(6, QStringLiteral("DTPUser"));
        else
            addEntryBox(i, kEntryLength[i]);
    }
    // A ticked fee row offers a value to compare with.
    connect(m_check1[8], &QCheckBox::toggled, this, [this](bool on) {
        auto* box = qobject_cast<QLineEdit*>(m_seekInputs[8].value(1));
        if (on && box->text().isEmpty()) box->setText(QStringLiteral("0.00"));
    });
    finishLayout();
}

const QStringList& frmRs_Identify::fields() const {
    return CardFields();
}

void frmRs_Identify::load() {
    const QDate today = QDate::currentDate();
    findChild<QDateEdit*>(QStringLiteral("DtpTime1"))->setDate(QDate(today.year(), today.month(), 1));
    m_fields = SetGridColumns(table(), m_grid, 0, 1);
    loadCaptions();
}

bool frmRs_Identify::prepareSeek() {
    for (int i = 0; i < 9; ++i) {
        if (i == 5 || i == 6) continue;
        auto* box = qobject_cast<QLineEdit*>(m_seekInputs[i].value(i == 8 ? 1 : 0));
        if (m_check1[i]->isChecked() && box->text().isEmpty()) m_check1[i]->setChecked(false);
        if (box->text().contains(QLatin1Char('\''))) {
            tell(QStringLiteral("您不能输入单引号,请删除!"), 64);
            box->setFocus();
            box->selectAll();
            return false;
        }
        if (i == 8 && m_check1[8]->isChecked() && !IsNumericText(box->text())) {
            tell(QStringLiteral("培训费用输入错误,应为数字型!"));
            box->setText(QStringLiteral("0.00"));
            return false;
        }
    }
    return true;
}

QString frmRs_Identify::seekSql() {
    QVector<SeekInput> rows(9);
    for (int i = 0; i < 9; ++i) {
        SeekInput& r = rows[i];
        r.ticked = m_check1[i]->isChecked();
        for (QWidget* w : m_seekInputs[i]) {
            if (auto* box = qobject_cast<QLineEdit*>(w)) r.a = box->text();
            if (auto* combo = qobject_cast<QComboBox*>(w)) r.op = combo->currentText();
            if (auto* d = qobject_cast<QDateEdit*>(w)) (r.d1.isValid() ? r.d2 : r.d1) = d->date();
        }
    }
    return CardSeekSql(rows);
}

void frmRs_Identify::fillGrid(Recordset& rs) {
    // The departments of the certificates' persons, read in one go.
    QStringList codes;
    for (rs.moveFirst(); !rs.eof(); rs.moveNext())
        codes << rs.text(QStringLiteral("fcode"));
    codes.removeDuplicates();
    QHash<QString, QString> depts;
    for (int from = 0; from < codes.size(); from += 500) {
        const QStringList part = codes.mid(from, 500);
        QVariantList binds;
        for (const QString& c : part)
            binds << c;
        for (const QStringList& row :
             ReadRows(QStringLiteral("select fcode,fbmcode from trsbasic where fcode in (") + placeholders(part.size()) +
                          QLatin1Char(')'),
                      binds))
            depts.insert(row.value(0), row.value(1));
    }
    const QStringList list = m_fields.split(QLatin1Char(','));
    QVector<QStringList> rows;
    m_rowsRead.clear();
    for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
        m_rowsRead << Snapshot(rs);
        QStringList cells;
        const auto dept = depts.constFind(rs.text(QStringLiteral("fcode")));
        if (dept != depts.constEnd() && !dept->isEmpty() && dept->contains(G().DeptScope))
            for (const QString& f : list) {
                const QString v = rs.text(f);
                cells << (f.endsWith(QLatin1String("time"), Qt::CaseInsensitive) ? v.left(10) : v);
            }
        rows << cells;
    }
    m_grid->loadRows(rows);
}

void frmRs_Identify::startAdding() {
    m_pict->setProperty("Tag", 1);
    m_loadedRow.clear();
    m_entryDates[5]->setDate(QDate::currentDate());
    m_entryDates[6]->setDate(QDate::currentDate());
}

bool frmRs_Identify::startChanging() {
    const int row = std::max(1, m_grid->activeRow());
    if (m_grid->text(row, 1).isEmpty()) {
        tell(QStringLiteral("请先选择要修改的记录！"), 0);
        return false;
    }
    m_pict->setProperty("Tag", 2);
    // What the grid shows is what a save must still find, or another client changed it meanwhile.
    m_loadedRow = m_rowsRead.value(row - 1);
    const QStringList list = m_fields.toLower().split(QLatin1Char(','));
    for (int i = 0; i < 9; ++i) {
        const int col = list.indexOf(CardFields().at(i).toLower()) + 1;
        if (col > 0) setEntryText(i, m_grid->text(row, col));
    }
    return true;
}

void frmRs_Identify::keyLabelRightClick() {
    tell(QStringLiteral("无须备选项目设置!"), 64);
}

QString frmRs_Identify::entryLeft(int index) {
    if (index != 8) return {};
    QLineEdit* box = entryBox(8);
    if (!box->text().isEmpty() && !IsNumericText(box->text())) return QStringLiteral("培训费用必须为数字型!");
    box->setText(QString::number(Val(box->text()), 'f', 2));
    return {};
}

void frmRs_Identify::cmdOk_Click() {
    if (!entryFreeOfQuotes()) return;
    CardEntry e;
    for (int i = 0; i < 9; ++i)
        e.fields[i] = entryText(i);
    if (!passes(CheckCardEntry(e, captions()))) return;
    if (ShowMsg(QStringLiteral("确定：保存当前记录？"), vbYesNo + vbQuestion) != vbYes) return;
    if (!SaveOrTell(this, [&] { SaveCard(e, m_loadedRow); })) return;
    tell(QStringLiteral("存盘完毕!"), 64);
    if (m_pict->property("Tag").toInt() == 2) {
        cmdCancel_Click();
        cmdSeek_Click();
    } else {
        clearEntry();
        entryBox(0)->setFocus();
    }
}

void frmRs_Identify::deleteActive() {
    const int row = std::max(1, m_grid->activeRow());
    const QStringList list = m_fields.toLower().split(QLatin1Char(','));
    const QString name = m_grid->text(row, list.indexOf(QStringLiteral("fname")) + 1);
    const QString number = m_grid->text(row, list.indexOf(QStringLiteral("cardcode")) + 1);
    const RowSnapshot card = ReadCardByNumber(number);
    if (card.isEmpty()) {
        tell(QStringLiteral("没找到相关记录,删除失败！"));
        return;
    }
    if (!confirm(name + QStringLiteral(": 真的要删除证件号码为[") + number + QStringLiteral("]的记录吗？")))
        return;
    if (!SaveOrTell(this, [&] { DeleteCard(card.value(QStringLiteral("fcode")), number); })) return;
    m_grid->removeRow(row);
    if (row - 1 < m_rowsRead.size()) m_rowsRead.remove(row - 1);
}

} // namespace zq
