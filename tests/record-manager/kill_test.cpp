// Processes that post pairs of records into two files and are killed at any moment: each pair is there whole
// or not at all, everything that was answered is there, and nothing stays locked.
#include "files.h"

#include <atomic>
#include <cstdlib>
#include <random>
#include <sys/mman.h>

namespace {

using namespace wbtrvtest;

// How many transactions each writer was told to be on disk; shared with the children.
struct Promised {
    std::atomic<int> Count[8];
};

[[noreturn]] void PostForEver(const TempDirectory &directory, int writer, int round,
                              std::atomic<int> *promised)
{
    PositionBlocks blocks{};
    const auto client = [&](const Request &request) { return Carry(blocks, request); };
    if (Open(client, directory / "t.btr", 0).Status != 0 || Open(client, directory / "u.btr", 1).Status != 0)
        _exit(1);
    const OnT<decltype(client)> t{client};
    const OnT<decltype(client)> u{client, 1};
    for (int i = 0;; ++i) {
        const std::string name =
            std::to_string(writer) + "." + std::to_string(round) + "." + std::to_string(i);
        const bool posted = client({.Operation = BtrOpBeginConcurrent}).Status == 0 &&
                            t.Insert(name, "x", i).Status == 0 && u.Insert(name, "x", i).Status == 0 &&
                            client({.Operation = BtrOpEnd}).Status == 0;
        if (!posted) {
            client({.Operation = BtrOpAbort});
            continue;
        }
        promised->fetch_add(1);
    }
}

void KillWriters(unsigned writers, int rounds)
{
    const TempDirectory directory;
    Local me;
    ASSERT_EQ(Create(me, directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Create(me, directory / "u.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "t.btr", 0).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "u.btr", 1).Status, BtrStatusOk);
    auto *promised = static_cast<Promised *>(
        mmap(nullptr, sizeof(Promised), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(promised, MAP_FAILED);
    std::mt19937 random(11);
    for (int round = 0; round < rounds; ++round) {
        std::vector<pid_t> children;
        for (unsigned writer = 0; writer < writers; ++writer) {
            const pid_t child = fork();
            if (child == 0) PostForEver(directory, static_cast<int>(writer), round, &promised->Count[writer]);
            children.push_back(child);
        }
        usleep(static_cast<useconds_t>(random() % 8000));
        for (const pid_t child : children) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
        int64_t all = 0;
        for (unsigned writer = 0; writer < writers; ++writer) {
            all += promised->Count[writer];
        }
        const int64_t count = CountRecords(me, 0);
        ASSERT_EQ(count, CountRecords(me, 1));
        ASSERT_GE(count, all);
        // A writer may have died between the disk's answer and its note of it.
        ASSERT_LE(count, all + int64_t{writers} * (round + 1));
        const OnT<Local> t{me};
        ASSERT_EQ(t.Insert("r" + std::to_string(round), "x", 0).Status, BtrStatusOk);
        ASSERT_EQ(t.Delete().Status, BtrStatusOk);
    }
    munmap(promised, sizeof(Promised));
}

TEST(Kill, OneWriter) { KillWriters(1, 100); }
TEST(Kill, FourWriters) { KillWriters(4, 100); }
TEST(Kill, EightWriters) { KillWriters(8, 100); }

} // namespace
