#include "platform/durable_file.h"

#include <gtest/gtest.h>

#include "temporary_folder.h"

namespace kibo::platform {
namespace {

TEST(DurableFile, KeepsWhatWasWrittenAndLetsOneProgramInAtATime) {
    const TemporaryFolder folder;
    const auto missing = DurableFile::open(folder.file("no/such/folder/file"));
    ASSERT_FALSE(missing.ok());
    EXPECT_NE(missing.failure().text.find("can't write"), std::string::npos) << missing.failure().text;
    const std::string path = folder.file("a journal \xC3\xA4");
    {
        auto file = DurableFile::open(path);
        ASSERT_TRUE(file.ok()) << file.failure().text;
        ASSERT_TRUE(file.value()->append("one\n"));
        ASSERT_TRUE(file.value()->append("two\n"));
        const auto second = DurableFile::open(path);
        ASSERT_FALSE(second.ok());
        EXPECT_NE(second.failure().text.find("in use"), std::string::npos) << second.failure().text;
    }
    auto file = DurableFile::open(path);
    ASSERT_TRUE(file.ok()) << file.failure().text;
    EXPECT_EQ(file.value()->read().valueOr(""), "one\ntwo\n");
    ASSERT_TRUE(file.value()->replace("3\n"));
    ASSERT_TRUE(file.value()->append("4\n"));
    EXPECT_EQ(file.value()->read().valueOr(""), "3\n4\n");
}

}  // namespace
}  // namespace kibo::platform
