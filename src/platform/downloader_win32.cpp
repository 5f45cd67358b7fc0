#include "platform/downloader.h"

namespace kibo::platform {
namespace {

// Where an installation keeps the downloader, whatever folder this program runs from.
constexpr std::string_view kDownloader = R"(C:\Kibo\wget\wget.exe )";

}  // namespace

Result<std::string> downloaderCommand(std::string_view folder, std::string_view fileName, std::string_view address) {
    std::string command(kDownloader);
    command.append("--max-threads 1 --output-document=").append(folder).append("\\").append(fileName);
    return command.append(" ").append(address);
}

}  // namespace kibo::platform
