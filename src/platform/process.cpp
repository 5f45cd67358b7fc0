#include "platform/process.h"

namespace kibo::platform {

bool isRunning(ProcessId pid, ProcessStartTime startTime) {
    return startTime != 0 && processStartTime(pid) == startTime;
}

std::vector<Process> descendants(ProcessId pid) {
    std::vector<Process> found = children(pid);
    for (std::size_t i = 0; i < found.size(); ++i) {
        const std::vector<Process> next = children(found[i].id);
        found.insert(found.end(), next.begin(), next.end());
    }
    return found;
}

}  // namespace kibo::platform
