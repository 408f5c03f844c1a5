// What the records of a Mandant's year must satisfy together.
#pragma once

#include "tools/books/findings.h"
#include "tools/common/installation.h"

#include <filesystem>

namespace books {

// Where a year lies, and what it leans on.
struct YearPlace {
    std::filesystem::path Directory;
    std::filesystem::path LastDirectory; // of the last postable year
    std::filesystem::path Before;        // of the year before; there may be none
};

// Checks every table of a fiscal year against the others and against the years around it.
void CheckYear(Findings &findings, const YearPlace &place, const tools::Mandant &mandant, int year);

} // namespace books
