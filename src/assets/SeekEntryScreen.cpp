#include "SeekEntryScreen.h"

#include "assets/LoanData.h"
#include "printing/Print.h"
#include "services/InputAids.h"
#include "services/PagedRows.h"
#include "services/ui/BriefDialog.h"
#include "services/ui/GridExport.h"
#include "services/ui/Grid.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/NamedWidgets.h"
#include "services/ui/SaveOrTell.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/Rights.h"
#include "shell/ui/Commands.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QStatusBar>
#include <QVBoxLayout>

namespace zq {

namespace {

QDateEdit* dateEdit(QWidget* parent, const QString& name) {
    auto* d = named(new QDateEdit(QDate::currentDate(), parent), name);
    d->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    d->setCalendarPopup(true);
    return d;
}

} // namespace

SeekEntryScreen::SeekEntryScreen(QWidget* parent, const char* objectName, const QString& labelName,
                                 const char* okName, const char* cancelName)
    : ScreenDialog(parent)
    , m_labelName(labelName) {
    setObjectName(QLatin1String(objectName));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    m_cmdSeek = NamedButton(this, QStringLiteral("cmdSeek"), QStringLiteral("查询(&S)"));
    m_cmdAdd = NamedButton(this, QStringLiteral("cmdAdd"), QStringLiteral("新增(&A)"));
    m_cmdChg = NamedButton(this, QStringLiteral("cmdChg"), QStringLiteral("修改(&C)"));
    m_cmdDEL = NamedButton(this, QStringLiteral("cmdDEL"), QStringLiteral("删除(&D)"));
    m_cmdPrint = NamedButton(this, QStringLiteral("cmdPrint"), QStringLiteral("打印(&P)"));
    m_cmdQuit = NamedButton(this, QStringLiteral("cmdQuit"), QStringLiteral("退出>>"));
    m_cmdStaff = NamedButton(this, QStringLiteral("cmdStaff"), QStringLiteral("选择员工"));
    m_seekPanel = named(new QFrame(this), QStringLiteral("fraSeek"));
    m_seekPanel->setFrameShape(QFrame::StyledPanel);
    m_seekGrid = new QGridLayout(m_seekPanel);
    m_seekGrid->setContentsMargins(6, 4, 6, 4);
    m_grid = named(new ZqGrid(this), QStringLiteral("Grid1"));
    m_grid->setRowSelection(true);
    m_grid->setReadOnly(true);
    EnableGridExport(m_grid, [this] { return windowTitle(); });

    m_pict = named(new QFrame(this), QStringLiteral("Pict"));
    m_pict->setFrameShape(QFrame::StyledPanel);
    m_entryGrid = new QGridLayout(m_pict);
    m_cmdStaff2 = NamedButton(m_pict, QStringLiteral("cmdStaff2"), QStringLiteral("选择员工"));
    m_cmdOk = NamedButton(m_pict, QLatin1String(okName), QStringLiteral("确定(&O)"));
    m_cmdCancel = NamedButton(m_pict, QLatin1String(cancelName), QStringLiteral("取消>>"));

    m_pictTag = named(new QFrame(this), QStringLiteral("pictTag"));
    m_pictTag->setFrameShape(QFrame::StyledPanel);
    auto* tagRow = new QHBoxLayout(m_pictTag);
    m_txtLblTag = named(new QLineEdit(m_pictTag), QStringLiteral("txtLblTag"));
    auto* cmdItemSel = NamedButton(m_pictTag, QStringLiteral("cmdItemSel"), QStringLiteral("..."));
    auto* cmdItem = NamedButton(m_pictTag, QStringLiteral("cmdItem"), QStringLiteral("确定"));
    auto* cmdItemCancel = NamedButton(m_pictTag, QStringLiteral("cmdItemCancel"), QStringLiteral("取消"));
    tagRow->addWidget(named(new QLabel(QStringLiteral("备选项目:"), m_pictTag), QStringLiteral("lblTag")));
    for (QWidget* w : std::initializer_list<QWidget*>{m_txtLblTag, cmdItemSel, cmdItem, cmdItemCancel})
        tagRow->addWidget(w);
    m_pictTag->hide();
    m_sbar = named(new QStatusBar(this), QStringLiteral("SBar1"));
    m_sbar->setSizeGripEnabled(false);

    const auto wire = [this](QPushButton* b, void (SeekEntryScreen::*handler)()) {
        connect(b, &QPushButton::clicked, this,
                [this, handler] { guarded([this, handler] { (this->*handler)(); }); });
    };
    wire(m_cmdSeek, &SeekEntryScreen::cmdSeek_Click);
    wire(m_cmdAdd, &SeekEntryScreen::cmdAdd_Click);
    wire(m_cmdChg, &SeekEntryScreen::cmdChg_Click);
    wire(m_cmdDEL, &SeekEntryScreen::cmdDEL_Click);
    wire(m_cmdPrint, &SeekEntryScreen::cmdPrint_Click);
    wire(m_cmdStaff, &SeekEntryScreen::cmdStaff_Click);
    wire(m_cmdStaff2, &SeekEntryScreen::cmdStaff2_Click);
    wire(m_cmdOk, &SeekEntryScreen::cmdOk_Click);
    wire(m_cmdCancel, &SeekEntryScreen::cmdCancel_Click);
    wire(cmdItemSel, &SeekEntryScreen::cmdItemSel_Click);
    wire(cmdItem, &SeekEntryScreen::cmdItem_Click);
    wire(cmdItemCancel, &SeekEntryScreen::cmdItemCancel_Click);
    connect(m_cmdQuit, &QPushButton::clicked, this, [this] { QDialog::reject(); });
    connect(m_grid, &ZqGrid::dblClick, this, [this](int, int row) {
        if (row > 0 && m_cmdChg->isEnabled()) guarded([this] { cmdChg_Click(); });
    });
}

QLineEdit* SeekEntryScreen::seekBox(const QString& name, int maxLength) {
    auto* box = named(new QLineEdit(m_seekPanel), name);
    attachKeyFilter(box, maxLength);
    wireBox(box);
    return box;
}

QDateEdit* SeekEntryScreen::seekDate(const QString& name) {
    return dateEdit(m_seekPanel, name);
}

QComboBox* SeekEntryScreen::seekOperators(const QString& name) {
    auto* combo = named(new QComboBox(m_seekPanel), name);
    combo->addItems({QStringLiteral(">"), QStringLiteral("<"), QStringLiteral(">="), QStringLiteral("<="),
                     QStringLiteral("=")});
    combo->setCurrentIndex(0);
    return combo;
}

void SeekEntryScreen::addSeekRow(int index, const QList<QWidget*>& inputs) {
    auto* check = named(new QCheckBox(m_seekPanel), ArrayName("Check1", index));
    m_check1[index] = check;
    m_seekInputs[index] = inputs;
    // Three rows to a column of the panel.
    const int place = m_check1.size() - 1;
    const int row = place % 4;
    const int col = (place / 4) * 3;
    m_seekGrid->addWidget(check, row, col);
    auto* cell = new QHBoxLayout;
    for (QWidget* w : inputs) {
        w->setParent(m_seekPanel);
        cell->addWidget(w, 1);
    }
    m_seekGrid->addLayout(cell, row, col + 1);
    connect(check, &QCheckBox::toggled, this, [this, index](bool on) {
        if (!m_inputsFollowTicks) return;
        for (QWidget* w : m_seekInputs.value(index))
            w->setEnabled(on);
        if (on && !m_seekInputs.value(index).isEmpty()) m_seekInputs.value(index).last()->setFocus();
    });
}

QLineEdit* SeekEntryScreen::addEntryBox(int index, int maxLength) {
    auto* box = named(new QLineEdit(m_pict), ArrayName("Text3", index));
    attachKeyFilter(box, maxLength);
    box->setProperty("entryIndex", index);
    wireBox(box);
    m_text3[index] = box;
    return box;
}

QDateEdit* SeekEntryScreen::addEntryDate(int index, const QString& name) {
    auto* d = dateEdit(m_pict, name);
    m_entryDates[index] = d;
    return d;
}

void SeekEntryScreen::wireBox(QLineEdit* box) {
    box->installEventFilter(this);
}

void SeekEntryScreen::finishLayout() {
    // Entry boxes in two columns of label and box.
    const int count = std::max(m_text3.isEmpty() ? 0 : m_text3.lastKey(),
                               m_entryDates.isEmpty() ? 0 : m_entryDates.lastKey()) +
                      1;
    const int half = (count + 1) / 2;
    for (int i = 0; i < count; ++i) {
        QWidget* input = m_text3.contains(i) ? static_cast<QWidget*>(m_text3[i]) : m_entryDates.value(i);
        if (!input || input->isHidden()) continue;
        auto* lbl = named(new QLabel(m_pict), m_labelName + QStringLiteral("(%1)").arg(i));
        lbl->installEventFilter(this);
        lbl->setProperty("labelIndex", i);
        m_labels[i] = lbl;
        const int row = i % half;
        const int col = (i / half) * 2;
        m_entryGrid->addWidget(lbl, row, col);
        m_entryGrid->addWidget(input, row, col + 1);
    }
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_cmdStaff2);
    buttons->addStretch();
    buttons->addWidget(m_cmdOk);
    buttons->addWidget(m_cmdCancel);
    m_entryGrid->addLayout(buttons, half, 0, 1, 4);
    m_entryGrid->setColumnStretch(1, 1);
    m_entryGrid->setColumnStretch(3, 1);
    m_pict->hide();

    auto* top = new QHBoxLayout;
    for (QPushButton* b : {m_cmdSeek, m_cmdStaff, m_cmdAdd, m_cmdChg, m_cmdDEL, m_cmdPrint})
        top->addWidget(b);
    top->addStretch();
    top->addWidget(m_cmdQuit);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 0);
    layout->addWidget(m_seekPanel);
    layout->addLayout(top);
    layout->addWidget(m_pict);
    layout->addWidget(m_pictTag);
    layout->addWidget(m_grid, 1);
    layout->addWidget(m_sbar);
    for (auto it = m_check1.begin(); it != m_check1.end(); ++it)
        emit it.value()->toggled(false);
    orderTabs();
    resize(980, 640);
}

void SeekEntryScreen::orderTabs() {
    // Tab (and Enter, which sends it) goes through a panel in the order it is read: the search rows,
    // the buttons, then the entry boxes by index. The boxes are made row by row for both panels,
    // which left the entry's next box in the search panel.
    QList<QWidget*> chain;
    for (auto it = m_check1.begin(); it != m_check1.end(); ++it)
        chain << it.value() << m_seekInputs.value(it.key());
    chain << m_cmdSeek << m_cmdStaff << m_cmdAdd << m_cmdChg << m_cmdDEL << m_cmdPrint << m_cmdQuit;
    QMap<int, QWidget*> entries;
    for (auto it = m_text3.begin(); it != m_text3.end(); ++it)
        if (!it.value()->isHidden()) entries.insert(it.key(), it.value());
    for (auto it = m_entryDates.begin(); it != m_entryDates.end(); ++it)
        entries.insert(it.key(), it.value());
    chain << entries.values() << m_cmdStaff2 << m_cmdOk << m_cmdCancel << m_grid;
    for (int i = 1; i < chain.size(); ++i)
        setTabOrder(chain.at(i - 1), chain.at(i));
}

void SeekEntryScreen::reject() {
    // Esc closes the floating panel first.
    if (m_pict->isVisible())
        cmdCancel_Click();
    else
        QDialog::reject();
}

bool SeekEntryScreen::tell(const QString& message, int style) {
    ShowMsg(message, style, windowTitle());
    return false;
}

bool SeekEntryScreen::passes(const EntryCheck& check) {
    if (check.message.isEmpty()) return true;
    tell(check.message, check.style);
    if (QLineEdit* box = m_text3.value(check.box)) {
        box->setFocus();
        box->selectAll();
    }
    return false;
}

bool SeekEntryScreen::entryFreeOfQuotes() {
    for (QLineEdit* box : std::as_const(m_text3)) {
        if (box->isHidden() || !box->text().contains(QLatin1Char('\''))) continue;
        tell(quoteMessage(), quoteStyle());
        box->setFocus();
        box->selectAll();
        return false;
    }
    return true;
}

bool SeekEntryScreen::confirm(const QString& message, const QString& title) {
    return ShowMsg(message, vbYesNo + vbQuestion, title.isEmpty() ? windowTitle() : title) == vbYes;
}

QStringList SeekEntryScreen::captions() const {
    QStringList out;
    for (auto it = m_labels.begin(); it != m_labels.end(); ++it)
        out << it.value()->text();
    return out;
}

void SeekEntryScreen::loadCaptions() {
    const QVector<LabelCaption> rows = LoadLabelCaptions(table());
    for (int i = 0; i < rows.size(); ++i) {
        if (QLabel* l = m_labels.value(i)) {
            l->setText(rows.at(i).caption);
            l->setProperty("Tag", rows.at(i).briefType);
        }
        if (QCheckBox* c = m_check1.value(i)) c->setText(rows.at(i).caption);
    }
}

QString SeekEntryScreen::entryText(int index) const {
    if (QLineEdit* box = m_text3.value(index)) return box->text();
    if (QDateEdit* d = m_entryDates.value(index)) return d->date().toString(Qt::ISODate);
    return {};
}

void SeekEntryScreen::setEntryText(int index, const QString& text) {
    if (QLineEdit* box = m_text3.value(index)) box->setText(text);
    if (QDateEdit* d = m_entryDates.value(index)) {
        const QDate date = ParseDate(text);
        d->setDate(date.isValid() ? date : QDate::currentDate());
    }
}

void SeekEntryScreen::clearEntry() {
    for (QLineEdit* box : std::as_const(m_text3))
        box->clear();
}

void SeekEntryScreen::setEntryMode(bool entry) {
    for (QPushButton* b : {m_cmdAdd, m_cmdChg, m_cmdDEL, m_cmdSeek, m_cmdPrint})
        b->setEnabled(!entry);
    m_pict->setVisible(entry);
    if (!entry) m_pictTag->hide();
}

void SeekEntryScreen::cmdSeek_Click() {
    if (!prepareSeek()) return;
    PagedQuery query;
    if (seekPaged(query)) {
        Hourglass wait;
        // Counted before the grid changes: a statement the database refuses leaves it as it was.
        auto rows = std::make_unique<PagedRows>(std::move(query));
        m_grid->setMaxRows(0);
        if (listMatches(rows->count())) m_grid->loadPaged(std::move(rows));
        return;
    }
    const QString sql = seekSql();
    Hourglass wait;
    Recordset rs(conn(), sql, Cursor::Static);
    m_grid->setMaxRows(0);
    if (!listMatches(rs.recordCount())) return;
    m_grid->setRedraw(false);
    fillGrid(rs);
    m_grid->setRedraw(true);
}

bool SeekEntryScreen::listMatches(int n) {
    m_sbar->showMessage(QStringLiteral("共 %1 条记录").arg(n));
    if (n == 0) {
        tell(QStringLiteral("没有符合条件的记录！"));
        return false;
    }
    return n <= rowLimit() || ShowMsg(QStringLiteral("要列示的记录太多,是否增加过滤条件!"), vbYesNo + vbQuestion,
                                      windowTitle()) != vbYes;
}

void SeekEntryScreen::cmdAdd_Click() {
    if (CheckModel(modelKey(), 1) == 0) return;
    m_mode = 1;
    setEntryMode(true);
    clearEntry();
    startAdding();
    m_text3.value(0)->setFocus();
}

void SeekEntryScreen::cmdChg_Click() {
    if (CheckModel(modelKey(), 2) == 0) return;
    if (m_grid->maxRows() <= 0) return;
    if (!startChanging()) return;
    m_mode = 2;
    setEntryMode(true);
    m_text3.value(0)->setFocus();
}

void SeekEntryScreen::cmdDEL_Click() {
    if (CheckModel(modelKey(), 3) == 0) return;
    if (m_grid->maxRows() <= 0) return;
    deleteActive();
}

void SeekEntryScreen::cmdPrint_Click() {
    G().showmode = 1;
    PrintGrid({}, m_grid, windowTitle(), QString());
}

void SeekEntryScreen::cmdCancel_Click() {
    m_mode = 0;
    setEntryMode(false);
}

namespace {
// The pick of the staff picker, with the person in hand kept as it was.
bool pickPerson(QWidget* parent, QString& code, QString& name) {
    if (!hasForm(QStringLiteral("frmRs_list"))) return false;
    const QString keptCode = G().CurPersonCode, keptName = G().CurPersonName;
    G().CurPersonCode.clear();
    G().CurPersonName.clear();
    openForm(QStringLiteral("frmRs_list"), parent);
    code = G().CurPersonCode;
    name = G().CurPersonName;
    G().CurPersonCode = keptCode;
    G().CurPersonName = keptName;
    return !code.isEmpty();
}
} // namespace

void SeekEntryScreen::cmdStaff_Click() {
    QString code, name;
    if (!pickPerson(this, code, name)) return;
    for (int i : {0, 1}) {
        auto* box = qobject_cast<QLineEdit*>(m_seekInputs.value(i).value(0));
        if (!box) continue;
        m_check1.value(i)->setChecked(i == 0);
        box->setText(i == 0 ? code : name);
    }
}

void SeekEntryScreen::cmdStaff2_Click() {
    QString code, name;
    if (!pickPerson(this, code, name)) return;
    m_text3.value(0)->setText(code);
    m_text3.value(1)->setText(name);
}

void SeekEntryScreen::Label_DblClick(int index) {
    QLabel* l = m_labels.value(index);
    QLineEdit* box = m_text3.value(index);
    // Dates take no brief value.
    if (!l || !box) return;
    const QString tag = l->property("Tag").toString();
    if (tag.isEmpty()) return;
    const QString value = ShowBriefDialog(QString(), tag, 2);
    if (!value.isEmpty()) box->setText(LimitLength(value, box->maxLength(), QString()));
}

void SeekEntryScreen::Label_RightClick(int index) {
    if (index == 0 || index == 1) {
        keyLabelRightClick();
        return;
    }
    QLabel* l = m_labels.value(index);
    if (!l) return;
    m_tagLabel = index;
    m_pictTag->findChild<QLabel*>(QStringLiteral("lblTag"))->setText(l->text());
    m_txtLblTag->setText(l->property("Tag").toString());
    m_pictTag->show();
}

void SeekEntryScreen::cmdItemSel_Click() {
    const QString code = ShowBriefDialog(QString(), QStringLiteral("99999999"), 1);
    if (!code.isEmpty()) m_txtLblTag->setText(code);
}

void SeekEntryScreen::cmdItem_Click() {
    if (QLabel* l = m_labels.value(m_tagLabel)) l->setProperty("Tag", m_txtLblTag->text());
    QStringList types;
    for (int i = 0; i < fields().size(); ++i)
        types << (m_labels.value(i) ? m_labels.value(i)->property("Tag").toString() : QString());
    if (!SaveOrTell(this, [&] { SaveBriefTypes(table(), fields(), types); })) return;
    m_pictTag->hide();
}

void SeekEntryScreen::cmdItemCancel_Click() {
    m_pictTag->hide();
}

bool SeekEntryScreen::eventFilter(QObject* watched, QEvent* event) {
    if (auto* l = qobject_cast<QLabel*>(watched)) {
        const int i = l->property("labelIndex").toInt();
        if (event->type() == QEvent::MouseButtonDblClick) {
            guarded([&] { Label_DblClick(i); });
            return true;
        }
        if (event->type() == QEvent::MouseButtonPress &&
            static_cast<QMouseEvent*>(event)->button() == Qt::RightButton) {
            guarded([&] { Label_RightClick(i); });
            return true;
        }
        return false;
    }
    auto* box = qobject_cast<QLineEdit*>(watched);
    if (!box) return false;
    const QVariant entry = box->property("entryIndex");
    if (event->type() == QEvent::FocusIn && entry.isValid()) {
        entryFocused(entry.toInt());
    } else if (event->type() == QEvent::FocusOut && LeavingJudged(event)) {
        // A quote never reaches a statement: the box refuses it on leaving, and the save again.
        if (box->text().contains(QLatin1Char('\''))) {
            RefuseLeaving(box, [this] { ShowMsg(quoteMessage(), quoteStyle(), windowTitle()); });
        } else if (entry.isValid()) {
            const QString refusal = entryLeft(entry.toInt());
            if (!refusal.isEmpty()) RefuseLeaving(box, [this, refusal] { tell(refusal); });
        }
    } else if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const bool enter = key == Qt::Key_Return || key == Qt::Key_Enter;
        if (entry.isValid()) {
            if (key == Qt::Key_Up) {
                focusNextPrevChild(false);
                return true;
            }
            if (enter || key == Qt::Key_Down) {
                const int i = entry.toInt();
                if ((i == 0 || i == 1) && !box->text().isEmpty()) {
                    QString found;
                    guarded([&] {
                        found = i == 0 ? PersonNameOfCode(box->text(), servingOnlyLookup())
                                       : PersonCodeOfName(box->text());
                    });
                    if (found.isEmpty()) {
                        tell(QStringLiteral("此人个人档案不存在,请查证!"));
                        box->selectAll();
                        return true;
                    }
                    m_text3.value(1 - i)->setText(found);
                }
                entryEnter(i);
                focusNextPrevChild(true);
                return true;
            }
        } else if (enter) {
            focusNextPrevChild(true);
            return true;
        }
    }
    return false;
}

} // namespace zq
