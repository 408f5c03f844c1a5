// Adds Mandanten to sample books, each with a copy of the years of Mandant 1, until there are COUNT.
//   more_mandanten DATA_DIRECTORY COUNT
#include "bench/peers/peer.h"
#include "tools/common/installation.h"

#include <exception>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

void AddMandanten(const fs::path &dataPath, long count)
{
    const auto first = tools::FindMandant(dataPath, 1);
    if (!first) throw std::runtime_error("no Mandant to take after");
    tools::TableFile fista(tools::LayoutOf(vark::TableFista), dataPath, tools::OpenMode::Normal);
    for (int number = 1; number <= count; ++number) {
        if (tools::FindMandant(dataPath, number)) continue;
        tools::Mandant copy = *first;
        copy.Number = number;
        copy.Record.Nummer = static_cast<int16_t>(number);
        for (const std::string &year : {copy.LowerYear, copy.UpperYear}) {
            fs::create_directory(dataPath / copy.Directory(year));
            fs::copy_file(dataPath / first->Directory(year) / "books.mdb",
                          dataPath / copy.Directory(year) / "books.mdb");
        }
        fista.Insert(&copy.Record);
    }
    fista.Close();
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const auto [directory, count] = PeerArguments(argumentCount, arguments);
    try {
        AddMandanten(directory, count);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
