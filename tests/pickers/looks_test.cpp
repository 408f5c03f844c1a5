// What the pick dialogs are made of: titles, labels with their mnemonics, tab stops.
#include "src/platform/window_api.h"
#include "tests/pickers/rate_books.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

// Tab stops that lists have been given, "1000: 30 70", in their order.
Lines tabStops;

} // namespace

// The linker leads calls of SendDlgItemMessageA here.
extern "C" {
LRESULT __real_SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT __wrap_SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == LB_SETTABSTOPS) {
        std::string line = std::to_string(id) + ":";
        for (WPARAM i = 0; i < wParam; ++i) {
            line += " " + std::to_string(reinterpret_cast<const int *>(lParam)[i]);
        }
        tabStops.push_back(line);
    }
    return __real_SendDlgItemMessageA(dialog, id, message, wParam, lParam);
}
}

TEST(Looks, AccountsByNumberAndByKuerzelHaveTheirTabStops)
{
    PickBooks books("press 1003\npress 1002\npress 2\n");
    books.AddMandant(1);
    books.Insert(1, TableSako, MakeSako("1000"));
    EXPECT_EQ(0, VARK_HoleKonto(nullptr, 1, 1, "", "", nullptr));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ((Lines{"1000: 30 70", "1000: 40 70", "1000: 30 70"}), tabStops);
}

TEST(Looks, RatesHaveTheirTabStops)
{
    PickBooks books("press 2\n");
    books.AddMandant(1);
    RunRateDialog(Bound(), nullptr);
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ(Lines{"30122: 28 31 45"}, tabStops);
}

TEST(Looks, StapelDialogsAreLabelled)
{
    PickBooks books(R"(
        expect title Stapelverwaltung
        expect text 3 &Neu...
        expect text 4 &Ändern...
        press 3
        dialog 108
        expect title Stapel anlegen
        expect text 1007 &wiederkehrender Stapel
        expect text 1014 1
        expect text 2 &Abbrechen
        press 2
        select 1000 0
        press 4
        dialog 109
        expect title Stapel ändern
        expect text 1007 &wiederkehrender Stapel
        expect text 4 &Löschen
        expect text 2 &Abbrechen
        press 2
        press 2
    )");
    books.AddMandant(1);
    books.Insert(1, TableStapel, MakeStapel(16, "Mai"));
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
}

TEST(Looks, RateDialogIsLabelled)
{
    PickBooks books(R"(
        dialog 131
        expect title Fremdwährungsverwaltung
        expect text 30126 Durch&schnittskurs
        expect text 1 &Neu
        expect text 30121 &Löschen
        expect text 2 &Beenden
        press 2
    )");
    books.AddMandant(1);
    RunRateDialog(Bound(), nullptr);
    EXPECT_EQ("", books.Trouble());
}

TEST(Looks, EveryKindOfAccountHasItsTitle)
{
    const std::pair<int32_t, const char *> kinds[] = {{1, "Sachkontenauswahl"},
                                                      {2, "Kreditorenkontenauswahl"},
                                                      {4, "Debitorenkontenauswahl"},
                                                      {8, "Kostenstellenauswahl"}};
    std::string script;
    for (const auto &[kind, title] : kinds) {
        script += std::string("dialog 102\nexpect title ") + title + "\npress 2\n";
    }
    PickBooks books(script);
    books.AddMandant(1);
    books.Insert(1, TableSako, MakeSako("1000"));
    books.Insert(1, TableKred, MakePersonal("70000"));
    books.Insert(1, TableDebi, MakePersonal("10000"));
    books.Insert(1, TableKore, MakeKore("100"));
    for (const auto &[kind, title] : kinds) {
        EXPECT_EQ(0, VARK_HoleKonto(nullptr, 1, kind, "", "", nullptr)) << title;
    }
    EXPECT_EQ("", books.Trouble());
}
