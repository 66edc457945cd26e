#include "Company.h"

#include "Globals.h"
#include "Recordset.h"
#include "resources/Texts.h"

namespace zq {

void LoadCompany() {
    QStringList& items = G().CompanyItems;
    items.clear();
    Recordset rs(conn(), QStringLiteral("select * from myCompany"));
    if (rs.eof()) return;

    QString fullName = rs.text("FullName").trimmed();
    if (fullName.isEmpty()) fullName = rs.text("CompName");
    const QString company = LoadText(9);
    const std::pair<int, QString> entries[] = {
        {50, rs.text("CompCode")},  {160, fullName},
        {162, rs.text("compadd")},  {161, rs.text("Province") + rs.text("cityname") + rs.text("compadd")},
        {163, rs.text("Telphone")}, {164, rs.text("fax")},
        {165, rs.text("PostCode")}, {167, rs.text("http")},
        {166, rs.text("E_Mail")},   {168, rs.text("CompTax")},
        {169, rs.text("CompAcnt")},
    };
    for (const auto& [id, value] : entries)
        items << company + LoadText(id) << value;
}

} // namespace zq
