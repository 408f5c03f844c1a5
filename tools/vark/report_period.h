// The period of a report as a person names it, and its two ways into the report's dialog: the caller's block,
// and what a person would do there.
#pragma once

#include "include/vark40.h"
#include "tools/common/calendar.h"
#include "tools/common/installation.h"
#include "tools/vark/played_dialog.h"
#include "tools/vark/report_table.h"

#include <string>

namespace cli {

// UTF-8, and nothing judged yet. What is empty was not given.
struct PeriodText {
    std::string Monat = {};   // 1..12 of the calendar
    std::string Quartal = {}; // 1..4
    std::string Jahr = {};    // of the month by the calendar; else the fiscal year that begins in it
    std::string VonDatum = {};
    std::string BisDatum = {};
    std::string Per = {};
};

struct ReportPeriod {
    bool IsGiven = false;
    int Code = 0;  // 0 days, 1..12 fiscal month, 13..16 quarter, 17 year
    int Month = 0; // of the calendar, of a fiscal month
    int Year = 0;  // fiscal; of the calendar where the report counts so
    int ShownYear = 0;
    tools::CalendarDay From = {}; // of days
    tools::CalendarDay To = {};
    bool IsPer = false;
    std::string Option; // that says most of it, for refusals: "--monat"
};

// What a report's period can be, for whom.
struct PeriodRules {
    unsigned Forms; // of PeriodForm
    const tools::Mandant &Of;
    int ArchiveYear;    // 0 for none
    const char *Prefix; // of the options: "--", "--vergleich-"
};

// Throws a UsageError for what cannot be understood, and a Refusal for a year that the books do not have.
ReportPeriod ReadPeriod(const PeriodText &text, const PeriodRules &rules);

// Fills the period into a caller's block.
void PutPeriod(const ReportPeriod &period, ReportParams &params);

// Whether the report took the period as it was asked for.
bool IsPeriodKept(const ReportPeriod &period, unsigned forms, const ReportParams &params);

// Chooses the period on the page in view.
void PlayPeriod(const ReportPeriod &period, PlayedDialog &dialog);

} // namespace cli
