#include "main_window/gateway_engine.h"

namespace kibo {

GatewayEngine::GatewayEngine(const Parts& p)
    : pacing(p.state, p.settings, p.clock),
      queue(p.state, p.settings, p.database, p.clock),
      opener(p.state, p.settings, p.page, p.clock, pacing),
      sender(p.state, p.page, p.elements, p.clock, pacing, opener, queue),
      machine(
          {p.state, p.settings, p.elements, p.database, p.page, p.clock, pacing, opener, queue, sender, p.random, {}}),
      chatListWatch(p.state, p.page, {}) {}

void GatewayEngine::addTicks(GatewayState& state, TimerRunner& timers) {
    timers.add(state.Timer_KIBO, [this] { machine.Timer_KIBO_Timer(); });
    timers.add(state.Timer2, [this] { chatListWatch.Timer2_Timer(); });
    timers.add(state.BreakTime, [this] { pacing.BreakTime_Timer(); });
    // Ticks without work: whether these two are on is what counts.
    timers.add(state.Timer_cekURL, [] {});
    timers.add(state.timer_QR, [] {});
}

}  // namespace kibo
