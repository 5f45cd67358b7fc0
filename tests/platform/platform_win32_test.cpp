// Windows' own side of the platform services; runs under Wine as well as on Windows.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>

#include "platform/access_file.h"
#include "platform/downloader.h"
#include "platform/machine.h"
#include "platform/process.h"
#include "platform/shell.h"
#include "platform/top_level_windows.h"
#include "temporary_folder.h"

namespace kibo::platform {
namespace {

namespace fs = std::filesystem;

TEST(WindowsWindows, areFoundByTitleHiddenAndShown) {
    ASSERT_TRUE(canHideWindows());
    const HWND window = ::CreateWindowA("STATIC", "(3) WhatsApp - Google Chrome", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0,
                                        0, 200, 100, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    const std::optional<WindowHandle> found = FindWindowByTitle("whatsapp - GOOGLE chrome");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(*found, reinterpret_cast<WindowHandle>(window));
    EXPECT_EQ(FindWindowByTitle("New Tab - Google Chrome"), std::nullopt);

    showWindow(*found, false);
    EXPECT_FALSE(::IsWindowVisible(window));
    EXPECT_EQ(FindWindowByTitle("WhatsApp"), found) << "a hidden window must be found to be shown again";
    showWindow(*found, true);
    EXPECT_TRUE(::IsWindowVisible(window));
    ::DestroyWindow(window);
    EXPECT_EQ(FindWindowByTitle("WhatsApp"), std::nullopt);
    showWindow(*found, true);  // gone: nothing happens
}

/// Not a test: the processes that the next one starts, lists and ends.
TEST(WindowsProcess, DISABLED_staysForAMinute) {
    if (const std::string parent = environment("KIBO_TEST_PARENT"); !parent.empty()) endWithParent(std::stoll(parent));
    ::Sleep(60'000);
}

TEST(WindowsProcess, isStartedListedAndEnded) {
    EXPECT_EQ(startProgram("no-such-program").failure().kind, FailureKind::NotFound);
    const auto start = [] {
        return startProgram(executablePath(ownProcessId()), {"--gtest_also_run_disabled_tests",
                                                             "--gtest_filter=WindowsProcess.DISABLED_staysForAMinute"});
    };
    const Result<ProcessId> started = start();
    ASSERT_TRUE(started.ok()) << started.failure().text;
    const ProcessId pid = started.value();
    const Process process{pid, processStartTime(pid)};
    ASSERT_TRUE(isRunning(pid, process.startTime));

    const auto contains = [](const std::vector<Process>& list, const Process& wanted) {
        return std::find(list.begin(), list.end(), wanted) != list.end();
    };
    EXPECT_TRUE(contains(children(ownProcessId()), process));
    EXPECT_TRUE(contains(descendants(ownProcessId()), process));
    EXPECT_TRUE(contains(processesOf(executablePath(pid)), process));

    ::_putenv_s("KIBO_TEST_PARENT", std::to_string(pid).c_str());
    const ProcessId dependent = start().valueOr(0);
    const ProcessStartTime dependentStarted = processStartTime(dependent);
    EXPECT_NE(dependentStarted, 0u);
    EXPECT_TRUE(terminate(pid, process.startTime + 1, 0).ok());
    EXPECT_TRUE(isRunning(pid, process.startTime)) << "another process's id is left alone";
    EXPECT_TRUE(terminate(pid, process.startTime, 0).ok());
    EXPECT_FALSE(isRunning(pid, process.startTime));
    for (int i = 0; i < 200 && isRunning(dependent, dependentStarted); ++i) ::Sleep(50);
    EXPECT_FALSE(isRunning(dependent, dependentStarted)) << "it ends with the one that it calls its parent";
    EXPECT_EQ(processStartTime(-1), 0u);
}

TEST(WindowsShell, refusesWhatCouldBeASecondCommand) {
    EXPECT_EQ(openForOperator("a\" & calc \"").failure().kind, FailureKind::InvalidArgument);
    EXPECT_FALSE(openForOperator("").ok());
    EXPECT_FALSE(runElevated("C:\\no\\such\\cekver.bat", "", ShowMode::Hidden).ok());
}

TEST(WindowsMachine, looksForTheFrameworkFolder) {
    const TemporaryFolder folder;
    const std::string before = environment("systemroot");
    ::_putenv_s("systemroot", folder.path().string().c_str());
    EXPECT_EQ(machineProblem(), ".NET Framework 3.5 must be installed on this machine!");
    fs::create_directories(folder.path() / "Microsoft.NET/Framework/v3.5");
    EXPECT_EQ(machineProblem(), "");
    ::_putenv_s("systemroot", before.c_str());
}

TEST(WindowsMachine, readsChromesVersionFromTheRegistry) {
    const char* path = R"(Software\Google\Chrome\BLBeacon)";
    HKEY key = nullptr;
    if (!installedBrowserVersion().empty()) GTEST_SKIP() << "Chrome is installed here; its record stays as it is";
    ASSERT_EQ(::RegCreateKeyA(HKEY_CURRENT_USER, path, &key), ERROR_SUCCESS);
    const std::string version = "116.0.5845.141";
    ::RegSetValueExA(key, "version", 0, REG_SZ, reinterpret_cast<const BYTE*>(version.c_str()),
                     static_cast<DWORD>(version.size() + 1));
    ::RegCloseKey(key);
    EXPECT_EQ(installedBrowserVersion(), version);
    ::RegDeleteKeyA(HKEY_CURRENT_USER, path);
}

TEST(WindowsAccessFile, isMadeOnlyByADriverThatIsInstalled) {
    if (accessDriver().ok()) GTEST_SKIP() << "a driver is installed here; its record stays as it is";
    EXPECT_EQ(accessDriver().failure().kind, FailureKind::NotFound);
    const char* path = R"(SOFTWARE\ODBC\ODBCINST.INI\ODBC Drivers)";
    const char* name = "Microsoft Access Driver (*.mdb, *.accdb)";
    HKEY key = nullptr;
    ASSERT_EQ(::RegCreateKeyA(HKEY_LOCAL_MACHINE, path, &key), ERROR_SUCCESS);
    ::RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>("Installed"), sizeof "Installed");
    EXPECT_EQ(accessDriver().valueOr({}), name);
    // Recorded, but not there: its failure comes through, and no half-made file.
    const TemporaryFolder folder;
    const std::string file = (folder.path() / "kb.mdb").string();
    const Result<void> made = createAccessFile(name, file);
    ASSERT_FALSE(made.ok());
    EXPECT_EQ(made.failure().kind, FailureKind::Io);
    EXPECT_FALSE(fs::exists(file));
    ::RegDeleteValueA(key, name);
    ::RegCloseKey(key);
}

TEST(WindowsMachine, removesTheLockFileOfACrashedRun) {
    removeStaleLockFile();  // none there: no error
    fs::create_directories(R"(C:\Kibo\App)");
    writeContent(R"(C:\Kibo\App\kb.ldb)", "lock");
    removeStaleLockFile();
    EXPECT_FALSE(fs::exists(R"(C:\Kibo\App\kb.ldb)"));
}

TEST(WindowsDownloader, isCalledAtItsFixedPlace) {
    const std::string expected =
        R"(C:\Kibo\wget\wget.exe --max-threads 1 --output-document=C:\tmp\photo.jpg https://host/a/b/photo.jpg)";
    EXPECT_EQ(downloaderCommand(R"(C:\tmp)", "photo.jpg", "https://host/a/b/photo.jpg").value(), expected);
    EXPECT_TRUE(startCommand("cmd /c exit", ShowMode::Minimised).ok());
}

}  // namespace
}  // namespace kibo::platform
