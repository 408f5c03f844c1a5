// Random amounts against arithmetic that is done in another way: digit by digit, in whole numbers, and in
// floating point that is worked out in integers.
#include "src/values/amount_texts.h"
#include "src/values/amounts.h"
#include "tests/values/exact_double.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

namespace {

using namespace vark;

constexpr int64_t limit = 100'000'000'000;

struct Amount {
    AmountText Text{};
    int64_t Pfennig = 0; // with its sign
    bool IsNegative = false;
};

// Written with the standard library, not with the code under test.
Amount MakeAmount(int64_t magnitude, bool isNegative)
{
    Amount amount;
    std::string digits = std::to_string(magnitude);
    digits.insert(0, 11 - digits.size(), '0');
    digits.insert(9, isNegative ? "-" : ",");
    digits.copy(amount.Text, 12);
    amount.Pfennig = isNegative ? -magnitude : magnitude;
    amount.IsNegative = isNegative;
    return amount;
}

// Small and large amounts, zeros, equal pairs and amounts that lie close together all come up often.
Amount RandomAmount(std::mt19937_64 &random)
{
    static constexpr int64_t ranges[] = {1, 10, 1000, 1'000'000, 1'000'000'000, limit};
    return MakeAmount(static_cast<int64_t>(random() % static_cast<uint64_t>(ranges[random() % 6])),
                      random() % 2 == 0);
}

Amount RandomPartner(std::mt19937_64 &random, const Amount &a)
{
    switch (random() % 5) {
    case 0: return MakeAmount(std::abs(a.Pfennig), random() % 2 == 0);
    case 1: return MakeAmount(limit - 1 - std::abs(a.Pfennig), random() % 2 == 0);
    case 2: return MakeAmount((limit - std::abs(a.Pfennig)) % limit, random() % 2 == 0);
    default: return RandomAmount(random);
    }
}

std::string Expected(int64_t magnitude, bool isNegative) { return MakeAmount(magnitude, isNegative).Text; }

// The sum of the digits from the right with carry; true if none is left.
bool AddDigits(char *out, const char *a, const char *b)
{
    int carry = 0;
    for (int i = 11; i >= 0; --i) {
        if (i == 9) continue;
        const int sum = a[i] - '0' + b[i] - '0' + carry;
        carry = sum / 10;
        out[i] = static_cast<char>('0' + sum % 10);
    }
    return carry == 0;
}

void SubtractDigits(char *out, const char *a, const char *b)
{
    int borrow = 0;
    for (int i = 11; i >= 0; --i) {
        if (i == 9) continue;
        const int difference = a[i] - b[i] - borrow;
        borrow = difference < 0 ? 1 : 0;
        out[i] = static_cast<char>('0' + difference + 10 * borrow);
    }
    ASSERT_EQ(0, borrow);
}

class Amounts : public testing::Test {
protected:
    std::mt19937_64 Random{4711};
};

} // namespace

TEST_F(Amounts, AMillionSumsAgreeWithWholeNumbers)
{
    int overflows = 0;
    int carries = 0;
    for (int i = 0; i < 1'000'000; ++i) {
        const Amount a = RandomAmount(Random);
        const Amount b = RandomPartner(Random, a);
        AmountText out;
        const bool fits = AddAmounts(out, a.Text, b.Text);
        const int64_t sum = a.Pfennig + b.Pfennig;
        const int64_t magnitude = std::abs(sum);
        const bool isNegative = sum < 0 || (a.IsNegative && b.IsNegative);
        ASSERT_EQ(magnitude < limit, fits) << a.Text << " + " << b.Text;
        ASSERT_EQ(Expected(magnitude % limit, isNegative), out) << a.Text << " + " << b.Text;
        AmountText total;
        memcpy(total, a.Text, sizeof total);
        ASSERT_EQ(fits, AccumulateAmount(total, b.Text));
        ASSERT_STREQ(fits ? out : a.Text, total);
        overflows += fits ? 0 : 1;

        if (a.IsNegative == b.IsNegative) {
            AmountText digits = {};
            digits[9] = a.IsNegative ? '-' : ',';
            ASSERT_EQ(fits, AddDigits(digits, a.Text, b.Text));
            ASSERT_STREQ(digits, out);
            carries += a.Text[11] - '0' + b.Text[11] - '0' > 9 ? 1 : 0;
        }
    }
    EXPECT_GT(overflows, 10'000);
    EXPECT_GT(carries, 100'000);
}

TEST_F(Amounts, AMillionDifferencesAgreeWithWholeNumbers)
{
    int swaps = 0;
    int zeros = 0;
    for (int i = 0; i < 1'000'000; ++i) {
        const Amount a = RandomAmount(Random);
        const Amount b = RandomPartner(Random, a);
        AmountText raw;
        const int code = SubtractRaw(raw, a.Text, b.Text);
        AmountText out;
        const bool isNegative = SubtractAmounts(out, a.Text, b.Text);
        const int64_t difference = a.Pfennig - b.Pfennig;
        const int64_t magnitude = std::abs(difference);
        // Zero differences: negative from a negative a, whatever b's mark.
        const bool expectNegative = difference < 0 || (difference == 0 && a.IsNegative);
        ASSERT_EQ(expectNegative, isNegative) << a.Text << " - " << b.Text;
        ASSERT_EQ(Expected(magnitude % limit, expectNegative), out) << a.Text << " - " << b.Text;
        ASSERT_EQ(expectNegative ? 72 : 83, code) << a.Text << " - " << b.Text;
        zeros += difference == 0 ? 1 : 0;
        // The raw mark is that of a; only the code tells a swap.
        ASSERT_EQ(Expected(magnitude % limit, a.IsNegative), raw) << a.Text << " - " << b.Text;

        AmountText total;
        memcpy(total, a.Text, sizeof total);
        ASSERT_EQ(magnitude < limit, DeductAmount(total, b.Text)) << a.Text << " - " << b.Text;
        ASSERT_STREQ(magnitude < limit ? out : a.Text, total);

        if (a.IsNegative == b.IsNegative) {
            const bool isSwapped = strcmp(a.Text, b.Text) < 0;
            AmountText digits = {};
            digits[9] = a.IsNegative ? '-' : ',';
            SubtractDigits(digits, isSwapped ? b.Text : a.Text, isSwapped ? a.Text : b.Text);
            ASSERT_STREQ(digits, raw);
            swaps += isSwapped ? 1 : 0;
        }
    }
    EXPECT_GT(swaps, 100'000);
    EXPECT_GT(zeros, 10'000);
}

TEST_F(Amounts, DisplayFormsReadBackAsTheyWere)
{
    for (int i = 0; i < 200'000; ++i) {
        const Amount a = RandomAmount(Random);
        AmountText text;
        memcpy(text, a.Text, sizeof text);
        const bool isZero = a.Pfennig == 0;
        ASSERT_EQ(isZero, IsZeroAmount(a.Text));
        for (const int form : {2, 3}) {
            FormattedAmount out;
            FormatAmount(form, text, out);
            char input[32] = {};
            memcpy(input, out, sizeof out);
            ASSERT_TRUE(NormalizeAmountInput(input, sizeof input, amountWidth, true)) << out;
            ASSERT_EQ(Expected(std::abs(a.Pfennig), a.IsNegative && !isZero), input) << out;
        }
        FormattedAmount fixed;
        FormatAmount(1, text, fixed);
        ASSERT_EQ(isZero ? '0' : a.IsNegative ? '-' : '+', fixed[0]);
        ASSERT_EQ(Expected(std::abs(a.Pfennig), false), fixed + 1);
    }
}

TEST_F(Amounts, PercentagesAgreeWithFloatingPointDoneInIntegers)
{
    const exact::Double hundredth = exact::Ratio(1, 100);
    int ties = 0;
    for (int i = 0; i < 400'000; ++i) {
        const int64_t magnitude = std::abs(RandomAmount(Random).Pfennig);
        const auto rate = Random() % 10'000;
        const Amount amount = MakeAmount(magnitude, Random() % 2 == 0);
        const std::string digits = std::to_string(10'000 + rate);
        RateText rateText = {digits[1], digits[2], ',', digits[3], digits[4], 0};

        const exact::Double product = exact::Multiply(exact::Multiply(exact::Ratio(rate, 100), hundredth),
                                                      exact::Ratio(static_cast<uint64_t>(magnitude), 100));
        // Both products are judged as they come out; 0.01 is the smallest that is not taken for zero.
        const bool isBelow =
            product.Mantissa == 0 || product.Exponent < hundredth.Exponent ||
            (product.Exponent == hundredth.Exponent && product.Mantissa < hundredth.Mantissa);
        const int64_t expected = isBelow ? 0 : exact::RoundedDecimals(product, 2);
        AmountText out;
        PercentOfAmount(out, amount.Text, rateText);
        ASSERT_EQ(Expected(expected, amount.IsNegative), out) << amount.Text << " " << rateText;
        ties += static_cast<int64_t>(rate) * magnitude % 10'000 == 5'000 ? 1 : 0;
    }
    EXPECT_GT(ties, 10) << "products that end in half a Pfennig";
}

TEST_F(Amounts, NetAmountsAgreeWithFloatingPointDoneInIntegers)
{
    const exact::Double hundred = exact::Ratio(100, 1);
    for (int i = 0; i < 400'000; ++i) {
        const int64_t magnitude = std::abs(RandomAmount(Random).Pfennig);
        const auto rate = Random() % 10'000;
        const Amount gross = MakeAmount(magnitude, Random() % 2 == 0);
        const std::string digits = std::to_string(10'000 + rate);
        RateText rateText = {digits[1], digits[2], ',', digits[3], digits[4], 0};

        const exact::Double factor = exact::Divide(hundred, exact::Add(exact::Ratio(rate, 100), hundred));
        const exact::Double value =
            exact::Multiply(factor, exact::Ratio(static_cast<uint64_t>(magnitude), 100));
        const int64_t fourDecimals = exact::RoundedDecimals(value, 4);
        const int64_t expected = fourDecimals / 100 + (fourDecimals / 10 % 10 >= 5 ? 1 : 0);
        AmountText out;
        ASSERT_TRUE(NetFromGross(out, gross.Text, rateText));
        ASSERT_EQ(Expected(expected, gross.IsNegative), out) << gross.Text << " " << rateText;
    }
}

TEST_F(Amounts, RoundingAgreesWithSeventeenDigitsDoneInIntegers)
{
    for (int i = 0; i < 400'000; ++i) {
        const uint64_t numerator = Random() % (uint64_t{1} << (10 + Random() % 34)) + 1;
        const uint64_t denominator = uint64_t{1} << (Random() % 10);
        const double value = static_cast<double>(numerator) / static_cast<double>(denominator) / 8.0;
        const exact::Double model = exact::Ratio(numerator, denominator * 8);
        for (const int decimals : {2, 4}) {
            if (value >= 1e9 || value < 0.001) continue;
            ASSERT_EQ(exact::RoundedDecimals(model, decimals), RoundToDecimals(value, decimals)) << value;
        }
    }
}
