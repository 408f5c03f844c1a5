#include "tools/vark/booking_group.h"

#include "include/vark40.h"
#include "record-manager/include/btrcall.h"
#include "tools/vark/reasons.h"
#include "tools/vark/record_managers.h"

#include <chrono>
#include <vector>

namespace cli {

namespace {

using Clock = std::chrono::steady_clock;

// Others wait meanwhile to write, for seconds at most, and are let in between two groups.
constexpr std::chrono::milliseconds longestGroup(200);

bool CallGroup(uint16_t operation)
{
    return BTRCALL(operation, nullptr, nullptr, nullptr, nullptr, 0, 0) == BtrStatusOk;
}

// One group from `first` on. How it came out for each of its pieces; empty where there are no groups.
std::vector<Outcome> DoGroup(const GroupedWork &work, size_t first)
{
    std::vector<Outcome> outcomes;
    // Everybody else who writes waits for an open group: what comes to standard error meanwhile goes out when
    // it is over, however long its reader takes.
    const ReasonCatcher held;
    if (!held.Catches() || !CallGroup(BtrOpBeginGroup)) return outcomes;
    const std::string place = work.Place(first);
    const auto end = Clock::now() + longestGroup;
    bool isSound = true;
    for (size_t at = first; at < work.Count && isSound && Clock::now() < end; ++at) {
        if (work.Place(at) != place) break;
        outcomes.push_back(work.Do(at));
        isSound = outcomes.back().Code != VARK_FEHLER_DATENBANK;
    }
    const bool isKept = CallGroup(BtrOpEndGroup);
    for (size_t i = 0; i < outcomes.size(); ++i) {
        // A failure may be one of the group alone: of room, or of what another client holds.
        const bool isGone = outcomes[i].Code == VARK_GUT && !isKept;
        if (isGone || outcomes[i].Code == VARK_FEHLER_DATENBANK) outcomes[i] = work.Do(first + i);
    }
    return outcomes;
}

} // namespace

void DoInGroups(const GroupedWork &work)
{
    for (size_t at = 0; at < work.Count;) {
        std::vector<Outcome> outcomes;
        if (work.Place && SharesRecordManager()) outcomes = DoGroup(work, at);
        if (outcomes.empty()) outcomes.push_back(work.Do(at));
        for (const Outcome &outcome : outcomes) {
            work.Tell(at++, outcome);
        }
    }
}

} // namespace cli
