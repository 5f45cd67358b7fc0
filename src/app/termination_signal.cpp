#include "app/termination_signal.h"

#include <csignal>

namespace kibo {
namespace {

volatile std::sig_atomic_t requested = 0;

extern "C" void onTerminationSignal(int) {
    requested = 1;
}

}  // namespace

void watchTerminationSignals() {
    std::signal(SIGTERM, onTerminationSignal);
    std::signal(SIGINT, onTerminationSignal);
}

bool terminationRequested() {
    return requested != 0;
}

}  // namespace kibo
