#include "window-system/dialogs/templates.h"

#include "text/windows1252.h"

#include <cstring>

namespace varkui {

namespace {

WORD TakeWord(Reader &reader)
{
    WORD word = 0;
    memcpy(&word, reader.At, sizeof word);
    reader.At += sizeof word;
    return word;
}

DWORD TakeDword(Reader &reader)
{
    const DWORD low = TakeWord(reader);
    return low | (static_cast<DWORD>(TakeWord(reader)) << 16);
}

SHORT TakeShort(Reader &reader) { return static_cast<SHORT>(TakeWord(reader)); }

// A text, a number (returned; the text is empty then) or nothing. What is longer is cut.
WORD TakeTextOrNumber(Reader &reader, char (&out)[longestTemplateText])
{
    out[0] = 0;
    WORD word = TakeWord(reader);
    if (word == 0xFFFF) return TakeWord(reader);
    size_t length = 0;
    while (word != 0) {
        const unsigned char byte = text::ByteOf(word);
        if (length + 1 < longestTemplateText) out[length++] = static_cast<char>(byte != 0 ? byte : '?');
        word = TakeWord(reader);
    }
    out[length] = 0;
    return 0;
}

const char *ClassOfNumber(WORD number)
{
    switch (number) {
    case 0x80: return "Button";
    case 0x81: return "Edit";
    case 0x82: return "Static";
    case 0x83: return "ListBox";
    case 0x85: return "ComboBox";
    default: return "";
    }
}

} // namespace

void Align(Reader &reader, const void *beginning)
{
    const auto offset = static_cast<size_t>(reader.At - static_cast<const unsigned char *>(beginning));
    reader.At += (4 - offset % 4) % 4;
}

void TakeHead(Reader &reader, TemplateHead &head)
{
    const Reader beginning = reader;
    const WORD version = TakeWord(reader);
    const WORD signature = TakeWord(reader);
    head.Extended = version == 1 && signature == 0xFFFF;
    head.Number = 0;
    if (head.Extended) {
        head.Number = static_cast<LONG>(TakeDword(reader));
        head.ExStyle = TakeDword(reader);
        head.Style = TakeDword(reader);
    } else {
        reader = beginning;
        head.Style = TakeDword(reader);
        head.ExStyle = TakeDword(reader);
    }
    head.Count = TakeWord(reader);
    head.X = TakeShort(reader);
    head.Y = TakeShort(reader);
    head.Width = TakeShort(reader);
    head.Height = TakeShort(reader);
    char ignored[longestTemplateText];
    TakeTextOrNumber(reader, ignored); // menu
    TakeTextOrNumber(reader, ignored); // class
    TakeTextOrNumber(reader, head.Title);
    if ((head.Style & DS_SETFONT) == 0) return;
    TakeWord(reader);
    if (head.Extended) TakeDword(reader);
    TakeTextOrNumber(reader, ignored);
}

void TakeItem(Reader &reader, const TemplateHead &head, TemplateItem &item)
{
    if (head.Extended) {
        TakeDword(reader); // help id
        item.ExStyle = TakeDword(reader);
        item.Style = TakeDword(reader);
    } else {
        item.Style = TakeDword(reader);
        item.ExStyle = TakeDword(reader);
    }
    item.X = TakeShort(reader);
    item.Y = TakeShort(reader);
    item.Width = TakeShort(reader);
    item.Height = TakeShort(reader);
    item.Id = head.Extended ? TakeDword(reader) : TakeWord(reader);
    const WORD number = TakeTextOrNumber(reader, item.Class);
    if (number != 0) {
        const char *name = ClassOfNumber(number);
        memcpy(item.Class, name, strlen(name) + 1);
    }
    TakeTextOrNumber(reader, item.Text);
    const WORD extra = TakeWord(reader);
    reader.At += extra;
}

} // namespace varkui
