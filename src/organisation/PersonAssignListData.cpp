#include "PersonAssignListData.h"

#include "shell/Connection.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QHash>

namespace zq {

namespace {
QString like(const char* column, const QString& text) {
    return QStringLiteral(" and %1 like ").arg(QLatin1String(column)) +
           quoted(QLatin1Char('%') + text + QLatin1Char('%'));
}

const char* const kColumns[12] = {"fcode",   "fName",  "moveNmb",     "oldunit",   "olddpt",    "worktype",
                                  "newunit", "newdpt", "newworktype", "chgperson", "wrtperson", "wrtdate"};
} // namespace

QString MoveSearchSql(const MoveSearch& s) {
    QString sql = QStringLiteral("select *  from trsPersonMove where 1=1");
    if (s.number)
        sql +=
            QStringLiteral(" and (movenmb between %1 and %2)")
                .arg(QString::number(Val(s.numberFrom), 'g', 15), QString::number(Val(s.numberTo), 'g', 15));
    if (s.name) sql += like("fname", s.nameText);
    if (s.code) sql += like("fcode", s.codeText);
    if (s.oldUnit) sql += like("oldunit", s.oldUnitText);
    if (s.oldDept) sql += like("olddpt", s.oldDeptText);
    if (s.newUnit) sql += like("newunit", s.newUnitText);
    if (s.newDept) sql += like("newdpt", s.newDeptText);
    if (s.workType) sql += like("worktype", s.workTypeText);
    if (s.chgMan) sql += like("chgperson", s.chgManText);
    if (s.date) {
        const QString q = G().DateQuote;
        sql += QStringLiteral(" and wrtdate between ") + q + checked(s.dateFrom) + q +
               QStringLiteral(" and ") + q + checked(s.dateTo) + q;
    }
    if (s.wrtMan) sql += like("wrtperson", s.wrtManText);
    if (s.newWork) sql += like("newworktype", s.newWorkText);
    return sql + QStringLiteral(" order by movenmb");
}

QVector<QStringList> MoveListRows(const QString& sql) {
    const QVector<QStringList> orders = ReadRows(sql);
    QVector<QStringList> rows(orders.size());
    if (orders.isEmpty()) return rows;
    // The persons' department codes in one statement, not one per order: null stays apart from
    // the empty text, which is what leaves an order out.
    QHash<QString, QVariant> deptOf;
    {
        Recordset rs(conn(),
                     QStringLiteral("select fcode,fBmCode from trsbasic where fcode in (select fcode from "
                                    "trsPersonMove)"));
        for (; !rs.eof(); rs.moveNext())
            if (!deptOf.contains(rs.text(0))) deptOf.insert(rs.text(0), rs.value(1));
    }
    Recordset names(conn(), QStringLiteral("select * from trsPersonMove where 1=2"));
    QVector<int> at;
    for (const char* c : kColumns)
        at << names.fieldIndex(QLatin1String(c));
    const QString scope = G().DeptScope;
    for (int i = 0; i < orders.size(); ++i) {
        const QStringList& o = orders.at(i);
        const QString code = o.value(at[0]);
        const auto person = deptOf.constFind(code);
        if (person == deptOf.constEnd()) continue; // gone from the register: a blank row
        // A department code not in the scope (an empty code is in none; a null one is in every):
        // passed over, and the order after it with it.
        const QVariant dept = person.value();
        if (!dept.isNull() && (dept.toString().isEmpty() || !dept.toString().contains(scope))) {
            ++i;
            continue;
        }
        QStringList cells;
        for (int c : at)
            cells << o.value(c);
        rows[i] = cells;
    }
    return rows;
}

bool DeleteMoveOrder(const QString& name, const QString& number) {
    const QString where = QStringLiteral(" Where fname=") + quoted(name) + QStringLiteral("and moveNmb=") +
                          QString::number(Val(number), 'g', 15);
    {
        Recordset rs(conn(), QStringLiteral("select count(*) from trsPersonmove") + where);
        if (rs.val(0) == 0) return false;
    }
    Transaction t(conn());
    conn().execute(QStringLiteral("Delete From trsPersonmove") + where);
    t.commit();
    return true;
}

const QStringList& MoveListColumns() {
    static const QStringList c = [] {
        QStringList l;
        for (const char* name : kColumns)
            l << QLatin1String(name);
        return l;
    }();
    return c;
}

const QStringList& MovePrintCaptions() {
    static const QStringList c{"调令号", "姓名",   "工号",   "原工种", "原单位", "原部门",
                               "现单位", "现部门", "现工种", "负责人", "填表人", "填表日期"};
    return c;
}

} // namespace zq
