// books: makes, checks, moves and shows books.
#include "tools/books/check.h"
#include "tools/books/describe.h"
#include "tools/books/sample.h"
#include "tools/books/show.h"
#include "tools/common/german_arguments.h"
#include "tools/common/terminal.h"

#include <cstdio>
#include <exception>
#include <iostream>

namespace {

int MakeSampleBooks(const books::SampleOptions &options)
{
    books::SampleSummary summary;
    const std::string place = std::filesystem::absolute(options.Directory).lexically_normal().string();
    {
        tools::ProgressBar bar("Bücher anlegen");
        summary = books::MakeSample(options, [&bar](double part) { bar.Show(part); });
    }
    std::cout << "Bücher angelegt in " << place << ": 3 Mandanten, " << summary.Directories
              << " Jahresverzeichnisse, " << tools::Grouped(summary.Postings) << " endgültige Buchungen, "
              << tools::Grouped(summary.Records) << " Datensätze.\n"
              << "Mit VARK_CONFIG_DIR=" << place << " arbeitet VARK40 in diesen Büchern.\n";
    return tools::ExitGood;
}

int Check(const books::CheckOptions &options)
{
    tools::ProgressBar bar("Prüfen");
    return books::CheckBooks(options, [&bar](double part) {
        bar.Show(part);
        if (part >= 1) bar.Hide();
    });
}

int Run(int argc, char **argv)
{
    tools::EndQuietlyOnClosedPipe();
    CLI::App app("Bücher anlegen, prüfen, sichern, laden und ansehen", "books");
    tools::MakeGerman(app);
    app.require_subcommand(1);
    app.footer(
        "Beispiel: books beispiel /tmp/beispiel\n\n"
        "Rückgabe: 0 gut, 1 abgelehnt oder nicht in Ordnung, 2 falscher Aufruf, 3 Bücher nicht benutzbar");

    books::SampleOptions options;
    CLI::App *sample = tools::AddCommand(app, "beispiel", "Musterbücher mit drei Mandanten anlegen");
    sample->add_option("VERZEICHNIS", options.Directory, "Wohin; wird angelegt")->required();
    sample->add_flag("--ersetzen", options.Replace, "Bücher ersetzen, die dort schon liegen");
    sample->add_option(
        "--buchungen", options.Postings,
        "endgültige Buchungen von Mandant 1 (sonst 3.000; die anderen haben je ein Zehntel); 0: keine");
    sample->add_option("--saat", options.Seed, "Zahl, die die Buchungen bestimmt (sonst 1)");
    sample->add_option("--personenkonten", options.PersonalAccounts,
                       "Debitoren und Kreditoren von Mandant 1 (sonst 40 und 25)");
    sample->add_option("--posten", options.OpenItems, "ungefähre Zahl der offenen Posten von Mandant 1");
    sample->footer("Beispiele:\n  books beispiel /tmp/beispiel --ersetzen\n"
                   "  books beispiel /tmp/gross --buchungen 100000 --personenkonten 10000 --posten 10000");

    books::CheckOptions checking;
    CLI::App *check = tools::AddCommand(app, "pruefen", "Prüfen, ob Bücher in sich stimmen");
    check
        ->add_option("VERZEICHNIS", checking.Directory, "Verzeichnis mit den Ini-Dateien, oder der Datenpfad")
        ->required();
    check->add_option("--hoechstens", checking.MostPerRule,
                      "so viele Abweichungen einer Art je Tabelle zeigen (sonst 20)");
    check->add_flag("--json", checking.IsJson, "Ausgabe für Programme");
    check->footer(
        "Geprüft werden der Aufbau jeder Tabelle, jedes Feld, jeder Index und was die Sätze einander "
        "schulden:\n"
        "Soll und Haben, Monatswerte und Buchungen, offene Posten und Salden, Kosten, Vorträge, Verweise.\n\n"
        "Beispiel: books pruefen /tmp/beispiel");

    bool isCsv = false;
    bool isJson = false;
    const auto addForms = [&](CLI::App *command) {
        command->add_flag("--csv", isCsv, "Ausgabe als CSV");
        command->add_flag("--json", isJson, "Ausgabe für Programme")->excludes("--csv");
    };
    books::ShowOptions showing;
    CLI::App *show = tools::AddCommand(app, "zeigen", "Sätze einer Tabelle Feld für Feld zeigen");
    show->add_option("TABELLE", showing.Table, "sako, bube, debi …; alle nennt books aufbau")->required();
    show->add_option("VERZEICHNIS", showing.Directory,
                     "Verzeichnis mit den Ini-Dateien, oder der Datenpfad; sonst das eingestellte");
    show->add_option("--mandant", showing.Mandant, "Nummer des Mandanten, sonst der erste");
    show->add_option("--jahr", showing.Year, "Geschäftsjahr, sonst das letzte bebuchbare");
    show->add_option("--schluessel", showing.Key, "Nummer des Schlüssels, in dessen Reihenfolge (sonst 0)");
    show->add_option("--gleich", showing.Equal, "nur dieser Wert des Schlüssels; ein Text gilt als Anfang");
    show->add_option("--von", showing.From, "ab diesem Wert")->excludes("--gleich");
    show->add_option("--bis", showing.To, "bis zu diesem Wert einschließlich")->excludes("--gleich");
    show->add_option("--felder", showing.Fields, "nur diese Felder, nebeneinander")->delimiter(',');
    show->add_flag("--alles", showing.WithGaps, "auch die Bytes, die kein Feld sind");
    show->add_option("--hoechstens", showing.Most, "so viele Sätze")->check(CLI::PositiveNumber);
    addForms(show);
    show->footer(
        "Tage werden als TT.MM.JJJJ angegeben, die Teile eines Schlüssels mit Komma dazwischen.\n\n"
        "Beispiele:\n  books zeigen sako /tmp/beispiel --gleich 1840\n"
        "  books zeigen bube /tmp/beispiel --jahr 1997 --von 24.12.1997 --bis 31.12.1997 --csv\n"
        "  books zeigen debi /tmp/beispiel --schluessel 1 --von M --bis P --felder Konto,Kuerzel,Name1\n"
        "  books zeigen kurse /tmp/beispiel --gleich USD,15.01.1998 --json");

    std::string described;
    bool isHtml = false;
    CLI::App *describe = tools::AddCommand(app, "aufbau", "Tabellen, Felder und Schlüssel beschreiben");
    describe->add_option("TABELLE", described, "sonst alle");
    addForms(describe);
    describe->add_flag("--html", isHtml, "als Seite")->excludes("--csv")->excludes("--json");
    describe->footer(
        "Beispiele:\n  books aufbau\n  books aufbau sako\n  books aufbau --html > satzaufbau.html");

    const int parsed = tools::ParseGerman(app, argc, argv);
    if (parsed >= 0) return parsed;
    if (*sample) return MakeSampleBooks(options);
    if (*check) return Check(checking);
    showing.As = isJson ? tools::Output::Json : isCsv ? tools::Output::Csv : tools::Output::Table;
    if (*show) return books::ShowTable(showing);
    if (*describe) {
        return books::DescribeTables(described, isHtml   ? books::DescribeAs::Html
                                                : isJson ? books::DescribeAs::Json
                                                : isCsv  ? books::DescribeAs::Csv
                                                         : books::DescribeAs::Table);
    }
    return tools::ExitUsage;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return Run(argc, argv);
    } catch (const tools::UsageError &error) {
        std::fprintf(stderr, "books: %s\n", error.what());
        return tools::ExitUsage;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "books: %s\n", error.what());
    } catch (...) {
        std::fputs("books: unbekannter Fehler\n", stderr);
    }
    return tools::ExitFailure;
}
