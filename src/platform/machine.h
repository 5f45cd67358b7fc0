#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kibo::platform {

/// Empty when the variable is not set.
std::string environment(const char* name);

char pathSeparator();
/// One separator between the two, however many they bring along.
std::string joinPath(std::string_view folder, std::string_view name);

/// A path given in UTF-8, whatever the system's own encoding of paths is.
std::filesystem::path pathFromUtf8(std::string_view text);

/// The command line of `main` without the program's name, in UTF-8. Windows: the wide one, which `main` isn't given.
std::vector<std::string> programArguments(int argc, char** argv);

/// Full path of this program's file.
std::string executableFile();
/// Where settings, databases and profiles are: the folder that the environment variable KIBO_HOME names, else
/// that of the executable; never the working directory. Without a separator at its end.
std::string programFolder();

/// What keeps the program from running on this machine, in words for the operator; empty when nothing does.
/// Windows: the .NET Framework 3.5 folder is missing.
std::string machineProblem();

/// Name of a program's file: "name.exe" on Windows, "name" elsewhere.
std::string programFileName(const std::string& name);

/// The installed browser's version ("116.0.5845.141"), empty when unknown.
/// Windows: what Chrome left in the registry for this user. Elsewhere: `program` is asked (an empty name: the
/// usual ones in turn), which takes about a tenth of a second and at most three.
std::string installedBrowserVersion(const std::string& program = {});

/// Whether a browser started by this user can shut its pages in. Elsewhere than on Windows root can't, nor a user who
/// may not make namespaces: a browser with its sandbox on doesn't start there.
bool canSandboxBrowser();

/// Windows: deletes the lock file that a crashed run left beside the Access database in its fixed folder.
/// Elsewhere there is none.
void removeStaleLockFile();

/// Memory this process holds right now, in bytes; 0 when unknown.
std::uint64_t residentMemoryBytes();

}  // namespace kibo::platform
