// What the posix side promises beyond the rules that both systems share.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "platform/private_profile.h"
#include "temporary_folder.h"

namespace kibo::platform {
namespace {

namespace fs = std::filesystem;

TEST(PrivateProfileFile, keepsLineFeedsBlankLinesAndTheByteOrderMark) {
    const TemporaryFolder folder;
    const std::string file = folder.file("kibo.ini");
    writeContent(file, "\xEF\xBB\xBF[kibo]\n\n  Speed = SLOW \n\n[DB]\n");
    EXPECT_EQ(readPrivateProfileString("kibo", "Speed", file, 49), "SLOW");
    ASSERT_TRUE(writePrivateProfileString("kibo", "Speed", "NORMAL", file).ok());
    ASSERT_TRUE(writePrivateProfileString("kibo", "Slow", "1", file).ok());
    EXPECT_EQ(contentOf(file), "\xEF\xBB\xBF[kibo]\n\nSpeed=NORMAL\nSlow=1\n\n[DB]\n");
}

TEST(PrivateProfileFile, isPrivateAndFollowsALink) {
    const TemporaryFolder folder;
    const TemporaryFolder elsewhere;
    const std::string file = folder.file("kibo.ini");
    const std::string target = elsewhere.file("real.ini");
    fs::create_symlink(target, file);  // dangling at first
    for (const char* speed : {"SLOW", "NORMAL"}) {
        ASSERT_TRUE(writePrivateProfileString("kibo", "Speed", speed, file).ok());
        EXPECT_TRUE(fs::is_symlink(file));
        EXPECT_EQ(contentOf(target), std::string("[kibo]\nSpeed=") + speed + "\n");
        EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
        fs::permissions(target, fs::perms::all);
    }
    EXPECT_EQ(folder.entries() + elsewhere.entries(), 2);
}

TEST(PrivateProfileFile, aFullDiskLeavesTheOldFileAndNoOther) {
    const TemporaryFolder folder;
    const std::string file = folder.file("kibo.ini");
    const std::string before = "[kibo]\nNote=" + std::string(5000, 'x') + "\n";
    writeContent(file, before);

    // A limit on file sizes fails a write halfway, as a full disk does; in a child, since it can't be taken back.
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit limit{4096, 4096};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::signal(SIGXFSZ, SIG_IGN);
        ::_exit(writePrivateProfileString("kibo", "Speed", "SLOW", file).ok() ? 1 : 0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(contentOf(file), before);
    EXPECT_EQ(folder.entries(), 1);
}

TEST(PrivateProfileFile, twoInstancesWritingAtOnceKeepEachOthersKeys) {
    const TemporaryFolder folder;
    const std::string file = folder.file("kibo.ini");
    constexpr int kKeys = 40;
    const auto writeKeys = [&file](const char* section) {
        bool ok = true;
        for (int i = 0; i < kKeys; ++i)
            ok = writePrivateProfileString(section, "key" + std::to_string(i), "1", file).ok() && ok;
        return ok;
    };
    const pid_t child = ::fork();
    if (child == 0) ::_exit(writeKeys("DB") ? 0 : 1);
    EXPECT_TRUE(writeKeys("kibo"));
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    for (int i = 0; i < kKeys; ++i)
        for (const char* section : {"kibo", "DB"})
            EXPECT_EQ(readPrivateProfileString(section, "key" + std::to_string(i), file, 49), "1") << section << i;
}

}  // namespace
}  // namespace kibo::platform
