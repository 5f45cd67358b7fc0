#pragma once

#include <QString>

#include "platform/result.h"
#include "store/local_store.h"

namespace kibo {

/// What a local store is for: queues and logs (kb.mdb), or the page's elements (element.sys).
enum class StoreContent { Main, Elements };

/// Makes a local store with its tables, and the shipped rows, in `file`, which must not exist: an Access file where
/// programs of this system use those and the driver is installed, else a SQLite file. It appears under its name only
/// when it is complete; one that another process has made meanwhile stays. Only its owner can read it, where the system
/// has such rights.
Result<LocalFormat> makeStore(const QString& file, StoreContent content);

}  // namespace kibo
