#include "src/values/sums.h"

#include "src/values/account_numbers.h"
#include "src/values/amounts.h"

#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

using namespace vark;

namespace {

constexpr char greatest[] = "999999999,99";
const char *const minus = "000000002-00";

void Set(AmountText &amount, const std::string &text)
{
    std::memset(amount, 0, sizeof amount);
    text.copy(amount, sizeof amount - 1);
}

SollHaben Pair(const std::string &soll, const std::string &haben)
{
    SollHaben pair;
    Set(pair.Soll, soll);
    Set(pair.Haben, haben);
    return pair;
}

std::string Text(const SollHaben &pair) { return std::string(pair.Soll) + " " + pair.Haben; }

// Month m has m on the Soll side and 10 m on the Haben side, and m postings.
AccountSums TwelveMonths()
{
    AccountSums sums{};
    for (int month = 1; month <= 12; ++month) {
        char digits[13];
        std::snprintf(digits, sizeof digits, "%09d,00", month);
        Set(sums.Monat[month - 1].Soll, digits);
        std::snprintf(digits, sizeof digits, "%09d,00", 10 * month);
        Set(sums.Monat[month - 1].Haben, digits);
        sums.Buchungszahl[month - 1] = static_cast<int16_t>(month);
    }
    return sums;
}

} // namespace

TEST(Sums, AnEmptyAmountGoesOutAsZero)
{
    SollHaben out = Pair("999999999,99", "999999999,99");
    CopyAmounts(out, Pair("", "000000001-00"));
    EXPECT_EQ("000000000,00 000000001-00", Text(out));
}

TEST(Sums, ANegativeZeroIsNoAmount)
{
    EXPECT_FALSE(HasAmount(Pair("", "000000000-00")));
    EXPECT_TRUE(HasAmount(Pair("", "000000000,01")));
    EXPECT_TRUE(HasAmount(Pair("000000000-01", "")));
}

TEST(Sums, PairsAreAddedSideBySide)
{
    SollHaben total = Pair("000000001,00", "");
    EXPECT_TRUE(AddPair(total, Pair("000000002,50", "000000003,25")));
    EXPECT_EQ("000000003,50 000000003,25", Text(total));
    total = Pair(greatest, "");
    EXPECT_FALSE(AddPair(total, Pair("000000000,01", "")));
    total = Pair("", greatest);
    EXPECT_FALSE(AddPair(total, Pair("", "000000000,01")));
}

TEST(Sums, ABalanceIsSollLessHabenOrItsOpposite)
{
    AmountText balance;
    Set(balance, "");
    EXPECT_TRUE(AddBalance(balance, Pair("000000001,00", "000000003,00")));
    EXPECT_STREQ(minus, balance);
    EXPECT_TRUE(DeductBalance(balance, Pair("000000001,00", "000000003,00")));
    EXPECT_TRUE(IsZeroAmount(balance));
    Set(balance, greatest);
    EXPECT_FALSE(AddBalance(balance, Pair("000000000,01", "000000000,01"))) << "on the way, too";
    Set(balance, greatest);
    EXPECT_FALSE(DeductBalance(balance, Pair("", "000000000,01")));
}

TEST(Sums, BothMonthsBelongToTheRange)
{
    const AccountSums sums = TwelveMonths();
    SollHaben pair = Pair("", "");
    EXPECT_TRUE(SumMonths(pair, sums, 2, 4));
    EXPECT_EQ("000000009,00 000000090,00", Text(pair));
    pair = Pair("000000001,00", "");
    EXPECT_TRUE(SumMonths(pair, sums, 1, 12));
    EXPECT_EQ("000000079,00 000000780,00", Text(pair));
    AmountText amount;
    Set(amount, "");
    EXPECT_TRUE(SumMonthsSoll(amount, sums, 12, 12));
    EXPECT_STREQ("000000012,00", amount);
    EXPECT_TRUE(SumMonthsHaben(amount, sums, 1, 2));
    EXPECT_STREQ("000000042,00", amount);
    Set(amount, "");
    EXPECT_TRUE(AddMonthBalances(amount, sums, 1, 3));
    EXPECT_STREQ("000000054-00", amount);
    Set(amount, "");
    EXPECT_TRUE(DeductMonthBalances(amount, sums, 1, 3));
    EXPECT_STREQ("000000054,00", amount);
    EXPECT_EQ(78, CountPostings(sums, 1, 12));
    EXPECT_EQ(5, CountPostings(sums, 2, 3));
}

TEST(Sums, MonthsThatNoRecordHasAreRefused)
{
    const AccountSums sums = TwelveMonths();
    SollHaben pair = Pair("", "");
    EXPECT_FALSE(SumMonths(pair, sums, 0, 1));
    EXPECT_FALSE(SumMonths(pair, sums, 12, 13));
    EXPECT_TRUE(SumMonths(pair, sums, 1, 0)) << "nothing to add";
    EXPECT_EQ(" ", Text(pair));
    AmountText total;
    Set(total, "");
    const AmountText months[12] = {};
    EXPECT_FALSE(SumMonths(total, months, 0, 0));
    EXPECT_EQ(0, CountPostings(sums, 0, 3));
}

TEST(Sums, AnOverflowIsTold)
{
    AccountSums sums{};
    Set(sums.Monat[0].Soll, greatest);
    Set(sums.Monat[1].Soll, "000000000,01");
    SollHaben pair = Pair("", "");
    EXPECT_TRUE(SumMonths(pair, sums, 1, 1));
    EXPECT_FALSE(SumMonths(pair, sums, 2, 2));
    AmountText total;
    Set(total, "");
    EXPECT_FALSE(SumMonthsSoll(total, sums, 1, 2));
    Set(total, "");
    EXPECT_FALSE(AddMonthBalances(total, sums, 1, 2));
    AmountText months[12] = {};
    Set(months[4], greatest);
    Set(months[5], greatest);
    Set(total, "");
    EXPECT_FALSE(SumMonths(total, months, 1, 12));
}

TEST(AccountNumbers, HaveAFormForKeysAndOneForPeople)
{
    AccountNumber key;
    AccountNumber plain;
    JustifyNumber(key, "1200");
    EXPECT_STREQ("   1200", key);
    std::memset(plain, '9', sizeof plain);
    StripNumber(plain, key);
    EXPECT_EQ(std::string("1200\0\0\0\0", 8), std::string(plain, sizeof plain));
    JustifyLimit(key, "");
    EXPECT_STREQ("", key);
    JustifyNumber(key, "");
    EXPECT_STREQ("       ", key);
    JustifyNumber(key, "123456789");
    EXPECT_STREQ("1234567", key);
}

TEST(AccountNumbers, LieBeforeOrBehindALimitByTheirBytes)
{
    constexpr AccountNumber open = "";
    EXPECT_FALSE(IsBehindLimit("9999999", open));
    EXPECT_TRUE(IsBehindLimit("  70001", "  70000"));
    EXPECT_FALSE(IsBehindLimit("  70000", "  70000"));
    EXPECT_FALSE(IsBehindLimit("   9999", "  70000")) << "shorter numbers come first";
    EXPECT_TRUE(IsBeforeLimit("   9999", "  70000"));
    EXPECT_FALSE(IsBeforeLimit("  70000", "  70000"));
    EXPECT_FALSE(IsBeforeLimit("      1", open));
}
