// How a statement's conditions on a table become a key and a range of it. SQLite judges every row again, so a
// range may hold more than is wanted, and never less.
#pragma once

#include "tools/common/key_value.h"
#include "tools/sql/columns.h"

#include <optional>
#include <string>
#include <vector>

namespace sql {

// What a value of a plan is compared with. One letter of the plan's text for each argument, in this order:
enum Role : char {
    RoleMandant = 'm',
    RoleYear = 'j',
    RoleYearFrom = 'a',
    RoleYearAfter = 'A',
    RoleYearTo = 'b',
    RoleYearBefore = 'B',
    RoleEqual = 'e', // the next segment of the key
    RoleFrom = 'v',  // the segment behind those
    RoleTo = 'z',
};

// The table as the planner knows it.
struct Planned {
    const tools::TableLayout &Layout;
    const std::vector<SqlColumn> &Columns;
    bool IsOneYear; // or fista, which has none
};

inline constexpr int asTheyLie = -1;

// Answers xBestIndex: the key (or asTheyLie) goes to idxNum, the roles of the arguments to idxStr. Returns an
// SQLite code.
int Plan(const Planned &table, sqlite3_index_info *info);

// An argument of a plan.
struct Value {
    int Type = SQLITE_NULL; // SQLITE_INTEGER …
    int64_t Integer = 0;    // of a real the whole number below
    bool IsWhole = true;
    std::string Text = {};
};

// An argument as SQLite hands it over; of a real the whole number below.
Value ValueOf(sqlite3_value *value);

struct KeyRange {
    std::optional<tools::KeyValue> From; // none: from the first on
    std::optional<tools::KeyValue> To;   // all that begins so is inside; none: to the last
    bool IsOne = false;                  // there is no second record in it
};

// The ranges of the key that hold all records wanted, in a directory whose fiscal years begin with
// `firstMonth`. None where nothing can be equal.
std::vector<KeyRange> RangesOf(const tools::TableLayout &layout, int key, const std::string &roles,
                               const std::vector<Value> &values, int firstMonth);

// Whether the arguments for a day of the key are turned by the Mandant's calendar.
bool NeedsFirstMonth(const tools::TableLayout &layout, int key, const std::string &roles);

} // namespace sql
