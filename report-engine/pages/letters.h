// The letters of a page with their places, for whoever points at them, copies or searches.
#pragma once

#include "report-engine/pages/fonts.h"

#include <cstddef>
#include <cstdint>

namespace rs {

struct Letter {
    float Left; // points from the page's upper left corner
    float Right;
    float Top;
    float Bottom;
    float Baseline;
    uint32_t TextAt; // of its bytes in the list's text
    uint8_t TextLength;
    bool Begins;   // a text of its own: a cell, a part of the head
    uint16_t Line; // counted from the top, once they are in order
    int16_t Cell;  // the column of a row in which it stands, or noCell
};

inline constexpr int16_t noCell = -1; // of heads, feet, titles and carried sums

struct LetterList {
    Letter *Letters;
    size_t Count;
    size_t Capacity;
    char *Text;
    size_t TextLength;
    size_t TextCapacity;
    uint16_t LineCount;
};

// Empties the list for another page; what it holds is kept for that.
void ForgetLetters(LetterList &list);

// Adds a run as it is drawn, in the column `cell` of a row or noCell. Without memory the page has fewer
// letters.
void CollectRun(LetterList &list, const Glyph *glyphs, size_t count, const char *text, double x,
                double baseline, double ascent, double descent, int16_t cell);

// Puts the letters into the order in which they are read: from the top down, each line from the left.
void OrderLetters(LetterList &list);

// Text without regard to case and kinds of blanks and dashes, as it is searched: UTF-8 of at most `size`
// bytes; never longer than what came in. Returns its length.
size_t FoldText(const char *text, size_t length, char *out, size_t size);

struct Hit {
    uint32_t First; // of the letters
    uint32_t Last;
};

// The places of `sought` (folded) among ordered letters; what does not fit into `hits` is left out.
size_t FindHits(const LetterList &list, const char *sought, size_t length, Hit *hits, size_t maxHits);

// A point on a page, in points.
struct PagePoint {
    double X;
    double Y;
};

enum class Grain : uint8_t { letter, text, line };

// Which letters lie from one point to the other, in reading order; null for the page's end.
// Returns whether any does.
bool LettersBetween(const LetterList &list, const PagePoint *from, const PagePoint *to, Grain grain,
                    Hit &range);

} // namespace rs
