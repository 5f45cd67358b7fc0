// Reader and writer of the settings file, on a file of any content.
#include <QTemporaryDir>
#include <fstream>
#include <string>

#include "fuzz/fuzzing.h"
#include "platform/private_profile.h"

using namespace kibo;
using fuzz::require;

namespace {

constexpr std::size_t kLongest = 49;

std::string read(const std::string& key, const std::string& file) {
    return platform::readPrivateProfileString("kibo", key, file, kLongest);
}

/// What a reader may see of a value: without blanks and one pair of quotes around it.
std::string expected(std::string_view written) {
    constexpr std::string_view kBlanks = " \t\v\f";
    const std::size_t begin = written.find_first_not_of(kBlanks);
    if (begin == written.npos) return {};
    written = written.substr(begin, written.find_last_not_of(kBlanks) + 1 - begin);
    const char quote = written.front();
    if (written.size() > 1 && (quote == '"' || quote == '\'') && written.back() == quote)
        written = written.substr(1, written.size() - 2);
    return std::string(written);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const QTemporaryDir folder;
    static const std::string file = folder.filePath(QStringLiteral("kibo.ini")).toStdString();
    fuzz::Input input(data, size);
    const std::string value(input.line());
    std::ofstream(file, std::ios::binary | std::ios::trunc) << input.rest();

    const std::string before = read("Speed", file);
    constexpr std::size_t kUtf8OfCodePage = 3;  // bytes at most of one that is no UTF-8
    require(before.size() <= kUtf8OfCodePage * kLongest, "a value keeps to its length");
    require(before.find_first_of("\r\n") == std::string::npos, "a value is one line");

    // What is written is UTF-8; other bytes are those of a program that writes in a code page.
    if (QString::fromStdString(value).toStdString() != value) return 0;
    if (!platform::writePrivateProfileString("kibo", "Profil", value, file)) return 0;
    const std::string whole = expected(value);
    const std::string after = read("Profil", file);
    require(whole.starts_with(after) && after.size() <= kLongest, "what was written is read");
    require(whole.size() > kLongest || after == whole, "a short value is read as a whole");
    require(read("Speed", file) == before, "other keys stay as they were");
    return 0;
}
