#include "PrintDocument.h"

#include "resources/Texts.h"
#include "shell/Globals.h"
#include "shell/ui/Fonts.h"

#include <QFontDatabase>
#include <QPainter>
#include <QTextLayout>

namespace zq {

QString printFamily(const QString& name) {
    static QHash<QString, QString> known;
    if (name.isEmpty()) return uiFontFamily();
    auto it = known.constFind(name);
    if (it != known.constEnd()) return *it;
    // The names the layouts of the office were made with stand for the one Chinese font installed.
    static const QStringList chinese = {"宋体",  "新宋体",      "楷体",         "楷体_GB2312", "黑体",
                                        "仿宋",  "仿宋_GB2312", "SimSun",       "NSimSun",     "SimHei",
                                        "KaiTi", "FangSong",    "MS Sans Serif"};
    const QString family = chinese.contains(name, Qt::CaseInsensitive) || !QFontDatabase::hasFamily(name)
                               ? uiFontFamily()
                               : name;
    known.insert(name, family);
    return family;
}

namespace {
// The texts after "公司" that name the company's variables, in the order LoadCompany gives them.
constexpr int kCompanyTexts[] = {50, 160, 162, 161, 163, 164, 165, 167, 166, 168, 169};

QString companyVariableName(int id, int language) {
    return textOf(9, language) + textOf(id, language);
}
} // namespace

QHash<QString, QString> companyVariables() {
    QHash<QString, QString> vars;
    const QStringList& items = G().CompanyItems;
    for (int i = 0; i + 1 < items.size(); i += 2)
        vars.insert(items.at(i), items.at(i + 1));
    for (int id : kCompanyTexts) {
        const QString present = companyVariableName(id, G().Language);
        if (vars.contains(present)) vars.insert(companyVariableName(id, 0), vars.value(present));
    }
    return vars;
}

bool isCompanyVariable(const QString& name) {
    for (int id : kCompanyTexts)
        if (name == companyVariableName(id, 0) || name == companyVariableName(id, 1)) return true;
    return false;
}

QString companyName() {
    const QString unit = companyVariables().value(companyVariableName(160, 0)).trimmed();
    return unit.isEmpty() ? G().CompName : unit;
}

// ---- Canvas -----------------------------------------------------------------------------------

Canvas::Canvas(QPainter& painter, double dotsPerMm)
    : m_p(painter)
    , m_dpmm(dotsPerMm) {}

QRectF Canvas::dots(const QRectF& mm) const {
    return {mm.x() * m_dpmm, mm.y() * m_dpmm, mm.width() * m_dpmm, mm.height() * m_dpmm};
}

QFont Canvas::font(const QString& family, double points, bool bold) const {
    QFont f(family);
    f.setPointSizeF(points);
    f.setBold(bold);
    // Unhinted glyphs measure the same on the screen, the printer and in the PDF.
    f.setHintingPreference(QFont::PreferNoHinting);
    return f;
}

const QFontMetricsF& Canvas::metrics(const QFont& font) {
    const QString key = font.key();
    auto it = m_metrics.find(key);
    if (it == m_metrics.end()) it = m_metrics.insert(key, QFontMetricsF(font, m_p.device()));
    return *it;
}

void Canvas::box(const QRectF& mm, double pen, const QColor& fill, const QColor& color) {
    const QRectF r = dots(mm);
    if (fill.isValid()) m_p.fillRect(r, fill);
    if (pen <= 0) return;
    m_p.setPen(QPen(color, dots(pen), Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    m_p.setBrush(Qt::NoBrush);
    m_p.drawRect(r);
}

void Canvas::line(const QLineF& mm, double pen, const QColor& color) {
    m_p.setPen(QPen(color, dots(pen), Qt::SolidLine, Qt::SquareCap));
    m_p.drawLine(QLineF(dots(mm.p1()), dots(mm.p2())));
}

void Canvas::textLine(double x, double baseline, double width, const QString& text, const QFont& font,
                      Qt::Alignment align, const QColor& color) {
    if (text.isEmpty()) return;
    double left = dots(x);
    if (align & (Qt::AlignRight | Qt::AlignHCenter)) {
        const double spare = dots(width) - metrics(font).horizontalAdvance(text);
        left += (align & Qt::AlignRight) ? spare : spare / 2;
    }
    m_p.setFont(font);
    m_p.setPen(color);
    m_p.drawText(QPointF(left, dots(baseline)), text);
}

void Canvas::cellText(const QRectF& mm, const QString& text, const QString& family, double points, bool bold,
                      Qt::Alignment align, bool wrap, const QColor& color) {
    if (text.isEmpty()) return;
    const QRectF inner = dots(mm.adjusted(1.0, wrap ? 0.5 : 0, -1.0, wrap ? -0.5 : 0));
    if (inner.width() <= 0 || inner.height() <= 0) return;
    const double smallest = points * 0.6;
    double pt = points;
    QFont f = font(family, pt, bold);
    QString shown = text;
    int flags = int(align & Qt::AlignHorizontal_Mask);
    if (wrap) {
        flags |= Qt::AlignTop | Qt::TextWordWrap;
        while (pt > smallest && metrics(f).boundingRect(inner, flags, text).height() > inner.height())
            f = font(family, pt -= 0.5, bold);
    } else {
        flags |= Qt::AlignVCenter | Qt::TextSingleLine;
        shown.replace(QLatin1Char('\n'), QLatin1Char(' '));
        while (pt > smallest && metrics(f).horizontalAdvance(shown) > inner.width())
            f = font(family, pt -= 0.5, bold);
        if (metrics(f).horizontalAdvance(shown) > inner.width())
            shown = metrics(f).elidedText(shown, Qt::ElideRight, inner.width());
    }
    m_p.setFont(f);
    m_p.setPen(color);
    m_p.drawText(inner, flags, shown);
}

void Canvas::picture(const QRectF& mm, const QImage& image) {
    if (image.isNull()) return;
    const QRectF box = dots(mm);
    const QSizeF size = QSizeF(image.size()).scaled(box.size(), Qt::KeepAspectRatio);
    const QRectF target(box.center() - QPointF(size.width() / 2, size.height() / 2), size);
    // No more than 300 pixels to the inch of paper: a camera's photo would only swell the file.
    const int most = qMax(1, int(target.width() / m_dpmm / 25.4 * 300));
    if (image.width() > most * 5 / 4)
        m_p.drawImage(target, image.scaledToWidth(most, Qt::SmoothTransformation));
    else
        m_p.drawImage(target, image);
}

QStringList breakLines(const QString& para, const QFont& font, double limit, const QPaintDevice* device,
                       bool* brokeWord) {
    QStringList lines;
    if (brokeWord) *brokeWord = false;
    QTextLayout layout(para, font, device);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(limit);
        const int end = line.textStart() + line.textLength();
        if (brokeWord && end > 0 && end < para.size() && isWordChar(para.at(end - 1)) &&
            isWordChar(para.at(end)))
            *brokeWord = true;
        lines << para.mid(line.textStart(), line.textLength()).trimmed();
    }
    layout.endLayout();
    return lines;
}

// ---- TextMeasure ------------------------------------------------------------------------------

namespace {
// Layout is worked out at 1,200 dots to the inch, as fine as any device the pages go to.
constexpr double kMeasureDpi = 1200;

QFont measureFont(const QString& family, double points, bool bold) {
    QFont f(family);
    f.setPixelSize(qMax(1, qRound(points * kMeasureDpi / 72)));
    f.setBold(bold);
    f.setHintingPreference(QFont::PreferNoHinting);
    return f;
}
} // namespace

TextMeasure::TextMeasure(const QString& family, double points, bool bold)
    : m_font(measureFont(family, points, bold))
    , m_fm(m_font)
    , m_mmPerDot(25.4 / kMeasureDpi) {
    m_lineHeight = m_fm.lineSpacing() * m_mmPerDot;
    m_ascent = m_fm.ascent() * m_mmPerDot;
    m_avgChar = m_fm.averageCharWidth() * m_mmPerDot;
}

double TextMeasure::width(const QString& text) const {
    return m_fm.horizontalAdvance(text) * m_mmPerDot;
}

QStringList TextMeasure::wrap(const QString& text, double width) const {
    QStringList lines;
    const double limit = width / m_mmPerDot;
    QString plain = text;
    plain.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    for (const QString& para : plain.split(QLatin1Char('\n'))) {
        if (m_fm.horizontalAdvance(para) <= limit) {
            lines << para;
            continue;
        }
        lines << breakLines(para, m_font, limit);
    }
    return lines;
}

} // namespace zq
