// Transactions seen by their own client: what an abort undoes and what it leaves, and what may be done
// inside.
#include "files.h"

#include <thread>

namespace {

using namespace wbtrvtest;

struct Transactions : testing::Test {
    TempDirectory Directory;
    Local Me;
    std::string Path = Directory / "t.btr";
    OnT<Local> T{Me};
    OnT<Local> Other{Me, 1};

    void SetUp() override
    {
        ASSERT_EQ(Create(Me, Path, DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path, 1).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("a", "x", 1).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("b", "x", 5).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("c", "x", 3).Status, BtrStatusOk);
    }
    int16_t Do(uint16_t operation) { return Me({.Operation = operation}).Status; }
    // Records that another client sees.
    int64_t CountFromAnotherThread() const
    {
        int64_t count = -1;
        std::thread([this, &count] {
            Local another;
            if (Open(another, Path).Status == BtrStatusOk) count = CountRecords(another);
        }).join();
        return count;
    }
    std::string Order(int8_t keyNumber)
    {
        std::string order;
        for (uint16_t operation = BtrOpGetFirst;; operation = BtrOpGetNext) {
            const Answer answer = Other.Read(operation, keyNumber);
            if (answer.Status != BtrStatusOk) return order;
            order += Name(answer);
        }
    }
};

TEST_F(Transactions, AnAbortUndoesInsertUpdateAndDelete)
{
    for (const uint16_t begin : {BtrOpBegin, BtrOpBeginConcurrent}) {
        ASSERT_EQ(Do(begin), BtrStatusOk);
        ASSERT_EQ(T.Insert("d", "x", 9).Status, BtrStatusOk);
        ASSERT_EQ(Name(T.GetEqual("a")), "a");
        ASSERT_EQ(T.Update("a", "z", 7).Status, BtrStatusOk);
        ASSERT_EQ(Name(T.GetEqual("b")), "b");
        ASSERT_EQ(T.Delete().Status, BtrStatusOk);
        EXPECT_EQ(Order(0), "acd");
        EXPECT_EQ(Order(1), "cda");
        EXPECT_EQ(Order(2), "dac");
        ASSERT_EQ(Do(BtrOpAbort), BtrStatusOk);
        EXPECT_EQ(Order(0), "abc");
        EXPECT_EQ(Order(1), "abc");
        EXPECT_EQ(Order(2), "bca");
        EXPECT_EQ(CountRecords(Me), 3);
    }
}

TEST_F(Transactions, ARecordInsertedInsideIsNoCurrentOneAfterAnAbort)
{
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Insert("bb", "x", 9).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpAbort), BtrStatusOk);
    EXPECT_EQ(T.Update("bb", "x", 1).Status, BtrStatusNoPosition);
    EXPECT_EQ(T.Delete().Status, BtrStatusNoPosition);
    EXPECT_EQ(T.Position().Status, BtrStatusNoPosition);
    // The place on the key is still between its neighbours.
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 0)), "c");
    EXPECT_EQ(Name(T.Read(BtrOpGetPrevious, 0)), "b");
}

TEST_F(Transactions, ARecordUpdatedInsideCanBeUpdatedAgainAfterAnAbort)
{
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Update("a", "y", 1).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpAbort), BtrStatusOk);
    EXPECT_EQ(T.Update("a", "z", 1).Status, BtrStatusOk);
    EXPECT_EQ(Other.GetEqual("a").Data, RecordOfT("a", "z", 1));
}

TEST_F(Transactions, APlaceAmongDuplicatesThatWereUndoneIsBehindThoseThatStay)
{
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Insert("d", "x", 9, 1).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpAbort), BtrStatusOk);
    // A new record gets the running number of the one that was undone, and is still seen as the next.
    ASSERT_EQ(Other.Insert("e", "x", 9).Status, BtrStatusOk);
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 1)), "e");
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Insert("f", "x", 9, 1).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpAbort), BtrStatusOk);
    EXPECT_EQ(Name(T.Read(BtrOpGetPrevious, 1)), "e");
}

TEST_F(Transactions, AFailedChangeLeavesTheOthersOfTheTransaction)
{
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Insert("d", "x", 9).Status, BtrStatusOk);
    EXPECT_EQ(T.Insert("a", "y", 9).Status, BtrStatusDuplicateKey);
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    EXPECT_EQ(T.Update("q", "y", 9).Status, BtrStatusNotModifiable);
    ASSERT_EQ(T.Insert("e", "x", 9).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpEnd), BtrStatusOk);
    EXPECT_EQ(Order(0), "abcde");
    EXPECT_EQ(Order(1), "abcde");
    EXPECT_EQ(CountRecords(Me), 5);
}

TEST_F(Transactions, ADuplicateOnALaterUniqueKeyTakesBackTheEarlierOnes)
{
    const std::string path = Directory / "u.btr";
    ASSERT_EQ(Create(Me, path, CreateBuffer(12, 3, {{1, 4, 0}, {5, 4, BtrKeyDuplicates}, {9, 4, 0}})).Status,
              BtrStatusOk);
    ASSERT_EQ(Open(Me, path, 2).Status, BtrStatusOk);
    const auto insert = [&](const char *record) {
        return Me({.Operation = BtrOpInsert, .Block = 2, .Data = record, .Length = 12}).Status;
    };
    ASSERT_EQ(insert("aaaammmmxxxx"), BtrStatusOk);
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(insert("bbbbmmmmyyyy"), BtrStatusOk);
    EXPECT_EQ(insert("ccccmmmmxxxx"), BtrStatusDuplicateKey);
    EXPECT_EQ(insert("ccccmmmmzzzz"), BtrStatusOk);
    ASSERT_EQ(Do(BtrOpEnd), BtrStatusOk);
    const Answer stat = Me({.Operation = BtrOpStat, .Block = 2, .Length = 64});
    uint32_t counts[4];
    for (size_t i = 0; i < 4; ++i) {
        memcpy(&counts[i], stat.Data.data() + 6 + 16 * i, 4);
    }
    EXPECT_EQ(counts[0], 3u);
    EXPECT_EQ(counts[1], 3u);
    EXPECT_EQ(counts[2], 1u);
    EXPECT_EQ(counts[3], 3u);
}

TEST_F(Transactions, ChangesInASecondDirectoryAreRefused)
{
    const TempDirectory elsewhere;
    ASSERT_EQ(Create(Me, elsewhere / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Open(Me, elsewhere / "t.btr", 2).Status, BtrStatusOk);
    const OnT<Local> there{Me, 2};
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    EXPECT_EQ(there.GetEqual("a").Status, BtrStatusKeyNotFound);
    ASSERT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(there.Insert("d", "x", 1).Status, BtrStatusNotAllowed);
    ASSERT_EQ(Do(BtrOpEnd), BtrStatusOk);
    EXPECT_EQ(there.Insert("d", "x", 1).Status, BtrStatusOk);
}

TEST_F(Transactions, FilesThatAreOpenedInsideAreThoseOfTheirDirectories)
{
    const TempDirectory elsewhere;
    ASSERT_EQ(Create(Me, elsewhere / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
    for (const uint16_t begin : {BtrOpBegin, BtrOpBeginConcurrent}) {
        ASSERT_EQ(Do(begin), BtrStatusOk);
        ASSERT_EQ(T.Insert("d", "x", 9).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path, 2).Status, BtrStatusOk);
        EXPECT_EQ(CountRecords(Me, 2), 4);
        ASSERT_EQ(Open(Me, elsewhere / "t.btr", 3).Status, BtrStatusOk);
        EXPECT_EQ(CountRecords(Me, 3), 0);
        EXPECT_EQ(Open(Me, Directory / "none.btr", 4).Status, BtrStatusFileNotFound);
        ASSERT_EQ(Do(BtrOpAbort), BtrStatusOk);
        EXPECT_EQ(CountRecords(Me, 2), 3);
        EXPECT_EQ(Close(Me, 2).Status, BtrStatusOk);
        EXPECT_EQ(Close(Me, 3).Status, BtrStatusOk);
    }
}

// A process opens a file's trees in the store when it first writes there.
TEST_F(Transactions, AFileFirstOpenedInsideIsWrittenAsAnyOtherWhateverBecameOfThem)
{
    const std::string path = Directory / "o.btr";
    ASSERT_EQ(Create(Me, path, DefinitionOfT()).Status, BtrStatusOk);
    for (const uint16_t end : {BtrOpAbort, BtrOpEnd}) {
        Remote another;
        const OnT<Remote> t{another};
        const OnT<Remote> o{another, 1};
        const std::string name = end == BtrOpAbort ? "d" : "e";
        ASSERT_EQ(Open(another, Path).Status, BtrStatusOk);
        ASSERT_EQ(another({.Operation = BtrOpBegin}).Status, BtrStatusOk);
        ASSERT_EQ(t.Insert(name, "x", 9).Status, BtrStatusOk);
        ASSERT_EQ(Open(another, path, 1).Status, BtrStatusOk);
        ASSERT_EQ(o.Insert(name, "x", 1).Status, BtrStatusOk);
        ASSERT_EQ(another({.Operation = end}).Status, BtrStatusOk);
        EXPECT_EQ(o.Insert(name + "o", "x", 2).Status, BtrStatusOk);
        EXPECT_EQ(t.Insert(name + "t", "x", 8).Status, BtrStatusOk);
    }
    EXPECT_EQ(Order(0), "abcdteet");
    EXPECT_EQ(Order(1), "abcdteet");
    ASSERT_EQ(Open(Me, path, 1).Status, BtrStatusOk);
    EXPECT_EQ(Order(0), "doeeo");
    EXPECT_EQ(Order(2), "doeoe") << "the higher number first";
}

TEST_F(Transactions, AFileThatAnotherBeganToReadMeanwhileIsWrittenInside)
{
    const std::string path = Directory / "o.btr";
    Remote maker;
    ASSERT_EQ(Create(maker, path, DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Insert("d", "x", 9).Status, BtrStatusOk);
    Beside reader;
    const OnT<Beside> seen{reader};
    ASSERT_EQ(Open(reader, path).Status, BtrStatusOk);
    ASSERT_EQ(seen.Read(BtrOpGetFirst, 0).Status, BtrStatusEndOfFile);
    ASSERT_EQ(Open(Me, path, 1).Status, BtrStatusOk);
    ASSERT_EQ(Other.Insert("o", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(seen.Read(BtrOpGetFirst, 0).Status, BtrStatusEndOfFile);
    ASSERT_EQ(Do(BtrOpEnd), BtrStatusOk);
    EXPECT_EQ(Name(seen.Read(BtrOpGetFirst, 0)), "o");
    EXPECT_EQ(Name(seen.Read(BtrOpGetLast, 2)), "o");
}

TEST_F(Transactions, ACloseInsideKeepsTheChangesPending)
{
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(Close(Me).Status, BtrStatusOk);
    EXPECT_EQ(Close(Me, 1).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpEnd), BtrStatusOk);
    ASSERT_EQ(Open(Me, Path, 1).Status, BtrStatusOk);
    EXPECT_EQ(Order(0), "abcd");

    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(Other.Insert("e", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(Close(Me, 1).Status, BtrStatusOk);
    ASSERT_EQ(Open(Me, Path, 1).Status, BtrStatusOk);
    EXPECT_EQ(Order(0), "abcde");
    ASSERT_EQ(Do(BtrOpAbort), BtrStatusOk);
    EXPECT_EQ(Order(0), "abcd");
}

TEST_F(Transactions, AFileMadeInsideStaysThroughAnAbort)
{
    const std::string path = Directory / "new.btr";
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Create(Me, path, DefinitionOfT()).Status, BtrStatusOk);
    EXPECT_EQ(Create(Me, path, DefinitionOfT(), BtrKeepExisting).Status, BtrStatusFileExists);
    ASSERT_EQ(Open(Me, path, 2).Status, BtrStatusOk);
    const OnT<Local> made{Me, 2};
    ASSERT_EQ(made.Insert("m", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpAbort), BtrStatusOk);
    EXPECT_EQ(Order(0), "abc");
    EXPECT_EQ(CountRecords(Me, 2), 0);
    EXPECT_EQ(made.GetEqual("m").Status, BtrStatusKeyNotFound);
    EXPECT_EQ(made.Insert("n", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(Name(made.GetEqual("n")), "n");

    // And with an end it is there as well.
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Create(Me, Directory / "newer.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpEnd), BtrStatusOk);
    EXPECT_EQ(Open(Me, Directory / "newer.btr", 3).Status, BtrStatusOk);
}

TEST_F(Transactions, AFileThatOthersOpenMeanwhileIsNoTrouble)
{
    // The second thread opens a file for the first time in this process while the first one is writing.
    const std::string path = Directory / "later.btr";
    ASSERT_EQ(Create(Me, path, DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Create(Me, Directory / "last.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);
    std::thread([&] {
        Local you;
        EXPECT_EQ(Open(you, path).Status, BtrStatusOk);
        EXPECT_EQ(OnT<Local>{you}.GetEqual("a").Status, BtrStatusKeyNotFound);
    }).join();
    ASSERT_EQ(Open(Me, Directory / "last.btr", 2).Status, BtrStatusOk);
    const OnT<Local> last{Me, 2};
    ASSERT_EQ(last.Insert("l", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpEnd), BtrStatusOk);
    EXPECT_EQ(Name(last.GetEqual("l")), "l");
    EXPECT_EQ(Order(0), "abcd");
}

TEST_F(Transactions, LocksTakenInsideEndWithTheTransactionAndOthersDoNot)
{
    const Remote b;
    ASSERT_EQ(Open(b, Path).Status, BtrStatusOk);
    const OnT<const Remote> tb{b};
    for (const uint16_t begin : {BtrOpBeginConcurrent, BtrOpBegin}) {
        for (const uint16_t end : {BtrOpEnd, BtrOpAbort}) {
            ASSERT_EQ(Other.GetEqual("a", BtrBiasMultiple).Status, BtrStatusOk);
            ASSERT_EQ(Do(begin), BtrStatusOk);
            ASSERT_EQ(T.GetEqual("b", BtrBiasLock).Status, BtrStatusOk);
            EXPECT_NE(tb.GetEqual("b", BtrBiasLock).Status, BtrStatusOk);
            EXPECT_NE(tb.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
            ASSERT_EQ(Do(end), BtrStatusOk);
            EXPECT_EQ(tb.GetEqual("b", BtrBiasLock).Status, BtrStatusOk);
            EXPECT_EQ(tb.GetEqual("a", BtrBiasLock).Status, BtrStatusRecordLocked);
            ASSERT_EQ(tb.Unlock(0).Status, BtrStatusOk);
            EXPECT_EQ(Other.Unlock(BtrUnlockAll).Status, BtrStatusOk);
            EXPECT_EQ(tb.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
            ASSERT_EQ(tb.Unlock(0).Status, BtrStatusOk);
        }
    }
}

TEST_F(Transactions, TheFileLockSwallowsTheLocksOfThePositionBlockThatTakesIt)
{
    ASSERT_EQ(T.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    EXPECT_EQ(T.Unlock(0).Status, BtrStatusUnlockMismatch);
    ASSERT_EQ(Do(BtrOpEnd), BtrStatusOk);
    const Remote b;
    ASSERT_EQ(Open(b, Path).Status, BtrStatusOk);
    EXPECT_EQ(OnT<const Remote>{b}.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
}

TEST_F(Transactions, ABeginWithABiasHandsItToTheReadsInside)
{
    const Remote b;
    ASSERT_EQ(Open(b, Path).Status, BtrStatusOk);
    const OnT<const Remote> tb{b};
    ASSERT_EQ(Do(uint16_t{BtrOpBeginConcurrent + BtrBiasMultiple}), BtrStatusOk);
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    EXPECT_EQ(tb.GetEqual("a", BtrBiasLock).Status, BtrStatusRecordLocked);
    EXPECT_EQ(tb.GetEqual("b", BtrBiasLock).Status, BtrStatusRecordLocked);
    ASSERT_EQ(Do(BtrOpEnd), BtrStatusOk);
    EXPECT_EQ(tb.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    // Without a bias a read inside takes no lock.
    ASSERT_EQ(Do(BtrOpBeginConcurrent), BtrStatusOk);
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    EXPECT_EQ(tb.GetEqual("b", BtrBiasLock).Status, BtrStatusOk);
}

TEST_F(Transactions, AConcurrentOneLocksTheRecordsItChanges)
{
    const Remote b;
    ASSERT_EQ(Open(b, Path).Status, BtrStatusOk);
    const OnT<const Remote> tb{b};
    ASSERT_EQ(Do(BtrOpBeginConcurrent), BtrStatusOk);
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    ASSERT_EQ(T.Update("a", "y", 1).Status, BtrStatusOk);
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    ASSERT_EQ(T.Delete().Status, BtrStatusOk);
    EXPECT_EQ(tb.GetEqual("a", BtrBiasLock).Status, BtrStatusRecordLocked);
    EXPECT_EQ(tb.GetEqual("b", BtrBiasLock).Status, BtrStatusRecordLocked);
    EXPECT_EQ(tb.GetEqual("c", BtrBiasLock).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpEnd), BtrStatusOk);
    EXPECT_EQ(tb.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    EXPECT_EQ(tb.GetEqual("b", BtrBiasLock).Status, BtrStatusKeyNotFound);
}

TEST_F(Transactions, BiasesThatDoNotExistAreBadOperations)
{
    for (const uint16_t operation : std::vector<uint16_t>{519, 1018, 1020, 1049, 1619, 1069, 100, 214, 520,
                                                          505, 50, 52, 73, 74, 65535}) {
        EXPECT_EQ(Do(operation), BtrStatusBadOperation) << operation;
    }
    for (const uint16_t begin :
         std::vector<uint16_t>{19, 119, 219, 319, 419, 1019, 1119, 1219, 1319, 1419, 1519}) {
        EXPECT_EQ(Do(begin), BtrStatusOk) << begin;
        EXPECT_EQ(Do(BtrOpAbort), BtrStatusOk) << begin;
    }
}

TEST_F(Transactions, OperationsThatAreNotOfferedAreBadOperations)
{
    for (const uint16_t operation :
         std::vector<uint16_t>{16, 17, 18, 29, 30, 31, 32, 36, 42, 44, 45, 49, 53}) {
        EXPECT_EQ(Do(operation), BtrStatusBadOperation) << operation;
    }
}

TEST_F(Transactions, OfAGroupAreWrittenDownTogether)
{
    ASSERT_EQ(Do(BtrOpBeginGroup), BtrStatusOk);
    EXPECT_EQ(Do(BtrOpBeginGroup), BtrStatusTransactionActive);
    for (const char *name : {"d", "e"}) {
        ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
        EXPECT_EQ(Do(BtrOpBegin), BtrStatusTransactionActive);
        ASSERT_EQ(T.Insert(name, "x", 9).Status, BtrStatusOk);
        ASSERT_EQ(Do(BtrOpEnd), BtrStatusOk);
        EXPECT_EQ(CountFromAnotherThread(), 3);
    }
    EXPECT_EQ(Do(BtrOpEnd), BtrStatusNoTransaction);
    EXPECT_EQ(Do(BtrOpAbort), BtrStatusNoTransaction);
    EXPECT_EQ(Order(0), "abcde");
    ASSERT_EQ(Do(BtrOpEndGroup), BtrStatusOk);
    EXPECT_EQ(CountFromAnotherThread(), 5);
    EXPECT_EQ(Do(BtrOpEndGroup), BtrStatusNoTransaction);
    EXPECT_EQ(Do(BtrOpBegin), BtrStatusOk);
    EXPECT_EQ(Do(BtrOpBeginGroup), BtrStatusTransactionActive);
    EXPECT_EQ(Do(BtrOpAbort), BtrStatusOk);
}

TEST_F(Transactions, OfAGroupAreAllUndoneByTheAbortOfOne)
{
    ASSERT_EQ(Do(BtrOpBeginGroup), BtrStatusOk);
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Insert("d", "x", 9).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpEnd), BtrStatusOk);
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Insert("e", "x", 9).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpAbort), BtrStatusOk);
    EXPECT_EQ(Order(0), "abc");
    // Nothing more goes into a group that is lost, nor out of it beside it.
    EXPECT_EQ(Do(BtrOpBegin), BtrStatusNoTransaction);
    EXPECT_EQ(Do(BtrOpEndGroup), BtrStatusNoTransaction);
    EXPECT_EQ(CountFromAnotherThread(), 3);
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Insert("e", "x", 9).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpEnd), BtrStatusOk);
    EXPECT_EQ(CountFromAnotherThread(), 4);
}

TEST_F(Transactions, OfAGroupThatEndsInsideOneAreUndone)
{
    ASSERT_EQ(Do(BtrOpBeginGroup), BtrStatusOk);
    ASSERT_EQ(Do(BtrOpBegin), BtrStatusOk);
    ASSERT_EQ(T.Insert("d", "x", 9).Status, BtrStatusOk);
    EXPECT_EQ(Do(BtrOpEndGroup), BtrStatusNoTransaction);
    EXPECT_EQ(Order(0), "abc");
    ASSERT_EQ(Do(BtrOpBeginGroup), BtrStatusOk);
    ASSERT_EQ(T.Insert("d", "x", 9).Status, BtrStatusOk);
    ASSERT_EQ(Do(BtrOpReset), BtrStatusOk);
    EXPECT_EQ(Do(BtrOpEndGroup), BtrStatusNoTransaction);
    EXPECT_EQ(CountFromAnotherThread(), 3);
}

} // namespace
