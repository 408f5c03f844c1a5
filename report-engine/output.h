// Files of a finished report, each made from its spool alone.
#pragma once

#include "report-engine/helper.h"
#include "report-engine/view.h"

#include <cstddef>
#include <cstdint>

namespace rs {

// What the report is called, never empty; UTF-8.
const char *TitleOf(const View &view);

// The same as a file can be called.
void NameForFile(const View &view, char (&name)[maxViewTitle]);

enum class Written : uint8_t { whole, nameTaken, stopped, failed };

// Pages from and to, both included; 0 for the first and the last.
struct PageRange {
    int64_t From;
    int64_t To;
};

// Writes the view to `path` by its extension. A failure has been told; `stopped` only with `progress`, which
// may be null.
Written ExportView(const View &view, const char *path, const Progress *progress);

// Writes pages to `path`, whatever its extension; `nameTaken` only without `mayReplace`. The same otherwise.
Written WritePdfFile(const View &view, const char *path, bool mayReplace, PageRange range,
                     const Progress *progress);

// Runs the program that draws pages. A failure has been told.
Ended WritePages(int file, const View &view, const char *path, PageRange range, const Progress *progress);

} // namespace rs
