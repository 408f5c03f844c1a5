#include "tools/books/sample.h"

#include "tools/books/batches.h"
#include "tools/books/installation_files.h"
#include "tools/books/ledger.h"
#include "tools/books/master_records.h"
#include "tools/books/postings.h"
#include "tools/common/exit_codes.h"
#include "tools/common/table_file.h"
#include "tools/common/terminal.h"
#include "tools/common/workplace.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

namespace {

constexpr int64_t fewestOpenItems = 24;
constexpr int64_t postingsPerOpenItem = 50;

PostingPlan PlanFor(const SampleOptions &options, int mandant)
{
    if (options.Postings == 0) return {0, 0, options.Seed};
    const bool isFirst = mandant == 1;
    const int64_t count = isFirst ? options.Postings : std::max(postingsMin, options.Postings / 10);
    const int64_t items = std::max(fewestOpenItems, count / postingsPerOpenItem);
    return {count, isFirst && options.OpenItems > 0 ? options.OpenItems : items, options.Seed};
}

// How much of all is done when a Mandant is done by `part`: the first one takes most of the time.
double PartOf(int mandant, double part)
{
    constexpr double before[] = {0.0, 0.8, 0.9, 1.0};
    return before[mandant - 1] + part * (before[mandant] - before[mandant - 1]);
}

void CheckSize(const SampleOptions &options)
{
    const auto outside = [](int64_t value, int64_t low, int64_t high) {
        return value != 0 && (value < low || value > high);
    };
    if (outside(options.Postings, postingsMin, postingsMax)) {
        throw UsageError("Die Zahl der Buchungen muß 0 sein oder zwischen " + Grouped(postingsMin) + " und " +
                         Grouped(postingsMax) + " liegen.");
    }
    if (outside(options.PersonalAccounts, 6, partnersMax)) {
        throw UsageError("Die Zahl der Personenkonten muß zwischen 6 und " + Grouped(partnersMax) +
                         " liegen.");
    }
    if (outside(options.OpenItems, 1, options.Postings / 4)) {
        throw UsageError("Es können nicht mehr Posten offen sein, als ein Viertel der Buchungen ausmacht.");
    }
}

} // namespace

SampleSummary MakeSample(const SampleOptions &options, const Progress &progress)
{
    CheckSize(options);
    SampleOptions wanted = options;
    wanted.Directory = TargetPath(options.Directory);
    CheckTarget(wanted.Directory, wanted.Replace);
    std::optional<HeldBooks> held;
    if (fs::exists(wanted.Directory / dataDirectory)) held.emplace(wanted.Directory / dataDirectory);

    Workplace workplace(wanted.Directory);
    const fs::path data = workplace.Path / dataDirectory;
    fs::create_directory(data);
    fs::create_directory(workplace.Path / reportDirectory);
    WriteIniFiles(workplace.Path, wanted.Directory);

    SampleSummary summary;
    summary.HasTemplates = CopyTemplates(workplace.Path / reportDirectory);
    CreateTable(LayoutOf(vark::TableFista), data);
    TableFile fista(LayoutOf(vark::TableFista), data, OpenMode::Accelerated);
    for (int mandant = 1; mandant <= mandantCount; ++mandant) {
        const PostingPlan plan = PlanFor(wanted, mandant);
        Ledger ledger = mandant == 1 ? MakeLedger(1, wanted.PersonalAccounts - wanted.PersonalAccounts / 3,
                                                  wanted.PersonalAccounts / 3)
                                     : MakeLedger(mandant, 0, 0);
        WriteCompany(ledger, fista);
        ++summary.Records;
        // While one table is open for loading, nothing in its directory waits for the disk.
        std::vector<std::unique_ptr<TableFile>> loading;
        for (int year = 0; year < yearCount; ++year) {
            const fs::path directory = data / ledger.Directory(year);
            fs::create_directory(directory);
            const TableLayout &first = LayoutOf(vark::TableSako);
            CreateTable(first, directory);
            loading.push_back(std::make_unique<TableFile>(first, directory, OpenMode::Accelerated));
            for (const TableLayout &table : Tables()) {
                if (IsYearTable(table) && table.Id != first.Id) CreateTable(table, directory);
            }
            ++summary.Directories;
        }
        if (plan.Count > 0) {
            summary.Records +=
                WritePostings(ledger, plan, data, [&](double part) { progress(PartOf(mandant, part)); });
            summary.Postings += plan.Count;
            summary.Records += WriteBatches(ledger, data / ledger.Directory(yearCount - 1));
        } else {
            BalanceOpening(ledger);
            CarryOver(ledger);
        }
        for (int year = 0; year < yearCount; ++year) {
            summary.Records += WriteYear(ledger, year, data / ledger.Directory(year));
            loading[static_cast<size_t>(year)]->Close();
        }
        progress(PartOf(mandant, 1));
    }
    fista.Close();
    if (held) held->AllowMove();
    workplace.MoveTo(wanted.Directory);
    StopEngine();
    return summary;
}

} // namespace books
