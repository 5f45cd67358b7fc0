#pragma once

#include <QString>
#include <QStringList>

#include "platform/result.h"

namespace kibo {

/// What a local store file is. Its content decides, not the system: an Access file is opened through the Access ODBC
/// driver where there is one, a SQLite file through SQLite.
enum class LocalFormat { Access, Sqlite };

/// The path of this system for one spelled with backslashes or slashes.
QString localPath(const QString& written);

/// Looks at the file without opening it as a database. Failure: it is missing, a folder, empty, cut short or no
/// database at all. Never creates it.
Result<LocalFormat> localFormat(const QString& path);

/// QSQLITE's database name for an existing file; opening it fails where the file has gone meanwhile, instead of
/// creating an empty one.
QString sqliteUri(const QString& path, bool readOnly);

/// QODBC's database name of an Access file, without its password. With the SQL of ANSI 92, which the tables need.
QString accessConnection(const QString& driver, const QString& path);

}  // namespace kibo
