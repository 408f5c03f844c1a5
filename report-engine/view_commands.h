// What a person has a view do.
#pragma once

#include "report-engine/view_state.h"

namespace rs {

// Selects the whole report, or begins a selection at a place.
void SelectAll(ViewWindow &view);
void SelectFrom(ViewWindow &view, const PagePlace &place, uint32_t grain);

bool HasSelection(const ViewWindow &view);

// Copies what is selected. Returns whether anything is.
bool CopySelection(ViewWindow &view);

// Goes to the next (previous) place of what stands in the search field.
void SearchOn(ViewWindow &view, bool isBackwards);

// Asks for a file and writes it. The window may be gone when this returns.
void SaveView(HWND window);

// Prints. The window may be gone when this returns.
void PrintFromView(HWND window);

} // namespace rs
