#include "tools/books/check_batches.h"

#include "tools/books/check_reading.h"

#include <algorithm>
#include <cstring>

namespace books {

using namespace tools;
using namespace vark;

namespace {

void CheckPart(YearCheck &year, const SplitRecord &part, const std::string &table, const std::string &key,
               Day day)
{
    const auto check = [&](const AccountNumber &number, uint8_t kind, const char *field) {
        const AccountState *account = year.Find(number);
        if (account == nullptr) return; // told with the references
        const uint8_t expected = account->Kind == AccountKind::Sachkonto  ? BuchungSachkonto
                                 : account->Kind == AccountKind::Kreditor ? BuchungKreditor
                                                                          : BuchungDebitor;
        if (kind != expected) {
            year.Tell("kontoart", table, key, field,
                      "die Kontoart " + std::to_string(kind) + " ist nicht die des Kontos");
        }
    };
    const std::string prefix = table == "bat" ? "Teil." : "";
    check(part.Sollkonto, part.SollArt, (prefix + "Sollkonto").c_str());
    check(part.Habenkonto, part.HabenArt, (prefix + "Habenkonto").c_str());
    const int64_t gross = Pfennig(part.Brutto);
    const int64_t net = Pfennig(part.Netto);
    if ((gross < 0) != (net < 0) && net != 0 && gross != 0) {
        year.Tell("soll-haben", table, key, prefix + "Netto",
                  "Brutto und Netto haben verschiedene Vorzeichen");
    }
    if (IsEmpty(part.Steuerkonto) || !year.AreRead({TableSteke})) return;
    const auto rows = year.Rates.find(part.Steuerschluessel & SteuerCodeMaske);
    const bool isKnown =
        rows != year.Rates.end() &&
        std::any_of(rows->second.begin(), rows->second.end(), [&](const Rate &rate) {
            return rate.Sequence == part.Steuerfolge && (rate.Umsatzsteuerkonto == Packed(part.Steuerkonto) ||
                                                         rate.Vorsteuerkonto == Packed(part.Steuerkonto));
        });
    if (!isKnown) {
        year.Tell("verweis", table, key, prefix + "Steuerfolge",
                  "zu Schlüssel " + std::to_string(part.Steuerschluessel) + ", Folge " +
                      std::to_string(part.Steuerfolge) + " und Konto " + Konto(part.Steuerkonto) +
                      " steht kein Satz in steke, gebucht am " + DisplayDay(day));
    }
}

constexpr int keyOfSplitBooking = 0; // of split
constexpr int keyOfHeadCosts = 1;    // of kobu
constexpr int keyOfPartCosts = 2;    // of kobu

// How many cost lines name a number under a key.
int CountCosts(TableFile &costs, int32_t number, int key, int32_t KobuRecord::*field)
{
    int count = 0;
    KobuRecord line{};
    for (bool found = costs.Equal(&line, &number, key); found && line.*field == number;
         found = costs.Next(&line, key)) {
        ++count;
    }
    return count;
}

void CompareCosts(YearCheck &year, const std::string &table, const std::string &key, int stated, int counted)
{
    if (stated == counted) return;
    year.Tell("kosten", table, key, table == "bat" ? "Teil.Kostenzeilen" : "Kostenzeilen",
              std::to_string(stated) + ", es gibt " + std::to_string(counted));
}

// The day of a booking; 0 where it is none, which is told as a fault of form.
Day CheckDays(YearCheck &year, const BatRecord &head)
{
    const std::string key = std::to_string(head.Buchungsnummer);
    Day day = 0;
    if (DayOfPacked(head.Buchungsdatum, year.Of.FirstMonth, day)) {
        const std::string fiscal = std::to_string(FiscalOf(day, year.Of.FirstMonth).Year);
        const bool isPostable =
            fiscal == year.Of.UpperYear ||
            (!year.Of.LowerYear.empty() && fiscal >= year.Of.LowerYear && fiscal <= year.Of.UpperYear);
        if (!isPostable) {
            year.Tell("datum", "bat", key, "Buchungsdatum",
                      DisplayDay(day) + " liegt in keinem bebuchbaren Jahr");
        }
    }
    if (std::memcmp(head.Buchungsdatum, head.ZweitesDatum, sizeof head.Buchungsdatum) != 0) {
        year.Tell("datum", "bat", key, "ZweitesDatum", "die beiden Daten sind verschieden");
    }
    return day;
}

void CheckBooking(YearCheck &year, const BatRecord &head, TableFile &splits, TableFile &costs)
{
    const std::string key = std::to_string(head.Buchungsnummer);
    const Day day = CheckDays(year, head);
    CheckReferences(year, TableBat, head);
    CheckPart(year, head.Teil, "bat", key, day);
    CompareCosts(year, "bat", key, head.Teil.Kostenzeilen,
                 CountCosts(costs, head.Buchungsnummer, keyOfHeadCosts, &KobuRecord::Buchungsnummer));
    int parts = 1;
    SplitRecord part{};
    for (bool more = splits.Equal(&part, &head.Buchungsnummer, keyOfSplitBooking);
         more && part.Buchungsnummer == head.Buchungsnummer; more = splits.Next(&part, keyOfSplitBooking)) {
        ++parts;
        const std::string partKey =
            std::to_string(part.Buchungsnummer) + " " + std::to_string(part.Splitnummer);
        CheckReferences(year, TableSplit, part);
        CheckPart(year, part, "split", partKey, day);
        CompareCosts(year, "split", partKey, part.Kostenzeilen,
                     CountCosts(costs, part.Splitnummer, keyOfPartCosts, &KobuRecord::Splitnummer));
    }
    if (parts != head.Anzahl) {
        year.Tell("split", "bat", key, "Anzahl",
                  std::to_string(head.Anzahl) + ", es gibt " + std::to_string(parts));
    }
}

} // namespace

void CheckBatches(YearCheck &year)
{
    const bool areRead = CheckAlone(year, TableBat) & CheckAlone(year, TableSplit);
    if (!areRead || !year.AreRead({TableKobu})) return;
    TableFile bat(LayoutOf(TableBat), year.Directory, OpenMode::ReadOnly);
    TableFile splits(LayoutOf(TableSplit), year.Directory, OpenMode::ReadOnly);
    TableFile costs(LayoutOf(TableKobu), year.Directory, OpenMode::ReadOnly);
    BatRecord head{};
    for (bool found = bat.First(&head, 0); found; found = bat.Next(&head, 0)) {
        CheckBooking(year, head, splits, costs);
    }
    SplitRecord part{};
    for (bool found = splits.First(&part, 0); found; found = splits.Next(&part, 0)) {
        if (!bat.Equal(&head, &part.Buchungsnummer, 0)) {
            year.Tell("verweis", "split", std::to_string(part.Buchungsnummer), "Buchungsnummer",
                      "die Buchung gibt es nicht im Stapel");
        }
    }
}

} // namespace books
