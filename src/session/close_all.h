#pragma once

#include <functional>

#include "base/dialogs.h"
#include "session/instance_rows.h"

namespace kibo {

/// "Close All": asks, removes the rows of every instance and ends every running copy of the program.
/// Returns false, with nothing done, when the operator said No.
bool closeAllInstances(Dialogs& dialogs, InstanceRows& rows, const std::function<void()>& endCopies);

/// Ends every other running process of this program's own file. A copy that lies elsewhere is another program.
void endOtherCopies();

}  // namespace kibo
