#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace zq {

// The search of the transfer orders: each condition ticked or not, with its inputs as typed.
struct MoveSearch {
    bool number = false;
    QString numberFrom, numberTo;
    bool name = false;
    QString nameText;
    bool code = false;
    QString codeText;
    bool oldUnit = false;
    QString oldUnitText;
    bool oldDept = false;
    QString oldDeptText;
    bool newUnit = false;
    QString newUnitText;
    bool newDept = false;
    QString newDeptText;
    bool workType = false;
    QString workTypeText;
    bool chgMan = false;
    QString chgManText;
    bool date = false;
    QString dateFrom, dateTo; // yyyy-mm-dd
    bool wrtMan = false;
    QString wrtManText;
    bool newWork = false;
    QString newWorkText;
};

// The statement of a search: "select *  from trsPersonMove where 1=1", the ticked conditions in
// their fixed order, " order by movenmb". A quote in a text reaches quoted() and is refused.
QString MoveSearchSql(const MoveSearch& s);

// The rows of the list for a statement: the twelve columns of each order whose person is in the
// register; a blank row for an order whose person is not; and an order whose person has an empty
// department code is left out together with the order after it, whose row stays blank.
QVector<QStringList> MoveListRows(const QString& sql);

// Deletes the order of this name and number in a transaction; false when there is none.
bool DeleteMoveOrder(const QString& name, const QString& number);

// The fields of the list's columns 1 to 12.
const QStringList& MoveListColumns();

// The twelve captions of a printed order, paired with the list's columns 1 to 12 in order.
const QStringList& MovePrintCaptions();

} // namespace zq
