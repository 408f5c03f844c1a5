// The manual pages of a tool: one for itself and one for each of its commands, from the texts of the help.
#pragma once

#include "tools/common/command_tree.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tools {

struct ManualPage {
    std::string Name; // of its file: "vark-bericht-susa.1"
    std::string Text; // man(7), UTF-8
};

// `date` is the day of the release, "2026-11-22".
std::vector<ManualPage> ManualPages(const Tool &tool, const std::string &date);

} // namespace tools
