#pragma once

#include "shell/Connection.h"
#include "shell/Users.h"

#include <QDialog>
#include <QVector>

class QCheckBox;
class QLabel;
class QListWidget;
class QPushButton;
class QTableWidget;
class QTableWidgetItem;

namespace zq {

// The supervisor's user administration on the account set's database: add, rename, disable and
// enable users, reset passwords, make or unmake supervisors, and set each user's rights as a
// matrix of modules (rows from tSysFunc, in the language) by operation (enter, add, change,
// delete, audit). Saving writes the positions SerialNo + operation of the rights string and
// leaves every other position as it was.
// Controls: lstUsers, cmdAdd, cmdRename, cmdPassword, cmdDisable, chkSupervisor, grdPower, cmdAll,
// cmdNone, cmdSave, cmdClose, lblPower.
class UserAdminDialog : public QDialog {
public:
    explicit UserAdminDialog(Connection& db, QWidget* parent = nullptr);

    // The rights string the matrix gives for the user it shows, from the stored one.
    QString matrixPower() const;
    // Selects a user by name; false when there is none.
    bool selectUser(const QString& name);
    // Closing offers to save rights not saved yet.
    void reject() override;

private:
    struct Module {
        int serialNo;
        QString key;
        QString caption;
    };

    void loadModules();
    void loadUsers(const QString& select = {});
    void userChanged();
    void showPower();
    void setAll(bool allowed);
    bool savePower();
    bool askSaveChanges();
    void addUser();
    void renameUser();
    void resetPassword();
    void toggleDisabled();
    void toggleSupervisor(bool on);
    void log(const QString& text);
    const User* current() const;
    const User* shownUser() const;

    Connection& m_db;
    QVector<Module> m_modules;
    QVector<User> m_users;
    QString m_shown; // the user whose rights the matrix shows
    bool m_dirty = false;
    bool m_filling = false;

    QListWidget* m_list;
    QPushButton* m_rename;
    QPushButton* m_password;
    QPushButton* m_disable;
    QCheckBox* m_supervisor;
    QTableWidget* m_grid;
    QLabel* m_powerNote;
    QPushButton* m_all;
    QPushButton* m_none;
    QPushButton* m_save;
};

} // namespace zq
