#pragma once

#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/dialogs.h"
#include "engine/gateway_state.h"

namespace kibo {

/// The edge at which errors surface: runs a tick or a click and shows a SurfacedError that it throws in a box
/// titled with the application's name. One box at a time: what surfaces behind an open box is only logged.
class ErrorEdge {
 public:
    /// `dialogs` must outlive the edge.
    explicit ErrorEdge(Dialogs& dialogs) : dialogs_(dialogs) {}

    /// `step` belongs to `owner`, for `holds`.
    void run(const std::function<void()>& step, const void* owner = nullptr);
    /// The box of an error of `owner` is open.
    bool holds(const void* owner) const { return boxOf_ == owner; }

 private:
    Dialogs& dialogs_;
    std::optional<const void*> boxOf_;  // whose error's box is open
};

/// Runs the timers of the state with real ones. A tick is never entered again while it runs, not from an event
/// loop inside a wait either; a tick that fell due meanwhile is left out, not caught up. A timer whose tick
/// surfaced an error is held until its box is closed.
class TimerRunner {
 public:
    explicit TimerRunner(ErrorEdge& edge) : edge_(edge) {}
    TimerRunner(const TimerRunner&) = delete;
    TimerRunner& operator=(const TimerRunner&) = delete;
    ~TimerRunner();

    /// Starts running `timer` (in its present state) with `tick`. `timer` must outlive the runner. Each
    /// switching on starts a full interval, also when it was on already.
    void add(StateTimer& timer, std::function<void()> tick);

    /// No tick starts any more: the program is about to end.
    void stopAll();

 private:
    struct Entry {
        Entry(StateTimer& theState, std::function<void()> theTick) : state(theState), tick(std::move(theTick)) {}

        StateTimer& state;
        std::function<void()> tick;
        QTimer timer;
        bool running = false;
    };
    void run(Entry& entry);

    ErrorEdge& edge_;
    std::vector<std::unique_ptr<Entry>> entries_;
    bool stopped_ = false;
};

}  // namespace kibo
