#include "Demo.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>

namespace zq::demo {

QByteArray portraitJpeg(int seed) {
    QImage img(358, 441, QImage::Format_RGB32);
    QRandomGenerator random{quint32(seed)};
    // Noise in the background keeps the JPEG near the size of a real photo.
    for (int y = 0; y < img.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < img.width(); ++x) {
            const int n = int(random.bounded(24));
            line[x] = qRgb(200 - y / 6 + n, 215 - y / 8 + n, 235 - y / 10 + n);
        }
    }
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor::fromHsv(seed * 37 % 360, 90, 120));
    p.drawEllipse(QRectF(40, 300, 278, 260));
    p.setBrush(QColor(232, 190, 160));
    p.drawEllipse(QRectF(109, 90, 140, 180));
    p.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    img.save(&buffer, "JPG", 85);
    return bytes;
}

} // namespace zq::demo
