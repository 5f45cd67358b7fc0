#include "inbox/url_encoder.h"

#include <QList>
#include <algorithm>
#include <array>

namespace kibo {
namespace {

// The code page differs from Latin-1 between 0x80 and 0x9F only. Its five codes without a character of their own stand
// for the control characters of the same value.
// https://www.unicode.org/Public/MAPPINGS/VENDORS/MICSFT/WindowsBestFit/bestfit1252.txt
constexpr char32_t kFirstOwn = 0x80, kFirstLatin1 = 0xA0, kBeyondLatin1 = 0x100;
constexpr std::array<char32_t, kFirstLatin1 - kFirstOwn> kOwn{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

unsigned char ansiCode(char32_t character) {
    if (character < kFirstOwn || (character >= kFirstLatin1 && character < kBeyondLatin1))
        return static_cast<unsigned char>(character);
    const auto own = std::find(kOwn.begin(), kOwn.end(), character);
    return own == kOwn.end() ? '?' : static_cast<unsigned char>(kFirstOwn + static_cast<char32_t>(own - kOwn.begin()));
}

bool isAsciiLetterOrDigit(unsigned char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

}  // namespace

QByteArray urlEncoded(const QString& text) {
    constexpr char kHex[] = "0123456789ABCDEF";
    QByteArray encoded;
    encoded.reserve(text.size());
    const auto characters = text.toUcs4();
    for (const char32_t character : characters) {
        const unsigned char code = ansiCode(character);
        if (isAsciiLetterOrDigit(code)) {
            encoded += static_cast<char>(code);
        } else if (code == ' ') {
            encoded += '+';
        } else {
            encoded += '%';
            encoded += kHex[code >> 4];
            encoded += kHex[code & 15];
        }
    }
    return encoded;
}

}  // namespace kibo
