// report_view TEMPLATE LINES [turns]: opens the view of a table report and shows it until its window is
// closed. With "turns" it prints the milliseconds to the first page, once the records are in, and of turning
// pages (median), and its own memory (RssAnon, KiB) and that of what shows the window, and ends.
#include "bench/report_fill.h"
#include "window-system/varkui.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::time_point from)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - from).count();
}

void Handle(MSG &message)
{
    TranslateMessage(&message);
    DispatchMessageA(&message);
}

// Handles what waits.
void CatchUp()
{
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        Handle(message);
    }
}

} // namespace

int main(int argumentCount, char **arguments)
{
    if (argumentCount < 3) return 2;
    const bool isMeasured = argumentCount > 3 && std::strcmp(arguments[3], "turns") == 0;
    if (isMeasured && VarkUiHasUser() == 0) {
        std::cerr << "report_view: nobody sees windows here\n";
        return 1;
    }
    const int32_t report = FillReport(arguments[1], std::stoi(arguments[2]));
    if (report == 0) return 1;
    const Clock::time_point filled = Clock::now();
    auto view = static_cast<HWND>(
        RSOpenView(report, "Auswertung", "%N", nullptr, 0, 0, 0, 0, 0, 0, 65535, 65535, nullptr));
    if (view == nullptr) return 1;
    CatchUp();
    if (isMeasured) {
        std::cout << "first_ms " << Milliseconds(filled) << '\n';
        std::vector<double> turns;
        constexpr int pages = 40;
        constexpr int nextPage = 104;
        for (int i = 0; i < pages; ++i) {
            const Clock::time_point begin = Clock::now();
            SendMessageA(view, WM_COMMAND, nextPage, 0);
            turns.push_back(Milliseconds(begin));
            CatchUp();
        }
        std::sort(turns.begin(), turns.end());
        std::cout << "turn_ms " << turns[turns.size() / 2] << '\n'
                  << "slowest_turn_ms " << turns.back() << '\n';
        std::ifstream status("/proc/self/status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("RssAnon")) std::cout << line << '\n';
        }
        DestroyWindow(view);
        return 0;
    }
    MSG message;
    while (IsWindow(view) != 0 && GetMessageA(&message, nullptr, 0, 0) > 0) {
        Handle(message);
    }
    return 0;
}
