#include "tools/books/check_year.h"

#include "tools/books/check_accounts.h"
#include "tools/books/check_batches.h"
#include "tools/books/check_costs.h"
#include "tools/books/check_open_items.h"
#include "tools/books/check_opening.h"
#include "tools/books/check_postings.h"
#include "tools/books/check_small_tables.h"
#include "tools/books/check_tables.h"
#include "tools/books/check_trees.h"
#include "tools/books/year_check.h"

namespace books {

using namespace tools;
using namespace vark;

namespace {

struct Subject {
    void (*Check)(YearCheck &year);
    TableId Table; // of which a failed read is told
    bool IsOfLastYear;
};

// In an order in which each finds what it leans on.
constexpr Subject subjects[] = {
    {ReadReferences, TableKoscha, false},    {CheckRates, TableSteke, false},
    {CheckAccounts, TableSako, false},       {CheckRateRows, TableSteke, false},
    {CheckTrees, TableBilaktau, false},      {CheckCostObjects, TableKore, false},
    {CheckPostings, TableBube, false},       {CompareSums, TableBube, false},
    {CheckCostLines, TableKobu, false},      {CheckTemplates, TableKoscha, true},
    {CheckSmallTables, TableZahlziel, true}, {CheckExchangeRates, TableKurse, true},
    {CheckBatches, TableBat, true},          {CheckOpenItems, TableOpdebi, true},
    {CheckUnused, TableBank, false},         {CheckOpening, TableSako, false},
};

} // namespace

void CheckYear(Findings &findings, const YearPlace &place, const Mandant &mandant, int year)
{
    YearCheck check(findings, place, mandant, year);
    for (const Subject &subject : subjects) {
        if (subject.IsOfLastYear && !check.IsLastYear) continue;
        try {
            subject.Check(check);
        } catch (const EngineError &error) {
            if (IsCircumstance(error.Status)) throw;
            check.Unread.insert(subject.Table);
            check.Tell("lesbar", LayoutOf(subject.Table).Stem, "", "", error.what());
        }
    }
}

} // namespace books
