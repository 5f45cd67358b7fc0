#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace kibo {

/// What went wrong, coarse enough to decide on. The text is for people.
enum class FailureKind {
    InvalidArgument,  ///< the caller's or the operator's value can't be used
    NotFound,         ///< a file, program, window or element that isn't there
    NotSupported,     ///< this system has no such service
    Io,               ///< the operating system refused a file or process operation
    Transport,        ///< no answer: connection refused, lost, or timed out
    Protocol,         ///< an answer that doesn't conform to its protocol
    Remote,           ///< the other side answered with an error of its own; `code` holds its name
    Database,         ///< the database refused a statement; `code` holds its native error number
    RowRefused,       ///< the same, for the values of one row: the statement works with others
    ConnectionLost    ///< the database connection or browser session is gone
};

/// A failure as a value: a category, a text in words an operator understands, and the foreign code if any.
/// The text never holds message texts, passwords or whole phone numbers: it goes to the log.
struct Failure {
    FailureKind kind = FailureKind::Io;
    std::string text;
    std::string code = {};
};

/// A value or the failure that prevented it.
template <class T>
class [[nodiscard]] Result {
 public:
    Result(T value) : content_(std::in_place_index<0>, std::move(value)) {}
    Result(Failure failure) : content_(std::in_place_index<1>, std::move(failure)) {}

    bool ok() const { return content_.index() == 0; }
    explicit operator bool() const { return ok(); }

    const T& value() const& { return std::get<0>(content_); }
    T& value() & { return std::get<0>(content_); }
    T&& value() && { return std::get<0>(std::move(content_)); }
    T valueOr(T fallback) const { return ok() ? value() : std::move(fallback); }

    const Failure& failure() const { return std::get<1>(content_); }

 private:
    std::variant<T, Failure> content_;
};

template <>
class [[nodiscard]] Result<void> {
 public:
    Result() = default;
    Result(Failure failure) : failure_(std::move(failure)) {}

    bool ok() const { return !failure_; }
    explicit operator bool() const { return ok(); }
    const Failure& failure() const { return *failure_; }

 private:
    std::optional<Failure> failure_;
};

}  // namespace kibo
