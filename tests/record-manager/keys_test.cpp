// The order of key values, type by type, and which records an index leaves out.
#include "audit.h"
#include "files.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace {

using namespace wbtrvtest;

template <typename Value> std::string Bytes(Value value)
{
    return {reinterpret_cast<const char *>(&value), sizeof value};
}

// A file of one key at the start of an eight-byte record, whose last two bytes number the records.
struct OneKey : testing::Test {
    TempDirectory Directory;
    Local Me;

    void Make(uint16_t length, unsigned flags, uint8_t type, uint8_t null = 0)
    {
        const std::string path = Directory / "one.btr";
        ASSERT_EQ(Create(Me, path, CreateBuffer(32, 1, {{1, length, flags, type, null}})).Status,
                  BtrStatusOk);
        ASSERT_EQ(Open(Me, path).Status, BtrStatusOk);
    }
    int16_t Insert(const std::string &key, char name) const
    {
        std::string record = Padded(key, 32);
        record[31] = name;
        Local &me = const_cast<Local &>(Me);
        return me({.Operation = BtrOpInsert, .Data = record, .Length = 32, .KeyNumber = -1}).Status;
    }
    // The names along the key.
    std::string Order()
    {
        std::string order;
        for (uint16_t operation = BtrOpGetFirst;; operation = BtrOpGetNext) {
            const Answer answer = Me({.Operation = operation, .Length = 32});
            if (answer.Status != BtrStatusOk) {
                EXPECT_EQ(answer.Status, BtrStatusEndOfFile);
                return order;
            }
            order += answer.Data[31];
        }
    }
    char Find(const std::string &key, uint16_t operation = BtrOpGetEqual)
    {
        const Answer answer = Me({.Operation = operation, .Length = 32, .Key = key});
        return answer.Status == BtrStatusOk ? answer.Data[31] : '-';
    }
};

TEST_F(OneKey, AZStringEndsAtItsFirstNul)
{
    Make(8, 0, BtrTypeZString);
    ASSERT_EQ(Insert(std::string("ab\0zz", 5), '2'), BtrStatusOk);
    ASSERT_EQ(Insert("abc", '3'), BtrStatusOk);
    ASSERT_EQ(Insert("aa", '1'), BtrStatusOk);
    EXPECT_EQ(Order(), "123");
    EXPECT_EQ(Find(std::string("ab\0other", 8)), '2');
    EXPECT_EQ(Insert(std::string("ab\0yy", 5), '4'), BtrStatusDuplicateKey);
}

TEST_F(OneKey, AnLStringIsAsLongAsItsFirstByteSays)
{
    Make(8, 0, BtrTypeLString);
    ASSERT_EQ(Insert(std::string("\x02") + "abXY", '2'), BtrStatusOk);
    ASSERT_EQ(Insert(std::string("\x03") + std::string("ab\0", 3), '3'), BtrStatusOk);
    ASSERT_EQ(Insert(std::string("\x01") + "abc", '1'), BtrStatusOk);
    ASSERT_EQ(Insert(std::string("\x03") + "abc", '4'), BtrStatusOk);
    EXPECT_EQ(Order(), "1234");
    EXPECT_EQ(Find(std::string("\x02") + "abzz"), '2');
}

TEST_F(OneKey, ACaselessStringTakesCapitalsAndSmallLettersForOne)
{
    Make(4, BtrKeyCaseless, BtrTypeString);
    ASSERT_EQ(Insert("Beta", '2'), BtrStatusOk);
    ASSERT_EQ(Insert("alph", '1'), BtrStatusOk);
    ASSERT_EQ(Insert("[", '3'), BtrStatusOk);
    EXPECT_EQ(Order(), "123");
    EXPECT_EQ(Find("bETA"), '2');
    EXPECT_EQ(Insert("ALPH", '4'), BtrStatusDuplicateKey);
}

TEST_F(OneKey, FloatsSortByTheirNumber)
{
    Make(8, 0, BtrTypeFloat);
    ASSERT_EQ(Insert(Bytes(0.5), '5'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(-1e300), '1'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(0.0), '4'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(-0.25), '3'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(HUGE_VAL), '7'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(-2.5), '2'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(1e-3 + 1), '6'), BtrStatusOk);
    EXPECT_EQ(Order(), "1234567");
    EXPECT_EQ(Find(Bytes(-0.0)), '4');
}

TEST_F(OneKey, ShortFloatsSortByTheirNumberToo)
{
    Make(4, BtrKeyDescending, BtrTypeFloat);
    ASSERT_EQ(Insert(Bytes(-7.5F), '3'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(7.25F), '1'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(-0.5F), '2'), BtrStatusOk);
    EXPECT_EQ(Order(), "123");
}

TEST_F(OneKey, DatesSortByYearThenMonthThenDay)
{
    Make(4, 0, BtrTypeDate);
    const auto date = [](uint8_t day, uint8_t month, uint16_t year) {
        return Bytes(day) + Bytes(month) + Bytes(year);
    };
    ASSERT_EQ(Insert(date(1, 2, 1998), '3'), BtrStatusOk);
    ASSERT_EQ(Insert(date(31, 1, 1998), '2'), BtrStatusOk);
    ASSERT_EQ(Insert(date(31, 12, 1997), '1'), BtrStatusOk);
    ASSERT_EQ(Insert(date(1, 1, 2000), '4'), BtrStatusOk);
    EXPECT_EQ(Order(), "1234");
}

TEST_F(OneKey, TimesSortByHourFirst)
{
    Make(4, 0, BtrTypeTime);
    const auto time = [](char hour, char minute, char second, char hundredth) {
        return std::string{hundredth, second, minute, hour};
    };
    ASSERT_EQ(Insert(time(9, 59, 59, 99), '1'), BtrStatusOk);
    ASSERT_EQ(Insert(time(10, 0, 0, 1), '3'), BtrStatusOk);
    ASSERT_EQ(Insert(time(10, 0, 0, 0), '2'), BtrStatusOk);
    ASSERT_EQ(Insert(time(10, 1, 0, 0), '4'), BtrStatusOk);
    EXPECT_EQ(Order(), "1234");
}

TEST_F(OneKey, UnsignedNumbersHaveNoSign)
{
    Make(2, 0, BtrTypeUnsigned);
    ASSERT_EQ(Insert(Bytes(uint16_t{0xFFFF}), '4'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(uint16_t{0x8000}), '3'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(uint16_t{1}), '1'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(uint16_t{0x0100}), '2'), BtrStatusOk);
    EXPECT_EQ(Order(), "1234");
}

TEST(OldKeys, WithoutATypeAKeyIsTextOrAnUnsignedNumberOfAnyEvenLength)
{
    const TempDirectory directory;
    Local me;
    BtrFileHeader file{};
    file.RecordLength = 16;
    file.PageSize = 512;
    file.KeyCount = 2;
    BtrKeyEntry keys[2] = {};
    keys[0].Position = 1;
    keys[0].Length = 6;
    keys[0].Flags = BtrKeyOldBinary;
    keys[0].Type = BtrTypeFloat; // does not count without the flag that says so
    keys[1].Position = 7;
    keys[1].Length = 3;
    keys[1].Flags = BtrKeyDuplicates;
    const std::string buffer = Bytes(file) + Bytes(keys[0]) + Bytes(keys[1]);
    ASSERT_EQ(Create(me, directory / "old.btr", buffer).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "old.btr").Status, BtrStatusOk);
    for (const char *record : {"\xFF\0\0\0\0\0ab", "\0\0\0\0\0\1aa"}) {
        ASSERT_EQ(
            me({.Operation = BtrOpInsert, .Data = std::string(record, 8) + std::string(8, 0), .Length = 16})
                .Status,
            BtrStatusOk);
    }
    EXPECT_EQ(me({.Operation = BtrOpGetFirst, .Length = 16}).Data.substr(6, 2), "ab");
    EXPECT_EQ(me({.Operation = BtrOpGetFirst, .Length = 16, .KeyNumber = 1}).Data.substr(6, 2), "aa");
}

// Every length and both directions against the order of the numbers themselves.
template <typename Number> void SortsLikeTheNumbers(OneKey &test, uint8_t type, bool descending)
{
    test.Make(sizeof(Number), BtrKeyDuplicates | (descending ? BtrKeyDescending : 0), type);
    std::mt19937_64 random(42);
    std::vector<Number> numbers = {0, 1, std::numeric_limits<Number>::min(),
                                   std::numeric_limits<Number>::max()};
    for (unsigned i = 0; i < 60; ++i) {
        numbers.push_back(static_cast<Number>(random() >> (random() % 64)));
    }
    for (size_t i = 0; i < numbers.size(); ++i) {
        ASSERT_EQ(test.Insert(Bytes(numbers[i]), static_cast<char>(i)), BtrStatusOk);
    }
    std::vector<size_t> expected(numbers.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        expected[i] = i;
    }
    std::stable_sort(expected.begin(), expected.end(), [&](size_t a, size_t b) {
        return descending ? numbers[a] > numbers[b] : numbers[a] < numbers[b];
    });
    const std::string order = test.Order();
    ASSERT_EQ(order.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(static_cast<size_t>(order[i]), expected[i]) << "at " << i;
    }
}

TEST_F(OneKey, IntegersOfOneByte) { SortsLikeTheNumbers<int8_t>(*this, BtrTypeInteger, false); }
TEST_F(OneKey, IntegersOfTwoBytes) { SortsLikeTheNumbers<int16_t>(*this, BtrTypeInteger, true); }
TEST_F(OneKey, IntegersOfFourBytes) { SortsLikeTheNumbers<int32_t>(*this, BtrTypeInteger, false); }
TEST_F(OneKey, IntegersOfEightBytes) { SortsLikeTheNumbers<int64_t>(*this, BtrTypeInteger, true); }
TEST_F(OneKey, UnsignedOfOneByte) { SortsLikeTheNumbers<uint8_t>(*this, BtrTypeUnsigned, true); }
TEST_F(OneKey, UnsignedOfFourBytes) { SortsLikeTheNumbers<uint32_t>(*this, BtrTypeUnsigned, false); }
TEST_F(OneKey, UnsignedOfEightBytes) { SortsLikeTheNumbers<uint64_t>(*this, BtrTypeUnsigned, false); }

// ---- Autoincrement ----

TEST_F(OneKey, AutoincrementSortsByTheAbsoluteValue)
{
    Make(4, 0, BtrTypeAutoincrement);
    ASSERT_EQ(Insert(Bytes(-3), '3'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(1), '1'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(-2), '2'), BtrStatusOk);
    EXPECT_EQ(Order(), "123");
    EXPECT_EQ(Insert(Bytes(3), '4'), BtrStatusDuplicateKey);
    ASSERT_EQ(Insert(Bytes(0), '4'), BtrStatusOk);
    EXPECT_EQ(Find(Bytes(4)), '4');
}

TEST_F(OneKey, AutoincrementCanRunBackwards)
{
    Make(2, BtrKeyDescending, BtrTypeAutoincrement);
    ASSERT_EQ(Insert(Bytes(int16_t{0}), '1'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(int16_t{0}), '2'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(int16_t{0}), '3'), BtrStatusOk);
    EXPECT_EQ(Order(), "321");
    EXPECT_EQ(Find(Bytes(int16_t{3})), '3');
}

TEST_F(OneKey, AnExhaustedAutoincrementIsADuplicate)
{
    Make(2, 0, BtrTypeAutoincrement);
    ASSERT_EQ(Insert(Bytes(int16_t{32766}), '1'), BtrStatusOk);
    ASSERT_EQ(Insert(Bytes(int16_t{0}), '2'), BtrStatusOk);
    EXPECT_EQ(Find(Bytes(int16_t{32767})), '2');
    EXPECT_EQ(Insert(Bytes(int16_t{0}), '3'), BtrStatusDuplicateKey);
}

TEST(Autoincrement, AFailedInsertAndAnAbortTakeNoNumber)
{
    const TempDirectory directory;
    Local me;
    ASSERT_EQ(Create(me, directory / "n.btr",
                     CreateBuffer(8, 2, {{1, 4, 0, BtrTypeAutoincrement}, {5, 4, 0, BtrTypeInteger}}))
                  .Status,
              BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "n.btr").Status, BtrStatusOk);
    const auto insert = [&](int32_t other) {
        return me({.Operation = BtrOpInsert, .Data = Number(0) + Number(other), .Length = 8});
    };
    EXPECT_EQ(insert(1).Data, Number(1) + Number(1));
    const Answer refused = insert(1);
    EXPECT_EQ(refused.Status, BtrStatusDuplicateKey);
    EXPECT_EQ(refused.Data, Number(0) + Number(1));
    EXPECT_EQ(insert(2).Data, Number(2) + Number(2));
    ASSERT_EQ(me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    EXPECT_EQ(insert(3).Data, Number(3) + Number(3));
    ASSERT_EQ(me({.Operation = BtrOpAbort}).Status, BtrStatusOk);
    EXPECT_EQ(insert(4).Data, Number(3) + Number(4));
}

TEST(Autoincrement, ZeroInAnUpdateAsksForANumberToo)
{
    const TempDirectory directory;
    Local me;
    ASSERT_EQ(
        Create(me, directory / "n.btr", CreateBuffer(8, 1, {{1, 4, BtrKeyModifiable, BtrTypeAutoincrement}}))
            .Status,
        BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "n.btr").Status, BtrStatusOk);
    ASSERT_EQ(me({.Operation = BtrOpInsert, .Data = Number(0) + "abcd", .Length = 8}).Status, BtrStatusOk);
    ASSERT_EQ(me({.Operation = BtrOpInsert, .Data = Number(0) + "efgh", .Length = 8}).Status, BtrStatusOk);
    ASSERT_EQ(me({.Operation = BtrOpGetFirst, .Length = 8}).Data, Number(1) + "abcd");
    const Answer updated = me({.Operation = BtrOpUpdate, .Data = Number(0) + "ABCD", .Length = 8});
    EXPECT_EQ(updated.Status, BtrStatusOk);
    EXPECT_EQ(updated.Data, Number(3) + "ABCD");
    EXPECT_EQ(updated.Key.substr(0, 4), Number(3));
}

// ---- Nulls ----

// Gives the first record along the key another value.
void ChangeFirst(OneKey &test, const std::string &key)
{
    const Answer first = test.Me({.Operation = BtrOpGetFirst, .Length = 32});
    ASSERT_EQ(first.Status, BtrStatusOk);
    std::string record = first.Data;
    record.replace(0, key.size(), key);
    ASSERT_EQ(test.Me({.Operation = BtrOpUpdate, .Data = record, .Length = 32}).Status, BtrStatusOk);
}

TEST_F(OneKey, DuplicatesComeInTheOrderInWhichTheyJoinedTheirGroup)
{
    Make(4, BtrKeyDuplicates | BtrKeyModifiable, BtrTypeString);
    for (const auto &[key, name] : {std::pair{"x", 'a'}, {"x", 'b'}, {"y", 'c'}, {"x", 'd'}}) {
        ASSERT_EQ(Insert(key, name), BtrStatusOk);
    }
    EXPECT_EQ(Order(), "abdc");
    ChangeFirst(*this, "y");
    EXPECT_EQ(Order(), "bdca");
}

TEST_F(OneKey, RepeatingDuplicatesComeInTheOrderOfTheirRecords)
{
    Make(4, BtrKeyDuplicates | BtrKeyModifiable | BtrKeyRepeating, BtrTypeString);
    for (const auto &[key, name] : {std::pair{"x", 'a'}, {"x", 'b'}, {"y", 'c'}, {"x", 'd'}}) {
        ASSERT_EQ(Insert(key, name), BtrStatusOk);
    }
    EXPECT_EQ(Order(), "abdc");
    ChangeFirst(*this, "y");
    EXPECT_EQ(Order(), "bdac");
    // The position follows the record to its place in the middle of the group.
    ChangeFirst(*this, "y");
    EXPECT_EQ(Me({.Operation = BtrOpGetNext, .Length = 32}).Data[31], 'c');
    EXPECT_EQ(Order(), "dabc");
    const auto client = [this](const Request &request) { return Me(request); };
    EXPECT_EQ(Audit(client, Directory / "one.btr").Complaint, "") << "the number of values too";
    // A place that was taken in a transaction is given up with it.
    ASSERT_EQ(Me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    ASSERT_EQ(Me({.Operation = BtrOpInsert, .Data = Padded("x", 32), .Length = 32}).Status, BtrStatusOk);
    ASSERT_EQ(Me({.Operation = BtrOpAbort}).Status, BtrStatusOk);
    ASSERT_EQ(Insert("x", 'e'), BtrStatusOk);
    EXPECT_EQ(Me({.Operation = BtrOpGetNext, .Length = 32}).Data[31], 'e');
    EXPECT_EQ(Order(), "deabc");
}

TEST_F(OneKey, ARecordWhoseKeyIsNullIsNotInTheIndex)
{
    Make(3, BtrKeyDuplicates | BtrKeyModifiable | BtrKeyNullAll, BtrTypeString, ' ');
    ASSERT_EQ(Insert("   ", '1'), BtrStatusOk);
    ASSERT_EQ(Insert("  a", '2'), BtrStatusOk);
    EXPECT_EQ(Order(), "2");
    EXPECT_EQ(Find("   "), '-');
    EXPECT_EQ(CountRecords(Me), 2);
    // By step it is reached all the same, but not under the key.
    ASSERT_EQ(Me({.Operation = BtrOpStepFirst, .Length = 32}).Data[31], '1');
    const Answer position = Me({.Operation = BtrOpGetPosition, .Length = 4});
    EXPECT_EQ(Me({.Operation = BtrOpGetDirect, .Data = position.Data, .Length = 32, .KeyNumber = 0}).Status,
              BtrStatusNotInIndex);
    EXPECT_EQ(
        Me({.Operation = BtrOpGetDirect, .Data = position.Data, .Length = 32, .KeyNumber = -1}).Data[31],
        '1');
    // It joins the index by an update, and leaves it so.
    ASSERT_EQ(
        Me({.Operation = BtrOpUpdate, .Data = Padded("abc", 31) + "1", .Length = 32, .KeyNumber = -1}).Status,
        BtrStatusOk);
    EXPECT_EQ(Order(), "21");
    ASSERT_EQ(Find("abc"), '1');
    ASSERT_EQ(
        Me({.Operation = BtrOpUpdate, .Data = Padded("   ", 31) + "1", .Length = 32, .KeyNumber = -1}).Status,
        BtrStatusOk);
    EXPECT_EQ(Order(), "2");
}

struct TwoSegments : OneKey {
    void MakeNull(unsigned flag)
    {
        const std::string path = Directory / "two.btr";
        const unsigned flags = BtrKeyDuplicates | flag;
        ASSERT_EQ(Create(Me, path,
                         CreateBuffer(32, 1,
                                      {{1, 1, flags | BtrKeySegmented, BtrTypeString, '-'},
                                       {2, 2, flags, BtrTypeInteger, 0}}))
                      .Status,
                  BtrStatusOk);
        ASSERT_EQ(Open(Me, path).Status, BtrStatusOk);
        ASSERT_EQ(Insert(std::string("-\0\0", 3), '1'), BtrStatusOk);
        ASSERT_EQ(Insert(std::string("-\1\0", 3), '2'), BtrStatusOk);
        ASSERT_EQ(Insert(std::string("a\0\0", 3), '3'), BtrStatusOk);
        ASSERT_EQ(Insert(std::string("a\1\0", 3), '4'), BtrStatusOk);
    }
};

TEST_F(TwoSegments, ANullKeyNeedsEverySegmentToBeNull)
{
    MakeNull(BtrKeyNullAll);
    EXPECT_EQ(Order(), "234");
}

TEST_F(TwoSegments, AManualKeyNeedsOneSegmentToBeNull)
{
    MakeNull(BtrKeyNullAny);
    EXPECT_EQ(Order(), "4");
}

TEST_F(OneKey, NullValuesMayRepeatInAUniqueKey)
{
    Make(2, BtrKeyNullAll, BtrTypeString);
    EXPECT_EQ(Insert("", '1'), BtrStatusOk);
    EXPECT_EQ(Insert("", '2'), BtrStatusOk);
    EXPECT_EQ(Insert("a", '3'), BtrStatusOk);
    EXPECT_EQ(Insert("a", '4'), BtrStatusDuplicateKey);
    EXPECT_EQ(CountRecords(Me), 3);
}

} // namespace
