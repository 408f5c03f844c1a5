#include "src/walks/other_year.h"

#include "src/frame/mandant.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

#include <charconv>
#include <cstring>

namespace vark {

using text::CopyText;

namespace {

constexpr int lastMonth = 12;
constexpr int longestDay = 31;

void FillYear(const ThreadContext &context, YearPart &part, int year)
{
    CopyText(part.Year, "");
    std::to_chars(part.Year, part.Year + sizeof part.Year - 1, year + firstYear);
    part.IsPostable = PostableYear(context, year) != 0;
}

} // namespace

PeriodYears YearsOfPeriod(const ThreadContext &context, const PackedDate &von, const PackedDate &bis,
                          int vonPeriode, int bisPeriode)
{
    PeriodYears years{};
    YearPart &first = years.Parts[0];
    FillYear(context, first, FiscalYearOf(von));
    first.FirstMonth = vonPeriode;
    first.LastMonth = bisPeriode;
    CopyText(first.Von, von);
    CopyText(first.Bis, bis);
    years.Count = 1;
    if (FiscalYearOf(von) == FiscalYearOf(bis)) return years;

    YearPart &second = years.Parts[1];
    second = first;
    FillYear(context, second, FiscalYearOf(bis));
    first.LastMonth = lastMonth;
    MakePackedDate(first.Bis, longestDay, lastMonth, FiscalYearOf(von));
    second.FirstMonth = 1;
    MakePackedDate(second.Von, 1, 1, FiscalYearOf(bis));
    years.Count = 2;
    return years;
}

const YearPart &WorkingPart(const PeriodYears &years)
{
    const YearPart &last = years.Parts[years.Count - 1];
    return last.IsPostable ? last : years.Parts[0];
}

const YearPart *EarlierPart(const PeriodYears &years)
{
    const bool areBoth = years.Count == 2 && years.Parts[0].IsPostable && years.Parts[1].IsPostable;
    return areBoth ? &years.Parts[0] : nullptr;
}

bool SelectYearsOf(HeldTables &held, const PeriodYears &years, TableId table)
{
    if (!SelectYear(held.Context, WorkingPart(years).Year)) return false;
    const YearPart *const earlier = EarlierPart(years);
    return earlier == nullptr || HoldOfYear(held, table, earlier->Year, SlotFree29);
}

bool HoldCompareYear(HeldTables &held, const char *year, CompareTables &tables)
{
    tables = {TableSako, TableBube};
    if (std::strcmp(year, held.Context.WorkYear) == 0) return true;
    tables = {SlotFree29, SlotFree30};
    return HoldOfYear(held, TableSako, year, SlotFree29) && HoldOfYear(held, TableBube, year, SlotFree30);
}

} // namespace vark
