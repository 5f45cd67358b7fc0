#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <deque>

#include "base/clock.h"
#include "base/settings.h"
#include "browser/chat_page.h"
#include "engine/gateway_state.h"
#include "store/database.h"

namespace kibo {

/// The ticks of messages that went out: taken from looks at the page that are made anyway, kept in mind for the newest
/// messages, and written into `kibo_message` afterwards, in moments without a message in hand. Nothing of it holds up
/// sending or fails a message.
///
/// A tick counts for the message with the page's own id. A row of the chat list has none: there it counts for the last
/// message that went to a chat of this title, as long as the row shows its text. Ticks never go back.
class MessageTicks {
 public:
    /// All must outlive the object.
    MessageTicks(GatewayState& state, const Settings& settings, Database& database, const Clock& clock)
        : state_(state), settings_(settings), database_(database), clock_(clock) {}

    struct Message {
        QString id;         ///< in the outbox
        QString pageId;     ///< the page's own; empty where it didn't tell
        QString chatTitle;  ///< empty where the page showed none
        QString text;       ///< as it was typed; of files: the last one's caption
    };
    /// A message has gone out, just now.
    void sent(const Message& message);

    void see(const QList<ShownTick>& ofOpenChat);
    void see(const QList<EntryTick>& ofChatList);

    /// Writes what has been seen since, some of it at a time, and says in the state whether nothing is delivered any
    /// more. Call it as often as you like.
    void write();

 private:
    struct Known {
        QString id;
        qint64 row = 0;  // its newest row in kibo_message; 0: not asked yet
        QString pageId;
        QString title, text;  // no title: a row of the chat list tells nothing of it
        QDateTime sent;
        QDateTime lastSeen = {};
        int ticks = -1;  // not seen yet
        QDateTime raised = {};
        bool written = true;
    };

    void startAnewForOthers();
    void raise(Known& message, int ticks);
    void limit();
    Result<void> load();
    Result<void> writeSeen();
    Result<void> findRow(Known& message);
    bool noneDelivered() const;
    bool multi() const { return isYes(settings_.Multi); }
    QString source() const { return multi() ? QStringLiteral("multi") : QStringLiteral("outbox"); }

    GatewayState& state_;
    const Settings& settings_;
    Database& database_;
    const Clock& clock_;
    std::deque<Known> known_;  // oldest first
    QString whose_;            // source and profile that they are of
    bool loaded_ = false;      // with what the table says of those before
    bool delivers_ = false;    // a message has been delivered so far
    bool told_ = false;        // that the table refuses
    qint64 writeAgainMs_ = 0;
};

}  // namespace kibo
