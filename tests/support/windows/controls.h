// What a person sees of a window: kinds, texts, rows, labels.
#pragma once

#include <string>
#include <vector>
#include <windows.h>

namespace vark::test {

enum class ControlKind : unsigned char { Dialog, Button, Edit, Static, ListBox, ComboBox, TabControl, Other };
ControlKind KindOf(HWND window);

// Windows-1252, as the window has it.
std::string TextOf(HWND window);
// Windows-1252 as UTF-8 on one line, and back.
std::string Shown(const std::string &text);
std::string FromShown(const std::string &utf8);

bool IsUsable(HWND window); // enabled, with all around it

// A descendant by its id: pages in view first, then direct children, then any. Null if there is none.
HWND FindControl(HWND parent, int id);

// The text right before a field or list, null if there is none.
HWND LabelOf(HWND control);

// The field of an edit, or of a combo box that has one. Null for other controls.
HWND FieldOf(HWND control);

// Rows of a list box, combo box or tab control: how many, -1 for a control without; the text of one; the
// selected one, -1 for none.
int CountRows(HWND control);
std::string TextOfRow(HWND control, int row);
int SelectedRow(HWND control);

// ---- Message boxes ----

bool IsBox(HWND window);
std::string TextOfBox(HWND box);
// A button by what it answers, null if the box has none of that kind.
HWND ButtonOfBox(HWND box, int answer);
// The button that does the least.
HWND SafestButton(HWND box);

// The windows without parent of the calling thread, the topmost first.
std::vector<HWND> WindowsOfThread();

// The window of the calling thread that waits for a person, null if there is none.
HWND Topmost();

} // namespace vark::test
