// Sums of accounts to a day against an auditor that knows nothing of month slots: it adds up every posting.
#include "src/booking/balances.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/model/posting_records.h"
#include "src/values/amounts.h"
#include "tests/support/books.h"

#include <chrono>
#include <gtest/gtest.h>
#include <map>
#include <random>

using namespace vark;
using namespace vark::test;

namespace {

constexpr int fiscalYear = 18; // 1998
constexpr int postings = 1200;
constexpr int datesPerAccount = 200;

struct Day {
    int Month; // fiscal
    int Number;
};

int DaysIn(int fiscalMonth, int firstFiscalMonth)
{
    using namespace std::chrono;
    const year_month month = year(1980 + fiscalYear) / firstFiscalMonth + months(fiscalMonth - 1);
    return static_cast<int>(static_cast<unsigned>((month / last).day()));
}

std::string Packed(Day day)
{
    return std::to_string(100 + day.Number).substr(1) + std::to_string(100 + day.Month).substr(1) +
           std::to_string(fiscalYear);
}

std::string Text(int64_t pfennig)
{
    AmountText text;
    EXPECT_TRUE(AmountOfMagnitude(text, std::abs(pfennig), pfennig < 0));
    return TextOf(text);
}

int64_t Pfennig(const AmountText &text)
{
    return IsNegativeAmount(text) ? -MagnitudeOf(text) : MagnitudeOf(text);
}

struct Sides {
    int64_t Soll = 0;
    int64_t Haben = 0;
};

// What one posting does to one account.
struct Entry {
    Day At;
    Sides Amounts;
};

struct Account {
    std::string Konto;
    Sides Vortrag;
    Sides Slot0;
    std::vector<Entry> Entries;
};

class Audit : public testing::TestWithParam<int> {
protected:
    std::mt19937_64 random{static_cast<uint64_t>(GetParam())};
    Books books;
    std::vector<Account> accounts;

    int Below(int limit) { return static_cast<int>(random() % static_cast<uint64_t>(limit)); }
    int64_t RandomAmount() { return Below(5) == 0 ? -Below(10'000) : Below(1'000'000); }
    Day RandomDay()
    {
        const int month = 1 + Below(12);
        const int days = DaysIn(month, GetParam());
        return {month, Below(6) == 0 ? days : 1 + Below(days)};
    }

    void SetUp() override
    {
        MandantOptions options;
        options.FirstFiscalMonth = static_cast<int16_t>(GetParam());
        books.AddMandant(1, options);
        for (const char *konto : {"1000", "1200", "1576", "1776", "8400", "10000", "70000"}) {
            accounts.push_back(
                {konto, {RandomAmount(), RandomAmount()}, {RandomAmount(), RandomAmount()}, {}});
        }
        for (int32_t nummer = 1; nummer <= postings; ++nummer) {
            AddPosting(nummer);
        }
    }
    void TearDown() override { VARK_SchliesseDB(); }

    void AddPosting(int32_t nummer)
    {
        const Day day = RandomDay();
        Account &soll = accounts[static_cast<size_t>(Below(7))];
        Account &haben = accounts[static_cast<size_t>(Below(7))];
        Account &tax = accounts[Below(2) == 0 ? 2 : 3];
        BubeRecord record = MakeBube(nummer, Packed(day), soll.Konto, haben.Konto, "");
        const int64_t sollAmount = RandomAmount();
        const int64_t habenAmount = RandomAmount();
        const int64_t taxAmount = Below(2) == 0 ? 0 : RandomAmount();
        const bool isTaxOnHaben = Below(2) == 0;
        SetText(record.Soll, Text(sollAmount));
        SetText(record.Haben, Text(habenAmount));
        if (taxAmount != 0) {
            SetText(record.Steuerkonto, Justified(tax.Konto));
            SetText(record.Steuer, Text(taxAmount));
        }
        record.Steuerflags = static_cast<uint8_t>(isTaxOnHaben ? 0x04 : Below(2) * 0x02);
        record.Status = static_cast<uint16_t>(Below(8) == 0 ? 1 << Below(12) : 0);
        books.Insert(1, TableBube, record);
        if ((record.Status & 0x0006) != 0) return; // such a posting has not reached the months
        soll.Entries.push_back({day, {sollAmount, 0}});
        haben.Entries.push_back({day, {0, habenAmount}});
        if (taxAmount != 0) {
            tax.Entries.push_back({day, {isTaxOnHaben ? 0 : taxAmount, isTaxOnHaben ? taxAmount : 0}});
        }
    }

    // The slots that the accounting application would have in the account's record.
    AccountSums Slots(const Account &account)
    {
        AccountSums sums{};
        const auto set = [](SollHaben &pair, Sides sides) {
            SetText(pair.Soll, Text(sides.Soll));
            SetText(pair.Haben, Text(sides.Haben));
        };
        set(sums.Vortrag, account.Vortrag);
        set(sums.Slot0, account.Slot0);
        for (int month = 1; month <= 12; ++month) {
            set(sums.Monat[month - 1], Sum(account, [&](Day day) { return day.Month == month; }));
        }
        return sums;
    }

    template <typename Condition> static Sides Sum(const Account &account, Condition holds)
    {
        Sides sum;
        for (const Entry &entry : account.Entries) {
            if (!holds(entry.At)) continue;
            sum.Soll += entry.Amounts.Soll;
            sum.Haben += entry.Amounts.Haben;
        }
        return sum;
    }

    Sides Expected(const Account &account, Day to, uint32_t options)
    {
        Sides sum = Sum(account, [&](Day day) {
            return day.Month == to.Month ? day.Number <= to.Number
                                         : day.Month < to.Month && (options & SumEarlierMonths) != 0;
        });
        const auto add = [&](Sides more) {
            sum.Soll += more.Soll;
            sum.Haben += more.Haben;
        };
        if ((options & SumVortrag) != 0) add(account.Vortrag);
        if (to.Month == 12 && to.Number == DaysIn(12, GetParam())) add(account.Slot0);
        return sum;
    }
};

} // namespace

TEST_P(Audit, AgreesOnEveryAccountAndDate)
{
    ThreadContext *context = nullptr;
    ASSERT_EQ(1, EnterExport(context));
    FistaRecord fista{};
    ASSERT_EQ(1, SelectMandant(*context, 1, fista));
    for (const Account &account : accounts) {
        const AccountSums slots = Slots(account);
        AccountNumber konto;
        SetText(konto, Justified(account.Konto));
        for (int i = 0; i < datesPerAccount; ++i) {
            // Every end of a month is among them.
            const Day day = i < 12 ? Day{i + 1, DaysIn(i + 1, GetParam())} : RandomDay();
            PackedDate date;
            SetText(date, Packed(day));
            for (const uint32_t options : {0u, 1u, 2u, 3u}) {
                SollHaben sums;
                ASSERT_TRUE(AccountSumsToDate(*context, konto, slots, date, options, TableBube, sums));
                const Sides expected = Expected(account, day, options);
                ASSERT_EQ(expected.Soll, Pfennig(sums.Soll))
                    << account.Konto << " " << date << " " << options;
                ASSERT_EQ(expected.Haben, Pfennig(sums.Haben))
                    << account.Konto << " " << date << " " << options;
            }
        }
    }
}

TEST_P(Audit, AgreesOnTheBalanceOfTheYear)
{
    for (const Account &account : accounts) {
        SakoRecord record = MakeSako(account.Konto);
        record.Umsaetze = Slots(account);
        books.Insert(1, TableSako, record);
        const Sides months = Sum(account, [](Day) { return true; });
        const int64_t expected = months.Soll - months.Haben + account.Vortrag.Soll - account.Vortrag.Haben +
                                 account.Slot0.Soll - account.Slot0.Haben;
        char out[17];
        ASSERT_EQ(1, VARK_HoleSaldo(1, account.Konto.c_str(), 1, 1, 1, out));
        std::string amount = Text(std::abs(expected));
        amount.insert(0, expected < 0 ? "-" : expected > 0 ? "+" : "0");
        EXPECT_EQ(amount, out);
    }
}

INSTANTIATE_TEST_SUITE_P(FirstFiscalMonth, Audit, testing::Values(1, 7));
