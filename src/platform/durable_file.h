#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/result.h"

namespace kibo::platform {

/// A file whose contents are on the disk when a write returns, so that they outlive this program and the power.
/// Readable and writable by its owner only, and by one program at a time.
class DurableFile {
 public:
    /// Opens `path` (UTF-8), which is created when it is missing. Io when the folder can't be written to, or when
    /// another program has the file open.
    static Result<std::unique_ptr<DurableFile>> open(const std::string& path);
    virtual ~DurableFile() = default;
    DurableFile(const DurableFile&) = delete;
    DurableFile& operator=(const DurableFile&) = delete;

    virtual Result<std::string> read() = 0;
    /// After a failure the file is as long as before.
    virtual Result<void> append(std::string_view bytes) = 0;
    /// Puts `bytes` in the place of everything. After a failure the file may be empty.
    virtual Result<void> replace(std::string_view bytes) = 0;

 protected:
    DurableFile() = default;
};

}  // namespace kibo::platform
