#pragma once

#include <QWidget>
#include <functional>
#include <vector>

#include "base/controls.h"

namespace kibo {

/// Lines of words on coloured ground, one below the other, each whole and with a button where one helps. Takes no room
/// as long as there is nothing to say. What is new is announced to those who don't see it.
class Banner : public QWidget {
    Q_OBJECT

 public:
    struct Line {
        QString text;
        Colour background = 0, foreground = 0;
        QString button = {};  ///< its caption; empty: none
        std::function<void()> pressed = {};

        bool saysTheSame(const Line& other) const {
            return text == other.text && background == other.background && button == other.button;
        }
    };

    explicit Banner(QWidget* parent);

    /// Cheap when nothing has changed.
    void show(const std::vector<Line>& lines);

 private:
    QWidget* build(const Line& line);

    std::vector<Line> lines_;
};

}  // namespace kibo
