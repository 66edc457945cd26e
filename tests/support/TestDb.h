#pragma once

#include "shell/Connection.h"

#include <QString>
#include <QVariantList>

namespace zq::test {

// Which database the test program runs on, from ZQRS_TEST_BACKEND (sqlite or pg).
bool onServer();

// A fresh database with the schema and its seed rows, made by the schema code: a new SQLite file,
// or a new database on the server that ./test.sh started. The global connection is opened on it
// and the control's connection properties point at it. Each call gives a new one.
ConnectionSettings freshDatabase();

// Settings of the server started by ./test.sh, without a database; sqlData is 1.
ConnectionSettings serverSettings();

// Runs a statement on the global connection; the second form with bound values for its "?"s, so that
// values may hold anything, quotes and pictures included.
void exec(const QString& sql);
void exec(const QString& sql, const QVariantList& values);
// The first field of the first row of a query, or "" when there is no row.
QString one(const QString& sql);

// The signed-in user is "admin", the supervisor, with every right, so that no screen refuses for
// rights; no person is in hand.
void actAsSupervisor();

// Exit code that tells CTest the program was skipped.
constexpr int kSkipped = 77;

// Runs a Qt Test object on the backend of the environment: skipped (77) when the server database
// is asked for but none was started, failed when one was started but cannot be reached.
int runDbTest(QObject* test, int argc, char** argv);

} // namespace zq::test

#define ZQ_DB_TEST_MAIN(TestObject)                                                                          \
    int main(int argc, char** argv) {                                                                        \
        QApplication app(argc, argv);                                                                        \
        TestObject tc;                                                                                       \
        return zq::test::runDbTest(&tc, argc, argv);                                                         \
    }
