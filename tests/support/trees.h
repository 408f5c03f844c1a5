// The trees of Bilanz and GuV for tests, as lines that a person can read:
//
//     Anlagevermögen            a group: its title; "+" behind it for a Summenzeile
//       Sachanlagen +           two blanks deeper: inside it
//         0200                  an account
//       1400 gegen              a Gegenposten
//     ohne 1890                 an account outside the tree
#pragma once

#include "tests/support/books.h"

namespace vark::test {

// Writes a tree into one of the three tables, which must be empty. Nodes are numbered from 2 as they stand;
// 1 is the root.
void InsertTree(Books &books, int mandant, TableId table, const Lines &lines, const std::string &year = "");

} // namespace vark::test
