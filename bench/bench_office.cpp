// The office screens at their largest: the notice board opened by a member of staff with a
// department prefix (the unread count, the note of his visit and the list of the 30 newest he may
// see, with the department lists), and a seek on the meetings by subject and date for such a user. Beside
// each, the same reads and write through the bare driver.

#include "Bench.h"

#include "office/frmBg_Meeting.h"
#include "office/frmBg_News.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDateEdit>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>

namespace {

using zq::bench::Context;

const QString kUser = QStringLiteral("bench");

// A member of staff of the first top department, so that the lists join the departments.
QString prefix() {
    static const QString p = [] {
        zq::Recordset rs(zq::conn(),
                         zq::conn().dialect().selectTop(
                             1, QStringLiteral("fCode from tRs_Bm where length(fCode)=2 order by fCode")));
        return rs.text(0);
    }();
    return p;
}

void actAsStaff(Context&) {
    zq::Globals& g = zq::G();
    g.UserName = kUser;
    g.ZgName = QStringLiteral("系统管理员");
    g.myPower = QString(350, QLatin1Char('1'));
    g.UserDeptCode = prefix();
    zq::scriptPrompts();
}

// The visible rows of a table for the user, in the form of the screens' statements.
QString visible(const QString& table) {
    return QStringLiteral(" from %1 a left join tRs_Bm b on a.fBmName=b.fName where (b.fCode like '%2%' or "
                          "coalesce(a.fBmName,'')='')")
        .arg(table, prefix());
}

QString limited(const Context& c, const QString& columnsAndRest) {
    return zq::Dialect(c.engine == QStringLiteral("postgresql") ? zq::Dialect::Kind::Server
                                                                : zq::Dialect::Kind::File)
        .selectTop(30, columnsAndRest);
}

void openBoard(Context&) {
    zq::frmBg_News w;
    w.show();
    QCoreApplication::processEvents();
}

void boardBaseline(Context& c) {
    // The department lists of the page and of its seek panel.
    zq::bench::readAll(c.raw, QStringLiteral("select fName from tRs_Bm order by fCode"));
    QSqlQuery q(c.raw);
    q.exec(QStringLiteral("select fOpened from tRs_NewsSeen where fUser='bench'"));
    const QString opened = q.next() ? q.value(0).toString() : QString();
    zq::bench::readAll(c.raw, QStringLiteral("select count(*)") + visible(QStringLiteral("tRs_News")) +
                                  QStringLiteral(" and a.fPosted>'") + opened + QLatin1Char('\''));
    q.exec(QStringLiteral("update tRs_NewsSeen set fOpened='") + zq::office::PostedStamp() +
           QStringLiteral("' where fUser='bench'"));
    zq::bench::readAll(c.raw, limited(c, QStringLiteral("a.*") + visible(QStringLiteral("tRs_News")) +
                                             QStringLiteral(" order by a.fDate desc")));
}

zq::frmBg_Meeting* meetings() {
    static auto* w = zq::bench::openKept<zq::frmBg_Meeting>();
    return w;
}

// The last year of the demo company's meetings.
QDate lastMeeting() {
    static const QDate d = [] {
        zq::Recordset rs(zq::conn(), QStringLiteral("select max(fDate) from tRs_meeting"));
        return QDate::fromString(rs.text(0).left(10), Qt::ISODate);
    }();
    return d;
}

// A subject that recurs, within the last year.
void prepareSeek(Context& c) {
    actAsStaff(c);
    zq::frmBg_Meeting* w = meetings();
    w->findChild<QCheckBox*>(QStringLiteral("chkTitle2"))->setChecked(true);
    w->findChild<QLineEdit*>(QStringLiteral("txtTitle2"))->setText(QStringLiteral("预算评审"));
    w->findChild<QCheckBox*>(QStringLiteral("chkDate2"))->setChecked(true);
    w->findChild<QDateEdit*>(QStringLiteral("dtpDate1"))->setDate(lastMeeting().addYears(-1));
    w->findChild<QDateEdit*>(QStringLiteral("dtpDate2"))->setDate(lastMeeting());
}

void seekMeetings(Context&) {
    zq::frmBg_Meeting* w = meetings();
    w->cmdSeek_Click();
    w->cmdSeekOk_Click();
    QCoreApplication::processEvents();
}

void seekBaseline(Context& c) {
    zq::bench::readAll(c.raw,
                       limited(c, QStringLiteral("a.*") + visible(QStringLiteral("tRs_meeting")) +
                                      QStringLiteral(" and a.fDate>='%1' and a.fDate<='%2' and "
                                                     "a.fTitle like '%预算评审%' order by a.fDate desc")
                                          .arg(lastMeeting().addYears(-1).toString(Qt::ISODate),
                                               lastMeeting().toString(Qt::ISODate))));
}

} // namespace

ZQ_BENCH("news.open", openBoard, boardBaseline, actAsStaff);
ZQ_BENCH("meeting.seek", seekMeetings, seekBaseline, prepareSeek);
