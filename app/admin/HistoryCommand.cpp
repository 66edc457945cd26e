#include "HistoryCommand.h"

#include "DemoAdmin.h"

#include "services/ChangeHistory.h"
#include "shell/DbError.h"
#include "shell/Globals.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace zq::admin {

int runHistory(const QStringList& args, QTextStream& out, QTextStream& err) {
    static const char* usage = "用法:\n"
                               "  zqrs-admin history (--db FILE | --server ...) --person CODE --file OUT.xlsx|OUT.csv\n"
                               "  zqrs-admin history (--db FILE | --server ...) --since yyyy-mm-dd [--until yyyy-mm-dd]\n"
                               "                     --file OUT.xlsx|OUT.csv\n"
                               "  一名员工的全部变更记录, 或一段时期内全公司的变更。\n";
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const DatabaseOptions dbOptions;
    const QCommandLineOption person(QStringLiteral("person"), QString(), QStringLiteral("code"));
    const QCommandLineOption since(QStringLiteral("since"), QString(), QStringLiteral("date"));
    const QCommandLineOption until(QStringLiteral("until"), QString(), QStringLiteral("date"));
    const QCommandLineOption file(QStringLiteral("file"), QString(), QStringLiteral("file"));
    ConnectionSettings s;
    QString error;
    if (!dbOptions.parse(parser, {person, since, until, file}, args, s, err, usage)) return Usage;
    const QString code = parser.value(person).trimmed();
    CompanyHistoryFilter f;
    const auto day = [&](const QCommandLineOption& o) {
        return QDate::fromString(parser.value(o).trimmed(), QStringLiteral("yyyy-MM-dd"));
    };
    f.from = day(since);
    f.to = parser.isSet(until) ? day(until) : QDate::currentDate();
    const bool byPerson = !code.isEmpty() && !parser.isSet(since) && !parser.isSet(until);
    const bool byPeriod = code.isEmpty() && f.from.isValid() && f.to.isValid();
    if (!parser.isSet(file) || (!byPerson && !byPeriod)) {
        if ((parser.isSet(since) && !f.from.isValid()) || (parser.isSet(until) && !f.to.isValid()))
            err << "zqrs-admin: 日期应如 2025-01-31\n";
        err << usage;
        return Usage;
    }
    const QString path = QFileInfo(parser.value(file)).absoluteFilePath();
    qint64 rows = -1;
    try {
        useDatabase(s);
        conn().open(s);
        makeReadOnly(conn());
        rows = ExportHistory(path, code, f, &error);
        conn().close();
    } catch (const DbError& e) {
        conn().close();
        err << "zqrs-admin: " << e.message() << "\n";
        return Failed;
    }
    return reportWritten(rows, path, error, out, err);
}

} // namespace zq::admin
