// Files of a finished report, each made from its spool alone.
#pragma once

#include "report-engine/view.h"

#include <cstddef>
#include <cstdint>

namespace rs {

// What the report is called, never empty; UTF-8.
const char *TitleOf(const View &view);

// The same as a file can be called.
void NameForFile(const View &view, char (&name)[maxViewTitle]);

// Writes the view to `path` by its extension; false on failure, which has been told.
bool ExportView(const View &view, const char *path);

enum class Written : uint8_t { whole, nameTaken, failed };

// Writes the pages to `path`, whatever its extension; `nameTaken` only without `mayReplace`. A failure has
// been told.
Written WritePdfFile(const View &view, const char *path, bool mayReplace);

// Bytes on their way to a file; the first failure stays and stops the rest.
struct Writer {
    int File;
    int Error; // errno, 0 for none
    size_t Used;
    char Buffer[65'536];
};

void Write(Writer &writer, const char *bytes, size_t length);
void Write(Writer &writer, const char *text);
bool FlushWriter(Writer &writer);

// The forms, each the whole file. False when the spool could not be read; failures of the writer stay in it.
bool WriteCsv(Writer &writer, const View &view);
bool WriteJson(Writer &writer, const View &view);
bool WriteHtml(Writer &writer, const View &view);
bool WriteText(Writer &writer, const View &view);

// Runs the program that draws pages; false on failure, which has been told.
bool WritePages(int file, const View &view, const char *path);

} // namespace rs
