#include "platform/shell.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <thread>

#include "platform/machine.h"
#include "temporary_folder.h"

namespace kibo::platform {
namespace {

using namespace std::chrono_literals;

/// A shell script on the search path of this test, found before anything else there.
class Shell : public testing::Test {
 protected:
    Shell() : path_(environment("PATH")) { ::setenv("PATH", (folder_.path().string() + ":" + path_).c_str(), 1); }
    ~Shell() override { ::setenv("PATH", path_.c_str(), 1); }

    void addScript(const std::string& name, const std::string& text, const char* interpreter = "/bin/sh") const {
        writeContent(folder_.file(name + ".new"), std::string("#!") + interpreter + "\n" + text + "\n");
        std::filesystem::permissions(folder_.file(name + ".new"), std::filesystem::perms::owner_all);
        std::filesystem::rename(folder_.file(name + ".new"), folder_.file(name));
    }
    /// A script that leaves its arguments, each in brackets, in a file for `said`.
    void addReporting(const std::string& name) const {
        addScript(name, "cd '" + folder_.path().string() + "'\nprintf '[%s]' \"$@\" > tmp\nmv tmp said");
    }
    /// What a detached script has written, once it has.
    std::string said() const {
        const std::string file = folder_.file("said");
        for (int i = 0; i < 1000 && contentOf(file).empty(); ++i) std::this_thread::sleep_for(5ms);
        std::string said = contentOf(file);
        std::filesystem::remove(file);
        return said;
    }

    TemporaryFolder folder_;

 private:
    std::string path_;
};

TEST_F(Shell, startsAProgramThatItNeedNotWaitForAndTellsOneThatCannotStart) {
    addReporting("report");
    const Result<ProcessId> started = startProgram("report", {"a b", "$HOME", "", "'"});
    ASSERT_TRUE(started.ok());
    EXPECT_GT(started.value(), 0);
    EXPECT_EQ(said(), "[a b][$HOME][][']");
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child was left behind";
    EXPECT_EQ(startProgram("no-such-program").failure().kind, FailureKind::NotFound);
    EXPECT_EQ(startProgram(folder_.path().string()).failure().kind, FailureKind::NotFound);
    addScript("broken", "", "/no/such/interpreter");
    EXPECT_EQ(startProgram("broken").failure().kind, FailureKind::Io);
}

TEST_F(Shell, asksForRightsAndOpensThroughTheDesktop) {
    addReporting("pkexec");
    ASSERT_TRUE(runElevated("/opt/check", "one \"two  words\" \"\"", ShowMode::Hidden).ok());
    EXPECT_EQ(said(), "[/opt/check][one][two  words][]");
    addReporting("xdg-open");
    EXPECT_EQ(openForOperator("--help").failure().kind, FailureKind::InvalidArgument) << "no options are taken";
    EXPECT_FALSE(openForOperator("").ok());
    ASSERT_TRUE(openForOperator("https://example.org/?a=1&b=2").ok());
    EXPECT_EQ(said(), "[https://example.org/?a=1&b=2]");
}

TEST_F(Shell, readsABrowsersVersionAndWhereTheProgramLives) {
    addScript("google-chrome", "[ \"$1\" = --version ] && echo 'Google Chrome 116.0.5845.141 unknown'");
    EXPECT_EQ(installedBrowserVersion(), "116.0.5845.141");
    addScript("silent", "exit 1");
    for (const char* program : {"silent", "no-such-program"}) EXPECT_EQ(installedBrowserVersion(program), "");
    ::setenv("KIBO_HOME", (folder_.path().string() + "/").c_str(), 1);
    EXPECT_EQ(programFolder(), folder_.path().string());
    ::setenv("KIBO_HOME", ".", 1);
    EXPECT_EQ(programFolder(), std::filesystem::current_path().string());
    ::unsetenv("KIBO_HOME");
}

}  // namespace
}  // namespace kibo::platform
