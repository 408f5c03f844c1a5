// books: makes, checks, moves and shows books.
#include "host/descriptors.h"
#include "tools/books/check.h"
#include "tools/books/copy.h"
#include "tools/books/describe.h"
#include "tools/books/load_report.h"
#include "tools/books/sample.h"
#include "tools/books/save.h"
#include "tools/books/show.h"
#include "tools/common/german_arguments.h"
#include "tools/common/json.h"
#include "tools/common/terminal.h"
#include "tools/common/workplace.h"

#include <cstdio>
#include <exception>
#include <iostream>

namespace {

// Runs `work` with a progress bar, which is gone when it is done.
template <typename Work> auto WithBar(const char *title, Work work)
{
    tools::ProgressBar bar(title);
    return work([&bar](double part) {
        tools::ThrowIfInterrupted();
        bar.Show(part);
    });
}

std::string FullPath(const std::filesystem::path &path)
{
    return std::filesystem::absolute(path).lexically_normal().string();
}

// Books without templates are good books; that no report can be had of them is better said at once.
void TellOfTemplates(bool areThere)
{
    if (areThere) return;
    std::fputs("books: Neben dem Programm liegen keine Berichtsvorlagen (templates); aus diesen Büchern gibt "
               "es keine Berichte.\n",
               stderr);
}

// The one object that a command which makes or moves books prints for programs.
void PrintSummaryJson(const std::string &place,
                      std::initializer_list<std::pair<const char *, int64_t>> counts)
{
    rapidjson::OStreamWrapper stream(std::cout);
    tools::JsonWriter json(stream);
    json.StartObject();
    tools::Put(json, "ziel", place);
    for (const auto &[name, count] : counts) {
        tools::Put(json, name, count);
    }
    json.EndObject();
    std::cout << '\n';
}

int MakeSampleBooks(const books::SampleOptions &options, bool isJson)
{
    const std::string place = FullPath(options.Directory);
    const books::SampleSummary summary =
        WithBar("Bücher anlegen", [&](const auto &progress) { return books::MakeSample(options, progress); });
    TellOfTemplates(summary.HasTemplates);
    if (isJson) {
        PrintSummaryJson(place, {{"verzeichnisse", summary.Directories},
                                 {"buchungen", summary.Postings},
                                 {"saetze", summary.Records}});
        return tools::ExitGood;
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
        tools::ThrowIfInterrupted();
        bar.Show(part);
        if (part >= 1) bar.Hide();
    });
}

int Save(const books::SaveOptions &options, bool isJson)
{
    const books::SaveSummary summary =
        WithBar("Sichern", [&](const auto &progress) { return books::SaveBooks(options, progress); });
    if (options.To == "-") return tools::ExitGood;
    if (isJson) {
        PrintSummaryJson(FullPath(options.To), {{"tabellen", summary.Tables}, {"saetze", summary.Records}});
    } else {
        std::cout << "Gesichert nach " << FullPath(options.To) << ": " << summary.Tables
                  << (summary.Tables == 1 ? " Tabelle, " : " Tabellen, ") << tools::Grouped(summary.Records)
                  << (summary.Records == 1 ? " Satz.\n" : " Sätze.\n");
    }
    return tools::ExitGood;
}

int Load(const books::LoadOptions &options, bool isJson)
{
    const books::LoadSummary summary =
        WithBar("Laden", [&](const auto &progress) { return books::LoadBooks(options, progress); });
    if (summary.IsLoaded) TellOfTemplates(summary.HasTemplates);
    if (isJson) {
        books::PrintLoadJson(summary);
    } else {
        books::PrintLoad(summary, options);
    }
    return summary.Refused == 0 ? tools::ExitGood : tools::ExitRefused;
}

int Copy(const books::CopyOptions &options, bool isJson)
{
    const std::string place = FullPath(options.To);
    const books::CopySummary summary =
        WithBar("Kopieren", [&](const auto &progress) { return books::CopyBooks(options, progress); });
    TellOfTemplates(summary.HasTemplates);
    if (isJson) {
        PrintSummaryJson(
            place, {{"verzeichnisse", summary.Directories}, {"bytes", static_cast<int64_t>(summary.Bytes)}});
    } else {
        std::cout << "Kopiert nach " << place << ": " << summary.Directories << " Verzeichnisse, "
                  << tools::Grouped(static_cast<int64_t>(summary.Bytes >> 20)) << " MiB.\n"
                  << "Mit VARK_CONFIG_DIR=" << place << " arbeitet VARK40 in der Kopie.\n";
    }
    return tools::ExitGood;
}

// What the command line gives.
struct Given {
    books::SampleOptions Sample;
    books::CheckOptions Check;
    books::SaveOptions Save;
    books::LoadOptions Load;
    books::CopyOptions Copy;
    books::ShowOptions Show;
    std::string Described; // table
    bool IsCsv = false;
    bool IsJson = false;
    bool IsHtml = false;
};

constexpr const char *anyBooks = "Verzeichnis mit den Ini-Dateien, oder der Datenpfad";

void AddForms(CLI::App *command, Given &given)
{
    command->add_flag("--csv", given.IsCsv, "Ausgabe als CSV");
    command->add_flag("--json", given.IsJson, "Ausgabe für Programme")->excludes("--csv");
}

CLI::App *AddSample(CLI::App &app, Given &given)
{
    CLI::App *sample = tools::AddCommand(app, "beispiel", "Musterbücher mit drei Mandanten anlegen");
    sample->add_option("VERZEICHNIS", given.Sample.Directory, "Wohin; wird angelegt")->required();
    sample->add_flag("--ersetzen", given.Sample.Replace, "Bücher ersetzen, die dort schon liegen");
    sample->add_option(
        "--buchungen", given.Sample.Postings,
        "endgültige Buchungen von Mandant 1 (sonst 3.000; die anderen haben je ein Zehntel); 0: keine");
    sample->add_option("--saat", given.Sample.Seed, "Zahl, die die Buchungen bestimmt (sonst 1)");
    sample->add_option("--personenkonten", given.Sample.PersonalAccounts,
                       "Debitoren und Kreditoren von Mandant 1 (sonst 40 und 25)");
    sample->add_option("--posten", given.Sample.OpenItems, "ungefähre Zahl der offenen Posten von Mandant 1");
    sample->footer("Beispiele:\n  books beispiel /tmp/beispiel --ersetzen\n"
                   "  books beispiel /tmp/gross --buchungen 100000 --personenkonten 10000 --posten 10000");
    sample->add_flag("--json", given.IsJson, "Ausgabe für Programme");
    return sample;
}

CLI::App *AddCheck(CLI::App &app, Given &given)
{
    CLI::App *check = tools::AddCommand(app, "pruefen", "Prüfen, ob Bücher in sich stimmen");
    check
        ->add_option("VERZEICHNIS", given.Check.Directory,
                     "Verzeichnis mit den Ini-Dateien, oder der Datenpfad")
        ->required();
    check
        ->add_option("--hoechstens", given.Check.MostPerRule,
                     "so viele Abweichungen einer Art je Tabelle zeigen (sonst 20)")
        ->check(tools::NumberFrom(0, INT64_MAX));
    check->add_flag("--json", given.Check.IsJson, "Ausgabe für Programme");
    check->footer(
        "Geprüft werden der Aufbau jeder Tabelle, jedes Feld, jeder Index und was die Sätze einander "
        "schulden:\n"
        "Soll und Haben, Monatswerte und Buchungen, offene Posten und Salden, Kosten, Vorträge, Verweise.\n\n"
        "Beispiel: books pruefen /tmp/beispiel");
    return check;
}

CLI::App *AddSave(CLI::App &app, Given &given)
{
    CLI::App *save = tools::AddCommand(app, "sichern", "Tabellen in sequentielle Dateien sichern");
    save->add_option("VERZEICHNIS", given.Save.From, anyBooks)->required();
    save->add_option("ZIEL", given.Save.To,
                     "Verzeichnis; bei einer Tabelle die Datei, oder - für die Standardausgabe")
        ->required();
    save->add_option("--mandant", given.Save.Mandant, "nur dieser Mandant; bei einer Tabelle sonst der erste")
        ->check(tools::NumberFrom(1, INT16_MAX));
    save->add_option("--tabelle", given.Save.Table, "nur diese Tabelle");
    save->add_option("--jahr", given.Save.Year, "Geschäftsjahr der Tabelle, sonst das letzte bebuchbare")
        ->needs("--tabelle");
    save->add_option("--schluessel", given.Save.Key,
                     "Schlüssel, in dessen Reihenfolge gesichert wird (sonst 0); -1: wie die Sätze liegen")
        ->needs("--tabelle");
    save->add_flag("--ersetzen", given.Save.Replace, "ersetzen, was am Ziel schon liegt");
    save->add_flag("--json", given.IsJson, "Ausgabe für Programme");
    save->footer(
        "Jeder Satz steht als Länge, Komma, seine Bytes, CR LF; nach dem letzten kommt ein Byte 1A.\n"
        "Gesichert wird der Stand eines Augenblicks, auch wenn andere weiterbuchen.\n\n"
        "Beispiele:\n  books sichern /tmp/beispiel /tmp/gesichert\n"
        "  books sichern /tmp/beispiel /tmp/mandant2 --mandant 2\n"
        "  books sichern /tmp/beispiel konten.seq --tabelle sako --mandant 1 --jahr 1998");
    return save;
}

CLI::App *AddLoad(CLI::App &app, Given &given)
{
    CLI::App *load = tools::AddCommand(app, "laden", "Tabellen aus sequentiellen Dateien laden");
    load->add_option("QUELLE", given.Load.From, "Verzeichnis; bei einer Tabelle die Datei")->required();
    load->add_option(
            "VERZEICHNIS", given.Load.To,
            "Verzeichnis mit den Ini-Dateien, oder der Datenpfad; für alle Tabellen darf es neu sein")
        ->required();
    load->add_option("--mandant", given.Load.Mandant, "nur dieser Mandant, oder in dessen Bücher die Tabelle")
        ->check(tools::NumberFrom(1, INT16_MAX));
    load->add_option("--tabelle", given.Load.Table, "nur diese Tabelle");
    load->add_option("--jahr", given.Load.Year, "Geschäftsjahr der Tabelle, sonst das letzte bebuchbare")
        ->needs("--tabelle");
    load->add_flag("--ersetzen", given.Load.Replace, "ersetzen, was schon da ist");
    load->add_flag("--anfuegen", given.Load.Append, "die Sätze der Tabelle zu denen, die da sind")
        ->needs("--tabelle")
        ->excludes("--ersetzen");
    load->add_flag("--trotzdem", given.Load.IsLenient,
                   "auch Sätze laden, in denen Felder keine gute Form haben");
    load->add_flag("--nur-pruefen", given.Load.IsTrial, "alles bis auf den letzten Schritt");
    load->add_option("--hoechstens", given.Load.MostPerTable, "so viele Gründe je Datei zeigen (sonst 20)")
        ->check(tools::NumberFrom(0, INT64_MAX));
    load->add_flag("--json", given.IsJson, "Ausgabe für Programme");
    load->footer(
        "Geladen wird alles oder nichts. Was abgelehnt wird, steht mit Datei, Satz, Schlüssel, Feld und\n"
        "Grund in der Ausgabe. Ein Verzeichnis enthält fista.seq und je Jahr und Mandant ein\n"
        "Verzeichnis wie 1998 oder 19981 mit sako.seq, bube.seq und so weiter.\n\n"
        "Beispiele:\n  books laden /tmp/gesichert /tmp/neu\n"
        "  books laden /tmp/mandant2 /tmp/beispiel --mandant 2 --ersetzen\n"
        "  books laden konten.seq /tmp/beispiel --tabelle sako --mandant 1 --jahr 1998 --ersetzen");
    return load;
}

CLI::App *AddCopy(CLI::App &app, Given &given)
{
    CLI::App *copy = tools::AddCommand(app, "kopie", "Bücher kopieren, auch während andere darin arbeiten");
    copy->add_option("VERZEICHNIS", given.Copy.From, anyBooks)->required();
    copy->add_option("ZIEL", given.Copy.To, "Wohin; wird angelegt")->required();
    copy->add_flag("--ersetzen", given.Copy.Replace, "Bücher ersetzen, die dort schon liegen");
    copy->add_flag("--json", given.IsJson, "Ausgabe für Programme");
    copy->footer("Jedes Jahr wird kopiert, wie es in einem Augenblick ist. Niemand muß dafür aufhören.\n\n"
                 "Beispiel: books kopie /tmp/beispiel /tmp/kopie");
    return copy;
}

CLI::App *AddShow(CLI::App &app, Given &given)
{
    CLI::App *show = tools::AddCommand(app, "zeigen", "Sätze einer Tabelle Feld für Feld zeigen");
    show->add_option("TABELLE", given.Show.Table, "sako, bube, debi …; alle nennt books aufbau")->required();
    show->add_option("VERZEICHNIS", given.Show.Directory,
                     "Verzeichnis mit den Ini-Dateien, oder der Datenpfad; sonst das eingestellte");
    show->add_option("--mandant", given.Show.Mandant, "Nummer des Mandanten, sonst der erste")
        ->check(tools::NumberFrom(1, INT16_MAX));
    show->add_option("--jahr", given.Show.Year, "Geschäftsjahr, sonst das letzte bebuchbare");
    show->add_option("--schluessel", given.Show.Key,
                     "Nummer des Schlüssels, in dessen Reihenfolge (sonst 0)");
    show->add_option("--gleich", given.Show.Equal,
                     "nur dieser Wert des Schlüssels; ein Text gilt als Anfang");
    show->add_option("--von", given.Show.From, "ab diesem Wert")->excludes("--gleich");
    show->add_option("--bis", given.Show.To, "bis zu diesem Wert einschließlich")->excludes("--gleich");
    show->add_option("--felder", given.Show.Fields, "nur diese Felder, nebeneinander")->delimiter(',');
    show->add_flag("--alles", given.Show.WithGaps, "auch die Bytes, die kein Feld sind");
    show->add_option("--hoechstens", given.Show.Most, "so viele Sätze")
        ->check(tools::NumberFrom(1, INT64_MAX));
    AddForms(show, given);
    show->footer(
        "Tage werden als TT.MM.JJJJ angegeben, die Teile eines Schlüssels mit Komma dazwischen.\n\n"
        "Beispiele:\n  books zeigen sako /tmp/beispiel --gleich 1840\n"
        "  books zeigen bube /tmp/beispiel --jahr 1997 --von 24.12.1997 --bis 31.12.1997 --csv\n"
        "  books zeigen debi /tmp/beispiel --schluessel 1 --von M --bis P --felder Konto,Kuerzel,Name1\n"
        "  books zeigen kurse /tmp/beispiel --gleich USD,15.01.1998 --json");
    return show;
}

CLI::App *AddDescribe(CLI::App &app, Given &given)
{
    CLI::App *describe = tools::AddCommand(app, "aufbau", "Tabellen, Felder und Schlüssel beschreiben");
    describe->add_option("TABELLE", given.Described, "sonst alle");
    AddForms(describe, given);
    describe->add_flag("--html", given.IsHtml, "als Seite")->excludes("--csv")->excludes("--json");
    describe->footer(
        "Beispiele:\n  books aufbau\n  books aufbau sako\n  books aufbau --html > satzaufbau.html");
    return describe;
}

int Run(int argc, char **argv)
{
    tools::EndQuietlyOnClosedPipe();
    tools::CatchInterrupts();
    CLI::App app("Bücher anlegen, prüfen, sichern, laden und ansehen", "books");
    tools::MakeGerman(app);
    app.require_subcommand(1);
    app.footer(
        "Beispiel: books beispiel /tmp/beispiel\n\n"
        "Rückgabe: 0 gut, 1 abgelehnt oder nicht in Ordnung, 2 falscher Aufruf, 3 Bücher nicht benutzbar");
    Given given;
    const CLI::App *sample = AddSample(app, given);
    const CLI::App *check = AddCheck(app, given);
    const CLI::App *save = AddSave(app, given);
    const CLI::App *load = AddLoad(app, given);
    const CLI::App *copy = AddCopy(app, given);
    const CLI::App *show = AddShow(app, given);
    const CLI::App *describe = AddDescribe(app, given);

    const int parsed = tools::ParseGerman(app, argc, argv);
    if (parsed >= 0) return parsed;
    if (*sample) return MakeSampleBooks(given.Sample, given.IsJson);
    if (!*check) tools::EndWithAWordOnDamage(); // the check has its children tell of it
    if (*save) return Save(given.Save, given.IsJson);
    if (*load) return Load(given.Load, given.IsJson);
    if (*copy) return Copy(given.Copy, given.IsJson);
    if (*check) return Check(given.Check);
    given.Show.As = given.IsJson  ? tools::Output::Json
                    : given.IsCsv ? tools::Output::Csv
                                  : tools::Output::Table;
    if (*show) return books::ShowTable(given.Show);
    if (*describe) {
        return books::DescribeTables(given.Described, given.IsHtml   ? books::DescribeAs::Html
                                                      : given.IsJson ? books::DescribeAs::Json
                                                      : given.IsCsv  ? books::DescribeAs::Csv
                                                                     : books::DescribeAs::Table);
    }
    return tools::ExitUsage;
}
} // namespace

int main(int argc, char **argv)
{
    // No file of the books ever gets the number of an output that was closed when the program began.
    host::GuardStandardDescriptors();
    try {
        return Run(argc, argv);
    } catch (const tools::Interrupted &error) {
        std::fprintf(stderr, "books: %s\n", error.what());
        return tools::ExitInterrupted;
    } catch (const std::filesystem::filesystem_error &error) {
        std::fprintf(stderr, "books: %s: %s\n", error.path1().c_str(),
                     tools::ErrorText(error.code().value()).c_str());
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
