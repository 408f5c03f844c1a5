// Reading the tables of a year for its check.
#pragma once

#include "tools/books/check_references.h"
#include "tools/books/check_tables.h"
#include "tools/books/year_check.h"

#include <cstring>

namespace books {

// Checks a table, hands its records to `visit`, and then checks what each refers to. False when it cannot be
// read, which has then been told.
template <typename Record, typename Visit> bool Check(YearCheck &year, vark::TableId id, Visit visit)
{
    const tools::TableLayout &layout = tools::LayoutOf(id);
    const bool isRead =
        CheckTable(year.Out, layout, year.Directory, year.Of.FirstMonth, [&](const char *bytes) {
            Record record;
            std::memcpy(&record, bytes, sizeof record);
            visit(record);
            CheckReferences(year, layout, bytes);
        });
    if (!isRead) year.Unread.insert(id);
    return isRead;
}

// The table alone: its definition, the forms of its fields, its indexes.
inline bool CheckAlone(YearCheck &year, vark::TableId id)
{
    const bool isRead =
        CheckTable(year.Out, tools::LayoutOf(id), year.Directory, year.Of.FirstMonth, nullptr);
    if (!isRead) year.Unread.insert(id);
    return isRead;
}

// Reads a table that stands in the last year's directory, without checking it: that is done there, and there
// it is told when it cannot be read.
template <typename Record, typename Visit> void ReadLast(YearCheck &year, vark::TableId id, Visit visit)
{
    try {
        tools::TableFile table(tools::LayoutOf(id), year.LastDirectory, tools::OpenMode::ReadOnly);
        Record record{};
        for (bool found = table.StepFirst(&record); found; found = table.StepNext(&record)) {
            visit(record);
        }
    } catch (const tools::EngineError &error) {
        if (IsCircumstance(error.Status)) throw;
        year.Unread.insert(id);
    }
}

} // namespace books
