// What the sample books hold before anything is posted: accounts, tax keys, cost centres and the lines of
// Bilanz and GuV; for partners see partner_rows.h. Plain data; sample.cpp turns it into records.
#pragma once

#include "src/model/account_records.h"

#include <cstdint>
#include <span>

namespace books {

// Mandanten for which a row is made, as bits.
enum Use : uint8_t { M1 = 1, M2 = 2, M3 = 4, M12 = 3, M13 = 5, M123 = 7 };

// Whether the row is made for the Mandant, 1 to 3.
constexpr bool IsFor(uint8_t use, int mandant) { return (use >> (mandant - 1) & 1) != 0; }

// ---- Lines of Bilanz and GuV ----

enum class Side : uint8_t { Aktiva, Passiva, Guv, None };

// Groups come before their subgroups. Codes are known to this source alone.
struct GroupRow {
    int Code;
    int Parent; // 0: directly below the root
    Side Place;
    bool HasTotal;
    const char *Title; // at most 27 characters
};

// The groups of all Mandanten, each before its subgroups.
std::span<const GroupRow> Groups();

// Group codes that rows of the chart use for accounts outside every group: listed in the tree of that side
// without a place in it, or nowhere at all.
inline constexpr int unassignedGuv = -1;
inline constexpr int unassignedAktiva = -2;
inline constexpr int unassignedPassiva = -3;
inline constexpr int noTree = 0;

// ---- Sachkonten ----

struct AccountRow {
    int Number;
    const char *Kuerzel; // at most 9 characters
    const char *Name;    // at most 40 characters, so that every report shows all of it
    int Group;
    int OtherGroup;      // group of the other side of the Bilanz for a balance of the other sign, 0 for none
    uint8_t Tax;         // Steuerflags
    const char *Rate;    // percentage of the keys that carry their own
    bool IsFixed;        // the rate must not be changed in a posting
    int Kennzahl;        // box of the tax return
    int Kostenschablone; // where the Mandant has one of this number
    uint8_t Mandanten;
    long OpeningBalance; // DM on 1 January 1997 for Mandant 1, positive on Soll
};

// The Sachkonten of all Mandanten.
std::span<const AccountRow> Accounts();

// Accounts that other data refers to. What happens on Debitoren and Kreditoren stands once more, month by
// month, on the two collective accounts of the Bilanz, with the Abstimmkonto on the other side.
inline constexpr int kontoForderungen = 1510;
inline constexpr int kontoVerbindlichkeiten = 2310;
inline constexpr int kontoGewinnvortrag = 2040;
inline constexpr int kontoAbstimmungDebitoren = 9020;
inline constexpr int kontoAbstimmungKreditoren = 9030;
// Turnover tax of the agency that is not yet due: it pays when its customers have paid.
inline constexpr int kontoSteuerNichtFaellig = 2480;
// What is bought in the EC counts for the tax return on an account of its own: a box is Haben less Soll.
inline constexpr int kontoErwerbe = 9060;
inline constexpr int kontoGegenErwerbe = 9070;

// ---- Tax keys ----

struct RateRow {
    uint8_t Mandanten;
    int Code;
    int Sequence;
    int Year, Month, Day; // valid from; year 0: since ever
    const char *Rate;
    int Umsatzsteuer; // tax accounts
    int Vorsteuer;
};

// The tax keys, each with the rates it has had.
std::span<const RateRow> Rates();

// ---- Cost accounting ----

struct CostObjectRow {
    const char *Number;
    const char *Kuerzel;
    const char *Name; // at most 30
    const char *Text; // at most 40
    bool IsCarrier;   // a Kostenträger, used as second cost object
    uint8_t Mandanten;
};

// The Kostenstellen and Kostenträger of all Mandanten.
std::span<const CostObjectRow> CostObjects();

struct CostTemplateRow {
    int Number;
    const char *Name; // at most 40
    uint8_t Mandanten;
};

// The Kostenschablonen of all Mandanten.
std::span<const CostTemplateRow> CostTemplates();

struct CostLineRow {
    int Template;
    const char *Object1;
    const char *Object2;
    bool IsDirect;
    const char *Share; // "100,00" or "033,33"
    const char *Text;
    uint8_t Mandanten;
};

// The lines of the Kostenschablonen.
std::span<const CostLineRow> CostLines();

// ---- Small tables ----

struct TermRow {
    int Number;
    const char *Text;
    int DaysNet;
    int DaysSkonto;
};

// The Zahlungsziele.
std::span<const TermRow> Terms();

struct StapelRow {
    int Number;
    const char *Name;
    int Interval;
};

// The Stapel.
std::span<const StapelRow> Batches();

struct UserRow {
    const char *Key; // at most 3 characters
    const char *Name;
};

// The users.
std::span<const UserRow> Users();

// A currency with its average rates: Pfennig for so many foreign units in January 1997, and how many Pfennig
// each month adds.
struct CurrencyRow {
    const char *Code;
    int UnitCode;
    int FirstRate;
    int MonthlyChange;
};

// The currencies.
std::span<const CurrencyRow> Currencies();

} // namespace books
