#include "Fonts.h"

namespace zq {

QString uiFontFamily() {
    return QStringLiteral("WenQuanYi Zen Hei");
}

QFont uiFont(int pointSize) {
    QFont f(uiFontFamily(), pointSize);
    f.setStyleHint(QFont::SansSerif);
    return f;
}

void installFontSubstitutes() {
    const QString family = uiFontFamily();
    for (const char* name : {"宋体", "新宋体", "SimSun", "MS Sans Serif"})
        QFont::insertSubstitution(QString::fromUtf8(name), family);
}

} // namespace zq
