#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace kibo::downloadmedia {

/// The file on its way: TARGET.part takes the bytes, and TARGET.part.from says whose they are (the address as a hash,
/// for it may hold a secret, and the server's validator). TARGET itself appears in one step, by `finish`.
class PartialFile {
 public:
    /// What an earlier attempt left behind. Without a validator nothing can be gone on with: the file may have changed.
    struct Rest {
        std::int64_t bytes = 0;
        std::string validator = {};
    };

    PartialFile(std::filesystem::path target, std::string_view address);

    /// Zero bytes when there is nothing to go on with.
    Rest rest() const;

    /// Opens the file for appending from `offset` on, which is 0 or what `rest` told. False when it can't be written.
    bool open(std::int64_t offset, const std::string& validator);
    bool append(const char* data, std::size_t size);
    std::int64_t size() const { return size_; }

    /// Gives the file its name, replacing what stood there. False when that is refused.
    bool finish();
    /// Keeps what has come only if a later attempt can go on with it.
    void suspend();
    void discard();

 private:
    const std::filesystem::path target_;
    const std::filesystem::path part_;
    const std::filesystem::path origin_;
    const std::string addressHash_;
    std::ofstream file_;
    std::int64_t size_ = 0;
};

}  // namespace kibo::downloadmedia
