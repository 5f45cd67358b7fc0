#include "widgets/row_copy.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <algorithm>
#include <numeric>
#include <utility>

#include "base/table_text.h"

namespace kibo {
namespace {

constexpr int kPortionMs = 8;
constexpr size_t kRowsAtOnce = 16;

}  // namespace

RowCopy::RowCopy(QObject* parent) : QObject(parent) {
    connect(&bitByBit_, &QTimer::timeout, this, &RowCopy::workOn);
}

void RowCopy::start(What what, Told told, Ended ended) {
    what_ = std::move(what);
    told_ = std::move(told);
    ended_ = std::move(ended);
    order_.resize(what_.chosen.size());
    std::iota(order_.begin(), order_.end(), size_t{0});
    if (!std::is_sorted(what_.chosen.begin(), what_.chosen.end()))
        std::sort(order_.begin(), order_.end(),
                  [this](size_t a, size_t b) { return what_.chosen[a] < what_.chosen[b]; });
    lines_.assign(order_.size(), {});
    done_ = 0;
    characters_ = 0;
    bitByBit_.start(0);
    workOn();
}

void RowCopy::workOn() {
    QElapsedTimer time;
    time.start();
    while (done_ < order_.size()) {
        for (const size_t next = std::min(done_ + kRowsAtOnce, order_.size()); done_ < next; ++done_) {
            const int row = what_.chosen[order_[done_]];
            QString& line = lines_[order_[done_]];
            line = tabSeparated(*what_.rows, what_.columns, row, row);
            characters_ += line.size();
        }
        if (what_.rows->hasEnded()) return end(End::RowsGone);
        if (characters_ > kMostCharacters) return end(End::TooMuch);
        if (done_ < order_.size() && time.elapsed() >= kPortionMs)
            return told_(static_cast<int>(done_), static_cast<int>(order_.size()));
    }
    QString text;
    text.reserve(characters_);
    for (const QString& line : lines_) text += line;
    QGuiApplication::clipboard()->setText(text);
    end(End::Copied);
}

void RowCopy::stop() {
    if (isRunning()) end(End::Stopped);
}

void RowCopy::end(End end) {
    bitByBit_.stop();
    what_ = {};
    order_ = {};
    lines_ = {};
    const Ended ended = std::exchange(ended_, {});
    ended(end);
}

}  // namespace kibo
