// The C++ interface: values that are exact, results that say what went wrong, ranges that keep to their
// thread. Each case runs in a process of its own, in sample books of its own.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <type_traits>
#include <unistd.h>

#include "tests/bindings/cpp_host.h"

using namespace vark40;
using namespace std::chrono_literals;

namespace fs = std::filesystem;

namespace {

// A wrong type does not compile, and no amount comes from a number that is not exact.
static_assert(!std::is_constructible_v<Betrag, double>);
static_assert(!std::is_constructible_v<Betrag, int>);
static_assert(!std::is_invocable_v<decltype([](const Buecher &b, auto x) -> decltype(b.Saldo(x)) {
                                       return b.Saldo(x);
                                   }),
                                   const Buecher &, int>);
static_assert(!std::is_invocable_v<decltype([](const Buecher &b, auto x) -> decltype(b.OffenePosten(x)) {
                                       return b.OffenePosten(x);
                                   }),
                                   const Buecher &, int>);
static_assert(!std::is_copy_constructible_v<Buecher> && !std::is_copy_constructible_v<Bereich<Sachkonto>>);
static_assert(std::ranges::input_range<Bereich<Buchungssatz>>);

std::string OutputOf(const std::string &command)
{
    std::string output;
    FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return "cannot be run";
    char buffer[4096];
    for (size_t count = 0; (count = fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
        output.append(buffer, count);
    }
    return pclose(pipe) == 0 ? output : "failed";
}

struct InBooks : testing::Test {
    fs::path Place;

    void SetUp() override
    {
        std::string pattern = (fs::temp_directory_path() / "vark-cpp-XXXXXX").string();
        ASSERT_NE(nullptr, mkdtemp(pattern.data()));
        Place = pattern;
        setenv("VARK_CONFIG_DIR", Place.c_str(), 1);
        setenv("VARK_UI", "headless", 1);
    }
    void TearDown() override { fs::remove_all(Place); }

    void MakeBooks() const
    {
        ASSERT_NE("failed", OutputOf("'" VARK_BOOKS "' beispiel '" + Place.string() + "' --ersetzen"));
    }
    Buecher Open(int32_t mandant = 1) const
    {
        MakeBooks();
        Result<Buecher> books = Buecher::Oeffnen(mandant);
        if (!books) ADD_FAILURE() << books.error().Message;
        return std::move(*books);
    }
    // What a call writes to standard error.
    template <typename Call> std::string ShownBy(Call call) const
    {
        const std::string path = (Place / "shown").string();
        const int real = dup(STDERR_FILENO);
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(file, STDERR_FILENO);
        call();
        dup2(real, STDERR_FILENO);
        close(file);
        close(real);
        std::ifstream shown(path);
        return {std::istreambuf_iterator<char>(shown), {}};
    }
    static std::string Stapel(int number)
    {
        return OutputOf("'" VARK_PROGRAM "' stapel --mandant 1 " + std::to_string(number) + " --json");
    }
};

Buchung Miete()
{
    return {.Stapel = 16,
            .Tag = 1998y / 4 / 15,
            .Sollkonto = "8010",
            .Habenkonto = "1840",
            .Brutto = Betrag::Von(1500),
            .Beleg = "M-0498",
            .Text = "Büromiete €"};
}

// Code and field of what a call answers; "1" for a success.
template <typename T> std::string Told(const Result<T> &result)
{
    if (result) return "1";
    return std::to_string(static_cast<int>(result.error().Code)) + " " + result.error().Field;
}

} // namespace

TEST(CppValues, AmountsAreExact)
{
    EXPECT_EQ("1234,50", Betrag::Von(1234, 50).Text());
    EXPECT_EQ("-0,05", Betrag::InPfennig(-5).Text());
    EXPECT_EQ("-7,00", Betrag::Von(-7).Text());
    EXPECT_EQ(Betrag::Von(1234, 50), Betrag::AusText("+000001234,50"));
    EXPECT_EQ(Betrag::Von(-7), Betrag::AusText("-7"));
    EXPECT_EQ(Betrag::Von(0, 50), Betrag::AusText("0,5"));
    for (const char *wrong : {"", "-", ",", "1.234,50", "1,234", "x", "1,5x", "--1", "1234567890123456"}) {
        EXPECT_EQ(std::nullopt, Betrag::AusText(wrong)) << wrong;
    }
    EXPECT_EQ(Betrag::Von(3), Betrag::Von(1) + Betrag::Von(2));
    EXPECT_LT(Betrag::Von(-1), Betrag());
    EXPECT_EQ("7,50", Satz::Von(7, 50).Text());
}

TEST(CppValues, TextsAreUtf8AtTheHostAndWindows1252InTheBooks)
{
    for (int byte = 1; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        char out[2] = "";
        detail::Filling filling;
        filling.Text(out, detail::FromBooks(text), "x");
        EXPECT_FALSE(filling.Failure) << byte;
        EXPECT_EQ(text[0], out[0]) << byte;
    }
    for (const char *wrong : {"Ω", "\xC2", "\xFF", "\xC0\x80", "\xED\xA0\x80", "𝄞", "ab"}) {
        char out[2] = "";
        detail::Filling filling;
        filling.Text(out, wrong, "x");
        EXPECT_TRUE(filling.Failure) << wrong;
    }
}

TEST_F(InBooks, BookingIsInItsStapel)
{
    const Buecher books = Open();
    const Result<void> written = books.Buchen(Miete());
    ASSERT_EQ("1", Told(written));
    const std::string stapel = Stapel(16);
    for (const char *part : {"\"15.04.1998\"", "\"M-0498\"", "\"Büromiete €\"", "\"1500.00\"", "\"8010\""}) {
        EXPECT_NE(stapel.npos, stapel.find(part)) << part;
    }
}

TEST_F(InBooks, SplitBookingOfAnyNumberOfPartsIsWhole)
{
    const Buecher books = Open();
    for (const int count : {2, 10, 11, 30}) {
        Splitbuchung split{.Stapel = 17, .Tag = 1998y / 4 / 16, .Teile = {}, .Beleg = "S"};
        for (int i = 0; i < count; ++i) {
            split.Teile.push_back({.Sollkonto = i % 2 != 0 ? "8010" : "8410",
                                   .Habenkonto = "1840",
                                   .Brutto = Betrag::Von(10 + i),
                                   .Text = "Teil " + std::to_string(count) + "/" + std::to_string(i) + "."});
        }
        ASSERT_EQ("1", Told(books.Buchen(split))) << count;
        const std::string stapel = Stapel(17);
        for (const Teilbuchung &teil : split.Teile) {
            EXPECT_NE(stapel.npos, stapel.find(teil.Text)) << teil.Text;
        }
    }
}

TEST_F(InBooks, RefusalsCarryCodeFieldAndMessageAndLeaveTheBooks)
{
    const Buecher books = Open();
    const std::string before = Stapel(16);
    const auto with = [](auto change) {
        Buchung buchung = Miete();
        change(buchung);
        return buchung;
    };
    const struct {
        Buchung Wrong;
        const char *Told;
        const char *Message;
    } rows[] = {
        {with([](Buchung &b) { b.Stapel = 77; }), "-6 Stapel", "Der Stapel existiert nicht!"},
        {with([](Buchung &b) { b.Sollkonto = "9999"; }), "-8 Sollkonto",
         "Die Sollkontonummer ist unzulässig!"},
        {with([](Buchung &b) { b.Habenkonto = "8010"; }), "-10 Habenkonto",
         "Soll- und Habenkontonummern sind gleich!"},
        {with([](Buchung &b) { b.HabenArt = Kontoart::Debitor; }), "-9 Habenkonto",
         "Die Habenkontonummer ist unzulässig!"},
        {with([](Buchung &b) { b.Tag = 1990y / 1 / 1; }), "-11 Datum", "Das Buchungsdatum ist unzulässig!"},
        {with([](Buchung &b) { b.Zahlungsziel = 77; }), "-27 Zahlungsziel",
         "Das Zahlungsziel ist unzulässig!"},
        {with([](Buchung &b) { b.Kostenschablone = 99; }), "-43 Kostenschablone",
         "Die Kostenschablone ist unzulässig!"},
    };
    for (const auto &row : rows) {
        const Result<void> result = books.Buchen(row.Wrong);
        EXPECT_EQ(row.Told, Told(result));
        ASSERT_FALSE(result);
        EXPECT_EQ(row.Message, result.error().Message);
        EXPECT_EQ(Fault::Library, result.error().Kind);
    }
    EXPECT_EQ(before, Stapel(16));
}

TEST_F(InBooks, ValuesThatTheBooksCannotHoldAreRefusedNotCut)
{
    const Buecher books = Open();
    const std::string before = Stapel(16);
    const auto faultOf = [&](auto change) {
        Buchung buchung = Miete();
        change(buchung);
        const Result<void> result = books.Buchen(buchung);
        return result ? "written" : result.error().Kind == Fault::Value ? result.error().Field : "called";
    };
    EXPECT_EQ("Text", faultOf([](Buchung &b) { b.Text = std::string(36, 'x'); }));
    EXPECT_EQ("Text", faultOf([](Buchung &b) { b.Text = "Ω"; }));
    EXPECT_EQ("Text", faultOf([](Buchung &b) { b.Text = std::string("a\0b", 3); }));
    EXPECT_EQ("Beleg", faultOf([](Buchung &b) { b.Beleg = "123456789"; }));
    EXPECT_EQ("Sollkonto", faultOf([](Buchung &b) { b.Sollkonto = "12345678"; }));
    EXPECT_EQ("Brutto", faultOf([](Buchung &b) { b.Brutto = Betrag::Von(1'000'000'000); }));
    EXPECT_EQ("Brutto", faultOf([](Buchung &b) { b.Brutto = Betrag::InPfennig(INT64_MIN); }));
    EXPECT_EQ("Steuersatz", faultOf([](Buchung &b) { b.Steuersatz = Satz::Von(100); }));
    EXPECT_EQ("Tag", faultOf([](Buchung &b) { b.Tag = 1998y / 2 / 30; }));
    EXPECT_EQ("Tag", faultOf([](Buchung &b) { b.Tag = 2080y / 1 / 1; }));
    Splitbuchung split{.Stapel = 16, .Tag = 1998y / 4 / 16, .Teile = {{"8010", "1840", Betrag::Von(1)}}};
    split.Teile.push_back({.Sollkonto = "8410", .Habenkonto = "1840", .Brutto = {}, .Text = "Ω"});
    EXPECT_EQ("Teile[1].Text", books.Buchen(split).error().Field);
    split.Teile[1].Text = "";
    split.Teile[1].Sollkonto = "9999";
    EXPECT_EQ("-8 Teile[1].Sollkonto", Told(books.Buchen(split)));
    // The library itself answers this one with success, and writes nothing.
    split.Teile[1].Sollkonto = "8410";
    split.Teile[1].Brutto = Betrag::Von(1);
    split.Teile[1].Kostenschablone = 99;
    EXPECT_EQ("-43 Teile[1].Kostenschablone", Told(books.Buchen(split)));
    EXPECT_EQ(before, Stapel(16));
}

TEST_F(InBooks, PersonalAccountIsMadeChangedReadAndDeleted)
{
    const Buecher books = Open();
    Personenkonto kunde{.Art = Kontoart::Debitor,
                        .Konto = "19001",
                        .Kuerzel = "CPPKUNDE",
                        .Name1 = "Schröder & Söhne",
                        .Name2 = "z. Hd. Frau Öz",
                        .UstId = "DE123456789",
                        .Land = "D",
                        .Plz = "20095",
                        .Adresse1 = "Große Reichenstr. 7",
                        .Adresse2 = "Hamburg",
                        .Blz = "20050000",
                        .Bankkonto = "1234567890",
                        .Bank = "Hafenbank Hamburg",
                        .Gegenkonto = "5010",
                        .Wert1 = 7,
                        .Wert2 = 65535,
                        .Skonto = Satz::Von(2, 50),
                        .Mahnkennziffer = -1,
                        .Zahlungsziel = 2};
    const auto read = [&] {
        auto range = books.Debitoren("19001");
        return range && range->begin() != range->end() && *range->begin() ? **range->begin()
                                                                          : Personenkonto{};
    };
    ASSERT_EQ("1", Told(books.KontoAnlegen(kunde)));
    EXPECT_EQ(kunde, read());
    EXPECT_EQ("-31 Konto", Told(books.KontoAnlegen(kunde)));
    kunde.Name1 = "Schröder Nachf.";
    ASSERT_EQ("1", Told(books.KontoAendern(kunde)));
    EXPECT_EQ(kunde, read());
    ASSERT_EQ("1", Told(books.KontoLoeschen(Kontoart::Debitor, "", "CPPKUNDE")));
    EXPECT_FALSE(books.Existiert("19001", Kontoart::Debitor).value_or(true));
}

TEST_F(InBooks, QuestionsAreAnswered)
{
    const Buecher books = Open();
    EXPECT_TRUE(books.Existiert("1840").value_or(false));
    EXPECT_FALSE(books.Existiert("9999").value_or(true));
    EXPECT_EQ("10401", books.FreieKontonummer(Kontoart::Debitor).value_or(""));
    EXPECT_EQ("-7 Art", Told(books.FreieKontonummer(Kontoart::Sachkonto)));
    EXPECT_EQ("-10 Konto", Told(books.Saldo("9999")));
    // The other way: the list of sums, in its columns for Soll and Haben.
    const std::string list =
        OutputOf("'" VARK_PROGRAM
                 "' bericht susa --mandant 1 --per 31.12.98 --art Debitor --von 10010 --bis 10010 --csv");
    const Result<Betrag> saldo = books.Saldo("10010", Kontoart::Debitor);
    ASSERT_TRUE(saldo);
    EXPECT_GT(*saldo, Betrag());
    EXPECT_NE(list.npos, list.find(";" + saldo->Text() + ";")) << list << saldo->Text();
}

TEST_F(InBooks, NobodyToChooseIsNothing)
{
    const Buecher books = Open();
    EXPECT_EQ(std::nullopt, *Buecher::WaehleMandant());
    EXPECT_EQ(std::nullopt, *books.WaehleStapel());
    EXPECT_EQ(std::nullopt, *books.WaehleZahlungsziel());
    EXPECT_EQ(std::nullopt, *books.WaehleKostenschablone());
    EXPECT_EQ(std::nullopt, *books.WaehleKonto(Kontoart::Debitor));
    EXPECT_EQ("-1 von", Told(books.WaehleKonto(Kontoart::Debitor, "88888", "99999")));
}

TEST_F(InBooks, RangesDeliverEveryRecordOnce)
{
    const Buecher books = Open();
    auto sachkonten = books.Sachkonten();
    ASSERT_TRUE(sachkonten);
    std::string last;
    int count = 0;
    for (const auto &konto : *sachkonten) {
        ASSERT_TRUE(konto) << konto.error().Message;
        EXPECT_GT(konto->Konto, last);
        last = konto->Konto;
        ++count;
    }
    const std::string listed = OutputOf("'" VARK_PROGRAM "' konten --mandant 1 --art Sachkonto --csv");
    EXPECT_EQ(std::count(listed.begin(), listed.end(), '\n') - 1, count);
    for (const auto &konto : *sachkonten) {
        ADD_FAILURE() << "a second time: " << konto->Konto;
    }
    EXPECT_EQ(7u, ForeignDebitoren(books).size());
    std::string first;
    for (const auto &konto : *books.Kreditoren()) {
        first = konto->Konto;
        break;
    }
    EXPECT_EQ("70010", first);
    const Result<Betrag> sum = SumOfOpenItems(books, Kontoart::Kreditor);
    ASSERT_TRUE(sum);
    EXPECT_GT(*sum, Betrag());
    auto none = books.Debitoren("9999999");
    ASSERT_TRUE(none);
    EXPECT_TRUE(none->begin() == none->end());
    auto since = books.Buchungen(1998y / 3 / 1);
    ASSERT_TRUE(since);
    for (const auto &satz : *since) {
        ASSERT_TRUE(satz);
        EXPECT_GE(satz->Tag, std::optional(Datum(1998y / 3 / 1)));
    }
    EXPECT_EQ("-11 ab", Told(books.Buchungen(1985y / 1 / 1)));
}

TEST_F(InBooks, RangeThatAnotherOneEndedSaysSo)
{
    const Buecher books = Open();
    auto first = books.Debitoren();
    ASSERT_TRUE(first && *first->begin());
    auto second = books.Sachkonten();
    ASSERT_TRUE(second);
    auto at = first->begin();
    ++at;
    ASSERT_FALSE(*at);
    EXPECT_EQ(Fault::CursorEnded, at->error().Kind);
    EXPECT_TRUE(++at == first->end());
    EXPECT_TRUE(*second->begin());
}

TEST_F(InBooks, RangeOnAnotherThreadIsAnErrorAndGoesOnWhereItBelongs)
{
    const Buecher books = Open();
    auto range = books.Debitoren();
    ASSERT_TRUE(range);
    auto at = range->begin();
    const std::string first = (*at)->Konto;
    std::thread([&] {
        ++at;
        ASSERT_FALSE(*at);
        EXPECT_EQ(Fault::WrongThread, at->error().Kind);
        EXPECT_EQ(Fault::WrongThread, books.Saldo("1840").error().Kind);
        EXPECT_EQ(Fault::WrongThread, books.Buchen(Miete()).error().Kind);
        const auto own = Buecher::Oeffnen(1);
        ASSERT_TRUE(own);
        EXPECT_TRUE(own->Saldo("1840"));
    }).join();
    ++at;
    ASSERT_TRUE(*at);
    const std::string next = (*at)->Konto;
    auto again = books.Debitoren();
    auto second = again->begin();
    EXPECT_EQ(first, (*second)->Konto);
    ++second;
    EXPECT_EQ(next, (*second)->Konto) << "nothing was left out";
}

TEST_F(InBooks, MessagesAreShownWhereTheHostWantsThat)
{
    MakeBooks();
    {
        const auto showing = Buecher::Oeffnen(1, Meldungen::Zeigen);
        ASSERT_TRUE(showing);
        EXPECT_EQ("MERIDA: Die Kontonummer ist unzulässig!\n",
                  ShownBy([&] { EXPECT_EQ("-10 Konto", Told(showing->Saldo("9999"))); }));
    }
    {
        const auto hearing = Buecher::Oeffnen(1);
        ASSERT_TRUE(hearing);
        EXPECT_EQ("", ShownBy([&] { EXPECT_EQ("-10 Konto", Told(hearing->Saldo("9999"))); }));
    }
    const auto again = Buecher::Oeffnen(1, Meldungen::Zeigen);
    EXPECT_NE("", ShownBy([&] { EXPECT_EQ("-10 Konto", Told(again->Saldo("9999"))); }));
}

TEST_F(InBooks, MovedBooksAreClosed)
{
    Buecher books = Open();
    const Buecher taken = std::move(books);
    EXPECT_EQ(Fault::Closed, books.Saldo("1840").error().Kind); // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(taken.Saldo("1840"));
}

TEST_F(InBooks, ReportsAreWindowsOfTheirCaller)
{
    const Buecher books = Open();
    ReportParams params = {};
    params.ParamFlags = VARK_PARAM_JAHR | VARK_PARAM_ZEITRAUM;
    params.Zeitraum = VARK_ZEITRAUM_JAHR;
    params.JahrIndex = 1998 - 1980;
    ASSERT_EQ("1", Told(books.BerichteAls(0, 0, "Bericht")));
    for (int i = 0; i <= static_cast<int>(Bericht::KostenAufteilung); ++i) {
        ReportParams asked = params;
        if (static_cast<Bericht>(i) == Bericht::SummenSaldenListe) {
            asked.ParamFlags = VARK_PARAM_DATEN | VARK_PARAM_ZEITRAUM;
            asked.Zeitraum = VARK_ZEITRAUM_TAGE;
            std::memcpy(asked.VonDatum, "010198", sizeof asked.VonDatum);
            std::memcpy(asked.BisDatum, "311298", sizeof asked.BisDatum);
        }
        const Result<VarkWindow> window = books.Berichte(static_cast<Bericht>(i), asked);
        ASSERT_TRUE(window) << i << ": " << window.error().Message;
        EXPECT_NE(nullptr, *window) << i;
        EXPECT_EQ(1u, asked.ViewResult) << i;
    }
    const auto none = Buecher::Oeffnen(7);
    ASSERT_TRUE(none);
    EXPECT_FALSE(none->Berichte(Bericht::Bilanz, params));
}

TEST_F(InBooks, MandantThatIsNoneIsRefusedByEveryCall)
{
    const Buecher none = Open(7);
    EXPECT_EQ("-5 Mandant", Told(none.Buchen(Miete())));
    EXPECT_EQ("-5 Mandant", Told(none.Saldo("1840")));
    EXPECT_EQ("-5 Mandant", Told(none.Existiert("1840")));
    EXPECT_EQ("-5 Mandant", Told(none.Buchungen()));
    EXPECT_EQ("-5 Mandant", Told(none.Kreditoren()));
    EXPECT_EQ("-5 Mandant", Told(none.OffenePosten(Kontoart::Debitor)));
    EXPECT_EQ("-5 Mandant", Told(none.WaehleStapel()));
}

TEST_F(InBooks, WithoutADataPathNothingOpens)
{
    const auto books = Buecher::Oeffnen(1);
    EXPECT_EQ("-36 ", Told(books));
    EXPECT_NE(std::string::npos, books.error().Message.find("tolka.ini"));
}

TEST_F(InBooks, ForeignBooksAreAFailureOfTheStore)
{
    fs::create_directory(Place / "da");
    FILE *file = fopen((Place / "da" / "books.mdb").c_str(), "w");
    ASSERT_NE(nullptr, file);
    for (int i = 0; i < 5000; ++i) {
        fputs("These are no books.", file);
    }
    fclose(file);
    file = fopen((Place / "vark.ini").c_str(), "w");
    ASSERT_NE(nullptr, file);
    fprintf(file, "[VARK]\nPfad=%s/da\n", Place.c_str());
    fclose(file);
    const auto books = Buecher::Oeffnen(1);
    ASSERT_TRUE(books);
    EXPECT_EQ("", ShownBy([&] {
                  const auto saldo = books->Saldo("1840");
                  EXPECT_EQ("-3 ", Told(saldo));
                  EXPECT_EQ("Not a btrieve file", saldo.error().Message);
              }))
        << "the host hears it";
    EXPECT_EQ(95000u, fs::file_size(Place / "da" / "books.mdb"));
}

// A value that is not there ends the program instead of being made up.
TEST(CppResultDeathTest, ValueOfAFailureIsNeverTaken)
{
    Result<int> failed = Error{};
    EXPECT_DEATH(static_cast<void>(*failed), "");
    Result<int> good = 1;
    EXPECT_DEATH(static_cast<void>(good.error()), "");
}
