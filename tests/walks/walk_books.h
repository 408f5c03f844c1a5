// Books with one Mandant, whom the test's thread has selected.
#pragma once

#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/record_store.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"

#include <gtest/gtest.h>
#include <string>

namespace vark::test {

// Operations of the record manager that walks are made of.
inline constexpr uint16_t operationGetEqual = 5;
inline constexpr uint16_t operationGetNext = 6;
inline constexpr uint16_t operationGetGreaterEqual = 9;
inline constexpr int16_t refused = 2;

struct WalkBooks : testing::Test {
    Books books;
    ThreadContext *context = nullptr;

    void SetUp() override { books.AddMandant(1); }
    void TearDown() override
    {
        StopEngineFaults();
        VARK_SchliesseDB();
    }

    // After the records are in place.
    void Select()
    {
        ASSERT_EQ(1, EnterExport(context));
        FistaRecord fista{};
        ASSERT_EQ(1, SelectMandant(*context, 1, fista));
    }
};

inline void TakePacked(PackedDate &out, const std::string &date)
{
    std::memset(out, 0, sizeof out);
    date.copy(out, sizeof out - 1);
}

} // namespace vark::test
