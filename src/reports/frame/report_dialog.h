// The parameter dialog of a report: a period (or two, on pages), a range of accounts, controls of the
// report's own, and the choice of screen or printer; put together from what the report says it needs, shown
// modally, and checked at OK.
#pragma once

#include "src/frame/message_names.h"
#include "src/frame/thread_context.h"
#include "src/model/company_records.h"
#include "src/reports/frame/account_range.h"
#include "src/reports/frame/dialog_layout.h"
#include "src/reports/frame/period_controls.h"
#include "src/reports/frame/report_options.h"
#include "src/reports/frame/report_params.h"

#include <cstdint>

namespace vark {

struct ReportDialog;

// What the user chose. Period, range and output are taken from the caller's block before and written back to
// it after; the rest has no place there and starts as the dialog says.
struct ReportChoice {
    PeriodSelection Period;
    PeriodSelection ComparePeriod; // of a dialog with pages; begins as a copy of Period
    bool Vergleich;                // the comparison counts
    AccountRangeSelection Range;
    int32_t Ausgabe; // 0 Bildschirm, 1 Drucker
    OptionValue Options[mostOptions];
};

// What a report works with, from its dialog to its view.
struct ReportRun {
    ThreadContext *Context;
    FistaRecord Mandant;
    const ReportDialog *Dialog;
    ReportChoice Choice;
    uint16_t Report; // the engine's handle
    void *State;     // the report's own, as its export gave it
};

// A second page with a period to compare with; the kinds differ in their quarters.
enum class PeriodPages : uint8_t { None, Bilanz, Guv };

// What a report's dialog consists of.
struct ReportDialog {
    int32_t Id;
    const char *Title; // Windows-1252
    int32_t HelpContext;
    uint32_t PeriodOptions = 0;                                  // 0: no period group
    bool PerOnly = false;                                        // of free dates only the last day, "per:"
    PeriodPages Pages = PeriodPages::None;                       // in the place of the period group
    KontoartSet Kontoarten = 0;                                  // 0: no account group
    bool HasSingle = false;                                      // one single account can be asked for
    int32_t UnknownAccount = Message::KontonummerExistiertNicht; // message for one that does not exist
    bool RangeFirst = false; // at OK the account group is checked before the period
    OptionTable Options = {nullptr, 0};
    DialogWords Words = {};

    // The last check of OK: what was chosen lies in `chosen`. False, with the message shown and the focus
    // where it belongs, keeps the dialog open. Null for none.
    bool (*Check)(HWND dialog, const ReportRun &run, const ReportChoice &chosen) = nullptr;
};

// The dialog has a period, be it on pages.
inline bool AsksPeriod(const ReportDialog &dialog)
{
    return dialog.PeriodOptions != 0 || dialog.Pages != PeriodPages::None;
}

// The value of one of the dialog's own controls.
inline OptionValue &OptionOf(ReportRun &run, int id)
{
    return OptionOf(run.Dialog->Options, run.Choice.Options, id);
}
inline const OptionValue &OptionOf(const ReportRun &run, int id)
{
    return OptionOf(run.Dialog->Options, run.Choice.Options, id);
}
// Whether a check box or radio button among them was ticked.
inline bool IsChosen(const ReportRun &run, int id) { return OptionOf(run, id).Checked; }

// Shows the run's dialog over `parent` and waits. True for OK: `run.Choice` then holds what was chosen. With
// nobody before the screen OK is pressed on what the choice held, through the same checks; a refusal is a
// cancel.
bool RunReportDialog(ReportRun &run, VarkWindow parent);

} // namespace vark
