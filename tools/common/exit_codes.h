// What every tool tells its caller at the end.
#pragma once

#include <stdexcept>

namespace tools {

enum ExitCode : int {
    ExitGood = 0,
    ExitRefused = 1, // something asked for was refused or is not in order
    ExitUsage = 2,   // the command line is wrong
    ExitFailure = 3, // books, files or the library cannot be used
    ExitInterrupted = 130,
};

// The command line names what does not exist or cannot be understood. what() is German; ends with ExitUsage.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace tools
