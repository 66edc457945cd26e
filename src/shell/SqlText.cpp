#include "SqlText.h"

#include "DbError.h"

#include <QByteArray>
#include <QDate>
#include <QDateTime>

namespace zq {

QString checked(const QString& value) {
    if (value.contains(QLatin1Char('\'')))
        throw DbError(QStringLiteral("值中含有单引号('), 语句不能执行: %1").arg(value));
    // The server refuses a NUL in text, and other layers may cut the statement there.
    if (value.contains(QChar(u'\0'))) {
        QString shown = value;
        shown.replace(QChar(u'\0'), QStringLiteral("\\0"));
        throw DbError(QStringLiteral("值中含有空字符(NUL), 语句不能执行: %1").arg(shown));
    }
    return value;
}

QString quoted(const QString& value) {
    return QLatin1Char('\'') + checked(value) + QLatin1Char('\'');
}

double Val(const QString& text) {
    int i = 0;
    const int n = text.size();
    auto skipBlanks = [&] {
        while (i < n && (text[i] == QLatin1Char(' ') || text[i] == QLatin1Char('\t')))
            ++i;
    };
    skipBlanks();
    QByteArray s;
    if (i < n && (text[i] == QLatin1Char('-') || text[i] == QLatin1Char('+')))
        s.append(char(text[i++].unicode()));
    bool digits = false, point = false;
    for (; i < n; ++i) {
        const QChar c = text[i];
        if (c.isDigit() && c.unicode() < 128) {
            s.append(char(c.unicode()));
            digits = true;
        } else if (c == QLatin1Char('.') && !point) {
            s.append('.');
            point = true;
        } else if (c == QLatin1Char(' ')) {
            continue; // the old conversion read "1 2" as 12
        } else {
            break;
        }
    }
    if (!digits) return 0;
    // Exponent: e or d, optional sign, digits.
    if (i < n && (text[i].toLower() == QLatin1Char('e') || text[i].toLower() == QLatin1Char('d'))) {
        int j = i + 1;
        QByteArray e("e");
        if (j < n && (text[j] == QLatin1Char('-') || text[j] == QLatin1Char('+')))
            e.append(char(text[j++].unicode()));
        int start = j;
        while (j < n && text[j].isDigit() && text[j].unicode() < 128)
            e.append(char(text[j++].unicode()));
        if (j > start) s.append(e);
    }
    bool ok = false;
    const double v = s.toDouble(&ok);
    return ok ? v : 0;
}

QString textOf(const QVariant& v) {
    if (v.isNull() || !v.isValid()) return {};
    switch (v.typeId()) {
    case QMetaType::QByteArray:
        return QString::fromUtf8(v.toByteArray());
    case QMetaType::QDate:
        return v.toDate().toString(QStringLiteral("yyyy-MM-dd"));
    case QMetaType::QDateTime:
        return v.toDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    case QMetaType::Bool:
        return v.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    default:
        return v.toString();
    }
}

} // namespace zq
