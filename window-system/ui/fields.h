// Edits of one or many lines, and combo boxes.
#pragma once

#include <string>
#include <vector>

#include "window-system/ui/item.h"

namespace ui {

void MakeEdit(Item *item);
void MakeCombo(Item *item);

// Shows the model's text and selection, unless what stands there has come from the person since.
void ShowField(Item *item);

// Shows which row of a combo box is chosen and whether its list is open.
void ShowCombo(Item *item);

void ShowComboRows(Item *item, const std::vector<std::string> &rows);

// Gives an edit or combo box the keyboard.
void FocusField(Item *item);

// What the text of an edit or combo box is typed into, else the control itself.
GtkWidget *WidgetWithText(const Item *item);

// Whether a key edits the text that has the keyboard, and is not the model's. `key` as Windows numbers it.
bool EditsText(const Item *item, uint32_t key, GdkModifierType state);

} // namespace ui
