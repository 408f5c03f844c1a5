#include "window-system/front-ends/instruction_list.h"

#include "window-system/model/memory.h"

#include <cstring>

namespace varkui {

namespace {

constexpr size_t longestScript = size_t{64} << 20;

} // namespace

char *NextInstruction(Lines &list)
{
    while (list.Next < list.End) {
        char *line = list.Next;
        list.Next += strlen(line) + 1;
        ++list.Number;
        while (*line == ' ' || *line == '\t' || *line == '\r') {
            ++line;
        }
        if (*line == 0 || *line == '#') continue;
        char *end = line + strlen(line);
        while (end[-1] == ' ' || end[-1] == '\t' || end[-1] == '\r') {
            *--end = 0;
        }
        return line;
    }
    return nullptr;
}

void FreeLines(Lines &list)
{
    Release(list.Text);
    Release(list.Value);
    list = Lines{};
}

bool MakeLines(Lines &list, size_t size)
{
    list = Lines{};
    if (size >= longestScript) return false;
    list.Text = static_cast<char *>(Allocate(size + 1));
    list.Value = static_cast<char *>(Allocate(size + 1));
    if (list.Text != nullptr && list.Value != nullptr) return true;
    FreeLines(list);
    return false;
}

void CutLines(Lines &list, size_t length)
{
    for (size_t i = 0; i < length; ++i) {
        if (list.Text[i] == '\n') list.Text[i] = 0;
    }
    list.Next = list.Text;
    list.End = list.Text + length;
    list.Number = 0;
}

} // namespace varkui
