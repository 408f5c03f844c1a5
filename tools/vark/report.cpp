#include "tools/vark/report.h"

#include "include/vark40.h"
#include "report-engine/rs.h"
#include "tools/common/exit_codes.h"
#include "tools/common/installation.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <unistd.h>

namespace cli {

namespace {

// Fields of ReportParams that are given.
constexpr uint32_t givenPeriod = 0x01;
constexpr uint32_t givenDates = 0x02;
constexpr uint32_t givenKind = 0x08;
constexpr uint32_t givenAccounts = 0x10;

// "31.3.98" or "31.03.1998" as the six digits TTMMJJ of a parameter block.
std::string SixDigits(const std::string &date)
{
    int parts[3] = {};
    const char *at = date.c_str();
    const char *const end = at + date.size();
    for (int i = 0; i < 3; ++i) {
        const auto [rest, error] = std::from_chars(at, end, parts[i]);
        const bool isLast = i == 2;
        if (error != std::errc() || (isLast ? rest != end : rest == end || *rest != '.')) {
            throw std::invalid_argument("Kein Datum der Form TT.MM.JJJJ: " + date);
        }
        at = isLast ? rest : rest + 1;
    }
    char digits[8];
    std::snprintf(digits, sizeof digits, "%02u%02u%02u", static_cast<unsigned>(parts[0]) % 100,
                  static_cast<unsigned>(parts[1]) % 100, static_cast<unsigned>(parts[2]) % 100);
    return digits;
}

void PutNumber(char (&field)[8], const std::string &number)
{
    if (number.size() >= sizeof field)
        throw std::invalid_argument("Kontonummern haben bis zu 7 Zeichen: " + number);
    std::memcpy(field, number.c_str(), number.size() + 1);
}

int32_t KindOf(const std::string &art)
{
    if (art == "Sachkonten") return 1;
    if (art == "Kreditoren") return 2;
    if (art == "Debitoren") return 4;
    throw std::invalid_argument("Die Art ist Sachkonten, Kreditoren oder Debitoren, nicht " + art);
}

ReportParams ParamsOf(const ReportOptions &options)
{
    ReportParams params{};
    params.ParamFlags = givenKind | givenAccounts;
    if (!options.Per.empty()) {
        params.ParamFlags |= givenPeriod | givenDates;
        const std::string date = SixDigits(options.Per);
        std::memcpy(params.VonDatum, date.c_str(), sizeof params.VonDatum);
        std::memcpy(params.BisDatum, date.c_str(), sizeof params.BisDatum);
    }
    params.KontoArt = KindOf(options.Art);
    PutNumber(params.KontoArt == 1   ? params.SachkontoVon
              : params.KontoArt == 2 ? params.KreditorVon
                                     : params.DebitorVon,
              options.Von);
    PutNumber(params.KontoArt == 1   ? params.SachkontoBis
              : params.KontoArt == 2 ? params.KreditorBis
                                     : params.DebitorBis,
              options.Bis);
    return params;
}

// The view as text on standard output, by way of a file that nobody else sees.
bool PrintText(VarkWindow view)
{
    char directory[] = "/tmp/vark-bericht-XXXXXX";
    if (mkdtemp(directory) == nullptr) return false;
    const std::filesystem::path file = std::filesystem::path(directory) / "bericht.txt";
    const bool written = RSExportView(view, file.c_str()) != 0;
    if (written) std::cout << std::ifstream(file).rdbuf() << std::flush;
    std::filesystem::remove_all(directory);
    return written;
}

} // namespace

int MakeSummenSaldenListe(const ReportOptions &options)
{
    if (VARK_Status() != 1) {
        std::fprintf(stderr, "vark: Die Bibliothek ist nicht bereit (%d).\n", VARK_Status());
        return tools::ExitFailure;
    }
    ReportParams params;
    try {
        if (!options.Target.empty() && options.Target.extension() != "." + options.Kind) {
            throw std::invalid_argument("--" + options.Kind + " braucht eine Datei auf ." + options.Kind);
        }
        params = ParamsOf(options);
    } catch (const std::invalid_argument &error) {
        std::fprintf(stderr, "vark: %s\n", error.what());
        return tools::ExitUsage;
    }
    if (!tools::FindMandant(tools::ConfiguredDataPath(), options.Mandant)) {
        std::fputs("vark: Der Mandant existiert nicht!\n", stderr);
        return tools::ExitRefused;
    }
    const std::string asked = params.BisDatum;
    VarkWindow view = VARK_SummenSaldenListe(options.Mandant, nullptr, &params);
    if (view != nullptr && !asked.empty() && asked != params.BisDatum) {
        // The report's dialog moves a date to a bookable year, which a person sees and a script does not.
        std::fputs("vark: Das Datum muß innerhalb der bebuchbaren Geschäftsjahre liegen!\n", stderr);
        return tools::ExitRefused;
    }
    if (view == nullptr) {
        std::fputs("vark: Der Bericht wurde nicht erstellt.\n", stderr);
        return tools::ExitRefused;
    }
    const bool made =
        options.Target.empty() ? PrintText(view) : RSExportView(view, options.Target.c_str()) != 0;
    if (!made) {
        std::fprintf(stderr, "vark: %s läßt sich nicht schreiben.\n", options.Target.c_str());
        return tools::ExitFailure;
    }
    return tools::ExitGood;
}

} // namespace cli
