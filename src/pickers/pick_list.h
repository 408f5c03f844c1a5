// The list that a pick dialog shows: lines, each with the number that it stands for.
#pragma once

#include "src/platform/window_api.h"

#include <cstdint>

namespace vark {

// Codes that the pick dialogs have in common.
inline constexpr int32_t pickCancelled = 0;

inline constexpr int noLine = LB_ERR;

// Adds a line at its place; false when the list holds no more.
bool AddLine(HWND dialog, int list, const char *line, int32_t number);

// The index of the line in view as selected, noLine when there is none.
int SelectedLine(HWND dialog, int list);

// The number that a line stands for.
int32_t NumberOfLine(HWND dialog, int list, int line);

// Selects the line that stands for `number`; false, and the selection stays, when there is none.
bool SelectNumber(HWND dialog, int list, int32_t number);

// The selected line or, after message 1401, noLine.
int RequireLine(HWND dialog, int list);

// Keeps what is shown as it is while a list is filled, which is otherwise drawn line by line.
void HoldDrawing(HWND dialog, int control);
void ResumeDrawing(HWND dialog, int control);

} // namespace vark
