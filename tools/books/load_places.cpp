#include "tools/books/load_places.h"

#include "tools/books/place.h"
#include "tools/books/snapshot.h"
#include "tools/common/fields.h"
#include "tools/common/table_file.h"
#include "tools/common/terminal.h"

#include <stdexcept>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

fs::path BesideOf(const fs::path &data) { return data.parent_path(); }

void MakeYearTables(const fs::path &directory)
{
    const TableLayout &first = LayoutOf(vark::TableSako);
    CreateTable(first, directory);
    TableFile held(first, directory, OpenMode::Accelerated);
    for (const TableLayout &layout : Tables()) {
        if (IsYearTable(layout) && layout.Id != first.Id) CreateTable(layout, directory);
    }
    held.Close();
}

void CopyOtherFiles(const fs::path &from, const fs::path &to)
{
    for (const fs::directory_entry &entry : fs::directory_iterator(from)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with("books.mdb")) continue;
        int year = 0;
        int mandant = 0;
        if (entry.is_directory() && ParseYearDirectory(name, year, mandant)) continue;
        CopyFiles(entry.path(), to / entry.path().filename(),
                  fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    }
}

void CopyYears(const fs::path &data, const fs::path &to, int butMandant)
{
    for (const std::string &name : YearDirectories(data)) {
        int year = 0;
        int mandant = 0;
        ParseYearDirectory(name, year, mandant);
        if (mandant == butMandant || !HasBooks(data / name)) continue;
        fs::create_directory(to / name);
        CopyOtherFiles(data / name, to / name);
        CopyStore(data / name, to / name);
    }
}

fs::path BooksIn(const fs::path &directory)
{
    if (!fs::is_directory(directory) || fs::is_empty(directory)) return {};
    try {
        return fs::canonical(DataPathOf(directory));
    } catch (const std::runtime_error &) {
        return {};
    }
}

void RemoveCompany(const fs::path &data, int mandant)
{
    TableFile fista(LayoutOf(vark::TableFista), data, OpenMode::Normal);
    vark::FistaRecord company;
    const auto number = static_cast<int16_t>(mandant);
    if (fista.Equal(&company, &number, 0)) fista.Delete();
    fista.Close();
}

} // namespace books
