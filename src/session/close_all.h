#pragma once

#include <functional>

#include "base/dialogs.h"
#include "session/instance_rows.h"

namespace kibo {

/// "Close All": asks; after "Yes" removes the rows of every instance and calls `endAll`, which ends every running copy
/// of the program and this one. `rows` must outlive the box.
void closeAllInstances(Dialogs& dialogs, InstanceRows& rows, const std::function<void()>& endAll);

/// Ends every other running process of this program's own file. A copy that lies elsewhere is another program.
void endOtherCopies();

}  // namespace kibo
