// The change history and the organisation chart.
//
// history.save: a person's master record saved through the system's save, three fields changed,
// with the history the triggers write. Its baseline is the same save (the same statement in one
// transaction) on a second connection of the system with recording off: the difference is the
// history's own cost, which is to stay within a fifth of the save.
// history.person: one person's history of 1,000 changes read as the 变更记录 screen reads it
// (codes followed, captions looked up). Baseline: the person's rows through the bare driver.
// history.company: the company report of one month over 1,000,000 history rows: the counts by
// kind and the first page of the list. Baseline: the same count and page in plain SQL.
// orgchart.open: the chart of every department and post read, laid out and drawn once, fitted into
// a 1600x1000 picture. Baseline: the departments and the grouped head counts in plain SQL.

#include "Bench.h"

#include "organisation/OrgChart.h"
#include "personnel/PersonBasicData.h"
#include "services/ChangeHistory.h"
#include "services/PagedRows.h"
#include "shell/DbError.h"
#include "shell/HistorySession.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <algorithm>
#include <QImage>
#include <QPainter>
#include <QSqlError>
#include <QSqlQuery>

namespace {

using zq::bench::Context;

QString person;
int saves = 0;
zq::Connection* quiet = nullptr; // the baseline's connection, recording off

QString firstInService(const char* which) {
    zq::Recordset rs(zq::conn(), QStringLiteral("select %1(fCode) from tRsBasic where fzt=1").arg(QLatin1String(which)));
    return rs.text(0);
}

void prepareSave(Context& c) {
    person = firstInService("min");
    if (!quiet) {
        quiet = new zq::Connection;
        quiet->open(c.settings);
        zq::SetHistoryRecording(*quiet, false);
    }
}

// Three fields of the master record changed, as the clerk does on the record screen.
void edit(zq::PersonBasicRow& loaded, zq::PersonBasicRow& row) {
    if (!zq::LoadPersonBasic(person, loaded)) throw zq::DbError(QStringLiteral("no person ") + person);
    row = loaded;
    const QString n = QString::number(++saves % 97);
    row.values[10] = QStringLiteral("深圳市福田区某某路") + n + QStringLiteral("号"); // fXzz
    row.values[12] = QStringLiteral("0755-8800") + n;                                  // fPhone
    row.values[34] = QStringLiteral("1380000") + n;                                   // mobilephone
}

void saveWithHistory(Context&) {
    zq::PersonBasicRow loaded, row;
    edit(loaded, row);
    zq::SavePersonBasic(2, row, person, loaded);
}

void saveWithoutHistory(Context&) {
    zq::PersonBasicRow loaded, row;
    edit(loaded, row);
    const zq::BoundSql update = zq::UpdatePersonSql(row, person, loaded);
    zq::Transaction tx(*quiet);
    quiet->executeOne(update.sql, update.binds);
    tx.commit();
}

QString historied;

void preparePerson(Context&) {
    historied = firstInService("max");
    zq::Connection& c = zq::conn();
    const qint64 have = qint64(
        zq::Recordset(c, QStringLiteral("select count(*) from tRsHistory where fCode=") + zq::quoted(historied)).val(0));
    if (have >= 1000) return;
    // Changes made through the master row, two columns at a time, so that the triggers write them.
    zq::Transaction t(c);
    for (qint64 i = have; i < 1000; i += 2)
        c.execute(QStringLiteral("update tRsBasic set fTc=%1, fother1=%2 where fCode=%3")
                      .arg(zq::quoted(QStringLiteral("特长%1").arg(i)), zq::quoted(QStringLiteral("6222%1").arg(i)),
                           zq::quoted(historied)));
    t.commit();
}

void openPersonHistory(Context&) {
    if (zq::PersonHistory(historied).size() < 1000) throw zq::DbError(QStringLiteral("short history"));
}

void openPersonHistoryBaseline(Context& c) {
    zq::bench::readAll(c.raw, QStringLiteral("select fWhen,fTable,fRow,fField,fOp,fBefore,fAfter,fUser,fHost "
                                             "from tRsHistory where fCode='%1' order by fId desc")
                                  .arg(historied));
}

const QDate kMonth(2025, 3, 1);

// A million history rows over ten months, 100,000 a month (a row for each of the first persons,
// as many rounds as it takes), unless the database holds them already.
void prepareCompany(Context&) {
    zq::Connection& c = zq::conn();
    const qint64 have = qint64(zq::Recordset(c, QStringLiteral("select count(*) from tRsHistory")).val(0));
    if (have >= 1000000) return;
    const qint64 persons = qint64(zq::Recordset(c, QStringLiteral("select count(*) from tRsBasic")).val(0));
    if (persons == 0) throw zq::DbError(QStringLiteral("no persons"));
    const qint64 perMonth = 100000;
    for (int m = 0; m < 10; ++m) {
        zq::Transaction t(c);
        const QString day = QDate(2025, 1, 1).addMonths(m).toString(QStringLiteral("yyyy-MM-"));
        for (qint64 written = 0; written < perMonth; written += std::min(persons, perMonth - written)) {
            // Kinds as a month has them: most rows are other changes, some moves, posts, pay,
            // hires, leavers; the day of the month and the time follow the person.
            c.execute(QStringLiteral(
                          "insert into tRsHistory (fWhen,fUser,fHost,fTable,fCode,fBmCode,fRow,fField,fBefore,fAfter,fOp,fKind) "
                          "select '%1'||case when fSex='男' then '12' else '21' end||' 10:00:00','admin','hr-pc',"
                          "'tRsBasic',fCode,fBmCode,null,case when fzt<>1 then 'fzt' when fSex='男' and fHy='已婚' then "
                          "'fBmName' else 'fXzz' end,'旧的值','新的值',2,"
                          "case when fzt<>1 then 5 when fSex='男' and fHy='已婚' then 1 else 0 end from tRsBasic limit %2")
                          .arg(day)
                          .arg(std::min(persons, perMonth - written)));
        }
        t.commit();
    }
    c.execute(QStringLiteral("analyze tRsHistory"));
}

zq::CompanyHistoryFilter monthFilter() {
    zq::CompanyHistoryFilter f;
    f.from = kMonth;
    f.to = kMonth.addMonths(1).addDays(-1);
    return f;
}

void openCompanyReport(Context&) {
    const zq::CompanyHistoryFilter f = monthFilter();
    const QVector<qint64> counts = zq::CompanyHistoryCounts(f);
    zq::PagedRows rows(zq::CompanyHistoryQuery(f));
    if (rows.count() != counts[0] || counts[0] == 0) throw zq::DbError(QStringLiteral("report counts differ"));
    for (int r = 1; r <= std::min(rows.count(), zq::PagedRows::kPageRows); ++r)
        rows.row(r);
}

void openCompanyReportBaseline(Context& c) {
    const QString period = QStringLiteral("fWhen>='%1' and fWhen<'%2'")
                               .arg(kMonth.toString(QStringLiteral("yyyy-MM-dd")),
                                    kMonth.addMonths(1).toString(QStringLiteral("yyyy-MM-dd")));
    zq::bench::readAll(c.raw, QStringLiteral("select fKind,count(*) from tRsHistory where %1 group by fKind").arg(period));
    zq::bench::readAll(c.raw, QStringLiteral("select h.fWhen,h.fCode,p.fName,h.fBmCode,h.fKind,h.fTable,h.fField,"
                                             "h.fBefore,h.fAfter,h.fUser,h.fHost from tRsHistory h left join "
                                             "tRsBasic p on p.fCode=h.fCode where %1 order by h.fId limit 128")
                                  .arg(period));
}

void openChart(Context&) {
    zq::OrgChart chart;
    chart.load({}, true);
    if (chart.departments() == 0) throw zq::DbError(QStringLiteral("no departments"));
    QImage image(1600, 1000, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter p(&image);
    const QRectF b = chart.bounds();
    const double scale = std::min(1600 / b.width(), 1000 / b.height());
    p.scale(scale, scale);
    p.translate(-b.topLeft());
    chart.paint(p);
}

void openChartBaseline(Context& c) {
    zq::bench::readAll(c.raw, QStringLiteral("select fCode,fName,fLimited,fYnxj from tRs_Bm order by fCode"));
    zq::bench::readAll(c.raw, QStringLiteral("select fBmCode,count(*) from tRsBasic where fzt=1 group by fBmCode"));
}

} // namespace

ZQ_BENCH("history.save", saveWithHistory, saveWithoutHistory, prepareSave);
ZQ_BENCH("history.person", openPersonHistory, openPersonHistoryBaseline, preparePerson);
ZQ_BENCH("history.company", openCompanyReport, openCompanyReportBaseline, prepareCompany);
ZQ_BENCH("orgchart.open", openChart, openChartBaseline);
