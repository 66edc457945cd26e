// Spreadsheets: 100,000 persons x 20 columns written as .xlsx (prints export.xlsx100k.rss_mb, the
// peak memory of the process so far), and 10,000 persons imported from a .csv: read, checked and
// written in one transaction (the run ends by deleting them again, so every run adds anew).

#include "Bench.h"

#include "personnel/PersonImport.h"
#include "services/InputAids.h"
#include "services/Spreadsheets.h"
#include "shell/Recordset.h"

#include <cstdio>
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

void deleteImported(QSqlDatabase& db) {
    QSqlQuery q(db);
    if (!q.exec(QStringLiteral("delete from tRsBasic where fCode like 'IMP%'")))
        throw std::runtime_error(q.lastError().text().toStdString());
}

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
    [](Context& c) {
        const zq::ImportCheck check =
            zq::CheckImport(zq::PrepareImport(scratchFile(QStringLiteral("import.csv"))), false);
        if (!check.error.isEmpty() || check.added != kImportRows)
            throw std::runtime_error(
                QStringLiteral("import: %1, added %2, refused %3: %4")
                    .arg(check.error)
                    .arg(check.added)
                    .arg(check.refused)
                    .arg(check.issues.isEmpty() ? QString() : check.issues.first().reason)
                    .toStdString());
        zq::WriteImport(check, false);
        deleteImported(c.raw);
    },
    [](Context& c) {
        // The same rows inserted through the bare driver in one transaction, then deleted again.
        const zq::SheetData sheet = zq::ReadCsv(scratchFile(QStringLiteral("import.csv")));
        const QStringList fields = kFields.split(QLatin1Char(','));
        QStringList marks;
        for (int i = 0; i < fields.size(); ++i)
            marks << QStringLiteral("?");
        c.raw.transaction();
        QSqlQuery q(c.raw);
        q.prepare(
            QStringLiteral("insert into tRsBasic (%1,fzt) values (%2,1)").arg(kFields, marks.join(',')));
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
        deleteImported(c.raw);
    },
    [](Context& c) {
        // 10,000 persons of the register under new codes and without identity cards, as a file.
        QVector<QStringList> rows;
        zq::Recordset rs(zq::conn(), QStringLiteral("select %1 from tRsBasic order by fCode").arg(kFields));
        for (int n = 0; !rs.eof() && n < kImportRows; rs.moveNext(), ++n) {
            QStringList cells;
            for (int i = 0; i < rs.fieldCount(); ++i)
                cells << rs.text(i);
            cells[0] = QStringLiteral("IMP%1").arg(n, 6, 10, QLatin1Char('0'));
            cells[7].clear();
            // The demo writes some texts past the record's entry limits; the import would refuse them.
            for (int i = 1; i < cells.size(); ++i)
                if (i != 17 && i != 18) cells[i] = zq::LimitLength(cells[i], 20, QString());
            rows << cells;
        }
        QVector<zq::SheetColumn> columns;
        for (const QString& f : kFields.split(QLatin1Char(',')))
            columns << zq::SheetColumn{f, zq::CellKind::Text, 0, 10};
        zq::ListRowSource source(columns, rows);
        zq::WriteCsv(scratchFile(QStringLiteral("import.csv")), source);
        deleteImported(c.raw);
    });
