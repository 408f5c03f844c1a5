// Descriptors that the books take: never a standard one, whatever the host has closed.
#include "files.h"

#include <algorithm>
#include <array>
#include <climits>

namespace {

using namespace wbtrvtest;
namespace fs = std::filesystem;

std::string TargetOf(int descriptor)
{
    std::array<char, PATH_MAX> target{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = readlink(link.c_str(), target.data(), target.size());
    return length < 0 ? "" : std::string(target.data(), static_cast<size_t>(length));
}

// Inserts into books that it opens or makes, with everything that a host might do with its standard
// descriptors in between. Ends with 0 if all went well.
int UseWithout(const std::vector<int> &closed, const std::string &path, bool makes)
{
    const pid_t child = fork();
    if (child == 0) {
        for (const int number : closed) {
            close(number);
        }
        PositionBlocks blocks{};
        const auto me = [&](const Request &request) { return Carry(blocks, request); };
        const OnT<decltype(me)> t{me};
        bool fine = !makes || Create(me, path, DefinitionOfT()).Status == BtrStatusOk;
        fine = fine && Open(me, path).Status == BtrStatusOk;
        fine = fine && t.Insert(makes ? "a" : "b", "x", 1).Status == BtrStatusOk;
        for (int number = 0; number < 3; ++number) {
            fine = fine && TargetOf(number).find("books.mdb") == std::string::npos;
            if (std::find(closed.begin(), closed.end(), number) == closed.end()) continue;
            fine = fine && write(number, "a message that belongs nowhere", 30) < 0;
        }
        fine = fine && t.Insert(makes ? "c" : "d", "x", 1).Status == BtrStatusOk;
        _exit(fine ? 0 : 1);
    }
    int end = -1;
    waitpid(child, &end, 0);
    return end;
}

TEST(StandardDescriptors, AreNeverTheBooksOfAHostThatHasClosedThem)
{
    const std::vector<std::vector<int>> combinations = {{0}, {1}, {2}, {0, 2}, {1, 2}, {0, 1, 2}};
    for (const auto &closed : combinations) {
        const TempDirectory directory;
        EXPECT_EQ(UseWithout(closed, directory / "t.btr", true), 0) << closed.size();
        EXPECT_EQ(UseWithout(closed, directory / "t.btr", false), 0) << closed.size();
        Local me;
        ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
        EXPECT_EQ(CountRecords(me), 4);
    }
}

} // namespace
