#include "tools/vark/queries.h"

#include "include/vark40.h"
#include "tools/common/exit_codes.h"
#include "tools/common/texts.h"
#include "tools/vark/reasons.h"

#include <iostream>
#include <optional>
#include <stdexcept>

namespace cli {

using namespace tools;

namespace {

// Kinds of account at the interface.
enum Kontoart : int { ArtSachkonto = 1, ArtKreditor = 2, ArtDebitor = 4, ArtKostenstelle = 8 };

// Forms of amounts at the interface.
enum AmountForm : int { FormPlain = 2, FormGrouped = 3 };

// Outputs hold what the header states for them.
using KontoOut = char[8];
using AmountOut = char[17];
using RateOut = char[8];
using DateOut = char[11];

int KontoartOf(const std::string &text)
{
    if (text == "s" || text == "sachkonto" || text == "Sachkonto" || text == "1") return ArtSachkonto;
    if (text == "k" || text == "kreditor" || text == "Kreditor" || text == "2") return ArtKreditor;
    if (text == "d" || text == "debitor" || text == "Debitor" || text == "4") return ArtDebitor;
    if (text == "kst" || text == "kostenstelle" || text == "Kostenstelle" || text == "8")
        return ArtKostenstelle;
    throw std::runtime_error("Die Kontoart „" + text +
                             "“ gibt es nicht (Sachkonto, Kreditor, Debitor, Kostenstelle).");
}

const char *KindName(uint32_t art)
{
    switch (art) {
    case ArtSachkonto: return "S";
    case ArtKreditor: return "K";
    case ArtDebitor: return "D";
    default: return "";
    }
}

// Machines get plain amounts, people grouped ones.
int FormOf(const QueryOptions &options) { return options.As == Output::Table ? FormGrouped : FormPlain; }

// Tells why a call gave `code`, and returns the exit code: refused, or the books can't be used.
int Refuse(ReasonCatcher &catcher, int code)
{
    std::string reason = catcher.Take();
    if (reason.empty()) reason = TextOfCode(code);
    if (code == -3 || code == -36 || code == -42) throw std::runtime_error(reason);
    std::cout << std::flush;
    catcher.Pass("vark: " + reason + "\n");
    return ExitRefused;
}

// The kind of an account by its number, in the order in which the library looks.
int FindKind(int mandant, const std::string &konto)
{
    for (const int art : {ArtSachkonto, ArtDebitor, ArtKreditor, ArtKostenstelle}) {
        const int found = VARK_ExistiertKonto(mandant, konto.c_str(), art);
        if (found == 1) return art;
        if (found < 0) return ArtSachkonto;
    }
    return ArtSachkonto;
}

bool IsBehind(const char *konto, const std::string &to)
{
    if (to.empty()) return false;
    const std::string left = Right(konto, 7);
    return left > Right(to, 7);
}

int ListSachkonten(const QueryOptions &options)
{
    RowWriter rows({{"Konto", "konto", 7, Align::Right},
                    {"Kürzel", "kuerzel", 9},
                    {"Zuordnung", "zuordnung", 9},
                    {"Name", "name", 40}},
                   options.As);
    // A Sachkonto cursor ends with -3 at its last record, which has then been delivered.
    for (int result = 1; result == 1;) {
        KontoOut konto = {};
        char kuerzel[10] = {};
        char name[50] = {};
        uint32_t zuordnung = 0;
        result = VARK_HoleSako(konto, kuerzel, name, &zuordnung, nullptr, nullptr);
        if (konto[0] == 0 || IsBehind(konto, options.To)) break;
        rows.Put(konto);
        rows.Put(kuerzel);
        rows.PutUtf8(zuordnung == 2 ? "Aktiva" : zuordnung == 4 ? "Passiva" : zuordnung == 8 ? "GuV" : "");
        rows.Put(name);
        rows.EndRow();
    }
    rows.End();
    VARK_BeendeHolen();
    return ExitGood;
}

int ListPartners(const QueryOptions &options)
{
    RowWriter rows({{"Konto", "konto", 7, Align::Right},
                    {"Kürzel", "kuerzel", 9},
                    {"Name", "name", 25},
                    {"Land", "land", 4},
                    {"PLZ", "plz", 6},
                    {"Ort", "ort", 20},
                    {"Straße", "strasse", 30},
                    {"USt-IdNr", "ustid", 15},
                    {"Währung", "waehrung", 7},
                    {"Zahlungsziel", "zahlungsziel", 12, Align::Right}},
                   options.As);
    for (int result = 1; result == 1;) {
        KontoOut konto = {};
        char kuerzel[10] = {}, name1[26] = {}, ustId[47] = {}, land[4] = {}, waehrung[5] = {}, plz[7] = {};
        char adresse2[31] = {}, adresse1[31] = {};
        uint32_t zahlungsziel = 0;
        result = VARK_HolePeko(konto, kuerzel, name1, nullptr, ustId, land, waehrung, plz, adresse2, adresse1,
                               nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, FormPlain, nullptr,
                               nullptr, &zahlungsziel);
        if (result < 1 || IsBehind(konto, options.To)) break;
        rows.Put(konto);
        rows.Put(kuerzel);
        rows.Put(name1);
        rows.Put(land);
        rows.Put(plz);
        rows.Put(adresse2);
        rows.Put(adresse1);
        rows.Put(ustId);
        rows.Put(waehrung);
        rows.PutNumber(zahlungsziel);
        rows.EndRow();
    }
    rows.End();
    VARK_BeendeHolen();
    return ExitGood;
}

} // namespace

int ListAccounts(const QueryOptions &options)
{
    const int art = KontoartOf(options.Kind);
    if (art == ArtKostenstelle) throw std::runtime_error("Für Kostenstellen: books zeigen kore");
    int result = 0;
    {
        ReasonCatcher catcher;
        result = VARK_InitHoleKonto(options.Mandant, art, FromUtf8(options.From).c_str(), 1);
        if (result < 0) return Refuse(catcher, result);
    }
    if (result == 0) return ExitGood;
    return art == ArtSachkonto ? ListSachkonten(options) : ListPartners(options);
}

int ShowFreeNumber(const QueryOptions &options)
{
    ReasonCatcher catcher;
    KontoOut number = {};
    // The call has no flag for messages of its own: an unknown Mandant would be refused without a word.
    const int result = VARK_HoleFreieKontonr(options.Mandant, KontoartOf(options.Kind), number);
    if (result < 1) return Refuse(catcher, result);
    std::cout << ToUtf8(number) << '\n';
    return ExitGood;
}

int ShowBalance(const QueryOptions &options)
{
    ReasonCatcher catcher;
    const std::string konto = FromUtf8(options.Konto);
    const int art = options.Kind.empty() ? FindKind(options.Mandant, konto) : KontoartOf(options.Kind);
    AmountOut amount = {};
    const int result = VARK_HoleSaldo(options.Mandant, konto.c_str(), art, 1, FormOf(options), amount);
    if (result < 1) return Refuse(catcher, result);
    if (options.As != Output::Table) {
        RowWriter rows({{"Konto", "konto", 7}, {"Saldo", "saldo", 16, Align::Right}}, options.As);
        rows.PutUtf8(options.Konto);
        rows.Put(amount);
        rows.EndRow();
        rows.End();
        return ExitGood;
    }
    // A negative balance is a Haben balance.
    const bool isHaben = amount[0] == '-';
    std::cout << (amount + (isHaben ? 1 : 0)) << (isHaben ? " Haben\n" : " Soll\n");
    return ExitGood;
}

int ShowJournal(const QueryOptions &options)
{
    int result = 0;
    {
        ReasonCatcher catcher;
        result = VARK_InitHoleBube(options.Mandant, FromUtf8(options.From).c_str(), 1);
        if (result < 0) return Refuse(catcher, result);
    }
    RowWriter rows({{"Datum", "datum", 10},
                    {"Beleg", "beleg", 8},
                    {"Teil", "teil", 4, Align::Right},
                    {"Soll", "sollkonto", 7, Align::Right},
                    {"", "sollart", 1},
                    {"Haben", "habenkonto", 7, Align::Right},
                    {"", "habenart", 1},
                    {"Betrag", "betrag", 15, Align::Right},
                    {"%", "steuerprozent", 5, Align::Right},
                    {"Steuer", "steuerbetrag", 13, Align::Right},
                    {"Text", "text", 39}},
                   options.As);
    const int form = FormOf(options);
    while (result == 1) {
        uint32_t part = 0, sollArt = 0, habenArt = 0;
        DateOut datum = {};
        char beleg[9] = {}, text[40] = {};
        KontoOut soll = {}, haben = {};
        AmountOut betrag = {}, steuer = {};
        RateOut prozent = {};
        result = VARK_HoleBube(&part, datum, beleg, text, soll, &sollArt, haben, &habenArt, form, betrag,
                               prozent, steuer);
        if (result < 1) {
            rows.End();
            throw std::runtime_error(TextOfCode(result));
        }
        rows.Put(datum);
        rows.Put(beleg);
        if (part == 0) {
            rows.PutUtf8("");
        } else {
            rows.PutNumber(part);
        }
        rows.Put(soll);
        rows.PutUtf8(KindName(sollArt));
        rows.Put(haben);
        rows.PutUtf8(KindName(habenArt));
        rows.Put(betrag);
        rows.Put(prozent);
        rows.Put(steuer);
        rows.Put(text);
        rows.EndRow();
    }
    rows.End();
    return ExitGood;
}

int ShowOpenItems(const QueryOptions &options)
{
    int result = 0;
    {
        ReasonCatcher catcher;
        result =
            VARK_InitHoleOP(options.Mandant, FromUtf8(options.Konto).c_str(), KontoartOf(options.Kind), 1);
        if (result < 0) return Refuse(catcher, result);
    }
    RowWriter rows({{"Konto", "konto", 7, Align::Right},
                    {"Beleg", "referenz1", 9},
                    {"vom", "datum1", 10},
                    {"fällig", "datum2", 10},
                    {"Skonto bis", "datum3", 10},
                    {"offen", "betrag1", 15, Align::Right},
                    {"Skonto", "betrag2", 13, Align::Right},
                    {"Whg", "waehrung", 4},
                    {"Name", "text1", 25},
                    {"Text", "text2", 25}},
                   options.As);
    const int form = FormOf(options);
    while (result == 1) {
        KontoOut konto = {};
        char referenz1[10] = {}, text1[26] = {}, text2[26] = {}, waehrung[5] = {};
        DateOut datum1 = {}, datum2 = {}, datum3 = {};
        AmountOut betrag1 = {}, betrag2 = {};
        result = VARK_HoleOP(konto, referenz1, nullptr, datum1, datum2, datum3, text1, text2, form, betrag1,
                             betrag2, waehrung);
        if (result < 1) {
            rows.End();
            throw std::runtime_error(TextOfCode(result));
        }
        for (const char *value :
             {konto, referenz1, datum1, datum2, datum3, betrag1, betrag2, waehrung, text1, text2}) {
            rows.Put(value);
        }
        rows.EndRow();
    }
    rows.End();
    return ExitGood;
}

} // namespace cli
