#pragma once

#include <QStringList>
#include <QTextStream>

namespace zq::admin {

// zqrs-admin print cards|grid|sheet ...: prints without opening the program, straight to a PDF file.
// A QApplication must exist (the print engine draws with the toolkit's fonts).
int runPrint(const QStringList& args, QTextStream& out, QTextStream& err);

// zqrs-admin export grid ...: a list of one table as .xlsx or .csv, on a read-only session.
int runExport(const QStringList& args, QTextStream& out, QTextStream& err);

// zqrs-admin import persons --file F [--update] [--dry-run]: persons from a spreadsheet.
int runImport(const QStringList& args, QTextStream& out, QTextStream& err);

} // namespace zq::admin
