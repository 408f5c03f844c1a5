// What a C header declares and the contracts that stand there, section by section.
//
// Comments and declarations begin in the first column, a comment stands right above what it describes, a
// section begins with its heading between dashes, and the first comment tells of the whole. What has another
// form is refused: an exception names it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace manual {

using Lines = std::vector<std::string>;

Lines ReadLines(const std::filesystem::path &path);

// A function, structure, enumeration or type.
struct Declaration {
    std::string Name;
    Lines Code;                     // as a host on Linux writes it, without comments
    std::vector<std::string> Parts; // parameters, fields or values, by name
    std::string Contract; // the comments above it and in it; empty where that of the one before goes on
};

// The first section has no heading, and the comment on the whole as its contract.
struct Section {
    std::string Heading;
    std::string Contract; // the comments that belong to no declaration
    std::vector<Declaration> Declarations;
};

std::vector<Section> SectionsOf(const Lines &header);

} // namespace manual
