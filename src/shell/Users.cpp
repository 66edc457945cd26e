#include "Users.h"

#include "DbError.h"
#include "Recordset.h"
#include "Schema.h"
#include "SqlText.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPasswordDigestor>
#include <QRandomGenerator>
#include <QSet>

namespace zq {

// ---- Passwords ---------------------------------------------------------------------------------

namespace {
const QString kScheme = QStringLiteral("pbkdf2-sha256");
// About a fifth of a second on an office machine: slow for guessing, quick enough for a login.
constexpr int kIterations = 100000;
constexpr int kSaltBytes = 16;
constexpr int kKeyBytes = 32;

QByteArray derive(const QString& password, const QByteArray& salt, int iterations) {
    return QPasswordDigestor::deriveKeyPbkdf2(QCryptographicHash::Sha256, password.toUtf8(), salt, iterations,
                                              kKeyBytes);
}
} // namespace

QString hashPassword(const QString& password) {
    QByteArray salt(kSaltBytes, Qt::Uninitialized);
    QRandomGenerator::system()->fillRange(reinterpret_cast<quint32*>(salt.data()), kSaltBytes / 4);
    const QByteArray key = derive(password, salt, kIterations);
    return QStringLiteral("%1$%2$%3$%4")
        .arg(kScheme)
        .arg(kIterations)
        .arg(QString::fromLatin1(salt.toBase64()), QString::fromLatin1(key.toBase64()));
}

bool verifyPassword(const QString& password, const QString& stored) {
    const QStringList parts = stored.split(QLatin1Char('$'));
    if (parts.size() != 4 || parts[0] != kScheme) return false;
    bool ok = false;
    const int iterations = parts[1].toInt(&ok);
    if (!ok || iterations < 1 || iterations > 10000000) return false;
    const QByteArray salt = QByteArray::fromBase64(parts[2].toLatin1());
    const QByteArray want = QByteArray::fromBase64(parts[3].toLatin1());
    if (salt.isEmpty() || want.size() != kKeyBytes) return false;
    const QByteArray got = derive(password, salt, iterations);
    // Every byte is looked at, so the time taken tells nothing about where they differ.
    int diff = 0;
    for (int i = 0; i < kKeyBytes; ++i)
        diff |= got[i] ^ want[i];
    return diff == 0;
}

// ---- Users ---------------------------------------------------------------------------------------

QString noPower() {
    return QString(kPowerLength, QLatin1Char('0'));
}

QString fullPower() {
    return QString(kPowerLength, QLatin1Char('1'));
}

QString normalisedPower(const QString& power) {
    return power.left(kPowerLength).leftJustified(kPowerLength, QLatin1Char('0'));
}

namespace {
const QString kUserColumns = QStringLiteral("fName,fPassHash,fPower,fSupervisor,fDisabled,fLastLogin");

User userOf(const Recordset& rs) {
    User u;
    u.name = rs.text(QStringLiteral("fName"));
    u.supervisor = rs.val(QStringLiteral("fSupervisor")) != 0;
    u.disabled = rs.val(QStringLiteral("fDisabled")) != 0;
    u.power = normalisedPower(rs.text(QStringLiteral("fPower")));
    u.lastLogin = rs.text(QStringLiteral("fLastLogin"));
    return u;
}

QString userSelect(const QString& name) {
    return QStringLiteral("select %1 from tSysUser where fName=%2").arg(kUserColumns, quoted(name));
}

// The row of one user, open for writing; throws when there is none.
void updateUser(Connection& c, const QString& name, const std::function<void(Recordset&)>& change) {
    ensureUserTables(c);
    Recordset rs(c, userSelect(name), Cursor::Keyset, Lock::Optimistic);
    if (rs.eof()) throw DbError(QStringLiteral("没有此用户: %1").arg(name));
    change(rs);
    rs.update();
}

QString checkedName(const QString& name) {
    const QString n = name.trimmed();
    if (n.isEmpty()) throw DbError(QStringLiteral("用户名不能为空"));
    checked(n); // a quote can never be looked up again
    return n;
}

void checkPassword(const QString& password) {
    if (password.isEmpty()) throw DbError(QStringLiteral("密码不能为空"));
}

QString now() {
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
}
} // namespace

void ensureUserTables(Connection& c) {
    // Looked at once per database and run: the log writes a line for every guarded operation.
    static QSet<QString> seen;
    const ConnectionSettings& s = c.settings();
    const QString key = QStringLiteral("%1|%2|%3").arg(s.sqlData).arg(s.userPath, s.defaultDb);
    if (seen.contains(key)) return;
    schema::createUserTables(c);
    seen.insert(key);
}

QVector<User> listUsers(Connection& c) {
    ensureUserTables(c);
    QVector<User> out;
    for (Recordset rs(c, QStringLiteral("select %1 from tSysUser order by fName").arg(kUserColumns));
         !rs.eof(); rs.moveNext())
        out << userOf(rs);
    return out;
}

std::optional<User> findUser(Connection& c, const QString& name) {
    ensureUserTables(c);
    Recordset rs(c, userSelect(name));
    if (rs.eof()) return std::nullopt;
    return userOf(rs);
}

bool hasUsers(Connection& c) {
    ensureUserTables(c);
    Recordset rs(c, QStringLiteral("select count(*) from tSysUser"));
    return rs.val(0) > 0;
}

QString supervisorName(Connection& c) {
    ensureUserTables(c);
    Recordset rs(
        c, QStringLiteral("select fName from tSysUser where fSupervisor=1 and fDisabled=0 order by fName"));
    return rs.eof() ? QString() : rs.text(0);
}

int activeSupervisors(Connection& c) {
    ensureUserTables(c);
    Recordset rs(c, QStringLiteral("select count(*) from tSysUser where fSupervisor=1 and fDisabled=0"));
    return int(rs.val(0));
}

void createUser(Connection& c, const QString& name, const QString& password, const QString& power,
                bool supervisor) {
    const QString n = checkedName(name);
    checkPassword(password);
    if (findUser(c, n)) throw DbError(QStringLiteral("已有此用户: %1").arg(n));
    Recordset rs(c, QStringLiteral("select %1 from tSysUser where 1=0").arg(kUserColumns), Cursor::Keyset,
                 Lock::Optimistic);
    rs.addNew();
    rs.setValue(QStringLiteral("fName"), n);
    rs.setValue(QStringLiteral("fPassHash"), hashPassword(password));
    rs.setValue(QStringLiteral("fPower"), normalisedPower(power));
    rs.setValue(QStringLiteral("fSupervisor"), supervisor ? 1 : 0);
    rs.setValue(QStringLiteral("fDisabled"), 0);
    rs.update();
}

void setUserPassword(Connection& c, const QString& name, const QString& password) {
    checkPassword(password);
    updateUser(c, name,
               [&](Recordset& rs) { rs.setValue(QStringLiteral("fPassHash"), hashPassword(password)); });
}

void renameUser(Connection& c, const QString& from, const QString& to) {
    const QString n = checkedName(to);
    if (n.compare(from, Qt::CaseInsensitive) != 0 && findUser(c, n))
        throw DbError(QStringLiteral("已有此用户: %1").arg(n));
    updateUser(c, from, [&](Recordset& rs) { rs.setValue(QStringLiteral("fName"), n); });
}

void setUserDisabled(Connection& c, const QString& name, bool disabled) {
    updateUser(c, name, [&](Recordset& rs) { rs.setValue(QStringLiteral("fDisabled"), disabled ? 1 : 0); });
}

void setUserSupervisor(Connection& c, const QString& name, bool supervisor) {
    updateUser(c, name,
               [&](Recordset& rs) { rs.setValue(QStringLiteral("fSupervisor"), supervisor ? 1 : 0); });
}

void setUserPower(Connection& c, const QString& name, const QString& power) {
    updateUser(c, name,
               [&](Recordset& rs) { rs.setValue(QStringLiteral("fPower"), normalisedPower(power)); });
}

LoginCheck checkLogin(Connection& c, const QString& name, const QString& password, User* user) {
    ensureUserTables(c);
    const QString n = name.trimmed();
    if (n.isEmpty() || n.contains(QLatin1Char('\''))) return LoginCheck::NoSuchUser;
    Recordset rs(c, userSelect(n));
    if (rs.eof()) return LoginCheck::NoSuchUser;
    const User u = userOf(rs);
    if (u.disabled) return LoginCheck::Disabled;
    if (!verifyPassword(password, rs.text(QStringLiteral("fPassHash")))) return LoginCheck::WrongPassword;
    rs.close();
    updateUser(c, u.name, [](Recordset& w) { w.setValue(QStringLiteral("fLastLogin"), now()); });
    if (user) *user = u;
    return LoginCheck::Ok;
}

// ---- Account sets --------------------------------------------------------------------------------

ConnectionSettings AccountSet::settings(const QString& password) const {
    ConnectionSettings s;
    s.sqlData = sqlData;
    s.userPath = path;
    s.defaultDb = database;
    s.userId = login;
    s.password = password;
    return s;
}

QString AccountSet::where() const {
    return sqlData == 0 ? path : QStringLiteral("%1 @ %2").arg(database, path);
}

bool AccountSet::sameDatabase(const AccountSet& o) const {
    if ((sqlData == 0) != (o.sqlData == 0)) return false;
    if (sqlData == 0) return QFileInfo(path).absoluteFilePath() == QFileInfo(o.path).absoluteFilePath();
    return path.compare(o.path, Qt::CaseInsensitive) == 0 && database == o.database;
}

AccountSet accountSetOf(const ConnectionSettings& s) {
    AccountSet a;
    a.sqlData = s.sqlData;
    a.path = s.userPath;
    a.database = s.defaultDb;
    a.login = s.userId;
    a.name = s.sqlData == 0 ? QFileInfo(s.userPath).completeBaseName() : s.defaultDb;
    return a;
}

QString settingsFileIn(const QString& powerPath) {
    QString dir = powerPath;
    if (dir.endsWith(QLatin1Char('\\')) || dir.endsWith(QLatin1Char('/'))) dir.chop(1);
    return dir + QStringLiteral("/zqset.db");
}

namespace {
// Opens the settings file, making it (and its folder) when asked to.
bool openSettings(Connection& c, const QString& file, bool create) {
    if (!QFileInfo::exists(file)) {
        if (!create) return false;
        QDir().mkpath(QFileInfo(file).absolutePath());
        QFile f(file);
        if (!f.open(QIODevice::WriteOnly)) throw DbError(QStringLiteral("无法建立设置文件: %1").arg(file));
    }
    c.open({0, file, {}, {}, {}});
    c.execute(
        QStringLiteral("create table if not exists tAccountSet (fName text, SQLData integer, fPath text, "
                       "fDatabase text, fLogin text, fLastUser text, fUsed integer)"));
    return true;
}

const QString kSetSelect = QStringLiteral(
    "select fName,SQLData,fPath,fDatabase,fLogin,fLastUser,fUsed from tAccountSet order by fUsed desc");
} // namespace

QVector<AccountSet> loadAccountSets(const QString& file) {
    QVector<AccountSet> out;
    Connection c;
    if (!openSettings(c, file, false)) return out;
    for (Recordset rs(c, kSetSelect); !rs.eof(); rs.moveNext()) {
        AccountSet a;
        a.name = rs.text(0);
        a.sqlData = int(rs.val(1));
        a.path = rs.text(2);
        a.database = rs.text(3);
        a.login = rs.text(4);
        a.lastUser = rs.text(5);
        out << a;
    }
    return out;
}

void saveAccountSet(const QString& file, const AccountSet& set) {
    Connection c;
    openSettings(c, file, true);
    // Names are matched here, not in the statement: a company name may hold any character.
    Recordset rs(c, kSetSelect, Cursor::Keyset, Lock::Optimistic);
    const double used = rs.eof() ? 1 : rs.val(6) + 1;
    while (!rs.eof() && rs.text(0) != set.name)
        rs.moveNext();
    if (rs.eof()) rs.addNew();
    rs.setValue(0, set.name);
    rs.setValue(1, set.sqlData);
    rs.setValue(2, set.path);
    rs.setValue(3, set.database);
    rs.setValue(4, set.login);
    rs.setValue(5, set.lastUser);
    rs.setValue(6, qint64(used));
    rs.update();
}

void removeAccountSet(const QString& file, const QString& name) {
    Connection c;
    if (!openSettings(c, file, false)) return;
    Recordset rs(c, kSetSelect, Cursor::Keyset, Lock::Optimistic);
    for (; !rs.eof(); rs.moveNext())
        if (rs.text(0) == name) rs.deleteRow();
}

QString companyName(Connection& c) {
    Recordset rs(c, QStringLiteral("select FullName,CompName from myCompany"));
    if (rs.eof()) return QString();
    const QString full = rs.text(0).trimmed();
    return full.isEmpty() ? rs.text(1).trimmed() : full;
}

// ---- Operation log -------------------------------------------------------------------------------

void writeLog(Connection& c, const QString& user, const QString& module, const QString& text) {
    ensureUserTables(c);
    Recordset rs(c, QStringLiteral("select fTime,fUser,fModel,fText from tSysLog where 1=0"), Cursor::Keyset,
                 Lock::Optimistic);
    rs.addNew();
    rs.setValue(0, now());
    rs.setValue(1, user);
    rs.setValue(2, module);
    rs.setValue(3, text);
    rs.update();
}

QVector<LogEntry> readLog(Connection& c, const LogFilter& f) {
    ensureUserTables(c);
    const Dialect& d = c.dialect();
    QString where = QStringLiteral(" where 1=1");
    if (f.from.isValid()) where += QStringLiteral(" and fTime>=") + quoted(f.from.toString(Qt::ISODate));
    if (f.to.isValid())
        where += QStringLiteral(" and fTime<") + quoted(f.to.addDays(1).toString(Qt::ISODate));
    if (!f.user.isEmpty()) where += QStringLiteral(" and fUser=") + quoted(f.user);
    if (!f.text.isEmpty()) {
        const QString pattern = quoted(QLatin1Char('%') + f.text + QLatin1Char('%'));
        where +=
            QStringLiteral(" and (%1 or %2)")
                .arg(d.like(QStringLiteral("fText"), pattern), d.like(QStringLiteral("fModel"), pattern));
    }
    QString sql = QStringLiteral("fTime,fUser,fModel,fText from tSysLog") + where +
                  QStringLiteral(" order by fTime desc, fID desc");
    sql = f.limit > 0 ? d.selectTop(f.limit, sql) : QStringLiteral("select ") + sql;
    QVector<LogEntry> out;
    for (Recordset rs(c, sql); !rs.eof(); rs.moveNext())
        out.push_back({rs.text(0), rs.text(1), rs.text(2), rs.text(3)});
    return out;
}

QStringList logUsers(Connection& c) {
    ensureUserTables(c);
    QStringList out;
    for (Recordset rs(c, QStringLiteral("select distinct fUser from tSysLog order by fUser")); !rs.eof();
         rs.moveNext())
        if (!rs.text(0).isEmpty()) out << rs.text(0);
    return out;
}

} // namespace zq
