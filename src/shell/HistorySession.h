#pragma once

#include "Connection.h"

#include <QSqlDatabase>
#include <QString>

namespace zq {

// Who changes the data on a connection, for the change history that the database writes by
// itself (triggers, see SchemaHistory.cpp): the user and the machine travel with the connection,
// so that every save, import and cascade is recorded without the saves knowing of it. On the
// server they are settings of the session; on the file database functions of the connection.

// At open and after a login: the control's user (UserName) on this machine.
void TagHistorySession(Connection& c);
// An explicit user and machine (a command line, a second client).
void SetHistorySession(Connection& c, const QString& user, const QString& host);
// Recording on or off for this connection (on after every open). Off only where rows are not
// changes made by anyone: a demo company written at once, a database copied or restored.
void SetHistoryRecording(Connection& c, bool on);
// History rows may be deleted only while this is on (the supervisor's purge).
void SetHistoryPurging(Connection& c, bool on);
// The same for a connection through the bare driver (the benchmarks' baselines): a connection of
// the file database without the functions could not write to a recorded table.
void SetHistorySession(QSqlDatabase& db, const QString& user, const QString& host, bool recording);
// The user and machine the connection records.
QString HistoryUser(const Connection& c);
QString HistoryHost(const Connection& c);

// Recording off for a scope.
class HistoryOff {
public:
    explicit HistoryOff(Connection& c)
        : m_c(c) {
        SetHistoryRecording(c, false);
    }
    ~HistoryOff() { SetHistoryRecording(m_c, true); }
    HistoryOff(const HistoryOff&) = delete;
    HistoryOff& operator=(const HistoryOff&) = delete;

private:
    Connection& m_c;
};

} // namespace zq
