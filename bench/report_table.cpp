// A table report through the engine: report_table TEMPLATE FILE LINES. Prints the seconds from the first
// record to the finished file.
#include "bench/report_fill.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>

namespace {

long AnonymousKiB()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, 8, "RssAnon:") == 0) return std::stol(line.substr(8));
    }
    return 0;
}

} // namespace

int main(int argumentCount, char **arguments)
{
    if (argumentCount != 4) return 2;
    const int lines = std::stoi(arguments[3]);
    const auto begin = std::chrono::steady_clock::now();
    const int32_t report = FillReport(arguments[1], lines);
    RSWindow view = RSOpenView(report, "Saldenliste", "%N", nullptr, 0, 0, 0, 0, 0, 0, 65535, 65535, nullptr);
    const bool isGood = RSExportView(view, arguments[2]) == 1;
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    std::printf("RssAnon %ld KiB, seconds %lld.%06lld\n", AnonymousKiB(),
                static_cast<long long>(taken.count()),
                static_cast<long long>(taken.count() * 1e6) % 1'000'000);
    RSCloseReport(report);
    return isGood ? 0 : 1;
}
