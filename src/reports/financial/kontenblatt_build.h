// A report of sheets: its dialog, what it was built from, and building it once more for another month or
// account.
#pragma once

#include "src/frame/held_tables.h"
#include "src/reports/frame/report_run.h"

#include <cstdint>

namespace vark {

// What the sheets were built from, so that they can be built again for another month or account. A new choice
// works on a copy, which takes the place of the original when its sheets are there.
struct SheetBuild {
    ReportRun Run;            // Report: the open report, which the view owns
    int32_t MandantNummer;    // selected again before sheets are built once more
    char DatenJahr[5];        // the year whose books all sheets of this build are of
    bool IsKosten;            // of Kostenstellen
    TableId Table;            // of the account walk
    AccountNumber CurrentKey; // lower limit of the account walk, from which the account buttons go on
};

// Which of the two reports the sheets are.
const ReportKind &SheetKind(bool isKosten);

// The tables that the sheets read; held open while they are built.
bool HoldSheetTables(HeldTables &held, bool isKosten);

// Moves the thread to the Mandant and year that the sheets were built in.
bool SelectSheetBooks(const SheetBuild &build);

// Asks in the dialog, over `parent`, and builds the sheets. `accepted` tells whether the dialog ended with
// OK. Returns the view; null for a cancel, a failure (which has been shown) and, with `done`, a printout.
VarkWindow AskAndBuildSheets(SheetBuild &build, VarkWindow parent, bool &accepted, bool &done);

// Builds the sheets of a choice once more, over a copy of the report and in the place of `view`, which stays.
// Returns the new view; null when it failed, which has been shown.
VarkWindow RebuildSheets(SheetBuild &build, VarkWindow view);

} // namespace vark
