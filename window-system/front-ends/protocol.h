// What the window system and the program that shows it say to each other over a socket pair: frames of a
// 32-bit length and that many bytes, numbers in the machine's own order, texts as a length and UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace varkui {

constexpr uint32_t protocolVersion = 5;
constexpr uint32_t longestFrame = 64u << 20;

// To the screen. A window's state comes whole each time; its parent's comes before.
enum class ToScreen : uint8_t {
    Window = 1, // handle, parent, owner, thread, kind, flags, style, exStyle, id, x, y, width, height, value,
                // limit, anchor, caret, serial, boxStyle, label (a handle), text, number of tab stops, tab
                // stops in pixels
    Rows,       // handle, count, texts
    Destroyed,  // handle
    Top,     // handle of a window without parent, flags, focus, default button, number of the last key that
             // its thread has handled
    Picture, // handle, width, height, x, y, content width, content height, page, number of descriptors (0
             // or 1) that come with the first byte of this frame
    Copied,  // text for whoever pastes, and the same as HTML, empty for none
};

// From the screen.
enum class FromScreen : uint8_t {
    Hello = 1, // version, width and height of the base of dialog units
    Input,     // handle, kind, index, index2, serial, text
    Key,       // handle of a window without parent, number, key, character as a code point, modifiers
};

constexpr uint8_t flagShown = 1;
constexpr uint8_t flagEnabled = 2;
constexpr uint8_t flagBox = 4;
constexpr uint8_t flagDropped = 8;
constexpr uint8_t flagChooser = 16; // of files: shown as the desktop shows its own

// Of a window without parent.
constexpr uint8_t flagActive = 1;
constexpr uint8_t flagWaits = 2; // its thread shows the hourglass

constexpr uint8_t modifierShift = 1;
constexpr uint8_t modifierControl = 2;
constexpr uint8_t modifierAlt = 4;

// Takes numbers and texts out of a frame; past its end everything is 0 and `Bad` set.
struct FrameReader {
    const uint8_t *At;
    const uint8_t *End;
    bool Bad;
};

// Numbers are little-endian; behind the end of a frame each is 0, and the reader has failed.
inline uint32_t TakeU32(FrameReader &reader)
{
    uint32_t value = 0;
    if (reader.End - reader.At < 4) {
        reader.Bad = true;
        return 0;
    }
    memcpy(&value, reader.At, sizeof value);
    reader.At += sizeof value;
    return value;
}

inline int32_t TakeI32(FrameReader &reader) { return static_cast<int32_t>(TakeU32(reader)); }

inline uint8_t TakeU8(FrameReader &reader)
{
    if (reader.At >= reader.End) {
        reader.Bad = true;
        return 0;
    }
    return *reader.At++;
}

// The bytes of a text inside the frame, not terminated.
inline const char *TakeText(FrameReader &reader, uint32_t &length)
{
    length = TakeU32(reader);
    if (reader.Bad || static_cast<size_t>(reader.End - reader.At) < length) {
        reader.Bad = true;
        length = 0;
        return "";
    }
    const char *text = reinterpret_cast<const char *>(reader.At);
    reader.At += length;
    return text;
}

} // namespace varkui
