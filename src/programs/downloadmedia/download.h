#pragma once

#include <functional>
#include <string_view>

#include "downloadmedia/options.h"
#include "downloadmedia/outcome.h"
#include "downloadmedia/own_network.h"

namespace kibo::downloadmedia {

/// Whether a server with this IP address belongs to the own network.
using IsInside = std::function<bool(std::string_view ip)>;

/// Fetches a file; blocks until it stands complete at its target or one of the limits is reached. After a failure there
/// is no new target: a file that stood there before is left as it was. No server outside may lead into the own network;
/// the first address may be anywhere.
Outcome download(const Options& options, const IsInside& isInside = isOwnNetwork);

}  // namespace kibo::downloadmedia
