#pragma once

#include <QHash>
#include <QScrollArea>
#include <vector>

#include "base/controls.h"
#include "responder/rule_graph.h"

namespace kibo {

/// The picture of a conversation: rules as boxes, an arrow from each to those that follow it. A click chooses a rule, a
/// double click opens it. The list above it tells the same in words, and is the way by keyboard.
class RuleChart : public QScrollArea {
    Q_OBJECT

 public:
    struct Box {
        QString title, text;  ///< one line each
        QString hint;
        Colour colour = 0xFFFFFF;
        bool isTrouble = false;
    };

    explicit RuleChart(QWidget* parent);

    void setRules(std::vector<RulePlace> places, QHash<qint64, Box> boxes);
    /// Marks a rule and scrolls to it; 0: none.
    void choose(qint64 id);

 signals:
    void chosen(qint64 id);
    void opened(qint64 id);

 private:
    class Sheet;
    Sheet* sheet_;
};

}  // namespace kibo
