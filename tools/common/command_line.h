// Command lines in German. The library that takes them apart is heavy: one source of the tools includes it.
#pragma once

#include "tools/common/command_tree.h"

#include <string>

namespace tools {

struct Parsed {
    const Command *Chosen; // null: all is done, as help that was asked for, or a mistake that was told
    std::string Path;      // the command as it is typed: "vark bericht susa"
    int ExitCode;          // where nothing is chosen
};

// Takes the command line apart and fills the targets of the options. Besides the options of the tool there
// are two words that stand first and are for the build and for shells:
//   --handbuchseiten VERZEICHNIS DATUM   writes the manual pages of the release of that day (2026-11-22)
//   --vervollstaendigen WORT …           prints what may stand in place of the last word (completion.h)
Parsed ParseCommandLine(const Tool &tool, int argc, const char *const *argv);

} // namespace tools
