// What any list of accounts costs: the same records read through the record manager alone, and their lines
// kept in a vector of strings.
//   account_lines DATA_DIRECTORY COUNT [FILE]   prints the seconds; DATA_DIRECTORY is that of the year
// With FILE the lines are written there afterwards.
#include "bench/peers/peer.h"
#include "text/windows1252.h"
#include "tools/common/table_file.h"

#include <fstream>
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
    std::ofstream file(argumentCount > 3 ? arguments[3] : "/dev/null");
    for (const std::string &line : lines) {
        std::string shown(3 * line.size() + 1, 0);
        shown.resize(text::ToUtf8(line.c_str(), shown.data(), shown.size()));
        file << shown << '\n';
    }
    if (lines.size() >= static_cast<size_t>(count)) return 0;
    std::fprintf(stderr, "%zu accounts only\n", lines.size());
    return 1;
}
