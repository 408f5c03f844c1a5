#include "tools/vark/commands.h"

#include "tools/vark/booking_commands.h"
#include "tools/vark/common_options.h"
#include "tools/vark/mandanten.h"
#include "tools/vark/report_commands.h"
#include "tools/vark/status.h"
#include "tools/vark/suggestions.h"

namespace cli {

using tools::Command;
using tools::Named;
using tools::Option;

namespace {

constexpr const char *rateNotes =
    "Erfaßt und gelöscht wird im Dialog der Fremdwährungsverwaltung, den vark dazu unsichtbar bedient: Es\n"
    "gelten dieselben Prüfungen.";

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
        .Options = FormOptions(given),
        .Examples = {"vark mandanten --csv"},
        .Run = [&given] { return ShowMandanten(FormOf(given)); },
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
                 .Highest = INT16_MAX,
                 .Suggestions = OfferMandanten()},
                {.Name = "--art",
                 .Help = "bei konto: Sachkonto (sonst), Kreditor, Debitor oder Kostenstelle",
                 .To = &pick.Kontoart,
                 .Suggestions = OfferKontoarten(anyKind)},
                {.Name = "--von",
                 .Help = "bei konto: kleinste Nummer",
                 .To = &pick.From,
                 .Suggestions = OfferKonten(ArtSachkonto)},
                {.Name = "--bis",
                 .Help = "bei konto: größte Nummer",
                 .To = &pick.To,
                 .Suggestions = OfferKonten(ArtSachkonto)},
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
    Options options = {MandantOption(mandant)};
    Append(options, FormOptions(given));
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
    return Query(given, listed.Mandant,
                 {
                     .Name = "konten",
                     .Description = "Konten auflisten",
                     .Options =
                         {
                             {.Name = "KONTO",
                              .Help = "nur dieses, nach Nummer oder Kürzel",
                              .To = &listed.Single,
                              .Suggestions = OfferKonten(postable)},
                             {.Name = "--art",
                              .Help = "Sachkonto, Debitor, Kreditor oder Kostenstelle; sonst die ersten drei",
                              .To = &listed.Kind,
                              .Suggestions = OfferKontoarten(anyKind)},
                             {.Name = "--von",
                              .Help = "ab dieser Nummer",
                              .To = &listed.From,
                              .Suggestions = OfferKonten(postable)},
                             {.Name = "--bis",
                              .Help = "bis zu dieser Nummer",
                              .To = &listed.To,
                              .Suggestions = OfferKonten(postable)},
                             {.Name = "--nach",
                              .Help = "Nummer (sonst) oder Kürzel: Reihenfolge, und was --von meint",
                              .To = &listed.Order,
                              .Suggestions = OfferWords({"Nummer", "Kürzel"})},
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
    return Query(given, query.Mandant,
                 {
                     .Name = "konto-frei",
                     .Description = "Die nächste freie Nummer",
                     .Options = {{.Name = "--art",
                                  .Help = "Kreditor oder Debitor",
                                  .To = &query.Kind,
                                  .IsRequired = true,
                                  .Suggestions = OfferKontoarten(personal)}},
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
                     .IsRequired = true,
                     .Suggestions = OfferKonten(postable)},
                    {.Name = "--art",
                     .Help = "Sachkonto, Kreditor, Debitor, Kostenstelle; sonst nach der Nummer",
                     .To = &query.Kind,
                     .Suggestions = OfferKontoarten(anyKind)},
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
    return Query(given, query.Mandant,
                 {
                     .Name = "op",
                     .Description = "Offene Posten",
                     .Options =
                         {
                             {.Name = "--art",
                              .Help = "Debitor oder Kreditor; sonst beide",
                              .To = &query.Kind,
                              .Suggestions = OfferKontoarten(personal)},
                             {.Name = "--konto",
                              .Help = "nur die dieses Kontos, nach Nummer oder Kürzel",
                              .To = setKonto,
                              .Suggestions = OfferKonten(personal)},
                         },
                     .Examples = {"vark op --mandant 1", "vark op --mandant 1 --art Debitor --konto 10010"},
                     .Run = [&query] { return ShowOpenItems(query); },
                 });
}

// ---- Rates of exchange ----

Command Kurse(Given &given)
{
    RateOptions &rate = given.Rate;
    Options options = {MandantOption(rate.Mandant)};
    Append(options, FormOptions(given));
    Append(
        options,
        {
            {.Name = "--neu", .Help = "einen Kurs erfassen", .To = &rate.IsNew},
            {.Name = "--loeschen", .Help = "einen Kurs löschen", .To = &rate.Deletes, .Excludes = {"--neu"}},
            {.Name = "--dialog",
             .Help = "im Dialog am Bildschirm pflegen",
             .To = &rate.Asks,
             .Excludes = {"--neu", "--loeschen"}},
            {.Name = "--waehrung",
             .Help = "Währung; in der Liste nur diese",
             .To = &rate.Waehrung,
             .Suggestions = OfferWaehrungen()},
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
                .Commands = {Status(given), Mandanten(given), BookingCommand(given), SplitCommand(given),
                             BatchCommand(given), PartnerCommands(given), Waehlen(given), Konten(given),
                             KontoFrei(given), Saldo(given), Journal(given), OffenePosten(given),
                             Kurse(given), ReportCommands(given.Report)},
                .Notes = "Jeder Befehl erklärt sich mit --hilfe, etwa: vark buchen --hilfe",
            },
        .Version = VARK_VERSION,
        .ExitCodes = {{0, "gut"},
                      {1, "etwas wurde abgelehnt"},
                      {2, "falscher Aufruf"},
                      {3, "Bücher oder Bibliothek nicht benutzbar"}},
        .Topics =
            {{"EINSTELLUNGEN",
              {{"tolka.ini, [TOLKA]",
                "Pfad32 oder Pfad: Verzeichnis der Daten; ReportPfad: Verzeichnis der Berichtsvorlagen"},
               {"vark.ini, [VARK]",
                "Pfad und ReportPfad: dasselbe, ReportPfad vor dem von tolka.ini; Mandant, Stapel und "
                "andere: die letzte Auswahl der Dialoge"},
               {"vark.ini, [RS]",
                "Drucker: leer der Standarddrucker, der Name eines anderen, oder datei:MUSTER für "
                "PDF-Dateien"}}},
             {"DATEIEN",
              {{"$VARK_CONFIG_DIR", "hier allein liegen tolka.ini und vark.ini, wenn es gesetzt ist"},
               {"~/.config/vark", "sonst hier ($XDG_CONFIG_HOME/vark, wenn das gesetzt ist),"},
               {"/etc/vark", "sonst hier"}}},
             {"UMGEBUNG",
              {{"VARK_HEUTE", "TT.MM.JJJJ; gilt als der heutige Tag"},
               {"VARK_UI", "wer Fenster zeigt und Meldungen beantwortet: gtk, headless oder script:DATEI"},
               {"VARK_UI_LOG", "Datei, an die jede Meldung und jeder Dialog angehängt wird"}}}},
        .SeeAlso = {"books(1)", "vark40(3)", "templates(5)"},
    };
}

} // namespace cli
