// What an export finds once the library is bound, and what a thread leaves behind when it ends.
#include "src/frame/engine_calls.h"
#include "src/frame/lifecycle.h"
#include "src/frame/record_lengths.h"
#include "src/frame/record_store.h"
#include "src/platform/platform.h"
#include "tests/support/alloc_faults.h"
#include "tests/support/books.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

struct Threads : testing::Test {
    Books books;

    void SetUp() override
    {
        books.AddMandant(1);
        books.Insert(1, TableSako, MakeSako("1200"));
    }
};

} // namespace

TEST_F(Threads, RecordLengthsAreThoseOfTheTables)
{
    ASSERT_EQ(1, VARK_Status());
    const uint32_t lengths[slotCount] = {746, 219, 956, 956, 34,  0,    998, 64, 64, 64,  495,
                                         130, 500, 64,  256, 525, 525,  64,  58, 64, 181, 128,
                                         143, 110, 133, 146, 270, 1398, 746, 0,  0};
    for (int slot = 0; slot < slotCount; ++slot) {
        EXPECT_EQ(lengths[slot], RecordLengthTable[slot].load()) << slot;
    }
}

TEST_F(Threads, GetTheirContextFromTheirFirstExport)
{
    ASSERT_EQ(1, VARK_Status());
    EXPECT_EQ(nullptr, ThreadSlotValue());
    VARK_SchliesseDB();
    void *const mine = ThreadSlotValue();
    EXPECT_NE(nullptr, mine);
    std::thread([mine] {
        EXPECT_EQ(nullptr, ThreadSlotValue());
        VARK_SchliesseDB();
        EXPECT_NE(nullptr, ThreadSlotValue());
        EXPECT_NE(mine, ThreadSlotValue());
    }).join();
    EXPECT_EQ(mine, ThreadSlotValue());
}

TEST_F(Threads, ContextStartsUnbound)
{
    ThreadContext *context = nullptr;
    ASSERT_EQ(1, EnterExport(context));
    EXPECT_EQ(-1, context->CurrentMandant);
    EXPECT_EQ(-1, context->CursorKind);
    EXPECT_EQ(std::string(1, pathSeparator), context->YearDirectory);
    EXPECT_STREQ("", context->WorkYear);
    EXPECT_EQ(0, context->ShowMessages);
    for (const int32_t count : context->OpenCounts) {
        EXPECT_EQ(0, count);
    }
}

TEST_F(Threads, ManyAttachOnce)
{
    std::vector<std::thread> threads;
    threads.reserve(16);
    for (int i = 0; i < 16; ++i) {
        threads.emplace_back([] { EXPECT_EQ(1, VARK_Status()); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

TEST_F(Threads, SchliesseDbClosesEveryTableOfTheThreadAndNoOther)
{
    ASSERT_EQ(1, VARK_ExistiertKonto(1, "1200", 1));
    auto *context = static_cast<ThreadContext *>(ThreadSlotValue());
    std::thread([] {
        ASSERT_EQ(1, VARK_ExistiertKonto(1, "1200", 1));
        VARK_SchliesseDB();
    }).join();
    EXPECT_EQ(1, context->OpenCounts[TableSako]);
    VARK_SchliesseDB();
    EXPECT_EQ(-1, context->CurrentMandant);
    for (const int32_t count : context->OpenCounts) {
        EXPECT_EQ(0, count);
    }
    EXPECT_EQ(1, VARK_ExistiertKonto(1, "1200", 1)) << "and the next call opens them again";
}

TEST_F(Threads, OneThatEndsFreesItsContextAndWhatItKeepsOfASplitAndAReport)
{
    ASSERT_EQ(1, VARK_ExistiertKonto(1, "1200", 1));
    std::thread([] { EXPECT_EQ(1, VARK_ExistiertKonto(1, "1200", 1)); }).join();
    const long before = LiveAllocations();
    std::thread([] {
        ASSERT_EQ(1, VARK_SplitStart(1, 16, "15.03.1998", "S1", 0));
        for (int i = 0; i < 11; ++i) {
            ASSERT_EQ(1, VARK_SplitEinfuegen("1200", 1, "8400", 1, "1,00", "", "", ""));
        }
        auto *context = static_cast<ThreadContext *>(ThreadSlotValue());
        context->ReportViewTitle = static_cast<char *>(std::malloc(20));
        context->ReportFrameClass = static_cast<char *>(std::malloc(20));
    }).join();
    EXPECT_EQ(before, LiveAllocations());
}
