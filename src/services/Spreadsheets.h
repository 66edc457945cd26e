#pragma once

#include "shell/Recordset.h"

#include <functional>
#include <QString>
#include <QStringList>
#include <QVector>

namespace zq {

// Spreadsheets in and out: .xlsx and .csv files written from any stream of rows, and read back as
// rows of texts. Plain functions, no window; the screens and zqrs-admin are thin layers over them.

// How a column's cells go into the file. Text stays text (codes keep their leading zeros); a number
// column writes real numbers and a date column real dates wherever the cell reads as one, and the
// text as it is where it does not.
enum class CellKind { Text, Number, Date };

struct SheetColumn {
    QString caption;
    CellKind kind = CellKind::Text;
    int decimals = 0;  // places shown in a number column
    double width = 10; // in average characters, as the grid measures
};

// What an export reads: the columns, then the rows one at a time, so that a million rows are never
// held at once.
class RowSource {
public:
    virtual ~RowSource() = default;
    virtual QVector<SheetColumn> columns() const = 0;
    // The next row's cells, one per column; false when there are no more rows.
    virtual bool next(QStringList& cells) = 0;
};

// A RowSource over rows already in memory (a preview's refusals, a test's table).
class ListRowSource : public RowSource {
public:
    ListRowSource(QVector<SheetColumn> columns, QVector<QStringList> rows)
        : m_columns(std::move(columns))
        , m_rows(std::move(rows)) {}
    QVector<SheetColumn> columns() const override { return m_columns; }
    bool next(QStringList& cells) override {
        if (m_at >= m_rows.size()) return false;
        cells = m_rows.at(m_at++);
        return true;
    }

private:
    QVector<SheetColumn> m_columns;
    QVector<QStringList> m_rows;
    qsizetype m_at = 0;
};

// A RowSource over a statement, streamed: the first columns.size() fields of each row as text.
class QueryRowSource : public RowSource {
public:
    QueryRowSource(QVector<SheetColumn> columns, const QString& sql)
        : m_columns(std::move(columns))
        , m_rs(conn(), sql) {}
    QVector<SheetColumn> columns() const override { return m_columns; }
    bool next(QStringList& cells) override {
        if (m_rs.eof()) return false;
        cells.clear();
        for (int i = 0; i < m_columns.size(); ++i)
            cells << m_rs.text(i);
        m_rs.moveNext();
        return true;
    }

private:
    QVector<SheetColumn> m_columns;
    Recordset m_rs;
};

// Writes the rows as the file's suffix asks: .csv (UTF-8 with a byte-order mark, so spreadsheet
// programs show Chinese), anything else .xlsx (one sheet named after `sheetName`, captions in the
// first row, written in constant memory). Gives the rows written, or -1 with `error` set.
qint64 ExportRows(const QString& path, RowSource& source, const QString& sheetName, QString* error = nullptr);
qint64 WriteXlsx(const QString& path, RowSource& source, const QString& sheetName, QString* error = nullptr);
qint64 WriteCsv(const QString& path, RowSource& source, QString* error = nullptr);

// The days since 1899-12-30 that a spreadsheet stores a date as, and back.
double DateSerial(int year, int month, int day);
QString DateOfSerial(double serial);
// A date text in the usual forms (2024-01-05, 2024/1/5, 2024.1.5, 2024年1月5日, 20240105) as
// yyyy-mm-dd; the empty text when it is no valid date.
QString ParseDateText(const QString& text);

// A sheet read back: every non-empty row with its row number in the file (from 1). Only filled
// cells are kept, so a stray cell far to the right costs one entry, not thousands. A row whose cells
// cannot be taken as they are (a merged range, a formula without a value, a cell too long, a control
// character) carries the reason in `problem` and its readable cells.
struct SheetRow {
    int number = 0;
    QString problem;
    QVector<int> columns;  // the filled cells' columns (from 0), ascending
    QStringList texts;     // their texts
    QVector<int> numbers;  // columns whose cell the file holds as a number rather than as text
    QString cell(int col) const;
    bool isNumber(int col) const { return numbers.contains(col); }
    // Every cell up to the last filled one, the empty ones too; for short rows.
    QStringList cells() const;
    void setCell(int col, const QString& text);
};
struct SheetData {
    QVector<SheetRow> rows;
    QString error;          // the whole file refused: not a spreadsheet, unreadable, empty, too large
    QString sheet;          // the sheet read (.xlsx); empty for .csv
    QStringList sheets;     // the visible sheets looked at, in order
    bool noneAccepted = false; // no sheet passed SheetReading::accept
    bool typed = false;     // cells tell numbers from texts (.xlsx); a .csv holds texts only
};

// How a file is read. Whatever is asked, the reader keeps within fixed bounds (bytes unpacked,
// characters and strings kept, rows, the length of one cell) and refuses a file past them with
// the reason, so that no file can exhaust the memory.
struct SheetReading {
    // Rows kept at most; a file with more is refused (0: as many as a spreadsheet holds).
    int maxRows = 0;
    // Picks the sheet: called with the first `probeRows` rows of each visible sheet in order; the
    // first it takes is read whole. Without it the first visible sheet is read.
    std::function<bool(const SheetData& head)> accept;
    int probeRows = 10;
};

// The longest cell a spreadsheet holds; anything longer is refused as a row problem.
constexpr int kMaxCellChars = 32767;
// The most rows a sheet holds.
constexpr int kMaxSheetRows = 1048576;

// Reads an .xlsx file (shared and inline strings, numbers, dates by their number format in either
// date system, empty cells; hidden sheets are passed over) or a .csv file (UTF-8 with or without a
// byte-order mark, UTF-16 with one, else GB18030). Dates come as yyyy-mm-dd, numbers in their
// shortest exact form. A .csv cell that an export protected with a leading apostrophe (a text
// starting with = + - @) comes back as it was.
SheetData ReadSpreadsheet(const QString& path, const SheetReading& how = {});
SheetData ReadXlsx(const QString& path, const SheetReading& how = {});
SheetData ReadCsv(const QString& path, const SheetReading& how = {});
// The cells of CSV text, for tests and the reader.
SheetData ParseCsvText(const QString& text);

// The first character of a text that must not reach the database (a control character other than
// tab and line ends, a byte that could not be decoded, a lone surrogate); -1 when there is none.
int BadCharacterAt(QStringView text);

// The column letters of a 0-based column index: 0 -> A, 26 -> AA.
QString ColumnLetters(int col);

} // namespace zq
