#pragma once

#include <QString>
#include <functional>
#include <map>

#include "base/clock.h"

namespace kibo {

/// Rows whose values a table has refused. Each is left alone for some minutes, so that it holds up nothing but itself,
/// and tried again then: somebody may have mended row or table. Kept in memory only, so a start tries all.
template <class Key>
class RefusedRows {
 public:
    static constexpr qint64 kPauseMs = 300'000;
    /// With so many refused, the table is taken to be the fault: no others are tried until one of these is due.
    static constexpr std::size_t kMost = 50;

    explicit RefusedRows(const Clock& clock) : clock_(clock) {}

    void add(Key key, const QString& why) { rows_[key] = {clock_.monotonicMs() + kPauseMs, why}; }
    /// Drops those for which it holds: taken after all, or no longer there.
    void dropIf(const std::function<bool(Key key)>& gone) {
        std::erase_if(rows_, [&gone](const auto& row) { return gone(row.first); });
    }

    /// Whether this row is to be left alone now.
    bool holds(Key key) const {
        const auto row = rows_.find(key);
        return row == rows_.end() ? isFull() : clock_.monotonicMs() < row->second.againAtMs;
    }
    bool contains(Key key) const { return rows_.contains(key); }
    bool isFull() const { return rows_.size() >= kMost; }
    int count() const { return static_cast<int>(rows_.size()); }
    /// Why this one was refused; empty when it wasn't.
    QString reasonOf(Key key) const {
        const auto row = rows_.find(key);
        return row == rows_.end() ? QString() : row->second.why;
    }
    /// The one with the lowest key, and why it was refused; 0 and empty when there is none.
    Key firstKey() const { return rows_.empty() ? Key{} : rows_.begin()->first; }
    QString firstReason() const { return rows_.empty() ? QString() : rows_.begin()->second.why; }

 private:
    struct Refusal {
        qint64 againAtMs;
        QString why;
    };

    const Clock& clock_;
    std::map<Key, Refusal> rows_;
};

}  // namespace kibo
