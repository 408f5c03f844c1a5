#include "tools/books/check_costs.h"

#include "tools/books/check_reading.h"
#include "tools/common/texts.h"

#include <cstring>

namespace books {

using namespace tools;
using namespace vark;

void CheckCostObjects(YearCheck &year)
{
    std::set<std::string> names;
    Check<KoreRecord>(year, TableKore, [&](const KoreRecord &record) {
        CostState state{};
        state.Number = Konto(record.Nummer);
        for (int month = 0; month < 12; ++month) {
            state.Recorded[month] = Pfennig(record.Monat[month]);
        }
        if (record.Name[0] == 0) year.Tell("name", "kore", state.Number, "Name", "der Name fehlt");
        const std::string name = FieldText(record.Kuerzel);
        if (!name.empty() && !names.insert(name).second) {
            year.Tell("kuerzel", "kore", state.Number, "Kuerzel",
                      "das Kürzel „" + name + "“ hat schon eine andere Kostenstelle");
        }
        year.CostOf.emplace(Packed(record.Nummer), year.Costs.size());
        year.Costs.push_back(std::move(state));
    });
}

namespace {

constexpr int keyOfNumber = 5;      // of bube
constexpr int keyOfBatBooking = 0;  // of bat
constexpr int keyOfSplitNumber = 1; // of split

// Where the postings of cost lines are looked up. Those in a Stapel stand in the last year.
struct CostSources {
    TableFile Postings, Bat, Split;

    explicit CostSources(const YearCheck &year)
        : Postings(LayoutOf(TableBube), year.Directory, OpenMode::ReadOnly),
          Bat(LayoutOf(TableBat), year.LastDirectory, OpenMode::ReadOnly),
          Split(LayoutOf(TableSplit), year.LastDirectory, OpenMode::ReadOnly)
    {}
};

// The lines of one posting follow each other in key 0. Together they are what the posting is without its tax.
struct CostPosting {
    BubeRecord Record = {};
    int32_t Number = 0; // 0 before the first one
    int64_t Spread = 0;
    bool OnHaben = false;
    bool IsKnown = false;
};

void EndPosting(YearCheck &year, const CostPosting &posting)
{
    if (posting.Number == 0 || !posting.IsKnown) return;
    const int64_t net = posting.OnHaben ? Pfennig(posting.Record.Haben) : Pfennig(posting.Record.Soll);
    if (posting.Spread == net) return;
    year.Tell("kosten", "kobu", std::to_string(posting.Number), "Betrag",
              "verteilt sind " + Money(posting.Spread) + " von " + Money(net));
}

void CheckLineOfStapel(YearCheck &year, CostSources &sources, const KobuRecord &line)
{
    const std::string key = std::to_string(line.FinaleBuchung);
    BatRecord head{};
    SplitRecord part{};
    if (line.Splitnummer != 0) {
        if (!sources.Split.Equal(&part, &line.Splitnummer, keyOfSplitNumber)) {
            year.Tell("verweis", "kobu", key, "Splitnummer",
                      "die Teilbuchung " + std::to_string(line.Splitnummer) + " gibt es nicht");
        }
    } else if (!sources.Bat.Equal(&head, &line.Buchungsnummer, keyOfBatBooking)) {
        year.Tell("verweis", "kobu", key, "Buchungsnummer",
                  "die Buchung " + std::to_string(line.Buchungsnummer) + " gibt es nicht im Stapel");
    }
}

// A final line against its posting, which changes to the line's when that is another one.
void CheckFinalLine(YearCheck &year, CostSources &sources, const KobuRecord &line, CostPosting &posting)
{
    const std::string key = std::to_string(line.FinaleBuchung);
    if (line.FinaleBuchung != posting.Number) {
        EndPosting(year, posting);
        posting = {};
        posting.Number = line.FinaleBuchung;
        posting.OnHaben = (line.Flag & KobuHaben) != 0;
        posting.IsKnown = sources.Postings.Equal(&posting.Record, &posting.Number, keyOfNumber);
        if (!posting.IsKnown) year.Tell("verweis", "kobu", key, "FinaleBuchung", "die Buchung gibt es nicht");
    }
    posting.Spread += Pfennig(line.Betrag);
    if (!posting.IsKnown) return;
    const AccountNumber &account = posting.OnHaben ? posting.Record.Habenkonto : posting.Record.Sollkonto;
    if (Packed(line.Konto) != Packed(account)) {
        year.Tell("kosten", "kobu", key, "Konto", Konto(line.Konto) + " statt " + Konto(account));
    }
    if (std::memcmp(line.Datum, posting.Record.Schluessel.Folge, 6) != 0) {
        year.Tell("datum", "kobu", key, "Datum", "das ist nicht der Tag der Buchung");
    }
}

// Adds a final line to its cost centres.
void AddLine(YearCheck &year, const KobuRecord &line)
{
    Day day = 0;
    if (!DayOfSort(line.Datum, year.Of.FirstMonth, day)) return; // told as a fault of form
    if (!year.InYear(day)) {
        year.Tell("datum", "kobu", std::to_string(line.FinaleBuchung), "Datum",
                  DisplayDay(day) + " liegt nicht im Jahr");
        return;
    }
    const int month = FiscalOf(day, year.Of.FirstMonth).Month - 1;
    const int64_t amount = Pfennig(line.Betrag);
    for (const AccountNumber *number : {&line.Kostenobjekt1, &line.Kostenobjekt2}) {
        const auto object = year.CostOf.find(Packed(*number));
        if (object == year.CostOf.end()) continue;
        year.Costs[object->second].Posted[month] += (line.Flag & KobuHaben) != 0 ? -amount : amount;
    }
}

void CompareCosts(YearCheck &year)
{
    for (const CostState &object : year.Costs) {
        for (int month = 0; month < 12; ++month) {
            if (object.Recorded[month] == object.Posted[month]) continue;
            year.Tell("kosten", "kore", object.Number, "Monat[" + std::to_string(month) + "]",
                      Money(object.Recorded[month]) + ", nach den Kostenbuchungen " +
                          Money(object.Posted[month]));
        }
    }
}

} // namespace

void CheckCostLines(YearCheck &year)
{
    if (!CheckAlone(year, TableKobu) || !year.AreRead({TableBube})) return;
    TableFile table(LayoutOf(TableKobu), year.Directory, OpenMode::ReadOnly);
    CostSources sources(year);
    CostPosting posting;
    KobuRecord line{};
    for (bool found = table.First(&line, 0); found; found = table.Next(&line, 0)) {
        CheckReferences(year, TableKobu, line);
        if (line.FinaleBuchung == 0) {
            CheckLineOfStapel(year, sources, line);
            continue;
        }
        CheckFinalLine(year, sources, line, posting);
        AddLine(year, line);
    }
    EndPosting(year, posting);
    if (year.AreRead({TableKore})) CompareCosts(year);
}

void CheckTemplates(YearCheck &year)
{
    Check<KoschaRecord>(year, TableKoscha, [&](const KoschaRecord &record) {
        if (record.Name[0] == 0)
            year.Tell("name", "koscha", std::to_string(record.Nummer), "Name", "der Name fehlt");
    });
    std::map<int32_t, int> lines;
    std::map<int32_t, int64_t> shares;
    Check<KoschazeRecord>(year, TableKoschaze, [&](const KoschazeRecord &record) {
        const std::string key = std::to_string(record.Nummer);
        ++lines[record.Nummer];
        int64_t share = 0;
        for (const char *at = record.Anteil; *at != 0 && at < record.Anteil + sizeof record.Anteil; ++at) {
            if (*at >= '0' && *at <= '9') share = share * 10 + *at - '0';
        }
        shares[record.Nummer] += share;
    });
    if (!year.AreRead({TableKoscha, TableKoschaze})) return;
    for (const auto &[number, count] : year.TemplateLines) {
        const std::string key = std::to_string(number);
        if (lines[number] != count) {
            year.Tell("schablone", "koscha", key, "Zeilen",
                      std::to_string(count) + ", es gibt " + std::to_string(lines[number]));
        }
        // The last line takes the rest; what rounding leaves open is no fault.
        if (lines[number] > 0 && (shares[number] > 10000 || shares[number] < 9900)) {
            year.Tell("schablone", "koscha", key, "Zeilen",
                      "die Anteile ergeben " + std::to_string(shares[number] / 100) + " statt 100 Prozent");
        }
    }
}

} // namespace books
