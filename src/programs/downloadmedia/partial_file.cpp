#include "downloadmedia/partial_file.h"

#include <utility>

namespace kibo::downloadmedia {
namespace {

namespace fs = std::filesystem;

fs::path withSuffix(fs::path path, const char* suffix) {
    path += suffix;
    return path;
}

/// FNV-1a, 64 bits: the same on every system and in every version, unlike std::hash. Source of the constants:
/// http://www.isthe.com/chongo/tech/comp/fnv/
std::string hashOf(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char c : text) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 0x100000001b3;
    }
    return std::to_string(hash);
}

}  // namespace

PartialFile::PartialFile(fs::path target, std::string_view address)
    : target_(std::move(target)),
      part_(withSuffix(target_, ".part")),
      origin_(withSuffix(target_, ".part.from")),
      addressHash_(hashOf(address)) {}

PartialFile::Rest PartialFile::rest() const {
    std::ifstream origin(origin_);
    std::string hash, validator;
    if (!std::getline(origin, hash) || !std::getline(origin, validator)) return {};
    std::error_code error;
    const std::uintmax_t bytes = fs::file_size(part_, error);
    if (error || bytes == 0 || validator.empty() || hash != addressHash_) return {};
    return {static_cast<std::int64_t>(bytes), validator};
}

bool PartialFile::open(std::int64_t offset, const std::string& validator) {
    const auto mode = offset > 0 ? std::ios::app : std::ios::trunc;
    if (offset == 0) {
        // In this order, so that bytes never stand beside the name of another file.
        std::error_code error;
        fs::remove(part_, error);
        fs::remove(origin_, error);
        if (!validator.empty()) std::ofstream(origin_) << addressHash_ << '\n' << validator << '\n';
    }
    file_.close();
    file_.clear();
    file_.open(part_, std::ios::binary | mode);
    size_ = offset;
    return file_.is_open();
}

bool PartialFile::append(const char* data, std::size_t size) {
    file_.write(data, static_cast<std::streamsize>(size));
    size_ += static_cast<std::int64_t>(size);
    return file_.good();
}

bool PartialFile::finish() {
    file_.close();
    std::error_code error;
    if (!file_.fail()) fs::rename(part_, target_, error);
    const bool done = !file_.fail() && !error;
    if (done) fs::remove(origin_, error);
    return done;
}

void PartialFile::suspend() {
    file_.close();
    if (rest().bytes == 0) discard();
}

void PartialFile::discard() {
    file_.close();
    std::error_code error;
    fs::remove(part_, error);
    fs::remove(origin_, error);
}

}  // namespace kibo::downloadmedia
