#include "widgets/row_reading.h"

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

RowReading::RowReading(QObject* parent) : QObject(parent) {
    connect(&bitByBit_, &QTimer::timeout, this, &RowReading::workOn);
}

void RowReading::start(What what, Read read, Told told, Ended ended) {
    what_ = std::move(what);
    read_ = std::move(read);
    told_ = std::move(told);
    ended_ = std::move(ended);
    order_.resize(what_.chosen.size());
    std::iota(order_.begin(), order_.end(), size_t{0});
    if (!std::is_sorted(what_.chosen.begin(), what_.chosen.end()))
        std::sort(order_.begin(), order_.end(),
                  [this](size_t a, size_t b) { return what_.chosen[a] < what_.chosen[b]; });
    done_ = 0;
    bitByBit_.start(0);
    workOn();
}

void RowReading::workOn() {
    QElapsedTimer time;
    time.start();
    while (done_ < order_.size()) {
        for (const size_t next = std::min(done_ + kRowsAtOnce, order_.size()); done_ < next; ++done_)
            if (!read_(*what_.rows, what_.chosen[order_[done_]], order_[done_])) return end(End::Enough);
        if (what_.rows->hasEnded()) return end(End::RowsGone);
        if (done_ < order_.size() && time.elapsed() >= kPortionMs)
            return told_(static_cast<int>(done_), static_cast<int>(order_.size()));
    }
    end(End::Done);
}

void RowReading::stop() {
    if (isRunning()) end(End::Stopped);
}

void RowReading::end(End end) {
    bitByBit_.stop();
    what_ = {};
    order_ = {};
    read_ = {};
    const Ended ended = std::exchange(ended_, {});
    ended(end);
}

void copyRows(RowReading& reading, RowReading::What what, int columns, RowReading::Told told, RowReading::Ended ended) {
    // Lines stand in the text in the order in which they are read; where others were chosen first, they are put
    // together anew.
    struct Copy {
        struct Line {
            qsizetype begin = 0, length = 0;
        };
        QString text;
        std::vector<Line> lines;
    };
    auto copy = std::make_shared<Copy>();
    const bool inOrder = std::is_sorted(what.chosen.begin(), what.chosen.end());
    if (!inOrder) copy->lines.resize(what.chosen.size());
    const auto read = [copy, columns, inOrder](const RowSource& rows, int row, size_t place) {
        const qsizetype begin = copy->text.size();
        appendTableLine(copy->text, rows, columns, row);
        if (!inOrder) copy->lines[place] = {begin, copy->text.size() - begin};
        return copy->text.size() <= kMostCopiedCharacters;
    };
    reading.start(std::move(what), read, std::move(told),
                  [copy, inOrder, ended = std::move(ended)](RowReading::End end) {
                      if (end == RowReading::End::Done) {
                          QString text;
                          if (!inOrder) text.reserve(copy->text.size());
                          for (const Copy::Line& line : copy->lines)
                              text += QStringView(copy->text).mid(line.begin, line.length);
                          QGuiApplication::clipboard()->setText(inOrder ? copy->text : text);
                      }
                      ended(end);
                  });
}

}  // namespace kibo
