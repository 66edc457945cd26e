#pragma once

#include <QString>

namespace zq {

// Byte length in the double-byte code page of the database columns: a character above the ASCII
// range counts 2.
int ByteLen(const QString& text);
// Cuts text to max bytes without splitting a double-byte character. A non-empty title shows
// "<title>长度超出限定字符(<max>个),自动截取!" with the information icon when it cuts.
QString LimitLength(const QString& text, int max, const QString& title);
// Left of the first tab for side 1, right of it for any other side; without a tab, the whole text.
QString SplitTabText(const QString& text, int side);
// The first lines of a long text for a list cell, with " ..." when something was left out.
QString ClipTextLines(const QString& text, int max);
// "a.f1,a.f2" from "f1,f2".
QString QualifyFieldList(const QString& alias, const QString& list);
// Puts " alias." before each term of a single-table condition (flag -1: terms joined by "and ")
// or list (any other flag: joined by ",").
QString QualifyCondition(const QString& condition, const QString& alias, qint16 flag);
// Cuts one final backslash or slash.
QString StripTrailingSlash(const QString& path);
// True for a character no text box keeps: NUL, which fails a server statement, and the other C0
// control characters, which have no place in a record. A multi-line box keeps tab and line breaks.
bool IsRefusedControl(QChar c, bool multiLine);
// The text without the characters IsRefusedControl refuses.
QString WithoutControlChars(const QString& text, bool multiLine);

} // namespace zq
