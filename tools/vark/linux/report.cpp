#include "tools/vark/report.h"

#include "report-engine/include/rs.h"
#include "tools/common/exit_codes.h"
#include "tools/common/installation.h"
#include "tools/common/texts.h"
#include "tools/vark/kontoart.h"
#include "tools/vark/played_dialog.h"
#include "tools/vark/reasons.h"
#include "tools/vark/report_progress.h"
#include "window-system/include/varkui.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace cli {

using namespace tools;

namespace {

// Controls of the dialogs that have a period to compare with.
constexpr const char *compareBox = "1046";
constexpr const char *pageTabs = "1044";

constexpr const char *viewClass = "rsView"; // of the report engine

// ---- What was asked for ----

int ReadArchive(const std::string &text)
{
    if (text.empty()) return 0;
    int year = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), year);
    if (error == std::errc() && rest == text.data() + text.size() && year >= 1980 && year < 2080) return year;
    throw UsageError("--archiv: „" + text + "“ ist keine Jahreszahl mit vier Ziffern.");
}

const ChoiceWord &ChoiceOf(const OwnOption &option, const std::string &value)
{
    std::string known;
    for (const ChoiceWord &choice : option.Choices) {
        if (Lower(value) == choice.Word) return choice;
        if (!known.empty()) known += &choice == &option.Choices.back() ? " oder " : ", ";
        known += choice.Word;
    }
    throw UsageError(std::string(option.Name) + ": „" + value + "“ statt " + known + ".");
}

// A check box is ticked by its option, or by "ja"; "nein" means the other state.
bool IsTicked(const OwnOption &option, const std::string &value)
{
    if (value.empty() || Lower(value) == "ja") return option.Use == ControlUse::Tick;
    if (Lower(value) == "nein") return option.Use == ControlUse::Untick;
    throw UsageError(std::string(option.Name) + ": „" + value + "“ statt ja oder nein.");
}

// What is typed as it stands.
std::string TypedText(const OwnOption &option, const std::string &value)
{
    std::string text(Trimmed(value));
    if (text.empty() || Columns(text) > option.MostCharacters)
        throw UsageError(std::string(option.Name) + ": „" + value + "“ hat nicht 1 bis " +
                         std::to_string(option.MostCharacters) + " Zeichen.");
    if (Printable(text) != text || text.starts_with('"'))
        throw UsageError(std::string(option.Name) +
                         ": Der Wert enthält Zeichen, die es in den Büchern nicht gibt.");
    return text;
}

void PlayOption(const OwnOption &option, const std::string &value, PlayedDialog &dialog)
{
    const auto control = [](int number) { return std::to_string(number); };
    switch (option.Use) {
    case ControlUse::Choose:
        dialog.Add("check " + control(ChoiceOf(option, value).Control), option.Name);
        break;
    case ControlUse::Type:
        dialog.Add("text " + control(option.Control) + " " + TypedText(option, value), option.Name);
        break;
    case ControlUse::Tick:
    case ControlUse::Untick:
        dialog.Add((IsTicked(option, value) ? "check " : "uncheck ") + control(option.Control), option.Name);
        break;
    }
}

// What one run of a report works with.
struct Order {
    const ReportOptions &Options;
    const ReportRow &Report;
    Mandant Of;
    ReportPeriod Period;
    ReportParams Params{};
    PlayedDialog Dialog;

    Order(const ReportOptions &options, const Mandant &mandant)
        : Options(options), Report(*options.Report), Of(mandant), Dialog(Report.Dialog)
    {}
};

void FillPeriods(Order &order)
{
    const ReportOptions &options = order.Options;
    const int archive = ReadArchive(options.Archive);
    if (archive != 0) {
        order.Params.ParamFlags |= VARK_PARAM_ARCHIVJAHR;
        order.Params.ArchivJahr = archive;
    }
    order.Period = ReadPeriod(options.Period, {order.Report.Periods, order.Of, archive, "--"});
    PutPeriod(order.Period, order.Params);
    const ReportPeriod compared =
        ReadPeriod(options.Compared, {order.Report.Periods, order.Of, archive, "--vergleich-"});
    if (!compared.IsGiven) return;
    order.Dialog.Add(std::string("check ") + compareBox, compared.Option);
    order.Dialog.Add(std::string("select ") + pageTabs + " 1",
                     order.Period.IsGiven ? order.Period.Option : "");
    PlayPeriod(compared, order.Dialog);
}

// Whether the export prints by itself: where the print has consequences, or where a person is asked.
bool PrintsInExport(const Order &order)
{
    return order.Options.Prints && (order.Options.Asks || order.Report.LocksPeriod);
}

void FillOutput(Order &order)
{
    const ReportOptions &options = order.Options;
    if (order.Report.LocksPeriod && options.Prints && !options.Asks && !options.Locks)
        throw UsageError(
            "--drucken sperrt danach den Zeitraum für weitere Buchungen; das will --sperren dazu.");
    if (options.Locks && !options.Prints) throw UsageError("Die Angabe --sperren gibt es nur mit --drucken.");
    if (!PrintsInExport(order)) return;
    order.Params.ParamFlags |= VARK_PARAM_AUSGABE;
    order.Params.Ausgabe = VARK_AUSGABE_DRUCKER;
    if (options.Asks) return;
    order.Dialog.Add("press 1", "--drucken");
    order.Dialog.Add("box yes gesperrt", "--sperren");
}

void Fill(Order &order)
{
    FillPeriods(order);
    PutRange(order.Options.Range, order.Report, order.Options.Mandant, order.Params);
    for (const OwnOption &option : order.Report.Options) {
        const auto given = order.Options.Own.find(option.Name);
        if (given != order.Options.Own.end()) PlayOption(option, given->second, order.Dialog);
    }
    FillOutput(order);
}

// ---- Making it ----

vark::TableId CountedTable(const Order &order)
{
    const int32_t kind = order.Params.KontoArt;
    switch (order.Report.Progress) {
    case Counted::OpenItemsOfKind: return kind == ArtDebitor ? vark::TableOpdebi : vark::TableOpkred;
    case Counted::AccountsOfKind:
        return kind == ArtKostenstelle ? vark::TableKore
               : kind == ArtDebitor    ? vark::TableDebi
               : kind == ArtKreditor   ? vark::TableKred
                                       : vark::TableSako;
    case Counted::Table: break;
    }
    return order.Report.Table;
}

// How many records the report may come to; for the progress alone, so what cannot be known is nothing.
int64_t CountRecords(const Order &order)
{
    try {
        const auto directory = ConfiguredDataPath() / order.Of.Directory(order.Of.UpperYear);
        return TableFile(LayoutOf(CountedTable(order)), directory, OpenMode::ReadOnly).Definition().Records;
    } catch (const EngineError &) {
        return 0;
    }
}

// The view of a report: the window itself, or where the report lives in a frame, the one inside.
VarkWindow ViewIn(VarkWindow window)
{
    const auto isView = [](HWND each) {
        char name[32] = "";
        GetClassNameA(each, name, sizeof name);
        return std::strcmp(name, viewClass) == 0;
    };
    HWND outer = static_cast<HWND>(window);
    if (isView(outer)) return window;
    for (HWND each = GetWindow(outer, GW_CHILD); each != nullptr; each = GetWindow(each, GW_HWNDNEXT)) {
        if (isView(each)) return each;
    }
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

// The window of a report while it is used.
struct ShownReport {
    HWND Window;

    ~ShownReport()
    {
        if (IsWindow(Window)) DestroyWindow(Window);
    }
};

// Why nothing came of the report. `unfit` is the option that its dialog did not take, `said` what the library
// has said in boxes.
Refusal WhyNot(const Order &order, const std::string &unfit, const std::string &said)
{
    const auto speaksOf = [&said](const char *word) { return said.find(word) != std::string::npos; };
    // The dialog sets its insertion mark into the field that lacks something.
    if (speaksOf("Einfügemarke"))
        return Refusal("Dem Bericht fehlt eine Angabe (vark bericht " + std::string(order.Report.Name) +
                       " --hilfe).");
    if (speaksOf("Mindestumsatz")) return Refusal("--mindestumsatz: " + said);
    if (speaksOf("Datum") && order.Period.IsGiven) return Refusal(order.Period.Option + ": " + said);
    if (!said.empty()) return Refusal(said);
    if (!unfit.empty()) return Refusal(unfit + ": Diese Wahl bietet der Bericht hier nicht an.");
    return Refusal(order.Report.Title + std::string(" wurde nicht erstellt."));
}

// Runs the export. Its window; null for a report that was printed. What it refused is thrown.
VarkWindow RunExport(Order &order)
{
    const ReportOptions &options = order.Options;
    ReasonCatcher catcher;
    ReportProgress progress(order.Report.Title, CountRecords(order), RSRecordsTaken, catcher.Real());
    const uint32_t visible = options.Shows ? WS_VISIBLE : 0;
    VARK_InitReports(WS_OVERLAPPEDWINDOW | visible, 0, FromUtf8(order.Report.Title).c_str(), nullptr);
    order.Dialog.Begin(!options.Asks);
    VarkWindow window = order.Report.Make(options.Mandant, &order.Params);
    const std::string unfit = order.Dialog.End();
    progress.Stop();
    const std::string said = catcher.Take();
    if (window == nullptr && order.Params.ViewResult == 0) throw WhyNot(order, unfit, said);
    if (window == nullptr && PrintsInExport(order) && !said.empty()) catcher.Pass("vark: " + said + "\n");
    return window;
}

// Brings the view where it is wanted.
void Deliver(const Order &order, HWND window)
{
    const ReportOptions &options = order.Options;
    VarkWindow view = ViewIn(window);
    {
        ReportProgress progress(order.Report.Title, 0, [] { return int64_t{0}; });
        progress.Write();
        for (const ReportTarget &target : options.Targets) {
            WriteTarget(view, target);
        }
    }
    if (options.Targets.empty() && !options.Shows && !options.Prints) WriteTarget(view, {"txt", "-"});
    // A person chose the printer in the dialog or not at all.
    if (options.Prints && !PrintsInExport(order)) {
        ReasonCatcher catcher;
        if (RSPrintView(view, 0) == 0) {
            const std::string said = catcher.Take();
            throw std::runtime_error("Der Bericht wurde nicht gedruckt." + (said.empty() ? "" : " " + said));
        }
    }
    if (options.Prints && PrintsInExport(order) && options.Targets.empty() && !options.Shows)
        WriteTarget(view, {"txt", "-"}); // the person took the screen instead
    if (!options.Shows) return;
    if (!IsWindow(window)) throw std::runtime_error("Der Bericht läßt sich nicht anzeigen.");
    WaitForEnd(window);
}

} // namespace

int MakeReport(const ReportOptions &options)
{
    CheckTargets(options.Targets);
    NeedLibrary();
    const auto mandant = FindMandant(ConfiguredDataPath(), options.Mandant);
    if (!mandant) throw Refusal("--mandant: Der Mandant existiert nicht!");
    Order order(options, *mandant);
    Fill(order);
    if (options.NeedsScreen() && VarkUiHasUser() == FALSE)
        throw std::runtime_error("Für Dialog und Anzeige fehlt ein Bildschirm.");
    const ReportParams asked = order.Params;
    const ShownReport shown{static_cast<HWND>(RunExport(order))};
    if (shown.Window == nullptr) return ExitGood; // printed
    // The report's dialog moves a date to a bookable year, which is seen only by a person who is asked.
    if (!options.Asks && !IsPeriodKept(order.Period, order.Report.Periods, order.Params))
        throw Refusal(order.Period.Option + ": Diesen Zeitraum gibt es in den Büchern nicht.");
    if (!options.Asks && order.Report.Kontoarten != 0 && options.Archive.empty()) {
        const std::string empty = TellEmptyRange(options.Mandant, asked);
        if (!empty.empty()) std::fprintf(stderr, "vark: %s\n", empty.c_str());
    }
    Deliver(order, shown.Window);
    return ExitGood;
}

} // namespace cli
