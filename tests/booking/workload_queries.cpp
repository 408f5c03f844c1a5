// The queries of the random workload, and the answers that they must give.
#include "include/vark40.h"
#include "tests/booking/workload.h"

#include <algorithm>
#include <optional>

namespace vark::test {

namespace {

// Reading ends there.
constexpr int32_t lastOne = 2;
constexpr int32_t noCursor = -40;

struct Row {
    std::string Key;  // what comes first
    std::string Rest; // all else, in one text
};

// Runs a cursor to its end and returns its rows; calls `between` after each.
template <typename Init, typename Read>
std::optional<std::vector<Row>> ReadAll(Worker &worker, const std::string &what, int32_t expected, Init init,
                                        Read read, const std::function<void()> &between)
{
    const int32_t code = init();
    Check(worker, what, expected, code);
    if (code != 1) {
        Row row;
        Check(worker, what + " that has not begun", noCursor, read(row));
        return std::nullopt;
    }
    std::vector<Row> rows;
    for (int32_t result = 1; result == 1;) {
        Row row;
        result = read(row);
        // Whoever makes another cursor meanwhile has ended this one: nobody here does.
        if (result != 1 && result != lastOne && result != -3) Check(worker, what + " row", 1, result);
        if (result < 0 && row.Key.empty()) break;
        rows.push_back(row);
        if (result == 1) between();
    }
    Row row;
    Check(worker, what + " that has ended", noCursor, read(row));
    ++worker.Answers;
    return rows;
}

void CheckRows(Worker &worker, const std::string &what, const std::vector<Row> &expected,
               const std::vector<Row> &rows)
{
    Check(worker, what + " rows", static_cast<int32_t>(expected.size()), static_cast<int32_t>(rows.size()));
    for (size_t i = 0; i < std::min(expected.size(), rows.size()); ++i) {
        Check(worker, what, expected[i].Key + " " + expected[i].Rest,
              (rows[i].Key + " " + rows[i].Rest).c_str());
    }
}

// ---- Final postings ----

// The second one is folded and never shown; 3 and 4 are the parts of one split booking.
const std::vector<Row> postings = {
    {"B1", "0 15.01.1998 Buchung 1 10000/4 8400/1 116,00"},
    {"B3", "1 15.01.1998 Buchung 3 1200/1 4000/1 30,00"},
    {"B4", "2 15.01.1998 Buchung 4 1200/1 4100/1 40,00"},
    {"B5", "0 20.06.1998 Buchung 5 4000/1 70000/2 5000,00"},
};

void AddPostings(Books &books, int mandant)
{
    const auto add = [&](int32_t number, const char *date, const char *soll, const char *haben,
                         const char *amount, unsigned status) {
        BubeRecord record = MakeBube(number, date, soll, haben, amount);
        record.Status = static_cast<uint16_t>(status);
        books.Insert(mandant, TableBube, record);
    };
    add(1, "150118", "10000", "8400", "000000116,00", 0);
    add(2, "150118", "10000", "8400", "000000001,00", BubeGefaltet);
    add(3, "150118", "1200", "4000", "000000030,00", BubeSplitSoll | BubeSplitAnfang);
    add(4, "150118", "1200", "4100", "000000040,00", BubeSplitSoll);
    add(5, "200618", "4000", "70000", "000005000,00", 0);
}

int32_t ReadPosting(Row &row)
{
    char datum[11] = {}, beleg[9] = {}, text[40] = {}, soll[8] = {}, haben[8] = {}, betrag[17] = {};
    uint32_t part = 0, sollArt = 0, habenArt = 0;
    const int32_t code = VARK_HoleBube(&part, datum, beleg, text, soll, &sollArt, haben, &habenArt, 2, betrag,
                                       nullptr, nullptr);
    row.Key = beleg;
    row.Rest = std::to_string(part) + " " + datum + " " + text + " " + soll + "/" + std::to_string(sollArt) +
               " " + haben + "/" + std::to_string(habenArt) + " " + betrag;
    return code;
}

void AskForPostings(Worker &worker, const std::function<void()> &between)
{
    const struct {
        const char *From;
        int32_t Code;
        size_t First;
    } cases[] = {{"1.1.98", 1, 0}, {"15.01.1998", 1, 0}, {"16.1.98", 1, 3},   {"21.6.98", 0, 0},
                 {"1.1.97", 0, 0}, {"1.1.96", -11, 0},   {"31.02.98", -11, 0}};
    const auto &chosen = worker.Pick(cases);
    const auto rows = ReadAll(
        worker, std::string("postings from ") + chosen.From, chosen.Code,
        [&] { return VARK_InitHoleBube(worker.Mandant, chosen.From, 0); }, ReadPosting, between);
    if (!rows) return;
    CheckRows(worker, "posting",
              std::vector<Row>(postings.begin() + static_cast<std::ptrdiff_t>(chosen.First), postings.end()),
              *rows);
}

// ---- Accounts ----

int32_t ReadSako(Row &row)
{
    char konto[8] = {}, kuerzel[10] = {}, name[50] = {};
    uint32_t zuordnung = 0, fixed = 0, costs = 0;
    const int32_t code = VARK_HoleSako(konto, kuerzel, name, &zuordnung, &fixed, &costs);
    row.Key = konto;
    row.Rest = std::string(kuerzel) + " " + std::to_string(zuordnung) + " " + std::to_string(fixed);
    return code;
}

int32_t ReadPeko(Row &row)
{
    char konto[8] = {}, name[26] = {}, land[4] = {}, skonto[8] = {};
    uint32_t ziel = 0;
    const int32_t code =
        VARK_HolePeko(konto, nullptr, name, nullptr, nullptr, land, nullptr, nullptr, nullptr, nullptr,
                      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 3, skonto, nullptr, &ziel);
    row.Key = konto;
    row.Rest = name;
    return code;
}

// Debitoren of other threads come and go; those of the ledger and one's own are known. No accounts are made
// while the cursor runs: its next record could be deleted (-39).
void AskForDebitoren(Worker &worker)
{
    const auto rows = ReadAll(
        worker, "Debitoren", 1, [&] { return VARK_InitHoleKonto(worker.Mandant, 4, "10003", 0); },
        [&](Row &row) {
            const int32_t code = ReadPeko(row);
            return code == -39 ? lastOne : code; // another thread has deleted it
        },
        [] {});
    if (!rows) return;
    const std::string own = worker.OwnKonto(0).substr(0, 4);
    for (const Row &row : *rows) {
        if (row.Key.substr(0, 4) != own) continue;
        const auto found = worker.Names.find(row.Key);
        Check(worker, "Debitor " + row.Key, found != worker.Names.end() ? found->second : "none",
              row.Rest.c_str());
    }
}

void AskForAccounts(Worker &worker, const std::function<void()> &between)
{
    const auto sachkonten = ReadAll(
        worker, "Sachkonten", 1, [&] { return VARK_InitHoleKonto(worker.Mandant, 1, "8500", 0); }, ReadSako,
        between);
    if (sachkonten) {
        CheckRows(worker, "Sachkonto", {{"8500", "K8500 8 1"}, {"8510", "K8510 8 1"}, {"8900", "K8900 8 0"}},
                  *sachkonten);
    }
    const auto kreditoren = ReadAll(
        worker, "Kreditoren", 1, [&] { return VARK_InitHoleKonto(worker.Mandant, 2, "", 0); }, ReadPeko,
        between);
    if (kreditoren) {
        CheckRows(worker, "Kreditor", {{"70000", "Konto 70000"}, {"70001", "Konto 70001"}}, *kreditoren);
    }
    Check(worker, "accounts of no kind", -7, VARK_InitHoleKonto(worker.Mandant, 8, "", 0));
    Check(worker, "accounts behind the last", 0, VARK_InitHoleKonto(worker.Mandant, 2, "99999", 0));
}

// ---- Open items ----

int32_t ReadItem(Row &row)
{
    char konto[8] = {}, datum[11] = {}, betrag[17] = {}, waehrung[5] = {};
    const int32_t code = VARK_HoleOP(konto, nullptr, nullptr, datum, nullptr, nullptr, nullptr, nullptr, 3,
                                     betrag, nullptr, waehrung);
    row.Key = konto;
    row.Rest = std::string(datum) + " " + betrag + " " + waehrung;
    return code;
}

void AskForItems(Worker &worker, const std::function<void()> &between)
{
    const Row first{"10000", "15.01.1998 116,00 DEM"};
    const Row second{"10001", "20.02.1998 1.234,56 DEM"};
    const Row third{"10000", "01.03.1998 -7,00 DEM"};
    const struct {
        const char *Konto;
        int32_t Art;
        int32_t Code;
        std::vector<Row> Rows;
    } cases[] = {{"", 4, 1, {first, second, third}},
                 {"10000", 4, 1, {first, third}},
                 {"10001", 4, 1, {second}},
                 {"10002", 4, 0, {}},
                 {"4711", 4, -10, {}},
                 {"", 2, 0, {}},
                 {"", 1, -7, {}}};
    const auto &chosen = worker.Pick(cases);
    const auto rows = ReadAll(
        worker, std::string("items of ") + chosen.Konto, chosen.Code,
        [&] { return VARK_InitHoleOP(worker.Mandant, chosen.Konto, chosen.Art, 0); }, ReadItem, between);
    if (rows) CheckRows(worker, "item", chosen.Rows, *rows);
}

void AddItems(Books &books, int mandant)
{
    books.Insert(mandant, TableOpdebi, MakeOpenItem(1, "10000", "180115", "000000116,00"));
    books.Insert(mandant, TableOpdebi, MakeOpenItem(2, "10001", "180220", "000001234,56"));
    books.Insert(mandant, TableOpdebi, MakeOpenItem(7, "10000", "180301", "000000007-00"));
}

// ---- Balances and numbers ----

void AskForBalances(Worker &worker)
{
    const struct {
        int32_t Mandant;
        const char *Konto;
        int32_t Art;
        int32_t Form;
        int32_t Code;
        const char *Out;
    } cases[] = {{0, "1200", 1, 3, 1, "1.069,50"},
                 {0, "1200", 1, 2, 1, "1069,50"},
                 {0, "   1200", 1, 3, 1, "1.069,50"},
                 {0, "70000", 2, 3, 1, "-250,00"},
                 {0, "10000", 4, 3, 1, "0,00"},
                 {0, "1200", 1, 4, -20, ""},
                 {0, "1200", 3, 3, -7, ""},
                 {0, "1200", 4, 3, -10, ""},
                 {0, "", 1, 3, -10, ""},
                 {0, "12345678", 1, 3, -10, ""},
                 {0, "100", 8, 3, -23, ""},
                 {7, "1200", 1, 3, -5, ""}};
    const auto &chosen = worker.Pick(cases);
    char out[17] = {};
    const int32_t mandant = chosen.Mandant != 0 ? chosen.Mandant : worker.Mandant;
    const int32_t code = VARK_HoleSaldo(mandant, chosen.Konto, chosen.Art, 0, chosen.Form, out);
    Check(worker, std::string("balance of ") + chosen.Konto, chosen.Code, code);
    Check(worker, std::string("balance of ") + chosen.Konto, chosen.Out, out);
    if (code == 1) ++worker.Answers;
}

void AskForNumbers(Worker &worker)
{
    char out[8] = {};
    Check(worker, "free number of no kind", -7, VARK_HoleFreieKontonr(worker.Mandant, 1, out));
    Check(worker, "free number", 1, VARK_HoleFreieKontonr(worker.Mandant, 2, out));
    Check(worker, "free number", "70002", out);
    Check(worker, "free number", 1, VARK_HoleFreieKontonr(worker.Mandant, 4, out));
    // Other threads may have higher ones.
    if (!worker.Names.empty() && std::string(out) <= worker.Names.rbegin()->first) {
        worker.Faults.push_back(std::string("free number ") + out + " is not behind the last");
    }
    Check(worker, "existence", 1, VARK_ExistiertKonto(worker.Mandant, "70001", 2));
    Check(worker, "existence", 0, VARK_ExistiertKonto(worker.Mandant, "70001", 4));
    Check(worker, "existence", -7, VARK_ExistiertKonto(worker.Mandant, "70001", 5));
    Check(worker, "end without a cursor", 1, VARK_BeendeHolen());
    ++worker.Answers;
}

} // namespace

void Check(Worker &worker, const std::string &what, int32_t expected, int32_t code)
{
    if (code == expected) return;
    worker.Faults.push_back(what + ": " + std::to_string(code) + " in place of " + std::to_string(expected));
}

void Check(Worker &worker, const std::string &what, const std::string &expected, const char *value)
{
    if (expected == value) return;
    worker.Faults.push_back(what + ": \"" + value + "\" in place of \"" + expected + "\"");
}

void AddFinalRecords(Books &books, int mandant)
{
    AddPostings(books, mandant);
    AddItems(books, mandant);
    for (SakoRecord record : books.Read<SakoRecord>(mandant, TableSako)) {
        if (TextOf(record.Konto) != "   1200") continue;
        SetText(record.Umsaetze.Vortrag.Soll, "000001000,00");
        SetText(record.Umsaetze.Monat[0].Soll, "000000100,00");
        SetText(record.Umsaetze.Monat[11].Haben, "000000030,50");
        books.Replace(mandant, TableSako, record);
    }
    PersonalRecord kreditor = MakePersonal("70000");
    SetText(kreditor.Umsaetze.Slot0.Haben, "000000250,00");
    books.Replace(mandant, TableKred, kreditor);
}

void Ask(Worker &worker, const std::function<void()> &between)
{
    switch (worker.Random() % 6) {
    case 0: AskForPostings(worker, between); break;
    case 1: AskForAccounts(worker, between); break;
    case 2: AskForDebitoren(worker); break;
    case 3: AskForItems(worker, between); break;
    case 4: AskForBalances(worker); break;
    default: AskForNumbers(worker); break;
    }
}

} // namespace vark::test
