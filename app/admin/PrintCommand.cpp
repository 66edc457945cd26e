#include "PrintCommand.h"

#include "DemoAdmin.h"
#include "printing/PersonSheetData.h"
#include "printing/Print.h"
#include "printing/PrintOutput.h"
#include "printing/SheetDocument.h"
#include "printing/TableDocument.h"
#include "resources/Texts.h"
#include "services/FieldDictionary.h"
#include "services/Spreadsheets.h"
#include "shell/Company.h"
#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/Schema.h"
#include "shell/SqlText.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QHash>
#include <QSet>

namespace zq::admin {

namespace {

const char* kUsage =
    "用法:\n"
    "  zqrs-admin print cards (--db FILE | --server HOST[:PORT] --database NAME [--user U] "
    "[--password P])\n"
    "                         [--filter COND] [--template RsCard --sheet RsCard_01] --pdf OUT.pdf\n"
    "  zqrs-admin print grid  (--db FILE | --server ...) --table TABLE --fields f1,f2,...\n"
    "                         [--filter COND] [--title TITLE] --pdf OUT.pdf\n"
    "  zqrs-admin print sheet (--db FILE | --server ...) [--filter COND] --pdf OUT.pdf\n"
    "                         个人简历, 每人正反两面, 按员工编号排序\n"
    "  表和字段须在字段字典中; 过滤条件只能用该表的字段、值、比较和 and or not like in is null\n"
    "  between lower upper trim length substr。\n";

// Refused: a print that names something outside what the field dictionary describes.
struct Refused {
    QString message;
};

// The tables the field dictionary describes, lower-cased -> as written there.
QHash<QString, QString> dictionaryTables() {
    QHash<QString, QString> out;
    for (Recordset rs(conn(), QStringLiteral("select distinct fTable from RptListDetail")); !rs.eof();
         rs.moveNext())
        out.insert(rs.text(0).toLower(), rs.text(0));
    return out;
}

// The fields the dictionary gives a table, lower-cased -> as written there.
QHash<QString, QString> dictionaryFields(const QString& table) {
    QHash<QString, QString> out;
    for (Recordset rs(conn(), QStringLiteral("select FieldName from RptListDetail where ftable=%1")
                                  .arg(quoted(table.toLower())));
         !rs.eof(); rs.moveNext())
        out.insert(rs.text(0).toLower(), rs.text(0));
    return out;
}

// The table as the dictionary writes it; refused when the dictionary does not describe it.
QString printableTable(const QString& table) {
    const QString name = dictionaryTables().value(table.trimmed().toLower());
    if (name.isEmpty()) throw Refused{QStringLiteral("表 %1 不在字段字典中, 不能打印").arg(table)};
    return name;
}

// A filter may name the columns of the printed table: its dictionary fields and its own columns.
QSet<QString> filterColumns(const QString& table) {
    QSet<QString> out;
    for (const QString& f : dictionaryFields(table).keys())
        out.insert(f);
    if (const schema::Table* t = schema::findTable(table))
        for (const schema::Column& c : t->columns)
            out.insert(c.name.toLower());
    return out;
}

// A filter is a condition on the printed table. Rather than parse SQL (a parser per engine, and
// one miss is a leak), every word outside a quoted value must be a column of that table or one of a
// few operators and functions, and only plain punctuation may stand between them. So no second
// statement (no ";"), no subquery or union (no "select"), no other table (the users and their
// password hashes included), no server function and no quoted name can be written. The read-only
// session stops whatever write might still get through.
void checkFilter(const QString& filter, const QSet<QString>& columns) {
    static const QSet<QString> words = {
        QStringLiteral("and"),    QStringLiteral("or"),    QStringLiteral("not"),   QStringLiteral("like"),
        QStringLiteral("in"),     QStringLiteral("is"),    QStringLiteral("null"),  QStringLiteral("between"),
        QStringLiteral("escape"), QStringLiteral("lower"), QStringLiteral("upper"), QStringLiteral("trim"),
        QStringLiteral("length"), QStringLiteral("substr")};
    static const QString punctuation = QStringLiteral("=<>!+-*/%(),.|");
    const auto refuse = [](const QString& what) {
        throw Refused{QStringLiteral("过滤条件中不能有 %1").arg(what)};
    };
    const auto isWordChar = [](QChar ch) {
        return (ch.unicode() < 128 && ch.isLetterOrNumber()) || ch == QLatin1Char('_');
    };
    for (qsizetype i = 0; i < filter.size();) {
        const QChar ch = filter.at(i);
        if (ch == QLatin1Char('\'')) { // a value: up to the closing quote, '' standing for one quote
            ++i;
            for (;; ++i) {
                if (i >= filter.size()) refuse(QStringLiteral("不成对的单引号"));
                if (filter.at(i) != QLatin1Char('\'')) continue;
                if (i + 1 < filter.size() && filter.at(i + 1) == QLatin1Char('\'')) {
                    ++i;
                    continue;
                }
                break;
            }
            ++i;
        } else if (ch.isDigit() && ch.unicode() < 128) { // a number; letters after it are a word
            while (i < filter.size() && ((filter.at(i).isDigit() && filter.at(i).unicode() < 128) ||
                                         filter.at(i) == QLatin1Char('.')))
                ++i;
        } else if (isWordChar(ch)) {
            const qsizetype start = i;
            while (i < filter.size() && isWordChar(filter.at(i)))
                ++i;
            const QString word = filter.mid(start, i - start).toLower();
            if (!columns.contains(word) && !words.contains(word)) refuse(filter.mid(start, i - start));
        } else if (ch.isSpace()) {
            ++i;
        } else if (punctuation.contains(ch)) {
            // Comments would hide the rest of the statement.
            const QString two = filter.mid(i, 2);
            if (two == QLatin1String("--") || two == QLatin1String("/*")) refuse(two);
            ++i;
        } else {
            refuse(QString(ch));
        }
    }
}

// A grid print of one table: captions from the field dictionary, widths from the field sizes there.
// Table, fields and filter have been checked against the dictionary.
// Reports the pages written, one line every so often, on the error stream.
class LineProgress : public PrintProgress {
public:
    explicit LineProgress(QTextStream& err)
        : m_err(err) {}
    void begin(const QString&, int total) override { m_total = total; }
    bool step(int done, const QString& text) override {
        if (done % 200 == 0 || done == m_total) m_err << text << "\n" << Qt::flush;
        return true;
    }
    void end() override {}

private:
    QTextStream& m_err;
    int m_total = 0;
};

// The record sheets of every person the filter selects, in code order, both sides each.
bool printSheets(const QString& filter, QTextStream& err) {
    const QStringList codes = SheetCodes(filter);
    if (codes.isEmpty()) {
        ShowMsg(LoadText(148), vbInformation);
        return false;
    }
    err << QStringLiteral("个人简历 %1 人, %2 页").arg(codes.size()).arg(codes.size() * 2) << "\n";
    installPrintProgress(std::make_shared<LineProgress>(err));
    const SheetDocument sheets(codes);
    const bool done = PrintOutput::run(sheets);
    installPrintProgress(nullptr);
    for (const QString& misfit : sheets.misfits())
        err << misfit << "\n";
    return done;
}

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

// A list of one table to a spreadsheet: captions and widths from the dictionary, dates and numbers
// by the column's type in the schema.
qint64 exportTable(const QString& table, const QStringList& fields, const QString& filter,
                   const QString& title, const QString& path, QString& error) {
    QVector<SheetColumn> columns;
    const schema::Table* t = schema::findTable(table);
    for (const QString& f : fields) {
        SheetColumn c;
        c.caption = GetFieldCaption(table, f);
        if (c.caption == QLatin1String("\t") || c.caption.isEmpty()) c.caption = f;
        Recordset w(conn(), QStringLiteral(
                                "select FieldGridWidth from RptListDetail where ftable=%1 and FieldName=%2")
                                .arg(quoted(table.toLower()), quoted(f)));
        if (!w.eof() && !w.text(0).isEmpty()) c.width = w.val(0);
        for (const schema::Column& col : t ? t->columns : QVector<schema::Column>{}) {
            if (col.name.compare(f, Qt::CaseInsensitive) != 0) continue;
            if (col.type == schema::Type::Date || col.type == schema::Type::DateTime)
                c.kind = CellKind::Date;
            else if (col.type == schema::Type::SmallInt || col.type == schema::Type::Int ||
                     col.type == schema::Type::BigInt || col.type == schema::Type::AutoId)
                c.kind = CellKind::Number; // the loan tables' 序号 too, a number of its own
            else if (col.type == schema::Type::Real) {
                c.kind = CellKind::Number;
                c.decimals = 2;
            }
        }
        columns << c;
    }
    QString sql = QStringLiteral("select %1 from %2").arg(fields.join(QLatin1Char(',')), table);
    if (!filter.isEmpty()) sql += QStringLiteral(" where ") + filter;
    sql += QStringLiteral(" order by ") + fields.first();
    QueryRowSource rows(columns, sql);
    return ExportRows(path, rows, title, &error);
}

} // namespace

int runExport(const QStringList& args, QTextStream& out, QTextStream& err) {
    static const char* usage =
        "用法:\n"
        "  zqrs-admin export grid (--db FILE | --server ...) --table TABLE --fields f1,f2,...\n"
        "                         [--filter COND] [--title TITLE] --file OUT.xlsx|OUT.csv\n"
        "  表和字段须在字段字典中; 过滤条件同 print grid。\n";
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const DatabaseOptions dbOptions;
    const QCommandLineOption filter(QStringLiteral("filter"), QString(), QStringLiteral("cond"));
    const QCommandLineOption table(QStringLiteral("table"), QString(), QStringLiteral("table"));
    const QCommandLineOption fields(QStringLiteral("fields"), QString(), QStringLiteral("list"));
    const QCommandLineOption title(QStringLiteral("title"), QString(), QStringLiteral("text"),
                                   QStringLiteral("员工名单"));
    const QCommandLineOption file(QStringLiteral("file"), QString(), QStringLiteral("file"));
    ConnectionSettings s;
    QString error;
    if (!dbOptions.parse(parser, {filter, table, fields, title, file}, args, s, err, usage)) return Usage;
    if (parser.positionalArguments().value(1) != QLatin1String("grid") || !parser.isSet(file) ||
        !parser.isSet(table) || parser.value(fields).trimmed().isEmpty()) {
        err << usage;
        return Usage;
    }
    const QString path = QFileInfo(parser.value(file)).absoluteFilePath();
    qint64 rows = -1;
    try {
        useDatabase(s);
        conn().open(s);
        makeReadOnly(conn());
        const QString name = printableTable(parser.value(table));
        const QHash<QString, QString> known = dictionaryFields(name);
        QStringList f;
        for (const QString& x : parser.value(fields).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            const QString field = known.value(x.trimmed().toLower());
            if (field.isEmpty())
                throw Refused{QStringLiteral("字段 %1 不是字段字典中表 %2 的字段").arg(x.trimmed(), name)};
            f << field;
        }
        const QString cond = parser.value(filter).trimmed();
        checkFilter(cond, filterColumns(name));
        rows = exportTable(name, f, cond, parser.value(title), path, error);
        conn().close();
    } catch (const Refused& r) {
        conn().close();
        err << "zqrs-admin: " << r.message << "\n";
        return Failed;
    } catch (const DbError& e) {
        conn().close();
        err << "zqrs-admin: " << e.message() << "\n";
        return Failed;
    }
    return reportWritten(rows, path, error, out, err);
}

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
    ConnectionSettings s;
    if (!dbOptions.parse(parser, {filter, templ, sheet, table, fields, title, pdf}, args, s, err, kUsage)) return Usage;
    const QStringList pos = parser.positionalArguments(); // "print", what
    const QString what = pos.value(1);
    if ((what != QLatin1String("cards") && what != QLatin1String("grid") && what != QLatin1String("sheet")) ||
        !parser.isSet(pdf)) {
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
        makeReadOnly(conn()); // every statement of the print: the engine refuses a write
        LoadCompany();
        const QString cond = parser.value(filter).trimmed();
        if (what == QLatin1String("sheet")) {
            checkFilter(cond, filterColumns(QStringLiteral("tRsBasic")));
            PrintOutput::setPdfPath(out_pdf);
            QFile::remove(out_pdf);
            printSheets(cond, err);
        } else if (what == QLatin1String("cards")) {
            checkFilter(cond, filterColumns(QStringLiteral("tRsBasic")));
            PrintOutput::setPdfPath(out_pdf);
            QFile::remove(out_pdf);
            PrintPersonCard(3, parser.value(templ), parser.value(sheet), cond);
        } else {
            const QString name = printableTable(parser.value(table));
            const QHash<QString, QString> known = dictionaryFields(name);
            QStringList f;
            for (const QString& x : parser.value(fields).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
                const QString field = known.value(x.trimmed().toLower());
                if (field.isEmpty())
                    throw Refused{
                        QStringLiteral("字段 %1 不是字段字典中表 %2 的字段").arg(x.trimmed(), name)};
                f << field;
            }
            checkFilter(cond, filterColumns(name));
            PrintOutput::setPdfPath(out_pdf);
            QFile::remove(out_pdf);
            printTable(name, f, cond, parser.value(title));
        }
        conn().close();
    } catch (const Refused& r) {
        conn().close();
        err << "zqrs-admin: " << r.message << "\n";
        return Failed;
    } catch (const DbError& e) {
        conn().close();
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
