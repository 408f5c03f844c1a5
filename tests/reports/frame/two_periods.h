// A dialog of the tests' own with a period on each of two tab pages, and what lies between the first call
// of the library and that dialog.
#pragma once

#include "src/reports/frame/tab_dialog.h"

#include "src/frame/dialogs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/reports/frame/dialog_layout.h"
#include "src/reports/frame/output_choice.h"
#include "tests/support/books.h"
#include "text/windows1252.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace vark::test {

struct TwoPeriods {
    ThreadContext *Context = nullptr;
    bool IsGuv = true;
    PeriodTabs Tabs{};
    int32_t Ausgabe = 0;
    int32_t OutputState = 0;
    std::function<void(HWND)> AtOpening;
    std::function<void(HWND)> AtOk;
};

inline INT_PTR CALLBACK TwoPeriodsProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *state = DialogState<TwoPeriods>(dialog, message, lParam);
    if (state == nullptr) return FALSE;
    if (message == WM_INITDIALOG) {
        SetPropA(dialog, VARKUI_ANSWER_PROP, reinterpret_cast<HANDLE>(INT_PTR{IDOK}));
        if (!InitPeriodTabs(dialog, controlPeriodTabs, state->IsGuv, *state->Context, state->Tabs)) {
            EXPECT_EQ(0, EndTabDialog(dialog, 0));
            return TRUE;
        }
        InitOutputChoice(dialog, state->Ausgabe, state->OutputState);
        if (state->AtOpening) state->AtOpening(dialog);
        return TRUE;
    }
    if (PeriodTabMessage(state->Tabs, dialog, message, wParam, lParam)) return TRUE;
    if (OutputControlMessage(state->OutputState, dialog, message, wParam, lParam)) return TRUE;
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) return FALSE;
    switch (LOWORD(wParam)) {
    case controlCompare:
        state->Tabs.CompareOn = IsDlgButtonChecked(dialog, controlCompare) == BST_CHECKED ? 1 : 0;
        return TRUE;
    case IDOK:
        if (lParam != 0) {
            PostMessageA(dialog, WM_COMMAND, IDOK, 0);
        } else if (AcceptCurrentPage(state->Tabs)) {
            if (state->AtOk) state->AtOk(dialog);
            EXPECT_EQ(1, EndTabDialog(dialog, 7));
        }
        return TRUE;
    case IDCANCEL: EndTabDialog(dialog, 0); return TRUE;
    default: return FALSE;
    }
}

inline varkui::DialogTable TwoPeriodsTable(DialogBuilder &builder, bool isGuv)
{
    using namespace text;
    builder = BeginDialog();
    AddPeriodTabs(builder, PageOptions(isGuv));
    AddOutputGroup(builder, {});
    return FinishDialog(builder, 127, "Zwei Zeiträume"_w);
}

// Everything between the first call of the library and a dialog that is open.
struct Stage {
    Books Installation;
    TwoPeriods State;
    DialogBuilder Builder = BeginDialog();

    explicit Stage(const std::string &script, bool isGuv = true) : Installation(script)
    {
        Installation.AddMandant(1);
        EXPECT_EQ(1, EnterExport(State.Context));
        FistaRecord mandant;
        EXPECT_EQ(1, SelectMandant(*State.Context, 1, mandant));
        State.IsGuv = isGuv;
        State.Tabs.Selections[0].Code = 3;
        State.Tabs.Selections[0].Jahr = 18;
        State.Tabs.Selections[1] = State.Tabs.Selections[0];
    }
    ~Stage() { VARK_SchliesseDB(); }
    Stage(const Stage &) = delete;
    Stage &operator=(const Stage &) = delete;

    int32_t Run(HWND parent = nullptr)
    {
        return RunTabDialog(TwoPeriodsTable(Builder, State.IsGuv), parent, TwoPeriodsProcedure, &State);
    }
    std::string Refusals()
    {
        std::string refusals;
        for (const std::string &line : Installation.TakeLog()) {
            if (line.find("script:") == 0) refusals += line + "\n";
        }
        return refusals;
    }
};

} // namespace vark::test
