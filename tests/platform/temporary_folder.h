#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/process.h"

namespace kibo::platform {

/// A folder of its own for one test, removed with all it holds.
class TemporaryFolder {
 public:
    TemporaryFolder() {
        static std::atomic<int> count = 0;
        const std::string name = "kibo-test-" + std::to_string(ownProcessId()) + "-" + std::to_string(count++);
        path_ = std::filesystem::temp_directory_path() / name;
        std::filesystem::create_directories(path_);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }

    const std::filesystem::path& path() const { return path_; }
    std::string file(const std::string& name) const { return (path_ / name).string(); }
    int entries() const { return static_cast<int>(std::distance(std::filesystem::directory_iterator(path_), {})); }

 private:
    std::filesystem::path path_;
};

inline std::string contentOf(const std::string& file) {
    std::ifstream input(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(input), {}};
}

inline void writeContent(const std::string& file, const std::string& content) {
    std::ofstream(file, std::ios::binary) << content;
}

}  // namespace kibo::platform
