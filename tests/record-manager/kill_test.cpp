// Processes that post pairs of records into two files and are killed: each pair is there whole or not at all,
// everything that was answered is there, and nothing stays locked.
//
// When they die is drawn anew for each round, in turn: at any of their own calls to the store and to the
// disk, in the middle of a write too; and from outside, wherever they happen to be once they have made a
// number of postings together. KILLS says how many die in all, a third each of one, four and eight writers.
#include "audit.h"
#include "faults.h"
#include "files.h"

#include <atomic>
#include <cstdlib>
#include <random>
#include <sched.h>
#include <sys/mman.h>

#ifndef KILLS
#define KILLS 300
#endif

namespace {

using namespace wbtrvtest;

// How many transactions each writer was told to be on disk; shared with the children.
struct Promised {
    std::atomic<int> Count[8];

    int64_t All() const
    {
        int64_t all = 0;
        for (const std::atomic<int> &count : Count) {
            all += count;
        }
        return all;
    }
};

[[noreturn]] void PostForEver(const TempDirectory &directory, int writer, int round, uint64_t deadlyCall,
                              std::atomic<int> *promised)
{
    PositionBlocks blocks{};
    const auto client = [&](const Request &request) { return Carry(blocks, request); };
    if (deadlyCall != 0) Arm(Fault::Killed, deadlyCall);
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

void KillWriters(unsigned writers, unsigned kills)
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
    std::mt19937 random(11); // NOLINT: the same choices every time
    const int rounds = static_cast<int>((kills + writers - 1) / writers);
    for (int round = 0; round < rounds; ++round) {
        const bool byThemselves = round % 2 == 0;
        const int64_t before = promised->All();
        std::vector<pid_t> children;
        for (unsigned writer = 0; writer < writers; ++writer) {
            const uint64_t deadlyCall = byThemselves ? 1 + random() % 300 : 0;
            const pid_t child = fork();
            if (child == 0) {
                PostForEver(directory, static_cast<int>(writer), round, deadlyCall, &promised->Count[writer]);
            }
            children.push_back(child);
        }
        // From their start on: with 0 they may not even have opened the files.
        const int64_t wanted = byThemselves ? 0 : random() % 6;
        while (promised->All() < before + wanted) {
            sched_yield();
        }
        for (const pid_t child : children) {
            if (!byThemselves) kill(child, SIGKILL);
            int end = 0;
            waitpid(child, &end, 0);
            ASSERT_TRUE(WIFSIGNALED(end) && WTERMSIG(end) == SIGKILL)
                << "round " << round << " ended " << end;
        }
        const int64_t all = promised->All();
        const int64_t count = CountRecords(me, 0);
        ASSERT_EQ(count, CountRecords(me, 1));
        ASSERT_GE(count, all);
        // A writer may have died between the disk's answer and its note of it.
        ASSERT_LE(count, all + int64_t{writers} * (round + 1));
        const OnT<Local> t{me};
        ASSERT_EQ(t.Insert("r" + std::to_string(round), "x", 0).Status, BtrStatusOk) << "round " << round;
        ASSERT_EQ(t.Delete().Status, BtrStatusOk);
    }
    EXPECT_GT(promised->All(), 0);
    munmap(promised, sizeof(Promised));
}

TEST(Kill, OneWriter) { KillWriters(1, (KILLS + 2) / 3); }
TEST(Kill, FourWriters) { KillWriters(4, (KILLS + 2) / 3); }
TEST(Kill, EightWriters) { KillWriters(8, (KILLS + 2) / 3); }

// One that makes the books, and dies at each of its calls in turn, leaves what the next can go on with.
TEST(Kill, AtEachCallThatMakesAndFillsTheBooks)
{
    for (uint64_t n = 1;; ++n) {
        const TempDirectory directory(std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp");
        const pid_t child = fork();
        if (child == 0) {
            Arm(Fault::Killed, n);
            PositionBlocks blocks{};
            const auto client = [&](const Request &request) { return Carry(blocks, request); };
            const OnT<decltype(client)> t{client};
            const bool done = Create(client, directory / "t.btr", DefinitionOfT()).Status == 0 &&
                              Open(client, directory / "t.btr").Status == 0 &&
                              client({.Operation = BtrOpBegin}).Status == 0 &&
                              t.Insert("a", "x", 1).Status == 0 && t.Insert("b", "x", 2).Status == 0 &&
                              client({.Operation = BtrOpEnd}).Status == 0 &&
                              client({.Operation = BtrOpStop}).Status == 0;
            _exit(done ? 0 : 1);
        }
        int end = 0;
        waitpid(child, &end, 0);
        const bool killed = WIFSIGNALED(end) && WTERMSIG(end) == SIGKILL;
        ASSERT_TRUE(killed || end == 0) << "call " << n << " ended " << end;

        Local me;
        const int16_t made = Create(me, directory / "t.btr", DefinitionOfT(), BtrKeepExisting).Status;
        ASSERT_TRUE(made == BtrStatusOk || made == BtrStatusFileExists) << "call " << n << " leaves " << made;
        const FileImage image =
            Audit([&](const Request &request) { return me(request); }, directory / "t.btr");
        ASSERT_EQ(image.Opened, BtrStatusOk) << "call " << n;
        ASSERT_EQ(image.Complaint, "") << "call " << n;
        ASSERT_TRUE(image.Records.empty() || image.Records.size() == 2) << "call " << n;
        ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk) << "call " << n;
        ASSERT_EQ(OnT<Local>{me}.Insert("c", "x", 1).Status, BtrStatusOk) << "call " << n;
        if (killed) continue;
        EXPECT_EQ(image.Records.size(), 2U);
        EXPECT_GT(n, 40U) << "it makes many calls";
        return;
    }
}

} // namespace
