#include "support/virtual_display.h"

#include <csignal>

#include "platform/machine.h"

namespace kibo::test {

VirtualDisplay::VirtualDisplay() : before_(platform::environment("DISPLAY")) {
    // setpriv lets the kernel end the server when this program ends in any way. Without -noreset the server begins anew
    // between the last client of a moment and the next, which then is refused.
    output_ = ::popen(
        "echo $$; exec setpriv --pdeathsig TERM Xvfb -displayfd 1 -screen 0 1280x800x24 -nolisten tcp -noreset "
        "2>/dev/null",
        "r");
    char number[16] = "";
    if (output_) (void)!std::fscanf(output_, "%d %15s", &pid_, number);
    ::setenv("DISPLAY", (std::string(":") + number).c_str(), 1);
}

VirtualDisplay::~VirtualDisplay() {
    ::setenv("DISPLAY", before_.c_str(), 1);
    if (pid_ > 0) ::kill(pid_, SIGTERM);
    if (output_) ::pclose(output_);
}

}  // namespace kibo::test
