#include "LoginPassword.h"

#include "Fonts.h"
#include "LoginKit.h"

#include "resources/Texts.h"
#include "shell/Prompts.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zq {

namespace {
QString titleOf(PasswordDialog::Mode mode) {
    switch (mode) {
    case PasswordDialog::NewUser:
        return QStringLiteral("新增用户");
    case PasswordDialog::Reset:
        return QStringLiteral("重设密码");
    case PasswordDialog::Change:
        return QStringLiteral("修改密码");
    }
    return QString();
}
} // namespace

PasswordDialog::PasswordDialog(Mode mode, const QString& who, QWidget* parent)
    : QDialog(parent)
    , m_password(namedEntry(this, "txtPassword", true))
    , m_repeat(namedEntry(this, "txtRepeat", true)) {
    setObjectName(QStringLiteral("frmPassword"));
    setWindowTitle(titleOf(mode));
    setFont(uiFont());
    setMinimumWidth(320);

    auto* form = new QFormLayout;
    if (mode == NewUser) {
        m_name = namedEntry(this, "txtName", false);
        m_name->setPlaceholderText(QStringLiteral("与人事档案中的姓名相同"));
        form->addRow(QStringLiteral("姓名:"), m_name);
    } else {
        form->addRow(QStringLiteral("用户:"), new QLabel(who, this));
    }
    if (mode == Change) {
        m_old = namedEntry(this, "txtOld", true);
        form->addRow(QStringLiteral("原密码:"), m_old);
    }
    form->addRow(mode == Change ? QStringLiteral("新密码:") : QStringLiteral("密码:"), m_password);
    form->addRow(QStringLiteral("重复密码:"), m_repeat);

    auto* ok = namedButton(this, "cmdOK", QStringLiteral("确定"));
    ok->setDefault(true);
    auto* cancel = namedButton(this, "cmdCancel", QStringLiteral("取消"));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);
    connect(ok, &QPushButton::clicked, this, &PasswordDialog::check);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
}

QString PasswordDialog::name() const {
    return m_name ? m_name->text().trimmed() : QString();
}

QString PasswordDialog::oldPassword() const {
    return m_old ? m_old->text() : QString();
}

QString PasswordDialog::password() const {
    return m_password->text();
}

void PasswordDialog::check() {
    const QString title = windowTitle();
    if (m_name && name().isEmpty()) {
        ShowMsg(QStringLiteral("请输入姓名!"), vbExclamation, title);
        return;
    }
    if (m_name && name().contains(QLatin1Char('\''))) {
        ShowMsg(LoadText(183), vbExclamation, title);
        return;
    }
    if (m_password->text().isEmpty()) {
        ShowMsg(QStringLiteral("请输入密码!"), vbExclamation, title);
        return;
    }
    if (m_password->text() != m_repeat->text()) {
        ShowMsg(QStringLiteral("两次输入的密码不一致, 请重新输入!"), vbExclamation, title);
        m_repeat->clear();
        m_repeat->setFocus();
        return;
    }
    accept();
}

} // namespace zq
