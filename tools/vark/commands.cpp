#include "tools/vark/commands.h"

#include "tools/vark/kontoart.h"
#include "tools/vark/mandanten.h"
#include "tools/vark/status.h"

namespace cli {

using tools::Command;
using tools::Named;
using tools::Option;

namespace {

constexpr const char *splitNotes =
    "Ein Teil nennt SOLL;HABEN;BETRAG;TEXT;SATZ;STEUER;SCHABLONE. Was er leer läßt, kommt aus den übrigen\n"
    "Angaben. Alle Teile haben dasselbe Sollkonto oder dasselbe Habenkonto.\n"
    "Die Datei hat die Spalten von vark buchen und nach Wunsch Kennzeichen. Zeilen, die mit demselben Datum\n"
    "und Beleg aufeinander folgen, sind eine Splitbuchung; sie wird ganz gebucht oder gar nicht.";

constexpr const char *partnerNotes =
    "Ohne --konto bekommt ein neues Konto die nächste freie Nummer. Beim Ändern bleibt, was nicht genannt\n"
    "wird; ein Strich (-) leert ein Feld. Die Datei hat die Spalten, die vark konten --csv ausgibt, oder\n"
    "einige davon.";

constexpr const char *rateNotes =
    "Erfaßt und gelöscht wird im Dialog der Fremdwährungsverwaltung, den vark dazu unsichtbar bedient: Es\n"
    "gelten dieselben Prüfungen.";

constexpr const char *bookingNotes =
    "Die Datei (oder mit --datei - die Standardeingabe) ist mit Semikolon getrennt, UTF-8 oder "
    "Windows-1252.\n"
    "Ihre erste Zeile nennt die Spalten in beliebiger Folge: Datum, Sollkonto, Habenkonto und Betrag, dazu "
    "nach\n"
    "Wunsch Mandant, Stapel, Beleg, Text, Sollart, Habenart, Steuersatz, Steuerbetrag, Kostenschablone,\n"
    "Zahlungsziel. Was eine Zeile leer läßt, kommt aus den Angaben hier. Werte mit Semikolon stehen in\n"
    "Anführungszeichen; ein Wert geht nie über sein Zeilenende. Leere Zeilen und solche mit # zählen nicht.\n"
    "Jede Zeile wird für sich gebucht: Eine abgelehnte hält keine andere auf.";

const std::vector<std::string> partnerExamples = {
    "vark peko neu --mandant 1 --art Debitor --kuerzel ADLER --name \"Adler & Co\" --plz 20095 --ort "
    "Hamburg",
    "vark peko aendern --mandant 1 --art Debitor --konto 10010 --ort Bremen --zahlungsziel -",
    "vark peko loeschen --mandant 1 --art Kreditor --kuerzel SPEDNORD",
    "vark konten --mandant 1 --art Debitor --csv | vark peko aendern --mandant 1 --art Debitor --datei -",
};

using Options = std::vector<Option>;

void Append(Options &options, const Options &more)
{
    options.insert(options.end(), more.begin(), more.end());
}

tools::Output FormOf(const Given &given)
{
    return given.IsJson ? tools::Output::Json : given.IsCsv ? tools::Output::Csv : tools::Output::Table;
}

Option Mandant(int &number)
{
    return {.Name = "--mandant", .Help = "Nummer des Mandanten", .To = &number, .IsRequired = true};
}

Options Forms(Given &given)
{
    return {
        {.Name = "--csv", .Help = "Ausgabe als CSV", .To = &given.IsCsv},
        {.Name = "--json", .Help = "Ausgabe für Programme", .To = &given.IsJson, .Excludes = {"--csv"}},
    };
}

// What comes as one piece of work or as a file of them.
Options TaskFiles(Given &given, TaskOptions &task)
{
    Options options = {
        {.Name = "--datei",
         .Help = "aus dieser CSV-Datei, - für die Standardeingabe",
         .To = &task.File,
         .Names = Named::File},
        {.Name = "--abgelehnt",
         .Help = "abgelehnte Zeilen mit Grund in diese CSV-Datei",
         .To = &task.Rejections,
         .Names = Named::File},
        {.Name = "--leise", .Help = "keine Zusammenfassung", .To = &task.IsQuiet},
    };
    Append(options, Forms(given));
    return options;
}

// ---- Overviews ----

Command Status(Given &given)
{
    return {
        .Name = "status",
        .Description = "Zustand der Bibliothek und Liste der Mandanten",
        .Options = {{.Name = "--json", .Help = "Ausgabe für Programme", .To = &given.IsJson}},
        .Examples = {"vark --config /tmp/beispiel status"},
        .Run = [&given] { return ShowStatus(given.IsJson); },
    };
}

Command Mandanten(Given &given)
{
    return {
        .Name = "mandanten",
        .Description = "Liste der Mandanten",
        .Options = Forms(given),
        .Examples = {"vark mandanten --csv"},
        .Run = [&given] { return ShowMandanten(FormOf(given)); },
    };
}

// ---- Booking ----

Options BookingFields(Given &given, BookingText &text, TaskOptions &task)
{
    Options options = {
        {.Name = "--mandant", .Help = "Nummer des Mandanten", .To = &text.Mandant},
        {.Name = "--stapel", .Help = "Nummer des Stapels", .To = &text.Stapel},
        {.Name = "--datum", .Help = "Belegdatum, TT.MM.JJJJ", .To = &text.Datum},
        {.Name = "--beleg", .Help = "Belegnummer, bis 8 Zeichen", .To = &text.Beleg},
        {.Name = "--text", .Help = "Buchungstext, bis 35 Zeichen", .To = &text.Text},
        {.Name = "--soll", .Help = "Sollkonto", .To = &text.Sollkonto},
        {.Name = "--soll-art",
         .Help = "Sachkonto, Kreditor oder Debitor; sonst nach der Nummer",
         .To = &text.Sollart},
        {.Name = "--haben", .Help = "Habenkonto", .To = &text.Habenkonto},
        {.Name = "--haben-art", .Help = "wie --soll-art", .To = &text.Habenart},
        {.Name = "--betrag", .Help = "Bruttobetrag", .To = &text.Betrag},
        {.Name = "--satz", .Help = "Steuersatz; sonst der des Kontos", .To = &text.Steuersatz},
        {.Name = "--steuer", .Help = "Steuerbetrag; sonst aus dem Satz errechnet", .To = &text.Steuerbetrag},
        {.Name = "--schablone", .Help = "Nummer der Kostenschablone", .To = &text.Kostenschablone},
        {.Name = "--zahlungsziel", .Help = "Nummer; sonst das des Personenkontos", .To = &text.Zahlungsziel},
    };
    Append(options, TaskFiles(given, task));
    return options;
}

Command Buchen(Given &given)
{
    BookingOptions &booking = given.Booking;
    return {
        .Name = "buchen",
        .Description = "Eine Buchung oder viele aus einer Datei in einen Stapel schreiben",
        .Options = BookingFields(given, booking.Defaults, booking.Task),
        .Examples = {"vark buchen --mandant 1 --stapel 16 --datum 15.03.1998 --beleg RE4711 \\\n"
                     "      --soll 10010 --haben 5010 --betrag 1.160,00 --text \"Schreibtische\"",
                     "vark buchen --mandant 1 --stapel 16 --datei buchungen.csv --abgelehnt fehler.csv"},
        .Notes = bookingNotes,
        .Run =
            [&given] {
                given.Booking.Task.As = FormOf(given);
                return Book(given.Booking);
            },
    };
}

Command Split(Given &given)
{
    SplitOptions &split = given.Split;
    Options options = BookingFields(given, split.Defaults, split.Task);
    Append(options, {
                        {.Name = "--kennzeichen", .Help = "0 bis 255", .To = &split.Defaults.Kennzeichen},
                        {.Name = "--teil", .Help = "eine Teilbuchung; für jede einmal", .To = &split.Parts},
                    });
    return {
        .Name = "split",
        .Description = "Splitbuchungen in einen Stapel schreiben",
        .Options = options,
        .Examples = {"vark split --mandant 1 --stapel 16 --datum 15.03.1998 --beleg RE4712 --haben 1840 \\\n"
                     "      --teil \"8010;;1.000,00;Miete Kontor\" --teil \"8020;;120,50;Heizung\"",
                     "vark split --mandant 1 --stapel 16 --datei split.csv"},
        .Notes = splitNotes,
        .Run =
            [&given] {
                given.Split.Task.As = FormOf(given);
                return BookSplit(given.Split);
            },
    };
}

Command Stapel(Given &given)
{
    BatchOptions &batch = given.Batch;
    Options options = {
        Mandant(batch.Mandant),
        {.Name = "STAPEL", .Help = "Nummer des Stapels; ohne sie die Liste", .To = &batch.Number},
        {.Name = "--kosten", .Help = "mit den Kostenzeilen", .To = &batch.WithCosts},
    };
    Append(options, Forms(given));
    return {
        .Name = "stapel",
        .Description = "Inhalt eines Stapels, oder die Liste aller Stapel",
        .Options = options,
        .Examples = {"vark stapel --mandant 1", "vark stapel --mandant 1 16 --kosten"},
        .Run =
            [&given] {
                given.Batch.As = FormOf(given);
                return ShowBatch(given.Batch);
            },
    };
}

// ---- Personal accounts ----

Options PartnerFields(PartnerText &text)
{
    return {
        {.Name = "--name", .Help = "Name, bis 25 Zeichen", .To = &text.Name},
        {.Name = "--name2", .Help = "zweiter Name", .To = &text.Name2},
        {.Name = "--strasse", .Help = "Straße", .To = &text.Strasse},
        {.Name = "--plz", .Help = "Postleitzahl", .To = &text.Plz},
        {.Name = "--ort", .Help = "Ort", .To = &text.Ort},
        {.Name = "--land", .Help = "Länderkennzeichen; sonst das des Mandanten", .To = &text.Land},
        {.Name = "--ustid", .Help = "USt-IdNr", .To = &text.UstId},
        {.Name = "--waehrung", .Help = "Währung, nur bei Kreditoren", .To = &text.Waehrung},
        {.Name = "--blz", .Help = "Bankleitzahl, nur mit --bankkonto", .To = &text.Blz},
        {.Name = "--bankkonto", .Help = "Bankkontonummer, nur mit --blz", .To = &text.Bankkonto},
        {.Name = "--bank", .Help = "Name der Bank", .To = &text.Bank},
        {.Name = "--gegenkonto", .Help = "ein Sachkonto", .To = &text.Gegenkonto},
        {.Name = "--wert1", .Help = "erster Zahlungswert", .To = &text.Wert1},
        {.Name = "--wert2", .Help = "zweiter Zahlungswert", .To = &text.Wert2},
        {.Name = "--skonto", .Help = "Skonto in Prozent", .To = &text.Skonto},
        {.Name = "--mahnkennziffer", .Help = "-1 bis 3, nur bei Debitoren", .To = &text.Mahnkennziffer},
        {.Name = "--zahlungsziel", .Help = "Nummer des Zahlungsziels", .To = &text.Zahlungsziel},
    };
}

Command PartnerCommand(Given &given, const char *name, const char *description, PartnerAction action)
{
    PartnerOptions &partner = given.Partner;
    PartnerText &text = partner.Defaults;
    Options options = {
        Mandant(partner.Mandant),
        {.Name = "--art", .Help = "Debitor oder Kreditor", .To = &partner.Kind, .IsRequired = true},
        {.Name = "--konto", .Help = "Kontonummer", .To = &text.Konto},
        {.Name = "--kuerzel", .Help = "Kürzel, bis 8 Zeichen", .To = &text.Kuerzel},
    };
    if (action != PartnerAction::Delete) Append(options, PartnerFields(text));
    Append(options, TaskFiles(given, partner.Task));
    return {
        .Name = name,
        .Description = description,
        .Options = options,
        .Examples = partnerExamples,
        .Notes = partnerNotes,
        .Run =
            [&given, action] {
                given.Partner.Action = action;
                given.Partner.Task.As = FormOf(given);
                return KeepPartners(given.Partner);
            },
    };
}

Command Peko(Given &given)
{
    return {
        .Name = "peko",
        .Description = "Debitoren und Kreditoren anlegen, ändern, löschen",
        .Commands =
            {
                PartnerCommand(given, "neu", "Debitoren und Kreditoren anlegen", PartnerAction::New),
                PartnerCommand(given, "aendern", "An Debitoren und Kreditoren ändern, was genannt wird",
                               PartnerAction::Change),
                PartnerCommand(given, "loeschen", "Debitoren und Kreditoren löschen", PartnerAction::Delete),
            },
        .Examples = partnerExamples,
        .Notes = partnerNotes,
    };
}

// ---- Choosing ----

Command Waehlen(Given &given)
{
    PickOptions &pick = given.Pick;
    return {
        .Name = "waehlen",
        .Description = "Im Dialog auswählen lassen und die Nummer ausgeben",
        .Options =
            {
                {.Name = "WAS",
                 .Help = "mandant, stapel, konto, zahlungsziel oder kostenschablone",
                 .To = &pick.What,
                 .IsRequired = true,
                 .Words = {"mandant", "stapel", "konto", "zahlungsziel", "kostenschablone"}},
                {.Name = "--mandant",
                 .Help = "Nummer des Mandanten, sonst 1",
                 .To = &pick.Mandant,
                 .Lowest = 1,
                 .Highest = INT16_MAX},
                {.Name = "--art",
                 .Help = "bei konto: Sachkonto (sonst), Kreditor, Debitor oder Kostenstelle",
                 .To = &pick.Kontoart},
                {.Name = "--von", .Help = "bei konto: kleinste Nummer", .To = &pick.From},
                {.Name = "--bis", .Help = "bei konto: größte Nummer", .To = &pick.To},
                {.Name = "--verwalten",
                 .Help = "bei stapel: alle, auch zum Anlegen, Ändern und Löschen",
                 .To = &pick.Manages},
            },
        .Examples = {"vark waehlen mandant", "vark waehlen konto --mandant 1 --art Debitor"},
        .Run = [&pick] { return cli::Pick(pick); },
    };
}

// ---- Asking ----

// A command that asks for something of a Mandant.
Command Query(Given &given, int &mandant, Command command)
{
    Options options = {Mandant(mandant)};
    Append(options, Forms(given));
    Append(options, command.Options);
    command.Options = std::move(options);
    command.Run = [&given, run = std::move(command.Run)] {
        given.Query.As = given.Accounts.As = FormOf(given);
        return run();
    };
    return command;
}

Command Konten(Given &given)
{
    AccountOptions &listed = given.Accounts;
    return Query(
        given, listed.Mandant,
        {
            .Name = "konten",
            .Description = "Konten auflisten",
            .Options =
                {
                    {.Name = "KONTO", .Help = "nur dieses, nach Nummer oder Kürzel", .To = &listed.Single},
                    {.Name = "--art",
                     .Help = "Sachkonto, Debitor, Kreditor oder Kostenstelle; sonst die ersten drei",
                     .To = &listed.Kind},
                    {.Name = "--von", .Help = "ab dieser Nummer", .To = &listed.From},
                    {.Name = "--bis", .Help = "bis zu dieser Nummer", .To = &listed.To},
                    {.Name = "--nach",
                     .Help = "Nummer (sonst) oder Kürzel: Reihenfolge, und was --von meint",
                     .To = &listed.Order},
                },
            .Examples = {"vark konten --mandant 1 --art Debitor --von 10100 --bis 10200",
                         "vark konten --mandant 1 --nach Kürzel --von B --bis D --csv",
                         "vark konten --mandant 1 BERGENKO"},
            .Run = [&listed] { return ListAccounts(listed); },
        });
}

Command KontoFrei(Given &given)
{
    QueryOptions &query = given.Query;
    return Query(
        given, query.Mandant,
        {
            .Name = "konto-frei",
            .Description = "Die nächste freie Nummer",
            .Options =
                {{.Name = "--art", .Help = "Kreditor oder Debitor", .To = &query.Kind, .IsRequired = true}},
            .Examples = {"vark konto-frei --mandant 1 --art Kreditor"},
            .Run = [&query] { return ShowFreeNumber(query); },
        });
}

Command Saldo(Given &given)
{
    QueryOptions &query = given.Query;
    return Query(
        given, query.Mandant,
        {
            .Name = "saldo",
            .Description = "Salden von Konten",
            .Options =
                {
                    {.Name = "KONTO",
                     .Help = "Kontonummern oder Kürzel",
                     .To = &query.Konten,
                     .IsRequired = true},
                    {.Name = "--art",
                     .Help = "Sachkonto, Kreditor, Debitor, Kostenstelle; sonst nach der Nummer",
                     .To = &query.Kind},
                },
            .Examples = {"vark saldo --mandant 1 1840", "vark saldo --mandant 1 1840 10010 BERGENKO --csv"},
            .Run = [&query] { return ShowBalances(query); },
        });
}

Command Journal(Given &given)
{
    QueryOptions &query = given.Query;
    return Query(given, query.Mandant,
                 {
                     .Name = "journal",
                     .Description = "Endgültige Buchungen eines Geschäftsjahrs",
                     .Options = {{.Name = "--ab",
                                  .Help = "ab diesem Tag; er bestimmt auch das Geschäftsjahr",
                                  .To = &query.From,
                                  .IsRequired = true}},
                     .Examples = {"vark journal --mandant 1 --ab 1.1.97 --csv | head"},
                     .Run = [&query] { return ShowJournal(query); },
                 });
}

Command OffenePosten(Given &given)
{
    QueryOptions &query = given.Query;
    const auto setKonto = [&query](const std::string &konto) { query.Konten = {konto}; };
    return Query(
        given, query.Mandant,
        {
            .Name = "op",
            .Description = "Offene Posten",
            .Options =
                {
                    {.Name = "--art", .Help = "Debitor oder Kreditor; sonst beide", .To = &query.Kind},
                    {.Name = "--konto",
                     .Help = "nur die dieses Kontos, nach Nummer oder Kürzel",
                     .To = setKonto},
                },
            .Examples = {"vark op --mandant 1", "vark op --mandant 1 --art Debitor --konto 10010"},
            .Run = [&query] { return ShowOpenItems(query); },
        });
}

// ---- Rates of exchange ----

Command Kurse(Given &given)
{
    RateOptions &rate = given.Rate;
    Options options = {Mandant(rate.Mandant)};
    Append(options, Forms(given));
    Append(
        options,
        {
            {.Name = "--neu", .Help = "einen Kurs erfassen", .To = &rate.IsNew},
            {.Name = "--loeschen", .Help = "einen Kurs löschen", .To = &rate.Deletes, .Excludes = {"--neu"}},
            {.Name = "--dialog",
             .Help = "im Dialog am Bildschirm pflegen",
             .To = &rate.Asks,
             .Excludes = {"--neu", "--loeschen"}},
            {.Name = "--waehrung", .Help = "Währung; in der Liste nur diese", .To = &rate.Waehrung},
            {.Name = "--datum", .Help = "Tag des Kurses, TT.MM.JJJJ", .To = &rate.Datum},
            {.Name = "--kurs", .Help = "Kurs", .To = &rate.Kurs, .Needs = {"--neu"}},
            {.Name = "--einheiten",
             .Help = "für so viele Einheiten: 1 (sonst), 10, 100 … 100000",
             .To = &rate.Einheiten,
             .Needs = {"--neu"}},
            {.Name = "--durchschnitt",
             .Help = "Durchschnittskurs des Monats",
             .To = &rate.IsAverage,
             .Needs = {"--neu"}},
        });
    return {
        .Name = "kurse",
        .Description = "Wechselkurse auflisten und pflegen",
        .Options = options,
        .Examples = {"vark kurse --mandant 1 --waehrung USD",
                     "vark kurse --mandant 1 --neu --waehrung USD --datum 15.03.1998 --kurs 1,82",
                     "vark kurse --mandant 1 --loeschen --waehrung USD --datum 15.03.1998",
                     "vark kurse --mandant 1 --dialog"},
        .Notes = rateNotes,
        .Run =
            [&given] {
                given.Rate.As = FormOf(given);
                return KeepRates(given.Rate);
            },
    };
}

// ---- Reports ----

// The options by which a period is named, with `prefix` before each.
Options PeriodOptions(unsigned forms, PeriodText &period, const std::string &prefix)
{
    const bool isCompared = prefix != "--";
    Options options;
    const auto add = [&](unsigned form, const char *name, std::string &value, const char *help) {
        if ((forms & form) == 0) return;
        options.push_back(
            {.Name = prefix + name, .Help = isCompared ? "dasselbe zum Vergleich" : help, .To = &value});
    };
    const bool isCalendar = (forms & PeriodCalendar) != 0;
    add(PeriodMonth, "monat", period.Monat, "Kalendermonat 1 bis 12 von --jahr");
    add(PeriodQuarter, "quartal", period.Quartal,
        isCalendar ? "Kalendervierteljahr 1 bis 4 von --jahr" : "Vierteljahr 1 bis 4 des Geschäftsjahrs");
    add(PeriodYear, "jahr", period.Jahr,
        isCalendar ? "Kalenderjahr, allein oder zu --monat und --quartal"
        : (forms & PeriodMonth) != 0
            ? "Geschäftsjahr, nach dem Jahr, in dem es beginnt; zu --monat das Kalenderjahr"
            : "Geschäftsjahr, nach dem Jahr, in dem es beginnt");
    add(PeriodDays, "von-datum", period.VonDatum, "erster Tag, TT.MM.JJJJ");
    add(PeriodDays, "bis-datum", period.BisDatum, "letzter Tag");
    add(PeriodPer, "per", period.Per, "letzter Tag, TT.MM.JJJJ");
    return options;
}

Options RangeOptions(const ReportRow &row, RangeText &range)
{
    return {
        {.Name = "--art", .Help = "Art der Konten: " + KindNames(row.Kontoarten), .To = &range.Art},
        {.Name = "--von", .Help = "erstes Konto, nach Nummer oder Kürzel", .To = &range.Von},
        {.Name = "--bis", .Help = "letztes Konto", .To = &range.Bis},
        {.Name = "--konto", .Help = "nur dieses Konto", .To = &range.Konto},
    };
}

// An option that only this report has; what its value may be is judged where its dialog is filled in.
Option OwnOptionOf(ReportOptions &report, const OwnOption &own)
{
    const bool isTick = own.Use == ControlUse::Tick || own.Use == ControlUse::Untick;
    return {.Name = own.Name,
            .Help = own.Help,
            .To = [&report, &own](const std::string &value) { report.Own[own.Name] = value; },
            .IsValueOptional = isTick};
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
    Options options = {Mandant(report.Mandant)};
    Append(options, PeriodOptions(row.Periods, report.Period, "--"));
    if (row.Periods != PeriodNone) {
        options.push_back(
            {.Name = "--archiv", .Help = "aus den Büchern dieses Archivjahrs", .To = &report.Archive});
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

Command Bericht(Given &given)
{
    Command command = {
        .Name = "bericht",
        .Description = "Berichte als Text oder Datei, im Fenster, auf dem Drucker",
        .Examples = {"vark bericht susa --mandant 1 --per 31.3.98",
                     "vark bericht bilanz --mandant 1 --jahr 1998 --pdf bilanz.pdf --csv bilanz.csv"},
    };
    for (const ReportRow &row : ReportTable()) {
        command.Commands.push_back(ReportCommand(given.Report, row));
    }
    return command;
}

} // namespace

bool NeedsScreen(const Given &given)
{
    return !given.Pick.What.empty() || given.Rate.Asks || given.Report.NeedsScreen();
}

tools::Tool DescribeVark(Given &given)
{
    return {
        .Root =
            {
                .Name = "vark",
                .Description = "VARK40 auf der Kommandozeile: buchen und nachsehen",
                .Options = {{.Name = "--config",
                             .Help = "Verzeichnis mit tolka.ini und vark.ini (sonst $VARK_CONFIG_DIR)",
                             .To = &given.Configuration,
                             .Names = Named::Directory}},
                .Commands = {Status(given), Mandanten(given), Buchen(given), Split(given), Stapel(given),
                             Peko(given), Waehlen(given), Konten(given), KontoFrei(given), Saldo(given),
                             Journal(given), OffenePosten(given), Kurse(given), Bericht(given)},
                .Notes = "Jeder Befehl erklärt sich mit --hilfe, etwa: vark buchen --hilfe",
            },
        .Version = VARK_VERSION,
        .ExitCodes = {{0, "gut"},
                      {1, "etwas wurde abgelehnt"},
                      {2, "falscher Aufruf"},
                      {3, "Bücher oder Bibliothek nicht benutzbar"}},
        .Topics = {},
        .SeeAlso = {"books(1)", "vark40(3)", "templates(5)"},
    };
}

} // namespace cli
