// The demo company: departments and posts, persons, rooms, and what each person has on record.
// Everything follows from the seed; the reference day is fixed so that a run next year gives the
// same rows.

#include "Demo.h"

#include "DemoKit.h"

#include "shell/DbError.h"
#include "shell/HistorySession.h"
#include "shell/Recordset.h"
#include "shell/Schema.h"

#include <algorithm>
#include <cmath>
#include <QFileInfo>
#include <QSet>
#include <QSqlQuery>

namespace zq::demo {

using namespace kit;

namespace {

const QDate kToday(2025, 6, 30);
const QDate kFounded(1995, 3, 1);

template <typename T> void shuffle(std::vector<T>& v, Rng& r) {
    for (int i = int(v.size()) - 1; i > 0; --i)
        std::swap(v[size_t(i)], v[size_t(r.between(0, i))]);
}

QString twoDigits(int n) {
    return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0'));
}

// ---- Departments and posts ---------------------------------------------------------------

void buildDepartments(Company& co, int count, Rng& r) {
    const auto& kinds = topDepts();
    const int tops = std::clamp(int(std::lround(std::sqrt(double(count)))), 1, int(kinds.size()));
    // Children a node gets, so that three levels hold about four fifths and the fourth the rest.
    const double ratio = double(count) / tops * 0.8;
    const double branching = std::max(0.0, (-1.0 + std::sqrt(std::max(0.0, 4.0 * ratio - 3.0))) / 2.0);
    constexpr int kMaxChildren = 30; // keeps names within their 20 characters

    std::vector<Dept>& d = co.depts;
    std::vector<int> children;
    auto add = [&](int parent) {
        Dept x;
        if (parent < 0) {
            x.top = int(d.size());
            x.code = twoDigits(x.top + 1);
            x.name = kinds[size_t(x.top)].name;
        } else {
            const Dept& p = d[size_t(parent)];
            const int n = ++children[size_t(parent)];
            const TopDept& k = kinds[size_t(p.top)];
            x.top = p.top;
            x.level = p.level + 1;
            x.parent = parent;
            x.code = p.code + twoDigits(n);
            x.name = (p.level == 1 ? k.stem : p.name) + cnNumber(n) + k.sub.at(x.level - 2);
            d[size_t(parent)].leaf = false;
        }
        x.duties = kinds[size_t(x.top)].duties;
        d.push_back(x);
        children.push_back(0);
        return int(d.size()) - 1;
    };

    std::vector<int> level;
    for (int i = 0; i < tops; ++i)
        level.push_back(add(-1));
    int remaining = count - tops;
    for (int depth = 2; depth <= 4 && remaining > 0 && !level.empty(); ++depth) {
        shuffle(level, r);
        std::vector<int> next;
        for (int p : level) {
            int k = int(branching * (0.5 + r.real()) + 0.5);
            k = std::min({k, remaining, kMaxChildren});
            for (int i = 0; i < k; ++i)
                next.push_back(add(p));
            remaining -= k;
        }
        // The last level, or one that came out empty, takes what is left in turn.
        if (depth == 4 || next.empty()) {
            bool room = true;
            while (remaining > 0 && room) {
                room = false;
                for (int p : level) {
                    if (remaining == 0) break;
                    if (children[size_t(p)] >= kMaxChildren) continue;
                    next.push_back(add(p));
                    --remaining;
                    room = true;
                }
            }
        }
        level = next;
    }

    // In code order, as the tree reads them.
    std::vector<int> order(d.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = int(i);
    std::sort(order.begin(), order.end(),
              [&](int a, int b) { return d[size_t(a)].code < d[size_t(b)].code; });
    std::vector<int> where(d.size());
    std::vector<Dept> sorted;
    for (size_t i = 0; i < order.size(); ++i) {
        where[size_t(order[i])] = int(i);
        sorted.push_back(d[size_t(order[i])]);
    }
    for (Dept& x : sorted)
        if (x.parent >= 0) x.parent = where[size_t(x.parent)];
    d = std::move(sorted);

    // Each department has its head and one post for its staff; the posts nest under it by code.
    for (int i = 0; i < int(d.size()); ++i) {
        Dept& x = d[size_t(i)];
        const TopDept& k = kinds[size_t(x.top)];
        Post head{x.code + QStringLiteral("91"), x.name + k.heads.at(x.level - 1), i, true,
                  QStringLiteral("管理人员"),    wages().at(x.level - 1)};
        const bool expert = k.category == QStringLiteral("技术人员");
        Post staff{x.code + QStringLiteral("92"),
                   x.name + k.staff,
                   i,
                   false,
                   k.category,
                   wages().at(expert ? 3 : (x.level >= 3 ? 5 : 4))};
        x.head = int(co.posts.size());
        co.posts.push_back(head);
        x.staff = int(co.posts.size());
        co.posts.push_back(staff);
    }
}

// ---- Persons -----------------------------------------------------------------------------

void buildPersons(Company& co, int count, Rng& r) {
    const int width = std::max(6, int(QString::number(count).size()));
    std::vector<int> cityWeights;
    for (const City& c : cities())
        cityWeights.push_back(c.weight);
    std::vector<int> leaves, all;
    for (int i = 0; i < int(co.depts.size()); ++i) {
        all.push_back(i);
        if (co.depts[size_t(i)].leaf) leaves.push_back(i);
    }
    const QDate latestHire = kToday.addDays(-7);
    QSet<QString> cards;
    cards.reserve(count);
    co.persons.resize(size_t(count));
    for (int i = 0; i < count; ++i) {
        Person& p = co.persons[size_t(i)];
        p.code = QStringLiteral("%1").arg(i + 1, width, 10, QLatin1Char('0'));
        p.male = r.chance(0.56);
        const double spread = (r.real() + r.real()) / 2;
        const int age = 18 + int(44 * std::pow(spread, 1.4));
        p.birth = kToday.addYears(-age).addDays(-r.between(0, 364));
        p.education = r.weighted(educationWeights());
        while (graduation(p) > latestHire.addDays(-30))
            ++p.education;
        p.city = r.weighted(cityWeights);
        p.name = personName(r, p.male);
        do
            p.idCard = idCard(r, cities()[size_t(p.city)].region, p.birth, p.male);
        while (cards.contains(p.idCard));
        cards.insert(p.idCard);

        // The last school, by education.
        const City& city = cities()[size_t(p.city)];
        switch (p.education) {
        case 0:
        case 1:
        case 2:
            p.major = r.pick(majors());
            p.school = r.pick(universities());
            break;
        case 3:
            p.major = r.chance(0.5) ? r.pick(vocationalMajors()) : r.pick(majors());
            p.school = r.pick(colleges());
            break;
        case 4:
            p.major = r.pick(vocationalMajors());
            p.school = city.name + (r.chance(0.5) ? QStringLiteral("工业学校") : QStringLiteral("技工学校"));
            break;
        case 5:
            p.school = city.name + QStringLiteral("第") + cnNumber(r.between(1, 12)) + QStringLiteral("中学");
            break;
        default:
            p.school = city.district + QStringLiteral("第") + cnNumber(r.between(1, 9)) +
                       (p.education == 6 ? QStringLiteral("中学") : QStringLiteral("小学"));
        }

        const double married = age < 23 ? 0.05 : age < 28 ? 0.4 : age < 35 ? 0.75 : 0.9;
        p.marital = r.chance(married) ? 1 : 0;
        if (p.marital == 1 && age > 35 && r.chance(0.06)) p.marital = r.chance(0.8) ? 2 : 3;
        if (p.marital == 1) {
            p.spouse = personName(r, !p.male);
            p.spouseBirth = p.birth.addDays(r.between(-5 * 365, 5 * 365));
        }

        const QDate earliest = std::max({graduation(p).addDays(30), p.birth.addYears(18), kFounded});
        const double recent = std::pow(r.real(), 1.6);
        p.hire =
            QDate::fromJulianDay(latestHire.toJulianDay() -
                                 qint64(recent * double(latestHire.toJulianDay() - earliest.toJulianDay())));
        if (p.hire < earliest) p.hire = earliest;

        if (r.chance(0.13) && p.hire.daysTo(kToday) > 60) {
            int reason = r.weighted({45, 15, 12, 2, 14, 12});
            if ((reason == 2 || reason == 3) && age < 50) reason = 0; // the retired are old
            p.state = reason + 2;
            p.leave = r.date(p.hire.addDays(30), kToday.addDays(-1));
        }
        p.dept = (!leaves.empty() && r.chance(0.82)) ? r.pick(leaves) : r.pick(all);
        p.lodging = p.education >= 4 ? r.weighted({50, 25, 10, 15}) : r.weighted({15, 35, 35, 15});

        const QDate until = p.state == 1 ? kToday : p.leave;
        if (co.depts.size() > 1 && p.hire.daysTo(until) > 400 && r.chance(0.16)) {
            Transfer t;
            t.person = i;
            do
                t.fromDept = r.pick(all);
            while (t.fromDept == p.dept);
            t.fromPost = co.depts[size_t(t.fromDept)].staff;
            t.date = r.date(p.hire.addDays(180), until.addDays(-30));
            p.transfer = int(co.transfers.size());
            co.transfers.push_back(t);
        }
    }
    // Order numbers follow the dates of the orders.
    std::stable_sort(co.transfers.begin(), co.transfers.end(),
                     [](const Transfer& a, const Transfer& b) { return a.date < b.date; });
    for (int i = 0; i < int(co.transfers.size()); ++i)
        co.persons[size_t(co.transfers[size_t(i)].person)].transfer = i;

    // The first serving person of a department heads it; the others hold its staff post.
    for (int i = 0; i < count; ++i) {
        Person& p = co.persons[size_t(i)];
        Dept& d = co.depts[size_t(p.dept)];
        if (p.state == 1 && co.posts[size_t(d.head)].serving == 0) {
            p.post = d.head;
            co.heads.push_back(i);
        } else {
            p.post = d.staff;
        }
        if (p.state == 1) {
            ++co.posts[size_t(p.post)].serving;
            ++d.serving;
        }
    }
}

// Quotas: a little above the head count, now and then none, now and then below it (a department over
// its limit shows as such in the tree).
void setQuotas(Company& co, Rng& r) {
    std::vector<int> total(co.depts.size(), 0);
    for (int i = int(co.depts.size()) - 1; i >= 0; --i) {
        Dept& d = co.depts[size_t(i)];
        total[size_t(i)] += d.serving;
        if (d.parent >= 0) total[size_t(d.parent)] += total[size_t(i)];
        const int n = total[size_t(i)];
        const int draw = r.between(0, 99);
        d.quota = draw < 10 ? 0 : draw < 18 ? std::max(1, n - r.between(1, 3)) : n + r.between(0, n / 5 + 2);
    }
}

// ---- Rooms -------------------------------------------------------------------------------

void buildRooms(Company& co, Rng& r) {
    constexpr int kFloors = 6, kRoomsPerFloor = 12;
    std::vector<int> residents[2]; // men, women
    for (int i = 0; i < int(co.persons.size()); ++i) {
        const Person& p = co.persons[size_t(i)];
        if (p.state == 1 && p.lodging == 0) residents[p.male ? 0 : 1].push_back(i);
    }
    int building = 0, floor = kFloors, roomNo = kRoomsPerFloor;
    int buildingRow = -1, floorRow = -1;
    for (int sex = 0; sex < 2; ++sex) {
        roomNo = kRoomsPerFloor; // a floor houses one sex
        size_t next = 0;
        while (next < residents[sex].size()) {
            if (roomNo == kRoomsPerFloor) {
                roomNo = 0;
                if (++floor > kFloors) {
                    floor = 1;
                    ++building;
                    buildingRow = int(co.rooms.size());
                    co.rooms.push_back(
                        {twoDigits(building), QStringLiteral("%1号宿舍楼").arg(building), 0, 0, {}});
                }
                floorRow = int(co.rooms.size());
                co.rooms.push_back({co.rooms[size_t(buildingRow)].code + twoDigits(floor),
                                    QStringLiteral("%1号楼%2层").arg(building).arg(floor), 0, 0,
                                    sex == 0 ? QStringLiteral("男生楼层") : QStringLiteral("女生楼层")});
            }
            ++roomNo;
            const int beds = r.pick(std::vector<int>{4, 4, 6, 6, 8});
            const int room = int(co.rooms.size());
            co.rooms.push_back(
                {co.rooms[size_t(floorRow)].code + twoDigits(roomNo),
                 QStringLiteral("%1-%2%3").arg(building).arg(floor).arg(roomNo, 2, 10, QLatin1Char('0')),
                 sex + 1, beds, r.pick(roomNotes())});
            co.rooms[size_t(floorRow)].limit += beds;
            co.rooms[size_t(buildingRow)].limit += beds;
            const int take = beds - r.between(0, beds / 3);
            for (int k = 0; k < take && next < residents[sex].size(); ++k)
                co.persons[size_t(residents[sex][next++])].room = room;
        }
    }
}

// ---- Writing -----------------------------------------------------------------------------

void writeDepartments(Context& x) {
    Writer w(x.c, QStringLiteral("tRs_Bm"),
             "fCode,fName,fLimited,fColor,fYnxj,fRz,fgzname,fDetail1,fDetail2");
    const QVariant none;
    const int white = 0xffffff;
    for (const Dept& d : x.co.depts) {
        w << d.code << d.name << d.quota << white << 0 << none << none << d.duties << none;
        w.row();
        for (int i : {d.head, d.staff}) {
            const Post& p = x.co.posts[size_t(i)];
            const double limit = p.head ? 1 : p.serving + (p.serving % 3);
            w << p.code << p.name << limit << white << 1 << p.category << p.wage
              << (p.head ? QStringLiteral("全面负责本部门工作。") : QStringLiteral("完成本岗位的日常工作。"))
              << none;
            w.row();
        }
    }
    x.done(w);
}

void writeRooms(Context& x) {
    Writer w(x.c, QStringLiteral("tRs_House"), "fCode,fName,fLimited,fColor,fYnxj,fDetail1");
    for (const Room& room : x.co.rooms) {
        w << room.code << room.name << double(room.limit) << 0xffffff << room.kind << room.note;
        w.row();
    }
    x.done(w);
}

QString beds(int n) {
    return cnNumber(n) + QStringLiteral("人间");
}

void writePersons(Context& x) {
    const Company& co = x.co;
    Rng r = x.rng(sBasic);
    Writer w(
        x.c, QStringLiteral("tRsBasic"),
        "fCode,fName,fSex,fBirthDay,fMz,fHy,fHj,fSfz,fJg,fZz,fXzz,fygxz,fPhone,fXl,fZy,fXx,fWy,fWySp,fZc,"
        "fZcDay,fRz,fTc,fother1,fother2,fGzName,fSpday,fBmName,idlimt,bodycondition,staycode,staytime,"
        "contracttime,contractlimt,fBp,mobilephone,grudtime,worktime,funit,leavetime,leavereason,worklimt,"
        "roadmny,seepnt,safeedu,lyunit,trustman,bodyhigh,bodytype,neckline,waistline,shoecode,unit,fBmCode,"
        "fzt,fGzCode,fKqCardID,fpName,fpBirthday,fpZz,fpMz,fpHj,fpJg,fpPhone,fpXl,fpRz,fpDw");
    const QString& empty = blank();
    const QVariant none;
    const QString male = QStringLiteral("男"), female = QStringLiteral("女");
    auto list = [](const char* words) { return QString::fromUtf8(words).split(QLatin1Char(',')); };
    const QStringList localDistricts = list("南山区,福田区,宝安区,龙岗区,龙华区");
    const QStringList banks = list("6222,6228,6217");
    const QStringList periods = list("一年,三年,三年,五年");
    const QStringList shapes = list("标准,偏瘦,偏胖,匀称");
    const QString dormAddress = QStringLiteral("深圳市南山区科技路88号宿舍");
    const QString here = QStringLiteral("广东省");
    for (const Person& p : co.persons) {
        const City& city = cities()[size_t(p.city)];
        const Dept& dept = co.depts[size_t(p.dept)];
        const Post& post = co.posts[size_t(p.post)];
        const TopDept& kind = topDepts()[size_t(dept.top)];
        const int age = p.birth.daysTo(kToday) / 365;
        const bool technical = kind.category == QStringLiteral("技术人员");
        const bool production = dept.top == 0;
        const bool local = city.province == here;
        const QDate grad = graduation(p);

        const QString nation =
            r.chance(0.92) ? nations().at(0) : nations().at(r.between(1, int(nations().size()) - 1));
        QString politic = politics().at(3);
        if (age < 28 && r.chance(0.3))
            politic = politics().at(1);
        else if (r.chance(age < 28 ? 0.08 : 0.22))
            politic = politics().at(0);
        else if (r.chance(0.02))
            politic = politics().at(2);

        const QString address = p.room >= 0
                                    ? dormAddress
                                    : QStringLiteral("深圳市") + r.pick(localDistricts) + r.pick(roads()) +
                                          QString::number(r.between(1, 399)) + QStringLiteral("号");
        QString language, languageLevel;
        if ((p.education <= 3 && r.chance(0.85)) || (p.education <= 5 && r.chance(0.4))) {
            language = r.chance(0.9) ? languages().at(0) : r.pick(languages());
            languageLevel = p.education <= 2 ? languageLevels().at(r.between(0, 3))
                            : r.chance(0.5)  ? languageLevels().at(0)
                                             : languageLevels().at(4);
        }
        QString title, titleDay;
        if (p.education <= 3 && age > 26 && r.chance(0.45)) {
            if (technical)
                title = titles().at(r.weighted({1, 4, 4, 3}));
            else if (kind.name == QStringLiteral("财务部") || kind.name == QStringLiteral("审计部"))
                title = titles().at(r.between(4, 6));
            else
                title = titles().at(7);
            titleDay = iso(r.date(grad.addYears(2), kToday));
        }
        const QString talent = r.chance(0.35) ? r.pick(talents()) : empty;
        const QString bank = r.pick(banks) + r.digits(15);
        const QString team = production ? r.pick(teams()) : empty;
        const QDate issued =
            r.date(std::max(p.birth.addYears(16), kToday.addYears(-19)), kToday.addYears(-1));
        const QString idLimit = age > 46 ? QStringLiteral("长期") : iso(issued.addYears(age < 26 ? 10 : 20));
        const QString health = healths().at(r.weighted({80, 15, 4, 1}));
        QString stayCode, stayTime;
        if (!local && r.chance(0.5)) {
            stayCode = QStringLiteral("440305") + r.digits(10);
            stayTime = iso(r.date(kToday, kToday.addYears(1)));
        }
        const QDate until = p.state == 1 ? kToday : p.leave;
        const int terms = std::max(0, int(p.hire.daysTo(until) / (365 * 3)));
        const QDate contract = p.hire.addYears(terms * 3);
        const QString contractLimit =
            terms >= 3 ? QStringLiteral("无固定期限") : iso(contract.addYears(3).addDays(-1));
        const QString pager =
            (p.hire.year() < 2000 && r.chance(0.3)) ? QStringLiteral("126") + r.digits(7) : empty;
        const QDate firstJob = std::min(p.hire, r.date(grad.addDays(30), grad.addYears(2)));
        const QString branch = branches().at(r.weighted({70, 10, 10, 10}));
        const QString leaveTime = p.state == 1 ? empty : iso(p.leave);
        const QString leaveReason = p.state == 1 ? empty : leaveReasons().at(p.state - 2);
        const QString term = r.pick(periods);
        QString travel, visit;
        if (!local && r.chance(0.3)) {
            travel = iso(p.hire.addDays(90));
            visit = iso(r.date(until.addYears(-1), until));
        }
        const QString safety =
            (production || technical || r.chance(0.5)) ? QStringLiteral("是") : QStringLiteral("否");
        const QString partner =
            r.chance(0.05) ? r.pick(firmWords()) + QStringLiteral("人力资源有限公司") : empty;
        const QString guarantor = r.chance(0.2) ? personName(r, r.chance(0.5)) : empty;
        const QString roomCode = p.room >= 0 ? co.rooms[size_t(p.room)].code : empty;
        const QString bedText = p.room >= 0 ? beds(co.rooms[size_t(p.room)].limit) : empty;
        const QString shape = r.chance(0.3) ? r.pick(shapes) : empty;

        w << p.code << p.name << (p.male ? male : female) << iso(p.birth) << nation
          << maritals().at(p.marital) << (city.province == city.name ? city.name : city.province + city.name)
          << p.idCard << city.origin << politic << address << post.category
          << (r.chance(0.4) ? QStringLiteral("0755-") + r.digits(8) : empty) << educations().at(p.education)
          << p.major << p.school << language << languageLevel << title << titleDay << post.name << talent
          << bank << team << post.wage << iso(p.hire) << dept.name << idLimit << health << stayCode
          << stayTime << iso(contract) << contractLimit << pager << mobile(r) << iso(grad) << iso(firstJob)
          << branch << leaveTime << leaveReason << term << travel << visit << safety << partner << guarantor
          << bedText << lodgings().at(p.lodging) << roomCode << shape << empty << co.name << dept.code
          << p.state << p.code << QStringLiteral("K") + p.code;
        if (p.marital == 1) {
            const City& home = r.chance(0.7) ? city : r.pick(cities());
            const bool works = r.chance(0.85);
            w << p.spouse << iso(p.spouseBirth) << politics().at(r.weighted({15, 5, 1, 79}))
              << (r.chance(0.92) ? nations().at(0) : r.pick(nations()))
              << (home.province == home.name ? home.name : home.province + home.name) << home.origin
              << mobile(r) << educations().at(std::clamp(p.education + r.between(-1, 2), 0, 7))
              << (works ? r.pick(jobs()) : empty)
              << (works ? QStringLiteral("深圳市") + r.pick(firmWords()) + r.pick(firmTrades()) +
                              QStringLiteral("有限公司")
                        : QStringLiteral("无"));
        } else {
            for (int i = 0; i < 10; ++i)
                w << none;
        }
        w.row();
    }
    x.done(w);
}

Company build(const Options& o, const QString& name) {
    Company co;
    co.name = name;
    co.today = kToday;
    Rng depts(o.seed, sDepts), persons(o.seed, sPersons), rooms(o.seed, sRooms);
    buildDepartments(co, departmentCount(o.persons), depts);
    buildPersons(co, o.persons, persons);
    setQuotas(co, depts);
    buildRooms(co, rooms);
    return co;
}

} // namespace

QDate kit::graduation(const Person& p) {
    // Age at graduation, by education (highest first).
    static constexpr int age[] = {29, 25, 22, 21, 19, 18, 15, 12};
    return QDate(p.birth.year() + age[p.education], 7, 1);
}

QString kit::surnameOf(const QString& name) {
    for (const QString& s : surnames())
        if (s.size() == 2 && name.startsWith(s)) return s;
    return name.left(1);
}

void kit::Context::done(Writer& w) {
    const qint64 rows = w.finish();
    const QString& table = w.table();
    summary.tables[table] += rows;
    summary.rows += rows;
    if (options.progress) options.progress(table, rows);
}

int departmentCount(int persons) {
    return std::clamp(persons / 50, 1, 2000);
}

namespace {

// On the file, a rollback journal for the time of the fill: it keeps only the pages that were there
// before (few in a new company), where the write-ahead log would hold every page of the one large
// transaction once more. Either way a killed fill rolls back. Best effort: with other connections
// open on the file the mode stays as it is.
class FileJournal {
public:
    explicit FileJournal(Connection& c)
        : m_c(c) {
        if (!c.dialect().isServer())
            QSqlQuery(c.database()).exec(QStringLiteral("pragma journal_mode=delete"));
    }
    ~FileJournal() {
        if (!m_c.dialect().isServer())
            QSqlQuery(m_c.database()).exec(QStringLiteral("pragma journal_mode=wal"));
    }
    FileJournal(const FileJournal&) = delete;
    FileJournal& operator=(const FileJournal&) = delete;

private:
    Connection& m_c;
};

// Writes the whole company, and the demo users when asked, in one transaction: a run that fails or
// is killed at any moment leaves the database as it was, so that a second run can start afresh.
Summary fillCompany(Connection& c, const Options& o, bool logins) {
    if (o.persons < 1) throw DbError(QStringLiteral("人数必须是正整数"));
    {
        Recordset rs(c, QStringLiteral("select count(*) from tRsBasic"));
        const qint64 n = qint64(rs.val(0));
        if (n > 0) throw DbError(QStringLiteral("数据库中已有 %1 名员工, 未填入演示数据").arg(n));
    }
    QString name = QStringLiteral("示范实业");
    {
        Recordset rs(c, QStringLiteral("select CompName from myCompany"));
        if (!rs.eof() && !rs.text(0).isEmpty()) name = rs.text(0);
    }
    const Company co = build(o, name);
    const FileJournal journal(c);
    // A company made up at once is no one's change: its history starts empty.
    const HistoryOff quiet(c);
    Transaction t(c);
    schema::pauseHeadCounts(c, true);
    Summary s;
    s.persons = qint64(co.persons.size());
    s.departments = qint64(co.depts.size());
    s.posts = qint64(co.posts.size());
    Context x{c, co, o, s};
    writeDepartments(x);
    writePersons(x);
    writeRooms(x);
    writeFamily(x);
    writeStudy(x);
    writeWork(x);
    writeWorkState(x);
    writeResults(x);
    writeTech(x);
    writeMeed(x);
    writeRemarks(x);
    writeDetails(x);
    writeMoves(x);
    writeLoans(x);
    writeCards(x);
    writeOffice(x);
    writeDocuments(x);
    // The spouse particulars live in their own table; every person has a row, as after the split.
    c.execute(
        QStringLiteral("insert into tRsBasic_P (fCode,fpName,fpBirthday,fpZz,fpMz,fpHj,fpJg,fpPhone,fpXl,"
                       "fpRz,fpDw) select fCode,fpName,fpBirthday,fpZz,fpMz,fpHj,fpJg,fpPhone,fpXl,fpRz,"
                       "fpDw from tRsBasic"));
    if (logins) s.logins = addDemoUsers(c);
    schema::pauseHeadCounts(c, false);
    t.commit();
    // Fresh statistics, so that the first look-ups on a new company plan well.
    c.execute(c.dialect().afterBulkLoad());
    return s;
}

} // namespace

Summary fill(Connection& c, const Options& o) {
    return fillCompany(c, o, false);
}

bool holdsSchema(const ConnectionSettings& s) {
    if (s.sqlData == 0 && !QFileInfo::exists(s.userPath)) return false;
    Connection c;
    try {
        c.open(s);
    } catch (const DbError&) {
        if (s.sqlData == 0) throw; // a file that is there but cannot be opened
        return false;              // no such database on the server yet
    }
    return schema::currentVersion(c) > 0;
}

Summary createDemoDatabase(const ConnectionSettings& s, const Options& o) {
    if (!holdsSchema(s)) schema::createDatabase(s);
    Connection c;
    c.open(s);
    return fillCompany(c, o, true);
}

} // namespace zq::demo
