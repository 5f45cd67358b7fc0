#pragma once

#include <QTimer>
#include <functional>
#include <memory>
#include <vector>

#include "base/row_source.h"

namespace kibo {

/// Reads many rows bit by bit in the event loop, so that a hundred thousand hold up nobody.
class RowReading : public QObject {
    Q_OBJECT

 public:
    struct What {
        std::shared_ptr<const RowSource> rows;
        std::vector<int> chosen;  ///< rows, in any order
    };
    enum class End {
        Done,
        Stopped,
        Enough,   ///< the reader wanted no more
        RowsGone  ///< the rows ended before they were all read
    };
    /// Takes a row, which stands at `place` in `chosen`. False: no more.
    using Read = std::function<bool(const RowSource& rows, int row, size_t place)>;
    using Told = std::function<void(int done, int all)>;
    using Ended = std::function<void(End end)>;

    explicit RowReading(QObject* parent);

    /// Begins; few rows are read before it returns. One reading at a time.
    void start(What what, Read read, Told told, Ended ended);
    void stop();
    bool isRunning() const { return bitByBit_.isActive(); }

 private:
    void workOn();
    void end(End end);

    What what_;
    Read read_;
    Told told_;
    Ended ended_;
    std::vector<size_t> order_;  // places in which rows are read: one row after another is quickest
    size_t done_ = 0;
    QTimer bitByBit_;
};

/// What a clipboard passes on at once without holding up the desktop, in characters.
inline constexpr qsizetype kMostCopiedCharacters = 50 * 1024 * 1024;

/// Puts rows onto the clipboard as a table, whole, in the order in which they were chosen. The clipboard stays as it is
/// until all are there; `Enough` tells that they are more than kMostCopiedCharacters.
void copyRows(RowReading& reading, RowReading::What what, int columns, RowReading::Told told, RowReading::Ended ended);

}  // namespace kibo
