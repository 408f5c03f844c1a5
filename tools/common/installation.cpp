#include "tools/common/installation.h"

#include "host/ini_files.h"
#include "src/platform/platform.h"
#include "tools/common/texts.h"
#include "tools/common/workplace.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace tools {

namespace fs = std::filesystem;
using namespace vark;

namespace {

// Where the library looks for ini files, in its order.
std::vector<fs::path> ConfigurationDirectories()
{
    const auto variable = [](const char *name) {
        const char *value = secure_getenv(name);
        return value != nullptr ? std::string(value) : std::string();
    };
    if (const std::string only = variable("VARK_CONFIG_DIR"); !only.empty()) return {only};
    const std::string config = variable("XDG_CONFIG_HOME");
    const std::string home = variable("HOME");
    const fs::path own = config.starts_with('/') ? fs::path(config) : fs::path(home) / ".config";
    return {own / "vark", "/etc/vark"};
}

// An ini file that is there and cannot be read must not let the next one's books be taken instead of its own.
void RefuseUnreadable(const char *name)
{
    for (const fs::path &directory : ConfigurationDirectories()) {
        const fs::path path = directory / name;
        const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (file < 0 && (errno == ENOENT || errno == ENOTDIR)) continue;
        if (file < 0) ThrowFileError(path, "Lesen der Einstellungen", errno);
        struct stat facts = {};
        const bool isRegular = fstat(file, &facts) == 0 && S_ISREG(facts.st_mode);
        close(file);
        if (isRegular) return;
        throw std::runtime_error(path.string() +
                                 ": Lesen der Einstellungen nicht möglich, das ist keine Datei");
    }
}

} // namespace

fs::path ConfiguredDataPath()
{
    RefuseUnreadable("tolka.ini");
    RefuseUnreadable("vark.ini");
    char path[maxPath];
    if (host::ReadProfileText("TOLKA", "Pfad32", path, sizeof path, "tolka.ini") == 0 &&
        host::ReadProfileText("TOLKA", "Pfad", path, sizeof path, "tolka.ini") == 0 &&
        host::ReadProfileText("VARK", "Pfad", path, sizeof path, "vark.ini") == 0) {
        return {};
    }
    // One separator at the end is cut, of either kind: ini files travel.
    const size_t length = std::strlen(path);
    if (length > 0 && (path[length - 1] == '/' || path[length - 1] == '\\')) path[length - 1] = 0;
    return path;
}

void UseConfiguration(const fs::path &directory) { setenv("VARK_CONFIG_DIR", directory.c_str(), 1); }

std::string Mandant::Directory(const std::string &year) const
{
    return Number == 1 ? year : year + std::to_string(Number - 1);
}

std::vector<Mandant> ReadMandanten(const fs::path &dataPath)
{
    std::vector<Mandant> mandanten;
    TableFile fista(LayoutOf(TableFista), dataPath, OpenMode::ReadOnly);
    FistaRecord record{};
    for (bool found = fista.First(&record, 0); found; found = fista.Next(&record, 0)) {
        mandanten.push_back({record.Nummer, FieldText(record.Name), FieldText(record.LowerYear),
                             FieldText(record.UpperYear),
                             record.FirstFiscalMonth == 0 ? 1 : record.FirstFiscalMonth, record});
    }
    return mandanten;
}

std::optional<Mandant> FindMandant(const fs::path &dataPath, int number)
{
    for (Mandant &mandant : ReadMandanten(dataPath)) {
        if (mandant.Number == number) return std::move(mandant);
    }
    return std::nullopt;
}

} // namespace tools
