#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

namespace zq {

// What the personal record sheet (frmRs_PersonPnt) reads of one person. An empty code is the blank
// sheet: no values at all.
struct PersonSheet {
    QString code;
    QHash<QString, QString> basic;  // tRsBasic by lower-cased column
    QHash<QString, QString> spouse; // tRsBasic_P by lower-cased column
    QByteArray photo;
    // The rows of each block, cut to what the block holds, each row the block's columns in order.
    QVector<QStringList> study, work, family, results, awards;

    QString value(const QString& field) const { return basic.value(field.toLower()); }
};

// Rows each block of the sheet holds; the rest are not printed (the sheet has no overflow page).
constexpr int kSheetStudyRows = 6;
constexpr int kSheetWorkRows = 6;
constexpr int kSheetFamilyRows = 6;
constexpr int kSheetResultRows = 9;
constexpr int kSheetAwardRows = 9;

// Reads a person's sheet: master row and photo, spouse, then each block in its order.
PersonSheet ReadPersonSheet(const QString& code);

// The codes of tRsBasic a condition selects (empty: everyone), in code order.
QStringList SheetCodes(const QString& condition);

// The captions the sheet prints, read from the field dictionary once for a whole print job.
class SheetCaptions {
public:
    // Reads every caption the sheet asks the dictionary for.
    static SheetCaptions load();
    // The dictionary's caption of a field, or the literal when the dictionary has no such field.
    QString of(const QString& table, const QString& field, const QString& literal) const;
    // The caption of the master record screen's label at an ordinal.
    QString label(int ordinal) const { return m_labels.value(ordinal); }

private:
    QHash<QString, QString> m_fields; // "table.field" lower-cased -> caption
    QStringList m_labels;
};

} // namespace zq
