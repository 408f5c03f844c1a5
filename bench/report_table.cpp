// A table report through the engine: report_table TEMPLATE FILE LINES. Prints the seconds from the first
// record to the finished file.
#include "bench/report_lines.h"
#include "report-engine/rs.h"
#include "text/windows1252.h"

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

void PutText(char *field, size_t width, const std::string &utf8)
{
    text::FromUtf8(utf8.c_str(), field, width);
}

void PutAmount(char *field, int64_t pfennig)
{
    for (int i = 11; i >= 0; --i) {
        if (i == 9) {
            field[i] = ',';
            continue;
        }
        field[i] = static_cast<char>('0' + pfennig % 10);
        pfennig /= 10;
    }
}

} // namespace

int main(int argumentCount, char **arguments)
{
    if (argumentCount != 4) return 2;
    const int lines = std::stoi(arguments[3]);
    const auto begin = std::chrono::steady_clock::now();
    const int32_t report = RSOpenReport(arguments[1], "tervoSUSALIST0.0", 0);
    char header[128] = "Muster GmbH";
    PutText(header + 41, 7, "311218");
    bool isGood = RSAddData(report, 0, header) == 1;
    uint32_t state = 1;
    for (int i = 0; i < lines && isGood; ++i) {
        const BenchLine line = MakeBenchLine(10000 + i, state);
        char record[166] = {};
        PutText(record, 8, line.Konto);
        PutText(record + 17, 41, line.Name);
        for (size_t amount = 0; amount < 8; ++amount) {
            PutAmount(record + 58 + 13 * amount, line.Amounts[amount]);
        }
        record[162] = 1;
        isGood = RSAddData(report, 1, record) == 1;
    }
    RSWindow view = RSOpenView(report, "Saldenliste", "%N", nullptr, 0, 0, 0, 0, 0, 0, 65535, 65535, nullptr);
    isGood = isGood && RSExportView(view, arguments[2]) == 1;
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    std::printf("RssAnon %ld KiB, seconds %lld.%06lld\n", AnonymousKiB(),
                static_cast<long long>(taken.count()),
                static_cast<long long>(taken.count() * 1e6) % 1'000'000);
    RSCloseReport(report);
    return isGood ? 0 : 1;
}
