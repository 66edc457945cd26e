// Spreadsheets: 100,000 persons x 20 columns written as .xlsx (prints export.xlsx100k.rss_mb, the
// peak memory of the process so far), and 10,000 and 100,000 persons imported from a .csv: read,
// checked and written in one transaction (each run ends by deleting them again, so every run adds
// anew).

#include "Bench.h"

#include "personnel/PersonImport.h"
#include "services/InputAids.h"
#include "services/Spreadsheets.h"
#include "shell/Recordset.h"

#include <cstdio>
#include <memory>
#include <QDir>
#include <QSqlError>
#include <QSqlQuery>
#include <stdexcept>

namespace {

using zq::bench::Context;

const QString kFields = QStringLiteral(
    "fCode,fName,fSex,fBirthDay,fMz,fHy,fHj,fSfz,fJg,fZz,fXzz,fygxz,fPhone,fXl,fZy,fXx,fSpday,fBmName,fRz,"
    "mobilephone");
constexpr int kExportRows = 100000;
constexpr int kImportRows = 10000;
constexpr int kImportRows100k = 100000;

QString scratchFile(const QString& name) {
    return QDir::temp().filePath(QStringLiteral("zqrs-bench-") + name);
}

QVector<zq::SheetColumn> exportColumns() {
    QVector<zq::SheetColumn> columns;
    for (const QString& f : kFields.split(QLatin1Char(','))) {
        zq::SheetColumn c{f, zq::CellKind::Text, 0, 12};
        if (f == QLatin1String("fBirthDay") || f == QLatin1String("fSpday")) c.kind = zq::CellKind::Date;
        columns << c;
    }
    return columns;
}
bool rssPrinted = false;

QString exportSql(const Context& c) {
    Q_UNUSED(c)
    return QStringLiteral("select %1 from tRsBasic order by fCode limit %2").arg(kFields).arg(kExportRows);
}

// Persons of the register under new codes (prefix and a running number) and without identity
// cards, `count` of them, streamed; the register is gone through again where it has fewer, so that
// making the file holds no rows and leaves the import's peak memory its own.
class ImportRows : public zq::RowSource {
public:
    ImportRows(QString prefix, int count)
        : m_prefix(std::move(prefix))
        , m_count(count) {}
    QVector<zq::SheetColumn> columns() const override {
        QVector<zq::SheetColumn> columns;
        for (const QString& f : kFields.split(QLatin1Char(',')))
            columns << zq::SheetColumn{f, zq::CellKind::Text, 0, 10};
        return columns;
    }
    bool next(QStringList& cells) override {
        if (m_done >= m_count) return false;
        if (!m_rs || m_rs->eof()) {
            m_rs = std::make_unique<zq::Recordset>(zq::conn(), QStringLiteral("select %1 from tRsBasic order by fCode").arg(kFields));
            if (m_rs->eof()) throw std::runtime_error("import: the register is empty");
        }
        cells.clear();
        for (int i = 0; i < m_rs->fieldCount(); ++i)
            cells << m_rs->text(i);
        m_rs->moveNext();
        cells[0] = m_prefix + QStringLiteral("%1").arg(m_done++, 6, 10, QLatin1Char('0'));
        cells[7].clear();
        // A database made by an older demo holds texts past the record's entry limits.
        for (int i = 1; i < cells.size(); ++i)
            if (i != 17 && i != 18) cells[i] = zq::LimitLength(cells[i], 20, QString());
        return true;
    }

private:
    QString m_prefix;
    int m_count;
    int m_done = 0;
    std::unique_ptr<zq::Recordset> m_rs;
};

void writeImportFile(const QString& file, const QString& prefix, int count) {
    ImportRows source(prefix, count);
    QString error;
    if (zq::WriteCsv(file, source, &error) != count) throw std::runtime_error(error.toStdString());
}

void deleteImported(QSqlDatabase& db, const QString& prefix) {
    QSqlQuery q(db);
    if (!q.exec(QStringLiteral("delete from tRsBasic where fCode like '%1%'").arg(prefix)))
        throw std::runtime_error(q.lastError().text().toStdString());
}

// Reads, checks and writes the file in one transaction; prints the peak memory once when asked.
void importFile(Context& c, const QString& file, const QString& prefix, int count, const char* rssName) {
    const zq::ImportCheck check = zq::CheckImport(zq::PrepareImport(file), false);
    if (!check.error.isEmpty() || check.added != count)
        throw std::runtime_error(QStringLiteral("import: %1, added %2, refused %3: %4")
                                     .arg(check.error)
                                     .arg(check.added)
                                     .arg(check.refused)
                                     .arg(check.issues.isEmpty() ? QString() : check.issues.first().reason)
                                     .toStdString());
    zq::WriteImport(check, false);
    if (rssName) std::fprintf(stderr, "%s  %.0f\n", rssName, zq::bench::peakRssMb());
    deleteImported(c.raw, prefix);
}

// The same rows inserted through the bare driver in one transaction, then deleted again.
void insertRaw(Context& c, const QString& file, const QString& prefix) {
    const zq::SheetData sheet = zq::ReadCsv(file);
    const QStringList fields = kFields.split(QLatin1Char(','));
    QStringList marks;
    for (int i = 0; i < fields.size(); ++i)
        marks << QStringLiteral("?");
    c.raw.transaction();
    QSqlQuery q(c.raw);
    q.prepare(QStringLiteral("insert into tRsBasic (%1,fzt) values (%2,1)").arg(kFields, marks.join(',')));
    for (int r = 1; r < sheet.rows.size(); ++r) {
        for (int i = 0; i < fields.size(); ++i) {
            const QString v = sheet.rows.at(r).cell(i);
            q.bindValue(i, v.isEmpty() && fields.at(i).endsWith(QLatin1String("day"), Qt::CaseInsensitive)
                               ? QVariant(QMetaType(QMetaType::QString))
                               : QVariant(v));
        }
        if (!q.exec()) throw std::runtime_error(q.lastError().text().toStdString());
    }
    c.raw.commit();
    deleteImported(c.raw, prefix);
}

const QString kImp10k = QStringLiteral("IMP"), kImp100k = QStringLiteral("IMQ");
bool rss100kPrinted = false;

} // namespace

ZQ_BENCH(
    "export.xlsx100k",
    [](Context& c) {
        zq::QueryRowSource rows(exportColumns(), exportSql(c));
        QString error;
        if (zq::WriteXlsx(scratchFile(QStringLiteral("export.xlsx")), rows, QStringLiteral("员工名单"),
                          &error) < 0)
            throw std::runtime_error(error.toStdString());
        if (!rssPrinted) {
            rssPrinted = true;
            std::fprintf(stderr, "export.xlsx100k.rss_mb  %.0f\n", zq::bench::peakRssMb());
        }
    },
    [](Context& c) { zq::bench::readAll(c.raw, exportSql(c)); });

ZQ_BENCH(
    "import.persons10k",
    [](Context& c) { importFile(c, scratchFile(QStringLiteral("import.csv")), kImp10k, kImportRows, nullptr); },
    [](Context& c) { insertRaw(c, scratchFile(QStringLiteral("import.csv")), kImp10k); },
    [](Context& c) {
        writeImportFile(scratchFile(QStringLiteral("import.csv")), kImp10k, kImportRows);
        deleteImported(c.raw, kImp10k);
    });

// 100,000 persons from one .csv: read, checked and written within a minute and a gigabyte (prints
// import.persons100k.rss_mb after the first run; run it alone for the import's own peak).
ZQ_BENCH(
    "import.persons100k",
    [](Context& c) {
        importFile(c, scratchFile(QStringLiteral("import100k.csv")), kImp100k, kImportRows100k,
                   rss100kPrinted ? nullptr : "import.persons100k.rss_mb");
        rss100kPrinted = true;
    },
    [](Context& c) { insertRaw(c, scratchFile(QStringLiteral("import100k.csv")), kImp100k); },
    [](Context& c) {
        writeImportFile(scratchFile(QStringLiteral("import100k.csv")), kImp100k, kImportRows100k);
        deleteImported(c.raw, kImp100k);
    });
