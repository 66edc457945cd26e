#include "PropertyBag.h"

#include <QSettings>

namespace zq {

QVariant PropertyBag::ReadProperty(const QString& name, const QVariant& defaultValue) const {
    return load(name).value_or(defaultValue);
}

void PropertyBag::WriteProperty(const QString& name, const QVariant& value, const QVariant& defaultValue) {
    // Compared as text: a bag read back from a file gives numbers as text.
    if (defaultValue.isValid() && value.toString() == defaultValue.toString())
        remove(name);
    else
        store(name, value);
}

QMap<QString, QVariant>::const_iterator MemoryPropertyBag::find(const QString& name) const {
    if (m_keys == Qt::CaseSensitive) return m_values.constFind(name);
    for (auto it = m_values.constBegin(); it != m_values.constEnd(); ++it)
        if (it.key().compare(name, Qt::CaseInsensitive) == 0) return it;
    return m_values.constEnd();
}

std::optional<QVariant> MemoryPropertyBag::load(const QString& name) const {
    const auto it = find(name);
    if (it == m_values.constEnd()) return std::nullopt;
    return it.value();
}

void MemoryPropertyBag::store(const QString& name, const QVariant& value) {
    remove(name);
    m_values.insert(name, value);
}

void MemoryPropertyBag::remove(const QString& name) {
    const auto it = find(name);
    // By key: erasing through a const iterator of a map that may detach is undefined.
    if (it != m_values.constEnd()) m_values.remove(it.key());
}

SettingsPropertyBag::SettingsPropertyBag(QSettings& settings, const QString& group)
    : m_settings(settings)
    , m_group(group) {}

QString SettingsPropertyBag::keyOf(const QString& name) const {
    m_settings.beginGroup(m_group);
    const QStringList keys = m_settings.childKeys();
    m_settings.endGroup();
    for (const QString& k : keys)
        if (k.compare(name, Qt::CaseInsensitive) == 0) return m_group + QLatin1Char('/') + k;
    return QString();
}

std::optional<QVariant> SettingsPropertyBag::load(const QString& name) const {
    const QString key = keyOf(name);
    if (key.isEmpty()) return std::nullopt;
    return m_settings.value(key);
}

void SettingsPropertyBag::store(const QString& name, const QVariant& value) {
    remove(name);
    m_settings.setValue(m_group + QLatin1Char('/') + name, value);
}

void SettingsPropertyBag::remove(const QString& name) {
    for (QString key = keyOf(name); !key.isEmpty(); key = keyOf(name))
        m_settings.remove(key);
}

} // namespace zq
