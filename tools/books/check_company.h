// fista, and the directories that it speaks of.
#pragma once

#include "tools/books/findings.h"

#include <filesystem>

namespace books {

void CheckCompany(Findings &findings, const std::filesystem::path &data);

} // namespace books
