// Rates of exchange: listed as records, since no export lists them, and kept in the library's own dialog,
// which a person sees or a script plays.
#pragma once

#include "tools/common/row_writer.h"

#include <string>

namespace cli {

struct RateOptions {
    int Mandant = 0;
    std::string Waehrung; // of the list: only this one
    std::string Datum;    // of the rate that is entered or deleted, TT.MM.JJJJ
    std::string Kurs;     // of the rate that is entered
    std::string Einheiten = "1";
    bool IsAverage = false;
    bool IsNew = false;
    bool Deletes = false;
    bool Asks = false; // opens the dialog on the screen
    tools::Output As = tools::Output::Table;
};

// Lists, enters or deletes, or opens the dialog. Returns the exit code: 1 where it was refused, with the
// reason on standard error.
int KeepRates(const RateOptions &options);

} // namespace cli
