#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>
#include <array>
#include <functional>
#include <memory>

#include "inbox/incoming_row.h"
#include "platform/durable_file.h"
#include "platform/result.h"

namespace kibo {

/// The ids of the messages that were stored last, some thousands of them, also those of earlier runs: what has been
/// stored is never stored again. On the disk before the journal lets go of a row. They fill two files in turns, so that
/// the newest ones are in one of them at any moment.
class StoredIds {
 public:
    /// So many fill a file.
    static constexpr qsizetype kMostInAFile = 4'000;

    /// `path` gives the first file, the second one has ".2" behind it; when it gives another one, that is opened.
    explicit StoredIds(std::function<QString()> path) : path_(std::move(path)) {}

    /// Opens the files, if they aren't open yet. Fails with Io where they can't be opened; asked again, it tries again.
    Result<void> open();

    bool contains(const QString& messageId) const;
    /// The newest ones, at most `count`, oldest first.
    QStringList newest(qsizetype count) const;
    /// How many stored rows the table can't tell from `row`.
    int storedLike(const IncomingRow& row) const;
    /// Writes down that `row` is stored; does nothing for one without an id. Fails with Io.
    Result<void> add(const IncomingRow& row);

 private:
    struct Part {
        std::unique_ptr<platform::DurableFile> file;
        QHash<QString, QByteArray> likenesses;  // by id
        QStringList order;                      // the ids as they came
    };
    Result<void> read(Part& part, const QString& path);

    std::function<QString()> path_;
    QString openPath_;
    std::array<Part, 2> parts_;
    std::size_t current_ = 0;  // the one that is filled
};

}  // namespace kibo
