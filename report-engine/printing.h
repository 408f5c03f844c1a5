// Printing: to the default printer, or into files of PDF where vark.ini says so.
#pragma once

#include "report-engine/view.h"

namespace rs {

// What became of it: a queue that has taken a report keeps it while its printer stands still.
enum class Printed : uint8_t { failed, done, waiting };

// Prints the view. Of a failure the reason has been told, and shown to the person; so has what it waits for.
Printed PrintView(const View &view);

} // namespace rs
