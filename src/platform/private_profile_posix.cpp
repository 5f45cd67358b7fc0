#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>

#include "platform/one_line.h"
#include "platform/private_profile.h"
#include "platform/profile_text.h"

namespace kibo::platform {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kLineEnds = "\r\n";
constexpr std::string_view kBlanks = " \t\r\n\v\f";

Failure ioFailure(const std::string& what, int error) {
    return {FailureKind::Io, what + ": " + std::strerror(error), std::to_string(error)};
}

/// Closes a descriptor when it goes out of scope.
class Descriptor {
 public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    int number() const { return number_; }
    bool valid() const { return number_ >= 0; }

 private:
    int number_;
};

bool endsLine(char c) {
    return kLineEnds.find(c) != std::string_view::npos;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

char folded(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool sameName(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return folded(x) == folded(y); });
}

std::string_view unquoted(std::string_view value) {
    const bool quoted =
        value.size() > 1 && (value.front() == '"' || value.front() == '\'') && value.front() == value.back();
    return quoted ? value.substr(1, value.size() - 2) : value;
}

/// Where a key stands, or would stand, in the file's text.
struct Place {
    bool sectionFound = false;
    std::optional<std::string_view> value;  ///< as it stands, quotes included
    std::size_t assignedBegin = 0;          ///< of the whole line, without its end, when `value`
    std::size_t assignedEnd = 0;
    std::string_view name;     ///< the key as it is spelt there
    std::size_t insertAt = 0;  ///< after the section's last line that isn't blank, when not `value`
};

Place find(std::string_view text, std::string_view section, std::string_view key) {
    section = trimmed(section);
    key = trimmed(key);
    Place place;
    bool inSection = false;
    std::size_t next = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    while (next < text.size()) {
        const std::size_t begin = next;
        next = std::min(text.find_first_of(kLineEnds, begin), text.size() - 1) + 1;
        if (text[next - 1] == '\r' && next < text.size() && text[next] == '\n') ++next;
        const std::string_view line = trimmed(text.substr(begin, next - begin));
        if (line.empty()) continue;
        if (line.front() == '[') {
            if (inSection) break;
            const std::size_t close = line.rfind(']');
            inSection = close != std::string_view::npos && sameName(trimmed(line.substr(1, close - 1)), section);
            place.sectionFound = inSection;
        }
        if (!inSection) continue;
        place.insertAt = next;
        const std::size_t equals = line.find('=');
        if (line.front() == '[' || line.front() == ';' || equals == std::string_view::npos) continue;
        const std::string_view name = trimmed(line.substr(0, equals));
        if (!sameName(name, key)) continue;
        place.name = name;
        place.value = trimmed(line.substr(equals + 1));
        place.assignedBegin = begin;
        place.assignedEnd = text.find_last_not_of(kLineEnds, next - 1) + 1;
        break;
    }
    return place;
}

std::string withKey(const std::string& text, std::string_view section, std::string_view key, std::string_view value) {
    const std::size_t newline = text.find('\n');
    const bool crlf = newline != std::string::npos && newline > 0 && text[newline - 1] == '\r';
    const std::string lineEnd = crlf ? "\r\n" : "\n";
    const std::string assigned = std::string("=").append(value);

    const Place place = find(text, section, key);
    std::string changed = text;
    if (place.value)
        return changed.replace(place.assignedBegin, place.assignedEnd - place.assignedBegin,
                               std::string(place.name) + assigned);
    const std::string line = std::string(key) + assigned + lineEnd;
    if (place.sectionFound) {
        const bool open = !endsLine(changed[place.insertAt - 1]);
        return changed.insert(place.insertAt, open ? lineEnd + line : line);
    }
    if (!changed.empty() && !endsLine(changed.back())) changed += lineEnd;
    return changed.append("[").append(section).append("]").append(lineEnd).append(line);
}

/// The file's text; empty for a missing file.
Result<std::string> readAll(const std::string& file) {
    const Descriptor input(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!input.valid()) {
        if (errno == ENOENT) return std::string();
        return ioFailure("can't read " + file, errno);
    }
    struct stat status = {};
    if (::fstat(input.number(), &status) != 0) return ioFailure("can't read " + file, errno);
    if (!S_ISREG(status.st_mode)) return Failure{FailureKind::Io, "can't read " + file + ": it is not a file", {}};

    std::string text;
    char block[16384];
    for (;;) {
        const ssize_t count = ::read(input.number(), block, sizeof block);
        if (count == 0) return text;
        if (count > 0) text.append(block, static_cast<std::size_t>(count));
        if (count < 0 && errno != EINTR) return ioFailure("can't read " + file, errno);
    }
}

bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// The file that `file` stands for: the end of a chain of symbolic links, whether it exists yet or not.
std::string linkTarget(const std::string& file) {
    fs::path target(file);
    std::error_code error;
    for (int links = 0; links < 40 && fs::is_symlink(target, error); ++links)
        target = target.parent_path() / fs::read_symlink(target, error);
    return target.string();
}

/// Puts `text` in the place of `file`: written beside it, on the disk, then renamed over it.
Result<void> replaceFile(const std::string& file, const std::string& folder, int folderDescriptor,
                         std::string_view text) {
    std::string temporary = folder + "/.kibo-XXXXXX";
    const Descriptor output(::mkostemp(temporary.data(), O_CLOEXEC));  // creates it with mode 0600
    if (!output.valid()) return ioFailure("can't write into " + folder, errno);

    struct stat status = {};
    if (::stat(file.c_str(), &status) == 0 && ::fchown(output.number(), status.st_uid, status.st_gid) != 0) {
        // Only an administrator may keep another owner; anyone else's own file is as good.
    }
    if (!writeAll(output.number(), text) || ::fsync(output.number()) != 0 ||
        std::rename(temporary.c_str(), file.c_str()) != 0) {
        const int error = errno;
        ::unlink(temporary.c_str());
        return ioFailure("can't write " + file, error);
    }
    ::fsync(folderDescriptor);  // the rename itself; a system that can't do that loses nothing but haste
    return {};
}

/// Code page 1252, in which programs of western Windows systems write.
std::string fromCodePage(std::string_view bytes) {
    static constexpr char16_t kFrom80[] =
        u"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\u008D\u017D\u008F"
        u"\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\u009D\u017E\u0178";
    std::string text;
    for (const char byte : bytes) {
        char16_t character = static_cast<unsigned char>(byte);
        if (character >= 0x80 && character < 0xA0) character = kFrom80[character - 0x80];
        if (character < 0x80) {
            text += static_cast<char>(character);
        } else if (character < 0x800) {
            text += static_cast<char>(0xC0 | (character >> 6));
            text += static_cast<char>(0x80 | (character & 0x3F));
        } else {
            text += static_cast<char>(0xE0 | (character >> 12));
            text += static_cast<char>(0x80 | ((character >> 6) & 0x3F));
            text += static_cast<char>(0x80 | (character & 0x3F));
        }
    }
    return text;
}

/// What begins with one of the two marks of UTF-16 can be read here no more than be added to.
Result<std::string> readText(const std::string& file) {
    Result<std::string> text = readAll(file);
    if (text && (text.value().starts_with("\xFF\xFE") || text.value().starts_with("\xFE\xFF")))
        return Failure{FailureKind::Io, "can't read " + file + ": it is in UTF-16; save it as UTF-8", {}};
    return text;
}

}  // namespace

std::string readPrivateProfileString(std::string_view section, std::string_view key, const std::string& file,
                                     std::size_t maxLength) {
    const std::string text = readAll(file).valueOr({});
    const std::string_view value = unquoted(find(text, section, key).value.value_or(std::string_view()));
    if (isUtf8(value)) return std::string(cutUtf8(value, maxLength));
    return fromCodePage(value.substr(0, maxLength));
}

Result<void> writePrivateProfileString(std::string_view section, std::string_view key, std::string_view value,
                                       const std::string& file) {
    if (section.empty() || key.empty() || !fitsOneLine(section) || !fitsOneLine(key) || !fitsOneLine(value))
        return Failure{FailureKind::InvalidArgument, "a settings file can't hold this section, key or value", {}};

    const std::string target = linkTarget(file);
    const fs::path parent = fs::path(target).parent_path();
    const std::string folder = parent.empty() ? "." : parent.string();
    const Descriptor lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!lock.valid()) return ioFailure("can't write into " + folder, errno);
    ::flock(lock.number(), LOCK_EX);  // two instances writing at once must not lose each other's key

    Result<std::string> before = readText(target);
    if (!before) return before.failure();
    const std::string after = withKey(before.value(), section, key, value);
    if (after == before.value()) return {};
    return replaceFile(target, folder, lock.number(), after);
}

Result<void> checkPrivateProfile(const std::string& file) {
    const Result<std::string> text = readText(file);
    return text ? Result<void>() : text.failure();
}

}  // namespace kibo::platform
