#pragma once

#include <QString>
#include <QVariant>

namespace zq {

// The one way a value enters SQL text: between single quotes. A value that holds a quote or a NUL
// is refused with a DbError, so the statement fails as it always did, nothing is injected and
// nothing is cut short at the NUL.
QString quoted(const QString& value);
// The bare value, checked the same way, for statements that bring their own quotes.
QString checked(const QString& value);
// A whole number as SQL text.
inline QString num(qint64 v) {
    return QString::number(v);
}

// n bind markers for a list of values: "?,?,?".
inline QString placeholders(qsizetype n) {
    return n <= 0 ? QString() : QStringLiteral("?") + QStringLiteral(",?").repeated(n - 1);
}
// " and " a condition that a text column still holds the bound value read earlier, null and empty
// alike: the guard of a save that changes the column.
inline QString stillHolds(const QString& column) {
    return QStringLiteral(" and coalesce(") + column + QStringLiteral(",'')=coalesce(?,'')");
}

// The value conversion of numbers from text: the leading number, 0 when there is none.
double Val(const QString& text);
// A value read as text: null reads as empty.
QString textOf(const QVariant& v);

} // namespace zq
