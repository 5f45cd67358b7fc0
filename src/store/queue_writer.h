#pragma once

#include <QDateTime>
#include <QString>
#include <optional>
#include <vector>

#include "store/database.h"

namespace kibo {

/// A message to be queued, as it will stand in its row.
struct NewMessage {
    int mode = 0;  ///< `wa_mode`
    QString number, text;
    QString media = {}, file = {};
    QDateTime time = {};   ///< when it may leave; invalid: the moment at which it is queued
    qint64 id = 0;         ///< 0: the store gives one
    QString profile = {};  ///< whose it is in `multi`, where not the writer's
};

/// The one way into the queue for everything that queues messages: one or a hundred thousand, in `outbox` or in a
/// profile's part of `multi`.
class QueueWriter {
 public:
    /// `profile`: whose messages they are where instances share the table `multi`; nothing: they go into `outbox`.
    /// `database` must outlive the writer.
    explicit QueueWriter(Database& database, std::optional<QString> profile = {})
        : database_(database), profile_(std::move(profile)) {}

    /// Queues all of `messages`, in their order, or none of them. The failure has not gone to the error policy.
    Result<void> append(const std::vector<NewMessage>& messages);

 private:
    Result<void> insert(const NewMessage* first, const NewMessage* end);

    Database& database_;
    std::optional<QString> profile_;
};

}  // namespace kibo
