// Reading .csv files: decoded and parsed in pieces, so that a large file is never held whole, with
// the same bounds and cell checks as the .xlsx reader.

#include "SpreadsheetKeep.h"
#include "Spreadsheets.h"

#include <QFile>
#include <QStringDecoder>

namespace zq {

using namespace sheetread;

namespace {
constexpr qint64 kPiece = 1 << 20;

// A text an export protected from being taken for a formula: the apostrophe goes again.
bool isProtected(const QString& cell) {
    if (cell.size() < 2 || cell.at(0) != QLatin1Char('\'')) return false;
    const QChar c = cell.at(1);
    return c == QLatin1Char('=') || c == QLatin1Char('+') || c == QLatin1Char('-') || c == QLatin1Char('@') ||
           c == QLatin1Char('\t') || c == QLatin1Char('\r');
}

// The CSV state machine, fed text in pieces.
class CsvParser {
public:
    CsvParser(SheetData& out, int maxRows)
        : m_out(out)
        , m_keep(out, maxRows) {
        m_row.number = 1;
    }

    // False once the file is refused (a bound passed).
    bool feed(QStringView text) {
        if (!m_started) {
            if (text.startsWith(QChar(0xFEFF))) text = text.mid(1);
            // A file saved by a spreadsheet program in some places separates by tabs or semicolons.
            const qsizetype end = text.indexOf(QLatin1Char('\n'));
            const QStringView first = end < 0 ? text : text.left(end);
            if (!first.contains(m_sep)) {
                if (first.contains(QLatin1Char('\t'))) m_sep = QLatin1Char('\t');
                else if (first.contains(QLatin1Char(';'))) m_sep = QLatin1Char(';');
            }
            m_started = true;
        }
        for (qsizetype i = 0; i < text.size(); ++i) {
            const QChar ch = text.at(i);
            if (m_pendingQuote) {
                // A quote inside quotes ended the field unless another one follows.
                m_pendingQuote = false;
                if (ch == QLatin1Char('"')) {
                    m_cell.add(QStringView(&ch, 1));
                    continue;
                }
                m_quoted = false;
            }
            if (m_quoted) {
                if (ch == QLatin1Char('"')) {
                    m_pendingQuote = true;
                } else {
                    if (ch == QLatin1Char('\n')) ++m_line;
                    m_cell.add(QStringView(&ch, 1));
                }
            } else if (ch == QLatin1Char('"') && m_cell.offered == 0 && !m_wasQuoted) {
                m_quoted = m_wasQuoted = true;
            } else if (ch == m_sep) {
                endCell();
            } else if (ch == QLatin1Char('\n')) {
                ++m_line;
                if (!endRow()) return false;
            } else if (ch != QLatin1Char('\r')) {
                m_cell.add(QStringView(&ch, 1));
            }
        }
        return true;
    }

    void finish() {
        m_pendingQuote = false;
        const bool open = m_quoted;
        if (open) addProblem(m_row, QStringLiteral("引号不成对"));
        if (m_cell.offered > 0 || m_col > 0 || open) endRow();
        if (m_out.error.isEmpty() && m_out.rows.isEmpty()) m_out.error = QStringLiteral("工作表是空的");
    }

private:
    void endCell() {
        if (isProtected(m_cell.text)) m_cell.text.remove(0, 1);
        m_keep.cell(m_row, m_col, m_cell, ColumnLetters(m_col) + QString::number(m_row.number));
        ++m_col;
        m_cell.clear();
        m_wasQuoted = false;
    }
    bool endRow() {
        endCell();
        const bool kept = m_keep.row(std::move(m_row));
        m_row = SheetRow();
        m_row.number = m_line;
        m_col = 0;
        return kept;
    }

    SheetData& m_out;
    RowKeeper m_keep;
    SheetRow m_row;
    CellText m_cell;
    QChar m_sep = QLatin1Char(',');
    int m_line = 1;
    int m_col = 0;
    bool m_started = false, m_quoted = false, m_wasQuoted = false, m_pendingQuote = false;
};

} // namespace

SheetData ReadCsv(const QString& path, const SheetReading& how) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return sheetread::refusedFile(QStringLiteral("不能读文件 %1").arg(path));
    const QByteArray head = f.peek(4096);
    QStringDecoder::Encoding encoding = QStringDecoder::Utf8;
    if (head.startsWith("\xFF\xFE")) encoding = QStringDecoder::Utf16LE;
    else if (head.startsWith("\xFE\xFF")) encoding = QStringDecoder::Utf16BE;
    else if (head.startsWith("PK\x03\x04") || head.contains('\0')) return refusedFile(notSheet());

    // UTF-8 unless a byte says otherwise; then the whole file again as GB18030.
    SheetData out;
    for (const bool gb : {false, true}) {
        if (gb && encoding != QStringDecoder::Utf8) break;
        QStringDecoder decoder = gb ? QStringDecoder("GB18030") : QStringDecoder(encoding);
        if (!decoder.isValid()) break;
        out = SheetData();
        f.seek(0);
        CsvParser parser(out, how.maxRows);
        bool fed = true, undecodable = false;
        while (fed && !f.atEnd()) {
            const QString text = decoder.decode(f.read(kPiece));
            if (decoder.hasError()) {
                undecodable = true;
                break;
            }
            fed = parser.feed(text);
        }
        if (!undecodable) {
            if (fed) {
                const QString rest = decoder.decode(QByteArrayView());
                undecodable = decoder.hasError();
                if (!undecodable) parser.feed(rest);
            }
        }
        if (undecodable && !gb && encoding == QStringDecoder::Utf8) continue;
        if (undecodable) return sheetread::refusedFile(QStringLiteral("文件中有无法识别的字节: 既不是 UTF-8 也不是 GB18030 编码的文字"));
        if (fed) parser.finish();
        if (!out.error.isEmpty()) out.rows.clear();
        break;
    }
    if (out.error.isEmpty() && how.accept) {
        SheetData head;
        head.rows = out.rows.mid(0, qMax(1, how.probeRows));
        if (!how.accept(head)) {
            out.rows.clear();
            out.noneAccepted = true;
            out.error = QStringLiteral("文件不合要求");
        }
    }
    return out;
}

SheetData ParseCsvText(const QString& text) {
    SheetData out;
    CsvParser parser(out, 0);
    if (parser.feed(text)) parser.finish();
    return out;
}

} // namespace zq
