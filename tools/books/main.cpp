// books: makes, checks and moves books.
#include "tools/books/check.h"
#include "tools/books/sample.h"
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
    CLI::App app("Bücher anlegen, prüfen und bewegen", "books");
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

    const int parsed = tools::ParseGerman(app, argc, argv);
    if (parsed >= 0) return parsed;
    if (*sample) return MakeSampleBooks(options);
    if (*check) return Check(checking);
    return tools::ExitUsage;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return Run(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "books: %s\n", error.what());
    } catch (...) {
        std::fputs("books: unbekannter Fehler\n", stderr);
    }
    return tools::ExitFailure;
}
