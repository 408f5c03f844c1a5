#include "tools/vark/queries.h"

#include "include/vark40.h"
#include "tools/common/exit_codes.h"
#include "tools/common/texts.h"
#include "tools/vark/accounts.h"
#include "tools/vark/kontoart.h"
#include "tools/vark/reasons.h"

#include <iostream>
#include <optional>
#include <stdexcept>

namespace cli {

using namespace tools;

namespace {

// Outputs hold what the header states for them.
using KontoOut = char[8];
using AmountOut = char[17];
using RateOut = char[8];
using DateOut = char[11];

// A number as it stands, or the number of the account that has this Kürzel. `art` is that of the account; 0
// is replaced by its kind, or by `otherwise` for what is no account: the library then says what is wrong.
std::string NumberOf(int mandant, const std::string &konto, int &art, int otherwise)
{
    std::string number = FromUtf8(Trimmed(konto));
    const int byNumber = art != 0 ? art : FindKind(mandant, number);
    if (VARK_ExistiertKonto(mandant, number.c_str(), byNumber) != 0) {
        art = byNumber;
        return number;
    }
    ReasonCatcher catcher;
    const std::optional<Account> found = FindAccount(mandant, art, konto);
    catcher.Take();
    if (art == 0) art = found ? found->Art : otherwise;
    return found ? std::string(found->Konto) : number;
}

// A kind of account: a letter for people, who see it beside the number, its name for programs.
void PutKind(RowWriter &rows, Output as, uint32_t art)
{
    rows.PutUtf8(as == Output::Table ? KindLetter(static_cast<int>(art)) : KindName(static_cast<int>(art)));
}

// "1.160,00 Soll": a negative balance is a Haben balance, and nothing has no side.
std::string SideOf(const AmountOut &amount)
{
    if (std::string_view(amount) == "0,00") return amount;
    const bool isHaben = amount[0] == '-';
    return std::string(amount + (isHaben ? 1 : 0)) + (isHaben ? " Haben" : " Soll");
}

} // namespace

int ShowFreeNumber(const QueryOptions &options)
{
    ReasonCatcher catcher;
    KontoOut number = {};
    // The call has no flag for messages of its own: an unknown Mandant would be refused without a word.
    const int result = VARK_HoleFreieKontonr(options.Mandant, KontoartOf(options.Kind), number);
    if (result < 1) return Refuse(catcher, result);
    if (options.As == Output::Table) {
        std::cout << ToUtf8(number) << '\n';
        return ExitGood;
    }
    RowWriter rows({{"Konto", "konto", 7}}, options.As);
    rows.Put(number);
    rows.EndRow();
    rows.End();
    return ExitGood;
}

int ShowBalances(const QueryOptions &options)
{
    const int kind = options.Kind.empty() ? 0 : KontoartOf(options.Kind);
    const bool isAlone = options.As == Output::Table && options.Konten.size() == 1;
    RowWriter rows(
        {{"Konto", "konto", 7, Align::Right}, {"Art", "art", 12}, {"Saldo", "saldo", 22, Align::Right}},
        options.As);
    int exitCode = ExitGood;
    for (const std::string &konto : options.Konten) {
        ReasonCatcher catcher;
        int art = kind;
        const std::string number = NumberOf(options.Mandant, konto, art, ArtSachkonto);
        AmountOut amount = {};
        const int result =
            VARK_HoleSaldo(options.Mandant, number.c_str(), art, 1, AmountFormOf(options.As), amount);
        if (result < 1) {
            exitCode = Refuse(catcher, result);
            continue;
        }
        if (isAlone) {
            std::cout << SideOf(amount) << '\n';
            return ExitGood;
        }
        rows.Put(number.c_str());
        rows.PutUtf8(KindName(art));
        if (options.As == Output::Table) {
            rows.PutUtf8(SideOf(amount));
        } else {
            rows.PutAmount(amount);
        }
        rows.EndRow();
    }
    if (!isAlone) rows.End();
    return exitCode;
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
                    {options.As == Output::Csv ? "Sollart" : "Art", "sollart", 3},
                    {"Haben", "habenkonto", 7, Align::Right},
                    {options.As == Output::Csv ? "Habenart" : "Art", "habenart", 3},
                    {"Betrag", "betrag", 15, Align::Right},
                    {"Satz", "steuerprozent", 5, Align::Right},
                    {"Steuer", "steuerbetrag", 13, Align::Right},
                    {"Text", "text", 39}},
                   options.As);
    const int form = AmountFormOf(options.As);
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
        if (part == 0 && options.As != Output::Json) {
            rows.PutUtf8("");
        } else {
            rows.PutNumber(part);
        }
        rows.Put(soll);
        PutKind(rows, options.As, sollArt);
        rows.Put(haben);
        PutKind(rows, options.As, habenArt);
        rows.PutAmount(betrag);
        rows.PutAmount(prozent);
        rows.PutAmount(steuer);
        rows.Put(text);
        rows.EndRow();
    }
    rows.End();
    return ExitGood;
}

namespace {

// What people see has no room for the second reference, which is seldom there.
std::vector<RowColumn> ItemColumns(Output as)
{
    std::vector<RowColumn> columns = {{"Art", "art", 3},
                                      {"Konto", "konto", 7, Align::Right},
                                      {"Beleg", "referenz1", 9},
                                      {"Referenz", "referenz2", 9},
                                      {"vom", "datum1", 10},
                                      {"fällig", "datum2", 10},
                                      {"Skonto bis", "datum3", 10},
                                      {"offen", "betrag1", 15, Align::Right},
                                      {"Skonto", "betrag2", 13, Align::Right},
                                      {"Whg", "waehrung", 4},
                                      {"Name", "text1", 25},
                                      {"Text", "text2", 25}};
    if (as == Output::Table) columns.erase(columns.begin() + 3);
    return columns;
}

// The items of one kind, or of one account of it. The library's code where it refuses, else 0.
int PutOpenItems(RowWriter &rows, const QueryOptions &options, int art, const std::string &konto)
{
    int result = VARK_InitHoleOP(options.Mandant, konto.c_str(), art, 1);
    const int form = AmountFormOf(options.As);
    while (result == 1) {
        KontoOut number = {};
        char referenz1[10] = {}, referenz2[10] = {}, text1[26] = {}, text2[26] = {}, waehrung[5] = {};
        DateOut datum1 = {}, datum2 = {}, datum3 = {};
        AmountOut betrag1 = {}, betrag2 = {};
        result = VARK_HoleOP(number, referenz1, referenz2, datum1, datum2, datum3, text1, text2, form,
                             betrag1, betrag2, waehrung);
        if (result < 1) break;
        PutKind(rows, options.As, static_cast<uint32_t>(art));
        rows.Put(number);
        rows.Put(referenz1);
        if (options.As != Output::Table) rows.Put(referenz2);
        for (const char *value : {datum1, datum2, datum3}) {
            rows.Put(value);
        }
        rows.PutAmount(betrag1);
        rows.PutAmount(betrag2);
        for (const char *value : {waehrung, text1, text2}) {
            rows.Put(value);
        }
        rows.EndRow();
    }
    return result < 0 ? result : 0;
}

} // namespace

int ShowOpenItems(const QueryOptions &options)
{
    ReasonCatcher catcher;
    int art = options.Kind.empty() ? 0 : KontoartOf(options.Kind);
    std::string konto;
    if (!options.Konten.empty()) konto = NumberOf(options.Mandant, options.Konten.front(), art, ArtDebitor);
    RowWriter rows(ItemColumns(options.As), options.As);
    const std::vector<int> kinds =
        art != 0 ? std::vector<int>{art} : std::vector<int>{ArtDebitor, ArtKreditor};
    for (const int each : kinds) {
        const int result = PutOpenItems(rows, options, each, konto);
        if (result < 0) return Refuse(catcher, result);
    }
    rows.End();
    return ExitGood;
}

} // namespace cli
