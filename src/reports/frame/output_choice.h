// The output group of a report's dialog: screen or printer.
#pragma once

#include "src/platform/window_api.h"

#include <cstdint>

namespace vark {

inline constexpr int controlBildschirm = 20100; // radio buttons
inline constexpr int controlDrucker = 20101;

// At WM_INITDIALOG. A choice other than 0 (screen) and 1 (printer) becomes 0, in `choice` as well; `state` is
// what the open dialog shows.
void InitOutputChoice(HWND dialog, int32_t &choice, int32_t &state);

// Shows every message to the group first. True if it was the group's own.
bool OutputControlMessage(int32_t &state, HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

} // namespace vark
