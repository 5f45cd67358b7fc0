#include "widgets/colour_label.h"

#include <QPainter>

namespace kibo {
namespace {

constexpr int kPadding = 2;
constexpr double kRadius = 5;

void drawElided(QPainter& painter, const QLabel& label, const QRect& area) {
    const QString line = label.fontMetrics().elidedText(label.text().simplified(), Qt::ElideRight, area.width());
    painter.drawText(area, static_cast<int>(label.alignment() | Qt::AlignVCenter) | Qt::TextSingleLine, line);
}

}  // namespace

void ColourLabel::setColours(Colour background, Colour foreground) {
    if (background == background_ && foreground == foreground_) return;
    background_ = background;
    foreground_ = foreground;
    update();
}

void ColourLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgb(background_));
    painter.drawRoundedRect(rect(), kRadius, kRadius);
    painter.setPen(QColor::fromRgb(foreground_));
    drawElided(painter, *this, rect().adjusted(kPadding, 0, -kPadding, 0));
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    drawElided(painter, *this, rect());
}

void ColourPanel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (fill_ == outline_) {
        painter.fillRect(rect(), QColor::fromRgb(fill_));
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor::fromRgb(outline_));
    painter.setBrush(QColor::fromRgb(fill_));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
}

}  // namespace kibo
