#pragma once

#include <QLockFile>
#include <QString>
#include <memory>

#include "platform/process.h"
#include "platform/result.h"

namespace kibo {

/// One instance for each profile of a program folder. Held by a file that names the process, so that a second start can
/// tell who is there; what a crash left counts for nothing.
class InstanceLock {
 public:
    /// Takes the profile in the place of the one held before. InvalidArgument when another instance has it: the text is
    /// for the operator, and `holder` tells its process. A folder that can't be written is none of its business.
    Result<void> take(const QString& programFolder, const QString& profile);
    /// The instance that the last `take` met; 0: none.
    platform::ProcessId holder() const { return holder_; }

 private:
    std::unique_ptr<QLockFile> lock_;
    QString file_;
    platform::ProcessId holder_ = 0;
};

}  // namespace kibo
