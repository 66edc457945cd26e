#include "NamedWidgets.h"

#include <QPushButton>
#include <QToolButton>

namespace zq {

QString ArrayName(const char* name, int index) {
    return QStringLiteral("%1(%2)").arg(QLatin1String(name)).arg(index);
}

QPushButton* NamedButton(QWidget* parent, const QString& name, const QString& caption) {
    auto* b = named(new QPushButton(caption, parent), name);
    b->setAutoDefault(false);
    return b;
}

QToolButton* PictureButton(QWidget* parent, const QString& name, QStyle::StandardPixmap icon,
                           const QString& hint) {
    auto* b = named(new QToolButton(parent), name);
    b->setIcon(parent->style()->standardIcon(icon));
    b->setToolTip(hint);
    b->setAutoRaise(true);
    return b;
}

QString ShownText(QString stored) {
    return stored.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

QString StoredText(QString shown) {
    return shown.replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
}

} // namespace zq
