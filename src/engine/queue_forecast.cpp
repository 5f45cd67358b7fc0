#include "engine/queue_forecast.h"

#include <numeric>

namespace kibo {
namespace {

/// Enough to even out, few enough to follow a change of pace.
constexpr std::size_t kRemembered = 20;

}  // namespace

void QueueForecast::messageTook(qint64 milliseconds) {
    recent_.push_back(milliseconds);
    if (recent_.size() > kRemembered) recent_.pop_front();
}

std::optional<qint64> QueueForecast::untilDone(const Load& load) const {
    if (recent_.empty() || load.waiting <= 0) return std::nullopt;
    const qint64 perMessage =
        std::accumulate(recent_.begin(), recent_.end(), qint64{0}) / static_cast<qint64>(recent_.size());
    // Nobody waits for the break after the last message.
    const qint64 breaks = load.batchSize > 0 ? (load.sentInBatch + load.waiting - 1) / load.batchSize : 0;
    return load.breakLeftMs + load.waiting * perMessage + breaks * load.breakMs;
}

}  // namespace kibo
