#include "src/values/amount_texts.h"
#include "src/values/amounts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>

namespace {

using namespace vark;

// A field with its width, as a value that tests can pass around.
struct Amount {
    AmountText Text{};

    Amount() = default;
    explicit Amount(const std::string &text) { text.copy(Text, sizeof Text); }
    std::string Str() const { return {Text, strnlen(Text, sizeof Text)}; }
};

struct Rate {
    RateText Text{};

    Rate() = default;
    explicit Rate(const std::string &text) { text.copy(Text, sizeof Text); }
};

std::string Sum(const std::string &a, const std::string &b)
{
    Amount out;
    const bool fits = AddAmounts(out.Text, Amount(a).Text, Amount(b).Text);
    return out.Str() + (fits ? "" : " overflow");
}

std::string Difference(const std::string &a, const std::string &b)
{
    Amount out;
    const bool isNegative = SubtractAmounts(out.Text, Amount(a).Text, Amount(b).Text);
    return out.Str() + (isNegative ? " negative" : "");
}

std::string RawDifference(const std::string &a, const std::string &b)
{
    Amount out;
    const int code = SubtractRaw(out.Text, Amount(a).Text, Amount(b).Text);
    return out.Str() + " " + std::to_string(code);
}

std::string Formatted(int form, const std::string &text)
{
    Amount amount(text);
    FormattedAmount out;
    FormatAmount(form, amount.Text, out);
    return out;
}

std::string FormattedRate(int form, const std::string &text)
{
    Rate rate(text);
    FormattedAmount out;
    FormatAmount(form, rate.Text, out);
    return out;
}

std::string Input(const std::string &text, int width, bool isSigned)
{
    char buffer[40] = {};
    text.copy(buffer, sizeof buffer - 1);
    if (!NormalizeAmountInput(buffer, sizeof buffer, width, isSigned)) {
        EXPECT_EQ(text, buffer) << "a refused text stays";
        return "refused";
    }
    return buffer;
}

std::string Digits(const std::string &text, int integerDigits, int decimals, bool isStrict, bool isSigned)
{
    char buffer[40] = {};
    text.copy(buffer, sizeof buffer - 1);
    const bool isWhole = NormalizeDigits(buffer, sizeof buffer, integerDigits, decimals, isStrict, isSigned);
    return std::string(buffer) + (isWhole ? "" : " refused");
}

std::string Percent(const std::string &amount, const std::string &rate)
{
    Amount out;
    PercentOfAmount(out.Text, Amount(amount).Text, Rate(rate).Text);
    return out.Str();
}

std::string Net(const std::string &gross, const std::string &rate)
{
    Amount out;
    const bool isRead = NetFromGross(out.Text, Amount(gross).Text, Rate(rate).Text);
    return out.Str() + (isRead ? "" : " failed");
}

} // namespace

TEST(AddAmounts, AddsPfennigAndCarries)
{
    EXPECT_EQ("000000003,33", Sum("000000001,11", "000000002,22"));
    EXPECT_EQ("000000001,00", Sum("000000000,99", "000000000,01"));
    EXPECT_EQ("001000000,00", Sum("000999999,99", "000000000,01"));
}

TEST(AddAmounts, TwoNegativeAmountsStayNegative)
{
    EXPECT_EQ("000000003-33", Sum("000000001-11", "000000002-22"));
    EXPECT_EQ("000000000-00", Sum("000000000-00", "000000000-00"));
}

TEST(AddAmounts, DifferentSignsGiveTheSignOfTheLarger)
{
    EXPECT_EQ("000000001,11", Sum("000000001-11", "000000002,22"));
    EXPECT_EQ("000000001-11", Sum("000000001,11", "000000002-22"));
    EXPECT_EQ("000000001-11", Sum("000000002-22", "000000001,11"));
    EXPECT_EQ("000000001,11", Sum("000000002,22", "000000001-11"));
}

TEST(AddAmounts, DifferentSignsThatCancelGivePlusZero)
{
    EXPECT_EQ("000000000,00", Sum("000000005-00", "000000005,00"));
    EXPECT_EQ("000000000,00", Sum("000000005,00", "000000005-00"));
    EXPECT_EQ("000000000,00", Sum("000000000-00", "000000000,00"));
}

TEST(AddAmounts, OverflowKeepsTheWrappedDigits)
{
    EXPECT_EQ("000000000,00 overflow", Sum("999999999,99", "000000000,01"));
    EXPECT_EQ("999999999,98 overflow", Sum("999999999,99", "999999999,99"));
    EXPECT_EQ("000000000-00 overflow", Sum("999999999-99", "000000000-01"));
    EXPECT_EQ("999999999,99", Sum("999999999,98", "000000000,01"));
}

TEST(AddAmounts, AnEmptyFieldIsZero)
{
    EXPECT_EQ("000000005,00", Sum("", "000000005,00"));
    EXPECT_EQ("000000005-00", Sum("000000005-00", ""));
    EXPECT_EQ("000000000,00", Sum("", ""));
    // What an older, longer text left behind the NUL does not count, nor does its mark.
    EXPECT_EQ("000000005,00", Sum(std::string("\0"
                                              "00000123-45",
                                              12),
                                  "000000005,00"));
}

TEST(AddAmounts, PlacesWithoutADigitCountAsZero)
{
    EXPECT_EQ("000000015,00", Sum("       10,00", "000000005,00"));
    EXPECT_EQ("000000005,03", Sum("abcdefghi,x3", "000000005,00"));
    EXPECT_EQ("000000006,00", Sum("000000001.00", "000000005,00"));
}

TEST(AddAmounts, TheResultMayLieInAnOperand)
{
    Amount a("000000001,50");
    Amount b("000000002-25");
    AddAmounts(a.Text, a.Text, b.Text);
    EXPECT_EQ("000000000-75", a.Str());
    AddAmounts(b.Text, a.Text, b.Text);
    EXPECT_EQ("000000003-00", b.Str());
    AddAmounts(b.Text, b.Text, b.Text);
    EXPECT_EQ("000000006-00", b.Str());
}

TEST(AccumulateAmount, AddsToTheTotal)
{
    Amount total("000000001,50");
    EXPECT_TRUE(AccumulateAmount(total.Text, Amount("000000002-00").Text));
    EXPECT_EQ("000000000-50", total.Str());
}

TEST(AccumulateAmount, LeavesTheTotalOnOverflow)
{
    Amount total("999999999,99");
    EXPECT_FALSE(AccumulateAmount(total.Text, Amount("000000000,01").Text));
    EXPECT_EQ("999999999,99", total.Str());
}

TEST(AccumulateAmount, AddsATotalToItself)
{
    Amount total("000000001,50");
    EXPECT_TRUE(AccumulateAmount(total.Text, total.Text));
    EXPECT_EQ("000000003,00", total.Str());
}

TEST(DeductAmount, TakesFromTheTotal)
{
    Amount total("000000001,50");
    EXPECT_TRUE(DeductAmount(total.Text, Amount("000000002,00").Text));
    EXPECT_EQ("000000000-50", total.Str());
    EXPECT_TRUE(DeductAmount(total.Text, Amount("000000002,00").Text));
    EXPECT_EQ("000000002-50", total.Str());
    EXPECT_TRUE(DeductAmount(total.Text, total.Text));
    EXPECT_EQ("000000000-00", total.Str());
}

TEST(DeductAmount, LeavesTheTotalOnOverflow)
{
    Amount total("999999999,99");
    EXPECT_FALSE(DeductAmount(total.Text, Amount("000000000-01").Text));
    EXPECT_EQ("999999999,99", total.Str());
    Amount negative("999999999-99");
    EXPECT_FALSE(DeductAmount(negative.Text, Amount("000000000,01").Text));
    EXPECT_EQ("999999999-99", negative.Str());
}

TEST(SubtractRaw, DifferentSignsAddTheAbsoluteValues)
{
    EXPECT_EQ("000000008-00 72", RawDifference("000000005-00", "000000003,00"));
    EXPECT_EQ("000000008,00 83", RawDifference("000000005,00", "000000003-00"));
}

TEST(SubtractRaw, EqualSignsWithoutASwapGiveTheRightMark)
{
    EXPECT_EQ("000000002,00 83", RawDifference("000000005,00", "000000003,00"));
    EXPECT_EQ("000000002-00 72", RawDifference("000000005-00", "000000003-00"));
}

TEST(SubtractRaw, ASwapLeavesTheMarkOfTheOperands)
{
    EXPECT_EQ("000000002,00 72", RawDifference("000000003,00", "000000005,00"));
    EXPECT_EQ("000000002-00 83", RawDifference("000000003-00", "000000005-00"));
}

TEST(SubtractRaw, EqualAmountsCountAsNotSwapped)
{
    EXPECT_EQ("000000000,00 83", RawDifference("000000005,00", "000000005,00"));
    EXPECT_EQ("000000000-00 72", RawDifference("000000005-00", "000000005-00"));
}

TEST(SubtractAmounts, SetsTheMarkOfTheResult)
{
    EXPECT_EQ("000000002,00", Difference("000000005,00", "000000003,00"));
    EXPECT_EQ("000000002-00 negative", Difference("000000003,00", "000000005,00"));
    EXPECT_EQ("000000002-00 negative", Difference("000000005-00", "000000003-00"));
    EXPECT_EQ("000000002,00", Difference("000000003-00", "000000005-00"));
    EXPECT_EQ("000000008,00", Difference("000000005,00", "000000003-00"));
    EXPECT_EQ("000000008-00 negative", Difference("000000005-00", "000000003,00"));
}

TEST(SubtractAmounts, BorrowsThroughTheMark)
{
    EXPECT_EQ("000000099,99", Difference("000000100,00", "000000000,01"));
}

TEST(SubtractAmounts, EqualNegativeAmountsGiveANegativeZero)
{
    EXPECT_EQ("000000000,00", Difference("000000005,00", "000000005,00"));
    EXPECT_EQ("000000000-00 negative", Difference("000000005-00", "000000005-00"));
    EXPECT_EQ("000000000-00 negative", Difference("000000000-00", "000000000,00"));
}

TEST(SubtractAmounts, AnEmptyFieldIsZero)
{
    EXPECT_EQ("000000005-00 negative", Difference("", "000000005,00"));
    EXPECT_EQ("000000005,00", Difference("000000005,00", ""));
}

TEST(SubtractAmounts, TheResultMayLieInAnOperand)
{
    Amount a("000000001,50");
    Amount b("000000002,25");
    SubtractAmounts(b.Text, a.Text, b.Text);
    EXPECT_EQ("000000000-75", b.Str());
}

TEST(IsZeroAmount, NullEmptyAndZeroWhateverTheMark)
{
    EXPECT_TRUE(IsZeroAmount(nullptr));
    EXPECT_TRUE(IsZeroAmount(""));
    EXPECT_TRUE(IsZeroAmount("000000000,00"));
    EXPECT_TRUE(IsZeroAmount("000000000-00"));
    EXPECT_TRUE(IsZeroAmount("00,00"));
    EXPECT_TRUE(IsZeroAmount("00-00"));
}

TEST(IsZeroAmount, EveryDigitPlaceCounts)
{
    for (const int place : {0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 11}) {
        std::string text = "000000000-00";
        text[static_cast<size_t>(place)] = '1';
        EXPECT_FALSE(IsZeroAmount(text.c_str())) << text;
    }
    for (const int place : {0, 1, 3, 4}) {
        std::string text = "00,00";
        text[static_cast<size_t>(place)] = '1';
        EXPECT_FALSE(IsZeroAmount(text.c_str())) << text;
    }
}

TEST(IsZeroAmount, TheMarkIsNoDigitEvenIfItLooksLikeOne)
{
    EXPECT_TRUE(IsZeroAmount("000000000100"));
    EXPECT_TRUE(IsZeroAmount("00100"));
}

TEST(FormatAmount, FormOneIsSignAndFixedText)
{
    EXPECT_EQ("+000001234,50", Formatted(1, "000001234,50"));
    EXPECT_EQ("-000001234,50", Formatted(1, "000001234-50"));
    EXPECT_EQ("0000000000,00", Formatted(1, "000000000,00"));
    EXPECT_EQ("+16,00", FormattedRate(1, "16,00"));
    EXPECT_EQ("-16,00", FormattedRate(1, "16-00"));
    EXPECT_EQ("000,00", FormattedRate(1, "00,00"));
}

TEST(FormatAmount, FormTwoIsPlain)
{
    EXPECT_EQ("1234,50", Formatted(2, "000001234,50"));
    EXPECT_EQ("-1234,50", Formatted(2, "000001234-50"));
    EXPECT_EQ("0,50", Formatted(2, "000000000,50"));
    EXPECT_EQ("-999999999,99", Formatted(2, "999999999-99"));
    EXPECT_EQ("7,00", FormattedRate(2, "07,00"));
    EXPECT_EQ("0,50", FormattedRate(2, "00,50"));
}

TEST(FormatAmount, FormThreeIsGrouped)
{
    EXPECT_EQ("1.234.567,89", Formatted(3, "001234567,89"));
    EXPECT_EQ("-999.999.999,99", Formatted(3, "999999999-99"));
    EXPECT_EQ("16,00", FormattedRate(3, "16,00"));
    EXPECT_EQ("-7,00", FormattedRate(3, "07-00"));
}

TEST(FormatAmount, EmptyAndZeroShowAsZero)
{
    for (const char *text : {"", "000000000,00", "000000000-00"}) {
        EXPECT_EQ("0000000000,00", Formatted(1, text));
        EXPECT_EQ("0,00", Formatted(2, text));
        EXPECT_EQ("0,00", Formatted(3, text));
    }
    for (const char *text : {"", "00,00", "00-00"}) {
        EXPECT_EQ("000,00", FormattedRate(1, text));
        EXPECT_EQ("0,00", FormattedRate(2, text));
        EXPECT_EQ("0,00", FormattedRate(3, text));
    }
}

TEST(FormatAmount, ReplacesAnEmptyOrZeroTextInPlace)
{
    FormattedAmount out;
    Amount empty;
    FormatAmount(2, empty.Text, out);
    EXPECT_EQ("000000000,00", empty.Str());
    Amount negativeZero("000000000-00");
    FormatAmount(2, negativeZero.Text, out);
    EXPECT_EQ("000000000,00", negativeZero.Str());
    Amount amount("000000001-00");
    FormatAmount(2, amount.Text, out);
    EXPECT_EQ("000000001-00", amount.Str());
    Rate rate;
    FormatAmount(1, rate.Text, out);
    EXPECT_STREQ("00,00", rate.Text);
}

TEST(FormatAmount, AnUnknownFormGivesAnEmptyText)
{
    EXPECT_EQ("", Formatted(0, "000001234,50"));
    EXPECT_EQ("", Formatted(4, "000001234,50"));
    EXPECT_EQ("", Formatted(-1, "000001234,50"));
}

TEST(GroupAmount, PutsADotAfterEveryThirdDigit)
{
    const auto grouped = [](const std::string &text) {
        FormattedAmount field = {};
        text.copy(field, sizeof field - 1);
        GroupAmount(field);
        return std::string(field);
    };
    EXPECT_EQ("1.234.567,89", grouped("001234567,89"));
    EXPECT_EQ("0,00", grouped("000000000,00"));
    EXPECT_EQ("0,05", grouped("000000000,05"));
    EXPECT_EQ("999,00", grouped("000000999,00"));
    EXPECT_EQ("1.000,00", grouped("000001000,00"));
    EXPECT_EQ("100.000,00", grouped("000100000,00"));
    EXPECT_EQ("-12,30", grouped("000000012-30"));
    EXPECT_EQ("-0,00", grouped("000000000-00"));
    EXPECT_EQ("0,00", grouped(""));
}

TEST(PadAmountColumn, NarrowDotsTakeFewerBlanks)
{
    const auto padded = [](const std::string &text) {
        AmountColumn field = {};
        text.copy(field, sizeof field - 1);
        PadAmountColumn(field);
        return std::string(field);
    };
    // n = 4: width 0 - 4 + 28; n = 7: 1 - 7 + 28; n = 8: 1 - 8 + 28; n = 14: 2 - 14 + 28
    EXPECT_EQ(std::string(20, ' ') + "0,00", padded("000000000,00"));
    EXPECT_EQ(std::string(16, ' ') + "123,45", padded("000000123,45"));
    EXPECT_EQ(std::string(13, ' ') + "1.234,50", padded("000001234,50"));
    EXPECT_EQ(std::string(2, ' ') + "999.999.999,99", padded("999999999,99"));
    // The minus sign hangs out to the left: the width is that of the same amount without it.
    EXPECT_EQ(std::string(1, ' ') + "-999.999.999,99", padded("999999999-99"));
    EXPECT_EQ(std::string(19, ' ') + "-0,50", padded("000000000-50"));
}

TEST(NormalizeAmountInput, AcceptsWhatPeopleType)
{
    EXPECT_EQ("000001234,50", Input("1.234,5", 12, false));
    EXPECT_EQ("000000007,00", Input("7", 12, false));
    EXPECT_EQ("000000007,00", Input("7,", 12, false));
    EXPECT_EQ("000000000,50", Input(",5", 12, false));
    EXPECT_EQ("000000000,50", Input("0,5", 12, false));
    EXPECT_EQ("000000012,34", Input("  0012,34", 12, false));
    EXPECT_EQ("001000000,00", Input("1 000 000", 12, false));
    EXPECT_EQ("999999999,99", Input("999.999.999,99", 12, false));
    EXPECT_EQ("000000001,25", Input("1,2.5", 12, false));
    EXPECT_EQ("07,00", Input("7", 5, false));
    EXPECT_EQ("99,99", Input("99,99", 5, false));
}

TEST(NormalizeAmountInput, AnEmptyTextIsZero)
{
    EXPECT_EQ("000000000,00", Input("", 12, false));
    EXPECT_EQ("000000000,00", Input("000", 12, false));
    EXPECT_EQ("00,00", Input(" ", 5, false));
}

TEST(NormalizeAmountInput, RefusesWhatIsNoAmount)
{
    EXPECT_EQ("refused", Input("12,345", 12, false));
    EXPECT_EQ("refused", Input("1,2,3", 12, false));
    EXPECT_EQ("refused", Input("1a", 12, false));
    EXPECT_EQ("refused", Input("1-", 12, true));
    EXPECT_EQ("refused", Input("+1", 12, true));
    EXPECT_EQ("refused", Input("--1", 12, true));
    EXPECT_EQ("refused", Input("1000000000", 12, false));
    EXPECT_EQ("refused", Input("1000000000,00", 12, false));
    EXPECT_EQ("refused", Input("100", 5, false));
    EXPECT_EQ("refused", Input("-1", 12, false));
}

TEST(NormalizeAmountInput, ANegativeValueGetsItsMark)
{
    EXPECT_EQ("000000012-30", Input("-12,3", 12, true));
    EXPECT_EQ("000000012-30", Input(" -12,3", 12, true));
    EXPECT_EQ("000000000-00", Input("-", 12, true));
    EXPECT_EQ("000000012,30", Input("12,3", 12, true));
    EXPECT_EQ("07-00", Input("-7", 5, true));
}

TEST(NormalizeAmountInput, ZerosBehindTheSignTakeUpPlaces)
{
    EXPECT_EQ("000000005-00", Input("-000000005", 12, true));
    EXPECT_EQ("refused", Input("-0000000005", 12, true));
}

TEST(NormalizeAmountInput, ReadsNoFurtherThanTheField)
{
    auto field = std::make_unique<char[]>(13);
    std::string(13, '1').copy(field.get(), 13); // not terminated
    EXPECT_FALSE(NormalizeAmountInput(field.get(), 13, 12, false));
    std::string("         1,25").copy(field.get(), 13);
    EXPECT_TRUE(NormalizeAmountInput(field.get(), 13, 12, false));
    EXPECT_STREQ("000000001,25", field.get());
}

TEST(NormalizeDigits, FillsWithZerosOnlyForAPositiveWidth)
{
    EXPECT_EQ("000000123,45", Digits("123,45", 9, 2, false, true));
    EXPECT_EQ("02,50", Digits("2,5", 2, 2, false, false));
    EXPECT_EQ("03,00", Digits("3", 2, 2, false, false));
    EXPECT_EQ("03,00", Digits("3,", 2, 2, false, false));
    EXPECT_EQ("1234567", Digits("1234567", -8, 0, false, false));
    EXPECT_EQ("12345678", Digits("12345678", -8, 0, false, false));
}

TEST(NormalizeDigits, TheSignBecomesTheMark)
{
    EXPECT_EQ("000000123-45", Digits("-123,45", 9, 2, false, true));
    EXPECT_EQ("000000123,45", Digits("+123,45", 9, 2, false, true));
    EXPECT_EQ("-123,45 refused", Digits("-123,45", 9, 2, false, false));
    EXPECT_EQ("--1 refused", Digits("--1", 9, 2, false, true));
}

TEST(NormalizeDigits, NeedsADigit)
{
    EXPECT_EQ(" refused", Digits("", 9, 2, false, true));
    EXPECT_EQ("- refused", Digits("-", 9, 2, false, true));
    EXPECT_EQ(",50 refused", Digits(",50", 9, 2, false, true));
    EXPECT_EQ(" 1 refused", Digits(" 1", 9, 2, false, true));
    EXPECT_EQ("x refused", Digits("x", -8, 0, false, false));
}

TEST(NormalizeDigits, StrictNeedsAllDigits)
{
    EXPECT_EQ("1234567 refused", Digits("1234567", 8, 0, true, false));
    EXPECT_EQ("12345678", Digits("12345678", 8, 0, true, false));
    EXPECT_EQ("1234567 refused", Digits("1234567", -8, 0, true, false));
}

TEST(NormalizeDigits, OnlyACommaMayFollowTheIntegerPart)
{
    EXPECT_EQ("1.5 refused", Digits("1.5", 9, 2, false, false));
    EXPECT_EQ("1234567890 refused", Digits("1234567890", 9, 2, false, false));
}

TEST(NormalizeDigits, WhatFollowsIsRefusedThoughTheRestIsTaken)
{
    EXPECT_EQ("000000001,23 refused", Digits("1,234", 9, 2, false, false));
    EXPECT_EQ("000000001,00 refused", Digits("1,-", 9, 2, false, false));
    EXPECT_EQ("12345678 refused", Digits("123456789", -8, 0, false, false));
    EXPECT_EQ("12345 refused", Digits("12345 678", -8, 0, false, false));
}

TEST(NormalizeDigits, AFullFieldWithoutItsNulIsReadToItsEnd)
{
    auto field = std::make_unique<char[]>(13);
    std::string("-123456789,12").copy(field.get(), 13);
    EXPECT_TRUE(NormalizeDigits(field.get(), 13, 9, 2, false, true));
    EXPECT_STREQ("123456789-12", field.get());
}

TEST(RightJustify, FillsWithBlanksAndLeavesLongerTexts)
{
    char field[8] = "1200";
    RightJustify(field, 7);
    EXPECT_STREQ("   1200", field);
    RightJustify(field, 7);
    EXPECT_STREQ("   1200", field);
    char empty[8] = "";
    RightJustify(empty, 7);
    EXPECT_STREQ("       ", empty);
    char longer[12] = "123456789";
    RightJustify(longer, 7);
    EXPECT_STREQ("123456789", longer);
}

TEST(TrimLeft, RemovesLeadingBlanksOnly)
{
    const auto trimmed = [](const std::string &text) {
        char field[16] = {};
        text.copy(field, sizeof field - 1);
        TrimLeft(field, sizeof field);
        return std::string(field);
    };
    EXPECT_EQ("1200", trimmed("   1200"));
    EXPECT_EQ("1 200 ", trimmed(" 1 200 "));
    EXPECT_EQ("1200", trimmed("1200"));
    EXPECT_EQ("", trimmed("   "));
    EXPECT_EQ("", trimmed(""));
}

TEST(TrimLeft, LeavesNothingBehindTheEndOfTheText)
{
    char blanks[8] = {' ', ' ', ' ', '1', '2', '0', '0', 0};
    TrimLeft(blanks, sizeof blanks);
    EXPECT_EQ(std::string("1200\0\0\0\0", 8), std::string(blanks, sizeof blanks));
    char rest[8] = {'1', '2', 0, '3', '4', '5', '6', 0};
    TrimLeft(rest, sizeof rest);
    EXPECT_EQ(std::string("12\0\0\0\0\0\0", 8), std::string(rest, sizeof rest));
    char full[4] = {'1', '2', '3', '4'};
    TrimLeft(full, sizeof full);
    EXPECT_EQ("1234", std::string(full, sizeof full));
}

TEST(StripLeadingZeros, KeepsOneDigitAtTheComma)
{
    const auto stripped = [](const std::string &text) {
        char field[16] = {};
        text.copy(field, sizeof field - 1);
        StripLeadingZeros(field, sizeof field);
        return std::string(field);
    };
    EXPECT_EQ("1234,50", stripped("000001234,50"));
    EXPECT_EQ("0,50", stripped("000000000,50"));
    EXPECT_EQ("0,00", stripped("00,00"));
    EXPECT_EQ("100,00", stripped("100,00"));
    EXPECT_EQ(",50", stripped(",50"));
    EXPECT_EQ("0", stripped("000"));
    EXPECT_EQ("", stripped(""));
}

TEST(RoundToDecimals, RoundsHalfUp)
{
    EXPECT_EQ(13, RoundToDecimals(0.125, 2)); // not to even, which would be 12
    EXPECT_EQ(38, RoundToDecimals(0.375, 2));
    EXPECT_EQ(1, RoundToDecimals(0.5, 0));
    EXPECT_EQ(3, RoundToDecimals(2.5, 0));
    EXPECT_EQ(10, RoundToDecimals(0.0999755859375, 2));
    EXPECT_EQ(10000, RoundToDecimals(99.995, 2)); // 99.995000000000005
}

TEST(RoundToDecimals, JudgesBySeventeenDigits)
{
    EXPECT_EQ(100, RoundToDecimals(1.005, 2));     // 1.0049999999999999
    EXPECT_EQ(268, RoundToDecimals(2.675, 2) + 1); // 2.6749999999999998
    EXPECT_EQ(12345678901,
              RoundToDecimals(123456789.005, 2)); // 123456789.00499999523 has the digits ...9.00500000
}

TEST(RoundToDecimals, BelowTheLastDecimalIsZeroOrOne)
{
    EXPECT_EQ(0, RoundToDecimals(0.0, 2));
    EXPECT_EQ(0, RoundToDecimals(0.0049, 2));
    EXPECT_EQ(1, RoundToDecimals(0.005, 2)); // 0.0050000000000000001
    EXPECT_EQ(0, RoundToDecimals(0.0005, 2));
    EXPECT_EQ(0, RoundToDecimals(1e-300, 2));
    EXPECT_EQ(0, RoundToDecimals(std::numeric_limits<double>::denorm_min(), 4));
}

TEST(RoundToDecimals, RefusesWhatHasNoSuchForm)
{
    EXPECT_EQ(-1, RoundToDecimals(-0.01, 2));
    EXPECT_EQ(-1, RoundToDecimals(std::nan(""), 2));
    EXPECT_EQ(-1, RoundToDecimals(std::numeric_limits<double>::infinity(), 2));
    EXPECT_EQ(-1, RoundToDecimals(1e300, 2));
    EXPECT_EQ(-1, RoundToDecimals(1e15, 2)); // 16 digits and two decimals are more than are known
    EXPECT_EQ(99999999999999900, RoundToDecimals(999999999999999.0, 2));
}

TEST(PercentOfAmount, RoundsToThePfennig)
{
    EXPECT_EQ("000000016,00", Percent("000000100,00", "16,00"));
    EXPECT_EQ("000000000,13", Percent("000000000,50", "25,00")); // 0.125
    EXPECT_EQ("000000000,12", Percent("000000000,48", "25,00"));
    EXPECT_EQ("999899999,99", Percent("999999999,99", "99,99")); // 999899999.990001
    // 0.15 and 0.1 are doubles a little off; their product is 0.014999999999999999, not 0.015.
    EXPECT_EQ("000000000,01", Percent("000000000,10", "15,00"));
}

TEST(PercentOfAmount, LessThanOnePfennigIsZero)
{
    EXPECT_EQ("000000000,00", Percent("000000000,05", "16,00")); // 0.008 would round to a Pfennig
    EXPECT_EQ("000000000,01", Percent("000000000,07", "16,00")); // 0.0112
    EXPECT_EQ("000000000,01", Percent("000000001,00", "01,00"));
    EXPECT_EQ("000000000,00", Percent("000000000,00", "16,00"));
    EXPECT_EQ("000000000,00", Percent("000000100,00", "00,00"));
}

TEST(PercentOfAmount, KeepsTheMarkOfTheAmountOnly)
{
    EXPECT_EQ("000000016-00", Percent("000000100-00", "16,00"));
    EXPECT_EQ("000000016,00", Percent("000000100,00", "16-00"));
    EXPECT_EQ("000000000-00", Percent("000000000-05", "16,00"));
}

TEST(PercentOfAmount, AnEmptyFieldIsZero)
{
    EXPECT_EQ("000000000,00", Percent("", "16,00"));
    EXPECT_EQ("000000000,00", Percent("000000100,00", ""));
}

TEST(NetFromGross, TakesTheTaxOut)
{
    EXPECT_EQ("000000100,00", Net("000000116,00", "16,00"));
    EXPECT_EQ("000000086,21", Net("000000100,00", "16,00")); // 86.2069
    EXPECT_EQ("000000093,46", Net("000000100,00", "07,00")); // 93.4579
    EXPECT_EQ("000000100,00", Net("000000100,00", "00,00"));
    EXPECT_EQ("999999999,99", Net("999999999,99", "00,00"));
    EXPECT_EQ("000000000,01", Net("000000000,01", "16,00")); // 0.0086
}

TEST(NetFromGross, RoundsTwice)
{
    EXPECT_EQ("000000001,23", Net("000000001,35", "10,00")); // 1,22727 -> 1,2273
    EXPECT_EQ("000000012,73", Net("000000015,71", "23,45")); // 12,72580 -> 12,7258
    EXPECT_EQ("000000008,00", Net("000000009,28", "16,00")); // without a rest
    EXPECT_EQ("000000010,07", Net("000000010,78", "07,00")); // 10,07477 -> 10,0748
    EXPECT_EQ("000000054,93", Net("000000058,77", "07,00")); // 54,92523 -> 54,9252
}

TEST(NetFromGross, ARoundingAtTheFourthDecimalReachesTheSecond)
{
    EXPECT_EQ("000000000,02", Net("000000000,02", "33,40")); // 0,01499 -> 0,0150, not 0,01
    int met = 0;
    for (int64_t gross = 1; gross <= 3000; ++gross) {
        for (int64_t rate = 1; rate <= 9999; rate += 7) {
            const int64_t millionths = gross * 10'000 * 10'000 / (10'000 + rate); // cut
            const int64_t behindPfennig = millionths % 10'000;
            if (behindPfennig < 4955 || behindPfennig >= 4998) continue;
            ++met;
            AmountText grossText;
            AmountText out;
            const RateText rateText = {
                static_cast<char>('0' + rate / 1000),    static_cast<char>('0' + rate / 100 % 10), ',',
                static_cast<char>('0' + rate / 10 % 10), static_cast<char>('0' + rate % 10),       0};
            AmountOfMagnitude(grossText, gross, false);
            ASSERT_TRUE(NetFromGross(out, grossText, rateText));
            ASSERT_EQ(millionths / 10'000 + 1, MagnitudeOf(out)) << grossText << " " << rateText;
        }
    }
    EXPECT_GT(met, 1000);
}

TEST(NetFromGross, KeepsTheMarkOfTheGross)
{
    EXPECT_EQ("000000100-00", Net("000000116-00", "16,00"));
    EXPECT_EQ("000000100,00", Net("000000116,00", "16-00"));
    EXPECT_EQ("000000000-00", Net("000000000-00", "16,00"));
}

TEST(NetFromGross, AnEmptyFieldIsZero)
{
    EXPECT_EQ("000000000,00", Net("", "16,00"));
    EXPECT_EQ("000000100,00", Net("000000100,00", ""));
}

TEST(NetFromGross, FailsForATextThatReadsAsZeroButShowsOtherwise)
{
    EXPECT_EQ("000000000,x0 failed", Net("000000000,x0", "16,00"));
    EXPECT_EQ("000000116,00 failed", Net("000000116,00", "00,x0"));
}

TEST(AmountOfMagnitude, RefusesWhatDoesNotFit)
{
    Amount out;
    EXPECT_TRUE(AmountOfMagnitude(out.Text, 99'999'999'999, true));
    EXPECT_EQ("999999999-99", out.Str());
    EXPECT_FALSE(AmountOfMagnitude(out.Text, 100'000'000'000, true));
    EXPECT_EQ("000000000,00", out.Str());
    EXPECT_FALSE(AmountOfMagnitude(out.Text, -1, false));
    EXPECT_EQ("000000000,00", out.Str());
}

TEST(RateOfMagnitude, RefusesWhatDoesNotFit)
{
    RateText out;
    EXPECT_TRUE(RateOfMagnitude(out, 1600));
    EXPECT_STREQ("16,00", out);
    EXPECT_TRUE(RateOfMagnitude(out, 9999));
    EXPECT_STREQ("99,99", out);
    EXPECT_FALSE(RateOfMagnitude(out, 10000));
    EXPECT_STREQ("00,00", out);
    EXPECT_FALSE(RateOfMagnitude(out, -1));
    EXPECT_STREQ("00,00", out);
}

TEST(CheckAmountField, AcceptsAndCompletes)
{
    char field[16] = "1.234,5 DM";
    EXPECT_EQ(0, CheckAmountField(field, sizeof field, 12));
    EXPECT_STREQ("000001234,50", field);
    char rate[16] = "7";
    EXPECT_EQ(0, CheckAmountField(rate, sizeof rate, 5));
    EXPECT_STREQ("07,00", rate);
    char comma[16] = "7,";
    EXPECT_EQ(0, CheckAmountField(comma, sizeof comma, 5));
    EXPECT_STREQ("07,00", comma);
}

TEST(CheckAmountField, AnEmptyFieldAsksForAnEntry)
{
    char field[16] = "";
    EXPECT_EQ(1439, CheckAmountField(field, sizeof field, 12));
    EXPECT_EQ(1439, CheckAmountField(field, sizeof field, 5));
}

TEST(CheckAmountField, NamesTheMessageOfItsKind)
{
    char amount[16] = "12,345";
    EXPECT_EQ(1001, CheckAmountField(amount, sizeof amount, 12));
    char negative[16] = "-5";
    EXPECT_EQ(1001, CheckAmountField(negative, sizeof negative, 12));
    char rate[16] = "100";
    EXPECT_EQ(1000, CheckAmountField(rate, sizeof rate, 5));
}
