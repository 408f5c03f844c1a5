// How a report's dialog is laid out: groups of controls below each other, OK and Abbrechen to their right.
// Every group that several reports show is put together here and nowhere else.
#pragma once

#include "window-system/dialog_table.h"

#include <cstdint>

namespace vark {

// Kinds of account that a dialog offers, as bits: the Kontoarten 1, 2, 4 and 8.
using KontoartSet = int32_t;

// The controls of one dialog as they come together. It must live as long as the table that is made of it.
struct DialogBuilder {
    varkui::DialogControl Controls[64];
    uint16_t Count;
    int16_t Left; // of the groups, in dialog units
    int16_t Y;    // where the next group begins
};

DialogBuilder BeginDialog();

// The period group for `options` (PeriodOption bits); with `perOnly` free dates are one day, "per:".
void AddPeriodGroup(DialogBuilder &builder, uint32_t options, bool perOnly);

// The account group; with one kind only its button is there but hidden. `hasSingle` adds the choice of one
// single account.
void AddAccountGroup(DialogBuilder &builder, KontoartSet kontoarten, bool hasSingle);

// Screen or printer.
void AddOutputGroup(DialogBuilder &builder);

// Two pages with a period each, the second in force while "Beachte Vergleichszeitraum" is checked. The pages
// are dialogs of their own, made of the table of PeriodPage with the same options.
void AddPeriodTabs(DialogBuilder &builder, uint32_t options);
varkui::DialogTable PeriodPage(DialogBuilder &builder, int32_t id, uint32_t options);

// Adds the buttons and makes the table.
varkui::DialogTable FinishDialog(DialogBuilder &builder, int32_t id, const char *title);

} // namespace vark
