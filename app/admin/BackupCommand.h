#pragma once

#include <QStringList>
#include <QTextStream>

namespace zq::admin {

// zqrs-admin backup | restore | copy (args[1] is the command): gives the exit code.
int runBackupCommand(const QStringList& args, QTextStream& out, QTextStream& err);

} // namespace zq::admin
