#include "StaffListData.h"

#include "shell/Connection.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

namespace zq {

QStringList ServingStaff(bool deptLimit) {
    const QString sql =
        deptLimit ? QStringLiteral("select fCode,fname from trsbasic where  fzt=1 and fbmcode like ") +
                        quoted(G().DeptScope + QStringLiteral("%")) + QStringLiteral(" order by fcode")
                  : QStringLiteral("select fCode,fName from trsbasic  Where fzt=1 order by fcode");
    Recordset rs(conn(), sql);
    QStringList items;
    for (; !rs.eof(); rs.moveNext())
        items << rs.text(0) + QLatin1Char('\t') + rs.text(1);
    return items;
}

} // namespace zq
