#pragma once

#include <sys/types.h>

namespace kibo::bench {

/// What the kernel knows of a process (proc(5)). Throws std::runtime_error when there is none with this id.
struct ProcessFigures {
    double cpuSeconds = 0;      ///< in user and system mode, all threads
    double residentMb = 0;      ///< VmRSS
    double peakResidentMb = 0;  ///< VmHWM
    double anonymousMb = 0;     ///< RssAnon: what is not shared files, such as libraries
};
ProcessFigures processFigures(pid_t pid);

/// Begins a new VmHWM of this process, at its present VmRSS.
void restartOwnPeak();

}  // namespace kibo::bench
