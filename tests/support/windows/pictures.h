// Pictures of windows, for people to look at.
#pragma once

#include <windows.h>

namespace vark::test {

// Writes what the window shows into the directory that $VARK_UI_PICTURES names, as "101.bmp", "101-2.bmp"
// and so on by the number of the dialog. Does nothing without it.
void TakePicture(HWND window);

} // namespace vark::test
