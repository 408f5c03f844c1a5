// Texts as dialogs have them, with "&" before the letter that leads to them, on labels and buttons.
#pragma once

#include <gtk/gtk.h>
#include <string>

namespace ui {

// Shows a text with its mnemonic underlined at all times, as GTK does only while Alt is held down.
void SetLabelText(GtkLabel *label, const std::string &text);

// What a screen reader calls a widget.
void SetName(GtkWidget *widget, const std::string &name);

// The text with line breaks, so that no line is wider than `mostWidth` pixels unless a single word is.
std::string BrokenIntoLines(GtkWidget *widget, const std::string &text, int mostWidth);

// The width of a text in pixels as a label in `widget` has it.
int WidthOf(GtkWidget *widget, const std::string &text);

// The height of a line of it.
int HeightOfLine(GtkWidget *widget);

} // namespace ui
