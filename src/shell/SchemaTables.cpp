#include "Schema.h"

namespace zq::schema {

// Placeholder until every table is written down.
const QVector<Table>& tables()
{
    using T = Type;
    static const QVector<Table> t = {
        {"myCompany",
         {{"CompCode", T::Text, 20}, {"FullName", T::Text, 100}, {"CompName", T::Text, 100}, {"compadd", T::Text, 100},
          {"Province", T::Text, 30}, {"cityname", T::Text, 30}, {"Telphone", T::Text, 50}, {"fax", T::Text, 50},
          {"PostCode", T::Text, 10}, {"http", T::Text, 100}, {"E_Mail", T::Text, 100}, {"CompTax", T::Text, 50},
          {"CompAcnt", T::Text, 50}},
         {}},
    };
    return t;
}

} // namespace zq::schema
