// zqrs-admin: makes company databases (empty, or filled with a demo company) and prints from them.

#include "BackupCommand.h"
#include "DemoAdmin.h"
#include "HistoryCommand.h"
#include "PrintCommand.h"

#include <QApplication>
#include <QCoreApplication>

int main(int argc, char** argv) {
    if (argc > 1 && QByteArray(argv[1]) == "print") {
        // Printing draws with the toolkit's fonts but never opens a window.
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
        QApplication app(argc, argv);
        QTextStream out(stdout), err(stderr);
        return zq::admin::runPrint(app.arguments(), out, err);
    }
    QCoreApplication app(argc, argv);
    QTextStream out(stdout), err(stderr);
    if (argc > 1 && QByteArray(argv[1]) == "export") return zq::admin::runExport(app.arguments(), out, err);
    if (argc > 1 && QByteArray(argv[1]) == "history") return zq::admin::runHistory(app.arguments(), out, err);
    if (argc > 1 && QByteArray(argv[1]) == "import") return zq::admin::runImport(app.arguments(), out, err);
    if (argc > 1 && (QByteArray(argv[1]) == "backup" || QByteArray(argv[1]) == "restore" ||
                     QByteArray(argv[1]) == "copy"))
        return zq::admin::runBackupCommand(app.arguments(), out, err);
    return zq::admin::run(app.arguments(), out, err);
}
