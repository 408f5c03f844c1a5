// Frames on their way to the screen, with the descriptors that go with them. All of it is guarded by the
// lock, but for what the thread that sends has taken.
#pragma once

#include <cstddef>
#include <cstdint>

#include "window-system/front-ends/protocol.h"
#include "window-system/model/window.h"

namespace varkui {

struct Bytes {
    uint8_t *Data;
    size_t Count;
    size_t Capacity;
};

// A descriptor on its way, sent with the byte at Offset of the frames.
struct Passed {
    size_t Offset;
    int Descriptor;
};

// Frames to be written, with the descriptors that go with them in order.
struct Outgoing {
    Bytes Frames;
    Bytes Descriptors; // of Passed
};

extern Outgoing outgoing;
extern bool isLost; // memory ran out for what the screen must know

// Makes room for `more` bytes; false without memory.
bool Reserve(Bytes &bytes, size_t more);

void PutBytes(const void *data, size_t size);
void PutU8(uint8_t value);
void PutU32(uint32_t value);
void PutI32(int32_t value);
void PutHandle(const Window *window);
void PutText(const char *text);

// A frame is begun with room for its length, which is filled in at its end.
size_t BeginFrame(ToScreen type);
void EndFrame(size_t at);

// Closes the descriptors that were not sent.
void DropDescriptors(Outgoing &dropped, size_t from);

} // namespace varkui
