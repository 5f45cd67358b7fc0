#include "widgets/banner.h"

#include <QAccessible>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "widgets/accessibility.h"

namespace kibo {

Banner::Banner(QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    setAccessibleName(tr("What hinders sending or reading"));
    hide();
}

void Banner::show(const std::vector<Line>& lines) {
    const bool same = std::equal(lines.begin(), lines.end(), lines_.begin(), lines_.end(),
                                 [](const Line& a, const Line& b) { return a.saysTheSame(b); });
    if (same) return;
    const std::vector<Line> before = std::exchange(lines_, lines);
    while (QLayoutItem* item = layout()->takeAt(0)) {
        // Perhaps it is its own button that has just been pressed.
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    for (const Line& line : lines) {
        QWidget* row = build(line);
        layout()->addWidget(row);
        const bool isNew =
            std::none_of(before.begin(), before.end(), [&](const Line& b) { return b.text == line.text; });
        if (!isNew) continue;
        setAnnounced(row);
        QAccessibleEvent heard(row, QAccessible::Alert);
        QAccessible::updateAccessibility(&heard);
    }
    setVisible(!lines.empty());
}

QWidget* Banner::build(const Line& line) {
    auto* row = new QWidget(this);
    QPalette palette = row->palette();
    palette.setColor(QPalette::Window, QColor::fromRgb(line.background));
    palette.setColor(QPalette::WindowText, QColor::fromRgb(line.foreground));
    row->setPalette(palette);
    row->setAutoFillBackground(true);
    row->setAccessibleName(line.text);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(16, 5, 12, 5);
    auto* text = new QLabel(line.text, row);
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(text, 1);
    if (!line.button.isEmpty()) {
        auto* button = new QPushButton(line.button, row);
        button->setPalette(QPalette());
        button->setAutoDefault(true);  // Enter presses it
        connect(button, &QPushButton::clicked, this, [pressed = line.pressed] { pressed(); });
        layout->addWidget(button);
    }
    return row;
}

}  // namespace kibo
