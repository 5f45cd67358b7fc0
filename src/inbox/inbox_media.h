#pragma once

#include <QTemporaryDir>
#include <memory>
#include <vector>

#include "base/clock.h"
#include "base/settings.h"
#include "browser/chat_page.h"
#include "engine/gateway_state.h"
#include "inbox/inbox_records.h"
#include "inbox/inbox_table.h"
#include "inbox/incoming_row.h"
#include "inbox/media_folder.h"

namespace kibo {

/// Saves what stored messages carry, with `InboxMedia` "Y": pictures, videos, voice notes and documents, through the
/// browser's own download. Each goes into an empty folder of its own, which tells whose it is whatever its name, and
/// from there into the folder `InboxFolder`, under a name that says nothing but profile, date and id.
///
/// No message waits for this: their rows are stored before, and a chat is held for a few seconds at most. A download
/// that has begun by then ends by itself; what was asked for and hasn't begun is waited for a minute, in which nothing
/// else is asked for, since the browser would put it into the wrong folder. The rest is left.
class InboxMedia {
 public:
    /// What it works on; all of it must outlive the object.
    struct Parts {
        GatewayState& state;
        const Settings& settings;
        ChatPage& page;
        Clock& clock;
        InboxRecords& records;
        MediaFolder& folder;
    };
    explicit InboxMedia(Parts parts) : p_(parts) {}

    /// The message was stored.
    void add(const IncomingRow& row, const InboxTable::Stored& stored);
    /// Saves what the stored messages of the open chat `title` carry. While the page is the caller's.
    void save(const QString& title);
    /// Title of a chat that `save` was not called for since; empty: there is none.
    QString waitingChat() const { return items_.empty() ? QString() : items_.front().title; }
    /// Looks after downloads that go on. Call it every now and then, but not while `save` waits.
    void lookAfter();

    /// So long the open chat is held for it, and while messages wait to be sent.
    static constexpr qint64 kLongestMs = 15'000, kLongestWhileOthersWaitMs = 4'000;
    /// So long a download that was asked for may take to begin once its chat was left, and to end.
    static constexpr qint64 kMayBeginMs = 60'000, kMayEndMs = 600'000;

 private:
    struct Item {
        qint64 record = 0;
        QString title;  ///< of its chat
        QString messageId, kind;
        QString name;  ///< of its file, without what follows the dot
    };
    /// One that the browser was asked for.
    struct Download {
        Item item;
        std::unique_ptr<QTemporaryDir> folder;
        QString suffix = {};
        qint64 askedAtMs = 0;
        bool begun = false;
    };
    std::vector<Item> takeItems(const QString& title);
    bool isTimeOver(qint64 beganMs) const;
    bool ask(Download& download, bool begins);
    void await(Download download, qint64 beganMs);
    bool isOver(Download& download);
    void finish(const Download& download, const QString& file);
    void leave(const Item& item, const QString& why) const;

    Parts p_;
    std::vector<Item> items_;
    std::vector<Download> running_;
    bool folderIsOurs_ = false;  // the browser's downloads go into one of the folders
};

}  // namespace kibo
