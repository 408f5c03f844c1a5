// Opening books in a connection: tables for their files and years, and the views.
#pragma once

#include "tools/sql/session.h"
#include "tools/sql/sqlite_api.h"

#include <filesystem>

namespace sql {

// Makes, in the schema temp, a table for each file over all years ("sako"), one for each file and year
// ("sako_1998", of Mandant 2 "sako_19981"), and the views. What was made of other books before goes; it is
// all or nothing. `place` is the data path or the directory above it; empty for the configured one. Returns
// the data path. Throws with a German text where there are no books or they cannot be read.
std::filesystem::path OpenBooks(sqlite3 *database, Connection &connection,
                                const std::filesystem::path &place);

} // namespace sql
