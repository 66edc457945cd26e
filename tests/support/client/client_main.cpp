// A second client for the tests: a separate process on the same database that does one thing and
// says how it went on standard output, so a test can run it beside its own connection.
//
//   zqrs-testclient DATABASE add meeting|notice|report N   adds N rows, each in its own save
//   zqrs-testclient DATABASE count TABLE                    prints the table's rows
//   zqrs-testclient DATABASE touch                          opens the database and closes it
//
// DATABASE is a file, or pg:HOST:PORT:USER:DATABASE.
#include "office/MeetingData.h"
#include "office/NewsData.h"
#include "office/ReportData.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

using namespace zq;

namespace {

ConnectionSettings settingsOf(const QString& arg) {
    ConnectionSettings s;
    if (!arg.startsWith(QLatin1String("pg:"))) {
        s.userPath = arg;
        return s;
    }
    const QStringList p = arg.mid(3).split(QLatin1Char(':'));
    s.sqlData = 1;
    s.userPath = p.value(0) + QLatin1Char(':') + p.value(1);
    s.userId = p.value(2);
    s.defaultDb = p.value(3);
    return s;
}

void addOne(const QString& kind, int n) {
    const QString text = QStringLiteral("第二客户端 %1").arg(n);
    const QDate today = QDate::currentDate();
    Transaction t(conn());
    if (kind == QLatin1String("meeting")) {
        meeting::Meeting m;
        m.date = today;
        m.title = text;
        meeting::WriteMeeting(0, m);
    } else if (kind == QLatin1String("notice")) {
        news::WriteNotice(0, {today, text, {}});
    } else {
        report::Report r;
        r.date = today;
        r.title = text;
        r.checkers = QStringList(4, QString());
        report::WriteReport(0, r);
    }
    t.commit();
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 3) {
        std::fprintf(stderr, "usage: zqrs-testclient DATABASE add KIND N | count TABLE | touch\n");
        return 2;
    }
    const ConnectionSettings s = settingsOf(args[1]);
    try {
        useDatabase(s);
        G().UserName = QStringLiteral("admin");
        conn().open(s);
        const QString verb = args[2];
        if (verb == QLatin1String("add")) {
            int ok = 0, failed = 0;
            QString firstError;
            for (int i = 0, n = args.value(4).toInt(); i < n; ++i) {
                try {
                    addOne(args.value(3), i);
                    ++ok;
                } catch (const DbError& e) {
                    ++failed;
                    if (firstError.isEmpty())
                        firstError = e.message() + QStringLiteral(" [") + e.statement() + QLatin1Char(']') +
                                     (dynamic_cast<const DuplicateKeyError*>(&e) ? QStringLiteral(" (duplicate)") : QString());
                }
            }
            std::printf("ok %d failed %d %s\n", ok, failed, qPrintable(firstError));
        } else if (verb == QLatin1String("count")) {
            Recordset rs(conn(), QStringLiteral("select count(*) from ") + args.value(3));
            std::printf("%s\n", qPrintable(rs.text(0)));
        }
        conn().close();
    } catch (const DbError& e) {
        std::fprintf(stderr, "%s\n", qPrintable(e.message()));
        return 1;
    }
    return 0;
}
