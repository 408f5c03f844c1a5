// The library's manual page tells in German all that its header declares; where it would not, it is not made.
#include "tests/tools/program.h"

#include <gtest/gtest.h>

using namespace tests;
namespace fs = std::filesystem;

namespace {

struct HeaderManual : testing::Test {
    TemporaryDirectory Directory;

    Result Make(const std::string &header, const std::string &text) const
    {
        WriteFile(Directory.Path / "header.h", header);
        WriteFile(Directory.Path / "text.txt", text);
        return tests::Run({HEADER_MANUAL,
                           {(Directory.Path / "header.h").string(), (Directory.Path / "text.txt").string(),
                            Directory.Path.string(), "2026-11-22", "4.0"}});
    }
    // What is said when in the true header or text the first `from` is `to`.
    std::string Fault(const char *file, const std::string &from, const std::string &to) const
    {
        std::string header = ReadFile(HEADER);
        std::string text = ReadFile(GERMAN_TEXT);
        std::string &changed = std::string(file) == HEADER ? header : text;
        const size_t at = changed.find(from);
        EXPECT_NE(std::string::npos, at) << from;
        if (at == std::string::npos) return "";
        changed.replace(at, from.size(), to);
        const Result made = Make(header, text);
        EXPECT_EQ(1, made.ExitCode) << from;
        EXPECT_FALSE(fs::exists(Directory.Path / "vark40.3")) << from;
        return made.Err;
    }
};

constexpr const char *header = "/*\n * A library of 2 things.\n */\n"
                               "#include <stdint.h>\n\n"
                               "/* ---- Things ---- */\n\n"
                               "/* Doubles: 1, or -5 where that is too much. */\n"
                               "int32_t VARK_CALL VARK_Double(int32_t value);\n";

constexpr const char *text =
    "The form.\n\n= = BESCHREIBUNG\n\nEine Bibliothek für 2 Dinge.\n\n"
    "= Things = DINGE\n\n- VARK_Double\nVerdoppelt.\n\n  value  was verdoppelt wird\n\n"
    "  1   gelungen\n  -5  zu viel\n";

} // namespace

TEST_F(HeaderManual, APageIsMadeOfDeclarationsAndTheirGermanText)
{
    const Result made = Make(header, text);
    ASSERT_EQ(0, made.ExitCode) << made.Err;
    const std::string page = ReadFile(Directory.Path / "vark40.3");
    const std::string told = ".SH DINGE\n"
                             ".nf\n\\fBint32_t VARK_Double(int32_t value);\\fR\n.fi\n"
                             ".RS 4\nVerdoppelt.\n"
                             ".TP 7\n\\fBvalue\\fR\nwas verdoppelt wird\n"
                             ".TP 4\n\\fB1\\fR\ngelungen\n"
                             ".PD 0\n.TP 4\n\\fB\\-5\\fR\nzu viel\n.PD\n.RE\n";
    EXPECT_NE(std::string::npos, page.find(told)) << page;
    EXPECT_EQ(".so man3/vark40.3\n", ReadFile(Directory.Path / "VARK_Double.3"));
}

TEST_F(HeaderManual, WhatTheGermanTextLacksIsNamed)
{
    EXPECT_EQ("header-manual: VARK_GUV: no German text\n",
              Fault(GERMAN_TEXT, "- VARK_GUV\nGewinn- und Verlustrechnung.\n", "\n"));
    EXPECT_EQ("header-manual: VARK_Neu: no German text\n",
              Fault(HEADER, "/* ---- Bookings ---- */",
                    "/* New. */\nint32_t VARK_CALL VARK_Neu(void);\n\n/* ---- Bookings ---- */"));
    EXPECT_EQ("header-manual: VARK_InitHoleBube: the German text lacks vonDatum\n",
              Fault(GERMAN_TEXT, "  vonDatum  ", "  vomDatum  "));
    EXPECT_EQ("header-manual: BuchungEingabe: the German text lacks Neu\n",
              Fault(HEADER, "    char Rest[13];", "    char Neu[3];\n    char Rest[10];"));
    EXPECT_EQ("header-manual: VarkAktion: the German text lacks VARK_SPERREN\n",
              Fault(HEADER, "VARK_LOESCHEN = 3", "VARK_LOESCHEN = 3, VARK_SPERREN = 4"));
    EXPECT_EQ("header-manual: the section \"Choosing\" has no German one in its place\n",
              Fault(GERMAN_TEXT, "= Choosing =", "= Picking ="));
}

TEST_F(HeaderManual, ANumberThatOneOfThemHasAloneIsNamed)
{
    EXPECT_EQ("header-manual: VARK_BuchungEinfuegen: the German text lacks -43\n",
              Fault(GERMAN_TEXT, "  -43  Kostenschablone", "  -41  Kostenschablone"));
    EXPECT_EQ("header-manual: VARK_HoleSaldo: the German text has 1413, the header has not\n",
              Fault(HEADER, "-7 kontoart (1413); -10 no such account", "-7 kontoart; -10 no such account"));
    EXPECT_EQ("header-manual: BESCHREIBUNG: the German text lacks 17\n",
              Fault(GERMAN_TEXT, "Heraus: 17 Bytes", "Heraus: 16 Bytes"));
}

TEST_F(HeaderManual, AHeaderOfUnknownFormIsRefused)
{
    EXPECT_EQ(1, Make("int32_t VARK_CALL VARK_Double(int32_t value);\n", text).ExitCode);
    const Result strange = Make(std::string(header) + "\nunion Strange { int a; };\n", text);
    EXPECT_EQ("header-manual: a declaration of unknown form: union Strange { int a; }; \n", strange.Err);
}
