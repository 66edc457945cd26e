// Printing: the personal record sheets of 1,000 persons (2,000 pages, each person's photo) written as
// a PDF, beside the floor of reading the same rows of the seven tables the sheet shows and decoding
// the photos. The persons are the printing benchmarks' company of 1,000 with photos.

#include "Bench.h"
#include "PrintScratch.h"

#include "printing/PersonSheetData.h"
#include "printing/PrintOutput.h"
#include "printing/SheetDocument.h"
#include "shell/DbError.h"

#include <cstdio>
#include <QFileInfo>
#include <QImage>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace {

using zq::DbError;
using zq::bench::Context;
using namespace zq::bench::print;

void printSheets(Context& c) {
    const OnScratch on(c);
    const QString pdf = pdfPath(c) + QStringLiteral(".sheets.pdf");
    const zq::SheetDocument doc(zq::SheetCodes(QString()));
    if (!zq::writePdf(doc, pdf)) throw DbError(QStringLiteral("no PDF written"));
    static bool told = false;
    if (!told) {
        std::fprintf(stderr, "print.sheets1000  sheets=%d pages=%d  pdf=%s (%.1f MB)  peak %.0f MB\n",
                     doc.persons(), doc.pageCount(), qPrintable(pdf), double(QFileInfo(pdf).size()) / 1e6,
                     zq::bench::peakRssMb());
        told = true;
    }
}

// The floor: each table the sheet reads, whole, in one statement, every column of every row, and
// every photo decoded.
void readAndDecode(Context&) {
    QSqlDatabase raw = rawDatabase();
    for (const char* table : {"tRsBasic_P", "trsstudy", "trswork", "trsfamily", "trsresult", "trsmeed"})
        zq::bench::readAll(raw, QStringLiteral("select * from %1 order by fCode").arg(QLatin1String(table)));
    readPersonsAndPhotos();
}

} // namespace

ZQ_BENCH("print.sheets1000", printSheets, readAndDecode, prepare);
