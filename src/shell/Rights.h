#pragma once

#include "Connection.h"
#include "Users.h"

#include <functional>
#include <QString>

namespace zq {

// What the stand-alone login is handed: the database of the control, the settings file with the
// account sets, the module the host is in, and the language.
struct LoginRequest {
    ConnectionSettings database;
    QString settingsFile;
    QString myModel;
    qint16 language = 0;
    // The user the login offers first; the login still asks that user's password.
    QString userName;
};

// What the login gives back. The account set chosen names the database; userName stays empty when
// the user gave up.
struct LoginResult {
    QString myModel;
    ConnectionSettings database;
    QString userName;
    QString compName;
    QString accName;
    QString myPower;
    QString zgName;
    QString extra; // kept, used by nothing
};

// The login window. It starts from a result that holds the present values, fills it, and gives
// false when the user gave up. The user interface installs it; without one every login gives up.
using LoginHook = std::function<bool(const LoginRequest&, LoginResult&)>;
void setLoginHook(LoginHook hook);

// Runs the login with the control's settings and takes back its values into the global state:
// myModel, the database (UserPath becomes the file, or the server's address, or "SQL Server" for
// the local one), CompName, AccName, UserName, myPower, ZgName. False when UserPath or UserName is
// still empty afterwards. `userName` is the user the login offers first (the host was given it).
bool StandAloneLogin(const QString& userName = QString());
// The further value of the last login.
QString LoginExtra();

// The login's own work, without a window: checks the name and password on the account set's
// database (`db` is open on it) and, on Ok, fills the values the login gives back. Every attempt on
// a known user goes to the log: "登录", or "登录失败" for a wrong password.
LoginCheck signIn(Connection& db, const AccountSet& set, const QString& name, const QString& password,
                  LoginResult& r);

// Whether the user may carry out operation op (0 enter, 1 add, 2 change, 3 delete, 4 audit) of a
// module, given by key or caption. Logs the user in first when no one is. 0 means refused;
// otherwise the position tested, or 1 for an empty model. A caption given in a variable is
// replaced by the module's key.
qint16 CheckModel(QString& model, qint16 op);
qint16 CheckModel(const QString& model, qint16 op);

// SerialNo of the module in use with this key or caption (0 when there is none). Sets model to
// the key, caption to the caption in the language, password to the second password or empty.
int FindModel(QString& model, QString& caption, QString& password);

// Whether the position of myPower allows, without a word.
bool PowerAllows(int position);
// 1 when the position of myPower allows; otherwise shows "您无权进入!" and gives 0.
qint16 HasPower(qint16 position);

// -1 when the password is empty or the answer matches it after trimming; otherwise 0.
qint16 AskModelPassword(const QString& password);

// Stores one line of the operation log: the time, UserName, the module the host is in, the text.
void WriteLogRecord(const QString& text);

} // namespace zq
