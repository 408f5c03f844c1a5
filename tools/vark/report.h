// Reports of the library, made into files.
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
    std::filesystem::path Target; // empty: text on standard output
    std::string Kind;             // of the target: pdf, csv, json or html, which its name must end in
};

// The Summen- und Saldenliste. Returns the exit code.
int MakeSummenSaldenListe(const ReportOptions &options);

} // namespace cli
