// What a person wants of a printout.
#pragma once

#include "report-engine/printing.h"
#include "window-system/include/varkui.h"

namespace rs {

// Asks for printer, pages, copies and paper; `wishes` comes with what is suggested. False when the person
// thought better of it. The view is held by the caller.
bool AskHowToPrint(HWND owner, const View &view, PrintWishes &wishes);

} // namespace rs
