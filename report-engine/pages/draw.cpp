#include "report-engine/pages/draw.h"

#include "report-engine/pages/rows.h"
#include "report-engine/pages/walking.h"

#include <cstdlib>

namespace rs {

int64_t DrawDocument(const Document &document, const PageTarget &target, int64_t first, int64_t last)
{
    static Drawing drawing;
    drawing = {};
    drawing.Target = &target;
    drawing.Cairo = target.Cairo;
    drawing.FirstWanted = first;
    drawing.LastWanted = last > 0 ? last : INT64_MAX;
    StartDrawing(drawing, document);
    if (document.Def->Gap > 0) {
        DrawHalvedPages(drawing);
        return drawing.PageCount;
    }
    drawing.PageCount = LayOut(document, nullptr, nullptr);
    LayOut(document, Place, &drawing);
    EndDrawing(drawing);
    return drawing.PageCount;
}

// ---- Pages in any order ----

namespace {

// Where a page begins that was walked over: drawing one goes on from the last mark before it. When all are
// used, every second one is given up.
struct Mark {
    Position Where;
    PageState Now;
};

constexpr int maxMarks = 256;

struct {
    Drawing Draws;
    Position Where;
    Mark *Marks[maxMarks];
    int MarkCount;
    int64_t Stride; // pages between two marks
} pages;

void ThinMarks()
{
    int kept = 0;
    for (int i = 0; i < pages.MarkCount; ++i) {
        if (i % 2 == 0) {
            pages.Marks[kept++] = pages.Marks[i];
        } else {
            std::free(pages.Marks[i]);
        }
    }
    pages.MarkCount = kept;
    pages.Stride *= 2;
}

void LeaveMark()
{
    const int64_t last = pages.MarkCount > 0 ? pages.Marks[pages.MarkCount - 1]->Now.Page : 0;
    const int64_t page = pages.Draws.Now.Page;
    if (page < last + pages.Stride) return;
    if (pages.MarkCount == maxMarks) ThinMarks();
    auto *mark = static_cast<Mark *>(std::malloc(sizeof(Mark)));
    if (mark == nullptr) return; // the way is longer then
    mark->Where = pages.Where;
    mark->Now = pages.Draws.Now;
    pages.Marks[pages.MarkCount++] = mark;
}

// Returns to a mark that lies wholly before `page`.
void GoBefore(int64_t page)
{
    for (int i = pages.MarkCount - 1; i >= 0; --i) {
        if (pages.Marks[i]->Now.Page >= page) continue;
        pages.Where = pages.Marks[i]->Where;
        pages.Draws.Now = pages.Marks[i]->Now;
        return;
    }
    pages.Where.Offset = pages.Draws.Of->First;
    StartLayout(pages.Where.Laid, *pages.Draws.Def, Place, &pages.Draws);
    pages.Draws.Now = {};
    pages.Draws.Now.Scanned = pages.Draws.Of->First;
}

} // namespace

void OpenPages(const Document &document, int64_t pageCount)
{
    StartDrawing(pages.Draws, document);
    pages.Draws.PageCount = pageCount;
    pages.Stride = 4;
}

void DrawPage(int64_t page, const PageTarget &target, LetterList *letters)
{
    Drawing &drawing = pages.Draws;
    drawing.Target = &target;
    drawing.Cairo = target.Cairo;
    drawing.Collected = letters;
    if (drawing.Def->Gap > 0) {
        DrawHalvedPage(drawing, page);
        drawing.Collected = nullptr;
        return;
    }
    drawing.FirstWanted = drawing.LastWanted = page;
    GoBefore(page);
    bool goesOn = true;
    while (goesOn && drawing.Now.Page <= page) {
        goesOn = LayNextRow(*drawing.Of, pages.Where);
        if (goesOn) LeaveMark();
    }
    if (!goesOn) {
        EndLayout(pages.Where.Laid);
        EndDrawing(drawing);
    }
    ShowBatch(drawing);
    drawing.Collected = nullptr;
}

int64_t FindPage(int64_t first, int64_t last, bool wantsLast, const ItemTest &test)
{
    Drawing &drawing = pages.Draws;
    drawing.FirstWanted = drawing.LastWanted = -1;
    Search search = {&test, first, last, wantsLast, 0};
    drawing.Searching = &search;
    if (drawing.Def->Gap > 0) {
        SearchHalves(drawing, search);
        drawing.Searching = nullptr;
        return search.Found;
    }
    GoBefore(first);
    bool goesOn = true;
    while (goesOn && drawing.Now.Page <= last && (wantsLast || search.Found == 0)) {
        goesOn = LayNextRow(*drawing.Of, pages.Where);
        if (goesOn) LeaveMark();
    }
    if (!goesOn) EndLayout(pages.Where.Laid);
    drawing.Searching = nullptr;
    return search.Found;
}

} // namespace rs
