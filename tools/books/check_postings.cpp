#include "tools/books/year_check.h"

#include <algorithm>
#include <cstring>

namespace books {

using namespace tools;
using namespace vark;

namespace {

// A year's table of an account has no more than this in a count.
constexpr int32_t countMax = 32767;

} // namespace

void YearCheck::Post(const AccountNumber &number, int month, int64_t soll, int64_t haben, bool counts)
{
    AccountState *account = Find(number);
    if (account == nullptr) return;
    ++account->PostedCount[month];
    if (!counts) return;
    account->Posted[month].Soll += soll;
    account->Posted[month].Haben += haben;
}

void YearCheck::CheckTax(const BubeRecord &record, const std::string &key)
{
    const int64_t soll = Pfennig(record.Soll);
    const int64_t haben = Pfennig(record.Haben);
    const int64_t tax = Pfennig(record.Steuer);
    const bool onSoll = (record.Steuerflags & BubeSteuerMinus) != 0;
    const bool onHaben = (record.Steuerflags & BubeSteuerPlus) != 0;
    if (IsEmpty(record.Steuerkonto)) {
        if (tax != 0) Tell("steuer", "bube", key, "Steuer", Money(tax) + " Steuer ohne Steuerkonto");
        if (soll != haben) {
            Tell("soll-haben", "bube", key, "Haben",
                 "Soll " + Money(soll) + " und Haben " + Money(haben) + " sind ungleich");
        }
        return;
    }
    if (onSoll == onHaben) {
        Tell("steuer", "bube", key, "Steuerflags", "die Seite der Steuer ist nicht bestimmt");
        return;
    }
    const int64_t sollWith = onSoll ? soll + tax : soll;
    const int64_t habenWith = onHaben ? haben + tax : haben;
    if (sollWith != habenWith) {
        Tell("soll-haben", "bube", key, onSoll ? "Haben" : "Soll",
             "mit Steuer ergibt Soll " + Money(sollWith) + " und Haben " + Money(habenWith));
    }
    if (Pfennig(record.Grundbetrag) != (onSoll ? soll : haben)) {
        Tell("steuer", "bube", key, "Grundbetrag",
             Money(Pfennig(record.Grundbetrag)) + " statt " + Money(onSoll ? soll : haben));
    }
    // The key must have a rate that names this account, whatever its date: an old invoice has its old rate.
    const auto rows = Rates.find(record.Steuerherkunft & SteuerCodeMaske);
    const bool isInput = (record.Steuerherkunft & SteuerVorsteuer) != 0;
    bool isKnown = false;
    if (rows != Rates.end()) {
        for (const Rate &rate : rows->second) {
            const uint64_t account = isInput ? rate.Vorsteuerkonto : rate.Umsatzsteuerkonto;
            const bool isFree = rows->first == SteuerSonstigerSatz;
            isKnown =
                isKnown || (account == Packed(record.Steuerkonto) &&
                            (isFree || rate.Percent == static_cast<int>(MagnitudeOf(record.Steuersatz))));
        }
    }
    if (!isKnown) {
        Tell("verweis", "bube", key, "Steuersatz",
             "zum Schlüssel " + std::to_string(record.Steuerherkunft) + " gibt es keinen Satz von " +
                 FieldText(record.Steuersatz) + " auf Konto " + Konto(record.Steuerkonto));
    }
}

void YearCheck::CheckSplitLine(const BubeRecord &record, const std::string &key, SplitState &split)
{
    constexpr uint16_t sides = BubeSplitSoll | BubeSplitHaben;
    const uint16_t side = record.Status & sides;
    const bool isHead = (record.Status & BubeSplitAnfang) != 0;
    if (split.Expected > 0 && (side == 0 || isHead)) {
        Tell("split", "bube", split.Head, "Anzahl", std::to_string(split.Expected) + " Teilbuchungen fehlen");
        split.Expected = 0;
    }
    if (side == 0) {
        if (record.Anzahl != 0)
            Tell("split", "bube", key, "Anzahl", "eine einfache Buchung hat keine Teilbuchungen");
        if (isHead || (record.Status & BubeGefaltet) != 0) {
            Tell("split", "bube", key, "Status", "eine Teilbuchung ohne Seite");
        }
        return;
    }
    if (side == sides) {
        Tell("split", "bube", key, "Status", "die gemeinsame Seite ist nicht bestimmt");
        return;
    }
    const uint64_t account = Packed(side == BubeSplitSoll ? record.Sollkonto : record.Habenkonto);
    const std::string day(record.Schluessel.Folge, 6);
    if (isHead) {
        if (record.Anzahl < 1) Tell("split", "bube", key, "Anzahl", "der Kopf nennt keine Teilbuchungen");
        split = {record.Anzahl, side, account, key, day};
        return;
    }
    if (split.Expected == 0) {
        Tell("split", "bube", key, "Status", "die Teilbuchung hat keinen Kopf");
        return;
    }
    --split.Expected;
    if (record.Anzahl != 0)
        Tell("split", "bube", key, "Anzahl", "nur der Kopf nennt die Zahl der Teilbuchungen");
    if (side != split.Side || account != split.MainAccount || day != split.Day) {
        Tell("split", "bube", key, side == BubeSplitSoll ? "Sollkonto" : "Habenkonto",
             "die Teilbuchung hat anderes Konto, andere Seite oder anderen Tag als ihr Kopf " + split.Head);
    }
}

void YearCheck::CheckPosting(const BubeRecord &record, SplitState &split)
{
    const std::string key = FieldText(record.Schluessel.Folge);
    Day day = 0;
    Day documentDay = 0;
    if (!DayOfSort(record.Schluessel.Folge, Of.FirstMonth, day)) return; // told as a fault of form
    if (!InYear(day))
        Tell("datum", "bube", key, "Schluessel.Folge", DisplayDay(day) + " liegt nicht im Jahr");
    const char *date = record.Datum[0] != 0 ? record.Datum : record.Schluessel.Belegdatum;
    if (DayOfPacked(date, Of.FirstMonth, documentDay) && documentDay != day) {
        Tell("datum", "bube", key, "Datum", DisplayDay(documentDay) + " ist nicht der Tag des Schlüssels");
    }
    Day entered = 0;
    if (DayOfSort(record.Buchungsdatum, Of.FirstMonth, entered) && !InYear(entered)) {
        Tell("datum", "bube", key, "Buchungsdatum", DisplayDay(entered) + " liegt nicht im Jahr");
    }
    if (record.Buchungsnummer <= 0) {
        Tell("nummer", "bube", key, "Buchungsnummer",
             std::to_string(record.Buchungsnummer) + " ist keine Nummer");
    }
    const int month = FiscalOf(day, Of.FirstMonth).Month - 1;
    CheckReferences(TableBube, record);
    CheckTax(record, key);
    CheckSplitLine(record, key, split);

    const bool counts = (record.Status & (BubeOhneNetto | BubeNichtImMonat)) == 0;
    Post(record.Sollkonto, month, Pfennig(record.Soll), 0, counts);
    Post(record.Habenkonto, month, 0, Pfennig(record.Haben), counts);
    if (IsEmpty(record.Steuerkonto)) return;
    const bool onHaben = (record.Steuerflags & BubeSteuerPlus) != 0;
    const int64_t tax = Pfennig(record.Steuer);
    Post(record.Steuerkonto, month, onHaben ? 0 : tax, onHaben ? tax : 0, counts);
}

void YearCheck::CheckPostings()
{
    if (!CheckTable(Out, LayoutOf(TableBube), Directory, Of.FirstMonth, nullptr)) return;
    // Splits show in the order of key 0 only.
    TableFile table(LayoutOf(TableBube), Directory, OpenMode::ReadOnly);
    BubeRecord record{};
    SplitState split;
    for (bool found = table.First(&record, 0); found; found = table.Next(&record, 0)) {
        CheckPosting(record, split);
    }
    if (split.Expected > 0) {
        Tell("split", "bube", split.Head, "Anzahl", std::to_string(split.Expected) + " Teilbuchungen fehlen");
    }
}

void YearCheck::CompareSums()
{
    for (const AccountState &account : Accounts) {
        for (int month = 0; month < 12; ++month) {
            const std::string field = "Umsaetze.Monat[" + std::to_string(month) + "]";
            const auto compare = [&](int64_t recorded, int64_t posted, const char *side) {
                if (recorded == posted) return;
                Tell("monat", KindName(account.Kind), account.Number, field + side,
                     Money(recorded) + ", nach den Buchungen " + Money(posted));
            };
            compare(account.Recorded[month].Soll, account.Posted[month].Soll, ".Soll");
            compare(account.Recorded[month].Haben, account.Posted[month].Haben, ".Haben");
            const int32_t posted = std::min(account.PostedCount[month], countMax);
            if (account.RecordedCount[month] != posted) {
                Tell("anzahl", KindName(account.Kind), account.Number,
                     "Umsaetze.Buchungszahl[" + std::to_string(month) + "]",
                     std::to_string(account.RecordedCount[month]) + ", gezählt sind " +
                         std::to_string(posted));
            }
        }
    }
}

} // namespace books
