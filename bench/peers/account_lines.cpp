// What any list of accounts costs: the same records read through the record manager alone, and their lines
// kept in a vector of strings.
//   account_lines DATA_DIRECTORY COUNT   prints the seconds; DATA_DIRECTORY is that of the year
#include "bench/peers/peer.h"
#include "tools/common/table_file.h"

#include <string>
#include <vector>

int main(int argumentCount, char **arguments)
{
    const auto [directory, count] = PeerArguments(argumentCount, arguments);
    tools::TableFile debi(tools::LayoutOf(vark::TableDebi), directory, tools::OpenMode::Normal);
    vark::PersonalRecord record;
    const Stopwatch watch;
    std::vector<std::string> lines;
    for (bool found = debi.First(&record, 0); found; found = debi.Next(&record, 0)) {
        lines.push_back(std::string(record.Konto) + "\t" + record.Kuerzel + "\t" + record.Name1);
    }
    watch.Print();
    if (lines.size() >= static_cast<size_t>(count)) return 0;
    std::fprintf(stderr, "%zu accounts only\n", lines.size());
    return 1;
}
