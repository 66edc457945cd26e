#pragma once

#include "shell/Connection.h"
#include "shell/Rights.h"
#include "shell/Users.h"

#include <QDialog>
#include <QVector>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace zq {

// The login: the account sets of the settings file (and the control's own database), the user
// and the password. A wrong password says so and the user tries again. An account set without any
// user asks for the supervisor's name and password instead and makes that user.
// Controls: cboAccount, cmdAddSet, cboUser, txtPassword, txtRepeat (first user only), lblNote,
// cmdOK, cmdCancel.
class LoginDialog : public QDialog {
public:
    // `result` starts with the present values and is filled when the login succeeds.
    LoginDialog(const LoginRequest& request, LoginResult& result, QWidget* parent = nullptr);

private:
    void loadSets();
    void chooseSet(int index);
    void addSetFromFile();
    void tryLogin();
    bool makeFirstUser(const QString& name);
    void setNote(const QString& text, bool warning);

    LoginRequest m_request;
    LoginResult& m_result;
    QVector<AccountSet> m_sets;
    Connection m_db;
    bool m_firstUser = false;

    QComboBox* m_account;
    QComboBox* m_user;
    QLineEdit* m_password;
    QLabel* m_repeatLabel;
    QLineEdit* m_repeat;
    QLabel* m_note;
    QPushButton* m_ok;
};

} // namespace zq
