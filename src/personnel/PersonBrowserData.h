#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include "services/PagedRows.h"

namespace zq {

// The statements of the personnel browser, callable without a window.

// The state (fzt) the browser shows now, 1 when no browser is open. The master record reads it to
// give a new person the state of the list it was added from.
int CurrentRsState();
void SetCurrentRsState(int state);

// The module whose rights guard the browser in a state: "mnuRsManIn" for 1, else "mnuRsManOut".
QString BrowserModelKey(int rsState);

// Splits the spouse columns off into tRsBasic_P once, when that table does not exist yet, and moves
// their dictionary rows (OrderID 69 on) along. The columns stay in tRsBasic. True when it split now.
bool SplitSpouseTable();

// The condition of the person list, on the alias "a." of tRsBasic. The seek condition is on tRsBasic
// alone; the detail condition uses the alias "b." of tRsDetail and is taken as it stands.
// A preset condition (alias "a.", as the home page gives it) is taken as it stands too.
QString PersonListCondition(int rsState, const QString& deptCode, const QString& seekCondition,
                            const QString& detailCondition, const QString& preset = QString());
// The statement of the list: the grid's fields (comma list) under the condition, in code order.
QString PersonListSql(const QString& gridFieldList, const QString& condition, bool joinDetail);
// The same list for reading on demand: its columns, tables and condition, keyed by the code.
PagedQuery PersonListPaged(const QString& gridFieldList, const QString& condition, bool joinDetail);
// The codes of the persons the list shows under a condition, in its order.
QStringList PersonListCodes(const QString& condition, bool joinDetail);

// The statement the cards of other particulars print: the list's persons with their tRsDetail texts.
QString DetailCardSql(const QString& condition);

// Deletes the master row of a person in the state shown, inside a transaction, and logs it. The
// sub-records stay. A failure rolls back and reaches the caller as a DbError.
void DeletePerson(const QString& code, const QString& name, int rsState);

// Items on loan that were not given back: tools with an empty return time, goods without a valid
// return date. The two tests differ on purpose (a null return time of a tool is not counted).
int UnreturnedTools(const QString& code);
int UnreturnedGoods(const QString& code);

// Moves a person of the state shown out of service for reason 0..5 (fzt 2..7), inside a
// transaction; an empty leavetime becomes today. Logging is the caller's, after the commit. False
// when the person was not there.
bool SetPersonLeft(const QString& code, int rsState, int reason);

// Brings a person of the state shown back into service (fzt 1), without a transaction. False when
// no such row was found.
bool ReinstatePerson(const QString& code, int rsState);

} // namespace zq
