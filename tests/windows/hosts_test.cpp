// Hosts of the library: in C by the import library and by names alone, in Pascal by the bare library. Each
// posts, reads and has a person choose, who is a process of their own.
#include "tests/windows/wine.h"

#include <thread>

using namespace tests;
namespace fs = std::filesystem;

namespace {

struct Hosts : OnWindows {
    std::string Books; // as programs of Windows name the directory

    void SetUp() override
    {
        OnWindows::SetUp();
        fs::copy_file(Built("VARK40.dll"), Directory / "VARK40.dll");
        Books = Run(Suite("make_books.exe"), "", "VARK_TEST_DIR='" + ForWindows(Directory) + "'");
        ASSERT_NE("", Books);
        Books.pop_back();
    }

    static std::string Suite(const std::string &name) { return std::string(WINDOWS_SUITES "/") + name; }

    // What the host prints while somebody agrees to the Mandant that it proposes.
    std::string Host(const fs::path &program) const
    {
        std::thread person([this] { Run(Built("stand_ins/chooser.exe"), "Mandantenauswahl"); });
        std::string output =
            Run("'" + program.string() + "'", "", "VARK_CONFIG_DIR='" + Books + "' VARK_HEUTE=15.06.1998");
        person.join();
        return output;
    }
    std::string Postings() const { return Run(Suite("make_books.exe"), "'" + Books + "'"); }

    fs::path Install(const std::string &name) const
    {
        fs::copy_file(Built("stand_ins/" + name), Directory / name);
        return Directory / name;
    }
};

constexpr char told[] = "status 1\n"
                        "posted 1\n"
                        "refused -10\n"
                        "reading 1\n"
                        "read 1 2010 Sachkonto 2010 8\n"
                        "chosen 1\n";

} // namespace

TEST_F(Hosts, LinkedWithTheImportLibraryPostReadAndChoose)
{
    EXPECT_EQ(told, Host(Install("host.exe")));
    EXPECT_EQ("Miete April\n", Postings());
}

TEST_F(Hosts, ThatFindFunctionsByTheirNamesPostReadAndChoose)
{
    EXPECT_EQ(told, Host(Install("host_by_name.exe")));
    EXPECT_EQ("Miete April\n", Postings());
}

namespace {

// A window of the class that only account sheets have: its style is 128, it has room for a pointer and the
// colour of buttons behind it; module, icon and cursor are those that it should have. When the library goes,
// neither the class nor the report engine stays.
constexpr char toldOfSheets[] = "status 1\n"
                                "engine 1\n"
                                "sheet tervoKontenblatt\n"
                                "class 1\n"
                                "style 128 extra 4 brush 15 menu 0\n"
                                "own 1 1 1\n"
                                "left 0 0\n";

} // namespace

TEST_F(Hosts, HaveSheetsMadeByEntriesOfEitherConvention)
{
    const fs::path host = Install("sheets.exe");
    for (const char *engine : {"rs_sheets_cdecl.dll", "rs_sheets_stdcall.dll"}) {
        fs::copy_file(Built("stand_ins") / engine, Directory / "rs.dll",
                      fs::copy_options::overwrite_existing);
        EXPECT_EQ(toldOfSheets,
                  Run("'" + host.string() + "'", "", "VARK_CONFIG_DIR='" + Books + "' VARK_HEUTE=15.06.1998"))
            << engine;
    }
}

TEST_F(Hosts, WithAReportEngineThatLacksEntriesHaveNoSheetsAndLetItGo)
{
    fs::copy_file(Built("stand_ins/rs_cdecl.dll"), Directory / "rs.dll");
    EXPECT_EQ("status 1\nengine 0\n",
              Run("'" + Install("sheets.exe").string() + "'", "state", "VARK_CONFIG_DIR='" + Books + "'"));
}

TEST_F(Hosts, OfTheExamplesPost)
{
    fs::copy_file(Built("buchen.exe"), Directory / "buchen.exe");
    EXPECT_EQ("gebucht (1)\n", Run("'" + (Directory / "buchen.exe").string() + "'", "",
                                   "VARK_CONFIG_DIR='" + Books + "' VARK_HEUTE=15.06.1998"));
    EXPECT_EQ("Miete April\n", Postings());
}

TEST_F(Hosts, InPascalPostReadAndChooseWithTheBareLibrary)
{
    const std::string compile = "'" PASCAL_COMPILER "' '" PASCAL_DIRECTORY "' >'" + Directory.string() +
                                "/compiler.log' 2>&1 && cd '" + Directory.string() +
                                "' && '" PASCAL_DIRECTORY "/ppcross386' -n -v0 -Twin32 -Fu'" PASCAL_DIRECTORY
                                "/units' -Fu'" PASCAL_UNIT "' -FE. -FU. '" PASCAL_HOST
                                "' >>compiler.log 2>&1";
    ASSERT_EQ(0, system(compile.c_str())) << TextOf(Directory / "compiler.log");
    EXPECT_EQ("status 1\n"
              "sizes 138 1060 306 106 28\n"
              "posted\n"
              "read 2010 Sachkonto 2010\n"
              "read 8010 Sachkonto 8010\n"
              "chosen 1\n",
              Host(Directory / "host.exe"));
    EXPECT_EQ("Büromiete\n", Postings());
}
