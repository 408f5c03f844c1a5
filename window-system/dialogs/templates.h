// Dialog templates in memory, read word by word.
#pragma once

#include <cstddef>

#include "window-system/include/varkui.h"

namespace varkui {

// A template is a run of 16-bit words of any alignment.
struct Reader {
    const unsigned char *At;
};

constexpr size_t longestTemplateText = 1024;

struct TemplateHead {
    bool Extended;
    LONG Number;
    DWORD ExStyle;
    DWORD Style;
    WORD Count;
    SHORT X, Y, Width, Height;
    char Title[longestTemplateText];
};

// Reads the fixed head and the texts behind it.
void TakeHead(Reader &reader, TemplateHead &head);

struct TemplateItem {
    DWORD ExStyle;
    DWORD Style;
    SHORT X, Y, Width, Height;
    DWORD Id;
    char Class[longestTemplateText];
    char Text[longestTemplateText];
};

// Reads the next control.
void TakeItem(Reader &reader, const TemplateHead &head, TemplateItem &item);

// Controls begin at multiples of four bytes from the template's own beginning.
void Align(Reader &reader, const void *beginning);

} // namespace varkui
