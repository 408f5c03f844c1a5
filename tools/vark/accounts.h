// Accounts: walking through them, finding one by number or Kürzel, and listing them. What has an export goes
// through it; Kostenstellen, which have none, are read as records.
#pragma once

#include "tools/common/row_writer.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace cli {

struct ReasonCatcher;

// An account as the exports tell it: texts in Windows-1252, in the widths that the header states.
struct Account {
    int Art;
    char Konto[8];
    char Kuerzel[10];
    char Name[50]; // of a personal account the first of two
    // Sachkonten
    uint32_t Zuordnung;
    uint32_t FesterSatz;
    uint32_t MitKosten;
    // Kreditoren and Debitoren
    char Name2[26];
    char UstId[47];
    char Land[4];
    char Waehrung[5];
    char Plz[7];
    char Ort[31];
    char Strasse[31];
    char Blz[9];
    char Bankkonto[12];
    char Bank[28];
    char Gegenkonto[8];
    uint32_t Wert1;
    uint32_t Wert2;
    char Skonto[8];
    uint32_t Mahnkennziffer;
    uint32_t Zahlungsziel;
};

// Hands the accounts of a kind to `visit`, from a number on (Windows-1252; empty: all), in the order of their
// numbers and until it answers false. 1 when it went well, 0 where there is none, else the library's code;
// what the library shows is left to the caller.
int WalkAccounts(int mandant, int art, const std::string &from,
                 const std::function<bool(const Account &)> &visit);

// The account that a person means by a number or a Kürzel (UTF-8), among those of a kind, or of all kinds
// when `art` is 0. Nothing for none; the number goes first.
std::optional<Account> FindAccount(int mandant, int art, const std::string &text);

struct AccountOptions {
    int Mandant = 0;
    std::string Kind;   // a kind of account; empty: Sachkonten, Debitoren and Kreditoren
    std::string Single; // one account, by number or Kürzel
    std::string From;   // the first number or, in that order, Kürzel
    std::string To;     // the last one
    std::string Order;  // "Nummer", also when empty, or "Kürzel"
    tools::Output As = tools::Output::Table;
};

// Prints accounts. Returns the exit code: 1 where the library refuses, or where the single account is not.
int ListAccounts(const AccountOptions &options);

} // namespace cli
