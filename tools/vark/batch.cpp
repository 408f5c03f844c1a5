#include "tools/vark/batch.h"

#include "src/values/amount_texts.h"
#include "src/values/amounts.h"
#include "tools/common/calendar.h"
#include "tools/common/exit_codes.h"
#include "tools/common/installation.h"
#include "tools/common/json.h"
#include "tools/common/terminal.h"
#include "tools/common/text_table.h"
#include "tools/common/texts.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <stdexcept>

namespace cli {

using namespace tools;
using namespace vark;

namespace {

// The tables of a Stapel, opened for reading.
struct BatchTables {
    TableFile Stapel, Bat, Split, Kobu;

    explicit BatchTables(const std::filesystem::path &directory)
        : Stapel(LayoutOf(TableStapel), directory, OpenMode::ReadOnly),
          Bat(LayoutOf(TableBat), directory, OpenMode::ReadOnly),
          Split(LayoutOf(TableSplit), directory, OpenMode::ReadOnly),
          Kobu(LayoutOf(TableKobu), directory, OpenMode::ReadOnly)
    {}
};

// A booking with everything that belongs to it.
struct Booking {
    BatRecord Head;
    std::vector<SplitRecord> Parts;             // the first one is the head's
    std::vector<std::vector<KobuRecord>> Costs; // of each part
};

// People get "1.234,50", CSV "1234,50", JSON "1234.50".
std::string AmountOf(const AmountText &field, Output as)
{
    AmountText amount;
    std::memcpy(amount, field, sizeof amount);
    FormattedAmount text;
    FormatAmount(AmountFormOf(as), amount, text);
    std::string shown = text;
    if (as == Output::Json) std::replace(shown.begin(), shown.end(), ',', '.');
    return shown;
}

std::string RateOf(const RateText &field)
{
    std::string text = FieldText(field);
    if (text.size() > 1 && text[0] == '0') text.erase(0, 1);
    return text;
}

std::string PlainRate(const RateText &field)
{
    std::string text = FieldText(field);
    if (text.size() > rateMark) text[rateMark] = '.';
    return text;
}

std::string DayText(const PackedDate &field, int firstMonth)
{
    Day day = 0;
    if (field[0] == 0) return {};
    if (DayOfPacked(field, firstMonth, day)) return DisplayDay(day);
    return FieldText(field) + "?";
}

std::string KontoText(const AccountNumber &field) { return std::string(Trimmed(FieldText(field))); }

std::vector<KobuRecord> CostsOf(TableFile &kobu, int32_t number, int key, int32_t KobuRecord::*field)
{
    std::vector<KobuRecord> lines;
    KobuRecord line{};
    for (bool found = kobu.Equal(&line, &number, key); found && line.*field == number;
         found = kobu.Next(&line, key)) {
        lines.push_back(line);
    }
    return lines;
}

constexpr int keyOfStapel = 1;    // of bat
constexpr int keyOfBooking = 0;   // of split
constexpr int keyOfHeadCosts = 1; // of kobu, by Buchungsnummer
constexpr int keyOfPartCosts = 2; // of kobu, by split number

Booking ReadBooking(BatchTables &tables, const BatRecord &head)
{
    Booking booking{head, {head.Teil}, {}};
    SplitRecord part{};
    const int32_t number = head.Buchungsnummer;
    for (bool found = tables.Split.Equal(&part, &number, keyOfBooking);
         found && part.Buchungsnummer == number; found = tables.Split.Next(&part, keyOfBooking)) {
        booking.Parts.push_back(part);
    }
    booking.Costs.push_back(CostsOf(tables.Kobu, number, keyOfHeadCosts, &KobuRecord::Buchungsnummer));
    for (size_t i = 1; i < booking.Parts.size(); ++i) {
        booking.Costs.push_back(
            CostsOf(tables.Kobu, booking.Parts[i].Splitnummer, keyOfPartCosts, &KobuRecord::Splitnummer));
    }
    return booking;
}

template <typename Visit> void ForEachBooking(BatchTables &tables, int32_t stapel, Visit visit)
{
    BatRecord head{};
    for (bool found = tables.Bat.Equal(&head, &stapel, keyOfStapel); found && head.Stapel == stapel;
         found = tables.Bat.Next(&head, keyOfStapel)) {
        visit(ReadBooking(tables, head));
    }
}

int64_t Signed(const AmountText &field)
{
    return field[amountMark] == '-' ? -MagnitudeOf(field) : MagnitudeOf(field);
}

AmountText &PutSigned(AmountText &field, int64_t pfennig)
{
    AmountOfMagnitude(field, pfennig < 0 ? -pfennig : pfennig, pfennig < 0);
    return field;
}

// Totals of a Stapel, for its foot.
struct Foot {
    int64_t Bookings = 0;
    int64_t Brutto = 0;
};

void AddRows(TextTable &table, const Booking &booking, const BatchOptions &options, int firstMonth,
             Foot &foot)
{
    ++foot.Bookings;
    const std::string number = std::to_string(booking.Head.Buchungsnummer);
    for (size_t i = 0; i < booking.Parts.size(); ++i) {
        const SplitRecord &part = booking.Parts[i];
        foot.Brutto += Signed(part.Brutto);
        // A foreign amount stands in the head; the net field of the part is then the converted one.
        const bool isForeign = i == 0 && booking.Head.Waehrung[0] != 0;
        table.Add(
            {number, booking.Parts.size() > 1 ? std::to_string(i + 1) : "",
             DayText(booking.Head.Buchungsdatum, firstMonth), FieldText(booking.Head.Beleg),
             KontoText(part.Sollkonto), KontoText(part.Habenkonto), AmountOf(part.Brutto, options.As),
             KontoText(part.Steuerkonto).empty() ? "" : RateOf(part.Steuersatz), KontoText(part.Steuerkonto),
             AmountOf(part.Netto, options.As), isForeign ? FieldText(booking.Head.Waehrung) : "",
             booking.Costs[i].empty() ? "" : std::to_string(booking.Costs[i].size()), FieldText(part.Text)});
        if (!options.WithCosts) continue;
        for (const KobuRecord &line : booking.Costs[i]) {
            std::string text = "· Kosten ";
            text += KontoText(line.Kostenobjekt1);
            if (line.Kostenobjekt2[0] != 0) {
                text += '/';
                text += KontoText(line.Kostenobjekt2);
            }
            text += ' ';
            text += FieldText(line.Text);
            table.Add({"", "", "", "", "", "", "", "", "", AmountOf(line.Betrag, options.As), "", "", text});
        }
    }
}

TextTable BookingTable(bool isCsv)
{
    return {{{"Nr", Align::Right},
             {"Teil", Align::Right},
             {"Datum"},
             {"Beleg"},
             {"Soll", Align::Right},
             {"Haben", Align::Right},
             {"Brutto", Align::Right},
             {isCsv ? "Steuersatz" : "Satz", Align::Right},
             {"Steuerkonto", Align::Right},
             {"Netto", Align::Right},
             {"Währung"},
             {"Kostenzeilen", Align::Right},
             {"Text"}},
            {}};
}

void PutBooking(JsonWriter &json, const Booking &booking, int firstMonth)
{
    const BatRecord &head = booking.Head;
    json.StartObject();
    Put(json, "buchungsnummer", head.Buchungsnummer);
    Put(json, "stapel", head.Stapel);
    Put(json, "datum", DayText(head.Buchungsdatum, firstMonth));
    Put(json, "beleg", FieldText(head.Beleg));
    Put(json, "kennzeichen", static_cast<int>(head.Kennzeichen));
    Put(json, "zahlungsziel", head.Zahlungsziel);
    Put(json, "waehrung", FieldText(head.Waehrung));
    if (head.Waehrung[0] != 0) Put(json, "waehrungsbetrag", AmountOf(head.Waehrungsbetrag, Output::Json));
    Put(json, "teilbuchungen");
    json.StartArray();
    for (size_t i = 0; i < booking.Parts.size(); ++i) {
        const SplitRecord &part = booking.Parts[i];
        json.StartObject();
        Put(json, "sollkonto", KontoText(part.Sollkonto));
        Put(json, "habenkonto", KontoText(part.Habenkonto));
        Put(json, "brutto", AmountOf(part.Brutto, Output::Json));
        Put(json, "netto", AmountOf(part.Netto, Output::Json));
        Put(json, "steuersatz", PlainRate(part.Steuersatz));
        Put(json, "steuerkonto", KontoText(part.Steuerkonto));
        Put(json, "steuerschluessel", static_cast<int>(part.Steuerschluessel));
        Put(json, "steuerfolge", static_cast<int>(part.Steuerfolge));
        Put(json, "text", FieldText(part.Text));
        Put(json, "kostenschablone", part.Kostenschablone);
        Put(json, "kosten");
        json.StartArray();
        for (const KobuRecord &line : booking.Costs[i]) {
            json.StartObject();
            Put(json, "kostenobjekt1", KontoText(line.Kostenobjekt1));
            Put(json, "kostenobjekt2", KontoText(line.Kostenobjekt2));
            Put(json, "betrag", AmountOf(line.Betrag, Output::Json));
            Put(json, "haben", (line.Flag & KobuHaben) != 0);
            Put(json, "text", FieldText(line.Text));
            json.EndObject();
        }
        json.EndArray();
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
}

int ListBatches(BatchTables &tables, const BatchOptions &options)
{
    TextTable table{
        {{"Nr", Align::Right}, {"Name"}, {"alle Monate", Align::Right}, {"Buchungen", Align::Right}}, {}};
    StapelRecord record{};
    for (bool found = tables.Stapel.First(&record, 0); found; found = tables.Stapel.Next(&record, 0)) {
        int64_t count = 0;
        BatRecord head{};
        const int32_t number = record.Nummer;
        for (bool more = tables.Bat.Equal(&head, &number, keyOfStapel); more && head.Stapel == number;
             more = tables.Bat.Next(&head, keyOfStapel)) {
            ++count;
        }
        const std::string interval = record.Intervall == 0 ? "" : std::to_string(record.Intervall);
        table.Add({std::to_string(record.Nummer), FieldText(record.Name), interval, std::to_string(count)});
    }
    if (options.As == Output::Csv) {
        table.PrintCsv(std::cout);
    } else if (options.As == Output::Table) {
        table.Print(std::cout);
    } else {
        rapidjson::OStreamWrapper stream(std::cout);
        JsonWriter json(stream);
        json.StartArray();
        for (const auto &row : table.Rows) {
            json.StartObject();
            Put(json, "stapel", std::stoi(row[0]));
            Put(json, "name", row[1]);
            Put(json, "intervall", row[2].empty() ? 0 : std::stoi(row[2]));
            Put(json, "buchungen", std::stoi(row[3]));
            json.EndObject();
        }
        json.EndArray();
        std::cout << '\n';
    }
    return ExitGood;
}

} // namespace

int ShowBatch(const BatchOptions &options)
{
    const std::filesystem::path data = ConfiguredDataPath();
    if (data.empty()) throw std::runtime_error("In keiner Ini-Datei steht, wo die Daten liegen.");
    const auto mandant = FindMandant(data, options.Mandant);
    if (!mandant) {
        std::cerr << "vark: Der Mandant " << options.Mandant << " existiert nicht.\n";
        return ExitRefused;
    }
    BatchTables tables(data / mandant->Directory(mandant->UpperYear));
    if (options.Number == 0) return ListBatches(tables, options);

    StapelRecord stapel{};
    const int32_t number = options.Number;
    if (!tables.Stapel.Equal(&stapel, &number, 0)) {
        std::cerr << "vark: Der Stapel " << options.Number << " existiert nicht.\n";
        return ExitRefused;
    }
    if (options.As == Output::Json) {
        rapidjson::OStreamWrapper stream(std::cout);
        JsonWriter json(stream);
        json.StartArray();
        ForEachBooking(tables, number,
                       [&](const Booking &booking) { PutBooking(json, booking, mandant->FirstMonth); });
        json.EndArray();
        std::cout << '\n';
        return ExitGood;
    }
    TextTable table = BookingTable(options.As == Output::Csv);
    Foot foot;
    ForEachBooking(tables, number, [&](const Booking &booking) {
        AddRows(table, booking, options, mandant->FirstMonth, foot);
    });
    if (options.As == Output::Csv) {
        table.PrintCsv(std::cout);
        return ExitGood;
    }
    std::cout << "Stapel " << stapel.Nummer << " „" << FieldText(stapel.Name) << "“, Mandant "
              << mandant->Number << " " << mandant->Name << ", Jahr " << mandant->UpperYear << "\n\n";
    if (foot.Bookings == 0) {
        std::cout << "Der Stapel ist leer.\n";
        return ExitGood;
    }
    table.Print(std::cout);
    AmountText total{};
    std::cout << '\n'
              << Grouped(foot.Bookings) << (foot.Bookings == 1 ? " Buchung" : " Buchungen")
              << ", zusammen brutto " << AmountOf(PutSigned(total, foot.Brutto), options.As) << '\n';
    return ExitGood;
}

} // namespace cli
