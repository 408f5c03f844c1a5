// Kontenblatt and Kostenstellenauswertung: the state that lives as long as the window of the sheets, and the
// steps that its parts share. The export VARK_Kontenblatt lies here as well.
#pragma once

#include "src/frame/held_tables.h"
#include "src/platform/window_api.h"
#include "src/reports/frame/report_run.h"
#include "src/walks/account_walk.h"
#include "src/walks/posting_walk.h"

#include <cstdint>

namespace vark {

// Controls of the dialogs and of the bar.
inline constexpr int controlAufloesen = 1022;
inline constexpr int controlOhneBuchungen = 1023;
inline constexpr int controlNurBebuchte = 1024;

// Which of the two reports the sheets are.
const ReportKind &SheetKind(bool isKosten);

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

// The state that the frame window owns.
struct KontenblattState {
    ThreadBlock Block;
    SheetBuild Build;
    HWND FrameWindow; // null once it has gone
    HWND ViewWindow;  // the report engine's view inside the frame
    HWND BarWindow;   // null when it could not be made
    RECT BarRect;     // the bar's, moved to 0,0
    bool IsBusy;      // a press is being handled, or the frame made: who does that frees the state
};

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

// The frame window around `view`, which takes view and state over: it frees the state when it goes. Null,
// with both freed, when it cannot be made. `parent` may be null.
HWND OpenSheetFrame(KontenblattState *state, VarkWindow parent, VarkWindow view);

} // namespace vark
