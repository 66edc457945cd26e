#pragma once

#include <QObject>
#include <QPushButton>
#include <QString>

namespace zq::test {

// A control of a window by its object name. A missing one ends the test program naming it, where
// a null pointer would end it without a word.
template <typename T> T* child(const QObject& window, const QString& name) {
    T* c = window.findChild<T*>(name);
    if (!c) qFatal("no control %s", qPrintable(name));
    return c;
}

inline void click(const QObject& window, const QString& name) {
    child<QPushButton>(window, name)->click();
}

} // namespace zq::test
