#include "tools/books/commands.h"

#include "tools/books/describe.h"
#include "tools/books/perform.h"
#include "tools/books/suggestions.h"
#include "tools/common/terminal.h"

namespace books {

using tools::Command;
using tools::Named;
using tools::Option;

namespace {

using Options = std::vector<Option>;

constexpr const char *anyBooks = "Verzeichnis mit den Ini-Dateien, oder der Datenpfad";

Option Books(std::filesystem::path &directory)
{
    return {.Name = "VERZEICHNIS",
            .Help = anyBooks,
            .To = &directory,
            .IsRequired = true,
            .Names = Named::Directory};
}

Option MandantOption(int &number, const char *help)
{
    return {.Name = "--mandant",
            .Help = help,
            .To = &number,
            .Lowest = 1,
            .Highest = INT16_MAX,
            .Suggestions = OfferMandanten()};
}

Option Json(Given &given) { return {.Name = "--json", .Help = "Ausgabe für Programme", .To = &given.IsJson}; }

Command Beispiel(Given &given)
{
    SampleOptions &sample = given.Sample;
    return {
        .Name = "beispiel",
        .Description = "Musterbücher mit drei Mandanten anlegen",
        .Options =
            {
                {.Name = "VERZEICHNIS",
                 .Help = "Wohin; wird angelegt",
                 .To = &sample.Directory,
                 .IsRequired = true,
                 .Names = Named::Directory},
                {.Name = "--ersetzen",
                 .Help = "Bücher ersetzen, die dort schon liegen",
                 .To = &sample.Replace},
                {.Name = "--buchungen",
                 .Help = "endgültige Buchungen von Mandant 1 (sonst 3.000; die anderen haben je ein "
                         "Zehntel); 0: keine",
                 .To = &sample.Postings},
                {.Name = "--saat", .Help = "Zahl, die die Buchungen bestimmt (sonst 1)", .To = &sample.Seed},
                {.Name = "--personenkonten",
                 .Help = "Debitoren und Kreditoren von Mandant 1 (sonst 40 und 25)",
                 .To = &sample.PersonalAccounts},
                {.Name = "--posten",
                 .Help = "ungefähre Zahl der offenen Posten von Mandant 1",
                 .To = &sample.OpenItems},
                Json(given),
            },
        .Examples = {"books beispiel /tmp/beispiel --ersetzen",
                     "books beispiel /tmp/gross --buchungen 100000 --personenkonten 10000 --posten 10000"},
        .Run = [&given] { return MakeSampleBooks(given.Sample, given.IsJson); },
    };
}

Command Pruefen(Given &given)
{
    CheckOptions &check = given.Check;
    return {
        .Name = "pruefen",
        .Description = "Prüfen, ob Bücher in sich stimmen",
        .Options =
            {
                Books(check.Directory),
                {.Name = "--hoechstens",
                 .Help = "so viele Abweichungen einer Art je Tabelle zeigen (sonst 20)",
                 .To = &check.MostPerRule,
                 .Lowest = 0},
                {.Name = "--json", .Help = "Ausgabe für Programme", .To = &check.IsJson},
            },
        .Examples = {"books pruefen /tmp/beispiel"},
        .Notes =
            "Geprüft werden der Aufbau jeder Tabelle, jedes Feld, jeder Index und was die Sätze einander\n"
            "schulden: Soll und Haben, Monatswerte und Buchungen, offene Posten und Salden, Kosten,\n"
            "Vorträge, Verweise.",
        .Run = [&check] { return CheckAndTell(check); },
    };
}

Command Sichern(Given &given)
{
    SaveOptions &save = given.Save;
    return {
        .Name = "sichern",
        .Description = "Tabellen in sequentielle Dateien sichern",
        .Options =
            {
                Books(save.From),
                {.Name = "ZIEL",
                 .Help = "Verzeichnis; bei einer Tabelle die Datei, oder - für die Standardausgabe",
                 .To = &save.To,
                 .IsRequired = true,
                 .Names = Named::File},
                MandantOption(save.Mandant, "nur dieser Mandant; bei einer Tabelle sonst der erste"),
                {.Name = "--tabelle",
                 .Help = "nur diese Tabelle",
                 .To = &save.Table,
                 .Suggestions = OfferTables()},
                {.Name = "--jahr",
                 .Help = "Geschäftsjahr der Tabelle, sonst das letzte bebuchbare",
                 .To = &save.Year,
                 .Needs = {"--tabelle"},
                 .Suggestions = OfferYears()},
                {.Name = "--schluessel",
                 .Help = "Schlüssel, in dessen Reihenfolge gesichert wird (sonst 0); -1: wie die Sätze "
                         "liegen",
                 .To = &save.Key,
                 .Needs = {"--tabelle"},
                 .Suggestions = OfferKeys()},
                {.Name = "--ersetzen", .Help = "ersetzen, was am Ziel schon liegt", .To = &save.Replace},
                Json(given),
            },
        .Examples = {"books sichern /tmp/beispiel /tmp/gesichert",
                     "books sichern /tmp/beispiel /tmp/mandant2 --mandant 2",
                     "books sichern /tmp/beispiel konten.seq --tabelle sako --mandant 1 --jahr 1998"},
        .Notes =
            "Jeder Satz steht als Länge, Komma, seine Bytes, CR LF; nach dem letzten kommt ein Byte 1A.\n"
            "Gesichert wird der Stand eines Augenblicks, auch wenn andere weiterbuchen.",
        .Run = [&given] { return SaveAndTell(given.Save, given.IsJson); },
    };
}

Command Laden(Given &given)
{
    LoadOptions &load = given.Load;
    return {
        .Name = "laden",
        .Description = "Tabellen aus sequentiellen Dateien laden",
        .Options =
            {
                {.Name = "QUELLE",
                 .Help = "Verzeichnis; bei einer Tabelle die Datei",
                 .To = &load.From,
                 .IsRequired = true,
                 .Names = Named::File},
                {.Name = "VERZEICHNIS",
                 .Help = std::string(anyBooks) + "; für alle Tabellen darf es neu sein",
                 .To = &load.To,
                 .IsRequired = true,
                 .Names = Named::Directory},
                MandantOption(load.Mandant, "nur dieser Mandant, oder in dessen Bücher die Tabelle"),
                {.Name = "--tabelle",
                 .Help = "nur diese Tabelle",
                 .To = &load.Table,
                 .Suggestions = OfferTables()},
                {.Name = "--jahr",
                 .Help = "Geschäftsjahr der Tabelle, sonst das letzte bebuchbare",
                 .To = &load.Year,
                 .Needs = {"--tabelle"},
                 .Suggestions = OfferYears()},
                {.Name = "--ersetzen", .Help = "ersetzen, was schon da ist", .To = &load.Replace},
                {.Name = "--anfuegen",
                 .Help = "die Sätze der Tabelle zu denen, die da sind",
                 .To = &load.Append,
                 .Needs = {"--tabelle"},
                 .Excludes = {"--ersetzen"}},
                {.Name = "--trotzdem",
                 .Help = "auch Sätze laden, in denen Felder keine gute Form haben",
                 .To = &load.IsLenient},
                {.Name = "--nur-pruefen", .Help = "alles bis auf den letzten Schritt", .To = &load.IsTrial},
                {.Name = "--hoechstens",
                 .Help = "so viele Gründe je Datei zeigen (sonst 20)",
                 .To = &load.MostPerTable,
                 .Lowest = 0},
                Json(given),
            },
        .Examples = {"books laden /tmp/gesichert /tmp/neu",
                     "books laden /tmp/mandant2 /tmp/beispiel --mandant 2 --ersetzen",
                     "books laden konten.seq /tmp/beispiel --tabelle sako --mandant 1 --jahr 1998 "
                     "--ersetzen"},
        .Notes = "Geladen wird alles oder nichts. Was abgelehnt wird, steht mit Datei, Satz, Schlüssel, Feld "
                 "und\n"
                 "Grund in der Ausgabe. Ein Verzeichnis enthält fista.seq und je Jahr und Mandant ein\n"
                 "Verzeichnis wie 1998 oder 19981 mit sako.seq, bube.seq und so weiter.",
        .Run = [&given] { return LoadAndTell(given.Load, given.IsJson); },
    };
}

Command Kopie(Given &given)
{
    CopyOptions &copy = given.Copy;
    return {
        .Name = "kopie",
        .Description = "Bücher kopieren, auch während andere darin arbeiten",
        .Options =
            {
                Books(copy.From),
                {.Name = "ZIEL",
                 .Help = "Wohin; wird angelegt",
                 .To = &copy.To,
                 .IsRequired = true,
                 .Names = Named::Directory},
                {.Name = "--ersetzen", .Help = "Bücher ersetzen, die dort schon liegen", .To = &copy.Replace},
                {.Name = "--server",
                 .Help = "Verbindung, wie libpq sie liest: die Kopie liegt auf diesem Server",
                 .To = &copy.Server},
                {.Name = "--schema",
                 .Help = "mit --server: Schema des Datenpfads; die der Jahre heißen dahinter nach dem Jahr",
                 .To = &copy.Schema},
                Json(given),
            },
        .Examples = {"books kopie /tmp/beispiel /tmp/kopie"},
        .Notes =
            "Jedes Jahr wird kopiert, wie es in einem Augenblick ist. Niemand muß dafür aufhören.\n\n"
            "Ohne --server liegt die Kopie im Verzeichnis, auch wenn das Original auf einem Server liegt.",
        .Run = [&given] { return CopyAndTell(given.Copy, given.IsJson); },
    };
}

Option OnServer(std::filesystem::path &directory)
{
    Option option = Books(directory);
    option.Help = "Verzeichnis mit den Ini-Dateien, oder der Datenpfad; die Bücher liegen auf einem Server";
    return option;
}

Command ServerAnlegen(Given &given)
{
    ServerOptions &server = given.Server;
    return {
        .Name = "anlegen",
        .Description = "Ein Verzeichnis anlegen, dessen Bücher auf einem Server liegen, und dort das Schema",
        .Options =
            {
                {.Name = "VERZEICHNIS",
                 .Help = "Wohin; wird angelegt",
                 .To = &server.Directory,
                 .IsRequired = true,
                 .Names = Named::Directory},
                {.Name = "--verbindung",
                 .Help = "wie libpq sie liest: host=… dbname=… user=…",
                 .To = &server.Connection,
                 .IsRequired = true},
                {.Name = "--schema", .Help = "Name des Schemas", .To = &server.Schema, .IsRequired = true},
            },
        .Notes = "Kennwörter stehen in ~/.pgpass.",
        .Run = [&given] { return MakeServerBooks(given.Server); },
    };
}

Command ServerRechte(Given &given)
{
    ServerOptions &server = given.Server;
    return {
        .Name = "rechte",
        .Description = "Rollen geben, was sie zum Lesen oder zum Schreiben der Bücher brauchen",
        .Options =
            {
                OnServer(server.Directory),
                {.Name = "--leser", .Help = "Rolle, die nur liest", .To = &server.Reader},
                {.Name = "--schreiber", .Help = "Rolle, die liest und schreibt", .To = &server.Writer},
            },
        .Run = [&given] { return GrantRoles(given.Server); },
    };
}

Command ServerSichten(Given &given)
{
    return {
        .Name = "sichten",
        .Description = "Sichten anlegen, in denen andere Programme die Tabellen mit SQL lesen",
        .Options = {OnServer(given.Server.Directory)},
        .Notes =
            "Jede Tabelle hat eine Sicht mit einer Spalte für jedes Feld, wie books aufbau sie nennt. Wer\n"
            "nur liest, bekommt die Rechte daran danach mit books server rechte.",
        .Run = [&given] { return MakeViews(given.Server); },
    };
}

Command Server(Given &given)
{
    return {
        .Name = "server",
        .Description = "Bücher auf einem PostgreSQL-Server einrichten",
        .Commands = {ServerAnlegen(given), ServerRechte(given), ServerSichten(given)},
    };
}

tools::Output OutputOf(const Given &given)
{
    if (given.IsJson) return tools::Output::Json;
    return given.IsCsv ? tools::Output::Csv : tools::Output::Table;
}

Command Zeigen(Given &given)
{
    ShowOptions &show = given.Show;
    return {
        .Name = "zeigen",
        .Description = "Sätze einer Tabelle Feld für Feld zeigen",
        .Options =
            {
                {.Name = "TABELLE",
                 .Help = "sako, bube, debi …; alle nennt books aufbau",
                 .To = &show.Table,
                 .IsRequired = true,
                 .Suggestions = OfferTables()},
                {.Name = "VERZEICHNIS",
                 .Help = std::string(anyBooks) + "; sonst das eingestellte",
                 .To = &show.Directory,
                 .Names = Named::Directory},
                MandantOption(show.Mandant, "Nummer des Mandanten, sonst der erste"),
                {.Name = "--jahr",
                 .Help = "Geschäftsjahr, sonst das letzte bebuchbare",
                 .To = &show.Year,
                 .Suggestions = OfferYears()},
                {.Name = "--schluessel",
                 .Help = "Nummer des Schlüssels, in dessen Reihenfolge (sonst 0)",
                 .To = &show.Key,
                 .Suggestions = OfferKeys()},
                {.Name = "--gleich",
                 .Help = "nur dieser Wert des Schlüssels; ein Text gilt als Anfang",
                 .To = &show.Equal},
                {.Name = "--von", .Help = "ab diesem Wert", .To = &show.From, .Excludes = {"--gleich"}},
                {.Name = "--bis",
                 .Help = "bis zu diesem Wert einschließlich",
                 .To = &show.To,
                 .Excludes = {"--gleich"}},
                {.Name = "--felder",
                 .Help = "nur diese Felder, nebeneinander",
                 .To = &show.Fields,
                 .Separator = ',',
                 .Suggestions = OfferFields()},
                {.Name = "--alles", .Help = "auch die Bytes, die kein Feld sind", .To = &show.WithGaps},
                {.Name = "--hoechstens", .Help = "so viele Sätze", .To = &show.Most, .Lowest = 1},
                {.Name = "--csv", .Help = "Ausgabe als CSV", .To = &given.IsCsv},
                {.Name = "--json",
                 .Help = "Ausgabe für Programme",
                 .To = &given.IsJson,
                 .Excludes = {"--csv"}},
            },
        .Examples = {"books zeigen sako /tmp/beispiel --gleich 1840",
                     "books zeigen bube /tmp/beispiel --jahr 1997 --von 24.12.1997 --bis 31.12.1997 --csv",
                     "books zeigen debi /tmp/beispiel --schluessel 1 --von M --bis P --felder "
                     "Konto,Kuerzel,Name1",
                     "books zeigen kurse /tmp/beispiel --gleich USD,15.01.1998 --json"},
        .Notes = "Tage werden als TT.MM.JJJJ angegeben, die Teile eines Schlüssels mit Komma dazwischen.",
        .Run =
            [&given] {
                given.Show.As = OutputOf(given);
                tools::EndWithAWordOnDamage();
                return ShowTable(given.Show);
            },
    };
}

Command Sql(Given &given)
{
    SqlOptions &sql = given.Sql;
    return {
        .Name = "sql",
        .Description = "Bücher in SQL befragen",
        .Options =
            {
                Books(sql.Directory),
                {.Name = "ANWEISUNG",
                 .Help = "eine oder mehrere mit ; dazwischen; ohne sie aus der Eingabe",
                 .To = &sql.Statement},
                {.Name = "--csv", .Help = "Ausgabe als CSV", .To = &given.IsCsv},
                {.Name = "--json",
                 .Help = "Ausgabe für Programme",
                 .To = &given.IsJson,
                 .Excludes = {"--csv"}},
            },
        .Examples = {"books sql /tmp/beispiel \"SELECT * FROM salden WHERE Konto = '1840'\"",
                     "books sql /tmp/beispiel \"SELECT Konto, betrag(sum(Betrag)) FROM offene_posten "
                     "GROUP BY Konto\" --csv",
                     "books sql /tmp/beispiel < fragen.sql"},
        .Notes =
            "Die Tabellen heißen wie in books aufbau: sako über alle Mandanten und Jahre, sako_1998 und\n"
            "sako_19981 (Mandant 2) für ein Jahr; Mandant und Jahr sind Spalten. Dazu kommen die Sichten\n"
            "buchungen, stapelbuchungen, salden, offene_posten und kosten. Ein Betrag steht in Pfennig da\n"
            "und als Text (Soll_Text), ein Tag als 1998-04-15. betrag(…) schreibt Pfennig als 1.234,50.\n"
            "Jede Anweisung sieht die Bücher, wie sie in einem Augenblick sind; geändert wird nichts.\n"
            "An einem Terminal beginnt ohne ANWEISUNG die Shell von SQLite, wenn es sie gibt. Andere\n"
            "Programme laden vark_sql.so und rufen buecher_oeffnen('VERZEICHNIS').",
        .Run =
            [&given] {
                given.Sql.As = OutputOf(given);
                tools::EndWithAWordOnDamage();
                return AskBooks(given.Sql);
            },
    };
}

Command Aufbau(Given &given)
{
    return {
        .Name = "aufbau",
        .Description = "Tabellen, Felder und Schlüssel beschreiben",
        .Options =
            {
                {.Name = "TABELLE",
                 .Help = "sonst alle",
                 .To = &given.Described,
                 .Suggestions = OfferTables()},
                {.Name = "--csv", .Help = "Ausgabe als CSV", .To = &given.IsCsv},
                {.Name = "--json",
                 .Help = "Ausgabe für Programme",
                 .To = &given.IsJson,
                 .Excludes = {"--csv"}},
                {.Name = "--html", .Help = "als Seite", .To = &given.IsHtml, .Excludes = {"--csv", "--json"}},
            },
        .Examples = {"books aufbau", "books aufbau sako", "books aufbau --html > satzaufbau.html"},
        .Run =
            [&given] {
                return DescribeTables(given.Described, given.IsHtml   ? DescribeAs::Html
                                                       : given.IsJson ? DescribeAs::Json
                                                       : given.IsCsv  ? DescribeAs::Csv
                                                                      : DescribeAs::Table);
            },
    };
}

} // namespace

tools::Tool DescribeBooks(Given &given)
{
    return {
        .Root =
            {
                .Name = "books",
                .Description = "Bücher anlegen, prüfen, sichern, laden und ansehen",
                .Commands = {Beispiel(given), Pruefen(given), Sichern(given), Laden(given), Kopie(given),
                             Zeigen(given), Sql(given), Server(given), Aufbau(given)},
                .Examples = {"books beispiel /tmp/beispiel"},
                .Notes = "Jeder Befehl erklärt sich mit --hilfe, etwa: books laden --hilfe",
            },
        .Version = VARK_VERSION,
        .ExitCodes = {{0, "gut"},
                      {1, "abgelehnt oder nicht in Ordnung"},
                      {2, "falscher Aufruf"},
                      {3, "Bücher nicht benutzbar"}},
        .Topics = {},
        .SeeAlso = {"vark(1)", "vark40(3)"},
    };
}

} // namespace books
