// What `cmake --install` puts down works where it is moved to, without the tree that it was built in.
#include "tests/tools/program.h"

#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

using namespace tests;
namespace fs = std::filesystem;

namespace {

bool Contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

// An installation below a directory that it was not configured for.
struct Install : testing::Test {
    TemporaryDirectory Directory;
    fs::path Prefix = Directory.Path / "moved";
    fs::path Books = Directory.Path / "buecher";

    void SetUp() override
    {
        const fs::path installed = Directory.Path / "installed";
        const Result result =
            tests::Run({CMAKE_PROGRAM, {"--install", VARK_BUILD, "--prefix", installed.string()}});
        ASSERT_EQ(0, result.ExitCode) << result.Err;
        fs::rename(installed, Prefix);
    }
    // A command line for the shell, in the directory of this test.
    Result Shell(const std::string &line) const
    {
        const std::string command = "cd '" + Directory.Path.string() + "' && " + line;
        return tests::Run({"/bin/bash",
                           {"-c", command},
                           "",
                           {{"P", Prefix.string()},
                            {"PKG_CONFIG_PATH", (Prefix / "lib/pkgconfig").string()},
                            {"VARK_CONFIG_DIR", Books.string()},
                            {"VARK_UI", "headless"}}});
    }
    void MakeBooks() const
    {
        const Result made = Shell("$P/bin/books beispiel " + Books.string());
        ASSERT_EQ(0, made.ExitCode) << made.Err;
        ASSERT_EQ("", made.Err); // the templates have been found
    }
    std::string Manual(const std::string &page) const { return ReadFile(Prefix / "share/man" / page); }
};

} // namespace

TEST_F(Install, EachThingHasItsPlace)
{
    for (const char *file : {"bin/vark",
                             "bin/books",
                             "lib/libvark40.so",
                             "lib/libvark40.so.4",
                             "lib/vark40/libwbtrv32.so",
                             "lib/vark40/librs.so",
                             "lib/vark40/libvarkui.so",
                             "lib/vark40/vark_sql.so",
                             "libexec/vark40/rs-pages",
                             "libexec/vark40/rs-print",
                             "libexec/vark40/vark-kurse",
                             "include/vark40.h",
                             "include/vark40/rs.h",
                             "include/vark40/varkui.h",
                             "include/vark40/calls.def",
                             "lib/pkgconfig/vark40.pc",
                             "lib/pkgconfig/vark40-windows.pc",
                             "lib/cmake/vark40/vark40-config.cmake",
                             "share/vark40/templates/or_slist.rs",
                             "share/vark40/templates/or_page.lua",
                             "share/man/man1/vark-bericht-susa.1",
                             "share/man/man3/vark40.3",
                             "share/man/man5/templates.5",
                             "share/bash-completion/completions/vark",
                             "share/zsh/site-functions/_books",
                             "share/fish/vendor_completions.d/vark.fish",
                             "share/doc/vark40/LICENSE",
                             "share/doc/vark40/LINKED.md",
                             "share/doc/vark40/CHANGELOG.md"}) {
        EXPECT_TRUE(fs::exists(Prefix / file)) << file;
    }
    EXPECT_EQ("libvark40.so.4", fs::read_symlink(Prefix / "lib/libvark40.so"));
    // Hosts ask for the library by its version; nothing that is installed names the tree that it came from.
    EXPECT_TRUE(Contains(Shell("readelf -d $P/lib/libvark40.so").Out, "Library soname: [libvark40.so.4]"));
    EXPECT_EQ("",
              Shell("grep -rlF '" VARK_SOURCES "' $P --include=*.pc --include=*.cmake --include=*.h").Out);
    for (const char *program : {"bin/vark", "bin/books", "libexec/vark40/vark-kurse"}) {
        const std::string dynamic = Shell("readelf -d $P/" + std::string(program)).Out;
        EXPECT_FALSE(Contains(dynamic, VARK_BUILD)) << dynamic;
    }
}

TEST_F(Install, BooksAreMadeAndBookingsWrittenFromAnyPlace)
{
    MakeBooks();
    const Result booked = Shell("$P/bin/vark buchen --mandant 1 --stapel 16 --datum 15.03.1998 --beleg RE1 "
                                "--soll 10010 --haben 5010 --betrag 1.160,00 --text Schreibtische");
    EXPECT_EQ(0, booked.ExitCode) << booked.Err;
    EXPECT_TRUE(Contains(Shell("$P/bin/vark stapel --mandant 1 16 --csv").Out, "RE1;10010;5010;1160,00"));
    const Result rate =
        Shell("$P/bin/vark kurse --mandant 1 --neu --waehrung USD --datum 15.03.1998 --kurs 1,82");
    EXPECT_EQ(0, rate.ExitCode) << rate.Err;
    EXPECT_EQ(0, Shell("$P/bin/books pruefen " + Books.string()).ExitCode);
    EXPECT_EQ("1840\n", Shell("$P/bin/books sql " + Books.string() +
                              " \"SELECT trim(Konto) FROM sako_1998 WHERE Konto = '1840'\" --csv | tail -n 1")
                            .Out);
}

TEST_F(Install, TheBooksAreAskedInSql)
{
    MakeBooks();
    const std::string question = "\"SELECT count(*) AS Mandanten FROM fista\"";
    EXPECT_EQ("Mandanten\n3\n", Shell("$P/bin/books sql " + Books.string() + " " + question + " --csv").Out);
    EXPECT_EQ(Books.string() + "/DB\n",
              Shell("sqlite3 :memory: '.load " + (Prefix / "lib/vark40/vark_sql").string() +
                    "' \"SELECT buecher_oeffnen('" + Books.string() + "')\"")
                  .Out);
}

TEST_F(Install, AReportBecomesPages)
{
    MakeBooks();
    const Result report = Shell("$P/bin/vark bericht susa --mandant 1 --per 31.3.98 --pdf susa.pdf");
    EXPECT_EQ(0, report.ExitCode) << report.Err;
    EXPECT_TRUE(Contains(Shell("pdftotext -layout susa.pdf -").Out, "Summen- und Saldenliste"));
}

TEST_F(Install, AHostIsBuiltWithPkgConfig)
{
    MakeBooks();
    const Result built = Shell("cc -Wall -Wextra -Werror $P/share/doc/vark40/examples/buchen.c "
                               "$(pkg-config --cflags --libs vark40) -o buchen");
    ASSERT_EQ(0, built.ExitCode) << built.Err;
    EXPECT_EQ("gebucht (1)\n", Shell("LD_LIBRARY_PATH=$P/lib ./buchen").Out);
    const Result windows = Shell("cc -Wall -Wextra -Werror $P/share/doc/vark40/examples/berichte.c "
                                 "$(pkg-config --cflags --libs vark40-windows) -o berichte");
    EXPECT_EQ(0, windows.ExitCode) << windows.Err;
    const Result list = Shell("cc -Wall -Wextra -Werror $P/share/doc/vark40/examples/saldenliste.c "
                              "$(pkg-config --cflags --libs vark40-windows) -o saldenliste && "
                              "LD_LIBRARY_PATH=$P/lib ./saldenliste liste.pdf");
    EXPECT_EQ("geschrieben\n", list.Out) << list.Err;
    EXPECT_TRUE(Contains(Shell("pdftotext -layout liste.pdf -").Out, "Summen- und Saldenliste"));
    EXPECT_EQ("4.0\n", Shell("pkg-config --modversion vark40").Out);
}

TEST_F(Install, HostsOfOtherLanguagesAreBuiltAndRun)
{
    MakeBooks();
    const std::string examples = "$P/share/doc/vark40/examples/offene_posten.";
    const Result cpp =
        Shell("c++ -std=c++20 " + examples + "cpp $(pkg-config --cflags --libs vark40) -o in_cpp");
    ASSERT_EQ(0, cpp.ExitCode) << cpp.Err;
    const Result pascal =
        Shell("fpc -Fu$P/share/vark40/pascal -Fl$P/lib -FU. -FE. -oin_pascal " + examples + "pas");
    ASSERT_EQ(0, pascal.ExitCode) << pascal.Out;
    const std::string said = Shell("LD_LIBRARY_PATH=$P/lib ./in_cpp").Out;
    EXPECT_TRUE(Contains(said, ";Adler-Apotheke;") && said.ends_with("\ngebucht\n")) << said;
    EXPECT_EQ(said, Shell("LD_LIBRARY_PATH=$P/lib ./in_pascal").Out);
    const std::string python = "LD_LIBRARY_PATH=$P/lib PYTHONPATH=$P/lib/python3/dist-packages "
                               "PYTHONDONTWRITEBYTECODE=1 python3 ";
    const Result inPython = Shell(python + examples + "py");
    EXPECT_EQ(said, inPython.Out) << inPython.Err;
    // Messages and reports come from the parts, which lie in a directory of their own.
    const Result parts = Shell(python + "-c 'import vark40\n"
                                        "with vark40.Buecher(1) as b:\n"
                                        "  print(b.bericht(vark40.Bericht.BILANZ).pdf()[:4])\n"
                                        "  b.saldo(\"9999\")'");
    EXPECT_EQ("b'%PDF'\n", parts.Out) << parts.Err;
    EXPECT_TRUE(Contains(parts.Err, "Die Kontonummer ist unzulässig!")) << parts.Err;
}

TEST_F(Install, AHostIsBuiltWithCmake)
{
    MakeBooks();
    fs::create_directory(Directory.Path / "host");
    WriteFile(Directory.Path / "host/CMakeLists.txt",
              "cmake_minimum_required(VERSION 3.20)\n"
              "project(host C)\n"
              "find_package(vark40 4.0 REQUIRED)\n"
              "set(examples $ENV{P}/share/doc/vark40/examples)\n"
              "add_executable(buchen ${examples}/buchen.c)\n"
              "target_link_libraries(buchen PRIVATE vark40::vark40)\n"
              "add_executable(berichte ${examples}/berichte.c)\n"
              "target_link_libraries(berichte PRIVATE vark40::vark40 vark40::varkui vark40::rs)\n");
    const Result built =
        Shell("cmake -S host -B host/build -DCMAKE_PREFIX_PATH=$P && cmake --build host/build");
    ASSERT_EQ(0, built.ExitCode) << built.Out << built.Err;
    EXPECT_EQ("gebucht (1)\n", Shell("host/build/buchen").Out);
    // Another interface is another package.
    WriteFile(Directory.Path / "host/CMakeLists.txt",
              "cmake_minimum_required(VERSION 3.20)\nproject(host C)\nfind_package(vark40 5.0 REQUIRED)\n");
    EXPECT_NE(0, Shell("cmake -S host -B host/newer -DCMAKE_PREFIX_PATH=$P").ExitCode);
}

TEST_F(Install, TheManualTellsOfEachExportAndOfTemplates)
{
    const std::string page = Manual("man3/vark40.3");
    const std::string header = ReadFile(Prefix / "include/vark40.h");
    const std::regex declaration(R"(VARK_CALL (VARK_\w+)\()");
    int count = 0;
    for (std::sregex_iterator found(header.begin(), header.end(), declaration), end; found != end; ++found) {
        const std::string name = (*found)[1];
        EXPECT_TRUE(Contains(page, name + "(")) << name;
        EXPECT_EQ(".so man3/vark40.3\n", Manual("man3/" + name + ".3"));
        ++count;
    }
    EXPECT_EQ(47, count);
    for (const char *words :
         {"Geprüft wird in dieser Reihenfolge:", "die Eingabe eines Kurses abgebrochen"}) {
        EXPECT_TRUE(Contains(page, words)) << words;
    }
    for (const char *file : {"man3/vark40.3", "man5/templates.5"}) {
        const Result lint = Shell("mandoc -T lint -W warning $P/share/man/" + std::string(file));
        EXPECT_EQ(0, lint.ExitCode) << lint.Out;
        const Result man =
            Shell("LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z $P/share/man/" +
                  std::string(file) + " > /dev/null");
        EXPECT_EQ("", man.Err);
    }
}

TEST_F(Install, TheManualOfTemplatesKnowsWhatTheDocumentationKnows)
{
    // The first cells of the tables of entries and calls: | `size` | …
    std::istringstream lines(ReadFile(fs::path(VARK_SOURCES) / "docs/templates.md"));
    const std::string page = Manual("man5/templates.5");
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("### ") && std::isalpha(static_cast<unsigned char>(line[4])) != 0) {
            const std::string call = line.substr(4, line.find_first_of(" ({", 4) - 4);
            EXPECT_TRUE(Contains(page, ".SS " + call)) << call;
        }
        if (!line.starts_with("| `")) continue;
        const std::string cell = line.substr(0, line.find(" |", 2));
        for (std::smatch name; std::regex_search(line, name, std::regex("`(\\w+)[^`]*`"));) {
            if (static_cast<size_t>(name.position(0)) > cell.size()) break;
            EXPECT_TRUE(Contains(page, name[1])) << line;
            ++count;
            line.erase(0, static_cast<size_t>(name.position(0) + name.length(0)));
            break;
        }
    }
    EXPECT_GT(count, 40);
}

TEST_F(Install, ShellsCompleteByTheProgram)
{
    MakeBooks();
    // bash, as it does at a press of the tab key: the words so far, then the function of the script.
    const std::string bash = "source $P/share/bash-completion/completions/vark\n"
                             "COMP_WORDS=($P/bin/vark saldo --mandant 1 184) COMP_CWORD=4 COMP_TYPE=9\n"
                             "compopt() { :; }; _vark; printf '%s\\n' \"${COMPREPLY[@]}\"\n"
                             "COMP_WORDS=($P/bin/vark bericht s) COMP_CWORD=2; _vark\n"
                             "printf '%s\\n' \"${COMPREPLY[@]}\"\n"
                             "COMP_WORDS=($P/bin/vark buchen --mandant '') COMP_CWORD=3 COMP_TYPE=63; _vark\n"
                             "printf '%s\\n' \"${COMPREPLY[@]}\"";
    EXPECT_EQ("1840\nsusa\n1  (Nordhafen Bürohandel GmbH)\n2  (Sonnenfeld Gartenbedarf)\n"
              "3  (Atelier Lindblick Werbeagentur)\n",
              Shell(bash).Out);
    for (const char *script : {"bash -n $P/share/bash-completion/completions/books",
                               "! command -v zsh || zsh -n $P/share/zsh/site-functions/_vark",
                               "! command -v fish || fish -n $P/share/fish/vendor_completions.d/vark.fish"}) {
        const Result checked = Shell(script);
        EXPECT_EQ(0, checked.ExitCode) << checked.Err;
    }
    const std::string fish =
        "PATH=$P/bin:$PATH fish -c 'source $P/share/fish/vendor_completions.d/vark.fish; "
        "complete -C \"vark saldo --mandant 1 184\"'";
    if (Shell("command -v fish").ExitCode == 0) {
        EXPECT_EQ("1840\tHafenbank, laufendes Konto\n", Shell(fish).Out);
    }
}
