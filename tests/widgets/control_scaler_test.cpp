#include "widgets/control_scaler.h"

#include <gtest/gtest.h>

#include <QFontInfo>
#include <QLabel>

namespace kibo::test {
namespace {

TEST(ControlScalerTest, scalesFromTheDesignEveryTime) {
    QWidget area;
    ControlScaler scaler{QSize(1000, 500)};
    const auto add = [&area](const char* name, const QRect& place) {
        auto* label = new QLabel(&area);
        label->setObjectName(QLatin1String(name));
        label->setGeometry(place);
        QFont font;
        font.setPixelSize(13);
        label->setFont(font);
        return label;
    };
    QLabel* left = add("lbLeft", {10, 20, 303, 40});
    QLabel* right = add("lbRight", {313, 20, 100, 40});
    QLabel* timer = add("timer_start", {1, 2, 3, 4});
    scaler.record(area);
    EXPECT_EQ(right->property("tag").toString(), QStringLiteral("313 20 100 40 13"));
    for (int width = 2400; width >= 700; width -= 17) {
        scaler.scale(QSize(width, width / 2));
        EXPECT_EQ(left->x() + left->width(), right->x()) << "neighbours that touch keep touching";
    }
    scaler.scale(QSize(2000, 1000));
    EXPECT_EQ(left->geometry(), QRect(20, 40, 606, 80));
    EXPECT_EQ(timer->geometry(), QRect(1, 2, 3, 4));
    scaler.scale(QSize(1000, 500));
    EXPECT_EQ(left->geometry(), QRect(10, 20, 303, 40)) << "no size leaves a trace";
    EXPECT_EQ(QFontInfo(left->font()).pixelSize(), 13);
    scaler.scale(QSize(9000, 500));
    EXPECT_EQ(QFontInfo(left->font()).pixelSize(), 13) << "the narrower direction decides";
    scaler.scale(QSize(100, 50));
    EXPECT_EQ(QFontInfo(left->font()).pixelSize(), ControlScaler::kSmallestFont);
}

}  // namespace
}  // namespace kibo::test
