// Reading spreadsheets: the first sheet of an .xlsx file through the zip and XML readers, and .csv text.

#include "Documents.h"
#include "Spreadsheets.h"

#include <cmath>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QXmlStreamReader>
#include <zip.h>

namespace zq {

namespace {

const QString kNotSheet = QStringLiteral("不是电子表格文件 (只能读 .xlsx 或 .csv)");

// One open zip container; members are read whole (the small parts) or fed in pieces (the sheet).
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
    // Calls `take` with each piece of the member; false when it is missing.
    template <typename F>
    bool read(const QString& member, F take) const {
        zip_file_t* f = m_zip ? zip_fopen(m_zip, member.toUtf8().constData(), 0) : nullptr;
        if (!f) return false;
        QByteArray piece(1 << 18, Qt::Uninitialized);
        for (zip_int64_t n; (n = zip_fread(f, piece.data(), zip_uint64_t(piece.size()))) > 0;)
            take(QByteArray(piece.constData(), qsizetype(n)));
        zip_fclose(f);
        return true;
    }
    QByteArray whole(const QString& member) const {
        QByteArray data;
        read(member, [&](const QByteArray& p) { data += p; });
        return data;
    }

private:
    zip_t* m_zip = nullptr;
};

// The first sheet's member: through the workbook and its relations, else the usual name.
QString firstSheetMember(const Zip& zip) {
    QString rid;
    QXmlStreamReader wb(zip.whole(QStringLiteral("xl/workbook.xml")));
    while (!wb.atEnd() && rid.isEmpty())
        if (wb.readNext() == QXmlStreamReader::StartElement && wb.name() == QLatin1String("sheet"))
            for (const QXmlStreamAttribute& a : wb.attributes())
                if (a.name() == QLatin1String("id")) rid = a.value().toString();
    QXmlStreamReader rels(zip.whole(QStringLiteral("xl/_rels/workbook.xml.rels")));
    while (!rid.isEmpty() && !rels.atEnd()) {
        if (rels.readNext() != QXmlStreamReader::StartElement || rels.name() != QLatin1String("Relationship") ||
            rels.attributes().value(QStringLiteral("Id")) != rid)
            continue;
        const QString target = rels.attributes().value(QStringLiteral("Target")).toString();
        const QString member = target.startsWith(QLatin1Char('/')) ? target.mid(1) : QStringLiteral("xl/") + target;
        if (zip.has(member)) return member;
    }
    return QStringLiteral("xl/worksheets/sheet1.xml");
}

QStringList sharedStrings(const Zip& zip) {
    QStringList out;
    QXmlStreamReader r(zip.whole(QStringLiteral("xl/sharedStrings.xml")));
    QString text;
    int phonetic = 0; // the reading aids of East Asian text are not part of the value
    while (!r.atEnd()) {
        r.readNext();
        if (r.isStartElement()) {
            if (r.name() == QLatin1String("si")) text.clear();
            else if (r.name() == QLatin1String("rPh")) ++phonetic;
            else if (r.name() == QLatin1String("t") && !phonetic) text += r.readElementText(QXmlStreamReader::IncludeChildElements);
        } else if (r.isEndElement()) {
            if (r.name() == QLatin1String("rPh")) --phonetic;
            else if (r.name() == QLatin1String("si")) out << text;
        }
    }
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
    for (; i < ref.size() && ref.at(i).isLetter(); ++i)
        col = col * 26 + (ref.at(i).toUpper().unicode() - u'A' + 1);
    bool ok = false;
    row = ref.mid(i).toInt(&ok);
    col -= 1;
    return ok && col >= 0 && i > 0;
}

QString numberText(double v) {
    if (std::isfinite(v) && v == std::floor(v) && std::fabs(v) < 1e15) return QString::number(qint64(v));
    return QString::number(v, 'g', 15);
}

void addProblem(SheetRow& row, const QString& problem) {
    if (!row.problem.isEmpty()) row.problem += QStringLiteral("; ");
    row.problem += problem;
}

} // namespace

SheetData ReadSpreadsheet(const QString& path) {
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (!QFileInfo(path).isFile()) return {{}, QStringLiteral("文件 %1 不存在").arg(path)};
    if (suffix == QLatin1String("xlsx") || suffix == QLatin1String("xlsm")) return ReadXlsx(path);
    if (suffix == QLatin1String("csv") || suffix == QLatin1String("txt")) return ReadCsv(path);
    if (suffix == QLatin1String("xls")) return {{}, QStringLiteral("旧的 .xls 格式不能读, 请另存为 .xlsx 或 .csv")};
    return {{}, kNotSheet};
}

SheetData ReadXlsx(const QString& path) {
    SheetData out;
    Zip zip(path);
    const QString member = zip.isOpen() ? firstSheetMember(zip) : QString();
    if (!zip.isOpen() || !zip.has(member)) {
        out.error = kNotSheet;
        return out;
    }
    const QStringList shared = sharedStrings(zip);
    const QVector<bool> dates = dateStyles(zip);
    QVector<QString> merged;

    QXmlStreamReader r;
    SheetRow row;
    int rowNumber = 0, col = -1, style = 0;
    QString type, value, inlineText, cellRef;
    bool formula = false, hasValue = false;
    int textDepth = 0; // inside <v>, or a <t> of an inline string
    QString* target = nullptr;
    const auto endCell = [&] {
        QString text;
        if (type == QLatin1String("s")) {
            const int i = value.trimmed().toInt();
            text = i >= 0 && i < shared.size() ? shared.at(i) : QString();
        } else if (type == QLatin1String("inlineStr")) {
            text = inlineText;
        } else if (type == QLatin1String("str") || type == QLatin1String("e") || type == QLatin1String("d")) {
            text = type == QLatin1String("d") ? value.left(10) : value;
        } else if (type == QLatin1String("b")) {
            text = value.trimmed() == QLatin1String("1") ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
        } else if (!value.isEmpty()) {
            bool ok = false;
            const double v = value.toDouble(&ok);
            text = !ok ? value : (style >= 0 && style < dates.size() && dates.at(style)) ? DateOfSerial(v) : numberText(v);
        }
        if (formula && !hasValue) addProblem(row, QStringLiteral("单元格 %1 是公式, 没有计算结果").arg(cellRef));
        if (text.size() > kMaxCellChars) {
            addProblem(row, QStringLiteral("单元格 %1 过长 (%2 字)").arg(cellRef).arg(text.size()));
            text.clear();
        }
        if (col >= 0 && col < 16384 && !text.isEmpty()) {
            while (row.cells.size() <= col)
                row.cells << QString();
            row.cells[col] = text;
        }
    };
    const auto process = [&] {
        while (!r.atEnd()) {
            const QXmlStreamReader::TokenType t = r.readNext();
            if (t == QXmlStreamReader::StartElement) {
                const QStringView n = r.name();
                if (n == QLatin1String("row")) {
                    row = SheetRow();
                    const int number = r.attributes().value(QStringLiteral("r")).toInt();
                    rowNumber = number > 0 ? number : rowNumber + 1;
                    row.number = rowNumber;
                    col = -1;
                } else if (n == QLatin1String("c")) {
                    type = r.attributes().value(QStringLiteral("t")).toString();
                    style = r.attributes().value(QStringLiteral("s")).toInt();
                    int c = 0, rr = 0;
                    cellRef = r.attributes().value(QStringLiteral("r")).toString();
                    col = parseRef(cellRef, c, rr) ? c : col + 1;
                    if (cellRef.isEmpty()) cellRef = ColumnLetters(col) + QString::number(rowNumber);
                    value.clear();
                    inlineText.clear();
                    formula = hasValue = false;
                } else if (n == QLatin1String("v")) {
                    target = &value;
                    hasValue = true;
                    ++textDepth;
                } else if (n == QLatin1String("t")) {
                    target = &inlineText;
                    ++textDepth;
                } else if (n == QLatin1String("f")) {
                    formula = true;
                } else if (n == QLatin1String("mergeCell")) {
                    merged << r.attributes().value(QStringLiteral("ref")).toString();
                }
            } else if (t == QXmlStreamReader::Characters && textDepth > 0 && target) {
                *target += r.text();
            } else if (t == QXmlStreamReader::EndElement) {
                const QStringView n = r.name();
                if (n == QLatin1String("v") || n == QLatin1String("t")) {
                    textDepth = qMax(0, textDepth - 1);
                    target = nullptr;
                } else if (n == QLatin1String("c")) {
                    endCell();
                } else if (n == QLatin1String("row")) {
                    bool any = !row.problem.isEmpty();
                    for (const QString& c : row.cells)
                        any = any || !c.trimmed().isEmpty();
                    if (any) out.rows << row;
                }
            }
        }
    };
    // The sheet is fed in pieces, so a large one is never held whole as XML.
    zip.read(member, [&](const QByteArray& piece) {
        r.addData(piece);
        process();
    });
    if (r.hasError() && r.error() != QXmlStreamReader::PrematureEndOfDocumentError) {
        out.rows.clear();
        out.error = QStringLiteral("工作表的内容损坏: %1").arg(r.errorString());
        return out;
    }
    for (const QString& ref : merged) {
        int c1 = 0, r1 = 0, c2 = 0, r2 = 0;
        const QStringList ends = ref.split(QLatin1Char(':'));
        if (ends.size() != 2 || !parseRef(ends.at(0), c1, r1) || !parseRef(ends.at(1), c2, r2)) continue;
        for (SheetRow& sr : out.rows)
            if (sr.number >= r1 && sr.number <= r2) addProblem(sr, QStringLiteral("合并单元格 %1").arg(ref));
    }
    if (out.rows.isEmpty()) out.error = QStringLiteral("工作表是空的");
    return out;
}

SheetData ReadCsv(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return {{}, QStringLiteral("不能读文件 %1").arg(path)};
    const QByteArray bytes = f.readAll();
    if (bytes.startsWith("PK\x03\x04") || bytes.left(4096).contains('\0')) return {{}, kNotSheet};
    return ParseCsvText(DecodePlainText(bytes));
}

SheetData ParseCsvText(const QString& input) {
    SheetData out;
    QStringView text(input);
    if (text.startsWith(QChar(0xFEFF))) text = text.mid(1);
    // A file saved by a spreadsheet program in some places separates by tabs or semicolons.
    const QStringView first = text.left(text.indexOf(QLatin1Char('\n')) < 0 ? text.size() : text.indexOf(QLatin1Char('\n')));
    QChar sep = QLatin1Char(',');
    if (!first.contains(sep)) {
        if (first.contains(QLatin1Char('\t'))) sep = QLatin1Char('\t');
        else if (first.contains(QLatin1Char(';'))) sep = QLatin1Char(';');
    }
    SheetRow row;
    QString cell;
    int line = 1;
    row.number = 1;
    bool quoted = false, wasQuoted = false;
    const auto endCell = [&] {
        if (cell.size() > kMaxCellChars) {
            addProblem(row, QStringLiteral("单元格 %1 过长 (%2 字)").arg(ColumnLetters(int(row.cells.size())) + QString::number(row.number)).arg(cell.size()));
            cell.clear();
        }
        row.cells << cell;
        cell.clear();
        wasQuoted = false;
    };
    const auto endRow = [&] {
        endCell();
        bool any = !row.problem.isEmpty();
        for (const QString& c : row.cells)
            any = any || !c.trimmed().isEmpty();
        if (any) out.rows << row;
        row = SheetRow();
        row.number = line;
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar ch = text.at(i);
        if (quoted) {
            if (ch == QLatin1Char('"')) {
                if (i + 1 < text.size() && text.at(i + 1) == QLatin1Char('"')) {
                    cell += ch;
                    ++i;
                } else {
                    quoted = false;
                }
            } else {
                if (ch == QLatin1Char('\n')) ++line;
                cell += ch;
            }
        } else if (ch == QLatin1Char('"') && cell.isEmpty() && !wasQuoted) {
            quoted = wasQuoted = true;
        } else if (ch == sep) {
            endCell();
        } else if (ch == QLatin1Char('\n')) {
            ++line;
            endRow();
        } else if (ch != QLatin1Char('\r')) {
            cell += ch;
        }
    }
    if (!cell.isEmpty() || !row.cells.isEmpty()) endRow();
    if (quoted && !out.rows.isEmpty()) addProblem(out.rows.last(), QStringLiteral("引号不成对"));
    if (out.rows.isEmpty()) out.error = QStringLiteral("工作表是空的");
    return out;
}

} // namespace zq
