#pragma once

#include "shell/Connection.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QStringList>
#include <QTextStream>

namespace zq::admin {

// Exit codes of zqrs-admin.
enum Exit { Ok = 0, Failed = 1, Usage = 2 };

// Runs one command line of zqrs-admin (args[0] is the program). Results go to out, refusals and
// errors to err; gives the exit code. A QCoreApplication must exist (the SQL drivers need it).
int run(const QStringList& args, QTextStream& out, QTextStream& err);

// Makes every later statement on the connection read-only: the engine itself refuses a write.
void makeReadOnly(Connection& c);

// The end of a command that wrote rows into a file: the file and its rows, or the error of a
// write that failed (rows < 0). Gives the exit code.
int reportWritten(qint64 rows, const QString& path, const QString& error, QTextStream& out, QTextStream& err);

// The database options every command takes: --db FILE, or --server HOST[:PORT] --database NAME
// [--user U] [--password P] [--tls off|require|verify-full] [--tls-root-cert FILE].
struct DatabaseOptions {
    QCommandLineOption db{QStringLiteral("db"), QString(), QStringLiteral("file")};
    QCommandLineOption server{QStringLiteral("server"), QString(), QStringLiteral("host")};
    QCommandLineOption database{QStringLiteral("database"), QString(), QStringLiteral("name")};
    QCommandLineOption user{QStringLiteral("user"), QString(), QStringLiteral("user")};
    QCommandLineOption password{QStringLiteral("password"), QString(), QStringLiteral("password")};
    QCommandLineOption tls{QStringLiteral("tls"), QString(), QStringLiteral("mode")};
    QCommandLineOption tlsRootCert{QStringLiteral("tls-root-cert"), QString(), QStringLiteral("file")};

    QList<QCommandLineOption> all() const { return {db, server, database, user, password, tls, tlsRootCert}; }
    // The server's options alone (--server ... --tls-root-cert), for commands that name the file
    // database their own way.
    bool readServer(const QCommandLineParser& parser, const QString& host, ConnectionSettings& s,
                    QString& error) const;
    // The settings the options name; false with the message to show on a mistake.
    bool read(const QCommandLineParser& parser, ConnectionSettings& s, QString& error) const;
    // A command's whole line: these options and the command's own, parsed, and the settings read.
    // On a mistake it says so with the usage on err and gives false (the command exits Usage).
    bool parse(QCommandLineParser& parser, const QList<QCommandLineOption>& own, const QStringList& args,
               ConnectionSettings& s, QTextStream& err, const QString& usage) const;
};

} // namespace zq::admin
