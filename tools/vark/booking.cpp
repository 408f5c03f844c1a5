#include "tools/vark/booking.h"

#include "include/vark40.h"
#include "tools/common/exit_codes.h"
#include "tools/common/texts.h"
#include "tools/vark/reasons.h"

#include <string_view>
#include <utility>

namespace cli {

namespace {

constexpr TaskWords bookingWords = {"Buchung",       "Buchungen", "in den Stapel geschrieben",
                                    "Nicht gebucht", "gebucht",   "Buchen"};
constexpr TaskWords splitWords = {"Splitbuchung",  "Splitbuchungen", "in den Stapel geschrieben",
                                  "Nicht gebucht", "gebucht",        "Buchen"};

// What the library said to a code that is not 1 or, where it said nothing, what the code means. With 1 it is
// in the books, whatever was said about a table that could not be closed behind it.
void TakeReason(ReasonCatcher &catcher, Outcome &outcome)
{
    const std::string said = catcher.Take();
    if (outcome.Code == VARK_GUT) {
        outcome.Remark = said;
    } else {
        outcome.Reason = said.empty() ? TextOfCode(outcome.Code) : said;
    }
}

// The one message that denies a code of 1: nothing of a split booking is written that names an unknown
// Kostenschablone.
constexpr std::string_view dropped = "Die Kostenschablone ist unzulässig!";

Outcome BookOne(const BookingText &text)
{
    Outcome outcome;
    PreparedBooking booking{};
    outcome.Reason = PrepareBooking(text, booking);
    if (!outcome.Reason.empty()) return outcome;
    outcome.IsCut = booking.IsCut();

    ReasonCatcher catcher;
    booking.FindKinds();
    outcome.Code = VARK_BuchungEinfuegenDirektEx(
        1, booking.Mandant, booking.Stapel, booking.Datum.c_str(), booking.Beleg.c_str(),
        booking.Text.c_str(), booking.Soll.c_str(), booking.SollArt, booking.Haben.c_str(), booking.HabenArt,
        booking.Betrag.c_str(), booking.Satz.c_str(), booking.Steuer.c_str(), booking.Kostenschablone,
        booking.Zahlungsziel);
    TakeReason(catcher, outcome);
    return outcome;
}

// The parts share what the first one says of Mandant, Stapel, date, Beleg, Kennzeichen and Zahlungsziel.
Outcome BookParts(const std::vector<BookingText> &texts)
{
    Outcome outcome;
    std::vector<PreparedBooking> parts(texts.size());
    for (size_t i = 0; i < texts.size() && outcome.Reason.empty(); ++i) {
        outcome.Reason = PrepareBooking(texts[i], parts[i]);
        if (!outcome.Reason.empty()) {
            outcome.Reason.insert(0, "Teilbuchung " + std::to_string(i + 1) + ": ");
        }
        outcome.IsCut = outcome.IsCut || parts[i].IsCut();
    }
    if (!outcome.Reason.empty()) return outcome;

    ReasonCatcher catcher;
    const PreparedBooking &head = parts.front();
    outcome.Code = VARK_SplitStartEx(head.Mandant, head.Stapel, head.Datum.c_str(), head.Beleg.c_str(),
                                     static_cast<uint8_t>(head.Kennzeichen), head.Zahlungsziel);
    for (size_t i = 0; i < parts.size() && outcome.Code == VARK_GUT; ++i) {
        PreparedBooking &part = parts[i];
        part.FindKinds();
        outcome.Code = VARK_SplitEinfuegenEx(part.Soll.c_str(), part.SollArt, part.Haben.c_str(),
                                             part.HabenArt, part.Betrag.c_str(), part.Satz.c_str(),
                                             part.Steuer.c_str(), part.Text.c_str(), part.Kostenschablone);
    }
    if (outcome.Code == VARK_GUT) {
        outcome.Code = VARK_SplitEnde(1, 1);
        TakeReason(catcher, outcome);
        if (outcome.Code == VARK_GUT && outcome.Remark.find(dropped) != std::string::npos) {
            outcome.Reason = std::exchange(outcome.Remark, {});
        }
        return outcome;
    }
    TakeReason(catcher, outcome);
    // The start refuses a date without a message, and memory is all that a part can lack.
    if (outcome.Code == VARK_FEHLER_DATUM) outcome.Reason = "Das Buchungsdatum ist unzulässig!";
    if (outcome.Code == VARK_FEHLER_TEIL_SPEICHER) outcome.Reason = TextOfCode(VARK_FEHLER_KEIN_SPEICHER);
    VARK_SplitEnde(0, 0);
    return outcome;
}

bool IsSameSplit(const BookingText &before, const BookingText &line)
{
    for (const auto field : {&BookingText::Mandant, &BookingText::Stapel, &BookingText::Datum,
                             &BookingText::Beleg, &BookingText::Kennzeichen, &BookingText::Zahlungsziel}) {
        if (before.*field != line.*field) return false;
    }
    return true;
}

// "8010;1840;3200,00;Miete": a value that is left out comes from the defaults.
BookingText PartOf(const BookingText &defaults, const std::string &part)
{
    static constexpr std::string BookingText::*order[] = {
        &BookingText::Sollkonto,      &BookingText::Habenkonto, &BookingText::Betrag,
        &BookingText::Text,           &BookingText::Steuersatz, &BookingText::Steuerbetrag,
        &BookingText::Kostenschablone};
    const CsvLine line = SplitCsvText(part);
    if (!line.Fault.empty()) throw tools::UsageError("--teil „" + part + "“: " + line.Fault);
    if (line.Fields.size() > std::size(order)) {
        throw tools::UsageError("--teil „" + part + "“ hat mehr als " + std::to_string(std::size(order)) +
                                " Werte.");
    }
    BookingText text = defaults;
    for (size_t i = 0; i < line.Fields.size(); ++i) {
        if (!line.Fields[i].empty()) text.*order[i] = line.Fields[i];
    }
    return text;
}

// What every booking needs, and nobody else knows.
void NeedOptions(const BookingText &text, bool isWhole)
{
    struct Needed {
        std::string BookingText::*Field;
        const char *Option;
        bool OfParts; // which the parts of a split booking may say
    };
    static constexpr Needed needed[] = {
        {&BookingText::Mandant, "--mandant", false}, {&BookingText::Stapel, "--stapel", false},
        {&BookingText::Datum, "--datum", false},     {&BookingText::Sollkonto, "--soll", true},
        {&BookingText::Habenkonto, "--haben", true}, {&BookingText::Betrag, "--betrag", true}};
    for (const Needed &each : needed) {
        if ((text.*each.Field).empty() && (isWhole || !each.OfParts))
            throw tools::UsageError(std::string("Es fehlt die Angabe ") + each.Option + ".");
    }
}

int ReportOne(const TaskOptions &options, const TaskWords &words, const Outcome &outcome)
{
    TaskReport report(options, words);
    report.Add(outcome, {});
    return report.End(0);
}

} // namespace

int Book(const BookingOptions &options)
{
    if (options.Task.File.empty()) NeedOptions(options.Defaults, true);
    tools::AnswerByExitCode();
    NeedLibrary();
    if (options.Task.File.empty()) return ReportOne(options.Task, bookingWords, BookOne(options.Defaults));
    return RunCsv<BookingText>({options.Task,
                                bookingWords,
                                BookingColumns(),
                                options.Defaults,
                                {},
                                [](const std::vector<BookingText> &lines) { return BookOne(lines.front()); },
                                &BookingText::Mandant});
}

int BookSplit(const SplitOptions &options)
{
    tools::AnswerByExitCode();
    NeedLibrary();
    if (!options.Task.File.empty()) {
        if (!options.Parts.empty()) throw tools::UsageError("--teil und --datei passen nicht zusammen.");
        return RunCsv<BookingText>({options.Task, splitWords, SplitColumns(), options.Defaults, IsSameSplit,
                                    BookParts, &BookingText::Mandant});
    }
    if (options.Parts.empty()) throw tools::UsageError("Es fehlt --teil oder --datei.");
    NeedOptions(options.Defaults, false);
    std::vector<BookingText> parts;
    for (const std::string &part : options.Parts) {
        parts.push_back(PartOf(options.Defaults, part));
    }
    return ReportOne(options.Task, splitWords, BookParts(parts));
}

} // namespace cli
