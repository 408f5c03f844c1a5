#include "tools/books/copy.h"

#include "src/platform/platform.h"
#include "tools/books/installation_files.h"
#include "tools/books/place.h"
#include "tools/books/server.h"
#include "tools/books/snapshot.h"
#include "tools/common/exit_codes.h"
#include "tools/common/installation.h"
#include "tools/common/system.h"
#include "tools/common/table_file.h"
#include "tools/common/terminal.h"
#include "tools/common/workplace.h"

#include <optional>
#include <stdexcept>
#include <vector>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

namespace {

// The installation's ini files with the paths of the copy; everything else in them stays.
void CopyIniFiles(const fs::path &from, const fs::path &place, const fs::path &target)
{
    bool hasBoth = true;
    for (const char *name : {"tolka.ini", "vark.ini"}) {
        const bool isThere = fs::is_regular_file(from / name);
        if (isThere) CopyFiles(from / name, place / name);
        hasBoth = hasBoth && isThere;
    }
    if (!hasBoth) {
        WriteIniFiles(place, target);
        return;
    }
    UseConfiguration(place);
    const std::string data = PathBytes(target / dataDirectory);
    const std::string reports = PathBytes(target / reportDirectory / "");
    const auto write = [](const char *section, const char *key, const std::string &value, const char *file) {
        if (!vark::WriteProfileText(section, key, value.c_str(), file)) {
            throw std::runtime_error(std::string(file) + " läßt sich nicht schreiben.");
        }
    };
    write("TOLKA", "Pfad32", data, "tolka.ini");
    write("TOLKA", "Pfad", data, "tolka.ini");
    write("TOLKA", "ReportPfad", reports, "tolka.ini");
    write("VARK", "Pfad", data, "vark.ini");
    write("VARK", "ReportPfad", reports, "vark.ini");
}

// The schema of a directory of years has its name behind that of the data path's.
std::string SchemaOf(const std::string &schema, const std::string &name)
{
    return name.empty() ? schema : schema + "_" + name;
}

} // namespace

namespace {

// The directories are ours to write, whatever those are that they are copied from.
void CopyTree(const fs::path &from, const fs::path &to)
{
    fs::create_directory(to);
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(from)) {
        const fs::path target = to / entry.path().lexically_relative(from);
        if (entry.is_directory()) {
            fs::create_directory(target);
        } else {
            CopyFiles(entry.path(), target);
        }
    }
}

} // namespace

CopySummary CopyBooks(const CopyOptions &options, const Progress &progress)
{
    if (options.Server.empty() != options.Schema.empty())
        throw UsageError("--server und --schema gehören zusammen.");
    const fs::path data = DataPathOf(options.From);
    const fs::path from = fs::absolute(options.From).lexically_normal();
    const fs::path target = TargetPath(options.To);
    if (fs::exists(target) && fs::equivalent(target, from)) {
        throw std::runtime_error("Bücher lassen sich nicht auf sich selbst kopieren.");
    }
    RefuseAmong(data, target);
    CheckTarget(target, options.Replace);
    std::optional<HeldBooks> held;
    if (fs::exists(target / dataDirectory)) held.emplace(target / dataDirectory);

    Workplace workplace(target);
    const fs::path place = workplace.Path / dataDirectory;
    fs::create_directory(place);
    std::vector<std::string> names = YearDirectories(data);
    names.insert(names.begin(), "");
    CopySummary summary;
    NewSchemas schemas;
    for (const std::string &name : names) {
        progress(static_cast<double>(summary.Directories) / static_cast<double>(names.size()));
        if (!name.empty() && !HasBooks(data / name)) continue;
        const fs::path to = name.empty() ? place : place / name;
        fs::create_directory(to);
        if (!options.Server.empty()) schemas.Add(to, options.Server, SchemaOf(options.Schema, name));
        CopyStore(name.empty() ? data : data / name, to);
        summary.Bytes += SizeOfBooks(to);
        ++summary.Directories;
    }
    if (fs::is_directory(from / reportDirectory)) {
        CopyTree(from / reportDirectory, workplace.Path / reportDirectory);
    } else {
        fs::create_directory(workplace.Path / reportDirectory);
        summary.HasTemplates = CopyTemplates(workplace.Path / reportDirectory);
    }
    CopyIniFiles(from, workplace.Path, target);
    progress(1);
    if (held) held->AllowMove();
    workplace.MoveTo(target);
    schemas.Keep();
    StopEngine();
    return summary;
}

} // namespace books
