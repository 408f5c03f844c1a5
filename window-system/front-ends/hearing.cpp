#include "window-system/front-ends/hearing.h"

#include "text/windows1252.h"
#include "window-system/front-ends/outgoing.h"
#include "window-system/front-ends/protocol.h"
#include "window-system/model/as_pointer.h"
#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/memory.h"
#include "window-system/model/queue.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

#include <cstring>

namespace varkui {

namespace {

void HearInput(FrameReader &reader)
{
    HWND handle = AsPointer<HWND>(WPARAM{TakeU32(reader)});
    const auto kind = static_cast<InputKind>(TakeU8(reader));
    Input *input = MakeInput(kind);
    if (input == nullptr) return;
    input->Index = TakeI32(reader);
    input->Index2 = TakeI32(reader);
    input->Serial = TakeU32(reader);
    uint32_t length = 0;
    const char *text = TakeText(reader, length);
    char *utf8 = CopyText(text, length);
    if (kind == InputKind::File) {
        input->Text = utf8;
    } else {
        input->Text = utf8 != nullptr ? static_cast<char *>(Allocate(length + size_t{1})) : nullptr;
        if (input->Text != nullptr) text::FromUtf8(utf8, input->Text, length + size_t{1});
        Release(utf8);
    }
    if (reader.Bad || kind > InputKind::File || input->Text == nullptr) {
        FreeInput(input);
        return;
    }
    PostInput(handle, input);
}

void HearKey(FrameReader &reader)
{
    Window *top = Find(AsPointer<HWND>(WPARAM{TakeU32(reader)}));
    const uint32_t number = TakeU32(reader);
    KeyPress press = {};
    press.Key = TakeU32(reader) & 0xFF;
    press.Character = text::ByteOf(TakeU32(reader));
    const uint8_t modifiers = TakeU8(reader);
    press.Shift = (modifiers & modifierShift) != 0;
    press.Control = (modifiers & modifierControl) != 0;
    press.Alt = (modifiers & modifierAlt) != 0;
    if (top == nullptr || reader.Bad) return;
    top->Thread->HeardKey = number;
    if (AreEnabled(top)) PostKey(top->Thread, press);
}

void HearFrame(const uint8_t *data, size_t size)
{
    FrameReader reader = {data, data + size, false};
    const auto type = static_cast<FromScreen>(TakeU8(reader));
    if (type == FromScreen::Input) HearInput(reader);
    if (type == FromScreen::Key) HearKey(reader);
}

} // namespace

bool HearFrames(Bytes &in)
{
    if (in.Data == nullptr) return true;
    size_t at = 0;
    while (in.Count - at >= 4) {
        uint32_t length = 0;
        memcpy(&length, in.Data + at, sizeof length);
        if (length > longestFrame) return false;
        if (in.Count - at - 4 < length) break;
        HearFrame(in.Data + at + 4, length);
        at += 4 + size_t{length};
    }
    memmove(in.Data, in.Data + at, in.Count - at);
    in.Count -= at;
    return true;
}

} // namespace varkui
