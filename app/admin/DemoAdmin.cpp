// The commands of zqrs-admin: make an empty company database, or one filled with a demo company.

#include "DemoAdmin.h"

#include "Demo.h"

#include "shell/DbError.h"
#include "shell/Schema.h"
#include "shell/Users.h"

#include <QCommandLineParser>
#include <QElapsedTimer>

namespace zq::admin {

namespace {

const char* const kVersion = "0.1";

const QString kHelp =
    QStringLiteral("用法:\n"
                   "  zqrs-admin init --db 文件 [--admin 姓名 --admin-password 密码]\n"
                   "  zqrs-admin init --server 主机[:端口] --database 库名 [--user 用户] [--password 密码]\n"
                   "                  [--admin 姓名 --admin-password 密码]\n"
                   "  zqrs-admin demo --db 文件 --persons 人数 [--seed 种子]\n"
                   "  zqrs-admin demo --server 主机[:端口] --database 库名 [--user 用户] [--password 密码]\n"
                   "                  --persons 人数 [--seed 种子]\n"
                   "  zqrs-admin upgrade (--db 文件 | --server 主机[:端口] --database 库名 ...)\n"
                   "  zqrs-admin version\n"
                   "  demo 加 --verbose 逐表显示行数和用时。\n"
                   "  连接服务器时可加 --tls off|require|verify-full 和 --tls-root-cert 根证书文件;\n"
                   "  verify-full 核对服务器的证书由根证书签发且与主机名相符, 不符时拒绝连接。\n"
                   "\n"
                   "init     建立新数据库: 全部表、版本表和初始数据。已建立的数据库不作任何改动。\n"
                   "         --admin 同时建立第一位系统负责人(登录用户); 不给时第一次登录时设定。\n"
                   "demo     数据库不存在时先建立, 再填入一个演示公司(同一种子得到同样的数据),\n"
                   "         并建立演示用户: 系统负责人和两位权限有限的员工。\n"
                   "         已有员工的数据库不作任何改动。\n"
                   "upgrade  把旧的数据库升级到本程序的结构版本, 显示升级前后的版本。\n"
                   "version  显示程序和数据库结构的版本。\n"
                   "print    打印人员卡片、表格或履历表为 PDF (zqrs-admin print 显示用法)。\n"
                   "export   把表格导出为 .xlsx 或 .csv (zqrs-admin export 显示用法)。\n"
                   "import   从 .xlsx 或 .csv 导入员工 (zqrs-admin import 显示用法)。\n"
                   "backup   在客户端照常工作时备份整个公司 (zqrs-admin backup 显示用法)。\n"
                   "restore  把备份恢复到新的数据库, 逐表核对。\n"
                   "copy     把整个公司在文件和服务器之间复制, 逐表核对。\n"
                   "history  把一名员工或一段时期的变更记录写为 .xlsx 或 .csv (zqrs-admin history 显示用法)。\n");

struct Parsed {
    QString command;
    bool verbose = false;
    ConnectionSettings settings;
    demo::Options demo;
    QString admin; // the first supervisor of init
    QString adminPassword;
};

// Reads the command line; on a mistake gives the message to show with the usage.
bool parse(const QStringList& args, Parsed& p, QString& error, bool& help) {
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const DatabaseOptions dbOptions;
    const QCommandLineOption persons(QStringLiteral("persons"), QString(), QStringLiteral("n"));
    const QCommandLineOption seed(QStringLiteral("seed"), QString(), QStringLiteral("s"));
    const QCommandLineOption verbose(QStringLiteral("verbose"));
    const QCommandLineOption admin(QStringLiteral("admin"), QString(), QStringLiteral("name"));
    const QCommandLineOption adminPassword(QStringLiteral("admin-password"), QString(),
                                           QStringLiteral("password"));
    const QCommandLineOption helpOption(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    parser.addOptions(dbOptions.all());
    parser.addOptions({persons, seed, verbose, admin, adminPassword, helpOption});
    if (!parser.parse(args)) {
        error = parser.errorText();
        return false;
    }
    help = parser.isSet(helpOption);
    if (help) return true;
    const QStringList positional = parser.positionalArguments();
    if (positional.size() != 1) {
        error = positional.isEmpty()
                    ? QStringLiteral("缺少命令")
                    : QStringLiteral("多余的参数: %1").arg(positional.mid(1).join(QLatin1Char(' ')));
        return false;
    }
    p.command = positional.first();
    if (p.command == QLatin1String("version")) return true;
    if (p.command != QLatin1String("init") && p.command != QLatin1String("demo") &&
        p.command != QLatin1String("upgrade")) {
        error = QStringLiteral("未知命令: %1").arg(p.command);
        return false;
    }

    if (!dbOptions.read(parser, p.settings, error)) return false;

    p.verbose = parser.isSet(verbose);
    if (p.command == QLatin1String("demo")) {
        bool ok = false;
        p.demo.persons = parser.value(persons).toInt(&ok);
        if (!parser.isSet(persons) || !ok || p.demo.persons < 1 || p.demo.persons > 1000000) {
            error = QStringLiteral("--persons 须为 1 到 1000000 之间的整数");
            return false;
        }
        if (parser.isSet(seed)) {
            p.demo.seed = parser.value(seed).toUInt(&ok);
            if (!ok) {
                error = QStringLiteral("--seed 须为非负整数");
                return false;
            }
        }
    } else if (parser.isSet(persons) || parser.isSet(seed)) {
        error = QStringLiteral("--persons 和 --seed 只用于 demo");
        return false;
    }
    if (parser.isSet(admin) || parser.isSet(adminPassword)) {
        p.admin = parser.value(admin).trimmed();
        p.adminPassword = parser.value(adminPassword);
        if (p.command != QLatin1String("init")) {
            error = QStringLiteral("--admin 只用于 init");
            return false;
        }
        if (p.admin.isEmpty() || p.adminPassword.isEmpty()) {
            error = QStringLiteral("--admin 和 --admin-password 须一同给出, 且不能为空");
            return false;
        }
        if (p.admin.contains(QLatin1Char('\''))) {
            error = QStringLiteral("--admin 的姓名中不能有单引号");
            return false;
        }
    }
    return true;
}

QString where(const ConnectionSettings& s) {
    return s.sqlData == 0 ? s.userPath : QStringLiteral("%1/%2").arg(s.userPath, s.defaultDb);
}

// Brings a database of this system to the schema version of this program. A database without a
// version is refused: the first step would make a company database out of any other one, and it
// would seed the dictionaries a second time into one that has them.
void upgradeDatabase(const ConnectionSettings& s, QTextStream& out) {
    Connection c;
    c.open(s);
    const int before = schema::currentVersion(c);
    const int latest = schema::latestVersion();
    if (before == 0)
        throw DbError(
            QStringLiteral("%1 没有本系统的数据库结构版本, 未作任何改动 (新数据库请用 init)").arg(where(s)));
    if (before > latest)
        throw DbError(
            QStringLiteral("数据库结构版本 %1 比本程序的版本 %2 新, 未作任何改动").arg(before).arg(latest));
    if (before == latest) {
        out << QStringLiteral("数据库结构已是最新版本 %1, 未作改动 (%2)").arg(before).arg(where(s)) << '\n';
        return;
    }
    schema::upgrade(c);
    out << QStringLiteral("数据库结构已从版本 %1 升级到版本 %2 (%3)")
               .arg(before)
               .arg(schema::currentVersion(c))
               .arg(where(s))
        << '\n';
}

} // namespace

void makeReadOnly(Connection& c) {
    c.makeReadOnly();
}

int reportWritten(qint64 rows, const QString& path, const QString& error, QTextStream& out, QTextStream& err) {
    if (rows < 0) {
        err << "zqrs-admin: " << error << "\n";
        return Failed;
    }
    out << path << "\n" << QStringLiteral("%1 行").arg(rows) << "\n";
    return Ok;
}

bool DatabaseOptions::parse(QCommandLineParser& parser, const QList<QCommandLineOption>& own,
                            const QStringList& args, ConnectionSettings& s, QTextStream& err,
                            const QString& usage) const {
    parser.addOptions(all());
    parser.addOptions(own);
    QString error;
    if (!parser.parse(args))
        error = parser.errorText();
    else if (read(parser, s, error))
        return true;
    err << "zqrs-admin: " << error << "\n" << usage;
    return false;
}

bool DatabaseOptions::readServer(const QCommandLineParser& parser, const QString& host, ConnectionSettings& s,
                                 QString& error) const {
    s.sqlData = 1;
    s.userPath = host;
    s.defaultDb = parser.value(database);
    s.userId = parser.value(user);
    s.password = parser.value(password);
    if (s.userPath.isEmpty()) {
        error = QStringLiteral("数据库位置不能为空");
        return false;
    }
    if (s.defaultDb.isEmpty()) {
        error = QStringLiteral("--server 需要 --database");
        return false;
    }
    if (parser.isSet(tls) && !ServerTls::parseMode(parser.value(tls), s.tls.mode)) {
        error = QStringLiteral("--tls 须为 off、require 或 verify-full");
        return false;
    }
    s.tls.rootCert = parser.value(tlsRootCert);
    return true;
}

bool DatabaseOptions::read(const QCommandLineParser& parser, ConnectionSettings& s, QString& error) const {
    if (parser.isSet(db) == parser.isSet(server)) {
        error = QStringLiteral("请给出 --db 或 --server 之一");
        return false;
    }
    if (parser.isSet(server)) return readServer(parser, parser.value(server), s, error);
    if (parser.isSet(tls) || parser.isSet(tlsRootCert)) {
        error = QStringLiteral("--tls 和 --tls-root-cert 只用于 --server");
        return false;
    }
    s.sqlData = 0;
    s.userPath = parser.value(db);
    if (s.userPath.isEmpty()) {
        error = QStringLiteral("数据库位置不能为空");
        return false;
    }
    return true;
}

int run(const QStringList& args, QTextStream& out, QTextStream& err) {
    Parsed p;
    QString error;
    bool help = false;
    if (!parse(args, p, error, help)) {
        err << "zqrs-admin: " << error << "\n\n" << kHelp;
        err.flush();
        return Usage;
    }
    if (help) {
        out << kHelp;
        out.flush();
        return Ok;
    }
    if (p.command == QLatin1String("version")) {
        out << "zqrs-admin " << kVersion
            << QStringLiteral(" (数据库结构版本 %1)").arg(schema::latestVersion()) << '\n';
        out.flush();
        return Ok;
    }
    try {
        if (p.command == QLatin1String("upgrade")) {
            upgradeDatabase(p.settings, out);
        } else if (p.command == QLatin1String("init")) {
            schema::createDatabase(p.settings);
            out << QStringLiteral("已建立数据库: %1 (结构版本 %2)")
                       .arg(where(p.settings), QString::number(schema::latestVersion()))
                << '\n';
            if (!p.admin.isEmpty()) {
                Connection c;
                c.open(p.settings);
                createUser(c, p.admin, p.adminPassword, fullPower(), true);
                out << QStringLiteral("已建立系统负责人: %1").arg(p.admin) << '\n';
            }
        } else {
            QElapsedTimer timer, table;
            timer.start();
            table.start();
            if (p.verbose)
                p.demo.progress = [&](const QString& name, qint64 rows) {
                    out << QStringLiteral("%1  %2 行  %3 秒")
                               .arg(name, -16)
                               .arg(rows, 8)
                               .arg(double(table.restart()) / 1000.0, 0, 'f', 2)
                        << Qt::endl;
                };
            const demo::Summary s = demo::createDemoDatabase(p.settings, p.demo);
            out << QStringLiteral(
                       "已填入演示公司: %1 名员工, %2 个部门, %3 个岗位, 共 %4 行, 用时 %5 秒 (%6)")
                       .arg(s.persons)
                       .arg(s.departments)
                       .arg(s.posts)
                       .arg(s.rows)
                       .arg(double(timer.elapsed()) / 1000.0, 0, 'f', 1)
                       .arg(where(p.settings))
                << '\n';
            for (const demo::DemoLogin& l : s.logins)
                out << QStringLiteral("演示用户: %1  密码 %2%3")
                           .arg(l.name, l.password,
                                l.supervisor ? QStringLiteral("  (系统负责人)") : QString())
                    << '\n';
        }
    } catch (const DbError& e) {
        err << "zqrs-admin: " << e.message() << '\n';
        err.flush();
        return Failed;
    }
    out.flush();
    return Ok;
}

} // namespace zq::admin
