#pragma once

#include <string_view>

namespace kibo::downloadmedia {

/// Whether an IP address, as text, is one of this computer's own or of a local network: loopback, link-local, private,
/// shared by a carrier. What can't be read counts as one.
bool isOwnNetwork(std::string_view ip);

}  // namespace kibo::downloadmedia
