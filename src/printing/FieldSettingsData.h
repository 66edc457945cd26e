#pragma once

#include <QString>

namespace zq {

// One field's row in the dictionary as the field settings dialog shows it.
struct FieldSetting {
    bool found = false;
    QString caption;   // FieldName_ of the language
    QString briefType; // FieldBriefType
    QString field;     // FieldName
    bool itemEnabled = true;
};

// The field by its name, or (field empty) by its caption modelName.
FieldSetting ReadFieldSetting(const QString& table, const QString& field, const QString& modelName);
// Writes caption and brief list; a quote in either fails the statement (DbError).
void WriteFieldSetting(const QString& table, const QString& field, const QString& caption,
                       const QString& briefType);

} // namespace zq
