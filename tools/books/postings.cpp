#include "tools/books/generator.h"

#include "text/windows1252.h"

namespace books {

using namespace tools;
using namespace vark;

using text::operator""_w;

namespace fs = std::filesystem;

namespace {

constexpr int postingMonths = 18;
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

// Invoices of the year before that are not yet paid, on every second partner.
void Generator::AddOpenings()
{
    const Day first = FiscalYearStart(firstFiscalYear, Books.Of->FirstMonth);
    const auto add = [&](std::vector<Account> &accounts, std::deque<OpenItem> &items, int sign) {
        for (size_t i = 0; i < accounts.size(); i += 2) {
            const int64_t amount = Amount(200, 6000);
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
    add(Books.Debitoren, Receivable, 1);
    add(Books.Kreditoren, Payable, -1);
    BalanceOpening(Books);
}

void Generator::StartYear(int index)
{
    if (Files) Files->Close();
    Files.emplace(Data / Books.Directory(index));
    if (index > 0) CarryOver(Books);
    YearIndex = index;
}

void Generator::Run()
{
    AddOpenings();
    const Day first = FiscalYearStart(firstFiscalYear, Books.Of->FirstMonth);
    const Day last = LastPostingDay(Books);
    const auto isWorkday = [](Day day) { return WeekdayOf(day) < 5; };
    int workdays = 0;
    for (Day day = first; day <= last; ++day) {
        if (isWorkday(day)) ++workdays;
    }
    int workdaysDone = 0;
    // What a month still needs of the count, at most.
    constexpr int64_t beginRecords = 5;
    constexpr int64_t middleRecords = 3;
    constexpr int64_t wageRecords = 6;
    constexpr int64_t endRecords = 24;
    constexpr int64_t monthRecords = beginRecords + middleRecords + wageRecords + endRecords;
    const FiscalDay lastMonth = FiscalOf(last, Books.Of->FirstMonth);
    int previousMonth = -1;
    bool middleDone = false;
    bool wagesDone = false;
    StartYear(0);
    for (Day day = first; day <= last; ++day) {
        const FiscalDay fiscal = FiscalOf(day, Books.Of->FirstMonth);
        const bool isMonthEnd = FiscalOf(day + 1, Books.Of->FirstMonth).Month != fiscal.Month;
        if (!isWorkday(day) && !isMonthEnd) continue;
        if (fiscal.Year - firstFiscalYear != YearIndex) StartYear(fiscal.Year - firstFiscalYear);
        Today = day;
        Month = fiscal.Month - 1;
        Running = 0;
        MakePacked(TodayPacked, day, Books.Of->FirstMonth);
        MakeSort(TodaySort, day, Books.Of->FirstMonth);
        if (Month != previousMonth) {
            previousMonth = Month;
            middleDone = false;
            wagesDone = false;
            MonthBegins();
        }
        if (!middleDone && fiscal.DayOfMonth >= 10) {
            middleDone = true;
            MonthMiddle();
        }
        if (!wagesDone && fiscal.DayOfMonth >= 26) {
            wagesDone = true;
            MonthWages();
        }
        if (isWorkday(day)) ++workdaysDone;
        const bool isLastMonth = fiscal.Year == lastMonth.Year && fiscal.Month == lastMonth.Month;
        const int64_t kept = endRecords + (middleDone ? 0 : middleRecords) + (wagesDone ? 0 : wageRecords) +
                             (isLastMonth ? 0 : monthRecords);
        const int64_t target = std::min(Plan.Count * workdaysDone / workdays, Plan.Count - kept);
        // What belongs together is not cut by the end of a day.
        constexpr int64_t longest = 8;
        while (isWorkday(day) && Written < target) {
            Anything(std::min(longest, Plan.Count - kept - Written));
        }
        if (isMonthEnd) {
            MonthEnds();
            if (fiscal.Month == 12) YearEnds();
            Reconcile();
            // What is left when an end needed less than was kept for it.
            while (day == last && HasRoom(1)) {
                SmallExpense();
            }
        }
        Report(static_cast<double>(day - first) / static_cast<double>(last - first + 1));
    }
    Files->Close();
    Files.reset();
}

Day LastPostingDay(const Ledger &ledger)
{
    const int months = ledger.Of->FirstMonth - 1 + postingMonths;
    return DayOf(firstFiscalYear + months / 12, months % 12 + 1, 1) - 1;
}

int64_t WritePostings(Ledger &ledger, const PostingPlan &plan, const fs::path &data, const Progress &progress)
{
    Generator generator(ledger, plan, data, progress);
    generator.Run();
    return generator.Written + generator.CostLines + generator.WriteOpenItems();
}

} // namespace books
