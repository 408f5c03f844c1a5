#include "tests/booking/posting_model.h"

#include "tests/booking/audit.h"
#include "tests/support/books.h"

#include <cstdio>
#include <map>
#include <optional>
#include <string>

namespace vark::test {

namespace {

struct Account {
    int Art;
    int Zuordnung;
    unsigned Key;
    bool IsFixed;
    int Ziel;
    bool IsForeign;
};

const std::map<std::string, Account> chart = {
    {"1000", {1, 2, 0, false, 0, false}},    {"1200", {1, 2, 0, false, 0, false}},
    {"1700", {1, 4, 0, false, 0, false}},    {"1750", {1, 4, 2, false, 0, false}},
    {"4000", {1, 8, 0, false, 0, false}},    {"4100", {1, 8, 0, false, 0, false}},
    {"3400", {1, 8, 0x22, false, 0, false}}, {"3300", {1, 8, 0x24, false, 0, false}},
    {"8400", {1, 8, 2, false, 0, false}},    {"8300", {1, 8, 4, false, 0, false}},
    {"8100", {1, 8, 8, false, 0, false}},    {"8900", {1, 8, 16, false, 0, false}},
    {"8125", {1, 8, 0x80, false, 0, false}}, {"8500", {1, 8, 2, true, 0, false}},
    {"8510", {1, 8, 8, true, 0, false}},     {"10000", {4, 0, 0, false, 0, false}},
    {"10001", {4, 0, 0, false, 0, false}},   {"10002", {4, 0, 0, false, 5, false}},
    {"10003", {4, 0, 0, false, 0, true}},    {"70000", {2, 0, 0, false, 0, false}},
    {"70001", {2, 0, 0, false, 7, false}},
};

struct Rate {
    int From;    // JJJJMMDD
    int Percent; // hundredths
    const char *Ust;
    const char *Vst;
};

const std::map<unsigned, std::vector<Rate>> rates = {
    {2, {{19980401, 1600, "1776", "1576"}, {19930101, 1500, "1775", "1575"}, {0, 1400, "1774", "1574"}}},
    {4, {{19980401, 700, "1771", "1571"}, {0, 650, "1770", "1570"}}},
    {8, {{0, 0, "1780", "1580"}}},
    {16, {{0, 0, "1790", "1590"}}},
};

size_t RateIndex(unsigned code, int day)
{
    size_t index = 0;
    while (rates.at(code)[index].From > day) {
        ++index;
    }
    return index;
}

// "12,5" as 1250; nothing for a text that is none with up to `digits` digits before the comma.
std::optional<int64_t> Hundredths(const std::string &text, size_t digits, bool isSigned)
{
    size_t at = 0;
    int64_t sign = 1;
    if (isSigned && !text.empty() && (text[0] == '-' || text[0] == '+')) sign = text[at++] == '-' ? -1 : 1;
    int64_t value = 0;
    size_t count = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at, ++count) {
        value = value * 10 + (text[at] - '0');
    }
    if (count == 0 || count > digits) return {};
    size_t decimals = 0;
    if (at < text.size()) {
        if (text[at++] != ',') return {};
        for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at, ++decimals) {
            value = value * 10 + (text[at] - '0');
        }
        if (decimals > 2 || at != text.size()) return {};
    }
    for (; decimals < 2; ++decimals) {
        value *= 10;
    }
    return sign * value;
}

template <size_t Width> void PutAmount(char (&field)[Width], int64_t value)
{
    char text[32];
    const long long size = value < 0 ? -value : value;
    std::snprintf(text, sizeof text, "%09lld%c%02lld", size / 100, value < 0 ? '-' : ',', size % 100);
    SetText(field, text);
}

void PutRate(RateText &field, int64_t value)
{
    char text[16];
    std::snprintf(text, sizeof text, "%02d,%02d", static_cast<int>(value / 100),
                  static_cast<int>(value % 100));
    SetText(field, text);
}

// Day, month and year of six digits as JJJJMMDD; 0 for what is no postable day. The tests use no other forms.
int DayNumber(const std::string &digits)
{
    const int day = std::stoi(digits.substr(0, 2));
    const int month = std::stoi(digits.substr(2, 2));
    const int year = 1900 + std::stoi(digits.substr(4, 2));
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12 || day < 1 || day > lengths[month - 1]) return 0;
    if (year < 1997 || year > 1998) return 0;
    return year * 10000 + month * 100 + day;
}

std::string PackedOf(const std::string &digits)
{
    return digits.substr(0, 4) + (digits[5] == '7' ? "17" : "18");
}

// gross x 100 / (100 + rate): half up to four decimals, then up from 5 in the third.
int64_t NetOf(int64_t gross, int64_t percent)
{
    const int64_t size = gross < 0 ? -gross : gross;
    const int64_t divisor = 10000 + percent;
    const int64_t fine = (2 * size * 10000 * 100 + divisor) / (2 * divisor); // in 1/100 Pfennig
    const int64_t net = fine / 100 + (fine / 10 % 10 >= 5 ? 1 : 0);
    return gross < 0 ? -net : net;
}

const Account *Find(const std::string &konto, int32_t art)
{
    const auto found = chart.find(konto);
    return found != chart.end() && found->second.Art == art ? &found->second : nullptr;
}

uint8_t KindOf(int art) { return static_cast<uint8_t>(art == 1 ? 2 : art == 4 ? 8 : 4); }

// The tax of a Teilbuchung on its way.
struct Tax {
    unsigned Key = 0;
    int Side = 0;
    bool IsFixed = false;
    unsigned Class = 0;
    bool IsSettled = false; // code, sequence and account are in the image
};

Tax ChooseTax(const Account &soll, const Account &haben)
{
    Tax tax;
    const bool sollHas = (soll.Key & ~0x20u) != 0;
    const bool habenHas = (haben.Key & ~0x20u) != 0;
    if (habenHas && !sollHas && soll.Zuordnung != 8 && haben.Zuordnung != 4) {
        tax.Key = haben.Key;
        tax.Side = 1;
        tax.IsFixed = haben.IsFixed;
    } else if (sollHas && !habenHas && haben.Zuordnung != 8 && soll.Zuordnung != 4) {
        tax.Key = soll.Key;
        tax.Side = 2;
        tax.IsFixed = soll.IsFixed;
    }
    tax.Class = tax.Key & ~0x20u;
    return tax;
}

void Settle(SplitRecord &image, unsigned key, unsigned code, size_t index, unsigned older)
{
    const Rate &rate = rates.at(code)[index];
    image.Steuerschluessel = static_cast<uint16_t>(code | older);
    image.Steuerfolge = static_cast<uint16_t>(index);
    SetText(image.Steuerkonto, Justified((key & 0x20) != 0 ? rate.Vst : rate.Ust));
    PutRate(image.Steuersatz, rate.Percent);
}

// From the accounts to the net amount. `given` is the caller's rate, `tax` his tax amount.
int32_t ApplyTax(SplitRecord &image, Tax &tax, int day, int64_t gross, std::optional<int64_t> given,
                 std::optional<int64_t> amount)
{
    const bool wanted = (amount && *amount != 0) || (given && *given != 0);
    const unsigned first = tax.Class;
    const bool counts = (first & 14) != 0;
    if (given) PutRate(image.Steuersatz, *given);
    if (first == 0 && wanted) return amount ? -14 : -13;
    if (first == 8 && !wanted) Settle(image, tax.Key, 8, RateIndex(8, day), 0);
    bool isFree = first == 16 || (first == 8 && wanted);
    if (first == 2 || first == 4) {
        const size_t index = RateIndex(first, day);
        const std::vector<Rate> &list = rates.at(first);
        if (!given || *given == list[index].Percent) {
            Settle(image, tax.Key, first, index, 0);
        } else if (index + 1 < list.size() && *given == list[index + 1].Percent) {
            Settle(image, tax.Key, first, index + 1, 0x40);
        } else {
            isFree = true;
        }
    } else if (isFree) {
        tax.Class = 16;
        for (const unsigned code : {2u, 4u}) {
            if (given && *given == rates.at(code)[RateIndex(code, day)].Percent) {
                Settle(image, tax.Key, code, RateIndex(code, day), 0);
                isFree = false;
                tax.Class = code;
                break;
            }
        }
    }
    if (isFree) {
        tax.Class = 16;
        if (wanted && !given) return -14;
        Settle(image, tax.Key, 16, 0, 0);
        std::memset(image.Steuersatz, 0, sizeof image.Steuersatz);
        if (given) PutRate(image.Steuersatz, *given);
        if (tax.IsFixed && counts) PutRate(image.Steuersatz, 0);
    }
    PutAmount(image.Brutto, gross);
    PutAmount(image.Netto, gross);
    return 1;
}

int32_t ApplyNet(SplitRecord &image, const Tax &tax, unsigned first, int64_t gross, bool isGrossNegative,
                 std::optional<int64_t> given, std::optional<int64_t> amount)
{
    const std::optional<int64_t> rate = Hundredths(TextOf(image.Steuersatz), 2, false);
    if (given && tax.IsFixed && (first & 14) != 0 && rate != given) return -13;
    if (rate.value_or(0) == 0) std::memset(image.Steuerkonto, 0, sizeof image.Steuerkonto);
    if (amount) {
        const int64_t net = gross - *amount;
        if (net == 0 && isGrossNegative) return 0; // a zero with either mark; the caller avoids it
        if ((net < 0) != isGrossNegative) return -14;
        PutAmount(image.Netto, net);
    } else if (tax.Class != 0 && tax.Class != 8) {
        PutAmount(image.Netto, NetOf(gross, rate.value_or(0)));
    }
    return 1;
}

std::vector<ExpectedLine> LinesOf(const SplitRecord &image, const std::string &packed, bool isHaben)
{
    const int64_t net = PfennigOf(image.Netto);
    const int64_t size = net < 0 ? -net : net;
    int64_t share = (size * 3333 + 5000) / 10000;
    const bool isTie = size * 3333 % 10000 == 5000;
    if (net < 0) share = -share;
    std::vector<ExpectedLine> lines(2);
    for (size_t i = 0; i < 2; ++i) {
        KobuRecord &line = lines[i].Record;
        SetText(line.Datum, packed.substr(4) + packed.substr(2, 2) + packed.substr(0, 2));
        SetText(line.Kostenobjekt1, i == 0 ? "    100" : "    101");
        SetText(line.Kostenobjekt2, i == 0 ? "    200" : "    201");
        line.Flag = static_cast<uint8_t>(i + (isHaben ? 0x20 : 0));
        SetText(line.Text, "Zeile " + std::to_string(i));
        lines[i].Amount = i == 0 ? share : net - share;
        lines[i].IsTie = isTie;
    }
    return lines;
}

std::string Stripped(std::string konto)
{
    konto.erase(0, konto.find_first_not_of(' '));
    return konto;
}

// One Teilbuchung. 1, a code, or 0 with `isDropped` for a split's unknown Kostenschablone.
int32_t ExpectPart(const TeilbuchungEingabe &part, int32_t zahlungsziel, int day, const std::string &packed,
                   bool hasCosts, bool isSplit, bool &isDropped, int &ziel, ExpectedPart &out)
{
    const std::string sollkonto = Stripped(TextOf(part.Sollkonto));
    const std::string habenkonto = Stripped(TextOf(part.Habenkonto));
    if (sollkonto == habenkonto) return -10;
    const Account *soll = Find(sollkonto, part.SollArt);
    if (soll == nullptr) return -8;
    const Account *haben = Find(habenkonto, part.HabenArt);
    if (haben == nullptr) return -9;
    const std::string brutto = TextOf(part.Brutto);
    const std::optional<int64_t> gross = Hundredths(brutto, 9, true);
    if (!gross) return -12;
    const std::string satz = TextOf(part.Steuersatz);
    const std::optional<int64_t> given = Hundredths(satz, 2, false);
    if (!satz.empty() && !given) return -13;
    const std::string betrag = TextOf(part.Steuerbetrag);
    const std::optional<int64_t> amount = Hundredths(betrag, 9, true);
    if (!betrag.empty() && !amount) return -14;
    if (!isSplit && zahlungsziel == 8) return -27;
    if (part.Kostenschablone == 9) {
        isDropped = isSplit;
        return -43;
    }
    SplitRecord &image = out.Image;
    Tax tax = ChooseTax(*soll, *haben);
    const unsigned first = tax.Class;
    int32_t code = ApplyTax(image, tax, day, *gross, given, amount);
    if (code != 1) return code;
    const Account *personal = soll->Art != 1 ? soll : haben->Art != 1 ? haben : nullptr;
    if (!isSplit && personal != nullptr && personal->IsForeign) return 0; // there are no rates of exchange
    code = ApplyNet(image, tax, first, *gross, brutto[0] == '-', given, amount);
    if (code != 1) return code;
    SetText(image.Sollkonto, Justified(sollkonto));
    SetText(image.Habenkonto, Justified(habenkonto));
    image.SollArt = KindOf(soll->Art);
    image.HabenArt = KindOf(haben->Art);
    image.Steuerseite = static_cast<uint16_t>(tax.Side);
    std::memcpy(image.Text, part.Text, sizeof image.Text);
    if (ziel == 0) ziel = soll->Ziel != 0 ? soll->Ziel : haben->Ziel;
    if (!hasCosts || part.Kostenschablone == 0 || (soll->Art != 1 && haben->Art != 1)) return 1;
    const bool sollIsGuv = soll->Zuordnung == 8;
    const bool habenIsGuv = haben->Zuordnung == 8;
    if (!sollIsGuv && !habenIsGuv) return -43;
    if (isSplit && soll->Art != 1) return 1;
    image.Kostenschablone = part.Kostenschablone;
    image.Kostenzeilen = 2;
    out.Lines = LinesOf(image, packed, !sollIsGuv);
    return 1;
}

} // namespace

Expected ExpectSingle(const BuchungEingabe &booking, bool hasCosts)
{
    Expected expected{};
    const std::string digits = TextOf(booking.Datum);
    const int day = DayNumber(digits);
    expected.Code = booking.Stapel != 16 ? -6 : day == 0 ? -11 : 1;
    if (expected.Code != 1) return expected;
    TeilbuchungEingabe part{};
    std::memcpy(part.Sollkonto, booking.Sollkonto, sizeof part.Sollkonto);
    part.SollArt = booking.SollArt;
    std::memcpy(part.Habenkonto, booking.Habenkonto, sizeof part.Habenkonto);
    part.HabenArt = booking.HabenArt;
    std::memcpy(part.Brutto, booking.Brutto, sizeof part.Brutto);
    std::memcpy(part.Steuersatz, booking.Steuersatz, sizeof part.Steuersatz);
    std::memcpy(part.Steuerbetrag, booking.Steuerbetrag, sizeof part.Steuerbetrag);
    std::memcpy(part.Text, booking.Text, sizeof part.Text);
    part.Kostenschablone = booking.Kostenschablone;
    expected.Parts.resize(1);
    bool isDropped = false;
    int ziel = booking.Zahlungsziel;
    expected.Code = ExpectPart(part, booking.Zahlungsziel, day, PackedOf(digits), hasCosts, false, isDropped,
                               ziel, expected.Parts[0]);
    expected.IsWritten = expected.Code == 1;
    BatRecord &bat = expected.Bat;
    bat.Stapel = booking.Stapel;
    SetText(bat.Buchungsdatum, PackedOf(digits));
    SetText(bat.ZweitesDatum, PackedOf(digits));
    std::memcpy(bat.Beleg, booking.Beleg, sizeof bat.Beleg);
    bat.Anzahl = 1;
    bat.Kennzeichen = booking.Kennzeichen;
    bat.Zahlungsziel = ziel;
    return expected;
}

Expected ExpectSplit(const SplitEingabe &split, bool hasCosts)
{
    Expected expected{};
    const std::string digits = TextOf(split.Datum);
    const int day = DayNumber(digits);
    const auto finish = [&expected](int32_t code) {
        expected.Code = code;
        return expected;
    };
    if (split.Stapel != 16) return finish(-6);
    if (day == 0) return finish(-11);
    if (split.Anzahl < 1) return finish(-25);
    bool isSoll = true;
    bool isHaben = true;
    for (int i = 1; i < split.Anzahl; ++i) {
        isSoll = isSoll && std::strcmp(split.Teil[0].Sollkonto, split.Teil[i].Sollkonto) == 0;
        isHaben = isHaben && std::strcmp(split.Teil[0].Habenkonto, split.Teil[i].Habenkonto) == 0;
    }
    if (split.Anzahl > 1 && isSoll == isHaben) return finish(-26);
    if (split.Zahlungsziel == 8) return finish(-27);
    int ziel = 0;
    expected.Parts.resize(static_cast<size_t>(split.Anzahl));
    for (int i = 0; i < split.Anzahl; ++i) {
        bool isDropped = false;
        const int32_t code = ExpectPart(split.Teil[i], 0, day, PackedOf(digits), hasCosts, true, isDropped,
                                        ziel, expected.Parts[static_cast<size_t>(i)]);
        if (code != 1) return finish(isDropped ? 1 : code);
    }
    BatRecord &bat = expected.Bat;
    bat.Stapel = split.Stapel;
    SetText(bat.Buchungsdatum, PackedOf(digits));
    SetText(bat.ZweitesDatum, PackedOf(digits));
    std::memcpy(bat.Beleg, split.Beleg, sizeof bat.Beleg);
    bat.Splitseite = split.Anzahl == 1 ? 0 : isSoll ? 128 : 256;
    bat.Anzahl = static_cast<int16_t>(split.Anzahl);
    bat.Kennzeichen = split.Kennzeichen;
    bat.Zahlungsziel = split.Zahlungsziel != 0 ? split.Zahlungsziel : ziel;
    expected.IsWritten = true;
    return finish(1);
}

} // namespace vark::test
