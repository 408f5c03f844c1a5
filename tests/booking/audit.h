// Whether the postings in a Stapel hang together: an auditor that knows the files and nothing of the library.
#pragma once

#include "tests/support/books.h"

#include <string>

namespace vark::test {

// The first thing that is wrong with the bat, split and kobu records of a Mandant's year, or "": every
// posting has all its further Teilbuchungen and all its cost lines, the lines of a Teilbuchung sum up to its
// net amount, and no record belongs to nothing.
std::string AuditPostings(const Books &books, int mandant, const std::string &year = "");

// An AmountText as Pfennig.
int64_t PfennigOf(const char (&amount)[13]);

} // namespace vark::test
