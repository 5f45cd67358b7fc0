#pragma once

#include <QHash>
#include <QString>

#include "base/settings.h"
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

/// The page's elements by name: those that a new store gets, and for names that an earlier program shipped otherwise
/// what that was, empty for a name that it did not know.
QHash<QString, QString> shippedElements();
QHash<QString, QString> formerElements();

/// Makes the tables and views that an older program's main store in the SQLite file `file` lacks. Those that are there
/// stay as they are; so does a file of another kind.
Result<void> completeLocalStore(const QString& file);

/// Makes the tables that the database of `settings` on a server does not hold yet, for an operator who has said so: the
/// program never does it by itself. Tables that are there stay as they are.
Result<void> makeServerTables(const Settings& settings);

}  // namespace kibo
