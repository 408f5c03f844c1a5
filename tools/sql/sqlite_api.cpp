// The functions of the program that has loaded the extension, for all sources here; its entry sets them.
#include "tools/sql/sqlite_api.h"

SQLITE_EXTENSION_INIT1
