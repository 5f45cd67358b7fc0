#pragma once

#include <QHash>
#include <QStringList>
#include <vector>

#include "responder/rule.h"

namespace kibo {

// How the rules of one profile hang together: a rule follows the one that its `previous` names.

/// What keeps rules from answering, or a chat from going on, in words for the operator, by the rules' ids; rules with
/// nothing wrong are missing.
QHash<qint64, QStringList> ruleTroubles(const std::vector<Rule>& rules);

/// Where a rule stands in the picture of the conversation: columns from left to right as a chat goes on, lines from top
/// to bottom, both counted from 0.
struct RulePlace {
    qint64 id = 0;
    int column = 0, line = 0;
    qint64 previous = 0;        ///< the rule an arrow comes from; 0: none
    bool isTurnedBack = false;  ///< the arrow closes a loop

    friend bool operator==(const RulePlace&, const RulePlace&) = default;
};

/// Each rule once, in the order of the lines; those that follow a rule stand to its right, the first of them in its
/// line.
std::vector<RulePlace> rulePlaces(const std::vector<Rule>& rules);

}  // namespace kibo
