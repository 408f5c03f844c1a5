#include "window-system/model/texts.h"

#include "window-system/model/memory.h"
#include "window-system/model/window.h"

#include <cstring>

namespace varkui {

const char *TextOf(const Window *window) { return window->Text != nullptr ? window->Text : ""; }

bool ReplaceText(Window *window, const char *text, size_t length)
{
    char *copy = nullptr;
    if (length > 0) {
        copy = CopyText(text, length);
        if (copy == nullptr) return false;
    }
    Release(window->Text);
    window->Text = copy;
    Note(window, changedState);
    return true;
}

} // namespace varkui
