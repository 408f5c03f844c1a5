// What clients in several processes see of one another: locks, conflicts, transactions, open modes.
#include "files.h"

namespace {

using namespace wbtrvtest;

// A and B, each in a process of its own, have T open with a, b, c in it.
struct TwoClients : testing::Test {
    TempDirectory Directory;
    std::string Path = Directory / "t.btr";
    Remote A;
    Remote B;
    OnT<Remote> Ta{A};
    OnT<Remote> Tb{B};

    void SetUp() override
    {
        ASSERT_EQ(Create(A, Path, DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Open(A, Path).Status, BtrStatusOk);
        ASSERT_EQ(Open(B, Path).Status, BtrStatusOk);
        ASSERT_EQ(Ta.Insert("a", "x", 1).Status, BtrStatusOk);
        ASSERT_EQ(Ta.Insert("b", "x", 5).Status, BtrStatusOk);
        ASSERT_EQ(Ta.Insert("c", "x", 3).Status, BtrStatusOk);
    }
};

TEST_F(TwoClients, ALockedRecordCanBeReadButNeitherLockedNorChangedByOthers)
{
    ASSERT_EQ(Name(Ta.GetEqual("a", BtrBiasLock)), "a");
    EXPECT_EQ(Name(Tb.GetEqual("a")), "a");
    const Answer refused = B({.Operation = BtrOpGetEqual + BtrBiasLock,
                              .Data = std::string(64, '#'),
                              .Length = 64,
                              .Key = "a",
                              .KeyNumber = 0});
    EXPECT_EQ(refused.Status, BtrStatusRecordLocked);
    EXPECT_EQ(refused.Data, std::string(64, '#'));
    EXPECT_EQ(Tb.Update("a", "y", 1).Status, BtrStatusRecordLocked);
    EXPECT_EQ(Ta.Update("a", "y", 1).Status, BtrStatusOk);
    EXPECT_EQ(Tb.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
}

TEST_F(TwoClients, MultipleLocksStayThroughUpdatesAndEndOneByOneOrTogether)
{
    ASSERT_EQ(Ta.GetEqual("b", BtrBiasMultiple).Status, BtrStatusOk);
    ASSERT_EQ(Ta.GetEqual("a", BtrBiasMultiple).Status, BtrStatusOk);
    const Answer positionOfA = Ta.Position();
    EXPECT_EQ(Ta.Update("a", "y", 1).Status, BtrStatusOk);
    EXPECT_EQ(Tb.GetEqual("a", BtrBiasLock).Status, BtrStatusRecordLocked);
    EXPECT_EQ(Ta.Unlock(BtrUnlockOne, positionOfA.Data).Status, BtrStatusOk);
    EXPECT_EQ(Tb.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    EXPECT_EQ(Tb.GetEqual("b", BtrBiasLock).Status, BtrStatusRecordLocked);
    EXPECT_EQ(Ta.Unlock(BtrUnlockAll).Status, BtrStatusOk);
    EXPECT_EQ(Tb.GetEqual("b", BtrBiasLock).Status, BtrStatusOk);
    EXPECT_EQ(Ta.Unlock(BtrUnlockAll).Status, BtrStatusUnlockMismatch);
    EXPECT_EQ(Ta.Unlock(BtrUnlockOne, positionOfA.Data).Status, BtrStatusUnlockMismatch);
    EXPECT_EQ(Ta.Unlock(0).Status, BtrStatusUnlockMismatch);
}

TEST_F(TwoClients, ASingleLockEndsWithTheNextOneAndWithClose)
{
    ASSERT_EQ(Ta.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    ASSERT_EQ(Ta.GetEqual("b", BtrBiasLock).Status, BtrStatusOk);
    EXPECT_EQ(Tb.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    EXPECT_EQ(Tb.GetEqual("b", BtrBiasLock).Status, BtrStatusRecordLocked);
    ASSERT_EQ(Close(A).Status, BtrStatusOk);
    EXPECT_EQ(Tb.GetEqual("b", BtrBiasLock).Status, BtrStatusOk);
}

TEST_F(TwoClients, AChangeOfARecordThatAnotherHasChangedSinceIsAConflict)
{
    ASSERT_EQ(Name(Ta.GetEqual("a")), "a");
    ASSERT_EQ(Name(Tb.GetEqual("a")), "a");
    EXPECT_EQ(Ta.Update("a", "y", 1).Status, BtrStatusOk);
    EXPECT_EQ(Tb.Update("a", "z", 1).Status, BtrStatusConflict);
    ASSERT_EQ(Name(Tb.GetEqual("a")), "a");
    EXPECT_EQ(Tb.Update("a", "z", 1).Status, BtrStatusOk);

    ASSERT_EQ(Name(Ta.GetEqual("a")), "a");
    ASSERT_EQ(Name(Tb.GetEqual("a")), "a");
    EXPECT_EQ(Tb.Delete().Status, BtrStatusOk);
    EXPECT_EQ(Ta.Delete().Status, BtrStatusConflict);
}

TEST_F(TwoClients, WhatAConcurrentTransactionChangesIsSeenByOthersOnlyAfterItsEnd)
{
    ASSERT_EQ(Open(A, Path, 1).Status, BtrStatusOk);
    const OnT<Remote> second{A, 1};
    ASSERT_EQ(A({.Operation = BtrOpBeginConcurrent}).Status, BtrStatusOk);
    ASSERT_EQ(Ta.Insert("d", "x", 7).Status, BtrStatusOk);
    ASSERT_EQ(Name(Ta.GetEqual("a")), "a");
    ASSERT_EQ(Ta.Update("a", "new", 1).Status, BtrStatusOk);
    EXPECT_EQ(Name(second.GetEqual("d")), "d");
    EXPECT_EQ(second.GetEqual("a").Data, RecordOfT("a", "new", 1));

    EXPECT_EQ(Tb.GetEqual("a").Data, RecordOfT("a", "x", 1));
    EXPECT_EQ(Tb.GetEqual("d").Status, BtrStatusKeyNotFound);
    EXPECT_EQ(Tb.GetEqual("a", BtrBiasLock).Status, BtrStatusRecordLocked);
    EXPECT_EQ(Tb.Update("a", "mine", 1).Status, BtrStatusRecordLocked);
    ASSERT_EQ(A({.Operation = BtrOpEnd}).Status, BtrStatusOk);
    EXPECT_EQ(Tb.Update("a", "mine", 1).Status, BtrStatusConflict);
    EXPECT_EQ(Tb.GetEqual("a").Data, RecordOfT("a", "new", 1));
    EXPECT_EQ(Name(Tb.GetEqual("d")), "d");
}

TEST_F(TwoClients, AnAbortedTransactionLeavesNothing)
{
    ASSERT_EQ(A({.Operation = BtrOpBeginConcurrent}).Status, BtrStatusOk);
    ASSERT_EQ(Ta.Insert("d", "x", 7).Status, BtrStatusOk);
    ASSERT_EQ(Name(Ta.GetEqual("a")), "a");
    ASSERT_EQ(Ta.Update("a", "new", 1).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(A), 4);
    EXPECT_EQ(CountRecords(B), 3);
    ASSERT_EQ(A({.Operation = BtrOpAbort}).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(A), 3);
    for (const OnT<Remote> &client : {Ta, Tb}) {
        EXPECT_EQ(client.GetEqual("d").Status, BtrStatusKeyNotFound);
        EXPECT_EQ(client.GetEqual("a", BtrBiasLock).Data, RecordOfT("a", "x", 1));
        EXPECT_EQ(client.Unlock(0).Status, BtrStatusOk);
    }
}

TEST_F(TwoClients, AnExclusiveTransactionLocksTheFileItUses)
{
    ASSERT_EQ(Name(Tb.GetEqual("a")), "a");
    ASSERT_EQ(A({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    ASSERT_EQ(Name(Ta.GetEqual("a")), "a");
    EXPECT_EQ(Name(Tb.GetEqual("a")), "a");
    EXPECT_EQ(Tb.Update("a", "y", 1).Status, BtrStatusFileLocked);
    EXPECT_EQ(Tb.GetEqual("a", BtrBiasLock).Status, BtrStatusFileLocked);
    EXPECT_EQ(Tb.Insert("e", "y", 1).Status, BtrStatusFileLocked);
    ASSERT_EQ(A({.Operation = BtrOpAbort}).Status, BtrStatusOk);
    ASSERT_EQ(Name(Tb.GetEqual("a")), "a");
    EXPECT_EQ(Tb.Update("a", "y", 1).Status, BtrStatusOk);
}

TEST_F(TwoClients, AnExclusiveTransactionCannotEvenReadWhatAnotherOneUses)
{
    ASSERT_EQ(A({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    ASSERT_EQ(Name(Ta.GetEqual("a")), "a");
    ASSERT_EQ(B({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    EXPECT_EQ(Tb.GetEqual("a").Status, BtrStatusFileLocked);
    ASSERT_EQ(A({.Operation = BtrOpEnd}).Status, BtrStatusOk);
    EXPECT_EQ(Name(Tb.GetEqual("a")), "a");
}

TEST_F(TwoClients, ALockedRecordKeepsAnExclusiveTransactionOutOfTheFile)
{
    ASSERT_EQ(Tb.GetEqual("b", BtrBiasLock).Status, BtrStatusOk);
    ASSERT_EQ(A({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    EXPECT_EQ(Ta.GetEqual("a").Status, BtrStatusRecordLocked);
    EXPECT_EQ(Ta.GetEqual("a", BtrBiasLock).Status, BtrStatusRecordLocked);
    ASSERT_EQ(Tb.Unlock(0).Status, BtrStatusOk);
    EXPECT_EQ(Name(Ta.GetEqual("a")), "a");
}

TEST_F(TwoClients, TransactionsBeginAndEndInTurn)
{
    EXPECT_EQ(A({.Operation = BtrOpEnd}).Status, BtrStatusNoTransaction);
    EXPECT_EQ(A({.Operation = BtrOpAbort}).Status, BtrStatusNoTransaction);
    EXPECT_EQ(A({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    EXPECT_EQ(A({.Operation = BtrOpBegin}).Status, BtrStatusTransactionActive);
    EXPECT_EQ(A({.Operation = BtrOpBeginConcurrent}).Status, BtrStatusTransactionActive);
    EXPECT_EQ(A({.Operation = BtrOpEnd}).Status, BtrStatusOk);
}

TEST_F(TwoClients, AKilledClientLeavesNeitherChangesNorLocks)
{
    const std::string other = Directory / "u.btr";
    ASSERT_EQ(Create(A, other, DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Open(A, other, 1).Status, BtrStatusOk);
    ASSERT_EQ(Open(B, other, 1).Status, BtrStatusOk);
    const OnT<Remote> otherOfA{A, 1};
    const OnT<Remote> otherOfB{B, 1};
    ASSERT_EQ(A({.Operation = BtrOpBeginConcurrent}).Status, BtrStatusOk);
    ASSERT_EQ(Ta.Insert("d", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Ta.Insert("e", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(otherOfA.Insert("f", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Ta.GetEqual("a", BtrBiasMultiple).Status, BtrStatusOk);
    A.Kill();
    EXPECT_EQ(Tb.GetEqual("d").Status, BtrStatusKeyNotFound);
    EXPECT_EQ(Tb.GetEqual("e").Status, BtrStatusKeyNotFound);
    EXPECT_EQ(otherOfB.GetEqual("f").Status, BtrStatusKeyNotFound);
    EXPECT_EQ(Tb.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    EXPECT_EQ(Tb.Insert("d", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(otherOfB.Insert("f", "x", 1).Status, BtrStatusOk);
}

TEST_F(TwoClients, ExclusiveOpenNeedsTheFileForItselfAlone)
{
    ASSERT_EQ(Close(B).Status, BtrStatusOk);
    EXPECT_EQ(Open(B, Path, 0, BtrModeExclusive).Status, BtrStatusIncompatibleMode);
    ASSERT_EQ(Close(A).Status, BtrStatusOk);
    EXPECT_EQ(Open(B, Path, 0, BtrModeExclusive).Status, BtrStatusOk);
    EXPECT_EQ(Open(A, Path).Status, BtrStatusIncompatibleMode);
    EXPECT_EQ(Open(B, Path, 1).Status, BtrStatusIncompatibleMode);
    ASSERT_EQ(Close(B).Status, BtrStatusOk);
    EXPECT_EQ(Open(A, Path).Status, BtrStatusOk);
}

TEST_F(TwoClients, AReadOnlyOpenReadsButDoesNotChange)
{
    ASSERT_EQ(Open(B, Path, 1, BtrModeReadOnly).Status, BtrStatusOk);
    const OnT<Remote> reader{B, 1};
    EXPECT_EQ(reader.Insert("d", "x", 1).Status, BtrStatusAccessDenied);
    ASSERT_EQ(Name(reader.GetEqual("a")), "a");
    EXPECT_EQ(reader.Update("a", "y", 1).Status, BtrStatusAccessDenied);
    EXPECT_EQ(reader.Delete().Status, BtrStatusAccessDenied);
}

TEST_F(TwoClients, ASecondCloseFindsNothingOpen)
{
    EXPECT_EQ(Close(A).Status, BtrStatusOk);
    EXPECT_EQ(Close(A).Status, BtrStatusNotOpen);
}

} // namespace
