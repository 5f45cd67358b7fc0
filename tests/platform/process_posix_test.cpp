#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

#include "platform/process.h"

namespace kibo::platform {
namespace {

using namespace std::chrono_literals;

/// Runs `body` in a child that then sleeps; ended with all of its own children when it goes out of scope.
class Child {
 public:
    explicit Child(const std::function<void()>& body = {}) : pid_(::fork()) {
        if (pid_ != 0) return;
        if (body) body();
        for (;;) ::pause();
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        for (const Process& process : descendants(pid_)) ::kill(static_cast<pid_t>(process.id), SIGKILL);
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    ProcessId id() const { return pid_; }

 private:
    pid_t pid_;
};

bool contains(const std::vector<Process>& processes, ProcessId id) {
    return std::any_of(processes.begin(), processes.end(), [id](const Process& p) { return p.id == id; });
}

TEST(ProcessTest, listsChildrenAndTheirChildrenWhichEndWithTheirParent) {
    const Child child([] {
        if (::fork() != 0) return;
        const ProcessId own = ownProcessId();
        if (::fork() == 0) endWithParent(own);
    });
    for (int i = 0; i < 1000 && descendants(child.id()).size() < 2; ++i) std::this_thread::sleep_for(5ms);
    const std::vector<Process> below = descendants(child.id());
    ASSERT_EQ(below.size(), 2u);
    EXPECT_EQ(children(child.id()), std::vector<Process>{below[0]});
    EXPECT_EQ(children(below[0].id), std::vector<Process>{below[1]});
    EXPECT_TRUE(children(0).empty());

    const std::string path = executablePath(ownProcessId());
    const std::vector<Process> named = processesNamed({"no such name", path.substr(path.rfind('/') + 1)});
    for (const ProcessId id : {ownProcessId(), child.id(), below[0].id, below[1].id}) EXPECT_TRUE(contains(named, id));
    EXPECT_TRUE(processesNamed({"platform_tes", path}).empty()) << "a name is a whole name, not a path";

    ::kill(static_cast<pid_t>(below[0].id), SIGKILL);
    for (int i = 0; i < 1000 && isRunning(below[1].id, below[1].startTime); ++i) std::this_thread::sleep_for(5ms);
    EXPECT_FALSE(isRunning(below[1].id, below[1].startTime));
}

TEST(ProcessTest, endsWhatListensAndWhatDoesNot) {
    const Child polite;
    const ProcessStartTime started = processStartTime(polite.id());
    EXPECT_TRUE(terminate(polite.id(), started + 1, 0).ok());
    std::this_thread::sleep_for(50ms);  // a signal takes its time
    ASSERT_TRUE(isRunning(polite.id(), started)) << "another process's id is left alone";
    EXPECT_TRUE(terminate(polite.id(), started, 2000).ok());
    // It is not collected yet: an ended process that still has an entry is not running.
    EXPECT_FALSE(isRunning(polite.id(), started));
    EXPECT_EQ(processStartTime(polite.id()), 0u);

    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const Child deaf([&ready] {
        ::signal(SIGTERM, SIG_IGN);
        EXPECT_EQ(::write(ready[1], "r", 1), 1);
    });
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    const ProcessStartTime deafStarted = processStartTime(deaf.id());
    EXPECT_TRUE(terminate(deaf.id(), deafStarted, 50).ok());
    EXPECT_FALSE(isRunning(deaf.id(), deafStarted));
    ::close(ready[0]);
    ::close(ready[1]);
}

}  // namespace
}  // namespace kibo::platform
