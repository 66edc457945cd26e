// A person's code changed on save: the master row and every table keyed by the code move to the new
// code in one transaction. The person has a row in each of those tables. The code goes back and
// forth between runs (an even number of changes in all), so the database ends as it began.

#include "Bench.h"

#include "personnel/PersonCodeCascade.h"
#include "services/Lookups.h"
#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QSqlError>
#include <QSqlQuery>

namespace {

using zq::bench::Context;

// The person's two codes, and the one it has now.
QString baseCode;
QString currentCode;
// The tables of the cascade this database holds.
QStringList presentTables;

QString otherCode() {
    return currentCode == baseCode ? baseCode + QLatin1Char('~') : baseCode;
}

void prepare(Context&) {
    {
        zq::Recordset rs(zq::conn(), QStringLiteral("select min(fCode) from tRsBasic"));
        currentCode = rs.text(0);
    }
    // A run broken off half way leaves the person under the second code, which sorts first.
    baseCode = currentCode.endsWith(QLatin1Char('~')) ? currentCode.chopped(1) : currentCode;
    presentTables.clear();
    for (const QString& t : zq::CodeCascadeTables()) {
        if (zq::CountRows(t, QStringLiteral("1=2")) < 0) continue;
        presentTables << t;
        if (zq::CountRows(t, QStringLiteral("fcode=") + zq::quoted(currentCode)) == 0)
            zq::conn().execute(
                QStringLiteral("insert into %1 (fcode) values (%2)").arg(t, zq::quoted(currentCode)));
    }
}

void changeCode(Context&) {
    const QString to = otherCode();
    zq::Transaction tx(zq::conn());
    // As the record screen's save: any failure rolls the whole change back.
    zq::conn().execute(QStringLiteral("update tRsBasic set fCode=") + zq::quoted(to) + QStringLiteral(" where fCode=") +
                           zq::quoted(currentCode),
                       zq::Connection::OnFailure::EndTransaction);
    zq::CascadePersonCode(currentCode, to);
    tx.commit();
    currentCode = to;
}

void changeCodeBaseline(Context& c) {
    const QString to = otherCode();
    const auto run = [&c](const QString& sql) {
        QSqlQuery q(c.raw);
        if (!q.exec(sql)) throw zq::DbError(q.lastError().text());
    };
    c.raw.transaction();
    const QString set = QStringLiteral(" set fcode='%1' where fcode='%2'").arg(to, currentCode);
    run(QStringLiteral("update tRsBasic") + set);
    for (const QString& t : presentTables)
        run(QStringLiteral("update ") + t + set);
    if (!c.raw.commit()) throw zq::DbError(c.raw.lastError().text());
    currentCode = to;
}

} // namespace

ZQ_BENCH("cascade.codechange", changeCode, changeCodeBaseline, prepare);
