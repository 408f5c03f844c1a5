// A report's parameter dialog that is opened, played by a script and ended; and the dialogs it is tried on.
#pragma once

#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/platform/platform.h"
#include "src/reports/frame/report_run.h"
#include "tests/support/books.h"

#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace vark::test {

inline constexpr ReportDialog perDialog = {.Id = 111,
                                           .Title = "Summen- und Saldenliste",
                                           .HelpContext = 3008,
                                           .PeriodOptions = PeriodDayExact,
                                           .PerOnly = true,
                                           .Kontoarten = 1 | 2 | 4};
inline constexpr ReportDialog fullDialog = {.Id = 114,
                                            .Title = "Kontenblatt",
                                            .HelpContext = 3009,
                                            .PeriodOptions = 0x0F,
                                            .Kontoarten = 1 | 2 | 4 | 8,
                                            .HasSingle = true};
inline constexpr ReportDialog taxDialog = {
    .Id = 122, .Title = "Umsatzsteuervoranmeldung", .HelpContext = 3012, .PeriodOptions = 0x1E};

// Runs something on the next dialog of this thread, when it handles messages for the first time.
struct Onlooker {
    std::function<void(HWND dialog)> Look;
    HWND Window;

    explicit Onlooker(std::function<void(HWND dialog)> look) : Look(std::move(look))
    {
        WNDCLASSA made{};
        made.lpszClassName = "Onlooker";
        made.lpfnWndProc = Procedure;
        made.cbWndExtra = sizeof(Onlooker *);
        RegisterClassA(&made);
        Window = CreateWindowExA(0, made.lpszClassName, "", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr,
                                 nullptr);
        SetWindowLongPtrA(Window, 0, reinterpret_cast<LONG_PTR>(this));
        PostMessageA(Window, WM_APP, 0, 0);
    }
    ~Onlooker() { DestroyWindow(Window); }
    Onlooker(const Onlooker &) = delete;
    Onlooker &operator=(const Onlooker &) = delete;

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
    {
        if (message != WM_APP) return DefWindowProcA(window, message, wParam, lParam);
        reinterpret_cast<Onlooker *>(GetWindowLongPtrA(window, 0))->Look(GetActiveWindow());
        return 0;
    }
};

struct Played {
    Books Installation;
    ThreadContext *Context = nullptr;
    ReportRun Run{};
    ReportChoice &Choice = Run.Choice;
    bool Accepted = false;

    Played(const std::string &script, const ReportDialog &dialog, const ReportParams &params = {},
           int16_t firstMonth = 1, bool setzeJahr = false, const std::function<void(HWND dialog)> &look = {})
        : Installation(script)
    {
        MandantOptions options;
        options.FirstFiscalMonth = firstMonth;
        Installation.AddMandant(1, options);
        Installation.Insert(1, TableSako, MakeSako("1000"));
        Installation.Insert(1, TableSako, MakeSako("1200"));
        Installation.Insert(1, TableKred, MakePersonal("70000"));
        Installation.Insert(1, TableDebi, MakePersonal("70000"));
        if (setzeJahr) WriteProfileText("TOLKA", "SetzeJahr", "1", "tolka.ini");
        EXPECT_EQ(1, EnterExport(Context));
        Run.Context = Context;
        Run.Dialog = &dialog;
        EXPECT_EQ(1, SelectMandant(*Context, 1, Run.Mandant));
        StartChoice(Run, &params);
        std::optional<Onlooker> onlooker;
        if (look) onlooker.emplace(look);
        Accepted = RunReportDialog(Run, nullptr);
    }
    ~Played() { VARK_SchliesseDB(); }
    Played(const Played &) = delete;
    Played &operator=(const Played &) = delete;

    // What the window system logged of a script that did not fit.
    std::string Refusals()
    {
        std::string refusals;
        for (const std::string &line : Installation.TakeLog()) {
            if (line.find("script:") == 0) refusals += line + "\n";
        }
        return refusals;
    }
};

inline ReportParams PeriodCode(int32_t code, int32_t jahr)
{
    ReportParams params{};
    params.ParamFlags = ParamZeitraum | ParamJahr;
    params.Zeitraum = code;
    params.JahrIndex = jahr;
    return params;
}

} // namespace vark::test
