#include "UserAdminDialog.h"

#include "Commands.h"
#include "Fonts.h"
#include "LoginKit.h"
#include "LoginPassword.h"

#include "resources/Texts.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace zq {

namespace {
const QString kTitle = QStringLiteral("用户管理");
const QString kLogModule = QStringLiteral("用户管理");
constexpr int kOperations = 5; // enter, add, change, delete, audit

QString shownName(const User& u) {
    QString s = u.name;
    if (u.supervisor) s += QStringLiteral("  [系统负责人]");
    if (u.disabled) s += QStringLiteral("  (已停用)");
    return s;
}
} // namespace

UserAdminDialog::UserAdminDialog(Connection& db, QWidget* parent)
    : QDialog(parent)
    , m_db(db)
    , m_list(new QListWidget(this))
    , m_rename(namedButton(this, "cmdRename", QStringLiteral("改名...")))
    , m_password(namedButton(this, "cmdPassword", QStringLiteral("重设密码...")))
    , m_disable(namedButton(this, "cmdDisable", QStringLiteral("停用")))
    , m_supervisor(new QCheckBox(QStringLiteral("系统负责人"), this))
    , m_grid(new QTableWidget(this))
    , m_powerNote(new QLabel(this))
    , m_all(namedButton(this, "cmdAll", QStringLiteral("全部允许")))
    , m_none(namedButton(this, "cmdNone", QStringLiteral("全部取消")))
    , m_save(namedButton(this, "cmdSave", QStringLiteral("保存权限"))) {
    setObjectName(QStringLiteral("frmUserAdmin"));
    setWindowTitle(kTitle);
    setFont(uiFont());
    resize(860, 560);

    m_list->setObjectName(QStringLiteral("lstUsers"));
    m_supervisor->setObjectName(QStringLiteral("chkSupervisor"));
    m_grid->setObjectName(QStringLiteral("grdPower"));
    m_powerNote->setObjectName(QStringLiteral("lblPower"));
    m_powerNote->setWordWrap(true);

    auto* add = namedButton(this, "cmdAdd", QStringLiteral("新增用户..."));
    auto* usersBox = new QGroupBox(QStringLiteral("用户"), this);
    auto* usersLayout = new QVBoxLayout(usersBox);
    usersLayout->addWidget(m_list, 1);
    auto* userButtons = new QGridLayout;
    userButtons->addWidget(add, 0, 0);
    userButtons->addWidget(m_rename, 0, 1);
    userButtons->addWidget(m_password, 1, 0);
    userButtons->addWidget(m_disable, 1, 1);
    usersLayout->addLayout(userButtons);
    usersLayout->addWidget(m_supervisor);

    auto* powerBox = new QGroupBox(QStringLiteral("权限"), this);
    auto* powerLayout = new QVBoxLayout(powerBox);
    powerLayout->addWidget(m_powerNote);
    powerLayout->addWidget(m_grid, 1);
    auto* powerButtons = new QHBoxLayout;
    powerButtons->addWidget(m_all);
    powerButtons->addWidget(m_none);
    powerButtons->addStretch();
    powerButtons->addWidget(m_save);
    powerLayout->addLayout(powerButtons);

    auto* top = new QHBoxLayout;
    top->addWidget(usersBox, 1);
    top->addWidget(powerBox, 3);
    auto* close = namedButton(this, "cmdClose", QStringLiteral("关闭"));
    auto* bottom = new QHBoxLayout;
    bottom->addStretch();
    bottom->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top, 1);
    layout->addLayout(bottom);

    m_grid->setColumnCount(1 + kOperations);
    m_grid->setHorizontalHeaderLabels({QStringLiteral("模块"), QStringLiteral("进入"), QStringLiteral("新增"),
                                       QStringLiteral("修改"), QStringLiteral("删除"),
                                       QStringLiteral("审核")});
    m_grid->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    for (int c = 1; c <= kOperations; ++c) {
        m_grid->horizontalHeader()->setSectionResizeMode(c, QHeaderView::Fixed);
        m_grid->setColumnWidth(c, m_grid->fontMetrics().horizontalAdvance(QStringLiteral("审核")) + 28);
    }
    m_grid->verticalHeader()->setVisible(false);
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 8);
    m_grid->setSelectionMode(QAbstractItemView::NoSelection);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);

    connect(m_list, &QListWidget::currentRowChanged, this, &UserAdminDialog::userChanged);
    connect(add, &QPushButton::clicked, this, &UserAdminDialog::addUser);
    connect(m_rename, &QPushButton::clicked, this, &UserAdminDialog::renameUser);
    connect(m_password, &QPushButton::clicked, this, &UserAdminDialog::resetPassword);
    connect(m_disable, &QPushButton::clicked, this, &UserAdminDialog::toggleDisabled);
    connect(m_supervisor, &QCheckBox::clicked, this, &UserAdminDialog::toggleSupervisor);
    connect(m_all, &QPushButton::clicked, this, [this] { setAll(true); });
    connect(m_none, &QPushButton::clicked, this, [this] { setAll(false); });
    connect(m_save, &QPushButton::clicked, this, &UserAdminDialog::savePower);
    connect(close, &QPushButton::clicked, this, &UserAdminDialog::reject);
    connect(m_grid, &QTableWidget::itemChanged, this, [this] {
        if (!m_filling) m_dirty = true;
    });

    loadModules();
    loadUsers(G().UserName);
}

void UserAdminDialog::loadModules() {
    // Modules outside the rights string (SerialNo -1) or past its end have no place in the matrix.
    const QString caption = QStringLiteral("Model_Name") + G().lang();
    Recordset rs(m_db,
                 QStringLiteral("select SerialNo,Model_Name,%1 from tSysFunc where NoUse_=0 and SerialNo>0 "
                                "and SerialNo<=%2 order by SerialNo")
                     .arg(caption, QString::number(kPowerLength)));
    for (; !rs.eof(); rs.moveNext())
        m_modules.push_back({int(rs.val(0)), rs.text(1), rs.text(2).isEmpty() ? rs.text(1) : rs.text(2)});

    m_filling = true;
    m_grid->setRowCount(int(m_modules.size()));
    for (int r = 0; r < m_modules.size(); ++r) {
        auto* name = new QTableWidgetItem(m_modules[r].caption);
        name->setFlags(Qt::ItemIsEnabled);
        name->setToolTip(
            QStringLiteral("%1 (第 %2 位起)").arg(m_modules[r].key, QString::number(m_modules[r].serialNo)));
        m_grid->setItem(r, 0, name);
        for (int op = 0; op < kOperations; ++op) {
            auto* cell = new QTableWidgetItem;
            const bool inside = m_modules[r].serialNo + op <= kPowerLength;
            cell->setFlags(inside ? Qt::ItemIsEnabled | Qt::ItemIsUserCheckable : Qt::NoItemFlags);
            cell->setCheckState(Qt::Unchecked);
            m_grid->setItem(r, 1 + op, cell);
        }
    }
    m_filling = false;
}

void UserAdminDialog::loadUsers(const QString& select) {
    m_users = listUsers(m_db);
    const QSignalBlocker block(m_list);
    m_list->clear();
    int row = m_users.isEmpty() ? -1 : 0;
    for (int i = 0; i < m_users.size(); ++i) {
        m_list->addItem(shownName(m_users[i]));
        if (m_users[i].name.compare(select, Qt::CaseInsensitive) == 0) row = i;
    }
    m_list->setCurrentRow(row);
    m_shown.clear();
    userChanged();
}

const User* UserAdminDialog::current() const {
    const int row = m_list->currentRow();
    return row >= 0 && row < m_users.size() ? &m_users[row] : nullptr;
}

bool UserAdminDialog::selectUser(const QString& name) {
    for (int i = 0; i < m_users.size(); ++i)
        if (m_users[i].name.compare(name, Qt::CaseInsensitive) == 0) {
            m_list->setCurrentRow(i);
            return true;
        }
    return false;
}

bool UserAdminDialog::askSaveChanges() {
    if (!m_dirty || m_shown.isEmpty()) return true;
    if (ShowMsg(QStringLiteral("用户 %1 的权限已修改, 是否保存?").arg(m_shown), vbYesNo + vbQuestion,
                kTitle) == vbYes)
        return savePower();
    m_dirty = false;
    return true;
}

void UserAdminDialog::userChanged() {
    // The matrix still holds the rights of the user shown before: they must not be lost silently.
    askSaveChanges();
    const User* u = current();
    m_rename->setEnabled(u);
    m_password->setEnabled(u);
    m_disable->setEnabled(u);
    m_supervisor->setEnabled(u);
    m_disable->setText(u && u->disabled ? QStringLiteral("启用") : QStringLiteral("停用"));
    {
        const QSignalBlocker block(m_supervisor);
        m_supervisor->setChecked(u && u->supervisor);
    }
    showPower();
}

void UserAdminDialog::showPower() {
    const User* u = current();
    m_shown = u ? u->name : QString();
    const bool editable = u && !u->supervisor;
    const QString power = u ? (u->supervisor ? fullPower() : u->power) : noPower();
    m_filling = true;
    for (int r = 0; r < m_modules.size(); ++r)
        for (int op = 0; op < kOperations; ++op) {
            QTableWidgetItem* cell = m_grid->item(r, 1 + op);
            const int position = m_modules[r].serialNo + op;
            if (position > kPowerLength) continue;
            cell->setCheckState(power.at(position - 1) == QLatin1Char('1') ? Qt::Checked : Qt::Unchecked);
            cell->setFlags(editable ? Qt::ItemIsEnabled | Qt::ItemIsUserCheckable : Qt::NoItemFlags);
        }
    m_filling = false;
    m_dirty = false;
    m_all->setEnabled(editable);
    m_none->setEnabled(editable);
    m_save->setEnabled(editable);
    if (!u)
        m_powerNote->setText(QStringLiteral("请先选定用户。"));
    else if (u->supervisor)
        m_powerNote->setText(QStringLiteral("%1 是系统负责人, 拥有全部权限, 也不受部门限制。").arg(u->name));
    else
        m_powerNote->setText(QStringLiteral("%1 的权限: 勾选允许的操作, 然后按\"保存权限\"。").arg(u->name));
}

void UserAdminDialog::setAll(bool allowed) {
    for (int r = 0; r < m_grid->rowCount(); ++r)
        for (int c = 1; c <= kOperations; ++c)
            if (QTableWidgetItem* cell = m_grid->item(r, c); cell->flags() & Qt::ItemIsUserCheckable)
                cell->setCheckState(allowed ? Qt::Checked : Qt::Unchecked);
}

const User* UserAdminDialog::shownUser() const {
    for (const User& u : m_users)
        if (u.name == m_shown) return &u;
    return nullptr;
}

QString UserAdminDialog::matrixPower() const {
    const User* u = shownUser();
    QString power = u ? u->power : noPower();
    for (int r = 0; r < m_modules.size(); ++r)
        for (int op = 0; op < kOperations; ++op) {
            const int position = m_modules[r].serialNo + op;
            if (position > kPowerLength) continue;
            const bool on = m_grid->item(r, 1 + op)->checkState() == Qt::Checked;
            power[position - 1] = on ? QLatin1Char('1') : QLatin1Char('0');
        }
    return power;
}

bool UserAdminDialog::savePower() {
    const User* u = shownUser();
    if (!u || u->supervisor) return true;
    const QString name = u->name;
    const QString power = matrixPower();
    try {
        setUserPower(m_db, name, power);
        log(QStringLiteral("修改权限 [%1]").arg(name));
    } catch (const DbError& e) {
        ShowMsg(QStringLiteral("存盘错误!\n%1").arg(e.message()), vbExclamation, kTitle);
        return false;
    }
    for (User& stored : m_users)
        if (stored.name == name) stored.power = power;
    m_dirty = false;
    return true;
}

void UserAdminDialog::log(const QString& text) {
    writeLog(m_db, G().UserName, kLogModule, text);
}

void UserAdminDialog::addUser() {
    if (!askSaveChanges()) return;
    PasswordDialog dlg(PasswordDialog::NewUser, QString(), this);
    if (showModal(dlg) != QDialog::Accepted) return;
    const QString name = dlg.name();
    try {
        if (findUser(m_db, name)) {
            ShowMsg(QStringLiteral("已有此用户: %1").arg(name), vbExclamation, kTitle);
            return;
        }
        Recordset person(m_db, QStringLiteral("select count(*) from tRsBasic where fName=") + quoted(name));
        if (person.val(0) == 0 &&
            ShowMsg(QStringLiteral("人事档案中没有姓名为\"%1\"的员工, 该用户将查不到任何部门的办公记录。\n"
                                   "仍然新增此用户吗?")
                        .arg(name),
                    vbYesNo + vbQuestion, kTitle) != vbYes)
            return;
        createUser(m_db, name, dlg.password(), noPower(), false);
        log(QStringLiteral("新增用户 [%1]").arg(name));
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, kTitle);
        return;
    }
    loadUsers(name);
}

void UserAdminDialog::renameUser() {
    const User* u = current();
    if (!u || !askSaveChanges()) return;
    const QString from = u->name;
    const std::optional<QString> answer = InputBox(QStringLiteral("%1 的新用户名:").arg(from), kTitle, from);
    if (!answer || answer->trimmed().isEmpty() || answer->trimmed() == from) return;
    const QString to = answer->trimmed();
    if (to.contains(QLatin1Char('\''))) {
        ShowMsg(LoadText(183), vbExclamation, kTitle);
        return;
    }
    try {
        zq::renameUser(m_db, from, to);
        log(QStringLiteral("用户改名 [%1-%2]").arg(from, to));
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, kTitle);
        return;
    }
    // The one who is working keeps working under the new name.
    Globals& g = G();
    if (g.ZgName == from) g.ZgName = to;
    if (g.UserName == from) g.UserName = to;
    loadUsers(to);
}

void UserAdminDialog::resetPassword() {
    const User* u = current();
    if (!u) return;
    const QString name = u->name;
    PasswordDialog dlg(PasswordDialog::Reset, name, this);
    if (showModal(dlg) != QDialog::Accepted) return;
    try {
        setUserPassword(m_db, name, dlg.password());
        log(QStringLiteral("重设密码 [%1]").arg(name));
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, kTitle);
        return;
    }
    ShowMsg(QStringLiteral("%1 的密码已重设。").arg(name), vbInformation, kTitle);
}

void UserAdminDialog::toggleDisabled() {
    const User* u = current();
    if (!u || !askSaveChanges()) return;
    const User user = *u;
    const bool disable = !user.disabled;
    if (disable && user.name.compare(G().UserName, Qt::CaseInsensitive) == 0) {
        ShowMsg(QStringLiteral("不能停用正在使用系统的用户!"), vbExclamation, kTitle);
        return;
    }
    try {
        if (disable && user.supervisor && activeSupervisors(m_db) <= 1) {
            ShowMsg(QStringLiteral("至少要保留一位可用的系统负责人!"), vbExclamation, kTitle);
            return;
        }
        setUserDisabled(m_db, user.name, disable);
        log(QStringLiteral("%1用户 [%2]")
                .arg(disable ? QStringLiteral("停用") : QStringLiteral("启用"), user.name));
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, kTitle);
        return;
    }
    loadUsers(user.name);
}

void UserAdminDialog::toggleSupervisor(bool on) {
    const User* u = current();
    if (!u) return;
    const User user = *u;
    try {
        if (!on && !user.disabled && activeSupervisors(m_db) <= 1) {
            ShowMsg(QStringLiteral("至少要保留一位可用的系统负责人!"), vbExclamation, kTitle);
            loadUsers(user.name);
            return;
        }
        if (!askSaveChanges()) return;
        setUserSupervisor(m_db, user.name, on);
        log(QStringLiteral("%1系统负责人 [%2]")
                .arg(on ? QStringLiteral("设为") : QStringLiteral("取消"), user.name));
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, kTitle);
    }
    loadUsers(user.name);
}

void UserAdminDialog::reject() {
    if (!askSaveChanges()) return;
    QDialog::reject();
}

} // namespace zq
