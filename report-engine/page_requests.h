// What a view asks of the program that draws its pages, over a socket that keeps messages apart: one request,
// one answer, which may bring a file along. Both sides are of one build.
#pragma once

#include <cstdint>

namespace rs {

inline constexpr uint32_t maxSought = 200;     // bytes of a sought text, UTF-8, NUL included
inline constexpr int64_t maxCopied = 16 << 20; // bytes; what is more is left out

enum class PageWish : uint32_t {
    draw, // the pages in view, as pixels
    find, // the next place of a text
    copy, // the selected text
};

// A place in the document; Page 0 is none.
struct PagePlace {
    int64_t Page;
    int32_t X; // hundredths of a millimetre from the page's upper left corner
    int32_t Y;
};

struct PageRequest {
    PageWish Wish;

    // Of draw: an image of Width x Height pixels, in which page FirstPage has its upper left corner at Left,
    // FirstTop, and every further page lies Pitch lower.
    int32_t Width;
    int32_t Height;
    int32_t Left;
    int32_t FirstTop;
    int32_t Pitch;
    int64_t FirstPage;
    double PixelsPerUnit;

    // What is selected, in either order; draw and copy.
    PagePlace From;
    PagePlace To;
    uint32_t SelectionGrain; // Grain
    uint32_t IsAllSelected;  // the whole report, whatever From and To are

    // What is sought: draw shows its places, and the one found last apart from the others. Find goes on from
    // page Found, place FoundPlace (-1: before the first).
    char Sought[maxSought];
    int64_t Found;
    int32_t FoundPlace;
    uint32_t IsBackwards;
};

struct PageAnswer {
    uint32_t IsGood;
    int64_t Page; // of find: where it is, 0 for nowhere
    int32_t Place;
    uint32_t HasWrapped; // the search went on from the other end
    PagePlace From;      // of find: the place's corners
    PagePlace To;
    int64_t Length;      // of copy: bytes of text in the file
    int64_t TableLength; // of copy: bytes of HTML behind it, 0 for none
    uint32_t IsCutShort; // of copy: there was more
};

} // namespace rs
