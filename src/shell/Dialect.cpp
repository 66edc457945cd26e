#include "Dialect.h"

#include "SqlText.h"

#include <QRegularExpression>

#include <QSqlError>

#include <QHash>

namespace zq {

QString Dialect::dateLiteral(const QDate& date) const {
    return dateQuote() + date.toString(QStringLiteral("yyyy-MM-dd")) + dateQuote();
}

QString Dialect::addedTextColumn() const {
    return isServer() ? QStringLiteral(" citext") : QStringLiteral(" varchar(100) collate nocase");
}

QString Dialect::clearUncaptionedSelection() const {
    if (isServer())
        return QStringLiteral(
            "update RptListDetail set FieldSelected=0 where FieldName_0='' or (FieldName_0 Is Null)");
    return QStringLiteral("update RptListDetail set FieldSelected=0 where ifnull(FieldName_0,'')=''");
}

QString Dialect::selectTop(int n, const QString& selectWithoutKeyword) const {
    // Both engines limit at the end; an order by inside stays where it was written. Joined, not
    // substituted: the statement may hold "%1" or "%2" in its quoted values.
    return QStringLiteral("select ") + selectWithoutKeyword + QStringLiteral(" limit ") + QString::number(n);
}

QString Dialect::isDate(const QString& expr) const {
    if (isServer())
        return QStringLiteral("(%1 ~ '^[0-9]{4}-[0-9]{2}-[0-9]{2}$' and "
                              "to_char(to_date(%1,'YYYY-MM-DD'),'YYYY-MM-DD')=%1::text)")
            .arg(expr);
    return QStringLiteral("(%1 glob '[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]' and date(%1)=%1)").arg(expr);
}

QString Dialect::selectInto(const QString& newTable, const QString& selectStatement) const {
    return QStringLiteral("create table %1 as %2").arg(newTable, selectStatement);
}

QStringList Dialect::writesTogether(const QStringList& writes) const {
    if (!isServer() || writes.size() < 2) return writes;
    QStringList parts;
    for (qsizetype i = 0; i + 1 < writes.size(); ++i)
        parts << QStringLiteral("zq_w%1 as (%2)").arg(i).arg(writes[i]);
    return {QStringLiteral("with ") + parts.join(QLatin1Char(',')) + QLatin1Char(' ') + writes.last()};
}

QString Dialect::like(const QString& expr, const QString& quotedPattern) const {
    return QStringLiteral("%1 like %2").arg(expr, quotedPattern);
}

namespace {

// A pattern whose every character other than the wildcards has no case (ideographs and the like,
// and digits), with at least one such character: "王%", "%预算评审%".
bool caselessPattern(const QString& pattern) {
    bool literal = false;
    for (const uint c : pattern.toUcs4()) {
        if (c == '%' || c == '_') continue;
        const QChar::Category k = QChar::category(char32_t(c));
        if (k != QChar::Letter_Other && k != QChar::Number_DecimalDigit) return false;
        literal = true;
    }
    return literal;
}

} // namespace

QString Dialect::caselessLikes(const QString& condition) const {
    if (!isServer()) return condition;
    // Texts in quotes alternate with the rest; a doubled quote is an empty stretch of the rest.
    const QStringList parts = condition.split(QLatin1Char('\''));
    static const QRegularExpression likeBefore(QStringLiteral("([A-Za-z_][A-Za-z0-9_.]*)(\\s+like\\s+)$"),
                                               QRegularExpression::CaseInsensitiveOption);
    QString out;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        QString part = parts.at(i);
        if (i % 2 == 0 && i + 1 < parts.size() && caselessPattern(parts.at(i + 1))) {
            const QRegularExpressionMatch m = likeBefore.match(part);
            // "x not like": the word before like is then no column; "x::text like" is done.
            if (m.hasMatch() && m.captured(1).compare(QLatin1String("not"), Qt::CaseInsensitive) != 0 &&
                !part.left(m.capturedStart(1)).endsWith(QLatin1Char(':')))
                part = part.left(m.capturedStart(1)) + m.captured(1) + QStringLiteral("::text") + m.captured(2);
        }
        if (i > 0) out += QLatin1Char('\'');
        out += part;
    }
    return out;
}

QString Dialect::textType(int size) const {
    if (isServer()) return QStringLiteral("citext");
    return size > 0 ? QStringLiteral("varchar(%1) collate nocase").arg(size)
                    : QStringLiteral("text collate nocase");
}

QString Dialect::existingTablesSql(const QStringList& names) const {
    QStringList quotedNames;
    for (const QString& n : names)
        quotedNames << quoted(n.toLower());
    if (isServer())
        return QStringLiteral("select t from (values (%1)) v(t) where to_regclass(t) is not null")
            .arg(quotedNames.join(QStringLiteral("),(")));
    return QStringLiteral("select name from sqlite_master where type='table' and lower(name) in (%1)")
        .arg(quotedNames.join(QLatin1Char(',')));
}

QString Dialect::stampType() const {
    return isServer() ? QStringLiteral("text") : textType(19);
}

QString Dialect::memoType() const {
    return isServer() ? QStringLiteral("citext") : QStringLiteral("text collate nocase");
}

QString Dialect::autoIdType() const {
    return isServer() ? QStringLiteral("serial primary key")
                      : QStringLiteral("integer primary key autoincrement");
}

bool Dialect::isUniqueViolation(const QSqlError& e) const {
    if (isServer()) return e.nativeErrorCode() == QLatin1String("23505");
    // The primary code (19, a constraint) or the extended ones of a unique index and a primary key.
    const QString code = e.nativeErrorCode();
    if (code == QLatin1String("2067") || code == QLatin1String("1555")) return true;
    return code == QLatin1String("19") && e.databaseText().contains(QLatin1String("UNIQUE"));
}

QString Dialect::rowLocatorSelect() const {
    return isServer() ? QStringLiteral("ctid::text as zq_rowloc") : QStringLiteral("rowid as zq_rowloc");
}

QString Dialect::rowLocatorCondition() const {
    return isServer() ? QStringLiteral("ctid=?::tid") : QStringLiteral("rowid=?");
}

QString Dialect::tableExistsQuery(const QString& quotedLowerName) const {
    if (isServer())
        return QStringLiteral("select count(*) from information_schema.tables where "
                              "table_schema=current_schema() and lower(table_name)=%1")
            .arg(quotedLowerName);
    return QStringLiteral("select count(*) from sqlite_master where type='table' and lower(name)=%1")
        .arg(quotedLowerName);
}

QStringList Dialect::searchIndexSchema() const {
    if (isServer())
        return {QStringLiteral(
                    "create table zq_findtext (id serial primary key, ftable text not null, fcode "
                    "text not null, fname text, ftext text, ftokens tsvector, unique (ftable, fcode))"),
                QStringLiteral("create index ix_zq_findtext_tokens on zq_findtext using gin (ftokens)")};
    // The words live in an FTS5 index over the rows of zq_findtext, kept in step by triggers.
    return {
        QStringLiteral("create table zq_findtext (id integer primary key autoincrement, ftable text not "
                       "null, fcode text not null, fname text, ftext text, ftokens text, unique (ftable, "
                       "fcode))"),
        QStringLiteral("create virtual table zq_findidx using fts5(ftokens, content='zq_findtext', "
                       "content_rowid='id', tokenize='unicode61')"),
        QStringLiteral("create trigger zq_findtext_ai after insert on zq_findtext begin insert into "
                       "zq_findidx(rowid, ftokens) values (new.id, new.ftokens); end"),
        QStringLiteral("create trigger zq_findtext_ad after delete on zq_findtext begin insert into "
                       "zq_findidx(zq_findidx, rowid, ftokens) values ('delete', old.id, old.ftokens); end"),
        QStringLiteral("create trigger zq_findtext_au after update on zq_findtext begin insert into "
                       "zq_findidx(zq_findidx, rowid, ftokens) values ('delete', old.id, old.ftokens); "
                       "insert into zq_findidx(rowid, ftokens) values (new.id, new.ftokens); end")};
}

QString Dialect::searchTokensMarker() const {
    return isServer() ? QStringLiteral("cast(? as tsvector)") : QStringLiteral("?");
}

QString Dialect::searchTokensValue(const QStringList& tokens) const {
    if (!isServer()) return tokens.join(QLatin1Char(' '));
    // A tsvector literal with positions, so that phrases match; the server keeps positions up to
    // 16383 and 256 of them a word. Tokens are letters and digits only, so need no escaping.
    constexpr int kLastPosition = 16383;
    constexpr int kPositionsPerWord = 255;
    QHash<QString, QStringList> positions;
    QStringList order;
    for (int i = 0; i < tokens.size() && i < kLastPosition; ++i) {
        QStringList& p = positions[tokens[i]];
        if (p.isEmpty()) order << tokens[i];
        if (p.size() < kPositionsPerWord) p << QString::number(i + 1);
    }
    QStringList parts;
    parts.reserve(order.size());
    for (const QString& t : order)
        parts << QLatin1Char('\'') + t + QStringLiteral("':") + positions[t].join(QLatin1Char(','));
    return parts.join(QLatin1Char(' '));
}

QString Dialect::searchCondition() const {
    return isServer() ? QStringLiteral("ftokens @@ cast(? as tsquery)")
                      : QStringLiteral("id in (select rowid from zq_findidx where zq_findidx match ?)");
}

QString Dialect::searchQueryValue(const QVector<SearchPhrase>& phrases) const {
    QStringList parts;
    for (const SearchPhrase& p : phrases) {
        if (p.tokens.isEmpty()) continue;
        if (isServer()) {
            QStringList words;
            for (const QString& t : p.tokens)
                words << QLatin1Char('\'') + t + QLatin1Char('\'');
            if (p.prefix) words.last() += QStringLiteral(":*");
            parts << QLatin1Char('(') + words.join(QStringLiteral(" <-> ")) + QLatin1Char(')');
        } else {
            parts << QLatin1Char('"') + p.tokens.join(QLatin1Char(' ')) + QLatin1Char('"') +
                         (p.prefix ? QStringLiteral("*") : QString());
        }
    }
    return parts.join(isServer() ? QStringLiteral(" & ") : QStringLiteral(" AND "));
}

} // namespace zq
