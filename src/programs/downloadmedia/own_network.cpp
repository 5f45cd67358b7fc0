#include "downloadmedia/own_network.h"

#include <charconv>
#include <cstdint>
#include <optional>

namespace kibo::downloadmedia {
namespace {

struct Block {
    std::uint32_t start;
    int bits;
};
// https://www.iana.org/assignments/iana-ipv4-special-registry
constexpr Block kIpv4[] = {{0x00000000, 8},  {0x0A000000, 8},  {0x64400000, 10}, {0x7F000000, 8},
                           {0xA9FE0000, 16}, {0xAC100000, 12}, {0xC0A80000, 16}};

std::optional<std::uint32_t> ipv4(std::string_view text) {
    std::uint32_t address = 0;
    const char* at = text.data();
    const char* const end = at + text.size();
    for (int part = 0; part < 4; ++part) {
        std::uint8_t value = 0;
        if (part > 0 && (at == end || *at++ != '.')) return std::nullopt;
        const auto [stop, error] = std::from_chars(at, end, value);
        if (error != std::errc()) return std::nullopt;
        address = address << 8 | value;
        at = stop;
    }
    return at == end ? std::optional(address) : std::nullopt;
}

}  // namespace

bool isOwnNetwork(std::string_view ip) {
    if (ip.find('.') != ip.npos) {
        // An IPv6 address may end in an IPv4 one, which it stands for.
        const std::optional<std::uint32_t> address = ipv4(ip.substr(ip.rfind(':') + 1));
        if (!address) return true;
        for (const Block& block : kIpv4)
            if ((*address ^ block.start) >> (32 - block.bits) == 0) return true;
        return false;
    }
    std::uint16_t group = 0;  // the first one; "::1" has none
    if (std::from_chars(ip.data(), ip.data() + ip.size(), group, 16).ec != std::errc()) return true;
    const bool uniqueLocal = (group & 0xFE00) == 0xFC00;
    const bool linkOrSiteLocal = (group & 0xFF80) == 0xFE80;
    return group == 0 || uniqueLocal || linkOrSiteLocal;
}

}  // namespace kibo::downloadmedia
