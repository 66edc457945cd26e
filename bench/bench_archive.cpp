// The document archive at its largest (the 100,000-person demo keeps 10,000 papers in about 500
// folders): the archive screen opened with its whole tree, and a search of the archive for a word
// of the papers' texts. Beside each, the same reads through the bare driver.

#include "Bench.h"

#include "documents/ArchiveData.h"
#include "documents/frmWd_Filer.h"
#include "shell/Prompts.h"

#include <QCoreApplication>

namespace {

using zq::bench::Context;

void openArchive(Context&) {
    zq::scriptPrompts();
    zq::frmWd_Filer w;
    w.show();
    QCoreApplication::processEvents();
}

void openBaseline(Context& c) {
    zq::bench::readAll(c.raw, QStringLiteral("select fCode,fName from tRs_Bm order by fCode"));
    zq::bench::readAll(c.raw,
                       QStringLiteral("select fCode,fName from tWd_File1 where fYnxj=0 order by fCode"));
    zq::bench::readAll(c.raw,
                       QStringLiteral("select fCode,fName,fLimited,fYnxj from tWd_File1 order by fCode"));
}

// Two words that many papers hold, and a rarer pair: what a clerk types.
const QStringList& queries() {
    static const QStringList q = {QStringLiteral("报销 发票"), QStringLiteral("试用期"),
                                  QStringLiteral("消防器材")};
    return q;
}

void search(Context&) {
    for (const QString& q : queries())
        zq::FindInArchive(q);
}

void searchBaseline(Context& c) {
    // The index's own queries for the same words, without the matching lines: the bare cost of
    // finding.
    const bool server = c.engine == QStringLiteral("postgresql");
    const QStringList raw =
        server ? QStringList{QStringLiteral("('报销') & ('发票')"), QStringLiteral("('试用' <-> '用期')"),
                             QStringLiteral("('消防' <-> '防器' <-> '器材')")}
               : QStringList{QStringLiteral("\"报销\" AND \"发票\""), QStringLiteral("\"试用 用期\""),
                             QStringLiteral("\"消防 防器 器材\"")};
    const QString match =
        server ? QStringLiteral("ftokens @@ cast('%1' as tsquery)")
               : QStringLiteral("id in (select rowid from zq_findidx where zq_findidx match '%1')");
    for (const QString& q : raw)
        zq::bench::readAll(
            c.raw, QStringLiteral("select fcode,fname,ftext from zq_findtext where ftable='twd_file1' and ") +
                       match.arg(QString(q).replace(QLatin1Char('\''), QStringLiteral("''"))) +
                       QStringLiteral(" order by fcode limit 200"));
}

} // namespace

ZQ_BENCH("docs.open", openArchive, openBaseline);
ZQ_BENCH("docs.search", search, searchBaseline);
