#pragma once

#include <QWidget>

class QAction;
class QPushButton;

namespace kibo {

/// A window beside the main one, not modal. Closing it hides it.
class Screen : public QWidget {
 public:
    Screen();

    /// Shows the current values, or only raises the window if it is open already.
    virtual void open() = 0;
    /// Whether it needs the page for itself: no message may be sent meanwhile.
    virtual bool pageInUse() const { return false; }
    /// Asks for the window's chapter of the guide: F1, and its button.
    QAction* help() const { return help_; }

 protected:
    QPushButton* helpButton(QWidget* parent) const;

 private:
    QAction* help_;
};

}  // namespace kibo
