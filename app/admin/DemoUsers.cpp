// The demo logins: a supervisor and two members of staff with limited rights, so that the login,
// the rights and the department filters of the office screens can be tried on the demo company.

#include "Demo.h"

#include "shell/Recordset.h"
#include "shell/SqlText.h"
#include "shell/Users.h"

#include <algorithm>
#include <QSet>
#include <utility>
#include <vector>

namespace zq::demo {

namespace {

const QString kSupervisor = QStringLiteral("系统管理员");
const QString kSupervisorPassword = QStringLiteral("admin");
const QString kStaffPassword = QStringLiteral("1234");

// What each of the two may do: module key and the operations allowed (0 enter .. 4 audit).
using Grants = std::vector<std::pair<const char*, std::vector<int>>>;

const Grants& clerkGrants() {
    static const Grants g = {
        {"mnuRsManIn", {0}},          {"mnuRsManOut", {0}},        {"mnuRsTotal", {0}},
        {"mnuOffice1", {0, 1, 2}},    {"mnuOA_Report", {0, 1, 2}}, {"mnuOffice2", {0, 1, 2}},
        {"mnuOA_Meeting", {0, 1, 2}}, {"mnuOffice3", {0, 1}},      {"mnuOA_News", {0, 1}},
        {"mnuWdFiler", {0}},          {"mnuWdDict", {0}},
    };
    return g;
}

const Grants& staffGrants() {
    static const Grants g = {
        {"mnuRsManIn", {0}},    {"mnuOffice1", {0, 1}}, {"mnuOA_Report", {0, 1}}, {"mnuOffice2", {0}},
        {"mnuOA_Meeting", {0}}, {"mnuOffice3", {0}},    {"mnuOA_News", {0}},      {"mnuWdDict", {0}},
    };
    return g;
}

// The rights string of the grants, by the positions the modules have in this database.
QString powerOf(Connection& c, const Grants& grants) {
    QString power = noPower();
    for (const auto& [key, ops] : grants) {
        Recordset rs(c, QStringLiteral("select SerialNo from tSysFunc where NoUse_=0 and Model_Name=") +
                            quoted(QString::fromLatin1(key)));
        if (rs.eof() || rs.val(0) < 1) continue;
        for (int op : ops) {
            const int position = int(rs.val(0)) + op;
            if (position <= kPowerLength) power[position - 1] = QLatin1Char('1');
        }
    }
    return power;
}

// Staff who write the most reports, in service, with a name nobody else has, each from another
// top department: they find reports of their own in the office screens.
QStringList busiestAuthors(Connection& c, int wanted) {
    std::vector<std::pair<int, QString>> authors;
    for (Recordset rs(c, QStringLiteral("select fFootnote1, count(*) from tRs_RptFlow group by fFootnote1"));
         !rs.eof(); rs.moveNext())
        if (!rs.text(0).isEmpty()) authors.push_back({-int(rs.val(1)), rs.text(0)});
    std::sort(authors.begin(), authors.end()); // most reports first, then by name on every engine
    QStringList out;
    QSet<QString> tops;
    for (const auto& [count, name] : authors) {
        if (out.size() == wanted) break;
        Recordset rs(c, QStringLiteral("select fBmCode, fZt from tRsBasic where fName=") + quoted(name));
        if (rs.recordCount() != 1 || rs.val(1) != 1) continue;
        const QString top = rs.text(0).left(2);
        if (tops.contains(top)) continue;
        tops.insert(top);
        out << name;
    }
    return out;
}

} // namespace

QVector<DemoLogin> addDemoUsers(Connection& c) {
    QVector<DemoLogin> made;
    if (hasUsers(c)) return made;
    createUser(c, kSupervisor, kSupervisorPassword, fullPower(), true);
    made.push_back({kSupervisor, kSupervisorPassword, true});
    const QStringList staff = busiestAuthors(c, 2);
    for (int i = 0; i < staff.size(); ++i) {
        createUser(c, staff[i], kStaffPassword, powerOf(c, i == 0 ? clerkGrants() : staffGrants()), false);
        made.push_back({staff[i], kStaffPassword, false});
    }
    // Each looked at the notice board three days before the newest notice, so a few are unread.
    Recordset newest(c, QStringLiteral("select max(fDate) from tRs_News"));
    const QDate last = QDate::fromString(newest.text(0).left(10), Qt::ISODate);
    if (last.isValid())
        for (const DemoLogin& l : made)
            c.executeOne(QStringLiteral("insert into tRs_NewsSeen (fUser,fOpened) values (?,?)"),
                         {l.name, last.addDays(-3).toString(Qt::ISODate) + QStringLiteral(" 12:00:00.000")});
    return made;
}

} // namespace zq::demo
