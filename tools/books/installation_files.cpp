#include "tools/books/installation_files.h"

#include "tools/books/place.h"
#include "tools/common/system.h"
#include "tools/common/terminal.h"

#include <fstream>
#include <stdexcept>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

namespace {

// What an ini value may hold.
constexpr size_t pathMax = 259;
// The longest name below the data path: "/19972/bilpasau.btr".
constexpr size_t tableNameMax = 19;
constexpr size_t enginePathMax = 254;

bool IsInstallation(const fs::path &directory)
{
    return fs::exists(directory / "vark.ini") && fs::is_directory(directory / dataDirectory);
}

// Any one table of a directory, opened so that nobody else is in there.
std::unique_ptr<TableFile> HoldDirectory(const fs::path &directory, bool isYear)
{
    for (const TableLayout &layout : Tables()) {
        if (IsYearTable(layout) != isYear) continue;
        try {
            return std::make_unique<TableFile>(layout, directory, OpenMode::Accelerated);
        } catch (const EngineError &error) {
            if (error.Status == BtrStatusIncompatibleMode) throw;
            if (error.Status != BtrStatusFileNotFound) return nullptr;
        }
    }
    return nullptr;
}

void WriteText(const fs::path &path, const std::string &text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw std::runtime_error(path.string() + " läßt sich nicht schreiben.");
}

} // namespace

HeldBooks::HeldBooks(const fs::path &data)
{
    if (auto held = HoldDirectory(data, false)) tables.push_back(std::move(held));
    for (const std::string &name : YearDirectories(data)) {
        if (auto held = HoldDirectory(data / name, true)) tables.push_back(std::move(held));
    }
}

HeldBooks::HeldBooks(const fs::path &data, const std::string &year)
{
    if (auto held = HoldDirectory(data / year, true)) tables.push_back(std::move(held));
}

fs::path TargetPath(const fs::path &directory)
{
    const fs::path path = fs::absolute(directory).lexically_normal();
    return path.has_filename() ? path : path.parent_path();
}

void CheckTarget(const fs::path &directory, bool replace)
{
    if (PathBytes(directory / dataDirectory).size() + tableNameMax > enginePathMax ||
        PathBytes(directory / reportDirectory / "").size() > pathMax) {
        throw std::runtime_error("Der Pfad ist zu lang: " + directory.string());
    }
    if (!fs::exists(directory)) return;
    if (!fs::is_directory(directory)) throw std::runtime_error(directory.string() + " ist kein Verzeichnis.");
    if (fs::is_empty(directory)) return;
    if (!IsInstallation(directory)) {
        throw std::runtime_error("Das Verzeichnis " + directory.string() +
                                 " enthält anderes als Bücher; es wird nicht angetastet.");
    }
    if (!replace) {
        throw std::runtime_error("In " + directory.string() +
                                 " liegen schon Bücher. Mit --ersetzen werden sie durch neue ersetzt.");
    }
}

void RefuseAmong(const fs::path &data, const fs::path &target)
{
    const fs::path inside = fs::weakly_canonical(target).lexically_relative(fs::canonical(data));
    if (inside.empty() || *inside.begin() == "..") return;
    throw std::runtime_error(target.string() + " liegt zwischen den Jahren der Bücher.");
}

void WriteIniFiles(const fs::path &place, const fs::path &target)
{
    const std::string data = PathBytes(target / dataDirectory);
    const std::string reports = PathBytes(target / reportDirectory / "");
    WriteText(place / "tolka.ini",
              "[TOLKA]\nPfad32=" + data + "\nPfad=" + data + "\nReportPfad=" + reports + "\n");
    WriteText(place / "vark.ini",
              "[VARK]\nPfad=" + data + "\nReportPfad=" + reports + "\n" + IniLinesOfProgram());
}

bool CopyTemplates(const fs::path &target)
{
    // Beside the program, or where an installation has them.
    const fs::path own = ProgramDirectory();
    fs::path templates = own / "templates";
    if (!fs::is_directory(templates)) templates = own / BOOKS_TEMPLATES_FROM_PROGRAMS;
    if (!fs::is_directory(templates)) return false;
    for (const fs::directory_entry &file : fs::directory_iterator(templates)) {
        CopyFiles(file.path(), target / file.path().filename());
    }
    return true;
}

} // namespace books
