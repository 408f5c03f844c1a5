// German order of texts, and their comparison without regard to case.
#pragma once

#include <cstddef>

namespace varkui {

// The Windows-1252 letter in lower case; any other byte as it is.
unsigned char LowerCase(unsigned char byte);

// Below, at or above 0 as `left` stands before, with or behind `right` when only case is disregarded.
bool EqualWithoutCase(const char *left, const char *right);

// Whether `text` begins with `beginning`, without regard to case.
bool BeginsWithoutCase(const char *text, const char *beginning);

// The longest key of a text of `length` characters, with its end.
constexpr size_t SortKeySize(size_t length) { return 3 * length + 2; }

// Writes the bytes by whose order texts are sorted as a German dictionary does, and returns their number: an
// umlaut or accent stands with its letter ("Möller" between "Mohr" and "Molnar"), "ß" as "ss", case counts
// for nothing; blanks and marks come before digits, digits before letters. Only where all that is equal, the
// plain letter comes before the one with a mark.
size_t MakeSortKey(const char *text, unsigned char *key);

} // namespace varkui
