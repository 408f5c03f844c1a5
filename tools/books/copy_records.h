// Books copied as the record manager reads them, record by record.
#pragma once

#include <filesystem>

namespace tools {
struct EngineClient;
}

namespace books {

// Copies all tables of a directory into another, which holds none, as `reader` sees them; null is the thread
// itself. Duplicates of a key keep their order. Throws where there are no books.
void CopyRecords(const std::filesystem::path &from, const std::filesystem::path &to,
                 tools::EngineClient *reader);

// The same of all tables as they stand at one moment.
void CopyOneMoment(const std::filesystem::path &from, const std::filesystem::path &to);

} // namespace books
