#pragma once

#include "services/Spreadsheets.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

namespace zq {

// Persons brought in from a spreadsheet: the file read, its columns mapped to master-record fields,
// every row checked by the master record's own rules, then all accepted rows written at once.
// Plain functions; the browser's dialog and zqrs-admin are thin layers over them.

// A field a column may fill: the master record's columns and the department code.
struct ImportField {
    QString field;   // as the master record names it (fCode, fName, ...)
    QString caption; // the dictionary's caption in the language in use
};
const QVector<ImportField>& ImportFields();
// The caption of a field for messages; the field itself when it has none.
QString ImportCaption(const QString& field);
// The field a header names: a dictionary caption in either language, a field name, or a caption of
// the record screen, compared without case, blanks or a trailing marker. Empty when none.
QString FieldOfHeader(const QString& header);

// The most persons one file brings in: a larger file is refused with the reason before it is
// checked, so that the check keeps within its memory.
constexpr int kMaxImportRows = 200000;

// The file read and its columns mapped. The header row is the first of the first ten rows in which
// at least two cells (or the only one) name fields; the rows above it (a title) are passed over.
// Of a workbook the first visible sheet that has such a row is read.
struct ImportPlan {
    QString error;           // the file refused as a whole
    QVector<SheetRow> rows;  // the data rows below the header row
    QString sheet;           // the sheet read; empty for a .csv
    bool typed = false;      // the file tells numbers from texts (.xlsx)
    int headerRow = 0;       // its row number in the file
    QStringList headers;     // one per column
    QStringList fields;      // the field each column fills; empty leaves the column out
    QStringList unmapped() const;
    // Where the header row is, for messages: "工作表“名单”第 2 行" or "第 2 行".
    QString headerPlace() const;
};
ImportPlan PrepareImport(const QString& path);
ImportPlan PrepareImport(const SheetData& sheet);
// Checks the mapping the clerk settled: the code mapped, no field twice. Empty when fine.
QString CheckMapping(const ImportPlan& plan);

// One finding on a row: refused, or a warning that lets the row through.
struct RowIssue {
    int row = 0; // the row number in the file
    QString code;
    QString reason;
    bool refused = true;
};

// A checked row, ready to be written: the values of the mapped fields (dates as yyyy-mm-dd, the
// department as its code and name), and for an update the fields that change.
// The values of one row by field: few enough that a flat list is quicker than a hash and a fraction
// of its memory, which counts at a hundred thousand rows.
class FieldValues {
public:
    QString value(const QString& field) const {
        for (const auto& [f, v] : m_items)
            if (f == field) return v;
        return {};
    }
    bool contains(const QString& field) const {
        for (const auto& item : m_items)
            if (item.first == field) return true;
        return false;
    }
    QString& operator[](const QString& field) {
        for (auto& item : m_items)
            if (item.first == field) return item.second;
        m_items.append({field, QString()});
        return m_items.last().second;
    }
    void insert(const QString& field, const QString& value) { (*this)[field] = value; }
    void reserve(qsizetype n) { m_items.reserve(n); }
    const QVector<std::pair<QString, QString>>& items() const { return m_items; }

private:
    QVector<std::pair<QString, QString>> m_items;
};

struct ImportRow {
    int row = 0;
    bool update = false;
    FieldValues values;
    QStringList changed;
    QStringList checked; // what the check read of each changed field, as stored
};

struct ImportCheck {
    QString error;
    int added = 0;
    int updated = 0;
    int unchanged = 0;
    int refused = 0;
    int warnings = 0;
    QVector<RowIssue> issues; // in row order
    QVector<ImportRow> accepted;
};
// Checks every row. `update` lets a row whose code exists change that person (mapped columns only);
// without it such a row is refused.
ImportCheck CheckImport(const ImportPlan& plan, bool update);

// The refusals and warnings as rows for a spreadsheet: row number, code, kind, reason.
ListRowSource IssueRows(const ImportCheck& check);

// Writes the accepted rows in one transaction and logs one line with the counts. Nothing is written
// while a row is refused unless `goodOnly`. Gives false (writing nothing) in that case; a database
// failure rolls everything back and reaches the caller as a DbError.
bool WriteImport(const ImportCheck& check, bool goodOnly);

// The check digit of an 18-character identity number is right; false for any other form.
bool IdCardCheckDigitOk(const QString& id);
// The birth date an identity number of 15 or 18 characters carries, as yyyy-mm-dd; else empty.
QString BirthDateOfIdCard(const QString& id);

} // namespace zq
