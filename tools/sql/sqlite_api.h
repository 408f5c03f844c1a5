// SQLite as a loaded extension sees it: through the functions that the program that loads it hands over.
#pragma once

#include <sqlite3ext.h>

SQLITE_EXTENSION_INIT3
