#include "tools/vark/report_commands.h"

#include "tools/vark/common_options.h"
#include "tools/vark/suggestions.h"

namespace cli {

using tools::Command;
using tools::Named;
using tools::Option;

namespace {

// The options by which a period is named, with `prefix` before each.
Options PeriodOptions(unsigned forms, PeriodText &period, const std::string &prefix)
{
    const bool isCompared = prefix != "--";
    Options options;
    const auto add = [&](unsigned form, const char *name, std::string &value, const char *help,
                         tools::Suggest words = {}) {
        if ((forms & form) == 0) return;
        options.push_back({.Name = prefix + name,
                           .Help = isCompared ? "dasselbe zum Vergleich" : help,
                           .To = &value,
                           .Suggestions = std::move(words)});
    };
    const bool isCalendar = (forms & PeriodCalendar) != 0;
    add(PeriodMonth, "monat", period.Monat, "Kalendermonat 1 bis 12 von --jahr",
        OfferWords({"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12"}));
    add(PeriodQuarter, "quartal", period.Quartal,
        isCalendar ? "Kalendervierteljahr 1 bis 4 von --jahr" : "Vierteljahr 1 bis 4 des Geschäftsjahrs",
        OfferWords({"1", "2", "3", "4"}));
    add(PeriodYear, "jahr", period.Jahr,
        isCalendar ? "Kalenderjahr, allein oder zu --monat und --quartal"
        : (forms & PeriodMonth) != 0
            ? "Geschäftsjahr, nach dem Jahr, in dem es beginnt; zu --monat das Kalenderjahr"
            : "Geschäftsjahr, nach dem Jahr, in dem es beginnt",
        OfferJahre());
    add(PeriodDays, "von-datum", period.VonDatum, "erster Tag, TT.MM.JJJJ");
    add(PeriodDays, "bis-datum", period.BisDatum, "letzter Tag");
    add(PeriodPer, "per", period.Per, "letzter Tag, TT.MM.JJJJ");
    return options;
}

Options RangeOptions(const ReportRow &row, RangeText &range)
{
    const tools::Suggest konten = OfferKonten(row.Kontoarten);
    return {
        {.Name = "--art",
         .Help = "Art der Konten: " + KindNames(row.Kontoarten),
         .To = &range.Art,
         .Suggestions = OfferKontoarten(row.Kontoarten)},
        {.Name = "--von",
         .Help = "erstes Konto, nach Nummer oder Kürzel",
         .To = &range.Von,
         .Suggestions = konten},
        {.Name = "--bis", .Help = "letztes Konto", .To = &range.Bis, .Suggestions = konten},
        {.Name = "--konto", .Help = "nur dieses Konto", .To = &range.Konto, .Suggestions = konten},
    };
}

// An option that only this report has; what its value may be is judged where its dialog is filled in.
Option OwnOptionOf(ReportOptions &report, const OwnOption &own)
{
    const bool isTick = own.Use == ControlUse::Tick || own.Use == ControlUse::Untick;
    std::vector<std::string> words;
    if (isTick) words = {"ja", "nein"};
    for (const ChoiceWord &choice : own.Choices) {
        words.emplace_back(choice.Word);
    }
    return {.Name = own.Name,
            .Help = own.Help,
            .To = [&report, &own](const std::string &value) { report.Own[own.Name] = value; },
            .IsValueOptional = isTick,
            .Suggestions = OfferWords(std::move(words))};
}

Options ReportOutputs(const ReportRow &row, ReportOptions &report)
{
    Options options;
    for (const char *kind : {"pdf", "csv", "json", "html"}) {
        const auto addTarget = [&report, kind](const std::string &path) {
            report.Targets.push_back({kind, path.empty() ? "-" : path});
        };
        options.push_back({.Name = std::string("--") + kind,
                           .Help = "in diese Datei; ohne Namen auf die Standardausgabe",
                           .To = addTarget,
                           .IsValueOptional = true,
                           .Names = Named::File});
    }
    const auto addText = [&report] { report.Targets.push_back({"txt", "-"}); };
    Append(
        options,
        {
            {.Name = "--text", .Help = "als Text, wie auch ohne Angabe", .To = addText},
            {.Name = "--anzeigen", .Help = "in einem Fenster, bis es geschlossen wird", .To = &report.Shows},
            {.Name = "--drucken",
             .Help = "auf dem Drucker",
             .To = &report.Prints,
             .Excludes = {"--anzeigen"}},
        });
    if (row.LocksPeriod) {
        options.push_back({.Name = "--sperren",
                           .Help = "zu --drucken: Danach ist der Zeitraum gesperrt",
                           .To = &report.Locks});
    }
    options.push_back(
        {.Name = "--dialog", .Help = "vorher im Dialog des Berichts fragen", .To = &report.Asks});
    return options;
}

Command ReportCommand(ReportOptions &report, const ReportRow &row)
{
    Options options = {MandantOption(report.Mandant)};
    Append(options, PeriodOptions(row.Periods, report.Period, "--"));
    if (row.Periods != PeriodNone) {
        options.push_back({.Name = "--archiv",
                           .Help = "aus den Büchern dieses Archivjahrs",
                           .To = &report.Archive,
                           .Suggestions = OfferJahre()});
    }
    if (row.IsCompared) Append(options, PeriodOptions(row.Periods, report.Compared, "--vergleich-"));
    if (row.Kontoarten != 0) Append(options, RangeOptions(row, report.Range));
    for (const OwnOption &own : row.Options) {
        options.push_back(OwnOptionOf(report, own));
    }
    Append(options, ReportOutputs(row, report));
    return {
        .Name = row.Name,
        .Description = row.Title,
        .Options = options,
        .Examples = {"vark bericht " + std::string(row.Name) + " --mandant 1 " + row.Example},
        .Run =
            [&report, &row] {
                report.Report = &row;
                return MakeReport(report);
            },
    };
}

} // namespace

Command ReportCommands(ReportOptions &report)
{
    Command command = {
        .Name = "bericht",
        .Description = "Berichte als Text oder Datei, im Fenster, auf dem Drucker",
        .Examples = {"vark bericht susa --mandant 1 --per 31.3.98",
                     "vark bericht bilanz --mandant 1 --jahr 1998 --pdf bilanz.pdf --csv bilanz.csv"},
    };
    for (const ReportRow &row : ReportTable()) {
        command.Commands.push_back(ReportCommand(report, row));
    }
    return command;
}

} // namespace cli
