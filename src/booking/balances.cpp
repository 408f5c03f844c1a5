#include "src/booking/balances.h"

#include "include/vark40.h"
#include "src/frame/beliefs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/frame/transactions.h"
#include "src/model/accounts.h"
#include "src/values/account_numbers.h"
#include "src/values/amount_texts.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
#include "src/values/sums.h"
#include "src/walks/account_walk.h"
#include "src/walks/posting_walk.h"
#include "text/fixed_text.h"

#include <cstring>
#include <initializer_list>

namespace vark {

using text::CopyText;

namespace {

constexpr int32_t badForm = VARK_FEHLER_FORM;
constexpr int32_t kostenstelleUnknown = VARK_FEHLER_KOSTENSTELLE;

// The postings of a date's month that lie after its day.
DayRange RestOfMonth(const PackedDate &date, int lastDay)
{
    PackedDate from;
    PackedDate to;
    Holds(DayOf(date) < lastDay);
    Holds(lastDay <= 31);
    MakePackedDate(from, DayOf(date) + 1, FiscalMonthOf(date), FiscalYearOf(date));
    MakePackedDate(to, lastDay, FiscalMonthOf(date), FiscalYearOf(date));
    return DaysOf(from, to);
}

bool TakeOff(SollHaben &sums, const BubeRecord &record, PostingAccount which)
{
    switch (which) {
    case PostingAccount::Soll: return DeductAmount(sums.Soll, record.Soll);
    case PostingAccount::Haben: return DeductAmount(sums.Haben, record.Haben);
    default:
        Holds(which == PostingAccount::Steuer);
        return DeductAmount((record.Steuerflags & BubeSteuerPlus) != 0 ? sums.Haben : sums.Soll,
                            record.Steuer);
    }
}

// Deducts an account's later postings of the month, read by one key of bube.
bool TakeOffUnderKey(ThreadContext &context, SollHaben &sums, const AccountNumber &konto,
                     const DayRange &rest, TableId bube, PostingAccount which)
{
    Holds(konto[0] != 0);
    PostingScan scan;
    bool isGood = BeginPostingsOf(scan, context, konto, which, rest, bube);
    while (isGood && scan.Found) {
        const bool isInMonth = (scan.Record.Status & (BubeOhneNetto | BubeNichtImMonat)) == 0;
        isGood = (!isInMonth || TakeOff(sums, scan.Record, which)) && NextPosting(scan);
    }
    Holds(!isGood || !scan.Found);
    return isGood;
}

bool TakeOffAfter(ThreadContext &context, SollHaben &sums, const AccountNumber &konto, const PackedDate &date,
                  TableId bube)
{
    const int lastDay = DaysInFiscalMonth(FiscalMonthOf(date), FiscalYearOf(date), context.FirstFiscalMonth);
    if (!Holds(lastDay >= 28) || DayOf(date) >= lastDay) return true;
    const DayRange rest = RestOfMonth(date, lastDay);

    // One look by date alone spares most accounts the three by account: a month's rest is often empty.
    bool hasAny = false;
    if (!HasPostings(context, rest, hasAny, bube)) return false;
    if (!hasAny) return true;
    for (const PostingAccount which : {PostingAccount::Soll, PostingAccount::Haben, PostingAccount::Steuer}) {
        if (!TakeOffUnderKey(context, sums, konto, rest, bube, which)) return false;
    }
    return true;
}

// An account's balance over the whole year. False when no amount can hold it.
bool YearBalance(const AccountKind &kind, const AnyAccount &record, AmountText &balance)
{
    CopyText(balance, zeroAmount);
    if (kind.Art == KontoartKostenstelle) return SumMonths(balance, record.Kore.Monat, 1, 12);
    const AccountSums &sums = SumsOf(kind, record);
    return AddBalance(balance, sums.Vortrag) && AddBalance(balance, sums.Slot0) &&
           AddMonthBalances(balance, sums, 1, 12);
}

} // namespace

bool AccountSumsToDate(ThreadContext &context, const AccountNumber &konto, const AccountSums &sums,
                       const PackedDate &date, uint32_t options, TableId bube, SollHaben &result)
{
    const int month = FiscalMonthOf(date);
    if (month < 1 || month > 12) return false;
    Holds(bube != TableUnused);
    CopyText(result.Soll, zeroAmount);
    CopyText(result.Haben, zeroAmount);
    const bool hasEarlier = (options & SumEarlierMonths) != 0;
    if (!SumMonths(result, sums, hasEarlier ? 1 : month, month)) return false;
    if (IsMonthEnd(true, date, nullptr, context.FirstFiscalMonth) && !AddPair(result, sums.Slot0))
        return false;
    if ((options & SumVortrag) != 0 && !AddPair(result, sums.Vortrag)) return false;
    if (!TakeOffAfter(context, result, konto, date, bube)) return false;
    return Holds(IsWholeAmount(result.Soll)) && Holds(IsWholeAmount(result.Haben));
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
    if (form < 1 || form > 3)
        return Report(*context, Message::Unzulaessig, badForm, "Das Ausgabeformat ist", -1);
    const AccountKind *const kind = FindKind(kontoart);
    if (kind == nullptr)
        return Report(*context, Message::KontoartUnzulaessig, VARK_FEHLER_KONTOART, nullptr, -1);
    const size_t length = konto != nullptr ? strnlen(konto, accountDigits + 1) : 0;
    if (length == 0 || length > accountDigits)
        return Report(*context, Message::KontonummerUnzulaessig, VARK_FEHLER_KONTO, "K", -1);
    FistaRecord fista;
    const int32_t selected = SelectMandantOrReport(*context, mandant, fista);
    if (selected < 1) return selected;

    AccountNumber number;
    JustifyNumber(number, konto);
    AnyAccount record;
    bool found = false;
    if (!ReadAccount(*context, kind->Table, number, record, found)) return engineFailure;
    if (!found && kontoart == KontoartKostenstelle) {
        return Report(*context, Message::Unzulaessig, kostenstelleUnknown, "Die Kostenstelle ist", -1);
    }
    if (!found) return Report(*context, Message::KontonummerUnzulaessig, VARK_FEHLER_KONTO, "K", -1);
    AmountText balance;
    if (!YearBalance(*kind, record, balance)) return engineFailure;
    Holds(IsWholeAmount(balance));
    AtRestHolds(*context);
    Holds(form >= 1 && form <= 3);
    FormattedAmount formatted;
    FormatAmount(form, balance, formatted);
    if (out != nullptr) std::memcpy(out, formatted, std::strlen(formatted) + 1);
    return 1;
}
