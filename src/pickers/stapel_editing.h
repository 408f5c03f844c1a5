// Making, changing and deleting a Stapel: dialogs 108 and 109, which the Stapel pick dialog opens.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/posting_records.h"
#include "src/platform/window_api.h"

#include <cstdint>

namespace vark {

// Stapel up to this number belong to the accounting application: nobody chooses or changes them here.
inline constexpr int32_t lastApplicationStapel = 15;

// The list in the dialog that opens these; its lines begin with the names and stand for the numbers.
inline constexpr int stapelList = 1000;

// Asks for a new Stapel and inserts it. True, and `record` is the one inserted; false when the user
// cancelled.
bool CreateStapel(ThreadContext &context, HWND owner, StapelRecord &record);

enum class StapelChange { None, Changed, Deleted };

// Lets the user change or delete the Stapel `record`, which then holds what it was changed to.
StapelChange ChangeStapel(ThreadContext &context, HWND owner, StapelRecord &record);

} // namespace vark
