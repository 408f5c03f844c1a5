// A process that starts with standard descriptors closed gets no file under their numbers.
#include "host/descriptors.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

// Runs in a child with these descriptors closed, and tells what it answers.
int InChildWithout(const std::vector<int> &closed, const std::function<bool()> &work)
{
    const pid_t child = fork();
    if (child == 0) {
        for (const int number : closed) {
            close(number);
        }
        _exit(work() ? 0 : 1);
    }
    int end = -1;
    waitpid(child, &end, 0);
    return end;
}

const std::vector<std::vector<int>> combinations = {{}, {0}, {1}, {2}, {0, 1}, {0, 2}, {1, 2}, {0, 1, 2}};

TEST(Descriptors, AFileIsNeverOpenedUnderAStandardNumber)
{
    for (const auto &closed : combinations) {
        EXPECT_EQ(InChildWithout(closed,
                                 [] {
                                     const int file = host::OpenFile(AT_FDCWD, "/dev/null", O_RDWR);
                                     return file >= 3 && (fcntl(file, F_GETFD) & FD_CLOEXEC) != 0;
                                 }),
                  0)
            << closed.size();
    }
}

TEST(Descriptors, ClosedStandardOnesStayUnreadableAndUnwritable)
{
    EXPECT_EQ(InChildWithout({0, 1, 2},
                             [] {
                                 host::GuardStandardDescriptors();
                                 char byte = 'x';
                                 bool closed = true;
                                 for (int number = 0; number < 3; ++number) {
                                     closed = closed && write(number, &byte, 1) < 0 && errno == EBADF &&
                                              read(number, &byte, 1) < 0 && errno == EBADF &&
                                              (fcntl(number, F_GETFD) & FD_CLOEXEC) != 0;
                                 }
                                 return closed;
                             }),
              0);
}

TEST(Descriptors, OpenStandardOnesAreLeftAlone)
{
    EXPECT_EQ(InChildWithout({0, 1, 2},
                             [] {
                                 std::array<int, 2> ends{};
                                 if (pipe(ends.data()) != 0) return false; // 0 and 1
                                 host::GuardStandardDescriptors();
                                 char byte = 'x';
                                 return write(1, &byte, 1) == 1 && read(0, &byte, 1) == 1;
                             }),
              0);
}

TEST(Descriptors, AHostMayPutARealOneInTheirPlace)
{
    EXPECT_EQ(InChildWithout({2},
                             [] {
                                 host::GuardStandardDescriptors();
                                 const int file = host::OpenFile(AT_FDCWD, "/dev/null", O_WRONLY);
                                 return dup2(file, 2) == 2 && write(2, "x", 1) == 1;
                             }),
              0);
}

TEST(Descriptors, AStandardNumberIsLeftForAHigherOne)
{
    EXPECT_EQ(InChildWithout({0},
                             [] {
                                 const int low = open("/dev/null", O_RDWR);
                                 const int high = host::KeepAboveStandard(low);
                                 return low == 0 && high >= 3 && fcntl(0, F_GETFD) < 0 &&
                                        host::KeepAboveStandard(high) == high &&
                                        host::KeepAboveStandard(-1) == -1;
                             }),
              0);
}

TEST(Descriptors, AFailureKeepsItsReason)
{
    errno = 0;
    EXPECT_LT(host::OpenFile(AT_FDCWD, "/nowhere/at/all", O_RDONLY), 0);
    EXPECT_EQ(errno, ENOENT);
}

} // namespace
