// report_view TEMPLATE LINES [turns]: opens the view of a table report and shows it until its window is
// closed. With "turns" it prints the milliseconds to the first page, once the records are in, and of turning
// pages (median and slowest), and the memory (RssAnon, KiB) of itself, of what shows the window and of what
// draws the pages, and ends.
#include "bench/report_fill.h"
#include "window-system/include/varkui.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::time_point from)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - from).count();
}

long AnonymousKiB(const std::string &process)
{
    std::ifstream status(process + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("RssAnon:")) return std::stol(line.substr(8));
    }
    return -1;
}

constexpr const char *mark = "VARK_BENCH_MARK";

// The folder of the process `program` that this one has started, by the mark in its environment.
std::string ProcessOf(const std::string &program)
{
    for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
        std::string name;
        std::getline(std::ifstream(entry.path() / "comm"), name);
        if (name != program) continue;
        std::stringstream environment;
        environment << std::ifstream(entry.path() / "environ").rdbuf();
        const std::string own = mark + ("=" + std::to_string(getpid())) + '\0';
        if (environment.str().find(own) != std::string::npos) return entry.path().string();
    }
    return "";
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
    setenv(mark, std::to_string(getpid()).c_str(), 1);
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
        std::cout << "host_kib " << AnonymousKiB("/proc/self") << '\n';
        for (const char *program : {"vark-ui", "rs-pages"}) {
            std::cout << program << "_kib " << AnonymousKiB(ProcessOf(program)) << '\n';
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
