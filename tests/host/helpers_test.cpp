#include "host/helpers.h"

#include "host/passing.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace host;

namespace {

int Start(const char *count, const char *stays, const int *descriptors, int given, pid_t &child)
{
    std::string name = "host_helper";
    std::string first = count;
    std::string second = stays != nullptr ? stays : "";
    char *const arguments[] = {name.data(), first.data(), stays != nullptr ? second.data() : nullptr,
                               nullptr};
    return StartHelper(name.c_str(), arguments, descriptors, given, child);
}

int ExitCodeOf(pid_t child)
{
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

TEST(Helper, FindsItsDescriptorsInOrderAndNoOther)
{
    int first[2];
    int second[2];
    ASSERT_EQ(0, pipe(first));
    ASSERT_EQ(0, pipe(second));
    // The other way round than they are to stand, and one of the host's that is no business of the helper's.
    const int given[] = {second[1], first[1]};
    const int hosts = open("/", O_RDONLY);
    pid_t child = 0;
    ASSERT_EQ(0, Start("2", nullptr, given, 2, child));
    EXPECT_EQ(0, ExitCodeOf(child));
    char letter = 0;
    EXPECT_EQ(1, read(second[0], &letter, 1));
    EXPECT_EQ('a', letter);
    EXPECT_EQ(1, read(first[0], &letter, 1));
    EXPECT_EQ('b', letter);
    EXPECT_GE(fcntl(first[1], F_GETFD), 0) << "they stay the caller's";
    for (const int each : {first[0], first[1], second[0], second[1], hosts}) {
        close(each);
    }
}

TEST(Helper, HasNeitherTheMaskNorTheIgnoredPipesOfTheHost)
{
    sigset_t mask;
    sigemptyset(&mask);
    sigaddset(&mask, SIGUSR1);
    sigprocmask(SIG_BLOCK, &mask, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    pid_t child = 0;
    ASSERT_EQ(0, Start("0", nullptr, nullptr, 0, child));
    EXPECT_EQ(0, ExitCodeOf(child));
}

TEST(Helper, ThatIsMissingIsAnErrorOfItsOwn)
{
    std::string name = "no_such_helper";
    char *const arguments[] = {name.data(), nullptr};
    pid_t child = 0;
    EXPECT_EQ(ENOENT, StartHelper(name.c_str(), arguments, nullptr, 0, child));
}

TEST(Helper, ThatOthersCanWriteIsNotRun)
{
    // A link beside this program leads to one in a directory that is open to all.
    char open[] = "/tmp/vark-helper-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(open));
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
    std::string name = "helper_link_" + std::to_string(getpid());
    const std::string link = self.parent_path() / name;
    const std::string copy = std::string(open) + "/copied";
    ASSERT_TRUE(std::filesystem::copy_file(self.parent_path() / "host_helper", copy));
    ASSERT_EQ(0, symlink(copy.c_str(), link.c_str()));
    char *const arguments[] = {name.data(), nullptr};
    pid_t child = 0;
    const int trusted = StartHelper(name.c_str(), arguments, nullptr, 0, child);
    const int code = trusted == 0 ? ExitCodeOf(child) : -1;
    chmod(open, 0777);
    const int untrusted = StartHelper(name.c_str(), arguments, nullptr, 0, child);
    unlink(link.c_str());
    unlink(copy.c_str());
    rmdir(open);
    EXPECT_EQ(0, trusted);
    EXPECT_EQ(0, code);
    EXPECT_EQ(EPERM, untrusted);
}

TEST(Helper, ThatDoesNotEndIsEnded)
{
    pid_t child = 0;
    ASSERT_EQ(0, Start("0", "stay", nullptr, 0, child));
    EndHelper(child);
    AwaitEnd(child);
    EXPECT_EQ(-1, kill(child, 0));
    EXPECT_EQ(ESRCH, errno);
}

TEST(Helper, ThatWasCollectedByTheHostIsAwaitedAtOnce)
{
    pid_t child = 0;
    ASSERT_EQ(0, Start("0", nullptr, nullptr, 0, child));
    EXPECT_EQ(0, ExitCodeOf(child));
    const auto begin = std::chrono::steady_clock::now();
    AwaitEnd(child);
    EndHelper(child);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
}

TEST(Passing, ADescriptorComesWithItsBytes)
{
    int sockets[2];
    int ends[2];
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, sockets));
    ASSERT_EQ(0, pipe(ends));
    EXPECT_EQ(3, SendWith(sockets[0], ends[1], "abc", 3));
    EXPECT_EQ(2, SendWith(sockets[0], -1, "de", 2));
    char bytes[8] = "";
    Passed passed = {};
    EXPECT_EQ(3, ReceiveWith(sockets[1], bytes, 3, 0, passed));
    ASSERT_EQ(1, passed.Count);
    EXPECT_STREQ("abc", bytes);
    EXPECT_EQ(FD_CLOEXEC, fcntl(passed.Descriptors[0], F_GETFD));
    close(ends[1]);
    EXPECT_EQ(1, write(passed.Descriptors[0], "x", 1));
    EXPECT_EQ(1, read(ends[0], bytes, 1));
    EXPECT_EQ('x', bytes[0]);
    EXPECT_EQ(2, ReceiveWith(sockets[1], bytes, sizeof bytes, 0, passed));
    EXPECT_EQ(0, passed.Count);
    EXPECT_EQ(-1, ReceiveWith(sockets[1], bytes, sizeof bytes, MSG_DONTWAIT, passed));
    EXPECT_EQ(EAGAIN, errno);
    for (const int each : {sockets[0], sockets[1], ends[0], passed.Descriptors[0]}) {
        close(each);
    }
}

TEST(Passing, ToNobodyRaisesNoSignal)
{
    int sockets[2];
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, sockets));
    close(sockets[1]);
    EXPECT_EQ(-1, SendWith(sockets[0], -1, "a", 1));
    EXPECT_EQ(EPIPE, errno);
    close(sockets[0]);
}
