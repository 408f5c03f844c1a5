// What is known while pages are drawn.
#pragma once

#include "report-engine/pages/document.h"
#include "report-engine/pages/fonts.h"
#include "report-engine/pages/letters.h"

namespace rs {

// How letters come onto a page: as glyphs; as filled outlines, each exactly where it belongs, for surfaces
// that put glyphs on whole pixels; or not at all.
enum class Ink : uint8_t { glyphs, outlines, none };

struct PageTarget {
    cairo_t *Cairo;
    void (*BeginPage)(void *context, int64_t page);
    void (*EndPage)(void *context, int64_t page);
    // A bookmark to a place on the page in hand, in points.
    void (*Bookmark)(void *context, int depth, const char *text, int64_t page, double x, double y);
    void *Context;
    Ink Letters;
};

struct ItemTest {
    bool (*Passes)(void *context, const Definition &definition, const ItemHeader &item);
    void *Context;
};

inline constexpr double pointsPerUnit = 72.0 / 2540.0; // of a hundredth of a millimetre
inline constexpr double gutter = 5;                    // points kept free between two columns
inline constexpr size_t maxBatch = 4096;
inline constexpr size_t maxBatchText = 4 * maxBatch;
inline constexpr size_t maxRules = 512;

constexpr double Points(int32_t hundredths_mm) { return hundredths_mm * pointsPerUnit; }

// The three parts of a line of a head or foot.
struct Line {
    LinePart Parts[3];
};

// Rules of a kind that wait to be drawn together.
struct RuleBatch {
    size_t Count;
    struct {
        double Left;
        double Right;
        double Y;
    } Lines[maxRules];
};

// What changes from page to page.
struct PageState {
    int64_t Page; // in hand, 0 before the first
    int64_t Sheet;
    int32_t SheetsBefore;
    bool HasHead; // drawn on this page

    uint64_t Scanned; // items up to here apply
    Line Head[maxHeadLines];
    Line Foot[maxHeadLines];
    int HeadCount;
    int FootCount;

    int64_t CarrySums[maxSumColumns];
    int64_t PageSums[maxSumColumns];
};

// What a walk goes over.
enum class Half : uint8_t { whole, left, right };

// A walk over pages for the first or last one that has what is looked for.
struct Search {
    const ItemTest *Test;
    int64_t First;
    int64_t Last;
    bool WantsLast;
    int64_t Found;
};

// One document on its way onto pages: what is drawn, where, and how far it has come.
struct Drawing {
    const Document *Of;
    const Definition *Def;
    const PageTarget *Target;
    cairo_t *Cairo;
    Fonts Letters;
    int StyleFaces[maxStyles];

    int64_t PageCount;   // of the whole document
    int64_t FirstWanted; // of the pages that are drawn
    int64_t LastWanted;
    PageState Now;
    LetterList *Collected; // what is drawn is noted here as well; null for nowhere
    int16_t Cell;          // in which it stands; those of the right half follow those of the left
    Search *Searching;     // null while pages are drawn
    Half Walked;
    bool TellsBookmarks; // nothing is drawn, and bookmarks are told
    bool HasDrawnHead;   // on the page whose halves are drawn
    RowSpot LastSpot;    // of the last rows of both halves

    // Glyphs of one font that wait to be shown together.
    uint16_t BatchFont;
    size_t BatchCount;
    size_t BatchBytes;
    cairo_glyph_t Batch[maxBatch];
    cairo_text_cluster_t BatchClusters[maxBatch];
    char BatchText[maxBatchText];

    RuleBatch Rules[2]; // dark ones, hair lines

    double Lefts[maxColumns];
    double BodyTop;
    double Left; // of what rows have for themselves: the page's, or a half's
    double Right;
};

} // namespace rs
