#include "tests/booking/ledger.h"

#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"

namespace vark::test {

namespace {

void FillYear(Books &books, int mandant, const std::string &year)
{
    const auto sako = [&](const char *konto, int16_t zuordnung, unsigned flags) {
        books.Insert(mandant, TableSako, MakeSako(konto, zuordnung, static_cast<uint8_t>(flags)), year);
    };
    sako("1000", ZuordnungAktiva, 0);
    sako("1200", ZuordnungAktiva, 0);
    sako("1700", ZuordnungPassiva, 0);
    sako("1750", ZuordnungPassiva, SteuerRegelsatz);
    sako("4000", ZuordnungGuv, 0);
    sako("4100", ZuordnungGuv, 0);
    sako("3400", ZuordnungGuv, SteuerRegelsatz | SteuerVorsteuer);
    sako("3300", ZuordnungGuv, SteuerErmaessigt | SteuerVorsteuer);
    sako("8400", ZuordnungGuv, SteuerRegelsatz);
    sako("8300", ZuordnungGuv, SteuerErmaessigt);
    sako("8100", ZuordnungGuv, SteuerNullsatz);
    sako("8900", ZuordnungGuv, SteuerSonstigerSatz);
    sako("8125", ZuordnungGuv, SteuerEg);
    for (const char *konto : {"8500", "8510"}) {
        SakoRecord record = MakeSako(konto, ZuordnungGuv, SteuerRegelsatz);
        if (konto[2] == '1') record.Steuerflags = SteuerNullsatz;
        record.FesterSatz = 1;
        books.Insert(mandant, TableSako, record, year);
    }

    books.Insert(mandant, TableDebi, MakePersonal("10000"), year);
    PersonalRecord personal = MakePersonal("10001");
    SetText(personal.UstId, "FR12345678901");
    books.Insert(mandant, TableDebi, personal, year);
    personal = MakePersonal("10002");
    personal.Zahlungsziel = 5;
    books.Insert(mandant, TableDebi, personal, year);
    personal = MakePersonal("10003");
    SetText(personal.Waehrung, "USD");
    books.Insert(mandant, TableDebi, personal, year);
    books.Insert(mandant, TableKred, MakePersonal("70000"), year);
    personal = MakePersonal("70001");
    personal.Zahlungsziel = 7;
    books.Insert(mandant, TableKred, personal, year);

    const auto steke = [&](uint16_t code, uint16_t folge, const char *ab, const char *satz, const char *ust,
                           const char *vst) {
        books.Insert(mandant, TableSteke, MakeSteke(code, folge, ab, satz, ust, vst), year);
    };
    steke(2, 0, "010418", "16,00", "1776", "1576");
    steke(2, 1, "010113", "15,00", "1775", "1575");
    steke(2, 2, "", "14,00", "1774", "1574");
    steke(4, 0, "010418", "07,00", "1771", "1571");
    steke(4, 1, "", "06,50", "1770", "1570");
    steke(8, 0, "", "00,00", "1780", "1580");
    steke(16, 0, "", "00,00", "1790", "1590");
}

} // namespace

Ledger::Ledger(const MandantOptions &options, const std::string &script) : Books(script)
{
    const int last = std::stoi(options.UpperYear);
    for (int year = options.LowerYear.empty() ? last : std::stoi(options.LowerYear); year <= last; ++year) {
        years.push_back(std::to_string(year));
    }
    AddLedger(1, options);
}

void Ledger::AddLedger(int mandant, const MandantOptions &options)
{
    AddMandant(mandant, options);
    const int last = std::stoi(options.UpperYear);
    for (int year = options.LowerYear.empty() ? last : std::stoi(options.LowerYear); year <= last; ++year) {
        FillYear(*this, mandant, std::to_string(year));
    }
    Insert(mandant, TableStapel, MakeStapel(16));
    Insert(mandant, TableStapel, MakeStapel(17));
    for (const int number : {5, 6, 7}) {
        Insert(mandant, TableZahlziel, MakeZahlziel(number));
    }
}

void Ledger::AddKostenschablone(int32_t nummer, const Lines &shares)
{
    Insert(1, TableKoscha, MakeKoscha(nummer, static_cast<int16_t>(shares.size())));
    int line = 0;
    for (const std::string &share : shares) {
        Insert(1, TableKoschaze,
               MakeKoschaze(nummer, std::to_string(100 + line), std::to_string(200 + line),
                            static_cast<uint8_t>(line % 2), share, "Zeile " + std::to_string(line)));
        ++line;
    }
}

BatRecord Ledger::OnlyPosting() const
{
    const std::vector<BatRecord> postings = Postings();
    if (postings.size() != 1) {
        throw std::runtime_error(std::to_string(postings.size()) + " postings in place of one");
    }
    return postings[0];
}

std::vector<KobuRecord> Ledger::CostLines(const std::string &year) const
{
    return Read<KobuRecord>(1, TableKobu, year);
}

bool Ledger::IsEmpty() const
{
    for (const std::string &year : years) {
        if (Count(1, TableBat, year) + Count(1, TableSplit, year) + Count(1, TableKobu, year) != 0)
            return false;
    }
    return true;
}

ThreadContext &BoundContext()
{
    ThreadContext *context = nullptr;
    FistaRecord fista;
    if (EnterExport(context) != ready || SelectMandant(*context, 1, fista) != 1) {
        throw std::runtime_error("Mandant 1 cannot be selected");
    }
    return *context;
}

BuchungEingabe PlainBooking()
{
    BuchungEingabe booking{};
    booking.Mandant = 1;
    booking.Stapel = 16;
    SetText(booking.Datum, "150598");
    SetText(booking.Beleg, "R-1");
    SetText(booking.Text, "Büromaterial");
    SetText(booking.Sollkonto, "4000");
    booking.SollArt = 1;
    SetText(booking.Habenkonto, "1200");
    booking.HabenArt = 1;
    SetText(booking.Brutto, "116");
    return booking;
}

Teilbuchung PartOf(const std::string &netto)
{
    Teilbuchung part{};
    SetText(part.Image.Brutto, netto);
    SetText(part.Image.Netto, netto);
    return part;
}

} // namespace vark::test
