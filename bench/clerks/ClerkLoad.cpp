#include "ClerkLoad.h"

#include "office/OfficeData.h"
#include "organisation/PersonAssignData.h"
#include "personnel/PersonBasicData.h"
#include "personnel/PersonBrowserData.h"
#include "personnel/PersonListData.h"
#include "services/PagedRows.h"
#include "services/ui/DeptTree.h"
#include "services/ui/Grid.h"
#include "services/ui/GridBinding.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/HistorySession.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <algorithm>
#include <functional>
#include <chrono>
#include <cmath>
#include <memory>
#include <QDate>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <QThread>
#include <QTreeWidget>
#include <random>
#include <sys/resource.h>

namespace zq::clerks {

namespace {

qint64 nowUs() {
    using namespace std::chrono;
    return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
}

const char* const kKindNames[] = {"person", "grid", "order", "notice"};
const char* const kOutcomeNames[] = {"saved", "refused", "failed"};

template <typename E, size_t N>
E parseName(const QString& text, const char* const (&names)[N]) {
    for (size_t i = 0; i < N; ++i)
        if (text == QLatin1String(names[i])) return E(i);
    return E(0);
}

// The family grid as the family screen shows it; the clerk writes into the work unit (fdw).
const QString kFamilyTable = QStringLiteral("tRsfamily");
const QString kFamilyFields = QStringLiteral("fch,fName,fny,fdw,fZz");
constexpr int kFamilyColumns = 5;
constexpr int kFamilyTokenColumn = 4;
// The master record's boxes a clerk corrects: address, speciality, mobile, guarantor.
constexpr int kPersonBoxes[] = {10, 21, 34, 45};
// The fields counted in statistics, by their place among the countable captions: sex, education,
// department.
constexpr int kCountedFields[] = {2, 13, 26};
const QString kNoticeText = QStringLiteral("职员通知 ");
// A few persons every clerk comes back to, so that two clerks meet on the same record now and then.
constexpr int kHotPersons = 30;

bool isLockFailure(const QString& message) {
    const QString m = message.toLower();
    return m.contains(QLatin1String("lock")) || m.contains(QLatin1String("busy"));
}

class Clerk {
public:
    Clerk(int client, const Options& o, QIODevice& out)
        : m_client(client)
        , m_o(o)
        , m_out(out)
        , m_rng(o.seed * 7919u + quint32(client)) {}

    void run() {
        readWorkplace();
        const QDeadlineTimer end(qint64(m_o.seconds) * 1000);
        // A clerk's day: mostly looking things up, now and then a save.
        struct Step {
            int weight;
            const char* kind;
            void (Clerk::*act)();
        };
        static const Step steps[] = {
            {10, "open", &Clerk::openRegister}, {15, "dept", &Clerk::openDept},
            {15, "search", &Clerk::search},     {25, "person", &Clerk::changePerson},
            {15, "grid", &Clerk::saveGrid},     {7, "order", &Clerk::addOrder},
            {5, "notice", &Clerk::addNotice},   {8, "stats", &Clerk::countField},
        };
        int total = 0;
        for (const Step& s : steps)
            total += s.weight;
        // The first action opens the register, as every clerk's work begins.
        const Step* step = &steps[0];
        while (!end.hasExpired()) {
            QElapsedTimer t;
            t.start();
            m_pausedNs = 0;
            try {
                (this->*step->act)();
            } catch (const DbError& e) {
                line({QStringLiteral("F"), QLatin1String(step->kind), oneLine(e.message())});
            }
            line({QStringLiteral("A"), QLatin1String(step->kind), QString::number((t.nsecsElapsed() - m_pausedNs) / 1e6, 'f', 3)});
            pause(m_o.thinkMs);
            int r = pick(total);
            step = steps;
            while (r >= step->weight)
                r -= (step++)->weight;
        }
    }

private:
    void readWorkplace() {
        for (Recordset rs(conn(), QStringLiteral("select fCode,fName from trsbasic where fzt=1 order by fCode"));
             !rs.eof(); rs.moveNext()) {
            m_codes << rs.text(0);
            m_names << rs.text(1);
        }
        for (Recordset rs(conn(), QStringLiteral("select fCode,fName from tRs_Bm where fYnxj=0 order by fCode"));
             !rs.eof(); rs.moveNext()) {
            m_depts << rs.text(0);
            m_deptNames << rs.text(1);
        }
        for (Recordset rs(conn(), QStringLiteral("select FieldName from RptListDetail where fTable='tRsBasic' and "
                                                 "FieldSelected=1 order by FieldID"));
             !rs.eof(); rs.moveNext())
            m_fields << rs.text(0);
        m_captions = CountableCaptions();
        if (m_codes.isEmpty() || m_depts.isEmpty()) throw DbError(QStringLiteral("no persons or departments"));
    }

    int pick(int n) { return n <= 1 ? 0 : std::uniform_int_distribution<int>(0, n - 1)(m_rng); }
    int person() { return pick(5) == 0 ? pick(std::min(kHotPersons, int(m_codes.size()))) : pick(m_codes.size()); }
    QString token() { return QStringLiteral("c%1-%2").arg(m_client).arg(++m_seq); }
    // The clerk reads or types; the time of an action leaves it out.
    void pause(int meanMs) {
        if (meanMs <= 0) return;
        const int ms = meanMs / 2 + pick(meanMs + 1);
        QThread::msleep(ms);
        m_pausedNs += qint64(ms) * 1000000;
    }
    static QString oneLine(QString s) {
        return s.replace(QLatin1Char('\n'), QLatin1Char(' ')).replace(QLatin1Char('\t'), QLatin1Char(' '));
    }
    void line(const QStringList& fields) {
        m_out.write((fields.join(QLatin1Char('\t')) + QLatin1Char('\n')).toUtf8());
    }
    void ledger(const Save& s) {
        line({QStringLiteral("S"), QLatin1String(kKindNames[int(s.kind)]), QLatin1String(kOutcomeNames[int(s.outcome)]),
              QString::number(s.startUs), QString::number(s.endUs), s.key, s.value});
    }
    // Runs a save and enters it in the ledger: a refusal the clerk is told of is a conflict.
    bool save(Save s, const std::function<bool()>& write) {
        s.startUs = nowUs();
        try {
            s.outcome = write() ? Save::Outcome::Saved : Save::Outcome::Refused;
        } catch (const ConflictError&) {
            s.outcome = Save::Outcome::Refused;
        } catch (const DuplicateKeyError&) {
            s.outcome = Save::Outcome::Refused;
        } catch (const DbError& e) {
            s.outcome = Save::Outcome::Failed;
            line({QStringLiteral("F"), QLatin1String(kKindNames[int(s.kind)]), oneLine(e.message())});
        }
        s.endUs = nowUs();
        ledger(s);
        return s.outcome == Save::Outcome::Saved;
    }

    void showList(const QString& condition) {
        PagedRows list(PersonListPaged(m_fields.join(QLatin1Char(',')), condition, false));
        if (list.count() > 0) list.row(1);
    }

    // The staff register: the department tree with head counts and the list's first screen.
    void openRegister() {
        QTreeWidget tree;
        FillDeptTree(&tree, QStringLiteral("tRs_bm"), QString(), 0, 1, 1, 0, true);
        showList(PersonListCondition(1, QString(), QString(), QString()));
    }
    void openDept() { showList(PersonListCondition(1, m_depts.at(pick(m_depts.size())), QString(), QString())); }
    void search() {
        static const char* const surnames[] = {"王", "李", "张", "刘", "陈", "杨", "赵", "黄", "周", "吴"};
        showList(PersonListCondition(1, QString(),
                                     QStringLiteral("fName Like '") + QString::fromUtf8(surnames[pick(10)]) +
                                         QStringLiteral("%'"),
                                     QString()));
    }

    // The master record opened, one box corrected a little later, saved.
    void changePerson() {
        const QString code = m_codes.at(person());
        PersonBasicRow row;
        if (!LoadPersonBasic(code, row)) return;
        const PersonBasicRow loaded = row;
        const int box = kPersonBoxes[pick(std::size(kPersonBoxes))];
        pause(m_o.thinkMs / 4);
        Save s;
        s.kind = Save::Kind::Person;
        s.key = code + QLatin1Char('/') + BasicColumns().at(box);
        s.value = token();
        row.values[box] = s.value;
        save(s, [&] {
            SavePersonBasic(2, row, code, loaded);
            return true;
        });
    }

    // The family grid: a relative added while there are few, else one's work unit corrected.
    void saveGrid() {
        const QString code = m_codes.at(person());
        G().CurPersonCode = code;
        ZqGrid grid;
        grid.setMaxCols(kFamilyColumns);
        LoadGridRows(kFamilyTable, kFamilyFields, grid);
        const int rows = grid.maxRows();
        pause(m_o.thinkMs / 4);
        Save s;
        s.kind = Save::Kind::Grid;
        s.key = code;
        s.value = token();
        if (rows < 3 || pick(10) < 3) {
            grid.setMaxRows(rows + 1);
            grid.setText(rows + 1, 1, QStringLiteral("亲属"));
            grid.setText(rows + 1, 2, QStringLiteral("职员家属"));
            grid.setText(rows + 1, kFamilyTokenColumn, s.value);
        } else {
            grid.setText(1 + pick(rows), kFamilyTokenColumn, s.value);
        }
        save(s, [&] {
            if (SaveGridRows(kFamilyTable, kFamilyFields, grid) == -1) return true;
            if (LastGridSaveError() == ConflictError::defaultMessage()) return false;
            throw DbError(LastGridSaveError());
        });
    }

    // A transfer order under the number offered; a number another clerk took meanwhile is refused
    // and the next one offered.
    void addOrder() {
        const int p = person();
        const auto place = PlaceOfPersonCoded(m_codes.at(p));
        if (!place) return;
        MoveOrder m;
        m.fcode = m_codes.at(p);
        m.fName = m_names.at(p);
        m.oldunit = m.newunit = place->unit;
        m.olddpt = place->dept;
        m.worktype = m.newworktype = place->post;
        m.newdpt = m_deptNames.at(pick(m_deptNames.size()));
        m.wrtperson = QStringLiteral("clerk%1").arg(m_client);
        m.wrtdate = QDate::currentDate();
        m.chgperson = token();
        for (int attempt = 0; attempt < 3; ++attempt) {
            m.moveNmb = ProposedMoveNumber();
            Save s;
            s.kind = Save::Kind::Order;
            s.key = MoveNumberText(m.moveNmb);
            s.value = m.chgperson;
            if (save(s, [&] { return SaveMoveOrder(m, 1) == MoveSaveResult::Saved; })) return;
        }
    }

    void addNotice() {
        Save s;
        s.kind = Save::Kind::Notice;
        s.value = kNoticeText + token();
        s.key = s.value;
        save(s, [&] {
            Transaction t(conn());
            office::ForwardNotice(QDate::currentDate(), s.value, QString());
            t.commit();
            return true;
        });
    }

    void countField() {
        const QString caption = m_captions.value(kCountedFields[pick(std::size(kCountedFields))]);
        CountTable({caption}, QStringLiteral(" fzt= 1 "));
    }

    int m_client;
    Options m_o;
    QIODevice& m_out;
    std::mt19937 m_rng;
    int m_seq = 0;
    qint64 m_pausedNs = 0;
    QStringList m_codes, m_names, m_depts, m_deptNames, m_fields, m_captions;
};

// The machine's processor time so far, busy and in all, from /proc/stat (zeros where it is not).
std::pair<qint64, qint64> machineTicks() {
    QFile f(QStringLiteral("/proc/stat"));
    if (!f.open(QIODevice::ReadOnly)) return {0, 0};
    const QList<QByteArray> v = f.readLine().simplified().split(' ');
    qint64 all = 0, idle = 0;
    for (int i = 1; i < v.size(); ++i) {
        all += v[i].toLongLong();
        if (i == 4 || i == 5) idle += v[i].toLongLong(); // idle and waiting for the disk
    }
    return {all - idle, all};
}

double percentile(std::vector<double> v, double p) {
    if (v.empty()) return 0;
    std::sort(v.begin(), v.end());
    return v[size_t(std::max(1.0, std::ceil(p * double(v.size())))) - 1];
}

double p99(const std::vector<double>& v) {
    return percentile(v, 0.99);
}

QString number(double v) {
    return QString::number(v, 'f', 3);
}

// What the database holds now under a key of the ledger, for each kind.
class Stored {
public:
    bool holds(const Save& s) {
        switch (s.kind) {
        case Save::Kind::Person: {
            const int slash = s.key.lastIndexOf(QLatin1Char('/'));
            return values(s.key, QStringLiteral("select ") + checked(s.key.mid(slash + 1)) +
                                     QStringLiteral(" from trsbasic where fCode=") + quoted(s.key.left(slash)))
                .contains(s.value);
        }
        case Save::Kind::Grid:
            return values(QStringLiteral("grid/") + s.key,
                          QStringLiteral("select fdw from ") + kFamilyTable + QStringLiteral(" where fCode=") +
                              quoted(s.key))
                .contains(s.value);
        case Save::Kind::Order:
            return values(QStringLiteral("order/") + s.key, QStringLiteral("select chgperson from trsPersonMove "
                                                                           "where moveNmb=") +
                                                                num(qint64(Val(s.key))))
                .contains(s.value);
        case Save::Kind::Notice:
            // The notices are many and their texts not indexed: the clerks' ones are read at once.
            return values(QStringLiteral("notices"), QStringLiteral("select fContent from tRs_News where fContent "
                                                                    "like ") +
                                                         quoted(kNoticeText + QLatin1Char('%')))
                .contains(s.value);
        }
        return false;
    }

private:
    const QSet<QString>& values(const QString& key, const QString& sql) {
        auto it = m_read.find(key);
        if (it != m_read.end()) return *it;
        QSet<QString> v;
        for (Recordset rs(conn(), sql); !rs.eof(); rs.moveNext())
            v.insert(rs.text(0));
        return *m_read.insert(key, v);
    }
    QHash<QString, QSet<QString>> m_read;
};

} // namespace

void runClerk(int client, const Options& o, QIODevice& out) {
    Clerk(client, o, out).run();
}

int countLost(const QVector<Save>& ledger) {
    // Refused saves wrote nothing; the others may have, those that failed perhaps.
    QHash<QString, QVector<const Save*>> byKey;
    for (const Save& s : ledger)
        if (s.outcome != Save::Outcome::Refused)
            byKey[QLatin1String(kKindNames[int(s.kind)]) + QLatin1Char(':') + s.key] << &s;
    Stored stored;
    int lost = 0;
    for (const QVector<const Save*>& saves : std::as_const(byKey)) {
        bool anyHeld = false, anySaved = false;
        int flagged = 0;
        for (const Save* a : saves) {
            const bool held = stored.holds(*a);
            anyHeld = anyHeld || held;
            if (a->outcome != Save::Outcome::Saved) continue;
            anySaved = true;
            if (held) continue;
            // Overwritten is no loss when another save of the key may have come after this one.
            const bool overwritten = std::any_of(saves.begin(), saves.end(), [&](const Save* b) {
                return b != a && b->endUs >= a->startUs;
            });
            if (!overwritten) ++flagged;
        }
        // The key holds what none of its saves wrote: something wrote over them unseen.
        if (anySaved && !anyHeld) flagged = std::max(flagged, 1);
        lost += flagged;
    }
    return lost;
}

Result runClerks(const QString& exe, const std::function<QStringList(int)>& clientArgs, const Options& o) {
    Result r;
    r.clients = o.clients;
    QTemporaryDir dir;
    if (!dir.isValid()) throw DbError(QStringLiteral("no folder for the clerks' ledgers"));
    // How busy the whole machine was meanwhile (the server included), and what the clerks' own
    // processes spent: on a real site each clerk works on a machine of his own.
    const auto ticksBefore = machineTicks();
    std::vector<std::unique_ptr<QProcess>> clients;
    for (int i = 0; i < o.clients; ++i) {
        auto p = std::make_unique<QProcess>();
        p->setProgram(exe);
        p->setArguments(clientArgs(i));
        p->setStandardOutputFile(dir.filePath(QStringLiteral("%1.out").arg(i)));
        p->setStandardErrorFile(dir.filePath(QStringLiteral("%1.err").arg(i)));
        p->start();
        clients.push_back(std::move(p));
    }
    // Each client reads its company first and stops at its own deadline; a generous margin beyond.
    const QDeadlineTimer deadline(qint64(o.seconds) * 1000 + 300000);
    for (int i = 0; i < o.clients; ++i) {
        QProcess& p = *clients[size_t(i)];
        if (!p.waitForFinished(int(std::max<qint64>(1, deadline.remainingTime())))) {
            p.kill();
            p.waitForFinished();
        }
        if (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
            QFile err(dir.filePath(QStringLiteral("%1.err").arg(i)));
            err.open(QIODevice::ReadOnly);
            r.errors << QStringLiteral("client %1 ended with %2: %3")
                            .arg(i)
                            .arg(p.exitCode())
                            .arg(QString::fromUtf8(err.readAll()).trimmed().left(300));
            ++r.failed;
        }
    }

    const auto ticksAfter = machineTicks();
    if (ticksAfter.second > ticksBefore.second)
        r.machineBusyPct = 100.0 * double(ticksAfter.first - ticksBefore.first) /
                           double(ticksAfter.second - ticksBefore.second);
    rusage children{};
    if (getrusage(RUSAGE_CHILDREN, &children) == 0)
        r.clientsCpuS = double(children.ru_utime.tv_sec + children.ru_stime.tv_sec) +
                        double(children.ru_utime.tv_usec + children.ru_stime.tv_usec) / 1e6;

    std::vector<double> saveMs, openMs;
    QMap<QString, std::vector<double>> kindMs;
    for (int i = 0; i < o.clients; ++i) {
        QFile f(dir.filePath(QStringLiteral("%1.out").arg(i)));
        if (!f.open(QIODevice::ReadOnly)) continue;
        while (!f.atEnd()) {
            const QStringList p = QString::fromUtf8(f.readLine()).chopped(1).split(QLatin1Char('\t'));
            if (p.value(0) == QLatin1String("A")) {
                ++r.actions;
                ++r.perKind[p.value(1)];
                const double ms = p.value(2).toDouble();
                kindMs[p.value(1)].push_back(ms);
                if (p.value(1) == QLatin1String("open")) openMs.push_back(ms);
            } else if (p.value(0) == QLatin1String("F")) {
                ++r.failed;
                if (isLockFailure(p.value(2))) ++r.lockFailed;
                if (r.errors.size() < 10) r.errors << p.value(1) + QStringLiteral(": ") + p.value(2);
            } else if (p.value(0) == QLatin1String("S") && p.size() >= 7) {
                Save s;
                s.kind = parseName<Save::Kind>(p[1], kKindNames);
                s.outcome = parseName<Save::Outcome>(p[2], kOutcomeNames);
                s.startUs = p[3].toLongLong();
                s.endUs = p[4].toLongLong();
                s.key = p[5];
                s.value = p[6];
                r.ledger << s;
                if (s.outcome == Save::Outcome::Refused) {
                    ++r.conflicts;
                } else if (s.outcome == Save::Outcome::Saved) {
                    ++r.saved;
                    saveMs.push_back(double(s.endUs - s.startUs) / 1000.0);
                }
            }
        }
    }
    r.p99SaveMs = p99(saveMs);
    r.p99OpenMs = p99(openMs);
    for (auto it = kindMs.cbegin(); it != kindMs.cend(); ++it) {
        r.p50Ms[it.key()] = percentile(it.value(), 0.5);
        r.p99Ms[it.key()] = p99(it.value());
    }
    r.lost = countLost(r.ledger);
    return r;
}

QString jsonFields(const Result& r) {
    QString kinds;
    for (auto it = r.perKind.cbegin(); it != r.perKind.cend(); ++it) {
        if (!kinds.isEmpty()) kinds += QStringLiteral(", ");
        kinds += QStringLiteral("\"%1\": %2").arg(it.key()).arg(it.value());
    }
    const auto times = [](const QMap<QString, double>& ms) {
        QString t;
        for (auto it = ms.cbegin(); it != ms.cend(); ++it) {
            if (!t.isEmpty()) t += QStringLiteral(", ");
            t += QStringLiteral("\"%1\": %2").arg(it.key(), number(it.value()));
        }
        return t;
    };
    return QStringLiteral("\"clients\": %1, \"actions\": %2, \"saves\": %3, \"lost\": %4, \"conflicts\": %5, "
                          "\"failed\": %6, \"lock_failed\": %7, \"p99_save_ms\": %8, \"p99_open_ms\": %9, "
                          "\"machine_busy_pct\": %10, \"clients_cpu_s\": %11, ")
               .arg(r.clients)
               .arg(r.actions)
               .arg(r.saved)
               .arg(r.lost)
               .arg(r.conflicts)
               .arg(r.failed)
               .arg(r.lockFailed)
               .arg(number(r.p99SaveMs), number(r.p99OpenMs))
               .arg(r.machineBusyPct, 0, 'f', 1)
               .arg(r.clientsCpuS, 0, 'f', 1) +
           QStringLiteral("\"actions_by_kind\": {%1}, \"p50_ms_by_kind\": {%2}, \"p99_ms_by_kind\": {%3}")
               .arg(kinds, times(r.p50Ms), times(r.p99Ms));
}

QStringList databaseArgs(const ConnectionSettings& s) {
    if (s.sqlData == 0) return {QStringLiteral("--db"), s.userPath};
    QStringList a = {QStringLiteral("--server"), s.userPath, QStringLiteral("--database"), s.defaultDb};
    if (!s.userId.isEmpty()) a << QStringLiteral("--user") << s.userId;
    if (!s.password.isEmpty()) a << QStringLiteral("--password") << s.password;
    static const char* const modes[] = {"", "off", "require", "verify-full"};
    if (s.tls.mode != ServerTls::Mode::Default) a << QStringLiteral("--tls") << QLatin1String(modes[int(s.tls.mode)]);
    if (!s.tls.rootCert.isEmpty()) a << QStringLiteral("--tls-root-cert") << s.tls.rootCert;
    return a;
}

} // namespace zq::clerks
