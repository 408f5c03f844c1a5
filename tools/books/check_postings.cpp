#include "tools/books/check_postings.h"

#include "src/values/amounts.h"
#include "tools/books/check_reading.h"
#include "tools/common/texts.h"

#include <algorithm>
#include <cstring>

namespace books {

using namespace tools;
using namespace vark;

namespace {

// A year's table of an account has no more than this in a count.
constexpr int32_t countMax = 32767;

// What a posting of a split needs of the lines before it.
struct SplitState {
    int Expected = 0; // lines that are still to come
    uint16_t Side = 0;
    uint64_t MainAccount = 0;
    std::string Head;
    std::string Day;
};

void Post(YearCheck &year, const AccountNumber &number, int month, int64_t soll, int64_t haben, bool counts)
{
    AccountState *account = year.Find(number);
    if (account == nullptr) return;
    ++account->PostedCount[month];
    if (!counts) return;
    account->Posted[month].Soll += soll;
    account->Posted[month].Haben += haben;
}

void CheckTax(YearCheck &year, const BubeRecord &record, const std::string &key)
{
    const int64_t soll = Pfennig(record.Soll);
    const int64_t haben = Pfennig(record.Haben);
    const int64_t tax = Pfennig(record.Steuer);
    const bool onSoll = (record.Steuerflags & BubeSteuerMinus) != 0;
    const bool onHaben = (record.Steuerflags & BubeSteuerPlus) != 0;
    if (IsEmpty(record.Steuerkonto)) {
        if (tax != 0) year.Tell("steuer", "bube", key, "Steuer", Money(tax) + " Steuer ohne Steuerkonto");
        if (soll != haben) {
            year.Tell("soll-haben", "bube", key, "Haben",
                      "Soll " + Money(soll) + " und Haben " + Money(haben) + " sind ungleich");
        }
        return;
    }
    if (onSoll == onHaben) {
        year.Tell("steuer", "bube", key, "Steuerflags", "die Seite der Steuer ist nicht bestimmt");
        return;
    }
    const int64_t sollWith = onSoll ? soll + tax : soll;
    const int64_t habenWith = onHaben ? haben + tax : haben;
    if (sollWith != habenWith) {
        year.Tell("soll-haben", "bube", key, onSoll ? "Haben" : "Soll",
                  "mit Steuer ergibt Soll " + Money(sollWith) + " und Haben " + Money(habenWith));
    }
    if (Pfennig(record.Grundbetrag) != (onSoll ? soll : haben)) {
        year.Tell("steuer", "bube", key, "Grundbetrag",
                  Money(Pfennig(record.Grundbetrag)) + " statt " + Money(onSoll ? soll : haben));
    }
    if (!year.AreRead({TableSteke})) return;
    // The key must have a rate that names this account, whatever its date: an old invoice has its old rate.
    const auto rows = year.Rates.find(record.Steuerherkunft & SteuerCodeMaske);
    const bool isInput = (record.Steuerherkunft & SteuerVorsteuer) != 0;
    bool isKnown = false;
    if (rows != year.Rates.end()) {
        for (const Rate &rate : rows->second) {
            const uint64_t account = isInput ? rate.Vorsteuerkonto : rate.Umsatzsteuerkonto;
            const bool isFree = rows->first == SteuerSonstigerSatz;
            isKnown =
                isKnown || (account == Packed(record.Steuerkonto) &&
                            (isFree || rate.Percent == static_cast<int>(MagnitudeOf(record.Steuersatz))));
        }
    }
    if (!isKnown) {
        year.Tell("verweis", "bube", key, "Steuersatz",
                  "zum Schlüssel " + std::to_string(record.Steuerherkunft) + " gibt es keinen Satz von " +
                      FieldText(record.Steuersatz) + " auf Konto " + Konto(record.Steuerkonto));
    }
}

void CheckSplitLine(YearCheck &year, const BubeRecord &record, const std::string &key, SplitState &split)
{
    constexpr uint16_t sides = BubeSplitSoll | BubeSplitHaben;
    const uint16_t side = record.Status & sides;
    const bool isHead = (record.Status & BubeSplitAnfang) != 0;
    if (split.Expected > 0 && (side == 0 || isHead)) {
        year.Tell("split", "bube", split.Head, "Anzahl",
                  std::to_string(split.Expected) + " Teilbuchungen fehlen");
        split.Expected = 0;
    }
    if (side == 0) {
        if (record.Anzahl != 0)
            year.Tell("split", "bube", key, "Anzahl", "eine einfache Buchung hat keine Teilbuchungen");
        if (isHead || (record.Status & BubeGefaltet) != 0) {
            year.Tell("split", "bube", key, "Status", "eine Teilbuchung ohne Seite");
        }
        return;
    }
    if (side == sides) {
        year.Tell("split", "bube", key, "Status", "die gemeinsame Seite ist nicht bestimmt");
        return;
    }
    const uint64_t account = Packed(side == BubeSplitSoll ? record.Sollkonto : record.Habenkonto);
    const std::string day(record.Schluessel.Folge, 6);
    if (isHead) {
        if (record.Anzahl < 1)
            year.Tell("split", "bube", key, "Anzahl", "der Kopf nennt keine Teilbuchungen");
        split = {record.Anzahl, side, account, key, day};
        return;
    }
    if (split.Expected == 0) {
        year.Tell("split", "bube", key, "Status", "die Teilbuchung hat keinen Kopf");
        return;
    }
    --split.Expected;
    if (record.Anzahl != 0)
        year.Tell("split", "bube", key, "Anzahl", "nur der Kopf nennt die Zahl der Teilbuchungen");
    if (side != split.Side || account != split.MainAccount || day != split.Day) {
        year.Tell("split", "bube", key, side == BubeSplitSoll ? "Sollkonto" : "Habenkonto",
                  "die Teilbuchung hat anderes Konto, andere Seite oder anderen Tag als ihr Kopf " +
                      split.Head);
    }
}

void CheckPosting(YearCheck &year, const BubeRecord &record, SplitState &split)
{
    const std::string key = FieldText(record.Schluessel.Folge);
    Day day = 0;
    Day documentDay = 0;
    if (!DayOfSort(record.Schluessel.Folge, year.Of.FirstMonth, day)) return; // told as a fault of form
    if (!year.InYear(day))
        year.Tell("datum", "bube", key, "Schluessel.Folge", DisplayDay(day) + " liegt nicht im Jahr");
    const char *date = record.Datum[0] != 0 ? record.Datum : record.Schluessel.Belegdatum;
    if (DayOfPacked(date, year.Of.FirstMonth, documentDay) && documentDay != day) {
        year.Tell("datum", "bube", key, "Datum",
                  DisplayDay(documentDay) + " ist nicht der Tag des Schlüssels");
    }
    Day entered = 0;
    if (DayOfSort(record.Buchungsdatum, year.Of.FirstMonth, entered) && !year.InYear(entered)) {
        year.Tell("datum", "bube", key, "Buchungsdatum", DisplayDay(entered) + " liegt nicht im Jahr");
    }
    if (record.Buchungsnummer <= 0) {
        year.Tell("nummer", "bube", key, "Buchungsnummer",
                  std::to_string(record.Buchungsnummer) + " ist keine Nummer");
    }
    const int month = FiscalOf(day, year.Of.FirstMonth).Month - 1;
    CheckReferences(year, TableBube, record);
    CheckTax(year, record, key);
    CheckSplitLine(year, record, key, split);

    const bool counts = (record.Status & (BubeOhneNetto | BubeNichtImMonat)) == 0;
    Post(year, record.Sollkonto, month, Pfennig(record.Soll), 0, counts);
    Post(year, record.Habenkonto, month, 0, Pfennig(record.Haben), counts);
    if (IsEmpty(record.Steuerkonto)) return;
    const bool onHaben = (record.Steuerflags & BubeSteuerPlus) != 0;
    const int64_t tax = Pfennig(record.Steuer);
    Post(year, record.Steuerkonto, month, onHaben ? 0 : tax, onHaben ? tax : 0, counts);
}

} // namespace

void CheckPostings(YearCheck &year)
{
    if (!CheckAlone(year, TableBube)) return;
    // Splits show in the order of key 0 only.
    TableFile table(LayoutOf(TableBube), year.Directory, OpenMode::ReadOnly);
    BubeRecord record{};
    SplitState split;
    for (bool found = table.First(&record, 0); found; found = table.Next(&record, 0)) {
        CheckPosting(year, record, split);
    }
    if (split.Expected > 0) {
        year.Tell("split", "bube", split.Head, "Anzahl",
                  std::to_string(split.Expected) + " Teilbuchungen fehlen");
    }
}

void CompareSums(YearCheck &year)
{
    if (!year.AreRead({TableBube, TableSako, TableDebi, TableKred})) return;
    for (const AccountState &account : year.Accounts) {
        for (int month = 0; month < 12; ++month) {
            const std::string field = "Umsaetze.Monat[" + std::to_string(month) + "]";
            const auto compare = [&](int64_t recorded, int64_t posted, const char *side) {
                if (recorded == posted) return;
                year.Tell("monat", KindName(account.Kind), account.Number, field + side,
                          Money(recorded) + ", nach den Buchungen " + Money(posted));
            };
            compare(account.Recorded[month].Soll, account.Posted[month].Soll, ".Soll");
            compare(account.Recorded[month].Haben, account.Posted[month].Haben, ".Haben");
            const int32_t posted = std::min(account.PostedCount[month], countMax);
            if (account.RecordedCount[month] != posted) {
                year.Tell("anzahl", KindName(account.Kind), account.Number,
                          "Umsaetze.Buchungszahl[" + std::to_string(month) + "]",
                          std::to_string(account.RecordedCount[month]) + ", gezählt sind " +
                              std::to_string(posted));
            }
        }
    }
}

} // namespace books
