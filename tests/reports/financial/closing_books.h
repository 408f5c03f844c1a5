// Small books for the tests of Bilanz and GuV: accounts with sums, their trees, and a report whose comparison
// is on although nobody plays its dialog.
#pragma once

#include "include/vark40.h"
#include "report-engine/include/rs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/report_engine.h"
#include "src/platform/platform.h"
#include "src/platform/window_api.h"
#include "src/reports/frame/period_controls.h"
#include "src/reports/frame/report_params.h"
#include "src/reports/frame/tab_dialog.h"
#include "tests/support/books.h"
#include "tests/support/recording_engine.h"
#include "tests/support/trees.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>

namespace vark::test {

inline void PutPair(SollHaben &pair, const std::string &soll, const std::string &haben)
{
    SetText(pair.Soll, soll);
    SetText(pair.Haben, haben);
}

// An account with what it has in month 1.
inline SakoRecord SakoWith(const std::string &konto, int16_t zuordnung, const std::string &soll,
                           const std::string &haben)
{
    SakoRecord record = MakeSako(konto, zuordnung);
    PutPair(record.Umsaetze.Monat[0], soll, haben);
    return record;
}

inline ReportParams PeriodBlock(int32_t zeitraum, int32_t jahrIndex)
{
    ReportParams params{};
    params.ParamFlags = ParamZeitraum | ParamJahr;
    params.Zeitraum = zeitraum;
    params.JahrIndex = jahrIndex;
    return params;
}

// Does something to the next dialog of this thread, before anybody answers it.
inline void InDialog(std::function<void(HWND dialog)> change)
{
    static std::function<void(HWND dialog)> wanted;
    wanted = std::move(change);
    WNDCLASSA made{};
    made.lpszClassName = "InDialog";
    struct Messenger {
        static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
        {
            if (message != WM_APP) return DefWindowProcA(window, message, wParam, lParam);
            HWND dialog = GetActiveWindow();
            DestroyWindow(window);
            if (dialog != nullptr) wanted(dialog);
            return 0;
        }
    };
    made.lpfnWndProc = Messenger::Procedure;
    RegisterClassA(&made);
    HWND window =
        CreateWindowExA(0, made.lpszClassName, "", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    PostMessageA(window, WM_APP, 0, 0);
}

// Turns the comparison on in the next dialog of Bilanz or GuV, with a year of its own.
inline void CompareWith(const std::string &year)
{
    InDialog([year](HWND dialog) {
        if (GetDlgItem(dialog, controlCompare) == nullptr) return;
        SendDlgItemMessageA(dialog, controlCompare, BM_SETCHECK, BST_CHECKED, 0);
        SendMessageA(dialog, WM_COMMAND, controlCompare, 0);
        for (HWND page = GetWindow(dialog, GW_CHILD); page != nullptr; page = GetWindow(page, GW_HWNDNEXT)) {
            HWND field = GetDlgItem(page, controlYear);
            if (field == nullptr || IsWindowVisible(page) != FALSE) continue;
            SetWindowTextA(field, year.c_str()); // of the page that is not in view
        }
    });
}

// Chooses what the next dialog of Bilanz or GuV shows of the trees.
inline void ChooseLevel(int level, bool withAccounts, bool isFirstBelowSecond = false)
{
    InDialog([=](HWND dialog) {
        const auto set = [&](int id, bool isSet) {
            SendDlgItemMessageA(dialog, id, BM_SETCHECK, isSet ? BST_CHECKED : BST_UNCHECKED, 0);
        };
        for (int each = 1; each <= 3; ++each) {
            set(1001 + each, each == level);
        }
        set(1047, withAccounts);
        set(1048, isFirstBelowSecond);
    });
}

// Lays the templates of both reports where the library looks for them.
inline void CopyClosingTemplates()
{
    for (const char *name : {"or_bil.rs", "or_guv.rs", "or_tree.lua", "or_page.lua"}) {
        std::filesystem::copy_file(std::string(TEMPLATES) + "/" + name, std::string(ReportPath) + name);
    }
}

// The view as text or CSV, line by line, words parted by one blank each. The view is closed.
inline Lines ExportLines(Books &books, VarkWindow view, const std::string &form)
{
    EXPECT_NE(nullptr, view);
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    const std::string path = books.Directory() + "/bericht." + form;
    const auto exportView = reinterpret_cast<decltype(&RSExportView)>(
        FindEntry(reportEngine.ReportEngineLibrary, "RSExportView"));
    EXPECT_EQ(1, exportView(view, path.c_str()));
    DestroyWindow(static_cast<HWND>(view));
    std::ifstream file(path);
    Lines lines;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string tidy;
        for (std::string word; words >> word;) {
            tidy += (tidy.empty() ? "" : " ") + word;
        }
        if (!tidy.empty()) lines.push_back(tidy);
    }
    return lines;
}

} // namespace vark::test
