#pragma once

#include <QSqlError>

#include "platform/result.h"

namespace kibo {

/// Whose error numbers an error holds.
enum class SqlErrors { Server, Sqlite };

/// A failure in the driver's own words, without the driver manager's "[…]" prefixes; `code` is the native error
/// number, since Qt doesn't hand on the SQLSTATE. A connection that is gone becomes FailureKind::ConnectionLost, values
/// that the table doesn't take FailureKind::RowRefused. Pieces of a refused statement that the driver quotes are left
/// out: they may be message texts.
Failure sqlFailure(const QSqlError& error, SqlErrors errors);

/// What the driver says, without those prefixes and with all that it quotes.
QString wordsOf(const QSqlError& error);

/// Whether a connection could not be made because no server answered at its host and port.
bool isNoAnswer(const Failure& failure);

}  // namespace kibo
