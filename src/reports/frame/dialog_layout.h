// How a report's dialog is laid out: groups of controls below each other, OK and Abbrechen to their right.
// Every group that several reports show is put together here and nowhere else.
#pragma once

#include "window-system/include/dialog_table.h"

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

// Words that dialogs have of their own; Windows-1252, with their mnemonics.
struct DialogWords {
    const char *Zeitraum = "Zeitraum";
    const char *Jahr = "&Jahr:";
    const char *Von = "&von:"; // free dates
    const char *Bis = "&bis:";
    const char *Konten = "Konten";
    const char *Einzeln = "&einzelnes Konto";
    const char *Ausgabe = "Ausgabe";
    const char *Bildschirm = "Bildschir&m";
};

// The period group for `options` (PeriodOption bits); with `perOnly` free dates are one day, "per:". The year
// alone is its field without a button.
void AddPeriodGroup(DialogBuilder &builder, uint32_t options, bool perOnly, const DialogWords &words);

// The account group; with one kind only its button is there but hidden. `hasSingle` adds the choice of one
// single account.
void AddAccountGroup(DialogBuilder &builder, KontoartSet kontoarten, bool hasSingle,
                     const DialogWords &words);

// Screen or printer.
void AddOutputGroup(DialogBuilder &builder, const DialogWords &words);

// Group boxes for controls of a report's own, between which the controls are added from `builder.Y` on.
varkui::DialogControl &BeginGroup(DialogBuilder &builder, const char *title);
void EndGroup(DialogBuilder &builder, varkui::DialogControl &frame);

// A row of buttons side by side: one check box, or the buttons of a set.
inline constexpr int mostInButtonRow = 4;
struct ButtonRow {
    bool IsRadio;
    int Count;
    int Ids[mostInButtonRow];
    const char *Labels[mostInButtonRow];
};
void AddButtonRow(DialogBuilder &builder, const ButtonRow &row);

// A field with its label, wide enough for some characters.
void AddFieldRow(DialogBuilder &builder, int id, const char *label, int characters);

// Two pages with a period each, the second in force while "Beachte Vergleichszeitraum" is checked. The pages
// are dialogs of their own, made of the table of PeriodPage with the same options.
void AddPeriodTabs(DialogBuilder &builder, uint32_t options);
varkui::DialogTable PeriodPage(DialogBuilder &builder, int32_t id, uint32_t options);

// Adds the buttons and makes the table.
varkui::DialogTable FinishDialog(DialogBuilder &builder, int32_t id, const char *title);

} // namespace vark
