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
        QByteArray profile;
        PackedRow cells;
    };
    /// What is known of messages, by their ids, which rise.
    struct Records {
        std::vector<qint64> ids;
        std::vector<Record> found;

        Record* of(qint64 id);
    };

    bool open();
    void read(Records& records);
    bool readWhere(const QString& condition, const Database::Values& values, Records& records);

    const StoreAddress store_;
    const bool multi_;
    bool opened_ = false, areKept_ = false;
    const SystemClock clock_;
    const ErrorPolicy policy_;
    std::optional<Database> database_;
};

}  // namespace kibo
