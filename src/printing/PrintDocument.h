#pragma once

#include <QColor>
#include <QFont>
#include <QFontMetricsF>
#include <QHash>
#include <QImage>
#include <QLineF>
#include <QRectF>
#include <QSizeF>
#include <QString>

class QPaintDevice;
class QPainter;

namespace zq {

// The family a layout's font name prints with: the Chinese names the layouts were made with, and
// any family not installed, print with the system's font.
QString printFamily(const QString& name = {});

// The company's print variables (G().CompanyItems) by name: under the names of the language in use
// and under the simplified names that stored layouts are written with ("公司单位", "公司电话", ...).
QHash<QString, QString> companyVariables();
// Whether a name is one of the company's print variables, in either script.
bool isCompanyVariable(const QString& name);
// The name a letterhead shows: the company's unit, else the control's CompName.
QString companyName();

// Drawing on a page in millimetres from the paper's top left corner, whatever the device: PDF
// writer, printer or preview image. Fonts are sized in points and measured on the device itself.
class Canvas {
public:
    Canvas(QPainter& painter, double dotsPerMm);

    QPainter& painter() { return m_p; }
    double dotsPerMm() const { return m_dpmm; }
    double dots(double mm) const { return mm * m_dpmm; }
    QRectF dots(const QRectF& mm) const;
    QPointF dots(const QPointF& mm) const { return mm * m_dpmm; }

    QFont font(const QString& family, double points, bool bold = false) const;
    const QFontMetricsF& metrics(const QFont& font);

    // A rectangle framed with a pen `pen` mm wide (0: no frame) and filled when `fill` is valid.
    void box(const QRectF& mm, double pen, const QColor& fill = {}, const QColor& color = Qt::black);
    void line(const QLineF& mm, double pen, const QColor& color = Qt::black);
    // One line of text at a baseline; `align` (left, centre, right) places it within [x, x + width].
    void textLine(double x, double baseline, double width, const QString& text, const QFont& font,
                  Qt::Alignment align = Qt::AlignLeft, const QColor& color = Qt::black);
    // Text in a cell with 1 mm of padding at the sides. One line shrinks its font (to 60 %) until it fits,
    // then is cut; wrapped text shrinks until its lines fit the height and starts at the top.
    void cellText(const QRectF& mm, const QString& text, const QString& family, double points, bool bold,
                  Qt::Alignment align, bool wrap, const QColor& color = Qt::black);
    // A picture scaled into a box keeping its proportions, centred.
    void picture(const QRectF& mm, const QImage& image);

private:
    QPainter& m_p;
    double m_dpmm;
    QHash<QString, QFontMetricsF> m_metrics;
};

// A printout: a number of pages, each drawn on request, so the preview draws only the page shown and
// a PDF is written page by page.
class PrintDocument {
public:
    virtual ~PrintDocument() = default;
    // Names the job, the preview window and the PDF.
    virtual QString title() const = 0;
    // Paper in millimetres, as it lies (width > height in landscape).
    virtual QSizeF paperSize() const = 0;
    virtual int pageCount() const = 0;
    // Draws page `page` (0-based) on a blank sheet.
    virtual void paintPage(Canvas& canvas, int page) const = 0;

    bool landscape() const { return paperSize().width() > paperSize().height(); }
};

// Whether a character belongs to a run a line should not break: digits, letters and their signs
// (an identity card, a telephone number), not Chinese, which breaks between any two characters.
inline bool isWordChar(QChar ch) {
    return !ch.isSpace() && ch.unicode() < 0x2E80;
}

// Breaks one paragraph into lines no wider than `limit` device units of `font` on `device` (the
// screen's when none), between words where it can, else anywhere. `brokeWord`, when given, tells
// whether a run of isWordChar characters had to be broken.
QStringList breakLines(const QString& para, const QFont& font, double limit,
                       const QPaintDevice* device = nullptr, bool* brokeWord = nullptr);

// Text measures independent of any device, in millimetres, for laying out pages before any is drawn.
class TextMeasure {
public:
    TextMeasure(const QString& family, double points, bool bold = false);
    double width(const QString& text) const;
    // Distance from one baseline to the next.
    double lineHeight() const { return m_lineHeight; }
    double ascent() const { return m_ascent; }
    // Width of an average character, the unit of grid column widths.
    double averageChar() const { return m_avgChar; }
    // Breaks text into lines no wider than `width` mm, at line ends, word boundaries, or anywhere
    // (Chinese text has no spaces). An empty text gives one empty line.
    QStringList wrap(const QString& text, double width) const;
    const QFont& font() const { return m_font; }

private:
    QFont m_font;
    QFontMetricsF m_fm;
    double m_mmPerDot;
    double m_lineHeight;
    double m_ascent;
    double m_avgChar;
};

} // namespace zq
