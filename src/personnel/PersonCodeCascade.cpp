#include "PersonCodeCascade.h"

#include "services/Lookups.h"
#include "shell/Connection.h"
#include "shell/SqlText.h"

namespace zq {

const QStringList& CodeCascadeTables() {
    static const QStringList tables{
        "trsWork",   "trsPersonMove", "trsLoanGoods", "trsLoanTools",  "trsStudy", "trsTech",     "trsFamily",
        "trsRemark", "trsMeed",       "trsResult",    "trs_WorkState", "trsCard",  "tKq_Data_day"};
    return tables;
}

void ChangePersonCode(const QString& table, const QString& oldCode, const QString& newCode) {
    // The sibling attendance tables may be missing from this database: not an error.
    if (CountRows(table, QStringLiteral("1=2")) < 0) return;
    conn().execute(QStringLiteral("Update ") + table + QStringLiteral(" Set fcode=") + quoted(newCode) +
                   QStringLiteral(" where fcode=") + quoted(oldCode));
}

void CascadePersonCode(const QString& oldCode, const QString& newCode) {
    for (const QString& table : CodeCascadeTables())
        ChangePersonCode(table, oldCode, newCode);
}

} // namespace zq
