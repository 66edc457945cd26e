#pragma once

#include "Connection.h"

#include <QString>
#include <QStringList>

namespace zq {

// The process-wide state every screen and service reads: the control's properties, the values
// worked out by Refresh, and the person in hand. Two controls in one process share it.
struct Globals {
    // Properties of the control
    qint16 SQLData = 0;
    QString Password;
    QString PowerPath;
    QString myModel;
    qint16 showmode = 0;
    QString UserPath;
    QString CompName;
    QString AccName;
    QString UserName;
    QString ZgName;
    QString myPower = QString(350, QLatin1Char('0'));
    qint16 Language = 0;
    QString UserID;
    QString Default;

    // Worked out by Refresh
    QString AppTitle;
    QString DateQuote = QStringLiteral("'");
    QString UserDeptCode;
    const QString DeptScope; // never assigned: every limit through it means no limit
    QStringList CompanyItems;
    QString RptSetResult;

    // The person in hand
    QString CurPersonCode;
    QString CurPersonName;
    QString CurPersonDeptCode;
    QString CurPersonDeptName;
    QString CurPersonSex;
    QString CurPersonOther2;
    QString CurPersonGzCode;
    QString CurPersonKqCardID;
    qint16 PersonEditMode = 0;
    // The room chosen on the housing screen, read by the caller after it closed.
    QString CurRoomCode;
    QString CurRoomName;

    // Nobody signed in is nobody's supervisor.
    bool isSupervisor() const { return !UserName.isEmpty() && ZgName == UserName; }
    // Column suffix of the active language: "_0" or "_1".
    QString lang() const { return QStringLiteral("_%1").arg(Language); }
};

Globals& G();

// Points the control's five database properties at a database (and its server's protection).
void useDatabase(const ConnectionSettings& s);
// Opens the shared connection on the control's properties unless it is open: a screen does this
// whenever it becomes active again, since a screen it opened may have closed the connection.
qint16 OpenControlConn();

} // namespace zq
