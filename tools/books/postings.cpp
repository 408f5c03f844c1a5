#include "tools/books/postings.h"

#include "text/windows1252.h"
#include "tools/books/business.h"
#include "tools/books/generator.h"
#include "tools/books/months.h"
#include "tools/books/open_items.h"
#include "tools/books/posting_records.h"

#include <cstring>

namespace books {

using namespace tools;
using namespace vark;

using text::operator""_w;

namespace fs = std::filesystem;

namespace {

// Above this number amounts shrink, so that a year's turnover stays far below the largest amount.
constexpr int64_t fullAmountsCount = 100000;

} // namespace

Generator::Generator(Ledger &ledger, const PostingPlan &plan, const fs::path &data, const Progress &progress)
    : Books(ledger), Plan(plan), Data(data),
      Report(progress), Dice{plan.Seed * 3 + static_cast<uint64_t>(ledger.Of->Number)},
      Templates(MakeTemplates(ledger)), Shrink(std::max<int64_t>(1, plan.Count / fullAmountsCount))
{
    const auto collect = [this](std::vector<Account *> &to, std::initializer_list<int> numbers) {
        for (const int number : numbers) {
            if (Account *account = Find(number)) to.push_back(account);
        }
    };
    // An account named twice is used twice as often.
    collect(Sales, {5010, 5010, 5010, 5020, 5020, 5030, 5040, 5050, 5060, 5070, 5070, 5070, 5080, 5090, 5090,
                    5095, 5095, 5097});
    collect(Purchases, {6010, 6010, 6020, 6020, 6030, 6040, 6050, 6060, 6070, 6070, 6080, 6210, 8210, 8220,
                        8310, 8450, 8480});
    collect(Expenses, {8110, 8110, 8250, 8260, 8410, 8410, 8430, 8440, 8590});
    const auto collectAbroad = [](std::vector<int32_t> &to, const std::vector<Account> &partners) {
        for (size_t i = 0; i < partners.size(); ++i) {
            if (std::strcmp(partners[i].Partner->Land, "D") != 0) to.push_back(static_cast<int32_t>(i));
        }
    };
    collectAbroad(CustomersAbroad, ledger.Debitoren);
    collectAbroad(SuppliersAbroad, ledger.Kreditoren);
}

namespace {

// Invoices of the year before that are not yet paid, on every second partner.
void AddOpenings(Generator &maker)
{
    const Day first = FiscalYearStart(firstFiscalYear, maker.Books.Of->FirstMonth);
    const auto add = [&](std::vector<Account> &accounts, std::deque<OpenItem> &items, int sign) {
        for (size_t i = 0; i < accounts.size(); i += 2) {
            const int64_t amount = Amount(maker, 200, 6000);
            SetVortrag(accounts[i].Years[0], sign * amount);
            items.push_back({static_cast<int32_t>(i),
                             0,
                             sign > 0 ? "AR" : "ER",
                             static_cast<int32_t>(i + 1),
                             first - 5 - static_cast<Day>(i % 40),
                             amount,
                             amount,
                             amount,
                             0,
                             {}});
        }
    };
    add(maker.Books.Debitoren, maker.Receivable, 1);
    add(maker.Books.Kreditoren, maker.Payable, -1);
    BalanceOpening(maker.Books);
}

void StartYear(Generator &maker, int index)
{
    if (maker.Files) maker.Files->Close();
    maker.Files.emplace(maker.Data / maker.Books.Directory(index));
    if (index > 0) CarryOver(maker.Books);
    maker.YearIndex = index;
}

bool IsWorkday(Day day) { return WeekdayOf(day) < 5; }

// How far the days have come, and the months in them.
struct Calendar {
    Day First, Last;
    FiscalDay LastMonth = {};
    int64_t Workdays = 0;
    int64_t WorkdaysDone = 0;
    int Month = -1;
    bool IsMiddleDone = false;
    bool AreWagesDone = false;
};

Calendar MakeCalendar(const Ledger &ledger)
{
    Calendar calendar{FiscalYearStart(firstFiscalYear, ledger.Of->FirstMonth), LastPostingDay(ledger)};
    calendar.LastMonth = FiscalOf(calendar.Last, ledger.Of->FirstMonth);
    for (Day day = calendar.First; day <= calendar.Last; ++day) {
        if (IsWorkday(day)) ++calendar.Workdays;
    }
    return calendar;
}

// What the months still need of the count, at most: it is kept for them.
int64_t KeptRecords(const Calendar &calendar, const FiscalDay &today)
{
    constexpr int64_t begin = 5;
    constexpr int64_t middle = 3;
    constexpr int64_t wages = 6;
    constexpr int64_t end = 24;
    const bool isLastMonth = today.Year == calendar.LastMonth.Year && today.Month == calendar.LastMonth.Month;
    return end + (calendar.IsMiddleDone ? 0 : middle) + (calendar.AreWagesDone ? 0 : wages) +
           (isLastMonth ? 0 : begin + middle + wages + end);
}

void BeginDay(Generator &maker, Day day, const FiscalDay &fiscal)
{
    const int firstMonth = maker.Books.Of->FirstMonth;
    if (fiscal.Year - firstFiscalYear != maker.YearIndex) StartYear(maker, fiscal.Year - firstFiscalYear);
    maker.Today = day;
    maker.Month = fiscal.Month - 1;
    maker.Running = 0;
    MakePacked(maker.TodayPacked, day, firstMonth);
    MakeSort(maker.TodaySort, day, firstMonth);
}

// What a month brings on its fixed days.
void FixedDays(Generator &maker, Calendar &calendar, const FiscalDay &fiscal)
{
    constexpr int middleDay = 10;
    constexpr int wageDay = 26;
    if (maker.Month != calendar.Month) {
        calendar.Month = maker.Month;
        calendar.IsMiddleDone = false;
        calendar.AreWagesDone = false;
        MonthBegins(maker);
    }
    if (!calendar.IsMiddleDone && fiscal.DayOfMonth >= middleDay) {
        calendar.IsMiddleDone = true;
        MonthMiddle(maker);
    }
    if (!calendar.AreWagesDone && fiscal.DayOfMonth >= wageDay) {
        calendar.AreWagesDone = true;
        MonthWages(maker);
    }
}

// Business of a working day, as much as the count has for it.
void Workday(Generator &maker, Calendar &calendar, const FiscalDay &fiscal)
{
    // What belongs together is not cut by the end of a day.
    constexpr int64_t longest = 8;
    ++calendar.WorkdaysDone;
    const int64_t most = maker.Plan.Count - KeptRecords(calendar, fiscal);
    const int64_t target = std::min(maker.Plan.Count * calendar.WorkdaysDone / calendar.Workdays, most);
    while (maker.Written < target) {
        Anything(maker, std::min(longest, most - maker.Written));
    }
}

void Run(Generator &maker)
{
    AddOpenings(maker);
    Calendar calendar = MakeCalendar(maker.Books);
    const int firstMonth = maker.Books.Of->FirstMonth;
    StartYear(maker, 0);
    for (Day day = calendar.First; day <= calendar.Last; ++day) {
        const FiscalDay fiscal = FiscalOf(day, firstMonth);
        const bool isMonthEnd = FiscalOf(day + 1, firstMonth).Month != fiscal.Month;
        if (!IsWorkday(day) && !isMonthEnd) continue;
        BeginDay(maker, day, fiscal);
        FixedDays(maker, calendar, fiscal);
        if (IsWorkday(day)) Workday(maker, calendar, fiscal);
        if (isMonthEnd) {
            MonthEnds(maker);
            if (fiscal.Month == 12) YearEnds(maker);
            Reconcile(maker);
            // What is left when an end needed less than was kept for it.
            while (day == calendar.Last && maker.HasRoom(1)) {
                SmallExpense(maker);
            }
        }
        maker.Report(static_cast<double>(day - calendar.First) /
                     static_cast<double>(calendar.Last - calendar.First + 1));
    }
    maker.Files->Close();
    maker.Files.reset();
}

} // namespace

int64_t WritePostings(Ledger &ledger, const PostingPlan &plan, const fs::path &data, const Progress &progress)
{
    Generator generator(ledger, plan, data, progress);
    Run(generator);
    return generator.Written + generator.CostLines + WriteOpenItems(generator);
}

} // namespace books
