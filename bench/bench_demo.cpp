// The demo company generator: a whole company made into a new database, beside the floor of the same
// number of master rows inserted by one plain prepared statement. Each run makes its database anew,
// next to the benchmark's own (a file beside it, or a server database with a suffix). The number of
// persons is --persons of the command line, else the size of the benchmark's database.

#include "Bench.h"

#include "admin/Demo.h"

#include "shell/DbError.h"
#include "shell/Schema.h"

#include <cstdio>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QSqlError>
#include <QSqlQuery>

namespace {

using zq::ConnectionSettings;
using zq::DbError;
using zq::bench::Context;
using zq::bench::peakRssMb;

int persons(const Context& c) {
    const QStringList args = QCoreApplication::arguments();
    const int at = int(args.indexOf(QStringLiteral("--persons")));
    if (at >= 0 && at + 1 < args.size() && args.at(at + 1).toInt() > 0) return args.at(at + 1).toInt();
    return c.persons > 0 ? int(c.persons) : 100000;
}

ConnectionSettings scratch(const Context& c) {
    return zq::bench::scratchDatabase(c, QStringLiteral("generate"));
}

void drop(const ConnectionSettings& s) {
    if (s.sqlData == 0) {
        for (const char* suffix : {"", "-wal", "-shm"})
            QFile::remove(s.userPath + QLatin1String(suffix));
        return;
    }
    ConnectionSettings admin = s;
    admin.defaultDb = QStringLiteral("postgres");
    zq::Connection a;
    a.open(admin);
    a.execute(QStringLiteral("drop database if exists %1").arg(s.defaultDb));
}

double lastOurs = 0;

void generate(Context& c) {
    const ConnectionSettings s = scratch(c);
    drop(s);
    QElapsedTimer t;
    t.start();
    zq::demo::Options o;
    o.persons = persons(c);
    o.seed = 7;
    zq::demo::createDemoDatabase(s, o);
    lastOurs = double(t.elapsed()) / 1000.0;
}

// The master rows alone, one plain prepared insert a row in one transaction, values made by counting.
void rawInsert(Context& c) {
    const ConnectionSettings s = scratch(c);
    drop(s);
    QElapsedTimer t;
    t.start();
    zq::schema::createDatabase(s);
    const int n = persons(c);
    {
        zq::Connection conn;
        conn.open(s);
        QSqlDatabase& db = conn.database();
        const zq::schema::Table* table = zq::schema::findTable(QStringLiteral("tRsBasic"));
        QStringList columns;
        for (const zq::schema::Column& col : table->columns)
            if (col.type != zq::schema::Type::Blob) columns << col.name;
        const QString sql = QStringLiteral("insert into tRsBasic (%1) values (%2)")
                                .arg(columns.join(QLatin1Char(',')),
                                     QStringList(columns.size(), QStringLiteral("?")).join(QLatin1Char(',')));
        QSqlQuery q(db);
        if (!q.prepare(sql)) throw DbError(q.lastError().text(), sql);
        db.transaction();
        for (int i = 0; i < n; ++i) {
            const QString code = QStringLiteral("%1").arg(i + 1, 6, 10, QLatin1Char('0'));
            for (int k = 0; k < columns.size(); ++k) {
                const QString& name = columns.at(k);
                if (name.compare(QLatin1String("fzt"), Qt::CaseInsensitive) == 0)
                    q.bindValue(k, 1);
                else
                    q.bindValue(k, name.left(4) + code);
            }
            if (!q.exec()) throw DbError(q.lastError().text(), sql);
        }
        db.commit();
    }
    const double raw = double(t.elapsed()) / 1000.0;
    std::fprintf(stderr, "demo.generate  persons=%d  ours=%.1fs  baseline(raw insert)=%.1fs\n", n, lastOurs,
                 raw);
    std::fprintf(stderr, "demo.generate.rss_mb  %.0f\n", peakRssMb());
    drop(s);
}

} // namespace

ZQ_BENCH("demo.generate", generate, rawInsert);
