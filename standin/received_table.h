#pragma once

#include <string>
#include <vector>

#include "standin/records.h"

namespace kibo::standin {

/// Milliseconds since 1970 as local time, "2026-11-22 21:05:09.120".
std::string localTime(int64_t timeMs);

/// The messages as a table for people: a header, then a line each, columns aligned by code points, line breaks as "⏎".
std::string receivedTable(const std::vector<ReceivedMessage>& messages);

}  // namespace kibo::standin
