#pragma once

#include <QString>

#include "platform/result.h"

namespace kibo {

/// Where an installation has the guide's pages: beside the program, wherever its settings are.
QString helpFolder();

/// Opens the guide at a chapter, named by its anchor, in the operator's browser. A failure says in words for the
/// operator where the page should be.
Result<void> openHelpPage(const QString& folder, const QString& chapter);

}  // namespace kibo
