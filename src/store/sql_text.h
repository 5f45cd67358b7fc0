#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariant>

namespace kibo {

/// What the log may say about a statement: its verb and table ("select outbox"), never its values.
QString statementName(const QString& sql);

/// The first table named after FROM, INTO or UPDATE; empty where there is none.
QString tableOf(const QString& sql);

/// Access date literals, #2020-11-27  23:59#, as SQLite needs them: '2020-11-27 23:59:00', so that comparing texts
/// compares times. Number signs inside quotes, and those that enclose no date, stay as they are.
QString withSqliteDateLiterals(const QString& sql);

/// A time as the tables hold it, "yyyy-MM-dd HH:mm:ss", that a statement stores or compares. Elsewhere a text does for
/// that; Access takes no text for a time.
struct StoredTime {
    QString text;
    friend bool operator==(const StoredTime&, const StoredTime&) = default;
};

/// A moment as a value for a statement; NULL for an invalid one.
QVariant storedTime(const QDateTime& time);

/// `sql` with each question mark outside of quotes replaced by its value: a text as a hexadecimal literal, which needs
/// no escaping whatever it holds and whatever the server's quoting mode is. Used in place of the driver's parameters,
/// since QODBC of Qt 6.4 hands on its own terminating NUL as the last character of every bound text.
QString withMySqlValues(const QString& sql, const QList<QVariant>& values);

/// The same for Access, whose texts stand in single quotes that are doubled inside, and times between number signs.
QString withAccessValues(const QString& sql, const QList<QVariant>& values);

}  // namespace kibo

Q_DECLARE_METATYPE(kibo::StoredTime)
