#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/result.h"

namespace kibo::downloadmedia {

/// What to fetch, where to, and how much patience to have. All texts are UTF-8.
struct Options {
    std::string address;
    std::string target;  ///< path of the file to write
    std::int64_t limitBytes = 64 * 1024 * 1024;
    int seconds = 300;        ///< for the whole
    int connectSeconds = 15;  ///< until a connection stands
    int stallSeconds = 30;    ///< without a byte
    int redirects = 5;
    bool help = false;  ///< nothing but the help is wanted
};

/// Reads the command line without the program's name. The failure says what is wrong with it.
Result<Options> parseOptions(const std::vector<std::string>& arguments);

std::string helpText();

}  // namespace kibo::downloadmedia
