#include "PdfTools.h"

#include <QProcess>
#include <QRegularExpression>

namespace zq::test {

QString run(const QString& program, const QStringList& args) {
    QProcess p;
    p.start(program, args);
    if (!p.waitForFinished(60000) || p.exitCode() != 0) return QStringLiteral("<%1 failed>").arg(program);
    return QString::fromUtf8(p.readAllStandardOutput());
}

QString pdfText(const QString& pdf, int page) {
    QStringList args{QStringLiteral("-enc"), QStringLiteral("UTF-8")};
    if (page > 0)
        args << QStringLiteral("-f") << QString::number(page) << QStringLiteral("-l")
             << QString::number(page);
    QString text = run(QStringLiteral("pdftotext"), args << pdf << QStringLiteral("-"));
    static const QRegularExpression blanks(QStringLiteral("\\s"));
    return text.remove(blanks);
}

int pdfPages(const QString& pdf) {
    static const QRegularExpression pages(QStringLiteral("Pages:\\s+(\\d+)"));
    return pages.match(run(QStringLiteral("pdfinfo"), {pdf})).captured(1).toInt();
}

int pdfImages(const QString& pdf) {
    // pdfimages -list prints two header lines before a line per picture.
    return int(run(QStringLiteral("pdfimages"), {QStringLiteral("-list"), pdf})
                   .split(QLatin1Char('\n'), Qt::SkipEmptyParts)
                   .size()) -
           2;
}

bool pdfLandscape(const QString& pdf) {
    static const QRegularExpression size(QStringLiteral("Page size:\\s+([\\d.]+) x ([\\d.]+)"));
    const QRegularExpressionMatch m = size.match(run(QStringLiteral("pdfinfo"), {pdf}));
    return m.captured(1).toDouble() > m.captured(2).toDouble();
}

QVector<PdfWord> pdfWords(const QString& pdf, int page) {
    const QString html =
        run(QStringLiteral("pdftotext"),
            {QStringLiteral("-bbox"), QStringLiteral("-enc"), QStringLiteral("UTF-8"), QStringLiteral("-f"),
             QString::number(page), QStringLiteral("-l"), QString::number(page), pdf, QStringLiteral("-")});
    static const QRegularExpression word(QStringLiteral(
        "<word xMin=\"([\\d.]+)\" yMin=\"([\\d.]+)\" xMax=\"([\\d.]+)\" yMax=\"([\\d.]+)\">([^<]*)</word>"));
    constexpr double mmPerPoint = 25.4 / 72;
    QVector<PdfWord> words;
    for (auto it = word.globalMatch(html); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        const double x0 = m.captured(1).toDouble(), y0 = m.captured(2).toDouble();
        const double x1 = m.captured(3).toDouble(), y1 = m.captured(4).toDouble();
        QString text = m.captured(5);
        text.replace(QStringLiteral("&amp;"), QStringLiteral("&"))
            .replace(QStringLiteral("&lt;"), QStringLiteral("<"))
            .replace(QStringLiteral("&gt;"), QStringLiteral(">"))
            .replace(QStringLiteral("&quot;"), QStringLiteral("\""));
        words.append(
            {text, QRectF(x0 * mmPerPoint, y0 * mmPerPoint, (x1 - x0) * mmPerPoint, (y1 - y0) * mmPerPoint)});
    }
    return words;
}

} // namespace zq::test
