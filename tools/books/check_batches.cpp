#include "tools/books/year_check.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>

namespace books {

using namespace tools;
using namespace vark;

void YearCheck::CheckPart(const SplitRecord &part, const std::string &table, const std::string &key, Day day)
{
    const auto check = [&](const AccountNumber &number, uint8_t kind, const char *field) {
        const AccountState *account = Find(number);
        if (account == nullptr) return; // told with the references
        const uint8_t expected = account->Kind == AccountKind::Sachkonto  ? BuchungSachkonto
                                 : account->Kind == AccountKind::Kreditor ? BuchungKreditor
                                                                          : BuchungDebitor;
        if (kind != expected) {
            Tell("kontoart", table, key, field,
                 "die Kontoart " + std::to_string(kind) + " ist nicht die des Kontos");
        }
    };
    const std::string prefix = table == "bat" ? "Teil." : "";
    check(part.Sollkonto, part.SollArt, (prefix + "Sollkonto").c_str());
    check(part.Habenkonto, part.HabenArt, (prefix + "Habenkonto").c_str());
    const int64_t gross = Pfennig(part.Brutto);
    const int64_t net = Pfennig(part.Netto);
    if ((gross < 0) != (net < 0) && net != 0 && gross != 0) {
        Tell("soll-haben", table, key, prefix + "Netto", "Brutto und Netto haben verschiedene Vorzeichen");
    }
    if (IsEmpty(part.Steuerkonto)) return;
    const auto rows = Rates.find(part.Steuerschluessel & SteuerCodeMaske);
    const bool isKnown =
        rows != Rates.end() && std::any_of(rows->second.begin(), rows->second.end(), [&](const Rate &rate) {
            return rate.Sequence == part.Steuerfolge && (rate.Umsatzsteuerkonto == Packed(part.Steuerkonto) ||
                                                         rate.Vorsteuerkonto == Packed(part.Steuerkonto));
        });
    if (!isKnown) {
        Tell("verweis", table, key, prefix + "Steuerfolge",
             "zu Schlüssel " + std::to_string(part.Steuerschluessel) + ", Folge " +
                 std::to_string(part.Steuerfolge) + " und Konto " + Konto(part.Steuerkonto) +
                 " steht kein Satz in steke, gebucht am " + DisplayDay(day));
    }
}

void YearCheck::CheckBatches()
{
    if (!CheckTable(Out, LayoutOf(TableBat), Directory, Of.FirstMonth, nullptr) ||
        !CheckTable(Out, LayoutOf(TableSplit), Directory, Of.FirstMonth, nullptr)) {
        return;
    }
    TableFile bat(LayoutOf(TableBat), Directory, OpenMode::ReadOnly);
    TableFile splits(LayoutOf(TableSplit), Directory, OpenMode::ReadOnly);
    TableFile costs(LayoutOf(TableKobu), Directory, OpenMode::ReadOnly);
    constexpr int keyOfBooking = 0;   // of split
    constexpr int keyOfHeadCosts = 1; // of kobu
    constexpr int keyOfPartCosts = 2; // of kobu
    const auto countCosts = [&](int32_t number, int key, int32_t KobuRecord::*field) {
        int count = 0;
        KobuRecord line{};
        for (bool found = costs.Equal(&line, &number, key); found && line.*field == number;
             found = costs.Next(&line, key)) {
            ++count;
        }
        return count;
    };
    const auto compareCosts = [&](const std::string &table, const std::string &key, int stated, int counted) {
        if (stated == counted) return;
        Tell("kosten", table, key, table == "bat" ? "Teil.Kostenzeilen" : "Kostenzeilen",
             std::to_string(stated) + ", es gibt " + std::to_string(counted));
    };

    BatRecord head{};
    for (bool found = bat.First(&head, 0); found; found = bat.Next(&head, 0)) {
        const std::string key = std::to_string(head.Buchungsnummer);
        Day day = 0;
        if (DayOfPacked(head.Buchungsdatum, Of.FirstMonth, day)) {
            const std::string year = std::to_string(FiscalOf(day, Of.FirstMonth).Year);
            const bool isPostable = year == Of.UpperYear ||
                                    (!Of.LowerYear.empty() && year >= Of.LowerYear && year <= Of.UpperYear);
            if (!isPostable)
                Tell("datum", "bat", key, "Buchungsdatum",
                     DisplayDay(day) + " liegt in keinem bebuchbaren Jahr");
        }
        if (std::memcmp(head.Buchungsdatum, head.ZweitesDatum, sizeof head.Buchungsdatum) != 0) {
            Tell("datum", "bat", key, "ZweitesDatum", "die beiden Daten sind verschieden");
        }
        CheckReferences(TableBat, head);
        CheckPart(head.Teil, "bat", key, day);
        compareCosts("bat", key, head.Teil.Kostenzeilen,
                     countCosts(head.Buchungsnummer, keyOfHeadCosts, &KobuRecord::Buchungsnummer));
        int parts = 1;
        SplitRecord part{};
        for (bool more = splits.Equal(&part, &head.Buchungsnummer, keyOfBooking);
             more && part.Buchungsnummer == head.Buchungsnummer; more = splits.Next(&part, keyOfBooking)) {
            ++parts;
            const std::string partKey =
                std::to_string(part.Buchungsnummer) + " " + std::to_string(part.Splitnummer);
            CheckReferences(TableSplit, part);
            CheckPart(part, "split", partKey, day);
            compareCosts("split", partKey, part.Kostenzeilen,
                         countCosts(part.Splitnummer, keyOfPartCosts, &KobuRecord::Splitnummer));
        }
        if (parts != head.Anzahl) {
            Tell("split", "bat", key, "Anzahl",
                 std::to_string(head.Anzahl) + ", es gibt " + std::to_string(parts));
        }
    }
    SplitRecord part{};
    for (bool found = splits.First(&part, 0); found; found = splits.Next(&part, 0)) {
        if (!bat.Equal(&head, &part.Buchungsnummer, 0)) {
            Tell("verweis", "split", std::to_string(part.Buchungsnummer), "Buchungsnummer",
                 "die Buchung gibt es nicht im Stapel");
        }
    }
}

void YearCheck::CheckOpenItems(TableId id, AccountKind kind)
{
    const std::string &stem = LayoutOf(id).Stem;
    std::unordered_map<uint64_t, int64_t> open;
    Check<OpenItemRecord>(id, [&](const OpenItemRecord &record) {
        const std::string key = std::to_string(record.Nummer);
        open[Packed(record.Konto)] += Pfennig(record.Betrag1);
        Day first = 0;
        Day due = 0;
        if (DayOfSort(record.Datum1, Of.FirstMonth, first) && DayOfSort(record.Termin, Of.FirstMonth, due) &&
            due < first) {
            Tell("datum", stem, key, "Termin", DisplayDay(due) + " liegt vor dem Belegdatum");
        }
    });
    for (const AccountState &account : Accounts) {
        if (account.Kind != kind) continue;
        const int64_t balance = kind == AccountKind::Debitor ? account.Balance() : -account.Balance();
        const auto items = open.find(account.Key);
        const int64_t sum = items != open.end() ? items->second : 0;
        if (sum != balance) {
            Tell("offene-posten", stem, account.Number, "Betrag1",
                 "die Posten ergeben " + Money(sum) + ", der Saldo ist " + Money(balance));
        }
    }
}

} // namespace books
