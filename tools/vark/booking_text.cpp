#include "tools/vark/booking_text.h"

#include "tools/common/texts.h"
#include "tools/vark/kontoart.h"
#include "tools/vark/typed_text.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace cli {

using tools::Trimmed;

namespace {

constexpr CsvColumn<BookingText> bookingColumns[] = {
    {"Mandant", &BookingText::Mandant, true},
    {"Stapel", &BookingText::Stapel, true},
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
    {"Kennzeichen", &BookingText::Kennzeichen, false},
};

// The widths that the library keeps of a text.
constexpr size_t belegMax = 8;
constexpr size_t textMax = 35;
constexpr size_t kontoMax = 7;
constexpr size_t amountMax = 12;

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

} // namespace

std::span<const CsvColumn<BookingText>> BookingColumns()
{
    return std::span(bookingColumns).first(std::size(bookingColumns) - 1);
}

std::span<const CsvColumn<BookingText>> SplitColumns() { return bookingColumns; }

bool PreparedBooking::IsCut() const { return Beleg.size() > belegMax || Text.size() > textMax; }

void PreparedBooking::FindKinds()
{
    if (SollArt == 0) SollArt = FindKind(Mandant, Soll);
    if (HabenArt == 0) HabenArt = FindKind(Mandant, Haben);
}

std::string PrepareBooking(const BookingText &text, PreparedBooking &out)
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
        const auto read = ReadKontoart(field);
        if (!read || *read == ArtKostenstelle)
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
    if (fault.empty()) fault = number(text.Kennzeichen, "Kennzeichen", false, out.Kennzeichen);
    if (fault.empty() && (out.Kennzeichen < 0 || out.Kennzeichen > 255))
        fault = "Das Kennzeichen liegt nicht zwischen 0 und 255.";
    if (!fault.empty()) return fault;

    out.Datum = tools::FromUtf8(text.Datum);
    out.Beleg = tools::FromUtf8(text.Beleg);
    out.Text = tools::FromUtf8(text.Text);
    out.Soll = tools::FromUtf8(text.Sollkonto);
    out.Haben = tools::FromUtf8(text.Habenkonto);
    out.Betrag = tools::FromUtf8(Ungrouped(text.Betrag));
    out.Satz = tools::FromUtf8(WithoutPercent(text.Steuersatz));
    out.Steuer = tools::FromUtf8(Ungrouped(text.Steuerbetrag));
    for (const std::string *typed : {&text.Beleg, &text.Text, &text.Sollkonto, &text.Habenkonto}) {
        fault = FaultOfText(*typed);
        if (!fault.empty()) return fault;
    }
    if (out.Soll.empty()) return "Es fehlt die Angabe Sollkonto.";
    if (out.Haben.empty()) return "Es fehlt die Angabe Habenkonto.";
    // A cut number would be another account, a cut amount another amount.
    if (out.Soll.size() > kontoMax) return "Die Sollkontonummer ist zu lang.";
    if (out.Haben.size() > kontoMax) return "Die Habenkontonummer ist zu lang.";
    if (out.Betrag.size() > amountMax + 1) return "Der Betrag ist zu lang.";
    if (out.Steuer.size() > amountMax + 1) return "Der Steuerbetrag ist zu lang.";
    return {};
}

} // namespace cli
