// A person's seven record screens opened and closed, each grid holding 50 rows. The baseline reads
// the same rows (and the spouse, appraisal and detail rows) through the bare driver.

#include "Bench.h"

#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/ui/Commands.h"

#include <QCoreApplication>
#include <QDialog>

namespace {

using zq::bench::Context;

const char* const kScreens[] = {"frmRs_PersonFamily", "frmRs_PersonResume", "frmRs_PersonTrain",
                                "frmRs_PersonResult", "frmRs_PersonReward", "frmRs_PersonWork",
                                "frmRs_PersonDetail"};
QString person;

void prepareRecords(Context&) {
    zq::Connection& c = zq::conn();
    zq::Recordset rs(c, QStringLiteral("select max(fCode) from tRsBasic where fzt=1"));
    person = rs.text(0);
    rs.close();
    // 50 rows in every grid of the person, made anew so that every run reads the same.
    zq::Transaction t(c);
    const QString p = QLatin1Char('\'') + person + QLatin1Char('\'');
    for (const char* table :
         {"tRsFamily", "tRsWork", "tRsStudy", "tRs_WorkState", "tRsResult", "tRsTech", "tRsMeed"})
        c.execute(QStringLiteral("delete from %1 where fCode=%2").arg(QLatin1String(table), p));
    for (int i = 1; i <= 50; ++i) {
        const QString n = QString::number(i);
        c.execute(QStringLiteral("insert into tRsFamily (fCode,fOrderID,fCh,fName,fNy,fDw,fZz) values "
                                 "(%1,%2,'亲属','某人%2','1970-01','深圳市某某公司职员','群众')")
                      .arg(p, n));
        for (int type = 0; type <= 1; ++type) {
            c.execute(
                QStringLiteral("insert into tRsWork (fCode,fOrderID,fYear,fBm,fRz,fWk,newbm,fType) values "
                               "(%1,%2,'2001-2003','某公司','职员','生产管理','生产部',%3)")
                    .arg(p, n)
                    .arg(type));
            c.execute(QStringLiteral("insert into tRsStudy (fCode,fOrderID,fYear,fXx,fZy,fType) values "
                                     "(%1,%2,'1990-1994','某大学','机械',%3)")
                          .arg(p, n)
                          .arg(type));
        }
        c.execute(QStringLiteral("insert into tRs_WorkState (fCode,fOrderID,fYear,YTotal,Ydays,ADay) values "
                                 "(%1,%2,'2020','250','248','2')")
                      .arg(p, n));
        c.execute(
            QStringLiteral("insert into tRsResult (fCode,fOrderID,fYear,fyj) values (%1,%2,'2020','完成')")
                .arg(p, n));
        c.execute(QStringLiteral("insert into tRsTech (fCode,fOrderID,fJs,fJn,fBz,fSm) values "
                                 "(%1,%2,'2020-01-01','5000','5500','10%')")
                      .arg(p, n));
        c.execute(QStringLiteral("insert into tRsMeed (fCode,fOrderID,fYear,fYy,fjc) values "
                                 "(%1,%2,'2020','安全生产','嘉奖')")
                      .arg(p, n));
    }
    t.commit();
    zq::Globals& g = zq::G();
    g.UserName = g.ZgName = QStringLiteral("bench");
    g.myPower = QString(350, QLatin1Char('1'));
}

void openRecords(Context&) {
    zq::Globals& g = zq::G();
    g.CurPersonCode = person;
    g.CurPersonName = QStringLiteral("bench");
    g.PersonEditMode = 2;
    zq::setModalRunner([](QDialog& d) {
        d.show();
        QCoreApplication::processEvents();
        return int(QDialog::Rejected);
    });
    for (const char* screen : kScreens)
        zq::openForm(QLatin1String(screen), nullptr);
    zq::setModalRunner({});
}

void recordsBaseline(Context& c) {
    const QString p = QLatin1Char('\'') + person + QLatin1Char('\'');
    for (const char* sql :
         {"select fOrderID,fch,fName,fny,fdw,fZz from tRsFamily where fcode=%1 order by fOrderID",
          "select fHY from trsbasic where fcode=%1", "select * from tRsBasic_P where fcode=%1",
          "select fOrderID,fYear,fbm,fRz,fWk,newbm,fType from tRsWork where fcode=%1 and fType=0 order by "
          "fOrderID",
          "select fOrderID,fYear,fbm,fRz,fWk,newbm,fType from tRsWork where fcode=%1 and fType=1 order by "
          "fOrderID",
          "select fOrderID,fYear,fXx,fzy,fType from tRsStudy where fcode=%1 and fType=0 order by fOrderID",
          "select fOrderID,fYear,fXx,fzy,fType from tRsStudy where fcode=%1 and fType=1 order by fOrderID",
          "select fOrderID,fYear,fyj from tRsResult where fcode=%1 order by fOrderID",
          "select fOrderID,fjs,fjn,fBz,fsm from tRsTech where fcode=%1 order by fOrderID",
          "select fOrderID,fYear,Fyy,fjc from tRsMeed where fcode=%1 order by fOrderID",
          "select fSpDay from tRsBasic where fcode=%1", "select * from tRsRemark where fcode=%1",
          "select fOrderID,fYear,yTotal,yDays,aDay from tRs_WorkState where fcode=%1 order by fOrderID",
          "select * from tRsDetail where fcode=%1"})
        zq::bench::readAll(c.raw, QString::fromUtf8(sql).arg(p));
}

} // namespace

ZQ_BENCH("person.records", openRecords, recordsBaseline, prepareRecords);
