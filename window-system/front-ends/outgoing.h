// Outgoing frames for the screen with their descriptors, guarded by the lock; the sending thread swaps them
// for its own.
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

// A descriptor to be sent with the byte at Offset of the frames.
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
extern bool isLost; // a frame was lost for want of memory

// Makes room for `more` bytes; false without memory.
bool Reserve(Bytes &bytes, size_t more);

// Append to the frame that is being written; without memory it is lost as a whole.
void PutBytes(const void *data, size_t size);
void PutU8(uint8_t value);
void PutU32(uint32_t value);
void PutI32(int32_t value);
void PutHandle(const Window *window);
void PutText(const char *text);

// Begins a frame with room for its length, which EndFrame fills in.
size_t BeginFrame(ToScreen type);
void EndFrame(size_t at);

// Drops all frames and closes the descriptors from byte `from` of the list on.
void DropDescriptors(Outgoing &dropped, size_t from);

} // namespace varkui
