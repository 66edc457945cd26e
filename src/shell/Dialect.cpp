#include "Dialect.h"

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

QString Dialect::like(const QString& expr, const QString& quotedPattern) const {
    return QStringLiteral("%1 like %2").arg(expr, quotedPattern);
}

QString Dialect::textType(int size) const {
    if (isServer()) return QStringLiteral("citext");
    return size > 0 ? QStringLiteral("varchar(%1) collate nocase").arg(size)
                    : QStringLiteral("text collate nocase");
}

QString Dialect::memoType() const {
    return isServer() ? QStringLiteral("citext") : QStringLiteral("text collate nocase");
}

QString Dialect::autoIdType() const {
    return isServer() ? QStringLiteral("serial primary key")
                      : QStringLiteral("integer primary key autoincrement");
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

} // namespace zq
