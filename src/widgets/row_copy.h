#pragma once

#include <QTimer>
#include <functional>
#include <memory>
#include <vector>

#include "base/row_source.h"

namespace kibo {

/// Puts rows onto the clipboard as a table, bit by bit in the event loop: a hundred thousand rows hold up nobody. The
/// clipboard stays as it is until all are there.
class RowCopy : public QObject {
    Q_OBJECT

 public:
    /// What a clipboard passes on at once without holding up the desktop, in characters.
    static constexpr qsizetype kMostCharacters = 50 * 1024 * 1024;

    struct What {
        std::shared_ptr<const RowSource> rows;
        int columns = 0;
        std::vector<int> chosen;  ///< in the order in which they are copied
    };
    enum class End {
        Copied,
        Stopped,
        TooMuch,  ///< more than kMostCharacters
        RowsGone  ///< the rows ended before they were all read
    };
    using Told = std::function<void(int done, int all)>;
    using Ended = std::function<void(End end)>;

    explicit RowCopy(QObject* parent);

    /// Begins; few rows are copied before it returns. One copy at a time.
    void start(What what, Told told, Ended ended);
    void stop();
    bool isRunning() const { return bitByBit_.isActive(); }

 private:
    void workOn();
    void end(End end);

    What what_;
    Told told_;
    Ended ended_;
    std::vector<size_t> order_;   // places in `chosen` in which they are read: one row after another is quickest
    std::vector<QString> lines_;  // in the order of `chosen`
    size_t done_ = 0;
    qsizetype characters_ = 0;
    QTimer bitByBit_;
};

}  // namespace kibo
