#pragma once

// What the tests of zqrs-admin share: the options that name a database, and the command line run
// as its own process.

#include "TestDb.h"

#include "shell/Connection.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

namespace zq::test {

// The options of zqrs-admin that name a database.
inline QStringList whereArgs(const ConnectionSettings& s) {
    if (s.sqlData == 0) return {QStringLiteral("--db"), s.userPath};
    return {QStringLiteral("--server"), s.userPath, QStringLiteral("--database"), s.defaultDb,
            QStringLiteral("--user"),   s.userId,   QStringLiteral("--password"), s.password};
}

// Drops a server database that a test made (nothing for a file: its folder goes).
inline void dropDatabase(const ConnectionSettings& s) {
    if (s.sqlData == 0) return;
    Connection a;
    a.open(serverSettings());
    // A killed command line may still hold a session there.
    a.execute(QStringLiteral("drop database if exists %1 with (force)").arg(s.defaultDb));
}

// A database of its own for a command-line test, not made yet: a file in dir, or a database on the
// server named after the test; and the options of zqrs-admin that name it.
inline ConnectionSettings newDatabase(const QTemporaryDir& dir, const QString& name, QStringList& where) {
    ConnectionSettings s;
    if (onServer()) {
        s = serverSettings();
        s.defaultDb = QStringLiteral("zqt_%1_%2").arg(name).arg(QCoreApplication::applicationPid());
        dropDatabase(s);
    } else {
        s.userPath = dir.filePath(name + QStringLiteral(".db"));
    }
    where = whereArgs(s);
    return s;
}

// zqrs-admin as a process, without a screen, started with the arguments.
inline void startAdmin(QProcess& p, const QStringList& args) {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    p.setProcessEnvironment(env);
    p.start(QStringLiteral(ZQ_ADMIN_EXE), args);
}

// Runs zqrs-admin to its end (at most two minutes); gives the exit code, -1 when it did not end.
inline int runAdminProcess(const QStringList& args, QString* out = nullptr, QString* err = nullptr) {
    QProcess p;
    startAdmin(p, args);
    const bool ended = p.waitForFinished(120000);
    if (!ended) p.kill();
    if (out) *out = QString::fromUtf8(p.readAllStandardOutput());
    if (err) *err = QString::fromUtf8(p.readAllStandardError());
    return ended && p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
}

} // namespace zq::test
