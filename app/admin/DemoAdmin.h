#pragma once

#include <QStringList>
#include <QTextStream>

namespace zq::admin {

// Exit codes of zqrs-admin.
enum Exit { Ok = 0, Failed = 1, Usage = 2 };

// Runs one command line of zqrs-admin (args[0] is the program). Results go to out, refusals and
// errors to err; gives the exit code. A QCoreApplication must exist (the SQL drivers need it).
int run(const QStringList& args, QTextStream& out, QTextStream& err);

} // namespace zq::admin
