#pragma once

#include <string>
#include <vector>

namespace kibo::platform {

/// A process's command line taken apart as the C run-time does it, in UTF-8; the program's name first. Empty for none.
std::vector<std::string> argumentsOf(const wchar_t* commandLine);

}  // namespace kibo::platform
