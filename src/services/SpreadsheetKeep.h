#pragma once

// What the .xlsx and .csv readers share: the bounds they keep within, and the keeper that takes
// their rows, checks each cell and refuses the file once a bound is passed.

#include "Spreadsheets.h"

namespace zq::sheetread {

// Characters kept over all cells (and shared strings): twice that in bytes, with room to spare in
// the bounds the reading promises.
constexpr qint64 kMaxKeptChars = 100'000'000;
// Filled cells kept: each costs its text and a little more, in the reading and in what a check
// makes of it; five million (a hundred thousand rows of fifty) keep the import under a gigabyte.
constexpr qint64 kMaxKeptCells = 5'000'000;

inline QString notSheet() {
    return QStringLiteral("不是电子表格文件 (只能读 .xlsx 或 .csv)");
}

inline SheetData refusedFile(const QString& error) {
    SheetData d;
    d.error = error;
    return d;
}

inline void addProblem(SheetRow& row, const QString& problem) {
    if (!row.problem.isEmpty()) row.problem += QStringLiteral("; ");
    row.problem += problem;
}

// A cell of text being read: it stops growing past the longest cell, but counts what it was offered
// so that the message can say how long it was.
struct CellText {
    QString text;
    qint64 offered = 0;
    void clear() {
        text.clear();
        offered = 0;
    }
    void add(QStringView piece) {
        offered += piece.size();
        if (text.size() <= kMaxCellChars) text += piece.left(kMaxCellChars + 1 - text.size());
    }
    bool tooLong() const { return offered > kMaxCellChars; }
};

// Takes the rows read, up to the bounds; `error` says which bound a file passed.
class RowKeeper {
public:
    RowKeeper(SheetData& out, int maxRows)
        : m_out(out)
        , m_maxRows(maxRows > 0 ? maxRows : kMaxSheetRows) {}

    // Puts one read cell into the row: too long, or holding a character that must not be stored,
    // makes it a row problem instead. `ref` names the cell in messages.
    void cell(SheetRow& row, int col, const CellText& cell, const QString& ref, bool number = false) {
        if (cell.tooLong()) {
            addProblem(row, QStringLiteral("单元格 %1 过长 (%2 字)").arg(ref).arg(cell.offered));
            return;
        }
        if (cell.text.isEmpty()) return;
        const int bad = BadCharacterAt(cell.text);
        if (bad >= 0) {
            addProblem(row, QStringLiteral("单元格 %1 中有控制字符或无法识别的字符 (U+%2)")
                                .arg(ref)
                                .arg(cell.text.at(bad).unicode(), 4, 16, QLatin1Char('0')));
            return;
        }
        // A copy of exactly its size: the text was grown piece by piece, with room to spare.
        row.setCell(col, QString(cell.text.constData(), cell.text.size()));
        if (number) row.numbers << col;
        m_chars += cell.text.size();
        ++m_cells;
    }

    // Keeps a finished row unless it is empty. False once a bound is passed (the error is set).
    bool row(SheetRow&& row) {
        bool any = !row.problem.isEmpty();
        for (const QString& c : row.texts)
            any = any || !c.trimmed().isEmpty();
        if (!any) return true;
        if (m_out.rows.size() >= m_maxRows) {
            m_out.error = QStringLiteral("行数超过 %1, 请分成几个文件").arg(m_maxRows);
            return false;
        }
        m_out.rows << std::move(row);
        if (m_cells > kMaxKeptCells) {
            m_out.error = QStringLiteral("文件中的单元格超过 %1 万个, 请分成几个文件").arg(kMaxKeptCells / 10000);
            return false;
        }
        return charsWithin();
    }

    // Characters kept elsewhere (the shared strings) count too.
    void count(qint64 chars) { m_chars += chars; }
    bool charsWithin() {
        if (m_chars <= kMaxKeptChars) return true;
        m_out.error = QStringLiteral("文件中的文字超过 %1 万字, 请分成几个文件").arg(kMaxKeptChars / 10000);
        return false;
    }

private:
    SheetData& m_out;
    int m_maxRows;
    qint64 m_chars = 0;
    qint64 m_cells = 0;
};

} // namespace zq::sheetread
