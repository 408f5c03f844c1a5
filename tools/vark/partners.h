// Debitoren and Kreditoren: new ones, changes, deletions, through the exported functions.
#pragma once

#include "include/vark40.h"
#include "tools/vark/csv_task.h"

#include <string>

namespace cli {

// An account as a person writes it; UTF-8. To a change what is empty stays as it is, and "-" empties a field.
struct PartnerText {
    std::string Konto;
    std::string Kuerzel;
    std::string Name;
    std::string Name2;
    std::string UstId;
    std::string Land;
    std::string Waehrung;
    std::string Plz;
    std::string Ort;
    std::string Strasse;
    std::string Blz;
    std::string Bankkonto;
    std::string Bank;
    std::string Gegenkonto;
    std::string Wert1;
    std::string Wert2;
    std::string Skonto;
    std::string Mahnkennziffer;
    std::string Zahlungsziel;
};

enum class PartnerAction { New = VARK_ANLEGEN, Change = VARK_AENDERN, Delete = VARK_LOESCHEN };

struct PartnerOptions {
    PartnerAction Action = PartnerAction::New;
    int Mandant = 0;
    std::string Kind;     // Kreditor or Debitor
    PartnerText Defaults; // the one account; with a file, what its columns leave empty
    TaskOptions Task;
};

// Makes, changes or deletes. A new account without a number gets the next free one. Returns the exit code: 0
// all done, 1 some refused, 2 the file is no list of accounts, 3 the books cannot be used.
int KeepPartners(const PartnerOptions &options);

} // namespace cli
