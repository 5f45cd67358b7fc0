#pragma once

#include <optional>
#include <string_view>

#include "platform/result.h"

namespace kibo::webdriver {

/// The errors of W3C WebDriver (https://www.w3.org/TR/webdriver2/#errors).
enum class ErrorCode {
    ElementClickIntercepted,
    ElementNotInteractable,
    InsecureCertificate,
    InvalidArgument,
    InvalidCookieDomain,
    InvalidElementState,
    InvalidSelector,
    InvalidSessionId,
    JavascriptError,
    MoveTargetOutOfBounds,
    NoSuchAlert,
    NoSuchCookie,
    NoSuchElement,
    NoSuchFrame,
    NoSuchWindow,
    NoSuchShadowRoot,
    ScriptTimeout,
    SessionNotCreated,
    StaleElementReference,
    DetachedShadowRoot,
    Timeout,
    UnableToSetCookie,
    UnableToCaptureScreen,
    UnexpectedAlertOpen,
    UnknownCommand,
    UnknownError,
    UnknownMethod,
    UnsupportedOperation
};

/// The name as it stands in an answer. A foreign name has no code: drivers may send their own, so a failure
/// keeps the name itself (`Failure::code`).
std::string_view errorName(ErrorCode code);
std::optional<ErrorCode> errorCode(std::string_view name);

/// Whether the driver answered with exactly this error.
bool isError(const Failure& failure, ErrorCode code);
/// Whether the session can't be used any more: ended, or the browser behind it is gone.
bool isSessionGone(const Failure& failure);
/// Whether the answer didn't come in time. The command may still take effect; the other side may only be slow.
bool isTimeout(const Failure& failure);

/// `Failure::code` of a transport failure by time; all other transport failures have none.
inline constexpr std::string_view kTimeoutCode = "timeout";

}  // namespace kibo::webdriver
