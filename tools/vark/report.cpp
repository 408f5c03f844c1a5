#include "tools/vark/report.h"

#include "include/vark40.h"
#include "report-engine/rs.h"
#include "tools/common/exit_codes.h"
#include "tools/common/installation.h"
#include "tools/vark/report_progress.h"
#include "window-system/varkui.h"

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
constexpr uint32_t givenOutput = 0x40;

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
    if (options.Asks && options.Prints) {
        params.ParamFlags |= givenOutput;
        params.Ausgabe = 1;
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

// ---- With a screen ----

constexpr UINT pressOk = WM_APP;
constexpr int controlOfTheDialog = 20101; // "Drucker", which every report's dialog has

// Reached while the report's dialog waits: presses OK there. What the dialog refuses it shows, and stays open
// for the person to mend.
LRESULT CALLBACK HelperProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message != pressOk) return DefWindowProcA(window, message, wParam, lParam);
    HWND dialog = GetActiveWindow();
    if (GetDlgItem(dialog, controlOfTheDialog) != nullptr) SendMessageA(dialog, WM_COMMAND, IDOK, 0);
    return 0;
}

// Has the next dialog of a report answered with OK before anybody sees it. Returns the window that does it,
// which the caller destroys.
HWND AnswerNextDialog()
{
    WNDCLASSA helper{};
    helper.lpszClassName = "varkHelfer";
    helper.lpfnWndProc = HelperProcedure;
    RegisterClassA(&helper);
    HWND window = CreateWindowExA(0, helper.lpszClassName, "", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                  nullptr, nullptr);
    PostMessageA(window, pressOk, 0, 0);
    return window;
}

// Handles messages until the window has been closed.
void WaitForEnd(HWND window)
{
    MSG message{};
    while (IsWindow(window) && GetMessageA(&message, nullptr, 0, 0) > 0) {
        if (VARK_IsMessage(reinterpret_cast<VarkMessage *>(&message)) != 0) continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

// ---- Steps ----

// How many accounts the report may come to; for the progress alone, so what cannot be known is nothing.
int64_t CountAccounts(const tools::Mandant &mandant, int32_t kind)
{
    const vark::TableId table = kind == 1 ? vark::TableSako : kind == 2 ? vark::TableKred : vark::TableDebi;
    try {
        const auto directory = tools::ConfiguredDataPath() / mandant.Directory(mandant.UpperYear);
        return tools::TableFile(tools::LayoutOf(table), directory, tools::OpenMode::ReadOnly)
            .Definition()
            .Records;
    } catch (const tools::EngineError &) {
        return 0;
    }
}

int Complain(int exitCode, const std::string &text)
{
    std::fprintf(stderr, "vark: %s\n", text.c_str());
    return exitCode;
}

// Brings the view where it is wanted.
int Deliver(const ReportOptions &options, VarkWindow view, ReportProgress &progress)
{
    progress.Write();
    if (!options.Target.empty() && RSExportView(view, options.Target.c_str()) == 0) {
        progress.Stop();
        return Complain(tools::ExitFailure, options.Target.string() + " läßt sich nicht schreiben.");
    }
    progress.Stop();
    // Where a person was asked, the printer was chosen there or not at all.
    const bool prints = options.Prints && !options.Asks;
    const bool wantsText = options.IsText || (options.Target.empty() && !options.Shows && !prints);
    if (wantsText && !PrintText(view))
        return Complain(tools::ExitFailure, "Der Bericht läßt sich nicht als Text schreiben.");
    // The export could print as well, but tells nobody whether the printer took it.
    if (prints && RSPrintView(view, 0) == 0)
        return Complain(tools::ExitFailure, "Der Bericht wurde nicht gedruckt.");
    if (options.Shows && !IsWindow(static_cast<HWND>(view)))
        return Complain(tools::ExitFailure, "Der Bericht läßt sich nicht anzeigen.");
    if (options.Shows) WaitForEnd(static_cast<HWND>(view));
    return tools::ExitGood;
}

int Make(const ReportOptions &options, ReportParams &params, const tools::Mandant &mandant)
{
    ReportProgress progress("Summen- und Saldenliste", CountAccounts(mandant, params.KontoArt),
                            RSRecordsTaken);
    const std::string asked = params.BisDatum;
    const uint32_t visible = options.Shows ? WS_VISIBLE : 0;
    VARK_InitReports(WS_OVERLAPPEDWINDOW | visible, 0, "Summen- und Saldenliste", nullptr);
    HWND helper = options.Shows && !options.Asks ? AnswerNextDialog() : nullptr;
    VarkWindow view = VARK_SummenSaldenListe(options.Mandant, nullptr, &params);
    if (helper != nullptr) DestroyWindow(helper);
    if (view == nullptr) {
        progress.Stop();
        // A person may have chosen the printer in the dialog.
        if (params.ViewResult == 1) return tools::ExitGood;
        return Complain(tools::ExitRefused, "Der Bericht wurde nicht erstellt.");
    }
    int exitCode = tools::ExitRefused;
    if (!options.Asks && !asked.empty() && asked != params.BisDatum) {
        // The report's dialog moves a date to a bookable year, which is seen only by a person who is asked.
        progress.Stop();
        Complain(exitCode, "Das Datum muß innerhalb der bebuchbaren Geschäftsjahre liegen!");
    } else {
        exitCode = Deliver(options, view, progress);
    }
    if (IsWindow(static_cast<HWND>(view))) DestroyWindow(static_cast<HWND>(view));
    return exitCode;
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
        return Complain(tools::ExitUsage, error.what());
    }
    const auto mandant = tools::FindMandant(tools::ConfiguredDataPath(), options.Mandant);
    if (!mandant) return Complain(tools::ExitRefused, "Der Mandant existiert nicht!");
    if (options.NeedsScreen() && VarkUiHasUser() == FALSE)
        return Complain(tools::ExitFailure, "Für Dialog und Anzeige fehlt ein Bildschirm.");
    return Make(options, params, *mandant);
}

} // namespace cli
