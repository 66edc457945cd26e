#pragma once

#include "shell/Recordset.h"

#include <optional>
#include <QDate>
#include <QString>
#include <QVariant>

namespace zq {

// One transfer order as the dialog holds it: every value as typed, the number still text.
struct MoveOrder {
    QString moveNmb;
    QString fName;
    QString fcode;
    QString oldunit;
    QString olddpt;
    QString worktype;
    QString newunit;
    QString newdpt;
    QString newworktype;
    QString chgperson;
    QString wrtperson;
    QDate wrtdate;
};

// The number a new order is offered: the highest present plus one, 1 in an empty table.
QString ProposedMoveNumber();

// Where a person stands in the master record: unit, department name and post, and the name.
struct PersonPlace {
    QString unit;
    QString dept;
    QString post;
    QString name;
};
// The first master row of that name or code; nothing when there is none, or when the text holds a
// quote (no such person can be asked for).
std::optional<PersonPlace> PlaceOfPersonNamed(const QString& name);
std::optional<PersonPlace> PlaceOfPersonCoded(const QString& code);

// The department code (fBmCode, null kept as null) of the master row with this name (trimmed) and
// code; nothing when they do not belong together. A quote in either throws DbError.
std::optional<QVariant> MatchedPersonDept(const QString& name, const QString& code);

// Whether a department code lies in the user's scope. An empty code is outside any scope; a null
// one (never filled in) is inside.
bool InDeptScope(const QVariant& deptCode, const QString& scope);

// The number as it is stored and compared: the leading number of the text.
QString MoveNumberText(const QString& moveNmb);

enum class MoveSaveResult { Saved, NumberInUse };

// Writes the order, and the history row when the department changes, in one transaction. In mode 1
// (add) an order of the same number is refused; in mode 2 (change) it is overwritten. A change of
// the order read as `loaded` (fields by lower-cased name, as the list read them) that another
// client changed or deleted meanwhile is refused with ConflictError; a change that moves the order
// to another number leaves the order read as it is. A failed statement rolls everything back and
// throws DbError.
MoveSaveResult SaveMoveOrder(const MoveOrder& order, int mode, const RowSnapshot& loaded = {});

// The order saved last in this process (number as stored, person's code and name), for the list
// that opened the dialog to show it at once; empty before any save.
struct SavedMove {
    QString number;
    QString code;
    QString name;
};
const SavedMove& LastSavedMove();

// The open period a transfer closes, as the history shows it.
QString MoveHistoryYear(const QDate& date);

} // namespace zq
