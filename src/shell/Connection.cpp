#include "Connection.h"

#include "DbError.h"
#include "HistorySession.h"

#include <algorithm>
#include <QAtomicInt>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>

namespace zq {

namespace {
QAtomicInt connectionSerial;

// libpq's connect options for the protection asked for; the driver splits options at ';'.
QString tlsOptions(const ServerTls& tls) {
    QString o;
    switch (tls.mode) {
    case ServerTls::Mode::Default:
        break;
    case ServerTls::Mode::Off:
        o = QStringLiteral(";sslmode=disable");
        break;
    case ServerTls::Mode::Require:
        o = QStringLiteral(";sslmode=require");
        break;
    case ServerTls::Mode::VerifyFull:
        o = QStringLiteral(";sslmode=verify-full");
        break;
    }
    if (tls.rootCert.isEmpty()) return o;
    if (!QFileInfo(tls.rootCert).isFile())
        throw DbError(QStringLiteral("根证书文件不存在: %1").arg(tls.rootCert));
    if (tls.rootCert.contains(QLatin1Char(';')))
        throw DbError(QStringLiteral("根证书文件的路径中不能有分号: %1").arg(tls.rootCert));
    QString path = QFileInfo(tls.rootCert).absoluteFilePath();
    path.replace(QLatin1Char('\\'), QStringLiteral("\\\\")).replace(QLatin1Char('\''), QStringLiteral("\\'"));
    return o + QStringLiteral(";sslrootcert='") + path + QLatin1Char('\'');
}

QString errorText(const QSqlError& e) {
    QString t = e.databaseText().trimmed();
    if (t.isEmpty()) t = e.text().trimmed();
    return t;
}
} // namespace

bool ServerTls::parseMode(const QString& text, Mode& mode) {
    if (text == QLatin1String("off"))
        mode = Mode::Off;
    else if (text == QLatin1String("require"))
        mode = Mode::Require;
    else if (text == QLatin1String("verify-full"))
        mode = Mode::VerifyFull;
    else
        return false;
    return true;
}

ServerTls& defaultServerTls() {
    static ServerTls tls;
    return tls;
}

Connection::Connection()
    : m_name(QStringLiteral("zq%1").arg(connectionSerial.fetchAndAddRelaxed(1))) {}

Connection::~Connection() {
    close();
    m_db = QSqlDatabase();
    if (QSqlDatabase::contains(m_name)) QSqlDatabase::removeDatabase(m_name);
}

int Connection::state() const {
    return m_db.isValid() && m_db.isOpen() ? 1 : 0;
}

void Connection::open(const ConnectionSettings& s) {
    close();
    m_readOnly = false;
    m_settings = s;
    m_dialect = Dialect::forSqlData(s.sqlData);
    m_db = QSqlDatabase();
    if (QSqlDatabase::contains(m_name)) QSqlDatabase::removeDatabase(m_name);
    m_db = QSqlDatabase::addDatabase(m_dialect.qtDriver(), m_name);
    if (!m_db.isValid()) throw DbError(QStringLiteral("数据库驱动 %1 不可用").arg(m_dialect.qtDriver()));

    if (m_dialect.isServer()) {
        QString host = s.userPath.trimmed();
        // "SQL Server" is what a stand-alone login leaves in UserPath: the local server.
        if (host.compare(QLatin1String("SQL Server"), Qt::CaseInsensitive) == 0) host.clear();
        const int colon = host.lastIndexOf(QLatin1Char(':'));
        if (colon > 0) {
            m_db.setPort(host.mid(colon + 1).toInt());
            host = host.left(colon);
        }
        if (!host.isEmpty()) m_db.setHostName(host);
        m_db.setDatabaseName(s.defaultDb);
        m_db.setUserName(s.userId);
        m_db.setPassword(s.password);
        // Pinned at startup, before the driver learns how to escape: with the setting off, a
        // backslash in a value would end a quoted text early.
        m_db.setConnectOptions(
            QStringLiteral("connect_timeout=5;options='-c standard_conforming_strings=on'") +
            tlsOptions(s.tls));
    } else {
        // Opening a missing file would silently create an empty database.
        if (s.userPath.isEmpty() || !QFileInfo::exists(s.userPath))
            throw DbError(QStringLiteral("数据库文件不存在: %1").arg(s.userPath));
        m_db.setDatabaseName(s.userPath);
        m_db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(Dialect::kBusyTimeoutMs));
    }
    if (!m_db.open()) throw DbError(QStringLiteral("无法打开数据库: %1").arg(errorText(m_db.lastError())));

    QSqlQuery q(m_db);
    if (m_dialect.isServer()) {
        q.exec(QStringLiteral("set client_min_messages=warning"));
        requireLiteralBackslash();
    } else {
        q.exec(QStringLiteral("pragma journal_mode=wal"));
        q.exec(QStringLiteral("pragma synchronous=normal"));
        q.exec(QStringLiteral("pragma cache_size=-65536"));
        q.exec(QStringLiteral("pragma temp_store=memory"));
    }
    // The change history records who changes what through this connection.
    TagHistorySession(*this);
}

void Connection::requireLiteralBackslash() {
    // Both a literal and a bound value must come back as written, or quoting is not safe here.
    const QString probe = QStringLiteral("a\\b");
    QSqlQuery q(m_db);
    const bool literal = q.exec(QStringLiteral("select '") + probe + QStringLiteral("'")) && q.next() &&
                         q.value(0).toString() == probe;
    bool bound = false;
    if (literal && q.prepare(QStringLiteral("select cast(? as text)"))) {
        q.addBindValue(probe);
        bound = q.exec() && q.next() && q.value(0).toString() == probe;
    }
    if (literal && bound) return;
    m_db.close();
    throw DbError(QStringLiteral("数据库服务器不能固定 standard_conforming_strings=on，"
                                 "反斜杠无法安全存取，拒绝连接"));
}

void Connection::forgetPrepared() {
    m_kept.clear();
    ++m_generation;
}

void Connection::close() {
    forgetPrepared();
    if (m_db.isValid() && m_db.isOpen()) {
        if (m_inTransaction) m_db.rollback();
        m_db.close();
    }
    m_inTransaction = false;
}

int Connection::execute(const QString& sql) {
    if (!isOpen()) throw DbError(QStringLiteral("数据库连接未打开"), sql);
    StatementGuard guard(*this);
    const int affected = execute(sql, OnFailure::EndTransaction);
    guard.done();
    return affected;
}

int Connection::execute(const QString& sql, OnFailure) {
    if (!isOpen()) throw DbError(QStringLiteral("数据库连接未打开"), sql);
    QSqlQuery q(m_db);
    if (!q.exec(sql)) throwStatementError(q.lastError(), sql);
    return q.numRowsAffected();
}

QStringList Connection::existingTables(const QStringList& names) {
    StatementGuard guard(*this);
    QStringList found = existingTables(names, OnFailure::EndTransaction);
    guard.done();
    return found;
}

QStringList Connection::existingTables(const QStringList& names, OnFailure) {
    if (names.isEmpty()) return {};
    if (!isOpen()) throw DbError(QStringLiteral("数据库连接未打开"));
    QSqlQuery q(m_db);
    q.setForwardOnly(true);
    const QString sql = m_dialect.existingTablesSql(names);
    if (!q.exec(sql)) throwStatementError(q.lastError(), sql);
    QStringList found;
    while (q.next())
        for (const QString& n : names)
            if (n.compare(q.value(0).toString(), Qt::CaseInsensitive) == 0) found << n;
    return found;
}

int Connection::execute(const QString& sql, const QVariantList& binds) {
    if (!isOpen()) throw DbError(QStringLiteral("数据库连接未打开"), sql);
    StatementGuard guard(*this);
    const int affected = execute(sql, binds, OnFailure::EndTransaction);
    guard.done();
    return affected;
}

int Connection::execute(const QString& sql, const QVariantList& binds, OnFailure) {
    if (!isOpen()) throw DbError(QStringLiteral("数据库连接未打开"), sql);
    Prepared p(*this, sql, binds);
    return p.query().numRowsAffected();
}

Connection::Prepared::Prepared(Connection& c, const QString& sql, const QVariantList& binds, Rows rows)
    : m_c(c)
    , m_sql(sql)
    , m_rows(rows)
    , m_generation(c.m_generation) {
    auto kept = std::find_if(c.m_kept.begin(), c.m_kept.end(),
                             [&](const Kept& k) { return k.rows == rows && k.sql == sql; });
    if (kept != c.m_kept.end()) {
        m_query = std::move(kept->query);
        c.m_kept.erase(kept);
    } else {
        m_query = std::make_unique<QSqlQuery>(c.m_db);
        m_query->setForwardOnly(rows == Rows::Streamed);
        if (!m_query->prepare(sql)) {
            const QSqlError e = m_query->lastError();
            m_query.reset();
            c.throwStatementError(e, sql);
        }
    }
    for (int i = 0; i < binds.size(); ++i)
        m_query->bindValue(i, binds[i]);
    if (!m_query->exec()) {
        // A statement that fails to run stays prepared, for the next try.
        const QSqlError e = m_query->lastError();
        giveBack();
        c.throwStatementError(e, sql);
    }
}

Connection::Prepared::~Prepared() {
    giveBack();
}

void Connection::Prepared::giveBack() {
    if (!m_query) return;
    m_query->finish();
    if (!m_c.m_dialect.keepsStatementsPrepared() || m_generation != m_c.m_generation || !m_c.isOpen()) return;
    m_c.m_kept.push_back({m_sql, m_rows, std::move(m_query)});
    if (m_c.m_kept.size() > kKeptStatements) m_c.m_kept.erase(m_c.m_kept.begin());
}

void Connection::throwStatementError(const QSqlError& e, const QString& sql) const {
    if (m_dialect.isUniqueViolation(e)) throw DuplicateKeyError(errorText(e), sql);
    throw DbError(errorText(e), sql);
}

void RequireOneRow(int affected, const QString& sql) {
    if (affected == 0) throw ConflictError(ConflictError::defaultMessage(), sql);
    if (affected != 1) throw DbError(QStringLiteral("语句改动了 %1 行, 应为 1 行").arg(affected), sql);
}

void Connection::executeOne(const QString& sql, const QVariantList& binds) {
    RequireOneRow(binds.isEmpty() ? execute(sql) : execute(sql, binds), sql);
}

void Connection::executeOne(const QString& sql, const QVariantList& binds, OnFailure f) {
    RequireOneRow(binds.isEmpty() ? execute(sql, f) : execute(sql, binds, f), sql);
}

void Connection::followSchema() {
    if (m_dialect.isServer() || !isOpen()) return;
    QSqlQuery q(m_db);
    q.exec(QStringLiteral("select 1 from sqlite_master where 0"));
}

void Connection::makeReadOnly() {
    execute(m_dialect.readOnlySession());
    m_readOnly = true;
}

void Connection::beginTrans() {
    if (!isOpen()) throw DbError(QStringLiteral("数据库连接未打开"));
    if (m_inTransaction) throw DbError(QStringLiteral("事务已经开始"));
    // The driver's own begin is a deferred one on the file database; the dialect's waits for the
    // write lock first. Commit and rollback are the driver's.
    QSqlQuery q(m_db);
    if (!q.exec(m_dialect.beginTransaction(m_readOnly))) throw DbError(errorText(q.lastError()));
    m_inTransaction = true;
}

void Connection::commitTrans() {
    if (!m_inTransaction) throw DbError(QStringLiteral("没有活动的事务"));
    m_inTransaction = false;
    if (!m_db.commit()) {
        const QString e = errorText(m_db.lastError());
        m_db.rollback();
        throw DbError(e);
    }
}

void Connection::rollbackTrans() {
    if (!m_inTransaction) return;
    m_inTransaction = false;
    m_db.rollback();
}

Connection::StatementGuard::StatementGuard(Connection& c)
    : m_c(c) {
    if (c.m_inTransaction && c.m_dialect.isServer()) {
        QSqlQuery q(c.m_db);
        m_active = q.exec(QStringLiteral("savepoint zq_stmt"));
    }
}

Connection::StatementGuard::~StatementGuard() {
    if (!m_active) return;
    QSqlQuery q(m_c.m_db);
    q.exec(m_ok ? QStringLiteral("release savepoint zq_stmt")
                : QStringLiteral("rollback to savepoint zq_stmt"));
}

Connection& conn() {
    static Connection* c = new Connection; // lives for the process, like the original global
    return *c;
}

qint16 OpenConn(int sqlData, Connection& c, const QString& userPath, const QString& password,
                const QString& userId, const QString& defaultDb) {
    if (sqlData < 0 || sqlData > 255) throw OverflowError();
    if (c.state() == 1) return 0;
    try {
        c.open({sqlData, userPath, password, userId, defaultDb});
    } catch (const DbError&) {
        return -1; // the callers never look; the next statement fails with its own error
    }
    return 1;
}

Transaction::Transaction(Connection& c)
    : m_c(c) {
    m_c.beginTrans();
}

Transaction::~Transaction() {
    if (!m_done) m_c.rollbackTrans();
}

void Transaction::commit() {
    m_done = true;
    m_c.commitTrans();
}

} // namespace zq
