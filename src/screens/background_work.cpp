#include "screens/background_work.h"

#include <utility>

namespace kibo {

BackgroundWork::~BackgroundWork() {
    for (auto& [number, thread] : threads_) thread.request_stop();
    threads_.clear();
}

void BackgroundWork::start(Work work) {
    abandon();
    running_ = ++last_;
    threads_.emplace_back(
        running_, std::jthread([this, number = running_, work = std::move(work)](const std::stop_token& stop) {
            Ended ended = work(stop);
            QMetaObject::invokeMethod(
                this, [this, number, ended = std::move(ended)] { end(number, ended); }, Qt::QueuedConnection);
        }));
}

void BackgroundWork::askToStop() {
    if (running_ != 0) threads_.back().second.request_stop();
}

void BackgroundWork::abandon() {
    askToStop();
    running_ = 0;
}

void BackgroundWork::end(quint64 number, const Ended& ended) {
    threads_.remove_if([number](const auto& one) { return one.first == number; });
    if (number != running_) return;
    running_ = 0;
    ended();
}

}  // namespace kibo
