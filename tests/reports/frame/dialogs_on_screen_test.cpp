// The dialog of every report in a real window, walked by the keyboard alone: opened, changed, closed with
// Enter; what the person typed is in the record that the report begins with.
#include "include/vark40.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"
#include "tests/support/display.h"
#include "tests/support/recording_engine.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

struct KeyboardCase {
    const char *Name;
    const char *Title; // of the dialog, UTF-8
    VarkWindow (*Call)(ReportParams *params);
    std::vector<const char *> Keys;
    const char *Told; // in the engine's calls after it
};

void PrintTo(const KeyboardCase &wanted, std::ostream *out) { *out << wanted.Name; }

const KeyboardCase cases[] = {
    {"Hauptabschluss",
     "Hauptabschlussübersicht",
     [](ReportParams *params) { return VARK_HauptAbschluss(1, nullptr, params); },
     {"key alt+g"},
     "Auswahl=Gewinn- und Verlustrechnung"},
    {"Kostensalden",
     "Kostensalden",
     [](ReportParams *params) { return VARK_KostenSaldenListe(1, nullptr, params); },
     {"key alt+n", "type --delay 20 100"},
     "Bereich=von 100"},
    {"Kostenstellen",
     "Kostenstellenliste",
     [](ReportParams *params) { return VARK_KostenstellenListe(1, nullptr, params); },
     {"key alt+i", "type --delay 20 200"},
     "Bereich=bis 200"},
    {"Kontenblatt",
     "Kontenblatt",
     [](ReportParams *params) { return VARK_Kontenblatt(1, 0, nullptr, params); },
     {"key alt+c"},
     "or_kblao.rs"},
    {"Kostenblatt",
     "Kostenstellenauswertung",
     [](ReportParams *params) { return VARK_Kontenblatt(1, 1, nullptr, params); },
     {"key alt+c"},
     "MitBuchungen=0"},
    {"Bilanz",
     "Bilanz",
     [](ReportParams *params) { return VARK_Bilanz(1, 0, nullptr, params); },
     {"key alt+v"},
     "Vergleich=1"},
    {"Guv",
     "GuV",
     [](ReportParams *params) { return VARK_GUV(1, nullptr, params); },
     {"key alt+s"},
     "Kontenstruktur=1"},
    {"Ustva",
     "Umsatzsteuervoranmeldung",
     [](ReportParams *params) { return VARK_UmsatzSteuerVoranmeldung(1, nullptr, params); },
     {"key alt+b"},
     "Berichtigt=1"},
    {"Kostenjournal",
     "Kostenjournal",
     [](ReportParams *params) { return VARK_Kostenjournal(1, nullptr, params); },
     {"key alt+s"},
     "InklStapel=1"},
};

struct DialogsOnScreen : testing::TestWithParam<KeyboardCase> {};

} // namespace

TEST_P(DialogsOnScreen, TakeTheKeyboard)
{
    const KeyboardCase &wanted = GetParam();
    Books books;
    books.AddMandant(1);
    for (const TableId tree : {TableGuvauf, TableBilaktau, TableBilpasau}) {
        StructureRecord root{};
        root.Id = structureRoot;
        root.Art = StructureGruppe;
        books.Insert(1, tree, root);
    }
    Display display;
    const std::string missing = display.Begin(std::filesystem::path(VARKUI_LIBRARY).parent_path());
    if (!missing.empty()) GTEST_SKIP() << missing;
    EXPECT_EQ(1, VARK_Status());
    RecordingEngine sent;
    sent.Install();
    std::thread person([&] {
        EXPECT_TRUE(display.HasKeyboard(wanted.Title));
        for (const char *keys : wanted.Keys) {
            display.Do(keys);
        }
        display.Do("key Return");
    });
    ReportParams params{};
    wanted.Call(&params);
    person.join();
    const bool isTold = std::any_of(sent.Calls.begin(), sent.Calls.end(), [&](const std::string &call) {
        return call.find(wanted.Told) != std::string::npos;
    });
    EXPECT_TRUE(isTold) << wanted.Told
                        << (sent.Calls.size() > 1 ? "; the first record: " + sent.Calls[1] : "");
    VARK_SchliesseDB();
}

INSTANTIATE_TEST_SUITE_P(Reports, DialogsOnScreen, testing::ValuesIn(cases),
                         [](const testing::TestParamInfo<KeyboardCase> &each) { return each.param.Name; });
