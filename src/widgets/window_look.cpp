#include "widgets/window_look.h"

#include <QFont>
#include <QPalette>
#include <QStyleFactory>

namespace kibo {
namespace {

constexpr int kFontPixels = 13;

QPalette calmPalette() {
    const QColor text(0x1E, 0x26, 0x2E);
    const QColor muted(0x6A, 0x75, 0x80);
    QPalette palette(QColor(0xE8, 0xEC, 0xEF), QColor(0xEE, 0xF1, 0xF4));
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, QColor(0xF5, 0xF8, 0xFA));
    palette.setColor(QPalette::Highlight, QColor(0x2B, 0x7A, 0x66));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, QColor(0xFF, 0xFC, 0xE8));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, muted);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(0x8B, 0x95, 0x9E));
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(0xB5, 0xBE, 0xC6));
    return palette;
}

}  // namespace

void applyLook(QApplication& application) {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(calmPalette());
    QFont font = QApplication::font();
    font.setPixelSize(kFontPixels);
    QApplication::setFont(font);
    Q_UNUSED(application)
}

}  // namespace kibo
