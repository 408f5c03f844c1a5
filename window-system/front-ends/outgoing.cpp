#include "window-system/front-ends/outgoing.h"

#include "text/windows1252.h"
#include "window-system/front-ends/protocol.h"
#include "window-system/model/memory.h"
#include "window-system/model/window.h"

#include <cstring>
#include <unistd.h>

namespace varkui {

Outgoing outgoing;
bool isLost;

bool Reserve(Bytes &bytes, size_t more)
{
    if (bytes.Capacity - bytes.Count >= more) return true;
    size_t capacity = bytes.Capacity == 0 ? 4096 : bytes.Capacity;
    while (capacity - bytes.Count < more) {
        capacity *= 2;
    }
    auto *data = static_cast<uint8_t *>(Reallocate(bytes.Data, capacity));
    if (data == nullptr) return false;
    bytes.Data = data;
    bytes.Capacity = capacity;
    return true;
}

void PutBytes(const void *data, size_t size)
{
    if (isLost || !Reserve(outgoing.Frames, size)) {
        isLost = true;
        return;
    }
    memcpy(outgoing.Frames.Data + outgoing.Frames.Count, data, size);
    outgoing.Frames.Count += size;
}

void PutU8(uint8_t value) { PutBytes(&value, sizeof value); }

void PutU32(uint32_t value) { PutBytes(&value, sizeof value); }

void PutI32(int32_t value) { PutBytes(&value, sizeof value); }

void PutHandle(const Window *window)
{
    PutU32(window != nullptr ? static_cast<uint32_t>(reinterpret_cast<uintptr_t>(window->Handle)) : 0);
}

void PutText(const char *text)
{
    const size_t size = 3 * strlen(text) + 1;
    if (isLost || !Reserve(outgoing.Frames, size + 4)) {
        isLost = true;
        return;
    }
    const size_t at = outgoing.Frames.Count;
    const size_t length = text::ToUtf8(text, reinterpret_cast<char *>(outgoing.Frames.Data + at + 4), size);
    const auto shown = static_cast<uint32_t>(length);
    memcpy(outgoing.Frames.Data + at, &shown, sizeof shown);
    outgoing.Frames.Count += 4 + length;
}

size_t BeginFrame(ToScreen type)
{
    const size_t at = outgoing.Frames.Count;
    PutU32(0);
    PutU8(static_cast<uint8_t>(type));
    return at;
}

void EndFrame(size_t at)
{
    if (isLost) return;
    const auto length = static_cast<uint32_t>(outgoing.Frames.Count - at - 4);
    memcpy(outgoing.Frames.Data + at, &length, sizeof length);
}

void DropDescriptors(Outgoing &dropped, size_t from)
{
    for (size_t at = from; at < dropped.Descriptors.Count; at += sizeof(Passed)) {
        Passed passed = {};
        memcpy(&passed, dropped.Descriptors.Data + at, sizeof passed);
        close(passed.Descriptor);
    }
    dropped.Descriptors.Count = 0;
    dropped.Frames.Count = 0;
}

} // namespace varkui
