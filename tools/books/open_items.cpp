#include "tools/books/open_items.h"

#include "text/windows1252.h"
#include "tools/books/record_fields.h"

#include <algorithm>

namespace books {

using namespace tools;
using namespace vark;

using text::operator""_w;

namespace fs = std::filesystem;

namespace {

// What an amount in DM is in another currency, at the first rate that the books have; 0 without a currency.
int64_t ForeignAmount(const char *currency, int64_t pfennig)
{
    constexpr int64_t units[] = {1, 1, 100, 1000, 10000, 100000};
    for (const CurrencyRow &row : Currencies()) {
        if (std::strcmp(row.Code, currency) == 0) return pfennig * 100 * units[row.UnitCode] / row.FirstRate;
    }
    return 0;
}

// What an invoice is written in: a supplier's in the currency of its account, a customer's in that of its
// country, where the books have rates for it.
const char *CurrencyOf(const Account &account)
{
    if (account.Of == Kind::Kreditor) return account.Partner->Waehrung;
    if (std::strcmp(account.Partner->Land, "CH") == 0) return "CHF";
    if (std::strcmp(account.Partner->Land, "DK") == 0) return "DKK";
    return "";
}

const TermRow &TermOf(const PartnerRow &partner)
{
    for (const TermRow &row : Terms()) {
        if (row.Number == partner.Zahlungsziel) return row;
    }
    return Terms().front();
}

// How often a customer was reminded of what was due so many days ago.
int16_t RemindersAfter(Day days)
{
    if (days <= 7) return 0;
    return days <= 21 ? int16_t{1} : days <= 45 ? int16_t{2} : int16_t{3};
}

const char *WordsOf(const OpenItem &item)
{
    if (item.Original < 0) return "Zahlung à conto"_w;
    if (item.Booking == 0) return "Rechnung aus dem Vorjahr"_w;
    return item.Open == item.Original ? "Rechnung"_w : "Rechnung, Rest"_w;
}

OpenItemRecord RecordOf(const OpenItem &item, const Account &account, int firstMonth, Day lastDay)
{
    const PartnerRow &partner = *account.Partner;
    const TermRow &term = TermOf(partner);
    const bool isDebitor = account.Of == Kind::Debitor;
    const Day due = item.Date + term.DaysNet;
    constexpr int kontoBank = 1840;
    constexpr int waysOfPayment = 5; // with one that has no name
    OpenItemRecord record{};
    std::memcpy(record.Konto, account.Key, sizeof record.Konto);
    std::memcpy(record.Referenz1, item.Prefix, 2);
    PutDigits(record.Referenz1 + 2, item.Voucher, 6);
    PutText(record.Referenz2, item.Booking == 0 ? "Vorjahr"_w : "");
    MakeSort(record.Datum1, item.Date, firstMonth);
    MakeSort(record.Termin, due, firstMonth);
    MakeSort(record.Skontodatum, item.Date + term.DaysSkonto, firstMonth);
    text::FromUtf8(partner.Name1, record.Text1, sizeof record.Text1);
    PutText(record.Text2, WordsOf(item));
    record.Flag = item.Open == item.Original ? 0 : 1;
    PutAmount(record.Betrag1, item.Open);
    MakeKey(record.Konto2, isDebitor ? kontoForderungen : kontoVerbindlichkeiten);
    MakeKey(record.Konto3, kontoBank);
    text::FromUtf8(partner.Skonto, record.Satz, sizeof record.Satz);
    record.Wert1 = isDebitor && item.Original > 0 ? RemindersAfter(lastDay - due) : int16_t{0};
    record.Wert2 = static_cast<int16_t>(term.Number);
    PutAmount(record.Betrag3, item.Original);
    PutAmount(record.Betrag2, Percent(item.Open, ShareOf(partner.Skonto)));
    PutAmount(record.Betrag4, item.Original - item.Open);
    record.Wert3 = static_cast<int16_t>(item.Booking);
    const char *currency = CurrencyOf(account);
    text::FromUtf8(currency, record.Waehrung, sizeof record.Waehrung);
    PutAmount(record.Waehrungsbetrag, ForeignAmount(currency, item.Open));
    record.Zahlungsart = static_cast<uint8_t>((item.Account + 1) % waysOfPayment);
    return record;
}

} // namespace

int64_t WriteOpenItems(const Generator &maker)
{
    int64_t count = 0;
    const fs::path directory = maker.Data / maker.Books.Directory(yearCount - 1);
    const Day lastDay = LastPostingDay(maker.Books);
    const auto write = [&](TableId id, const std::vector<Account> &accounts,
                           std::initializer_list<const std::deque<OpenItem> *> lists) {
        TableFile table(LayoutOf(id), directory, OpenMode::Accelerated);
        std::optional<EngineTransaction> transaction;
        uint32_t number = 0;
        for (const std::deque<OpenItem> *items : lists) {
            for (const OpenItem &item : *items) {
                if (!transaction) transaction.emplace();
                OpenItemRecord record = RecordOf(item, accounts[static_cast<size_t>(item.Account)],
                                                 maker.Books.Of->FirstMonth, lastDay);
                record.Nummer = ++number;
                table.Insert(&record);
                if (number % recordsPerTransaction != 0) continue;
                transaction->Finish();
                transaction.reset();
            }
        }
        if (transaction) transaction->Finish();
        table.Close();
        count += number;
    };
    write(TableOpdebi, maker.Books.Debitoren,
          {&maker.LateReceivable, &maker.Receivable, &maker.ReceivedAhead});
    write(TableOpkred, maker.Books.Kreditoren, {&maker.LatePayable, &maker.Payable, &maker.PaidAhead});
    return count;
}

} // namespace books
