// Fiscal years beside the one that is selected: the years that a period lies in, and the year that a report
// compares with.
#pragma once

#include "src/frame/held_tables.h"
#include "src/frame/thread_context.h"
#include "src/model/tables.h"
#include "src/model/text_forms.h"

namespace vark {

using YearText = char[5]; // "1998"

// What lies of a period in one fiscal year.
struct YearPart {
    YearText Year;   // as SelectYear takes it
    bool IsPostable; // the year can be posted to; an archive year cannot
    int FirstMonth;  // fiscal months
    int LastMonth;
    PackedDate Von;
    PackedDate Bis;
};

// A period by fiscal years: one part, or two where a quarter or year of the calendar runs over the change of
// the fiscal year.
struct PeriodYears {
    int Count;
    YearPart Parts[2];
};

// Cuts a period with its fiscal months. The earlier part ends with month 12 and its day 31, the later one
// begins with day 1 of month 1.
PeriodYears YearsOfPeriod(const ThreadContext &context, const PackedDate &von, const PackedDate &bis,
                          int vonPeriode, int bisPeriode);

// The part whose year a report of one working year selects: the later one if it is postable, else the
// earlier one, postable or not.
const YearPart &WorkingPart(const PeriodYears &years);

// The part that such a report adds from a second table: the earlier one, if both are postable; else null.
const YearPart *EarlierPart(const PeriodYears &years);

// Selects the year of the working part and holds `table` of the earlier one, if there is one, under slot 29.
// False when one of them cannot be opened, which has been shown.
bool SelectYearsOf(HeldTables &held, const PeriodYears &years, TableId table);

// Where the accounts and postings of a comparison are read: in the tables of the working year, or under the
// two free slots.
struct CompareTables {
    TableId Sako;
    TableId Bube;
};

// Sets the tables of a comparison with `year`, after the working year was selected. Those of another year are
// opened under slots 29 and 30 and held. False when they cannot be.
bool HoldCompareYear(HeldTables &held, const char *year, CompareTables &tables);

} // namespace vark
