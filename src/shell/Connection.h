#pragma once

#include "Dialect.h"

#include <memory>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QVariantList>
#include <vector>

namespace zq {

// How a connection to the server is protected on the network. Default leaves it to the client
// library (encrypted when the server offers it, nothing checked); verify-full checks that the
// server's certificate is signed by the root certificate and names the host connected to. A socket
// directory is never encrypted; a file database ignores it.
struct ServerTls {
    enum class Mode { Default, Off, Require, VerifyFull };
    Mode mode = Mode::Default;
    QString rootCert; // file of the root certificate(s); empty: the client library's own

    // "off", "require" or "verify-full"; false for anything else.
    static bool parseMode(const QString& text, Mode& mode);
};

// The protection of connections whose settings do not say otherwise: what the program's command
// line asked for.
ServerTls& defaultServerTls();

struct ConnectionSettings {
    int sqlData = 0;
    QString userPath; // SQLite file, or "host[:port]" of the server
    QString password;
    QString userId;
    QString defaultDb; // the server's database
    ServerTls tls = defaultServerTls();
};

// The one connection of the system (and any private one a component opens from the same settings).
class Connection {
public:
    Connection();
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // 1 open, 0 closed.
    int state() const;
    bool isOpen() const { return state() == 1; }
    // Opens on the database the settings name; throws DbError when it cannot.
    void open(const ConnectionSettings& settings);
    void close();

    const Dialect& dialect() const { return m_dialect; }
    const ConnectionSettings& settings() const { return m_settings; }
    QSqlDatabase& database() { return m_db; }

    // Runs a statement that returns no rows; gives the rows affected. Throws DbError.
    int execute(const QString& sql);
    // The same with values bound to its ? markers.
    int execute(const QString& sql, const QVariantList& binds);
    // A statement whose failure ends the caller's transaction (it throws, and the caller rolls
    // back): the server needs no savepoint around it, and saves two round trips.
    enum class OnFailure { EndTransaction };
    int execute(const QString& sql, OnFailure);
    int execute(const QString& sql, const QVariantList& binds, OnFailure);
    // Those of the tables named that this database holds, in one statement.
    QStringList existingTables(const QStringList& names);
    QStringList existingTables(const QStringList& names, OnFailure);
    // An update or delete of one row that was read earlier: it must change exactly that row. None
    // changed means another client changed or deleted it meanwhile (ConflictError); more than one
    // means the statement was not the one meant (DbError). Either way the caller rolls back.
    void executeOne(const QString& sql, const QVariantList& binds = {});
    void executeOne(const QString& sql, const QVariantList& binds, OnFailure);

    // Throws the error of a failed statement: DuplicateKeyError where a unique constraint refused
    // it, DbError otherwise.
    [[noreturn]] void throwStatementError(const QSqlError& e, const QString& sql) const;

    // The file database compiles a statement against the table layout it last read; a table
    // another client altered since then changes shape under the driver, which then reads past its
    // row. A read of the schema table first makes it reread a changed layout. Nothing to do on the
    // server.
    void followSchema();

    // Every later statement read-only, refused by the engine if it writes (until the next open).
    void makeReadOnly();

    void beginTrans();
    void commitTrans();
    void rollbackTrans();
    bool inTransaction() const { return m_inTransaction; }

    // On the server a failed statement spoils the whole transaction; the file database and the
    // databases the system was made for only fail the statement. A savepoint per statement inside a
    // transaction keeps that behaviour on both.
    class StatementGuard {
    public:
        explicit StatementGuard(Connection& c);
        ~StatementGuard();
        void done() { m_ok = true; }

    private:
        Connection& m_c;
        bool m_active = false;
        bool m_ok = false;
    };

    // A statement with ? markers, prepared and run with its values. Where the dialect keeps
    // statements prepared, the connection keeps the last few it ran, so that one run again is a
    // single round trip. One in hand is out of the keep, so that the same text is never run anew
    // under a reader of its rows. Run it inside a StatementGuard: a failed prepare spoils a server
    // transaction too.
    class Prepared {
    public:
        // Streamed rows are read forward once, and the server then takes no other statement until
        // the last is read; whole ones are all fetched at once.
        enum class Rows { Whole, Streamed };
        // Throws DuplicateKeyError or DbError, as execute does, when the statement cannot be
        // prepared or run.
        Prepared(Connection& c, const QString& sql, const QVariantList& binds, Rows rows = Rows::Whole);
        ~Prepared();
        Prepared(const Prepared&) = delete;
        Prepared& operator=(const Prepared&) = delete;
        QSqlQuery& query() { return *m_query; }

    private:
        void giveBack();

        Connection& m_c;
        QString m_sql;
        Rows m_rows;
        std::unique_ptr<QSqlQuery> m_query;
        int m_generation;
    };

private:
    void requireLiteralBackslash();
    void forgetPrepared();

    struct Kept {
        QString sql;
        Prepared::Rows rows;
        std::unique_ptr<QSqlQuery> query;
    };
    static constexpr size_t kKeptStatements = 32;
    std::vector<Kept> m_kept; // least recently used first
    int m_generation = 0;     // a statement prepared before the last close goes with its query

    QString m_name;
    QSqlDatabase m_db;
    Dialect m_dialect;
    ConnectionSettings m_settings;
    bool m_inTransaction = false;
    bool m_readOnly = false;
};

// A write meant for one row: none changed is a ConflictError, more than one a DbError.
void RequireOneRow(int affected, const QString& sql);

// The global connection, created on first touch.
Connection& conn();

// Opens conn with the six values unless it is open already; 0 when it was open, 1 when opened now,
// -1 when opening failed. A SQLData outside 0..255 overflows, as the byte conversion does.
qint16 OpenConn(int sqlData, Connection& conn, const QString& userPath, const QString& password,
                const QString& userId, const QString& defaultDb);

// Scoped transaction: rolls back unless committed.
class Transaction {
public:
    explicit Transaction(Connection& c);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit();

private:
    Connection& m_c;
    bool m_done = false;
};

} // namespace zq
