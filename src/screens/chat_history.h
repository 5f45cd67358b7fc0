#pragma once

#include <QList>
#include <QString>

#include "base/settings.h"
#include "platform/result.h"
#include "store/database.h"

namespace kibo {

/// A message of a chat that has gone or come.
struct ChatLine {
    bool ours = false;
    QString time, text;
    QString status = {};  ///< of ours: "fail"

    bool operator==(const ChatLine&) const = default;
};

/// The last ten messages with `number`, oldest first, as the tables of received and of sent messages hold them. Where
/// instances share a table only those of `profile`. Looks through the latest part of a long sent log.
Result<QList<ChatLine>> lastLinesOfChat(Database& database, const Settings& settings, const QString& number,
                                        const QString& profile);

}  // namespace kibo
