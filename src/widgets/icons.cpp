#include "widgets/icons.h"

#include <QPainter>
#include <QPixmap>
#include <QPolygonF>
#include <functional>

namespace kibo {
namespace {

constexpr int kPixels = 64;

/// `draw` paints into a square of 16 by 16 units.
QIcon drawn(const std::function<void(QPainter&)>& draw) {
    QPixmap pixmap(kPixels, kPixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(kPixels / 16.0, kPixels / 16.0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x20, 0x24, 0x2A));
    draw(painter);
    painter.end();
    return QIcon(pixmap);
}

}  // namespace

QIcon pauseIcon() {
    return drawn([](QPainter& painter) {
        painter.drawRoundedRect(QRectF(3, 2, 4, 12), 1, 1);
        painter.drawRoundedRect(QRectF(9, 2, 4, 12), 1, 1);
    });
}

QIcon playIcon() {
    return drawn([](QPainter& painter) {
        painter.drawPolygon(QPolygonF({QPointF(4, 2), QPointF(13.5, 8), QPointF(4, 14)}));
    });
}

QIcon applicationIcon() {
    return drawn([](QPainter& painter) {
        painter.setBrush(QColor(0x1F, 0x6F, 0x5C));
        painter.drawRoundedRect(QRectF(0, 1, 16, 11), 3, 3);
        painter.drawPolygon(QPolygonF({QPointF(3, 11), QPointF(3, 16), QPointF(8, 11)}));
        painter.setBrush(Qt::white);
        painter.drawPolygon(QPolygonF({QPointF(4, 3.5), QPointF(13, 6.5), QPointF(4, 9.5), QPointF(6, 6.5)}));
    });
}

}  // namespace kibo
