#pragma once

#include <QString>
#include <QStyle>

class QPushButton;
class QToolButton;
class QWidget;

namespace zq {

// Controls carry the names the screens give them, so that tests and the host find them.
template <typename W> W* named(W* w, const QString& name) {
    w->setObjectName(name);
    return w;
}
// A member of a control array: "name(index)".
QString ArrayName(const char* name, int index);
// A push button that Enter never presses: Enter moves between the boxes of a screen.
QPushButton* NamedButton(QWidget* parent, const QString& name, const QString& caption);
// A picture button: an icon with the hint as its tool tip.
QToolButton* PictureButton(QWidget* parent, const QString& name, QStyle::StandardPixmap icon,
                           const QString& hint = {});

// Texts keep the line ends of the system ("\r\n"); edit boxes work with "\n".
QString ShownText(QString stored);
QString StoredText(QString shown);

} // namespace zq
