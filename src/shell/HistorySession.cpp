#include "HistorySession.h"

#include "DbError.h"
#include "Globals.h"

#include <QHash>
#include <QSqlDriver>
#include <QSqlQuery>
#include <QSysInfo>
#include <sqlite3.h>

namespace zq {

namespace {

struct Session {
    QString user;
    QString host;
    bool recording = true;
    bool purging = false;
};

// What each open connection records, for changing one part without the others.
QHash<const Connection*, Session>& sessions() {
    static QHash<const Connection*, Session> s;
    return s;
}

// The values the file database's functions give, owned by the connection once registered.
struct FileSession {
    QByteArray user;
    QByteArray host;
    bool recording = true;
    bool purging = false;
};

void resultText(sqlite3_context* ctx, const QByteArray& text) {
    sqlite3_result_text(ctx, text.constData(), int(text.size()), SQLITE_TRANSIENT);
}

// zq_user(): the user, or null while recording is off (the triggers then write nothing).
void fnUser(sqlite3_context* ctx, int, sqlite3_value**) {
    const auto* s = static_cast<const FileSession*>(sqlite3_user_data(ctx));
    if (s->recording) resultText(ctx, s->user);
    else sqlite3_result_null(ctx);
}
void fnHost(sqlite3_context* ctx, int, sqlite3_value**) {
    resultText(ctx, static_cast<const FileSession*>(sqlite3_user_data(ctx))->host);
}
// zq_purge(): 1 while history may be deleted, else null.
void fnPurge(sqlite3_context* ctx, int, sqlite3_value**) {
    if (static_cast<const FileSession*>(sqlite3_user_data(ctx))->purging) sqlite3_result_int(ctx, 1);
    else sqlite3_result_null(ctx);
}
// The value block of each open handle. The functions are registered once, as the connection opens
// (SQLite refuses to replace a function while a statement runs); later changes go into the block.
QHash<sqlite3*, FileSession*>& fileSessions() {
    static QHash<sqlite3*, FileSession*> s;
    return s;
}

// Called by SQLite as the connection closes.
void freeSession(void* p) {
    auto* s = static_cast<FileSession*>(p);
    for (auto it = fileSessions().begin(); it != fileSessions().end();)
        it = it.value() == s ? fileSessions().erase(it) : std::next(it);
    delete s;
}

sqlite3* fileHandle(const QSqlDatabase& db) {
    const QVariant v = db.driver()->handle();
    if (!v.isValid() || qstrcmp(v.typeName(), "sqlite3*") != 0) return nullptr;
    return *static_cast<sqlite3* const*>(v.data());
}

void apply(QSqlDatabase& db, bool server, const Session& s) {
    if (server) {
        QSqlQuery q(db);
        q.prepare(QStringLiteral("select set_config('zq.user',?,false),set_config('zq.host',?,false),"
                                 "set_config('zq.history',?,false),set_config('zq.purge',?,false)"));
        q.addBindValue(s.user);
        q.addBindValue(s.host);
        q.addBindValue(s.recording ? QStringLiteral("on") : QStringLiteral("off"));
        q.addBindValue(s.purging ? QStringLiteral("on") : QStringLiteral("off"));
        if (!q.exec()) throw DbError(QStringLiteral("无法设置变更记录的用户"));
        return;
    }
    sqlite3* h = fileHandle(db);
    if (!h) throw DbError(QStringLiteral("无法设置变更记录的用户"));
    const FileSession values{s.user.toUtf8(), s.host.toUtf8(), s.recording, s.purging};
    if (FileSession* known = fileSessions().value(h)) {
        *known = values;
        return;
    }
    // One value block for the three functions, freed with zq_user as the connection closes.
    // Innocuous, so that the schema's triggers may call them whatever the trust setting.
    auto* fs = new FileSession(values);
    const int flags = SQLITE_UTF8 | SQLITE_INNOCUOUS;
    if (sqlite3_create_function_v2(h, "zq_user", 0, flags, fs, fnUser, nullptr, nullptr, freeSession) != SQLITE_OK) {
        delete fs;
        throw DbError(QStringLiteral("无法设置变更记录的用户"));
    }
    fileSessions().insert(h, fs);
    // Should these fail, the triggers fail for want of them: nothing is written unrecorded.
    if (sqlite3_create_function_v2(h, "zq_host", 0, flags, fs, fnHost, nullptr, nullptr, nullptr) != SQLITE_OK ||
        sqlite3_create_function_v2(h, "zq_purge", 0, flags, fs, fnPurge, nullptr, nullptr, nullptr) != SQLITE_OK)
        throw DbError(QStringLiteral("无法设置变更记录的用户"));
}

void apply(Connection& c, const Session& s) {
    if (c.isOpen()) apply(c.database(), c.dialect().isServer(), s);
}

Session& sessionOf(const Connection& c) {
    return sessions()[&c];
}

} // namespace

void TagHistorySession(Connection& c) {
    SetHistorySession(c, G().UserName, QSysInfo::machineHostName());
}

void SetHistorySession(Connection& c, const QString& user, const QString& host) {
    Session s; // a new user starts recording afresh
    s.user = user;
    s.host = host;
    sessionOf(c) = s;
    apply(c, s);
}

void SetHistoryRecording(Connection& c, bool on) {
    Session& s = sessionOf(c);
    s.recording = on;
    apply(c, s);
}

void SetHistoryPurging(Connection& c, bool on) {
    Session& s = sessionOf(c);
    s.purging = on;
    apply(c, s);
}

void SetHistorySession(QSqlDatabase& db, const QString& user, const QString& host, bool recording) {
    Session s;
    s.user = user;
    s.host = host;
    s.recording = recording;
    apply(db, db.driverName() == QLatin1String("QPSQL"), s);
}

QString HistoryUser(const Connection& c) {
    return sessions().value(&c).user;
}

QString HistoryHost(const Connection& c) {
    return sessions().value(&c).host;
}

} // namespace zq
