#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "platform/durable_file.h"

namespace kibo::platform {
namespace {

Failure ioFailure(const std::string& what, int error) {
    return {FailureKind::Io, what + ": " + std::strerror(error), std::to_string(error)};
}

class PosixDurableFile : public DurableFile {
 public:
    PosixDurableFile(std::string path, int descriptor) : path_(std::move(path)), descriptor_(descriptor) {}
    ~PosixDurableFile() override { ::close(descriptor_); }

    Result<void> begin() {
        if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
            if (errno == EWOULDBLOCK) return Failure{FailureKind::Io, path_ + " is in use by another program", {}};
            return ioFailure("can't lock " + path_, errno);
        }
        size_ = ::lseek(descriptor_, 0, SEEK_END);
        if (size_ < 0) return ioFailure("can't read " + path_, errno);
        // A file's name is a matter of its folder, which has to reach the disk too.
        const int folder =
            ::open(std::filesystem::path(path_).parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (folder >= 0) {
            ::fsync(folder);
            ::close(folder);
        }
        return {};
    }

    Result<std::string> read() override {
        std::string content(static_cast<std::size_t>(size_), '\0');
        std::size_t got = 0;
        while (got < content.size()) {
            const ssize_t some =
                ::pread(descriptor_, content.data() + got, content.size() - got, static_cast<off_t>(got));
            if (some < 0 && errno == EINTR) continue;
            if (some < 0) return ioFailure("can't read " + path_, errno);
            if (some == 0) break;
            got += static_cast<std::size_t>(some);
        }
        content.resize(got);
        return content;
    }

    Result<void> append(std::string_view bytes) override {
        std::size_t written = 0;
        while (written < bytes.size()) {
            const ssize_t some = ::pwrite(descriptor_, bytes.data() + written, bytes.size() - written,
                                          size_ + static_cast<off_t>(written));
            if (some < 0 && errno == EINTR) continue;
            if (some < 0) return undone("can't write " + path_, errno);
            written += static_cast<std::size_t>(some);
        }
        if (::fdatasync(descriptor_) != 0) return undone("can't write " + path_, errno);
        size_ += static_cast<off_t>(bytes.size());
        return {};
    }

    Result<void> replace(std::string_view bytes) override {
        if (::ftruncate(descriptor_, 0) != 0) return ioFailure("can't write " + path_, errno);
        size_ = 0;
        return append(bytes);
    }

 private:
    Failure undone(const std::string& what, int error) const {
        if (::ftruncate(descriptor_, size_) != 0) return ioFailure(what + " (nor take it back)", error);
        return ioFailure(what, error);
    }

    std::string path_;
    int descriptor_;
    off_t size_ = 0;
};

}  // namespace

Result<std::unique_ptr<DurableFile>> DurableFile::open(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) return ioFailure("can't write " + path, errno);
    auto file = std::make_unique<PosixDurableFile>(path, descriptor);
    if (const Result<void> begun = file->begin(); !begun) return begun.failure();
    return std::unique_ptr<DurableFile>(std::move(file));
}

}  // namespace kibo::platform
