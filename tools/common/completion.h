// What may stand next on a command line, for the shells. The scripts in packaging/completion hand over what
// has been typed and show what comes back.
#pragma once

#include "tools/common/command_tree.h"

#include <string>
#include <vector>

namespace tools {

struct Completion {
    std::vector<Suggestion> Words;
    Named Also = Named::Nothing; // files or directories, which the shell knows better
};

// `words` are those behind the program's name; the last one is being typed and may be empty. Never throws:
// books that cannot be read have nothing to offer.
Completion CompletionOf(const Tool &tool, const std::vector<std::string> &words);

// A word a line, its meaning behind a tab; then ":dateien" or ":verzeichnisse" where the shell is to offer
// those as well.
std::string CompletionLines(const Completion &completion);

} // namespace tools
