// Clients as threads and processes: what each has for itself, what they wait for, and arguments that are
// none.
#include "files.h"

#include "record-manager/limits.h"

#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <random>
#include <thread>

namespace {

using namespace wbtrvtest;

// ---- Loading ----

struct Loading : testing::Test {
    TempDirectory Directory;
    std::string Path = Directory / "t.btr";
    Local Me;
    OnT<Local> T{Me};

    void SetUp() override
    {
        ASSERT_EQ(Create(Me, Path, DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Create(Me, Directory / "n.btr", DefinitionOfN()).Status, BtrStatusOk);
    }
};

TEST_F(Loading, IsForOneClientAloneInTheDirectory)
{
    const Remote other;
    ASSERT_EQ(Open(Me, Path, 0, BtrModeLoading).Status, BtrStatusOk);
    EXPECT_EQ(Open(other, Path).Status, BtrStatusIncompatibleMode);
    EXPECT_EQ(Open(other, Directory / "n.btr").Status, BtrStatusIncompatibleMode);
    EXPECT_EQ(Open(Me, Directory / "n.btr", 1, BtrModeLoading).Status, BtrStatusOk);
    EXPECT_EQ(Open(Me, Directory / "n.btr", 2).Status, BtrStatusOk);
    EXPECT_EQ(Close(Me).Status, BtrStatusOk);
    EXPECT_EQ(Open(other, Path).Status, BtrStatusIncompatibleMode);
    EXPECT_EQ(Close(Me, 1).Status, BtrStatusOk);
    EXPECT_EQ(Open(other, Path).Status, BtrStatusOk);
    EXPECT_EQ(Open(Me, Path, 0, BtrModeLoading).Status, BtrStatusIncompatibleMode);
    EXPECT_EQ(Close(other).Status, BtrStatusOk);
    EXPECT_EQ(Open(Me, Path, 0, BtrModeLoading).Status, BtrStatusOk);
}

TEST_F(Loading, MakesWhatWasLoadedVisibleWithItsClose)
{
    ASSERT_EQ(Open(Me, Path, 0, BtrModeLoading).Status, BtrStatusOk);
    wbtrv::limits.LoadingChanges = 1000;
    for (int i = 0; i < 2000; ++i) {
        ASSERT_EQ(T.Insert(std::to_string(i), "x", i).Status, BtrStatusOk);
    }
    EXPECT_EQ(T.Insert("7", "x", 0).Status, BtrStatusDuplicateKey);
    EXPECT_EQ(CountRecords(Me), 2000);
    ASSERT_EQ(Name(T.GetEqual("5")), "5");
    ASSERT_EQ(T.Delete().Status, BtrStatusOk);
    ASSERT_EQ(Name(T.GetEqual("6")), "6");
    ASSERT_EQ(T.Update("6", "y", 6).Status, BtrStatusOk);
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    wbtrv::limits.LoadingChanges = 100000;
    const Remote other;
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(other), 1999);
    EXPECT_EQ(Name(OnT<const Remote>{other}.Read(BtrOpGetEqual, 1, "y")), "6");
}

TEST_F(Loading, EndsAlsoWithResetAndWithTheThread)
{
    ASSERT_EQ(Open(Me, Path, 0, BtrModeLoading).Status, BtrStatusOk);
    ASSERT_EQ(T.Insert("a", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Me({.Operation = BtrOpReset}).Status, BtrStatusOk);
    std::thread([&] {
        PositionBlocks blocks{};
        const auto client = [&](const Request &request) { return Carry(blocks, request); };
        ASSERT_EQ(Open(client, Path, 0, BtrModeLoading).Status, BtrStatusOk);
        ASSERT_EQ(OnT<decltype(client)>{client}.Insert("b", "x", 1).Status, BtrStatusOk);
    }).join();
    ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(Me), 2);
}

TEST_F(Loading, ATransactionInsideUndoesOnlyItself)
{
    ASSERT_EQ(Open(Me, Path, 0, BtrModeLoading).Status, BtrStatusOk);
    ASSERT_EQ(T.Insert("a", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    ASSERT_EQ(T.Insert("b", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Me({.Operation = BtrOpAbort}).Status, BtrStatusOk);
    ASSERT_EQ(T.Insert("c", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(Me), 2);
    EXPECT_EQ(T.GetEqual("b").Status, BtrStatusKeyNotFound);
}

TEST_F(Loading, AFileThatWasChangedAndClosedMeanwhileIsFreeWithTheLoad)
{
    ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
    ASSERT_EQ(Open(Me, Directory / "n.btr", 1, BtrModeLoading).Status, BtrStatusOk);
    ASSERT_EQ(T.Insert("a", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    ASSERT_EQ(Close(Me, 1).Status, BtrStatusOk);
    const Remote other;
    EXPECT_EQ(Open(other, Path, 0, BtrModeExclusive).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(other), 1);
}

TEST_F(Loading, AKilledLoadLeavesBooksInOrder)
{
    wbtrv::limits.LoadingChanges = 4000;
    for (const int count : {10, 900, 2500}) {
        Remote loader;
        ASSERT_EQ(Open(loader, Path, 0, BtrModeLoading).Status, BtrStatusOk);
        const OnT<Remote> t{loader};
        for (int i = 0; i < count; ++i) {
            ASSERT_EQ(t.Insert(std::to_string(10 * count + i), "x", i).Status, BtrStatusOk);
        }
        loader.Kill();
        ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
        const int64_t kept = CountRecords(Me);
        int64_t along = 0;
        for (uint16_t operation = BtrOpGetFirst; T.Read(operation, 2).Status == BtrStatusOk;
             operation = BtrOpGetNext) {
            ++along;
        }
        EXPECT_EQ(along, kept);
        // Only whole batches are there: 1000 records with three keys each make one.
        EXPECT_EQ(kept, count == 2500 ? 2000 : 0);
        ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    }
}

// ---- Threads ----

struct Sharing : OpenedT {};

TEST_F(Sharing, AnotherThreadsPositionBlockIsNotOpen)
{
    std::thread([&] {
        EXPECT_EQ(Carry(Me.Blocks, {.Operation = BtrOpGetFirst, .Length = 64}).Status, BtrStatusNotOpen);
        EXPECT_EQ(Carry(Me.Blocks, {.Operation = BtrOpClose}).Status, BtrStatusNotOpen);
    }).join();
    EXPECT_EQ(Name(T.Read(BtrOpGetFirst, 0)), "a");
}

TEST_F(Sharing, ThreadsAreClientsOfTheirOwn)
{
    ASSERT_EQ(T.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    ASSERT_EQ(Me({.Operation = BtrOpBeginConcurrent}).Status, BtrStatusOk);
    std::thread([&] {
        Local you;
        ASSERT_EQ(Open(you, Path).Status, BtrStatusOk);
        const OnT<Local> t{you};
        EXPECT_EQ(t.GetEqual("a", BtrBiasLock).Status, BtrStatusRecordLocked);
        EXPECT_EQ(you({.Operation = BtrOpBegin}).Status, BtrStatusOk);
        EXPECT_EQ(you({.Operation = BtrOpEnd}).Status, BtrStatusOk);
        ASSERT_EQ(Name(t.GetEqual("b")), "b");
        EXPECT_EQ(t.Update("b", "y", 5).Status, BtrStatusOk);
    }).join();
    EXPECT_EQ(Me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
}

TEST_F(Sharing, AThreadThatEndsLeavesNeitherLocksNorChangesNorOpenFiles)
{
    std::thread([&] {
        PositionBlocks blocks{};
        const auto you = [&](const Request &request) { return Carry(blocks, request); };
        ASSERT_EQ(Open(you, Path).Status, BtrStatusOk);
        const OnT<decltype(you)> t{you};
        ASSERT_EQ(t.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
        ASSERT_EQ(you({.Operation = BtrOpBegin}).Status, BtrStatusOk);
        ASSERT_EQ(t.Insert("c", "x", 1).Status, BtrStatusOk);
    }).join();
    EXPECT_EQ(T.GetEqual("c").Status, BtrStatusKeyNotFound);
    EXPECT_EQ(T.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    EXPECT_EQ(T.Update("a", "y", 1).Status, BtrStatusOk);
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    EXPECT_EQ(Open(Me, Path, 0, BtrModeExclusive).Status, BtrStatusOk);
}

TEST_F(Sharing, ResetAndStopEndEverythingOfTheClient)
{
    for (const uint16_t operation : {BtrOpReset, BtrOpStop}) {
        ASSERT_EQ(Me({.Operation = BtrOpReset}).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
        ASSERT_EQ(T.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
        ASSERT_EQ(Me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("c", "x", 1).Status, BtrStatusOk);
        EXPECT_EQ(Me({.Operation = operation}).Status, BtrStatusOk);
        EXPECT_EQ(T.GetEqual("a").Status, BtrStatusNotOpen);
        EXPECT_EQ(Me({.Operation = BtrOpEnd}).Status, BtrStatusNoTransaction);
        const Remote other;
        ASSERT_EQ(Open(other, Path, 0, BtrModeExclusive).Status, BtrStatusOk);
        EXPECT_EQ(CountRecords(other), 2);
        EXPECT_EQ(OnT<const Remote>{other}.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    }
}

TEST_F(Sharing, ThePlacesOfAFileThatOthersReplacedAreForgotten)
{
    // Another process replaces the file again and again; this one opens each of them.
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    const Remote other;
    for (unsigned i = 0; i < 20; ++i) {
        ASSERT_EQ(Create(other, Path, DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
        EXPECT_EQ(CountRecords(Me), 0);
        ASSERT_EQ(T.Insert("a", "x", 1).Status, BtrStatusOk);
        ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    }
}

// ---- Waiting ----

TEST_F(Sharing, AWaitingRequestIsGrantedWhenTheLockIsFree)
{
    const Remote other;
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    ASSERT_EQ(T.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    ASSERT_EQ(T.Update("a", "y", 7).Status, BtrStatusOk);
    ASSERT_EQ(T.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    other.Send({.Operation = BtrOpGetEqual + BtrBiasWaitLock, .Length = 64, .Key = "a"});
    ASSERT_EQ(T.Update("a", "z", 8).Status, BtrStatusOk);
    const Answer got = other.Receive();
    EXPECT_EQ(got.Status, BtrStatusOk);
    // What is handed over was read under the lock.
    EXPECT_EQ(got.Data, RecordOfT("a", "z", 8));
    EXPECT_EQ(T.GetEqual("a", BtrBiasLock).Status, BtrStatusRecordLocked);
}

TEST_F(Sharing, AWaitingRequestGivesUpAfterItsTime)
{
    const Remote other;
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    ASSERT_EQ(T.GetEqual("a", BtrBiasMultiple).Status, BtrStatusOk);
    for (const uint16_t bias : {BtrBiasWaitLock, BtrBiasWaitMultiple}) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(OnT<const Remote>{other}.GetEqual("a", bias).Status, BtrStatusRecordLocked);
        EXPECT_GE(std::chrono::steady_clock::now() - start,
                  std::chrono::milliseconds(wbtrv::limits.LockWait_ms));
    }
}

TEST_F(Sharing, OneOfTwoThatWaitForEachOtherIsTold)
{
    const Remote a;
    const Remote b;
    ASSERT_EQ(Open(a, Path).Status, BtrStatusOk);
    ASSERT_EQ(Open(b, Path).Status, BtrStatusOk);
    const OnT<const Remote> ta{a};
    const OnT<const Remote> tb{b};
    ASSERT_EQ(ta.GetEqual("a", BtrBiasMultiple).Status, BtrStatusOk);
    ASSERT_EQ(tb.GetEqual("b", BtrBiasMultiple).Status, BtrStatusOk);
    a.Send({.Operation = BtrOpGetEqual + BtrBiasWaitMultiple, .Length = 64, .Key = "b"});
    b.Send({.Operation = BtrOpGetEqual + BtrBiasWaitMultiple, .Length = 64, .Key = "a"});
    // Whoever is answered first has to give way.
    std::promise<const Remote *> first;
    std::once_flag once;
    const auto receive = [&](const Remote &of) {
        const Answer answer = of.Receive();
        std::call_once(once, [&] { first.set_value(&of); });
        return answer.Status;
    };
    auto ofA = std::async(std::launch::async, receive, std::cref(a));
    auto ofB = std::async(std::launch::async, receive, std::cref(b));
    const Remote *loser = first.get_future().get();
    EXPECT_EQ((loser == &a ? ofA : ofB).get(), BtrStatusDeadlock);
    ASSERT_EQ(OnT<const Remote>{*loser}.Unlock(BtrUnlockAll).Status, BtrStatusOk);
    EXPECT_EQ((loser == &a ? ofB : ofA).get(), BtrStatusOk);
}

TEST_F(Sharing, SingleAndMultipleLocksDoNotMixOnOnePositionBlock)
{
    ASSERT_EQ(T.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    EXPECT_EQ(T.GetEqual("b", BtrBiasMultiple).Status, BtrStatusBadLockType);
    ASSERT_EQ(T.Unlock(0).Status, BtrStatusOk);
    ASSERT_EQ(T.GetEqual("b", BtrBiasMultiple).Status, BtrStatusOk);
    EXPECT_EQ(T.GetEqual("a", BtrBiasLock).Status, BtrStatusBadLockType);
    EXPECT_EQ(T.Unlock(0).Status, BtrStatusUnlockMismatch);
    EXPECT_EQ(T.Insert("c", "x", 1, 0, BtrBiasLock).Status, BtrStatusBadLockType);
    EXPECT_EQ(CountRecords(Me), 2);
}

TEST_F(Sharing, AnInsertCanLockTheNewRecord)
{
    const Remote other;
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    const OnT<const Remote> o{other};
    ASSERT_EQ(T.Insert("c", "x", 1, 0, BtrBiasLock).Status, BtrStatusOk);
    EXPECT_EQ(o.GetEqual("c", BtrBiasLock).Status, BtrStatusRecordLocked);
    ASSERT_EQ(T.Insert("d", "x", 1, 0, BtrBiasLock).Status, BtrStatusOk);
    EXPECT_EQ(o.GetEqual("c", BtrBiasLock).Status, BtrStatusOk);
    EXPECT_EQ(o.GetEqual("d", BtrBiasLock).Status, BtrStatusRecordLocked);
    ASSERT_EQ(T.Delete().Status, BtrStatusOk);
    EXPECT_EQ(T.Unlock(0).Status, BtrStatusUnlockMismatch);
}

TEST_F(Sharing, TwoPositionBlocksOfAClientShareARecordsLock)
{
    ASSERT_EQ(Open(Me, Path, 1).Status, BtrStatusOk);
    const OnT<Local> second{Me, 1};
    const Remote other;
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    const OnT<const Remote> o{other};
    ASSERT_EQ(T.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    ASSERT_EQ(second.GetEqual("a", BtrBiasMultiple).Status, BtrStatusOk);
    ASSERT_EQ(T.Unlock(0).Status, BtrStatusOk);
    EXPECT_EQ(o.GetEqual("a", BtrBiasLock).Status, BtrStatusRecordLocked);
    EXPECT_EQ(T.Update("a", "y", 1).Status, BtrStatusOk);
    EXPECT_EQ(o.GetEqual("a", BtrBiasLock).Status, BtrStatusRecordLocked);
    ASSERT_EQ(Close(Me, 1).Status, BtrStatusOk);
    EXPECT_EQ(o.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
}

TEST_F(Sharing, ASecondWriterWaitsAndThenIsToldSo)
{
    const Remote other;
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    const OnT<const Remote> o{other};
    ASSERT_EQ(other({.Operation = BtrOpBeginConcurrent}).Status, BtrStatusOk);
    ASSERT_EQ(o.Insert("c", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(T.Insert("d", "x", 1).Status, BtrStatusRecordLocked);
    EXPECT_EQ(Create(Me, Directory / "u.btr", DefinitionOfT()).Status, BtrStatusRecordLocked);
    ASSERT_EQ(other({.Operation = BtrOpEnd}).Status, BtrStatusOk);
    EXPECT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);

    ASSERT_EQ(Create(Me, Directory / "u.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Open(other, Directory / "u.btr", 1).Status, BtrStatusOk);
    ASSERT_EQ(other({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    ASSERT_EQ((OnT<const Remote>{other, 1}.Insert("c", "x", 1).Status), BtrStatusOk);
    // Another file of the directory, but the one writer is in an exclusive transaction.
    EXPECT_EQ(T.Insert("e", "x", 1).Status, BtrStatusFileLocked);
}

TEST_F(Sharing, MomentaryLocksOfUpdatesAreNotSeenByRequests)
{
    // One client updates a record without end; the other's no-wait requests never fail for it.
    const Remote other;
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    const OnT<const Remote> o{other};
    ASSERT_EQ(Name(o.GetEqual("b")), "b");
    for (int i = 0; i < 50; ++i) {
        other.Send({.Operation = BtrOpUpdate, .Data = RecordOfT("b", "x", i), .Length = 64});
        const Answer locked = T.GetEqual("b", BtrBiasLock);
        EXPECT_EQ(locked.Status, BtrStatusOk);
        ASSERT_EQ(T.Unlock(0).Status, BtrStatusOk);
        EXPECT_EQ(other.Receive().Status, BtrStatusOk);
    }
}

// ---- Arguments that are none ----

TEST(Arguments, VersionTellsOneBlock)
{
    Local me;
    const Answer answer = me({.Operation = BtrOpVersion, .Length = 15});
    EXPECT_EQ(answer.Status, BtrStatusOk);
    EXPECT_EQ(answer.Length, 5u);
    EXPECT_EQ(answer.Data.substr(0, 5), std::string("\x07\0\0\0W", 5));
    EXPECT_EQ(me({.Operation = BtrOpVersion, .Length = 4}).Status, BtrStatusDataBufferShort);
}

TEST_F(Sharing, NullPointersAreAnsweredWithAStatus)
{
    std::vector<uint8_t> data(64);
    uint32_t length = 64;
    std::array<char, 256> key{};
    uint8_t *block = Me.Blocks[0].data();
    for (unsigned code = 0; code < 1700; ++code) {
        const auto operation = static_cast<uint16_t>(code);
        if (code % 100 == BtrOpClose || code % 100 == BtrOpStop || code % 100 == BtrOpReset) continue;
        for (const int8_t number : std::vector<int8_t>{0, -1, -2, 3}) {
            BTRCALL(operation, nullptr, nullptr, nullptr, nullptr, 255, number);
            BTRCALL(operation, nullptr, data.data(), &length, key.data(), 255, number);
            BTRCALL(operation, block, nullptr, nullptr, nullptr, 255, number);
            BTRCALL(operation, block, data.data(), nullptr, key.data(), 255, number);
            BTRCALL(operation, block, nullptr, &length, key.data(), 255, number);
            BTRCALL(operation, block, data.data(), &length, nullptr, 255, number);
            BTRCALL(operation, block, nullptr, nullptr, key.data(), 0, number);
            BTRCALL(BtrOpAbort, nullptr, nullptr, nullptr, nullptr, 0, 0);
        }
    }
    length = 64;
    EXPECT_EQ(BTRCALL(BtrOpGetFirst, nullptr, data.data(), &length, key.data(), 255, 0),
              BtrStatusBadPositionBlock);
    EXPECT_EQ(BTRCALL(BtrOpOpen, nullptr, nullptr, nullptr, key.data(), 255, 0), BtrStatusBadPositionBlock);
    EXPECT_EQ(BTRCALL(BtrOpOpen, block, nullptr, nullptr, nullptr, 255, 0), BtrStatusBadName);
    EXPECT_EQ(BTRCALL(BtrOpGetFirst, block, nullptr, nullptr, key.data(), 255, 0), BtrStatusDataBufferShort);
    EXPECT_EQ(BTRCALL(BtrOpGetFirst, block, data.data(), nullptr, key.data(), 255, 0),
              BtrStatusDataBufferShort);
    EXPECT_EQ(BTRCALL(BtrOpGetFirst, block, data.data(), &length, nullptr, 255, 0), BtrStatusKeyBufferShort);
    EXPECT_EQ(BTRCALL(BtrOpStepFirst, block, data.data(), &length, nullptr, 0, 0), BtrStatusOk);
    EXPECT_EQ(BTRCALL(BtrOpInsert, block, nullptr, &length, key.data(), 255, 0), BtrStatusDataBufferShort);
    EXPECT_EQ(BTRCALL(BtrOpCreate, nullptr, nullptr, nullptr, nullptr, 0, 0), BtrStatusBadName);
    EXPECT_EQ(BTRCALL(BtrOpStat, block, nullptr, nullptr, nullptr, 0, 0), BtrStatusDataBufferShort);
    EXPECT_EQ(BTRCALL(BtrOpGetDirect, block, nullptr, &length, key.data(), 255, 0), BtrStatusDataBufferShort);
    EXPECT_EQ(BTRCALL(BtrOpUnlock, block, nullptr, nullptr, nullptr, 0, -1), BtrStatusDataBufferShort);
    EXPECT_EQ(BTRCALL(BtrOpVersion, nullptr, nullptr, nullptr, nullptr, 0, 0), BtrStatusDataBufferShort);
}

TEST_F(Sharing, AGarbagePositionBlockIsNotOpen)
{
    std::mt19937 random(7);
    const auto good = Me.Blocks[0];
    for (unsigned i = 0; i < 2000; ++i) {
        auto &block = Me.Blocks[2];
        block = good;
        // Anything but the image itself; only the part that is in use counts.
        const size_t changes = 1 + random() % 8;
        for (size_t j = 0; j < changes; ++j) {
            block[random() % 24] ^= static_cast<uint8_t>(1 + random() % 255);
        }
        memset(block.data() + 12, i % 2 == 0 ? 0 : 0xFF, 4); // reserved
        if (memcmp(block.data(), good.data(), 12) == 0 && memcmp(block.data() + 16, good.data() + 16, 8) == 0)
            continue;
        for (const uint16_t operation : {BtrOpGetFirst, BtrOpInsert, BtrOpClose, BtrOpStat, BtrOpUnlock}) {
            EXPECT_EQ(
                Me({.Operation = operation, .Block = 2, .Data = RecordOfT("q", "q", 1), .Length = 64}).Status,
                BtrStatusNotOpen);
        }
    }
    EXPECT_EQ(Name(T.Read(BtrOpGetFirst, 0)), "a");
}

TEST_F(Sharing, AClosedPositionBlockIsNotOpenEvenIfItsImageWasKept)
{
    const auto image = Me.Blocks[0];
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    Me.Blocks[0] = image;
    EXPECT_EQ(T.Read(BtrOpGetFirst, 0).Status, BtrStatusNotOpen);
    ASSERT_EQ(Open(Me, Path, 1).Status, BtrStatusOk);
    Me.Blocks[0] = image;
    EXPECT_EQ(T.Read(BtrOpGetFirst, 0).Status, BtrStatusNotOpen);
}

} // namespace
