#pragma once

#include "services/PagedRows.h"
#include "shell/Recordset.h"

#include <QDate>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

namespace zq {

// The statements of the loan lists (tools and goods, two tables of one shape) and of the held
// certificates, callable without a window.

// The table, caption and rights key of the loan screen's state: the keys cross over with the tables
// on purpose, each key opening the other's table by its name.
QString LoanTable(int state);
QString LoanCaption(int state);
QString LoanModelKey(int state);

// Fields of the loan tables in the order of the entry boxes (index 0 to 11).
const QStringList& LoanFields();
// Fields of the certificates in the order of the entry boxes (index 0 to 8).
const QStringList& CardFields();

// One row of a search panel as ticked: `a` the box (or lower value), `b` the upper value or second
// date, `op` the operator of a compare row.
struct SeekInput {
    bool ticked = false;
    QString a;
    QString b;
    QString op;
    QDate d1;
    QDate d2;
};

// The search of the loans over the grid's field list, read as it is shown: the ticked rows in order,
// persons still on the register only. The first field fills the row headers (the loan's key when the
// dictionary lists fID first); a loan of a person outside the clerk's departments shows blank.
// Values enter through quoting: a quote fails the statement. Ordered by person, each person's newest
// loan first, then by key.
PagedQuery LoanSeekPaged(const QString& table, const QString& fieldList, const QVector<SeekInput>& rows);
// The search statement of the certificates.
QString CardSeekSql(const QVector<SeekInput>& rows);

// The dictionary captions and brief types of the entry labels, in label order (the key left out).
struct LabelCaption {
    QString caption;
    QString briefType;
};
QVector<LabelCaption> LoadLabelCaptions(const QString& table);
// Stores the brief type of each field, by field name, in one transaction.
void SaveBriefTypes(const QString& table, const QStringList& fields, const QStringList& types);

// Subtotal of quantity and price as shown: "0.00"; above the limit the fixed largest amount, and
// `tooLarge` is set.
QString LoanSubtotal(const QString& quantity, const QString& price, bool* tooLarge = nullptr);
// True when a text is a number as the value conversion reads it whole (blanks around allowed).
bool IsNumericText(const QString& text);
// A date typed as yyyy-mm-dd (or yyyy-m-d, or with "/"); invalid when it is no date.
QDate ParseDate(const QString& text);

// The person of a code: fName and fBmCode; empty when there is none.
struct PersonRef {
    bool found = false;
    QString name;
    QString deptCode;
};
PersonRef FindPerson(const QString& code);
// The code of the first person of a name (empty when none); `servingOnly` looks at serving persons.
QString PersonCodeOfName(const QString& name);
QString PersonNameOfCode(const QString& code, bool servingOnly = false);

// A loan by key, every field as text; empty when none.
RowSnapshot ReadLoan(const QString& table, const QString& key);
// A loan's values for a save: quantities and amounts as numbers, dates ISO, an empty return date
// left as stored.
struct LoanEntry {
    QString fields[12];
    QDate loanDate;
};
// What stops a save, as the message to show and the box to go to (-1 for none); empty when fine.
struct EntryCheck {
    QString message;
    int box = -1;
    int style = 48;
};
EntryCheck CheckLoanEntry(const LoanEntry& e, const QStringList& captions);
// Adds (mode 1) or changes the row of `key` in one transaction. A change of a row that another
// client changed or deleted since `loaded` is a ConflictError.
void SaveLoan(const QString& table, int mode, const QString& key, const LoanEntry& e,
              const RowSnapshot& loaded = {});
// Deletes the loan of `key`, which must still be there and returned; a ConflictError otherwise.
void DeleteLoan(const QString& table, const QString& key);

// A certificate's entry, boxes 0 to 8 (5 and 6 as ISO dates).
struct CardEntry {
    QString fields[9];
};
EntryCheck CheckCardEntry(const CardEntry& e, const QStringList& captions);
// Writes the certificate over the row of the same person and number, or adds it. A change of the
// certificate read as `loaded` (same person and number) that another client changed or deleted
// meanwhile is a ConflictError.
void SaveCard(const CardEntry& e, const RowSnapshot& loaded = {});
// The first certificate of a number (any person); empty when none.
RowSnapshot ReadCardByNumber(const QString& number);
// Deletes the certificate of a person and number; it must still be there.
void DeleteCard(const QString& code, const QString& number);

} // namespace zq
