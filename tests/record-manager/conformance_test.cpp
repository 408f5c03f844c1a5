// What one client sees of files, keys and positions, case by case.
#include "files.h"

namespace {

using namespace wbtrvtest;

struct FileT : testing::Test {
    TempDirectory Directory;
    Local Me;
    std::string Path = Directory / "t.btr";
    OnT<Local> T{Me};

    void SetUp() override
    {
        ASSERT_EQ(Create(Me, Path, DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
    }
};

struct FilledT : FileT {
    void SetUp() override
    {
        FileT::SetUp();
        ASSERT_EQ(T.Insert("a", "x", 1).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("b", "x", 5).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("c", "x", 3).Status, BtrStatusOk);
    }
};

// ---- Files ----

TEST(Open, GivesFileNotFoundForAMissingPath)
{
    const TempDirectory directory;
    Local me;
    EXPECT_EQ(Open(me, directory / "t.btr").Status, BtrStatusFileNotFound);
    EXPECT_EQ(Open(me, directory / "nowhere/t.btr").Status, BtrStatusFileNotFound);
    EXPECT_TRUE(std::filesystem::is_empty(directory.Path));
}

TEST(Create, KeepsAnExistingFileWhenAskedToAndReplacesItOtherwise)
{
    const TempDirectory directory;
    Local me;
    const std::string path = directory / "t.btr";
    EXPECT_EQ(Create(me, path, DefinitionOfT(), BtrKeepExisting).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, path).Status, BtrStatusOk);
    ASSERT_EQ(OnT<Local>{me}.Insert("a", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Close(me).Status, BtrStatusOk);
    EXPECT_EQ(Create(me, path, DefinitionOfT(), BtrKeepExisting).Status, BtrStatusFileExists);
    EXPECT_EQ(Create(me, path, DefinitionOfT(), 0).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, path).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(me), 0);
}

TEST_F(FileT, StatTellsTheDefinitionAndTheCount)
{
    const Answer answer = Me({.Operation = BtrOpStat, .Length = 64});
    ASSERT_EQ(answer.Status, BtrStatusOk);
    EXPECT_EQ(answer.Length, 64u);
    BtrFileHeader file;
    memcpy(&file, answer.Data.data(), sizeof file);
    EXPECT_EQ(file.RecordLength, 64);
    EXPECT_EQ(file.KeyCount, 3);
    EXPECT_EQ(uint32_t{file.RecordCount}, 0u);
    BtrKeyEntry keys[3];
    memcpy(keys, answer.Data.data() + 16, sizeof keys);
    EXPECT_EQ(keys[1].Position, 9);
    EXPECT_EQ(keys[1].Length, 8);
    EXPECT_EQ(keys[1].Flags, BtrKeyDuplicates | BtrKeyModifiable | BtrKeyExtendedType);
    EXPECT_EQ(keys[2].Type, BtrTypeInteger);
    EXPECT_EQ(uint32_t{keys[2].UniqueValues}, 0u);
}

TEST_F(FileT, StatRefusesABufferThatCannotHoldAllOfIt)
{
    const Answer answer = Me({.Operation = BtrOpStat, .Length = 20});
    EXPECT_EQ(answer.Status, BtrStatusDataBufferShort);
    EXPECT_EQ(answer.Length, 20u);
}

TEST_F(FileT, AnEmptyFileHasNeitherFirstRecordNorKeyValues)
{
    EXPECT_EQ(T.Read(BtrOpGetFirst, 0).Status, BtrStatusEndOfFile);
    EXPECT_EQ(T.Read(BtrOpStepFirst, 0).Status, BtrStatusEndOfFile);
    EXPECT_EQ(T.GetEqual("a").Status, BtrStatusKeyNotFound);
}

// ---- Insert ----

TEST_F(FileT, InsertSetsTheKeyBufferAndThePosition)
{
    const Answer inserted = T.Insert("a", "x", 1);
    EXPECT_EQ(inserted.Status, BtrStatusOk);
    EXPECT_EQ(KeyText(inserted), "a");
    const Answer position = T.Position();
    EXPECT_EQ(position.Status, BtrStatusOk);
    EXPECT_EQ(position.Length, 4u);
    EXPECT_NE(position.Data, std::string(4, '\0'));
}

TEST_F(FileT, InsertRefusesASecondRecordOfAUniqueKey)
{
    ASSERT_EQ(T.Insert("a", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(T.Insert("a", "y", 2).Status, BtrStatusDuplicateKey);
    EXPECT_EQ(CountRecords(Me), 1);
    EXPECT_EQ(T.Read(BtrOpGetEqual, 1, "y").Status, BtrStatusKeyNotFound);
}

TEST_F(FileT, InsertRefusesAShortRecord)
{
    EXPECT_EQ(T.Insert("a", "x", 1, 0, 0, 63).Status, BtrStatusDataBufferShort);
    EXPECT_EQ(CountRecords(Me), 0);
}

// ---- Reading along keys ----

TEST_F(FilledT, DuplicatesComeInTheOrderOfInsertion)
{
    EXPECT_EQ(Name(T.Read(BtrOpGetEqual, 1, "x")), "a");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 1)), "b");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 1)), "c");
    EXPECT_EQ(T.Read(BtrOpGetNext, 1).Status, BtrStatusEndOfFile);
}

TEST_F(FilledT, FromAboveTheYoungestDuplicateIsFoundAndFromBelowTheOldest)
{
    EXPECT_EQ(Name(T.Read(BtrOpGetLessOrEqual, 1, "x")), "c");
    EXPECT_EQ(Name(T.Read(BtrOpGetGreaterOrEqual, 1, "x")), "a");
}

TEST_F(FilledT, GreaterAndLessLeaveOutTheValueItself)
{
    EXPECT_EQ(T.Read(BtrOpGetGreater, 1, "x").Status, BtrStatusEndOfFile);
    EXPECT_EQ(T.Read(BtrOpGetLess, 1, "x").Status, BtrStatusEndOfFile);
}

TEST_F(FilledT, ADescendingKeyBeginsWithTheHighestValue)
{
    EXPECT_EQ(Name(T.Read(BtrOpGetFirst, 2)), "b");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 2)), "c");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 2)), "a");
}

TEST_F(FilledT, GreaterOnADescendingKeyIsASmallerValue)
{
    EXPECT_EQ(Name(T.Read(BtrOpGetGreater, 2, Number(3))), "a");
    EXPECT_EQ(Name(T.Read(BtrOpGetLess, 2, Number(3))), "b");
}

TEST_F(FilledT, NegativeNumbersSortBelowPositiveOnes)
{
    ASSERT_EQ(T.Insert("d", "x", -1).Status, BtrStatusOk);
    std::string order = Name(T.Read(BtrOpGetFirst, 2));
    for (Answer next = T.Read(BtrOpGetNext, 2); next.Status == BtrStatusOk; next = T.Read(BtrOpGetNext, 2)) {
        order += Name(next);
    }
    EXPECT_EQ(order, "bcad");
}

TEST_F(FileT, TextSortsByItsBytes)
{
    ASSERT_EQ(T.Insert("\x84", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(T.Insert("Z", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(T.Insert("a", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(Name(T.Read(BtrOpGetFirst, 0)), "Z");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 0)), "a");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 0)), "\x84");
}

TEST_F(FilledT, NextUnderAnotherKeyThanTheLastIsRefused)
{
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    EXPECT_EQ(T.Read(BtrOpGetNext, 1).Status, BtrStatusKeyNumberChanged);
}

TEST_F(FilledT, PositionAndGetDirectChangeTheKeyOnTheSameRecord)
{
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    const Answer position = T.Position();
    const Answer direct = T.Direct(position.Data, 1);
    EXPECT_EQ(direct.Status, BtrStatusOk);
    EXPECT_EQ(KeyText(direct), "x");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 1)), "c");
}

TEST_F(FilledT, GetDirectOfADeletedRecordGivesABadPosition)
{
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    const Answer position = T.Position();
    ASSERT_EQ(T.Delete().Status, BtrStatusOk);
    EXPECT_EQ(T.Direct(position.Data, 0).Status, BtrStatusBadPosition);
}

TEST_F(FilledT, AfterOpenThereIsNoNextByKeyButAFirstByStep)
{
    ASSERT_EQ(Open(Me, Path, 1).Status, BtrStatusOk);
    const OnT<Local> fresh{Me, 1};
    EXPECT_EQ(fresh.Read(BtrOpGetNext, 0).Status, BtrStatusNoPosition);
    EXPECT_EQ(Name(fresh.Read(BtrOpStepNext, 0)), "a");
}

TEST_F(FilledT, AStepGivesNoPositionOnAKey)
{
    ASSERT_EQ(Name(T.Read(BtrOpStepFirst, 0)), "a");
    EXPECT_EQ(T.Read(BtrOpGetNext, 0).Status, BtrStatusNoPosition);
}

TEST_F(FilledT, AKeyNumberThatDoesNotExistIsRefused)
{
    EXPECT_EQ(T.Read(BtrOpGetEqual, 99, "a").Status, BtrStatusBadKeyNumber);
}

TEST_F(FilledT, AShortBufferGetsNoData)
{
    const Answer answer = Me(
        {.Operation = BtrOpGetEqual, .Data = std::string(64, '#'), .Length = 10, .Key = "a", .KeyNumber = 0});
    EXPECT_EQ(answer.Status, BtrStatusDataBufferShort);
    EXPECT_EQ(answer.Data, std::string(64, '#'));
    EXPECT_EQ(answer.Length, 10u);
}

// ---- Delete and update ----

TEST_F(FilledT, NextAfterADeleteIsTheRecordThatFollowed)
{
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    EXPECT_EQ(T.Delete().Status, BtrStatusOk);
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 0)), "c");
}

TEST_F(FilledT, PreviousAfterADeleteIsTheRecordBefore)
{
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    EXPECT_EQ(T.Delete().Status, BtrStatusOk);
    EXPECT_EQ(Name(T.Read(BtrOpGetPrevious, 0)), "a");
}

TEST_F(FilledT, ADeletedRecordCanNeitherBeDeletedNorUpdatedNorLocated)
{
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    ASSERT_EQ(T.Delete().Status, BtrStatusOk);
    EXPECT_EQ(T.Delete().Status, BtrStatusNoPosition);
    EXPECT_EQ(T.Position().Status, BtrStatusNoPosition);
    EXPECT_EQ(T.Update("b", "x", 5).Status, BtrStatusNoPosition);
}

TEST_F(FilledT, AKeyThatIsNotModifiableCannotBeUpdated)
{
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    EXPECT_EQ(T.Update("q", "y", 1).Status, BtrStatusNotModifiable);
    EXPECT_EQ(Name(T.GetEqual("a")), "a");
    EXPECT_EQ(T.Read(BtrOpGetEqual, 1, "y").Status, BtrStatusKeyNotFound);
}

TEST_F(FilledT, AfterAnUpdateNextGoesOnFromTheNewValue)
{
    ASSERT_EQ(Name(T.Read(BtrOpGetEqual, 2, Number(1))), "a");
    EXPECT_EQ(T.Update("a", "x", 4, 2).Status, BtrStatusOk);
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 2)), "c");
}

TEST_F(FilledT, AnUpdateWithoutCurrencyChangeGoesOnFromTheOldPlace)
{
    ASSERT_EQ(Name(T.Read(BtrOpGetEqual, 2, Number(1))), "a");
    EXPECT_EQ(T.Update("a", "x", 4, BtrNoCurrencyChange).Status, BtrStatusOk);
    EXPECT_EQ(T.Read(BtrOpGetNext, 2).Status, BtrStatusEndOfFile);
}

TEST_F(FilledT, AnInsertWithoutCurrencyChangeLeavesTheKeyWhereItWas)
{
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    const Answer inserted = Me({.Operation = BtrOpInsert,
                                .Data = RecordOfT("z", "z", 9),
                                .Length = 64,
                                .Key = "untouched",
                                .KeyNumber = BtrNoCurrencyChange});
    EXPECT_EQ(inserted.Status, BtrStatusOk);
    EXPECT_EQ(KeyText(inserted), "untouched");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 0)), "b");
}

TEST_F(FilledT, AKeyOnlyReadGivesNoDataAndNothingToUpdate)
{
    const Answer answer = Me({.Operation = BtrOpGetEqual + BtrBiasKeyOnly,
                              .Data = std::string(64, '#'),
                              .Length = 64,
                              .Key = "a",
                              .KeyNumber = 0});
    EXPECT_EQ(answer.Status, BtrStatusOk);
    EXPECT_EQ(answer.Data, std::string(64, '#'));
    EXPECT_EQ(T.Update("a", "y", 1).Status, BtrStatusNoPosition);
    EXPECT_EQ(T.Delete().Status, BtrStatusNoPosition);
}

TEST_F(FilledT, ARecordThatLeavesAGroupAndComesBackIsTheYoungest)
{
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    ASSERT_EQ(T.Update("a", "y", 1).Status, BtrStatusOk);
    ASSERT_EQ(T.Update("a", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(Name(T.Read(BtrOpGetEqual, 1, "x")), "b");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 1)), "c");
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 1)), "a");
}

// ---- File N ----

struct FileN : testing::Test {
    TempDirectory Directory;
    Local Me;

    void SetUp() override
    {
        ASSERT_EQ(Create(Me, Directory / "n.btr", DefinitionOfN()).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Directory / "n.btr").Status, BtrStatusOk);
    }

    // The number that the record came back with, or the negative status.
    int32_t Insert(int32_t number, const std::string &letters = "", uint16_t small = 0)
    {
        const Answer answer = Me({.Operation = BtrOpInsert,
                                  .Data = RecordOfN(number, letters, small),
                                  .Length = 16,
                                  .KeyNumber = 0});
        if (answer.Status != BtrStatusOk) return -answer.Status;
        int32_t given = 0;
        memcpy(&given, answer.Data.data(), sizeof given);
        return given;
    }
};

TEST_F(FileN, ZeroAsksForTheHighestNumberPlusOne)
{
    EXPECT_EQ(Insert(0), 1);
    EXPECT_EQ(Insert(0), 2);
    ASSERT_EQ(Me({.Operation = BtrOpDelete}).Status, BtrStatusOk);
    EXPECT_EQ(Insert(0), 2);
    EXPECT_EQ(Insert(7), 7);
    EXPECT_EQ(Insert(0), 8);
    EXPECT_EQ(Insert(7), -BtrStatusDuplicateKey);
}

TEST_F(FileN, SegmentsCompareOneByOneEachByItsType)
{
    ASSERT_EQ(Insert(1, "AB", 256), 1);
    ASSERT_EQ(Insert(2, "AC", 1), 2);
    ASSERT_EQ(Insert(3, "AB", 2), 3);
    const auto number = [&](uint16_t operation) {
        const Answer answer = Me({.Operation = operation, .Length = 16, .KeyNumber = 1});
        return answer.Status == BtrStatusOk ? static_cast<int>(answer.Data[0]) : -answer.Status;
    };
    EXPECT_EQ(number(BtrOpGetFirst), 3);
    EXPECT_EQ(number(BtrOpGetNext), 1);
    EXPECT_EQ(number(BtrOpGetNext), 2);
    EXPECT_EQ(number(BtrOpGetNext), -BtrStatusEndOfFile);
}

} // namespace
