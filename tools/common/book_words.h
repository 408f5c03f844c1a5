// What the books hold, as words of a command line: Mandanten, years, Stapel, accounts and so on, each with
// its name. For completion.
#pragma once

#include "tools/common/command_tree.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tools {

// Books and the Mandant whose own they are; its tables are those of its last postable year.
struct BooksOf {
    std::filesystem::path Data;
    int Mandant = 0; // 0: the first
};

// Each gives nothing where there are no such books, or no such Mandant.
std::vector<Suggestion> MandantWords(const std::filesystem::path &data);
std::vector<Suggestion> YearWords(const BooksOf &books);
std::vector<Suggestion> StapelWords(const BooksOf &books);
std::vector<Suggestion> ZahlungszielWords(const BooksOf &books);
std::vector<Suggestion> SchablonenWords(const BooksOf &books);
std::vector<Suggestion> WaehrungWords(const BooksOf &books);

// The Kürzel of the accounts of the kinds (bits of Kontoart).
std::vector<Suggestion> KuerzelWords(const BooksOf &books, unsigned kinds);

// Accounts of the kinds: by their numbers, or by their Kürzel where a letter has been typed.
std::vector<Suggestion> AccountWords(const BooksOf &books, unsigned kinds, const std::string &begun);

// The names of all tables with what their records are.
std::vector<Suggestion> TableWords();

// The keys of a table by their numbers, and its fields.
std::vector<Suggestion> KeyWords(const std::string &table);
std::vector<Suggestion> FieldWords(const std::string &table);

} // namespace tools
