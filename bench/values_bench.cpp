// Nanoseconds of the operations on amounts and dates that every posting and every report line goes through,
// beside two other ways to write them: the obvious loop over the characters, and 64-bit arithmetic.
//
// What follows from the table: AddAmounts and SubtractAmounts are the obvious loop, which beats the
// conversion to an integer and back. The loop beside them trusts every byte; ours first asks whether all are
// digits. FormatAmount and ParseDateText are plain passes over the text as well; the 64-bit peer of
// ParseDateText knows the form "TT.MM.JJ" alone.
#include "src/frame/thread_context.h"
#include "src/values/amount_texts.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace {

using namespace vark;

constexpr int rounds = 9;
constexpr size_t items = 4096;
constexpr int repeats = 25;

struct Amount {
    AmountText Text;
};
struct Formatted {
    FormattedAmount Text;
};
struct Date {
    char Text[40];
};

// Each other way is a function of its own, called as ours are.

// --- the obvious loops ---

bool IsSmaller(const char *a, const char *b) { return memcmp(a, b, 12) < 0; }

void AddLoop(AmountText &out, const AmountText &a, const AmountText &b, bool &fits)
{
    int carry = 0;
    for (int i = 11; i >= 0; --i) {
        if (i == 9) continue;
        const int sum = a[i] - '0' + b[i] - '0' + carry;
        carry = sum > 9 ? 1 : 0;
        out[i] = static_cast<char>('0' + sum - 10 * carry);
    }
    fits = carry == 0;
}

void SubtractLoop(AmountText &out, const AmountText &a, const AmountText &b)
{
    int borrow = 0;
    for (int i = 11; i >= 0; --i) {
        if (i == 9) continue;
        const int difference = a[i] - b[i] - borrow;
        borrow = difference < 0 ? 1 : 0;
        out[i] = static_cast<char>('0' + difference + 10 * borrow);
    }
}

[[gnu::noinline]] void LoopDifference(AmountText &out, const AmountText &a, const AmountText &b)
{
    const bool isNegative = a[9] == '-';
    bool fits = true;
    if (isNegative != (b[9] == '-')) {
        AddLoop(out, a, b, fits);
        out[9] = isNegative ? '-' : ',';
    } else if (IsSmaller(a, b)) {
        SubtractLoop(out, b, a);
        out[9] = isNegative ? ',' : '-';
    } else {
        SubtractLoop(out, a, b);
        out[9] = isNegative ? '-' : ',';
    }
    out[12] = 0;
}

[[gnu::noinline]] bool LoopSum(AmountText &out, const AmountText &a, const AmountText &b)
{
    bool fits = true;
    const bool isNegative = a[9] == '-';
    if (isNegative == (b[9] == '-')) {
        AddLoop(out, a, b, fits);
        out[9] = isNegative ? '-' : ',';
    } else {
        const AmountText &plus = isNegative ? b : a;
        const AmountText &minus = isNegative ? a : b;
        if (memcmp(plus, minus, 9) < 0 ||
            (memcmp(plus, minus, 9) == 0 && memcmp(plus + 10, minus + 10, 2) < 0)) {
            SubtractLoop(out, minus, plus);
            out[9] = '-';
        } else {
            SubtractLoop(out, plus, minus);
            out[9] = ',';
        }
    }
    out[12] = 0;
    return fits;
}

[[gnu::noinline]] void LoopFormat(AmountText &text, FormattedAmount &out)
{
    const bool isNegative = text[9] == '-';
    memcpy(out, text, sizeof(AmountText));
    out[9] = ',';
    size_t length = 12;
    while (out[0] == '0' && out[1] != ',') {
        memmove(out, out + 1, length--);
    }
    for (size_t comma = length - 3; comma > 3; comma -= 3) {
        memmove(out + comma - 2, out + comma - 3, ++length - (comma - 3));
        out[comma - 3] = '.';
    }
    if (isNegative) {
        memmove(out + 1, out, length + 1);
        out[0] = '-';
    }
}

[[gnu::noinline]] int LoopParse(const ThreadContext &context, char *text)
{
    int day = 0;
    int month = 0;
    int year = 0;
    if (sscanf(text, "%d.%d.%d", &day, &month, &year) != 3) return 1; // NOLINT(cert-err34-c): a peer
    if (day < 1 || day > 31 || month < 1 || month > 12) return 2;
    if (year < 100) year += year >= 80 ? 1900 : 2000;
    month -= context.FirstFiscalMonth - 1;
    year -= 1980;
    if (month < 1) {
        month += 12;
        --year;
    }
    snprintf(text, sizeof(Date), "%02d%02d%02d", day, month, year);
    return 0;
}

// --- 64-bit arithmetic ---

int64_t ToInteger(const AmountText &text)
{
    int64_t value = 0;
    for (int i = 0; i < 12; ++i) {
        if (i != 9) value = value * 10 + (text[i] - '0');
    }
    return text[9] == '-' ? -value : value;
}

void FromInteger(AmountText &out, int64_t value)
{
    out[9] = value < 0 ? '-' : ',';
    out[12] = 0;
    auto rest = static_cast<uint64_t>(value < 0 ? -value : value);
    for (int i = 11; i >= 0; --i) {
        if (i == 9) continue;
        out[i] = static_cast<char>('0' + rest % 10);
        rest /= 10;
    }
}

[[gnu::noinline]] void IntegerSum(AmountText &out, const AmountText &a, const AmountText &b)
{
    FromInteger(out, ToInteger(a) + ToInteger(b));
}

[[gnu::noinline]] void IntegerDifference(AmountText &out, const AmountText &a, const AmountText &b)
{
    FromInteger(out, ToInteger(a) - ToInteger(b));
}

[[gnu::noinline]] void IntegerFormat(const AmountText &text, FormattedAmount &out)
{
    const int64_t value = ToInteger(text);
    auto rest = static_cast<uint64_t>(value < 0 ? -value : value);
    char reversed[sizeof(FormattedAmount)];
    size_t length = 0;
    for (int digit = 0; digit < 3 || rest > 0; ++digit) {
        if (digit == 2) reversed[length++] = ',';
        if (digit > 2 && (digit - 2) % 3 == 0) reversed[length++] = '.';
        reversed[length++] = static_cast<char>('0' + rest % 10);
        rest /= 10;
    }
    if (value < 0) reversed[length++] = '-';
    std::reverse_copy(reversed, reversed + length, out);
    out[length] = 0;
}

// Eight characters "DD.MM.JJ" as one word, its digits taken by shifts.
[[gnu::noinline]] int IntegerParse(const ThreadContext &context, char *text)
{
    uint64_t word = 0;
    memcpy(&word, text, 8);
    word ^= 0x3030'2E30'302E'3030; // leaves the digits' values, and 0 for each dot
    const auto at = [&](int i) { return static_cast<int>(word >> (8 * i) & 0xFF); };
    if ((at(2) | at(5)) != 0) return 1;
    const int day = at(0) * 10 + at(1);
    int month = at(3) * 10 + at(4);
    int year = at(6) * 10 + at(7);
    if (day < 1 || day > 31 || month < 1 || month > 12) return 2;
    year = year >= 80 ? year - 80 : year + 20;
    month -= context.FirstFiscalMonth - 1;
    if (month < 1) {
        month += 12;
        --year;
    }
    const auto put = [&](int i, int value) {
        text[i] = static_cast<char>('0' + value / 10);
        text[i + 1] = static_cast<char>('0' + value % 10);
    };
    put(0, day);
    put(2, month);
    put(4, year);
    text[6] = 0;
    return 0;
}

// --- the table ---

std::vector<Amount> amounts(items + 1);
std::vector<Date> dates(items);
std::unique_ptr<ThreadContext> context = std::make_unique<ThreadContext>();

template <typename Result, typename Work> double Nanoseconds(Work work)
{
    Result result;
    const auto begin = std::chrono::steady_clock::now();
    for (int repeat = 0; repeat < repeats; ++repeat) {
        for (size_t i = 0; i < items; ++i) {
            work(i, result);
            asm volatile("" : : "r"(&result) : "memory"); // all of it counts as read
        }
    }
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - begin;
    return taken.count() / (static_cast<double>(items) * repeats);
}

template <typename Result, typename Ours, typename Loop, typename Integer>
void Row(const char *name, Ours ours, Loop loop, Integer integer)
{
    for (size_t i = 0; i < items; ++i) {
        Result results[3];
        ours(i, results[0]);
        loop(i, results[1]);
        integer(i, results[2]);
        if (strcmp(results[0].Text, results[1].Text) != 0 || strcmp(results[0].Text, results[2].Text) != 0) {
            printf("  %s: the three do not agree\n", name);
            exit(1);
        }
    }
    std::vector<double> taken[3];
    for (int round = 0; round < rounds; ++round) {
        taken[0].push_back(Nanoseconds<Result>(ours));
        taken[1].push_back(Nanoseconds<Result>(loop));
        taken[2].push_back(Nanoseconds<Result>(integer));
    }
    double median[3];
    for (int i = 0; i < 3; ++i) {
        std::nth_element(taken[i].begin(), taken[i].begin() + rounds / 2, taken[i].end());
        median[i] = taken[i][rounds / 2];
    }
    printf("  %-16s %9.1f %9.1f %9.1f %12.2f %12.2f\n", name, median[0], median[1], median[2],
           median[0] / median[1], median[0] / median[2]);
}

void MakeData()
{
    std::mt19937_64 random(1); // NOLINT(cert-msc51-cpp): the same data each time
    for (Amount &amount : amounts) {
        const auto magnitude = static_cast<int64_t>(random() % 50'000'000'000 >> random() % 30);
        AmountOfMagnitude(amount.Text, magnitude + 1, random() % 4 == 0);
    }
    context->FirstFiscalMonth = 7;
    for (Date &date : dates) {
        snprintf(date.Text, sizeof date.Text, "%02d.%02d.%02d", static_cast<int>(random() % 28 + 1),
                 static_cast<int>(random() % 12 + 1), static_cast<int>(random() % 19 + 81));
    }
}

} // namespace

int main()
{
    MakeData();
    printf("\nAmounts and dates, nanoseconds a call (median of %d rounds, in turn; ratio below 1: ours is "
           "faster)\n",
           rounds);
    printf("  %-16s %9s %9s %9s %12s %12s\n", "", "ours", "loop", "64 bits", "ours/loop", "ours/64 bits");

    Row<Amount>(
        "AddAmounts",
        [](size_t i, Amount &out) { AddAmounts(out.Text, amounts[i].Text, amounts[i + 1].Text); },
        [](size_t i, Amount &out) { LoopSum(out.Text, amounts[i].Text, amounts[i + 1].Text); },
        [](size_t i, Amount &out) { IntegerSum(out.Text, amounts[i].Text, amounts[i + 1].Text); });
    Row<Amount>(
        "SubtractAmounts",
        [](size_t i, Amount &out) { SubtractAmounts(out.Text, amounts[i].Text, amounts[i + 1].Text); },
        [](size_t i, Amount &out) { LoopDifference(out.Text, amounts[i].Text, amounts[i + 1].Text); },
        [](size_t i, Amount &out) { IntegerDifference(out.Text, amounts[i].Text, amounts[i + 1].Text); });
    Row<Formatted>(
        "FormatAmount", [](size_t i, Formatted &out) { FormatAmount(3, amounts[i].Text, out.Text); },
        [](size_t i, Formatted &out) { LoopFormat(amounts[i].Text, out.Text); },
        [](size_t i, Formatted &out) { IntegerFormat(amounts[i].Text, out.Text); });
    Row<Date>(
        "ParseDateText",
        [](size_t i, Date &out) {
            out = dates[i];
            ParseDateText(*context, out.Text, sizeof out.Text, false);
        },
        [](size_t i, Date &out) {
            out = dates[i];
            LoopParse(*context, out.Text);
        },
        [](size_t i, Date &out) {
            out = dates[i];
            IntegerParse(*context, out.Text);
        });
}
