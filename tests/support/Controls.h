#pragma once

#include <QObject>
#include <QPixmap>
#include <QPushButton>
#include <QString>
#include <QWidget>

namespace zq::test {

// A control of a window by its object name. A missing one ends the test program naming it, where
// a null pointer would end it without a word.
template <typename T> T* child(const QObject& window, const QString& name) {
    T* c = window.findChild<T*>(name);
    if (!c) qFatal("no control %s", qPrintable(name));
    return c;
}

// Saves a picture of a window as <name>.png into the folder ZQRS_SHOT_DIR names, for a person to
// look at; without that variable it does nothing.
inline void saveShot(QWidget& window, const QString& name) {
    const QString dir = qEnvironmentVariable("ZQRS_SHOT_DIR");
    if (!dir.isEmpty()) window.grab().save(dir + QLatin1Char('/') + name + QStringLiteral(".png"));
}

inline void click(const QObject& window, const QString& name) {
    child<QPushButton>(window, name)->click();
}

} // namespace zq::test
