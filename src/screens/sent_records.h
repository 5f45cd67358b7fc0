#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "base/clock.h"
#include "base/packed_row.h"
#include "store/database.h"

namespace kibo {

/// What became of sent messages, as `kibo_message` tells it, for lines of the sent log. Reads over a connection of its
/// own, opened when it is first needed, since another one is in the middle of giving the lines then.
class SentRecords {
 public:
    SentRecords(StoreAddress store, bool multi) : store_(std::move(store)), multi_(multi) {}

    struct Line {
        qint64 id;           ///< 0: none that could be looked for
        QByteArray profile;  ///< in `multi`: of its row
        PackedRow cells;     ///< in the order of SentColumn, up to the status
    };
    /// Adds the other cells to each line of which something is known.
    void complete(std::vector<Line>& lines);

    /// False once a store has turned out to keep no such table.
    bool areKept() const { return !opened_ || areKept_; }

 private:
    struct Record {
        qint64 id = 0;  // of its row; 0: none was found
        QByteArray profile;
        PackedRow cells;
    };

    bool open();
    /// What is known of a message; nullptr: it isn't asked for.
    Record* of(qint64 id);
    void read();
    bool readWhere(const QString& condition, const Database::Values& values);

    const StoreAddress store_;
    const bool multi_;
    bool opened_ = false, areKept_ = false;
    const SystemClock clock_;
    const ErrorPolicy policy_;
    std::optional<Database> database_;
    std::vector<qint64> ids_;  // that are asked for; they rise
    std::vector<Record> found_;
};

}  // namespace kibo
