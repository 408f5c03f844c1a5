// The pick dialogs of the library, opened from the command line.
#pragma once

#include <string>

namespace cli {

struct PickOptions {
    std::string What;                   // "mandant", "stapel", "konto", "zahlungsziel", "kostenschablone"
    int Mandant = 1;                    // for all but "mandant"
    std::string Kontoart = "Sachkonto"; // for "konto"
    std::string From;                   // for "konto": limits of the numbers, UTF-8; empty for none
    std::string To;                     // likewise
    bool Manages = false;               // "stapel": all of them, to be made, changed and deleted as well
};

// Opens the dialog and prints what was chosen, a number. Returns the exit code: 1 when the user cancelled or
// there is nothing to choose from.
int Pick(const PickOptions &options);

} // namespace cli
