#pragma once

#include <QJsonObject>
#include <functional>
#include <memory>
#include <vector>

#include "inbox/incoming_row.h"
#include "platform/durable_file.h"
#include "platform/result.h"

namespace kibo {

/// Received messages on their way from the page into the database. Opening a chat takes the message's mark off the
/// page, so from that moment until its row is stored the message is known here only: it is on the disk before the
/// click.
class InboxJournal {
 public:
    struct Entry {
        quint64 key;
        IncomingRow row;
        /// It isn't known whether the chat was opened: the page decides, by whether its mark is still there.
        bool doubtful;
        /// It may be in the database already: by an earlier run, or by a statement that seemed to fail.
        bool maybeStored;
    };

    /// `path` gives the file; when it gives another one, that is opened in the place of the first.
    explicit InboxJournal(std::function<QString()> path) : path_(std::move(path)) {}

    /// Opens the file, if it isn't open yet, with what an earlier run has left in it: that is doubtful. Fails with Io
    /// where it can't be opened; asked again, it tries again.
    Result<void> open();

    /// Writes a row down, before the click. Its key; fails with Io when it can't be on the disk.
    Result<quint64> add(const IncomingRow& row);
    /// The same message, better known.
    void change(quint64 key, const IncomingRow& row);
    void setDoubtful(quint64 key, bool doubtful);
    void setMaybeStored(quint64 key);
    /// The row is stored, or need not be.
    void settle(quint64 key);

    /// Whether a row of this message is on its way.
    bool holds(const QString& messageId) const;
    const std::vector<Entry>& entries() const { return entries_; }
    /// Why the file could not be opened, or written when it was last tried; empty: it could.
    const QString& problem() const { return problem_; }

 private:
    Entry* find(quint64 key);
    Result<void> read(const QString& path);
    Result<void> noted(Result<void> done);
    Result<void> write(const QJsonObject& line);

    std::function<QString()> path_;
    std::unique_ptr<platform::DurableFile> file_;
    QString openPath_;  // of `file_`
    std::vector<Entry> entries_;
    quint64 lastKey_ = 0;
    QString problem_;
};

}  // namespace kibo
