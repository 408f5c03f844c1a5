// Sample books: an installation made from nothing, the same each time it is made.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

namespace books {

struct SampleOptions {
    std::filesystem::path Directory;
    bool Replace = false;    // an installation that stands there already
    int64_t Postings = 3000; // final postings of Mandant 1, the others have a tenth each; 0 for none
    uint64_t Seed = 1;
    int PersonalAccounts = 0; // of Mandant 1, two thirds of them Debitoren; 0: those of the chart
    int64_t OpenItems = 0;    // left over for Mandant 1, about; 0: as many as fit the postings
};

// What was made.
struct SampleSummary {
    int Directories = 0;
    int64_t Postings = 0; // of all Mandanten
    int64_t Records = 0;
    bool HasTemplates = true; // reports can be had of the books
};

// Called now and then with how much of all is done, 0 to 1.
using Progress = std::function<void(double)>;
inline constexpr int64_t recordsPerStep = 4096; // from one call to the next

// Makes the installation under a name of its own beside the wanted one and moves it there when it is whole,
// so that a failure leaves nothing behind and nothing changed. Failures are exceptions with a German text.
SampleSummary MakeSample(const SampleOptions &options, const Progress &progress);

} // namespace books
