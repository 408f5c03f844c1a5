// Calls of reports whose dialogs a test fills in, and their records field by field.
#pragma once

#include "include/vark40.h"
#include "src/platform/window_api.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace vark::test {

// A period of a fiscal year from 1980, on screen.
inline ReportParams PeriodOf(int32_t code, int32_t jahr = 18)
{
    ReportParams params{};
    params.ParamFlags = ParamZeitraum | ParamJahr;
    params.Zeitraum = code;
    params.JahrIndex = jahr;
    return params;
}

inline ReportParams Printed(ReportParams params)
{
    params.ParamFlags |= ParamAusgabe;
    params.Ausgabe = 1;
    return params;
}

// Calls a report while the instructions are done to what it shows; all of them have to fit.
template <typename Call> VarkWindow Played(const std::string &instructions, Call call)
{
    EXPECT_TRUE(VarkUiPlay(instructions.c_str(), TRUE));
    VarkWindow view = call();
    char reason[200] = "";
    const int line = VarkUiPlayed(reason, sizeof reason);
    EXPECT_EQ(0, line) << reason;
    return view;
}

// The fields of a record as the recording engine writes them down.
inline std::map<std::string, std::string> FieldsOf(const std::string &record)
{
    std::map<std::string, std::string> fields;
    for (size_t at = 0; at < record.size();) {
        const size_t end = std::min(record.find(" | ", at), record.size());
        const size_t sign = record.find('=', at);
        fields[record.substr(at, sign - at)] = record.substr(sign + 1, end - sign - 1);
        at = end + 3;
    }
    return fields;
}

// "000000012-50" in Pfennig.
inline int64_t PfennigOf(const std::string &amount)
{
    const int64_t magnitude = std::stoll(amount.substr(0, 9)) * 100 + std::stoll(amount.substr(10));
    return amount[9] == '-' ? -magnitude : magnitude;
}

// And back: up to nine digits before the mark.
inline std::string AmountOf(int64_t pfennig)
{
    std::string text = std::to_string(100'000'000'000 + (pfennig < 0 ? -pfennig : pfennig)).substr(1);
    return text.insert(9, pfennig < 0 ? "-" : ",");
}

} // namespace vark::test
