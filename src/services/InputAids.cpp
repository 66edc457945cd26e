#include "InputAids.h"

#include "shell/Prompts.h"

namespace zq {

namespace {
int charBytes(QChar c) {
    return c.unicode() > 127 ? 2 : 1;
}

QString leftTrimmed(const QString& s) {
    int i = 0;
    while (i < s.size() && s[i].isSpace())
        ++i;
    return s.mid(i);
}
} // namespace

int ByteLen(const QString& text) {
    int n = 0;
    for (int i = 0; i < text.size(); ++i) {
        // A surrogate pair is one character of the text, and one double-byte character at most.
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) ++i;
        n += charBytes(text[i]);
    }
    return n;
}

QString LimitLength(const QString& text, int max, const QString& title) {
    if (ByteLen(text) <= max) return text;
    int count = 0;
    int i = 0;
    for (; i < text.size(); ++i) {
        int step = 1;
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) step = 2;
        count += charBytes(text[i]);
        if (count > max) break;
        i += step - 1;
    }
    if (!title.isEmpty())
        ShowMsg(title + QStringLiteral("长度超出限定字符(") + QString::number(max) +
                    QStringLiteral("个),自动截取!"),
                64, QString());
    return text.left(i);
}

QString SplitTabText(const QString& text, int side) {
    const int tab = text.indexOf(QLatin1Char('\t'));
    if (tab < 0) return text;
    return side == 1 ? text.left(tab) : text.mid(tab + 1);
}

QString ClipTextLines(const QString& text, int max) {
    QString result;
    QString rest = text;
    bool remains = !rest.isEmpty();
    while (result.size() < max && remains) {
        const int cr = rest.indexOf(QLatin1Char('\r'));
        if (cr < 0) {
            result += rest;
            rest.clear();
            remains = false;
        } else {
            result += rest.left(cr) + QStringLiteral("\r\n");
            rest = rest.mid(cr + 1);
            remains = !rest.isEmpty();
        }
    }
    if (remains) result += QStringLiteral(" ...");
    return result;
}

QString QualifyFieldList(const QString& alias, const QString& list) {
    if (list.isEmpty()) return {};
    QStringList names = list.split(QLatin1Char(','));
    for (QString& n : names)
        n = alias + QLatin1Char('.') + n;
    return names.join(QLatin1Char(','));
}

QString QualifyCondition(const QString& condition, const QString& alias, qint16 flag) {
    if (condition.isEmpty() || alias.isEmpty()) return {};
    // Callers pass the alias with or without its point ("a" or "a."); either gives " a.".
    const QString prefix =
        QLatin1Char(' ') + alias + (alias.endsWith(QLatin1Char('.')) ? QString() : QStringLiteral("."));
    const QString text = condition.toLower();
    const QString sep = quint16(flag) > 65534 ? QStringLiteral("and ") : QStringLiteral(",");
    QString result;
    int pos = 0;
    while (pos < text.size()) {
        const int at = text.indexOf(sep, pos);
        if (at >= 0) {
            result += prefix + leftTrimmed(text.mid(pos, at + sep.size() - pos));
            pos = at + sep.size();
        } else {
            const QString last = leftTrimmed(text.mid(pos));
            result += last.startsWith(QLatin1String("1=")) ? last : prefix + last;
            pos = text.size();
        }
    }
    return result;
}

bool IsRefusedControl(QChar c, bool multiLine) {
    const char16_t u = c.unicode();
    if (u >= 0x20) return false;
    return !multiLine || (u != u'\t' && u != u'\n' && u != u'\r');
}

QString WithoutControlChars(const QString& text, bool multiLine) {
    QString out;
    out.reserve(text.size());
    for (const QChar c : text)
        if (!IsRefusedControl(c, multiLine)) out += c;
    return out;
}

QString StripTrailingSlash(const QString& path) {
    if (path.endsWith(QLatin1Char('\\')) || path.endsWith(QLatin1Char('/')))
        return path.left(path.size() - 1);
    return path;
}

} // namespace zq
