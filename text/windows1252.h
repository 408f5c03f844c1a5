// The library's texts are Windows-1252 at every interface and in every record, while sources, terminals and
// paths are UTF-8. This is the one place where the two are turned into each other.
#pragma once

#include <cstddef>
#include <cstdint>

namespace text {

// Unicode code points of the bytes 0x80 to 0x9F; 0 where the code page has no character.
inline constexpr char16_t highControls[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                              0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                              0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                              0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

// The code point of a Windows-1252 byte; the five unassigned bytes stand for the control of the same number,
// as they do on Windows, so that every byte survives a way there and back.
constexpr char32_t CodePoint(unsigned char byte)
{
    if (byte < 0x80 || byte >= 0xA0) return byte;
    const char16_t mapped = highControls[byte - 0x80];
    return mapped != 0 ? mapped : byte;
}

// The Windows-1252 byte of a code point, or 0 where there is none (and for U+0000).
constexpr unsigned char ByteOf(char32_t codePoint)
{
    if (codePoint < 0x80 || (codePoint >= 0xA0 && codePoint <= 0xFF)) {
        return static_cast<unsigned char>(codePoint);
    }
    for (unsigned i = 0; i < 32; ++i) {
        if (CodePoint(static_cast<unsigned char>(0x80 + i)) == codePoint) {
            return static_cast<unsigned char>(0x80 + i);
        }
    }
    return 0;
}

// Reads one UTF-8 sequence at `from` (before `end`) and moves `from` behind it. A malformed sequence gives
// U+FFFD and moves by one byte.
constexpr char32_t NextCodePoint(const char *&from, const char *end)
{
    const auto lead = static_cast<unsigned char>(*from++);
    if (lead < 0x80) return lead;
    const int more = lead >= 0xF0 && lead < 0xF5   ? 3
                     : lead >= 0xE0 && lead < 0xF0 ? 2
                     : lead >= 0xC2 && lead < 0xE0 ? 1
                                                   : 0;
    if (more == 0 || end - from < more) return 0xFFFD;
    char32_t value = lead & (0x3Fu >> more);
    for (int i = 0; i < more; ++i) {
        const auto byte = static_cast<unsigned char>(from[i]);
        if ((byte & 0xC0) != 0x80) return 0xFFFD;
        value = (value << 6) | (byte & 0x3Fu);
    }
    constexpr char32_t smallest[4] = {0, 0x80, 0x800, 0x10000};
    if (value < smallest[more] || (value >= 0xD800 && value < 0xE000) || value > 0x10FFFF) return 0xFFFD;
    from += more;
    return value;
}

// Writes NUL-terminated Windows-1252 `text` as UTF-8 into `out` of `size` bytes, cut at a whole character and
// always terminated. Returns the length of the whole result, without its NUL, as snprintf does.
constexpr size_t ToUtf8(const char *text, char *out, size_t size)
{
    size_t length = 0;
    size_t written = 0;
    for (; *text != 0; ++text) {
        const char32_t codePoint = CodePoint(static_cast<unsigned char>(*text));
        char bytes[3] = {};
        size_t count = 0;
        if (codePoint < 0x80) {
            bytes[count++] = static_cast<char>(codePoint);
        } else if (codePoint < 0x800) {
            bytes[count++] = static_cast<char>(0xC0 | (codePoint >> 6));
            bytes[count++] = static_cast<char>(0x80 | (codePoint & 0x3F));
        } else {
            bytes[count++] = static_cast<char>(0xE0 | (codePoint >> 12));
            bytes[count++] = static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
            bytes[count++] = static_cast<char>(0x80 | (codePoint & 0x3F));
        }
        if (length == written && written + count < size) {
            for (size_t i = 0; i < count; ++i) {
                out[written++] = bytes[i];
            }
        }
        length += count;
    }
    if (size > 0) out[written] = 0;
    return length;
}

// Writes UTF-8 `text` as Windows-1252 into `out` of `size` bytes, cut and always terminated; what the code
// page lacks becomes "?". Returns the length of the whole result, without its NUL.
constexpr size_t FromUtf8(const char *text, char *out, size_t size)
{
    const char *end = text;
    while (*end != 0) {
        ++end;
    }
    size_t length = 0;
    while (text < end) {
        const unsigned char byte = ByteOf(NextCodePoint(text, end));
        if (length + 1 < size) out[length] = byte != 0 ? static_cast<char>(byte) : '?';
        ++length;
    }
    if (size > 0) out[length < size ? length : size - 1] = 0;
    return length;
}

// A literal turned over at compile time; what the code page lacks does not compile.
template <size_t Size> struct Windows1252Literal {
    char Bytes[Size]{};

    consteval Windows1252Literal(const char (&utf8)[Size]) // NOLINT: literals convert by themselves
    {
        const char *from = utf8;
        const char *const end = utf8 + Size - 1;
        size_t length = 0;
        while (from < end) {
            const unsigned char byte = ByteOf(NextCodePoint(from, end));
            if (byte == 0) NotInWindows1252();
            Bytes[length++] = static_cast<char>(byte);
        }
    }

    static void NotInWindows1252() {} // not constexpr: reaching it ends the compilation
};

// "Kürzel"_w is the NUL-terminated Windows-1252 text, kept for the life of the program.
template <Windows1252Literal Literal> consteval const char *operator""_w() { return Literal.Bytes; }

} // namespace text
