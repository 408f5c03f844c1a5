// Eight processes post while the primary is killed and its standby takes over: every posting that was
// acknowledged is there once, none is half there, and posting goes on.
#include "files.h"

#include "record-manager/limits.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <map>
#include <sys/mman.h>

#ifndef FAILOVERS
#define FAILOVERS 1
#endif

namespace {

using namespace wbtrvtest;
using Clock = std::chrono::steady_clock;

constexpr int processes = 8;

// What the processes and the test tell one another.
struct Board {
    std::atomic<bool> Ends;
    std::atomic<int> Acknowledged[processes];
    std::atomic<int> Doubled[processes];
};

std::string KeyOf(int process, int number)
{
    return std::string(1, static_cast<char>('a' + process)) + std::to_string(1000000 + number);
}

// Posts one number after the other. One that was not acknowledged is posted again: were it there after all,
// its key would be a duplicate.
[[noreturn]] void Post(int process, const std::string &t, const std::string &u, Board *board)
{
    wbtrv::limits.ChangeWait_ms = 2000;
    wbtrv::limits.ServerAnswer_ms = 3000;
    Local me;
    const OnT<Local> first{me};
    const OnT<Local> second{me, 1};
    bool open[2] = {};
    int number = 1;
    while (!board->Ends) {
        if (!open[0]) open[0] = Open(me, t).Status == BtrStatusOk;
        if (!open[1]) open[1] = Open(me, u, 1).Status == BtrStatusOk;
        int16_t status = open[0] && open[1] ? BtrStatusOk : BtrStatusNoEngine;
        const uint16_t kind = number % 2 == 0 ? BtrOpBegin : BtrOpBeginConcurrent;
        if (status == BtrStatusOk) status = me({.Operation = kind}).Status;
        if (status == BtrStatusOk) {
            status = first.Insert(KeyOf(process, number), "x", process).Status;
            if (status == BtrStatusDuplicateKey) ++board->Doubled[process];
            if (status == BtrStatusOk) status = second.Insert(KeyOf(process, number), "x", process).Status;
            if (status == BtrStatusOk) status = me({.Operation = BtrOpEnd}).Status;
            if (status != BtrStatusOk) me({.Operation = BtrOpAbort});
        }
        if (status == BtrStatusOk) {
            board->Acknowledged[process] = number++;
        } else {
            usleep(20000);
        }
    }
    BTRCALL(BtrOpStop, nullptr, nullptr, nullptr, nullptr, 0, 0);
    _exit(0);
}

struct Failover : testing::Test {
    const TempDirectory Place{"/tmp"};
    const std::string Helper = TEST_SUPPORT "/postgres-pair";

    int Do(const std::string &action) const
    {
        return std::system((Helper + " " + Place.Path.string() + " " + action).c_str());
    }
    void SetUp() override { ASSERT_EQ(Do("make"), 0); }
    void TearDown() override { Do("stop"); }
};

std::map<std::string, int> KeysIn(Local &client, const std::string &path)
{
    std::map<std::string, int> keys;
    EXPECT_EQ(Open(client, path, 5).Status, BtrStatusOk);
    const OnT<Local> file{client, 5};
    for (uint16_t operation = BtrOpStepFirst;; operation = BtrOpStepNext) {
        const Answer answer = file.Read(operation, 0);
        if (answer.Status != BtrStatusOk) break;
        ++keys[answer.Data.substr(0, 8)];
    }
    EXPECT_EQ(Close(client, 5).Status, BtrStatusOk);
    return keys;
}

TEST_F(Failover, LosesNoPostingAndPostingGoesOn)
{
    TempDirectory books("/tmp");
    std::ofstream(books / "books.server") << "host=" << Place / "a"
                                          << "," << Place / "b"
                                          << " user=books dbname=postgres\nbooks\n";
    const std::string t = books / "t.btr";
    const std::string u = books / "u.btr";
    {
        Local me;
        ASSERT_EQ(Create(me, t, DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Create(me, u, DefinitionOfT()).Status, BtrStatusOk);
    }
    void *shared = mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto *board = new (shared) Board{};
    std::vector<pid_t> children;
    for (int i = 0; i < processes; ++i) {
        const pid_t child = fork();
        if (child == 0) Post(i, t, u, board);
        children.push_back(child);
    }
    const auto allGoOn = [&](std::chrono::milliseconds within) {
        int before[processes];
        for (int i = 0; i < processes; ++i) {
            before[i] = board->Acknowledged[i];
        }
        const auto deadline = Clock::now() + within;
        for (int i = 0; i < processes;) {
            if (board->Acknowledged[i] > before[i]) {
                ++i;
            } else if (Clock::now() > deadline) {
                return false;
            } else {
                usleep(1000);
            }
        }
        return true;
    };
    bool goesOn = allGoOn(std::chrono::seconds(20));
    EXPECT_TRUE(goesOn) << "at the beginning";
    std::string primary = "a";
    std::string standby = "b";
    const auto follow = [&] { return Do("follow " + standby + " " + primary); };
    for (int round = 0; round < FAILOVERS && goesOn; ++round) {
        EXPECT_EQ(Do("kill " + primary), 0);
        EXPECT_EQ(Do("promote " + standby), 0);
        goesOn = allGoOn(std::chrono::seconds(10));
        EXPECT_TRUE(goesOn) << "round " << round;
        std::swap(primary, standby);
        if (round + 1 < FAILOVERS) {
            EXPECT_EQ(follow(), 0);
            goesOn = goesOn && allGoOn(std::chrono::seconds(20));
        }
    }
    board->Ends = true;
    for (const pid_t child : children) {
        int end = 0;
        waitpid(child, &end, 0);
        EXPECT_EQ(end, 0);
    }
    Local me;
    const std::map<std::string, int> first = KeysIn(me, t);
    EXPECT_EQ(first, KeysIn(me, u));
    for (int i = 0; i < processes; ++i) {
        EXPECT_EQ(board->Doubled[i], 0) << "process " << i;
        for (int number = 1; number <= board->Acknowledged[i]; ++number) {
            ASSERT_EQ(first.contains(KeyOf(i, number)), true) << KeyOf(i, number);
        }
    }
    for (const auto &[key, count] : first) {
        ASSERT_EQ(count, 1) << key;
    }
    munmap(shared, sizeof(Board));
}

} // namespace
