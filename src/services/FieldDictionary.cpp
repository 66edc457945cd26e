#include "FieldDictionary.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <memory>

namespace zq {

QString GetFieldCaption(const QString& table, const QString& field) {
    Recordset rs(conn(), QStringLiteral("Select Fieldname") + G().lang() +
                             QStringLiteral(" from rptListDetail where ftable=") + quoted(table.toLower()) +
                             QStringLiteral(" and FieldName=") + quoted(field.toLower()));
    if (rs.eof()) return QStringLiteral("\t");
    return rs.text(0);
}

QString GetFieldBriefType(const QString& table, const QString& field) {
    Recordset rs(conn(), QStringLiteral("select fieldbrieftype from RptListDetail where ftable=") +
                             quoted(table) + QStringLiteral(" and  FieldName=") + quoted(field));
    if (rs.eof()) return {};
    return rs.text(0);
}

namespace {

// One step of a routine whose failures are passed over one statement at a time.
template <typename F> void ignoringErrors(F step) {
    try {
        step();
    } catch (const DbError&) {
    }
}

// Gives the key field in hand its place and makes it a grid column.
void pinRow(Recordset& rs, const QString& expected, int ifExpected, int otherwise) {
    ignoringErrors([&] {
        rs.setValue(QStringLiteral("fieldId"),
                    rs.text(QStringLiteral("fieldName")).toLower() == expected ? ifExpected : otherwise);
    });
    ignoringErrors([&] {
        if (rs.val(QStringLiteral("FieldSelected")) != 1) rs.setValue(QStringLiteral("FieldSelected"), 1);
    });
}

} // namespace

void PinKeyFields(const QString& table) {
    std::unique_ptr<Recordset> rs;
    ignoringErrors([&] {
        rs = std::make_unique<Recordset>(
            conn(),
            QStringLiteral("select fieldId,fieldName,FieldSelected from RptListDetail where ftable=") +
                quoted(table) +
                QStringLiteral(" and (FieldName='fcode' or FieldName='fname') order by fieldId"),
            Cursor::ForwardOnly, Lock::BatchOptimistic);
    });
    if (!rs) return;
    if (!rs->eof()) {
        pinRow(*rs, QStringLiteral("fcode"), -2, -1);
        ignoringErrors([&] { rs->moveNext(); });
        if (!rs->eof()) pinRow(*rs, QStringLiteral("fname"), -1, -2);
    }
    ignoringErrors([&] { rs->updateBatch(); });
    rs->close();
}

} // namespace zq
