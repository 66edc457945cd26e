#pragma once

#include <QStringList>
#include <QTextStream>

namespace zq::admin {

// zqrs-admin print cards|grid|sheet ...: prints without opening the program, straight to a PDF file.
// A QApplication must exist (the print engine draws with the toolkit's fonts).
int runPrint(const QStringList& args, QTextStream& out, QTextStream& err);

} // namespace zq::admin
