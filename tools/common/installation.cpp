#include "tools/common/installation.h"

#include "host/ini_files.h"
#include "src/platform/platform.h"
#include "tools/common/system.h"
#include "tools/common/texts.h"

#include <cstring>

namespace tools {

namespace fs = std::filesystem;
using namespace vark;

fs::path ConfiguredDataPath()
{
    RefuseUnreadableIni("tolka.ini");
    RefuseUnreadableIni("vark.ini");
    char path[maxPath];
    if (ReadProfileText("TOLKA", "Pfad32", path, sizeof path, "tolka.ini") == 0 &&
        ReadProfileText("TOLKA", "Pfad", path, sizeof path, "tolka.ini") == 0 &&
        ReadProfileText("VARK", "Pfad", path, sizeof path, "vark.ini") == 0) {
        return {};
    }
    // One separator at the end is cut, of either kind: ini files travel.
    const size_t length = std::strlen(path);
    if (length > 0 && (path[length - 1] == '/' || path[length - 1] == '\\')) path[length - 1] = 0;
    return PathOfBytes(path);
}

void UseConfiguration(const fs::path &directory) { SetEnvironment("VARK_CONFIG_DIR", PathBytes(directory)); }

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
