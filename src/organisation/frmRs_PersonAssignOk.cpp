#include "frmRs_PersonAssignOk.h"

#include "PersonAssignData.h"
#include "services/Lookups.h"
#include "services/ui/ComboLookups.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/SaveOrTell.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Rights.h"
#include "shell/ui/Commands.h"

#include <functional>
#include <QComboBox>
#include <QDateEdit>
#include <QDynamicPropertyChangeEvent>
#include <QFocusEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>
#include <QVBoxLayout>

namespace zq {

namespace {

const char* const kCaptions[11] = {"调令号：", "姓名：",   "工号：",   "原单位：", "原部门：", "原职务：",
                                   "现单位：", "现部门：", "现职务：", "负责人：", "填表人："};
// Entry limits of the text boxes; 0 where the place is a combo box.
const int kMaxLength[11] = {10, 10, 10, 0, 0, 20, 0, 0, 20, 10, 10};
// Row and column of each label: the old place on the left, the new place beside it, as the paper
// order reads.
const int kPlace[11][2] = {{0, 0}, {1, 0}, {1, 2}, {2, 0}, {3, 0}, {4, 0},
                           {2, 2}, {3, 2}, {4, 2}, {5, 0}, {5, 2}};

QComboBox* makeCombo(QWidget* parent, const char* name) {
    auto* c = new QComboBox(parent);
    c->setObjectName(QLatin1String(name));
    c->setEditable(true);
    c->setInsertPolicy(QComboBox::NoInsert); // Enter moves on; it never adds what was typed
    return c;
}

// Fills a combo's list without losing the text the caller already put in it.
void fillKeepingText(QComboBox* combo, const std::function<void(QComboBox*)>& fill) {
    const QString text = combo->currentText();
    fill(combo);
    combo->setCurrentIndex(-1);
    combo->setEditText(text);
}

void selectAll(QWidget* w) {
    if (auto* box = qobject_cast<QLineEdit*>(w))
        box->selectAll();
    else if (auto* combo = qobject_cast<QComboBox*>(w); combo && combo->lineEdit())
        combo->lineEdit()->selectAll();
}

bool isNumber(const QString& text) {
    static const QRegularExpression number(QStringLiteral("^\\s*[+-]?(\\d+\\.?\\d*|\\.\\d+)\\s*$"));
    return number.match(text).hasMatch();
}

QString deptCodeOf(const QString& name) {
    try {
        return CodeFromName(QStringLiteral("tRs_Bm"), name);
    } catch (const DbError&) {
        return {}; // a name with a quote names no department
    }
}

} // namespace

frmRs_PersonAssignOk::frmRs_PersonAssignOk(QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("frmRs_PersonAssignOk"));
    setWindowTitle(QStringLiteral("调令新增"));

    auto* fields = new QGridLayout;
    for (int i = 0; i < 11; ++i) {
        m_label2[i] = new QLabel(QString::fromUtf8(kCaptions[i]), this);
        m_label2[i]->setObjectName(QStringLiteral("Label2(%1)").arg(i));
        QWidget* input = nullptr;
        switch (i) {
        case 3:
            input = m_cboOldUnit = makeCombo(this, "cboOldUnit");
            break;
        case 4:
            input = m_cboOldDept = makeCombo(this, "cboOldDept");
            break;
        case 6:
            input = m_cboNewUnit = makeCombo(this, "cboNewUnit");
            break;
        case 7:
            input = m_cboNewDept = makeCombo(this, "cboNewDept");
            break;
        default: {
            auto* box = new QLineEdit(this);
            box->setObjectName(QStringLiteral("Text1(%1)").arg(i));
            attachKeyFilter(box, kMaxLength[i]);
            box->installEventFilter(this);
            m_text1[i] = box;
            input = box;
        }
        }
        m_label2[i]->setBuddy(input);
        fields->addWidget(m_label2[i], kPlace[i][0], kPlace[i][1]);
        fields->addWidget(input, kPlace[i][0], kPlace[i][1] + 1);
    }
    for (QComboBox* c : {m_cboOldUnit, m_cboOldDept, m_cboNewUnit, m_cboNewDept}) {
        c->installEventFilter(this);
        c->lineEdit()->installEventFilter(this);
    }
    auto* label12 = new QLabel(QStringLiteral("日期："), this);
    label12->setObjectName(QStringLiteral("Label12(0)"));
    m_dtpStart = new QDateEdit(QDate::currentDate(), this);
    m_dtpStart->setObjectName(QStringLiteral("DTPStart"));
    m_dtpStart->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    m_dtpStart->setCalendarPopup(true);
    label12->setBuddy(m_dtpStart);
    fields->addWidget(label12, 0, 2);
    fields->addWidget(m_dtpStart, 0, 3);

    m_cmdOk = new QPushButton(QStringLiteral("确定(&O)"), this);
    m_cmdOk->setObjectName(QStringLiteral("cmdOk"));
    m_cmdExit = new QPushButton(QStringLiteral("退出>>"), this);
    m_cmdExit->setObjectName(QStringLiteral("cmdExit"));
    m_cmdStaff = new QPushButton(QStringLiteral("查找员工"), this);
    m_cmdStaff->setObjectName(QStringLiteral("cmdStaff"));
    m_cmdStaff->setEnabled(hasForm(QStringLiteral("frmRs_list")));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_cmdStaff);
    buttons->addStretch();
    buttons->addWidget(m_cmdOk);
    buttons->addWidget(m_cmdExit);
    // A clerk who starts here expects the person to move too: the order says what it does.
    auto* note = new QLabel(
        QStringLiteral("调令只记录调动，不改动人员档案里的部门和职务；档案请在人员档案中修改。"), this);
    note->setObjectName(QStringLiteral("lblNote"));
    note->setStyleSheet(QStringLiteral("color: #555555"));
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addWidget(note);
    layout->addLayout(buttons);

    connect(m_cmdOk, &QPushButton::clicked, this, &frmRs_PersonAssignOk::cmdOk_Click);
    connect(m_cmdExit, &QPushButton::clicked, this, &frmRs_PersonAssignOk::cmdExit_Click);
    connect(m_cmdStaff, &QPushButton::clicked, this, &frmRs_PersonAssignOk::cmdStaff_Click);
}

QLineEdit* frmRs_PersonAssignOk::box(int index) const {
    return m_text1[index];
}

int frmRs_PersonAssignOk::boxIndex(const QObject* o) const {
    for (int i = 0; i < 11; ++i)
        if (m_text1[i] && m_text1[i] == o) return i;
    return -1;
}

QString frmRs_PersonAssignOk::place(int index) const {
    if (QLineEdit* b = box(index)) return b->text();
    return comboOf(index)->currentText();
}

void frmRs_PersonAssignOk::setPlace(int index, const QString& text) {
    if (QLineEdit* b = box(index))
        b->setText(text);
    else
        comboOf(index)->setEditText(text);
}

QComboBox* frmRs_PersonAssignOk::comboOf(int index) const {
    switch (index) {
    case 3:
        return m_cboOldUnit;
    case 4:
        return m_cboOldDept;
    case 6:
        return m_cboNewUnit;
    default:
        return m_cboNewDept;
    }
}

QDate frmRs_PersonAssignOk::date() const {
    return m_dtpStart->date();
}

void frmRs_PersonAssignOk::setDate(const QDate& d) {
    m_dateAssigned = true;
    m_dtpStart->setDate(d);
}

QVariantMap frmRs_PersonAssignOk::loaded() const {
    QVariantMap row;
    for (auto it = m_loadedOrder.cbegin(); it != m_loadedOrder.cend(); ++it)
        row.insert(it.key(), it.value());
    return row;
}

void frmRs_PersonAssignOk::setLoaded(const QVariantMap& row) {
    m_loadedOrder.clear();
    for (auto it = row.cbegin(); it != row.cend(); ++it)
        m_loadedOrder.insert(it.key().toLower(), it.value().toString());
}

void frmRs_PersonAssignOk::showEvent(QShowEvent* event) {
    if (!m_loaded) load();
    QDialog::showEvent(event);
}

void frmRs_PersonAssignOk::load() {
    m_loaded = true;
    for (QComboBox* c : {m_cboNewUnit, m_cboOldUnit})
        fillKeepingText(c, [](QComboBox* combo) { FillUnitCombo(combo); });
    for (QComboBox* c : {m_cboOldDept, m_cboNewDept}) {
        fillKeepingText(
            c, [](QComboBox* combo) { FillCodeCombo(QStringLiteral("tRs_Bm"), combo, G().DeptScope, 0, 0); });
        ShowWholeNames(c);
    }
    CenterForm(this);
    if (!m_dateAssigned) m_dtpStart->setDate(QDate::currentDate());
}

bool frmRs_PersonAssignOk::event(QEvent* e) {
    if (e->type() == QEvent::DynamicPropertyChange) {
        // The boxes under the names the order form gives them.
        const QByteArray name = static_cast<QDynamicPropertyChangeEvent*>(e)->propertyName();
        const QVariant value = property(name.constData());
        static const QRegularExpression text1(QStringLiteral("^Text1\\((\\d+)\\)$"));
        const auto m = text1.match(QString::fromLatin1(name));
        if (m.hasMatch()) {
            const int i = m.captured(1).toInt();
            if (i >= 0 && i < 11 && box(i)) setPlace(i, value.toString());
        } else if (name == "cmdOk.Tag") {
            setMode(value.toInt());
        }
    }
    return QDialog::event(e);
}

bool frmRs_PersonAssignOk::eventFilter(QObject* watched, QEvent* e) {
    const int i = boxIndex(watched);
    const bool oldUnit = watched == m_cboOldUnit || watched == m_cboOldUnit->lineEdit();
    switch (e->type()) {
    case QEvent::FocusIn:
        if (i >= 0) Text1_GotFocus(i);
        break;
    case QEvent::FocusOut: {
        // Switching windows or opening a list is not leaving the box.
        const Qt::FocusReason r = static_cast<QFocusEvent*>(e)->reason();
        if (r == Qt::ActiveWindowFocusReason || r == Qt::PopupFocusReason) break;
        if (i == 1 || i == 2) Text1_LostFocus(i);
        if (oldUnit) cboOldUnit_LostFocus();
        break;
    }
    case QEvent::KeyPress: {
        const int key = static_cast<QKeyEvent*>(e)->key();
        const bool enter = key == Qt::Key_Return || key == Qt::Key_Enter;
        if (i >= 0 && (enter || key == Qt::Key_Down)) {
            focusNextChild();
            return true;
        }
        if (i >= 0 && key == Qt::Key_Up) {
            focusPreviousChild();
            return true;
        }
        if (i < 0 && enter) { // one of the combos
            focusNextChild();
            return true;
        }
        break;
    }
    default:
        break;
    }
    return QDialog::eventFilter(watched, e);
}

void frmRs_PersonAssignOk::Text1_GotFocus(int index) {
    if (m_mode == 1) {
        try {
            box(0)->setText(ProposedMoveNumber());
        } catch (const DbError&) {
            // Without the order table no number can be proposed; the typed one stands.
        }
    }
    // After the click that gave the focus has placed the cursor.
    QTimer::singleShot(0, box(index), &QLineEdit::selectAll);
}

void frmRs_PersonAssignOk::Text1_LostFocus(int index) {
    std::optional<PersonPlace> place;
    if (index == 1) place = PlaceOfPersonNamed(box(1)->text());
    if (index == 2) place = PlaceOfPersonCoded(box(2)->text());
    if (!place) return;
    setOldUnit(place->unit);
    setOldDept(place->dept);
    setOldPost(place->post);
    // The code names one person: his name follows, so that the two are sure to match.
    if (index == 2) setPersonName(place->name);
}

void frmRs_PersonAssignOk::cboOldUnit_LostFocus() {
    if (newUnit().isEmpty()) setNewUnit(oldUnit());
}

void frmRs_PersonAssignOk::cmdStaff_Click() {
    openForm(QStringLiteral("frmRs_list"), this);
    if (G().CurPersonCode.isEmpty()) return;
    box(2)->setText(G().CurPersonCode);
    box(1)->setText(G().CurPersonName);
    // The picked person's old place is filled at once, not only when the name box is left.
    Text1_LostFocus(2);
    box(1)->setFocus();
}

void frmRs_PersonAssignOk::cmdExit_Click() {
    reject();
}

void frmRs_PersonAssignOk::refuse(const QString& message, QWidget* focus, bool select) {
    ShowMsg(message, vbExclamation);
    if (select) selectAll(focus);
    focus->setFocus();
}

bool frmRs_PersonAssignOk::confirmed() {
    const QString empty = QStringLiteral("不能为空，请输入内容！");
    // Whichever of the first three boxes is empty, the number box is named and focused.
    for (int i = 0; i <= 2; ++i)
        if (box(i)->text().isEmpty()) {
            refuse(m_label2[0]->text() + empty, box(0));
            return false;
        }
    if (oldUnit().isEmpty()) {
        refuse(m_label2[3]->text() + empty, m_cboOldUnit);
        return false;
    }
    if (newUnit().isEmpty()) {
        refuse(m_label2[6]->text() + empty, m_cboNewUnit);
        return false;
    }
    if (moveNmb().contains(QLatin1Char('\''))) {
        refuse(m_label2[0]->text() + QStringLiteral("中有单引号[ ']存在，请删除单引号！"), box(0), true);
        return false;
    }
    // An empty new department is caught below, by its name not being found.
    if (oldDept().isEmpty()) {
        refuse(QStringLiteral("部门不能为空,请输入内容！"), m_cboOldDept);
        return false;
    }
    if (!isNumber(moveNmb())) {
        refuse(QStringLiteral("调令号必须为纯数字!"), box(0), true);
        return false;
    }
    std::optional<QVariant> deptCode;
    try {
        deptCode = MatchedPersonDept(personName(), personCode());
    } catch (const DbError&) {
        // A quote in the name or code: nobody on file can match it.
    }
    if (!deptCode) {
        refuse(QStringLiteral("该职员工号和姓名不匹配,请检查后再试一次!"), box(2), true);
        return false;
    }
    if (!InDeptScope(*deptCode, G().DeptScope)) {
        refuse(QStringLiteral("此人不属于你所在部门, 无权录入!"), box(2));
        return false;
    }
    if (deptCodeOf(oldDept()).isEmpty()) {
        refuse(QStringLiteral("原部门名称不存在，请检查后再试一次!"), m_cboOldDept, true);
        return false;
    }
    if (deptCodeOf(newDept()).isEmpty()) {
        refuse(QStringLiteral("现部门名称不存在，请检查后再试一次!"), m_cboNewDept, true);
        return false;
    }
    const int answer =
        GetPersonState(personCode())
            ? ShowMsg(QStringLiteral("确认：是否进行 [") + windowTitle() + QStringLiteral("] ？"),
                      vbYesNo + vbQuestion, QStringLiteral("必须明确"))
            : ShowMsg(personName() + QStringLiteral(" 此人已离职,是否仍要调动!"), vbYesNo + vbQuestion);
    return answer == vbYes;
}

MoveOrder frmRs_PersonAssignOk::order() const {
    MoveOrder o;
    o.moveNmb = moveNmb();
    o.fName = personName();
    o.fcode = personCode();
    o.oldunit = oldUnit();
    o.olddpt = oldDept();
    o.worktype = oldPost();
    o.newunit = newUnit();
    o.newdpt = newDept();
    o.newworktype = newPost();
    o.chgperson = chargePerson();
    o.wrtperson = writtenBy();
    o.wrtdate = date();
    return o;
}

void frmRs_PersonAssignOk::cmdOk_Click() {
    if (!confirmed()) return;
    MoveSaveResult result;
    if (!SaveOrTell(this, [&] { result = SaveMoveOrder(order(), m_mode, m_loadedOrder); })) return;
    if (result == MoveSaveResult::NumberInUse) {
        refuse(QStringLiteral("调令号已有存在，请调整号码！"), box(0), true);
        return;
    }
    try {
        WriteLogRecord(QStringLiteral("员工调动 [") + personCode() + QLatin1Char('-') + personName() +
                       QLatin1Char(']'));
    } catch (const DbError&) {
        // The order is saved; a log that cannot be written must not make it look failed.
    }
    ShowMsg(QStringLiteral("存盘完毕!"), vbInformation);
    accept();
}

} // namespace zq
