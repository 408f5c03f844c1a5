// Where the books that a command names lie.
#pragma once

#include "tools/common/installation.h"
#include "tools/common/layout.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace books {

// Whether the books of a directory are on a server, and whether it has any.
bool IsOnServer(const std::filesystem::path &directory);
bool HasBooks(const std::filesystem::path &directory);
// Bytes of the books' file; 0 of those on a server.
uint64_t SizeOfBooks(const std::filesystem::path &directory);

// The data path of an installation, or the directory itself if it is one. Throws where there are no books.
std::filesystem::path DataPathOf(const std::filesystem::path &directory);

// "1998", "19981": a fiscal year and a Mandant. False for any other name.
bool ParseYearDirectory(const std::string &name, int &year, int &mandant);

// The year directories below a data path, in the order of their names.
std::vector<std::string> YearDirectories(const std::filesystem::path &data);

// One table that a person named.
struct TablePlace {
    std::filesystem::path Directory;
    std::string Name;   // "1998/sako", "fista"
    int FirstMonth = 1; // of the Mandant's fiscal year
};

// `mandant` 0 is the first one there is, an empty `year` the last postable one. Throws for what is not there.
TablePlace PlaceOf(const tools::TableLayout &layout, const std::filesystem::path &data, int mandant,
                   const std::string &year);

// The table called so; throws with the names there are.
const tools::TableLayout &NamedTable(const std::string &stem);

} // namespace books
