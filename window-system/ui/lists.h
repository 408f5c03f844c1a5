// List boxes.
#pragma once

#include "window-system/ui/item.h"

namespace ui {

void MakeList(Item *item);

// How high a list is shown: as high as its place, less what the last row would be cut off by.
int HeightOfList(const Item *item);

// Shows other rows: `count` texts of a frame.
void ShowRows(Item *item, FrameReader &reader, uint32_t count);

// Selects the row that the model has selected and brings it into view; with the keyboard in the list, that
// row has it.
void ShowSelectedRow(Item *item);

// Lets go of the rows of a list that goes.
void ForgetRows(Item *item);

// The tab stops have changed.
void ShowTabStops(Item *item);

} // namespace ui
