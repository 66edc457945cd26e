// What is kept per person besides the master row: family, schools and training, jobs, attendance,
// results, pay rises, rewards, appraisals, extra details, transfer orders, loans and certificates.

#include "DemoKit.h"

#include <algorithm>
#include <cmath>

namespace zq::demo::kit {

namespace {

// A sub-record starts with the person and the row's place in its grid.
QString columns(const char* business) {
    return QStringLiteral("fCode,fOrderID,") + QLatin1String(business);
}

int ageOn(const Person& p, const QDate& day) {
    return int(p.birth.daysTo(day) / 365);
}

// The last day a person was with the company.
QDate lastDay(const Company& co, const Person& p) {
    return p.state == 1 ? co.today : p.leave;
}

QString firm(Rng& r) {
    return QStringLiteral("深圳市") + r.pick(firmWords()) + r.pick(firmTrades()) + QStringLiteral("有限公司");
}

// The name of the head of each department, empty where there is none.
std::vector<QString> headNames(const Company& co) {
    std::vector<QString> names(co.depts.size());
    for (int i : co.heads)
        names[size_t(co.persons[size_t(i)].dept)] = co.persons[size_t(i)].name;
    return names;
}

QString politicOf(Rng& r, int age) {
    if (age < 28 && r.chance(0.3)) return politics().at(1);
    return politics().at(r.weighted({18, 0, 2, 80}));
}

} // namespace

void writeFamily(Context& x) {
    Rng r = x.rng(sFamily);
    Writer w(x.c, QStringLiteral("tRsFamily"), columns("fCh,fName,fNy,fDw,fZz"));
    const QString retired = QStringLiteral("退休"), farming = QStringLiteral("务农"),
                  home = QStringLiteral("家务");
    for (const Person& p : x.co.persons) {
        const City& city = cities()[size_t(p.city)];
        const QString surname = surnameOf(p.name);
        int order = 0;
        auto member = [&](const QString& relation, const QString& name, const QDate& born,
                          const QString& work) {
            w << p.code << ++order << relation << name << yearMonth(born) << work
              << politicOf(r, int(born.daysTo(x.co.today) / 365));
            w.row();
        };
        auto workOf = [&](const QDate& born) -> QString {
            const int age = int(born.daysTo(x.co.today) / 365);
            if (age >= 60) return r.chance(0.5) ? retired : farming;
            if (age < 7) return QStringLiteral("幼儿");
            if (age < 19)
                return city.name + QStringLiteral("第") + cnNumber(r.between(1, 9)) +
                       QStringLiteral("中学学生");
            if (age < 23 && r.chance(0.5)) return r.pick(universities()) + QStringLiteral("学生");
            return r.chance(0.7) ? city.name + r.pick(firmWords()) + r.pick(firmTrades()) +
                                       QStringLiteral("公司") + r.pick(jobs())
                                 : (r.chance(0.5) ? farming : home);
        };
        const int age = ageOn(p, x.co.today);
        if (age < 50 || r.chance(0.4)) {
            const QDate born = p.birth.addYears(-r.between(22, 34)).addDays(-r.between(0, 364));
            member(QStringLiteral("父亲"), surname + r.pick(maleGiven()) + r.pick(maleGiven()), born,
                   workOf(born));
        }
        if (age < 55 || r.chance(0.5)) {
            const QDate born = p.birth.addYears(-r.between(20, 32)).addDays(-r.between(0, 364));
            member(QStringLiteral("母亲"), personName(r, false), born, workOf(born));
        }
        if (p.marital == 1)
            member(QStringLiteral("配偶"), p.spouse, p.spouseBirth,
                   r.chance(0.85) ? firm(r) + r.pick(jobs()) : home);
        if (p.marital >= 1 && age > 25) {
            const int kids = r.weighted({20, 50, 30});
            const QString family = p.male || p.spouse.isEmpty() ? surname : surnameOf(p.spouse);
            for (int k = 0; k < kids; ++k) {
                const QDate born = r.date(p.birth.addYears(23), std::min(x.co.today, p.birth.addYears(40)));
                if (born >= x.co.today) break;
                const bool son = r.chance(0.52);
                member(son ? QStringLiteral("儿子") : QStringLiteral("女儿"),
                       family + r.pick(son ? maleGiven() : femaleGiven()) +
                           (r.chance(0.7) ? r.pick(son ? maleGiven() : femaleGiven()) : blank()),
                       born, workOf(born));
            }
        }
        if (r.chance(0.3)) {
            const bool older = r.chance(0.5), brother = r.chance(0.5);
            const QDate born = p.birth.addYears(older ? -r.between(1, 8) : r.between(1, 8));
            if (born < x.co.today)
                member(relations().at(brother ? (older ? 5 : 7) : (older ? 6 : 8)),
                       surname + r.pick(brother ? maleGiven() : femaleGiven()) +
                           r.pick(brother ? maleGiven() : femaleGiven()),
                       born, workOf(born));
        }
    }
    x.done(w);
}

void writeStudy(Context& x) {
    Rng r = x.rng(sStudy);
    Writer w(x.c, QStringLiteral("tRsStudy"), columns("fYear,fXx,fZy,fType"));
    // Years at the last school, by education (highest first).
    static constexpr int years[] = {3, 3, 4, 3, 3, 3, 3, 6};
    for (const Person& p : x.co.persons) {
        const City& city = cities()[size_t(p.city)];
        const QDate grad = graduation(p);
        const QDate start = grad.addYears(-years[p.education]).addMonths(2);
        int order = 0;
        auto row = [&](const QString& when, const QString& school, const QString& subject, int type) {
            w << p.code << ++order << when << school << subject << type;
            w.row();
        };
        // Schools: the one before the last, then the last.
        if (p.education <= 1) {
            row(period(start.addYears(-4), start.addMonths(-2)), r.pick(universities()), r.pick(majors()), 0);
        } else if (p.education <= 4) {
            const QDate before = start.addYears(-3);
            row(period(before, start.addMonths(-2)),
                city.name + QStringLiteral("第") + cnNumber(r.between(1, 12)) + QStringLiteral("中学"),
                blank(), 0);
        }
        row(period(start, grad), p.school, p.major, 0);
        // Training since hire.
        const QDate until = lastDay(x.co, p);
        const int trainings = p.hire.daysTo(until) < 60 ? 0 : r.weighted({35, 35, 20, 10});
        order = 0;
        for (int i = 0; i < trainings; ++i) {
            const QDate from = r.date(p.hire, until);
            row(period(from, from.addDays(r.between(1, 30))), r.pick(trainers()), r.pick(courses()), 1);
        }
    }
    x.done(w);
}

void writeWork(Context& x) {
    Rng r = x.rng(sWork);
    Writer w(x.c, QStringLiteral("tRsWork"), columns("fYear,fBm,fRz,fWk,newbm,fType"));
    const QString& empty = blank();
    for (const Person& p : x.co.persons) {
        int order = 0;
        // Jobs between school and hire.
        QDate from = graduation(p).addMonths(r.between(1, 12));
        const int count = from.daysTo(p.hire) < 365 ? 0 : r.weighted({30, 40, 20, 10});
        const qint64 span = std::max<qint64>(1, from.daysTo(p.hire) / std::max(1, count));
        for (int i = 0; i < count; ++i) {
            const QDate to =
                i + 1 == count ? p.hire.addDays(-r.between(10, 60)) : from.addDays(span - r.between(0, 60));
            if (to <= from) break;
            w << p.code << ++order << period(from, to) << firm(r) << r.pick(jobs()) << r.pick(jobWorks())
              << empty << 0;
            w.row();
            from = to.addDays(r.between(10, 40));
        }
        // The company's own rows: the transfer execution writes one per order; some add the hire.
        order = 0;
        const Dept& now = x.co.depts[size_t(p.dept)];
        if (r.chance(0.2)) {
            const Transfer* t = p.transfer >= 0 ? &x.co.transfers[size_t(p.transfer)] : nullptr;
            const Dept& first = t ? x.co.depts[size_t(t->fromDept)] : now;
            const Post& post = x.co.posts[size_t(t ? t->fromPost : p.post)];
            w << p.code << ++order << iso(p.hire) << first.name << post.name << QStringLiteral("入职")
              << empty << 1;
            w.row();
        }
        if (p.transfer >= 0) {
            const Transfer& t = x.co.transfers[size_t(p.transfer)];
            w << p.code << ++order << iso(t.date) << x.co.depts[size_t(t.fromDept)].name
              << x.co.posts[size_t(p.post)].name << empty << now.name << 1;
            w.row();
        }
    }
    x.done(w);
}

void writeWorkState(Context& x) {
    Rng r = x.rng(sWorkState);
    Writer w(x.c, QStringLiteral("tRs_WorkState"), columns("fYear,YTotal,Ydays,ADay"));
    const int lastYear = x.co.today.year() - 1;
    for (const Person& p : x.co.persons) {
        const int end = p.state == 1 ? lastYear : p.leave.year() - 1;
        int order = 0;
        for (int year = std::max(p.hire.year() + 1, lastYear - 2); year <= end; ++year) {
            const int total = 249 + r.between(0, 2);
            const int absent = r.weighted({40, 25, 15, 10, 5, 3, 2}) * (r.chance(0.1) ? 3 : 1);
            w << p.code << ++order << QString::number(year) << QString::number(total)
              << QString::number(total - absent) << QString::number(absent);
            w.row();
        }
    }
    x.done(w);
}

void writeResults(Context& x) {
    Rng r = x.rng(sResult);
    Writer w(x.c, QStringLiteral("tRsResult"), columns("fYear,fyj"));
    for (const Person& p : x.co.persons) {
        if (!r.chance(0.4)) continue;
        const int n = r.between(1, 2);
        for (int i = 0; i < n; ++i) {
            QString text = r.pick(achievements());
            if (text.contains(QLatin1String("%1"))) text = text.arg(r.between(5, 130));
            w << p.code << i + 1 << yearMonth(r.date(p.hire, lastDay(x.co, p))) << text;
            w.row();
        }
    }
    x.done(w);
}

void writeTech(Context& x) {
    Rng r = x.rng(sTech);
    Writer w(x.c, QStringLiteral("tRsTech"), columns("fJs,fJn,fBz,fSm"));
    for (const Person& p : x.co.persons) {
        if (!r.chance(0.6)) continue;
        // Pay at hire by education, then a rise every year or two; the last four are kept.
        int pay = 2200 + (7 - p.education) * 400 + r.between(0, 10) * 50;
        std::vector<std::pair<QDate, int>> rises;
        for (QDate d = p.hire.addYears(1); d <= lastDay(x.co, p); d = d.addYears(r.between(1, 2))) {
            const int next = (pay * (103 + r.between(0, 9)) / 100 + 49) / 50 * 50;
            rises.emplace_back(d, next);
            pay = next;
        }
        const size_t first = rises.size() > 4 ? rises.size() - 4 : 0;
        int order = 0;
        int before = first == 0 ? 2200 + (7 - p.education) * 400 : rises[first - 1].second;
        for (size_t i = first; i < rises.size(); ++i) {
            const int after = rises[i].second;
            w << p.code << ++order << iso(rises[i].first) << QString::number(before) << QString::number(after)
              << QString::number((after - before) * 100.0 / before, 'f', 1) + QLatin1Char('%');
            w.row();
            before = after;
        }
    }
    x.done(w);
}

void writeMeed(Context& x) {
    Rng r = x.rng(sMeed);
    Writer w(x.c, QStringLiteral("tRsMeed"), columns("fYear,fYy,fjc"));
    for (const Person& p : x.co.persons) {
        if (!r.chance(0.2)) continue;
        const int n = r.weighted({75, 20, 5}) + 1;
        for (int i = 0; i < n; ++i) {
            const bool reward = r.chance(0.8);
            w << p.code << i + 1 << iso(r.date(p.hire, lastDay(x.co, p)))
              << (reward ? r.pick(rewards()) : r.pick(penalties()))
              << (reward ? r.pick(rewardKinds()) : r.pick(penaltyKinds()));
            w.row();
        }
    }
    x.done(w);
}

void writeRemarks(Context& x) {
    Rng r = x.rng(sRemark);
    Writer w(x.c, QStringLiteral("tRsRemark"), "fcode,fYear,fpy,fpdr");
    const std::vector<QString> heads = headNames(x.co);
    const int lastYear = x.co.today.year() - 1;
    for (const Person& p : x.co.persons) {
        if (p.state != 1) continue;
        const QString& head = heads[size_t(p.dept)];
        for (int year = std::max(p.hire.year(), lastYear - 1); year <= lastYear; ++year) {
            QString text = r.pick(appraisals());
            if (r.chance(0.5)) text += r.pick(appraisals());
            w << p.code << year << text
              << (head.isEmpty() || head == p.name ? personName(r, r.chance(0.6)) : head);
            w.row();
        }
    }
    x.done(w);
}

void writeDetails(Context& x) {
    Rng r = x.rng(sDetail);
    Writer w(x.c, QStringLiteral("tRsDetail"), "fCode,fRsDetail1,fRsDetail2,fRsDetail3,fRsDetail4");
    const QString& empty = blank();
    for (const Person& p : x.co.persons) {
        if (!r.chance(0.25)) continue;
        w << p.code << r.pick(hobbies()) << (r.chance(0.5) ? r.pick(arts()) : empty)
          << (r.chance(0.2) ? r.pick(prizes()) : empty) << (r.chance(0.3) ? r.pick(activities()) : empty);
        w.row();
    }
    x.done(w);
}

void writeMoves(Context& x) {
    Rng r = x.rng(sMove);
    Writer w(
        x.c, QStringLiteral("trsPersonMove"),
        "fcode,fName,moveNmb,oldunit,olddpt,worktype,newunit,newdpt,newworktype,chgperson,wrtperson,wrtdate");
    const std::vector<QString> heads = headNames(x.co);
    // Orders are filled in by the staff of the personnel department, when there is one.
    QStringList clerks;
    for (const Person& p : x.co.persons)
        if (p.state == 1 && x.co.depts[size_t(p.dept)].name.startsWith(QStringLiteral("人力")))
            clerks << p.name;
    for (int i = 0; i < 3 && clerks.size() < 3; ++i)
        clerks << personName(r, r.chance(0.4));
    for (int i = 0; i < int(x.co.transfers.size()); ++i) {
        const Transfer& t = x.co.transfers[size_t(i)];
        const Person& p = x.co.persons[size_t(t.person)];
        const QString& head = heads[size_t(p.dept)];
        w << p.code << p.name << double(i + 1) << x.co.name << x.co.depts[size_t(t.fromDept)].name
          << x.co.posts[size_t(t.fromPost)].name << x.co.name << x.co.depts[size_t(p.dept)].name
          << x.co.posts[size_t(p.post)].name << (head.isEmpty() ? personName(r, true) : head.left(10))
          << clerks.at(r.between(0, std::min(int(clerks.size()), 3) - 1)) << iso(t.date);
        w.row();
    }
    x.done(w);
}

namespace {
// One loan table: who has what, and whether it came back. Persons in service keep some items; a few
// who left did not return theirs.
void writeLoanTable(Context& x, const QString& table, Stream stream, const QStringList& items, bool tools) {
    Rng r = x.rng(stream);
    Writer w(x.c, table, "fcode,fName,goodsname,Model,geshu,price,Total,useyear,lyxz,loantime,backtime,demo");
    const QVariant none;
    for (const Person& p : x.co.persons) {
        const QString& category = x.co.posts[size_t(p.post)].category;
        const bool handsOn = category == QStringLiteral("生产工人") || category == QStringLiteral("技术人员");
        if (!r.chance(tools ? (handsOn ? 0.25 : 0.04) : 0.15)) continue;
        const int n = r.weighted({70, 25, 5}) + 1;
        const QDate until = lastDay(x.co, p);
        for (int i = 0; i < n; ++i) {
            const QStringList item = r.pick(items).split(QLatin1Char('|'));
            const int count = tools ? 1 : r.weighted({80, 15, 5}) + 1;
            const double price = std::round(item.value(2).toDouble() * (85 + r.between(0, 30)) / 10.0) / 10.0;
            const QDate lent = r.date(p.hire, until);
            const bool back = r.chance(p.state == 1 ? 0.55 : 0.9);
            w << p.code << p.name << item.at(0) << item.at(1) << double(count) << price << price * count
              << double(r.between(1, 5)) << useKinds().at(r.weighted({50, 40, 10})) << iso(lent)
              << (back ? QVariant(iso(r.date(lent, until))) : none)
              << (back && r.chance(0.1) ? QStringLiteral("归还时已损坏") : blank());
            w.row();
        }
    }
    x.done(w);
}
} // namespace

void writeLoans(Context& x) {
    writeLoanTable(x, QStringLiteral("trsLoanTools"), sTools, tools(), true);
    writeLoanTable(x, QStringLiteral("tRsLoanGoods"), sGoods, goods(), false);
}

void writeCards(Context& x) {
    Rng r = x.rng(sCard);
    Writer w(x.c, QStringLiteral("trsCard"),
             "fcode,fName,cardname,cardcode,cardjg,cardtime,usetime,fyxz,pxfy");
    static const char* const prefixes[] = {"SG", "DG", "HG", "JS", "KJ", "ZC"};
    const QVariant none;
    int serial = 0;
    for (const Person& p : x.co.persons) {
        const QString& category = x.co.posts[size_t(p.post)].category;
        const bool handsOn = category == QStringLiteral("生产工人") || category == QStringLiteral("技术人员");
        if (!r.chance(handsOn ? 0.35 : 0.1)) continue;
        const int n = r.weighted({75, 25}) + 1;
        for (int i = 0; i < n; ++i) {
            const int kind = r.between(0, int(cardNames().size()) - 1);
            const QDate issued = r.date(p.hire.addYears(-2), lastDay(x.co, p));
            const int valid = kind == 3 ? 6 : kind == 4 || kind == 5 ? 0 : 3;
            const QString fee = feeKinds().at(r.weighted({60, 25, 15}));
            w << p.code << p.name << cardNames().at(kind)
              << QString::fromLatin1(prefixes[kind]) + QString::number(issued.year()) +
                     QStringLiteral("%1").arg(++serial, 6, 10, QLatin1Char('0'))
              << cardIssuers().at(kind) << iso(issued)
              << (valid ? QVariant(iso(issued.addYears(valid))) : none) << fee
              << (fee == feeKinds().at(1) ? 0.0 : r.between(2, 30) * 100.0);
            w.row();
        }
    }
    x.done(w);
}

} // namespace zq::demo::kit
