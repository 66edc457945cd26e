#pragma once

#include <QString>
#include <QStringList>

namespace zq::test {

// The standard output of a program; "<program failed>" when it fails.
QString run(const QString& program, const QStringList& args);
// The text of a PDF (one page of it, when asked) as a reader copies it out, without the blanks: the
// reader makes its own guess at those from the gaps between the characters.
QString pdfText(const QString& pdf, int page = 0);
int pdfPages(const QString& pdf);
// Pictures placed in a PDF.
int pdfImages(const QString& pdf);
bool pdfLandscape(const QString& pdf);

} // namespace zq::test
