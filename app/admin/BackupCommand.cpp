// zqrs-admin backup, restore and copy: a company kept safe and moved between file and server.

#include "BackupCommand.h"

#include "Backup.h"
#include "DemoAdmin.h"

#include "shell/DbError.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

namespace zq::admin {

namespace {

const char* kBackupUsage =
    "用法:\n"
    "  zqrs-admin backup (--db 文件 | --server 主机[:端口] --database 库名 [--user 用户] [--password 密码]\n"
    "                     [--tls off|require|verify-full] [--tls-root-cert 文件])\n"
    "                    --to 备份文件|文件夹/ [--keep N] [--verbose]\n"
    "  zqrs-admin restore 备份文件 (--db 新文件 | --server 主机[:端口] --database 新库名 ...) [--verbose]\n"
    "  zqrs-admin copy --db 文件 --to-server 主机[:端口] --database 新库名 [--user ...] [--verbose]\n"
    "  zqrs-admin copy --from-server 主机[:端口] --database 库名 [--user ...] --to-db 新文件 [--verbose]\n"
    "\n"
    "backup   在客户端照常工作时做一份一致的备份。--to 是文件夹 (已存在, 或以 / 结尾) 时备份名为\n"
    "         库名-日期-时间.zqbak; --keep N 只保留该文件夹中这个数据库最新的 N 份备份。\n"
    "restore  把备份恢复到一个新的数据库 (文件或服务器上的库都不能已存在); 旧版本的备份恢复时升级。\n"
    "copy     把整个公司复制到另一种数据库中的一个新库。\n"
    "三者都逐表核对行数和校验和, 核对无误后才给目标起正式的名字; 出错时返回非零并说明原因。\n";

struct Command {
    QCommandLineParser parser;
    DatabaseOptions db;
    QCommandLineOption to{QStringLiteral("to"), QString(), QStringLiteral("file")};
    QCommandLineOption keep{QStringLiteral("keep"), QString(), QStringLiteral("n")};
    QCommandLineOption toServer{QStringLiteral("to-server"), QString(), QStringLiteral("host")};
    QCommandLineOption fromServer{QStringLiteral("from-server"), QString(), QStringLiteral("host")};
    QCommandLineOption toDb{QStringLiteral("to-db"), QString(), QStringLiteral("file")};
    QCommandLineOption verbose{QStringLiteral("verbose")};

    Command() {
        parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
        parser.addOptions(db.all());
        parser.addOptions({to, keep, toServer, fromServer, toDb, verbose});
    }
};

int usage(QTextStream& err, const QString& error) {
    err << "zqrs-admin: " << error << "\n\n" << kBackupUsage;
    err.flush();
    return Usage;
}

// What was read and checked, table by table when asked, then in one line.
void report(QTextStream& out, const backup::Outcome& o, const QString& what, bool verbose) {
    if (verbose)
        for (const backup::TableImage& t : o.tables)
            out << QStringLiteral("  %1 %2 行  校验和 %3").arg(t.name, -20).arg(t.rows, 9).arg(t.checksum) << '\n';
    out << QStringLiteral("%1: %2 (数据库结构版本 %3)").arg(what, o.target).arg(o.schemaVersion) << '\n';
    if (o.upgradedFrom)
        out << QStringLiteral("备份的结构版本 %1 已升级到 %2").arg(o.upgradedFrom).arg(o.schemaVersion) << '\n';
    out << QStringLiteral("已核对 %1 张表共 %2 行: 每张表的行数和校验和都与源数据一致")
               .arg(o.tables.size())
               .arg(o.rows())
        << '\n';
}

int fail(QTextStream& err, const QString& message) {
    err << "zqrs-admin: " << message << '\n';
    err.flush();
    return Failed;
}

} // namespace

int runBackupCommand(const QStringList& args, QTextStream& out, QTextStream& err) {
    Command c;
    if (!c.parser.parse(args)) return usage(err, c.parser.errorText());
    const QStringList positional = c.parser.positionalArguments();
    const QString command = positional.value(0);
    const bool verbose = c.parser.isSet(c.verbose);
    backup::Progress progress;
    if (verbose)
        progress = [&out](const QString& line) {
            out << line << Qt::endl;
        };
    QElapsedTimer timer;
    timer.start();
    const auto seconds = [&timer] { return QString::number(double(timer.elapsed()) / 1000.0, 'f', 1); };

    try {
        if (command == QLatin1String("backup")) {
            if (positional.size() != 1) return usage(err, QStringLiteral("多余的参数"));
            ConnectionSettings s;
            QString error;
            if (!c.db.read(c.parser, s, error)) return usage(err, error);
            if (!c.parser.isSet(c.to)) return usage(err, QStringLiteral("backup 需要 --to"));
            QString file = c.parser.value(c.to);
            const bool folder = QFileInfo(file).isDir() || file.endsWith(QLatin1Char('/'));
            int keep = 0;
            if (c.parser.isSet(c.keep)) {
                bool ok = false;
                keep = c.parser.value(c.keep).toInt(&ok);
                if (!ok || keep < 1) return usage(err, QStringLiteral("--keep 须为正整数"));
                if (!folder) return usage(err, QStringLiteral("--keep 只用于备份到文件夹"));
            }
            if (folder) {
                if (!QDir().mkpath(file)) return fail(err, QStringLiteral("无法建立文件夹 %1").arg(file));
                file = QDir(file).filePath(backup::backupFileName(s));
            }
            const backup::Outcome o = backup::backupCompany(s, file, progress);
            report(out, o, QStringLiteral("已备份到"), verbose);
            if (keep > 0)
                for (const QString& removed : backup::pruneBackups(QFileInfo(file).absolutePath(), s, keep))
                    out << QStringLiteral("已删除旧的备份: %1").arg(removed) << '\n';
        } else if (command == QLatin1String("restore")) {
            if (positional.size() != 2) return usage(err, QStringLiteral("restore 需要一个备份文件"));
            ConnectionSettings s;
            QString error;
            if (!c.db.read(c.parser, s, error)) return usage(err, error);
            const backup::Outcome o = backup::restoreCompany(positional[1], s, progress);
            report(out, o, QStringLiteral("已恢复到"), verbose);
        } else if (command == QLatin1String("copy")) {
            if (positional.size() != 1) return usage(err, QStringLiteral("多余的参数"));
            const bool up = c.parser.isSet(c.toServer);
            if (up == c.parser.isSet(c.fromServer))
                return usage(err, QStringLiteral("请给出 --to-server 或 --from-server 之一"));
            const QCommandLineOption& fileOption = up ? c.db.db : c.toDb;
            if (!c.parser.isSet(fileOption) || c.parser.value(fileOption).isEmpty())
                return usage(err, up ? QStringLiteral("--to-server 需要 --db") : QStringLiteral("--from-server 需要 --to-db"));
            if (c.parser.isSet(c.db.server)) return usage(err, QStringLiteral("copy 用 --to-server 或 --from-server"));
            if (c.parser.isSet(up ? c.toDb : c.db.db))
                return usage(err, up ? QStringLiteral("--to-server 的源文件用 --db 给出, 不用 --to-db")
                                     : QStringLiteral("--from-server 的目标文件用 --to-db 给出, 不用 --db"));
            ConnectionSettings file, server;
            file.userPath = c.parser.value(fileOption);
            QString error;
            if (!c.db.readServer(c.parser, c.parser.value(up ? c.toServer : c.fromServer), server, error))
                return usage(err, error);
            const backup::Outcome o =
                up ? backup::copyCompany(file, server, progress) : backup::copyCompany(server, file, progress);
            report(out, o, QStringLiteral("已复制到"), verbose);
        } else {
            return usage(err, QStringLiteral("未知命令: %1").arg(command));
        }
    } catch (const DbError& e) {
        return fail(err, e.message());
    }
    out << QStringLiteral("用时 %1 秒").arg(seconds()) << '\n';
    out.flush();
    return Ok;
}

} // namespace zq::admin
