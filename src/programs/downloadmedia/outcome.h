#pragma once

#include <string>

namespace kibo::downloadmedia {

/// How the program ends. The numbers are its exit codes, which other programs rely on: only append.
enum class ExitCode {
    Done = 0,
    WrongArguments = 1,  ///< nothing was tried
    BadAddress = 2,      ///< no address, or one that is neither http nor https, also after a redirect
    Unreachable = 3,     ///< no such host, connection refused, no secure connection
    OutOfTime = 4,       ///< no connection, no answer, a pause, or the whole took longer than allowed
    Refused = 5,         ///< the server answered with anything but the file
    TooLarge = 6,        ///< announced or sent more bytes than allowed
    Incomplete = 7,      ///< the connection ended before the announced end
    TooManyRedirects = 8,
    NotWritten = 9,  ///< the target can't be written
    LedInside = 10   ///< a server outside led to an address of this computer's own network
};

struct Outcome {
    ExitCode code = ExitCode::Done;
    /// What went wrong, one line for an operator, without the address: that may hold a secret. Empty with Done.
    std::string line = {};
};

}  // namespace kibo::downloadmedia
