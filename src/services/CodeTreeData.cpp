#include "CodeTreeData.h"

#include "services/Lookups.h"
#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/SqlText.h"

#include <QStringList>

namespace zq {

RowSnapshot ReadCodeRow(const QString& table, const QString& code) {
    return Snapshot(Recordset(conn(), QStringLiteral("Select * from ") + table +
                                          QStringLiteral(" where fCode=") + quoted(code)));
}

CodeSaveCheck CheckCodeSave(const QString& table, int mode, const QString& code, const QString& name,
                            const QString& currentCode, const QString& currentName, bool nameFirst,
                            const QString& nameTable) {
    if (code.isEmpty()) return CodeSaveCheck::EmptyCode;
    if (name.isEmpty()) return CodeSaveCheck::EmptyName;
    const auto codeTaken = [&] {
        try {
            return (code != currentCode || mode == 1) &&
                   CountRows(table, QStringLiteral("fCode=") + quoted(code)) >= 1;
        } catch (const DbError&) {
            return false;
        }
    };
    const auto nameTaken = [&] {
        try {
            return (name != currentName || mode == 1) &&
                   !CodeFromName(nameTable.isEmpty() ? table : nameTable, name).isEmpty();
        } catch (const DbError&) {
            return false;
        }
    };
    if (nameFirst && nameTaken()) return CodeSaveCheck::NameExists;
    if (codeTaken()) return CodeSaveCheck::CodeExists;
    if (!nameFirst && nameTaken()) return CodeSaveCheck::NameExists;
    return CodeSaveCheck::Ok;
}

void SaveCodeRow(const QString& table, int mode, const QString& currentCode,
                 const QVector<FieldValue>& values, const RowSnapshot& loaded,
                 const std::function<void()>& alongside) {
    QStringList columns;
    for (const FieldValue& v : values)
        columns << v.column;
    Connection& c = conn();
    Transaction t(c);
    Recordset rs(c,
                 QStringLiteral("Select ") + columns.join(QLatin1Char(',')) + QStringLiteral(" from ") +
                     table + QStringLiteral(" where Fcode=") + quoted(currentCode),
                 Cursor::Keyset, Lock::Optimistic);
    if (mode != 1) RequireUnchanged(loaded, rs);
    if (mode == 1 || rs.eof()) rs.addNew();
    for (const FieldValue& v : values)
        rs.setValue(v.column,
                    v.value.typeId() == QMetaType::QString ? QVariant(checked(v.value.toString())) : v.value);
    rs.update();
    rs.close();
    if (alongside) alongside();
    t.commit();
}

bool HasLowerCodes(const QString& table, const QString& code) {
    Connection& c = conn();
    Recordset rs(c, QStringLiteral("select * from ") + table + QStringLiteral(" where fcode like ") +
                        quoted(code + QLatin1Char('%')) + QStringLiteral(" And ") +
                        c.dialect().length(QStringLiteral("fcode")) + QStringLiteral(">") +
                        QString::number(code.size()));
    return !rs.eof();
}

void DeleteCodeRow(const QString& table, const QString& code, const std::function<void()>& alongside) {
    Connection& c = conn();
    Transaction t(c);
    c.executeOne(QStringLiteral("Delete from ") + table + QStringLiteral(" where fcode=") + quoted(code));
    if (alongside) alongside();
    t.commit();
}

void SaveCodeDetail(const QString& table, const QString& code, const QString& text, const QString& loaded,
                    const std::function<void()>& alongside) {
    Connection& c = conn();
    Transaction t(c);
    c.executeOne(QStringLiteral("update ") + table + QStringLiteral(" Set fDetail1=") + quoted(text) +
                     QStringLiteral(" where fcode=") + quoted(code) + stillHolds(QStringLiteral("fDetail1")),
                 {loaded});
    if (alongside) alongside();
    t.commit();
}

} // namespace zq
