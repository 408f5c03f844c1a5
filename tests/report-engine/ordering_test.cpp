// Records that come back in the order of their keys, however many there are.
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <sys/resource.h>
#include <vector>

#include "report-engine/fields.h"
#include "report-engine/ordering.h"

using namespace rs;

namespace {

struct OrderingTest : testing::Test {
    Ordering ordering = {};
    void SetUp() override { InitOrdering(ordering); }
    void TearDown() override { FreeOrdering(ordering); }
};

// Sorts `count` records of a size with keys below `keys`, and looks at what comes back.
void SortsRandomKeys(Ordering &ordering, size_t count, size_t recordSize, uint32_t keys)
{
    constexpr unsigned seed = 19980331;
    std::mt19937 random(seed);
    StartRun(ordering, 4, recordSize);
    std::vector<std::pair<uint32_t, uint32_t>> expected;
    std::vector<char> record(recordSize);
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t key = static_cast<uint32_t>(random()) % keys;
        expected.emplace_back(key, i);
        const char bytes[4] = {static_cast<char>(key >> 24), static_cast<char>(key >> 16),
                               static_cast<char>(key >> 8), static_cast<char>(key)};
        std::memcpy(record.data(), &i, sizeof i);
        ASSERT_TRUE(AddToRun(ordering, bytes, record.data()));
    }
    std::stable_sort(expected.begin(), expected.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    ASSERT_TRUE(EndRun(ordering));
    for (const auto &[key, number] : expected) {
        const char *next = NextOfRun(ordering);
        ASSERT_NE(next, nullptr);
        uint32_t found = 0;
        std::memcpy(&found, next, sizeof found);
        ASSERT_EQ(found, number) << "key " << key << ", seed " << seed;
    }
    EXPECT_EQ(NextOfRun(ordering), nullptr);
    EXPECT_EQ(ordering.Error, 0);
}

} // namespace

TEST_F(OrderingTest, ComesBackInOrderAndEqualKeysAsTheyCame)
{
    SortsRandomKeys(ordering, 1000, 110, 50);
    SortsRandomKeys(ordering, 0, 110, 50);
    SortsRandomKeys(ordering, 1, 110, 50);
}

TEST_F(OrderingTest, ComesBackInOrderWhenMemoryCannotHoldTheRun)
{
    SortsRandomKeys(ordering, 60'000, 110, 1000);      // three stretches
    SortsRandomKeys(ordering, 20'000, 4000, 1u << 31); // more than are merged at once
    SortsRandomKeys(ordering, 100, 20, 10);
}

TEST_F(OrderingTest, TellsOfAFullDisk)
{
    signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small = {1'000'000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    StartRun(ordering, 1, 1000);
    const std::vector<char> record(1000);
    bool isTaken = true;
    for (int i = 0; i < 5000 && isTaken; ++i) {
        isTaken = AddToRun(ordering, "x", record.data());
    }
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_FALSE(isTaken);
    EXPECT_EQ(ordering.Error, EFBIG);
}

TEST(Keys, CompareAsTheirFieldsDo)
{
    const auto key = [](const char *bytes, Field field, bool isFalling = false) {
        char out[64] = {};
        WriteKey(field, bytes, isFalling, out);
        return std::string(out, KeyWidth(field));
    };
    const Field date = {0, 7, FieldForm::date};
    EXPECT_LT(key("", date), key("010118", date));
    EXPECT_LT(key("311217", date), key("010118", date)) << "31.12.1997 before 01.01.1998";
    EXPECT_LT(key("280218", date), key("010318", date));
    EXPECT_LT(key("311299", date), key("0101A0", date));
    EXPECT_GT(key("280218", date, true), key("010318", date, true));
    const Field amount = {0, 13, FieldForm::amount};
    EXPECT_LT(key("000000001-00", amount), key("000000000-01", amount));
    EXPECT_LT(key("000000000-01", amount), key("", amount));
    EXPECT_LT(key("000000009,99", amount), key("000000010,00", amount));
    const Field rate = {0, 6, FieldForm::rate};
    EXPECT_LT(key("", rate), key("00,00", rate));
    EXPECT_LT(key("07,00", rate), key("16,00", rate));
    const Field text = {0, 8, FieldForm::text};
    constexpr char one[] = {'1', '2', 0, 'z', 'z'};
    constexpr char other[] = {'1', '2', 0, 'a', 'a'};
    EXPECT_EQ(key(one, text), key(other, text)) << "what lies behind the end of a text counts nothing";
    EXPECT_LT(key("1200", text), key("12001", text));
    const auto number = [&](int32_t value) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        return key(bytes, {0, 4, FieldForm::i32});
    };
    EXPECT_LT(number(-1), number(0));
    EXPECT_LT(number(255), number(256));
    EXPECT_LT(number(INT32_MIN), number(INT32_MAX));
}
