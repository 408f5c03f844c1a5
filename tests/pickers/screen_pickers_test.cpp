// The pick dialogs in a real window: chosen from by keyboard alone and by mouse alone.
#include "tests/pickers/screen_dialogs.h"

using namespace vark;
using namespace vark::test;

namespace {

struct ScreenPickers : OnScreen {
    void SetUp() override
    {
        OnScreen::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        books.AddMandant(1);
        for (const char *konto : {"1000", "1200", "8400"}) {
            SakoRecord sako = MakeSako(konto);
            SetText(sako.Kuerzel, std::string("K") + konto[1]);
            books.Insert(1, TableSako, sako);
        }
        for (const int32_t number : {5, 14, 30}) {
            ZahlzielRecord ziel = MakeZahlziel(number);
            SetText(ziel.Text, "Ziel " + std::to_string(number));
            books.Insert(1, TableZahlziel, ziel);
            KoschaRecord schablone = MakeKoscha(number, 1);
            books.Insert(1, TableKoscha, schablone);
        }
        for (const char *name : {"Bank", "Kasse", "Löhne"}) {
            StapelRecord stapel = MakeStapel(name[0] == 'B' ? 16 : name[0] == 'K' ? 17 : 18, name);
            books.Insert(1, TableStapel, stapel);
        }
    }

    int32_t ByKeys(const std::string &title, const std::string &keys, const std::function<int32_t()> &pick)
    {
        return Run(title, pick, [&keys] { Display::Do("key " + keys); });
    }

    static std::string LineOf(HWND dialog)
    {
        char line[64] = {};
        const LRESULT row = SendDlgItemMessageA(dialog, 1000, LB_GETCURSEL, 0, 0);
        SendDlgItemMessageA(dialog, 1000, LB_GETTEXT, static_cast<WPARAM>(row),
                            reinterpret_cast<LPARAM>(line));
        return line;
    }

    int32_t ByMouse(const std::string &title, int list, int row, const std::function<int32_t()> &pick)
    {
        return Run(title, pick, [&] {
            EXPECT_TRUE(ClickRow(list, row));
            Display::Click(Topmost(), IDOK, 20, 14);
        });
    }
};

} // namespace

TEST_F(ScreenPickers, GiveAMandant)
{
    const auto pick = [this] { return VARK_HoleMandantenNr(owner); };
    EXPECT_EQ(1, ByKeys("Mandantenauswahl", "Down Return", pick));
    EXPECT_EQ(1, ByMouse("Mandantenauswahl", 1004, 0, pick));
    EXPECT_EQ(0, ByKeys("Mandantenauswahl", "Escape", pick));
    EXPECT_EQ("1", books.Remembered("Mandant"));
}

TEST_F(ScreenPickers, GiveAStapel)
{
    const auto pick = [this] { return VARK_HoleStapelNr(owner, 1); };
    EXPECT_EQ(17, ByKeys("Stapelauswahl", "Home Down Return", pick));
    EXPECT_EQ(18, ByMouse("Stapelauswahl", 1000, 2, pick));
    EXPECT_EQ("18", books.Remembered("Stapel"));
}

TEST_F(ScreenPickers, GiveAnAccount)
{
    char konto[8] = {};
    const auto pick = [&] { return VARK_HoleKonto(owner, 1, 1, nullptr, nullptr, konto); };
    EXPECT_EQ(1, ByKeys("Sachkontenauswahl", "Down Return", pick));
    EXPECT_STREQ("1200", konto);
    // Typed into the search field.
    EXPECT_EQ(1, ByKeys("Sachkontenauswahl", "alt+s 8 4 Return", pick));
    EXPECT_STREQ("8400", konto);
    // Sorted by Kürzel, the first is K0.
    EXPECT_EQ(1, ByKeys("Sachkontenauswahl", "alt+n Right Return", pick));
    EXPECT_STREQ("1000", konto);
    EXPECT_EQ(1, ByMouse("Sachkontenauswahl", 1000, 1, pick));
    EXPECT_STREQ("1200", konto);
    // A double click takes a row at once.
    EXPECT_EQ(1, Run("Sachkontenauswahl", pick, [this] {
                  EXPECT_TRUE(ClickRow(1000, 2));
                  Display::Click(Topmost(), 1000, 20, 46, "click --repeat 2 --delay 50 1");
              }));
    EXPECT_STREQ("8400", konto);
}

TEST_F(ScreenPickers, GiveAZahlungsziel)
{
    const auto pick = [this] { return VARK_HoleZahlungsziel(owner, 1); };
    EXPECT_EQ(14, ByKeys("Zahlzielauswahl", "Home Down Return", pick));
    EXPECT_EQ(30, ByMouse("Zahlzielauswahl", 1030, 2, pick));
}

TEST_F(ScreenPickers, GiveAKostenschablone)
{
    const auto pick = [this] { return VARK_HoleKostenschablone(owner, 1); };
    EXPECT_EQ(14, ByKeys("Kostenschablonenauswahl", "Home Down Return", pick));
    EXPECT_EQ(30, ByMouse("Kostenschablonenauswahl", 1052, 2, pick));
}

TEST_F(ScreenPickers, MakeChangeAndDeleteAStapelByKeyboard)
{
    const auto manage = [this] { return VARK_HoleStapelNr(owner, -1); };
    Run("Stapelverwaltung", manage, [this] {
        Display::Do("key alt+n");
        ASSERT_TRUE(display.HasKeyboard("Stapel anlegen"));
        Display::Do("key M i e t e alt+w alt+i 3 Return");
        ASSERT_TRUE(display.HasKeyboard("Stapelverwaltung"));
        Display::Do("key alt+s End Tab Tab Tab Tab space");
        ASSERT_TRUE(display.HasKeyboard("Stapel ändern"));
        EXPECT_EQ(4u, books.Read<StapelRecord>(1, TableStapel).size());
        EXPECT_EQ("Miete [W3]", LineOf(GetWindow(Topmost(), GW_OWNER)));
        Display::Do("key alt+l");
        ASSERT_TRUE(display.HasKeyboard("MERIDA")); // whether it is to be deleted
        Display::Do("key alt+j");
        ASSERT_TRUE(display.HasKeyboard("Stapelverwaltung"));
        Display::Do("key Escape");
    });
    EXPECT_EQ(3u, books.Read<StapelRecord>(1, TableStapel).size());
}

TEST_F(ScreenPickers, ThatLoseTheirScreenAreCancelled)
{
    testing::internal::CaptureStderr();
    char konto[8] = {};
    EXPECT_EQ(0,
              Run(
                  "Sachkontenauswahl", [&] { return VARK_HoleKonto(owner, 1, 1, nullptr, nullptr, konto); },
                  [this] { EXPECT_TRUE(display.KillProgram()); }));
    EXPECT_EQ("varkui: Der Bildschirm ist weg; es geht ohne ihn weiter.\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ(0, VARK_HoleStapelNr(owner, -1)) << "nobody is there any more";
    EXPECT_EQ(3u, books.Read<StapelRecord>(1, TableStapel).size());
}

// The box waits for a person; others post meanwhile, and who asked is answered though the screen goes.
TEST_F(ScreenPickers, LeaveNothingBehindWhenTheScreenDiesUnderTheBoxOfAPosting)
{
    const auto post = [](int32_t showMessages, const char *haben) {
        return VARK_BuchungEinfuegenDirekt(showMessages, 1, 16, "15.4.98", "B1", "Miete", "1000", 1, haben, 1,
                                           "10,00", "", "");
    };
    testing::internal::CaptureStderr();
    EXPECT_EQ(VARK_FEHLER_HABENKONTO, Run(
                                          "MERIDA", [&] { return post(1, "7777"); },
                                          [&] {
                                              EXPECT_EQ(1, post(0, "8400"));
                                              EXPECT_EQ(1u, books.Count(1, TableBat));
                                              EXPECT_TRUE(display.KillProgram());
                                          }));
    EXPECT_EQ("varkui: Der Bildschirm ist weg; es geht ohne ihn weiter.\n"
              "MERIDA: Die Habenkontonummer ist unzulässig!\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ(1u, books.Count(1, TableBat)) << "what was refused is not there";
    EXPECT_EQ(1, post(0, "8400"));
    EXPECT_EQ(2u, books.Count(1, TableBat));
}
