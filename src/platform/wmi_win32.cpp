#include "platform/wmi_win32.h"

#include <windows.h>
// windows.h first: the next one builds on it.
#include <wbemidl.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <future>
#include <memory>
#include <thread>
#include <utility>

#include "platform/command_line_win32.h"
#include "platform/machine.h"

namespace kibo::platform::wmi {
namespace {

using namespace std::chrono_literals;

// A broken WMI is known for calls that never return.
constexpr auto kAtMost = 5s;
// After such a call nothing more is asked for a while: a look at a browser's processes takes a dozen of them.
constexpr auto kPause = 5min;
std::atomic<std::chrono::steady_clock::time_point> notBefore{};

template <class T>
class ComPointer {
 public:
    ComPointer() = default;
    ComPointer(ComPointer&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
    ComPointer& operator=(ComPointer&&) = delete;
    ~ComPointer() {
        if (pointer_) pointer_->Release();
    }
    T* get() const { return pointer_; }
    T* operator->() const { return pointer_; }
    /// For a call that hands out a reference; the pointer must be empty.
    T** out() { return &pointer_; }

 private:
    T* pointer_ = nullptr;
};

class Bstr {
 public:
    explicit Bstr(const std::wstring& text) : text_(::SysAllocString(text.c_str())) {}
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    ~Bstr() { ::SysFreeString(text_); }
    BSTR get() const { return text_; }

 private:
    BSTR text_;
};

class Variant {
 public:
    Variant() { ::VariantInit(&value_); }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { ::VariantClear(&value_); }
    VARIANT* out() { return &value_; }
    /// WMI hands unsigned 32-bit numbers out as signed ones.
    std::uint32_t number() const { return value_.vt == VT_I4 ? static_cast<std::uint32_t>(value_.lVal) : 0; }
    const wchar_t* text() const { return value_.vt == VT_BSTR && value_.bstrVal ? value_.bstrVal : L""; }

 private:
    VARIANT value_;
};

class Apartment {
 public:
    Apartment() : entered_(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {}
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() {
        if (entered_) ::CoUninitialize();
    }

 private:
    bool entered_;
};

Failure failure(FailureKind kind, const char* what, HRESULT result) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%08lX", static_cast<unsigned long>(result));
    return {kind, std::string(what) + ": " + code, code};
}

/// Without it WMI doesn't know for whom it looks, and refuses.
HRESULT actForThisUser(IUnknown* proxy) {
    return ::CoSetProxyBlanket(proxy, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                               RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
}

Result<ComPointer<IWbemServices>> connect() {
    ComPointer<IWbemLocator> locator;
    HRESULT result = ::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                        reinterpret_cast<void**>(locator.out()));
    ComPointer<IWbemServices> services;
    if (SUCCEEDED(result))
        result = locator->ConnectServer(Bstr(L"ROOT\\CIMV2").get(), nullptr, nullptr, nullptr,
                                        WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr, nullptr, services.out());
    if (SUCCEEDED(result)) result = actForThisUser(services.get());
    if (FAILED(result)) return failure(FailureKind::Transport, "WMI can't be reached", result);
    return services;
}

Result<std::vector<ListedProcess>> select(const std::string& query) {
    const Result<ComPointer<IWbemServices>> services = connect();
    if (!services) return services.failure();
    ComPointer<IEnumWbemClassObject> found;
    const HRESULT result =
        services.value()->ExecQuery(Bstr(L"WQL").get(), Bstr(pathFromUtf8(query).wstring()).get(),
                                    WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, found.out());
    if (FAILED(result)) return failure(FailureKind::Remote, "WMI refuses a query", result);
    actForThisUser(found.get());

    std::vector<ListedProcess> processes;
    for (;;) {
        ComPointer<IWbemClassObject> object;
        ULONG count = 0;
        const HRESULT next = found->Next(static_cast<LONG>(WBEM_INFINITE), 1, object.out(), &count);
        // Asked for without waiting, a query is refused only here.
        if (FAILED(next)) return failure(FailureKind::Remote, "WMI refuses a query", next);
        if (count == 0) return processes;
        Variant id, commandLine;
        object->Get(L"ProcessId", 0, id.out(), nullptr, nullptr);
        object->Get(L"CommandLine", 0, commandLine.out(), nullptr, nullptr);
        processes.push_back({id.number(), argumentsOf(commandLine.text())});
    }
}

Result<void> callTerminate(ProcessId pid) {
    const Result<ComPointer<IWbemServices>> services = connect();
    if (!services) return services.failure();
    const Bstr path(L"Win32_Process.Handle='" + std::to_wstring(pid) + L"'");
    ComPointer<IWbemClassObject> answer;
    const HRESULT result =
        services.value()->ExecMethod(path.get(), Bstr(L"Terminate").get(), 0, nullptr, nullptr, answer.out(), nullptr);
    if (FAILED(result)) return failure(FailureKind::Remote, "WMI can't end a process", result);
    Variant refusal;  // 0: none
    if (answer.get()) answer->Get(L"ReturnValue", 0, refusal.out(), nullptr, nullptr);
    if (refusal.number() == 0) return {};
    return failure(FailureKind::Remote, "WMI can't end a process", static_cast<HRESULT>(refusal.number()));
}

/// Runs `work` in an apartment of its own. When it takes too long its thread is left behind: it holds nothing of ours.
template <class Work>
auto onOwnThread(Work work) -> decltype(work()) {
    using Answer = decltype(work());
    const Failure silent{FailureKind::Transport, "WMI doesn't answer", {}};
    if (std::chrono::steady_clock::now() < notBefore.load()) return silent;
    std::packaged_task<Answer()> task([work = std::move(work)] {
        const Apartment apartment;
        return work();
    });
    std::future<Answer> answer = task.get_future();
    std::thread(std::move(task)).detach();
    if (answer.wait_for(kAtMost) == std::future_status::ready) return answer.get();
    notBefore = std::chrono::steady_clock::now() + kPause;
    return silent;
}

}  // namespace

Result<std::vector<ListedProcess>> processes(const std::string& query) {
    return onOwnThread([query] { return select(query); });
}

Result<void> terminate(ProcessId pid) {
    return onOwnThread([pid] { return callTerminate(pid); });
}

std::string escaped(const std::string& text) {
    std::string quoted;
    for (const char c : text) {
        if (c == '\'' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted;
}

}  // namespace kibo::platform::wmi
