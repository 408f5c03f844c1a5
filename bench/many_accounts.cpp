// Adds accounts to the Debitoren of sample books, more than a sample has.
//   many_accounts YEAR_DIRECTORY COUNT
#include "bench/peers/peer.h"
#include "text/fixed_text.h"
#include "tools/common/table_file.h"

#include <exception>
#include <string>

namespace {

void AddAccounts(const char *directory, long count)
{
    tools::TableFile debi(tools::LayoutOf(vark::TableDebi), directory, tools::OpenMode::Accelerated);
    vark::PersonalRecord record;
    if (!debi.First(&record, 0)) throw std::runtime_error("no account to take after");
    for (long i = 0; i < count; ++i) {
        const std::string number = std::to_string(1000000 + i);
        const std::string kuerzel = "M" + std::to_string(i * 7919 % count);
        const std::string name = "Kunde " + number;
        text::CopyText(record.Konto, number.c_str());
        text::CopyText(record.Kuerzel, kuerzel.c_str());
        text::CopyText(record.Name1, name.c_str());
        debi.Insert(&record);
    }
    debi.Close();
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const auto [directory, count] = PeerArguments(argumentCount, arguments);
    try {
        AddAccounts(directory, count);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
