#include "report-engine/pages/letters.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace rs {

namespace {

template <typename Thing> bool Reserve(Thing *&things, size_t count, size_t &capacity, size_t more)
{
    if (capacity - count >= more) return true;
    const size_t wanted = 2 * (count + more) + 1024;
    auto *larger = static_cast<Thing *>(std::realloc(things, wanted * sizeof(Thing)));
    if (larger == nullptr) return false;
    things = larger;
    capacity = wanted;
    return true;
}

bool IsReadBefore(const Letter &one, const Letter &other)
{
    return one.Line != other.Line ? one.Line < other.Line : one.Left < other.Left;
}

// Letters whose baselines lie this close stand in one line.
constexpr float sameLine = 1.5F;

} // namespace

void ForgetLetters(LetterList &list)
{
    list.Count = 0;
    list.TextLength = 0;
    list.LineCount = 0;
}

void CollectRun(LetterList &list, const Glyph *glyphs, size_t count, const char *text, double x,
                double baseline, double ascent, double descent, int16_t cell)
{
    size_t bytes = 0;
    for (size_t i = 0; i < count; ++i) {
        bytes += glyphs[i].TextLength;
    }
    if (!Reserve(list.Letters, list.Count, list.Capacity, count)) return;
    if (!Reserve(list.Text, list.TextLength, list.TextCapacity, bytes)) return;
    bool begins = true;
    for (size_t i = 0; i < count; ++i) {
        const Glyph &glyph = glyphs[i];
        const double right = x + glyph.Advance;
        if (glyph.TextLength == 0 && !begins) {
            list.Letters[list.Count - 1].Right = static_cast<float>(right);
        } else {
            list.Letters[list.Count++] = {static_cast<float>(x),
                                          static_cast<float>(right),
                                          static_cast<float>(baseline - ascent),
                                          static_cast<float>(baseline + descent),
                                          static_cast<float>(baseline),
                                          static_cast<uint32_t>(list.TextLength),
                                          static_cast<uint8_t>(glyph.TextLength),
                                          begins,
                                          0,
                                          cell};
            std::memcpy(list.Text + list.TextLength, text + glyph.TextAt, glyph.TextLength);
            list.TextLength += glyph.TextLength;
            begins = false;
        }
        x = right;
    }
}

void OrderLetters(LetterList &list)
{
    Letter *const end = list.Letters + list.Count;
    std::sort(list.Letters, end,
              [](const Letter &one, const Letter &other) { return one.Baseline < other.Baseline; });
    uint16_t line = 0;
    for (size_t i = 0; i < list.Count; ++i) {
        if (i > 0 && list.Letters[i].Baseline > list.Letters[i - 1].Baseline + sameLine) ++line;
        list.Letters[i].Line = line;
    }
    list.LineCount = list.Count > 0 ? static_cast<uint16_t>(line + 1) : 0;
    std::sort(list.Letters, end, IsReadBefore);
}

size_t FoldText(const char *text, size_t length, char *out, size_t size)
{
    size_t written = 0;
    for (size_t i = 0; i < length && written < size; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < length ? text[i + 1] : 0);
        if (byte >= 'A' && byte <= 'Z') {
            out[written++] = static_cast<char>(byte + ('a' - 'A'));
        } else if (byte == 0xC3 && next >= 0x80 && next <= 0x9E && next != 0x97) {
            if (written + 2 > size) break;
            out[written++] = text[i++];
            out[written++] = static_cast<char>(next + 0x20); // from À to Þ
        } else if (byte == 0xC2 && next == 0xA0) {
            out[written++] = ' ';
            ++i;
        } else if (byte == 0xE2 && next == 0x88 && i + 2 < length && text[i + 2] == '\x92') {
            out[written++] = '-'; // the minus sign of typesetting
            i += 2;
        } else {
            out[written++] = text[i];
        }
    }
    return written;
}

size_t FindHits(const LetterList &list, const char *sought, size_t length, Hit *hits, size_t maxHits)
{
    if (length == 0 || list.Count == 0) return 0;
    // The page as a folded text, and for each of its bytes the letter that it comes from.
    const size_t room = list.TextLength + 2 * list.Count;
    char *page = static_cast<char *>(std::malloc(room));
    auto *letterOf = static_cast<uint32_t *>(std::malloc(room * sizeof(uint32_t)));
    size_t count = 0;
    if (page != nullptr && letterOf != nullptr) {
        size_t used = 0;
        for (uint32_t i = 0; i < list.Count; ++i) {
            const Letter &letter = list.Letters[i];
            const bool isNewLine = i > 0 && letter.Line != list.Letters[i - 1].Line;
            if (i > 0 && (letter.Begins || isNewLine)) {
                letterOf[used] = i;
                page[used++] = isNewLine ? '\n' : ' ';
            }
            const size_t begin = used;
            used += FoldText(list.Text + letter.TextAt, letter.TextLength, page + used, room - used);
            std::fill(letterOf + begin, letterOf + used, i);
        }
        const char *at = page;
        while (count < maxHits) {
            const auto *found =
                static_cast<const char *>(memmem(at, used - static_cast<size_t>(at - page), sought, length));
            if (found == nullptr) break;
            const auto offset = static_cast<size_t>(found - page);
            hits[count++] = {letterOf[offset], letterOf[offset + length - 1]};
            at = found + length;
        }
    }
    std::free(page);
    std::free(letterOf);
    return count;
}

namespace {

// The line that a height belongs to: the first that ends below it.
size_t LineAt(const LetterList &list, double y)
{
    size_t line = 0;
    for (size_t i = 0; i < list.Count; ++i) {
        if (list.Letters[i].Bottom >= y) return list.Letters[i].Line;
        line = list.Letters[i].Line + size_t{1};
    }
    return line;
}

// The first letter that is read behind a point.
size_t LetterBehind(const LetterList &list, const PagePoint &point)
{
    const size_t line = LineAt(list, point.Y);
    // Above a line's letters is before all of them.
    for (size_t i = 0; i < list.Count; ++i) {
        const Letter &letter = list.Letters[i];
        if (letter.Line < line) continue;
        if (letter.Line > line || point.Y < letter.Top) return i;
        if ((letter.Left + letter.Right) / 2 >= point.X) return i;
    }
    return list.Count;
}

} // namespace

bool LettersBetween(const LetterList &list, const PagePoint *from, const PagePoint *to, Grain grain,
                    Hit &range)
{
    size_t first = from != nullptr ? LetterBehind(list, *from) : 0;
    size_t end = to != nullptr ? LetterBehind(list, *to) : list.Count;
    if (grain == Grain::letter) {
        if (first >= end) return false;
        range = {static_cast<uint32_t>(first), static_cast<uint32_t>(end - 1)};
        return true;
    }
    if (list.Count == 0) return false;
    // What was pointed at counts as a whole, also where both points lie in one letter.
    first = std::min(first, list.Count - 1);
    end = std::min(std::max(end, first + 1), list.Count);
    if (from != nullptr && first > 0 && list.Letters[first].Line > LineAt(list, from->Y)) --first;
    const auto isOneText = [&](size_t left, size_t right) {
        if (list.Letters[left].Line != list.Letters[right].Line) return false;
        return grain == Grain::line || !list.Letters[right].Begins;
    };
    while (first > 0 && isOneText(first - 1, first)) {
        --first;
    }
    while (end < list.Count && isOneText(end - 1, end)) {
        ++end;
    }
    range = {static_cast<uint32_t>(first), static_cast<uint32_t>(end - 1)};
    return true;
}

} // namespace rs
