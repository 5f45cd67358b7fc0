#pragma once

#include <QtGlobal>
#include <deque>
#include <optional>

namespace kibo {

/// When will the queue be done? Pure arithmetic over the times of the last messages and the breaks to come.
class QueueForecast {
 public:
    struct Load {
        qint64 waiting = 0;      ///< messages that are due
        int batchSize = 0;       ///< 0: no breaks
        int sentInBatch = 0;     ///< of the running batch
        qint64 breakMs = 0;      ///< length of a break
        qint64 breakLeftMs = 0;  ///< of the break that goes on, 0: none
    };

    /// Milliseconds from the end of the message before to the end of this one, without breaks and pauses.
    void messageTook(qint64 milliseconds);

    /// Milliseconds until the last waiting message has gone; none without a message to go by, or without a queue.
    std::optional<qint64> untilDone(const Load& load) const;

 private:
    std::deque<qint64> recent_;
};

}  // namespace kibo
