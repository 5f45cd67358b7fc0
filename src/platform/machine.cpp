#include "platform/machine.h"

#include <algorithm>
#include <cstdlib>

namespace kibo::platform {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : std::string();
}

std::filesystem::path pathFromUtf8(std::string_view text) {
    return std::u8string(text.begin(), text.end());
}

std::string joinPath(std::string_view folder, std::string_view name) {
    const char separators[] = {'/', pathSeparator(), '\0'};
    while (folder.size() > 1 && std::string_view(separators).find(folder.back()) != std::string_view::npos)
        folder.remove_suffix(1);
    name.remove_prefix(std::min(name.find_first_not_of(separators), name.size()));

    std::string path(folder);
    if (!path.empty() && std::string_view(separators).find(path.back()) == std::string_view::npos)
        path += pathSeparator();
    return path.append(name);
}

}  // namespace kibo::platform
