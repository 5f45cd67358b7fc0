#include "support/virtual_display.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "platform/machine.h"
#include "platform/shell.h"

namespace kibo::test {

VirtualDisplay::VirtualDisplay() : before_(platform::environment("DISPLAY")) {
    int ends[2];
    if (::pipe(ends) != 0) return;
    const std::string server = platform::findProgram("Xvfb");
    const std::string reportTo = std::to_string(ends[1]);
    pid_ = ::fork();
    if (pid_ == 0) {
        const int null = ::open("/dev/null", O_RDWR);
        for (const int standard : {STDOUT_FILENO, STDERR_FILENO}) ::dup2(null, standard);
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        ::execl(server.c_str(), "Xvfb", "-displayfd", reportTo.c_str(), "-screen", "0", "1280x800x24", "-nolisten",
                "tcp", nullptr);
        ::_exit(127);
    }
    ::close(ends[1]);
    std::string name = ":";
    pollfd input = {ends[0], POLLIN, 0};
    for (char c = 0; ::poll(&input, 1, 20000) == 1 && ::read(ends[0], &c, 1) == 1 && c != '\n';) name += c;
    ::close(ends[0]);
    ::setenv("DISPLAY", name.c_str(), 1);
}

VirtualDisplay::~VirtualDisplay() {
    ::setenv("DISPLAY", before_.c_str(), 1);
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    ::waitpid(pid_, nullptr, 0);
}

}  // namespace kibo::test
