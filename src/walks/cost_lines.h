// Cost lines (kobu) of a range of days, by date or by cost object, and the words of the postings that they
// belong to.
//
//     CostScan scan;
//     bool isGood = BeginCostLines(scan, context, TableKobu, von, bis);
//     while (isGood && scan.Found) {
//         isGood = Send(scan.Line) && NextCostLine(scan);
//     }
#pragma once

#include "src/frame/held_tables.h"
#include "src/frame/thread_context.h"
#include "src/model/posting_records.h"
#include "src/model/tables.h"

namespace vark {

// The tables that cost lines of the working year stand in: its own kobu, and that of the Mandant's year if
// that is another one, since lines of an older year may have been written there.
struct CostTables {
    TableId Tables[2];
    int Count;
};

// Opens what is needed; the second table lies under slot 29. False when it cannot be opened.
bool HoldCostTables(HeldTables &held, CostTables &tables);

// Which cost object of a line: the number of the key of kobu that it is found by, with the date.
enum class CostObject : unsigned { First = 4, Second = 5 };

// The first or second cost object of a line.
const AccountNumber &ObjectOf(const KobuRecord &line, CostObject which);

struct CostScan {
    KobuRecord Line; // the line that the scan stands at, while Found; its date is a SortDate
    bool Found;      // false: the range has ended

    ThreadContext *Context;
    TableKeyCode Code;
    AccountNumber Objekt; // empty: of all cost objects
    SortDate Bis;
};

// Goes to the first line of the days `von` to `bis`, both included, in the order of dates. False when the
// record store failed.
bool BeginCostLines(CostScan &scan, ThreadContext &context, TableId kobu, const PackedDate &von,
                    const PackedDate &bis);

// The same for the lines of one cost object; all seven characters of the number (right-justified) count.
bool BeginCostLinesOf(CostScan &scan, ThreadContext &context, TableId kobu, const AccountNumber &objekt,
                      CostObject which, const PackedDate &von, const PackedDate &bis);

// Goes to the next one. False when the record store failed.
bool NextCostLine(CostScan &scan);

// A line whose posting is final; the others belong to a posting in a Stapel.
inline bool IsFinal(const KobuRecord &line) { return line.FinaleBuchung != 0; }

// A line on the Haben side of its posting.
inline bool IsOnHaben(const KobuRecord &line) { return (line.Flag & KobuHaben) != 0; }

// What a line takes from its posting. A final line keeps its own account and takes the rest from bube of the
// working year; a line in a Stapel takes all from its Teilbuchung, whatever account it carries.
struct CostWords {
    AccountNumber Konto; // right-justified
    char Beleg[9];
    char Text[40];
};

// False when the record store failed. `found` is false, and the words are empty but for the account of a
// final line, when the posting, its Teilbuchung or its bat record is not there.
bool FindCostWords(ThreadContext &context, const KobuRecord &line, CostWords &words, bool &found);

// The account on which a line's costs arose: its own, or, for a line in a Stapel that carries none, that of
// its Teilbuchung. False when the record store failed. `found` is false, and the account empty, when that is
// not there.
bool FindCostAccount(ThreadContext &context, const KobuRecord &line, AccountNumber &konto, bool &found);

} // namespace vark
