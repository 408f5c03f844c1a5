#include "tools/books/sample.h"

#include "tools/books/ledger.h"
#include "tools/books/master_records.h"
#include "tools/common/table_file.h"

#include <fstream>
#include <stdexcept>
#include <unistd.h>

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

// The directory being filled; gone again unless it was moved to its place.
struct Workplace {
    fs::path Path;

    explicit Workplace(const fs::path &target)
        : Path(target.parent_path() / ("." + target.filename().string() + ".neu-" + std::to_string(getpid())))
    {
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

} // namespace

SampleSummary MakeSample(const SampleOptions &options, const Progress &progress)
{
    SampleOptions wanted = options;
    wanted.Directory = fs::absolute(options.Directory).lexically_normal();
    if (!wanted.Directory.has_filename()) wanted.Directory = wanted.Directory.parent_path();
    CheckTarget(wanted);

    Workplace workplace(wanted.Directory);
    const fs::path data = workplace.Path / dataDirectory;
    fs::create_directory(data);
    fs::create_directory(workplace.Path / reportDirectory);
    WriteIniFiles(workplace.Path, wanted.Directory);

    SampleSummary summary;
    CreateTable(LayoutOf(vark::TableFista), data);
    TableFile fista(LayoutOf(vark::TableFista), data, OpenMode::Accelerated);
    for (int mandant = 1; mandant <= mandantCount; ++mandant) {
        Ledger ledger = MakeLedger(mandant, 0, 0);
        WriteCompany(ledger, fista);
        ++summary.Records;
        CarryOver(ledger);
        for (int year = 0; year < yearCount; ++year) {
            const fs::path directory = data / ledger.Directory(year);
            fs::create_directory(directory);
            // While one table is open for loading, nothing in its directory waits for the disk.
            const TableLayout &first = LayoutOf(vark::TableSako);
            CreateTable(first, directory);
            TableFile loading(first, directory, OpenMode::Accelerated);
            for (const TableLayout &table : Tables()) {
                if (IsYearTable(table) && table.Id != first.Id) CreateTable(table, directory);
            }
            summary.Records += WriteYear(ledger, year, directory);
            loading.Close();
            ++summary.Directories;
            progress(static_cast<double>(summary.Directories) / (mandantCount * yearCount));
        }
    }
    fista.Close();
    StopEngine();
    workplace.MoveTo(wanted.Directory);
    return summary;
}

} // namespace books
