// Reading spreadsheets: the sheets of an .xlsx file through the zip and XML readers, streamed and
// bounded; the rows kept sparse. The .csv reader is in SpreadsheetCsv.cpp.

#include "SpreadsheetKeep.h"
#include "Spreadsheets.h"

#include <algorithm>
#include <cmath>
#include <queue>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QXmlStreamReader>
#include <zip.h>

namespace zq {

using namespace sheetread;

namespace {

// What a member may unpack to: the sheet itself is streamed, the small parts are read whole. A zip
// of a few hundred kilobytes can unpack to gigabytes; these stop it.
constexpr qint64 kMaxSheetBytes = qint64(1) << 30;
constexpr qint64 kMaxSharedBytes = qint64(512) << 20;
constexpr qint64 kMaxPartBytes = qint64(32) << 20;
// No text or markup in a sheet runs this long without a < or a >: the longest cell, escaped, is a
// fraction of it. A longer run is a hostile file, told before the XML reader buffers it.
constexpr qint64 kMaxRun = qint64(1) << 20;
constexpr int kMaxSharedStrings = 4'000'000;
constexpr int kMaxMerges = 1'000'000;
// A workbook in the 1904 date system counts its days from 1904-01-01.
constexpr int k1904Offset = 1462;

// One open zip container; members are fed in pieces, never more than their bound.
class Zip {
public:
    explicit Zip(const QString& path) {
        int error = 0;
        m_zip = zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY, &error);
    }
    ~Zip() {
        if (m_zip) zip_discard(m_zip);
    }
    Zip(const Zip&) = delete;
    Zip& operator=(const Zip&) = delete;
    bool isOpen() const { return m_zip; }
    bool has(const QString& member) const {
        return m_zip && zip_name_locate(m_zip, member.toUtf8().constData(), 0) >= 0;
    }
    enum Result { Read, Missing, TooLarge, Broken };
    // Calls `take` with each piece of the member until it gives false; TooLarge past `limit` bytes.
    template <typename F>
    Result read(const QString& member, qint64 limit, F take) const {
        zip_file_t* f = m_zip ? zip_fopen(m_zip, member.toUtf8().constData(), 0) : nullptr;
        if (!f) return Missing;
        QByteArray piece(1 << 18, Qt::Uninitialized);
        qint64 total = 0;
        Result result = Read;
        for (;;) {
            const zip_int64_t n = zip_fread(f, piece.data(), zip_uint64_t(piece.size()));
            if (n < 0) result = Broken;
            if (n <= 0) break;
            total += n;
            if (total > limit) {
                result = TooLarge;
                break;
            }
            if (!take(QByteArray(piece.constData(), qsizetype(n)))) break;
        }
        zip_fclose(f);
        return result;
    }
    QByteArray whole(const QString& member, Result* result = nullptr) const {
        QByteArray data;
        const Result r = read(member, kMaxPartBytes, [&](const QByteArray& p) {
            data += p;
            return true;
        });
        if (result) *result = r;
        return r == TooLarge ? QByteArray() : data;
    }

private:
    zip_t* m_zip = nullptr;
};

QString tooLarge(const QString& what, qint64 limit) {
    return QStringLiteral("%1解压后超过 %2 MB, 不能读").arg(what).arg(limit >> 20);
}

// The cells' texts escape characters XML cannot hold as _xHHHH_ (a line end as _x000D_).
QString unescaped(const QString& text) {
    if (!text.contains(QLatin1String("_x"))) return text;
    static const QRegularExpression escape(QStringLiteral("_x([0-9A-Fa-f]{4})_"));
    QString out;
    qsizetype at = 0;
    for (QRegularExpressionMatchIterator it = escape.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        out += QStringView(text).mid(at, m.capturedStart() - at);
        out += QChar(char16_t(m.captured(1).toUShort(nullptr, 16)));
        at = m.capturedEnd();
    }
    out += QStringView(text).mid(at);
    return out;
}

// Watches the raw bytes for a run without markup longer than any cell can be.
class RunWatch {
public:
    bool ok(const QByteArray& piece) {
        for (const char ch : piece) {
            if (ch == '<' || ch == '>') m_run = 0;
            else if (++m_run > kMaxRun) return false;
        }
        return true;
    }

private:
    qint64 m_run = 0;
};

struct SheetEntry {
    QString name;
    QString member;
};

struct Workbook {
    QVector<SheetEntry> visible;
    bool date1904 = false;
    QString error;
};

// The visible sheets in their order, through the workbook and its relations, and the date system.
Workbook readWorkbook(const Zip& zip) {
    Workbook wb;
    Zip::Result result = Zip::Read;
    QHash<QString, QString> targets;
    QXmlStreamReader rels(zip.whole(QStringLiteral("xl/_rels/workbook.xml.rels"), &result));
    while (!rels.atEnd())
        if (rels.readNext() == QXmlStreamReader::StartElement && rels.name() == QLatin1String("Relationship"))
            targets.insert(rels.attributes().value(QStringLiteral("Id")).toString(),
                           rels.attributes().value(QStringLiteral("Target")).toString());
    QXmlStreamReader r(zip.whole(QStringLiteral("xl/workbook.xml"), &result));
    if (result == Zip::TooLarge) {
        wb.error = tooLarge(QStringLiteral("工作簿"), kMaxPartBytes);
        return wb;
    }
    while (!r.atEnd()) {
        if (r.readNext() != QXmlStreamReader::StartElement) continue;
        const QXmlStreamAttributes a = r.attributes();
        if (r.name() == QLatin1String("workbookPr")) {
            const QStringView d = a.value(QStringLiteral("date1904"));
            wb.date1904 = d == QLatin1String("1") || d == QLatin1String("true");
        } else if (r.name() == QLatin1String("sheet")) {
            if (a.value(QStringLiteral("state")) == QLatin1String("hidden") ||
                a.value(QStringLiteral("state")) == QLatin1String("veryHidden"))
                continue;
            QString id;
            for (const QXmlStreamAttribute& at : a)
                if (at.name() == QLatin1String("id")) id = at.value().toString();
            QString target = targets.value(id);
            if (target.isEmpty()) continue;
            const QString member = target.startsWith(QLatin1Char('/')) ? target.mid(1) : QStringLiteral("xl/") + target;
            if (zip.has(member)) wb.visible << SheetEntry{a.value(QStringLiteral("name")).toString(), member};
        }
    }
    // A file without a workbook part still has its one sheet under the usual name.
    if (wb.visible.isEmpty() && targets.isEmpty() && zip.has(QStringLiteral("xl/worksheets/sheet1.xml")))
        wb.visible << SheetEntry{QStringLiteral("Sheet1"), QStringLiteral("xl/worksheets/sheet1.xml")};
    return wb;
}

// The shared strings, streamed and bounded; each cut at the longest cell, with its full length
// kept beside it so that a cell using it can say so.
struct SharedStrings {
    QStringList texts;
    QHash<int, qint64> overlong; // index -> the length offered
    QString error;
};

SharedStrings sharedStrings(const Zip& zip) {
    SharedStrings out;
    QXmlStreamReader r;
    CellText text;
    int phonetic = 0; // the reading aids of East Asian text are not part of the value
    bool inT = false;
    RunWatch watch;
    qint64 chars = 0;
    const auto process = [&] {
        while (!r.atEnd()) {
            const QXmlStreamReader::TokenType t = r.readNext();
            if (t == QXmlStreamReader::StartElement) {
                if (r.name() == QLatin1String("si")) text.clear();
                else if (r.name() == QLatin1String("rPh")) ++phonetic;
                else if (r.name() == QLatin1String("t") && !phonetic) inT = true;
            } else if (t == QXmlStreamReader::Characters && inT) {
                text.add(r.text());
            } else if (t == QXmlStreamReader::EndElement) {
                if (r.name() == QLatin1String("t")) inT = false;
                else if (r.name() == QLatin1String("rPh")) --phonetic;
                else if (r.name() == QLatin1String("si")) {
                    if (out.texts.size() >= kMaxSharedStrings) {
                        out.error = QStringLiteral("共享字符串超过 %1 个, 不能读").arg(kMaxSharedStrings);
                        return false;
                    }
                    if (text.tooLong()) out.overlong.insert(int(out.texts.size()), text.offered);
                    out.texts << unescaped(text.text);
                    chars += text.text.size();
                    if (chars > sheetread::kMaxKeptChars) {
                        out.error = QStringLiteral("共享字符串超过 %1 万字, 不能读").arg(sheetread::kMaxKeptChars / 10000);
                        return false;
                    }
                }
            }
        }
        return true;
    };
    const Zip::Result result = zip.read(QStringLiteral("xl/sharedStrings.xml"), kMaxSharedBytes, [&](const QByteArray& piece) {
        if (!watch.ok(piece)) {
            out.error = QStringLiteral("共享字符串中有超过 1 MB 的单个文字, 文件可能已损坏");
            return false;
        }
        r.addData(piece);
        return process();
    });
    if (result == Zip::TooLarge) out.error = tooLarge(QStringLiteral("共享字符串"), kMaxSharedBytes);
    return out;
}

bool isDateFormatCode(QString code) {
    code.remove(QRegularExpression(QStringLiteral("\"[^\"]*\"|\\[[^\\]]*\\]|\\\\.")));
    code = code.toLower();
    if (code.contains(QLatin1String("general"))) return false;
    return code.contains(QLatin1Char('y')) || code.contains(QLatin1Char('d')) ||
           (code.contains(QLatin1Char('m')) && !code.contains(QLatin1Char('h')) && !code.contains(QLatin1Char('s')));
}

bool isBuiltInDate(int id) {
    return (id >= 14 && id <= 17) || (id >= 27 && id <= 36) || (id >= 50 && id <= 58);
}

// For each cell style (the s attribute), whether it shows a date.
QVector<bool> dateStyles(const Zip& zip) {
    QHash<int, QString> formats;
    QVector<bool> out;
    QXmlStreamReader r(zip.whole(QStringLiteral("xl/styles.xml")));
    bool inCellXfs = false;
    while (!r.atEnd()) {
        r.readNext();
        if (r.isStartElement()) {
            if (r.name() == QLatin1String("numFmt"))
                formats.insert(r.attributes().value(QStringLiteral("numFmtId")).toInt(),
                               r.attributes().value(QStringLiteral("formatCode")).toString());
            else if (r.name() == QLatin1String("cellXfs"))
                inCellXfs = true;
            else if (inCellXfs && r.name() == QLatin1String("xf")) {
                const int id = r.attributes().value(QStringLiteral("numFmtId")).toInt();
                out << (formats.contains(id) ? isDateFormatCode(formats.value(id)) : isBuiltInDate(id));
            }
        } else if (r.isEndElement() && r.name() == QLatin1String("cellXfs")) {
            inCellXfs = false;
        }
    }
    return out;
}

// "C12" -> column 2 (from 0), row 12.
bool parseRef(QStringView ref, int& col, int& row) {
    col = 0;
    qsizetype i = 0;
    for (; i < ref.size() && ref.at(i).isLetter() && i < 4; ++i)
        col = col * 26 + (ref.at(i).toUpper().unicode() - u'A' + 1);
    bool ok = false;
    row = ref.mid(i).toInt(&ok);
    col -= 1;
    return ok && col >= 0 && col < 16384 && i > 0;
}

// A number as the shortest text that reads back as the same number.
QString numberText(double v) {
    if (std::isfinite(v) && v == std::floor(v) && std::fabs(v) < 1e15) return QString::number(qint64(v));
    return QString::number(v, 'g', QLocale::FloatingPointShortest);
}

struct Merge {
    int first = 0, last = 0;
    QString ref;
};

// Marks every kept row inside a merged range: one pass over the rows and the ranges, both by
// their first row, with the ranges begun and not yet ended in a queue by their last row.
void markMerges(QVector<Merge>& merges, QVector<SheetRow>& rows, const QString& prefix) {
    std::sort(merges.begin(), merges.end(), [](const Merge& a, const Merge& b) { return a.first < b.first; });
    // Rows come in ascending order in any file a program writes; one out of order is still marked.
    std::vector<int> order(size_t(rows.size()));
    for (int i = 0; i < rows.size(); ++i)
        order[size_t(i)] = i;
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return rows.at(a).number < rows.at(b).number; });
    const auto endsLater = [&](int a, int b) { return merges.at(a).last > merges.at(b).last; };
    std::priority_queue<int, std::vector<int>, decltype(endsLater)> live(endsLater);
    int next = 0;
    for (int i : order) {
        SheetRow& row = rows[i];
        while (next < merges.size() && merges.at(next).first <= row.number)
            live.push(next++);
        while (!live.empty() && merges.at(live.top()).last < row.number)
            live.pop();
        if (!live.empty()) addProblem(row, QStringLiteral("合并单元格 %1%2").arg(prefix, merges.at(live.top()).ref));
    }
}

// Reads one sheet member into `out`, the first `probe` rows only when probe > 0.
void readSheet(const Zip& zip, const SheetEntry& entry, const SharedStrings& shared, const QVector<bool>& dates,
               bool date1904, int probe, int maxRows, SheetData& out) {
    out.rows.clear();
    out.error.clear();
    out.sheet = entry.name;
    RowKeeper keep(out, maxRows);
    const QString prefix = entry.name.isEmpty() ? QString() : entry.name + QLatin1Char('!');
    QVector<Merge> merges;

    QXmlStreamReader r;
    SheetRow row;
    int rowNumber = 0, col = -1, style = 0;
    QString type, cellRef;
    CellText value, inlineText;
    bool formula = false, inRow = false;
    int phonetic = 0;
    CellText* target = nullptr;
    bool stop = false;
    const auto endCell = [&] {
        CellText text;
        bool number = false;
        if (type == QLatin1String("s")) {
            const int i = value.text.trimmed().toInt();
            if (i >= 0 && i < shared.texts.size()) {
                text.text = shared.texts.at(i);
                text.offered = shared.overlong.value(i, text.text.size());
            }
        } else if (type == QLatin1String("inlineStr")) {
            text = inlineText;
            text.text = unescaped(text.text);
        } else if (type == QLatin1String("str") || type == QLatin1String("e") || type == QLatin1String("d")) {
            text = value;
            text.text = type == QLatin1String("d") ? value.text.left(10) : unescaped(value.text);
        } else if (type == QLatin1String("b")) {
            text.text = value.text.trimmed() == QLatin1String("1") ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
        } else if (!value.text.trimmed().isEmpty()) {
            bool ok = false;
            const double v = value.text.trimmed().toDouble(&ok);
            if (!ok) text = value;
            else if (style >= 0 && style < dates.size() && dates.at(style))
                text.text = DateOfSerial(date1904 ? v + k1904Offset : v);
            else {
                text.text = numberText(v);
                number = true;
            }
        }
        // A formula whose result was never stored (some programs write none, or an empty one) has
        // no value to take: the row is refused rather than taken as empty.
        if (formula && value.text.isEmpty() && inlineText.text.isEmpty())
            addProblem(row, QStringLiteral("单元格 %1%2 是公式, 没有计算结果").arg(prefix, cellRef));
        keep.cell(row, col, text, prefix + cellRef, number);
    };
    const auto process = [&] {
        while (!r.atEnd() && !stop) {
            const QXmlStreamReader::TokenType t = r.readNext();
            if (t == QXmlStreamReader::StartElement) {
                const QStringView n = r.name();
                if (n == QLatin1String("row")) {
                    row = SheetRow();
                    const int number = r.attributes().value(QStringLiteral("r")).toInt();
                    rowNumber = number > rowNumber ? number : rowNumber + 1;
                    row.number = rowNumber;
                    col = -1;
                    inRow = true;
                } else if (n == QLatin1String("c") && inRow) {
                    type = r.attributes().value(QStringLiteral("t")).toString();
                    style = r.attributes().value(QStringLiteral("s")).toInt();
                    int c = 0, rr = 0;
                    cellRef = r.attributes().value(QStringLiteral("r")).toString();
                    col = parseRef(cellRef, c, rr) ? c : col + 1;
                    if (cellRef.isEmpty() || col != c) cellRef = ColumnLetters(col) + QString::number(rowNumber);
                    value.clear();
                    inlineText.clear();
                    formula = false;
                } else if (n == QLatin1String("v")) {
                    target = &value;
                } else if (n == QLatin1String("t") && !phonetic) {
                    target = &inlineText;
                } else if (n == QLatin1String("rPh")) {
                    ++phonetic;
                } else if (n == QLatin1String("f")) {
                    formula = true;
                } else if (n == QLatin1String("mergeCell")) {
                    const QStringList ends = r.attributes().value(QStringLiteral("ref")).toString().split(QLatin1Char(':'));
                    int c1 = 0, r1 = 0, c2 = 0, r2 = 0;
                    if (ends.size() == 2 && parseRef(ends.at(0), c1, r1) && parseRef(ends.at(1), c2, r2)) {
                        if (merges.size() >= kMaxMerges) {
                            out.error = QStringLiteral("合并单元格超过 %1 处, 不能读").arg(kMaxMerges);
                            stop = true;
                        } else {
                            merges << Merge{qMin(r1, r2), qMax(r1, r2), ends.join(QLatin1Char(':'))};
                        }
                    }
                }
            } else if (t == QXmlStreamReader::Characters && target) {
                target->add(r.text());
            } else if (t == QXmlStreamReader::EndElement) {
                const QStringView n = r.name();
                if (n == QLatin1String("v") || n == QLatin1String("t")) {
                    target = nullptr;
                } else if (n == QLatin1String("rPh")) {
                    --phonetic;
                } else if (n == QLatin1String("c") && inRow) {
                    if (col >= 0) endCell();
                } else if (n == QLatin1String("row")) {
                    inRow = false;
                    if (!keep.row(std::move(row))) stop = true;
                    else if (probe > 0 && out.rows.size() >= probe) stop = true;
                }
            }
        }
        return !stop;
    };
    RunWatch watch;
    // The sheet is fed in pieces, so a large one is never held whole as XML.
    const Zip::Result result = zip.read(entry.member, kMaxSheetBytes, [&](const QByteArray& piece) {
        if (!watch.ok(piece)) {
            out.error = QStringLiteral("工作表“%1”中有超过 1 MB 的单个单元格或标记, 文件可能已损坏").arg(entry.name);
            return false;
        }
        r.addData(piece);
        return process();
    });
    if (result == Zip::TooLarge) out.error = tooLarge(QStringLiteral("工作表“%1”").arg(entry.name), kMaxSheetBytes);
    else if (result == Zip::Broken && out.error.isEmpty()) out.error = QStringLiteral("工作表“%1”的压缩数据损坏").arg(entry.name);
    if (out.error.isEmpty() && !stop && r.hasError() && r.error() != QXmlStreamReader::PrematureEndOfDocumentError)
        out.error = QStringLiteral("工作表“%1”的内容损坏: %2").arg(entry.name, r.errorString());
    if (!out.error.isEmpty()) {
        out.rows.clear();
        return;
    }
    markMerges(merges, out.rows, prefix);
}

} // namespace

QString SheetRow::cell(int col) const {
    const auto it = std::lower_bound(columns.cbegin(), columns.cend(), col);
    return it != columns.cend() && *it == col ? texts.at(it - columns.cbegin()) : QString();
}

QStringList SheetRow::cells() const {
    QStringList out;
    for (int i = 0; i < columns.size(); ++i) {
        while (out.size() < columns.at(i))
            out << QString();
        out << texts.at(i);
    }
    return out;
}

void SheetRow::setCell(int col, const QString& text) {
    const auto it = std::lower_bound(columns.begin(), columns.end(), col);
    const qsizetype at = it - columns.begin();
    if (it != columns.end() && *it == col) {
        texts[at] = text;
        return;
    }
    columns.insert(at, col);
    texts.insert(at, text);
}

int BadCharacterAt(QStringView text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        if ((c < 0x20 && c != u'\t' && c != u'\n' && c != u'\r') || c == 0x7F || c == 0xFFFD || c == 0xFFFE ||
            c == 0xFFFF)
            return int(i);
        if (QChar::isHighSurrogate(c)) {
            if (i + 1 < text.size() && QChar::isLowSurrogate(text.at(i + 1).unicode())) ++i;
            else return int(i);
        } else if (QChar::isLowSurrogate(c)) {
            return int(i);
        }
    }
    return -1;
}

SheetData ReadSpreadsheet(const QString& path, const SheetReading& how) {
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (!QFileInfo(path).isFile()) return sheetread::refusedFile(QStringLiteral("文件 %1 不存在").arg(path));
    if (suffix == QLatin1String("xlsx") || suffix == QLatin1String("xlsm")) return ReadXlsx(path, how);
    if (suffix == QLatin1String("csv") || suffix == QLatin1String("txt")) return ReadCsv(path, how);
    if (suffix == QLatin1String("xls")) return sheetread::refusedFile(QStringLiteral("旧的 .xls 格式不能读, 请另存为 .xlsx 或 .csv"));
    return refusedFile(notSheet());
}

SheetData ReadXlsx(const QString& path, const SheetReading& how) {
    SheetData out;
    out.typed = true;
    Zip zip(path);
    if (!zip.isOpen()) {
        out.error = notSheet();
        return out;
    }
    const Workbook wb = readWorkbook(zip);
    if (!wb.error.isEmpty()) {
        out.error = wb.error;
        return out;
    }
    if (wb.visible.isEmpty()) {
        out.error = zip.has(QStringLiteral("xl/workbook.xml")) ? QStringLiteral("工作簿中没有可见的工作表") : notSheet();
        return out;
    }
    const SharedStrings shared = sharedStrings(zip);
    if (!shared.error.isEmpty()) {
        out.error = shared.error;
        return out;
    }
    const QVector<bool> dates = dateStyles(zip);
    for (const SheetEntry& e : wb.visible)
        out.sheets << e.name;
    for (const SheetEntry& e : wb.visible) {
        if (how.accept) {
            readSheet(zip, e, shared, dates, wb.date1904, qMax(1, how.probeRows), how.maxRows, out);
            if (!out.error.isEmpty()) return out;
            if (!how.accept(out)) continue;
        }
        readSheet(zip, e, shared, dates, wb.date1904, 0, how.maxRows, out);
        if (out.error.isEmpty() && out.rows.isEmpty()) out.error = QStringLiteral("工作表“%1”是空的").arg(e.name);
        return out;
    }
    out.rows.clear();
    out.sheet.clear();
    out.noneAccepted = true;
    out.error = QStringLiteral("工作表 %1 都不合要求").arg(out.sheets.join(QStringLiteral("、")));
    return out;
}

} // namespace zq
