// What lies in a Stapel, read through the record manager: the library has no export for it.
#pragma once

#include "tools/common/row_writer.h"

namespace cli {

struct BatchOptions {
    int Mandant = 0;
    int Number = 0; // 0: the list of all Stapel
    bool WithCosts = false;
    tools::Output As = tools::Output::Table;
};

// Prints the Stapel or its bookings. Returns the exit code: 1 for an unknown Mandant or Stapel.
int ShowBatch(const BatchOptions &options);

} // namespace cli
