#include <windows.h>
// windows.h first: odbcinst.h builds on it.
#include <odbcinst.h>

#include "platform/access_file.h"

namespace kibo::platform {
namespace {

// The registry shows a 64-bit program only the drivers that it can load.
constexpr const char* kDriversKey = R"(SOFTWARE\ODBC\ODBCINST.INI\ODBC Drivers)";
// Of the Access Database Engine, and of Windows' own for 32-bit programs, where this program is one.
constexpr const char* kDriverNames[] = {"Microsoft Access Driver (*.mdb, *.accdb)", "Microsoft Access Driver (*.mdb)"};

bool isInstalled(const char* driver) {
    HKEY key = nullptr;
    if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, kDriversKey, 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) return false;
    char text[32] = {};
    DWORD size = sizeof text - 1;
    DWORD type = 0;
    const LSTATUS status = ::RegQueryValueExA(key, driver, nullptr, &type, reinterpret_cast<BYTE*>(text), &size);
    ::RegCloseKey(key);
    return status == ERROR_SUCCESS && type == REG_SZ && ::lstrcmpiA(text, "Installed") == 0;
}

}  // namespace

bool usesAccessFiles() {
    return true;
}

Result<std::string> accessDriver() {
    for (const char* name : kDriverNames)
        if (isInstalled(name)) return std::string(name);
    return Failure{FailureKind::NotFound,
                   "no Access driver for 64-bit programs is installed (Microsoft Access Database Engine)"};
}

Result<void> createAccessFile(const std::string& driver, const std::string& file) {
    // A list of texts that an empty one ends; the string's own zero is the second.
    std::string attributes = "CREATE_DBV4=\"" + file + "\" General";
    attributes.append(1, '\0');
    if (::SQLConfigDataSource(nullptr, ODBC_ADD_DSN, driver.c_str(), attributes.c_str())) return {};
    char reason[SQL_MAX_MESSAGE_LENGTH] = {};
    DWORD code = 0;
    WORD length = 0;
    ::SQLInstallerError(1, &code, reason, sizeof reason, &length);
    return Failure{FailureKind::Io, "the Access driver can't make " + file + ": " + reason, std::to_string(code)};
}

}  // namespace kibo::platform
