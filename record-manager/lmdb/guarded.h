// Calls of the store that may come upon an assertion of its own. The store tells of a broken one and would
// then end the process; told under a guard, it is left by a jump instead, and the call answers `brokenStore`.
// What was changed in the transaction is of no use then: it can only be aborted.
#pragma once

#include <csetjmp>
#include <lmdb.h>
#include <type_traits>

namespace wbtrv {

inline constexpr int brokenStore = MDB_BAD_TXN;

struct Guard {
    std::jmp_buf Place;
    Guard *Outer;
};

// The innermost one of the thread.
extern constinit thread_local Guard *guard;

// What the store is to tell of a broken assertion. Returns only where there is no guard.
void TellBrokenStore(MDB_env *environment, const char *message);

// Calls a function of the store. No objects with destructors live in it, so nothing is left out by the jump.
template <auto Call, typename... Arguments> int Guarded(Arguments... arguments)
{
    Guard here;
    here.Outer = guard;
    guard = &here;
    // NOLINTNEXTLINE(cert-err52-cpp): the store knows no other way out
    if (setjmp(here.Place) != 0) {
        guard = guard->Outer;
        return brokenStore;
    }
    int error = 0;
    if constexpr (std::is_void_v<std::invoke_result_t<decltype(Call), Arguments...>>) {
        Call(arguments...);
    } else {
        error = Call(arguments...);
    }
    guard = here.Outer;
    return error;
}

} // namespace wbtrv
