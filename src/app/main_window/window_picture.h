#pragma once

#include <QString>
#include <QWidget>
#include <functional>

#include "engine/gateway_state.h"

namespace kibo {

/// Pictures of a running gateway for its documentation: "window.png" and the page's "page.png", written anew
/// whenever a message has ended and when the queue has become empty.
class WindowPicture {
 public:
    /// `savePage` writes the page's picture into a file; it may be empty. `window` and `state` must outlive it.
    WindowPicture(QWidget& window, const GatewayState& state, QString folder,
                  std::function<void(const QString& file)> savePage);

    /// Call it every now and then; it does nothing unless something has ended since the last call.
    void look();

    /// Writes both pictures now. False when the window's could not be written.
    bool save() const;

 private:
    QWidget& window_;
    const GatewayState& state_;
    QString folder_;
    std::function<void(const QString&)> savePage_;
    int ended_ = 0;
    bool queueEmpty_ = true;
};

}  // namespace kibo
