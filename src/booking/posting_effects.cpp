#include "src/booking/posting_effects.h"

#include "src/booking/tax_rates.h"
#include "src/frame/lifecycle.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/model/accounts.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

#include <cassert>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace vark {

using text::CopyText;
using text::SameText;

namespace {

bool IsEmptyTaxKey(uint8_t key) { return (key & ~SteuerVorsteuer) == 0; }

// Puts the row that is valid at `date` into context.TaxRow and its sequence number into `folge`.
bool FindTaxRow(ThreadContext &context, uint16_t code, const PackedDate &date, uint16_t &folge)
{
    StekeRecord &row = context.TaxRow;
    if (!GetGreaterEqual(context, &row, KeyOfShortNumber(code, 0), taxByCodeAndSequence)) return false;
    folge = row.Folge;
    // The search asks for (code, 0) again, whatever row it met first. Where that is the row that it met, this
    // would never end: there it goes on with the next older rate.
    bool isNewest = row.Code == code && row.Folge == 0;
    while (DateIsAfter(row.GueltigAb, date)) {
        if (folge == UINT16_MAX) return false;
        ++folge;
        const KeyBuffer key = KeyOfShortNumber(code, isNewest ? folge : 0);
        bool found = false;
        if (!GetEqual(context, &row, key, found, taxByCodeAndSequence) || !found) return false;
        isNewest = true;
    }
    return true;
}

// The Zahlungsziel of one account, 0 for none. False when the engine failed.
bool ReadZahlungsziel(ThreadContext &context, const AccountNumber &konto, uint8_t art, int32_t &number)
{
    number = 0;
    const AccountKind *const kind = FindKindOfBuchung(art);
    if (kind == nullptr || kind->OpenItems == TableUnused) return true;
    PersonalRecord record{};
    bool found = false;
    if (!GetEqual(context, &record, KeyOfText(konto, sizeof konto), found, kind->Table)) return false;
    if (found) number = record.Zahlungsziel;
    return true;
}

// The line of a row of the Kostenschablone; `isLast` takes up what rounding left of the net amount. False
// when a sum overflows.
bool MakeLine(const KoschazeRecord &row, const AmountText &netto, AmountText &total, bool isLast,
              KostenSeite seite, KobuRecord &line)
{
    line = {};
    CopyText(line.Kostenobjekt1, row.Kostenobjekt1);
    CopyText(line.Kostenobjekt2, row.Kostenobjekt2);
    CopyText(line.Text, row.Text);
    line.Flag = row.Flag;
    // An addition and not a bit that is set: a template's flag may hold it already.
    if (seite == KostenSeite::Haben) line.Flag = static_cast<uint8_t>(line.Flag + KobuHaben);
    if (SameText(row.Anteil, "100,00")) {
        CopyText(line.Betrag, netto);
    } else {
        RateText rate;
        CopyText(rate, sizeof rate, row.Anteil + 1, sizeof row.Anteil - 1);
        PercentOfAmount(line.Betrag, netto, rate);
    }
    if (!AccumulateAmount(total, line.Betrag)) return false;
    if (!isLast) return true;
    AmountText rest;
    SubtractAmounts(rest, netto, total);
    return AccumulateAmount(line.Betrag, rest);
}

int32_t YearNumber(const char (&year)[5])
{
    int32_t number = 0;
    std::from_chars(year, year + strnlen(year, sizeof year), number);
    return number;
}

// The cost lines of one Teilbuchung; of the numbers one is 0.
bool InsertLines(ThreadContext &context, const Buchung &buchung, KobuRecord *lines, int16_t count,
                 int32_t buchungsnummer, int32_t splitnummer, TableKeyCode kobu)
{
    assert(count == 0 || lines != nullptr);
    for (int16_t i = 0; i < count; ++i) {
        KobuRecord &line = lines[i];
        line.FinaleBuchung = 0;
        line.Buchungsnummer = buchungsnummer;
        line.Splitnummer = splitnummer;
        CopyText(line.Datum, buchung.Bat.ZweitesDatum);
        ToSortDate(line.Datum);
        if (!Insert(context, &line, kobu)) return false;
    }
    return true;
}

bool InsertRecords(ThreadContext &context, Buchung &buchung, int32_t number, TableKeyCode kobu)
{
    BatRecord &bat = buchung.Bat;
    assert(bat.Anzahl - 1 <= buchung.WeiterePlaetze);
    bat.Buchungsnummer = number;
    if (!Insert(context, &bat, TableBat)) return false;
    if (!InsertLines(context, buchung, buchung.Kostenzeilen, bat.Teil.Kostenzeilen, bat.Buchungsnummer, 0,
                     kobu)) {
        return false;
    }
    for (int32_t i = 1; i < bat.Anzahl; ++i) {
        Teilbuchung &teil = buchung.Weitere[i - 1];
        teil.Image.Buchungsnummer = bat.Buchungsnummer;
        teil.Image.Splitnummer = 0;
        if (!Insert(context, &teil.Image, TableSplit)) return false;
        if (!InsertLines(context, buchung, teil.Kostenzeilen, teil.Image.Kostenzeilen, 0,
                         teil.Image.Splitnummer, kobu)) {
            return false;
        }
    }
    return true;
}

} // namespace

void ChooseTaxKey(uint8_t sollKey, uint8_t habenKey, int16_t sollZuordnung, int16_t habenZuordnung,
                  uint8_t &key, uint16_t &seite)
{
    key = 0;
    seite = SteuerseiteKeine;
    if (IsEmptyTaxKey(sollKey)) {
        if (sollZuordnung == ZuordnungGuv || habenZuordnung == ZuordnungPassiva) return;
        key = habenKey;
        if (key != 0) seite = SteuerseiteHaben;
    } else if (IsEmptyTaxKey(habenKey)) {
        if (habenZuordnung == ZuordnungGuv || sollZuordnung == ZuordnungPassiva) return;
        key = sollKey;
        seite = SteuerseiteSoll;
    }
}

bool RateAt(ThreadContext &context, uint8_t key, const PackedDate &date, SplitRecord &image)
{
    image.Steuerfolge = 0;
    image.Steuerschluessel = key & SteuerCodeMaske;
    if (!OpenTable(context, TableSteke)) return false;
    uint16_t folge = 0;
    const bool found = FindTaxRow(context, image.Steuerschluessel, date, folge);
    CloseTable(context, TableSteke);
    if (!found) return false;
    const StekeRecord &row = context.TaxRow;
    CopyText(image.Steuersatz, row.Satz);
    image.Steuerfolge = folge;
    CopyText(image.Steuerkonto, (key & SteuerVorsteuer) != 0 ? row.Vorsteuerkonto : row.Umsatzsteuerkonto);
    return true;
}

int32_t DefaultZahlungsziel(ThreadContext &context, const AccountNumber &sollkonto,
                            const AccountNumber &habenkonto, uint8_t sollArt, uint8_t habenArt)
{
    int32_t number = 0;
    if (!ReadZahlungsziel(context, sollkonto, sollArt, number)) return 0;
    if (number == 0) ReadZahlungsziel(context, habenkonto, habenArt, number);
    return number;
}

int32_t CheckZahlungsziel(ThreadContext &context, int32_t number)
{
    if (number == 0) return 1;
    bool found = false;
    if (!Exists(context, KeyOfNumber(number), found, TableZahlziel)) return engineFailure;
    return found ? 1 : Report(context, 1419, zahlungszielUnknown, "Das Zahlungsziel ist", noPart);
}

int32_t CheckKostenschablone(ThreadContext &context, int32_t number, int32_t partIndex)
{
    if (number == 0) return 1;
    bool found = false;
    if (!Exists(context, KeyOfNumber(number), found, TableKoscha)) return engineFailure;
    return found ? 1 : Report(context, 1419, kostenschabloneRefused, "Die Kostenschablone ist", partIndex);
}

int32_t AssignKostenschablone(const ThreadContext &context, SakoRecord &soll, uint8_t sollArt,
                              SakoRecord &haben, uint8_t habenArt, int32_t number, int32_t partIndex)
{
    if (number == 0) return 1;
    const bool sollIsSachkonto = sollArt == BuchungSachkonto;
    const bool habenIsSachkonto = habenArt == BuchungSachkonto;
    if (!sollIsSachkonto && !habenIsSachkonto) return 1;
    const bool sollIsGuv = sollIsSachkonto && soll.Zuordnung == ZuordnungGuv;
    const bool habenIsGuv = habenIsSachkonto && haben.Zuordnung == ZuordnungGuv;
    if (!sollIsGuv && !habenIsGuv) return Report(context, 1459, kostenschabloneRefused, nullptr, partIndex);
    bool toSoll = sollIsGuv;
    if (sollIsSachkonto && habenIsSachkonto) {
        if (soll.Kostenschablone != 0) {
            toSoll = true;
        } else if (haben.Kostenschablone != 0) {
            toSoll = false;
        }
    }
    (toSoll ? soll : haben).Kostenschablone = number;
    return 1;
}

Expansion ExpandKostenschablone(ThreadContext &context, KostenSeite seite, int32_t number, Teilbuchung &teil)
{
    if (number == 0) return Expansion::Done;
    KoschaRecord head{};
    bool found = false;
    if (!GetEqual(context, &head, KeyOfNumber(number), found, TableKoscha)) return Expansion::Failed;
    if (!found) return Expansion::Missing;
    teil.Image.Kostenschablone = number;
    // The rows are read one after the other, for which their table has to stay open.
    if (!OpenTable(context, TableKoschaze)) return Expansion::Failed;
    const Expansion expanded = ExpandLines(context, teil, head.Zeilen, seite);
    CloseTable(context, TableKoschaze);
    return expanded;
}

Expansion ExpandLines(ThreadContext &context, Teilbuchung &teil, int32_t count, KostenSeite seite)
{
    assert(teil.Kostenzeilen == nullptr);
    const int32_t number = teil.Image.Kostenschablone;
    teil.Image.Kostenzeilen = 0;
    KoschazeRecord row{};
    bool found = false;
    if (!GetEqual(context, &row, KeyOfNumber(number), found, TableKoschaze)) return Expansion::Failed;
    if (!found) return Expansion::Missing;
    AmountText total;
    CopyText(total, zeroAmount);
    while (found && row.Nummer == number && teil.Image.Kostenzeilen < count) {
        const bool isLast = teil.Image.Kostenzeilen + 1 == count;
        KobuRecord line;
        if (!MakeLine(row, teil.Image.Netto, total, isLast, seite, line)) return Expansion::Failed;
        if (teil.Kostenzeilen == nullptr) {
            teil.Kostenzeilen =
                static_cast<KobuRecord *>(std::calloc(static_cast<size_t>(count), sizeof(KobuRecord)));
            if (teil.Kostenzeilen == nullptr) return Expansion::Failed;
        }
        teil.Kostenzeilen[teil.Image.Kostenzeilen] = line;
        ++teil.Image.Kostenzeilen;
        if (!GetNextF(context, &row, found, TableKoschaze)) return Expansion::Failed;
    }
    return Expansion::Done;
}

bool StoreTeilbuchung(Buchung &buchung, Teilbuchung &teil, int32_t index, int32_t expected)
{
    assert(index == buchung.Bat.Anzahl);
    const int32_t needed = index == 0 ? expected - 1 : index;
    if (needed > buchung.WeiterePlaetze) {
        void *grown = std::realloc(buchung.Weitere, static_cast<size_t>(needed) * sizeof(Teilbuchung));
        if (grown == nullptr) return false;
        buchung.Weitere = static_cast<Teilbuchung *>(grown);
        std::memset(buchung.Weitere + buchung.WeiterePlaetze, 0,
                    static_cast<size_t>(needed - buchung.WeiterePlaetze) * sizeof(Teilbuchung));
        buchung.WeiterePlaetze = needed;
    }
    if (index == 0) {
        buchung.Bat.Teil = teil.Image;
        buchung.Kostenzeilen = teil.Kostenzeilen;
    } else {
        buchung.Weitere[index - 1] = teil;
    }
    teil = {};
    return true;
}

bool WriteBuchung(ThreadContext &context, Buchung &buchung, int32_t number)
{
    if (!Transaction(context, TransactionAction::Begin)) return false;
    // Cost lines lie in a table that follows the working year, while the posting itself lies in the last
    // postable one; a posting stays in one directory.
    const bool inOtherYear = YearNumber(context.WorkYear) != YearNumber(context.MandantYear);
    const TableKeyCode kobu = inOtherYear ? SlotFree30 : TableKobu;
    bool written = !inOtherYear || OpenTable(context, TableKobu, context.MandantYear, SlotFree30);
    written = written && InsertRecords(context, buchung, number, kobu);
    if (inOtherYear) CloseTable(context, SlotFree30);
    if (!written) {
        // Also where the table did not open: a transaction left open would swallow the thread's next
        // postings.
        Transaction(context, TransactionAction::Abort);
        return false;
    }
    return Transaction(context, TransactionAction::End);
}

void FreeBuchung(Buchung &buchung)
{
    for (int32_t i = 0; i < buchung.WeiterePlaetze; ++i) {
        std::free(buchung.Weitere[i].Kostenzeilen);
    }
    std::free(buchung.Weitere);
    std::free(buchung.Kostenzeilen);
    buchung = {};
}

void FreeTeilbuchung(Teilbuchung &teil)
{
    std::free(teil.Kostenzeilen);
    teil = {};
}

} // namespace vark
