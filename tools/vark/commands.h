// The commands of vark, their options, and what each does with them.
#pragma once

#include "tools/common/command_tree.h"
#include "tools/vark/accounts.h"
#include "tools/vark/batch.h"
#include "tools/vark/booking.h"
#include "tools/vark/partners.h"
#include "tools/vark/pick.h"
#include "tools/vark/queries.h"
#include "tools/vark/rates.h"
#include "tools/vark/report.h"

#include <filesystem>

namespace cli {

// What the command line gives.
struct Given {
    std::filesystem::path Configuration;
    bool IsJson = false;
    bool IsCsv = false;
    BookingOptions Booking;
    SplitOptions Split;
    PartnerOptions Partner;
    BatchOptions Batch;
    PickOptions Pick;
    QueryOptions Query;
    AccountOptions Accounts;
    RateOptions Rate;
    ReportOptions Report;
};

// Whether a person is to see windows.
bool NeedsScreen(const Given &given);

// The description fills `given`, which lives as long, when a command line is taken apart.
tools::Tool DescribeVark(Given &given);

} // namespace cli
