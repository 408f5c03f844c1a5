// The desktop's own dialog for saving a file, in the place of the model's.
#pragma once

#include "window-system/ui/item.h"

namespace ui {

// Makes the window of a chooser; its controls are not shown, but tell what it offers.
void MakeChooser(Item *item);

bool IsChooser(const Item *item);

// The item is a control of a chooser.
bool IsInChooser(const Item *item);

// Shows what a control of a chooser says: the suggested name.
void ShowInChooser(const Item *item);

// Shows the kinds of files, each as "Name (*.ending)".
void ShowKinds(const Item *item, const std::vector<std::string> &kinds);

} // namespace ui
