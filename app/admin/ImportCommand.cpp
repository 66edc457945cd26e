// zqrs-admin import persons: the staff import without the program, for bulk hires and scripts.

#include "DemoAdmin.h"
#include "PrintCommand.h"
#include "personnel/PersonImport.h"
#include "shell/Company.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"

#include <QFileInfo>

namespace zq::admin {

namespace {
const char* kImportUsage =
    "用法:\n"
    "  zqrs-admin import persons (--db FILE | --server HOST[:PORT] --database NAME [--user U] "
    "[--password P])\n"
    "                            --file F.xlsx|F.csv [--update] [--dry-run] [--good-only]\n"
    "  按表头对应员工字段; 有被拒绝的行时什么也不写, 除非给了 --good-only。\n"
    "  --update 按员工编号修改已有的人 (只改对应上的列); --dry-run 只检查, 不写。\n";
} // namespace

int runImport(const QStringList& args, QTextStream& out, QTextStream& err) {
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const DatabaseOptions dbOptions;
    const QCommandLineOption file(QStringLiteral("file"), QString(), QStringLiteral("file"));
    const QCommandLineOption update(QStringLiteral("update"));
    const QCommandLineOption dryRun(QStringLiteral("dry-run"));
    const QCommandLineOption goodOnly(QStringLiteral("good-only"));
    ConnectionSettings s;
    if (!dbOptions.parse(parser, {file, update, dryRun, goodOnly}, args, s, err, kImportUsage)) return Usage;
    if (parser.positionalArguments().value(1) != QLatin1String("persons") || !parser.isSet(file)) {
        err << kImportUsage;
        return Usage;
    }
    scriptPrompts();
    int exit = Ok;
    try {
        useDatabase(s);
        conn().open(s);
        if (parser.isSet(dryRun)) makeReadOnly(conn());
        const ImportPlan plan = PrepareImport(QFileInfo(parser.value(file)).absoluteFilePath());
        const ImportCheck check = CheckImport(plan, parser.isSet(update));
        if (!check.error.isEmpty()) {
            conn().close();
            err << "zqrs-admin: " << check.error << "\n";
            return Failed;
        }
        QStringList mapping;
        for (int c = 0; c < plan.fields.size(); ++c)
            if (!plan.fields.at(c).isEmpty()) mapping << plan.headers.at(c) + QStringLiteral("→") + plan.fields.at(c);
        out << QStringLiteral("表头在%1: %2").arg(plan.headerPlace(), mapping.join(QStringLiteral(", "))) << "\n";
        if (!plan.unmapped().isEmpty())
            out << QStringLiteral("未对应的列: %1").arg(plan.unmapped().join(QStringLiteral(", "))) << "\n";
        for (const RowIssue& i : check.issues)
            err << QStringLiteral("第 %1 行 %2%3: %4")
                       .arg(i.row)
                       .arg(i.code)
                       .arg(i.refused ? QStringLiteral(" 拒绝") : QStringLiteral(" 警告"), i.reason)
                << "\n";
        out << QStringLiteral("新增 %1 人, 修改 %2 人, 未变 %3 人, 拒绝 %4 行")
                   .arg(check.added)
                   .arg(check.updated)
                   .arg(check.unchanged)
                   .arg(check.refused)
            << "\n";
        if (parser.isSet(dryRun)) {
            out << QStringLiteral("只检查, 未写入") << "\n";
            exit = check.refused > 0 ? Failed : Ok;
        } else if (check.refused > 0 && !parser.isSet(goodOnly)) {
            out << QStringLiteral("有被拒绝的行, 未写入任何内容") << "\n";
            exit = Failed;
        } else {
            G().UserName = QStringLiteral("zqrs-admin");
            WriteImport(check, parser.isSet(goodOnly));
            out << QStringLiteral("已写入") << "\n";
        }
        conn().close();
    } catch (const DbError& e) {
        conn().close();
        err << "zqrs-admin: " << e.message() << "\n";
        return Failed;
    }
    return exit;
}

} // namespace zq::admin
