#include "HouseData.h"

#include "shell/Recordset.h"
#include "shell/SqlText.h"

namespace zq {

QString ResidentsSql(const QString& fieldList, const QString& code) {
    return QStringLiteral("Select ") + fieldList + QStringLiteral(" from tRsBasic Where fZt=1") +
           (code.isEmpty() ? QStringLiteral(" And neckline <> ''")
                           : QStringLiteral(" And neckline like ") + quoted(code + QLatin1Char('%'))) +
           QStringLiteral(" Order by fCode");
}

QVector<QStringList> ReadResidents(const QString& fieldList, const QString& code) {
    return ReadRows(ResidentsSql(fieldList, code));
}

int RoomKind(bool room, bool forMen) {
    return room ? (forMen ? 1 : 2) : 0;
}

} // namespace zq
