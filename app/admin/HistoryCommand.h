#pragma once

#include <QStringList>
#include <QTextStream>

namespace zq::admin {

// zqrs-admin history --person CODE | --since DATE [--until DATE] --file F: a person's change
// history, or the company's changes of a period, as .xlsx or .csv, on a read-only session.
int runHistory(const QStringList& args, QTextStream& out, QTextStream& err);

} // namespace zq::admin
