#include "HomePageData.h"

#include "services/HeadCounts.h"
#include "services/Lookups.h"
#include "shell/Connection.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/Rights.h"
#include "shell/SqlText.h"

#include <QHash>

namespace zq {

namespace {

QString iso(const QDate& d) {
    return d.toString(Qt::ISODate);
}

// Whether the user may enter each module: the first of its rights positions.
QHash<QString, bool> entryRights(const QStringList& keys) {
    QHash<QString, bool> may;
    QStringList quotedKeys;
    for (const QString& k : keys)
        quotedKeys << quoted(k);
    for (Recordset rs(conn(), QStringLiteral("select Model_Name,SerialNo from tSysFunc where NoUse_=0 and "
                                             "Model_Name in (") +
                                  quotedKeys.join(QLatin1Char(',')) + QLatin1Char(')'));
         !rs.eof(); rs.moveNext())
        may.insert(rs.text(0).toLower(), PowerAllows(int(rs.val(1))));
    return may;
}

// Captions of the kinds of leaving, fzt 2 upwards, as the register's state list offers them.
QStringList leavingKinds() {
    QStringList kinds;
    for (Recordset rs(conn(),
                      QStringLiteral("select BriefName from briefDetail where briefType='rsstate' Order By "
                                     "briefcode"));
         !rs.eof() && kinds.size() < 6; rs.moveNext())
        kinds << rs.text(0);
    if (kinds.isEmpty()) kinds << QStringLiteral("离职");
    return kinds;
}

} // namespace

HomeSummary ReadHomeSummary(const QDate& today) {
    const Globals& g = G();
    HomeSummary s;
    if (!g.isSupervisor()) s.deptCode = GetUserDeptCode(g.UserName);
    // A user the register does not know gets a code that matches no department.
    s.anyone = s.deptCode != QStringLiteral("false-false");
    const QString inDept = s.deptCode.isEmpty()
                               ? QString()
                               : QStringLiteral("a.fbmcode like ") + quoted(s.deptCode + QLatin1Char('%'));

    const QString in = QStringLiteral("mnuRsManIn"), out = QStringLiteral("mnuRsManOut");
    const QHash<QString, bool> may = entryRights({in, out, QStringLiteral("mnuRsbm")});

    const QDate first(today.year(), today.month(), 1);
    const QString from = quoted(iso(first)), to = quoted(iso(first.addMonths(1).addDays(-1)));
    const QString monthText = QStringLiteral("%1").arg(today.month(), 2, 10, QLatin1Char('0'));
    const QString month = quoted(monthText);
    const QString now = quoted(iso(today)), soon = quoted(iso(today.addDays(kNoticeDays)));
    const QString hiredFrom = quoted(iso(today.addMonths(-kProbationMonths)));
    const QString hiredTo = quoted(iso(today.addDays(kNoticeDays).addMonths(-kProbationMonths)));
    const QString between = QStringLiteral(" between %1 and %2");
    const Dialect& dialect = conn().dialect();
    const QString hired = dialect.exactText(QStringLiteral("a.fSpday"));
    const QString born = dialect.exactText(QStringLiteral("a.fBirthDay"));

    // Each line's condition serves twice: counted below, and as the link's filter, which the
    // register adds to its own state term. For the whole company a line is counted from the kept head counts (`kept` names the key,
    // `keptValue` the value, less the persons of `keptExcept`) or by the dates' indexes; for a
    // branch by one pass over the branch.
    struct Def {
        const char* id;
        QString label;
        QString key;
        int state;
        QString condition;
        const char* kept = nullptr;
        QString keptValue = {};
        QString keptExcept = {};
    };
    QVector<Def> defs = {
        {"serving", QStringLiteral("在职员工"), in, 1, QString(), "fbmcode"},
        {"hires", QStringLiteral("本月入职"), in, 1, hired + between.arg(from, to)},
        {"contracts", QStringLiteral("%1天内合同到期").arg(kNoticeDays), in, 1,
         dialect.exactText(QStringLiteral("a.contractlimt")) + between.arg(now, soon)},
        {"probation", QStringLiteral("%1天内试用期满").arg(kNoticeDays), in, 1,
         hired + between.arg(hiredFrom, hiredTo)},
        {"anniversaries", QStringLiteral("本月入职周年"), in, 1,
         QStringLiteral("substr(%1,6,2)=").arg(hired) + month + QStringLiteral(" and ") + hired +
             QLatin1Char('<') + from,
         "hiremonth", monthText,
         // Those hired in this month of this year or later: a range of the hire dates' index.
         hired + QStringLiteral(">=") + from + QStringLiteral(" and substr(%1,6,2)=").arg(hired) + month},
        {"birthdays", QStringLiteral("本月生日"), in, 1, QStringLiteral("substr(%1,6,2)=").arg(born) + month,
         "birthmonth", monthText},
    };
    const QStringList kinds = leavingKinds();
    for (int i = 0; i < kinds.size(); ++i)
        defs.append({"leavers", QStringLiteral("本月离职 (%1)").arg(kinds.at(i)), out, i + 2,
                     dialect.exactText(QStringLiteral("a.leavetime")) + between.arg(from, to)});
    const auto both = [](const QString& a, const QString& b) {
        return a.isEmpty() ? b : b.isEmpty() ? a : a + QStringLiteral(" and ") + b;
    };

    QStringList counts;
    for (const Def& d : defs) {
        const QString state = QStringLiteral("a.fzt=") + num(d.state);
        if (!inDept.isEmpty())
            counts << QStringLiteral("sum(case when ") + both(state, d.condition) + QStringLiteral(" then 1 else 0 end)");
        else if (!d.kept)
            counts << QStringLiteral("(select count(*) from tRsBasic a where ") + both(state, d.condition) +
                          QLatin1Char(')');
        else {
            QString n = QStringLiteral("(select coalesce(sum(fCount),0) from tRsHeadCount where fColumn='%1' and fzt=%2")
                            .arg(QLatin1String(d.kept), num(d.state));
            if (!d.keptValue.isEmpty()) n += QStringLiteral(" and fValue=") + quoted(d.keptValue);
            n += QLatin1Char(')');
            if (!d.keptExcept.isEmpty())
                n += QStringLiteral("-(select count(*) from tRsBasic a where ") + both(state, d.keptExcept) +
                     QLatin1Char(')');
            counts << n;
        }
    }
    Recordset rs(conn(), QStringLiteral("select ") + counts.join(QLatin1Char(',')) +
                             (inDept.isEmpty() ? QString() : QStringLiteral(" from tRsBasic a where ") + inDept));
    bool leavers = false;
    for (int i = 0; i < defs.size(); ++i) {
        const Def& d = defs.at(i);
        if (!may.value(d.key.toLower())) continue;
        const qint64 count = rs.eof() ? 0 : qint64(rs.val(i));
        // Only the kinds of leaving somebody left by this month get a line.
        if (d.key == out && count == 0) continue;
        leavers = leavers || d.key == out;
        s.lines.append({QLatin1String(d.id), d.label, QStringLiteral("人"), count, d.key, d.state,
                        both(d.condition, inDept)});
    }
    if (!leavers && may.value(out.toLower()))
        s.lines.append(
            {QStringLiteral("leavers"), QStringLiteral("本月离职"), QStringLiteral("人"), 0, out, 2, inDept});

    if (may.value(QStringLiteral("mnursbm"))) {
        QString sql = QStringLiteral("select fCode,fLimited from tRs_Bm where fLimited>0");
        if (!s.deptCode.isEmpty())
            sql += QStringLiteral(" and fCode like ") + quoted(s.deptCode + QLatin1Char('%'));
        QStringList codes;
        QVector<double> limits;
        for (Recordset q(conn(), sql); !q.eof(); q.moveNext()) {
            codes << TrimBlanks(q.text(0));
            limits << q.val(1);
        }
        qint64 over = 0;
        if (!codes.isEmpty()) {
            HeadCounts heads(QStringLiteral("tRs_bm"), 1);
            heads.prepare(codes);
            for (int i = 0; i < codes.size(); ++i)
                if (double(heads.count(codes.at(i))) > limits.at(i)) ++over;
        }
        s.lines.append({QStringLiteral("overQuota"), QStringLiteral("超编的部门与岗位"), QStringLiteral("个"),
                        over, QStringLiteral("mnuRsbm"), 1, QString()});
    }
    return s;
}

} // namespace zq
