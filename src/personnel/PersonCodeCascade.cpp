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
    // The tables that exist, asked once; a failure of the question or of an update rolls the whole
    // change back, so on the server none needs a savepoint of its own, and the updates go as one
    // statement.
    QStringList updates;
    for (const QString& table : conn().existingTables(CodeCascadeTables(), Connection::OnFailure::EndTransaction))
        updates << QStringLiteral("Update ") + table + QStringLiteral(" Set fcode=") + quoted(newCode) +
                       QStringLiteral(" where fcode=") + quoted(oldCode);
    for (const QString& sql : conn().dialect().writesTogether(updates))
        conn().execute(sql, Connection::OnFailure::EndTransaction);
}

} // namespace zq
