#include "HouseData.h"

#include "services/HeadCounts.h"
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

QHash<QString, RoomPlace> RoomPlaces() {
    QHash<QString, RoomPlace> rooms;
    QStringList codes;
    for (const QStringList& r :
         ReadRows(QStringLiteral("select fCode,fName,fYnxj,fLimited from tRs_House"))) {
        RoomPlace p;
        p.code = r.value(0).trimmed();
        p.name = r.value(1);
        p.kind = int(Val(r.value(2)));
        p.limit = Val(r.value(3));
        rooms.insert(p.code, p);
        codes << p.code;
    }
    HeadCounts heads(QStringLiteral("trs_house"), 1);
    heads.prepare(codes);
    for (RoomPlace& p : rooms)
        p.residents = heads.count(p.code);
    return rooms;
}

QString RoomKindWord(int kind) {
    return kind == 1 ? QStringLiteral("男生") : kind == 2 ? QStringLiteral("女生") : QString();
}

QString RoomFreeText(const RoomPlace& room) {
    if (room.kind == 0 || room.limit <= 0) return {};
    return room.free() > 0 ? QStringLiteral("空%1位").arg(room.free(), 0, 'g', 15) : QStringLiteral("已满");
}

QString RoomPickStatus(const RoomPlace& room, const QString& sex, const QString& personRoom, bool* warned) {
    QStringList warnings;
    const QString s = sex.trimmed();
    const bool man = s == QStringLiteral("男") || s == QStringLiteral("1");
    const bool woman = s == QStringLiteral("女") || s == QStringLiteral("0");
    if ((room.kind == 1 && woman) || (room.kind == 2 && man))
        warnings << QStringLiteral("注意：%1 是%2房间，此员工性别为%3。")
                        .arg(room.name, RoomKindWord(room.kind),
                             man ? QStringLiteral("男") : QStringLiteral("女"));
    const bool livesThere = !personRoom.trimmed().isEmpty() && personRoom.trimmed().startsWith(room.code);
    if (room.kind != 0 && room.limit > 0 && room.free() <= 0 && !livesThere)
        warnings << QStringLiteral("注意：%1 已住满（限%2人）。").arg(room.name).arg(room.limit, 0, 'g', 15);
    if (warned) *warned = !warnings.isEmpty();
    QString line = room.kind == 0
                       ? QStringLiteral("%1：房间分类，共住%2人").arg(room.name).arg(room.residents)
                       : QStringLiteral("%1：%2房间").arg(room.name, RoomKindWord(room.kind));
    if (room.kind != 0) {
        if (room.limit > 0)
            line += QStringLiteral("，限%1人，已住%2人，%3")
                        .arg(room.limit, 0, 'g', 15)
                        .arg(room.residents)
                        .arg(RoomFreeText(room));
        else
            line += QStringLiteral("，已住%1人").arg(room.residents);
    }
    return (warnings + QStringList{line}).join(QLatin1Char(' '));
}

} // namespace zq
