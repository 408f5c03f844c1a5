// Descriptors that the books take: never a standard one, whatever the host has closed.
#include "files.h"

#include "record-manager/limits.h"

#include <algorithm>
#include <array>
#include <climits>
#include <condition_variable>
#include <mutex>
#include <thread>

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

size_t CountDescriptors()
{
    size_t count = 0;
    for (const auto &entry : fs::directory_iterator("/proc/self/fd")) {
        count += entry.is_symlink() ? 1 : 0;
    }
    return count;
}

// Threads that carry out `work` and then live on until all have done so.
template <typename Work> void InThreads(unsigned count, const Work &work)
{
    std::mutex mutex;
    std::condition_variable changed;
    unsigned done = 0;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            PositionBlocks blocks{};
            const auto me = [&](const Request &request) { return Carry(blocks, request); };
            work(me, i);
            std::unique_lock lock(mutex);
            ++done;
            changed.notify_all();
            changed.wait(lock, [&] { return done == count; });
        });
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return done == i + 1; });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

struct ManyThreads : testing::Test {
    TempDirectory First;
    TempDirectory Second;

    void SetUp() override
    {
        Local me;
        ASSERT_EQ(Create(me, First / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Create(me, Second / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
    }
};

TEST_F(ManyThreads, ShareTheDescriptorsOfTheirDirectories)
{
    const size_t before = CountDescriptors();
    size_t after = 0;
    InThreads(500, [&](const auto &me, unsigned number) {
        using Client = std::remove_reference_t<decltype(me)>;
        ASSERT_EQ(Open(me, First / "t.btr", 0).Status, BtrStatusOk);
        ASSERT_EQ(Open(me, Second / "t.btr", 1).Status, BtrStatusOk);
        ASSERT_EQ((OnT<Client>{me, 0}.Insert(std::to_string(number), "x", 1).Status), BtrStatusOk);
        ASSERT_EQ((OnT<Client>{me, 1}.GetEqual("x").Status),
                  number == 0 ? BtrStatusKeyNotFound : BtrStatusOk);
        if (number == 0) {
            ASSERT_EQ((OnT<Client>{me, 1}.Insert("x", "x", 1).Status), BtrStatusOk);
        }
        after = std::max(after, CountDescriptors());
    });
    EXPECT_LT(after, before + 20);
}

TEST_F(ManyThreads, HaveDescriptionsOfTheirOwnOnlyAsLongAsTheyHoldLocks)
{
    Local me;
    ASSERT_EQ(Open(me, First / "t.btr").Status, BtrStatusOk);
    for (unsigned i = 0; i < 20; ++i) {
        ASSERT_EQ(OnT<Local>{me}.Insert(std::to_string(i), "x", 1).Status, BtrStatusOk);
    }
    size_t holding = 0;
    InThreads(20, [&](const auto &other, unsigned number) {
        using Client = std::remove_reference_t<decltype(other)>;
        ASSERT_EQ(Open(other, First / "t.btr").Status, BtrStatusOk);
        ASSERT_EQ((OnT<Client>{other}.GetEqual(std::to_string(number), BtrBiasLock).Status), BtrStatusOk);
        holding = CountDescriptors();
    });
    EXPECT_LT(CountDescriptors() + 8, holding);
    for (unsigned i = 0; i < 20; ++i) {
        EXPECT_EQ(OnT<Local>{me}.GetEqual(std::to_string(i), BtrBiasLock).Status, BtrStatusOk);
    }
}

TEST_F(ManyThreads, LeaveNothingBehindWhenTheyHaveClosedTheirFiles)
{
    wbtrv::limits.Readers = 16;
    InThreads(100, [&](const auto &me, unsigned) {
        using Client = std::remove_reference_t<decltype(me)>;
        ASSERT_EQ(Open(me, First / "t.btr").Status, BtrStatusOk);
        EXPECT_EQ((OnT<Client>{me}.Read(BtrOpGetFirst, 0).Status), BtrStatusEndOfFile);
        ASSERT_EQ(Close(me).Status, BtrStatusOk);
    });
    wbtrv::limits.Readers = 4096;
}

} // namespace
