#pragma once

#include <QDate>
#include <QString>
#include <QStringList>
#include <QVector>

class QSqlError;

namespace zq {

// Every difference between the file database (SQLite) and the server database (PostgreSQL)
// lives here. Statements elsewhere are common SQL plus calls into this class.
class Dialect {
public:
    enum class Kind { File, Server };

    explicit Dialect(Kind kind = Kind::File)
        : m_kind(kind) {}
    static Dialect forSqlData(int sqlData) { return Dialect(sqlData == 0 ? Kind::File : Kind::Server); }

    Kind kind() const { return m_kind; }
    bool isServer() const { return m_kind == Kind::Server; }
    QString qtDriver() const { return isServer() ? QStringLiteral("QPSQL") : QStringLiteral("QSQLITE"); }
    // Whether a connection keeps statements with bound values prepared for their next run. The
    // server's driver prepares and releases each in a round trip of its own, three for one
    // statement. The file prepares in the process at no such cost, and a statement kept there
    // could hold its read of the file open.
    bool keepsStatementsPrepared() const { return isServer(); }

    // Delimiter of date literals. Dates are stored as ISO text, so both engines quote them as text.
    QString dateQuote() const { return QStringLiteral("'"); }
    // A date as a literal: 'yyyy-mm-dd'.
    QString dateLiteral(const QDate& date) const;
    // The lower-casing function of dictionary reads.
    QString lowerFunction() const { return isServer() ? QStringLiteral("Lower") : QStringLiteral("lower"); }
    // Column type of the text columns that are added at run time (a leading blank, as spliced).
    QString addedTextColumn() const;
    // Clears the selection of dictionary rows that have no caption.
    QString clearUncaptionedSelection() const;

    // Row limit: "select <columns...>" becomes the first n rows.
    QString selectTop(int n, const QString& selectWithoutKeyword) const;
    // Condition that an expression holds a valid yyyy-mm-dd date.
    QString isDate(const QString& expr) const;
    // Length of a text in characters.
    QString length(const QString& expr) const { return QStringLiteral("length(%1)").arg(expr); }
    // True when an expression is null or the empty text.
    QString isNullOrEmpty(const QString& expr) const {
        return QStringLiteral("coalesce(%1,'')=''").arg(expr);
    }
    // A text column compared as it is stored, for scans of many rows with ISO dates: the server's
    // caseless text type folds case at every comparison, which dates never need.
    QString exactText(const QString& expr) const {
        return isServer() ? QStringLiteral("%1::text").arg(expr) : expr;
    }
    // Ending of a select that locks the rows it reads until the transaction ends; the file database
    // locks the whole file at the first write instead, and a writer that read before another's
    // commit fails then.
    QString forUpdate() const { return isServer() ? QStringLiteral(" for update") : QString(); }
    // A new table from a query ("select ... into").
    QString selectInto(const QString& newTable, const QString& selectStatement) const;
    // Writes that succeed or fail together, as few statements as the engine runs them in: one on
    // the server (each but the last a data-modifying WITH), one round trip instead of one each;
    // the file runs them one by one.
    QStringList writesTogether(const QStringList& writes) const;
    // like ignores ASCII case on both engines (NOCASE / citext), so a pattern needs nothing extra.
    // A condition with its caseless searches ("a.fname like '王%'", "a.ftitle like '%预算%'") in the
    // form the server serves fast: like on the caseless text folds every row it reads, while a pattern
    // that has no case matches the same rows compared as stored, cheaply, and a prefix so through the
    // pattern index of the names. Other patterns, and the file database, keep the condition as it is.
    QString caselessLikes(const QString& condition) const;
    // A statement listing those of the tables named that exist, a name a row.
    QString existingTablesSql(const QStringList& names) const;
    QString like(const QString& expr, const QString& quotedPattern) const;
    // expr starts with a code (code checked already), ASCII case ignored as by like. On the server
    // like on citext finds no index; the lower-cased text does, through the prefix index of the
    // schema.
    QString startsWithCode(const QString& expr, const QString& code) const {
        if (!isServer()) return expr + QStringLiteral(" like '") + code + QStringLiteral("%'");
        return QStringLiteral("lower(") + expr + QStringLiteral("::text) like '") + code.toLower() +
               QStringLiteral("%'");
    }
    // A text (such as a kept copy of a column's value) compared and ordered as the caseless text
    // columns are.
    QString caseless(const QString& expr) const {
        return isServer() ? QStringLiteral("(%1)::citext").arg(expr) : expr + QStringLiteral(" collate nocase");
    }
    // Two caseless text columns that match as the caseless type matches them (the lower-cased texts
    // alike, byte for byte), for a join of many rows: on the server through a lower-cased index of
    // the schema, whose look-ups compare bytes where the caseless type lower-cases both sides anew.
    QString caselessEqual(const QString& a, const QString& b) const {
        if (!isServer()) return a + QLatin1Char('=') + b;
        return QStringLiteral("%1=%2").arg(lowerBytes(a), lowerBytes(b));
    }
    // The expression of the lower-cased indexes: a caseless text column lower-cased, compared bytewise.
    static QString lowerBytes(const QString& column) {
        return QStringLiteral("lower(%1::text) collate \"C\"").arg(column);
    }
    // The order of a caseless text column for rows that are sorted rather than read along an index:
    // the same order (each value lower-cased, then compared in the database's collation), but the
    // server's caseless type lower-cases both sides anew at every comparison, five times the cost.
    QString caselessOrder(const QString& expr) const {
        return isServer() ? QStringLiteral("lower(%1::text)").arg(expr) : expr;
    }
    // The order of a whole table by a caseless column comes from the column's index; a part of it
    // (a level, the codes under a prefix) is sorted.
    QString listOrder(const QString& column, bool wholeTable) const {
        return wholeTable ? column : caselessOrder(column);
    }
    // Where nulls come in an ascending order, and so in the indexes: first on SQLite, last on the
    // server. Orders keep the engine's own placement, so that an index serves them.
    bool nullsFirst() const { return !isServer(); }
    // A condition kept from the index choice, so that a long list in a column's order is walked
    // through that column's index and stops at its first rows. SQLite takes an index for any
    // equality (the state) and then sorts every row; PostgreSQL weighs both by its statistics.
    QString filterAfterOrder(const QString& condition) const {
        return isServer() ? condition : QStringLiteral("+(") + condition + QLatin1Char(')');
    }

    // The error of a statement that a unique constraint refused.
    bool isUniqueViolation(const QSqlError& e) const;
    // Begins a transaction. The file database takes its write lock at the start, waiting its turn
    // behind other writers: a transaction that read first and wrote later would fail at once when
    // another client had written meanwhile, whatever the busy timeout.
    // A read-only session takes no write lock.
    QString beginTransaction(bool readOnly = false) const {
        return isServer() || readOnly ? QStringLiteral("begin") : QStringLiteral("begin immediate");
    }
    // Gathers fresh statistics after a bulk load, outside any transaction. The server also marks
    // the new rows visible to all, which the background worker would do only later: until then each
    // look-up by an index alone also reads the table.
    QString afterBulkLoad() const {
        return isServer() ? QStringLiteral("vacuum analyze") : QStringLiteral("analyze");
    }
    // Makes a session read-only: the engine itself refuses every later write.
    QString readOnlySession() const {
        return isServer() ? QStringLiteral("set session characteristics as transaction read only")
                          : QStringLiteral("pragma query_only=1");
    }
    // A statement that makes the writers of new keys of a table take turns until their transactions
    // end, or "" where the write transaction itself does that (the file database). Without it, a
    // client that lost a key to another would find the other ahead of it again at every try.
    QString lockNewKeys(const QString& table) const {
        if (!isServer()) return {};
        return QStringLiteral("select pg_advisory_xact_lock(hashtext('zq_newkey_%1'))").arg(table.toLower());
    }
    // How long the file database waits for another client's write to end before a statement fails.
    static constexpr int kBusyTimeoutMs = 10000;

    // Column types of the schema.
    QString textType(int size = 0) const;
    QString memoType() const;
    // A time stamp, ISO "yyyy-mm-dd hh:mm:ss": it has no letter case, so the server compares it as
    // stored, which its ranges over a million rows need (a caseless text folds every value it meets).
    QString stampType() const;
    QString intType() const { return QStringLiteral("integer"); }
    QString bigIntType() const { return QStringLiteral("bigint"); }
    QString realType() const {
        return isServer() ? QStringLiteral("double precision") : QStringLiteral("real");
    }
    QString blobType() const { return isServer() ? QStringLiteral("bytea") : QStringLiteral("blob"); }
    QString autoIdType() const;

    // Condition that a column still holds a bound value, null included (one ? marker).
    QString sameValue(const QString& column) const {
        return column + (isServer() ? QStringLiteral(" is not distinct from ?") : QStringLiteral(" is ?"));
    }

    // Hidden locator of a row, for writes through a recordset.
    QString rowLocatorSelect() const;
    QString rowLocatorCondition() const;

    // Statement that tells whether a table exists (one row, one column, non-zero when it does).
    QString tableExistsQuery(const QString& quotedLowerName) const;

    // The word index of full-text search (table zq_findtext, one row a document): its tables, the
    // value a document's tokens are stored as (bound to searchTokensMarker()), and the condition
    // (one ? marker, bound to searchQueryValue()) that finds documents holding every phrase.
    struct SearchPhrase {
        QStringList tokens;  // consecutive tokens
        bool prefix = false; // the last one may be the start of a longer token
    };
    QStringList searchIndexSchema() const;
    QString searchTokensMarker() const;
    QString searchTokensValue(const QStringList& tokens) const;
    QString searchCondition() const;
    QString searchQueryValue(const QVector<SearchPhrase>& phrases) const;

private:
    Kind m_kind;
};

} // namespace zq
