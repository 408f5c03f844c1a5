// Where to save a file, asked of a person that a script plays.
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "front_end_setup.h"
#include "window-system/include/varkui.h"

namespace {

constexpr VARKUIFILEKIND kinds[] = {{"Text", ".txt"}, {"Tabelle", ".csv"}};

struct Chooser : testing::Test {
    FrontEndSetup frontEnd;
    std::vector<std::string> offered;
    size_t refusals = 0; // of the first paths

    void SetUp() override { setenv("HOME", frontEnd.Directory.c_str(), 1); }

    BOOL Ask(const std::string &script)
    {
        frontEnd.UseScript(script);
        return VarkUiSaveFile(nullptr, "Speichern", "Liste", kinds, 2, Take, this);
    }

    static BOOL CALLBACK Take(HWND dialog, LPCSTR path, void *context)
    {
        EXPECT_NE(IsWindow(dialog), FALSE);
        auto *self = static_cast<Chooser *>(context);
        self->offered.emplace_back(path);
        return self->offered.size() > self->refusals ? TRUE : FALSE;
    }

    std::string At(const std::string &name) const { return (frontEnd.Directory / name).string(); }
    std::string Complaints() const
    {
        const std::string log = frontEnd.Log();
        const size_t at = log.find("script:");
        return at == std::string::npos ? "" : log.substr(at);
    }
};

using Paths = std::vector<std::string>;

} // namespace

TEST_F(Chooser, SuggestsANameAndTheFirstKind)
{
    EXPECT_EQ(Ask("dialog 140\nexpect title Speichern\nexpect text 201 " + At("Liste.txt") +
                  "\nexpect rows 202 2\nexpect row 202 Text (*.txt)\npress 1\n"),
              TRUE);
    EXPECT_EQ(Complaints(), "");
    EXPECT_EQ(offered, Paths{At("Liste.txt")});
}

TEST_F(Chooser, NameEndsAsItsKindDoes)
{
    EXPECT_EQ(Ask("select 202 \"Tabelle\"\nexpect text 201 " + At("Liste.csv") +
                  "\nselect 202 0\nexpect text 201 " + At("Liste.txt") +
                  "\ntext 201 ~/Stand 31.12\nselect 202 1\nexpect text 201 " + At("Stand 31.12.csv") +
                  "\ntext 201 ~/Stand 31.12\npress 1\n"),
              TRUE);
    EXPECT_EQ(Complaints(), "");
    EXPECT_EQ(offered, Paths{At("Stand 31.12.csv")});
}

TEST_F(Chooser, EndingThatIsTypedGoesBeforeTheKind)
{
    EXPECT_EQ(Ask("text 201 ~/Liste.CSV\npress 1\n"), TRUE);
    EXPECT_EQ(offered, Paths{At("Liste.CSV")});
}

TEST_F(Chooser, AsksBeforeAFileGoes)
{
    std::ofstream(At("Liste.txt")) << "alt";
    EXPECT_EQ(Ask("press 1\nbox no gibt es schon\nexpect text 201 " + At("Liste.txt") +
                  "\ntext 201 ~/Liste\npress 1\nbox yes gibt es schon\n"),
              TRUE);
    EXPECT_EQ(Complaints(), "");
    EXPECT_EQ(offered, Paths{At("Liste.txt")});
}

TEST_F(Chooser, WantsAFile)
{
    EXPECT_EQ(Ask("text 201\npress 1\nbox ok in welche Datei\ntext 201 ~/\npress 1\nbox ok in welche Datei\n"
                  "press 2\n"),
              FALSE);
    EXPECT_EQ(Complaints(), "");
    EXPECT_TRUE(offered.empty());
}

TEST_F(Chooser, GoesOnUntilAFileIsTaken)
{
    refusals = 2;
    EXPECT_EQ(Ask("press 1\ntext 201 ~/zwei.txt\npress 1\ntext 201 ~/drei.txt\npress 1\n"), TRUE);
    EXPECT_EQ(Complaints(), "");
    EXPECT_EQ(offered, (Paths{At("Liste.txt"), At("zwei.txt"), At("drei.txt")}));
}

TEST_F(Chooser, BeginsInTheDirectoryThatWasChosenLast)
{
    std::filesystem::create_directory(At("unten"));
    frontEnd.UseScript("text 201 ~/unten/a.txt\npress 1\nexpect text 201 " + At("unten/Liste.txt") +
                       "\npress 2\n");
    EXPECT_EQ(VarkUiSaveFile(nullptr, "Speichern", "Liste", kinds, 2, Take, this), TRUE);
    EXPECT_EQ(VarkUiSaveFile(nullptr, "Speichern", "Liste", kinds, 2, Take, this), FALSE);
    EXPECT_EQ(Complaints(), "");
}

TEST_F(Chooser, IsCancelledWhereNobodyCanBeAsked)
{
    EXPECT_EQ(VarkUiSaveFile(nullptr, "Speichern", "Liste", kinds, 2, Take, this), FALSE);
    EXPECT_TRUE(offered.empty());
    EXPECT_EQ(frontEnd.Log(), "dialog 140 Speichern\n");
}

TEST_F(Chooser, WithoutANameKindsOrTakerIsNone)
{
    EXPECT_EQ(VarkUiSaveFile(nullptr, nullptr, "Liste", kinds, 2, Take, this), FALSE);
    EXPECT_EQ(VarkUiSaveFile(nullptr, "Speichern", nullptr, kinds, 2, Take, this), FALSE);
    EXPECT_EQ(VarkUiSaveFile(nullptr, "Speichern", "Liste", nullptr, 2, Take, this), FALSE);
    EXPECT_EQ(VarkUiSaveFile(nullptr, "Speichern", "Liste", kinds, 0, Take, this), FALSE);
    EXPECT_EQ(VarkUiSaveFile(nullptr, "Speichern", "Liste", kinds, 2, nullptr, this), FALSE);
    EXPECT_EQ(frontEnd.Log(), "");
}
