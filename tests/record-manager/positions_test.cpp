// Where a position block stands after each operation, on the records a/x/1, b/x/5, c/x/3.
#include "files.h"

namespace {

using namespace wbtrvtest;

struct Positions : testing::Test {
    TempDirectory Directory;
    Local Me;
    std::string Path = Directory / "t.btr";
    OnT<Local> T{Me};

    void SetUp() override
    {
        ASSERT_EQ(Create(Me, Path, DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("a", "x", 1).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("b", "x", 5).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("c", "x", 3).Status, BtrStatusOk);
        ASSERT_EQ(Close(Me).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path, 1).Status, BtrStatusOk);
    }
    OnT<Local> Other{Me, 1};
};

TEST_F(Positions, StepsFollowTheRecordLastTouched)
{
    EXPECT_EQ(Name(T.Read(BtrOpStepPrevious, 0)), "c");
    EXPECT_EQ(Name(T.Read(BtrOpStepPrevious, 0)), "b");
    EXPECT_EQ(Name(T.Read(BtrOpStepFirst, 0)), "a");
    EXPECT_EQ(T.Read(BtrOpStepPrevious, 0).Status, BtrStatusEndOfFile);
    EXPECT_EQ(Name(T.Read(BtrOpStepNext, 0)), "b");
    EXPECT_EQ(Name(T.Read(BtrOpStepLast, 0)), "c");
    EXPECT_EQ(T.Read(BtrOpStepNext, 0).Status, BtrStatusEndOfFile);
    EXPECT_EQ(Name(T.Read(BtrOpStepPrevious, 0)), "b");
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    EXPECT_EQ(Name(T.Read(BtrOpStepNext, 0)), "b");
}

TEST_F(Positions, StepNextAndPreviousLeaveTheKeyWhereItIs)
{
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    ASSERT_EQ(Name(T.Read(BtrOpStepNext, 0)), "b");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 0)), "b");
    ASSERT_EQ(Name(T.Read(BtrOpStepLast, 0)), "c");
    EXPECT_EQ(T.Read(BtrOpGetNext, 0).Status, BtrStatusNoPosition);
}

TEST_F(Positions, AStepAfterADeleteGoesOnBesideTheGap)
{
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    ASSERT_EQ(T.Delete().Status, BtrStatusOk);
    EXPECT_EQ(Name(T.Read(BtrOpStepNext, 0)), "c");
    EXPECT_EQ(Name(T.Read(BtrOpStepPrevious, 0)), "a");
}

TEST_F(Positions, AFailedReadKeepsThePosition)
{
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    EXPECT_EQ(T.GetEqual("q").Status, BtrStatusKeyNotFound);
    EXPECT_EQ(T.Read(BtrOpGetGreater, 0, "q").Status, BtrStatusEndOfFile);
    EXPECT_EQ(T.Read(BtrOpGetEqual, 99, "q").Status, BtrStatusBadKeyNumber);
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 0)), "c");
    EXPECT_EQ(T.Read(BtrOpGetNext, 0).Status, BtrStatusEndOfFile);
    EXPECT_EQ(Name(T.Read(BtrOpGetPrevious, 0)), "b");
}

TEST_F(Positions, AReadIntoAShortBufferMovesThePosition)
{
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    EXPECT_EQ(Me({.Operation = BtrOpGetEqual, .Length = 63, .Key = "b"}).Status, BtrStatusDataBufferShort);
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 0)), "c");
}

TEST_F(Positions, AKeyBufferThatCannotHoldTheKeyIsRefusedAndNotWrittenTo)
{
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    for (const uint16_t operation :
         {BtrOpGetEqual, BtrOpGetNext, BtrOpGetPrevious, BtrOpGetGreater, BtrOpGetGreaterOrEqual,
          BtrOpGetLess, BtrOpGetLessOrEqual, BtrOpGetFirst, BtrOpGetLast}) {
        const Answer answer = Me({.Operation = operation, .Length = 64, .Key = "#######", .KeyLength = 7});
        EXPECT_EQ(answer.Status, BtrStatusKeyBufferShort) << operation;
        EXPECT_EQ(KeyText(answer), "#######") << operation;
    }
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 0)), "b");
}

TEST_F(Positions, APreviousBeforeTheFirstAndANextAfterTheLastEndTheFile)
{
    ASSERT_EQ(Name(T.Read(BtrOpGetFirst, 0)), "a");
    EXPECT_EQ(T.Read(BtrOpGetPrevious, 0).Status, BtrStatusEndOfFile);
    ASSERT_EQ(Name(T.Read(BtrOpGetLast, 0)), "c");
    EXPECT_EQ(T.Read(BtrOpGetNext, 0).Status, BtrStatusEndOfFile);
}

TEST_F(Positions, GetDirectSetsThePositionOnTheKeyItNames)
{
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    const std::string b = T.Position().Data;
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    EXPECT_EQ(Name(T.Direct(b, 2)), "b");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 2)), "c");
    EXPECT_EQ(T.Read(BtrOpGetNext, 0).Status, BtrStatusKeyNumberChanged);
}

TEST_F(Positions, GetDirectWithoutAKeyLeavesNoPositionOnOne)
{
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    const std::string b = T.Position().Data;
    EXPECT_EQ(Name(T.Direct(b, BtrNoLogicalPosition)), "b");
    EXPECT_EQ(T.Read(BtrOpGetNext, 0).Status, BtrStatusNoPosition);
    EXPECT_EQ(T.Update("b", "y", 5, BtrNoCurrencyChange).Status, BtrStatusOk);
    EXPECT_EQ(T.Delete().Status, BtrStatusOk);
}

TEST_F(Positions, ABadPositionTakesThePositionOnTheKey)
{
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    EXPECT_EQ(T.Direct(std::string("\xFF\xFF\xFF\xFF", 4), 0).Status, BtrStatusBadPosition);
    EXPECT_EQ(T.Read(BtrOpGetNext, 0).Status, BtrStatusNoPosition);
    EXPECT_EQ(T.Direct(std::string(4, '\0'), 0).Status, BtrStatusBadPosition);
}

TEST_F(Positions, GetDirectIntoAShortBufferSetsThePositionAllTheSame)
{
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    const std::string b = T.Position().Data;
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    EXPECT_EQ(Me({.Operation = BtrOpGetDirect, .Data = b, .Length = 4}).Status, BtrStatusDataBufferShort);
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 0)), "c");
    EXPECT_EQ(Me({.Operation = BtrOpGetDirect, .Data = b, .Length = 3}).Status, BtrStatusDataBufferShort);
}

TEST_F(Positions, APositionNeedsFourBytesAndARecord)
{
    EXPECT_EQ(T.Position().Status, BtrStatusNoPosition);
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    EXPECT_EQ(Me({.Operation = BtrOpGetPosition, .Length = 3}).Status, BtrStatusDataBufferShort);
    EXPECT_EQ(Me({.Operation = BtrOpGetPosition, .Length = 100}).Length, 4u);
}

TEST_F(Positions, ADeletedPositionIsNeverGivenAgain)
{
    ASSERT_EQ(Name(T.Read(BtrOpGetLast, 0)), "c");
    const std::string gone = T.Position().Data;
    ASSERT_EQ(T.Delete().Status, BtrStatusOk);
    ASSERT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);
    EXPECT_NE(T.Position().Data, gone);
    EXPECT_EQ(T.Direct(gone, 0).Status, BtrStatusBadPosition);
}

TEST_F(Positions, AfterAnInsertWithoutCurrencyChangeTheNewRecordIsTheOneToChange)
{
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    ASSERT_EQ(T.Insert("z", "z", 9, BtrNoCurrencyChange).Status, BtrStatusOk);
    const std::string z = T.Position().Data;
    EXPECT_EQ(T.Update("z", "w", 9, BtrNoCurrencyChange).Status, BtrStatusOk);
    EXPECT_EQ(T.Direct(z, 0).Data, RecordOfT("z", "w", 9));
}

TEST_F(Positions, AnInsertSetsThePositionOnTheKeyItNames)
{
    ASSERT_EQ(T.Insert("bb", "x", 4, 2).Status, BtrStatusOk);
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 2)), "c");
    ASSERT_EQ(Name(T.Read(BtrOpGetPrevious, 2)), "bb");
    EXPECT_EQ(Name(T.Read(BtrOpGetPrevious, 2)), "b");
}

TEST_F(Positions, AnUpdateUnderAnotherKeyThanTheReadLosesThePositionOnBoth)
{
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    EXPECT_EQ(T.Update("a", "y", 1, 1).Status, BtrStatusOk);
    EXPECT_EQ(T.Read(BtrOpGetNext, 0).Status, BtrStatusKeyNumberChanged);
    EXPECT_EQ(T.Read(BtrOpGetNext, 1).Status, BtrStatusKeyNumberChanged);
    EXPECT_EQ(T.Read(BtrOpGetPrevious, 1).Status, BtrStatusKeyNumberChanged);
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 0)), "b");
}

TEST_F(Positions, AnUpdateAfterAStepGivesNoPositionOnAKey)
{
    ASSERT_EQ(Name(T.Read(BtrOpStepFirst, 0)), "a");
    const Answer updated = T.Update("a", "y", 1, 1);
    EXPECT_EQ(updated.Status, BtrStatusOk);
    EXPECT_EQ(KeyText(updated), "y");
    EXPECT_EQ(T.Read(BtrOpGetNext, 1).Status, BtrStatusNoPosition);
}

TEST_F(Positions, AnUpdateCanBeFollowedByAnother)
{
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    EXPECT_EQ(T.Update("a", "y", 1).Status, BtrStatusOk);
    EXPECT_EQ(T.Update("a", "z", 1).Status, BtrStatusOk);
    EXPECT_EQ(T.Delete().Status, BtrStatusOk);
}

TEST_F(Positions, AnUpdateRefusedForADuplicateChangesNothing)
{
    ASSERT_EQ(Create(Me, Directory / "u.btr",
                     CreateBuffer(8, 2, {{1, 4, BtrKeyModifiable}, {5, 4, duplicatesModifiable}}))
                  .Status,
              BtrStatusOk);
    ASSERT_EQ(Open(Me, Directory / "u.btr", 2).Status, BtrStatusOk);
    const auto call = [&](uint16_t operation, const std::string &data, const std::string &key = "",
                          int8_t number = 0) {
        return Me(
            {.Operation = operation, .Block = 2, .Data = data, .Length = 8, .Key = key, .KeyNumber = number});
    };
    ASSERT_EQ(call(BtrOpInsert, "aaaa1111").Status, BtrStatusOk);
    ASSERT_EQ(call(BtrOpInsert, "bbbb2222").Status, BtrStatusOk);
    EXPECT_EQ(call(BtrOpUpdate, "aaaa3333").Status, BtrStatusDuplicateKey);
    EXPECT_EQ(call(BtrOpGetEqual, "", "3333", 1).Status, BtrStatusKeyNotFound);
    EXPECT_EQ(call(BtrOpGetEqual, "", "2222", 1).Data, "bbbb2222");
    EXPECT_EQ(call(BtrOpUpdate, "cccc2222").Status, BtrStatusOk);
    EXPECT_EQ(call(BtrOpGetEqual, "", "bbbb").Status, BtrStatusKeyNotFound);
}

TEST_F(Positions, AShortUpdateIsRefused)
{
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    EXPECT_EQ(Me({.Operation = BtrOpUpdate, .Data = RecordOfT("a", "y", 1), .Length = 63}).Status,
              BtrStatusDataBufferShort);
    EXPECT_EQ(T.GetEqual("a").Data, RecordOfT("a", "x", 1));
}

TEST_F(Positions, WhatFollowsTheFixedLengthIsIgnored)
{
    ASSERT_EQ(Me({.Operation = BtrOpInsert, .Data = RecordOfT("d", "x", 1) + "more", .Length = 68}).Status,
              BtrStatusOk);
    const Answer read =
        Me({.Operation = BtrOpGetEqual, .Data = std::string(70, '#'), .Length = 70, .Key = "d"});
    EXPECT_EQ(read.Length, 64u);
    EXPECT_EQ(read.Data, RecordOfT("d", "x", 1) + "######");
}

TEST_F(Positions, TwoPositionBlocksOfOneClientConflictLikeTwoClients)
{
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    ASSERT_EQ(Name(Other.GetEqual("a")), "a");
    EXPECT_EQ(T.Update("a", "y", 1).Status, BtrStatusOk);
    EXPECT_EQ(Other.Update("a", "z", 1).Status, BtrStatusConflict);
    EXPECT_EQ(Other.Delete().Status, BtrStatusConflict);
    EXPECT_EQ(T.Delete().Status, BtrStatusOk);
    EXPECT_EQ(Other.Delete().Status, BtrStatusConflict);
    EXPECT_EQ(Name(Other.Read(BtrOpGetNext, 0)), "b");
}

TEST_F(Positions, NextGoesOnWhereTheRecordWasThatAnotherDeletedOrMoved)
{
    ASSERT_EQ(Name(T.Read(BtrOpGetEqual, 1, "x")), "a");
    ASSERT_EQ(Name(Other.GetEqual("a")), "a");
    ASSERT_EQ(Other.Update("a", "zz", 1).Status, BtrStatusOk);
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 1)), "b");
    ASSERT_EQ(Name(Other.GetEqual("b")), "b");
    ASSERT_EQ(Other.Delete().Status, BtrStatusOk);
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 1)), "c");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 1)), "a");
}

TEST_F(Positions, AKeyOnlyReadMovesThePosition)
{
    ASSERT_EQ(T.Read(BtrOpGetFirst + BtrBiasKeyOnly, 0).Status, BtrStatusOk);
    const Answer next = Me({.Operation = BtrOpGetNext + BtrBiasKeyOnly, .Key = "", .KeyNumber = 0});
    EXPECT_EQ(next.Status, BtrStatusOk);
    EXPECT_EQ(KeyText(next), "b");
    EXPECT_EQ(T.Position().Status, BtrStatusOk);
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 0)), "c");
    EXPECT_EQ(T.Update("c", "y", 3).Status, BtrStatusOk);
}

// ---- Variable length ----

struct Variable : testing::Test {
    TempDirectory Directory;
    Local Me;

    void SetUp() override
    {
        ASSERT_EQ(
            Create(Me, Directory / "v.btr", CreateBuffer(4, 1, {{1, 4, BtrKeyModifiable}}, BtrFileVariable))
                .Status,
            BtrStatusOk);
        ASSERT_EQ(Open(Me, Directory / "v.btr").Status, BtrStatusOk);
    }
    Answer Insert(const std::string &record)
    {
        return Me({.Operation = BtrOpInsert, .Data = record, .Length = static_cast<uint32_t>(record.size())});
    }
};

TEST_F(Variable, RecordsHaveEachTheirLength)
{
    ASSERT_EQ(Insert("aaaa").Status, BtrStatusOk);
    const std::string large = "bbbb" + std::string(20000, 'l');
    ASSERT_EQ(Insert(large).Status, BtrStatusOk);
    EXPECT_EQ(Insert("ccc").Status, BtrStatusDataBufferShort);
    const Answer a = Me({.Operation = BtrOpGetEqual, .Length = 100, .Key = "aaaa"});
    EXPECT_EQ(a.Length, 4u);
    const Answer b = Me({.Operation = BtrOpGetEqual, .Length = 65535, .Key = "bbbb"});
    EXPECT_EQ(b.Length, large.size());
    EXPECT_EQ(b.Data.substr(0, b.Length), large);
    ASSERT_EQ(Me({.Operation = BtrOpUpdate, .Data = "bbbbshort", .Length = 9}).Status, BtrStatusOk);
    EXPECT_EQ(Me({.Operation = BtrOpGetEqual, .Length = 100, .Key = "bbbb"}).Length, 9u);
}

TEST_F(Variable, ABufferTooShortForAllGetsWhatFits)
{
    ASSERT_EQ(Insert("aaaabcdefgh").Status, BtrStatusOk);
    const Answer part = Me({.Operation = BtrOpGetFirst, .Data = std::string(12, '#'), .Length = 6});
    EXPECT_EQ(part.Status, BtrStatusDataBufferShort);
    EXPECT_EQ(part.Data, "aaaabc######");
    EXPECT_EQ(part.Length, 6u);
    const Answer none = Me({.Operation = BtrOpGetFirst, .Data = std::string(12, '#'), .Length = 3});
    EXPECT_EQ(none.Status, BtrStatusDataBufferShort);
    EXPECT_EQ(none.Data, std::string(12, '#'));
    EXPECT_EQ(Me({.Operation = BtrOpDelete}).Status, BtrStatusOk);
}

TEST_F(Variable, TheLongestRecordHas65535Bytes)
{
    EXPECT_EQ(Insert(std::string(65535, 'a')).Status, BtrStatusOk);
    EXPECT_EQ(Insert(std::string(65536, 'b')).Status, BtrStatusDataBufferShort);
}

} // namespace
