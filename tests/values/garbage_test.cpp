// Whatever bytes a damaged record or a careless caller brings: nothing is read or written outside the field
// (each lies alone in memory, so that a sanitizer sees a step too far), and results keep their form.
#include "src/frame/thread_context.h"
#include "src/values/amount_texts.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>

namespace {

using namespace vark;

constexpr int rounds = 200'000;

class Garbage : public testing::Test {
protected:
    std::mt19937_64 Random{42};

    // Either any bytes, or those that a parser knows something about.
    void Fill(char *field, size_t size)
    {
        static constexpr char known[] = "0123456789,.-+ \0\0";
        const bool isAny = Random() % 4 == 0;
        for (size_t i = 0; i < size; ++i) {
            field[i] = isAny ? static_cast<char>(Random()) : known[Random() % (sizeof known - 1)];
        }
    }

    // A field of its own on the heap.
    template <typename Field> std::unique_ptr<Field> Make()
    {
        auto field = std::make_unique<Field>();
        Fill(field->Text, sizeof field->Text);
        return field;
    }

    std::unique_ptr<char[]> MakeText(size_t size)
    {
        auto text = std::make_unique<char[]>(size);
        Fill(text.get(), size);
        return text;
    }
};

struct AmountField {
    AmountText Text;
};
struct RateField {
    RateText Text;
};
struct DateField {
    PackedDate Text;
};
struct FormattedField {
    FormattedAmount Text;
};
struct ColumnField {
    AmountColumn Text;
};
struct DateTextField {
    DateText Text;
};

bool IsFixedForm(const char *text, int markIndex)
{
    for (int i = 0; i < markIndex + 3; ++i) {
        const bool isMark = i == markIndex;
        if (isMark ? text[i] != ',' && text[i] != '-' : text[i] < '0' || text[i] > '9') return false;
    }
    return text[markIndex + 3] == 0;
}

bool IsDate(const char *text)
{
    for (int i = 0; i < 6; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
    }
    return text[6] == 0;
}

} // namespace

TEST_F(Garbage, ArithmeticGivesAmounts)
{
    for (int i = 0; i < rounds; ++i) {
        const auto a = Make<AmountField>();
        const auto b = Make<AmountField>();
        const auto rate = Make<RateField>();
        const auto out = std::make_unique<AmountField>();
        AddAmounts(out->Text, a->Text, b->Text);
        ASSERT_TRUE(IsFixedForm(out->Text, amountMark));
        const int code = SubtractRaw(out->Text, a->Text, b->Text);
        ASSERT_TRUE(code == 83 || code == 72);
        ASSERT_TRUE(IsFixedForm(out->Text, amountMark));
        SubtractAmounts(out->Text, a->Text, b->Text);
        ASSERT_TRUE(IsFixedForm(out->Text, amountMark));
        PercentOfAmount(out->Text, a->Text, rate->Text);
        ASSERT_TRUE(IsFixedForm(out->Text, amountMark));
        const bool isRead = NetFromGross(out->Text, a->Text, rate->Text);
        ASSERT_TRUE(isRead ? IsFixedForm(out->Text, amountMark)
                           : memcmp(out->Text, a->Text, sizeof out->Text) == 0);
        AccumulateAmount(a->Text, b->Text);
        IsZeroAmount(b->Text);
    }
}

TEST_F(Garbage, DisplayFormsStayInTheirFields)
{
    for (int i = 0; i < rounds; ++i) {
        const auto out = std::make_unique<FormattedField>();
        const auto amount = Make<AmountField>();
        const auto rate = Make<RateField>();
        for (const int form : {1, 2, 3}) {
            FormatAmount(form, amount->Text, out->Text);
            ASSERT_LT(strnlen(out->Text, sizeof out->Text), sizeof out->Text);
            FormatAmount(form, rate->Text, out->Text);
            ASSERT_LT(strnlen(out->Text, sizeof out->Text), sizeof out->Text);
        }
        const auto grouped = Make<FormattedField>();
        GroupAmount(grouped->Text);
        ASSERT_LT(strnlen(grouped->Text, sizeof grouped->Text), sizeof grouped->Text);
        const auto column = Make<ColumnField>();
        PadAmountColumn(column->Text);
        ASSERT_LT(strnlen(column->Text, sizeof column->Text), sizeof column->Text);
    }
}

TEST_F(Garbage, NumberParsersRefuseOrGiveTheFixedForm)
{
    int accepted = 0;
    for (int i = 0; i < rounds; ++i) {
        const size_t size = 13 + Random() % 8;
        const bool isSigned = Random() % 2 == 0;
        auto text = MakeText(size);
        if (NormalizeAmountInput(text.get(), size, amountWidth, isSigned)) {
            ASSERT_TRUE(IsFixedForm(text.get(), amountMark));
            ++accepted;
        }
        text = MakeText(size);
        if (NormalizeAmountInput(text.get(), size, rateWidth, isSigned)) {
            ASSERT_TRUE(IsFixedForm(text.get(), rateMark));
        }
        text = MakeText(size);
        if (NormalizeDigits(text.get(), size, 9, 2, Random() % 2 == 0, isSigned)) {
            ASSERT_TRUE(IsFixedForm(text.get(), amountMark));
        }
        text = MakeText(size);
        if (NormalizeDigits(text.get(), size, -8, 0, Random() % 2 == 0, isSigned)) {
            ASSERT_LE(strnlen(text.get(), size), 8U);
        }
        text = MakeText(size);
        if (CheckAmountField(text.get(), size, amountWidth) == 0) {
            ASSERT_TRUE(IsFixedForm(text.get(), amountMark));
        }
    }
    EXPECT_GT(accepted, 1000);
}

TEST_F(Garbage, TextHelpersStayInTheirFields)
{
    for (int i = 0; i < rounds; ++i) {
        const size_t size = 1 + Random() % 16;
        auto text = MakeText(size);
        RightJustify(text.get(), size - 1);
        text = MakeText(size);
        TrimLeft(text.get(), size);
        ASSERT_TRUE(text[0] != ' ');
        text = MakeText(size);
        StripLeadingZeros(text.get(), size);
    }
}

TEST_F(Garbage, DatesRefuseOrKeepTheirForm)
{
    const auto context = std::make_unique<ThreadContext>();
    int accepted = 0;
    for (int i = 0; i < rounds; ++i) {
        context->FirstFiscalMonth = static_cast<int32_t>(1 + Random() % 12);
        Fill(context->TodayShort, sizeof context->TodayShort);
        Fill(context->TodayLong, sizeof context->TodayLong);
        Fill(context->FirstOpenYear, sizeof context->FirstOpenYear);
        Fill(context->MandantYear, sizeof context->MandantYear);
        const size_t size = 7 + static_cast<size_t>(Random() % 14);
        const auto text = MakeText(size);
        if (Random() % 2 == 0) { // almost a date
            const std::string date = std::to_string(Random() % 33) + "." + std::to_string(Random() % 14) +
                                     "." + std::to_string(Random() % 110);
            const size_t length = date.copy(text.get(), size);
            const auto at = [this, length] { return static_cast<size_t>(Random() % length); };
            text[at()] = date[at()];
        }
        if (ParseDateText(*context, text.get(), size, Random() % 2 == 0) == DateGood) {
            ASSERT_TRUE(IsDate(text.get()));
            ++accepted;
        }
        int year = 0;
        const auto yearText = MakeText(size);
        if (CheckYearField(yearText.get(), size, year) == 0) {
            ASSERT_TRUE(year >= 0 && year <= 99);
        }
        const int postable = PostableYear(*context, static_cast<int>(Random() % 100));
        ASSERT_TRUE(postable == 0 || (postable >= 1980 && postable <= 2079));
    }
    EXPECT_GT(accepted, 10'000);
}

TEST_F(Garbage, DateArithmeticKeepsTheForm)
{
    for (int i = 0; i < rounds; ++i) {
        const int firstFiscalMonth = static_cast<int>(1 + Random() % 12);
        const auto date = Make<DateField>();
        const bool isEmpty = date->Text[0] == 0;
        const auto other = Make<DateField>();
        const auto text = std::make_unique<DateTextField>();
        FormatDate(date->Text, text->Text, Random() % 2 == 0, firstFiscalMonth);
        ASSERT_EQ(isEmpty, text->Text[0] == 0);
        const auto out = std::make_unique<DateField>();
        PackedToCalendar(date->Text, out->Text, firstFiscalMonth);
        ASSERT_TRUE(isEmpty ? out->Text[0] == 0 : IsDate(out->Text));
        IsMonthEnd(Random() % 2 == 0, date->Text, &out->Text, firstFiscalMonth);
        ASSERT_TRUE(isEmpty ? out->Text[0] == 0 : IsDate(out->Text));
        ASSERT_FALSE(DateIsAfter(date->Text, other->Text) && DateIsAfter(other->Text, date->Text));
        CheckDatePair(date->Text, other->Text);
        if (PreviousDay(date->Text, firstFiscalMonth)) {
            ASSERT_TRUE(IsDate(date->Text));
        }
        ToSortDate(other->Text);
    }
}
