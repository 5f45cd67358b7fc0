#include "app/sql_failure.h"

#include <QRegularExpression>
#include <QString>

namespace kibo {
namespace {

// Client and server error numbers of MySQL and MariaDB after which the connection is of no more use: can't connect,
// gone away, lost during query, lost (extended), server shutdown, killed, disconnected by timeout.
bool meansConnectionLost(const QString& code) {
    for (const char16_t* lost : {u"2002", u"2003", u"2006", u"2013", u"2055", u"1053", u"1927", u"4031"})
        if (code == QString::fromUtf16(lost)) return true;
    return false;
}

}  // namespace

Failure sqlFailure(const QSqlError& error) {
    static const QRegularExpression kPrefixes(QStringLiteral("(?:\\[[^\\]]*\\])+"));
    QString text = error.databaseText().isEmpty() ? error.driverText() : error.databaseText();
    text.replace(kPrefixes, QStringLiteral(" "));
    // QSQLITE calls a refused statement a connection error too, but then gives SQLite's code.
    const QString code = error.nativeErrorCode();
    const bool lost = meansConnectionLost(code) || (error.type() == QSqlError::ConnectionError && code.isEmpty());
    return {lost ? FailureKind::ConnectionLost : FailureKind::Database, text.simplified().toStdString(),
            error.nativeErrorCode().toStdString()};
}

}  // namespace kibo
