// The widgets of windows, and what a person does to them.
#pragma once

#include "window-system/ui/item.h"

namespace ui {

// Makes the widget of a window without parent, and of one inside another.
void MakeTop(Item *item);
void MakeControl(Item *item);

// Shows the check of a check box or radio button as the model has it.
void ShowCheck(Item *item);

} // namespace ui
