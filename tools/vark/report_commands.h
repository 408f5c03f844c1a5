// The command `bericht`: one below it for each report, with what its dialog offers as options.
#pragma once

#include "tools/common/command_tree.h"
#include "tools/vark/report.h"

namespace cli {

// The description fills `report`, which lives as long, when a command line is taken apart.
tools::Command ReportCommands(ReportOptions &report);

} // namespace cli
