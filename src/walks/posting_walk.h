// The final postings of a range of days: all of them by date or by Buchungsdatum, or those of one account.
//
//     PostingScan scan;
//     bool isGood = BeginPostings(scan, context, DaysOf(von, bis));
//     while (isGood && scan.Found) {
//         isGood = Send(scan.Record) && NextPosting(scan);
//     }
//
// `bube` is TableBube, or the free slot under which the bube of another year is open. A caller that moves the
// position of this slot to other records leads it back to scan.Record under scan.Code before NextPosting.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/posting_records.h"
#include "src/model/tables.h"

namespace vark {

// A range of days as the keys of bube hold it: "JJMMDD0000" to "JJMMDD9999", both ends included; ten
// characters without NUL. An empty first day gives a bound before every posting; an empty last day one that
// every posting lies behind.
struct DayRange {
    char Von[10];
    char Bis[10];
};

// The days from `von` to `bis`, both included.
DayRange DaysOf(const PackedDate &von, const PackedDate &bis);

// From a day to the end of the table.
DayRange DaysFrom(const PackedDate &von);

// Whether the key of a posting lies behind the last day.
bool LiesBehind(const BubeRecord &record, const DayRange &days);

// Whether there is anything in a range of days: the first posting at or after its first day exists and lies
// not behind its last one. False is a failure of the record store.
bool HasPostings(ThreadContext &context, const DayRange &days, bool &hasAny);
bool HasPostings(ThreadContext &context, const DayRange &days, bool &hasAny, TableId bube);

// Which account of a posting: the number of the key of bube that it is found by.
enum class PostingAccount : unsigned { Soll = 1, Haben = 2, Steuer = 3 };

// The posting's number in that place; empty where it has none.
const AccountNumber &AccountOf(const BubeRecord &record, PostingAccount which);

// Other keys of bube.
inline constexpr unsigned bubeByNumber = 5;        // Buchungsnummer
inline constexpr unsigned bubeByBuchungsdatum = 7; // the day of entry

struct PostingScan {
    BubeRecord Record; // the posting that the scan stands at, while Found
    bool Found;        // false: the range has ended
    TableKeyCode Code; // table (or slot) and key that are read

    ThreadContext *Context;
    AccountNumber Konto; // empty: of all accounts
    DayRange Days;
};

// Goes to the first posting of the days in the order of dates (key 0). False when the record store failed.
bool BeginPostings(PostingScan &scan, ThreadContext &context, const DayRange &days);
bool BeginPostings(PostingScan &scan, ThreadContext &context, const DayRange &days, TableId bube);

// The same for the postings of an account (right-justified) in one of the three places of a posting.
bool BeginPostingsOf(PostingScan &scan, ThreadContext &context, const AccountNumber &konto,
                     PostingAccount which, const DayRange &days);
bool BeginPostingsOf(PostingScan &scan, ThreadContext &context, const AccountNumber &konto,
                     PostingAccount which, const DayRange &days, TableId bube);

// The same in the order of the Buchungsdatum (key 7), which the days mean here. A posting without one lies
// before every day.
bool BeginPostingsByEntry(PostingScan &scan, ThreadContext &context, const DayRange &days);

// Goes to the posting with this key 0 (all 18 bytes), with every later one behind it. Found is false where it
// is gone: nothing else takes its place.
bool ResumePostings(PostingScan &scan, ThreadContext &context, const KeyBuffer &key);

// Goes to the next one. False when the record store failed.
bool NextPosting(PostingScan &scan);

// Reads the posting with a Buchungsnummer from bube of the working year (key 5). False when the record store
// failed.
bool FindPosting(ThreadContext &context, int32_t buchungsnummer, BubeRecord &record, bool &found);

} // namespace vark
