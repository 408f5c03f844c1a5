// The controls that only one report's dialog has: check boxes, choices among a few, fields. A report tells
// them in a table, in the order in which they stand; what was chosen lies beside it, row by row.
#pragma once

#include "src/platform/window_api.h"
#include "src/reports/frame/dialog_layout.h"

#include <cstdint>

namespace vark {

enum class OptionKind : uint8_t {
    Check,  // check box
    Radio,  // one of a set: the rows of this kind that stand next to each other
    Text,   // field
    Amount, // field that shows what it holds in the display form of amounts once it is left
};

struct ReportOption {
    OptionKind Kind;
    int16_t Id;
    const char *Label;           // Windows-1252; before its field, else beside its button
    const char *Group = nullptr; // title of the group box that begins here; null goes on in what stands above
    bool Checked = false;        // when the dialog opens
    int16_t EnabledWhile = 0;    // the check box without which this one is disabled; 0 for none
    uint16_t MostCharacters = 0; // of a field
};

inline constexpr int mostOptions = 8;
inline constexpr int mostOptionCharacters = 20;

struct OptionValue {
    bool Checked;
    bool Hidden; // set before the dialog opens: the control is not shown, and counts as unchecked
    char Text[mostOptionCharacters + 1];
};

// The options of a dialog, and what holds for each of them.
struct OptionTable {
    const ReportOption *Rows;
    int Count; // up to mostOptions
};

// What the dialog shows when it opens.
void StartOptions(const OptionTable &table, OptionValue (&values)[mostOptions]);

// The value of the control `id`, which must be one of the table.
OptionValue &OptionOf(const OptionTable &table, OptionValue (&values)[mostOptions], int id);
const OptionValue &OptionOf(const OptionTable &table, const OptionValue (&values)[mostOptions], int id);

void AddOptions(DialogBuilder &builder, const OptionTable &table);

// At WM_INITDIALOG.
void InitOptions(HWND dialog, const OptionTable &table, const OptionValue (&values)[mostOptions]);

// Shows every message to the options. True if it was theirs.
bool OptionMessage(HWND dialog, const OptionTable &table, UINT message, WPARAM wParam);

// Reads the controls, at OK. A disabled control is read as it stands.
void AcceptOptions(HWND dialog, const OptionTable &table, OptionValue (&values)[mostOptions]);

} // namespace vark
