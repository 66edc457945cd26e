#include "PrintCommand.h"

#include "DemoAdmin.h"
#include "printing/Print.h"
#include "printing/PrintOutput.h"
#include "printing/TableDocument.h"
#include "services/FieldDictionary.h"
#include "shell/Company.h"
#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace zq::admin {

namespace {

const char* kUsage =
    "用法:\n"
    "  zqrs-admin print cards (--db FILE | --server HOST[:PORT] --database NAME [--user U] "
    "[--password P])\n"
    "                         [--filter COND] [--template RsCard --sheet RsCard_01] --pdf OUT.pdf\n"
    "  zqrs-admin print grid  (--db FILE | --server ...) --table TABLE --fields f1,f2,...\n"
    "                         [--filter COND] [--title TITLE] --pdf OUT.pdf\n";

// A grid print of one table: captions from the field dictionary, widths from the field sizes there.
bool printTable(const QString& table, const QStringList& fields, const QString& filter,
                const QString& title) {
    TableData data;
    for (const QString& f : fields) {
        QString caption = GetFieldCaption(table, f);
        if (caption == QLatin1String("\t") || caption.isEmpty()) caption = f;
        double width = 10;
        Recordset w(conn(), QStringLiteral(
                                "select FieldGridWidth from RptListDetail where ftable=%1 and FieldName=%2")
                                .arg(quoted(table.toLower()), quoted(f)));
        if (!w.eof() && !w.text(0).isEmpty()) width = w.val(0);
        data.columns.push_back({caption, width, Qt::AlignLeft});
    }
    QString sql = QStringLiteral("select %1 from %2").arg(fields.join(QLatin1Char(',')), table);
    if (!filter.isEmpty()) sql += QStringLiteral(" where ") + filter;
    sql += QStringLiteral(" order by ") + fields.first();
    Recordset rs(conn(), sql);
    for (; !rs.eof(); rs.moveNext()) {
        TableRow row;
        for (int i = 0; i < rs.fieldCount(); ++i)
            row.cells << rs.text(i);
        data.rows.push_back(std::move(row));
    }
    if (data.rows.isEmpty()) return false;
    ListHeading heading;
    heading.title = title;
    heading.items = G().CompanyItems;
    TableDocument doc(std::move(data), std::move(heading));
    return PrintOutput::run(doc);
}

} // namespace

int runPrint(const QStringList& args, QTextStream& out, QTextStream& err) {
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const DatabaseOptions dbOptions;
    const QCommandLineOption filter(QStringLiteral("filter"), QString(), QStringLiteral("cond"));
    const QCommandLineOption templ(QStringLiteral("template"), QString(), QStringLiteral("key"),
                                   QStringLiteral("RsCard"));
    const QCommandLineOption sheet(QStringLiteral("sheet"), QString(), QStringLiteral("key"),
                                   QStringLiteral("RsCard_01"));
    const QCommandLineOption table(QStringLiteral("table"), QString(), QStringLiteral("table"));
    const QCommandLineOption fields(QStringLiteral("fields"), QString(), QStringLiteral("list"));
    const QCommandLineOption title(QStringLiteral("title"), QString(), QStringLiteral("text"),
                                   QStringLiteral("员工名单"));
    const QCommandLineOption pdf(QStringLiteral("pdf"), QString(), QStringLiteral("file"));
    parser.addOptions(dbOptions.all());
    parser.addOptions({filter, templ, sheet, table, fields, title, pdf});
    if (!parser.parse(args)) {
        err << "zqrs-admin: " << parser.errorText() << "\n" << kUsage;
        return Usage;
    }
    const QStringList pos = parser.positionalArguments(); // "print", what
    const QString what = pos.value(1);
    ConnectionSettings s;
    QString error;
    if (!dbOptions.read(parser, s, error)) {
        err << "zqrs-admin: " << error << "\n" << kUsage;
        return Usage;
    }
    if ((what != QLatin1String("cards") && what != QLatin1String("grid")) || !parser.isSet(pdf)) {
        err << kUsage;
        return Usage;
    }
    if (what == QLatin1String("grid") && (!parser.isSet(table) || parser.value(fields).trimmed().isEmpty())) {
        err << "zqrs-admin: print grid 需要 --table 和 --fields\n" << kUsage;
        return Usage;
    }

    const QString out_pdf = QFileInfo(parser.value(pdf)).absoluteFilePath();
    // Messages such as "no rows" are collected, never shown in a window.
    ScriptedPrompts& prompts = scriptPrompts();
    try {
        useDatabase(s);
        conn().open(s);
        LoadCompany();
        PrintOutput::setPdfPath(out_pdf);
        QFile::remove(out_pdf);
        if (what == QLatin1String("cards")) {
            PrintPersonCard(3, parser.value(templ), parser.value(sheet), parser.value(filter));
        } else {
            QStringList f = parser.value(fields).split(QLatin1Char(','), Qt::SkipEmptyParts);
            for (QString& x : f)
                x = checked(x.trimmed());
            printTable(checked(parser.value(table)), f, parser.value(filter), parser.value(title));
        }
        conn().close();
    } catch (const DbError& e) {
        err << "zqrs-admin: " << e.message() << "\n";
        return Failed;
    }
    for (const QString& m : prompts.messages())
        err << "zqrs-admin: " << m << "\n";
    if (!QFileInfo::exists(out_pdf)) {
        err << "zqrs-admin: 未打印任何内容\n";
        return Failed;
    }
    out << out_pdf << "\n";
    return Ok;
}

} // namespace zq::admin
