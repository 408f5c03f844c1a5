// Printing: to the default printer, or into files of PDF where vark.ini says so.
#pragma once

#include "report-engine/view.h"

namespace rs {

// Prints the view. False when it could not be printed; the reason has been told, and shown to the person.
bool PrintView(const View &view);

} // namespace rs
