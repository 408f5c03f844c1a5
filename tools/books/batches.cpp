#include "tools/books/batches.h"

#include "text/windows1252.h"
#include "tools/books/cost_templates.h"
#include "tools/books/record_fields.h"
#include "tools/common/table_file.h"

#include <iterator>
#include <optional>
#include <stdexcept>

namespace books {

using namespace tools;
using namespace vark;

namespace fs = std::filesystem;

namespace {

// A booking has one part or more; they follow each other here. The later parts share the side that the first
// one says.
struct PartRow {
    int Booking;
    int Soll;
    int Haben;
    int64_t Net; // Pfennig
    const char *Text;
};

struct BookingRow {
    int Mandant;
    int Number; // of the rows of its parts
    int Stapel;
    Day Date;
    const char *Beleg;
    uint16_t SharedSide; // of a split
};

// Only the agency has some: the others begin with every Stapel empty.
const BookingRow bookings[] = {
    {3, 1, 16, DayOf(1998, 6, 24), "ER0871", 0},
    {3, 2, 16, DayOf(1998, 6, 29), "ER0872", BubeSplitHaben},
    {3, 3, 16, DayOf(1998, 7, 1), "AR0615", 0},
    {3, 4, 17, DayOf(1998, 7, 2), "KA0219", 0},
};

constexpr PartRow parts[] = {
    {1, 8430, 70080, 20000, "Zeichenbedarf"},    {2, 8010, 70050, 310000, "Miete Studio"},
    {2, 8050, 70050, 24000, "Reinigung Studio"}, {2, 8440, 70050, 9000, "Fachzeitschriften"},
    {3, 10010, 5095, 640010, "Entwurf Messe"},   {4, 8410, 1810, 5500, "Briefmarken"},
};

const Account *Find(Ledger &ledger, int number)
{
    if (const Account *account = ledger.FindSachkonto(number)) return account;
    for (const std::vector<Account> *accounts : {&ledger.Debitoren, &ledger.Kreditoren}) {
        for (const Account &account : *accounts) {
            if (account.Number == number) return &account;
        }
    }
    throw std::logic_error("no such account for a Stapel: " + std::to_string(number));
}

uint8_t KindOf(const Account &account)
{
    return account.Of == Kind::Sachkonto ? BuchungSachkonto
           : account.Of == Kind::Debitor ? BuchungDebitor
                                         : BuchungKreditor;
}

const RateRow &RateOn(Day day, int mandant, int code)
{
    for (const RateRow &row : Rates()) {
        const bool isValid = row.Year == 0 || DayOf(row.Year, row.Month, row.Day) <= day;
        if (row.Code == code && IsFor(row.Mandanten, mandant) && isValid) return row;
    }
    throw std::logic_error("no rate for code " + std::to_string(code));
}

// The tables of a Stapel, and what a booking's costs are spread by.
struct BatchFiles {
    TableFile Bat, Split, Kobu;
    std::vector<CostTemplate> Templates;
    int64_t Records = 0;

    BatchFiles(Ledger &ledger, const fs::path &directory)
        : Bat(LayoutOf(TableBat), directory, OpenMode::Accelerated),
          Split(LayoutOf(TableSplit), directory, OpenMode::Accelerated),
          Kobu(LayoutOf(TableKobu), directory, OpenMode::Accelerated), Templates(MakeTemplates(ledger))
    {}

    void Insert(TableFile &table, void *record)
    {
        table.Insert(record);
        ++Records;
    }
};

const CostTemplate *TemplateOf(const BatchFiles &files, const Account &account)
{
    for (const CostTemplate &made : files.Templates) {
        if (account.Row != nullptr && account.Row->Kostenschablone == made.Number) return &made;
    }
    return nullptr;
}

// A part of a booking with its tax. The side without the tax key pays or takes the gross amount.
SplitRecord PartOf(const PartRow &row, const Account &soll, const Account &haben, int mandant, Day day,
                   const CostTemplate *costs)
{
    SplitRecord part{};
    std::memcpy(part.Sollkonto, soll.Key, sizeof part.Sollkonto);
    std::memcpy(part.Habenkonto, haben.Key, sizeof part.Habenkonto);
    part.SollArt = KindOf(soll);
    part.HabenArt = KindOf(haben);
    const bool isOnSoll = soll.Row != nullptr && (soll.Row->Tax & ~SteuerVorsteuer) != 0;
    const uint8_t key = isOnSoll ? soll.Row->Tax : haben.Row != nullptr ? haben.Row->Tax : uint8_t{0};
    int64_t tax = 0;
    PutRate(part.Steuersatz, 0);
    if ((key & ~SteuerVorsteuer) != 0) {
        const RateRow &rate = RateOn(day, mandant, key & SteuerCodeMaske);
        const int percent = ShareOf(rate.Rate);
        part.Steuerseite = isOnSoll ? SteuerseiteSoll : SteuerseiteHaben;
        part.Steuerschluessel = key & SteuerCodeMaske;
        part.Steuerfolge = static_cast<uint16_t>(rate.Sequence);
        PutRate(part.Steuersatz, percent);
        tax = Percent(row.Net, percent);
        MakeKey(part.Steuerkonto, (key & SteuerVorsteuer) != 0 ? rate.Vorsteuer : rate.Umsatzsteuer);
    }
    PutAmount(part.Brutto, row.Net + tax);
    PutAmount(part.Netto, row.Net);
    text::FromUtf8(row.Text, part.Text, sizeof part.Text);
    if (costs != nullptr) {
        part.Kostenzeilen = static_cast<int16_t>(costs->Shares.size());
        part.Kostenschablone = costs->Number;
    }
    return part;
}

void WriteCosts(BatchFiles &files, const CostTemplate &costs, int64_t net, bool onHaben,
                const KobuRecord &common)
{
    int64_t rest = net;
    for (const CostShare &share : costs.Shares) {
        const int64_t amount = &share == &costs.Shares.back() ? rest : Percent(net, share.Share);
        rest -= amount;
        KobuRecord line = common;
        std::memcpy(line.Kostenobjekt1, share.FirstKey, sizeof line.Kostenobjekt1);
        std::memcpy(line.Kostenobjekt2, share.SecondKey, sizeof line.Kostenobjekt2);
        line.Flag = static_cast<uint8_t>(share.Flag | (onHaben ? KobuHaben : 0));
        PutAmount(line.Betrag, amount);
        std::memcpy(line.Text, share.Text, sizeof line.Text);
        files.Insert(files.Kobu, &line);
    }
}

void WriteBooking(BatchFiles &files, Ledger &ledger, const BookingRow &booking)
{
    const int firstMonth = ledger.Of->FirstMonth;
    BatRecord head{};
    head.Stapel = booking.Stapel;
    MakePacked(head.Buchungsdatum, booking.Date, firstMonth);
    MakePacked(head.ZweitesDatum, booking.Date, firstMonth);
    text::FromUtf8(booking.Beleg, head.Beleg, sizeof head.Beleg);
    head.Splitseite = booking.SharedSide;
    for (const PartRow &row : parts) {
        if (row.Booking == booking.Number) ++head.Anzahl;
    }
    bool isFirst = true;
    for (const PartRow &row : parts) {
        if (row.Booking != booking.Number) continue;
        const Account &soll = *Find(ledger, row.Soll);
        const Account &haben = *Find(ledger, row.Haben);
        const CostTemplate *costs = TemplateOf(files, soll);
        const bool onHaben = costs == nullptr;
        if (onHaben) costs = TemplateOf(files, haben);
        SplitRecord part = PartOf(row, soll, haben, ledger.Of->Number, booking.Date, costs);
        KobuRecord common{};
        MakeSort(common.Datum, booking.Date, firstMonth);
        if (isFirst) {
            head.Teil = part;
            for (const Account *account : {&soll, &haben}) {
                if (account->Partner != nullptr) head.Zahlungsziel = account->Partner->Zahlungsziel;
            }
            files.Insert(files.Bat, &head);
            common.Buchungsnummer = head.Buchungsnummer;
        } else {
            part.Buchungsnummer = head.Buchungsnummer;
            files.Insert(files.Split, &part);
            common.Splitnummer = part.Splitnummer;
        }
        isFirst = false;
        if (costs != nullptr) WriteCosts(files, *costs, row.Net, onHaben, common);
    }
}

} // namespace

int64_t WriteBatches(Ledger &ledger, const fs::path &directory)
{
    std::optional<BatchFiles> files;
    for (const BookingRow &booking : bookings) {
        if (booking.Mandant != ledger.Of->Number) continue;
        if (!files) files.emplace(ledger, directory);
        WriteBooking(*files, ledger, booking);
    }
    return files ? files->Records : 0;
}

} // namespace books
