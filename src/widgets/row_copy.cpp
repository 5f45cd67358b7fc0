#include "widgets/row_copy.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <utility>

#include "base/table_text.h"

namespace kibo {
namespace {

constexpr int kPortionMs = 8;
constexpr int kRowsAtOnce = 16;

}  // namespace

RowCopy::RowCopy(QObject* parent) : QObject(parent) {
    connect(&bitByBit_, &QTimer::timeout, this, &RowCopy::workOn);
}

void RowCopy::start(What what, Told told, Ended ended) {
    what_ = std::move(what);
    told_ = std::move(told);
    ended_ = std::move(ended);
    all_ = what_.chosen.empty() ? what_.rows->rowCount() : static_cast<int>(what_.chosen.size());
    done_ = 0;
    text_.clear();
    bitByBit_.start(0);
    workOn();
}

void RowCopy::workOn() {
    QElapsedTimer time;
    time.start();
    while (done_ < all_) {
        const int next = std::min(done_ + kRowsAtOnce, all_);
        for (; done_ < next; ++done_) {
            const int row = what_.chosen.empty() ? done_ : what_.chosen[static_cast<size_t>(done_)];
            text_ += tabSeparated(*what_.rows, what_.columns, row, row);
        }
        if (what_.rows->hasEnded()) return end(End::RowsGone);
        if (text_.size() > kMostCharacters) return end(End::TooMuch);
        if (done_ < all_ && time.elapsed() >= kPortionMs) return told_(done_, all_);
    }
    QGuiApplication::clipboard()->setText(std::exchange(text_, {}));
    end(End::Copied);
}

void RowCopy::stop() {
    if (isRunning()) end(End::Stopped);
}

void RowCopy::end(End end) {
    bitByBit_.stop();
    text_.clear();
    what_ = {};
    const Ended ended = std::exchange(ended_, {});
    ended(end);
}

}  // namespace kibo
