#include "src/booking/balances.h"

#include "include/vark40.h"
#include "src/booking/account_queries.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/model/company_records.h"
#include "src/model/posting_records.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

#include <cstring>

namespace vark {

using text::CopyText;

namespace {

constexpr int32_t badKontoart = -7;
constexpr int32_t accountUnknown = -10;
constexpr int32_t badForm = -20;
constexpr int32_t kostenstelleUnknown = -23;

bool Add(SollHaben &total, const SollHaben &more)
{
    return AccumulateAmount(total.Soll, more.Soll) && AccumulateAmount(total.Haben, more.Haben);
}

// The head of a key of bube: a day and the running number inside it.
using FolgeText = char[10];

// The postings of a month that lie after a day.
struct Rest {
    FolgeText From;
    FolgeText To;
};

void MakeFolge(FolgeText &folge, int day, const PackedDate &date, const char *number)
{
    PackedDate sortDate;
    MakePackedDate(sortDate, day, FiscalMonthOf(date), FiscalYearOf(date));
    ToSortDate(sortDate);
    std::memcpy(folge, sortDate, 6);
    std::memcpy(folge + 6, number, 4);
}

bool LiesBehind(const BubeRecord &record, const Rest &rest)
{
    return std::memcmp(record.Schluessel.Folge, rest.To, sizeof rest.To) > 0;
}

KeyBuffer KeyOfRest(const Rest &rest)
{
    KeyBuffer key{};
    std::memcpy(key.Bytes, rest.From, sizeof rest.From);
    return key;
}

// The account keys 1 to 3 of bube: an account, then key 0.
KeyBuffer KeyOfRest(const AccountNumber &konto, const Rest &rest)
{
    KeyBuffer key{};
    std::memcpy(key.Bytes, konto, sizeof konto);
    std::memcpy(key.Bytes + sizeof konto, rest.From, sizeof rest.From);
    return key;
}

bool TakeOff(SollHaben &sums, const BubeRecord &record, unsigned key)
{
    switch (key) {
    case 1: return DeductAmount(sums.Soll, record.Soll);
    case 2: return DeductAmount(sums.Haben, record.Haben);
    default:
        return DeductAmount((record.Steuerflags & BubeSteuerPlus) != 0 ? sums.Haben : sums.Soll,
                            record.Steuer);
    }
}

// Takes off what the rest holds of an account under one of the keys of bube.
bool TakeOffUnderKey(ThreadContext &context, SollHaben &sums, const AccountNumber &konto, const Rest &rest,
                     TableId bube, unsigned key)
{
    const TableKeyCode code = KeyCode(bube, key);
    BubeRecord record;
    bool found = false;
    if (!GetGreaterEqualF(context, &record, KeyOfRest(konto, rest), found, code)) return false;
    while (found) {
        const AccountNumber &account = key == 1   ? record.Sollkonto
                                       : key == 2 ? record.Habenkonto
                                                  : record.Steuerkonto;
        if (std::memcmp(account, konto, sizeof konto) != 0 || LiesBehind(record, rest)) break;
        const bool isInMonth = (record.Status & (BubeOhneNetto | BubeNichtImMonat)) == 0;
        if (isInMonth && !TakeOff(sums, record, key)) return false;
        if (!GetNextF(context, &record, found, code)) return false;
    }
    return true;
}

bool TakeOffAfter(ThreadContext &context, SollHaben &sums, const AccountNumber &konto, const PackedDate &date,
                  TableId bube)
{
    const int lastDay = DaysInFiscalMonth(FiscalMonthOf(date), FiscalYearOf(date), context.FirstFiscalMonth);
    if (DayOf(date) >= lastDay) return true;
    Rest rest;
    MakeFolge(rest.From, DayOf(date) + 1, date, "0000");
    MakeFolge(rest.To, lastDay, date, "9999");

    // One look by date alone spares most accounts the three by account: a month's rest is often empty.
    BubeRecord first;
    bool found = false;
    if (!GetGreaterEqualF(context, &first, KeyOfRest(rest), found, bube)) return false;
    if (!found || LiesBehind(first, rest)) return true;
    for (unsigned key = 1; key <= 3; ++key) {
        if (!TakeOffUnderKey(context, sums, konto, rest, bube, key)) return false;
    }
    return true;
}

// Adds an account's sums over the whole year to a balance.
bool AddBalance(AmountText &balance, const AccountSums &sums)
{
    const auto add = [&](const SollHaben &pair) {
        return AccumulateAmount(balance, pair.Soll) && DeductAmount(balance, pair.Haben);
    };
    if (!add(sums.Vortrag) || !add(sums.Slot0)) return false;
    for (const SollHaben &month : sums.Monat) {
        if (!add(month)) return false;
    }
    return true;
}

// Reads an account and its balance; -3 also for a balance that no amount can hold.
int32_t SachkontoBalance(ThreadContext &context, const KeyBuffer &key, bool &found, AmountText &balance)
{
    SakoRecord record;
    if (!GetEqual(context, &record, key, found, TableSako)) return engineFailure;
    return !found || AddBalance(balance, record.Umsaetze) ? 1 : engineFailure;
}

int32_t PersonalBalance(ThreadContext &context, TableId table, const KeyBuffer &key, bool &found,
                        AmountText &balance)
{
    PersonalRecord record;
    if (!GetEqual(context, &record, key, found, table)) return engineFailure;
    return !found || AddBalance(balance, record.Umsaetze) ? 1 : engineFailure;
}

int32_t KostenstelleBalance(ThreadContext &context, const KeyBuffer &key, bool &found, AmountText &balance)
{
    KoreRecord record;
    if (!GetEqual(context, &record, key, found, TableKore)) return engineFailure;
    if (!found) return 1;
    for (const AmountText &month : record.Monat) {
        if (!AccumulateAmount(balance, month)) return engineFailure;
    }
    return 1;
}

} // namespace

bool AccountSumsToDate(ThreadContext &context, const AccountNumber &konto, const AccountSums &sums,
                       const PackedDate &date, uint32_t options, TableId bube, SollHaben &result)
{
    const int month = FiscalMonthOf(date);
    if (month < 1 || month > 12) return false;
    CopyText(result.Soll, zeroAmount);
    CopyText(result.Haben, zeroAmount);
    if (!Add(result, sums.Monat[month - 1])) return false;
    if (IsMonthEnd(true, date, nullptr, context.FirstFiscalMonth) && !Add(result, sums.Slot0)) return false;
    if ((options & SumEarlierMonths) != 0) {
        for (int earlier = 1; earlier < month; ++earlier) {
            if (!Add(result, sums.Monat[earlier - 1])) return false;
        }
    }
    if ((options & SumVortrag) != 0 && !Add(result, sums.Vortrag)) return false;
    return TakeOffAfter(context, result, konto, date, bube);
}

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_HoleSaldo(int32_t mandant, const char *konto, int32_t kontoart, int32_t showMessages,
                                 int32_t form, char *out)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    context->ShowMessages = showMessages;
    if (form < 1 || form > 3) return Report(*context, 1419, badForm, "Das Ausgabeformat ist", -1);
    if (kontoart != KontoartSachkonto && kontoart != KontoartKreditor && kontoart != KontoartDebitor &&
        kontoart != KontoartKostenstelle) {
        return Report(*context, 1413, badKontoart, nullptr, -1);
    }
    const size_t length = konto != nullptr ? strnlen(konto, accountDigits + 1) : 0;
    if (length == 0 || length > accountDigits) return Report(*context, 1409, accountUnknown, "K", -1);
    FistaRecord fista;
    const int32_t selected = SelectMandantOrReport(*context, mandant, fista);
    if (selected < 1) return selected;

    AccountNumber number;
    CopyText(number, konto);
    RightJustify(number, accountDigits);
    const KeyBuffer key = KeyOfText(number, sizeof number);
    AmountText balance;
    CopyText(balance, zeroAmount);
    bool found = false;
    int32_t read = 1;
    switch (kontoart) {
    case KontoartSachkonto: read = SachkontoBalance(*context, key, found, balance); break;
    case KontoartKreditor: read = PersonalBalance(*context, TableKred, key, found, balance); break;
    case KontoartDebitor: read = PersonalBalance(*context, TableDebi, key, found, balance); break;
    default: read = KostenstelleBalance(*context, key, found, balance); break;
    }
    if (read != 1) return read;
    if (!found && kontoart == KontoartKostenstelle) {
        return Report(*context, 1419, kostenstelleUnknown, "Die Kostenstelle ist", -1);
    }
    if (!found) return Report(*context, 1409, accountUnknown, "K", -1);
    FormattedAmount formatted;
    FormatAmount(form, balance, formatted);
    if (out != nullptr) std::memcpy(out, formatted, std::strlen(formatted) + 1);
    return 1;
}
