// The rows of a list as GTK asks for them: kept as they came, each made an object only when it comes into
// view.
#pragma once

#include <gtk/gtk.h>
#include <string_view>

#include "window-system/front-ends/protocol.h"

namespace ui {

// A list model without rows, whose items are GtkStringObjects.
GListModel *MakeRowModel();

// Takes `count` texts out of a frame, in place of the rows of before. A list that shows the model must be
// without it meanwhile: it is not told.
void TakeRows(GListModel *model, varkui::FrameReader &reader, uint32_t count);

// The text of a row that there is, until the rows are others.
std::string_view RowText(GListModel *model, guint row);

} // namespace ui
