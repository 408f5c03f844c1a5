#include "tools/books/place.h"

#include "tools/common/exit_codes.h"

#include <algorithm>
#include <stdexcept>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

bool IsOnServer(const fs::path &directory) { return fs::exists(directory / "books.server"); }

bool HasBooks(const fs::path &directory)
{
    return IsOnServer(directory) || fs::exists(directory / "books.mdb");
}

uint64_t SizeOfBooks(const fs::path &directory)
{
    return IsOnServer(directory) ? 0 : fs::file_size(directory / "books.mdb");
}

fs::path DataPathOf(const fs::path &directory)
{
    fs::path place = fs::absolute(directory).lexically_normal();
    if (!fs::is_directory(place)) throw std::runtime_error(place.string() + " ist kein Verzeichnis.");
    if (HasBooks(place)) return place;
    if (fs::is_directory(place / "DB")) return place / "DB";
    UseConfiguration(place);
    fs::path data = ConfiguredDataPath();
    if (data.empty() || !fs::is_directory(data)) {
        throw std::runtime_error("In " + place.string() + " liegen keine Bücher.");
    }
    return data;
}

bool ParseYearDirectory(const std::string &name, int &year, int &mandant)
{
    if (name.size() < 4 || name.size() > 8 ||
        !std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        return false;
    }
    year = std::stoi(name.substr(0, 4));
    mandant = name.size() == 4 ? 1 : std::stoi(name.substr(4)) + 1;
    return true;
}

std::vector<std::string> YearDirectories(const fs::path &data)
{
    std::vector<std::string> names;
    int year = 0;
    int mandant = 0;
    for (const fs::directory_entry &entry : fs::directory_iterator(data)) {
        std::string name = entry.path().filename().string();
        if (entry.is_directory() && ParseYearDirectory(name, year, mandant)) names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end());
    return names;
}

TablePlace PlaceOf(const TableLayout &layout, const fs::path &data, int mandant, const std::string &year)
{
    if (!IsYearTable(layout)) return {data, layout.Stem, 1};
    const std::vector<Mandant> all = ReadMandanten(data);
    const auto found = mandant == 0 ? all.begin()
                                    : std::find_if(all.begin(), all.end(),
                                                   [&](const Mandant &one) { return one.Number == mandant; });
    if (found == all.end()) {
        throw UsageError(mandant == 0 ? "In den Büchern steht kein Mandant."
                                      : "Den Mandanten " + std::to_string(mandant) + " gibt es nicht.");
    }
    const std::string directory = found->Directory(year.empty() ? found->UpperYear : year);
    if (!fs::is_directory(data / directory)) {
        throw UsageError("Das Jahr " + (year.empty() ? found->UpperYear : year) + " des Mandanten " +
                         std::to_string(found->Number) + " gibt es nicht.");
    }
    return {data / directory, directory + "/" + layout.Stem, found->FirstMonth};
}

const TableLayout &NamedTable(const std::string &stem)
{
    if (const TableLayout *layout = FindLayout(stem)) return *layout;
    std::string names;
    for (const TableLayout &table : Tables()) {
        names += names.empty() ? "" : ", ";
        names += table.Stem;
    }
    throw UsageError("Eine Tabelle " + stem + " gibt es nicht. Es gibt " + names + ".");
}

} // namespace books
