#pragma once

#include <QJsonObject>
#include <QString>
#include <memory>
#include <vector>

#include "platform/durable_file.h"

namespace kibo {

/// A row of the queue, as it is stored.
struct QueuedRow {
    QString id, mode, number, text, media, file, time;

    bool operator==(const QueuedRow&) const = default;
};

/// What happened to the message in hand, on the disk before it happens, so that the next start knows what a crash left
/// half done. A message is open from `taken` to `ended` or `wentBack`. The content of open messages stands in the file,
/// readable by its owner only; with nothing open the file is empty, or holds the id of the message that went back.
class SendJournal {
 public:
    enum class Stage {
        Taken,   ///< the queue's statements may have run, nothing was typed
        Typed,   ///< Enter may have been pressed
        Failed,  ///< nothing will be typed any more; the copy in the sent log may not say so yet
        Sent     ///< seen to go; `kibo_message` doesn't say so yet
    };
    struct Entry {
        QueuedRow row;
        QString by;  ///< who took it, see GatewayState::instance, and which attempt of his; empty: not noted
        Stage stage = Stage::Taken;
        bool wentBack = false;  ///< into the queue, after it was taken the time before
        QString text;           ///< as it was typed
        QString destination;    ///< number or name, as the chat was opened by it
        QString lastMessageId;  ///< of the chat before Enter; empty when not known
        QString reason;         ///< of the failure
        int lostLooks = 0;      ///< looks for it in its chat in which the browser was lost
    };

    /// The file's name in the program folder: one for each profile and each store, since ids belong to a store and the
    /// operator may have changed it between two starts.
    static QString fileName(const QString& profile, const QString& store);

    /// Opens `file`, with what an earlier run left open; nothing changes when it is open already. The failure's text is
    /// meant for the operator.
    Result<void> open(const QString& file);
    bool isOpen() const { return file_ != nullptr; }
    bool isOpen(const QString& file) const { return isOpen() && path_ == file; }

    /// Each returns when its record is on the disk. After a failure of these two the step must not be taken.
    Result<void> taken(const QueuedRow& row, const QString& by = {});
    Result<void> typed(const QString& id, const QString& destination, const QString& text,
                       const QString& lastMessageId);
    /// Whether it takes as much as a message again after it took none.
    bool takesAgain();
    /// What has happened already counts even if it can't be written: the next start then has to find out by itself.
    void failed(const QString& id, const QString& reason);
    void sent(const QString& id);
    /// The browser was lost while it was looked for in its chat.
    void lookLost(const QString& id);
    /// Sent, marked as failed, or in the queue as if it had never been taken.
    void ended(const QString& id);
    /// Moved back into the queue. That stays known until this message ends or another one is taken.
    void wentBack(const QString& id);

    /// Messages that have not ended, oldest first.
    const std::vector<Entry>& entries() const { return entries_; }
    /// The open message with this id, until the next record; null when it has ended.
    const Entry* entry(const QString& id) const;

 private:
    void close(const QString& id, const QJsonObject& record);
    void empty();
    Result<void> write(const QJsonObject& record);
    void apply(const QJsonObject& record);
    std::vector<Entry>::iterator find(const QString& id);

    std::unique_ptr<platform::DurableFile> file_;
    QString path_;  // of `file_`
    std::vector<Entry> entries_;
    QString back_;  // id of the message that went back into the queue
};

}  // namespace kibo
