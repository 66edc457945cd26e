// zqrs-bench: runs named operations on a demo database and prints one JSON object per operation,
// each figure beside the same work done by plain SQL through the bare driver.

#include "Bench.h"

#include "DemoDatabase.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/HistorySession.h"
#include "shell/Recordset.h"
#include "shell/Schema.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace zq::bench {

namespace {
std::vector<Operation>& registry() {
    static std::vector<Operation> ops;
    return ops;
}
} // namespace

QWidget* deleteAtExit(QWidget* w) {
    static std::vector<QWidget*> kept;
    if (kept.empty())
        qAddPostRoutine([] {
            while (!kept.empty()) {
                delete kept.back();
                kept.pop_back();
            }
        });
    kept.push_back(w);
    return w;
}

bool add(const QString& name, Step run, Step baseline, Step prepare, Step reset) {
    registry().push_back({name, std::move(run), std::move(baseline), std::move(prepare), std::move(reset), {}, {}});
    return true;
}

bool addWorkload(const QString& name, std::function<QString(Context&)> workload,
                 std::function<void(Context&, int)> client) {
    Operation op;
    op.name = name;
    op.workload = std::move(workload);
    op.client = std::move(client);
    registry().push_back(std::move(op));
    return true;
}

const std::vector<Operation>& operations() {
    return registry();
}

QString gridFields() {
    Recordset rs(conn(), QStringLiteral("select FieldName from RptListDetail where fTable='tRsBasic' and "
                                        "FieldSelected=1 order by FieldID"));
    QStringList f;
    for (; !rs.eof(); rs.moveNext())
        f << rs.text(0);
    return f.join(QLatin1Char(','));
}

qint64 readAll(QSqlDatabase& db, const QString& sql) {
    QSqlQuery q(db);
    q.setForwardOnly(true);
    if (!q.exec(sql)) throw DbError(q.lastError().text(), sql);
    const int columns = q.record().count();
    qint64 rows = 0;
    while (q.next()) {
        for (int i = 0; i < columns; ++i)
            q.value(i);
        ++rows;
    }
    return rows;
}

} // namespace zq::bench

namespace {

using namespace zq;
using namespace zq::bench;

struct Options {
    ConnectionSettings settings;
    QString dbFile;
    QStringList ops;
    int runs = 5;
    int persons = 100000;
    quint32 seed = 7;
    int clients = 5;
    int seconds = 30;
    int thinkMs = 2000;
    QString client; // NAME:I when this process is client I of a workload
};

void usage() {
    std::fprintf(
        stderr,
        "usage: zqrs-bench --db FILE [--persons N] [--ops a,b] [--runs N]\n"
        "       zqrs-bench --server HOST[:PORT] --database NAME [--user U] [--password P]\n"
        "                  [--tls off|require|verify-full] [--tls-root-cert FILE]\n"
        "                  [--persons N] [--ops a,b] [--runs N]\n"
        "A workload (load.clerks) takes [--clients N] [--seconds S] [--think MS] and runs only when named.\n"
        "A database that does not exist yet is made as a demo company of N persons (default 100000).\n"
        "--list prints the operations.\n");
}

std::optional<Options> parse(const QStringList& args, bool& list) {
    Options o;
    bool server = false;
    for (int i = 1; i < args.size(); ++i) {
        const QString a = args[i];
        auto next = [&]() -> QString { return i + 1 < args.size() ? args[++i] : QString(); };
        if (a == QLatin1String("--db"))
            o.dbFile = next();
        else if (a == QLatin1String("--server")) {
            o.settings.userPath = next();
            server = true;
        } else if (a == QLatin1String("--database"))
            o.settings.defaultDb = next();
        else if (a == QLatin1String("--user"))
            o.settings.userId = next();
        else if (a == QLatin1String("--password"))
            o.settings.password = next();
        else if (a == QLatin1String("--tls")) {
            if (!ServerTls::parseMode(next(), o.settings.tls.mode)) return std::nullopt;
        } else if (a == QLatin1String("--tls-root-cert"))
            o.settings.tls.rootCert = next();
        else if (a == QLatin1String("--ops"))
            o.ops = next().split(QLatin1Char(','), Qt::SkipEmptyParts);
        else if (a == QLatin1String("--runs"))
            o.runs = next().toInt();
        else if (a == QLatin1String("--persons"))
            o.persons = next().toInt();
        else if (a == QLatin1String("--seed"))
            o.seed = next().toUInt();
        else if (a == QLatin1String("--clients"))
            o.clients = next().toInt();
        else if (a == QLatin1String("--seconds"))
            o.seconds = next().toInt();
        else if (a == QLatin1String("--think"))
            o.thinkMs = next().toInt();
        else if (a == QLatin1String("--client"))
            o.client = next();
        else if (a == QLatin1String("--list"))
            list = true;
        else
            return std::nullopt;
    }
    if (list) return o;
    if (server == !o.dbFile.isEmpty() || o.runs < 1 || o.persons < 1 || o.clients < 1 || o.seconds < 1 ||
        o.thinkMs < 0)
        return std::nullopt;
    if (server) {
        o.settings.sqlData = 1;
        if (o.settings.defaultDb.isEmpty()) return std::nullopt;
    } else {
        o.settings.sqlData = 0;
        o.settings.userPath = o.dbFile;
    }
    return o;
}

QString rawTlsOptions(const ServerTls& tls) {
    static const char* const modes[] = {"", "disable", "require", "verify-full"};
    QString o;
    if (tls.mode != ServerTls::Mode::Default)
        o = QStringLiteral("sslmode=") + QLatin1String(modes[int(tls.mode)]);
    if (!tls.rootCert.isEmpty()) o += QStringLiteral(";sslrootcert=") + tls.rootCert;
    return o;
}

QSqlDatabase openRaw(const ConnectionSettings& s) {
    // The same database through the driver alone: no recordset, no dialect, no guards.
    QSqlDatabase db = QSqlDatabase::addDatabase(
        s.sqlData ? QStringLiteral("QPSQL") : QStringLiteral("QSQLITE"), QStringLiteral("zqbench_raw"));
    if (s.sqlData) {
        QString host = s.userPath;
        const int colon = host.lastIndexOf(QLatin1Char(':'));
        if (colon > 0) {
            db.setPort(host.mid(colon + 1).toInt());
            host = host.left(colon);
        }
        db.setHostName(host);
        db.setDatabaseName(s.defaultDb);
        db.setUserName(s.userId);
        db.setPassword(s.password);
        db.setConnectOptions(rawTlsOptions(s.tls));
    } else {
        db.setDatabaseName(s.userPath);
    }
    if (!db.open()) throw DbError(db.lastError().text());
    // The baselines are plain SQL: they write no change history.
    SetHistorySession(db, QString(), QString(), false);
    return db;
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    const size_t n = v.size();
    return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

double timed(const std::function<void(Context&)>& f, Context& c) {
    QElapsedTimer t;
    t.start();
    f(c);
    return double(t.nsecsElapsed()) / 1e6;
}

QString number(double v) {
    return QString::number(v, 'f', 3);
}

} // namespace

int main(int argc, char** argv) {
    // The operations fill widgets; without a display they draw offscreen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    bool list = false;
    const auto options = parse(app.arguments(), list);
    if (!options) {
        usage();
        return 2;
    }
    if (list) {
        for (const Operation& op : operations())
            std::printf("%s%s\n", qPrintable(op.name),
                        op.workload ? " (workload)" : op.baseline ? "" : " (no baseline)");
        return 0;
    }
    const Options& o = *options;
    for (const QString& name : o.ops)
        if (std::none_of(operations().begin(), operations().end(),
                         [&](const Operation& op) { return op.name == name; })) {
            std::fprintf(stderr, "zqrs-bench: no operation %s (see --list)\n", qPrintable(name));
            return 2;
        }

    try {
        if (ensureDemoDatabase(o.settings, o.persons, o.seed))
            std::fprintf(stderr, "zqrs-bench: made a demo database of %d persons\n", o.persons);
        Globals& g = G();
        g.SQLData = qint16(o.settings.sqlData);
        g.UserPath = o.settings.userPath;
        g.Password = o.settings.password;
        g.UserID = o.settings.userId;
        g.Default = o.settings.defaultDb;
        defaultServerTls() = o.settings.tls;
        conn().open(o.settings);
        // An older company is brought up to date as the program's own control does when it opens
        // one; the clerks of a workload start after it.
        if (o.client.isEmpty() && schema::upgradeIfOlder(conn()))
            std::fprintf(stderr, "zqrs-bench: upgraded the database to version %d\n", schema::latestVersion());
        {
            Recordset rs(conn(), QStringLiteral("select CompName from myCompany"));
            g.CompName = rs.eof() ? QString() : rs.text(0);
        }

        Context c;
        c.settings = o.settings;
        c.engine = o.settings.sqlData ? QStringLiteral("postgresql") : QStringLiteral("sqlite");
        c.clients = o.clients;
        c.seconds = o.seconds;
        c.thinkMs = o.thinkMs;
        c.seed = o.seed;
        if (!o.client.isEmpty()) {
            const QString name = o.client.section(QLatin1Char(':'), 0, 0);
            for (const Operation& op : operations())
                if (op.name == name && op.client) {
                    op.client(c, o.client.section(QLatin1Char(':'), 1).toInt());
                    return 0;
                }
            return 2;
        }
        c.raw = openRaw(o.settings);
        {
            Recordset rs(conn(), QStringLiteral("select count(*) from tRsBasic"));
            c.persons = qint64(rs.val(0));
        }

        // In the order asked for, else in the order of registration.
        std::vector<const Operation*> chosen;
        for (const Operation& op : operations())
            if (o.ops.isEmpty() && !op.workload) chosen.push_back(&op);
        for (const QString& name : o.ops)
            for (const Operation& op : operations())
                if (op.name == name) chosen.push_back(&op);
        for (const Operation* p : chosen) {
            const Operation& op = *p;
            if (op.workload) {
                std::printf("{\"op\": \"%s\", \"engine\": \"%s\", \"persons\": %lld, %s}\n", qPrintable(op.name),
                            qPrintable(c.engine), c.persons, qPrintable(op.workload(c)));
                std::fflush(stdout);
                continue;
            }
            if (op.prepare) op.prepare(c);
            // One untimed pass of each warms the caches of both engines alike.
            if (op.reset) op.reset(c);
            op.run(c);
            if (op.baseline) op.baseline(c);
            std::vector<double> runs, baselines;
            for (int i = 0; i < o.runs; ++i) {
                if (op.reset) op.reset(c);
                runs.push_back(timed(op.run, c));
                if (op.baseline) baselines.push_back(timed(op.baseline, c));
            }
            const double m = median(runs);
            QString line =
                QStringLiteral("{\"op\": \"%1\", \"engine\": \"%2\", \"persons\": %3, \"median_ms\": %4, ")
                    .arg(op.name, c.engine)
                    .arg(c.persons)
                    .arg(number(m));
            if (op.baseline) {
                const double b = median(baselines);
                line += QStringLiteral("\"baseline_ms\": %1, \"ratio\": %2}")
                            .arg(number(b), number(b > 0 ? m / b : 0));
            } else {
                line += QStringLiteral("\"baseline_ms\": null, \"ratio\": null}");
            }
            std::printf("%s\n", qPrintable(line));
            std::fflush(stdout);
        }
    } catch (const DbError& e) {
        std::fprintf(stderr, "zqrs-bench: %s\n", qPrintable(e.message()));
        return 1;
    }
    return 0;
}
