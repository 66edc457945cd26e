#pragma once

#include <QFont>

namespace zq {

// The one Chinese font every window uses, named explicitly so no fallback picks a font that lacks
// the characters.
QString uiFontFamily();
QFont uiFont(int pointSize = 9);
// Maps the font names the screens were laid out with ("宋体") onto the installed one.
void installFontSubstitutes();

} // namespace zq
