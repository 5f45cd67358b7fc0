#include "screens/screen.h"

#include <QAction>
#include <QCoreApplication>
#include <QPushButton>

namespace kibo {

Screen::Screen() : help_(new QAction(this)) {
    help_->setShortcut(QKeySequence(Qt::Key_F1));
    addAction(help_);
}

QPushButton* Screen::helpButton(QWidget* parent) const {
    auto* button = new QPushButton(QCoreApplication::translate("Screen", "Help"), parent);
    button->setObjectName(QStringLiteral("cmd_Help"));
    button->setToolTip(QCoreApplication::translate("Screen", "The guide's chapter about this window (F1)"));
    button->setAutoDefault(true);  // Enter presses it
    connect(button, &QPushButton::clicked, help_, &QAction::trigger);
    return button;
}

}  // namespace kibo
