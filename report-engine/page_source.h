// The pages of a view, as its window asks for them.
#pragma once

#include "report-engine/page_requests.h"
#include "report-engine/view.h"

namespace rs {

// The program that draws the pages of one view; started when first asked.
struct PageSource {
    int Socket; // -1 before
};

// Far more than the slowest answer takes, which is a search through a million lines. Tests shorten it.
extern int longestAnswer_ms;

// Asks and waits for the answer, no longer than that. `file` is what came along, to be closed by the caller,
// or -1. False on failure, which has been told; the next call tries anew.
bool AskForPages(PageSource &source, const View &view, const PageRequest &request, PageAnswer &answer,
                 int &file);

void CloseSource(PageSource &source);

} // namespace rs
