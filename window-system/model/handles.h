// The handles of windows: places in one table, and what they lead to.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

// Gives `window` a place in the table and its handle; null when the table is full.
HWND TakeHandle(Window *window);

// The handle leads nowhere from now on.
void FreeHandle(HWND handle);

// The window of a handle, null for any other value.
Window *Find(HWND handle);

// The windows in the order of their handles: the first at or after `place`, null behind the last. `place`
// moves behind it. Windows may go meanwhile.
Window *NextInTable(unsigned &place);

// The place of a handle in the table.
unsigned PlaceOf(HWND handle);

// How many places have ever been taken; there are never more windows.
unsigned PlacesUsed();

} // namespace varkui
