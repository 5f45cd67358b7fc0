#include <execinfo.h>
#include <fcntl.h>
#include <link.h>
#include <signal.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <ctime>

#include "platform/crash_report.h"
#include "platform/crash_trace.h"

// Everything that runs after a signal uses neither the heap nor a lock of this program.

namespace kibo::platform {
namespace {

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
constexpr int kMostCalls = 64;
constexpr unsigned kMostSeconds = 10;

char file[4096];
char program[4096];              // the loader has no name for the program itself
alignas(16) char stack[65'536];  // the program's own may be what has run out
CrashReport report;

struct Call {
    std::uintptr_t address;
    const char* module;
    std::uintptr_t offset;
};

int findModule(dl_phdr_info* info, std::size_t, void* data) {
    auto& call = *static_cast<Call*>(data);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& part = info->dlpi_phdr[i];
        const std::uintptr_t begin = info->dlpi_addr + part.p_vaddr;
        if (part.p_type != PT_LOAD || call.address < begin || call.address - begin >= part.p_memsz) continue;
        call.module = *info->dlpi_name != '\0' ? info->dlpi_name : program;
        call.offset = call.address - info->dlpi_addr;
        return 1;
    }
    return 0;
}

void onSignal(int signal, siginfo_t* info, void*) {
    // A crash inside the loader may keep a lock that the walk needs: no trace then, and no hanging program.
    ::signal(SIGALRM, SIG_DFL);
    ::alarm(kMostSeconds);
    const char* abbreviation = ::sigabbrev_np(signal);
    report.add("signal ").number(static_cast<unsigned>(signal)).add(" SIG").add(abbreviation ? abbreviation : "?");
    if (const char* exception = uncaughtException()) report.add(", exception ").add(exception);
    if (signal != SIGABRT) report.add(", at address ").hex(reinterpret_cast<std::uintptr_t>(info->si_addr));
    report.add("\n  process ").number(static_cast<std::uint64_t>(::getpid()));
    report.add(", second ").number(static_cast<std::uint64_t>(::time(nullptr))).add(" since 1970\n");
    void* addresses[kMostCalls];
    const int count = ::backtrace(addresses, kMostCalls);
    for (int i = 0; i < count; ++i) {
        Call call{reinterpret_cast<std::uintptr_t>(addresses[i]), "?", reinterpret_cast<std::uintptr_t>(addresses[i])};
        ::dl_iterate_phdr(findModule, &call);
        report.call(call.module, call.offset);
    }
    const int out = ::open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (out >= 0) {
        [[maybe_unused]] const ssize_t written = ::write(out, report.text(), report.size());
        ::close(out);
    }
    ::raise(signal);  // ends the program once this returns
}

}  // namespace

void traceCrashes(const std::string& name) {
    if (name.size() >= sizeof file) return;
    std::memcpy(file, name.c_str(), name.size() + 1);
    if (const ssize_t size = ::readlink("/proc/self/exe", program, sizeof program - 1); size > 0) program[size] = '\0';
    noteUncaughtExceptions();
    void* first[1];
    ::backtrace(first, 1);  // loads what it needs, which must not happen after a crash
    stack_t own = {};
    own.ss_sp = stack;
    own.ss_size = sizeof stack;
    ::sigaltstack(&own, nullptr);
    struct sigaction action = {};
    action.sa_sigaction = onSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | static_cast<int>(SA_RESETHAND);
    ::sigfillset(&action.sa_mask);
    for (const int signal : kSignals) ::sigaction(signal, &action, nullptr);
}

}  // namespace kibo::platform
