// Writing spreadsheets: .xlsx through libxlsxwriter in constant memory, .csv as UTF-8 text.

#include "Spreadsheets.h"

#include <QDate>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <xlsxwriter.h>

namespace zq {

namespace {

const QDate kEpoch(1899, 12, 30);

void setError(QString* error, const QString& text) {
    if (error) *error = text;
}

// A sheet name may hold no []:*?/\ and at most 31 characters.
QString sheetNameOf(const QString& name) {
    QString n = name;
    n.remove(QRegularExpression(QStringLiteral("[\\[\\]:*?/\\\\']")));
    n = n.trimmed().left(31);
    return n.isEmpty() ? QStringLiteral("Sheet1") : n;
}

// A text that a spreadsheet program would take for a formula (= + - @, or a tab or line end that
// hides one) gets the usual leading apostrophe; the reader takes it off again. A number stays bare.
QString csvField(QString text, bool number = false) {
    static const QString starts = QStringLiteral("=+-@\t\r");
    if (!text.isEmpty() && starts.contains(text.at(0))) {
        bool isNumber = false;
        if (number) text.trimmed().toDouble(&isNumber);
        if (!isNumber) text.prepend(QLatin1Char('\''));
    }
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) &&
        !text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r')))
        return text;
    QString t = text;
    t.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + t + QLatin1Char('"');
}

} // namespace

double DateSerial(int year, int month, int day) {
    const QDate d(year, month, day);
    return d.isValid() ? double(kEpoch.daysTo(d)) : 0;
}

QString DateOfSerial(double serial) {
    // Whole days only; a time of day in the serial is dropped, as the master record keeps days.
    const QDate d = kEpoch.addDays(qint64(serial));
    return d.isValid() ? d.toString(QStringLiteral("yyyy-MM-dd")) : QString();
}

QString ParseDateText(const QString& text) {
    static const QRegularExpression sep(
        QStringLiteral("^(\\d{4})\\s*[-/.年]\\s*(\\d{1,2})\\s*[-/.月]\\s*(\\d{1,2})\\s*日?$"));
    static const QRegularExpression packed(QStringLiteral("^(\\d{4})(\\d{2})(\\d{2})$"));
    const QString t = text.trimmed();
    for (const QRegularExpression* re : {&sep, &packed}) {
        const QRegularExpressionMatch m = re->match(t);
        if (!m.hasMatch()) continue;
        const QDate d(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt());
        return d.isValid() ? d.toString(QStringLiteral("yyyy-MM-dd")) : QString();
    }
    return {};
}

QString ColumnLetters(int col) {
    QString s;
    for (int c = col + 1; c > 0; c = (c - 1) / 26)
        s.prepend(QChar(u'A' + (c - 1) % 26));
    return s;
}

qint64 ExportRows(const QString& path, RowSource& source, const QString& sheetName, QString* error) {
    if (QFileInfo(path).suffix().compare(QLatin1String("csv"), Qt::CaseInsensitive) == 0)
        return WriteCsv(path, source, error);
    return WriteXlsx(path, source, sheetName, error);
}

qint64 WriteXlsx(const QString& path, RowSource& source, const QString& sheetName, QString* error) {
    const QByteArray file = QFile::encodeName(path);
    lxw_workbook_options options{};
    // Each row goes to a temporary file as it is written, so memory stays flat at any size.
    options.constant_memory = LXW_TRUE;
    options.use_zip64 = LXW_TRUE;
    lxw_workbook* book = workbook_new_opt(file.constData(), &options);
    if (!book) {
        setError(error, QStringLiteral("不能写文件 %1").arg(path));
        return -1;
    }
    lxw_worksheet* sheet = workbook_add_worksheet(book, sheetNameOf(sheetName).toUtf8().constData());
    lxw_format* head = workbook_add_format(book);
    format_set_bold(head);
    lxw_format* dateFormat = workbook_add_format(book);
    format_set_num_format(dateFormat, "yyyy-mm-dd");

    const QVector<SheetColumn> cols = source.columns();
    QVector<lxw_format*> numberFormats(cols.size(), nullptr);
    for (int c = 0; c < cols.size(); ++c) {
        const SheetColumn& col = cols.at(c);
        if (col.kind == CellKind::Number) {
            numberFormats[c] = workbook_add_format(book);
            const QByteArray code =
                col.decimals > 0 ? "0." + QByteArray(col.decimals, '0') : QByteArray("0");
            format_set_num_format(numberFormats[c], code.constData());
        }
        // A spreadsheet's width unit is a digit, as the grid's is; a little room for the padding.
        worksheet_set_column(sheet, lxw_col_t(c), lxw_col_t(c), qBound(1.0, col.width + 1, 255.0), nullptr);
        worksheet_write_string(sheet, 0, lxw_col_t(c), col.caption.toUtf8().constData(), head);
    }
    worksheet_freeze_panes(sheet, 1, 0);

    qint64 rows = 0;
    QStringList cells;
    QString failure;
    while (source.next(cells)) {
        if (rows + 1 >= kMaxSheetRows) {
            failure = QStringLiteral("行数超过电子表格的上限 %1").arg(kMaxSheetRows - 1);
            break;
        }
        const lxw_row_t r = lxw_row_t(++rows);
        for (int c = 0; c < cols.size() && c < cells.size(); ++c) {
            const QString& text = cells.at(c);
            if (text.isEmpty()) continue;
            const lxw_col_t col = lxw_col_t(c);
            if (cols.at(c).kind == CellKind::Number) {
                bool ok = false;
                const double v = text.trimmed().toDouble(&ok);
                if (ok) {
                    worksheet_write_number(sheet, r, col, v, numberFormats.at(c));
                    continue;
                }
            } else if (cols.at(c).kind == CellKind::Date) {
                const QString iso = ParseDateText(text);
                if (!iso.isEmpty()) {
                    const QDate d = QDate::fromString(iso, Qt::ISODate);
                    worksheet_write_number(sheet, r, col, double(kEpoch.daysTo(d)), dateFormat);
                    continue;
                }
            }
            worksheet_write_string(sheet, r, col, text.left(kMaxCellChars).toUtf8().constData(), nullptr);
        }
    }
    const lxw_error closed = workbook_close(book);
    if (closed != LXW_NO_ERROR && failure.isEmpty())
        failure = QStringLiteral("写文件 %1 出错: %2").arg(path, QString::fromUtf8(lxw_strerror(closed)));
    if (!failure.isEmpty()) {
        QFile::remove(path);
        setError(error, failure);
        return -1;
    }
    return rows;
}

qint64 WriteCsv(const QString& path, RowSource& source, QString* error) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        setError(error, QStringLiteral("不能写文件 %1").arg(path));
        return -1;
    }
    const QVector<SheetColumn> cols = source.columns();
    QByteArray buffer("\xEF\xBB\xBF");
    QStringList line;
    for (const SheetColumn& c : cols)
        line << csvField(c.caption);
    buffer += line.join(QLatin1Char(',')).toUtf8() + "\r\n";
    qint64 rows = 0;
    QStringList cells;
    while (source.next(cells)) {
        line.clear();
        for (int c = 0; c < cols.size(); ++c) {
            const QString text = cells.value(c);
            const QString iso = cols.at(c).kind == CellKind::Date ? ParseDateText(text) : QString();
            line << csvField(iso.isEmpty() ? text : iso, cols.at(c).kind == CellKind::Number);
        }
        buffer += line.join(QLatin1Char(',')).toUtf8() + "\r\n";
        ++rows;
        if (buffer.size() > (1 << 20)) {
            file.write(buffer);
            buffer.clear();
        }
    }
    file.write(buffer);
    if (!file.commit()) {
        setError(error, QStringLiteral("写文件 %1 出错").arg(path));
        return -1;
    }
    return rows;
}

} // namespace zq
