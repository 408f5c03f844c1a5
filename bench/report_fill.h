// A Summen- und Saldenliste with the lines of report_lines.h, as a host hands it to the engine.
#pragma once

#include "bench/report_lines.h"
#include "report-engine/include/rs.h"
#include "text/windows1252.h"

inline void PutText(char *field, size_t width, const std::string &utf8)
{
    text::FromUtf8(utf8.c_str(), field, width);
}

inline void PutAmount(char *field, int64_t pfennig)
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

// The handle of a report with that many lines, 0 on failure.
inline int32_t FillReport(const char *templatePath, int lines)
{
    const int32_t report = RSOpenReport(templatePath, "tervoSUSALIST0.0", 0);
    char header[128] = "Muster GmbH";
    PutText(header + 41, 7, "311218");
    PutText(header + 48, 20, "Dezember");
    PutText(header + 68, 30, "Sachkonten");
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
    return isGood ? report : 0;
}
