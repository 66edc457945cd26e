#pragma once

#include "shell/Globals.h"

#include <QVariantMap>
#include <QWidget>

namespace zq {
class PropertyBag;
}

// The control a host places on its window. It has no look of its own: the host sets its
// properties and calls Refresh with a menu key; the control opens the database, shows the screen
// of the key modally and closes the database again. Every setter only stores into the process-wide
// state, so two controls in one process share their settings.
class zqRs : public QWidget {
    Q_OBJECT
public:
    explicit zqRs(QWidget* parent = nullptr);
    ~zqRs() override;

    void setSQLData(qint16 v) { zq::G().SQLData = v; }
    void setPassword(const QString& v) { zq::G().Password = v; }
    void setPowerPath(const QString& v) { zq::G().PowerPath = v; }
    void setMyModel(const QString& v) { zq::G().myModel = v; }
    void setShowmode(qint16 v) { zq::G().showmode = v; }
    void setUserPath(const QString& v) { zq::G().UserPath = v; }
    void setCompName(const QString& v) { zq::G().CompName = v; }
    void setAccName(const QString& v) { zq::G().AccName = v; }
    void setUserName(const QString& v) { zq::G().UserName = v; }
    void setZgName(const QString& v) { zq::G().ZgName = v; }
    void setMyPower(const QString& v) { zq::G().myPower = v; }
    void setLanguage(qint16 v) { zq::G().Language = v; }
    void setUserID(const QString& v) { zq::G().UserID = v; }
    void setDefault(const QString& v) { zq::G().Default = v; }

    QString UserID() const { return zq::G().UserID; }
    QString Default() const { return zq::G().Default; }

    // Every property to its first value, but PowerPath and CompName, which the host sets.
    void InitProperties();
    void ReadProperties(const zq::PropertyBag& bag);
    void WriteProperties(zq::PropertyBag& bag) const;
    // Closes the connection if it is open.
    void Terminate();

    // Opens the database, works out the user's department and the company, shows the screen of
    // the menu key (compared without regard to case) and closes the database when it has closed.
    // Errors reach the caller; the database then stays open.
    void Refresh(const QString& mnuModel, qint16 State) { Refresh(mnuModel, State, {}); }
    // The same, with settings of the screen beyond those of the key (a host's home page opens the
    // staff register on the persons of one of its lines).
    void Refresh(const QString& mnuModel, qint16 State, const QVariantMap& settings);
};
