// The command lines of Windows beside those of this system: over the same input they print the same, end with
// the same codes and write the same records, to the byte.
#include "tests/windows/wine.h"

#include <thread>

using namespace tests;
namespace fs = std::filesystem;

namespace {

constexpr const char *bookings = "Datum;Beleg;Text;Sollkonto;Habenkonto;Betrag;Steuersatz;Zahlungsziel\n"
                                 "02.01.1998;AR98001;Bürotische für die Großküche;10010;5010;4.600,00;;\n"
                                 "16.02.1998;AR98002;Leuchten, noch mit 15 %;10070;5030;1.150,00;15,00;\n"
                                 "15.04.1998;ER4401;Schreibwaren;6020;70110;2.320,00;;3\n"
                                 "22.04.1998;KA0118;\"Blumen; für den Empfang\";8590;1810;53,50;7;\n"
                                 "31.04.1998;AR98005;Den 31. April gibt es nicht;10010;5010;116,00;;\n"
                                 "04.05.1998;AR98007;Kunde unbekannt;19999;5010;116,00;;\n"
                                 "04.05.1998;AR98009;Betrag verschrieben;10010;5010;1l6,00;;\n"
                                 "04.05.1998;ER4403;Zahlungsziel fehlt;6020;70110;116,00;;77\n";

std::string Replaced(std::string text, const std::string &what, const std::string &by)
{
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
    return text;
}

// Paths below "@" in the form of this system.
std::string WithSlashes(const std::string &text)
{
    std::string out;
    bool isPath = false;
    for (const char character : text) {
        if (character == '@') isPath = true;
        if (std::string_view(" \n:;,\"").find(character) != std::string_view::npos) isPath = false;
        const bool separates = isPath && character == '\\';
        if (separates && out.back() == '/') continue; // JSON doubles them
        out += separates ? '/' : character;
    }
    return out;
}

// One directory for each system, with umlauts and a blank in its name. "@" in arguments stands for it.
struct Tools : OnWindows {
    fs::path Here;
    fs::path There;

    void SetUp() override
    {
        OnWindows::SetUp();
        Here = Directory / "hier" / "Bücher Größe";
        There = Directory / "dort" / "Bücher Größe";
        fs::create_directories(Here);
        fs::create_directories(There);
    }

    Ended RunHere(const std::string &tool, const std::string &arguments, const std::string &input) const
    {
        Ended ended = RunToEnd(tool == "books" ? BOOKS_PROGRAM : VARK_PROGRAM,
                               Replaced(arguments, "@", Here.string()), "VARK_HEUTE=15.06.1998", input, "");
        for (std::string *text : {&ended.Output, &ended.Errors}) {
            *text = Replaced(*text, Here.string(), "@");
        }
        return ended;
    }
    // Paths are shown in each system's form.
    Ended RunThere(const std::string &tool, const std::string &arguments, const std::string &input) const
    {
        Ended ended = RunToEnd(Built(tool + ".exe"), Replaced(arguments, "@", ForWindows(There)),
                               "VARK_HEUTE=15.06.1998", input);
        for (std::string *text : {&ended.Output, &ended.Errors}) {
            *text = Replaced(*text, Replaced(ForWindows(There), "\\", "\\\\"), "@"); // as JSON has it
            *text = WithSlashes(Replaced(*text, ForWindows(There), "@"));
        }
        return ended;
    }

    // Runs the tool on both; what it said here.
    Ended Both(const std::string &tool, const std::string &arguments,
               const std::string &input = "/dev/null") const
    {
        Ended here = RunHere(tool, arguments, input);
        const Ended there = RunThere(tool, arguments, input);
        EXPECT_EQ(here.Code, there.Code) << tool << ' ' << arguments;
        EXPECT_EQ(here.Output, there.Output) << tool << ' ' << arguments;
        EXPECT_EQ(here.Errors, there.Errors) << tool << ' ' << arguments;
        return here;
    }

    void MakeSample() const { ASSERT_EQ(0, Both("books", "beispiel '@/buecher' --buchungen 600").Code); }

    // The files of the directory on both, compared to the byte.
    void ExpectSameFiles(const std::string &name) const
    {
        size_t count = 0;
        for (const fs::directory_entry &entry : fs::recursive_directory_iterator(Here / name)) {
            if (!entry.is_regular_file()) continue;
            ++count;
            const fs::path other = There / entry.path().lexically_relative(Here);
            EXPECT_EQ(TextOf(entry.path()), TextOf(other)) << other;
        }
        EXPECT_LT(0u, count);
    }
};

} // namespace

TEST_F(Tools, MakeTheSameBooksFromTheSameSeedAndFindThemInOrder)
{
    MakeSample();
    EXPECT_EQ(0, Both("books", "sichern '@/buecher' '@/gesichert'").Code);
    ExpectSameFiles("gesichert");
    const Ended checked = Both("books", "pruefen '@/buecher'");
    EXPECT_EQ(0, checked.Code);
    EXPECT_NE(std::string::npos, checked.Output.find("alles stimmt überein")) << checked.Output;
    EXPECT_TRUE(fs::exists(There / "buecher" / "reports"));
    EXPECT_FALSE(fs::exists(There / "buecher" / "DB" / "books.mdb-neu"));
}

TEST_F(Tools, LoadWhatTheOtherSystemHasSaved)
{
    MakeSample();
    ASSERT_EQ(0, RunHere("books", "sichern '@/buecher' '@/gesichert'", "/dev/null").Code);
    fs::copy(Here / "gesichert", There / "gesichert", fs::copy_options::recursive);
    const Ended loaded = Both("books", "laden '@/gesichert' '@/geladen'");
    EXPECT_EQ(0, loaded.Code) << loaded.Errors;
    fs::remove_all(There / "gesichert");
    ASSERT_EQ(0, RunThere("books", "sichern '@/geladen' '@/gesichert'", "/dev/null").Code);
    ExpectSameFiles("gesichert");
    // In place of books that are there, which stay when they are in the way of nothing.
    EXPECT_EQ(3, Both("books", "laden '@/gesichert' '@/geladen'").Code);
    EXPECT_EQ(0, Both("books", "laden '@/gesichert' '@/geladen' --ersetzen").Code);
    EXPECT_EQ(0, Both("books", "laden '@/gesichert/1998/sako.seq' '@/geladen' --tabelle sako --mandant 1 "
                               "--jahr 1998 --ersetzen")
                     .Code);
    EXPECT_EQ(0, Both("books", "pruefen '@/geladen'").Code);
    for (const fs::directory_entry &entry : fs::directory_iterator(There)) {
        EXPECT_NE('.', entry.path().filename().string().front()) << entry.path();
    }
}

TEST_F(Tools, ShowTablesAndTheirLayout)
{
    MakeSample();
    for (const char *arguments :
         {"zeigen sako '@/buecher' --gleich 1840",
          "zeigen bube '@/buecher' --jahr 1997 --csv --hoechstens 50",
          "zeigen debi '@/buecher' --schluessel 1 --von M --bis P --felder Konto,Kuerzel,Name1",
          "zeigen kurse '@/buecher' --json --hoechstens 3", "zeigen sako '@/nichts'",
          "zeigen keine '@/buecher'", "aufbau", "aufbau sako --json", "--hilfe", "zeigen --hilfe", "zeig",
          "--version"}) {
        Both("books", arguments);
    }
}

TEST_F(Tools, CopyBooks)
{
    MakeSample();
    ASSERT_EQ(0, RunThere("books", "kopie '@/buecher' '@/geladen'", "/dev/null").Code);
    const Ended checked = RunThere("books", "pruefen '@/geladen'", "/dev/null");
    EXPECT_EQ(0, checked.Code) << checked.Output;
    ASSERT_EQ(0, RunThere("books", "sichern '@/geladen' '@/gesichert'", "/dev/null").Code);
    ASSERT_EQ(0, RunHere("books", "sichern '@/buecher' '@/gesichert'", "/dev/null").Code);
    ExpectSameFiles("gesichert");
    // Postings of one account come in the order in which they were entered.
    const std::string inOrder = " --tabelle bube --mandant 1 --jahr 1997 --schluessel 1";
    ASSERT_EQ(0, RunThere("books", "sichern '@/geladen' '@/bube.seq'" + inOrder, "/dev/null").Code);
    ASSERT_EQ(0, RunHere("books", "sichern '@/buecher' '@/bube.seq'" + inOrder, "/dev/null").Code);
    EXPECT_EQ(TextOf(Here / "bube.seq"), TextOf(There / "bube.seq"));
}

TEST_F(Tools, CopyTablesThatLieOtherwise)
{
    MakeSample();
    Run("'" WINDOWS_SUITES "/make_books.exe'", "loosen '" + ForWindows(There / "buecher/DB/1998") + "'");
    const std::string show = "zeigen zahlziel --jahr 1998 --felder Nummer --csv ";
    const Ended before = RunThere("books", show + "'@/buecher'", "/dev/null");
    EXPECT_NE(std::string::npos, before.Output.find("\n1\n2\n3\n")) << before.Output << before.Errors;
    ASSERT_EQ(0, RunThere("books", "kopie '@/buecher' '@/geladen'", "/dev/null").Code);
    EXPECT_EQ(before.Output, RunThere("books", show + "'@/geladen'", "/dev/null").Output);
}

TEST_F(Tools, TellWhereBooksAreDamaged)
{
    MakeSample();
    // A zero in the middle of the pages: what is read of it may end the process that reads.
    const fs::path books = There / "buecher" / "DB" / "1998" / "books.mdb";
    const uintmax_t size = fs::file_size(books);
    {
        std::fstream file(books, std::ios::in | std::ios::out | std::ios::binary);
        const std::string zeros(65536, '\0');
        for (uintmax_t at = 16384; at + zeros.size() < size; at += zeros.size()) {
            file.seekp(static_cast<std::streamoff>(at));
            file.write(zeros.data(), static_cast<std::streamsize>(zeros.size()));
        }
    }
    const Ended checked = RunThere("books", "pruefen '@/buecher'", "/dev/null");
    EXPECT_EQ(1, checked.Code) << checked.Errors;
    EXPECT_NE(std::string::npos, checked.Output.find("1998")) << checked.Output;
    EXPECT_NE(std::string::npos, checked.Output.find("Abweichung")) << checked.Output;
}

TEST_F(Tools, SayWhatIsNotThere)
{
    MakeSample();
    const auto refused = [&](const char *tool, const char *arguments) {
        const Ended ended = RunThere(tool, arguments, "/dev/null");
        EXPECT_EQ(2, ended.Code) << arguments;
        EXPECT_EQ("", ended.Output) << arguments;
        return ended.Errors;
    };
    EXPECT_EQ("books: books sql gibt es unter Windows nicht.\n",
              refused("books", "sql '@/buecher' 'SELECT 1'"));
    EXPECT_EQ("books: Bücher auf einem Server gibt es unter Windows nicht.\n",
              refused("books", "server anlegen '@/neu' --verbindung host=x --schema y"));
    EXPECT_EQ("books: Bücher auf einem Server gibt es unter Windows nicht.\n",
              refused("books", "kopie '@/buecher' '@/neu' --server host=x --schema y"));
    EXPECT_FALSE(fs::exists(There / "neu"));
    EXPECT_NE(std::string::npos,
              refused("vark", "--config '@/buecher' bericht susa --mandant 1 --per 31.3.98")
                  .find("vark: Berichte macht vark unter Windows nicht.\n"));
    EXPECT_NE(std::string::npos,
              refused("vark", "--config '@/buecher' kurse --mandant 1 --neu --waehrung USD --datum 1.4.98 "
                              "--kurs 1,8")
                  .find("vark: Kurse erfaßt und löscht vark unter Windows nicht; auflisten geht.\n"));
}

TEST_F(Tools, BookAndTellWhyNot)
{
    MakeSample();
    PutText(Directory / "buchungen.csv", bookings);
    const std::string vark = "--config '@/buecher' ";
    const Ended booked =
        Both("vark", vark + "buchen --mandant 1 --stapel 16 --datei - --abgelehnt '@/abgelehnt.csv'",
             (Directory / "buchungen.csv").string());
    EXPECT_EQ(1, booked.Code);
    EXPECT_EQ(TextOf(Here / "abgelehnt.csv"), TextOf(There / "abgelehnt.csv"));
    EXPECT_NE("", TextOf(There / "abgelehnt.csv"));
    EXPECT_EQ(0, Both("vark", vark + "buchen --mandant 1 --stapel 16 --datum 15.3.98 --beleg RE4711 "
                                     "--soll 10010 --haben 5010 --betrag 1.150,00 --text 'Tische für Öl'")
                     .Code);
    EXPECT_EQ(1, Both("vark", vark + "buchen --mandant 1 --stapel 99 --datum 15.3.98 --soll 10010 "
                                     "--haben 5010 --betrag 1,00")
                     .Code);
    EXPECT_EQ(0, Both("vark", vark + "split --mandant 1 --stapel 16 --datum 15.03.1998 --beleg RE4712 "
                                     "--haben 1840 --teil '8010;;100,00' --teil '8410;;50,00'")
                     .Code);
    EXPECT_EQ(0,
              Both("vark", vark + "peko neu --mandant 1 --art Debitor --kuerzel ADLER --name 'Adler & Söhne' "
                                  "--plz 20095 --ort Lübeck")
                  .Code);
    Both("vark", vark + "peko loeschen --mandant 1 --art Kreditor --kuerzel GIBTSNET");
    for (const char *query :
         {"stapel --mandant 1 16 --kosten", "stapel --mandant 1 16 --json", "konten --mandant 1 --csv",
          "konten --mandant 1 ADLER --json", "konto-frei --mandant 1 --art Kreditor",
          "saldo --mandant 1 2010 10010", "journal --mandant 1 --ab 1.1.97 --csv", "op --mandant 1",
          "kurse --mandant 1 --csv", "status", "mandanten --json", "konten --mandant 9"}) {
        Both("vark", vark + query);
    }
    // What the library wrote, to the byte.
    for (const char *table : {"bat", "kobu", "sako", "debi", "split", "stapel"}) {
        const std::string save =
            std::string("sichern '@/buecher' '@/gesichert' --ersetzen --mandant 1 --jahr 1998 "
                        "--tabelle ") +
            table;
        EXPECT_EQ(0, Both("books", save).Code);
        EXPECT_EQ(TextOf(Here / "gesichert"), TextOf(There / "gesichert")) << table;
        EXPECT_NE("", TextOf(There / "gesichert")) << table;
    }
}

TEST_F(Tools, HaveAPersonChoose)
{
    MakeSample();
    const auto choose = [&](const std::string &person, const std::string &arguments) {
        std::thread chooser([&] { Run(Built("stand_ins/chooser.exe"), person); });
        Ended ended = RunThere("vark", "--config '@/buecher' waehlen " + arguments, "/dev/null");
        chooser.join();
        return ended;
    };
    const auto chosen = [&](const std::string &person, const std::string &arguments) {
        const Ended ended = choose(person, arguments);
        EXPECT_EQ("", ended.Errors);
        EXPECT_EQ(0, ended.Code);
        return ended.Output;
    };
    EXPECT_EQ("3\n", chosen("Mandantenauswahl", "mandant")) << "Atelier Lindblick, the first by name";
    EXPECT_EQ("10010\n", chosen("Debitorenkontenauswahl", "konto --art 4"));
    EXPECT_EQ("16\n", chosen("Stapelauswahl", "stapel"));
    EXPECT_EQ("1\n", chosen("Zahlzielauswahl", "zahlungsziel --mandant 1"));
    EXPECT_EQ("1\n", chosen("Kostenschablonenauswahl", "kostenschablone"));
    const Ended cancelled = choose("Mandantenauswahl cancel", "mandant");
    EXPECT_EQ(1, cancelled.Code);
    EXPECT_EQ("", cancelled.Output);
    EXPECT_EQ("vark: abgebrochen\n", cancelled.Errors);
}

TEST_F(Tools, WithoutIniFilesTheLibraryIsNotReady)
{
    const Ended status = RunThere("vark", "--config '@' status --json", "/dev/null");
    EXPECT_NE(std::string::npos, status.Output.find("\"status\": -36")) << status.Output << status.Errors;
}
