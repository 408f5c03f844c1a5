// A sheet: the head and the lines of one account, or of one Kostenstelle.
#pragma once

#include "src/reports/frame/report_run.h"
#include "src/walks/account_walk.h"
#include "src/walks/posting_walk.h"

namespace vark {

// What the sheets of one report have in common while they are sent.
struct SheetRun {
    ReportRun *Run;
    PeriodTitle Zeitraum;
    DayRange Days;
    bool HasPostings; // there is any posting in the period
    bool Aufloesen;   // no postings are summed up
    bool NurBebuchte; // accounts without postings in the period have no sheet
};

// Sends the sheet of one account, and of one Kostenstelle. False when a read failed, a sum has no room or the
// engine refused something.
bool SendAccountSheet(const SheetRun &sheet, const AccountScan &scan);
bool SendKostenSheet(const SheetRun &sheet, const KoreRecord &record);

} // namespace vark
