#include "platform/machine.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kibo::platform {
namespace {

TEST(Machine, joinsPathsAndKnowsItsOwnFileAndMemory) {
    const std::string joined = std::string("folder") + pathSeparator() + "kibo.ini";
    EXPECT_EQ(joinPath("folder", "kibo.ini"), joined);
    EXPECT_EQ(joinPath("folder/", "kibo.ini"), joined);
    EXPECT_EQ(joinPath("folder", pathSeparator() + std::string("kibo.ini")), joined);
    EXPECT_EQ(joinPath("", "kibo.ini"), "kibo.ini");
    EXPECT_EQ(joinPath("/", "kibo.ini"), "/kibo.ini");

    ASSERT_EQ(environment("KIBO_HOME"), "");
    const std::filesystem::path file = executableFile();
    EXPECT_TRUE(std::filesystem::exists(file)) << file;
    EXPECT_EQ(file.stem(), "platform_test");
    EXPECT_EQ(programFolder(), file.parent_path().string());
    EXPECT_GT(residentMemoryBytes(), 100u * 1024);
    EXPECT_LT(residentMemoryBytes(), std::uint64_t{4} << 30);
}

}  // namespace
}  // namespace kibo::platform
