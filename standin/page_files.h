#pragma once

#include <map>
#include <string>
#include <string_view>

namespace kibo::standin {

/// The files of folder page/ by name, as they were at build time (see embed_page.cmake). Live as long as the program.
const std::map<std::string, std::string_view>& pageFiles();

}  // namespace kibo::standin
