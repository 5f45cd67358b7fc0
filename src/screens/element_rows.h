#pragma once

#include <QString>
#include <vector>

namespace kibo {

/// One name of the element table as an operator meets it.
struct ElementRow {
    QString name;         ///< "XX_ChatBox"
    QString box;          ///< object name of its text box: "nn_ChatBox"
    QString description;  ///< what it finds, in an operator's words
};

/// The rows that belong together on the element screen.
struct ElementGroup {
    QString title;
    std::vector<ElementRow> rows;
};

/// Every name of the element table in groups, in the order of the screen. Names that nobody has described yet stand in
/// a last group, "Further".
std::vector<ElementGroup> elementGroups();

}  // namespace kibo
