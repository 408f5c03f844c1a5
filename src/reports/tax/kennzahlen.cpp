#include "src/reports/tax/kennzahlen.h"

#include "src/frame/mandant.h"
#include "src/values/account_numbers.h"
#include "src/values/amounts.h"
#include "src/values/sums.h"
#include "src/walks/account_walk.h"
#include "src/walks/other_year.h"
#include "src/walks/posting_walk.h"
#include "text/fixed_text.h"

#include <algorithm>
#include <array> // std::begin
#include <cstring>

namespace vark {

using text::CopyText;

namespace {

// Boxes that postings fill.
constexpr int32_t noKennzahl = 0; // of no form
constexpr int32_t umsatzRegelsatz = 50;
constexpr int32_t umsatzErmaessigt = 86;
constexpr int32_t umsatz12 = 87;
constexpr int32_t umsatz16 = 88;
constexpr int32_t umsatzAndererSatz = 35;
constexpr int32_t steuerAndererSatz = 36;
constexpr int32_t ohnePlatz = 85; // collected like any other, but no form has a place for it

constexpr int64_t satz12 = 1200; // hundredths of a percent
constexpr int64_t satz16 = 1600;

// The boxes that the Sonderkonto's postings fill in place of the accounts.
constexpr int32_t fromPostings[] = {umsatzRegelsatz, umsatzErmaessigt,  umsatz12,
                                    umsatz16,        umsatzAndererSatz, steuerAndererSatz};

struct Collection {
    ThreadContext *Context;
    Kennzahlliste *List;
    bool IsExact;
    bool LooksAtPostings;      // Sonderkontomodus
    bool HasSonderkonto;       // an empty one equals no account
    AccountNumber Sonderkonto; // right-justified
    int32_t LastKennzahl;      // first box of the posting classified last
};

// ---- First stage: accounts ----

bool TakesAccount(const Collection &collection, int32_t kennzahl)
{
    if (kennzahl == noKennzahl) return false;
    if (!collection.LooksAtPostings) return true;
    return std::find(std::begin(fromPostings), std::end(fromPostings), kennzahl) == std::end(fromPostings);
}

bool CollectAccounts(const Collection &collection, const YearPart &part, bool isFirstYear)
{
    AccountScan scan;
    bool isGood = BeginAllAccounts(scan, *collection.Context, KindOfTable(TableSako));
    while (isGood && scan.Found) {
        const SakoRecord &account = scan.Record.Sako;
        if (TakesAccount(collection, account.Kennzahl)) {
            // Accounts of one year come in the order of their numbers, each of them once.
            Kennzahlknoten *node = isFirstYear ? nullptr : FindAccountNode(*collection.List, account.Konto);
            if (node == nullptr) node = AddAccountNode(*collection.List, account.Konto, account.Kennzahl);
            isGood = node != nullptr &&
                     DeductMonthBalances(node->Betrag, account.Umsaetze, part.FirstMonth, part.LastMonth);
        }
        isGood = isGood && NextAccount(scan);
    }
    return isGood;
}

// ---- Second stage: postings ----

// A posting left out of the balances is taken out of what its accounts brought.
bool TakeOut(const Collection &collection, const BubeRecord &posting)
{
    Kennzahlknoten *const soll = FindAccountNode(*collection.List, posting.Sollkonto);
    if (soll != nullptr && !AccumulateAmount(soll->Betrag, posting.Soll)) return false;
    Kennzahlknoten *const haben = FindAccountNode(*collection.List, posting.Habenkonto);
    return haben == nullptr || DeductAmount(haben->Betrag, posting.Haben);
}

bool IsSonderkonto(const Collection &collection, const AccountNumber &konto)
{
    if (!collection.HasSonderkonto) return false;
    AccountNumber justified;
    JustifyNumber(justified, konto);
    return std::memcmp(justified, collection.Sonderkonto, accountDigits) == 0;
}

// What counts of a posting as one of tax.
struct TaxPosting {
    AmountText Basis;
    AmountText Steuer;
    uint8_t Klasse;
};

// A posting with tax on an account other than the Sonderkonto: the smaller of its two amounts is the base,
// what they differ by the tax.
bool SplitTax(const BubeRecord &posting, TaxPosting &tax)
{
    AmountText lower;
    AmountText higher;
    CopyAmount(lower, posting.Soll);
    CopyAmount(higher, posting.Haben);
    if (std::memcmp(lower, higher, amountWidth) > 0) std::swap(lower, higher);
    CopyText(tax.Basis, lower);
    CopyText(tax.Steuer, higher);
    tax.Klasse = posting.Steuerherkunft;
    return DeductAmount(tax.Steuer, lower);
}

// Which boxes a class of tax belongs to: that of the base and, if it is given, that of the tax.
struct Boxes {
    int32_t Basis;
    int32_t Steuer;
};

Boxes ClassifyWhole(uint8_t klasse)
{
    if ((klasse & BubeKlasse40) != 0) return {ohnePlatz, noKennzahl};
    if ((klasse & BubeKlasse2) != 0) return {umsatzRegelsatz, noKennzahl};
    if ((klasse & BubeKlasse4) != 0) return {umsatzErmaessigt, noKennzahl};
    return {umsatzAndererSatz, steuerAndererSatz};
}

Boxes ClassifyExact(uint8_t klasse, int64_t satz, int32_t last)
{
    if ((klasse & BubeKlasse80) != 0) return {last, noKennzahl};
    if ((klasse & BubeKlasse2) != 0) return {umsatzRegelsatz, noKennzahl};
    if ((klasse & BubeKlasse4) != 0) return {umsatzErmaessigt, noKennzahl};
    if (satz == satz12) return {umsatz12, noKennzahl};
    if (satz == satz16) return {umsatz16, noKennzahl};
    return {umsatzAndererSatz, steuerAndererSatz};
}

enum class Sign : uint8_t { None, Plus, Minus };

Sign SignOf(const Collection &collection, const BubeRecord &posting)
{
    if ((posting.Steuerflags & BubeSteuerPlus) != 0) return Sign::Plus;
    if ((posting.Steuerflags & BubeSteuerMinus) != 0) return Sign::Minus;
    if (IsSonderkonto(collection, posting.Sollkonto)) return Sign::Plus;
    if (IsSonderkonto(collection, posting.Habenkonto)) return Sign::Minus;
    return Sign::None;
}

bool Apply(Kennzahlliste &list, int32_t kennzahl, const AmountText &amount, Sign sign)
{
    Kennzahlknoten *const node = FindOrAddKennzahl(list, kennzahl);
    if (node == nullptr) return false;
    switch (sign) {
    case Sign::Plus: return AccumulateAmount(node->Betrag, amount);
    case Sign::Minus: return DeductAmount(node->Betrag, amount);
    default: return true;
    }
}

bool TakeTax(Collection &collection, const BubeRecord &posting)
{
    TaxPosting tax{};
    const bool isSplit = posting.Steuerkonto[0] != 0 && !IsSonderkonto(collection, posting.Steuerkonto) &&
                         (posting.Steuerherkunft & BubeVorsteuer) == 0;
    if (isSplit) {
        if (!SplitTax(posting, tax)) return false;
    } else if ((posting.Status & BubeSteuerbuchung) != 0) {
        CopyAmount(tax.Basis, posting.Grundbetrag);
        CopyAmount(tax.Steuer, posting.Soll);
        tax.Klasse = posting.Steuerklasse;
    } else {
        return true;
    }
    const Boxes boxes = collection.IsExact ? ClassifyExact(tax.Klasse, MagnitudeOf(posting.Steuersatz),
                                                           collection.LastKennzahl)
                                           : ClassifyWhole(tax.Klasse);
    collection.LastKennzahl = boxes.Basis;
    const Sign sign = SignOf(collection, posting);
    return Apply(*collection.List, boxes.Basis, tax.Basis, sign) &&
           (boxes.Steuer == noKennzahl || Apply(*collection.List, boxes.Steuer, tax.Steuer, sign));
}

bool CollectPostings(Collection &collection, const YearPart &part)
{
    PostingScan scan;
    bool isGood = BeginPostings(scan, *collection.Context, DaysOf(part.Von, part.Bis));
    while (isGood && scan.Found) {
        const bool isLeftOut = (scan.Record.Status & BubeOhneKennzahl) != 0;
        isGood = (!isLeftOut || TakeOut(collection, scan.Record)) &&
                 (!collection.LooksAtPostings || TakeTax(collection, scan.Record)) && NextPosting(scan);
    }
    return isGood;
}

} // namespace

bool CollectKennzahlen(ThreadContext &context, const FistaRecord &mandant, const PeriodSelection &period,
                       Kennzahlliste &list)
{
    Collection collection{};
    collection.Context = &context;
    collection.List = &list;
    collection.IsExact = HasExactForm(mandant);
    collection.LooksAtPostings = mandant.Sonderkontomodus != 0;
    collection.HasSonderkonto = mandant.Sonderkonto[0] != 0;
    JustifyNumber(collection.Sonderkonto, mandant.Sonderkonto);
    collection.LastKennzahl = noKennzahl;
    const PeriodYears years =
        YearsOfPeriod(context, period.VonDatum, period.BisDatum, period.VonPeriode, period.BisPeriode);
    for (int i = 0; i < years.Count; ++i) {
        const YearPart &part = years.Parts[i];
        if (!part.IsPostable) continue;
        if (!SelectYear(context, part.Year) || !CollectAccounts(collection, part, i == 0) ||
            !CollectPostings(collection, part))
            return false;
    }
    return true;
}

} // namespace vark
