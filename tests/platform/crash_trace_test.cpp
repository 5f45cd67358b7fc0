#include "platform/crash_trace.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "temporary_folder.h"

namespace kibo::platform {
namespace {

volatile int* volatile nowhere = nullptr;
void throwText() {
    throw std::out_of_range("somebody's text");
}

const struct {
    const char* what;
    void (*happens)();
    const char* toldAs[2];  // on Debian, on Windows
} kCrashes[] = {
    {"access", [] { *nowhere = 1; }, {"signal 11 SIGSEGV", "exception 0xc0000005"}},
    {"abort", [] { std::abort(); }, {"signal 6 SIGABRT", "abort"}},
    {"exception", []() noexcept { throwText(); }, {"exception St12out_of_range", "exception St12out_of_range"}},
};

TEST(CrashTraceDeathTest, tellsWhatEndedTheProgramAndWhere) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "a sanitizer ends the program before the trace can";
#endif
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    // The same name in the process that dies: it begins this test anew.
    const auto file = std::filesystem::temp_directory_path() / "kibo-crash-trace-test";
    for (const auto& crash : kCrashes) {
        std::filesystem::remove(file);
        EXPECT_DEATH(
            {
                traceCrashes(file.string());
                crash.happens();
            },
            "")
            << crash.what;
        const std::string trace = contentOf(file.string());
        EXPECT_TRUE(trace.find(crash.toldAs[0]) != std::string::npos ||
                    trace.find(crash.toldAs[1]) != std::string::npos)
            << crash.what << ": " << trace;
        EXPECT_NE(trace.find("  platform_test"), std::string::npos) << trace;
        EXPECT_EQ(trace.find("somebody"), std::string::npos) << "no data";
    }
    std::filesystem::remove(file);
}

}  // namespace
}  // namespace kibo::platform
