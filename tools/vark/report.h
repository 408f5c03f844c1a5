// Reports of the library, made into files, shown or printed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace cli {

struct ReportOptions {
    int32_t Mandant = 0;
    std::string Per; // TT.MM.JJJJ; empty: today
    std::string Von; // first account; empty: from the beginning
    std::string Bis; // last account; empty: to the end
    std::string Art = "Sachkonten";
    std::filesystem::path Target; // empty: no file
    std::string Kind;             // of the target: pdf, csv, json or html, which its name must end in
    bool IsText = false;          // on standard output; also when nothing else is wanted
    bool Asks = false;            // in the report's dialog, which the other options fill in advance
    bool Shows = false;           // in a window, until it is closed
    bool Prints = false;

    [[nodiscard]] bool NeedsScreen() const { return Asks || Shows; }
};

// The Summen- und Saldenliste. Returns the exit code.
int MakeSummenSaldenListe(const ReportOptions &options);

} // namespace cli
