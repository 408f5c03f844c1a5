// Where books lie, found as the library finds them, and what a Mandant's record says about its directories.
#pragma once

#include "tools/common/table_file.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tools {

// The data path that the ini files name; empty when none does. Throws, naming the file, when the one that is
// in force cannot be read.
std::filesystem::path ConfiguredDataPath();

// Uses the ini files of `directory` and of no other from here on; before the first call of the library.
void UseConfiguration(const std::filesystem::path &directory);

struct Mandant {
    int Number;
    std::string Name; // UTF-8
    std::string LowerYear;
    std::string UpperYear;
    int FirstMonth; // 1..12
    vark::FistaRecord Record;

    // "1998", "19981": the directory of a year below the data path.
    std::string Directory(const std::string &year) const;
};

// All Mandanten in the order of their numbers.
std::vector<Mandant> ReadMandanten(const std::filesystem::path &dataPath);

// The Mandant of that number; none if the books have no such one.
std::optional<Mandant> FindMandant(const std::filesystem::path &dataPath, int number);

} // namespace tools
