#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace zq {

// The rooms' residents: serving persons whose room code (neckline) begins with a room's or class's
// code, or every serving person with a room when the code is empty. Callable without a window.
QString ResidentsSql(const QString& fieldList, const QString& code);
QVector<QStringList> ReadResidents(const QString& fieldList, const QString& code);

// The value of a room's kind: 0 a class of rooms, 1 a room for men, 2 for women.
int RoomKind(bool room, bool forMen);

} // namespace zq
