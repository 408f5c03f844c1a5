#include "window-system/front-ends/telling.h"

#include "host/descriptors.h"
#include "window-system/dialogs/in_view.h"
#include "window-system/front-ends/outgoing.h"
#include "window-system/front-ends/plays.h"
#include "window-system/front-ends/protocol.h"
#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/rows.h"
#include "window-system/model/texts.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

#include <cstring>
#include <fcntl.h>
#include <initializer_list>

namespace varkui {

namespace {

HWND knownWindows[1u << handleBits]; // which windows the screen has, by place
unsigned copiedSerial;               // of the text for pasting that the screen has

const EditState *FieldOf(const Window *window)
{
    if (window->Kind == Kind::Edit) return window->Edit;
    return window->Kind == Kind::ComboBox ? &window->Combo->Edit : nullptr;
}

int32_t ValueOf(const Window *window)
{
    switch (window->Kind) {
    case Kind::Button: return window->Button->Check;
    case Kind::ListBox: return window->List->Selected;
    case Kind::ComboBox: return window->Combo->Selected;
    case Kind::TabControl: return window->Tabs->Selected;
    case Kind::Dialog: return window->Dialog->Number;
    default: return 0;
    }
}

uint8_t FlagsOf(const Window *window)
{
    uint8_t flags = 0;
    if ((window->Style & WS_VISIBLE) != 0) flags |= flagShown;
    if ((window->Style & WS_DISABLED) == 0) flags |= flagEnabled;
    if (window->Kind == Kind::Dialog && window->Dialog->IsBox) flags |= flagBox;
    if (window->Kind == Kind::ComboBox && window->Combo->Dropped) flags |= flagDropped;
    if (window->Kind == Kind::Dialog && window->Dialog->IsChooser) flags |= flagChooser;
    return flags;
}

void TellWindow(const Window *window)
{
    const EditState *field = FieldOf(window);
    const size_t frame = BeginFrame(ToScreen::Window);
    PutHandle(window);
    PutHandle(window->Parent);
    PutHandle(window->Owner);
    PutU32(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(window->Thread) >> 4));
    PutU8(static_cast<uint8_t>(window->Kind));
    PutU8(FlagsOf(window));
    PutU32(window->Style);
    PutU32(window->ExStyle);
    PutI32(static_cast<int32_t>(window->Id));
    PutI32(window->Place.left);
    PutI32(window->Place.top);
    PutI32(window->Place.right - window->Place.left);
    PutI32(window->Place.bottom - window->Place.top);
    PutI32(ValueOf(window));
    PutI32(field != nullptr ? field->Limit : 0);
    PutI32(field != nullptr ? field->Anchor : 0);
    PutI32(field != nullptr ? field->Caret : 0);
    PutU32(field != nullptr ? field->Serial : 0);
    PutU32(window->Kind == Kind::Dialog ? window->Dialog->BoxStyle : 0);
    PutHandle(LabelOf(window));
    PutText(TextOf(window));
    const int stops = window->Kind == Kind::ListBox ? window->List->TabStopCount : 0;
    PutU32(static_cast<uint32_t>(stops));
    for (int i = 0; i < stops; ++i) {
        PutI32(static_cast<int32_t>(int64_t{window->List->TabStops[i]} * model.BaseX / 4));
    }
    EndFrame(frame);
}

void TellRows(const Window *window)
{
    const Rows *rows = window->Kind == Kind::ListBox    ? &window->List->Rows
                       : window->Kind == Kind::ComboBox ? &window->Combo->Rows
                                                        : nullptr;
    if (rows == nullptr && window->Kind != Kind::TabControl) return;
    const size_t frame = BeginFrame(ToScreen::Rows);
    PutHandle(window);
    PutI32(rows != nullptr ? rows->Count : window->Tabs->Count);
    for (int i = 0; rows != nullptr && i < rows->ChunkCount; ++i) {
        for (int j = 0; j < rows->Chunks[i]->Count; ++j) {
            PutText(rows->Chunks[i]->Items[j]->Text);
        }
    }
    for (int i = 0; rows == nullptr && i < window->Tabs->Count; ++i) {
        PutText(window->Tabs->Items[i].Text);
    }
    EndFrame(frame);
}

// Sends a duplicate of the descriptor, since the window may get another picture before the frame is sent.
void TellPicture(const Window *window)
{
    if (window->Kind != Kind::Picture) return;
    const VARKUIPICTURE &shown = window->Picture->Shown;
    Bytes &descriptors = outgoing.Descriptors;
    const size_t frame = BeginFrame(ToScreen::Picture);
    PutHandle(window);
    for (const LONG number :
         {shown.Width, shown.Height, shown.X, shown.Y, shown.ContentWidth, shown.ContentHeight, shown.Page}) {
        PutI32(number);
    }
    Passed passed = {frame, -1};
    if (shown.Descriptor >= 0 && Reserve(descriptors, sizeof passed)) {
        passed.Descriptor = fcntl(shown.Descriptor, F_DUPFD_CLOEXEC, host::firstOwnDescriptor);
    }
    PutU8(passed.Descriptor >= 0 ? 1 : 0);
    EndFrame(frame);
    if (passed.Descriptor < 0) return;
    memcpy(descriptors.Data + descriptors.Count, &passed, sizeof passed);
    descriptors.Count += sizeof passed;
}

void TellCopied()
{
    if (copiedSerial == model.CopiedSerial) return;
    copiedSerial = model.CopiedSerial;
    const size_t frame = BeginFrame(ToScreen::Copied);
    PutText(model.Copied != nullptr ? model.Copied : "");
    PutText(model.CopiedHtml != nullptr ? model.CopiedHtml : "");
    EndFrame(frame);
}

bool IsKnown(const Window *window) { return knownWindows[PlaceOf(window->Handle)] == window->Handle; }

void Tell(Window *window)
{
    const bool known = IsKnown(window);
    if (known && window->Changed == 0) return;
    if (!known && (!IsShown(Outermost(window)) || IsPlayedTo(window->Thread))) return;
    if (window->Parent != nullptr && !IsKnown(window->Parent)) Tell(window->Parent);
    if (window->Owner != nullptr && !IsKnown(window->Owner)) Tell(window->Owner);
    TellWindow(window);
    if (!known || (window->Changed & changedRows) != 0) TellRows(window);
    if (!known || (window->Changed & changedPicture) != 0) TellPicture(window);
    knownWindows[PlaceOf(window->Handle)] = window->Handle;
    window->Changed = 0;
}

void TellDestroyed(HWND handle)
{
    const size_t frame = BeginFrame(ToScreen::Destroyed);
    PutU32(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(handle)));
    EndFrame(frame);
    knownWindows[PlaceOf(handle)] = nullptr;
}

// The screen gets a window with a new parent, and all inside it, as new windows.
void TellGone(const Window *window)
{
    if (IsKnown(window)) TellDestroyed(window->Handle);
    for (const Window *child = window->FirstChild; child != nullptr; child = child->Next) {
        TellGone(child);
    }
}

void TellTop(Window *top)
{
    const Window *focus = Find(top->Thread->Focus);
    const Window *button = nullptr;
    const int id = CurrentDefault(top);
    if (id != 0) button = FindControl(top, id);
    const size_t frame = BeginFrame(ToScreen::Top);
    PutHandle(top);
    uint8_t flags = 0;
    if (top->Thread->Active == top->Handle) flags |= flagActive;
    if (reinterpret_cast<LPSTR>(top->Thread->Cursor) == IDC_WAIT) flags |= flagWaits;
    PutU8(flags);
    PutHandle(focus != nullptr && LiesInside(focus, top) ? focus : nullptr);
    PutHandle(button);
    PutU32(top->Thread->HandledKey);
    EndFrame(frame);
}

} // namespace

bool PutChanges()
{
    const size_t before = outgoing.Frames.Count;
    for (unsigned place = 1; place < (1u << handleBits); ++place) {
        HWND told = knownWindows[place];
        if (told == nullptr || Find(told) != nullptr) continue;
        TellDestroyed(told);
    }
    unsigned next = 1;
    for (const Window *window = NextInTable(next); window != nullptr; window = NextInTable(next)) {
        if ((window->Changed & changedParent) != 0) TellGone(window);
    }
    // In the order of creation, so that the screen makes siblings in that order.
    next = 1;
    for (Window *window = NextInTable(next); window != nullptr; window = NextInTable(next)) {
        Tell(window);
    }
    for (Window *top = model.LastTop; top != nullptr; top = top->Previous) {
        if (IsKnown(top)) TellTop(top);
    }
    TellCopied();
    return outgoing.Frames.Count != before;
}

void ForgetTold()
{
    memset(static_cast<void *>(knownWindows), 0, sizeof knownWindows);
    copiedSerial = model.CopiedSerial;
}

} // namespace varkui
