#include <iostream>

#include "downloadmedia/download.h"
#include "platform/machine.h"

int main(int argc, char** argv) {
    using namespace kibo;
    using downloadmedia::ExitCode;

    const Result<downloadmedia::Options> options = downloadmedia::parseOptions(platform::programArguments(argc, argv));
    if (options && options.value().help) {
        std::cout << downloadmedia::helpText();
        return static_cast<int>(ExitCode::Done);
    }
    const downloadmedia::Outcome outcome =
        options ? downloadmedia::download(options.value())
                : downloadmedia::Outcome{ExitCode::WrongArguments, options.failure().text};
    if (outcome.code != ExitCode::Done) std::cerr << outcome.line << '\n';
    return static_cast<int>(outcome.code);
}
