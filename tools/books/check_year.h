// What the records of a Mandant's year must satisfy together.
#pragma once

#include "tools/books/findings.h"
#include "tools/common/installation.h"

#include <filesystem>
#include <vector>

namespace books {

// fista, and the directories that it speaks of.
void CheckCompany(Findings &findings, const std::filesystem::path &data);

// One year directory. `data` is the data path.
void CheckYear(Findings &findings, const std::filesystem::path &data, const tools::Mandant &mandant,
               int year);

} // namespace books
