#pragma once

#include <QRectF>
#include <QString>
#include <QStringList>
#include <QVector>

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

// The words of one page (from 1) with their boxes in millimetres from the paper's top left corner,
// as the reader places them (pdftotext -bbox): what a page shows, not only what its text holds.
struct PdfWord {
    QString text;
    QRectF mm;
};
QVector<PdfWord> pdfWords(const QString& pdf, int page);

} // namespace zq::test
