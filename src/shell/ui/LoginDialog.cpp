#include "LoginDialog.h"

#include "Fonts.h"
#include "LoginKit.h"

#include "resources/Texts.h"
#include "shell/DbError.h"
#include "shell/Prompts.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zq {

namespace {
const QString kTitle = QStringLiteral("登录");
} // namespace

LoginDialog::LoginDialog(const LoginRequest& request, LoginResult& result, QWidget* parent)
    : QDialog(parent)
    , m_request(request)
    , m_result(result)
    , m_account(new QComboBox(this))
    , m_user(new QComboBox(this))
    , m_password(namedEntry(this, "txtPassword", true))
    , m_repeatLabel(new QLabel(QStringLiteral("重复密码:"), this))
    , m_repeat(namedEntry(this, "txtRepeat", true))
    , m_note(new QLabel(this))
    , m_ok(namedButton(this, "cmdOK", QStringLiteral("登录"))) {
    setObjectName(QStringLiteral("frmLogin"));
    setWindowTitle(QStringLiteral("%1 - 人事管理系统").arg(kTitle));
    setFont(uiFont());
    setMinimumWidth(420);

    m_account->setObjectName(QStringLiteral("cboAccount"));
    m_user->setObjectName(QStringLiteral("cboUser"));
    m_user->setEditable(true);
    m_user->setInsertPolicy(QComboBox::NoInsert);
    m_note->setObjectName(QStringLiteral("lblNote"));
    m_note->setWordWrap(true);

    auto* addSet = namedButton(this, "cmdAddSet", QStringLiteral("添加..."));
    addSet->setToolTip(QStringLiteral("把另一个数据库文件加入套帐列表"));
    auto* accountRow = new QHBoxLayout;
    accountRow->addWidget(m_account, 1);
    accountRow->addWidget(addSet);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("套帐:"), accountRow);
    form->addRow(QStringLiteral("用户:"), m_user);
    form->addRow(QStringLiteral("密码:"), m_password);
    form->addRow(m_repeatLabel, m_repeat);

    auto* cancel = namedButton(this, "cmdCancel", QStringLiteral("取消"));
    m_ok->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(cancel);

    auto* layout = new QVBoxLayout(this);
    auto* title = new QLabel(QStringLiteral("人事管理系统"), this);
    title->setFont(uiFont(16));
    title->setAlignment(Qt::AlignCenter);
    layout->addWidget(title);
    layout->addSpacing(6);
    layout->addLayout(form);
    layout->addWidget(m_note);
    layout->addLayout(buttons);

    connect(m_account, &QComboBox::currentIndexChanged, this, &LoginDialog::chooseSet);
    connect(addSet, &QPushButton::clicked, this, &LoginDialog::addSetFromFile);
    connect(m_ok, &QPushButton::clicked, this, &LoginDialog::tryLogin);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    loadSets();
}

void LoginDialog::loadSets() {
    if (!m_request.settingsFile.isEmpty()) {
        try {
            m_sets = loadAccountSets(m_request.settingsFile);
        } catch (const DbError&) {
            m_sets.clear(); // an unreadable settings file only loses the list
        }
    }
    // The control's own database comes first: the host chose it.
    int first = 0;
    if (!m_request.database.userPath.isEmpty()) {
        AccountSet own = accountSetOf(m_request.database);
        first = -1;
        for (int i = 0; i < m_sets.size() && first < 0; ++i)
            if (m_sets[i].sameDatabase(own)) first = i;
        if (first < 0) {
            try {
                Connection probe;
                probe.open(m_request.database);
                const QString company = companyName(probe);
                if (!company.isEmpty()) own.name = company;
            } catch (const DbError&) {
                // The name of the file stands in; opening is tried again when the set is chosen.
            }
            m_sets.prepend(own);
            first = 0;
        }
    }
    const QSignalBlocker block(m_account);
    for (const AccountSet& s : m_sets)
        m_account->addItem(QStringLiteral("%1  (%2)").arg(s.name, s.where()));
    m_account->setCurrentIndex(m_sets.isEmpty() ? -1 : first);
    chooseSet(m_account->currentIndex());
}

void LoginDialog::setNote(const QString& text, bool warning) {
    m_note->setText(text);
    m_note->setStyleSheet(warning ? QStringLiteral("color: #b00000;") : QString());
    m_note->setVisible(!text.isEmpty());
}

void LoginDialog::chooseSet(int index) {
    m_db.close();
    m_user->clear();
    m_firstUser = false;
    m_repeat->clear();
    if (index < 0 || index >= m_sets.size()) {
        setNote(QStringLiteral("没有可用的套帐: 请用\"添加...\"选择数据库文件。"), true);
        m_ok->setEnabled(false);
    } else {
        const AccountSet& set = m_sets[index];
        try {
            m_db.open(set.settings(m_request.database.password));
            const QVector<User> users = listUsers(m_db);
            for (const User& u : users)
                if (!u.disabled) m_user->addItem(u.name);
            m_firstUser = users.isEmpty();
            const int last = m_user->findText(set.lastUser);
            m_user->setCurrentIndex(last >= 0 ? last : (m_user->count() > 0 ? 0 : -1));
            // The user the host named stands in the box even when not listed (disabled or unknown):
            // the password and the check of the login decide.
            if (!m_request.userName.isEmpty()) m_user->setCurrentText(m_request.userName);
            setNote(m_firstUser
                        ? QStringLiteral("该套帐还没有用户。请设定系统负责人的姓名和密码, 以后用它登录。")
                        : QString(),
                    false);
            m_ok->setEnabled(true);
        } catch (const DbError& e) {
            m_db.close();
            setNote(e.message(), true);
            m_ok->setEnabled(false);
        }
    }
    m_repeatLabel->setVisible(m_firstUser);
    m_repeat->setVisible(m_firstUser);
    m_password->clear();
    if (m_user->currentText().isEmpty())
        m_user->setFocus();
    else
        m_password->setFocus();
}

void LoginDialog::addSetFromFile() {
    FileRequest r;
    r.title = QStringLiteral("选择数据库文件");
    r.filter = QStringLiteral("数据库文件|*.db;*.sqlite|所有文件|*");
    r.flags = cdlOFNFileMustExist | cdlOFNHideReadOnly;
    const QString file = prompts().file(r);
    if (file.isEmpty()) return;
    AccountSet set = accountSetOf({0, file, {}, {}, {}});
    for (int i = 0; i < m_sets.size(); ++i)
        if (m_sets[i].sameDatabase(set)) {
            m_account->setCurrentIndex(i);
            return;
        }
    try {
        Connection probe;
        probe.open(set.settings({}));
        const QString company = companyName(probe);
        if (!company.isEmpty()) set.name = company;
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, kTitle);
        return;
    }
    m_sets << set;
    m_account->addItem(QStringLiteral("%1  (%2)").arg(set.name, set.where()));
    m_account->setCurrentIndex(int(m_sets.size()) - 1);
}

bool LoginDialog::makeFirstUser(const QString& name) {
    if (m_password->text().isEmpty()) {
        ShowMsg(QStringLiteral("请输入密码!"), vbExclamation, kTitle);
        return false;
    }
    if (m_password->text() != m_repeat->text()) {
        ShowMsg(QStringLiteral("两次输入的密码不一致, 请重新输入!"), vbExclamation, kTitle);
        m_repeat->clear();
        m_repeat->setFocus();
        return false;
    }
    createUser(m_db, name, m_password->text(), fullPower(), true);
    return true;
}

void LoginDialog::tryLogin() {
    const QString name = m_user->currentText().trimmed();
    if (name.isEmpty()) {
        ShowMsg(QStringLiteral("请输入用户名!"), vbExclamation, kTitle);
        m_user->setFocus();
        return;
    }
    if (name.contains(QLatin1Char('\''))) {
        ShowMsg(LoadText(183), vbExclamation, kTitle);
        return;
    }
    AccountSet set = m_sets[m_account->currentIndex()];
    try {
        if (m_firstUser && !makeFirstUser(name)) return;
        LoginResult r = m_result;
        switch (signIn(m_db, set, name, m_password->text(), r)) {
        case LoginCheck::Ok:
            break;
        case LoginCheck::NoSuchUser:
            ShowMsg(QStringLiteral("没有此用户: %1").arg(name), vbExclamation, kTitle);
            m_user->setFocus();
            return;
        case LoginCheck::Disabled:
            ShowMsg(QStringLiteral("用户 %1 已停用, 请与系统负责人联系!").arg(name), vbExclamation, kTitle);
            return;
        case LoginCheck::WrongPassword:
            ShowMsg(QStringLiteral("密码错误, 请重新输入!"), vbExclamation, kTitle);
            m_password->clear();
            m_password->setFocus();
            return;
        }
        m_result = r;
        m_result.myModel = m_request.myModel;
    } catch (const DbError& e) {
        ShowMsg(e.message(), vbExclamation, kTitle);
        return;
    }
    if (!m_request.settingsFile.isEmpty()) {
        set.lastUser = m_result.userName;
        try {
            saveAccountSet(m_request.settingsFile, set);
        } catch (const DbError&) {
            // A settings file that cannot be written only forgets the choice.
        }
    }
    accept();
}

} // namespace zq
