#include "platform/downloader.h"
#include "platform/shell.h"

namespace kibo::platform {

Result<std::string> downloaderCommand(std::string_view folder, std::string_view fileName, std::string_view address) {
    std::string options = "--max-threads 1 ";
    std::string program = findProgram("wget2");
    if (program.empty()) {
        options.clear();  // the older one has a single thread, and no such option
        program = findProgram("wget");
    }
    if (program.empty()) return Failure{FailureKind::NotFound, "neither wget2 nor wget is installed", {}};
    if (folder.find('"') != folder.npos)
        return Failure{FailureKind::InvalidArgument, "the folder's name holds a quotation mark", {}};
    std::string command = '"' + program + "\" " + options + "\"--output-document=";
    command.append(folder).append("/").append(fileName).append("\" ");
    return command.append(address);
}

}  // namespace kibo::platform
