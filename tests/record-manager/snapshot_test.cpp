// Clients of no thread, and the snapshot that a client may hold over many calls.
#include "files.h"

#include "record-manager/calls.h"

#include <thread>

namespace {

using namespace wbtrvtest;

struct Snapshots : testing::Test {
    TempDirectory Directory;
    Local Writer;
    OnT<Local> Written{Writer};
    Beside Reader;
    OnT<Beside> Read{Reader};

    void SetUp() override
    {
        ASSERT_EQ(Create(Writer, Directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Open(Writer, Directory / "t.btr").Status, BtrStatusOk);
        ASSERT_EQ(Written.Insert("a", "x", 1).Status, BtrStatusOk);
        ASSERT_EQ(Written.Insert("b", "x", 5).Status, BtrStatusOk);
    }
    Answer Begin() { return Reader({.Operation = BtrOpBeginSnapshot}); }
    Answer End() { return Reader({.Operation = BtrOpEndSnapshot}); }
    Answer OpenForReading(const char *name = "t.btr", uint8_t block = 0)
    {
        return Open(Reader, Directory / name, block, BtrModeReadOnly);
    }
    // The first letters of all records along key 0.
    std::string All() const
    {
        std::string names;
        for (Answer at = Read.Read(BtrOpGetFirst, 0); at.Status == BtrStatusOk;
             at = Read.Read(BtrOpGetNext, 0)) {
            names += Name(at);
        }
        return names;
    }
};

TEST_F(Snapshots, AClientBesideTheThreadsHasItsOwnFilesAndTransaction)
{
    ASSERT_EQ(Writer({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    ASSERT_EQ(Written.Insert("c", "x", 3).Status, BtrStatusOk);
    ASSERT_EQ(OpenForReading().Status, BtrStatusOk);
    EXPECT_EQ(All(), "ab") << "the thread's transaction is not its own";
    EXPECT_EQ(Reader({.Operation = BtrOpEnd}).Status, BtrStatusNoTransaction);
    Writer.Blocks[1] = Reader.Blocks[0];
    EXPECT_EQ(Writer({.Operation = BtrOpGetFirst, .Block = 1, .Length = 64}).Status, BtrStatusNotOpen);
    ASSERT_EQ(Writer({.Operation = BtrOpEnd}).Status, BtrStatusOk);
    EXPECT_EQ(All(), "abc");
    EXPECT_EQ(Reader({.Operation = BtrOpStop}).Status, BtrStatusBadOperation);
}

TEST_F(Snapshots, AClientBesideTheThreadsMayBeUsedByOneThreadAfterTheOther)
{
    ASSERT_EQ(OpenForReading().Status, BtrStatusOk);
    std::string names;
    std::thread([&] { names = All(); }).join();
    EXPECT_EQ(names, "ab");
    EXPECT_EQ(All(), "ab");
}

TEST_F(Snapshots, WhatOthersFinishIsNotSeenUntilTheSnapshotEnds)
{
    ASSERT_EQ(Begin().Status, BtrStatusOk);
    ASSERT_EQ(OpenForReading().Status, BtrStatusOk);
    ASSERT_EQ(Name(Read.GetEqual("a")), "a");
    Remote other;
    const OnT<Remote> others{other};
    ASSERT_EQ(Open(other, Directory / "t.btr").Status, BtrStatusOk);
    ASSERT_EQ(others.Insert("c", "x", 3).Status, BtrStatusOk) << "nobody waits for a reader";
    ASSERT_EQ(Name(others.GetEqual("a")), "a");
    ASSERT_EQ(others.Delete().Status, BtrStatusOk);
    EXPECT_EQ(All(), "ab");
    EXPECT_EQ(CountRecords(Reader), 2);
    EXPECT_EQ(Read.GetEqual("c").Status, BtrStatusKeyNotFound);
    ASSERT_EQ(End().Status, BtrStatusOk);
    EXPECT_EQ(All(), "bc");
    EXPECT_EQ(CountRecords(Reader), 2);
}

TEST_F(Snapshots, AFileThatIsOpenedLaterStandsAtTheSameMoment)
{
    ASSERT_EQ(Create(Writer, Directory / "u.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Open(Writer, Directory / "u.btr", 1).Status, BtrStatusOk);
    ASSERT_EQ(Begin().Status, BtrStatusOk);
    ASSERT_EQ(OpenForReading().Status, BtrStatusOk);
    ASSERT_EQ(All(), "ab");
    const OnT<Local> inU{Writer, 1};
    ASSERT_EQ(inU.Insert("z", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(OpenForReading("u.btr", 1).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(Reader, 1), 0);
    // Also when nothing of the directory was open in between.
    ASSERT_EQ(Close(Reader, 0).Status, BtrStatusOk);
    ASSERT_EQ(Close(Reader, 1).Status, BtrStatusOk);
    ASSERT_EQ(OpenForReading("u.btr", 1).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(Reader, 1), 0);
    ASSERT_EQ(End().Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(Reader, 1), 1);
}

TEST_F(Snapshots, NothingIsChangedOrLockedInASnapshot)
{
    ASSERT_EQ(Open(Reader, Directory / "t.btr").Status, BtrStatusOk);
    ASSERT_EQ(Begin().Status, BtrStatusOk);
    ASSERT_EQ(Name(Read.GetEqual("a")), "a");
    EXPECT_EQ(Read.Insert("c", "x", 1).Status, BtrStatusNotAllowed);
    EXPECT_EQ(Read.Update("a", "y", 1).Status, BtrStatusNotAllowed);
    EXPECT_EQ(Read.Delete().Status, BtrStatusNotAllowed);
    EXPECT_EQ(Read.GetEqual("a", BtrBiasLock).Status, BtrStatusNotAllowed);
    for (const uint16_t operation : {BtrOpBegin, BtrOpBeginConcurrent, BtrOpBeginGroup}) {
        EXPECT_EQ(Reader({.Operation = operation}).Status, BtrStatusNotAllowed);
    }
    EXPECT_EQ(Create(Reader, Directory / "u.btr", DefinitionOfT()).Status, BtrStatusNotAllowed);
    ASSERT_EQ(End().Status, BtrStatusOk);
    ASSERT_EQ(Name(Read.GetEqual("a")), "a");
    EXPECT_EQ(Read.Update("a", "y", 1).Status, BtrStatusOk);
}

TEST_F(Snapshots, BeginAndEndComeInPairsAndNotInsideATransaction)
{
    EXPECT_EQ(End().Status, BtrStatusNoTransaction);
    ASSERT_EQ(Begin().Status, BtrStatusOk);
    EXPECT_EQ(Begin().Status, BtrStatusTransactionActive);
    ASSERT_EQ(End().Status, BtrStatusOk);
    ASSERT_EQ(Reader({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    EXPECT_EQ(Begin().Status, BtrStatusTransactionActive);
    ASSERT_EQ(Reader({.Operation = BtrOpAbort}).Status, BtrStatusOk);
    ASSERT_EQ(Begin().Status, BtrStatusOk);
    ASSERT_EQ(Reader({.Operation = BtrOpReset}).Status, BtrStatusOk);
    EXPECT_EQ(End().Status, BtrStatusNoTransaction) << "a reset ends it";
}

} // namespace
