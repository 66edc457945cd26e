#include "MainWindow.h"

#include "admin/Demo.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Fonts.h"
#include "shell/ui/ToolkitTexts.h"
#include "shell/ui/zqRs.h"

#include <cstdio>
#include <memory>
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QTimer>

namespace {
// A statement a screen does not trap (a quote in a value it does not check, a table a sibling
// module lacks) reaches the host here: the user is told, and the screen stays open with its input.
class HostApplication : public QApplication {
public:
    using QApplication::QApplication;
    bool notify(QObject* receiver, QEvent* event) override {
        try {
            return QApplication::notify(receiver, event);
        } catch (const zq::DbError& e) {
            zq::ShowMsg(QStringLiteral("数据库错误:\n%1").arg(e.message()), zq::vbExclamation);
            return false;
        }
    }
};

// The user's own data folder: the account sets (zqset.db), work files and the demo database.
QString dataFolder() {
    const QString dir =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/zqrs");
    QDir().mkpath(dir);
    return dir;
}

// Makes the demo company where the settings point unless a database with the schema is there.
bool ensureDemo(const zq::ConnectionSettings& s) {
    try {
        if (zq::demo::holdsSchema(s)) return true;
        std::fprintf(stderr, "%s\n", qPrintable(QStringLiteral("正在建立演示数据库, 请稍候...")));
        zq::demo::Options o;
        o.persons = 2000;
        o.seed = 1;
        zq::demo::createDemoDatabase(s, o);
        return true;
    } catch (const zq::DbError& e) {
        zq::ShowMsg(QStringLiteral("无法建立演示数据库:\n%1").arg(e.message()), zq::vbExclamation);
        return false;
    }
}
// The command line. Help is answered before the windowed application starts, so that it works
// where there is no display.
struct HostOptions {
    const QCommandLineOption db{"db", "SQLite database file.", "FILE"};
    const QCommandLineOption server{"server", "PostgreSQL server (host, host:port or socket directory).",
                                    "HOST[:PORT]"};
    const QCommandLineOption database{"database", "Database on the server.", "NAME"};
    const QCommandLineOption user{"user", "Login on the server.", "U"};
    const QCommandLineOption password{"password", "Password of the server login.", "P"};
    const QCommandLineOption tls{"tls",
                                 "Protection of the connection to the server: off, require or "
                                 "verify-full (the server's certificate is checked).",
                                 "MODE"};
    const QCommandLineOption tlsRootCert{"tls-root-cert", "Root certificate that signs the server's.",
                                         "FILE"};
    const QCommandLineOption name{"name", "Offer this user in the login, which asks the password.", "NAME"};
    const QCommandLineOption language{"language", "0 simplified Chinese, 1 traditional Chinese.", "0|1"};
    const QCommandLineOption demo{"demo", "Open the demo company; make it first when it is missing "
                                          "(in the data folder unless --db or --server says where)."};
    const QCommandLineOption company{"company", "Name of the company shown as the root of trees.", "NAME"};
    const QCommandLineOption settingsFile{"settings", "Keep the settings in this file.", "FILE"};
    const QCommandLineOption menu{"menu", "Run one menu key after start.", "KEY"};

    void addTo(QCommandLineParser& parser) const {
        parser.setApplicationDescription(QStringLiteral("人事管理系统"));
        parser.addHelpOption();
        parser.addOptions({db, server, database, user, password, tls, tlsRootCert, name, language, demo,
                           company, settingsFile, menu});
    }
};

bool asksForHelp(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const QByteArray a(argv[i]);
        if (a == "-h" || a == "-?" || a == "--help" || a == "--help-all") return true;
    }
    return false;
}
} // namespace

int main(int argc, char** argv) {
    if (asksForHelp(argc, argv)) {
        QCoreApplication core(argc, argv);
        QCommandLineParser parser;
        HostOptions().addTo(parser);
        parser.process(core); // prints the help and ends the program
    }
    HostApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("zqrs"));
    QApplication::setOrganizationName(QStringLiteral("zqrs"));
    zq::installFontSubstitutes();
    QApplication::setFont(zq::uiFont());

    const HostOptions o;
    QCommandLineParser parser;
    o.addTo(parser);
    parser.process(app);
    if (parser.isSet(o.tls) && !zq::ServerTls::parseMode(parser.value(o.tls), zq::defaultServerTls().mode)) {
        std::fprintf(stderr, "zqrs: --tls takes off, require or verify-full\n");
        return 2;
    }
    zq::defaultServerTls().rootCert = parser.value(o.tlsRootCert);

    std::unique_ptr<QSettings> settings =
        parser.isSet(o.settingsFile)
            ? std::make_unique<QSettings>(parser.value(o.settingsFile), QSettings::IniFormat)
            : std::make_unique<QSettings>();
    MainWindow window(*settings);
    zqRs& control = window.control();

    if (parser.isSet(o.db)) {
        control.setSQLData(0);
        control.setUserPath(QFileInfo(parser.value(o.db)).absoluteFilePath());
    } else if (parser.isSet(o.server)) {
        control.setSQLData(1);
        control.setUserPath(parser.value(o.server));
        control.setDefault(parser.value(o.database));
        control.setUserID(parser.value(o.user));
    } else if (parser.isSet(o.demo)) {
        control.setSQLData(0);
        control.setUserPath(dataFolder() + QStringLiteral("/demo.db"));
    }
    if (parser.isSet(o.password)) control.setPassword(parser.value(o.password));
    if (parser.isSet(o.language)) {
        const QString l = parser.value(o.language);
        if (l != QLatin1String("0") && l != QLatin1String("1")) {
            std::fprintf(stderr, "zqrs: --language takes 0 or 1\n");
            return 2;
        }
        control.setLanguage(qint16(l.toInt()));
    }
    // The toolkit's own dialogs (the login's file choice among them) in the user's language.
    zq::InstallToolkitTexts(zq::G().Language);
    // PowerPath keeps the account sets; on this platform the user's data folder stands for the
    // program's folder, which an installed program cannot write to.
    control.setPowerPath(parser.isSet(o.settingsFile) ? QFileInfo(parser.value(o.settingsFile)).absolutePath()
                                                      : dataFolder());
    if (parser.isSet(o.demo)) {
        const zq::Globals& g = zq::G();
        if (!ensureDemo({g.SQLData, g.UserPath, g.Password, g.UserID, g.Default})) return 1;
    }

    // A user name kept from the last run is no login, and neither is --name: only the login window,
    // with the user's password, lets anyone in.
    if (!window.login(parser.value(o.name))) return 0;
    if (parser.isSet(o.company)) control.setCompName(parser.value(o.company));

    window.refresh();
    window.show();
    if (parser.isSet(o.menu)) {
        const QString key = parser.value(o.menu);
        QTimer::singleShot(0, &window, [&window, key] { window.run(key); });
    }
    return app.exec();
}
