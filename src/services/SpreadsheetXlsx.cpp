// Writing .xlsx: the sheet streamed as XML into a temporary file row by row, then packed with the
// few small parts a workbook needs. Memory stays flat at any size, and numbers are written in the
// shortest form that reads back as the very same number (a REAL amount keeps its 17th digit).

#include "Spreadsheets.h"

#include <cmath>
#include <QDate>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QTemporaryFile>
#include <zip.h>

namespace zq {

namespace {

const QByteArray kMain = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
const QByteArray kRel = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
const QByteArray kXmlHead = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";

// A sheet name may hold no []:*?/\ and at most 31 characters.
QString sheetNameOf(const QString& name) {
    QString n = name;
    n.remove(QRegularExpression(QStringLiteral("[\\[\\]:*?/\\\\']")));
    n = n.trimmed().left(31);
    return n.isEmpty() ? QStringLiteral("Sheet1") : n;
}

// Text as XML character data. What XML cannot hold (control characters, and a carriage return,
// which a reader would turn into a line feed) is written as _xHHHH_, as spreadsheet programs do, and
// a text that itself reads like such an escape has its underscore escaped.
QByteArray xmlText(const QString& text) {
    static const QRegularExpression escapeLike(QStringLiteral("^_x[0-9A-Fa-f]{4}_"));
    QString out;
    out.reserve(text.size() + 8);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        if (c == u'&') out += QLatin1String("&amp;");
        else if (c == u'<') out += QLatin1String("&lt;");
        else if (c == u'>') out += QLatin1String("&gt;");
        else if (c == u'"') out += QLatin1String("&quot;");
        else if ((c < 0x20 && c != u'\t' && c != u'\n') || c == 0xFFFE || c == 0xFFFF)
            out += QStringLiteral("_x%1_").arg(QString::number(c, 16).toUpper().rightJustified(4, QLatin1Char('0')));
        else if (c == u'_' && escapeLike.match(text.mid(i, 7)).hasMatch())
            out += QLatin1String("_x005F_");
        else out += QChar(c);
    }
    return out.toUtf8();
}

// The shortest text that reads back as the same double; empty for what a cell cannot hold.
QByteArray numberXml(double v) {
    if (!std::isfinite(v)) return {};
    return QByteArray::number(v, 'g', QLocale::FloatingPointShortest);
}

// The cell styles: 0 plain, 1 the bold caption, 2 a date, then one per number of decimals used.
struct Styles {
    QMap<int, int> byDecimals; // decimals -> style index
    int number(int decimals) {
        const auto it = byDecimals.constFind(decimals);
        if (it != byDecimals.constEnd()) return *it;
        const int style = 3 + int(byDecimals.size());
        byDecimals.insert(decimals, style);
        return style;
    }
    QByteArray xml() const {
        QByteArray formats = "<numFmt numFmtId=\"164\" formatCode=\"yyyy-mm-dd\"/>";
        QByteArray xfs = "<xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\"/>"
                         "<xf numFmtId=\"0\" fontId=\"1\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyFont=\"1\"/>"
                         "<xf numFmtId=\"164\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyNumberFormat=\"1\"/>";
        int id = 165;
        // Styles are numbered in the order first used; the map is by decimals, so order them back.
        QMap<int, int> byStyle;
        for (auto it = byDecimals.cbegin(); it != byDecimals.cend(); ++it)
            byStyle.insert(it.value(), it.key());
        for (const int decimals : byStyle) {
            const QByteArray code = decimals > 0 ? "0." + QByteArray(decimals, '0') : QByteArray("0");
            formats += "<numFmt numFmtId=\"" + QByteArray::number(id) + "\" formatCode=\"" + code + "\"/>";
            xfs += "<xf numFmtId=\"" + QByteArray::number(id) +
                   "\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyNumberFormat=\"1\"/>";
            ++id;
        }
        return kXmlHead + "<styleSheet xmlns=\"" + kMain + "\"><numFmts count=\"" + QByteArray::number(id - 164) +
               "\">" + formats +
               "</numFmts><fonts count=\"2\"><font><sz val=\"11\"/><name val=\"Calibri\"/><family val=\"2\"/></font>"
               "<font><b/><sz val=\"11\"/><name val=\"Calibri\"/><family val=\"2\"/></font></fonts>"
               "<fills count=\"2\"><fill><patternFill patternType=\"none\"/></fill><fill><patternFill "
               "patternType=\"gray125\"/></fill></fills><borders count=\"1\"><border><left/><right/><top/><bottom/>"
               "<diagonal/></border></borders><cellStyleXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" "
               "borderId=\"0\"/></cellStyleXfs><cellXfs count=\"" +
               QByteArray::number(3 + byDecimals.size()) + "\">" + xfs +
               "</cellXfs><cellStyles count=\"1\"><cellStyle name=\"Normal\" xfId=\"0\" builtinId=\"0\"/></cellStyles>"
               "</styleSheet>";
    }
};

void addTextCell(QByteArray& out, const QByteArray& ref, const QString& text, int style = 0) {
    out += "<c r=\"" + ref + "\" t=\"inlineStr\"";
    if (style) out += " s=\"" + QByteArray::number(style) + '"';
    // Blanks at either end are kept only when the text says so.
    const bool blanks = text.front().isSpace() || text.back().isSpace();
    out += blanks ? "><is><t xml:space=\"preserve\">" : "><is><t>";
    out += xmlText(text);
    out += "</t></is></c>";
}

QByteArray numberCell(const QByteArray& ref, const QByteArray& number, int style) {
    return "<c r=\"" + ref + "\" s=\"" + QByteArray::number(style) + "\"><v>" + number + "</v></c>";
}

// The small parts of a workbook of one sheet.
QList<std::pair<const char*, QByteArray>> workbookParts(const QString& sheetName, const Styles& styles) {
    return {
        {"[Content_Types].xml",
         kXmlHead + "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
                    "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
                    "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
                    "<Override PartName=\"/xl/workbook.xml\" "
                    "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml\"/>"
                    "<Override PartName=\"/xl/worksheets/sheet1.xml\" "
                    "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\"/>"
                    "<Override PartName=\"/xl/styles.xml\" "
                    "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml\"/></Types>"},
        {"_rels/.rels",
         kXmlHead + "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
                    "<Relationship Id=\"rId1\" Type=\"" + kRel + "/officeDocument\" Target=\"xl/workbook.xml\"/>"
                    "</Relationships>"},
        {"xl/workbook.xml",
         kXmlHead + "<workbook xmlns=\"" + kMain + "\" xmlns:r=\"" + kRel +
             "\"><bookViews><workbookView/></bookViews><sheets><sheet name=\"" + xmlText(sheetNameOf(sheetName)) +
             "\" sheetId=\"1\" r:id=\"rId1\"/></sheets></workbook>"},
        {"xl/_rels/workbook.xml.rels",
         kXmlHead + "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
                    "<Relationship Id=\"rId1\" Type=\"" + kRel + "/worksheet\" Target=\"worksheets/sheet1.xml\"/>"
                    "<Relationship Id=\"rId2\" Type=\"" + kRel + "/styles\" Target=\"styles.xml\"/></Relationships>"},
        {"xl/styles.xml", styles.xml()},
    };
}

// Packs the parts and the sheet; libzip writes beside the target and renames when done, so a
// failure leaves no half-written file.
QString pack(const QString& path, const QList<std::pair<const char*, QByteArray>>& parts, const QString& sheetFile) {
    int code = 0;
    zip_t* z = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!z) return QStringLiteral("不能写文件 %1").arg(path);
    const auto fail = [&](const QString& what) {
        const QString text = QStringLiteral("写文件 %1 出错: %2 (%3)").arg(path, what, QString::fromUtf8(zip_strerror(z)));
        zip_discard(z);
        return text;
    };
    for (const auto& [name, data] : parts) {
        zip_source_t* src = zip_source_buffer(z, data.constData(), zip_uint64_t(data.size()), 0);
        if (!src || zip_file_add(z, name, src, ZIP_FL_ENC_UTF_8) < 0) {
            if (src) zip_source_free(src);
            return fail(QString::fromLatin1(name));
        }
    }
    zip_source_t* sheet = zip_source_file(z, QFile::encodeName(sheetFile).constData(), 0, -1);
    const zip_int64_t at = sheet ? zip_file_add(z, "xl/worksheets/sheet1.xml", sheet, ZIP_FL_ENC_UTF_8) : -1;
    if (at < 0) {
        if (sheet) zip_source_free(sheet);
        return fail(QStringLiteral("sheet1.xml"));
    }
    // The sheet is most of the work: the quick end of deflate packs its repetitive XML nearly as
    // small, in a fraction of the time.
    zip_set_file_compression(z, zip_uint64_t(at), ZIP_CM_DEFLATE, 1);
    // The buffers of the parts are read here, while they still live.
    if (zip_close(z) != 0) return fail(QStringLiteral("zip"));
    return {};
}

} // namespace

qint64 WriteXlsx(const QString& path, RowSource& source, const QString& sheetName, QString* error) {
    const auto failed = [&](const QString& text) {
        if (error) *error = text;
        return qint64(-1);
    };
    QTemporaryFile sheetFile;
    if (!sheetFile.open()) return failed(QStringLiteral("不能写临时文件"));
    const QVector<SheetColumn> cols = source.columns();
    Styles styles;
    QVector<int> numberStyles(cols.size(), 0);
    QVector<QByteArray> letters;
    QByteArray out = kXmlHead + "<worksheet xmlns=\"" + kMain + "\" xmlns:r=\"" + kRel +
                     "\"><sheetViews><sheetView workbookViewId=\"0\"><pane ySplit=\"1\" topLeftCell=\"A2\" "
                     "activePane=\"bottomLeft\" state=\"frozen\"/><selection pane=\"bottomLeft\"/></sheetView>"
                     "</sheetViews><sheetFormatPr defaultRowHeight=\"15\"/>";
    if (!cols.isEmpty()) out += "<cols>";
    QByteArray header = "<row r=\"1\">";
    for (int c = 0; c < cols.size(); ++c) {
        const SheetColumn& col = cols.at(c);
        letters << ColumnLetters(c).toLatin1();
        if (col.kind == CellKind::Number) numberStyles[c] = styles.number(qBound(0, col.decimals, 30));
        // A spreadsheet's width unit is a digit, as the grid's is; a little room for the padding.
        out += "<col min=\"" + QByteArray::number(c + 1) + "\" max=\"" + QByteArray::number(c + 1) + "\" width=\"" +
               QByteArray::number(qBound(1.0, col.width + 1, 255.0)) + "\" customWidth=\"1\"/>";
        if (!col.caption.isEmpty()) addTextCell(header, letters.last() + '1', col.caption, 1);
    }
    if (!cols.isEmpty()) out += "</cols>";
    out += "<sheetData>" + header + "</row>";

    qint64 rows = 0;
    QStringList cells;
    while (source.next(cells)) {
        if (rows + 1 >= kMaxSheetRows) {
            return failed(QStringLiteral("行数超过电子表格的上限 %1").arg(kMaxSheetRows - 1));
        }
        const QByteArray r = QByteArray::number(++rows + 1);
        out += "<row r=\"" + r + "\">";
        for (int c = 0; c < cols.size() && c < cells.size(); ++c) {
            const QString& text = cells.at(c);
            if (text.isEmpty()) continue;
            const QByteArray ref = letters.at(c) + r;
            if (cols.at(c).kind == CellKind::Number) {
                bool ok = false;
                const QByteArray number = numberXml(text.trimmed().toDouble(&ok));
                if (ok && !number.isEmpty()) {
                    out += numberCell(ref, number, numberStyles.at(c));
                    continue;
                }
            } else if (cols.at(c).kind == CellKind::Date) {
                const QString iso = ParseDateText(text);
                if (!iso.isEmpty()) {
                    const QDate d = QDate::fromString(iso, Qt::ISODate);
                    out += numberCell(ref, QByteArray::number(DateSerial(d.year(), d.month(), d.day()), 'f', 0), 2);
                    continue;
                }
            }
            addTextCell(out, ref, text.left(kMaxCellChars));
        }
        out += "</row>";
        if (out.size() > (1 << 20)) {
            if (sheetFile.write(out) != out.size()) return failed(QStringLiteral("写临时文件出错"));
            out.clear();
        }
    }
    out += "</sheetData></worksheet>";
    if (sheetFile.write(out) != out.size() || !sheetFile.flush()) return failed(QStringLiteral("写临时文件出错"));
    const QString packed = pack(path, workbookParts(sheetName, styles), sheetFile.fileName());
    if (!packed.isEmpty()) return failed(packed);
    return rows;
}

} // namespace zq
