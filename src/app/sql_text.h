#pragma once

#include <QString>

namespace kibo {

/// What the log may say about a statement: its verb and table ("select outbox"), never its values.
QString statementName(const QString& sql);

/// The first table named after FROM, INTO or UPDATE; empty where there is none.
QString tableOf(const QString& sql);

/// Access date literals, #2020-11-27  23:59#, as SQLite needs them: '2020-11-27 23:59:00', so that comparing texts
/// compares times. Number signs inside quotes, and those that enclose no date, stay as they are.
QString withSqliteDateLiterals(const QString& sql);

}  // namespace kibo
