// Keys: those that edit a text stay here, all others are the model's.
#pragma once

#include "window-system/ui/item.h"

namespace ui {

// Watches the keys of a window.
void WatchKeys(Item *top);

// The model has handled every key of a thread up to the one of this number.
void HearHandledKeys(uint32_t thread, uint32_t number);

} // namespace ui
