// The directories that loaded books come into: made beside those that are there, with what is kept of them.
#pragma once

#include <filesystem>

namespace books {

// A data path or one of its directories gets new content beside itself and changes places with it.
std::filesystem::path BesideOf(const std::filesystem::path &data);

// Makes all tables of a year, empty.
void MakeYearTables(const std::filesystem::path &directory);

// Copies what else lies in a directory of books: nothing that the record manager owns.
void CopyOtherFiles(const std::filesystem::path &from, const std::filesystem::path &to);

// Copies the years of all Mandanten but one.
void CopyYears(const std::filesystem::path &data, const std::filesystem::path &to, int butMandant);

// The data path of the books that lie in a directory; empty where there are none.
std::filesystem::path BooksIn(const std::filesystem::path &directory);

// Takes a Mandant out of the table of all of them.
void RemoveCompany(const std::filesystem::path &data, int mandant);

} // namespace books
