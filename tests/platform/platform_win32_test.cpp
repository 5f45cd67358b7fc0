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

/// Processes of this test's own, started, listed, ended. CMake runs these cases twice: with WMI and without.
class WindowsProcess : public ::testing::Test {
 protected:
    static constexpr const char* kArgument = R"(--user-data-dir=C:\My "Kibo"\profil\1)";

    static bool contains(const std::vector<Process>& list, const Process& wanted) {
        return std::find(list.begin(), list.end(), wanted) != list.end();
    }
    /// Starts a copy of this program, under a name of its own, that runs one of the cases that are no tests.
    Process start(const std::string& name, const char* step = "DISABLED_staysForAMinute") {
        const fs::path program = folder_.path() / name;
        fs::copy_file(executablePath(ownProcessId()), program, fs::copy_options::skip_existing);
        const Result<ProcessId> started = startProgram(
            program.string(),
            {"--gtest_also_run_disabled_tests", std::string("--gtest_filter=WindowsProcess.") + step, kArgument});
        EXPECT_TRUE(started.ok()) << started.failure().text;
        return started_.emplace_back(Process{started.value(), processStartTime(started.value())});
    }
    static bool runs(const Process& process) { return isRunning(process.id, process.startTime); }
    void TearDown() override {
        for (const Process& process : started_) EXPECT_TRUE(terminate(process.id, process.startTime, 0).ok());
    }

 private:
    TemporaryFolder folder_;
    std::vector<Process> started_;
};

/// These two are no tests but what the tests start.
TEST_F(WindowsProcess, DISABLED_staysForAMinute) {
    if (const std::string parent = environment("KIBO_TEST_PARENT"); !parent.empty()) endWithParent(std::stoll(parent));
    ::Sleep(60'000);
}
TEST_F(WindowsProcess, DISABLED_findsItselfByItsArgument) {
    const Process self{ownProcessId(), processStartTime(ownProcessId())};
    EXPECT_EQ(processesWithArgument(kArgument), std::vector{self});
    EXPECT_EQ(commandLine(self.id).back(), kArgument);
}

TEST_F(WindowsProcess, isListedByParentFileAndNameAndEnded) {
    EXPECT_EQ(startProgram("no-such-program").failure().kind, FailureKind::NotFound);
    const Process driver = start("kibo's driver.exe");
    const Process other = start("kibo other driver.exe");
    ::_putenv_s("KIBO_TEST_PARENT", std::to_string(driver.id).c_str());
    const Process dependent = start("kibo helper.exe");
    ::_putenv_s("KIBO_TEST_PARENT", "");
    EXPECT_TRUE(contains(children(ownProcessId()), driver));
    EXPECT_TRUE(contains(descendants(ownProcessId()), other));
    EXPECT_EQ(processesNamed({"no such name.exe", "KIBO'S DRIVER.exe"}), std::vector{driver});

    EXPECT_TRUE(terminate(driver.id, driver.startTime + 1, 0).ok());
    EXPECT_TRUE(runs(driver)) << "another process's id is left alone";
    EXPECT_TRUE(terminate(driver.id, driver.startTime, 0).ok());
    EXPECT_FALSE(runs(driver));
    EXPECT_TRUE(runs(other));
    EXPECT_FALSE(contains(children(ownProcessId()), driver));
    for (int i = 0; i < 200 && runs(dependent); ++i) ::Sleep(50);
    EXPECT_FALSE(runs(dependent)) << "it ends with the one that it calls its parent";
    EXPECT_EQ(processStartTime(-1), 0u);
    EXPECT_TRUE(processesNamed({}).empty());
}

TEST_F(WindowsProcess, argumentsAreToldByWmi) {
    const Process process = start("kibo browser.exe", "DISABLED_findsItselfByItsArgument");
    const HANDLE handle =
        ::OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(process.id));
    DWORD exitCode = 1;
    EXPECT_EQ(::WaitForSingleObject(handle, 30'000), WAIT_OBJECT_0);
    ::GetExitCodeProcess(handle, &exitCode);
    EXPECT_EQ(exitCode, 0u) << "Wine tells a process its own arguments only";
    ::CloseHandle(handle);
    EXPECT_TRUE(commandLine(0x7ffffffc).empty());
}

TEST(WindowsShell, refusesWhatCouldBeASecondCommandAndKnowsItsFixedPlaces) {
    EXPECT_EQ(openForOperator("a\" & calc \"").failure().kind, FailureKind::InvalidArgument);
    EXPECT_FALSE(openForOperator("").ok());
    EXPECT_FALSE(runElevated("C:\\no\\such\\cekver.bat", "", ShowMode::Hidden).ok());
    EXPECT_TRUE(startCommand("cmd /c exit", ShowMode::Minimised).ok());
    const std::string expected =
        R"(C:\Kibo\wget\wget.exe --max-threads 1 --output-document=C:\tmp\photo.jpg https://host/a/b/photo.jpg)";
    EXPECT_EQ(downloaderCommand(R"(C:\tmp)", "photo.jpg", "https://host/a/b/photo.jpg").value(), expected);

    removeStaleLockFile();  // none there: no error
    fs::create_directories(R"(C:\Kibo\App)");
    writeContent(R"(C:\Kibo\App\kb.ldb)", "lock");
    removeStaleLockFile();
    EXPECT_FALSE(fs::exists(R"(C:\Kibo\App\kb.ldb)"));
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

}  // namespace
}  // namespace kibo::platform
