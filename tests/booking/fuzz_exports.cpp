#include "tests/booking/fuzz_exports.h"

#include "include/vark40.h"
#include "src/frame/thread_context.h"
#include "tests/booking/audit.h"
#include "tests/booking/ledger.h"
#include "tests/support/engine_faults.h"

#include <memory>
#include <set>
#include <stdexcept>

namespace vark::test {

namespace {

// What tests of single exports know to matter, so that calls get past the first check.
const char *const words[] = {
    "",
    "1000",
    "1200",
    "1700",
    "4000",
    "4100",
    "3400",
    "8400",
    "8300",
    "8100",
    "8900",
    "8125",
    "8500",
    "8510",
    "10000",
    "10001",
    "10002",
    "10003",
    "70000",
    "70001",
    "4711",
    "   1200",
    "1",
    "116",
    "-116,00",
    "999999999,99",
    "0",
    "16",
    "15",
    "14",
    "7",
    "6,5",
    "00,00",
    "99,99",
    "150598",
    "150597",
    "15.5.98",
    "15",
    "1505",
    "29.02.1996",
    "310298",
    "010418",
    "180515",
    "K1200",
    "K10000",
    "USD",
    "D",
    "12345678",
    "12345678901",
    "\xFC\xDF\x80",
    "%s%n",
    "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF",
};

// The bytes, taken from the front; zeros when there are none left.
class Input {
public:
    Input(const uint8_t *bytes, size_t count) : data(bytes), size(count) {}

    bool IsEmpty() const { return size == 0; }
    uint8_t Byte()
    {
        if (size == 0) return 0;
        --size;
        return *data++;
    }
    // Mostly a small number, sometimes any.
    int32_t Number()
    {
        const uint8_t first = Byte();
        if (first < 224) return first % 20;
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            value = value << 8 | Byte();
        }
        return static_cast<int32_t>(value);
    }
    // A word, null, or bytes as they come, in memory that ends with the text.
    const char *Text()
    {
        const uint8_t first = Byte();
        if (first == 255) return nullptr;
        if (first < 200) return words[first % (sizeof words / sizeof *words)];
        const size_t length = first - 200;
        texts.push_back(std::make_unique<char[]>(length + 1));
        for (size_t i = 0; i < length; ++i) {
            texts.back()[i] = static_cast<char>(Byte());
        }
        return texts.back().get();
    }
    void Fill(void *field, size_t width)
    {
        const char *text = Byte() < 240 ? Text() : nullptr;
        for (size_t i = 0; i < width; ++i) {
            const char character = text != nullptr ? *text : static_cast<char>(Byte());
            static_cast<char *>(field)[i] = character;
            if (text != nullptr && *text != 0) ++text;
        }
    }
    // An output of exactly the stated size, or none.
    char *Out(size_t width)
    {
        if (Byte() % 8 == 0) return nullptr;
        texts.push_back(std::make_unique<char[]>(width));
        return texts.back().get();
    }

private:
    const uint8_t *data;
    size_t size;
    std::vector<std::unique_ptr<char[]>> texts;
};

template <size_t Width> void Fill(Input &input, char (&field)[Width]) { input.Fill(field, Width); }

void FillPart(Input &input, TeilbuchungEingabe &part)
{
    Fill(input, part.Sollkonto);
    part.SollArt = input.Number();
    Fill(input, part.Habenkonto);
    part.HabenArt = input.Number();
    Fill(input, part.Brutto);
    Fill(input, part.Steuersatz);
    Fill(input, part.Steuerbetrag);
    Fill(input, part.Text);
    part.Kostenschablone = input.Number();
}

int32_t CallSingle(Input &input)
{
    BuchungEingabe b{};
    b.Mandant = input.Byte() < 240 ? 1 : input.Number();
    b.Stapel = input.Byte() < 240 ? 16 : input.Number();
    Fill(input, b.Datum);
    Fill(input, b.Beleg);
    Fill(input, b.Text);
    Fill(input, b.Sollkonto);
    b.SollArt = input.Number();
    Fill(input, b.Habenkonto);
    b.HabenArt = input.Number();
    Fill(input, b.Brutto);
    Fill(input, b.Steuersatz);
    Fill(input, b.Steuerbetrag);
    b.Kennzeichen = input.Byte();
    b.Kostenschablone = input.Number();
    b.Zahlungsziel = input.Number();
    return VARK_BuchungEinfuegen(input.Byte() != 0 ? &b : nullptr, 0);
}

int32_t CallDirekt(Input &input)
{
    const char *t[8];
    for (const char *&text : t) {
        text = input.Text();
    }
    const int32_t sollArt = input.Number();
    const int32_t habenArt = input.Number();
    const int32_t schablone = input.Number();
    const int32_t ziel = input.Number();
    return VARK_BuchungEinfuegenDirektEx(0, 1, 16, t[0], t[1], t[2], t[3], sollArt, t[4], habenArt, t[5],
                                         t[6], t[7], schablone, ziel);
}

int32_t CallSplit(Input &input)
{
    SplitEingabe s{};
    s.Mandant = 1;
    s.Stapel = 16;
    Fill(input, s.Datum);
    Fill(input, s.Beleg);
    s.Anzahl = input.Number();
    for (TeilbuchungEingabe &part : s.Teil) {
        if (input.IsEmpty()) break;
        FillPart(input, part);
    }
    s.Kennzeichen = input.Byte();
    s.Zahlungsziel = input.Number();
    return VARK_SplitBuchungEinfuegen(&s, 0);
}

int32_t CallShortDirekt(Input &input)
{
    const char *t[8];
    for (const char *&text : t) {
        text = input.Text();
    }
    const int32_t sollArt = input.Number();
    return VARK_BuchungEinfuegenDirekt(0, 1, 16, t[0], t[1], t[2], t[3], sollArt, t[4], input.Number(), t[5],
                                       t[6], t[7]);
}

int32_t CallSplitPart(Input &input, bool isShort)
{
    const char *t[6];
    for (const char *&text : t) {
        text = input.Text();
    }
    const int32_t sollArt = input.Number();
    const int32_t habenArt = input.Number();
    if (isShort) return VARK_SplitEinfuegen(t[0], sollArt, t[1], habenArt, t[2], t[3], t[4], t[5]);
    return VARK_SplitEinfuegenEx(t[0], sollArt, t[1], habenArt, t[2], t[3], t[4], t[5], input.Number());
}

int32_t CallPeko(Input &input)
{
    PekoEingabe p{};
    p.Mandant = 1;
    Fill(input, p.Konto);
    Fill(input, p.Kuerzel);
    Fill(input, p.Name1);
    Fill(input, p.UstId);
    Fill(input, p.Land);
    Fill(input, p.Waehrung);
    Fill(input, p.Blz);
    Fill(input, p.Bankkonto);
    Fill(input, p.Gegenkonto);
    p.Wert1 = input.Number();
    Fill(input, p.Skonto);
    p.Mahnkennziffer = input.Number();
    p.Zahlungsziel = input.Number();
    const int32_t aktion = input.Number();
    const int32_t art = input.Number();
    return VARK_Peko(aktion, art, &p, 0);
}

int32_t CallPekoDirekt(Input &input)
{
    const char *t[15];
    for (const char *&text : t) {
        text = input.Text();
    }
    int32_t n[6];
    for (int32_t &number : n) {
        number = input.Number();
    }
    return VARK_PekoDirekt(n[0], n[1], 0, 1, t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8], t[9],
                           t[10], t[11], t[12], t[13], n[2], n[3], t[14], n[4], n[5]);
}

// Without a window a dialog is cancelled.
int32_t CallPicker(Input &input)
{
    const uint8_t which = input.Byte();
    const int32_t mandant = input.Byte() < 240 ? 1 : input.Number();
    switch (which % 5) {
    case 0: return VARK_HoleMandantenNr(nullptr);
    case 1: return VARK_HoleStapelNr(nullptr, which < 128 ? mandant : -mandant);
    case 2: return VARK_HoleZahlungsziel(nullptr, mandant);
    case 3: return VARK_HoleKostenschablone(nullptr, mandant);
    default: {
        const int32_t kontoart = input.Number();
        const char *from = input.Text();
        return VARK_HoleKonto(nullptr, mandant, kontoart, from, input.Text(), input.Out(8));
    }
    }
}

int32_t CallPostingCursor(Input &input)
{
    uint32_t numbers[3];
    char *out[9];
    const size_t widths[] = {11, 9, 40, 8, 8, 17, 8, 17, 1};
    for (size_t i = 0; i < 9; ++i) {
        out[i] = input.Out(widths[i]);
    }
    return VARK_HoleBube(&numbers[0], out[0], out[1], out[2], out[3], &numbers[1], out[4], &numbers[2],
                         input.Number(), out[5], out[6], out[7]);
}

int32_t CallAccountCursor(Input &input)
{
    uint32_t numbers[4];
    char *out[15];
    const size_t widths[] = {8, 10, 26, 26, 47, 4, 5, 7, 31, 31, 9, 12, 28, 8, 8};
    for (size_t i = 0; i < 15; ++i) {
        out[i] = input.Out(widths[i]);
    }
    if (input.Byte() % 2 == 0) {
        char *name = input.Out(50);
        return VARK_HoleSako(out[0], out[1], name, &numbers[0], &numbers[1], &numbers[2]);
    }
    return VARK_HolePeko(out[0], out[1], out[2], out[3], out[4], out[5], out[6], out[7], out[8], out[9],
                         out[10], out[11], out[12], out[13], &numbers[0], &numbers[1], input.Number(),
                         out[14], &numbers[2], &numbers[3]);
}

int32_t CallItemCursor(Input &input)
{
    char *out[11];
    const size_t widths[] = {8, 10, 10, 11, 11, 11, 26, 26, 17, 17, 5};
    for (size_t i = 0; i < 11; ++i) {
        out[i] = input.Out(widths[i]);
    }
    return VARK_HoleOP(out[0], out[1], out[2], out[3], out[4], out[5], out[6], out[7], input.Number(), out[8],
                       out[9], out[10]);
}

using Codes = std::set<int32_t>;
const Codes postingCodes = {1,   0,   -2,  -3,  -5,  -6,  -8,  -9,  -10, -11,
                            -12, -13, -14, -24, -25, -26, -27, -40, -42, -43};
const Codes pekoCodes = {1,   -2,  -3,  -5,  -7,  -10, -15, -16, -17, -18,
                         -19, -27, -28, -29, -30, -31, -32, -33, -42};
const Codes queryCodes = {1, 0, -3, -5, -7, -10, -11, -20, -23, -37, -42};
const Codes cursorCodes = {1, 2, -3, -20, -39, -40, -42};
const Codes pickerCodes = {0, -1, -3, -5, -7, -42};

int32_t CallOne(Input &input, const Codes *&codes)
{
    const uint8_t which = input.Byte();
    codes = &postingCodes;
    switch (which % 23) {
    case 0: return CallSingle(input);
    case 1: return CallDirekt(input);
    case 2: return CallSplit(input);
    case 3: {
        const char *date = input.Text();
        return VARK_SplitStartEx(1, 16, date, input.Text(), input.Byte(), input.Number());
    }
    case 4: return CallSplitPart(input, false);
    case 5: return VARK_SplitEnde(input.Byte() % 4, 0);
    case 6: codes = &pekoCodes; return CallPeko(input);
    case 8: codes = &cursorCodes; return CallPostingCursor(input);
    case 9: codes = &cursorCodes; return CallAccountCursor(input);
    case 10: codes = &cursorCodes; return CallItemCursor(input);
    case 16: return CallShortDirekt(input);
    case 17: {
        const char *date = input.Text();
        return VARK_SplitStart(1, 16, date, input.Text(), input.Byte());
    }
    case 18: return CallSplitPart(input, true);
    case 19: codes = &pekoCodes; return CallPekoDirekt(input);
    case 20: codes = &cursorCodes; return VARK_BeendeHolen();
    case 21: VARK_SchliesseDB(); return VARK_Status();
    case 22: codes = &pickerCodes; return CallPicker(input);
    default: break;
    }
    codes = &queryCodes;
    const int32_t mandant = input.Byte() < 240 ? 1 : input.Number();
    const char *text = input.Text();
    switch (which % 23) {
    case 7: return VARK_HoleSaldo(mandant, text, input.Number(), 0, input.Number(), input.Out(17));
    case 11: return VARK_InitHoleBube(mandant, text, 0);
    case 12: return VARK_InitHoleKonto(mandant, input.Number(), text, 0);
    case 13: return VARK_InitHoleOP(mandant, text, input.Number(), 0);
    case 14: return VARK_HoleFreieKontonr(mandant, input.Number(), input.Out(8));
    default: return VARK_ExistiertKonto(mandant, text, input.Number());
    }
}

Ledger &SharedBooks()
{
    static const auto books = [] {
        auto made = std::make_unique<Ledger>(MandantOptions{.Kostenrechnung = true});
        made->AddKostenschablone(1, {"033,33", "066,67"});
        made->Insert(1, TableKurse, MakeKurs("USD", "180515", "000000001,75"));
        for (int32_t number = 1; number <= 6; ++number) {
            BubeRecord posting = MakeBube(number, "150118", "10000", "8400", "000000116,00");
            posting.Steuerflags =
                static_cast<uint8_t>(number % 2 == 0 ? BubeSteuerMinus | 2 : BubeSteuerErrechnet);
            if (number == 2) posting.Status = BubeGefaltet;
            if (number == 3) posting.Status = BubeSplitSoll | BubeSplitAnfang;
            if (number == 4) posting.Status = BubeSplitSoll;
            made->Insert(1, TableBube, posting);
            made->Insert(1, TableOpdebi,
                         MakeOpenItem(static_cast<uint32_t>(number), number % 2 != 0 ? "10000" : "10001",
                                      "180115", "000000116,00"));
        }
        return made;
    }();
    return *books;
}

void AuditNowAndThen(Ledger &books)
{
    static int inputs;
    if (++inputs % 64 != 0) return;
    VARK_SchliesseDB();
    const std::string fault = AuditPostings(books, 1);
    if (!fault.empty()) throw std::logic_error(fault);
    if (books.Count(1, TableBube) != 6 || books.Count(1, TableOpdebi) != 6) {
        throw std::logic_error("a query has changed the books");
    }
    if (books.Count(1, TableBat) < 300) return;
    for (const TableId table : {TableBat, TableSplit, TableKobu}) {
        books.EmptyTable(1, table);
    }
}

} // namespace

int RunCalls(const uint8_t *data, size_t size)
{
    int good = 0;
    Ledger &books = SharedBooks();
    Input input(data, size);
    for (int call = 0; call < 16 && !input.IsEmpty(); ++call) {
        const uint8_t fault = input.Byte();
        if (fault >= 224) FailEngineCall(fault - 223);
        const Codes *codes = nullptr;
        const int32_t code = CallOne(input, codes);
        StopEngineFaults();
        good += code == 1 ? 1 : 0;
        if (codes->count(code) == 0) throw std::logic_error("code " + std::to_string(code));
        const ThreadContext *context = GetThreadContext();
        if (context->TransactionDepth != 0 || context->HoldOpen != 0)
            throw std::logic_error("open transaction");
    }
    AuditNowAndThen(books);
    return good;
}

} // namespace vark::test
