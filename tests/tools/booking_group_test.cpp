// Pieces of work that are written down together: done once where the group holds, again one by one where it
// does not.
#include "record-manager/include/btrcall.h"
#include "tools/vark/booking_group.h"

#include <gtest/gtest.h>

namespace {

int16_t Call(uint16_t operation) { return BTRCALL(operation, nullptr, nullptr, nullptr, nullptr, 0, 0); }

// Whether a group is open now.
bool IsInGroup()
{
    const bool isOpen = Call(BtrOpBeginGroup) == BtrStatusTransactionActive;
    if (!isOpen) Call(BtrOpEndGroup);
    return isOpen;
}

struct Groups : testing::Test {
    std::string Done; // a letter for each piece as it is done, in capitals inside of a group
    std::string Told;
    std::string Places = "xxxx";
    size_t Failing = 99; // this one cannot be written in a group

    void Run()
    {
        cli::GroupedWork work;
        work.Count = Places.size();
        work.Do = [this](size_t index) {
            const bool inGroup = IsInGroup();
            Done += static_cast<char>((inGroup ? 'A' : 'a') + static_cast<char>(index));
            cli::Outcome outcome;
            outcome.Code = 1;
            if (index != Failing || !inGroup) return outcome;
            Call(BtrOpBegin);
            Call(BtrOpAbort);
            outcome.Code = -3;
            return outcome;
        };
        work.Place = [this](size_t index) { return Places.substr(index, 1); };
        work.Tell = [this](size_t index, const cli::Outcome &outcome) {
            Told += std::to_string(index) + (outcome.Code == 1 ? "+" : "-");
        };
        cli::DoInGroups(work);
        EXPECT_FALSE(IsInGroup());
    }
};

} // namespace

TEST_F(Groups, DoEachPieceOnce)
{
    Run();
    EXPECT_EQ("ABCD", Done);
    EXPECT_EQ("0+1+2+3+", Told);
}

TEST_F(Groups, EndWhereOtherBooksBegin)
{
    Places = "xxyx";
    Run();
    EXPECT_EQ("ABCD", Done);
    EXPECT_EQ("0+1+2+3+", Told);
}

TEST_F(Groups, ThatAreLostAreDoneAgainOneByOne)
{
    Failing = 2;
    Run();
    EXPECT_EQ("ABCabcD", Done);
    EXPECT_EQ("0+1+2+3+", Told);
}
