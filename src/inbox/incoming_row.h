#pragma once

#include <QByteArray>
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
    QString wa_time;                      ///< local time of the reading, "yyyy-MM-dd HH:mm:ss"
    QString messageId = {}, chatId = {};  ///< as the page names them; empty on a page that doesn't
    bool inGroup = false;
    QString messageTime = {};  ///< the message's own, "yyyy-MM-dd HH:mm"; empty where the page doesn't tell
    QString kind = {};         ///< see ArrivedMessage
    /// Of a chat that was opened to read it: how many messages it had unread; its rows follow. Not stored.
    int unread = 0;

    /// The same for rows that the table can't tell apart.
    QByteArray likeness() const;
};

}  // namespace kibo
