#include "bench/process_figures.h"

#include <unistd.h>

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace kibo::bench {

ProcessFigures processFigures(pid_t pid) {
    const std::string folder = "/proc/" + std::to_string(pid);
    ProcessFigures figures;
    std::ifstream stat(folder + "/stat");
    std::string line;
    if (!std::getline(stat, line)) throw std::runtime_error("process " + std::to_string(pid) + " has ended");
    // The name in parentheses may hold blanks; utime and stime are the 12th and 13th field behind it.
    std::istringstream fields(line.substr(line.rfind(')') + 2));
    std::string skipped;
    for (int i = 0; i < 11; ++i) fields >> skipped;
    double user = 0, system = 0;
    fields >> user >> system;
    figures.cpuSeconds = (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));

    std::ifstream status(folder + "/status");
    while (std::getline(status, line)) {
        std::istringstream entry(line);
        std::string name;
        double kilobytes = 0;
        entry >> name >> kilobytes;
        if (name == "VmRSS:") figures.residentMb = kilobytes / 1024;
        if (name == "VmHWM:") figures.peakResidentMb = kilobytes / 1024;
        if (name == "RssAnon:") figures.anonymousMb = kilobytes / 1024;
    }
    return figures;
}

void restartOwnPeak() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

}  // namespace kibo::bench
