#include "tools/books/year_check.h"

#include <cstring>

namespace books {

using namespace tools;
using namespace vark;

void YearCheck::CheckCostObjects()
{
    std::set<std::string> names;
    Check<KoreRecord>(TableKore, [&](const KoreRecord &record) {
        CostState state{};
        state.Number = Konto(record.Nummer);
        for (int month = 0; month < 12; ++month) {
            state.Recorded[month] = Pfennig(record.Monat[month]);
        }
        if (record.Name[0] == 0) Tell("name", "kore", state.Number, "Name", "der Name fehlt");
        const std::string name = FieldText(record.Kuerzel);
        if (!name.empty() && !names.insert(name).second) {
            Tell("kuerzel", "kore", state.Number, "Kuerzel",
                 "das Kürzel „" + name + "“ hat schon eine andere Kostenstelle");
        }
        CostOf.emplace(Packed(record.Nummer), Costs.size());
        Costs.push_back(std::move(state));
    });
}

void YearCheck::CheckCostLines()
{
    if (!CheckTable(Out, LayoutOf(TableKobu), Directory, Of.FirstMonth, nullptr)) return;
    TableFile table(LayoutOf(TableKobu), Directory, OpenMode::ReadOnly);
    TableFile postings(LayoutOf(TableBube), Directory, OpenMode::ReadOnly);
    TableFile bat(LayoutOf(TableBat), LastDirectory, OpenMode::ReadOnly);
    TableFile splits(LayoutOf(TableSplit), LastDirectory, OpenMode::ReadOnly);
    constexpr int keyOfNumber = 5;      // of bube
    constexpr int keyOfBooking = 0;     // of bat
    constexpr int keyOfSplitNumber = 1; // of split

    // Lines of one posting follow each other in key 0. Together they are what the posting is without its tax.
    BubeRecord posting{};
    int32_t current = 0;
    int64_t spread = 0;
    bool onHaben = false;
    bool isKnown = false;
    const auto endPosting = [&]() {
        if (current == 0 || !isKnown) return;
        const int64_t net = onHaben ? Pfennig(posting.Haben) : Pfennig(posting.Soll);
        if (spread != net) {
            Tell("kosten", "kobu", std::to_string(current), "Betrag",
                 "verteilt sind " + Money(spread) + " von " + Money(net));
        }
    };
    KobuRecord line{};
    for (bool found = table.First(&line, 0); found; found = table.Next(&line, 0)) {
        const std::string key = std::to_string(line.FinaleBuchung);
        Day day = 0;
        const bool hasDay = DayOfSort(line.Datum, Of.FirstMonth, day);
        CheckReferences(TableKobu, line);
        const auto find = [this](const AccountNumber &number) {
            const auto object = CostOf.find(Packed(number));
            return object != CostOf.end() ? &Costs[object->second] : nullptr;
        };
        CostState *first = find(line.Kostenobjekt1);
        CostState *second = find(line.Kostenobjekt2);
        if (line.FinaleBuchung == 0) {
            BatRecord head{};
            SplitRecord part{};
            if (line.Splitnummer != 0) {
                if (!splits.Equal(&part, &line.Splitnummer, keyOfSplitNumber)) {
                    Tell("verweis", "kobu", key, "Splitnummer",
                         "die Teilbuchung " + std::to_string(line.Splitnummer) + " gibt es nicht");
                }
            } else if (!bat.Equal(&head, &line.Buchungsnummer, keyOfBooking)) {
                Tell("verweis", "kobu", key, "Buchungsnummer",
                     "die Buchung " + std::to_string(line.Buchungsnummer) + " gibt es nicht im Stapel");
            }
            continue;
        }
        if (line.FinaleBuchung != current) {
            endPosting();
            current = line.FinaleBuchung;
            spread = 0;
            onHaben = (line.Flag & KobuHaben) != 0;
            isKnown = postings.Equal(&posting, &current, keyOfNumber);
            if (!isKnown) Tell("verweis", "kobu", key, "FinaleBuchung", "die Buchung gibt es nicht");
        }
        const int64_t amount = Pfennig(line.Betrag);
        spread += amount;
        if (isKnown) {
            const AccountNumber &account = onHaben ? posting.Habenkonto : posting.Sollkonto;
            if (Packed(line.Konto) != Packed(account)) {
                Tell("kosten", "kobu", key, "Konto", Konto(line.Konto) + " statt " + Konto(account));
            }
            if (std::memcmp(line.Datum, posting.Schluessel.Folge, 6) != 0) {
                Tell("datum", "kobu", key, "Datum", "das ist nicht der Tag der Buchung");
            }
        }
        if (!hasDay) continue;
        if (!InYear(day)) {
            Tell("datum", "kobu", key, "Datum", DisplayDay(day) + " liegt nicht im Jahr");
            continue;
        }
        const int month = FiscalOf(day, Of.FirstMonth).Month - 1;
        const int64_t signedAmount = (line.Flag & KobuHaben) != 0 ? -amount : amount;
        if (first != nullptr) first->Posted[month] += signedAmount;
        if (second != nullptr) second->Posted[month] += signedAmount;
    }
    endPosting();
    for (const CostState &object : Costs) {
        for (int month = 0; month < 12; ++month) {
            if (object.Recorded[month] == object.Posted[month]) continue;
            Tell("kosten", "kore", object.Number, "Monat[" + std::to_string(month) + "]",
                 Money(object.Recorded[month]) + ", nach den Kostenbuchungen " + Money(object.Posted[month]));
        }
    }
}

void YearCheck::CheckTemplates()
{
    Check<KoschaRecord>(TableKoscha, [&](const KoschaRecord &record) {
        if (record.Name[0] == 0)
            Tell("name", "koscha", std::to_string(record.Nummer), "Name", "der Name fehlt");
    });
    std::map<int32_t, int> lines;
    std::map<int32_t, int64_t> shares;
    Check<KoschazeRecord>(TableKoschaze, [&](const KoschazeRecord &record) {
        const std::string key = std::to_string(record.Nummer);
        ++lines[record.Nummer];
        int64_t share = 0;
        for (const char *at = record.Anteil; *at != 0 && at < record.Anteil + sizeof record.Anteil; ++at) {
            if (*at >= '0' && *at <= '9') share = share * 10 + *at - '0';
        }
        shares[record.Nummer] += share;
    });
    for (const auto &[number, count] : TemplateLines) {
        const std::string key = std::to_string(number);
        if (lines[number] != count) {
            Tell("schablone", "koscha", key, "Zeilen",
                 std::to_string(count) + ", es gibt " + std::to_string(lines[number]));
        }
        // The last line takes the rest; what rounding leaves open is no fault.
        if (lines[number] > 0 && (shares[number] > 10000 || shares[number] < 9900)) {
            Tell("schablone", "koscha", key, "Zeilen",
                 "die Anteile ergeben " + std::to_string(shares[number] / 100) + " statt 100 Prozent");
        }
    }
}

} // namespace books
