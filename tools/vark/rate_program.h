// The program that opens the dialog of the rates, which lies beside this one.
#pragma once

#include <string>

namespace cli {

// Throws UsageError where there is none on this system.
void NeedRateProgram();

// Runs it; with a script for its windows where one is given. Returns its exit code.
int RunRateProgram(int mandant, const std::string &script);

} // namespace cli
