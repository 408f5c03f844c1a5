// The help that --hilfe shows.
#pragma once

#include "tools/common/command_tree.h"

#include <string>

namespace tools {

// `path` is the command as it is typed: "vark bericht susa". UTF-8, ends with a line feed.
std::string HelpText(const Tool &tool, const Command &command, const std::string &path);

} // namespace tools
