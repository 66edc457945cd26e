#include "OrgChartPrint.h"

#include "printing/PrintOutput.h"

#include <cmath>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QSvgGenerator>

namespace zq {

namespace {
constexpr double kMarginMm = 12;
constexpr double kTitleMm = 10; // room for the title above the chart
constexpr double kMarkMm = 5;
// A picture larger than this many dots is drawn smaller.
constexpr double kMaxPixels = 40e6;
constexpr double kMaxSide = 16000;
} // namespace

OrgChartDocument::OrgChartDocument(const OrgChart& chart, const QString& title, int pagesAcross)
    : m_chart(chart)
    , m_title(title) {
    const QRectF b = chart.bounds();
    // The paper lies as the chart does.
    m_paper = b.width() >= b.height() ? QSizeF(297, 210) : QSizeF(210, 297);
    const QSizeF area(m_paper.width() - 2 * kMarginMm, m_paper.height() - 2 * kMarginMm - kTitleMm);
    if (b.isEmpty()) return;
    if (pagesAcross <= 1) {
        m_scale = std::min(area.width() / b.width(), area.height() / b.height());
    } else {
        m_cols = pagesAcross;
        m_scale = area.width() * pagesAcross / b.width();
        m_rows = std::max(1, int(std::ceil(b.height() * m_scale / area.height() - 1e-9)));
    }
    m_tile = QSizeF(area.width() / m_scale, area.height() / m_scale);
}

void OrgChartDocument::paintPage(Canvas& canvas, int page) const {
    const int r = page / m_cols;
    const int c = page % m_cols;
    const double top = kMarginMm + kTitleMm;
    const QRectF areaMm(kMarginMm, top, m_paper.width() - 2 * kMarginMm, m_paper.height() - 2 * kMarginMm - kTitleMm);
    QString heading = m_title;
    if (pageCount() > 1) heading += QStringLiteral("    第 %1 行 第 %2 列 (共 %3×%4 页)").arg(r + 1).arg(c + 1).arg(m_rows).arg(m_cols);
    canvas.textLine(kMarginMm, kMarginMm + 6, areaMm.width(), heading, canvas.font(printFamily(), 12, true),
                    Qt::AlignHCenter);

    const QRectF b = m_chart.bounds();
    const QRectF tile(b.left() + c * m_tile.width(), b.top() + r * m_tile.height(), m_tile.width(), m_tile.height());
    QPainter& p = canvas.painter();
    p.save();
    p.setClipRect(canvas.dots(areaMm));
    p.translate(canvas.dots(areaMm.topLeft()));
    p.scale(m_scale * canvas.dotsPerMm(), m_scale * canvas.dotsPerMm());
    p.translate(-tile.topLeft());
    m_chart.paint(p, tile);
    p.restore();

    if (pageCount() > 1) {
        // Corner marks of the tile, for cutting and joining.
        const double l = areaMm.left(), t = areaMm.top(), rr = areaMm.right(), bb = areaMm.bottom();
        for (const QPointF& corner : {QPointF(l, t), QPointF(rr, t), QPointF(l, bb), QPointF(rr, bb)}) {
            const double dx = corner.x() == l ? -1 : 1;
            const double dy = corner.y() == t ? -1 : 1;
            canvas.line(QLineF(corner, corner + QPointF(dx * kMarkMm, 0)), 0.2);
            canvas.line(QLineF(corner, corner + QPointF(0, dy * kMarkMm)), 0.2);
        }
    }
}

bool SaveOrgChart(const OrgChart& chart, const QString& title, const QString& path, QString* error) {
    const QString suffix = QFileInfo(path).suffix().toLower();
    const QRectF b = chart.bounds();
    const auto fail = [&](const QString& why) {
        if (error) *error = why;
        return false;
    };
    if (suffix == QLatin1String("pdf")) {
        OrgChartDocument doc(chart, title);
        return writePdf(doc, path) || fail(QStringLiteral("无法写入文件: %1").arg(path));
    }
    if (suffix == QLatin1String("svg")) {
        QSvgGenerator svg;
        svg.setFileName(path);
        svg.setTitle(title);
        svg.setSize(b.size().toSize());
        svg.setViewBox(QRectF(QPointF(0, 0), b.size()));
        QPainter p;
        if (!p.begin(&svg)) return fail(QStringLiteral("无法写入文件: %1").arg(path));
        p.translate(-b.topLeft());
        chart.paint(p);
        return p.end() || fail(QStringLiteral("无法写入文件: %1").arg(path));
    }
    if (suffix == QLatin1String("png")) {
        const double scale = std::min({1.0, std::sqrt(kMaxPixels / (b.width() * b.height())),
                                       kMaxSide / std::max(b.width(), b.height())});
        QImage image(std::max(1, int(b.width() * scale)), std::max(1, int(b.height() * scale)), QImage::Format_RGB32);
        image.fill(Qt::white);
        {
            QPainter p(&image);
            p.scale(scale, scale);
            p.translate(-b.topLeft());
            chart.paint(p);
        }
        return image.save(path, "PNG") || fail(QStringLiteral("无法写入文件: %1").arg(path));
    }
    return fail(QStringLiteral("不认识的文件类型: %1 (可存为 .pdf, .png 或 .svg)").arg(path));
}

} // namespace zq
