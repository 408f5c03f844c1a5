// vark: the books from the command line. It books and asks through the exported functions, as any host would.
#include "tools/common/german_arguments.h"
#include "tools/common/installation.h"
#include "tools/common/terminal.h"
#include "tools/vark/batch.h"
#include "tools/vark/booking.h"
#include "tools/vark/pick.h"
#include "tools/vark/queries.h"
#include "tools/vark/reasons.h"
#include "tools/vark/report.h"
#include "tools/vark/status.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>

namespace {

constexpr const char *exitCodes =
    "Rückgabe: 0 gut, 1 etwas wurde abgelehnt, 2 falscher Aufruf, 3 Bücher oder Bibliothek nicht benutzbar";

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

int Run(int argc, char **argv)
{
    tools::EndQuietlyOnClosedPipe();

    CLI::App app("VARK40 auf der Kommandozeile: buchen und nachsehen", "vark");
    tools::MakeGerman(app);
    app.require_subcommand(1);
    std::filesystem::path configuration;
    app.add_option("--config", configuration,
                   "Verzeichnis mit tolka.ini und vark.ini (sonst $VARK_CONFIG_DIR)");
    app.footer(std::string("Jeder Befehl erklärt sich mit --hilfe, etwa: vark buchen --hilfe\n\n") +
               exitCodes);

    bool isJson = false;
    bool isCsv = false;
    CLI::App *status = tools::AddCommand(app, "status", "Zustand der Bibliothek und Liste der Mandanten");
    status->add_flag("--json", isJson, "Ausgabe für Programme");
    status->footer("Beispiel: vark --config /tmp/beispiel status");

    cli::BookingOptions booking;
    CLI::App *book =
        tools::AddCommand(app, "buchen", "Eine Buchung oder viele aus einer Datei in einen Stapel schreiben");
    book->add_option("--mandant", booking.Defaults.Mandant, "Nummer des Mandanten");
    book->add_option("--stapel", booking.Defaults.Stapel, "Nummer des Stapels");
    book->add_option("--datum", booking.Defaults.Datum, "Belegdatum, TT.MM.JJJJ");
    book->add_option("--beleg", booking.Defaults.Beleg, "Belegnummer, bis 8 Zeichen");
    book->add_option("--text", booking.Defaults.Text, "Buchungstext, bis 35 Zeichen");
    book->add_option("--soll", booking.Defaults.Sollkonto, "Sollkonto");
    book->add_option("--soll-art", booking.Defaults.Sollart,
                     "Sachkonto, Kreditor oder Debitor; sonst nach der Nummer");
    book->add_option("--haben", booking.Defaults.Habenkonto, "Habenkonto");
    book->add_option("--haben-art", booking.Defaults.Habenart, "wie --soll-art");
    book->add_option("--betrag", booking.Defaults.Betrag, "Bruttobetrag");
    book->add_option("--satz", booking.Defaults.Steuersatz, "Steuersatz; sonst der des Kontos");
    book->add_option("--steuer", booking.Defaults.Steuerbetrag, "Steuerbetrag; sonst aus dem Satz errechnet");
    book->add_option("--schablone", booking.Defaults.Kostenschablone, "Nummer der Kostenschablone");
    book->add_option("--zahlungsziel", booking.Defaults.Zahlungsziel, "Nummer; sonst das des Personenkontos");
    book->add_option("--datei", booking.File, "Buchungen aus dieser CSV-Datei, - für die Standardeingabe");
    book->add_option("--abgelehnt", booking.Rejections, "abgelehnte Zeilen mit Grund in diese CSV-Datei");
    book->add_flag("--leise", booking.IsQuiet, "keine Zusammenfassung");
    book->add_flag("--json", booking.IsJson, "Ausgabe für Programme");
    book->footer(std::string(bookingExamples) + "\n\n" + exitCodes);

    cli::BatchOptions batch;
    CLI::App *showBatch =
        tools::AddCommand(app, "stapel", "Inhalt eines Stapels, oder die Liste aller Stapel");
    showBatch->add_option("--mandant", batch.Mandant, "Nummer des Mandanten")->required();
    showBatch->add_option("STAPEL", batch.Number, "Nummer des Stapels; ohne sie die Liste");
    showBatch->add_flag("--kosten", batch.WithCosts, "mit den Kostenzeilen");
    showBatch->add_flag("--csv", isCsv, "Ausgabe als CSV");
    showBatch->add_flag("--json", isJson, "Ausgabe für Programme")->excludes("--csv");
    showBatch->footer("Beispiele:\n  vark stapel --mandant 1\n  vark stapel --mandant 1 16 --kosten");

    cli::PickOptions pick;
    CLI::App *pickDialog =
        tools::AddCommand(app, "waehlen", "Im Dialog auswählen lassen und die Nummer ausgeben");
    pickDialog->add_option("WAS", pick.What, "mandant, stapel, konto, zahlungsziel oder kostenschablone")
        ->required()
        ->check(CLI::IsMember({"mandant", "stapel", "konto", "zahlungsziel", "kostenschablone"}));
    pickDialog->add_option("--mandant", pick.Mandant, "Nummer des Mandanten, sonst 1")
        ->check(CLI::Range(1, 32767));
    pickDialog->add_option("--art", pick.Kontoart,
                           "bei konto: 1 Sachkonten (sonst), 2 Kreditoren, 4 Debitoren, 8 Kostenstellen");
    pickDialog->add_option("--von", pick.From, "bei konto: kleinste Nummer");
    pickDialog->add_option("--bis", pick.To, "bei konto: größte Nummer");
    pickDialog->add_flag("--verwalten", pick.Manages,
                         "bei stapel: alle, auch zum Anlegen, Ändern und Löschen");
    pickDialog->footer("Beispiele:\n  vark waehlen mandant\n  vark waehlen konto --mandant 1 --art 4");
    cli::QueryOptions query;
    const auto addQuery = [&](const char *name, const char *description, const char *example) {
        CLI::App *command = tools::AddCommand(app, name, description);
        command->add_option("--mandant", query.Mandant, "Nummer des Mandanten")->required();
        command->footer(std::string("Beispiel: vark ") + example);
        return command;
    };
    const auto addForms = [&](CLI::App *command) {
        command->add_flag("--csv", isCsv, "Ausgabe als CSV");
        command->add_flag("--json", isJson, "Ausgabe für Programme")->excludes("--csv");
    };
    CLI::App *accounts =
        addQuery("konten", "Konten einer Art auflisten", "konten --mandant 1 --art Debitor --von 10100");
    accounts->add_option("--art", query.Kind, "Sachkonto, Kreditor oder Debitor")->required();
    accounts->add_option("--von", query.From, "ab dieser Nummer");
    accounts->add_option("--bis", query.To, "bis zu dieser Nummer");
    addForms(accounts);
    CLI::App *freeNumber =
        addQuery("konto-frei", "Die nächste freie Nummer", "konto-frei --mandant 1 --art Kreditor");
    freeNumber->add_option("--art", query.Kind, "Kreditor oder Debitor")->required();
    CLI::App *balance = addQuery("saldo", "Saldo eines Kontos", "saldo --mandant 1 1840");
    balance->add_option("KONTO", query.Konto, "Kontonummer")->required();
    balance->add_option("--art", query.Kind,
                        "Sachkonto, Kreditor, Debitor, Kostenstelle; sonst nach der Nummer");
    addForms(balance);
    CLI::App *journal = addQuery("journal", "Endgültige Buchungen eines Geschäftsjahrs",
                                 "journal --mandant 1 --ab 1.1.97 --csv | head");
    journal->add_option("--ab", query.From, "ab diesem Tag; er bestimmt auch das Geschäftsjahr")->required();
    addForms(journal);
    CLI::App *items = addQuery("op", "Offene Posten", "op --mandant 1 --art Debitor --konto 10010");
    items->add_option("--art", query.Kind, "Debitor oder Kreditor")->required();
    items->add_option("--konto", query.Konto, "nur die dieses Kontos");
    addForms(items);

    cli::ReportOptions report;
    CLI::App *reports =
        tools::AddCommand(app, "bericht", "Berichte als Text oder Datei, im Fenster, auf dem Drucker");
    reports->require_subcommand(1);
    CLI::App *balances = tools::AddCommand(*reports, "susa", "Summen- und Saldenliste");
    balances->add_option("--mandant", report.Mandant, "Nummer des Mandanten")->required();
    balances->add_option("--per", report.Per, "letzter Tag, TT.MM.JJJJ; sonst heute");
    balances->add_option("--von", report.Von, "erstes Konto");
    balances->add_option("--bis", report.Bis, "letztes Konto");
    balances->add_option("--art", report.Art, "Sachkonten, Kreditoren oder Debitoren");
    for (const char *kind : {"pdf", "csv", "json", "html"}) {
        balances->add_option_function<std::string>(
            std::string("--") + kind,
            [&report, kind](const std::string &path) {
                report.Target = path;
                report.Kind = kind;
            },
            "in diese Datei");
    }
    balances->add_flag("--text", report.IsText, "als Text, wie auch ohne Angabe");
    CLI::Option *shows =
        balances->add_flag("--anzeigen", report.Shows, "in einem Fenster, bis es geschlossen wird");
    balances->add_flag("--drucken", report.Prints, "auf dem Drucker")->excludes(shows);
    balances->add_flag("--dialog", report.Asks, "vorher im Dialog des Berichts fragen");
    balances->footer("Beispiele:\n  vark bericht susa --mandant 1 --per 31.3.98\n"
                     "  vark bericht susa --mandant 1 --per 31.3.98 --art Debitoren --pdf susa.pdf");

    const int parsed = tools::ParseGerman(app, argc, argv);
    if (parsed >= 0) return parsed;
    if (!*pickDialog && !report.NeedsScreen()) cli::UseNoWindows();
    if (!configuration.empty()) tools::UseConfiguration(configuration);
    batch.As = isJson ? tools::Output::Json : isCsv ? tools::Output::Csv : tools::Output::Table;
    if (*status) return cli::ShowStatus(isJson);
    if (*book) return cli::Book(booking);
    if (*showBatch) return cli::ShowBatch(batch);
    if (*pickDialog) return cli::Pick(pick);
    query.As = batch.As;
    if (*accounts) return cli::ListAccounts(query);
    if (*freeNumber) return cli::ShowFreeNumber(query);
    if (*balance) return cli::ShowBalance(query);
    if (*journal) return cli::ShowJournal(query);
    if (*items) return cli::ShowOpenItems(query);
    if (*balances) return cli::MakeSummenSaldenListe(report);
    return tools::ExitUsage;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return Run(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "vark: %s\n", error.what());
    } catch (...) {
        std::fputs("vark: unbekannter Fehler\n", stderr);
    }
    return tools::ExitFailure;
}
