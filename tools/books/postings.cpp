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

// What an amount in DM is in another currency, at the first rate that the books have; 0 without a currency.
int64_t ForeignAmount(const char *currency, int64_t pfennig)
{
    constexpr int64_t units[] = {1, 1, 100, 1000, 10000, 100000};
    for (const CurrencyRow &row : Currencies()) {
        if (std::strcmp(row.Code, currency) == 0) return pfennig * 100 * units[row.UnitCode] / row.FirstRate;
    }
    return 0;
}

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
                             static_cast<int32_t>(i + 1),
                             first - 5 - static_cast<Day>(i % 40),
                             amount,
                             amount,
                             amount,
                             0,
                             {},
                             0});
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
    // What the ends of months still need of the count.
    constexpr int64_t monthEndRecords = 4 + 4;
    constexpr int64_t wageRecords = 5;
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
        const int64_t kept = monthEndRecords + (wagesDone ? 0 : wageRecords);
        const int64_t target = std::min(Plan.Count * workdaysDone / workdays, Plan.Count - kept);
        while (isWorkday(day) && Written < target) {
            Anything(target - Written);
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

int64_t Generator::WriteOpenItems()
{
    int64_t count = 0;
    const fs::path directory = Data / Books.Directory(yearCount - 1);
    const auto write = [&](TableId id, const std::deque<OpenItem> &items,
                           const std::vector<Account> &accounts) {
        TableFile table(LayoutOf(id), directory, OpenMode::Accelerated);
        uint32_t number = 0;
        for (size_t at = 0; at < items.size();) {
            EngineTransaction transaction;
            for (int i = 0; i < recordsPerTransaction && at < items.size(); ++i, ++at) {
                const OpenItem &item = items[at];
                const Account &account = accounts[static_cast<size_t>(item.Account)];
                const PartnerRow &partner = *account.Partner;
                const TermRow *term = &Terms().front();
                for (const TermRow &row : Terms()) {
                    if (row.Number == partner.Zahlungsziel) term = &row;
                }
                OpenItemRecord record{};
                record.Nummer = ++number;
                std::memcpy(record.Konto, account.Key, sizeof record.Konto);
                std::memcpy(record.Referenz1, account.Of == Kind::Debitor ? "AR" : "ER", 2);
                PutDigits(record.Referenz1 + 2, item.Voucher, 6);
                PutText(record.Referenz2, item.Booking == 0 ? "Vorjahr"_w : "");
                MakeSort(record.Datum1, item.Date, Books.Of->FirstMonth);
                MakeSort(record.Termin, item.Date + term->DaysNet, Books.Of->FirstMonth);
                MakeSort(record.Skontodatum, item.Date + term->DaysSkonto, Books.Of->FirstMonth);
                text::FromUtf8(partner.Name1, record.Text1, sizeof record.Text1);
                PutText(record.Text2, item.Booking == 0            ? "Rechnung aus dem Vorjahr"_w
                                      : item.Open == item.Original ? "Rechnung"_w
                                                                   : "Rechnung, Rest"_w);
                record.Flag = item.Open == item.Original ? 0 : 1;
                PutAmount(record.Betrag1, item.Open);
                MakeKey(record.Konto2,
                        account.Of == Kind::Debitor ? kontoForderungen : kontoVerbindlichkeiten);
                text::FromUtf8(partner.Skonto, record.Satz, sizeof record.Satz);
                record.Wert1 = item.Reminders;
                PutAmount(record.Betrag3, item.Original);
                PutAmount(record.Betrag2, Percent(item.Open, ShareOf(partner.Skonto)));
                PutAmount(record.Betrag4, item.Original - item.Open);
                record.Wert3 = item.Booking;
                text::FromUtf8(partner.Waehrung, record.Waehrung, sizeof record.Waehrung);
                PutAmount(record.Waehrungsbetrag, ForeignAmount(partner.Waehrung, item.Open));
                record.Zahlungsart = static_cast<uint8_t>(1 + item.Account % 4);
                table.Insert(&record);
                ++count;
            }
            transaction.Finish();
        }
        table.Close();
    };
    write(TableOpdebi, Receivable, Books.Debitoren);
    write(TableOpkred, Payable, Books.Kreditoren);
    return count;
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
