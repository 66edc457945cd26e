#include "frmRs_PersonAssign.h"

#include "PersonAssignData.h"
#include "PersonAssignListData.h"
#include "printing/Print.h"
#include "services/Lookups.h"
#include "services/ui/ComboLookups.h"
#include "services/ui/Grid.h"
#include "services/ui/GridExport.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/NamedWidgets.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Rights.h"
#include "shell/ui/Commands.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zq {

namespace {

const char* const kModel = "mnuRsOthMove";

QLineEdit* textBox(QWidget* parent, const QString& name, int maxLength) {
    auto* t = new QLineEdit(parent);
    t->setObjectName(name);
    t->setMaxLength(maxLength);
    return t;
}

QComboBox* editCombo(QWidget* parent, const char* name) {
    auto* c = new QComboBox(parent);
    c->setObjectName(QLatin1String(name));
    c->setEditable(true);
    return c;
}
} // namespace

frmRs_PersonAssign::frmRs_PersonAssign(QWidget* parent)
    : QDialog(parent)
    , m_grid(new ZqGrid(this))
    , m_cboOldUnit(editCombo(this, "cboOldUnit"))
    , m_cboNewUnit(editCombo(this, "cboNewUnit"))
    , m_cobOldDept(editCombo(this, "cobOldDept"))
    , m_cobNewDept(editCombo(this, "cobNewDept"))
    , m_date{new QDateEdit(this), new QDateEdit(this)} {
    setObjectName(QStringLiteral("frmRs_PersonAssign"));
    setWindowTitle(QStringLiteral("调令管理"));
    EnableGridExport(m_grid, [this] { return windowTitle(); });
    resize(1100, 680);

    // The conditions, each a check box before its input, in the order the search joins them.
    auto* conditions = new QGridLayout;
    int n = 0;
    const auto add = [&](const char* checkName, const QString& caption, QList<QWidget*> inputs) {
        auto* check = new QCheckBox(caption, this);
        check->setObjectName(QLatin1String(checkName));
        const int row = n / 3, col = (n % 3) * 2;
        conditions->addWidget(check, row, col);
        auto* line = new QHBoxLayout;
        for (QWidget* w : inputs)
            line->addWidget(w);
        conditions->addLayout(line, row, col + 1);
        // Ticking a condition goes on to its input.
        QWidget* first = inputs.first();
        connect(check, &QCheckBox::toggled, first, [first](bool on) {
            if (on) first->setFocus();
        });
        ++n;
    };
    QLineEdit* from = textBox(this, QStringLiteral("txtMoveNum(0)"), 10);
    QLineEdit* to = textBox(this, QStringLiteral("txtMoveNum(1)"), 10);
    add("chkMoveNum", QStringLiteral("调令号"), {from, to});
    add("chkName", QStringLiteral("姓  名"), {textBox(this, QStringLiteral("txtName"), 10)});
    add("chkCode", QStringLiteral("工  号"), {textBox(this, QStringLiteral("txtCode"), 10)});
    add("chkOldUnit", QStringLiteral("原单位"), {m_cboOldUnit});
    add("chkOldDept", QStringLiteral("原部门"), {m_cobOldDept});
    add("chkNewUnit", QStringLiteral("现单位"), {m_cboNewUnit});
    add("chkNewDept", QStringLiteral("现部门"), {m_cobNewDept});
    add("chkWorkType", QStringLiteral("原职务"), {textBox(this, QStringLiteral("txtWorkType"), 20)});
    add("chkChgMan", QStringLiteral("负责人"), {textBox(this, QStringLiteral("txtChgMan"), 10)});
    for (int i = 0; i < 2; ++i) {
        m_date[i]->setObjectName(QStringLiteral("txtDate(%1)").arg(i));
        m_date[i]->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
        m_date[i]->setCalendarPopup(true);
    }
    add("chkDate", QStringLiteral("填表日期"), {m_date[0], m_date[1]});
    add("chkWrtMan", QStringLiteral("填表人"), {textBox(this, QStringLiteral("txtWrtMan"), 10)});
    add("Check1", QStringLiteral("现职务"), {textBox(this, QStringLiteral("txtNewWork"), 20)});

    // Enter in the first number goes to the second; in the second, with both filled, it searches.
    connect(from, &QLineEdit::returnPressed, to, [to] { to->setFocus(); });
    connect(to, &QLineEdit::returnPressed, this, [this, from, to] {
        if (!from->text().isEmpty() && !to->text().isEmpty()) guarded(&frmRs_PersonAssign::cmdSeek_Click);
    });

    auto* buttons = new QHBoxLayout;
    const auto wire = [&](const char* name, const QString& caption, void (frmRs_PersonAssign::*handler)()) {
        QPushButton* b = NamedButton(this, name, caption);
        buttons->addWidget(b);
        connect(b, &QPushButton::clicked, this, [this, handler] { guarded(handler); });
        return b;
    };
    wire("cmdStaff", QStringLiteral("查找员工"), &frmRs_PersonAssign::cmdStaff_Click)
        ->setEnabled(hasForm(QStringLiteral("frmRs_list")));
    buttons->addStretch();
    wire("cmdSeek", QStringLiteral("查询(&S)"), &frmRs_PersonAssign::cmdSeek_Click);
    wire("cmdAdd", QStringLiteral("新增(&A)"), &frmRs_PersonAssign::cmdAdd_Click);
    wire("cmdChg", QStringLiteral("修改(&C)"), &frmRs_PersonAssign::cmdChg_Click);
    wire("cmdDEL", QStringLiteral("删除(&D)"), &frmRs_PersonAssign::cmdDEL_Click);
    wire("cmdPrint", QStringLiteral("打印(&P)"), &frmRs_PersonAssign::cmdPrint_Click);
    wire("cmdPerson", QStringLiteral("人员档案"), &frmRs_PersonAssign::cmdPerson_Click)
        ->setEnabled(hasForm(QStringLiteral("frmRs_PersonBasic")));
    QPushButton* quit = NamedButton(this, "cmdQuit", QStringLiteral("返回>>"));
    buttons->addWidget(quit);
    connect(quit, &QPushButton::clicked, this, &QDialog::reject);

    m_grid->setObjectName(QStringLiteral("Grid1"));
    m_grid->setReadOnly(true);
    m_grid->setRowSelection(true);
    m_grid->setMaxCols(12);
    const QStringList headers{"工号",   "姓名",   "调令号", "原单位", "原部门", "原职务",
                              "现单位", "现部门", "现职务", "负责人", "填表人", "填表日期"};
    for (int c = 1; c <= 12; ++c) {
        m_grid->setHeaderText(c, headers.at(c - 1));
        m_grid->setColWidth(c, 10.5);
    }

    m_lblStatus = new QLabel(this);
    m_lblStatus->setObjectName(QStringLiteral("lblStatus"));
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(conditions);
    layout->addLayout(buttons);
    layout->addWidget(m_grid, 1);
    layout->addWidget(m_lblStatus);
}

QCheckBox* frmRs_PersonAssign::check(const QString& name) const {
    return findChild<QCheckBox*>(name);
}

QLineEdit* frmRs_PersonAssign::box(const QString& name) const {
    return findChild<QLineEdit*>(name);
}

void frmRs_PersonAssign::guarded(void (frmRs_PersonAssign::*handler)()) {
    try {
        (this->*handler)();
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, windowTitle());
    }
}

void frmRs_PersonAssign::showEvent(QShowEvent* event) {
    if (!m_loaded) {
        m_loaded = true;
        try {
            load();
        } catch (const DbError& e) {
            ShowMsg(e.message(), vbExclamation, windowTitle());
        }
    }
    QDialog::showEvent(event);
}

void frmRs_PersonAssign::load() {
    FillUnitCombo(m_cboNewUnit);
    FillUnitCombo(m_cboOldUnit);
    for (QComboBox* c : {m_cobOldDept, m_cobNewDept}) {
        FillCodeCombo(QStringLiteral("tRs_Bm"), c, G().DeptScope, 0, 0);
        ShowWholeNames(c);
    }
    CenterForm(this);
    const QDate today = QDate::currentDate();
    m_date[0]->setDate(today.addDays(1 - today.day()));
    m_date[1]->setDate(today);
}

MoveSearch frmRs_PersonAssign::search() const {
    const auto on = [this](const char* name) { return check(QLatin1String(name))->isChecked(); };
    const auto text = [this](const char* name) { return box(QLatin1String(name))->text(); };
    MoveSearch s;
    s.number = on("chkMoveNum");
    s.numberFrom = text("txtMoveNum(0)").trimmed();
    s.numberTo = text("txtMoveNum(1)").trimmed();
    s.name = on("chkName");
    s.nameText = text("txtName");
    s.code = on("chkCode");
    s.codeText = text("txtCode");
    s.oldUnit = on("chkOldUnit");
    s.oldUnitText = m_cboOldUnit->currentText();
    s.oldDept = on("chkOldDept");
    s.oldDeptText = m_cobOldDept->currentText();
    s.newUnit = on("chkNewUnit");
    s.newUnitText = m_cboNewUnit->currentText();
    s.newDept = on("chkNewDept");
    s.newDeptText = m_cobNewDept->currentText();
    s.workType = on("chkWorkType");
    s.workTypeText = text("txtWorkType");
    s.chgMan = on("chkChgMan");
    s.chgManText = text("txtChgMan");
    s.date = on("chkDate");
    s.dateFrom = m_date[0]->date().toString(Qt::ISODate);
    s.dateTo = m_date[1]->date().toString(Qt::ISODate);
    s.wrtMan = on("chkWrtMan");
    s.wrtManText = text("txtWrtMan");
    s.newWork = on("Check1");
    s.newWorkText = text("txtNewWork");
    return s;
}

void frmRs_PersonAssign::cmdSeek_Click() {
    m_grid->setMaxRows(0);
    // Every text box is looked at, ticked or not; the lists' own texts are not.
    for (QLineEdit* t : findChildren<QLineEdit*>()) {
        if (qobject_cast<QComboBox*>(t->parentWidget()) || qobject_cast<QDateEdit*>(t->parentWidget()))
            continue;
        if (t->text().contains(QLatin1Char('\''))) {
            ShowMsg(QStringLiteral("输入的查询内容中,不能出现引号,请检查!"), vbInformation);
            return;
        }
    }
    for (int i = 0; i < 2; ++i) {
        QLineEdit* t = box(QStringLiteral("txtMoveNum(%1)").arg(i));
        bool number = false;
        t->text().trimmed().toDouble(&number);
        if (!t->text().trimmed().isEmpty() && !number) {
            ShowMsg(QStringLiteral("调令号输入错误,应为数字型!"), vbExclamation);
            t->selectAll();
            t->setFocus();
            return;
        }
    }
    Hourglass wait;
    m_grid->setRedraw(false);
    const QVector<QStringList> rows = MoveListRows(MoveSearchSql(search()));
    m_grid->loadRows(rows);
    m_grid->setRedraw(true);
    if (rows.isEmpty()) ShowMsg(QStringLiteral("没有符合条件的记录！"), vbExclamation);
}

void frmRs_PersonAssign::cmdAdd_Click() {
    if (CheckModel(QLatin1String(kModel), 1) == 0) return;
    if (openForm(QStringLiteral("frmRs_PersonAssignOk"), this,
                 {{QStringLiteral("Text1_10"), G().UserName},
                  {QStringLiteral("Caption"), QStringLiteral("调令新增")},
                  {QStringLiteral("cmdOkTag"), 1}}) == QDialog::Accepted)
        showSaved();
}

void frmRs_PersonAssign::showSaved() {
    const SavedMove& saved = LastSavedMove();
    if (saved.number.isEmpty()) return;
    // The list is not searched again: the new order joins the rows on show.
    int row = m_grid->findRow(3, saved.number);
    if (row == 0) {
        MoveSearch one;
        one.number = true;
        one.numberFrom = one.numberTo = saved.number;
        const QVector<QStringList> rows = MoveListRows(MoveSearchSql(one));
        if (rows.isEmpty()) return;
        row = m_grid->maxRows() + 1;
        m_grid->setMaxRows(row);
        for (int c = 0; c < rows.first().size(); ++c)
            m_grid->setText(row, c + 1, rows.first().at(c));
    }
    m_grid->setActiveCell(row, 1);
    const QString who = saved.name + QLatin1Char('(') + saved.code + QLatin1Char(')');
    m_lblStatus->setText(
        GetPersonState(saved.code)
            ? QStringLiteral(
                  "调令 %1 已存盘。%2 的人员档案未改动，部门和职务仍是原来的；要修改请按“人员档案”。")
                  .arg(saved.number, who)
            : QStringLiteral("调令 %1 已存盘。%2 已不在职，人员档案未改动。").arg(saved.number, who));
}

QString frmRs_PersonAssign::status() const {
    return m_lblStatus->text();
}

void frmRs_PersonAssign::cmdPerson_Click() {
    const int row = m_grid->activeRow();
    const QString code = row > 0 ? m_grid->text(row, 1).trimmed() : QString();
    if (code.isEmpty()) {
        ShowMsg(QStringLiteral("请先在列表中选择一条调令。"), vbExclamation);
        return;
    }
    // Changing the record needs the register's right to change; without it the record is shown.
    Globals& g = G();
    g.CurPersonCode = code;
    g.CurPersonName = m_grid->text(row, 2).trimmed();
    g.PersonEditMode = CheckModel(QStringLiteral("mnuRsManIn"), 2) != 0 ? 2 : 0;
    openForm(QStringLiteral("frmRs_PersonBasic"), this);
    g.PersonEditMode = 0;
}

void frmRs_PersonAssign::cmdChg_Click() {
    if (CheckModel(QLatin1String(kModel), 2) == 0) return;
    const int row = m_grid->activeRow();
    if (row == 0 || m_grid->text(row, 1).isEmpty()) {
        ShowMsg(QStringLiteral("请先调出要修改的记录！"), vbExclamation);
        return;
    }
    const auto cell = [&](int c) { return m_grid->text(row, c).trimmed(); };
    // The order as listed, for the dialog's save to tell whether another client changed it since.
    QVariantMap loaded;
    for (int c = 1; c <= 12; ++c)
        loaded.insert(MoveListColumns().at(c - 1), m_grid->text(row, c));
    const int result = openForm(QStringLiteral("frmRs_PersonAssignOk"), this,
                                {{QStringLiteral("Text1_2"), cell(1)},
                                 {QStringLiteral("Text1_1"), cell(2)},
                                 {QStringLiteral("Text1_0"), cell(3)},
                                 {QStringLiteral("cboOldUnit"), cell(4)},
                                 {QStringLiteral("cboOldDept"), cell(5)},
                                 {QStringLiteral("Text1_5"), cell(6)},
                                 {QStringLiteral("cboNewUnit"), cell(7)},
                                 {QStringLiteral("cboNewDept"), cell(8)},
                                 {QStringLiteral("Text1_8"), cell(9)},
                                 {QStringLiteral("Text1_9"), cell(10)},
                                 {QStringLiteral("Text1_10"), cell(11)},
                                 {QStringLiteral("DTPStart"), QDate::fromString(cell(12), Qt::ISODate)},
                                 {QStringLiteral("Caption"), QStringLiteral("调令修改")},
                                 {QStringLiteral("Loaded"), loaded},
                                 {QStringLiteral("cmdOkTag"), 2}});
    const bool saved = result == QDialog::Accepted;
    cmdSeek_Click();
    if (saved) showSaved();
}

void frmRs_PersonAssign::cmdDEL_Click() {
    if (CheckModel(QLatin1String(kModel), 3) == 0) return;
    const int row = m_grid->activeRow();
    if (row == 0) return;
    const QString number = m_grid->text(row, 3);
    const QString name = m_grid->text(row, 2);
    if (ShowMsg(name + QLatin1Char('(') + number + QStringLiteral("): 确认删除记录？"),
                vbYesNo + vbQuestion) != vbYes)
        return;
    bool deleted = false;
    try {
        deleted = DeleteMoveOrder(name, number);
    } catch (const DbError&) {
        ShowMsg(QStringLiteral("存盘错误!"), vbExclamation);
        return;
    }
    if (!deleted) {
        ShowMsg(QStringLiteral("没找到相关记录,删除失败！"), vbOKOnly);
        return;
    }
    m_grid->removeRow(row);
}

void frmRs_PersonAssign::cmdPrint_Click() {
    const int row = m_grid->activeRow();
    if (m_grid->maxRows() == 0 || row == 0) return;
    QStringList items;
    for (int c = 1; c <= 12; ++c)
        items << MovePrintCaptions().at(c - 1) << m_grid->text(row, c);
    G().showmode = 1;
    PrintGrid(items, m_grid, windowTitle(), QString());
}

void frmRs_PersonAssign::cmdStaff_Click() {
    openForm(QStringLiteral("frmRs_list"), this);
    if (G().CurPersonCode.isEmpty()) return;
    box(QStringLiteral("txtCode"))->setText(G().CurPersonCode);
    box(QStringLiteral("txtName"))->setText(G().CurPersonName);
}

} // namespace zq
