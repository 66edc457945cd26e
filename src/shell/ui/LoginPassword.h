#pragma once

#include <QDialog>

class QLineEdit;

namespace zq {

// Asks for a password twice, and for what the mode needs besides: the name of a new user, or the
// present password of the user who changes their own. Stays open until the entries agree.
// Controls: txtName, txtOld, txtPassword, txtRepeat, cmdOK, cmdCancel.
class PasswordDialog : public QDialog {
public:
    enum Mode { NewUser, Reset, Change };
    // `who` is shown for Reset and Change.
    PasswordDialog(Mode mode, const QString& who = {}, QWidget* parent = nullptr);

    QString name() const;
    QString oldPassword() const;
    QString password() const;

private:
    void check();

    QLineEdit* m_name = nullptr;
    QLineEdit* m_old = nullptr;
    QLineEdit* m_password;
    QLineEdit* m_repeat;
};

} // namespace zq
