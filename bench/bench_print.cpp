// Printing: 1,000 person cards with their photos written as a PDF through the stored layout, beside the
// floor of reading the same rows and decoding their photos. The cards come from a demo company of
// 1,000 persons made once next to the benchmark's database (a file beside it, or a server database
// with a suffix), each person given a photo.

#include "Bench.h"
#include "PrintScratch.h"

#include "admin/Demo.h"
#include "printing/Print.h"
#include "printing/PrintOutput.h"

#include "shell/Company.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/HistorySession.h"
#include "shell/Recordset.h"

#include <cstdio>
#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace zq::bench::print {

using zq::ConnectionSettings;
using zq::DbError;

constexpr int kCards = 1000;
const QString kRaw = QStringLiteral("zqbench_print_raw");

ConnectionSettings scratch(const Context& c) {
    return zq::bench::scratchDatabase(c, QStringLiteral("print"));
}

QString pdfPath(const Context& c) {
    return scratch(c).sqlData == 0 ? scratch(c).userPath + QStringLiteral(".pdf")
                                   : QStringLiteral("/tmp/%1.pdf").arg(scratch(c).defaultDb);
}

void prepare(Context& c) {
    const ConnectionSettings s = scratch(c);
    if (!zq::demo::holdsSchema(s)) {
        zq::demo::Options o;
        o.persons = kCards;
        o.seed = 11;
        zq::demo::createDemoDatabase(s, o);
    }
    QSqlDatabase raw = QSqlDatabase::contains(kRaw) ? QSqlDatabase::database(kRaw)
                                                    : QSqlDatabase::addDatabase(c.raw.driverName(), kRaw);
    raw.setHostName(c.raw.hostName());
    raw.setPort(c.raw.port());
    raw.setUserName(c.raw.userName());
    raw.setPassword(c.raw.password());
    raw.setDatabaseName(s.sqlData == 0 ? s.userPath : s.defaultDb);
    if (!raw.isOpen()) {
        if (!raw.open()) throw DbError(raw.lastError().text());
        // Plain SQL, no change history; the file database needs the history's functions even so.
        zq::SetHistorySession(raw, QString(), QString(), false);
    }

    // Every person gets a photo once.
    QStringList codes;
    {
        QSqlQuery q(raw);
        if (!q.exec(QStringLiteral("select fCode from tRsBasic where fphoto is null order by fCode")))
            throw DbError(q.lastError().text());
        while (q.next())
            codes << q.value(0).toString();
    }
    if (codes.isEmpty()) return;
    QSqlQuery q(raw);
    if (!q.prepare(QStringLiteral("update tRsBasic set fphoto=? where fCode=?"))) throw DbError(q.lastError().text());
    raw.transaction();
    for (int i = 0; i < codes.size(); ++i) {
        q.bindValue(0, zq::demo::portraitJpeg(i + 1));
        q.bindValue(1, codes.at(i));
        if (!q.exec()) throw DbError(q.lastError().text());
    }
    raw.commit();
}

OnScratch::OnScratch(const Context& c)
    : m_back(zq::conn().settings())
    , m_items(zq::G().CompanyItems) {
    zq::conn().close();
    zq::conn().open(scratch(c));
    zq::LoadCompany();
}

OnScratch::~OnScratch() {
    zq::G().CompanyItems = m_items;
    zq::conn().close();
    zq::conn().open(m_back);
}

QSqlDatabase rawDatabase() {
    return QSqlDatabase::database(kRaw);
}

void readPersonsAndPhotos() {
    QSqlQuery q(rawDatabase());
    q.setForwardOnly(true);
    if (!q.exec(QStringLiteral("select * from tRsBasic Order by fCode"))) throw DbError(q.lastError().text());
    const int columns = q.record().count();
    const int photoColumn = q.record().indexOf(QStringLiteral("fphoto"));
    while (q.next()) {
        for (int i = 0; i < columns; ++i)
            q.value(i);
        if (QImage::fromData(q.value(photoColumn).toByteArray()).isNull())
            throw DbError(QStringLiteral("no photo"));
    }
}

} // namespace zq::bench::print

namespace {

using zq::DbError;
using zq::bench::Context;
using namespace zq::bench::print;

void printCards(Context& c) {
    const OnScratch on(c);
    const QString pdf = pdfPath(c);
    zq::PrintOutput::setPdfPath(pdf);
    zq::PrintPersonCard(1, QStringLiteral("RsCard"), QStringLiteral("RsCard_01"), QString());
    zq::PrintOutput::setPdfPath(QString());
    static bool told = false;
    if (!told) {
        zq::Recordset rs(zq::conn(),
                         QStringLiteral("select count(*) from tRsBasic where fphoto is not null"));
        std::fprintf(stderr, "print.cards1000  cards=%d  pdf=%s (%.1f MB)\n", int(rs.val(0)), qPrintable(pdf),
                     double(QFileInfo(pdf).size()) / 1e6);
        told = true;
    }
}

// The floor: the same rows read whole through the bare driver and every photo decoded.
void readAndDecode(Context&) {
    readPersonsAndPhotos();
}

} // namespace

ZQ_BENCH("print.cards1000", printCards, readAndDecode, prepare);
