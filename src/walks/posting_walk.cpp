#include "src/walks/posting_walk.h"

#include "src/frame/record_store.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

#include <cstring>

namespace vark {

using text::CopyText;

namespace {

constexpr PackedDate noDay = "";
constexpr size_t dayDigits = sizeof(SortDate) - 1;

static_assert(sizeof(DayRange::Von) == dayDigits + 4);
static_assert(sizeof(BubeKey::Folge) == sizeof(DayRange::Von) + 1);

void MakeBound(char (&bound)[10], const PackedDate &day, const char *number)
{
    std::memset(bound, 0, sizeof bound);
    if (day[0] == 0) return;
    SortDate sortDate;
    CopyText(sortDate, day);
    ToSortDate(sortDate);
    std::memcpy(bound, sortDate, dayDigits);
    std::memcpy(bound + dayDigits, number, sizeof bound - dayDigits);
}

KeyBuffer KeyOfDay(const DayRange &days)
{
    KeyBuffer key{};
    std::memcpy(key.Bytes, days.Von, sizeof days.Von);
    return key;
}

// The account keys of bube: an account, then key 0.
KeyBuffer KeyOfAccountAndDay(const AccountNumber &konto, const DayRange &days)
{
    KeyBuffer key{};
    std::memcpy(key.Bytes, konto, sizeof konto);
    std::memcpy(key.Bytes + sizeof konto, days.Von, sizeof days.Von);
    return key;
}

bool IsInRange(const PostingScan &scan)
{
    const unsigned key = KeyOf(scan.Code);
    if (key == bubeByBuchungsdatum)
        return std::memcmp(scan.Record.Buchungsdatum, scan.Days.Bis, dayDigits) <= 0;
    if (LiesBehind(scan.Record, scan.Days)) return false;
    return key == 0 || std::memcmp(AccountOf(scan.Record, static_cast<PostingAccount>(key)), scan.Konto,
                                   sizeof scan.Konto) == 0;
}

bool Take(PostingScan &scan, bool isRead)
{
    scan.Found = isRead && scan.Found && IsInRange(scan);
    return isRead;
}

bool Begin(PostingScan &scan, ThreadContext &context, const KeyBuffer &key, const DayRange &days,
           TableKeyCode code)
{
    scan.Found = false;
    scan.Code = code;
    scan.Context = &context;
    scan.Days = days;
    return Take(scan, GetGreaterEqualF(context, &scan.Record, key, scan.Found, code));
}

} // namespace

DayRange DaysOf(const PackedDate &von, const PackedDate &bis)
{
    DayRange days;
    MakeBound(days.Von, von, "0000");
    MakeBound(days.Bis, bis, "9999");
    return days;
}

DayRange DaysFrom(const PackedDate &von)
{
    DayRange days = DaysOf(von, noDay);
    std::memset(days.Bis, 0xFF, sizeof days.Bis);
    return days;
}

bool LiesBehind(const BubeRecord &record, const DayRange &days)
{
    return std::memcmp(record.Schluessel.Folge, days.Bis, sizeof days.Bis) > 0;
}

bool HasPostings(ThreadContext &context, const DayRange &days, bool &hasAny)
{
    return HasPostings(context, days, hasAny, TableBube);
}

bool HasPostings(ThreadContext &context, const DayRange &days, bool &hasAny, TableId bube)
{
    BubeRecord first;
    hasAny = false;
    if (!GetGreaterEqualF(context, &first, KeyOfDay(days), hasAny, bube)) return false;
    hasAny = hasAny && !LiesBehind(first, days);
    return true;
}

const AccountNumber &AccountOf(const BubeRecord &record, PostingAccount which)
{
    switch (which) {
    case PostingAccount::Soll: return record.Sollkonto;
    case PostingAccount::Haben: return record.Habenkonto;
    default: return record.Steuerkonto;
    }
}

bool BeginPostings(PostingScan &scan, ThreadContext &context, const DayRange &days)
{
    return BeginPostings(scan, context, days, TableBube);
}

bool BeginPostings(PostingScan &scan, ThreadContext &context, const DayRange &days, TableId bube)
{
    CopyText(scan.Konto, "");
    return Begin(scan, context, KeyOfDay(days), days, bube);
}

bool BeginPostingsOf(PostingScan &scan, ThreadContext &context, const AccountNumber &konto,
                     PostingAccount which, const DayRange &days)
{
    return BeginPostingsOf(scan, context, konto, which, days, TableBube);
}

bool BeginPostingsOf(PostingScan &scan, ThreadContext &context, const AccountNumber &konto,
                     PostingAccount which, const DayRange &days, TableId bube)
{
    CopyText(scan.Konto, konto);
    const TableKeyCode code = KeyCode(bube, static_cast<unsigned>(which));
    return Begin(scan, context, KeyOfAccountAndDay(konto, days), days, code);
}

bool BeginPostingsByEntry(PostingScan &scan, ThreadContext &context, const DayRange &days)
{
    CopyText(scan.Konto, "");
    SortDate first;
    CopyText(first, sizeof first, days.Von, dayDigits);
    return Begin(scan, context, KeyOfText(first, sizeof first), days,
                 KeyCode(TableBube, bubeByBuchungsdatum));
}

bool ResumePostings(PostingScan &scan, ThreadContext &context, const KeyBuffer &key)
{
    CopyText(scan.Konto, "");
    scan.Code = TableBube;
    scan.Context = &context;
    scan.Days = DaysFrom(noDay);
    return GetEqual(context, &scan.Record, key, scan.Found, TableBube);
}

bool NextPosting(PostingScan &scan)
{
    return Take(scan, GetNextF(*scan.Context, &scan.Record, scan.Found, scan.Code));
}

bool FindPosting(ThreadContext &context, int32_t buchungsnummer, BubeRecord &record, bool &found)
{
    return GetEqual(context, &record, KeyOfNumber(buchungsnummer), found, KeyCode(TableBube, bubeByNumber));
}

} // namespace vark
