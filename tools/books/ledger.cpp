#include "tools/books/ledger.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace books {

using namespace vark;

namespace {

constexpr Profile profiles[mandantCount] = {
    {1, "Nordhafen Bürohandel GmbH", "Groß- und Einzelhandel", "Speicherstraße 14", "20457 Hamburg",
     "DE811204573", "02/846/17305", 1, true, true, false, 11, 0, false, 1, 0},
    {2, "Sonnenfeld Gartenbedarf", "GmbH & Co. KG", "Gärtnereiweg 5", "25462 Rellingen", "", "31/270/08842",
     7, true, false, false, 10, 1, false, 4, 100000},
    {3, "Atelier Lindblick Werbeagentur", "GmbH", "Bernstorffstraße 99", "22767 Hamburg", "DE811377026",
     "02/861/44912", 1, false, true, true, 0, 0, true, 3, 50000},
};

constexpr int kontoKapital = 2010;
constexpr int kontoKapitalruecklage = 2020;
constexpr int kontoGewinnruecklage = 2030;
constexpr int firstBankLoan = 2210;
constexpr int lastLoan = 2230;

bool StandsInBilanz(const AccountRow &row)
{
    if (row.Group == unassignedAktiva || row.Group == unassignedPassiva) return true;
    for (const GroupRow &group : Groups()) {
        if (group.Code == row.Group) return group.Place != Side::Guv;
    }
    return false;
}

// Loans and reserves are the first Mandant's alone: the smaller ones could not carry them.
int64_t OpeningOf(const Profile &profile, const AccountRow &row)
{
    if (profile.Capital != 0) {
        if (row.Number == kontoKapital) return -100LL * profile.Capital;
        if (row.Number == kontoKapitalruecklage || row.Number == kontoGewinnruecklage) return 0;
        if (row.Number >= firstBankLoan && row.Number <= lastLoan) return 0;
    }
    return 100LL * row.OpeningBalance / profile.OpeningShare;
}

std::vector<Account> Partners(Kind kind, std::span<const PartnerRow> rows, int firstNumber, int count,
                              int mandant)
{
    std::vector<const PartnerRow *> own;
    for (const PartnerRow &row : rows) {
        if (IsFor(row.Mandanten, mandant)) own.push_back(&row);
    }
    const size_t wanted = count > 0 ? static_cast<size_t>(count) : own.size();
    // Numbers stay below the next hundred thousand: ten apart as long as they fit, else one by one.
    const int step = wanted * partnerStep <= partnersMax ? partnerStep : 1;
    std::vector<Account> accounts;
    for (size_t i = 0; i < wanted; ++i) {
        Account &account = accounts.emplace_back();
        account.Of = kind;
        account.Number = firstNumber + static_cast<int>(i) * step;
        account.Partner = own[i % own.size()];
        account.Copy = static_cast<int>(i / own.size());
        MakeKey(account.Key, account.Number);
    }
    return accounts;
}

} // namespace

const Profile &ProfileOf(int mandant) { return profiles[mandant - 1]; }

int64_t YearSums::Balance() const
{
    int64_t balance = Vortrag.Soll - Vortrag.Haben + Slot0.Soll - Slot0.Haben;
    for (const Totals &month : Month) {
        balance += month.Soll - month.Haben;
    }
    return balance;
}

bool YearSums::IsUsed() const
{
    bool used = Vortrag.Soll != 0 || Vortrag.Haben != 0 || Slot0.Soll != 0 || Slot0.Haben != 0;
    for (int i = 0; i < 12; ++i) {
        used = used || Month[i].Soll != 0 || Month[i].Haben != 0 || Count[i] != 0;
    }
    return used;
}

tools::Day LastPostingDay(const Ledger &ledger)
{
    constexpr int postingMonths = 18;
    const int months = ledger.Of->FirstMonth - 1 + postingMonths;
    return tools::DayOf(firstFiscalYear + months / 12, months % 12 + 1, 1) - 1;
}

void MakeKey(AccountNumber &out, int number)
{
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    const auto length = static_cast<size_t>(end - digits);
    std::memset(out, ' ', accountDigits);
    out[accountDigits] = 0;
    std::memcpy(out + accountDigits - length, digits, length);
}

void SetVortrag(YearSums &sums, int64_t balance)
{
    sums.Vortrag = {std::max<int64_t>(balance, 0), std::max<int64_t>(-balance, 0)};
}

std::string Ledger::Directory(int index) const
{
    std::string name = std::to_string(YearOf(index));
    if (Of->Number > 1) name += std::to_string(Of->Number - 1);
    return name;
}

Account *Ledger::FindSachkonto(int number)
{
    const auto place =
        std::lower_bound(Sachkonten.begin(), Sachkonten.end(), number,
                         [](const Account &account, int wanted) { return account.Number < wanted; });
    return place != Sachkonten.end() && place->Number == number ? &*place : nullptr;
}

const CostTemplateRow *Ledger::FindTemplate(int number) const
{
    for (const CostTemplateRow &row : CostTemplates()) {
        if (row.Number == number && IsFor(row.Mandanten, Of->Number)) return &row;
    }
    return nullptr;
}

Ledger MakeLedger(int mandant, int debitoren, int kreditoren)
{
    Ledger ledger{&ProfileOf(mandant), {}, {}, {}, {}};
    for (const AccountRow &row : Accounts()) {
        if (!IsFor(row.Mandanten, mandant)) continue;
        Account &account = ledger.Sachkonten.emplace_back();
        account.Of = Kind::Sachkonto;
        account.Number = row.Number;
        account.Row = &row;
        MakeKey(account.Key, account.Number);
        if (StandsInBilanz(row)) SetVortrag(account.Years[0], OpeningOf(*ledger.Of, row));
    }
    std::sort(ledger.Sachkonten.begin(), ledger.Sachkonten.end(),
              [](const Account &a, const Account &b) { return a.Number < b.Number; });
    ledger.Debitoren = Partners(Kind::Debitor, books::Debitoren(), firstDebitor, debitoren, mandant);
    ledger.Kreditoren = Partners(Kind::Kreditor, books::Kreditoren(), firstKreditor, kreditoren, mandant);
    for (const CostObjectRow &row : books::CostObjects()) {
        if (IsFor(row.Mandanten, mandant)) ledger.CostObjects.push_back({&row});
    }
    std::sort(ledger.CostObjects.begin(), ledger.CostObjects.end(),
              [](const CostObject &a, const CostObject &b) {
                  return std::strcmp(a.Row->Number, b.Row->Number) < 0;
              });

    return ledger;
}

void BalanceOpening(Ledger &ledger)
{
    const auto collect = [&ledger](const std::vector<Account> &accounts, int collective, int counterpart) {
        int64_t sum = 0;
        for (const Account &account : accounts) {
            sum += account.Years[0].Balance();
        }
        SetVortrag(ledger.FindSachkonto(collective)->Years[0], sum);
        SetVortrag(ledger.FindSachkonto(counterpart)->Years[0], -sum);
    };
    collect(ledger.Debitoren, kontoForderungen, kontoAbstimmungDebitoren);
    collect(ledger.Kreditoren, kontoVerbindlichkeiten, kontoAbstimmungKreditoren);

    int64_t rest = 0;
    for (const Account &account : ledger.Sachkonten) {
        const bool counts = StandsInBilanz(*account.Row) && account.Number != kontoGewinnvortrag;
        if (counts) rest += account.Years[0].Balance();
    }
    SetVortrag(ledger.FindSachkonto(kontoGewinnvortrag)->Years[0], -rest);
}

void CarryOver(Ledger &ledger)
{
    int64_t result = 0;
    for (Account &account : ledger.Sachkonten) {
        const int64_t balance = account.Years[0].Balance();
        if (account.Row->Group != noTree && !StandsInBilanz(*account.Row)) {
            result += balance;
        } else {
            SetVortrag(account.Years[1], balance);
        }
    }
    Account &profit = *ledger.FindSachkonto(kontoGewinnvortrag);
    SetVortrag(profit.Years[1], profit.Years[0].Balance() + result);
    for (std::vector<Account> *accounts : {&ledger.Debitoren, &ledger.Kreditoren}) {
        for (Account &account : *accounts) {
            SetVortrag(account.Years[1], account.Years[0].Balance());
        }
    }
}

} // namespace books
