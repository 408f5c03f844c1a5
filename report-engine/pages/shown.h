// The one document that the process shows, its letters page by page, and what is selected of them.
#pragma once

#include "report-engine/page_requests.h"
#include "report-engine/pages/draw.h"

namespace rs {

struct Shown {
    LetterList Letters; // of the page that was looked at last
    int64_t PageCount;
    const Document *Of;
    const Definition *Def;
};

extern Shown shown;

// The letters of a page in reading order, while it is drawn.
LetterList &LettersOf(int64_t page, cairo_t *cairo, Ink ink);

// The same of a page that nobody sees.
LetterList &LettersUnseen(int64_t page);

// Puts the ends into reading order: on one line the left one comes first, whichever is higher.
void OrderSelection(PageRequest &request);

// Which of the page's letters are selected; false for none.
bool SelectedOn(const PageRequest &request, int64_t page, const LetterList &letters, Hit &range);

} // namespace rs
