#include "src/booking/teilbuchung.h"

#include "src/booking/account_queries.h"
#include "src/booking/tax_rates.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/model/accounts.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

#include <charconv>
#include <cstring>

namespace vark {

using text::CopyText;
using text::SameText;

namespace {

constexpr uint8_t classesWithFixedRate = SteuerRegelsatz | SteuerErmaessigt | SteuerNullsatz;

constexpr TableId postingTables[] = {TableKred,  TableDebi,  TableSako, TableBat,
                                     TableSplit, TableSteke, TableKobu};

// One account of a Teilbuchung: its record if it is a Sachkonto, and whether it is what the caller says.
int32_t CheckAccount(ThreadContext &context, const AccountNumber &konto, int32_t art, SakoRecord &record,
                     bool &hasUstId, int32_t code, const char *word, int32_t partIndex)
{
    const int32_t kind = FindAccount(context, konto, record, hasUstId);
    if (kind == 0) return engineFailure;
    if (kind == KontoartKeine || kind != art) return Report(context, 1409, code, word, partIndex);
    return 1;
}

bool WantsTax(const TeilbuchungEingabe &eingabe)
{
    if (!IsZeroAmount(eingabe.Steuerbetrag)) return true;
    return eingabe.Steuersatz[0] != 0 && !SameText(eingabe.Steuersatz, zeroRate);
}

int32_t RateOrFailure(ThreadContext &context, uint8_t key, const PackedDate &date, SplitRecord &image)
{
    return RateAt(context, key, date, image) ? 1 : engineFailure;
}

// Class 2 or 4, whose rate may be the one in force or the one before it; with any other the rate is free.
int32_t SettleKnownRate(ThreadContext &context, TeilbuchungWork &work, uint8_t key, const PackedDate &date)
{
    SplitRecord &image = work.Teil.Image;
    const RateText &given = work.Eingabe.Steuersatz;
    if (!RateAt(context, key, date, image)) return engineFailure;
    if (given[0] == 0 || SameText(given, image.Steuersatz)) return 1;
    StekeRecord &older = context.TaxRow;
    const auto folge = static_cast<uint16_t>(image.Steuerfolge + 1);
    bool found = false;
    const KeyBuffer next = KeyOfShortNumber(image.Steuerschluessel, folge);
    if (!GetEqual(context, &older, next, found, taxByCodeAndSequence)) return engineFailure;
    if (!found || !SameText(given, older.Satz)) {
        work.Class = SteuerSonstigerSatz;
        return 1;
    }
    image.Steuerschluessel = older.Code | aeltererSatz;
    image.Steuerfolge = older.Folge;
    CopyText(image.Steuersatz, older.Satz);
    CopyText(image.Steuerkonto,
             (key & SteuerVorsteuer) != 0 ? older.Vorsteuerkonto : older.Umsatzsteuerkonto);
    work.Class = static_cast<uint8_t>(image.Steuerschluessel);
    return 1;
}

// A free rate that happens to be the regular or the reduced one is taxed by that key.
void MatchFreeRate(ThreadContext &context, TeilbuchungWork &work, uint8_t key, const PackedDate &date)
{
    for (const uint8_t attempt : {SteuerRegelsatz, SteuerErmaessigt}) {
        const auto tried = static_cast<uint8_t>((key & SteuerVorsteuer) + attempt);
        if (!RateAt(context, tried, date, work.Teil.Image)) continue;
        if (!SameText(work.Teil.Image.Steuersatz, work.Eingabe.Steuersatz)) continue;
        work.Class = attempt;
        return;
    }
}

// Trade inside the Community: free of tax when the partner shows a USt-IdNr.
int32_t SettleEgRate(ThreadContext &context, TeilbuchungWork &work, uint8_t key, const PackedDate &date)
{
    if (work.HasUstId) {
        work.Class = 0;
    } else if (!RateAt(context, key, date, work.Teil.Image)) {
        return engineFailure;
    }
    if (work.Eingabe.Steuersatz[0] != 0) CopyText(work.Teil.Image.Steuersatz, work.Eingabe.Steuersatz);
    return 1;
}

// The tax by the class of the key. A class for which nothing is to be done keeps the caller's rate.
int32_t SettleByClass(ThreadContext &context, TeilbuchungWork &work, uint8_t key, const PackedDate &date,
                      bool hasTax, int32_t partIndex)
{
    if (work.Class == SteuerNullsatz && hasTax) work.Class = SteuerSonstigerSatz;
    switch (work.Class) {
    case 0:
        if (!hasTax) return 1;
        return Report(context, 1411,
                      work.Eingabe.Steuerbetrag[0] != 0 ? steuerbetragRefused : steuersatzRefused, nullptr,
                      partIndex);
    case SteuerNullsatz: return RateOrFailure(context, key, date, work.Teil.Image);
    case SteuerSonstigerSatz: MatchFreeRate(context, work, key, date); return 1;
    case SteuerRegelsatz:
    case SteuerErmaessigt: return SettleKnownRate(context, work, key, date);
    case SteuerEg: return context.VatIdPresent != 0 ? SettleEgRate(context, work, key, date) : 1;
    default: return 1;
    }
}

// No rate of the books fits: it is the caller's, under the key for other rates.
int32_t SettleFreeRate(ThreadContext &context, TeilbuchungWork &work, uint8_t key, const PackedDate &date,
                       bool hasTax, int32_t partIndex)
{
    if (hasTax && work.Eingabe.Steuersatz[0] == 0) {
        return Report(context, 1410, steuerbetragRefused, "Steuerbetrag", partIndex);
    }
    const auto freeKey = static_cast<uint8_t>((key & SteuerVorsteuer) + SteuerSonstigerSatz);
    SplitRecord &image = work.Teil.Image;
    if (!RateAt(context, freeKey, date, image)) return engineFailure;
    if (work.IsFixedRate && (work.KeyClass & classesWithFixedRate) != 0) {
        CopyText(image.Steuersatz, zeroRate);
    } else {
        CopyText(image.Steuersatz, work.Eingabe.Steuersatz);
    }
    return 1;
}

} // namespace

uint8_t BuchungskontoartOf(int32_t kontoart)
{
    const AccountKind *const kind = FindKind(kontoart);
    return kind != nullptr && kind->Buchungsart != 0 ? kind->Buchungsart : BuchungKreditor;
}

bool OpenPostingTables(ThreadContext &context)
{
    for (size_t i = 0; i < sizeof postingTables; ++i) {
        if (OpenTable(context, postingTables[i])) continue;
        while (i-- > 0) {
            CloseTable(context, postingTables[i]);
        }
        return false;
    }
    return true;
}

void ClosePostingTables(ThreadContext &context)
{
    for (const TableId table : postingTables) {
        CloseTable(context, table);
    }
}

bool CalendarDigits(ThreadContext &context, const char *date, char (&out)[7])
{
    constexpr size_t longest = 19;
    char text[longest + 5];
    CopyText(text, sizeof text, date, longest + 1);
    if (std::strlen(text) > longest) return false;
    // A thread without a Mandant has no calendar yet; the way into the fiscal calendar and back gives the
    // same digits in every one, and a date without a year means this year on the first call, too.
    if (context.FirstFiscalMonth == 0) context.FirstFiscalMonth = 1;
    if (context.TodayShort[0] == 0) RefreshToday(context);
    if (ParseDateText(context, text, sizeof text, false) != DateGood) return false;
    PackedDate packed;
    CopyText(packed, text);
    DateText shown; // TT.MM.JJ
    FormatDate(packed, shown, false, context.FirstFiscalMonth);
    const char digits[7] = {packed[0], packed[1], shown[3], shown[4], shown[6], shown[7], 0};
    CopyText(out, digits);
    return true;
}

int32_t CheckPostingHead(ThreadContext &context, int32_t stapel, PackedDate &date)
{
    bool found = false;
    if (!Exists(context, KeyOfNumber(stapel), found, TableStapel)) return engineFailure;
    // The key of numbers that the engine gives out counts by its absolute value: -16 would find Stapel 16.
    if (!found || stapel < 0) return Report(context, 1408, stapelUnknown, "Stapel", noPart);
    if (ParseDateText(context, date, sizeof date, false) != DateGood) {
        return Report(context, 1412, dateRefused, nullptr, noPart);
    }
    const int year = PostableYear(context, FiscalYearOf(date));
    if (year == 0) return Report(context, 1412, dateRefused, nullptr, noPart);
    char yearText[5] = {};
    std::to_chars(yearText, yearText + sizeof yearText - 1, year);
    return SelectYear(context, yearText) ? 1 : engineFailure;
}

int32_t CheckAccountsAndAmounts(ThreadContext &context, TeilbuchungWork &work, int32_t partIndex)
{
    TeilbuchungEingabe &eingabe = work.Eingabe;
    RightJustify(eingabe.Sollkonto, accountDigits);
    RightJustify(eingabe.Habenkonto, accountDigits);
    if (SameText(eingabe.Sollkonto, eingabe.Habenkonto)) {
        return Report(context, 1425, sameAccount, nullptr, partIndex);
    }
    bool sollHasUstId = false;
    bool habenHasUstId = false;
    int32_t result = CheckAccount(context, eingabe.Sollkonto, eingabe.SollArt, work.Soll, sollHasUstId,
                                  sollkontoRefused, "Sollk", partIndex);
    if (result != 1) return result;
    result = CheckAccount(context, eingabe.Habenkonto, eingabe.HabenArt, work.Haben, habenHasUstId,
                          habenkontoRefused, "Habenk", partIndex);
    if (result != 1) return result;
    work.HasUstId = sollHasUstId || habenHasUstId;
    if (!NormalizeDigits(eingabe.Brutto, sizeof eingabe.Brutto, 9, 2, false, true)) {
        return Report(context, 1410, bruttoRefused, "Bruttobetrag", partIndex);
    }
    if (eingabe.Steuersatz[0] != 0 &&
        !NormalizeDigits(eingabe.Steuersatz, sizeof eingabe.Steuersatz, 2, 2, false, false)) {
        return Report(context, 1410, steuersatzRefused, "Steuersatz", partIndex);
    }
    if (eingabe.Steuerbetrag[0] != 0 &&
        !NormalizeDigits(eingabe.Steuerbetrag, sizeof eingabe.Steuerbetrag, 9, 2, false, true)) {
        return Report(context, 1410, steuerbetragRefused, "Steuerbetrag", partIndex);
    }
    return 1;
}

int32_t SettleTax(ThreadContext &context, TeilbuchungWork &work, const PackedDate &date, int32_t partIndex)
{
    const TeilbuchungEingabe &eingabe = work.Eingabe;
    SplitRecord &image = work.Teil.Image;
    image = {};
    CopyText(image.Steuersatz, eingabe.Steuersatz);
    const bool hasTax = WantsTax(eingabe);

    // The record of a personal account is zero and so has neither key nor Zuordnung.
    uint8_t key = 0;
    uint16_t seite = SteuerseiteKeine;
    ChooseTaxKey(work.Soll.Steuerflags, work.Haben.Steuerflags, work.Soll.Zuordnung, work.Haben.Zuordnung,
                 key, seite);
    image.Steuerseite = seite;
    work.IsFixedRate = (seite == SteuerseiteSoll && work.Soll.FesterSatz != 0) ||
                       (seite == SteuerseiteHaben && work.Haben.FesterSatz != 0);
    work.KeyClass = key & static_cast<uint8_t>(~SteuerVorsteuer);
    work.Class = work.KeyClass;
    int32_t result = SettleByClass(context, work, key, date, hasTax, partIndex);
    if (result != 1) return result;
    if (work.Class == SteuerSonstigerSatz) {
        result = SettleFreeRate(context, work, key, date, hasTax, partIndex);
        if (result != 1) return result;
    }
    CopyText(image.Brutto, eingabe.Brutto);
    CopyText(image.Netto, eingabe.Brutto);
    return 1;
}

int32_t SettleNet(const ThreadContext &context, TeilbuchungWork &work, int32_t partIndex)
{
    const TeilbuchungEingabe &eingabe = work.Eingabe;
    SplitRecord &image = work.Teil.Image;
    if (eingabe.Steuersatz[0] != 0 && work.IsFixedRate && (work.KeyClass & classesWithFixedRate) != 0 &&
        !SameText(eingabe.Steuersatz, image.Steuersatz)) {
        return Report(context, 1435, steuersatzRefused, nullptr, partIndex);
    }
    if (image.Steuersatz[0] == 0 || SameText(image.Steuersatz, zeroRate)) {
        std::memset(image.Steuerkonto, 0, sizeof image.Steuerkonto);
    }
    if (eingabe.Steuerbetrag[0] != 0) {
        SubtractAmounts(image.Netto, image.Brutto, eingabe.Steuerbetrag);
        if (image.Netto[amountMark] != image.Brutto[amountMark]) {
            return Report(context, 1410, steuerbetragRefused, "Steuerbetrag", partIndex);
        }
    } else if (work.Class != 0 && work.Class != SteuerNullsatz) {
        // Where no net amount can be worked out it is the gross one, which is what stands there then.
        NetFromGross(image.Netto, image.Brutto, image.Steuersatz);
    }
    return 1;
}

void FillImage(TeilbuchungWork &work)
{
    const TeilbuchungEingabe &eingabe = work.Eingabe;
    SplitRecord &image = work.Teil.Image;
    CopyText(image.Sollkonto, eingabe.Sollkonto);
    CopyText(image.Habenkonto, eingabe.Habenkonto);
    CopyText(image.Text, eingabe.Text);
    image.SollArt = BuchungskontoartOf(eingabe.SollArt);
    image.HabenArt = BuchungskontoartOf(eingabe.HabenArt);
}

bool HasKostenschablone(const SakoRecord &sako) { return sako.Kostenschablone != 0 || sako.MitKosten != 0; }

int32_t ExpandCosts(ThreadContext &context, TeilbuchungWork &work, KostenSeite seite, int32_t partIndex)
{
    const SakoRecord &sako = seite == KostenSeite::Soll ? work.Soll : work.Haben;
    const Expansion expanded = ExpandKostenschablone(context, seite, sako.Kostenschablone, work.Teil);
    if (expanded == Expansion::Done) return 1;
    if (context.CostsRequired != 0) return Report(context, 1445, costsMissing, nullptr, partIndex);
    // A posting with some of its cost lines would be half a posting.
    return expanded == Expansion::Missing ? 1 : engineFailure;
}

int32_t RequireCosts(const ThreadContext &context, const TeilbuchungWork &work, int32_t partIndex)
{
    const bool touchesGuv = work.Soll.Zuordnung == ZuordnungGuv || work.Haben.Zuordnung == ZuordnungGuv;
    if (context.CostsRequired == 0 || !touchesGuv) return 1;
    return Report(context, 1445, costsMissing, nullptr, partIndex);
}

} // namespace vark
