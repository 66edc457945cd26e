#pragma once

#include <optional>
#include <QMap>
#include <QString>
#include <QVariant>

class QSettings;

namespace zq {

// Where the host keeps the control's properties between runs. Reads give the default when the key
// is missing; a write of a value equal to its default stores nothing (and drops an older value),
// so a saved bag holds only what differs from the defaults.
class PropertyBag {
public:
    virtual ~PropertyBag() = default;

    QVariant ReadProperty(const QString& name, const QVariant& defaultValue = {}) const;
    void WriteProperty(const QString& name, const QVariant& value, const QVariant& defaultValue = {});

protected:
    virtual std::optional<QVariant> load(const QString& name) const = 0;
    virtual void store(const QString& name, const QVariant& value) = 0;
    virtual void remove(const QString& name) = 0;
};

// A bag in memory; keys compare with or without regard to case.
class MemoryPropertyBag : public PropertyBag {
public:
    explicit MemoryPropertyBag(Qt::CaseSensitivity keys = Qt::CaseInsensitive)
        : m_keys(keys) {}
    // The stored keys and values, keys as written.
    const QMap<QString, QVariant>& values() const { return m_values; }
    bool contains(const QString& name) const { return find(name) != m_values.constEnd(); }

protected:
    std::optional<QVariant> load(const QString& name) const override;
    void store(const QString& name, const QVariant& value) override;
    void remove(const QString& name) override;

private:
    QMap<QString, QVariant>::const_iterator find(const QString& name) const;

    Qt::CaseSensitivity m_keys;
    QMap<QString, QVariant> m_values;
};

// A bag in one group of the host's settings file. Keys are found without regard to case, as the
// bag of the forms did, so "Showmode" written is "showmode" read.
class SettingsPropertyBag : public PropertyBag {
public:
    SettingsPropertyBag(QSettings& settings, const QString& group);

protected:
    std::optional<QVariant> load(const QString& name) const override;
    void store(const QString& name, const QVariant& value) override;
    void remove(const QString& name) override;

private:
    QString keyOf(const QString& name) const;

    QSettings& m_settings;
    QString m_group;
};

} // namespace zq
