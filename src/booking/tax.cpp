#include "src/booking/tax.h"

#include "src/booking/tax_rates.h"
#include "src/frame/beliefs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/values/amounts.h"
#include "text/fixed_text.h"

#include <cstring>
#include <initializer_list>

namespace vark {

using text::CopyText;
using text::SameText;

namespace {

constexpr uint8_t classesWithFixedRate = SteuerRegelsatz | SteuerErmaessigt | SteuerNullsatz;

bool IsEmptyTaxKey(uint8_t key) { return (key & ~SteuerVorsteuer) == 0; }

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
    Holds(work.Class == SteuerRegelsatz || work.Class == SteuerErmaessigt);
    Holds(given[0] == 0 || IsWholeRate(given));
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
    Holds(work.Class == SteuerSonstigerSatz);
    Holds(work.Eingabe.Steuersatz[0] == 0 || IsWholeRate(work.Eingabe.Steuersatz));
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
    Holds(work.Class == SteuerEg);
    Holds(context.VatIdPresent != 0);
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
    Holds((key & ~SteuerVorsteuer) == work.KeyClass);
    Holds(work.Class == work.KeyClass);
    if (work.Class == SteuerNullsatz && hasTax) work.Class = SteuerSonstigerSatz;
    switch (work.Class) {
    case 0:
        if (!hasTax) return 1;
        return Report(context, Message::SteuerUnzulaessig,
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
    Holds(work.Class == SteuerSonstigerSatz);
    if (hasTax && work.Eingabe.Steuersatz[0] == 0) {
        return Report(context, Message::AngabeUnzulaessig, steuerbetragRefused, "Steuerbetrag", partIndex);
    }
    const auto freeKey = static_cast<uint8_t>((key & SteuerVorsteuer) + SteuerSonstigerSatz);
    SplitRecord &image = work.Teil.Image;
    if (!RateAt(context, freeKey, date, image)) return engineFailure;
    Holds((image.Steuerschluessel & SteuerSonstigerSatz) != 0);
    if (work.IsFixedRate && (work.KeyClass & classesWithFixedRate) != 0) {
        CopyText(image.Steuersatz, zeroRate);
    } else {
        CopyText(image.Steuersatz, work.Eingabe.Steuersatz);
    }
    return 1;
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
    Holds((key == 0) == (seite == SteuerseiteKeine));
    Holds(key == 0 || key == (seite == SteuerseiteSoll ? sollKey : habenKey));
}

bool RateAt(ThreadContext &context, uint8_t key, const PackedDate &date, SplitRecord &image)
{
    StekeRecord &row = context.TaxRow;
    uint16_t folge = 0;
    bool found = false;
    image.Steuerfolge = 0;
    image.Steuerschluessel = key & SteuerCodeMaske;
    Holds(date[0] != 0);
    Holds(image.Steuerschluessel <= SteuerCodeMaske);
    if (!FindPostingRate(context, image.Steuerschluessel, date, row, folge, found) || !found) return false;
    CopyText(image.Steuersatz, row.Satz);
    image.Steuerfolge = folge;
    CopyText(image.Steuerkonto, (key & SteuerVorsteuer) != 0 ? row.Vorsteuerkonto : row.Umsatzsteuerkonto);
    return true;
}

int32_t SettleTax(ThreadContext &context, TeilbuchungWork &work, const PackedDate &date, int32_t partIndex)
{
    const TeilbuchungEingabe &eingabe = work.Eingabe;
    SplitRecord &image = work.Teil.Image;
    Holds(date[0] != 0);
    Holds(IsWholeAmount(eingabe.Brutto));
    Holds(eingabe.Steuersatz[0] == 0 || IsWholeRate(eingabe.Steuersatz));
    Holds(eingabe.Steuerbetrag[0] == 0 || IsWholeAmount(eingabe.Steuerbetrag));
    Holds(TeilbuchungHolds(work.Teil));
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
    Holds(image.Kostenzeilen == 0);
    Holds(IsWholeAmount(image.Brutto));
    Holds(SameText(image.Brutto, image.Netto));
    return 1;
}

int32_t SettleNet(const ThreadContext &context, TeilbuchungWork &work, int32_t partIndex)
{
    const TeilbuchungEingabe &eingabe = work.Eingabe;
    SplitRecord &image = work.Teil.Image;
    Holds(IsWholeAmount(image.Brutto));
    Holds(IsWholeAmount(image.Netto));
    if (eingabe.Steuersatz[0] != 0 && work.IsFixedRate && (work.KeyClass & classesWithFixedRate) != 0 &&
        !SameText(eingabe.Steuersatz, image.Steuersatz)) {
        return Report(context, Message::SteuersatzIstFest, steuersatzRefused, nullptr, partIndex);
    }
    if (image.Steuersatz[0] == 0 || SameText(image.Steuersatz, zeroRate)) {
        std::memset(image.Steuerkonto, 0, sizeof image.Steuerkonto);
    }
    if (eingabe.Steuerbetrag[0] != 0) {
        SubtractAmounts(image.Netto, image.Brutto, eingabe.Steuerbetrag);
        if (image.Netto[amountMark] != image.Brutto[amountMark]) {
            return Report(context, Message::AngabeUnzulaessig, steuerbetragRefused, "Steuerbetrag",
                          partIndex);
        }
    } else if (work.Class != 0 && work.Class != SteuerNullsatz) {
        // Where no net amount can be worked out it is the gross one, which is what stands there then.
        NetFromGross(image.Netto, image.Brutto, image.Steuersatz);
        Holds(MagnitudeOf(image.Netto) <= MagnitudeOf(image.Brutto));
    }
    Holds(IsWholeAmount(image.Netto));
    Holds(image.Netto[amountMark] == image.Brutto[amountMark]);
    return 1;
}

} // namespace vark
