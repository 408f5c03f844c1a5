// The handles of windows: places in one table of windows.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

// Gives `window` a place in the table and its handle; null when the table is full.
HWND TakeHandle(Window *window);

// Frees the handle's place; the handle is dead from now on.
void FreeHandle(HWND handle);

// The window of a handle, null for any other value.
Window *Find(HWND handle);

// The windows in the order of their handles: the first at or after `place`, null behind the last. `place`
// moves behind it. Windows may go meanwhile.
Window *NextInTable(unsigned &place);

// The place of a handle in the table.
unsigned PlaceOf(HWND handle);

// The number of places ever taken, an upper bound on the number of windows.
unsigned PlacesUsed();

} // namespace varkui
