#pragma once

#include "Connection.h"

#include <optional>
#include <QDate>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

namespace zq {

// ---- Passwords ---------------------------------------------------------------------------------

// A salted PBKDF2-HMAC-SHA256 key of the password, as one text:
// "pbkdf2-sha256$<iterations>$<salt, base64>$<key, base64>". A fresh random salt every call.
QString hashPassword(const QString& password);
// True when the password gives the stored key. Anything that is not such a hash never matches.
bool verifyPassword(const QString& password, const QString& stored);

// ---- Users of an account set ------------------------------------------------------------------

constexpr int kPowerLength = 350;
// The rights string that refuses everything, and the one that allows everything.
QString noPower();
QString fullPower();
// The rights string cut or padded with "0" to its 350 positions.
QString normalisedPower(const QString& power);

struct User {
    QString name; // the person's fName
    bool supervisor = false;
    bool disabled = false;
    QString power; // 350 characters of "0" or "1"
    QString lastLogin;
};

// Creates the users and log tables in a database made before they existed.
void ensureUserTables(Connection& c);

// Every user, by name.
QVector<User> listUsers(Connection& c);
std::optional<User> findUser(Connection& c, const QString& name);
bool hasUsers(Connection& c);
// The first supervisor in use, by name; empty when there is none.
QString supervisorName(Connection& c);

// Adds a user. Throws DbError for an empty name, a name in use or an empty password.
void createUser(Connection& c, const QString& name, const QString& password, const QString& power,
                bool supervisor);
void setUserPassword(Connection& c, const QString& name, const QString& password);
// Throws DbError when the new name is empty or in use.
void renameUser(Connection& c, const QString& from, const QString& to);
void setUserDisabled(Connection& c, const QString& name, bool disabled);
void setUserSupervisor(Connection& c, const QString& name, bool supervisor);
void setUserPower(Connection& c, const QString& name, const QString& power);
// Supervisors that are not disabled.
int activeSupervisors(Connection& c);

enum class LoginCheck { Ok, NoSuchUser, Disabled, WrongPassword };
// Checks a name and password; on Ok the user is given back and the login time recorded.
LoginCheck checkLogin(Connection& c, const QString& name, const QString& password, User* user = nullptr);

// ---- Account sets --------------------------------------------------------------------------------

// One account set of the settings file: a name and where its database lies. The database password
// is not kept: it is the control's Password.
struct AccountSet {
    QString name;
    int sqlData = 0;
    QString path;     // the file, or "host[:port]" of the server
    QString database; // the server's database
    QString login;    // the server login
    QString lastUser; // who logged in last, offered first next time

    ConnectionSettings settings(const QString& password) const;
    // The file, or "database @ server", for showing.
    QString where() const;
    bool sameDatabase(const AccountSet& other) const;
};

AccountSet accountSetOf(const ConnectionSettings& s);
// zqset.db in PowerPath, whose final slash or backslash is cut first.
QString settingsFileIn(const QString& powerPath);
// The account sets of the settings file, the one used last first; none when there is no file.
QVector<AccountSet> loadAccountSets(const QString& file);
// Adds the set, or replaces the one with the same name, and makes it the one used last. Makes the
// file when it is missing.
void saveAccountSet(const QString& file, const AccountSet& set);
void removeAccountSet(const QString& file, const QString& name);

// The company's name from myCompany (FullName, else CompName); empty when there is no row.
QString companyName(Connection& c);

// ---- Operation log -------------------------------------------------------------------------------

struct LogEntry {
    QString time; // yyyy-MM-dd hh:mm:ss
    QString user;
    QString module;
    QString text;
};

void writeLog(Connection& c, const QString& user, const QString& module, const QString& text);

struct LogFilter {
    QDate from; // null: no lower limit
    QDate to;   // null: no upper limit; the day itself is included
    QString user;
    QString text; // part of the text or of the module key
    int limit = 0;
};
// The lines that pass the filter, newest first.
QVector<LogEntry> readLog(Connection& c, const LogFilter& filter);
// Everyone who has a line in the log, by name.
QStringList logUsers(Connection& c);

} // namespace zq
