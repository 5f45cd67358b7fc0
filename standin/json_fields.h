#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace kibo::standin {

/// The text under `key`; empty when there is none or it is something else.
inline std::string textOf(const nlohmann::json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

}  // namespace kibo::standin
