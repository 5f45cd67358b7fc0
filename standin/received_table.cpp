#include "standin/received_table.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <mutex>

namespace kibo::standin {
namespace {

using Row = std::array<std::string, 5>;

size_t codePoints(const std::string& utf8) {
    return static_cast<size_t>(
        std::count_if(utf8.begin(), utf8.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string onOneLine(const std::string& text) {
    std::string line;
    for (const char c : text) {
        if (c == '\n')
            line += "⏎";
        else if (c != '\r')
            line += c == '\t' ? ' ' : c;
    }
    return line;
}

std::string content(const ReceivedMessage& message) {
    if (message.kind == "text") return onOneLine(message.text);
    std::string shown = "[";
    shown.append(message.kind).append(" ").append(message.fileName);
    shown.append(", ").append(std::to_string(message.fileSize)).append(" bytes]");
    if (!message.caption.empty()) shown.append(" ").append(onOneLine(message.caption));
    return shown;
}

}  // namespace

std::string localTime(int64_t timeMs) {
    const std::time_t seconds = static_cast<std::time_t>(timeMs / 1000);
    static std::mutex localtimeIsShared;
    const std::lock_guard lock(localtimeIsShared);
    const std::tm parts = *std::localtime(&seconds);
    char text[32];
    const size_t length = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    const std::string fraction = std::to_string(1000 + timeMs % 1000).substr(1);
    return std::string(text, length) + "." + fraction;
}

std::string receivedTable(const std::vector<ReceivedMessage>& messages) {
    std::vector<Row> rows = {{"#", "time", "number", "name", "message"}};
    for (const ReceivedMessage& message : messages)
        rows.push_back({std::to_string(message.seq), localTime(message.timeMs).substr(11), message.number,
                        onOneLine(message.name), content(message)});

    std::array<size_t, 5> widths = {};
    for (const Row& row : rows)
        for (size_t column = 0; column + 1 < row.size(); ++column)
            widths[column] = std::max(widths[column], codePoints(row[column]));

    std::string table;
    for (const Row& row : rows) {
        for (size_t column = 0; column + 1 < row.size(); ++column)
            table += row[column] + std::string(widths[column] - codePoints(row[column]) + 2, ' ');
        table += row.back() + "\n";
    }
    return table;
}

}  // namespace kibo::standin
