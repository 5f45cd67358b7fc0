#include <windows.h>

#include <csignal>
#include <cstring>
#include <ctime>

#include "platform/crash_report.h"
#include "platform/crash_trace.h"

namespace kibo::platform {
namespace {

constexpr int kMostCalls = 64;
constexpr ULONG kStackLeft = 65'536;  // for the report of a stack that has run out

char file[MAX_PATH * 4];
CrashReport report;

void addCall(DWORD64 address) {
    HMODULE module = nullptr;
    char name[MAX_PATH] = "?";
    const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (::GetModuleHandleExA(flags, reinterpret_cast<LPCSTR>(address), &module))
        ::GetModuleFileNameA(module, name, sizeof name);
    name[sizeof name - 1] = '\0';
    report.call(name, address - reinterpret_cast<DWORD64>(module));
}

/// From where it happened, not from here.
void addCalls(CONTEXT context) {
    for (int i = 0; i < kMostCalls && context.Rip != 0; ++i) {
        addCall(context.Rip);
        DWORD64 base = 0;
        if (RUNTIME_FUNCTION* function = ::RtlLookupFunctionEntry(context.Rip, &base, nullptr)) {
            void* data = nullptr;
            DWORD64 frame = 0;
            ::RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &data, &frame, nullptr);
        } else if (context.Rip < 0x10000 && context.Rsp != 0) {  // a call through no function: its caller is on top
            context.Rip = *reinterpret_cast<DWORD64*>(context.Rsp);
            context.Rsp += sizeof context.Rip;
        } else {
            return;
        }
    }
}

void write(const CONTEXT& context) {
    report.add("\n  process ").number(::GetCurrentProcessId());
    report.add(", second ").number(static_cast<std::uint64_t>(::time(nullptr))).add(" since 1970\n");
    addCalls(context);
    const HANDLE out = ::CreateFileA(file, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                     FILE_ATTRIBUTE_NORMAL, nullptr);
    if (out == INVALID_HANDLE_VALUE) return;
    DWORD written = 0;
    ::WriteFile(out, report.text(), static_cast<DWORD>(report.size()), &written, nullptr);
    ::CloseHandle(out);
}

LONG WINAPI onException(EXCEPTION_POINTERS* what) {
    report.add("exception ").hex(what->ExceptionRecord->ExceptionCode);
    report.add(", at address ").hex(reinterpret_cast<std::uint64_t>(what->ExceptionRecord->ExceptionAddress));
    write(*what->ContextRecord);
    return EXCEPTION_EXECUTE_HANDLER;  // ends the program at once: nobody may be there to answer Windows' box about it
}

void onAbort(int) {
    report.add("abort");
    if (const char* exception = uncaughtException()) report.add(", exception ").add(exception);
    CONTEXT context = {};
    ::RtlCaptureContext(&context);
    write(context);
}

}  // namespace

void traceCrashes(const std::string& name) {
    if (name.size() >= sizeof file) return;
    std::memcpy(file, name.c_str(), name.size() + 1);
    noteUncaughtExceptions();
    ULONG left = kStackLeft;
    ::SetThreadStackGuarantee(&left);
    ::SetUnhandledExceptionFilter(onException);
    std::signal(SIGABRT, onAbort);
}

}  // namespace kibo::platform
