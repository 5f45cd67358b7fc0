#include "browser/webdriver/error.h"

#include <algorithm>
#include <array>

namespace kibo::webdriver {
namespace {

struct Name {
    ErrorCode code;
    std::string_view text;
};

constexpr std::array kNames{
    Name{ErrorCode::ElementClickIntercepted, "element click intercepted"},
    Name{ErrorCode::ElementNotInteractable, "element not interactable"},
    Name{ErrorCode::InsecureCertificate, "insecure certificate"},
    Name{ErrorCode::InvalidArgument, "invalid argument"},
    Name{ErrorCode::InvalidCookieDomain, "invalid cookie domain"},
    Name{ErrorCode::InvalidElementState, "invalid element state"},
    Name{ErrorCode::InvalidSelector, "invalid selector"},
    Name{ErrorCode::InvalidSessionId, "invalid session id"},
    Name{ErrorCode::JavascriptError, "javascript error"},
    Name{ErrorCode::MoveTargetOutOfBounds, "move target out of bounds"},
    Name{ErrorCode::NoSuchAlert, "no such alert"},
    Name{ErrorCode::NoSuchCookie, "no such cookie"},
    Name{ErrorCode::NoSuchElement, "no such element"},
    Name{ErrorCode::NoSuchFrame, "no such frame"},
    Name{ErrorCode::NoSuchWindow, "no such window"},
    Name{ErrorCode::NoSuchShadowRoot, "no such shadow root"},
    Name{ErrorCode::ScriptTimeout, "script timeout"},
    Name{ErrorCode::SessionNotCreated, "session not created"},
    Name{ErrorCode::StaleElementReference, "stale element reference"},
    Name{ErrorCode::DetachedShadowRoot, "detached shadow root"},
    Name{ErrorCode::Timeout, "timeout"},
    Name{ErrorCode::UnableToSetCookie, "unable to set cookie"},
    Name{ErrorCode::UnableToCaptureScreen, "unable to capture screen"},
    Name{ErrorCode::UnexpectedAlertOpen, "unexpected alert open"},
    Name{ErrorCode::UnknownCommand, "unknown command"},
    Name{ErrorCode::UnknownError, "unknown error"},
    Name{ErrorCode::UnknownMethod, "unknown method"},
    Name{ErrorCode::UnsupportedOperation, "unsupported operation"},
};
static_assert(kNames.size() == static_cast<std::size_t>(ErrorCode::UnsupportedOperation) + 1, "each error has a name");

}  // namespace

std::string_view errorName(ErrorCode code) {
    return std::ranges::find(kNames, code, &Name::code)->text;
}

std::optional<ErrorCode> errorCode(std::string_view name) {
    const auto found = std::ranges::find(kNames, name, &Name::text);
    return found == kNames.end() ? std::nullopt : std::optional(found->code);
}

bool isError(const Failure& failure, ErrorCode code) {
    return failure.kind == FailureKind::Remote && failure.code == errorName(code);
}

bool isSessionGone(const Failure& failure) {
    if (failure.kind == FailureKind::ConnectionLost) return true;
    // The last three are ChromeDriver's own: its connection to Chrome broke before it noticed that Chrome ended, or the
    // page's process did.
    return isError(failure, ErrorCode::InvalidSessionId) ||
           (failure.kind == FailureKind::Remote &&
            (failure.code == "disconnected" || failure.code == "chrome not reachable" ||
             failure.code == "tab crashed"));
}

bool isTimeout(const Failure& failure) {
    return failure.kind == FailureKind::Transport && failure.code == kTimeoutCode;
}

}  // namespace kibo::webdriver
