#include "tools/vark/booking_commands.h"

#include "tools/vark/common_options.h"
#include "tools/vark/suggestions.h"

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
    Append(options, FormOptions(given));
    return options;
}

Options BookingFields(Given &given, BookingText &text, TaskOptions &task)
{
    Options options = {
        {.Name = "--mandant",
         .Help = "Nummer des Mandanten",
         .To = &text.Mandant,
         .Suggestions = OfferMandanten()},
        {.Name = "--stapel", .Help = "Nummer des Stapels", .To = &text.Stapel, .Suggestions = OfferStapel()},
        {.Name = "--datum", .Help = "Belegdatum, TT.MM.JJJJ", .To = &text.Datum},
        {.Name = "--beleg", .Help = "Belegnummer, bis 8 Zeichen", .To = &text.Beleg},
        {.Name = "--text", .Help = "Buchungstext, bis 35 Zeichen", .To = &text.Text},
        {.Name = "--soll",
         .Help = "Sollkonto",
         .To = &text.Sollkonto,
         .Suggestions = OfferKonten(postable, "--soll-art")},
        {.Name = "--soll-art",
         .Help = "Sachkonto, Kreditor oder Debitor; sonst nach der Nummer",
         .To = &text.Sollart,
         .Suggestions = OfferKontoarten(postable)},
        {.Name = "--haben",
         .Help = "Habenkonto",
         .To = &text.Habenkonto,
         .Suggestions = OfferKonten(postable, "--haben-art")},
        {.Name = "--haben-art",
         .Help = "wie --soll-art",
         .To = &text.Habenart,
         .Suggestions = OfferKontoarten(postable)},
        {.Name = "--betrag", .Help = "Bruttobetrag", .To = &text.Betrag},
        {.Name = "--satz", .Help = "Steuersatz; sonst der des Kontos", .To = &text.Steuersatz},
        {.Name = "--steuer", .Help = "Steuerbetrag; sonst aus dem Satz errechnet", .To = &text.Steuerbetrag},
        {.Name = "--schablone",
         .Help = "Nummer der Kostenschablone",
         .To = &text.Kostenschablone,
         .Suggestions = OfferKostenschablonen()},
        {.Name = "--zahlungsziel",
         .Help = "Nummer; sonst das des Personenkontos",
         .To = &text.Zahlungsziel,
         .Suggestions = OfferZahlungsziele()},
    };
    Append(options, TaskFiles(given, task));
    return options;
}

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
        {.Name = "--waehrung",
         .Help = "Währung, nur bei Kreditoren",
         .To = &text.Waehrung,
         .Suggestions = OfferWaehrungen()},
        {.Name = "--blz", .Help = "Bankleitzahl, nur mit --bankkonto", .To = &text.Blz},
        {.Name = "--bankkonto", .Help = "Bankkontonummer, nur mit --blz", .To = &text.Bankkonto},
        {.Name = "--bank", .Help = "Name der Bank", .To = &text.Bank},
        {.Name = "--gegenkonto",
         .Help = "ein Sachkonto",
         .To = &text.Gegenkonto,
         .Suggestions = OfferKonten(ArtSachkonto, "")},
        {.Name = "--wert1", .Help = "erster Zahlungswert", .To = &text.Wert1},
        {.Name = "--wert2", .Help = "zweiter Zahlungswert", .To = &text.Wert2},
        {.Name = "--skonto", .Help = "Skonto in Prozent", .To = &text.Skonto},
        {.Name = "--mahnkennziffer", .Help = "-1 bis 3, nur bei Debitoren", .To = &text.Mahnkennziffer},
        {.Name = "--zahlungsziel",
         .Help = "Nummer des Zahlungsziels",
         .To = &text.Zahlungsziel,
         .Suggestions = OfferZahlungsziele()},
    };
}

Command PartnerCommand(Given &given, const char *name, const char *description, PartnerAction action)
{
    PartnerOptions &partner = given.Partner;
    PartnerText &text = partner.Defaults;
    Options options = {
        MandantOption(partner.Mandant),
        {.Name = "--art",
         .Help = "Debitor oder Kreditor",
         .To = &partner.Kind,
         .IsRequired = true,
         .Suggestions = OfferKontoarten(personal)},
        {.Name = "--konto", .Help = "Kontonummer", .To = &text.Konto, .Suggestions = OfferKonten(personal)},
        {.Name = "--kuerzel",
         .Help = "Kürzel, bis 8 Zeichen",
         .To = &text.Kuerzel,
         .Suggestions = OfferKuerzel(personal)},
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

} // namespace

Command BookingCommand(Given &given)
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

Command SplitCommand(Given &given)
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

Command BatchCommand(Given &given)
{
    BatchOptions &batch = given.Batch;
    Options options = {
        MandantOption(batch.Mandant),
        {.Name = "STAPEL",
         .Help = "Nummer des Stapels; ohne sie die Liste",
         .To = &batch.Number,
         .Suggestions = OfferStapel()},
        {.Name = "--kosten", .Help = "mit den Kostenzeilen", .To = &batch.WithCosts},
    };
    Append(options, FormOptions(given));
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

Command PartnerCommands(Given &given)
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

} // namespace cli
