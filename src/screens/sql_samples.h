#pragma once

#include <QString>
#include <QStringList>

namespace kibo {

/// The kinds of messages of which there is a sample; the first character of each chooses it.
QStringList messageTypes();
/// A statement that queues a message of that type; empty for none of them.
QString sampleStatement(const QString& messageType);
/// What is proposed to be tried out first.
QString testStatement();
/// Makes the database of the Gammu SMS gateway queue every message of its own here too.
QString smsTrigger();

}  // namespace kibo
