#include "Rights.h"

#include "DbError.h"
#include "Globals.h"
#include "HistorySession.h"
#include "Prompts.h"
#include "Recordset.h"
#include "SqlText.h"
#include "Users.h"

namespace zq {

namespace {
LoginHook& hook() {
    static LoginHook h;
    return h;
}

QString& extra() {
    static QString e;
    return e;
}

ConnectionSettings controlDatabase() {
    const Globals& g = G();
    return {g.SQLData, g.UserPath, g.Password, g.UserID, g.Default};
}

bool sameDatabase(const ConnectionSettings& a, const ConnectionSettings& b) {
    return a.sqlData == b.sqlData && a.userPath == b.userPath && a.defaultDb == b.defaultDb &&
           a.userId == b.userId && a.password == b.password;
}

QString opText(qint16 op) {
    switch (op) {
    case 1:
        return QStringLiteral("-新增");
    case 2:
        return QStringLiteral("-修改");
    case 3:
        return QStringLiteral("-删除");
    case 4:
        return QStringLiteral("-审核");
    default:
        return QString();
    }
}

// The log goes to the control's database: through conn while it is open (so a line never waits
// on a lock that conn holds), else through a connection of its own.
void writeLogLine(const QString& module, const QString& text) {
    const Globals& g = G();
    if (conn().isOpen()) {
        writeLog(conn(), g.UserName, module, text);
        return;
    }
    Connection own;
    own.open(controlDatabase());
    writeLog(own, g.UserName, module, text);
}
} // namespace

void setLoginHook(LoginHook h) {
    hook() = std::move(h);
}

QString LoginExtra() {
    return extra();
}

namespace {
LoginResult presentValues(const LoginRequest& request) {
    const Globals& g = G();
    LoginResult r;
    r.myModel = g.myModel;
    r.database = request.database;
    r.compName = g.CompName;
    r.accName = g.AccName;
    r.myPower = g.myPower;
    r.zgName = g.ZgName;
    r.extra = extra();
    return r;
}

LoginRequest requestOfControl() {
    const Globals& g = G();
    LoginRequest request;
    request.database = controlDatabase();
    request.settingsFile = g.PowerPath.isEmpty() ? QString() : settingsFileIn(g.PowerPath);
    request.myModel = g.myModel;
    request.language = g.Language;
    return request;
}

bool takeBack(const LoginResult& r) {
    Globals& g = G();
    g.myModel = r.myModel;
    g.SQLData = qint16(r.database.sqlData);
    if (r.database.sqlData == 0)
        g.UserPath = r.database.userPath;
    else
        g.UserPath = r.database.userPath.isEmpty() ? QStringLiteral("SQL Server") : r.database.userPath;
    g.Default = r.database.defaultDb;
    g.UserID = r.database.userId;
    g.Password = r.database.password;
    g.CompName = r.compName;
    g.AccName = r.accName;
    g.UserName = r.userName;
    g.myPower = r.myPower;
    g.ZgName = r.zgName;
    extra() = r.extra;
    // Another account set was chosen: the next statement must reach its database.
    if (conn().isOpen() && !sameDatabase(conn().settings(), controlDatabase())) conn().close();
    // The changes from now on are this user's.
    if (conn().isOpen()) TagHistorySession(conn());
    return !g.UserPath.isEmpty() && !g.UserName.isEmpty();
}

// The values a login gives back for a user whose password was checked.
void fillLogin(Connection& db, const AccountSet& set, const User& user, LoginResult& r) {
    r.userName = user.name;
    r.myPower = user.supervisor ? fullPower() : user.power;
    r.zgName = user.supervisor ? user.name : supervisorName(db);
    const QString company = companyName(db);
    r.compName = company.isEmpty() ? set.name : company;
    r.accName = set.name;
    r.database = set.settings(db.settings().password);
    r.extra = QDateTime::currentDateTime().toString(Qt::ISODate);
}
} // namespace

bool StandAloneLogin(const QString& userName) {
    LoginRequest request = requestOfControl();
    request.userName = userName;
    LoginResult r = presentValues(request);
    if (!hook() || !hook()(request, r)) r.userName.clear();
    return takeBack(r);
}

LoginCheck signIn(Connection& db, const AccountSet& set, const QString& name, const QString& password,
                  LoginResult& r) {
    User user;
    const LoginCheck check = checkLogin(db, name, password, &user);
    if (check == LoginCheck::Ok) {
        fillLogin(db, set, user, r);
        writeLog(db, user.name, QString(), QStringLiteral("登录"));
    } else if (check == LoginCheck::WrongPassword || check == LoginCheck::Disabled) {
        writeLog(db, name.trimmed(), QString(), QStringLiteral("登录失败"));
    }
    return check;
}

qint16 CheckModel(QString& model, qint16 op) {
    if (G().UserName.isEmpty() && !StandAloneLogin()) return 0;
    if (model.isEmpty()) return 1;
    QString caption, password;
    const int serialNo = FindModel(model, caption, password);
    if (serialNo == 0) return 0;
    if (serialNo != -1 && HasPower(qint16(serialNo + op)) == 0) return 0;
    // Written before the password is asked, so that a failed attempt leaves a line too.
    writeLogLine(model, caption + opText(op));
    if (AskModelPassword(password) == 0) return 0;
    return qint16(serialNo + op);
}

qint16 CheckModel(const QString& model, qint16 op) {
    QString m = model;
    return CheckModel(m, op);
}

int FindModel(QString& model, QString& caption, QString& password) {
    const Globals& g = G();
    if (!conn().isOpen()) OpenConn(g.SQLData, conn(), g.UserPath, g.Password, g.UserID, g.Default);
    const QString lang = QString::number(g.Language);
    Recordset rs(conn(), QStringLiteral("select SerialNo,model_Name,Model_Name_") + lang +
                             QStringLiteral(",SecondPass,password from tSysFunc") +
                             QStringLiteral(" Where NoUse_=0 And (Model_Name = ") + quoted(model) +
                             QStringLiteral(" or Model_Name_") + lang + QStringLiteral(" = ") +
                             quoted(model) + QStringLiteral(")"));
    if (rs.eof()) return 0;
    const int serialNo = int(Val(rs.text(0)));
    model = rs.text(1);
    caption = rs.text(2);
    password = Val(rs.text(3)) == 1 ? rs.text(4) : QString();
    return serialNo;
}

bool PowerAllows(int position) {
    const QString& power = G().myPower;
    return position >= 1 && position <= kPowerLength && Val(power.mid(position - 1, 1)) != 0;
}

qint16 HasPower(qint16 position) {
    if (!PowerAllows(position)) {
        ShowMsg(QStringLiteral("您无权进入!"), vbExclamation);
        return 0;
    }
    return 1;
}

qint16 AskModelPassword(const QString& password) {
    if (password.isEmpty()) return -1;
    const QString answer = InputBox(QStringLiteral("Please input the Model password !")).value_or(QString());
    if (answer.trimmed() == password.trimmed()) return -1;
    ShowMsg(QStringLiteral("Deny Access: The Model password is not valid!"), vbExclamation);
    return 0;
}

void WriteLogRecord(const QString& text) {
    writeLogLine(G().myModel, text);
}

} // namespace zq
