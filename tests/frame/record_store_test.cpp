#include "src/frame/engine_calls.h"
#include "src/frame/record_lengths.h"
#include "src/frame/record_store.h"
#include "src/frame/transactions.h"

#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"

#include <cstring>
#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <thread>

using namespace vark;
using namespace vark::test;

namespace {

constexpr uint16_t operationGetNext = 6;
constexpr uint16_t operationBegin = 19;
constexpr uint16_t operationEnd = 20;

const char *const inUse = "Der Datensatz wird von einer anderen Anwendung benutzt!";

KeyBuffer Konto(const char *number) { return KeyOfText(Justified(number).c_str(), sizeof(AccountNumber)); }

struct RecordStore : testing::Test {
    Books books;
    ThreadContext *context = nullptr;
    FistaRecord fista{};

    void SetUp() override
    {
        books.AddMandant(1);
        for (const char *number : {"1000", "1200", "8400"}) {
            books.Insert(1, TableSako, MakeSako(number));
        }
        context = Enter();
        ASSERT_EQ(1, SelectMandant(*context, 1, fista));
        books.TakeBoxes();
    }
    void TearDown() override { VARK_SchliesseDB(); }

    static ThreadContext *Enter()
    {
        ThreadContext *entered = nullptr;
        EXPECT_EQ(1, EnterExport(entered));
        return entered;
    }
    // Runs `body` as another client, which is a thread of its own.
    template <typename Body> void AsAnotherClient(Body body)
    {
        std::thread([&] {
            ThreadContext *other = Enter();
            FistaRecord record{};
            ASSERT_EQ(1, SelectMandant(*other, 1, record));
            body(*other);
            VARK_SchliesseDB();
        }).join();
    }
    std::string Number(const SakoRecord &record) const { return TextOf(record.Konto); }
};

} // namespace

TEST_F(RecordStore, CodeHoldsTableAndKey)
{
    EXPECT_EQ(66, KeyCode(TableSteke, 2));
    EXPECT_EQ(TableSteke, TableOf(66));
    EXPECT_EQ(2u, KeyOf(66));
    EXPECT_EQ(TableSteke, TableOf(4));
    EXPECT_EQ(0u, KeyOf(4));
}

TEST_F(RecordStore, GetEqualReadsTheRecordOfAKey)
{
    SakoRecord record{};
    bool found = false;
    EXPECT_TRUE(GetEqual(*context, &record, Konto("1200"), found, TableSako));
    EXPECT_TRUE(found);
    EXPECT_EQ("   1200", Number(record));
}

TEST_F(RecordStore, GetEqualFollowsTheKeyOfItsCode)
{
    SakoRecord record{};
    bool found = false;
    EXPECT_TRUE(
        GetEqual(*context, &record, KeyOfText("K8400", sizeof record.Kuerzel), found, KeyCode(TableSako, 1)));
    EXPECT_TRUE(found);
    EXPECT_EQ("   8400", Number(record));
}

TEST_F(RecordStore, MissingKeyIsNoFailureAndNeverShown)
{
    SakoRecord record{};
    for (const int32_t show : {0, 1}) {
        context->ShowMessages = show;
        bool found = true;
        EXPECT_TRUE(GetEqual(*context, &record, Konto("9999"), found, TableSako));
        EXPECT_FALSE(found);
        found = true;
        EXPECT_TRUE(Exists(*context, Konto("9999"), found, TableSako));
        EXPECT_FALSE(found);
    }
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(RecordStore, FirstOfAnEmptyTableIsASilentFalseOrNotFound)
{
    {
        PersonalRecord record{};
        EXPECT_FALSE(GetFirst(*context, &record, TableKred));
        bool found = true;
        EXPECT_TRUE(GetFirstF(*context, &record, found, TableKred));
        EXPECT_FALSE(found);
        found = true;
        EXPECT_TRUE(GetLast(*context, &record, found, TableKred));
        EXPECT_FALSE(found);
    }
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(RecordStore, WalkInBothDirectionsEndsSilently)
{
    SakoRecord record{};
    bool found = false;
    ASSERT_TRUE(GetFirst(*context, &record, TableSako));
    EXPECT_EQ("   1000", Number(record));
    EXPECT_TRUE(GetNext(*context, &record, TableSako));
    EXPECT_EQ("   1200", Number(record));
    EXPECT_TRUE(GetNextF(*context, &record, found, TableSako));
    EXPECT_TRUE(found);
    EXPECT_EQ("   8400", Number(record));
    EXPECT_FALSE(GetNext(*context, &record, TableSako));
    EXPECT_TRUE(GetNextF(*context, &record, found, TableSako));
    EXPECT_FALSE(found);

    ASSERT_TRUE(GetLast(*context, &record, found, TableSako));
    EXPECT_TRUE(found);
    EXPECT_EQ("   8400", Number(record));
    EXPECT_TRUE(GetPreviousF(*context, &record, found, TableSako));
    EXPECT_EQ("   1200", Number(record));
    EXPECT_TRUE(GetPreviousF(*context, &record, found, TableSako));
    EXPECT_TRUE(GetPreviousF(*context, &record, found, TableSako));
    EXPECT_FALSE(found);
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(RecordStore, SearchesFindTheNeighbourOfAKey)
{
    SakoRecord record{};
    bool found = false;
    EXPECT_TRUE(GetGreaterEqual(*context, &record, Konto("1001"), TableSako));
    EXPECT_EQ("   1200", Number(record));
    EXPECT_TRUE(GetGreaterEqualF(*context, &record, Konto("1200"), found, TableSako));
    EXPECT_EQ("   1200", Number(record));
    EXPECT_TRUE(GetGreaterF(*context, &record, Konto("1200"), found, TableSako));
    EXPECT_EQ("   8400", Number(record));
    EXPECT_TRUE(GetLessF(*context, &record, Konto("1200"), found, TableSako));
    EXPECT_EQ("   1000", Number(record));
    EXPECT_TRUE(found);

    EXPECT_FALSE(GetGreaterEqual(*context, &record, Konto("9000"), TableSako));
    EXPECT_TRUE(GetGreaterEqualF(*context, &record, Konto("9000"), found, TableSako));
    EXPECT_FALSE(found);
    EXPECT_TRUE(GetGreaterF(*context, &record, Konto("8400"), found, TableSako));
    EXPECT_FALSE(found);
    EXPECT_TRUE(GetLessF(*context, &record, Konto("1000"), found, TableSako));
    EXPECT_FALSE(found);
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(RecordStore, InsertUpdateAndDeleteChangeTheTable)
{
    SakoRecord record = MakeSako("4711");
    EXPECT_TRUE(Insert(*context, &record, TableSako));
    bool found = false;
    ASSERT_TRUE(GetEqual(*context, &record, Konto("4711"), found, TableSako));
    record.Zuordnung = 8;
    EXPECT_TRUE(Update(*context, &record, TableSako));
    record = {};
    ASSERT_TRUE(GetEqual(*context, &record, Konto("4711"), found, TableSako));
    EXPECT_EQ(8, record.Zuordnung);
    EXPECT_TRUE(Delete(*context, TableSako));
    ASSERT_TRUE(Exists(*context, Konto("4711"), found, TableSako));
    EXPECT_FALSE(found);
}

TEST_F(RecordStore, ClosedTableRefusesUpdateAndDeleteSilently)
{
    StapelRecord record{};
    EXPECT_FALSE(Update(*context, &record, TableStapel));
    EXPECT_FALSE(Delete(*context, TableStapel));
    EXPECT_FALSE(RereadCurrent(*context, TableStapel));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(RecordStore, NextOnAClosedTableIsShownAsFileNotOpen)
{
    StapelRecord record{};
    EXPECT_FALSE(GetNext(*context, &record, TableStapel));
    EXPECT_EQ(Lines{"File not open"}, books.TakeBoxes());
}

TEST_F(RecordStore, OpenTablesAreCounted)
{
    EXPECT_EQ(0, context->OpenCounts[TableStapel]);
    EXPECT_TRUE(OpenTable(*context, TableStapel));
    EXPECT_TRUE(OpenTable(*context, KeyCode(TableStapel, 0)));
    EXPECT_EQ(2, context->OpenCounts[TableStapel]);
    EXPECT_TRUE(CloseTable(*context, TableStapel));
    EXPECT_TRUE(CloseTable(*context, TableStapel));
    EXPECT_EQ(0, context->OpenCounts[TableStapel]);
    EXPECT_TRUE(CloseTable(*context, TableStapel));
    EXPECT_EQ(0, context->OpenCounts[TableStapel]);
}

TEST_F(RecordStore, KeyedReadClosesWhatItOpenedAndWalksStayOpen)
{
    bool found = false;
    EXPECT_TRUE(Exists(*context, KeyOfNumber(1), found, TableStapel));
    EXPECT_EQ(0, context->OpenCounts[TableStapel]);
    StapelRecord record{};
    EXPECT_TRUE(GetFirstF(*context, &record, found, TableStapel));
    EXPECT_EQ(1, context->OpenCounts[TableStapel]);
    EXPECT_TRUE(GetFirstF(*context, &record, found, TableStapel));
    EXPECT_EQ(1, context->OpenCounts[TableStapel]);
}

TEST_F(RecordStore, FailedInsertLeavesItsCount)
{
    SakoRecord record = MakeSako("1200");
    const int32_t before = context->OpenCounts[TableSako];
    EXPECT_FALSE(Insert(*context, &record, TableSako));
    EXPECT_EQ(before + 1, context->OpenCounts[TableSako]);
    EXPECT_EQ(Lines{"Duplicate key value"}, books.TakeBoxes());
    VARK_SchliesseDB();
    EXPECT_EQ(0, context->OpenCounts[TableSako]);
}

TEST_F(RecordStore, MissingFileIsNamedWithItsPath)
{
    VARK_SchliesseDB();
    std::filesystem::remove_all(books.YearDirectory(1));
    books.TakeBoxes();
    EXPECT_FALSE(OpenTable(*context, TableStapel));
    EXPECT_EQ(Lines{"File " + books.TablePath(1, TableStapel) + " not found"}, books.TakeBoxes());
    EXPECT_EQ(0, context->OpenCounts[TableStapel]);
}

TEST_F(RecordStore, PathThatDoesNotFitIsAFileNotFound)
{
    context->PathOverrideOn = 1;
    std::memset(context->PathOverride, 'x', sizeof context->PathOverride - 1);
    EXPECT_FALSE(OpenTable(*context, TableStapel));
    const Lines boxes = books.TakeBoxes();
    ASSERT_EQ(1u, boxes.size());
    EXPECT_EQ(0u, boxes[0].find("File xxx"));
}

TEST_F(RecordStore, CompanyTableLiesUnderTheDataPathWhateverTheYear)
{
    VARK_SchliesseDB();
    std::memcpy(context->MandantSuffix, "77", 3);
    bool found = false;
    FistaRecord record{};
    EXPECT_TRUE(GetFirstF(*context, &record, found, TableFista));
    EXPECT_TRUE(found);
}

TEST_F(RecordStore, PathOverrideReplacesTheDirectoryOfEveryTable)
{
    VARK_SchliesseDB();
    context->PathOverrideOn = 1;
    const std::string other = books.YearDirectory(1, "1997");
    ASSERT_LT(other.size(), sizeof context->PathOverride);
    std::memcpy(context->PathOverride, other.c_str(), other.size() + 1);
    EXPECT_FALSE(OpenTable(*context, TableFista));
    EXPECT_EQ(Lines{"File " + other + pathSeparator + "fista.btr not found"}, books.TakeBoxes());
    EXPECT_EQ(0, RecordCount(*context, TableSako));
    context->PathOverrideOn = 0;
}

TEST_F(RecordStore, RecordCountIsThatOfTheEngine)
{
    EXPECT_EQ(3, RecordCount(*context, TableSako));
    EXPECT_EQ(0, RecordCount(*context, TableKred));
    VARK_SchliesseDB();
    std::filesystem::remove_all(books.YearDirectory(1));
    EXPECT_EQ(-1, RecordCount(*context, TableStapel));
}

TEST_F(RecordStore, TableOfAnotherYearOpensUnderAnotherSlot)
{
    books.Insert(1, TableSako, MakeSako("5000"), "1997");
    EXPECT_TRUE(OpenTable(*context, TableSako, "1997", SlotFree29));
    EXPECT_EQ(1, context->OpenCounts[SlotFree29]);
    EXPECT_EQ(sizeof(SakoRecord), context->FreeSlotLengths[0]);
    SakoRecord record{};
    bool found = false;
    EXPECT_TRUE(GetEqual(*context, &record, Konto("5000"), found, SlotFree29));
    EXPECT_TRUE(found);
    EXPECT_TRUE(GetEqual(*context, &record, Konto("5000"), found, TableSako));
    EXPECT_FALSE(found);
}

TEST_F(RecordStore, PreviousYearHasASlotOfItsOwn)
{
    books.Insert(1, TableSako, MakeSako("5000"), "1997");
    SakoRecord record{};
    bool found = false;
    EXPECT_TRUE(GetEqual(*context, &record, Konto("5000"), found, TablePreviousSako));
    EXPECT_TRUE(found);
}

TEST_F(RecordStore, LockedRecordIsToldToTheSecondWhoAsksForIt)
{
    SakoRecord record{};
    bool found = false;
    LockNext(*context);
    ASSERT_TRUE(GetEqual(*context, &record, Konto("1200"), found, TableSako));
    EXPECT_EQ(0, context->LockBias);
    AsAnotherClient([&](ThreadContext &other) {
        SakoRecord seen{};
        bool there = false;
        EXPECT_TRUE(GetEqual(other, &seen, Konto("1200"), there, TableSako))
            << "reading without a lock is free";
        EXPECT_TRUE(there);
        LockNext(other);
        EXPECT_FALSE(GetEqual(other, &seen, Konto("1200"), there, TableSako));
        LockNext(other);
        EXPECT_TRUE(GetFirst(other, &seen, TableSako));
        LockNext(other);
        EXPECT_FALSE(GetNext(other, &seen, TableSako));
        LockNext(other);
        EXPECT_FALSE(GetGreaterEqual(other, &seen, Konto("1200"), TableSako));
    });
    EXPECT_EQ((Lines{inUse, inUse, inUse}), books.TakeBoxes());
    EXPECT_TRUE(Unlock(*context, TableSako));
    AsAnotherClient([&](ThreadContext &other) {
        SakoRecord seen{};
        bool there = false;
        LockNext(other);
        EXPECT_TRUE(GetEqual(other, &seen, Konto("1200"), there, TableSako));
    });
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(RecordStore, UpdateReleasesTheLock)
{
    SakoRecord record{};
    bool found = false;
    LockNext(*context);
    ASSERT_TRUE(GetEqual(*context, &record, Konto("1200"), found, TableSako));
    EXPECT_TRUE(Update(*context, &record, TableSako));
    AsAnotherClient([&](ThreadContext &other) {
        LockNext(other);
        EXPECT_TRUE(GetEqual(other, &record, Konto("1200"), found, TableSako));
    });
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(RecordStore, LockStaysPendingAcrossReadsThatDoNotHonourIt)
{
    SakoRecord record{};
    bool found = false;
    LockNext(*context);
    EXPECT_TRUE(Exists(*context, Konto("1000"), found, TableSako));
    EXPECT_TRUE(GetFirstF(*context, &record, found, TableSako));
    EXPECT_TRUE(GetNextF(*context, &record, found, TableSako));
    EXPECT_EQ(200, context->LockBias);
    EXPECT_TRUE(GetEqual(*context, &record, Konto("9999"), found, TableSako));
    EXPECT_EQ(0, context->LockBias) << "taken by a read that found nothing, too";
}

TEST_F(RecordStore, UnlockWithoutALockIsShown)
{
    EXPECT_FALSE(Unlock(*context, TableSako));
    EXPECT_EQ(Lines{"Lock error"}, books.TakeBoxes());
}

TEST_F(RecordStore, RereadPutsThePositionOnAnotherKey)
{
    SakoRecord record{};
    bool found = false;
    ASSERT_TRUE(GetEqual(*context, &record, Konto("1000"), found, TableSako));
    EXPECT_TRUE(RereadCurrent(*context, KeyCode(TableSako, 1)));
    EXPECT_TRUE(GetNext(*context, &record, KeyCode(TableSako, 1)));
    EXPECT_EQ("   1200", Number(record));
}

TEST_F(RecordStore, RereadWithoutAPositionIsShown)
{
    StapelRecord record{};
    bool found = false;
    ASSERT_TRUE(GetFirstF(*context, &record, found, TableStapel));
    EXPECT_FALSE(RereadCurrent(*context, TableStapel));
    EXPECT_EQ(Lines{"Invalid positioning"}, books.TakeBoxes());
}

TEST_F(RecordStore, DifferentKeyNumberIsShown)
{
    SakoRecord record{};
    ASSERT_TRUE(GetFirst(*context, &record, TableSako));
    EXPECT_FALSE(GetNext(*context, &record, KeyCode(TableSako, 1)));
    EXPECT_EQ(Lines{"Different key number"}, books.TakeBoxes());
}

TEST_F(RecordStore, FailureIsShownEvenToACallerWhoWantsSilence)
{
    context->ShowMessages = 0;
    SakoRecord record{};
    ASSERT_TRUE(GetFirst(*context, &record, TableSako));
    FailEngineOperation(operationGetNext, 1, 2);
    EXPECT_FALSE(GetNext(*context, &record, TableSako));
    StopEngineFaults();
    EXPECT_EQ(Lines{"I/O Error"}, books.TakeBoxes());
}

TEST_F(RecordStore, ReadsWithoutALockShowALockedFileByItsStatusText)
{
    SakoRecord record{};
    bool found = false;
    ASSERT_TRUE(GetFirst(*context, &record, TableSako));
    FailEngineOperation(operationGetNext, 1, 84);
    EXPECT_FALSE(GetNextF(*context, &record, found, TableSako));
    FailEngineOperation(operationGetNext, 1, 85);
    EXPECT_FALSE(GetNext(*context, &record, TableSako));
    StopEngineFaults();
    EXPECT_EQ((Lines{"Record in use", inUse}), books.TakeBoxes());
}

TEST_F(RecordStore, ShortAnswerShortensTheNextOffer)
{
    FailEngineOperation(5, 1000, 0);
    StopEngineFaults();
    SakoRecord record{};
    bool found = false;
    RecordLengthTable[TableSako].store(100);
    EXPECT_FALSE(GetEqual(*context, &record, Konto("1200"), found, TableSako));
    EXPECT_EQ(Lines{"Data buffer length"}, books.TakeBoxes());
    EXPECT_EQ(100u, RecordLengthTable[TableSako].load());
    RecordLengthTable[TableSako].store(sizeof(SakoRecord) + 0x50000);
    EXPECT_TRUE(GetEqual(*context, &record, Konto("1200"), found, TableSako));
    EXPECT_EQ(sizeof(SakoRecord), RecordLengthTable[TableSako].load()) << "the low 16 bits of the answer";
}

TEST_F(RecordStore, TransactionReachesTheEngineAtItsOutermostLevelOnly)
{
    FailEngineOperation(operationBegin, 0, 0);
    EXPECT_TRUE(Transaction(*context, TransactionAction::Begin));
    EXPECT_TRUE(Transaction(*context, TransactionAction::Begin));
    EXPECT_EQ(1, StopEngineFaults());
    EXPECT_EQ(2, context->TransactionDepth);
    FailEngineOperation(operationEnd, 0, 0);
    EXPECT_TRUE(Transaction(*context, TransactionAction::End));
    EXPECT_EQ(0, StopEngineFaults());
    EXPECT_EQ(1, context->TransactionDepth);
    FailEngineOperation(operationEnd, 0, 0);
    EXPECT_TRUE(Transaction(*context, TransactionAction::End));
    EXPECT_EQ(1, StopEngineFaults());
    EXPECT_EQ(0, context->TransactionDepth);
    EXPECT_EQ(0, context->HoldOpen);
}

TEST_F(RecordStore, EndAndAbortWithoutATransactionDoNothing)
{
    FailEngineCall(0);
    EXPECT_TRUE(Transaction(*context, TransactionAction::End));
    EXPECT_TRUE(Transaction(*context, TransactionAction::Abort));
    EXPECT_EQ(0, StopEngineFaults());
}

TEST_F(RecordStore, AbortUndoesAllLevels)
{
    SakoRecord record = MakeSako("4711");
    EXPECT_TRUE(Transaction(*context, TransactionAction::Begin));
    EXPECT_TRUE(Transaction(*context, TransactionAction::Begin));
    EXPECT_TRUE(Insert(*context, &record, TableSako));
    EXPECT_EQ(4, RecordCount(*context, TableSako));
    EXPECT_TRUE(Transaction(*context, TransactionAction::Abort));
    EXPECT_EQ(0, context->TransactionDepth);
    EXPECT_EQ(3, RecordCount(*context, TableSako));
}

TEST_F(RecordStore, NoTableClosesDuringATransaction)
{
    ASSERT_TRUE(Transaction(*context, TransactionAction::Begin));
    EXPECT_EQ(1, context->HoldOpen);
    EXPECT_TRUE(OpenTable(*context, TableStapel));
    EXPECT_TRUE(CloseTable(*context, TableStapel));
    EXPECT_EQ(1, context->OpenCounts[TableStapel]);
    VARK_SchliesseDB();
    EXPECT_EQ(1, context->OpenCounts[TableStapel]);
    EXPECT_EQ(1, context->OpenCounts[TableSako]);
    EXPECT_TRUE(Transaction(*context, TransactionAction::Abort));
    EXPECT_TRUE(CloseTable(*context, TableStapel));
    EXPECT_EQ(0, context->OpenCounts[TableStapel]);
}

TEST_F(RecordStore, RefusedBeginIsShownAndLeavesNoTransaction)
{
    FailEngineOperation(operationBegin, 1, 36);
    EXPECT_FALSE(Transaction(*context, TransactionAction::Begin));
    StopEngineFaults();
    EXPECT_EQ(0, context->TransactionDepth);
    EXPECT_EQ(0, context->HoldOpen);
    EXPECT_EQ(Lines{"Transaction error"}, books.TakeBoxes());
}

TEST_F(RecordStore, RefusedEndIsShownAndAborted)
{
    SakoRecord record = MakeSako("4711");
    ASSERT_TRUE(Transaction(*context, TransactionAction::Begin));
    ASSERT_TRUE(Insert(*context, &record, TableSako));
    FailEngineOperation(operationEnd, 1, 18);
    EXPECT_FALSE(Transaction(*context, TransactionAction::End)) << "nothing of it is in the books";
    StopEngineFaults();
    EXPECT_EQ(Lines{"Disk full"}, books.TakeBoxes());
    EXPECT_EQ(0, context->TransactionDepth);
    EXPECT_EQ(3, RecordCount(*context, TableSako));
}

TEST_F(RecordStore, KeysHoldTheirValueAndZeroBytes)
{
    EXPECT_EQ(std::string("\x39\x30\0\0", 4) + std::string(37, '\0'),
              std::string(KeyOfNumber(12345).Bytes, 41));
    EXPECT_EQ(std::string("\x02\0\x01\0", 4) + std::string(37, '\0'),
              std::string(KeyOfShortNumber(2, 1).Bytes, 41));
    EXPECT_EQ("1234567" + std::string(34, '\0'), std::string(KeyOfText("123456789", 8).Bytes, 41));
    EXPECT_EQ(std::string(60, 'x').substr(0, 40) + '\0',
              std::string(KeyOfText(std::string(60, 'x').c_str(), 100).Bytes, 41));
}
