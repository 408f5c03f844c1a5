// The virtual tables: `CREATE VIRTUAL TABLE temp.sako USING buecher('DATENPFAD', 'sako')` is a file over all
// years and Mandanten, with a third argument '1998' that of a year directory alone. They are read-only.
#pragma once

#include "tools/sql/session.h"
#include "tools/sql/sqlite_api.h"

#include <memory>

namespace sql {

inline constexpr char moduleName[] = "buecher";

// Makes the module known to a connection. Returns an SQLite code.
int RegisterTables(sqlite3 *database, const std::shared_ptr<Connection> &connection);

} // namespace sql
