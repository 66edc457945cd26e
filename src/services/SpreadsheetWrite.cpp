// Writing spreadsheets: .csv as UTF-8 text, and what both kinds share. The .xlsx writer is in
// SpreadsheetXlsx.cpp.

#include "Spreadsheets.h"

#include <QDate>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>

namespace zq {

namespace {

const QDate kEpoch(1899, 12, 30);

void setError(QString* error, const QString& text) {
    if (error) *error = text;
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
