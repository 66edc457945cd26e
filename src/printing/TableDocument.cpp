#include "TableDocument.h"

#include "resources/Texts.h"
#include "shell/Globals.h"

#include <QDate>
#include <QPainter>

namespace zq {

namespace {

// A4, with 15 mm all round; the foot line stands in the bottom margin.
constexpr double kShort = 210, kLong = 297, kMargin = 15;
constexpr double kPadX = 1.2, kPadY = 0.9;
constexpr double kIndent = 6;
constexpr double kRunningHead = 8;
constexpr double kSmallest = 7.5;

const QColor kRule(0x70, 0x70, 0x70);
const QColor kCaptionFill(0xe6, 0xeb, 0xf2);
const QColor kGrey(0x44, 0x44, 0x44);

QString pairText(const QString& name, const QString& value) {
    return name + QStringLiteral("：") + value;
}

// Runs of digits and letters longer than this may break: a column never widens past them.
constexpr int kLongestWord = 24;

// The longest run of a text that a line must not break (see isWordChar), at most kLongestWord.
QString longestWord(const QString& text) {
    qsizetype best = 0, bestAt = 0, start = -1;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        const bool word = i < text.size() && isWordChar(text.at(i));
        if (word && start < 0) start = i;
        if (!word && start >= 0) {
            if (i - start > best) {
                best = i - start;
                bestAt = start;
            }
            start = -1;
        }
    }
    return text.mid(bestAt, qMin<qsizetype>(best, kLongestWord));
}

// Widths that sum to `usable`, in proportion to `natural`, where no column falls below its `need`
// while the others can spare the room: a column of 18-digit identity cards keeps them on one line.
QVector<double> spread(const QVector<double>& natural, const QVector<double>& need, double usable) {
    double sum = 0;
    for (double w : natural)
        sum += w;
    QVector<double> widths;
    for (double w : natural)
        widths << w * usable / sum;
    for (int round = 0; round < natural.size(); ++round) {
        double deficit = 0, slack = 0;
        for (int i = 0; i < widths.size(); ++i) {
            if (widths.at(i) < need.at(i))
                deficit += need.at(i) - widths.at(i);
            else
                slack += widths.at(i) - need.at(i);
        }
        if (deficit <= 0.01 || slack < deficit) break;
        for (int i = 0; i < widths.size(); ++i) {
            if (widths.at(i) < need.at(i))
                widths[i] = need.at(i);
            else
                widths[i] -= (widths.at(i) - need.at(i)) * deficit / slack;
        }
    }
    return widths;
}

} // namespace

TableDocument::TableDocument(TableData data, ListHeading heading, Style style)
    : m_data(std::move(data))
    , m_heading(std::move(heading))
    , m_style(style)
    , m_family(printFamily()) {
    for (TableRow& r : m_data.rows)
        while (r.cells.size() < m_data.columns.size())
            r.cells << QString();
    layOutColumns();
    m_body = std::make_unique<TextMeasure>(m_family, m_points);
    m_bold = std::make_unique<TextMeasure>(m_family, m_points, true);
    layOutHeading();
    paginate();
}

TableDocument::~TableDocument() = default;

QSizeF TableDocument::paperSize() const {
    return m_landscape ? QSizeF(kLong, kShort) : QSizeF(kShort, kLong);
}

void TableDocument::layOutColumns() {
    const int n = int(m_data.columns.size());
    auto natural = [&](double points) {
        const TextMeasure m(m_family, points);
        QVector<double> w;
        for (const TableColumn& c : m_data.columns)
            w << qMax(1.0, c.width) * m.averageChar() + 2 * kPadX;
        return w;
    };
    double points = 9;
    QVector<double> widths = natural(points);
    double sum = 0;
    for (double w : widths)
        sum += w;
    // The paper turns when the columns do not fit upright; beyond the width of the turned paper the
    // font gets smaller (down to 7.5 points), and then the texts wrap in their cells.
    m_landscape = m_style == Style::Ruled && sum > kShort - 2 * kMargin;
    const double usable = paperSize().width() - 2 * kMargin;
    if (sum > usable && n > 0) {
        points = qMax(kSmallest, qFloor(points * usable / sum * 2) / 2.0);
        widths = natural(points);
        sum = 0;
        for (double w : widths)
            sum += w;
    }
    m_points = points;
    m_widths.clear();
    if (m_style == Style::Outline) {
        for (int i = 0; i < n; ++i)
            m_widths << usable;
        return;
    }
    // What each column must hold on one line: its longest unbreakable run of digits or letters.
    QVector<QString> words(n);
    for (const TableRow& r : m_data.rows)
        for (int c = 0; c < n; ++c) {
            const QString& text = r.cells.at(c);
            if (text.size() <= words.at(c).size()) continue;
            const QString w = longestWord(text);
            if (w.size() > words.at(c).size()) words[c] = w;
        }
    const TextMeasure m(m_family, points);
    QVector<double> need;
    for (int c = 0; c < n; ++c)
        need << (words.at(c).isEmpty() ? 0 : m.width(words.at(c)) + 2 * kPadX + 0.2);
    m_widths = spread(widths, need, usable);
}

void TableDocument::layOutHeading() {
    const QStringList& items = m_heading.items;
    QHash<QString, QString> company;
    QStringList shown;
    for (int i = 0; i + 1 < items.size(); i += 2) {
        if (isCompanyVariable(items.at(i)))
            company.insert(items.at(i), items.at(i + 1));
        else if (!items.at(i + 1).trimmed().isEmpty())
            shown << pairText(items.at(i), items.at(i + 1));
    }
    m_company = companyName();
    const double width = paperSize().width() - 2 * kMargin;
    m_headLines.clear();
    if (!m_company.isEmpty()) m_headLines.push_back({m_company, 11, false, Qt::AlignHCenter, Qt::black, 0.5});
    // The company's address and numbers, those it has, in one small line.
    QStringList contact;
    for (int id : {162, 163, 164, 165}) {
        const QString name = LoadText(9) + LoadText(id);
        const QString value = company.value(name).trimmed();
        if (!value.isEmpty()) contact << pairText(LoadText(id), value);
    }
    if (!contact.isEmpty())
        m_headLines.push_back({contact.join(QStringLiteral("    ")), 8, false, Qt::AlignHCenter, kGrey, 0.5});
    m_headLines.push_back({m_heading.title, 16, true, Qt::AlignHCenter, Qt::black, 2});
    if (m_heading.showItems) {
        const TextMeasure m(m_family, 9);
        for (const QString& line : m.wrap(shown.join(QStringLiteral("        ")), width))
            if (!line.isEmpty()) m_headLines.push_back({line, 9, false, Qt::AlignLeft, Qt::black, 0.3});
        if (!m_heading.text.trimmed().isEmpty())
            for (const QString& line : m.wrap(m_heading.text, width))
                m_headLines.push_back({line, 9, false, Qt::AlignLeft, Qt::black, 0.3});
    }
    m_headHeight = 0;
    for (const HeadLine& h : m_headLines)
        m_headHeight += TextMeasure(m_family, h.points, h.bold).lineHeight() + h.gapAfter;
    m_headHeight += 2;
}

double TableDocument::cellWidth(int row, int col) const {
    double w = m_widths.value(col) - 2 * kPadX;
    if (m_style == Style::Outline && row >= 0) w -= m_data.rows.at(row).level * kIndent;
    return qMax(1.0, w);
}

QStringList TableDocument::cellLines(int row, int col) const {
    if (row < 0) return m_bold->wrap(m_data.columns.at(col).caption, cellWidth(row, col));
    return m_body->wrap(m_data.rows.at(row).cells.at(col), cellWidth(row, col));
}

void TableDocument::paginate() {
    const TextMeasure& body = *m_body;
    const TextMeasure& bold = *m_bold;
    const double pad = m_style == Style::Ruled ? 2 * kPadY : 0.8;
    const int cols = int(m_data.columns.size());

    m_captionHeight = 0;
    if (m_style == Style::Ruled) {
        int lines = 1;
        for (int c = 0; c < cols; ++c)
            lines = qMax(lines, int(bold.wrap(m_data.columns.at(c).caption, cellWidth(-1, c)).size()));
        m_captionHeight = lines * bold.lineHeight() + 2 * kPadY;
    }

    const double bottom = paperSize().height() - kMargin;
    const double firstRoom = bottom - kMargin - m_headHeight - m_captionHeight;
    const double otherRoom = bottom - kMargin - kRunningHead - m_captionHeight;
    m_rowHeights.clear();
    m_pageStarts = {0};
    double used = 0, room = firstRoom;
    for (int r = 0; r < m_data.rows.size(); ++r) {
        const TableRow& row = m_data.rows.at(r);
        int lines = 1;
        for (int c = 0; c < cols; ++c) {
            const QString& text = row.cells.at(c);
            // Most cells fit on one line; only the others are broken up.
            if (!text.contains(QLatin1Char('\n')) && body.width(text) <= cellWidth(r, c)) continue;
            lines = qMax(lines, int(body.wrap(text, cellWidth(r, c)).size()));
        }
        // A row taller than a page is cut to the page.
        const double h = qMin(lines * body.lineHeight() + pad, otherRoom);
        if (used > 0 && used + h > room) {
            m_pageStarts << r;
            used = 0;
            room = otherRoom;
        }
        m_rowHeights << h;
        used += h;
    }
}

std::pair<int, int> TableDocument::pageRows(int page) const {
    if (page < 0 || page >= m_pageStarts.size()) return {0, 0};
    const int end = page + 1 < m_pageStarts.size() ? m_pageStarts.at(page + 1) : int(m_data.rows.size());
    return {m_pageStarts.at(page), end};
}

double TableDocument::drawHeading(Canvas& c, int page) const {
    const double width = paperSize().width() - 2 * kMargin;
    double y = kMargin;
    if (page == 0) {
        for (const HeadLine& h : m_headLines) {
            const TextMeasure m(m_family, h.points, h.bold);
            c.textLine(kMargin, y + m.ascent(), width, h.text, c.font(m_family, h.points, h.bold), h.align,
                       h.color);
            y += m.lineHeight() + h.gapAfter;
        }
        return kMargin + m_headHeight;
    }
    const TextMeasure m(m_family, 9);
    const QFont f = c.font(m_family, 9);
    c.textLine(kMargin, y + m.ascent(), width, m_heading.title, f, Qt::AlignLeft, kGrey);
    c.textLine(kMargin, y + m.ascent(), width, m_company, f, Qt::AlignRight, kGrey);
    c.line(QLineF(kMargin, y + m.lineHeight() + 0.8, kMargin + width, y + m.lineHeight() + 0.8), 0.2, kGrey);
    return y + kRunningHead;
}

double TableDocument::drawHeaderRow(Canvas& c, double y) const {
    if (m_style != Style::Ruled) return y;
    const TextMeasure& m = *m_bold;
    const QFont f = c.font(m_family, m_points, true);
    double width = 0;
    for (double w : m_widths)
        width += w;
    c.box(QRectF(kMargin, y, width, m_captionHeight), 0, kCaptionFill);
    double x = kMargin;
    for (int col = 0; col < m_widths.size(); ++col) {
        const QStringList lines = cellLines(-1, col);
        double base = y + (m_captionHeight - lines.size() * m.lineHeight()) / 2 + m.ascent();
        for (const QString& line : lines) {
            c.textLine(x + kPadX, base, cellWidth(-1, col), line, f, Qt::AlignHCenter);
            base += m.lineHeight();
        }
        x += m_widths.at(col);
    }
    return y + m_captionHeight;
}

void TableDocument::drawFooter(Canvas& c, int page) const {
    const double width = paperSize().width() - 2 * kMargin;
    const double base = paperSize().height() - 9;
    const QFont f = c.font(m_family, 8.5);
    c.textLine(kMargin, base, width,
               QStringLiteral("打印日期：") + QDate::currentDate().toString(Qt::ISODate), f, Qt::AlignLeft,
               kGrey);
    c.textLine(kMargin, base, width, QStringLiteral("第 %1 页 共 %2 页").arg(page + 1).arg(pageCount()), f,
               Qt::AlignHCenter, kGrey);
    if (!G().UserName.isEmpty())
        c.textLine(kMargin, base, width, QStringLiteral("制表：") + G().UserName, f, Qt::AlignRight, kGrey);
}

void TableDocument::paintPage(Canvas& c, int page) const {
    if (page < 0 || page >= pageCount()) return;
    const double top = drawHeading(c, page);
    double y = drawHeaderRow(c, top);
    const TextMeasure& m = *m_body;
    const QFont plain = c.font(m_family, m_points);
    const QFont bold = c.font(m_family, m_points, true);
    const bool ruled = m_style == Style::Ruled;
    double width = 0;
    for (double w : m_widths)
        width += w;

    const auto [first, last] = pageRows(page);
    for (int r = first; r < last; ++r) {
        const TableRow& row = m_data.rows.at(r);
        const double h = m_rowHeights.at(r);
        const int fit = qMax(1, int((h - (ruled ? 2 * kPadY : 0.8)) / m.lineHeight() + 0.01));
        double x = kMargin;
        for (int col = 0; col < m_widths.size(); ++col) {
            const double indent = ruled ? 0 : row.level * kIndent;
            // An outline's top level stands out in bold.
            const QFont& f = !ruled && row.level == 0 ? bold : plain;
            double base = y + (ruled ? kPadY : 0.4) + m.ascent();
            const QStringList lines = cellLines(r, col);
            for (int i = 0; i < qMin(fit, int(lines.size())); ++i) {
                c.textLine(x + kPadX + indent, base, cellWidth(r, col), lines.at(i), f,
                           m_data.columns.at(col).align);
                base += m.lineHeight();
            }
            x += m_widths.at(col);
        }
        y += h;
        if (ruled) c.line(QLineF(kMargin, y, kMargin + width, y), 0.12, kRule);
    }
    if (!ruled) {
        drawFooter(c, page);
        return;
    }
    // Column rules from the captions down, then the frame and the line under the captions.
    double x = kMargin;
    for (int col = 0; col + 1 < m_widths.size(); ++col) {
        x += m_widths.at(col);
        c.line(QLineF(x, top, x, y), 0.12, kRule);
    }
    c.line(QLineF(kMargin, top + m_captionHeight, kMargin + width, top + m_captionHeight), 0.25);
    c.box(QRectF(kMargin, top, width, y - top), 0.35);
    drawFooter(c, page);
}

} // namespace zq
