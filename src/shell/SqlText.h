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

// The value conversion of numbers from text: the leading number, 0 when there is none.
double Val(const QString& text);
// A value read as text: null reads as empty.
QString textOf(const QVariant& v);

} // namespace zq
