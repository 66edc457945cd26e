#include "PersonBrowserData.h"

#include "services/InputAids.h"
#include "services/Lookups.h"
#include "shell/Connection.h"
#include "shell/Recordset.h"
#include "shell/Rights.h"
#include "shell/Schema.h"
#include "shell/SqlText.h"

#include <QDate>

namespace zq {

namespace {
int currentState = 1;

int countOf(const QString& sql) {
    Recordset rs(conn(), sql);
    return rs.eof() ? 0 : int(rs.val(0));
}

QString personInState(const QString& code, int rsState) {
    return QStringLiteral("select * from trsbasic where fcode = ") + quoted(code) +
           QStringLiteral(" and fzt=") + num(rsState);
}
} // namespace

int CurrentRsState() {
    return currentState;
}

void SetCurrentRsState(int state) {
    currentState = state;
}

QString BrowserModelKey(int rsState) {
    return rsState == 1 ? QStringLiteral("mnuRsManIn") : QStringLiteral("mnuRsManOut");
}

bool SplitSpouseTable() {
    // A database of this system has the table from its schema; an older one gets it here.
    return schema::splitSpouseTable(conn());
}

QString PersonListCondition(int rsState, const QString& deptCode, const QString& seekCondition,
                            const QString& detailCondition, const QString& preset) {
    QString condition = QStringLiteral("a.fzt=") + num(rsState);
    if (!deptCode.isEmpty())
        condition += QStringLiteral(" And ") +
                     conn().dialect().startsWithCode(QStringLiteral("a.fbmcode"), checked(deptCode));
    if (!seekCondition.isEmpty())
        condition += QStringLiteral(" And ") + conn().dialect().caselessLikes(
                                                   QualifyCondition(seekCondition, QStringLiteral("a."), -1));
    if (!detailCondition.isEmpty()) condition += QStringLiteral(" And ") + detailCondition;
    if (!preset.isEmpty()) condition += QStringLiteral(" And (") + preset + QLatin1Char(')');
    return condition;
}

QString PersonListSql(const QString& gridFieldList, const QString& condition, bool joinDetail) {
    return QStringLiteral("Select ") + QualifyCondition(gridFieldList, QStringLiteral("a."), 0) +
           QStringLiteral(" from trsbasic a ") +
           (joinDetail ? QStringLiteral(" Left Join tRsDetail b On a.fCode=b.fCode ") : QString()) +
           QStringLiteral(" Where ") + condition + QStringLiteral(" order by a.fcode");
}

PagedQuery PersonListPaged(const QString& gridFieldList, const QString& condition, bool joinDetail) {
    PagedQuery q;
    q.columns = QualifyCondition(gridFieldList, QStringLiteral("a."), 0).split(QLatin1Char(','));
    q.from = QStringLiteral("trsbasic a") +
             (joinDetail ? QStringLiteral(" Left Join tRsDetail b On a.fCode=b.fCode") : QString());
    q.condition = condition;
    q.key = QStringLiteral("a.fcode");
    q.keyColumn = 1;
    return q;
}

QStringList PersonListCodes(const QString& condition, bool joinDetail) {
    QStringList codes;
    for (Recordset rs(conn(), PersonListSql(QStringLiteral("fCode"), condition, joinDetail)); !rs.eof();
         rs.moveNext())
        codes << rs.text(0);
    return codes;
}

QString DetailCardSql(const QString& condition) {
    return QStringLiteral("Select a.*,b.fRsDetail1,b.fRsDetail2,b.fRsDetail3,b.fRsDetail4 from trsbasic a ") +
           QStringLiteral(" Left Join tRsDetail b On a.fCode=b.fCode ") + QStringLiteral(" Where ") +
           condition + QStringLiteral(" order by a.fcode");
}

void DeletePerson(const QString& code, const QString& name, int rsState) {
    Transaction t(conn());
    conn().executeOne(QStringLiteral("delete from trsbasic where fcode=") + quoted(code) +
                      QStringLiteral(" and fzt=") + num(rsState));
    t.commit();
    WriteLogRecord(QStringLiteral("删除员工记录 [") + code + QLatin1Char('-') + name + QLatin1Char(']'));
}

int UnreturnedTools(const QString& code) {
    // The loan screen stores an unreturned item with no return date: null counts as empty.
    return countOf(
        QStringLiteral(
            "Select Count(*) from trsLoanTools where (backtime is Null or backtime='') and fcode = ") +
        quoted(code));
}

int UnreturnedGoods(const QString& code) {
    // A missing return time is no date either: the coalesce keeps that reading on both engines.
    return countOf(QStringLiteral("Select Count(*) from tRsLoanGoods where Not ") +
                   conn().dialect().isDate(QStringLiteral("coalesce(backtime,'')")) +
                   QStringLiteral(" And fcode = ") + quoted(code));
}

bool SetPersonLeft(const QString& code, int rsState, int reason) {
    Transaction t(conn());
    Recordset rs(conn(), personInState(code, rsState), Cursor::Keyset, Lock::Optimistic);
    const bool found = !rs.eof();
    if (found) {
        rs.setValue(QStringLiteral("fzt"), reason + 2);
        // The day of leaving, unless the record holds one: the month's leavers are counted by it.
        if (rs.text(QStringLiteral("leavetime")).trimmed().isEmpty())
            rs.setValue(QStringLiteral("leavetime"), QDate::currentDate().toString(Qt::ISODate));
        rs.update();
    }
    rs.close();
    t.commit();
    return found;
}

bool ReinstatePerson(const QString& code, int rsState) {
    Recordset rs(conn(), personInState(code, rsState), Cursor::Keyset, Lock::Optimistic);
    if (rs.eof()) return false;
    rs.setValue(QStringLiteral("fzt"), 1);
    rs.update();
    return true;
}

} // namespace zq
