#include "platform/access_file.h"

namespace kibo::platform {
namespace {

Failure none() {
    return {FailureKind::NotSupported, "Access files need Windows"};
}

}  // namespace

bool usesAccessFiles() {
    return false;
}

Result<std::string> accessDriver() {
    return none();
}

Result<void> createAccessFile(const std::string&, const std::string&) {
    return none();
}

}  // namespace kibo::platform
