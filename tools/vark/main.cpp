// vark: the books from the command line. It books and asks through the exported functions, as any host would.
#include "host/descriptors.h"
#include "tools/common/german_arguments.h"
#include "tools/common/installation.h"
#include "tools/common/terminal.h"
#include "tools/vark/accounts.h"
#include "tools/vark/batch.h"
#include "tools/vark/booking.h"
#include "tools/vark/kontoart.h"
#include "tools/vark/mandanten.h"
#include "tools/vark/partners.h"
#include "tools/vark/pick.h"
#include "tools/vark/queries.h"
#include "tools/vark/rates.h"
#include "tools/vark/reasons.h"
#include "tools/vark/report.h"
#include "tools/vark/status.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <vector>

namespace {

constexpr const char *exitCodes =
    "Rückgabe: 0 gut, 1 etwas wurde abgelehnt, 2 falscher Aufruf, 3 Bücher oder Bibliothek nicht benutzbar";

constexpr const char *splitExamples =
    "Beispiele:\n"
    "  vark split --mandant 1 --stapel 16 --datum 15.03.1998 --beleg RE4712 --haben 1840 \\\n"
    "      --teil \"8010;;1.000,00;Miete Kontor\" --teil \"8020;;120,50;Heizung\"\n"
    "  vark split --mandant 1 --stapel 16 --datei split.csv\n"
    "\n"
    "Ein Teil nennt SOLL;HABEN;BETRAG;TEXT;SATZ;STEUER;SCHABLONE. Was er leer läßt, kommt aus den übrigen\n"
    "Angaben. Alle Teile haben dasselbe Sollkonto oder dasselbe Habenkonto.\n"
    "Die Datei hat die Spalten von vark buchen und nach Wunsch Kennzeichen. Zeilen, die mit demselben Datum\n"
    "und Beleg aufeinander folgen, sind eine Splitbuchung; sie wird ganz gebucht oder gar nicht.";

constexpr const char *partnerExamples =
    "Beispiele:\n"
    "  vark peko neu --mandant 1 --art Debitor --kuerzel ADLER --name \"Adler & Co\" --plz 20095 --ort "
    "Hamburg\n"
    "  vark peko aendern --mandant 1 --art Debitor --konto 10010 --ort Bremen --zahlungsziel -\n"
    "  vark peko loeschen --mandant 1 --art Kreditor --kuerzel SPEDNORD\n"
    "  vark konten --mandant 1 --art Debitor --csv | vark peko aendern --mandant 1 --art Debitor --datei -\n"
    "\n"
    "Ohne --konto bekommt ein neues Konto die nächste freie Nummer. Beim Ändern bleibt, was nicht genannt\n"
    "wird; ein Strich (-) leert ein Feld. Die Datei hat die Spalten, die vark konten --csv ausgibt, oder\n"
    "einige davon.";

constexpr const char *rateExamples =
    "Beispiele:\n"
    "  vark kurse --mandant 1 --waehrung USD\n"
    "  vark kurse --mandant 1 --neu --waehrung USD --datum 15.03.1998 --kurs 1,82\n"
    "  vark kurse --mandant 1 --loeschen --waehrung USD --datum 15.03.1998\n"
    "  vark kurse --mandant 1 --dialog\n"
    "\n"
    "Erfaßt und gelöscht wird im Dialog der Fremdwährungsverwaltung, den vark dazu unsichtbar bedient: Es\n"
    "gelten dieselben Prüfungen.";

constexpr const char *bookingExamples =
    "Beispiele:\n"
    "  vark buchen --mandant 1 --stapel 16 --datum 15.03.1998 --beleg RE4711 \\\n"
    "      --soll 10010 --haben 5010 --betrag 1.160,00 --text \"Schreibtische\"\n"
    "  vark buchen --mandant 1 --stapel 16 --datei buchungen.csv --abgelehnt fehler.csv\n"
    "\n"
    "Die Datei (oder mit --datei - die Standardeingabe) ist mit Semikolon getrennt, UTF-8 oder "
    "Windows-1252.\n"
    "Ihre erste Zeile nennt die Spalten in beliebiger Folge: Datum, Sollkonto, Habenkonto und Betrag, dazu "
    "nach\n"
    "Wunsch Mandant, Stapel, Beleg, Text, Sollart, Habenart, Steuersatz, Steuerbetrag, Kostenschablone,\n"
    "Zahlungsziel. Was eine Zeile leer läßt, kommt aus den Angaben hier. Werte mit Semikolon stehen in\n"
    "Anführungszeichen; ein Wert geht nie über sein Zeilenende. Leere Zeilen und solche mit # zählen nicht.\n"
    "Jede Zeile wird für sich gebucht: Eine abgelehnte hält keine andere auf.";

// The command line: its options, and what each command does with them.
struct Program {
    CLI::App App{"VARK40 auf der Kommandozeile: buchen und nachsehen", "vark"};
    std::filesystem::path Configuration;
    bool IsJson = false;
    bool IsCsv = false;
    cli::BookingOptions Booking;
    cli::SplitOptions Split;
    cli::PartnerOptions Partner;
    cli::BatchOptions Batch;
    cli::PickOptions Pick;
    cli::QueryOptions Query;
    cli::AccountOptions Accounts;
    cli::RateOptions Rate;
    cli::ReportOptions Report;

    struct Command {
        CLI::App *Words;
        std::function<int()> Run;
    };
    std::vector<Command> Commands;

    // A command whose help ends with examples and the exit codes.
    CLI::App *Add(const char *name, const char *description, const std::string &examples,
                  std::function<int()> run)
    {
        CLI::App *command = tools::AddCommand(App, name, description);
        command->footer(examples + "\n\n" + exitCodes);
        Commands.push_back({command, std::move(run)});
        return command;
    }
    void AddForms(CLI::App *command)
    {
        command->add_flag("--csv", IsCsv, "Ausgabe als CSV");
        command->add_flag("--json", IsJson, "Ausgabe für Programme")->excludes("--csv");
    }
    // What comes as one piece of work or as a file of them.
    void AddTask(CLI::App *command, cli::TaskOptions &task)
    {
        command->add_option("--datei", task.File, "aus dieser CSV-Datei, - für die Standardeingabe")
            ->option_text("DATEI");
        command->add_option("--abgelehnt", task.Rejections, "abgelehnte Zeilen mit Grund in diese CSV-Datei")
            ->option_text("DATEI");
        command->add_flag("--leise", task.IsQuiet, "keine Zusammenfassung");
        AddForms(command);
    }
    tools::Output Form() const
    {
        return IsJson ? tools::Output::Json : IsCsv ? tools::Output::Csv : tools::Output::Table;
    }
    // Whether a person is to see windows.
    bool NeedsScreen() const { return !Pick.What.empty() || Rate.Asks || Report.NeedsScreen(); }
};

void AddOverviews(Program &program)
{
    CLI::App *status = program.Add("status", "Zustand der Bibliothek und Liste der Mandanten",
                                   "Beispiel: vark --config /tmp/beispiel status",
                                   [&program] { return cli::ShowStatus(program.IsJson); });
    status->add_flag("--json", program.IsJson, "Ausgabe für Programme");
    CLI::App *mandanten = program.Add("mandanten", "Liste der Mandanten", "Beispiel: vark mandanten --csv",
                                      [&program] { return cli::ShowMandanten(program.Form()); });
    program.AddForms(mandanten);
}

void AddBookingOptions(Program &program, CLI::App *command, cli::BookingText &text, cli::TaskOptions &task)
{
    command->add_option("--mandant", text.Mandant, "Nummer des Mandanten");
    command->add_option("--stapel", text.Stapel, "Nummer des Stapels");
    command->add_option("--datum", text.Datum, "Belegdatum, TT.MM.JJJJ");
    command->add_option("--beleg", text.Beleg, "Belegnummer, bis 8 Zeichen");
    command->add_option("--text", text.Text, "Buchungstext, bis 35 Zeichen");
    command->add_option("--soll", text.Sollkonto, "Sollkonto");
    command->add_option("--soll-art", text.Sollart,
                        "Sachkonto, Kreditor oder Debitor; sonst nach der Nummer");
    command->add_option("--haben", text.Habenkonto, "Habenkonto");
    command->add_option("--haben-art", text.Habenart, "wie --soll-art");
    command->add_option("--betrag", text.Betrag, "Bruttobetrag");
    command->add_option("--satz", text.Steuersatz, "Steuersatz; sonst der des Kontos");
    command->add_option("--steuer", text.Steuerbetrag, "Steuerbetrag; sonst aus dem Satz errechnet");
    command->add_option("--schablone", text.Kostenschablone, "Nummer der Kostenschablone");
    command->add_option("--zahlungsziel", text.Zahlungsziel, "Nummer; sonst das des Personenkontos");
    program.AddTask(command, task);
}

void AddBookings(Program &program)
{
    CLI::App *book =
        program.Add("buchen", "Eine Buchung oder viele aus einer Datei in einen Stapel schreiben",
                    bookingExamples, [&program] { return cli::Book(program.Booking); });
    AddBookingOptions(program, book, program.Booking.Defaults, program.Booking.Task);

    cli::SplitOptions &split = program.Split;
    CLI::App *bookSplit = program.Add("split", "Splitbuchungen in einen Stapel schreiben", splitExamples,
                                      [&split] { return cli::BookSplit(split); });
    AddBookingOptions(program, bookSplit, split.Defaults, split.Task);
    bookSplit->add_option("--kennzeichen", split.Defaults.Kennzeichen, "0 bis 255");
    bookSplit->add_option("--teil", split.Parts, "eine Teilbuchung; für jede einmal")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);

    cli::BatchOptions &batch = program.Batch;
    CLI::App *showBatch =
        program.Add("stapel", "Inhalt eines Stapels, oder die Liste aller Stapel",
                    "Beispiele:\n  vark stapel --mandant 1\n  vark stapel --mandant 1 16 --kosten",
                    [&batch] { return cli::ShowBatch(batch); });
    showBatch->add_option("--mandant", batch.Mandant, "Nummer des Mandanten")->required();
    showBatch->add_option("STAPEL", batch.Number, "Nummer des Stapels; ohne sie die Liste");
    showBatch->add_flag("--kosten", batch.WithCosts, "mit den Kostenzeilen");
    program.AddForms(showBatch);
}

void AddPartnerAction(Program &program, CLI::App &partners, const char *name, const char *description,
                      cli::PartnerAction action)
{
    cli::PartnerOptions &partner = program.Partner;
    CLI::App *command = tools::AddCommand(partners, name, description);
    command->callback([&partner, action] { partner.Action = action; });
    command->add_option("--mandant", partner.Mandant, "Nummer des Mandanten")->required();
    command->add_option("--art", partner.Kind, "Debitor oder Kreditor")->required();
    cli::PartnerText &text = partner.Defaults;
    command->add_option("--konto", text.Konto, "Kontonummer");
    command->add_option("--kuerzel", text.Kuerzel, "Kürzel, bis 8 Zeichen");
    if (action != cli::PartnerAction::Delete) {
        command->add_option("--name", text.Name, "Name, bis 25 Zeichen");
        command->add_option("--name2", text.Name2, "zweiter Name");
        command->add_option("--strasse", text.Strasse, "Straße");
        command->add_option("--plz", text.Plz, "Postleitzahl");
        command->add_option("--ort", text.Ort, "Ort");
        command->add_option("--land", text.Land, "Länderkennzeichen; sonst das des Mandanten");
        command->add_option("--ustid", text.UstId, "USt-IdNr");
        command->add_option("--waehrung", text.Waehrung, "Währung, nur bei Kreditoren");
        command->add_option("--blz", text.Blz, "Bankleitzahl, nur mit --bankkonto");
        command->add_option("--bankkonto", text.Bankkonto, "Bankkontonummer, nur mit --blz");
        command->add_option("--bank", text.Bank, "Name der Bank");
        command->add_option("--gegenkonto", text.Gegenkonto, "ein Sachkonto");
        command->add_option("--wert1", text.Wert1, "erster Zahlungswert");
        command->add_option("--wert2", text.Wert2, "zweiter Zahlungswert");
        command->add_option("--skonto", text.Skonto, "Skonto in Prozent");
        command->add_option("--mahnkennziffer", text.Mahnkennziffer, "-1 bis 3, nur bei Debitoren");
        command->add_option("--zahlungsziel", text.Zahlungsziel, "Nummer des Zahlungsziels");
    }
    program.AddTask(command, partner.Task);
    command->footer(std::string(partnerExamples) + "\n\n" + exitCodes);
}

void AddPartners(Program &program)
{
    CLI::App *partners =
        program.Add("peko", "Debitoren und Kreditoren anlegen, ändern, löschen", partnerExamples,
                    [&program] { return cli::KeepPartners(program.Partner); });
    partners->require_subcommand(1);
    AddPartnerAction(program, *partners, "neu", "Anlegen", cli::PartnerAction::New);
    AddPartnerAction(program, *partners, "aendern", "Ändern, was genannt wird", cli::PartnerAction::Change);
    AddPartnerAction(program, *partners, "loeschen", "Löschen", cli::PartnerAction::Delete);
}

void AddPick(Program &program)
{
    cli::PickOptions &pick = program.Pick;
    CLI::App *pickDialog =
        program.Add("waehlen", "Im Dialog auswählen lassen und die Nummer ausgeben",
                    "Beispiele:\n  vark waehlen mandant\n  vark waehlen konto --mandant 1 --art Debitor",
                    [&pick] { return cli::Pick(pick); });
    pickDialog->add_option("WAS", pick.What, "mandant, stapel, konto, zahlungsziel oder kostenschablone")
        ->required()
        ->check(tools::OneOf({"mandant", "stapel", "konto", "zahlungsziel", "kostenschablone"}));
    pickDialog->add_option("--mandant", pick.Mandant, "Nummer des Mandanten, sonst 1")
        ->check(tools::NumberFrom(1, INT16_MAX));
    pickDialog->add_option("--art", pick.Kontoart,
                           "bei konto: Sachkonto (sonst), Kreditor, Debitor oder Kostenstelle");
    pickDialog->add_option("--von", pick.From, "bei konto: kleinste Nummer");
    pickDialog->add_option("--bis", pick.To, "bei konto: größte Nummer");
    pickDialog->add_flag("--verwalten", pick.Manages,
                         "bei stapel: alle, auch zum Anlegen, Ändern und Löschen");
}

void AddQueries(Program &program)
{
    cli::QueryOptions &query = program.Query;
    cli::AccountOptions &listed = program.Accounts;
    const auto addQuery = [&program](const char *name, const char *description, int &mandant,
                                     const char *examples, std::function<int()> run) {
        CLI::App *command = program.Add(name, description, examples, std::move(run));
        command->add_option("--mandant", mandant, "Nummer des Mandanten")->required();
        program.AddForms(command);
        return command;
    };
    CLI::App *accounts = addQuery("konten", "Konten auflisten", listed.Mandant,
                                  "Beispiele:\n"
                                  "  vark konten --mandant 1 --art Debitor --von 10100 --bis 10200\n"
                                  "  vark konten --mandant 1 --nach Kürzel --von B --bis D --csv\n"
                                  "  vark konten --mandant 1 BERGENKO",
                                  [&listed] { return cli::ListAccounts(listed); });
    accounts->add_option("KONTO", listed.Single, "nur dieses, nach Nummer oder Kürzel");
    accounts->add_option("--art", listed.Kind,
                         "Sachkonto, Debitor, Kreditor oder Kostenstelle; sonst die ersten drei");
    accounts->add_option("--von", listed.From, "ab dieser Nummer");
    accounts->add_option("--bis", listed.To, "bis zu dieser Nummer");
    accounts->add_option("--nach", listed.Order,
                         "Nummer (sonst) oder Kürzel: Reihenfolge, und was --von meint");
    CLI::App *freeNumber = addQuery("konto-frei", "Die nächste freie Nummer", query.Mandant,
                                    "Beispiel: vark konto-frei --mandant 1 --art Kreditor",
                                    [&query] { return cli::ShowFreeNumber(query); });
    freeNumber->add_option("--art", query.Kind, "Kreditor oder Debitor")->required();
    CLI::App *balance = addQuery("saldo", "Salden von Konten", query.Mandant,
                                 "Beispiele:\n"
                                 "  vark saldo --mandant 1 1840\n"
                                 "  vark saldo --mandant 1 1840 10010 BERGENKO --csv",
                                 [&query] { return cli::ShowBalances(query); });
    balance->add_option("KONTO", query.Konten, "Kontonummern oder Kürzel")->required();
    balance->add_option("--art", query.Kind,
                        "Sachkonto, Kreditor, Debitor, Kostenstelle; sonst nach der Nummer");
    CLI::App *journal = addQuery("journal", "Endgültige Buchungen eines Geschäftsjahrs", query.Mandant,
                                 "Beispiel: vark journal --mandant 1 --ab 1.1.97 --csv | head",
                                 [&query] { return cli::ShowJournal(query); });
    journal->add_option("--ab", query.From, "ab diesem Tag; er bestimmt auch das Geschäftsjahr")->required();
    CLI::App *items = addQuery("op", "Offene Posten", query.Mandant,
                               "Beispiele:\n"
                               "  vark op --mandant 1\n"
                               "  vark op --mandant 1 --art Debitor --konto 10010",
                               [&query] { return cli::ShowOpenItems(query); });
    items->add_option("--art", query.Kind, "Debitor oder Kreditor; sonst beide");
    items->add_option("--konto", query.Konten, "nur die dieses Kontos, nach Nummer oder Kürzel")->expected(1);
}

void AddRates(Program &program)
{
    cli::RateOptions &rate = program.Rate;
    CLI::App *rates = program.Add("kurse", "Wechselkurse auflisten und pflegen", rateExamples,
                                  [&rate] { return cli::KeepRates(rate); });
    rates->add_option("--mandant", rate.Mandant, "Nummer des Mandanten")->required();
    program.AddForms(rates);
    CLI::Option *newRate = rates->add_flag("--neu", rate.IsNew, "einen Kurs erfassen");
    CLI::Option *oldRate =
        rates->add_flag("--loeschen", rate.Deletes, "einen Kurs löschen")->excludes(newRate);
    CLI::Option *rateDialog = rates->add_flag("--dialog", rate.Asks, "im Dialog am Bildschirm pflegen");
    rateDialog->excludes(newRate)->excludes(oldRate);
    rates->add_option("--waehrung", rate.Waehrung, "Währung; in der Liste nur diese");
    rates->add_option("--datum", rate.Datum, "Tag des Kurses, TT.MM.JJJJ");
    rates->add_option("--kurs", rate.Kurs, "Kurs")->needs(newRate);
    rates->add_option("--einheiten", rate.Einheiten, "für so viele Einheiten: 1 (sonst), 10, 100 … 100000")
        ->needs(newRate);
    rates->add_flag("--durchschnitt", rate.IsAverage, "Durchschnittskurs des Monats")->needs(newRate);
}

// The options by which a period is named, with `prefix` before each.
void AddPeriod(CLI::App *command, unsigned forms, cli::PeriodText &period, const std::string &prefix)
{
    const bool isCompared = prefix != "--";
    const auto add = [&](unsigned form, const char *name, std::string &value, const char *help) {
        if ((forms & form) == 0) return;
        command->add_option(prefix + name, value, isCompared ? std::string("dasselbe zum Vergleich") : help);
    };
    const bool isCalendar = (forms & cli::PeriodCalendar) != 0;
    add(cli::PeriodMonth, "monat", period.Monat, "Kalendermonat 1 bis 12 von --jahr");
    add(cli::PeriodQuarter, "quartal", period.Quartal,
        isCalendar ? "Kalendervierteljahr 1 bis 4 von --jahr" : "Vierteljahr 1 bis 4 des Geschäftsjahrs");
    add(cli::PeriodYear, "jahr", period.Jahr,
        isCalendar ? "Kalenderjahr, allein oder zu --monat und --quartal"
        : (forms & cli::PeriodMonth) != 0
            ? "Geschäftsjahr, nach dem Jahr, in dem es beginnt; zu --monat das Kalenderjahr"
            : "Geschäftsjahr, nach dem Jahr, in dem es beginnt");
    add(cli::PeriodDays, "von-datum", period.VonDatum, "erster Tag, TT.MM.JJJJ");
    add(cli::PeriodDays, "bis-datum", period.BisDatum, "letzter Tag");
    add(cli::PeriodPer, "per", period.Per, "letzter Tag, TT.MM.JJJJ");
}

void AddReportOutputs(CLI::App *command, const cli::ReportRow &row, cli::ReportOptions &report)
{
    for (const char *kind : {"pdf", "csv", "json", "html"}) {
        command
            ->add_option_function<std::string>(
                std::string("--") + kind,
                [&report, kind](const std::string &path) {
                    report.Targets.push_back({kind, path.empty() ? "-" : path});
                },
                "in diese Datei; ohne Namen auf die Standardausgabe")
            ->expected(0, 1)
            ->option_text("[DATEI]");
    }
    command->add_flag_callback(
        "--text",
        [&report] {
            report.Targets.push_back({"txt", "-"});
        },
        "als Text, wie auch ohne Angabe");
    CLI::Option *shows =
        command->add_flag("--anzeigen", report.Shows, "in einem Fenster, bis es geschlossen wird");
    command->add_flag("--drucken", report.Prints, "auf dem Drucker")->excludes(shows);
    if (row.LocksPeriod)
        command->add_flag("--sperren", report.Locks, "zu --drucken: Danach ist der Zeitraum gesperrt");
    command->add_flag("--dialog", report.Asks, "vorher im Dialog des Berichts fragen");
}

void AddReport(Program &program, CLI::App &reports, const cli::ReportRow &row)
{
    cli::ReportOptions &report = program.Report;
    CLI::App *command = tools::AddCommand(reports, row.Name, row.Title);
    command->callback([&report, &row] { report.Report = &row; });
    command->add_option("--mandant", report.Mandant, "Nummer des Mandanten")->required();
    AddPeriod(command, row.Periods, report.Period, "--");
    if (row.Periods != cli::PeriodNone)
        command->add_option("--archiv", report.Archive, "aus den Büchern dieses Archivjahrs");
    if (row.IsCompared) AddPeriod(command, row.Periods, report.Compared, "--vergleich-");
    if (row.Kontoarten != 0) {
        command->add_option("--art", report.Range.Art, "Art der Konten: " + cli::KindNames(row.Kontoarten));
        command->add_option("--von", report.Range.Von, "erstes Konto, nach Nummer oder Kürzel");
        command->add_option("--bis", report.Range.Bis, "letztes Konto");
        command->add_option("--konto", report.Range.Konto, "nur dieses Konto");
    }
    for (const cli::OwnOption &own : row.Options) {
        const bool isTick = own.Use == cli::ControlUse::Tick || own.Use == cli::ControlUse::Untick;
        command
            ->add_option_function<std::string>(
                own.Name, [&report, &own](const std::string &value) { report.Own[own.Name] = value; },
                own.Help)
            ->expected(isTick ? 0 : 1, 1);
    }
    AddReportOutputs(command, row, report);
    command->footer("Beispiel:\n  vark bericht " + std::string(row.Name) + " --mandant 1 " + row.Example +
                    "\n\n" + exitCodes);
}

void AddReports(Program &program)
{
    CLI::App *reports =
        program.Add("bericht", "Berichte als Text oder Datei, im Fenster, auf dem Drucker",
                    "Beispiele:\n"
                    "  vark bericht susa --mandant 1 --per 31.3.98\n"
                    "  vark bericht bilanz --mandant 1 --jahr 1998 --pdf bilanz.pdf --csv bilanz.csv",
                    [&program] { return cli::MakeReport(program.Report); });
    reports->require_subcommand(1);
    for (const cli::ReportRow &row : cli::ReportTable()) {
        AddReport(program, *reports, row);
    }
}

int Run(int argc, char **argv)
{
    tools::EndQuietlyOnClosedPipe();

    Program program;
    tools::MakeGerman(program.App);
    program.App.require_subcommand(1);
    program.App.set_version_flag("--version", "vark " VARK_VERSION, "Die Version anzeigen")
        ->group("Optionen");
    program.App.add_option("--config", program.Configuration,
                           "Verzeichnis mit tolka.ini und vark.ini (sonst $VARK_CONFIG_DIR)");
    program.App.footer(std::string("Jeder Befehl erklärt sich mit --hilfe, etwa: vark buchen --hilfe\n\n") +
                       exitCodes);
    AddOverviews(program);
    AddBookings(program);
    AddPartners(program);
    AddPick(program);
    AddQueries(program);
    AddRates(program);
    AddReports(program);

    const int parsed = tools::ParseGerman(program.App, argc, argv);
    if (parsed >= 0) return parsed;
    if (!program.NeedsScreen()) cli::UseNoWindows();
    if (!program.Configuration.empty()) tools::UseConfiguration(program.Configuration);
    const tools::Output form = program.Form();
    program.Batch.As = program.Query.As = program.Accounts.As = program.Rate.As = form;
    program.Booking.Task.As = program.Split.Task.As = program.Partner.Task.As = form;
    try {
        for (const Program::Command &command : program.Commands) {
            if (*command.Words) return command.Run();
        }
    } catch (const tools::UsageError &error) {
        std::fprintf(stderr, "vark: %s\nMehr dazu: %s --hilfe\n", error.what(),
                     tools::CommandPath(program.App).c_str());
    }
    return tools::ExitUsage;
}

} // namespace

int main(int argc, char **argv)
{
    host::GuardStandardDescriptors();
    try {
        const int exitCode = Run(argc, argv);
        if (std::cout.flush() && std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return exitCode;
        std::fputs("vark: Die Ausgabe läßt sich nicht schreiben.\n", stderr);
    } catch (const cli::Refusal &refusal) {
        std::fprintf(stderr, "vark: %s\n", refusal.what());
        return tools::ExitRefused;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "vark: %s\n", error.what());
    } catch (...) {
        std::fputs("vark: unbekannter Fehler\n", stderr);
    }
    return tools::ExitFailure;
}
