// Printing: to the default printer, or into files of PDF where vark.ini says so.
#pragma once

#include "report-engine/output.h"
#include "report-engine/view.h"

#include <climits>

namespace rs {

// What became of it: a queue that has taken a report keeps it while its printer stands still.
enum class Printed : uint8_t { failed, stopped, done, waiting };

inline constexpr size_t maxQueue = 128;

// How a report is to be printed.
struct PrintWishes {
    bool IsFile;            // into a file named by Pattern
    char Pattern[PATH_MAX]; // as vark.ini has it, UTF-8
    char Queue[maxQueue];   // of the printing system, empty for its default
    PageRange Range;
    int Copies;
    const char *Media; // of the printing system, empty: as the report is
};

// What vark.ini says, all pages once.
PrintWishes UsualWishes();

// Prints the view. Of a failure the reason has been told, and shown to the person; so has what it waits for.
// `where` tells the person what became of it, UTF-8; `progress` may be null.
Printed PrintView(const View &view, const PrintWishes &wishes, const Progress *progress, char (&where)[500]);

} // namespace rs
