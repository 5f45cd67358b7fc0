#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kibo {

/// What the clean-up of stray WebDriver sessions looks for.
struct CleanUpTargets {
    std::vector<std::string> drivers;  ///< names of the driver programs' files
    std::filesystem::path folder;      ///< where such drivers leave temporary files
};

/// Every WebDriver program by its usual name, and the folder "Selenium" of the temporary folder.
CleanUpTargets usualCleanUpTargets();

/// Ends every process of these names, its children (the browsers it started) before it, then removes the folder with
/// all that is in it. Whatever can't be ended or removed is logged and left. Returns how many drivers were ended. Ask
/// first: these may be anybody's.
int cleanUp(const CleanUpTargets& targets);

}  // namespace kibo
