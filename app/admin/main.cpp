// zqrs-admin: makes company databases (empty, or filled with a demo company).

#include "DemoAdmin.h"

#include <QCoreApplication>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout), err(stderr);
    return zq::admin::run(app.arguments(), out, err);
}
