// Dialogs as data: one table per dialog, beside the code that uses it. The same table serves both platforms,
// as a template in memory for DialogBoxIndirectParamA and CreateDialogIndirectParamA.
//
//     constexpr DialogControl mandantControls[] = {
//         {DialogControlKind::Text, -1, "&Mandant:"_w, 7, 7, 100, 8},
//         {DialogControlKind::ListBox, 1004, "", 7, 17, 180, 100, LBS_SORT},
//         {DialogControlKind::DefaultButton, IDOK, "OK"_w, 200, 7, 50, 14},
//         {DialogControlKind::PushButton, IDCANCEL, "&Abbrechen"_w, 200, 24, 50, 14},
//     };
//     constexpr DialogTable mandantDialog = {101, "Mandantenauswahl"_w, 257, 124, mandantControls, 4};
//
// Positions and sizes are in dialog units: 4 of them are as wide as an average character of the dialog's font
// (the last column of a 50 wide button holds about 10 characters), 8 are as high as its line. A text is 8
// high, an edit or combo box 12 to 14, a button 14, a check box or radio button 10. The controls stand in the
// order in which Tab goes through them; a text before a control names it, also to a screen reader, and its
// mnemonic leads there.
#pragma once

#include <cstddef>
#include <cstdint>

#ifdef _WIN32
#include <windows.h>
#else
#include "window-system/include/varkui.h"
#endif

namespace varkui {

// What a control is, with the styles that go without saying. Every kind is visible.
enum class DialogControlKind : uint8_t {
    Text,             // static, left-aligned
    TextRight,        // static, right-aligned
    Separator,        // a horizontal line
    Group,            // group box; begins a group
    Edit,             // one line, scrolling, with a border; Tab stop
    PushButton,       // Tab stop
    DefaultButton,    // the button that Enter presses; Tab stop
    CheckBox,         // changes by itself; Tab stop
    PlainCheckBox,    // the dialog sets its check; Tab stop
    RadioButton,      // unchecks the others of its group by itself
    PlainRadioButton, // the dialog sets the checks; its group is walked with the arrows
    ListBox,          // notifies, scrolls, with tab stops and a border; LBS_SORT is for the table; Tab stop
    ComboBox,         // edit with a list that drops down; Tab stop
    ComboList,        // list that drops down, nothing else can be typed; Tab stop
    TabControl,       // Tab stop
};

// One control. `Text` is Windows-1252 with "&" before the mnemonic. `Style` is added to the kind's own, for
// instance WS_GROUP on the first of a group of radio buttons and on the control behind the last, ES_NUMBER,
// LBS_SORT, WS_DISABLED; `Without` is taken away, for instance WS_VISIBLE.
struct DialogControl {
    DialogControlKind Kind;
    int32_t Id; // -1 for a text or group that nobody asks for
    const char *Text;
    int16_t X, Y, Width, Height;
    uint32_t Style;
    uint32_t Without;
};

// The style of a table that names none: a modal dialog with caption and close box.
inline constexpr uint32_t defaultDialogStyle = 0x80000000u | 0x00C00000u | 0x00080000u | 0x0800u | 0x0080u;

// A page or bar inside another window: child, DS_CONTROL, DS_3DLOOK.
inline constexpr uint32_t childDialogStyle = 0x40000000u | 0x0400u | 0x0004u;

struct DialogTable {
    int32_t Id; // the dialog's number, which scripts and the log name
    const char *Title;
    int16_t Width, Height; // of the inside, in dialog units
    const DialogControl *Controls;
    uint16_t Count;
    uint32_t Style; // 0 for defaultDialogStyle
};

// A table as a dialog template of the extended form, whose help id carries the dialog's number. Null when
// there is no memory. The caller frees it with FreeDialogTemplate; it may be freed once the dialog is made.
DLGTEMPLATE *MakeDialogTemplate(const DialogTable &table);

void FreeDialogTemplate(DLGTEMPLATE *dialogTemplate);

} // namespace varkui
