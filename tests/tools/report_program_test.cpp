// `vark bericht susa` through the built program, on sample books.
#include "tests/tools/program.h"

#include <gtest/gtest.h>

using namespace tests;
namespace fs = std::filesystem;

namespace {

struct ReportProgram : testing::Test {
    TemporaryDirectory Directory;
    fs::path Books = Directory.Path / "buch";

    void SetUp() override { ASSERT_EQ(0, tests::Books({"beispiel", Books.string()}).ExitCode); }

    Result Susa(std::vector<std::string> more)
    {
        std::vector<std::string> arguments = {"bericht", "susa", "--mandant", "1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Vark(Books, std::move(arguments));
    }
    // The same with a person who does what the script says.
    Result SusaPlayed(const std::string &script, std::vector<std::string> more)
    {
        WriteFile(Directory.Path / "script", script);
        return SusaOn("script:" + (Directory.Path / "script").string(), std::move(more));
    }
    Result SusaOn(const std::string &frontEnd, std::vector<std::string> more)
    {
        std::vector<std::string> arguments = {"--config", Books.string(), "bericht",
                                              "susa",     "--mandant",    "1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return tests::Run({VARK_PROGRAM, std::move(arguments), "", {{"VARK_UI", frontEnd}}});
    }
    std::string File(const char *name) const { return (Directory.Path / name).string(); }
};

bool Contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(ReportProgram, TextGoesToStandardOutput)
{
    const Result result = Susa({"--per", "31.3.98", "--von", "1810", "--bis", "1820"});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_TRUE(Contains(result.Out, "Summen- und Saldenliste"));
    EXPECT_TRUE(Contains(result.Out, "per 31.03.1998 (Monat: März)"));
    EXPECT_TRUE(Contains(result.Out, "Kasse Hauptgeschäft"));
    EXPECT_TRUE(Contains(result.Out, "Kasse Filiale Altona"));
    EXPECT_FALSE(Contains(result.Out, "Postbank"));
}

TEST_F(ReportProgram, KindOfAccountIsChosenByItsName)
{
    EXPECT_TRUE(Contains(Susa({"--per", "31.3.98", "--art", "Debitoren"}).Out, "Adler-Apotheke"));
    const Result refused = Susa({"--per", "31.3.98", "--art", "Konten"});
    EXPECT_EQ(2, refused.ExitCode);
    EXPECT_EQ("vark: --art: „Konten“ statt Sachkonto, Kreditor oder Debitor.\n"
              "Mehr dazu: vark bericht susa --hilfe\n",
              refused.Err);
}

TEST_F(ReportProgram, FilesAreMadeByKind)
{
    EXPECT_EQ(0, Susa({"--per", "31.3.98", "--pdf", File("a.pdf")}).ExitCode);
    EXPECT_EQ("%PDF", ReadFile(File("a.pdf")).substr(0, 4));
    EXPECT_EQ(0, Susa({"--per", "31.3.98", "--csv", File("a.csv")}).ExitCode);
    EXPECT_TRUE(Contains(ReadFile(File("a.csv")), "Konto;Bezeichnung"));
    EXPECT_EQ(0, Susa({"--per", "31.3.98", "--json", File("a.json")}).ExitCode);
    EXPECT_EQ('{', ReadFile(File("a.json")).front());
    EXPECT_EQ(0, Susa({"--per", "31.3.98", "--html", File("a.html")}).ExitCode);
    EXPECT_TRUE(Contains(ReadFile(File("a.html")), "<html"));
}

TEST_F(ReportProgram, FileWhoseNameSaysAnotherKindIsRefused)
{
    const Result result = Susa({"--per", "31.3.98", "--pdf", File("a.csv")});
    EXPECT_EQ(2, result.ExitCode);
    EXPECT_TRUE(Contains(result.Err, "vark: --pdf braucht eine Datei auf .pdf\n")) << result.Err;
    EXPECT_FALSE(fs::exists(File("a.csv")));
}

TEST_F(ReportProgram, DateThatIsNoneOrNotBookableIsRefused)
{
    EXPECT_EQ(2, Susa({"--per", "gestern"}).ExitCode);
    EXPECT_EQ(2, Susa({"--per", "31.3"}).ExitCode);
    EXPECT_TRUE(
        Contains(Susa({"--per", "30.2.98"}).Err, "--per: „30.2.98“ nennt einen Tag, den es nicht gibt."));
    const Result later = Susa({"--per", "31.3.99"});
    EXPECT_EQ(1, later.ExitCode);
    EXPECT_EQ("vark: --per: Das Datum muß innerhalb der bebuchbaren Geschäftsjahre liegen (1997 und 1998).\n",
              later.Err);
    EXPECT_EQ("", later.Out);
}

TEST_F(ReportProgram, UnknownMandantIsRefused)
{
    const Result result = Vark(Books, {"bericht", "susa", "--mandant", "9", "--per", "31.3.98"});
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_EQ("vark: --mandant: Der Mandant existiert nicht!\n", result.Err);
}

TEST_F(ReportProgram, FileThatCannotBeWrittenIsTold)
{
    const Result result = Susa({"--per", "31.3.98", "--csv", File("missing/a.csv")});
    EXPECT_EQ(3, result.ExitCode);
    EXPECT_EQ("vark: " + File("missing/a.csv") +
                  " läßt sich nicht schreiben: Das Verzeichnis oder die Datei gibt es nicht.\n",
              result.Err);
}

TEST_F(ReportProgram, DialogIsFilledInAdvanceAndDecides)
{
    const Result result =
        SusaPlayed("dialog 111\nexpect text 22991 31.03.1998\nexpect checked 20052\nexpect text 20054 10010\n"
                   "check 20050\ntext 20054 1810\ntext 20055 1820\ntext 22991 28.2.98\npress 1\n",
                   {"--dialog", "--per", "31.3.98", "--art", "Debitoren", "--von", "10010"});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_EQ("", result.Err);
    EXPECT_TRUE(Contains(result.Out, "per 28.02.1998"));
    EXPECT_TRUE(Contains(result.Out, "Kasse Hauptgeschäft"));
    EXPECT_FALSE(Contains(result.Out, "Postbank"));
}

TEST_F(ReportProgram, DialogChoosesThePrinterThatWasAskedFor)
{
    const Result result = SusaPlayed("dialog 111\nexpect checked 20101\ncheck 20100\npress 1\n",
                                     {"--dialog", "--drucken", "--per", "31.3.98"});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_TRUE(Contains(result.Out, "per 31.03.1998")) << "the person took the screen instead";
}

TEST_F(ReportProgram, CancelledDialogMakesNothing)
{
    const Result result = SusaPlayed("dialog 111\npress 2\n", {"--dialog", "--csv", File("a.csv")});
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_EQ("vark: Summen- und Saldenliste wurde nicht erstellt.\n", result.Err);
    EXPECT_FALSE(fs::exists(File("a.csv")));
}

TEST_F(ReportProgram, DialogAndDisplayNeedAScreen)
{
    for (const char *const option : {"--dialog", "--anzeigen"}) {
        const Result result = SusaOn("headless", {option, "--per", "31.3.98"});
        EXPECT_EQ(3, result.ExitCode) << option;
        EXPECT_EQ("vark: Für Dialog und Anzeige fehlt ein Bildschirm.\n", result.Err);
        EXPECT_EQ("", result.Out);
    }
}

TEST_F(ReportProgram, WindowStaysUntilItIsClosed)
{
    // The report's dialog is answered before a person sees it.
    const Result result =
        SusaPlayed("expect title \"Summen- und Saldenliste\"\nexpect text 103 \"von 3\"\nclose\n",
                   {"--anzeigen", "--per", "31.3.98"});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_EQ("", result.Out + result.Err);
}

TEST_F(ReportProgram, WindowIsNotOpenedForADateThatCannotBePostedTo)
{
    const Result result = SusaPlayed("", {"--anzeigen", "--per", "31.3.99"});
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_TRUE(Contains(result.Err, "innerhalb der bebuchbaren Geschäftsjahre")) << result.Err;
}

TEST_F(ReportProgram, WindowMayFollowTheDialogAndAFile)
{
    const Result result =
        SusaPlayed("dialog 111\ntext 22991 28.2.98\npress 1\nexpect text 103 \"von 3\"\nclose\n",
                   {"--anzeigen", "--dialog", "--csv", File("a.csv")});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_TRUE(Contains(ReadFile(File("a.csv")), "Kasse Hauptgeschäft"));
}

TEST_F(ReportProgram, ReportIsPrintedIntoAFile)
{
    WriteFile(Books / "vark.ini",
              ReadFile(Books / "vark.ini") + "[RS]\nDrucker=datei:" + File("{bericht}.pdf") + "\n");
    const Result result = Susa({"--drucken", "--per", "31.3.98"});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_EQ("", result.Out);
    EXPECT_EQ("%PDF", ReadFile(File("Summen- und Saldenliste.pdf")).substr(0, 4));
}

TEST_F(ReportProgram, DialogThatChoosesThePrinterPrints)
{
    WriteFile(Books / "vark.ini",
              ReadFile(Books / "vark.ini") + "[RS]\nDrucker=datei:" + File("a.pdf") + "\n");
    const Result result = SusaPlayed("dialog 111\ncheck 20101\npress 1\n", {"--dialog", "--per", "31.3.98"});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_EQ("", result.Out);
    EXPECT_EQ("%PDF", ReadFile(File("a.pdf")).substr(0, 4));
}

TEST_F(ReportProgram, PrinterThatDoesNotTakeItIsTold)
{
    WriteFile(Books / "vark.ini",
              ReadFile(Books / "vark.ini") + "[RS]\nDrucker=datei:" + File("missing/a.pdf") + "\n");
    const Result result = Susa({"--drucken", "--per", "31.3.98"});
    EXPECT_EQ(3, result.ExitCode);
    EXPECT_TRUE(Contains(result.Err, "vark: Der Bericht wurde nicht gedruckt.")) << result.Err;
}

TEST_F(ReportProgram, DisplayAndPrinterExcludeEachOther)
{
    EXPECT_EQ(2, Susa({"--anzeigen", "--drucken"}).ExitCode);
}

TEST_F(ReportProgram, NothingIsToldOfProgressWithoutATerminal)
{
    EXPECT_EQ("", Susa({"--per", "31.3.98"}).Err);
}
