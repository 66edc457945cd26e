#pragma once

#include <QHash>
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

// A room or class as the picker shows it: its kind, its limit and the serving persons in it (those
// of its rooms, for a class).
struct RoomPlace {
    QString code;
    QString name;
    int kind = 0;
    double limit = 0;
    qint64 residents = 0;
    // The places left; meaningless without a limit.
    double free() const { return limit - residents; }
};
// Every room and class of tRs_House by trimmed code, counted with one grouped statement.
QHash<QString, RoomPlace> RoomPlaces();
// "男生" or "女生" for a room, empty for a class.
QString RoomKindWord(int kind);
// "空n位" for a room with a limit ("已满" with none left), empty otherwise.
QString RoomFreeText(const RoomPlace& room);
// The status line for a pick: the room's kind, limit, residents and places left, and, first, a
// warning when a person of `sex` ("男"/"女", or the codes "1"/"0") does not belong in a room of that
// kind, or when the room is full and the person (whose room code is `personRoom`) does not live there
// already. `warned` tells whether there was one.
QString RoomPickStatus(const RoomPlace& room, const QString& sex, const QString& personRoom,
                       bool* warned = nullptr);

} // namespace zq
