// What is not there on Windows: our report engine, and the program of the rates.
#include "tools/common/exit_codes.h"
#include "tools/vark/rate_program.h"
#include "tools/vark/report.h"

namespace cli {

int MakeReport(const ReportOptions &) { throw tools::UsageError("Berichte macht vark unter Windows nicht."); }

void NeedRateProgram()
{
    throw tools::UsageError("Kurse erfaßt und löscht vark unter Windows nicht; auflisten geht.");
}

int RunRateProgram(int, const std::string &)
{
    NeedRateProgram();
    return tools::ExitUsage;
}

} // namespace cli
