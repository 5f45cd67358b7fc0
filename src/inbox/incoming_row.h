#pragma once

#include <QString>

namespace kibo {

/// A received message as it becomes a row of `inbox`, or of `multi` in multi-session mode.
struct IncomingRow {
    bool multi = false;
    QString PROFIL;  ///< this instance's profile; stored in `multi` only
    QString title;   ///< of the chat; not stored
    QString wa_no;   ///< the chat's title, or the number found for it
    QString SUB_NO;  ///< in a group: who wrote
    QString wa_text;
    QString wa_time;  ///< local time of the reading, "yyyy-MM-dd HH:mm:ss"
};

}  // namespace kibo
