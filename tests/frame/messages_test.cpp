#include "src/frame/messages.h"
#include "tests/window-system/front_end_setup.h"
#include "text/windows1252.h"

#include <fstream>
#include <gtest/gtest.h>
#include <map>

using namespace vark;
using namespace text;

namespace {

struct Messages : testing::Test {
    FrontEndSetup frontEnd;
    ThreadContext context{};
};

std::string Utf8(const char *text)
{
    std::string out(ToUtf8(text, nullptr, 0) + 1, 0);
    out.resize(ToUtf8(text, out.data(), out.size()));
    return out;
}

} // namespace

TEST_F(Messages, EveryNumberHasItsTextAndNoOtherNumberHasOne)
{
    std::map<int, std::string> expected;
    std::ifstream list(MESSAGE_TEXTS);
    for (std::string line; std::getline(list, line);) {
        expected[std::stoi(line)] = line.substr(5);
    }
    ASSERT_EQ(175u, expected.size());
    for (int number = -10; number < 70000; ++number) {
        const char *text = MessageText(number);
        const auto entry = expected.find(number);
        ASSERT_EQ(entry != expected.end(), text != nullptr) << number;
        if (text == nullptr) continue;
        EXPECT_EQ(entry->second, Utf8(text)) << number;
        EXPECT_LT(std::string(text).size(), 400u) << number;
    }
}

TEST_F(Messages, WarningIsAnsweredWithOneForOk)
{
    EXPECT_EQ(1u, ShowMessage(1412, 0, nullptr, -1));
    EXPECT_EQ("box Das Buchungsdatum ist unzulässig!\n", frontEnd.Log());
}

TEST_F(Messages, QuestionIsAnsweredWithOneForYesAndZeroForNo)
{
    frontEnd.UseScript("box yes\nbox no\n");
    EXPECT_EQ(1u, ShowMessage(1800, 0, "Mai", -1));
    EXPECT_EQ(0u, ShowMessage(1800, 0, "Mai", -1));
}

TEST_F(Messages, TextFillsThePlaceOfTheMessage)
{
    ShowMessage(1428, 0, "100", -1);
    EXPECT_EQ("box Die Kostenstelle 100 existiert nicht!\n", frontEnd.Log());
}

TEST_F(Messages, WithoutATextThePlaceStaysVisible)
{
    ShowMessage(1428, 0, nullptr, -1);
    EXPECT_EQ("box Die Kostenstelle %s existiert nicht!\n", frontEnd.Log());
}

TEST_F(Messages, PercentSignsInTheTextAreNoPlaces)
{
    ShowMessage(1428, 0, "%s%n%d", -1);
    EXPECT_EQ("box Die Kostenstelle %s%n%d existiert nicht!\n", frontEnd.Log());
}

TEST_F(Messages, TextWithoutPlaceIgnoresWhatIsFilledIn)
{
    ShowMessage(1412, 0, "unused", -1);
    EXPECT_EQ("box Das Buchungsdatum ist unzulässig!\n", frontEnd.Log());
}

TEST_F(Messages, TeilbuchungIsCountedFromOneInFrontOfTheText)
{
    context.ShowMessages = 1;
    EXPECT_EQ(-25, Report(context, 1432, -25, nullptr, 2));
    EXPECT_EQ("box Teilbuchung 3: Die Anzahl der Teilbuchungen ist nicht korrekt!\n", frontEnd.Log());
}

TEST_F(Messages, HighestTeilbuchungIsCountedWithoutOverflow)
{
    ShowMessage(1412, 0, nullptr, INT32_MAX);
    EXPECT_EQ("box Teilbuchung 2147483648: Das Buchungsdatum ist unzulässig!\n", frontEnd.Log());
}

TEST_F(Messages, OverlongTextIsCutNotOverrun)
{
    const std::string path(5000, 'p');
    ShowMessage(3112, 0, path.c_str(), -1);
    EXPECT_EQ(0u, frontEnd.Log().find("box File ppp"));
    EXPECT_LT(frontEnd.Log().size(), 1000u);
}

TEST_F(Messages, ReportShowsOnlyToACallerWhoWantsMessages)
{
    context.ShowMessages = 0;
    EXPECT_EQ(-8, Report(context, 1409, -8, "Sollk", -1));
    EXPECT_EQ("", frontEnd.Log());
    context.ShowMessages = 1;
    EXPECT_EQ(-8, Report(context, 1409, -8, "Sollk", -1));
    EXPECT_EQ("box Die Sollkontonummer ist unzulässig!\n", frontEnd.Log());
}

TEST_F(Messages, StatusIsShownByItsNumberRange)
{
    ReportStatus(4, nullptr);
    ReportStatus(12, "/daten/DB/fista.btr");
    ReportStatus(1001, nullptr);
    ReportStatus(2001, nullptr);
    EXPECT_EQ("box Key value not found\n"
              "box File /daten/DB/fista.btr not found\n"
              "box Lock Parameter Out of Range\n"
              "box Insufficient Memory\n",
              frontEnd.Log());
}

TEST_F(Messages, StatusWithoutATextEndsInTheBoxForExhaustedMemory)
{
    ReportStatus(33, nullptr);
    ReportStatus(-1, nullptr);
    ReportStatus(32767, nullptr);
    EXPECT_EQ("box Speicher voll.\nbox Speicher voll.\nbox Speicher voll.\n", frontEnd.Log());
}

TEST_F(Messages, BoxForExhaustedMemoryGivesZeroForOk)
{
    EXPECT_EQ(0u, ShowMessage(3133, 0, nullptr, -1));
    EXPECT_EQ(0u, ShowMessage(INT32_MIN, 0, nullptr, -1));
    EXPECT_EQ(0u, ShowMessage(INT32_MAX, 0, "x", 5));
}

TEST_F(Messages, RecordInUseIsTold)
{
    EXPECT_TRUE(ReportLocked(84));
    EXPECT_TRUE(ReportLocked(85));
    EXPECT_FALSE(ReportLocked(0));
    EXPECT_FALSE(ReportLocked(80));
    EXPECT_EQ("box Der Datensatz wird von einer anderen Anwendung benutzt!\n"
              "box Der Datensatz wird von einer anderen Anwendung benutzt!\n",
              frontEnd.Log());
}

TEST_F(Messages, CursorIsTheOneFromBefore)
{
    HCURSOR wait = LoadCursorA(nullptr, IDC_WAIT);
    SetCursor(wait);
    ShowMessage(1412, 0, nullptr, -1);
    EXPECT_EQ(wait, SetCursor(nullptr));
}

TEST_F(Messages, ControlThatDoesNotExistIsNotFocused)
{
    EXPECT_EQ(1u, ShowMessage(1412, 22990, nullptr, -1));
    EXPECT_EQ(nullptr, FocusControl(nullptr, 22990));
    FocusAndSelect(nullptr);
    EXPECT_EQ(nullptr, GetFocus());
}
