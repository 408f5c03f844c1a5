// The gate before the writer of a directory: entered in the order of the calls, by threads and processes,
// whatever becomes of those who wait.
#include "files.h"

#include "record-manager/gate.h"
#include "record-manager/limits.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <sys/mman.h>
#include <thread>

namespace {

using namespace wbtrvtest;

constexpr unsigned long_ms = 60000;

// Whether so many stand in the queue before a long time is over.
bool BecomesQueueOf(wbtrv::Gate *gate, unsigned count)
{
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (wbtrv::CountWaiting(gate) != count) {
        if (std::chrono::steady_clock::now() > until) return false;
        std::this_thread::yield();
    }
    return true;
}

struct Gates : testing::Test {
    TempDirectory Directory;
    wbtrv::Gate *Gate = nullptr;

    void SetUp() override
    {
        const int directory = open(Directory.Path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ASSERT_EQ(wbtrv::OpenGate(directory, true, &Gate), BtrStatusOk);
        close(directory);
    }
    void TearDown() override { wbtrv::CloseGate(Gate); }

    bool BecomesQueueOf(unsigned count) const { return ::BecomesQueueOf(Gate, count); }
};

TEST_F(Gates, AreEnteredByThreadsInTheOrderInWhichTheyCame)
{
    constexpr unsigned count = 64;
    ASSERT_EQ(wbtrv::EnterGate(Gate, long_ms, false), BtrStatusOk);
    std::mutex mutex;
    std::vector<unsigned> order;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            EXPECT_EQ(wbtrv::EnterGate(Gate, long_ms, false), BtrStatusOk);
            {
                const std::lock_guard lock(mutex);
                order.push_back(i);
            }
            wbtrv::LeaveGate(Gate);
        });
        EXPECT_TRUE(BecomesQueueOf(i + 1));
    }
    wbtrv::LeaveGate(Gate);
    for (std::thread &thread : threads) {
        thread.join();
    }
    std::vector<unsigned> expected(count);
    for (unsigned i = 0; i < count; ++i) {
        expected[i] = i;
    }
    EXPECT_EQ(order, expected);
    EXPECT_EQ(wbtrv::CountWaiting(Gate), 0u);
}

TEST_F(Gates, OneWhoHasJustLeftComesAfterThoseWhoWaited)
{
    ASSERT_EQ(wbtrv::EnterGate(Gate, long_ms, false), BtrStatusOk);
    std::atomic<bool> entered{false};
    std::thread other([&] {
        EXPECT_EQ(wbtrv::EnterGate(Gate, long_ms, false), BtrStatusOk);
        entered = true;
        wbtrv::LeaveGate(Gate);
    });
    EXPECT_TRUE(BecomesQueueOf(1));
    wbtrv::LeaveGate(Gate);
    EXPECT_EQ(wbtrv::EnterGate(Gate, long_ms, false), BtrStatusOk);
    EXPECT_TRUE(entered);
    wbtrv::LeaveGate(Gate);
    other.join();
}

TEST_F(Gates, RefuseWhenTheTimeIsOverAndLetTheNextPass)
{
    ASSERT_EQ(wbtrv::EnterGate(Gate, long_ms, true), BtrStatusOk);
    std::thread([&] { EXPECT_EQ(wbtrv::EnterGate(Gate, 0, false), BtrStatusFileLocked); }).join();
    std::thread impatient([&] { EXPECT_EQ(wbtrv::EnterGate(Gate, 200, false), BtrStatusFileLocked); });
    EXPECT_TRUE(BecomesQueueOf(1));
    std::thread patient([&] {
        EXPECT_EQ(wbtrv::EnterGate(Gate, long_ms, false), BtrStatusOk);
        wbtrv::LeaveGate(Gate);
    });
    impatient.join();
    EXPECT_TRUE(BecomesQueueOf(1));
    wbtrv::LeaveGate(Gate);
    patient.join();
    EXPECT_EQ(wbtrv::EnterGate(Gate, 0, false), BtrStatusOk);
    wbtrv::LeaveGate(Gate);
}

// A process that waits at the gate, notes its number when it is in, and leaves.
struct Visitor {
    pid_t Pid = -1;

    Visitor(wbtrv::Gate *gate, std::atomic<unsigned> *count, unsigned number, unsigned *order) : Pid(fork())
    {
        if (Pid != 0) return;
        if (wbtrv::EnterGate(gate, long_ms, false) != BtrStatusOk) _exit(1);
        order[count->fetch_add(1)] = number;
        wbtrv::LeaveGate(gate);
        _exit(0);
    }
    Visitor(const Visitor &) = delete;
    Visitor &operator=(const Visitor &) = delete;
    ~Visitor() { EXPECT_EQ(End(0), 0); }

    int End(int signal)
    {
        if (Pid < 0) return 0;
        if (signal != 0) kill(Pid, signal);
        int end = -1;
        waitpid(Pid, &end, 0);
        Pid = -1;
        return end;
    }
};

TEST_F(Gates, ArePassedByTheOthersWhenSomeOfThoseWhoWaitAreKilled)
{
    struct Shared {
        std::atomic<unsigned> Count;
        unsigned Order[16];
    };
    void *memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    auto *shared = static_cast<Shared *>(memory);
    ASSERT_EQ(wbtrv::EnterGate(Gate, long_ms, false), BtrStatusOk);
    std::vector<std::unique_ptr<Visitor>> visitors;
    for (unsigned i = 0; i < 12; ++i) {
        visitors.push_back(std::make_unique<Visitor>(Gate, &shared->Count, i, shared->Order));
        ASSERT_TRUE(BecomesQueueOf(i + 1));
    }
    for (const unsigned killed : {0u, 4u, 5u, 6u, 11u}) {
        visitors[killed]->End(SIGKILL);
    }
    visitors.push_back(std::make_unique<Visitor>(Gate, &shared->Count, 12, shared->Order));
    wbtrv::LeaveGate(Gate);
    visitors.clear();
    EXPECT_EQ(shared->Count, 8u);
    EXPECT_EQ(std::vector<unsigned>(shared->Order, shared->Order + 7),
              (std::vector<unsigned>{1, 2, 3, 7, 8, 9, 10}));
    EXPECT_EQ(shared->Order[7], 12u);
    munmap(memory, sizeof(Shared));
}

TEST_F(Gates, OpenWhenTheirHolderIsKilled)
{
    const pid_t holder = fork();
    if (holder == 0) {
        if (wbtrv::EnterGate(Gate, 0, true) != BtrStatusOk) _exit(1);
        kill(getpid(), SIGKILL);
    }
    int end = 0;
    waitpid(holder, &end, 0);
    EXPECT_TRUE(WIFSIGNALED(end));
    EXPECT_EQ(wbtrv::EnterGate(Gate, 0, false), BtrStatusOk);
    wbtrv::LeaveGate(Gate);
}

TEST_F(Gates, TakeMoreAtOnceThanThereArePlaces)
{
    ASSERT_EQ(wbtrv::EnterGate(Gate, long_ms, false), BtrStatusOk);
    std::vector<std::thread> threads;
    std::atomic<unsigned> entered{0};
    for (unsigned i = 0; i < 600; ++i) {
        threads.emplace_back([&] {
            if (wbtrv::EnterGate(Gate, long_ms, false) != BtrStatusOk) return;
            ++entered;
            wbtrv::LeaveGate(Gate);
        });
    }
    wbtrv::LeaveGate(Gate);
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(entered, 600u);
}

// ---- Transactions that wait for a file ----

struct GateOfBooks : testing::Test {
    TempDirectory Directory;
    std::string Path = Directory / "t.btr";
};

TEST_F(GateOfBooks, IsPassedByTransactionsInTheOrderInWhichTheyCame)
{
    constexpr unsigned count = 16;
    const unsigned usual_ms = wbtrv::limits.ChangeWait_ms;
    wbtrv::limits.ChangeWait_ms = 10 * long_ms; // a busy machine takes its time with the threads
    Local first;
    const OnT<Local> t{first};
    ASSERT_EQ(Create(first, Path, DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Open(first, Path).Status, BtrStatusOk);
    wbtrv::Gate *gate = nullptr;
    const int directory = open(Directory.Path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(wbtrv::OpenGate(directory, false, &gate), BtrStatusOk);
    close(directory);

    ASSERT_EQ(first({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    ASSERT_EQ(t.Insert("first", "x", -1).Status, BtrStatusOk);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < count; ++i) {
        threads.emplace_back([this, i] {
            Local one;
            EXPECT_EQ(Open(one, Path).Status, BtrStatusOk);
            EXPECT_EQ(one({.Operation = BtrOpBegin}).Status, BtrStatusOk);
            EXPECT_EQ(OnT<Local>{one}.Insert(std::to_string(i), "x", static_cast<int32_t>(i)).Status,
                      BtrStatusOk);
            EXPECT_EQ(one({.Operation = BtrOpEnd}).Status, BtrStatusOk);
        });
        EXPECT_TRUE(BecomesQueueOf(gate, i + 1));
    }
    EXPECT_EQ(first({.Operation = BtrOpEnd}).Status, BtrStatusOk);
    for (std::thread &thread : threads) {
        thread.join();
    }
    wbtrv::CloseGate(gate);
    wbtrv::limits.ChangeWait_ms = usual_ms;

    // As they were inserted.
    ASSERT_EQ(Name(t.Read(BtrOpStepFirst, 0)), "first");
    for (unsigned i = 0; i < count; ++i) {
        EXPECT_EQ(Name(t.Read(BtrOpStepNext, 0)), std::to_string(i));
    }
}

} // namespace
