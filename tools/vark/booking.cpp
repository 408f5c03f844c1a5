#include "tools/vark/booking.h"

#include "include/vark40.h"
#include "tools/common/exit_codes.h"
#include "tools/common/json.h"
#include "tools/common/terminal.h"
#include "tools/common/text_table.h"
#include "tools/common/texts.h"
#include "tools/vark/csv.h"
#include "tools/vark/reasons.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>

namespace cli {

namespace {

using tools::Trimmed;

// Columns of a CSV file by their headings, and where their text goes.
struct ColumnName {
    const char *Heading;
    std::string BookingText::*Field;
    bool IsNeeded;
};

constexpr ColumnName columnNames[] = {
    {"Mandant", &BookingText::Mandant, false},
    {"Stapel", &BookingText::Stapel, false},
    {"Datum", &BookingText::Datum, true},
    {"Beleg", &BookingText::Beleg, false},
    {"Text", &BookingText::Text, false},
    {"Sollkonto", &BookingText::Sollkonto, true},
    {"Sollart", &BookingText::Sollart, false},
    {"Habenkonto", &BookingText::Habenkonto, true},
    {"Habenart", &BookingText::Habenart, false},
    {"Betrag", &BookingText::Betrag, true},
    {"Steuersatz", &BookingText::Steuersatz, false},
    {"Steuerbetrag", &BookingText::Steuerbetrag, false},
    {"Kostenschablone", &BookingText::Kostenschablone, false},
    {"Zahlungsziel", &BookingText::Zahlungsziel, false},
};

// The widths that the library keeps of a text.
constexpr size_t belegMax = 8;
constexpr size_t textMax = 35;
constexpr size_t kontoMax = 7;
constexpr size_t amountMax = 12;

// Kinds of account at the interface, in the order in which the library looks for a number.
enum Kontoart : int { ArtSachkonto = 1, ArtKreditor = 2, ArtDebitor = 4 };
constexpr int kontoarten[] = {ArtSachkonto, ArtDebitor, ArtKreditor};

struct Outcome {
    int Code = 0;       // of the library; 0 where it was not asked
    std::string Reason; // empty: booked
    bool IsCut = false; // a text was longer than the books keep
};

std::string Lower(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) {
        return c < 0x80 ? static_cast<char>(std::tolower(c)) : static_cast<char>(c);
    });
    return lower;
}

std::optional<int> Number(const std::string &text)
{
    int value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
    return value;
}

// A grouped amount, "1.234.567,89", without its dots; anything else stays for the library to judge.
std::string Ungrouped(const std::string &text)
{
    const size_t start = text.starts_with("-") || text.starts_with("+") ? 1 : 0;
    const size_t comma = std::min(text.find(','), text.size());
    const std::string_view whole = std::string_view(text).substr(start, comma - start);
    const size_t firstDot = whole.find('.');
    if (firstDot == 0 || firstDot > 3) return text;
    for (size_t i = 0; i < whole.size(); ++i) {
        const bool isDotPlace = i >= firstDot && (i - firstDot) % 4 == 0;
        if (isDotPlace != (whole[i] == '.')) return text;
    }
    if ((whole.size() - firstDot) % 4 != 0) return text;
    std::string plain = text;
    plain.erase(std::remove(plain.begin(), plain.end(), '.'), plain.end());
    return plain;
}

// "16 %" is as good as "16".
std::string WithoutPercent(const std::string &text)
{
    std::string_view rate = Trimmed(text);
    if (rate.ends_with('%')) rate = Trimmed(rate.substr(0, rate.size() - 1));
    return std::string(rate);
}

std::optional<int> KontoartOf(const std::string &text)
{
    const std::string name = Lower(text);
    if (name == "s" || name == "sachkonto" || name == "1") return ArtSachkonto;
    if (name == "k" || name == "kreditor" || name == "2") return ArtKreditor;
    if (name == "d" || name == "debitor" || name == "4") return ArtDebitor;
    return std::nullopt;
}

// A booking in the library's forms.
struct Prepared {
    int Mandant, Stapel, SollArt, HabenArt, Kostenschablone, Zahlungsziel;
    std::string Datum, Beleg, Text, Soll, Haben, Betrag, Satz, Steuer;
};

// Kind of an account by its number, Sachkonto for one that is unknown: the library then says what is wrong.
int FindKind(int mandant, const std::string &konto)
{
    for (const int art : kontoarten) {
        const int found = VARK_ExistiertKonto(mandant, konto.c_str(), art);
        if (found == 1) return art;
        if (found < 0) break;
    }
    return ArtSachkonto;
}

// The first fault that the library cannot see, since it gets numbers or would cut.
std::string Prepare(const BookingText &text, Prepared &out)
{
    const auto number = [](const std::string &field, const char *name, bool isNeeded,
                           int &value) -> std::string {
        value = 0;
        if (field.empty()) return isNeeded ? std::string("Es fehlt die Angabe ") + name + "." : std::string();
        const auto read = Number(field);
        if (!read) return std::string(name) + " „" + field + "“ ist keine Zahl.";
        value = *read;
        return {};
    };
    const auto kind = [](const std::string &field, const char *name, int &value) -> std::string {
        value = 0;
        if (field.empty()) return {};
        const auto read = KontoartOf(field);
        if (!read)
            return std::string(name) + " „" + field + "“ ist keine Kontoart (Sachkonto, Kreditor, Debitor).";
        value = *read;
        return {};
    };
    std::string fault = number(text.Mandant, "Mandant", true, out.Mandant);
    if (fault.empty()) fault = number(text.Stapel, "Stapel", true, out.Stapel);
    if (fault.empty()) fault = kind(text.Sollart, "Sollart", out.SollArt);
    if (fault.empty()) fault = kind(text.Habenart, "Habenart", out.HabenArt);
    if (fault.empty()) fault = number(text.Kostenschablone, "Kostenschablone", false, out.Kostenschablone);
    if (fault.empty()) fault = number(text.Zahlungsziel, "Zahlungsziel", false, out.Zahlungsziel);
    if (!fault.empty()) return fault;

    out.Datum = tools::FromUtf8(text.Datum);
    out.Beleg = tools::FromUtf8(text.Beleg);
    out.Text = tools::FromUtf8(text.Text);
    out.Soll = tools::FromUtf8(text.Sollkonto);
    out.Haben = tools::FromUtf8(text.Habenkonto);
    out.Betrag = tools::FromUtf8(Ungrouped(text.Betrag));
    out.Satz = tools::FromUtf8(WithoutPercent(text.Steuersatz));
    out.Steuer = tools::FromUtf8(Ungrouped(text.Steuerbetrag));
    if (tools::ToUtf8(out.Beleg) != text.Beleg || tools::ToUtf8(out.Text) != text.Text) {
        return "Der Text enthält Zeichen, die es in den Büchern nicht gibt.";
    }
    // A cut number would be another account, a cut amount another amount.
    if (out.Soll.size() > kontoMax) return "Die Sollkontonummer ist zu lang.";
    if (out.Haben.size() > kontoMax) return "Die Habenkontonummer ist zu lang.";
    if (out.Betrag.size() > amountMax + 1) return "Der Betrag ist zu lang.";
    if (out.Steuer.size() > amountMax + 1) return "Der Steuerbetrag ist zu lang.";
    return {};
}

Outcome BookOne(const BookingText &text)
{
    Outcome outcome;
    Prepared booking{};
    outcome.Reason = Prepare(text, booking);
    if (!outcome.Reason.empty()) return outcome;
    outcome.IsCut = booking.Beleg.size() > belegMax || booking.Text.size() > textMax;

    ReasonCatcher catcher;
    if (booking.SollArt == 0) booking.SollArt = FindKind(booking.Mandant, booking.Soll);
    if (booking.HabenArt == 0) booking.HabenArt = FindKind(booking.Mandant, booking.Haben);
    outcome.Code = VARK_BuchungEinfuegenDirektEx(
        1, booking.Mandant, booking.Stapel, booking.Datum.c_str(), booking.Beleg.c_str(),
        booking.Text.c_str(), booking.Soll.c_str(), booking.SollArt, booking.Haben.c_str(), booking.HabenArt,
        booking.Betrag.c_str(), booking.Satz.c_str(), booking.Steuer.c_str(), booking.Kostenschablone,
        booking.Zahlungsziel);
    outcome.Reason = catcher.Take();
    if (outcome.Code == 1) {
        outcome.Reason.clear();
    } else if (outcome.Reason.empty()) {
        outcome.Reason = TextOfCode(outcome.Code);
    }
    return outcome;
}

// Where the columns of a file lie in a booking; empty, with the reason shown, for a heading that is none.
std::vector<std::string BookingText::*> ReadHeadings(const CsvLine &line, const BookingText &defaults)
{
    std::vector<std::string BookingText::*> places;
    std::string fault = line.Fault;
    for (const std::string &heading : line.Fields) {
        const auto *const found =
            std::find_if(std::begin(columnNames), std::end(columnNames),
                         [&](const ColumnName &name) { return Lower(name.Heading) == Lower(heading); });
        if (found == std::end(columnNames)) {
            if (fault.empty()) fault = "Unbekannte Spalte „" + heading + "“.";
        } else if (std::find(places.begin(), places.end(), found->Field) != places.end()) {
            if (fault.empty()) fault = "Die Spalte „" + heading + "“ kommt zweimal vor.";
        } else {
            places.push_back(found->Field);
        }
    }
    for (const ColumnName &name : columnNames) {
        const bool isThere = std::find(places.begin(), places.end(), name.Field) != places.end();
        if (fault.empty() && name.IsNeeded && !isThere && (defaults.*name.Field).empty()) {
            fault = std::string("Es fehlt die Spalte „") + name.Heading + "“.";
        }
    }
    if (fault.empty()) return places;
    std::cerr << "vark: Zeile " << line.Number << ": " << fault << "\nDie erste Zeile nennt die Spalten: ";
    for (const ColumnName &name : columnNames) {
        std::cerr << (&name == columnNames ? "" : ";") << name.Heading;
    }
    std::cerr << '\n';
    return {};
}

// What is told about a run, in words or as JSON.
struct Report {
    explicit Report(const BookingOptions &options) : isJson(options.IsJson), stream(std::cout), json(stream)
    {
        if (!isJson) return;
        json.SetIndent(' ', 2);
        json.StartObject();
        json.Key("abgelehnt");
        json.StartArray();
    }

    void Refused(long line, const std::string &text, const Outcome &outcome)
    {
        ++refused;
        ++reasons[outcome.Reason];
        if (isJson) {
            json.StartObject();
            if (line > 0) tools::Put(json, "zeile", static_cast<int64_t>(line));
            tools::Put(json, "code", outcome.Code);
            tools::Put(json, "grund", outcome.Reason);
            if (line > 0) tools::Put(json, "inhalt", text);
            json.EndObject();
        } else if (line > 0) {
            std::cerr << "Zeile " << line << ": " << outcome.Reason << '\n';
        } else {
            std::cerr << "Nicht gebucht: " << outcome.Reason << '\n';
        }
    }

    void Booked(bool isCut)
    {
        ++booked;
        if (isCut) ++cut;
    }

    void End(bool isQuiet, double seconds)
    {
        if (isJson) {
            json.EndArray();
            tools::Put(json, "gebucht", static_cast<int64_t>(booked));
            tools::Put(json, "gekuerzt", static_cast<int64_t>(cut));
            json.Key("sekunden");
            json.Double(seconds);
            json.EndObject();
            std::cout << '\n';
            return;
        }
        if (isQuiet) return;
        std::cout << tools::Grouped(booked) << (booked == 1 ? " Buchung" : " Buchungen")
                  << " in den Stapel geschrieben, " << tools::Grouped(refused) << " abgelehnt.\n";
        if (cut > 0) std::cout << tools::Grouped(cut) << " davon mit gekürztem Beleg oder Text.\n";
        // A single reason has just been told.
        if (refused < 2) return;
        tools::TextTable table{{{"Anzahl", tools::Align::Right}, {"Grund"}}, {}};
        std::vector<std::pair<long, std::string>> sorted;
        for (const auto &[reason, count] : reasons) {
            sorted.emplace_back(count, reason);
        }
        std::stable_sort(sorted.begin(), sorted.end(),
                         [](const auto &a, const auto &b) { return a.first > b.first; });
        for (const auto &[count, reason] : sorted) {
            table.Add({tools::Grouped(count), reason});
        }
        std::cout << '\n';
        table.Print(std::cout);
    }

    int ExitCode() const { return refused > 0 ? tools::ExitRefused : tools::ExitGood; }

private:
    bool isJson;
    rapidjson::OStreamWrapper stream;
    tools::JsonWriter json;
    long booked = 0;
    long refused = 0;
    long cut = 0;
    std::map<std::string, long> reasons;
};

// Refused lines as they came, with the reason as one more column, so that they can be put right and booked.
struct RejectionFile {
    std::ofstream Out;

    void Open(const std::filesystem::path &path, const CsvLine &headings)
    {
        if (path.empty()) return;
        Out.open(path, std::ios::binary);
        if (!Out) throw std::runtime_error(path.string() + " läßt sich nicht schreiben.");
        // A comment, so that the file can be booked as it stands.
        Out << "# Abgelehnte Buchungen; der Grund steht jeweils in der Zeile darüber.\n"
            << headings.Text << '\n';
    }

    void Add(const CsvLine &line, const std::string &reason)
    {
        if (Out.is_open()) Out << "# Zeile " << line.Number << ": " << reason << '\n' << line.Text << '\n';
    }
};

int BookFile(const BookingOptions &options, std::istream &in, double size)
{
    CsvLine line;
    if (!ReadCsvLine(in, line)) {
        std::cerr << "vark: Die Datei ist leer; die erste Zeile muß die Spalten nennen.\n";
        return tools::ExitUsage;
    }
    const auto places = ReadHeadings(line, options.Defaults);
    if (places.empty()) return tools::ExitUsage;
    RejectionFile rejections;
    rejections.Open(options.Rejections, line);

    const auto begin = std::chrono::steady_clock::now();
    Report report(options);
    {
        tools::ProgressBar bar("Buchen");
        double done = 0;
        while (ReadCsvLine(in, line)) {
            BookingText booking = options.Defaults;
            Outcome outcome;
            outcome.Reason = line.Fault;
            if (outcome.Reason.empty() && line.Fields.size() != places.size()) {
                outcome.Reason = "Die Zeile hat " + std::to_string(line.Fields.size()) + " statt " +
                                 std::to_string(places.size()) + " Spalten.";
            }
            if (outcome.Reason.empty()) {
                for (size_t i = 0; i < places.size(); ++i) {
                    if (!line.Fields[i].empty()) booking.*places[i] = line.Fields[i];
                }
                outcome = BookOne(booking);
            }
            if (outcome.Reason.empty()) {
                report.Booked(outcome.IsCut);
            } else {
                bar.Hide();
                report.Refused(line.Number, line.Text, outcome);
                rejections.Add(line, outcome.Reason);
            }
            done += static_cast<double>(line.Text.size() + 1);
            if (size > 0) bar.Show(std::min(done / size, 0.999));
        }
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    report.End(options.IsQuiet, taken.count());
    return report.ExitCode();
}

} // namespace

int Book(const BookingOptions &options)
{
    {
        ReasonCatcher catcher;
        const int state = VARK_Status();
        if (state != 1) {
            catcher.Take();
            throw std::runtime_error(TextOfCode(state));
        }
    }
    if (options.File.empty()) {
        Report report(options);
        const Outcome outcome = BookOne(options.Defaults);
        if (outcome.Reason.empty()) {
            report.Booked(outcome.IsCut);
        } else {
            report.Refused(0, "", outcome);
        }
        report.End(options.IsQuiet || !outcome.Reason.empty(), 0);
        return report.ExitCode();
    }
    if (options.File == "-") return BookFile(options, std::cin, 0);
    std::ifstream file(options.File, std::ios::binary);
    if (!file || std::filesystem::is_directory(options.File)) {
        throw std::runtime_error(options.File.string() + " läßt sich nicht lesen.");
    }
    return BookFile(options, file, static_cast<double>(std::filesystem::file_size(options.File)));
}

} // namespace cli
