#pragma once

#include <QWidget>

namespace kibo {

/// A window beside the main one, not modal. Closing it hides it.
class Screen : public QWidget {
 public:
    /// Shows the current values, or only raises the window if it is open already.
    virtual void open() = 0;
    /// Whether it needs the page for itself: no message may be sent meanwhile.
    virtual bool pageInUse() const { return false; }
};

}  // namespace kibo
