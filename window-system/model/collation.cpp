#include "window-system/model/collation.h"

#include <cstring>

namespace varkui {

namespace {

// For each byte from 0xC0 on the letters that it sorts as; the signs for times and divided sort as marks.
constexpr const char *baseLetters[64] = {
    "a", "a", "a", "a", "a", "a", "ae", "c", "e", "e", "e", "e", "i", "i", "i",  "i",  //
    "d", "n", "o", "o", "o", "o", "o",  "",  "o", "u", "u", "u", "u", "y", "th", "ss", //
    "a", "a", "a", "a", "a", "a", "ae", "c", "e", "e", "e", "e", "i", "i", "i",  "i",  //
    "d", "n", "o", "o", "o", "o", "o",  "",  "o", "u", "u", "u", "u", "y", "th", "y",
};

const char *BaseOf(unsigned char byte)
{
    switch (byte) {
    case 0x83: return "f";
    case 0x8A:
    case 0x9A: return "s";
    case 0x8C:
    case 0x9C: return "oe";
    case 0x8E:
    case 0x9E: return "z";
    case 0x9F: return "y";
    default: return byte >= 0xC0 ? baseLetters[byte - 0xC0] : "";
    }
}

bool IsDigit(unsigned char byte) { return byte >= '0' && byte <= '9'; }

bool IsPlainLetter(unsigned char byte) { return byte >= 'a' && byte <= 'z'; }

// Weights of the first level: 0 ends a key, then 1 to 0xC0 for marks, digits from 0xD0, letters from 0xE0.
constexpr unsigned char digitWeight = 0xD0;
constexpr unsigned char letterWeight = 0xE0;

unsigned char MarkWeight(unsigned char byte)
{
    // Marks keep the order of their bytes, closed up so that they end before the digits.
    if (byte < 0x20) return 1;
    if (byte < 0xC0) return static_cast<unsigned char>(byte - 0x1E);
    return byte == 0xD7 ? 0xA2 : 0xA3;
}

} // namespace

unsigned char LowerCase(unsigned char byte)
{
    if (byte >= 'A' && byte <= 'Z') return static_cast<unsigned char>(byte + 0x20);
    if (byte >= 0xC0 && byte <= 0xDE && byte != 0xD7) return static_cast<unsigned char>(byte + 0x20);
    if (byte == 0x8A || byte == 0x8C || byte == 0x8E) return static_cast<unsigned char>(byte + 0x10);
    if (byte == 0x9F) return 0xFF;
    return byte;
}

bool EqualWithoutCase(const char *left, const char *right)
{
    for (;; ++left, ++right) {
        const unsigned char a = LowerCase(static_cast<unsigned char>(*left));
        if (a != LowerCase(static_cast<unsigned char>(*right))) return false;
        if (a == 0) return true;
    }
}

bool BeginsWithoutCase(const char *text, const char *beginning)
{
    for (; *beginning != 0; ++text, ++beginning) {
        if (LowerCase(static_cast<unsigned char>(*text)) !=
            LowerCase(static_cast<unsigned char>(*beginning))) {
            return false;
        }
    }
    return true;
}

size_t MakeSortKey(const char *text, unsigned char *key)
{
    size_t length = 0;
    for (const char *from = text; *from != 0; ++from) {
        const unsigned char byte = LowerCase(static_cast<unsigned char>(*from));
        if (IsDigit(byte)) {
            key[length++] = static_cast<unsigned char>(digitWeight + (byte - '0'));
            continue;
        }
        if (IsPlainLetter(byte)) {
            key[length++] = static_cast<unsigned char>(letterWeight + (byte - 'a'));
            continue;
        }
        const char *base = BaseOf(byte);
        if (*base == 0) key[length++] = MarkWeight(byte);
        for (; *base != 0; ++base) {
            key[length++] = static_cast<unsigned char>(letterWeight + (*base - 'a'));
        }
    }
    key[length++] = 0;
    // The second level, one byte a character, decides between texts that are the same so far.
    for (const char *from = text; *from != 0; ++from) {
        const unsigned char byte = LowerCase(static_cast<unsigned char>(*from));
        key[length++] = *BaseOf(byte) != 0 ? byte : 1;
    }
    return length;
}

} // namespace varkui
