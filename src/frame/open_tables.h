// Tables by number, opened when they are first needed and counted: each user closes what it has opened.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/tables.h"

namespace vark {

// Opens a table, or counts one more user of an open one. `yearName` (null: the year in force) opens the table
// of another year; `slot` (0: the table's own) holds it under another number.
bool OpenTable(ThreadContext &context, TableKeyCode code, const char *yearName = nullptr, int slot = 0);

// Counts one user less and closes at none. True for a closed slot, and while a transaction holds all open.
bool CloseTable(ThreadContext &context, int slot);

// Closes a slot whatever its count.
void ForceTableClosed(ThreadContext &context, int slot);

// Closes all 31 slots.
void CloseAllTables(ThreadContext &context);

} // namespace vark
