#include "tools/books/sample.h"

#include "tools/books/ledger.h"
#include "tools/books/master_records.h"
#include "tools/books/postings.h"
#include "tools/common/table_file.h"
#include "tools/common/terminal.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <unistd.h>
#include <vector>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

namespace {

// Two letters, as the library's rules for paths derived from the data path want it.
constexpr const char *dataDirectory = "DB";
constexpr const char *reportDirectory = "reports";

// What an ini value may hold.
constexpr size_t pathMax = 259;
// The longest name below the data path: "/19972/bilpasau.btr".
constexpr size_t tableNameMax = 19;
constexpr size_t enginePathMax = 254;

bool IsInstallation(const fs::path &directory)
{
    return fs::exists(directory / "vark.ini") && fs::is_directory(directory / dataDirectory);
}

// Refuses to take books away from under somebody. Whoever works in a year holds its sako open.
void CheckNotInUse(const fs::path &directory)
{
    const fs::path data = directory / dataDirectory;
    const auto check = [](const TableLayout &table, const fs::path &place) {
        try {
            TableFile(table, place, OpenMode::Exclusive).Close();
        } catch (const EngineError &error) {
            if (error.Status == BtrStatusIncompatibleMode) throw;
        }
    };
    check(LayoutOf(vark::TableFista), data);
    for (const fs::directory_entry &entry : fs::directory_iterator(data)) {
        if (entry.is_directory()) check(LayoutOf(vark::TableSako), entry.path());
    }
    StopEngine();
}

void CheckTarget(const SampleOptions &options)
{
    const fs::path &directory = options.Directory;
    if ((directory / dataDirectory).string().size() + tableNameMax > enginePathMax ||
        (directory / reportDirectory).string().size() + 1 > pathMax) {
        throw std::runtime_error("Der Pfad ist zu lang: " + directory.string());
    }
    if (!fs::exists(directory)) return;
    if (!fs::is_directory(directory)) throw std::runtime_error(directory.string() + " ist kein Verzeichnis.");
    if (fs::is_empty(directory)) return;
    if (!IsInstallation(directory)) {
        throw std::runtime_error("Das Verzeichnis " + directory.string() +
                                 " enthält anderes als Bücher; es wird nicht angetastet.");
    }
    if (!options.Replace) {
        throw std::runtime_error("In " + directory.string() +
                                 " liegen schon Bücher. Mit --ersetzen werden sie durch neue ersetzt.");
    }
    CheckNotInUse(directory);
}

void WriteText(const fs::path &path, const std::string &text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw std::runtime_error(path.string() + " läßt sich nicht schreiben.");
}

void WriteIniFiles(const fs::path &place, const fs::path &target)
{
    const std::string data = (target / dataDirectory).string();
    const std::string reports = (target / reportDirectory).string() + "/";
    WriteText(place / "tolka.ini",
              "[TOLKA]\nPfad32=" + data + "\nPfad=" + data + "\nReportPfad=" + reports + "\n");
    WriteText(place / "vark.ini", "[VARK]\nPfad=" + data + "\nReportPfad=" + reports + "\n");
}

// The report templates that lie beside this program; an installation without them has no reports.
void CopyTemplates(const fs::path &target)
{
    const fs::path templates = fs::read_symlink("/proc/self/exe").parent_path() / "templates";
    if (!fs::is_directory(templates)) return;
    for (const fs::directory_entry &file : fs::directory_iterator(templates)) {
        fs::copy_file(file.path(), target / file.path().filename());
    }
}

// The directory being filled; gone again unless it was moved to its place.
struct Workplace {
    fs::path Path;

    explicit Workplace(const fs::path &target)
    {
        std::string name = ".";
        name += target.filename().string();
        name += ".neu-";
        name += std::to_string(getpid());
        Path = target.parent_path() / name;
        fs::create_directories(target.parent_path());
        fs::remove_all(Path);
        fs::create_directory(Path);
    }
    ~Workplace()
    {
        std::error_code ignored;
        if (!Path.empty()) fs::remove_all(Path, ignored);
    }
    Workplace(const Workplace &) = delete;
    Workplace &operator=(const Workplace &) = delete;

    void MoveTo(const fs::path &target)
    {
        const fs::path old = Path.string() + ".alt";
        const bool hadOld = fs::exists(target);
        if (hadOld) fs::rename(target, old);
        fs::rename(Path, target);
        Path.clear();
        if (hadOld) fs::remove_all(old);
    }
};

constexpr int64_t fewestOpenItems = 60;
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
        throw std::runtime_error("Die Zahl der Buchungen muß 0 sein oder zwischen " + Grouped(postingsMin) +
                                 " und " + Grouped(postingsMax) + " liegen.");
    }
    if (outside(options.PersonalAccounts, 6, partnersMax)) {
        throw std::runtime_error("Die Zahl der Personenkonten muß zwischen 6 und " + Grouped(partnersMax) +
                                 " liegen.");
    }
    if (outside(options.OpenItems, 1, options.Postings / 4)) {
        throw std::runtime_error(
            "Es können nicht mehr Posten offen sein, als ein Viertel der Buchungen ausmacht.");
    }
}

} // namespace

SampleSummary MakeSample(const SampleOptions &options, const Progress &progress)
{
    CheckSize(options);
    SampleOptions wanted = options;
    wanted.Directory = fs::absolute(options.Directory).lexically_normal();
    if (!wanted.Directory.has_filename()) wanted.Directory = wanted.Directory.parent_path();
    CheckTarget(wanted);

    Workplace workplace(wanted.Directory);
    const fs::path data = workplace.Path / dataDirectory;
    fs::create_directory(data);
    fs::create_directory(workplace.Path / reportDirectory);
    CopyTemplates(workplace.Path / reportDirectory);
    WriteIniFiles(workplace.Path, wanted.Directory);

    SampleSummary summary;
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
    StopEngine();
    workplace.MoveTo(wanted.Directory);
    return summary;
}

} // namespace books
