#include "Globals.h"

namespace zq {

Globals& G() {
    static Globals g;
    return g;
}

void useDatabase(const ConnectionSettings& s) {
    Globals& g = G();
    g.SQLData = qint16(s.sqlData);
    g.UserPath = s.userPath;
    g.Password = s.password;
    g.UserID = s.userId;
    g.Default = s.defaultDb;
    // Not one of the control's properties: every connection opened from them protects itself so.
    defaultServerTls() = s.tls;
}

qint16 OpenControlConn() {
    const Globals& g = G();
    return OpenConn(g.SQLData, conn(), g.UserPath, g.Password, g.UserID, g.Default);
}

} // namespace zq
