// The books of one Mandant in memory while they are made: its accounts with what was posted on them. Amounts
// are Pfennig. Everything else, the postings above all, goes straight to disk.
#pragma once

#include "tools/books/chart.h"
#include "tools/books/partner_rows.h"
#include "tools/common/calendar.h"

#include <cstdint>
#include <string>
#include <vector>

namespace books {

inline constexpr int firstFiscalYear = 1997; // each Mandant has two fiscal years
inline constexpr int yearCount = 2;
inline constexpr int mandantCount = 3;

// What tells the Mandanten apart.
struct Profile {
    int Number;
    const char *Name;
    const char *Name2;
    const char *Street;
    const char *Place;
    const char *UstId;
    const char *Steuernummer;
    int FirstMonth;       // of the fiscal year, calendar
    bool IsFirstYearOpen; // both years can be posted to, else only the second
    bool HasCosts;
    bool NeedsCosts;
    uint8_t Vordruckcode;
    uint8_t UStVAVariante;
    bool PaysTaxOnReceipt; // turnover tax is due when the customer has paid
    int OpeningShare;      // its opening balances are this part of the chart's: 1 all, 4 a quarter
    int Capital;           // DM, where the chart's does not hold; 0: the chart's
};

const Profile &ProfileOf(int mandant);

struct Totals {
    int64_t Soll = 0;
    int64_t Haben = 0;
};

// What an account record holds for a fiscal year.
struct YearSums {
    Totals Vortrag;
    Totals Slot0;
    Totals Month[12];
    int32_t Count[12] = {};

    int64_t Balance() const; // positive on Soll
    bool IsUsed() const;
};

enum class Kind : uint8_t { Sachkonto, Debitor, Kreditor };

// Most Debitoren and Kreditoren that a Mandant may have: their numbers stay below the next group.
inline constexpr int partnersMax = 25000;

struct Account {
    Kind Of = Kind::Sachkonto;
    int Number = 0;
    const AccountRow *Row = nullptr;     // Sachkonten
    const PartnerRow *Partner = nullptr; // Debitoren and Kreditoren
    int Copy = 0;                        // how often the partner's row was used before
    vark::AccountNumber Key = {};        // the number as records hold it
    YearSums Years[yearCount] = {};
};

struct CostObject {
    const CostObjectRow *Row;
    int64_t Month[yearCount][12] = {};
};

struct Ledger {
    const Profile *Of;
    std::vector<Account> Sachkonten; // each in the order of the numbers
    std::vector<Account> Debitoren;
    std::vector<Account> Kreditoren;
    std::vector<CostObject> CostObjects;

    int YearOf(int index) const { return firstFiscalYear + index; }
    // The directory of a year below the data path: "1997", "19971".
    std::string Directory(int index) const;
    Account *FindSachkonto(int number); // null for none
    const CostTemplateRow *FindTemplate(int number) const;
};

// The Mandant's accounts with the Sachkonten's opening balances, nothing posted. There are as many Debitoren
// and Kreditoren as the chart has where `debitoren` and `kreditoren` are 0.
Ledger MakeLedger(int mandant, int debitoren, int kreditoren);

// Has the collective accounts carry what the Debitoren and Kreditoren carry, and puts what is then left
// between the sides of the opening Bilanz into the carried profit.
void BalanceOpening(Ledger &ledger);

void SetVortrag(YearSums &sums, int64_t balance);

// Last day of the postings: eighteen months after the first.
tools::Day LastPostingDay(const Ledger &ledger);

// The key form of an account number.
void MakeKey(vark::AccountNumber &out, int number);

// Carries the balances of the first year over into the second: those of the Bilanz as they are, the result of
// the year into the carried profit.
void CarryOver(Ledger &ledger);

} // namespace books
