#include "Recordset.h"

#include "DbError.h"
#include "SqlText.h"

#include <QRegularExpression>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlRecord>

namespace zq {

namespace {
QString errorText(const QSqlError& e) {
    QString t = e.databaseText().trimmed();
    return t.isEmpty() ? e.text().trimmed() : t;
}

QString tableOf(const QString& sql) {
    static const QRegularExpression re(QStringLiteral("\\bfrom\\s+([A-Za-z_][A-Za-z0-9_]*)"),
                                       QRegularExpression::CaseInsensitiveOption);
    const auto m = re.match(sql);
    return m.hasMatch() ? m.captured(1) : QString();
}

const QString kLocator = QStringLiteral("zq_rowloc");
} // namespace

Recordset::Recordset(Connection& c, const QString& sql, Cursor cursor, Lock lock)
    : m_c(c)
    , m_sql(sql)
    , m_cursor(cursor)
    , m_lock(lock)
    , m_table(tableOf(sql)) {
    if (!c.isOpen()) throw DbError(QStringLiteral("数据库连接未打开"), sql);
    if (cursor == Cursor::ForwardOnly && lock == Lock::ReadOnly)
        openStreaming();
    else
        openBuffered();
}

Recordset::~Recordset() = default;

void Recordset::openStreaming() {
    m_query = std::make_unique<QSqlQuery>(m_c.database());
    // The server driver streams forward-only results row by row and then allows no second statement
    // on the connection; look-ups run while a list is open, so the server reads results whole.
    m_query->setForwardOnly(!m_c.dialect().isServer());
    m_c.followSchema();
    Connection::StatementGuard guard(m_c);
    if (!m_query->exec(m_sql)) throw DbError(errorText(m_query->lastError()), m_sql);
    guard.done();
    const QSqlRecord rec = m_query->record();
    for (int i = 0; i < rec.count(); ++i) {
        m_names << rec.fieldName(i);
        m_index.insert(rec.fieldName(i).toLower(), i);
    }
    if (m_c.database().driver()->hasFeature(QSqlDriver::QuerySize) && m_query->size() >= 0)
        m_count = m_query->size();
    m_bof = false;
    fetchStreaming();
    m_bof = m_eof;
}

void Recordset::fetchStreaming() {
    if (m_query && m_query->next()) {
        const int n = m_names.size();
        m_current.resize(n);
        for (int i = 0; i < n; ++i)
            m_current[i] = m_query->value(i);
        m_eof = false;
    } else {
        m_current.clear();
        m_eof = true;
    }
}

void Recordset::openBuffered() {
    m_buffered = true;
    QString sql = m_sql;
    const bool writable = m_lock != Lock::ReadOnly;
    if (writable) {
        static const QRegularExpression selectRe(QStringLiteral("^\\s*select\\s+"),
                                                 QRegularExpression::CaseInsensitiveOption);
        const auto m = selectRe.match(sql);
        if (!m.hasMatch() || m_table.isEmpty()) throw DbError(QStringLiteral("只能通过单表查询写入"), m_sql);
        sql = m.captured(0) + m_c.dialect().rowLocatorSelect() + QLatin1Char(',') + sql.mid(m.capturedEnd());
    }
    QSqlQuery q(m_c.database());
    q.setForwardOnly(true);
    m_c.followSchema();
    Connection::StatementGuard guard(m_c);
    if (!q.exec(sql)) throw DbError(errorText(q.lastError()), m_sql);
    guard.done();
    const QSqlRecord rec = q.record();
    const int first = writable ? 1 : 0;
    for (int i = first; i < rec.count(); ++i) {
        m_names << rec.fieldName(i);
        m_index.insert(rec.fieldName(i).toLower(), i - first);
    }
    const int n = m_names.size();
    while (q.next()) {
        Row r;
        r.values.resize(n);
        for (int i = 0; i < n; ++i)
            r.values[i] = q.value(i + first);
        if (writable) r.locator = q.value(0);
        m_rows.push_back(std::move(r));
    }
    m_pos = 0;
    syncPosition();
}

void Recordset::syncPosition() {
    m_bof = m_pos < 0 || m_rows.isEmpty();
    m_eof = m_pos >= m_rows.size() || m_rows.isEmpty();
}

int Recordset::recordCount() {
    if (m_buffered) {
        int n = 0;
        for (const Row& r : m_rows)
            n += r.deleted ? 0 : 1;
        return n;
    }
    if (!m_count) {
        // The file database cannot tell the size of a streaming result: count it separately.
        QString inner = m_sql.trimmed();
        while (inner.endsWith(QLatin1Char(';')))
            inner.chop(1);
        QSqlQuery q(m_c.database());
        q.setForwardOnly(true);
        Connection::StatementGuard guard(m_c);
        if (!q.exec(QStringLiteral("select count(*) from (%1) zq_count").arg(inner)) || !q.next())
            throw DbError(errorText(q.lastError()), m_sql);
        guard.done();
        m_count = q.value(0).toInt();
    }
    return *m_count;
}

void Recordset::moveNext() {
    if (m_buffered) {
        if (m_eof) throw DbError(QStringLiteral("BOF 或 EOF 中有一个是“真”"));
        do {
            ++m_pos;
        } while (m_pos < m_rows.size() && m_rows[m_pos].deleted);
        syncPosition();
        return;
    }
    if (m_eof) throw DbError(QStringLiteral("BOF 或 EOF 中有一个是“真”"));
    fetchStreaming();
}

void Recordset::moveFirst() {
    if (m_buffered) {
        m_pos = 0;
        while (m_pos < m_rows.size() && m_rows[m_pos].deleted)
            ++m_pos;
        syncPosition();
        return;
    }
    // A streaming set starts again from the top.
    m_query.reset();
    m_names.clear();
    m_index.clear();
    openStreaming();
}

void Recordset::move(int n) {
    if (!m_buffered) throw DbError(QStringLiteral("只进记录集不能移动"));
    m_pos = qBound(-1, m_pos + n, int(m_rows.size()));
    syncPosition();
}

int Recordset::fieldIndex(const QString& name) const {
    return m_index.value(name.toLower(), -1);
}

void Recordset::checkCurrent() const {
    if (m_eof || m_bof) throw DbError(QStringLiteral("BOF 或 EOF 中有一个是“真”，或者当前记录已被删除"));
}

const QVector<QVariant>& Recordset::currentValues() const {
    checkCurrent();
    return m_buffered ? m_rows[m_pos].values : m_current;
}

QVariant Recordset::value(int i) const {
    const auto& v = currentValues();
    if (i < 0 || i >= v.size())
        throw DbError(QStringLiteral("在对应所需名称或序数的集合中，未找到项目: %1").arg(i));
    return v[i];
}

QVariant Recordset::value(const QString& name) const {
    const int i = fieldIndex(name);
    if (i < 0) throw DbError(QStringLiteral("在对应所需名称或序数的集合中，未找到项目: %1").arg(name));
    return value(i);
}

QString Recordset::text(int i) const {
    return textOf(value(i));
}
QString Recordset::text(const QString& name) const {
    return textOf(value(name));
}
double Recordset::val(int i) const {
    return Val(text(i));
}
double Recordset::val(const QString& name) const {
    return Val(text(name));
}

void Recordset::addNew() {
    if (!m_buffered || m_lock == Lock::ReadOnly) throw DbError(QStringLiteral("记录集是只读的"));
    Row r;
    r.values.resize(m_names.size());
    r.changed.fill(false, m_names.size());
    r.isNew = true;
    r.dirty = true;
    m_rows.push_back(std::move(r));
    m_pos = m_rows.size() - 1;
    syncPosition();
}

void Recordset::setValue(const QString& name, const QVariant& v) {
    const int i = fieldIndex(name);
    if (i < 0) throw DbError(QStringLiteral("在对应所需名称或序数的集合中，未找到项目: %1").arg(name));
    setValue(i, v);
}

void Recordset::setValue(int i, const QVariant& v) {
    if (!m_buffered || m_lock == Lock::ReadOnly) throw DbError(QStringLiteral("记录集是只读的"));
    checkCurrent();
    Row& r = m_rows[m_pos];
    if (i < 0 || i >= r.values.size())
        throw DbError(QStringLiteral("在对应所需名称或序数的集合中，未找到项目: %1").arg(i));
    if (r.changed.size() != r.values.size()) r.changed.fill(false, r.values.size());
    if (r.original.isEmpty() && !r.isNew) r.original = r.values;
    r.values[i] = v;
    r.changed[i] = true;
    r.dirty = true;
}

void Recordset::writeRow(Row& r) {
    if (!r.dirty && !r.deleted) return;
    QStringList cols;
    QVector<QVariant> binds;
    for (int i = 0; i < r.changed.size(); ++i) {
        if (r.changed[i]) {
            cols << m_names[i];
            binds << r.values[i];
        }
    }
    QString sql;
    if (r.deleted) {
        if (r.isNew) return;
        sql = QStringLiteral("delete from %1 where %2").arg(m_table, m_c.dialect().rowLocatorCondition());
        binds = {r.locator};
    } else if (r.isNew) {
        if (cols.isEmpty()) return;
        sql = QStringLiteral("insert into %1 (%2) values (%3)")
                  .arg(m_table, cols.join(QLatin1Char(',')),
                       placeholders(cols.size()));
        // The new row's locator, so that a later write through this recordset finds it.
        if (m_c.dialect().isServer()) sql += QStringLiteral(" returning ctid::text");
    } else {
        if (cols.isEmpty()) return;
        // Another client's change to the same columns since the read refuses this write; changes
        // to other columns stay.
        QString guard = m_c.dialect().rowLocatorCondition();
        binds << r.locator;
        for (int i = 0; i < r.changed.size(); ++i) {
            if (!r.changed[i]) continue;
            guard += QStringLiteral(" and ") + m_c.dialect().sameValue(m_names[i]);
            binds << r.original.value(i);
        }
        for (QString& c : cols)
            c += QStringLiteral("=?");
        sql = QStringLiteral("update ") + m_table + QStringLiteral(" set ") + cols.join(QLatin1Char(',')) +
              QStringLiteral(" where ") + guard;
        // A row's locator on the server moves with every write.
        if (m_c.dialect().isServer()) sql += QStringLiteral(" returning ctid::text");
    }
    Connection::StatementGuard guard(m_c);
    Connection::Prepared p(m_c, sql, binds);
    QSqlQuery& q = p.query();
    // The server's locator moves with every write: a row another client wrote meanwhile is not
    // found by it, and neither is one whose changed columns no longer hold what was read.
    const bool returning = !r.deleted && m_c.dialect().isServer();
    RequireOneRow(returning ? (q.next() ? 1 : 0) : q.numRowsAffected(), sql);
    guard.done();
    if (returning)
        r.locator = q.value(0);
    else if (r.isNew)
        r.locator = q.lastInsertId();
    r.dirty = false;
    r.isNew = false;
    r.changed.fill(false, r.values.size());
    r.original.clear();
}

void Recordset::update() {
    if (!m_buffered || m_lock == Lock::ReadOnly) throw DbError(QStringLiteral("记录集是只读的"));
    checkCurrent();
    if (m_lock != Lock::BatchOptimistic) writeRow(m_rows[m_pos]);
}

void Recordset::updateBatch() {
    if (!m_buffered || m_lock == Lock::ReadOnly) throw DbError(QStringLiteral("记录集是只读的"));
    for (Row& r : m_rows)
        writeRow(r);
}

void Recordset::deleteRow() {
    if (!m_buffered || m_lock == Lock::ReadOnly) throw DbError(QStringLiteral("记录集是只读的"));
    checkCurrent();
    Row& r = m_rows[m_pos];
    r.deleted = true;
    if (m_lock != Lock::BatchOptimistic) writeRow(r);
}

void Recordset::close() {
    m_query.reset();
    m_rows.clear();
    m_current.clear();
    m_eof = m_bof = true;
}

RowSnapshot Snapshot(const Recordset& rs) {
    RowSnapshot row;
    if (rs.eof() || rs.bof()) return row;
    for (int i = 0; i < rs.fieldCount(); ++i)
        row.insert(rs.fieldName(i).toLower(), rs.text(i));
    return row;
}

void RequireUnchanged(const RowSnapshot& loaded, const Recordset& now) {
    if (loaded.isEmpty()) return;
    if (now.eof() || now.bof()) throw ConflictError();
    for (int i = 0; i < now.fieldCount(); ++i) {
        const auto it = loaded.constFind(now.fieldName(i).toLower());
        if (it != loaded.cend() && *it != now.text(i)) throw ConflictError();
    }
}

QVector<QStringList> ReadRows(const QString& sql) {
    QVector<QStringList> rows;
    Recordset rs(conn(), sql);
    const int fields = rs.fieldCount();
    for (; !rs.eof(); rs.moveNext()) {
        QStringList row;
        row.reserve(fields);
        for (int j = 0; j < fields; ++j)
            row << rs.text(j);
        rows << std::move(row);
    }
    return rows;
}

namespace {
void visit(const QString& sql, const QVariantList& binds, Connection::Prepared::Rows rows,
           const std::function<void(const QSqlQuery&)>& row) {
    Connection& c = conn();
    if (!c.isOpen()) throw DbError(QStringLiteral("数据库连接未打开"), sql);
    Connection::StatementGuard guard(c);
    Connection::Prepared p(c, sql, binds, rows);
    while (p.query().next())
        row(p.query());
    guard.done();
}
} // namespace

void VisitRows(const QString& sql, const QVariantList& binds,
               const std::function<void(const QSqlQuery&)>& row) {
    visit(sql, binds, Connection::Prepared::Rows::Streamed, row);
}

QVector<QStringList> ReadRows(const QString& sql, const QVariantList& binds) {
    // All rows are kept anyway: fetched whole, in one answer from the server rather than a row each.
    QVector<QStringList> rows;
    visit(sql, binds, Connection::Prepared::Rows::Whole, [&rows](const QSqlQuery& q) {
        const int fields = q.record().count();
        QStringList row;
        row.reserve(fields);
        for (int j = 0; j < fields; ++j)
            row << q.value(j).toString();
        rows << std::move(row);
    });
    return rows;
}

} // namespace zq
