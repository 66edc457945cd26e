#include "MainWindow.h"

#include "shell/Globals.h"
#include "shell/ui/Fonts.h"
#include "shell/ui/zqRs.h"

#include <memory>
#include <QApplication>
#include <QCommandLineParser>
#include <QSettings>
#include <QTimer>

namespace {
// Until the login screen exists the host works as the supervisor.
const QString kSupervisor = QStringLiteral("系统管理员");
} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("zqrs"));
    QApplication::setOrganizationName(QStringLiteral("zqrs"));
    zq::installFontSubstitutes();
    QApplication::setFont(zq::uiFont());

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("人事管理系统"));
    parser.addHelpOption();
    const QCommandLineOption db("db", "SQLite database file.", "FILE");
    const QCommandLineOption server("server", "PostgreSQL server (host, host:port or socket directory).",
                                    "HOST[:PORT]");
    const QCommandLineOption database("database", "Database on the server.", "NAME");
    const QCommandLineOption user("user", "Login on the server.", "U");
    const QCommandLineOption password("password", "Password of the login or the file.", "P");
    const QCommandLineOption name("name", "Name of the person working (default: the supervisor).", "NAME");
    const QCommandLineOption company("company", "Name of the company shown as the root of trees.", "NAME");
    const QCommandLineOption settingsFile("settings", "Keep the settings in this file.", "FILE");
    const QCommandLineOption menu("menu", "Run one menu key after start.", "KEY");
    parser.addOptions({db, server, database, user, password, name, company, settingsFile, menu});
    parser.process(app);

    std::unique_ptr<QSettings> settings =
        parser.isSet(settingsFile)
            ? std::make_unique<QSettings>(parser.value(settingsFile), QSettings::IniFormat)
            : std::make_unique<QSettings>();
    MainWindow window(*settings);
    zqRs& control = window.control();

    if (parser.isSet(db)) {
        control.setSQLData(0);
        control.setUserPath(parser.value(db));
    } else if (parser.isSet(server)) {
        control.setSQLData(1);
        control.setUserPath(parser.value(server));
        control.setDefault(parser.value(database));
        control.setUserID(parser.value(user));
    }
    if (parser.isSet(password)) control.setPassword(parser.value(password));
    control.setPowerPath(QCoreApplication::applicationDirPath());
    control.setCompName(parser.value(company));
    control.setZgName(kSupervisor);
    control.setUserName(parser.isSet(name) ? parser.value(name) : kSupervisor);

    window.updateStatus();
    window.show();
    if (parser.isSet(menu)) {
        const QString key = parser.value(menu);
        QTimer::singleShot(0, &window, [&window, key] { window.run(key); });
    }
    return app.exec();
}
