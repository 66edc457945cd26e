#include "FieldSettingsData.h"

#include "shell/Connection.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

namespace zq {

FieldSetting ReadFieldSetting(const QString& table, const QString& field, const QString& modelName) {
    const QString caption = QStringLiteral("FieldName") + G().lang();
    QString sql = QStringLiteral("select ") + caption +
                  QStringLiteral(",FieldBriefType,FieldName,FEnabled from RptListDetail where ftable=") +
                  quoted(table);
    sql += field.isEmpty() ? QStringLiteral(" And ") + caption + QStringLiteral("=") + quoted(modelName)
                           : QStringLiteral(" And FieldName=") + quoted(field);
    Recordset rs(conn(), sql);
    FieldSetting s;
    if (rs.eof()) return s;
    s.found = true;
    s.caption = rs.text(0);
    s.briefType = rs.text(1);
    s.field = rs.text(2);
    s.itemEnabled = Val(rs.text(3)) != 0;
    return s;
}

void WriteFieldSetting(const QString& table, const QString& field, const QString& caption,
                       const QString& briefType) {
    conn().execute(QStringLiteral("UpDate rptListDetail Set FieldName") + G().lang() + QStringLiteral("=") +
                   quoted(caption) + QStringLiteral(",FieldBriefType=") + quoted(briefType) +
                   QStringLiteral(" where ftable=") + quoted(table) + QStringLiteral(" and FieldName=") +
                   quoted(field));
}

} // namespace zq
