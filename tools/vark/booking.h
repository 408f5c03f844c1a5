// Bookings through the exported functions: one from options, or many from a CSV file.
#pragma once

#include "tools/vark/booking_text.h"
#include "tools/vark/csv_task.h"

#include <string>
#include <vector>

namespace cli {

struct BookingOptions {
    BookingText Defaults; // the one booking; with a file, what its columns leave empty
    TaskOptions Task;
};

// Books and reports. Returns the exit code: 0 all booked, 1 some refused, 2 the file is no list of bookings,
// 3 the books cannot be used.
int Book(const BookingOptions &options);

struct SplitOptions {
    BookingText Defaults;           // what all parts have in common
    std::vector<std::string> Parts; // without a file: "SOLL;HABEN;BETRAG;TEXT;SATZ;STEUER;SCHABLONE"
    TaskOptions Task;
};

// Writes split bookings; in a file the lines that follow each other with the same date and Beleg are one. The
// same exit codes.
int BookSplit(const SplitOptions &options);

} // namespace cli
