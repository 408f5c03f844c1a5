#include "tools/books/save.h"

#include "tools/books/installation_files.h"
#include "tools/books/place.h"
#include "tools/books/sequential.h"
#include "tools/books/snapshot.h"
#include "tools/common/exit_codes.h"
#include "tools/common/table_file.h"
#include "tools/common/workplace.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <unistd.h>
#include <vector>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

namespace {

using Sink = std::function<void(const void *data, size_t size)>;

constexpr int asTheyLie = -1;

// One table into the sink. Of fista only the Mandant's record, where one is wanted.
int64_t SaveTable(const TableLayout &layout, const fs::path &directory, int key, int mandant,
                  const Sink &sink, const std::function<void(int64_t records, int64_t of)> &step)
{
    TableFile table(layout, directory, OpenMode::ReadOnly);
    const TableDefinition definition = table.Definition();
    if (definition.RecordLength != layout.RecordLength) {
        throw std::runtime_error(table.Path.string() + ": die Sätze sind " +
                                 std::to_string(definition.RecordLength) + " statt " +
                                 std::to_string(layout.RecordLength) + " Bytes lang.");
    }
    SequentialWriter writer(sink);
    std::string record(layout.RecordLength, '\0');
    int64_t count = 0;
    const auto first = [&] {
        return key == asTheyLie ? table.StepFirst(record.data()) : table.First(record.data(), key);
    };
    const auto next = [&] {
        return key == asTheyLie ? table.StepNext(record.data()) : table.Next(record.data(), key);
    };
    for (bool found = first(); found; found = next()) {
        if (mandant != 0 && layout.Id == vark::TableFista) {
            vark::FistaRecord company;
            std::memcpy(&company, record.data(), sizeof company);
            if (company.Nummer != mandant) continue;
        }
        writer.Put(record.data(), record.size());
        if (++count % recordsPerStep == 0) step(count, definition.Records);
    }
    writer.Finish();
    return count;
}

void CheckKey(const TableLayout &layout, int key)
{
    if (key >= asTheyLie && key < static_cast<int>(layout.Keys.size())) return;
    throw UsageError("Einen Schlüssel " + std::to_string(key) + " hat " + layout.Stem +
                     " nicht; die Schlüssel gehen von 0 bis " + std::to_string(layout.Keys.size() - 1) + ".");
}

SaveSummary SaveOne(const SaveOptions &options, const fs::path &data, const Progress &progress)
{
    const TableLayout &layout = NamedTable(options.Table);
    CheckKey(layout, options.Key);
    const TablePlace place = PlaceOf(layout, data, options.Mandant, options.Year);
    const auto step = [&](int64_t records, int64_t of) {
        progress(of > 0 ? static_cast<double>(records) / static_cast<double>(of) : 0);
    };
    SaveSummary summary{1, 0};
    if (options.To == "-") {
        const auto write = [](const void *bytes, size_t size) {
            const auto *from = static_cast<const char *>(bytes);
            while (size > 0) {
                const ssize_t written = ::write(STDOUT_FILENO, from, size);
                if (written < 0 && errno == EINTR) continue;
                if (written <= 0) ThrowFileError("Standardausgabe", "Schreiben", errno);
                from += written;
                size -= static_cast<size_t>(written);
            }
        };
        summary.Records = SaveTable(layout, place.Directory, options.Key, 0, write, step);
        return summary;
    }
    FileInWork file(fs::absolute(options.To).lexically_normal(), options.Replace);
    summary.Records = SaveTable(
        layout, place.Directory, options.Key, 0,
        [&file](const void *bytes, size_t size) { file.Write(bytes, size); }, step);
    file.Finish();
    return summary;
}

// A directory that was made by saving, or is empty, may be replaced; nothing else is touched.
void CheckSaveTarget(const fs::path &target, bool replace)
{
    if (!fs::exists(target)) return;
    if (!fs::is_directory(target)) throw std::runtime_error(target.string() + " ist kein Verzeichnis.");
    if (fs::is_empty(target)) return;
    if (!fs::exists(target / (std::string("fista") + sequentialExtension))) {
        throw std::runtime_error("Das Verzeichnis " + target.string() +
                                 " enthält anderes als gesicherte Bücher; es wird nicht angetastet.");
    }
    if (!replace) {
        throw std::runtime_error("In " + target.string() +
                                 " liegen schon gesicherte Bücher. Mit --ersetzen werden sie ersetzt.");
    }
}

SaveSummary SaveAll(const SaveOptions &options, const fs::path &data, const Progress &progress)
{
    const fs::path target = fs::absolute(options.To).lexically_normal();
    const fs::path place = target.has_filename() ? target : target.parent_path();
    CheckSaveTarget(place, options.Replace);
    RefuseAmong(data, place);
    if (options.Mandant != 0)
        PlaceOf(Tables().front(), data, options.Mandant, ""); // refuses one there is not

    std::vector<std::string> names = {""};
    uint64_t allBytes = 1;
    for (const std::string &name : YearDirectories(data)) {
        int year = 0;
        int mandant = 0;
        ParseYearDirectory(name, year, mandant);
        if ((options.Mandant != 0 && mandant != options.Mandant) || !HasBooks(data / name)) continue;
        names.push_back(name);
        allBytes += SizeOfBooks(data / name);
    }

    Workplace workplace(place);
    const fs::path copy = workplace.Path / "stand";
    SaveSummary summary;
    uint64_t doneBytes = 0;
    for (const std::string &name : names) {
        const fs::path source = data / name;
        const uint64_t bytes = SizeOfBooks(source);
        fs::create_directory(copy);
        CopyStore(source, copy);
        if (!name.empty()) fs::create_directory(workplace.Path / name);
        uint64_t tableBytes = 0;
        for (const TableLayout &layout : Tables()) {
            if (IsYearTable(layout) == name.empty()) continue;
            FileInWork file(workplace.Path / name / (layout.Stem + sequentialExtension), false);
            int64_t records = 0;
            try {
                records = SaveTable(
                    layout, copy, 0, options.Mandant,
                    [&](const void *from, size_t size) {
                        file.Write(from, size);
                        tableBytes += size;
                    },
                    [&](int64_t, int64_t) {
                        const uint64_t part = std::min(tableBytes, bytes);
                        progress(static_cast<double>(doneBytes + part) / static_cast<double>(allBytes));
                    });
            } catch (const EngineError &error) {
                if (error.Status == BtrStatusFileNotFound) continue; // the year has no such table
                throw;
            }
            file.Finish();
            ++summary.Tables;
            summary.Records += records;
        }
        StopEngine();
        fs::remove_all(copy);
        doneBytes += bytes;
    }
    progress(1);
    workplace.MoveTo(place);
    return summary;
}

} // namespace

SaveSummary SaveBooks(const SaveOptions &options, const Progress &progress)
{
    const fs::path data = DataPathOf(options.From);
    return options.Table.empty() ? SaveAll(options, data, progress) : SaveOne(options, data, progress);
}

} // namespace books
