#include "widgets/control_scaler.h"

#include <QFontInfo>
#include <QStringList>
#include <algorithm>
#include <cmath>

namespace kibo {
namespace {

constexpr const char* kTag = "tag";

bool nameBeginsWith(const QWidget& control, const QString& upperCasePrefix) {
    return control.objectName().toUpper().startsWith(upperCasePrefix);
}

bool isScaled(const QWidget& control) {
    return !control.objectName().isEmpty() && !nameBeginsWith(control, QStringLiteral("TIME")) &&
           !nameBeginsWith(control, QStringLiteral("MN"));
}

int scaled(int value, double factor) {
    return static_cast<int>(std::lround(value * factor));
}

}  // namespace

void ControlScaler::record(const QWidget& container) {
    const QList<QWidget*> children = container.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget* control : children) {
        if (!isScaled(*control)) continue;
        const QRect place = control->geometry();
        QString tag =
            QStringLiteral("%1 %2 %3 %4").arg(place.x()).arg(place.y()).arg(place.width()).arg(place.height());
        if (!nameBeginsWith(*control, QStringLiteral("SHAP"))) {
            tag += QStringLiteral(" %1").arg(QFontInfo(control->font()).pixelSize());
        }
        control->setProperty(kTag, tag);
        controls_.emplace_back(control);
    }
}

void ControlScaler::scale(QSize size) const {
    const double x = static_cast<double>(size.width()) / design_.width();
    const double y = static_cast<double>(size.height()) / design_.height();
    for (const QPointer<QWidget>& control : controls_) {
        if (!control) continue;
        const QStringList tag = control->property(kTag).toString().split(QLatin1Char(' '));
        if (tag.size() < 4) continue;
        const int left = scaled(tag[0].toInt(), x);
        const int top = scaled(tag[1].toInt(), y);
        // Right and bottom edges are scaled, not extents: neighbours that touch keep touching.
        const int right = scaled(tag[0].toInt() + tag[2].toInt(), x);
        const int bottom = scaled(tag[1].toInt() + tag[3].toInt(), y);
        if (tag.size() > 4) {
            const int pixels = std::clamp(scaled(tag[4].toInt(), std::min(x, y)), kSmallestFont,
                                          std::max(kLargestFont, tag[4].toInt()));
            QFont font = control->font();
            if (font.pixelSize() != pixels) {
                font.setPixelSize(pixels);
                control->setFont(font);
            }
        }
        control->setGeometry(left, top, right - left, bottom - top);
    }
}

}  // namespace kibo
