#include "store/sql_failure.h"

#include <QRegularExpression>
#include <QString>
#include <algorithm>
#include <initializer_list>

namespace kibo {
namespace {

using Codes = std::initializer_list<const char16_t*>;

// Client and server error numbers of MySQL and MariaDB after which the connection is of no more use: can't connect,
// gone away, lost during query, lost (extended), server shutdown, killed, disconnected by timeout.
constexpr Codes kLost = {u"2002", u"2003", u"2006", u"2013", u"2055", u"1053", u"1927", u"4031"};
// Those that quote only names of the schema or the user: access denied, unknown database, column can't be null,
// number of values, no table privilege, no such table, field without default, data too long for a column.
constexpr Codes kQuoteNamesOnly = {u"1044", u"1045", u"1049", u"1048", u"1136",
                                   u"1142", u"1143", u"1146", u"1364", u"1406"};

// The row's values are the fault, by the numbers of the servers' classes 22 and 23 and their like: null, duplicate key,
// out of range, truncated, wrong date, field without default, no such character, too long, foreign keys, a partition,
// a trigger's own error, CHECK (MySQL, MariaDB).
constexpr Codes kRowRefused = {u"1048", u"1062", u"1216", u"1217", u"1264", u"1265", u"1292", u"1364",
                               u"1366", u"1406", u"1451", u"1452", u"1526", u"1644", u"3819", u"4025"};

// SIGNAL: its text is the trigger's own and may hold anything of the row.
constexpr const char16_t* kTriggersOwn = u"1644";

bool among(Codes codes, const QString& code) {
    return std::any_of(codes.begin(), codes.end(),
                       [&code](const char16_t* known) { return code == QString::fromUtf16(known); });
}

/// https://www.sqlite.org/rescode.html: the lowest byte of an extended code is the code.
bool sqliteRefusesRow(int code) {
    constexpr int kTooBig = 18, kConstraint = 19, kMismatch = 20;
    const int primary = code & 0xFF;
    return primary == kTooBig || primary == kConstraint || primary == kMismatch;
}

/// An apostrophe inside a word opens no quote, unless the word is what stands before a literal: N, X, B or a character
/// set such as _utf8mb4 (https://dev.mysql.com/doc/refman/8.0/en/string-literals.html).
QString withoutQuotedPieces(QString text) {
    static const QRegularExpression kQuoted(
        QStringLiteral("(?<!\\w)(?:[NXB]|_\\w+)?'.*'|\".*\"|(?<!\\w)(?:[NXB]|_\\w+)?'.*$|(?<=no such column: ).*"),
        QRegularExpression::DotMatchesEverythingOption | QRegularExpression::UseUnicodePropertiesOption |
            QRegularExpression::CaseInsensitiveOption);
    return text.replace(kQuoted, QStringLiteral("…"));
}

}  // namespace

bool isNoAnswer(const Failure& failure) {
    return among({u"2002", u"2003", u"2005"}, QString::fromStdString(failure.code));
}

QString wordsOf(const QSqlError& error) {
    static const QRegularExpression kPrefixes(QStringLiteral("(?:\\[[^\\]]*\\])+"));
    QString text = error.databaseText().isEmpty() ? error.driverText() : error.databaseText();
    return text.replace(kPrefixes, QStringLiteral(" ")).simplified();
}

Failure sqlFailure(const QSqlError& error, SqlErrors errors) {
    QString text = wordsOf(error);
    const QString code = error.nativeErrorCode();
    const bool sqlite = errors == SqlErrors::Sqlite;
    // QSQLITE calls a refused statement a connection error too, but then gives SQLite's code.
    const bool lost = among(kLost, code) || (error.type() == QSqlError::ConnectionError && code.isEmpty());
    // Nothing of a row is in an error of connecting, and what it quotes is what the operator has to mend.
    const bool connecting = lost || (!sqlite && error.type() == QSqlError::ConnectionError);
    if (code == QString::fromUtf16(kTriggersOwn)) text = QStringLiteral("a trigger of the table refuses it");
    if (!connecting && !among(kQuoteNamesOnly, code)) text = withoutQuotedPieces(text);
    const bool rowRefused = !lost && (sqlite ? sqliteRefusesRow(code.toInt()) : among(kRowRefused, code));
    const FailureKind kind = lost         ? FailureKind::ConnectionLost
                             : rowRefused ? FailureKind::RowRefused
                                          : FailureKind::Database;
    return {kind, text.toStdString(), code.toStdString()};
}

}  // namespace kibo
