#pragma once

#include <QList>
#include <QString>
#include <functional>
#include <memory>

#include "base/clock.h"
#include "browser/chat_page.h"
#include "platform/durable_file.h"
#include "platform/result.h"

namespace kibo {

/// Which chats are open, or were left only now, and up to which message all is in the journal that came in there. The
/// list marks none of it as unread and only the page knows it, so it would be gone with the browser: these chats are
/// looked into once more. On the disk, since the program may end in the same moment.
class OpenedChats {
 public:
    /// `path` gives the file; when it gives another one, that is opened in the place of the first. `clock` must outlive
    /// the object.
    OpenedChats(std::function<QString()> path, const Clock& clock) : path_(std::move(path)), clock_(clock) {}

    /// The page shows this.
    void see(const OpenChat& chat);
    /// All that the page had to tell is in the journal: of the chats that were left nothing is owed.
    void allTaken();

    /// The page that was looked at so far has gone, in this run or an earlier one. Gives what its chats owe.
    const QList<LostChat>& pageIsNew();
    const QList<LostChat>& lost() const { return lost_; }
    void lookedInto(const QString& title);

 private:
    void open();
    void write();

    std::function<QString()> path_;
    const Clock& clock_;
    QString openPath_;
    std::unique_ptr<platform::DurableFile> file_;
    QList<LostChat> opened_;  // the last one is on the page
    QList<LostChat> lost_;
    qsizetype written_ = 0;
};

}  // namespace kibo
