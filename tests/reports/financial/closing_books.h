// Small books for the tests of Bilanz and GuV: accounts with sums, their trees, and a report whose comparison
// is on although nobody plays its dialog.
#pragma once

#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "src/platform/window_api.h"
#include "src/reports/frame/period_controls.h"
#include "src/reports/frame/report_params.h"
#include "src/reports/frame/tab_dialog.h"
#include "tests/support/books.h"
#include "tests/support/recording_engine.h"
#include "tests/support/trees.h"

#include <cstring>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
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
    made.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message != WM_APP) return DefWindowProcA(window, message, wParam, lParam);
        HWND dialog = GetActiveWindow();
        DestroyWindow(window);
        if (dialog != nullptr) wanted(dialog);
        return 0;
    };
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

} // namespace vark::test
