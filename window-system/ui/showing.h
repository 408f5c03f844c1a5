// The state of windows as the model tells it, on their widgets.
#pragma once

#include "window-system/ui/item.h"

namespace ui {

extern uint32_t heightOfLine; // 8 dialog units in pixels

// Shows everything that is small: place, text, check, selection.
void ShowItem(Item *item);

// Shows which row or page is selected.
void ShowValue(Item *item);

} // namespace ui
