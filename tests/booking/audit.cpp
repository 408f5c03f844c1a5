#include "tests/booking/audit.h"

#include <map>

namespace vark::test {

namespace {

struct LineSum {
    int Count = 0;
    int64_t Sum = 0;
};

std::string CheckLines(const SplitRecord &part, const LineSum &lines, const std::string &what)
{
    if (lines.Count != part.Kostenzeilen) {
        return what + ": " + std::to_string(lines.Count) + " cost lines in place of " +
               std::to_string(part.Kostenzeilen);
    }
    if (lines.Count != 0 && lines.Sum != PfennigOf(part.Netto)) return what + ": cost lines of another sum";
    return "";
}

} // namespace

int64_t PfennigOf(const char (&amount)[13])
{
    int64_t value = 0;
    for (const int i : {0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 11}) {
        value = value * 10 + (amount[i] - '0');
    }
    return amount[9] == '-' ? -value : value;
}

std::string AuditPostings(const Books &books, int mandant, const std::string &year)
{
    std::map<int32_t, LineSum> linesOfPostings;
    std::map<int32_t, LineSum> linesOfParts;
    for (const KobuRecord &line : books.Read<KobuRecord>(mandant, TableKobu, year)) {
        const int32_t posting = line.Buchungsnummer;
        const int32_t part = line.Splitnummer;
        if ((posting == 0) == (part == 0))
            return "a cost line of " + std::to_string(posting) + "/" + std::to_string(part);
        LineSum &lines = posting != 0 ? linesOfPostings[posting] : linesOfParts[part];
        ++lines.Count;
        lines.Sum += PfennigOf(line.Betrag);
    }
    std::map<int32_t, int> parts;
    for (const SplitRecord &part : books.Read<SplitRecord>(mandant, TableSplit, year)) {
        const int32_t posting = part.Buchungsnummer;
        const int32_t number = part.Splitnummer;
        ++parts[posting];
        std::string fault = CheckLines(part, linesOfParts[number], "Teilbuchung " + std::to_string(number));
        if (!fault.empty()) return fault;
        linesOfParts.erase(number);
    }
    for (const BatRecord &bat : books.Read<BatRecord>(mandant, TableBat, year)) {
        const int32_t number = bat.Buchungsnummer;
        const std::string what = "posting " + std::to_string(number);
        const int further = parts[number];
        if (further != bat.Anzahl - 1)
            return what + ": " + std::to_string(further) + " further Teilbuchungen";
        parts.erase(number);
        std::string fault = CheckLines(bat.Teil, linesOfPostings[number], what);
        if (!fault.empty()) return fault;
        linesOfPostings.erase(number);
    }
    if (!parts.empty()) return "Teilbuchungen without a posting";
    if (!linesOfParts.empty() || !linesOfPostings.empty()) return "cost lines without a Teilbuchung";
    return "";
}

} // namespace vark::test
