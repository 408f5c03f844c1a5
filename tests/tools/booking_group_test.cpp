// Pieces of work that are written down together: done once where the group holds, again one by one where it
// does not.
#include "record-manager/include/btrcall.h"
#include "tools/vark/booking_group.h"
#include "tools/vark/reasons.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

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
    std::function<void()> Meanwhile = [] {};

    void Run()
    {
        cli::GroupedWork work;
        work.Count = Places.size();
        work.Do = [this](size_t index) {
            const bool inGroup = IsInGroup();
            Done += static_cast<char>((inGroup ? 'A' : 'a') + static_cast<char>(index));
            Meanwhile();
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

TEST_F(Groups, ShowNothingWhileTheyAreOpen)
{
    const int shown = memfd_create("shown", MFD_CLOEXEC);
    const int before = dup(STDERR_FILENO);
    ASSERT_GE(dup2(shown, STDERR_FILENO), 0);
    Meanwhile = [&] {
        {
            const cli::ReasonCatcher catcher;
            std::fputs("said inside\n", stderr);
        }
        std::fputs("said\n", stderr);
        EXPECT_EQ(0, lseek(shown, 0, SEEK_END)) << Done;
    };
    Run();
    dup2(before, STDERR_FILENO);
    close(before);
    char text[256] = {};
    EXPECT_GT(pread(shown, text, sizeof text - 1, 0), 0);
    close(shown);
    EXPECT_STREQ("said inside\nsaid\nsaid inside\nsaid\nsaid inside\nsaid\nsaid inside\nsaid\n", text);
    EXPECT_EQ("ABCD", Done);
}

TEST_F(Groups, GiveEachPieceItsOwnReasons)
{
    std::string said;
    Meanwhile = [&] {
        cli::ReasonCatcher catcher;
        said += catcher.Take() + '|';
        std::fprintf(stderr, "MERIDA: no %zu\n", Done.size());
        said += catcher.Take() + '|';
        std::fputs("MERIDA: left alone\n", stderr);
    };
    Run();
    EXPECT_EQ("|no 1||no 2||no 3||no 4|", said);
}
