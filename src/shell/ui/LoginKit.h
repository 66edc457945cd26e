#pragma once

#include <QLineEdit>
#include <QPushButton>

namespace zq {

// The small pieces the login, password, user and log dialogs share.

// A button named for tests; Enter never presses it by default.
inline QPushButton* namedButton(QWidget* owner, const char* name, const QString& caption) {
    auto* b = new QPushButton(caption, owner);
    b->setObjectName(QLatin1String(name));
    b->setAutoDefault(false);
    return b;
}

// A line edit named for tests, showing dots when it holds a secret.
inline QLineEdit* namedEntry(QWidget* owner, const char* name, bool secret) {
    auto* e = new QLineEdit(owner);
    e->setObjectName(QLatin1String(name));
    if (secret) e->setEchoMode(QLineEdit::Password);
    return e;
}

} // namespace zq
