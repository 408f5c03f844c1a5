// What is thrown below a function that SQLite calls, as the code that it returns.
#pragma once

#include "tools/common/workplace.h"
#include "tools/sql/sqlite_api.h"

#include <exception>
#include <filesystem>
#include <new>
#include <string>

namespace sql {

// Does `work`, which returns an SQLite code. An exception becomes SQLITE_NOMEM, or SQLITE_ERROR with its
// German reason in `why`.
template <typename Work> int Try(std::string &why, Work work) noexcept
{
    try {
        try {
            return work();
        } catch (const std::bad_alloc &) {
            return SQLITE_NOMEM;
        } catch (const std::filesystem::filesystem_error &error) {
            why = error.path1().string() + ": " + tools::ErrorText(error.code().value());
        } catch (const std::exception &error) {
            why = error.what();
        }
    } catch (...) {
        return SQLITE_NOMEM;
    }
    return SQLITE_ERROR;
}

} // namespace sql
