#pragma once

#include <optional>
#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVector>

namespace zq {

// The 52 leading columns of tRsBasic, in the order the master record screen addresses them.
constexpr int kBasicFields = 52;
const QStringList& BasicColumns();
// The caption the screen's label of each column shows before the dictionary names it.
QString BasicCaption(int index);
// Entry limit of each of the 52 (0 for a combo box).
int BasicFieldMax(int index);
// The nine columns that a combo box stands for instead of a text box.
bool IsBasicCombo(int index);
// The columns a save refuses empty: code, name and the date of hiring.
bool IsRequiredBasicField(int index);
// The 52 in the order the screen shows them: by index, but the department just before the post,
// since the post list follows the department.
QVector<int> BasicFieldOrder();
// What the status line says after a person was added.
QString SavedPersonText(const QString& code, const QString& name, const QString& dept, const QString& post);

// One person's master row as the screen holds it: values[i] is the text of column i (text box or
// combo box), plus the department code and the state, which have no box of their own.
struct PersonBasicRow {
    QVector<QString> values = QVector<QString>(kBasicFields);
    QString bmCode;
    int zt = 1;
};

// The row of a code; false when there is none.
bool LoadPersonBasic(const QString& code, PersonBasicRow& row);

// The first person holding this identity card, when it is not `ownCode`: their name; empty when the
// card is blank or free. (Only the first row is looked at.)
QString IdCardOwner(const QString& idCard, const QString& ownCode, bool& taken);

// The check of a typed code. Adding: the code must be free. Changing: the person must still exist
// and no one else may hold the new code.
enum class CodeCheck { Ok, Taken, Missing };
CodeCheck CheckNewCode(const QString& code);
CodeCheck CheckChangedCode(const QString& oldCode, const QString& newCode);

// The statements of the save: an insert takes trimmed text, an update the text as typed.
QString InsertPersonSql(const PersonBasicRow& row);
struct BoundSql {
    QString sql;
    QVariantList binds;
};
// The update of a person read earlier as `loaded`: the code, and the columns whose text differs
// from what was read, each only while it still holds that text. What another client changed in
// other columns meanwhile stays; a change to the same column, or a person gone, changes no row.
BoundSql UpdatePersonSql(const PersonBasicRow& row, const QString& oldCode, const PersonBasicRow& loaded);

// Writes the row in one transaction: insert (mode 1) or update (mode 2) of the person read as
// `loaded`, the latter moving the person's child rows to a changed code. An update that finds the
// person changed or gone is a ConflictError; any failure rolls back and reaches the caller as a
// DbError.
void SavePersonBasic(int mode, const PersonBasicRow& row, const QString& oldCode,
                     const PersonBasicRow& loaded);

// Stores the picture file as the person's photo; an empty path clears the stored photo. False when
// the file cannot be read or written. An empty file leaves the photo as it is. With `loaded`, the
// digest (PhotoDigest) of the photo the screen showed, a photo another client changed meanwhile is
// left as it is and the write refused with ConflictError.
bool StorePersonPhoto(const QString& code, const QString& path,
                      const std::optional<QByteArray>& loaded = std::nullopt);
// The stored photo bytes (empty when none).
QByteArray PersonPhoto(const QString& code);
// A short fingerprint of a photo, to tell at a save whether it is still the one read.
QByteArray PhotoDigest(const QByteArray& photo);

// A date typed in any of the usual ways as yyyy-mm-dd; the text as it was when it is no date.
QString FormatIsoDate(const QString& text);
bool IsDateText(const QString& text);

} // namespace zq
