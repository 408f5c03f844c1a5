#include "tools/books/copy_records.h"

#include "tools/books/snapshot.h"
#include "tools/common/table_file.h"
#include "tools/common/terminal.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

namespace {

// Whether records lie in a table as its layout tells, with what orders their duplicates.
bool IsAsLaidOut(TableFile &table)
{
    const TableDefinition definition = table.Definition();
    return definition.RecordLength == table.Layout.RecordLength &&
           std::equal(definition.Keys.begin(), definition.Keys.end(), table.Layout.Keys.begin(),
                      table.Layout.Keys.end(), [](const KeyLayout &there, const KeyLayout &wanted) {
                          return there.Duplicates == wanted.Duplicates;
                      });
}

template <typename Insert>
void ForEachRecord(TableFile &source, size_t length, bool (TableFile::*first)(void *),
                   bool (TableFile::*next)(void *), Insert insert)
{
    std::vector<char> record(length);
    for (bool found = (source.*first)(record.data()); found; found = (source.*next)(record.data())) {
        ThrowIfInterrupted();
        insert(record.data());
    }
}

} // namespace

void CopyRecords(const fs::path &from, const fs::path &to, EngineClient *reader)
{
    // While one table is open, its directory need not be opened again for the next, and nothing waits for the
    // disk.
    std::unique_ptr<TableFile> heldSource;
    std::unique_ptr<TableFile> heldTarget;
    for (const TableLayout &layout : Tables()) {
        std::unique_ptr<TableFile> source;
        try {
            source = std::make_unique<TableFile>(layout, from, OpenMode::ReadOnly, reader);
        } catch (const EngineError &error) {
            if (error.Status != BtrStatusFileNotFound) throw;
            continue;
        }
        CreateTable(layout, to);
        auto target = std::make_unique<TableFile>(layout, to, OpenMode::Accelerated);
        if (IsAsLaidOut(*source)) {
            ForEachRecord(*source, source->StoredLength(), &TableFile::StepFirstStored,
                          &TableFile::StepNextStored, [&](char *stored) { target->InsertStored(stored); });
        } else {
            ForEachRecord(*source, layout.RecordLength, &TableFile::StepFirst, &TableFile::StepNext,
                          [&](char *record) { target->Insert(record); });
        }
        if (heldTarget == nullptr) {
            heldSource = std::move(source);
            heldTarget = std::move(target);
        } else {
            target->Close();
        }
    }
    if (heldTarget == nullptr) throw DamagedBooks("In " + from.string() + " liegen keine Bücher.");
    heldTarget->Close();
}

void CopyOneMoment(const fs::path &from, const fs::path &to)
{
    EngineClient reader;
    reader.BeginSnapshot();
    CopyRecords(from, to, &reader);
}

} // namespace books
